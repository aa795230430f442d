#include "editor/view/window/ShortcutsPage.h"

#include "editor/view/window/Theme.h"

#include <QMenu>
#include <QMenuBar>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

/// What an action does at all; what it would do right now may stand after a colon.
QString withoutMarks(QString const& text)
{
    return text.section(": ", 0, 0).remove('&').remove(QString::fromUtf8("…"));
}

KeyHelps listKeys(QMenu const& menu)
{
    KeyHelps keys;
    for (QAction const* const action : menu.actions()) {
        if (!action->shortcut().isEmpty()) {
            keys.push_back(
                {QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText)
                     .replace("; ", QObject::tr(" or ")),
                 withoutMarks(action->text())});
        }
        if (action->menu() != nullptr) {
            KeyHelps const below = listKeys(*action->menu());
            keys.insert(keys.end(), below.begin(), below.end());
        }
    }
    return keys;
}

QString makeRow(KeyHelp const& key)
{
    return QString("<tr><td width=\"42%\">%1</td><td>%2</td></tr>")
        .arg(key.keys.toHtmlEscaped(), key.meaning.toHtmlEscaped());
}

QString makeSection(QString const& title, KeyHelps const& keys)
{
    QString section = QString("<tr><td colspan=\"2\" style=\"color:%1; padding-top:10px\">"
                              "<b>%2</b></td></tr>")
                          .arg(Theme::accent.name(), title.toHtmlEscaped());
    for (KeyHelp const& key : keys) {
        section += makeRow(key);
    }
    return section;
}

} // namespace

ShortcutsPage::ShortcutsPage(QMenuBar const& menus, Panels const& panels, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Shortcuts"));
    setAttribute(Qt::WA_DeleteOnClose);
    Panels sections;
    for (QAction const* const action : menus.actions()) {
        sections.emplace_back(withoutMarks(action->text()), listKeys(*action->menu()));
    }
    sections.insert(sections.end(), panels.begin(), panels.end());
    QString rows;
    for (auto const& [title, keys] : sections) {
        rows += keys.empty() ? QString() : makeSection(title, keys);
    }
    auto* const page = new QTextBrowser(this);
    page->setAccessibleName(windowTitle());
    page->setFrameShape(QFrame::NoFrame);
    page->document()->setDocumentMargin(14);
    page->setHtml("<table width=\"100%\" cellpadding=\"3\">" + rows + "</table>");
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(page);
    resize(600, 680);
}

#include "editor/view/window/moc_ShortcutsPage.cpp"
