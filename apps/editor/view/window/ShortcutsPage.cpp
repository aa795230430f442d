#include "editor/view/window/ShortcutsPage.h"

#include "editor/view/window/Theme.h"

#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

QString withoutMarks(QString text)
{
    return text.remove('&').remove(QString::fromUtf8("…"));
}

KeyHelps listKeys(QMenu const& menu)
{
    KeyHelps keys;
    for (QAction const* const action : menu.actions()) {
        if (!action->shortcut().isEmpty()) {
            keys.push_back(
                {QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText)
                     .replace("; ", ", "),
                 withoutMarks(action->text())});
        }
        if (action->menu() != nullptr) {
            KeyHelps const below = listKeys(*action->menu());
            keys.insert(keys.end(), below.begin(), below.end());
        }
    }
    return keys;
}

} // namespace

ShortcutsPage::ShortcutsPage(QMenuBar const& menus, Panels const& panels, QWidget* parent)
    : QDialog(parent), table(new QTableWidget(0, 2, this))
{
    setWindowTitle(tr("Shortcuts"));
    setAttribute(Qt::WA_DeleteOnClose);
    table->horizontalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setAccessibleName(windowTitle());
    Panels sections;
    for (QAction const* const action : menus.actions()) {
        sections.emplace_back(withoutMarks(action->text()), listKeys(*action->menu()));
    }
    sections.insert(sections.end(), panels.begin(), panels.end());
    for (auto const& [title, keys] : sections) {
        if (!keys.empty()) {
            addSection(title);
        }
        for (KeyHelp const& key : keys) {
            addRow(key.keys, key.meaning);
        }
    }
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table);
    resize(560, 640);
}

void ShortcutsPage::addSection(QString const& title)
{
    int const row = table->rowCount();
    table->insertRow(row);
    auto* const item = new QTableWidgetItem(title);
    item->setForeground(Theme::accent);
    item->setFlags(Qt::ItemIsEnabled);
    table->setItem(row, 0, item);
    table->setSpan(row, 0, 1, 2);
}

void ShortcutsPage::addRow(QString const& keys, QString const& meaning)
{
    int const row = table->rowCount();
    table->insertRow(row);
    table->setItem(row, 0, new QTableWidgetItem(keys));
    table->setItem(row, 1, new QTableWidgetItem(meaning));
}
