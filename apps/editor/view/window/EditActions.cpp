#include "editor/view/window/EditActions.h"

#include "editor/view/window/Actions.h"

namespace {

/// What was done is an order as well: "Undo: open project".
void say(QAction& action, QString const& what, bool isPossible, std::string const& label)
{
    QString done = QString::fromStdString(label);
    if (!done.isEmpty()) {
        done.front() = done.front().toLower();
    }
    action.setEnabled(isPossible);
    action.setText(isPossible ? what + ": " + done : what);
    setHelp(action, action.text().remove('&'));
}

} // namespace

EditActions::EditActions(Document& editedDocument, QWidget* window)
    : QObject(window), document(editedDocument),
      undo(makeAction(window, {tr("&Undo"), {}, {QKeySequence::Undo}, tr("Undo")},
                      [this] { document.getHistory().undo(); })),
      redo(makeAction(
          window,
          {tr("&Redo"), {}, {QKeySequence("Ctrl+Shift+Z"), QKeySequence("Ctrl+Y")}, tr("Redo")},
          [this] { document.getHistory().redo(); }))
{
    document.getHistory().addHistoryHandler(&changed);
    show(document.getHistory().getHistoryState());
}

void EditActions::show(HistoryState const& state)
{
    say(*undo, tr("&Undo"), state.canUndo, state.undoLabel);
    say(*redo, tr("&Redo"), state.canRedo, state.redoLabel);
}

#include "editor/view/window/moc_EditActions.cpp"
