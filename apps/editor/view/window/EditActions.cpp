#include "editor/view/window/EditActions.h"

#include "editor/view/window/Actions.h"

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
    QString const undone = QString::fromStdString(state.undoLabel);
    QString const redone = QString::fromStdString(state.redoLabel);
    undo->setEnabled(state.canUndo);
    undo->setText(tr("&Undo %1").arg(undone));
    setHelp(*undo, tr("Undo %1").arg(undone));
    redo->setEnabled(state.canRedo);
    redo->setText(tr("&Redo %1").arg(redone));
    setHelp(*redo, tr("Redo %1").arg(redone));
}

#include "editor/view/window/moc_EditActions.cpp"
