#include "editor/view/curves/CurvePanel.h"

#include "runtime/curves/CurveText.h"

#include <QButtonGroup>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>
#include <numeric>

namespace {

constexpr double keyStep = 0.005;

QToolButton* makeButton(QString const& text, QString const& help, QWidget* parent)
{
    auto* const button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(help);
    button->setAccessibleName(help);
    return button;
}

CurveEditing::Selection listKeys(CurvePoints const& points)
{
    CurveEditing::Selection keys(CurveEditing::countKeys(points));
    std::iota(keys.begin(), keys.end(), std::size_t{0});
    return keys;
}

} // namespace

CurvePanel::CurvePanel(Document& editedDocument, QWidget* parent)
    : QWidget(parent), document(editedDocument), curves(new CurveWidget(document, this))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 8, 10, 6);
    layout->setSpacing(6);
    layout->addWidget(makeChannelBar());
    layout->addWidget(curves, 1);
    layout->addWidget(makeKeyBar());
    connect(curves, &CurveWidget::selectionChanged, this, &CurvePanel::showSelection);
    connect(curves, &CurveWidget::failed, this, &CurvePanel::failed);
    showSelection();
}

QWidget* CurvePanel::makeChannelBar()
{
    auto* const bar = new QWidget(this);
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const group = new QButtonGroup(bar);
    struct Choice {
        QString text;
        QString help;
        int channel;
    };
    for (Choice const& choice :
         {Choice{tr("All"), tr("Edit the three curves as one shape"), CurveWidget::allChannels},
          Choice{tr("R"), tr("Edit the red curve"), 0},
          Choice{tr("G"), tr("Edit the green curve"), 1},
          Choice{tr("B"), tr("Edit the blue curve"), 2}}) {
        QToolButton* const button = makeButton(choice.text, choice.help, bar);
        button->setCheckable(true);
        button->setChecked(choice.channel == CurveWidget::allChannels);
        group->addButton(button);
        layout->addWidget(button);
        connect(button, &QToolButton::clicked, this,
                [this, channel = choice.channel] { curves->setChannel(channel); });
    }
    layout->addStretch(1);
    QToolButton* const stops = makeButton(tr("Stops"), tr("The x axis in stops"), bar);
    stops->setCheckable(true);
    connect(stops, &QToolButton::toggled, this, [this](bool isOn) {
        curves->setAxis(isOn ? CurveWidget::Axis::Stops : CurveWidget::Axis::Linear);
    });
    layout->addWidget(stops);
    QToolButton* const fit = makeButton(tr("Fit"), tr("Fit the curve (F)"), bar);
    connect(fit, &QToolButton::clicked, this, [this] { curves->fitCurve(); });
    layout->addWidget(fit);
    QToolButton* const more =
        makeButton(QString::fromUtf8("Curve ▾"), tr("Copy, paste, reset and more"), bar);
    menu = new QMenu(more);
    addMenuAction(*menu, tr("Copy"), [this] { copy(); });
    addMenuAction(*menu, tr("Paste"), [this] { paste(); });
    addMenuAction(*menu, tr("Paste to all"), [this] {
        int const before = curves->getChannel();
        curves->setChannel(CurveWidget::allChannels);
        paste();
        curves->setChannel(before);
    });
    menu->addSeparator();
    addMenuAction(*menu, tr("Straight"), [this] {
        curves->apply("Straighten curve",
                      CurveEditing::setHandles(curves->getPoints(), listKeys(curves->getPoints()),
                                               CurveEditing::Handles::Straight));
    });
    addMenuAction(*menu, tr("Flip"),
                  [this] { curves->apply("Flip curve", CurveEditing::flip(curves->getPoints())); });
    addMenuAction(*menu, tr("Swap red and green"), [this] { swapCurves(0, 1); });
    addMenuAction(*menu, tr("Swap green and blue"), [this] { swapCurves(1, 2); });
    addMenuAction(*menu, tr("Swap red and blue"), [this] { swapCurves(0, 2); });
    menu->addSeparator();
    addMenuAction(*menu, tr("Reset"), [this] { reset(); });
    addMenuAction(*menu, tr("Reset all"), [this] { document.getLink().resetCurves(); });
    more->setMenu(menu);
    more->setPopupMode(QToolButton::InstantPopup);
    layout->addWidget(more);
    return bar;
}

QList<QAction*> CurvePanel::getActions() const
{
    return menu->actions();
}

