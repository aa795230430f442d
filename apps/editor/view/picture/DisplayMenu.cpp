#include "editor/view/picture/DisplayMenu.h"

#include <QActionGroup>
#include <QFileInfo>
#include <QMenu>
#include <QWidget>

namespace {

/// What a menu shows of a name: "&" is no mark for a key.
QString labelOf(std::string const& name)
{
    return QString::fromStdString(name).replace("&", "&&");
}

} // namespace

DisplayMenu::DisplayMenu(std::string const& configFile, QWidget* parent)
    : QObject(parent),
      views(configFile, {[this] { fill(); }, [this](auto const& made) { emit chosen(made); },
                         [this](auto const& failure) { giveUp(failure); }}),
      menu(new QMenu(tr("&Display"), parent)), viewChoices(new QActionGroup(this)),
      lookChoices(new QActionGroup(this))
{
    QString const file = QString::fromStdString(configFile);
    menu->menuAction()->setToolTip(tr("Displays and views of %1").arg(file));
    plain = addChoice(*menu, *viewChoices, tr("&Plain"));
    plain->setChecked(true);
    menu->addSeparator();
    menu->addAction(tr("Reading %1…").arg(QFileInfo(file).fileName()))->setEnabled(false);
    connect(menu, &QMenu::aboutToShow, this, &DisplayMenu::read);
    connect(viewChoices, &QActionGroup::triggered, this, &DisplayMenu::choose);
    connect(lookChoices, &QActionGroup::triggered, this, &DisplayMenu::choose);
}

DisplayMenu::~DisplayMenu() noexcept = default;

QAction* DisplayMenu::addChoice(QMenu& to, QActionGroup& group, QString const& text)
{
    QAction* const action = to.addAction(text);
    action->setCheckable(true);
    group.addAction(action);
    return action;
}

void DisplayMenu::fill()
{
    delete menu->actions().last(); // that they are being read
    addViews();
    addLooks();
}

/// Those of the default display at once, of others in menus of their own.
void DisplayMenu::addViews()
{
    bool isDefault = true;
    for (DisplayConfig::Display const& display : views.getConfig()->getDisplays()) {
        QMenu& to = isDefault ? *menu : *menu->addMenu(labelOf(display.name));
        if (isDefault) {
            menu->addSection(labelOf(display.name));
        }
        for (std::string const& view : display.views) {
            QAction* const action = addChoice(to, *viewChoices, labelOf(view));
            action->setData(
                QStringList{QString::fromStdString(display.name), QString::fromStdString(view)});
        }
        isDefault = false;
    }
}

void DisplayMenu::addLooks()
{
    auto const& looks = views.getConfig()->getLooks();
    if (looks.empty()) {
        return;
    }
    menu->addSeparator();
    QMenu& to = *menu->addMenu(tr("&Look"));
    addChoice(to, *lookChoices, tr("As the &view says"))->setChecked(true);
    addChoice(to, *lookChoices, tr("&None"))->setData(QString(""));
    to.addSeparator();
    for (std::string const& look : looks) {
        addChoice(to, *lookChoices, labelOf(look))->setData(QString::fromStdString(look));
    }
}

void DisplayMenu::choose()
{
    QStringList const place = viewChoices->checkedAction()->data().toStringList();
    if (place.isEmpty()) {
        views.choose({});
        emit chosen(nullptr);
        return;
    }
    DisplayView view{place[0].toStdString(), place[1].toStdString()};
    QAction const* const look = lookChoices->checkedAction();
    if (look != nullptr && look->data().isValid()) {
        view.look = look->data().toString().toStdString();
    }
    views.choose(view);
}

void DisplayMenu::clear()
{
    if (!plain->isChecked()) {
        plain->setChecked(true);
        choose();
    }
}

/// The plain view stays, or comes back.
void DisplayMenu::giveUp(std::exception_ptr const& failure)
{
    clear();
    emit failed(failure);
}

#include "editor/view/picture/moc_DisplayMenu.cpp"