KeyHelps CurvePanel::getKeyHelps() const
{
    return {{tr("Click on a curve"), tr("add a key, the shape stays")},
            {tr("Drag"), tr("move the key or handle; from an empty place, select the keys within")},
            {tr("Shift and drag"), tr("along one axis")},
            {tr("Alt and drag a handle"), tr("this handle alone")},
            {tr("Ctrl and click on a key"), tr("select it besides the others, or no more")},
            {tr("Arrows"), tr("nudge the selected keys; Shift tenfold, Ctrl a tenth")},
            {tr("Delete"), tr("remove the selected keys")},
            {tr("Wheel, middle button"), tr("zoom, pan")},
            {tr("F"), tr("fit the curve")},
            {tr("Esc"), tr("take back what is being dragged")}};
}

void CurvePanel::addMenuAction(QWidget& menu, QString const& text, std::function<void()> action)
{
    auto* const added = new QAction(text, &menu);
    connect(added, &QAction::triggered, this, std::move(action));
    menu.addAction(added);
}

QWidget* CurvePanel::makeKeyBar()
{
    auto* const bar = new QWidget(this);
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(tr("Key"), bar));
    for (auto const& [text, field] : {std::pair(tr("x"), &keyX), std::pair(tr("y"), &keyY)}) {
        *field = new NumberField(keyStep, bar);
        (*field)->setAccessibleName(tr("Key's %1").arg(text));
        layout->addWidget(new QLabel(text, bar));
        layout->addWidget(*field, 1);
        auto const place = [this, changed = *field](double number) { placeKey(changed, number); };
        connect(*field, &NumberField::entered, this, place);
        connect(*field, &NumberField::dragged, this, place);
        connect(*field, &NumberField::dragBegan, this, [this] { document.beginDrag("Place key"); });
        connect(*field, &NumberField::dragEnded, this, [this] { document.endDrag(); });
        connect(*field, &NumberField::dragAbandoned, this, [this] { document.abandonDrag(); });
    }
    handles = new QComboBox(bar);
    handles->setAccessibleName(tr("Handles"));
    handles->addItems({tr("Smooth"), tr("Mirrored"), tr("Broken"), tr("Flat"), tr("Straight")});
    connect(handles, &QComboBox::activated, this, [this](int kind) {
        curves->setSelectedHandles(static_cast<CurveEditing::Handles>(kind));
    });
    layout->addWidget(handles);
    QToolButton* const remove =
        makeButton(QString::fromUtf8("×"), tr("Remove the key (Delete)"), bar);
    connect(remove, &QToolButton::clicked, this, [this] { curves->removeSelectedKeys(); });
    layout->addWidget(remove);
    return bar;
}

void CurvePanel::copy()
{
    QGuiApplication::clipboard()->setText(QString::fromStdString(formatCurve(curves->getPoints())));
}

void CurvePanel::paste()
{
    try {
        curves->apply("Paste curve",
                      parseCurve("the clipboard",
                                 QGuiApplication::clipboard()->text().trimmed().toStdString()));
    } catch (ValueError const& error) {
        emit failed(QString::fromStdString(error.what()));
    }
}

void CurvePanel::swapCurves(int one, int other)
{
    std::array<CurvePoints, 3> points = {document.getCurve(0), document.getCurve(1),
                                         document.getCurve(2)};
    std::swap(points[static_cast<std::size_t>(one)], points[static_cast<std::size_t>(other)]);
    document.setCurves("Swap curves", points);
}

void CurvePanel::reset()
{
    if (curves->getChannel() == CurveWidget::allChannels) {
        document.getLink().resetCurves();
        return;
    }
    document.beginDrag("Reset curve");
    document.getLink().resetCurve(curves->getChannel());
    document.endDrag();
}

void CurvePanel::placeKey(NumberField const* changedField, double number)
{
    auto place = curves->getSelectedPlace();
    if (place.has_value()) {
        (changedField == keyX ? place->x : place->y) = static_cast<float>(number);
        curves->placeSelectedKey(*place);
        showSelection();
    }
}

void CurvePanel::showSelection()
{
    auto const place = curves->getSelectedPlace();
    for (QWidget* const widget : {static_cast<QWidget*>(keyX), static_cast<QWidget*>(keyY),
                                  static_cast<QWidget*>(handles)}) {
        widget->setEnabled(place.has_value() ||
                           (widget == handles && !curves->getSelection().empty()));
    }
    if (place.has_value()) {
        keyX->showNumber(place->x);
        keyY->showNumber(place->y);
        handles->setCurrentIndex(static_cast<int>(
            CurveEditing::classifyHandles(curves->getPoints(), *curves->getSelectedKey())));
    } else {
        keyX->clear();
        keyY->clear();
    }
}
