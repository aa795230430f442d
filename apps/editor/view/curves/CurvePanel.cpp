#include "editor/view/curves/CurvePanel.h"

#include "editor/model/curves/CurveHints.h"
#include "editor/view/curves/KeyBar.h"
#include "editor/view/time/KeyButton.h"
#include "editor/view/window/FittedLabel.h"
#include "editor/view/window/Theme.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

QToolButton* makeButton(QString const& text, QString const& help, QWidget* parent)
{
    auto* const button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(help);
    button->setAccessibleName(help);
    return button;
}

constexpr int nbLines = 2;

} // namespace

CurvePanel::CurvePanel(Document& editedDocument, Plate& plate, Picks& picks, QWidget* parent)
    : QWidget(parent), model(editedDocument, plate, picks), graph(new CurveWidget(model, this)),
      actions(new CurveActions(model, *graph))
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 8, 10, 6);
    layout->setSpacing(5);
    layout->addWidget(makeBar());
    layout->addWidget(graph, 1);
    layout->addWidget(makeLine());
    auto* const keys = new KeyBar(model.editor, *graph, this);
    layout->addWidget(keys);
    connect(keys, &KeyBar::refused, this, &CurvePanel::failed);
    connect(graph, &CurveWidget::failed, this, &CurvePanel::failed);
    connect(graph, &CurveWidget::pointed, this, [this](QString const& text) {
        pointedText = text;
        showLine();
    });
    model.editor.addHandler(&edited);
    model.histogram.addHandler(&histogramChanged);
    refresh();
}

CurvePanel::~CurvePanel() noexcept = default;

QWidget* CurvePanel::makeBar()
{
    auto* const bar = new QWidget(this);
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    auto* const group = new QButtonGroup(bar);
    struct Choice {
        QString text;
        QString help;
    };
    for (auto const& [text, help] :
         {Choice{tr("R"), tr("Edit the red curve")}, Choice{tr("G"), tr("Edit the green curve")},
          Choice{tr("B"), tr("Edit the blue curve")},
          Choice{tr("All"), tr("Edit the three curves together: the same change to each")}}) {
        QToolButton* const button = makeButton(text, help, bar);
        button->setCheckable(true);
        group->addButton(button);
        auto const channel = static_cast<int>(channels.size());
        connect(button, &QToolButton::clicked, this,
                [this, channel] { model.editor.setChannel(channel); });
        channels.append(button);
    }
    layout->addWidget(channels.last());
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        layout->addWidget(channels[channel]);
    }
    layout->addWidget(
        new KeyButton(model.document, "the curves", model.document.listCurveNames(), bar));
    layout->addStretch(1);
    auto* const stops = new QToolButton(bar);
    stops->setDefaultAction(actions->getStops());
    layout->addWidget(stops);
    layout->addWidget(
        makeMenuButton(tr("Fit"), tr("What the graph reaches"), actions->getFitActions()));
    layout->addWidget(
        makeMenuButton(tr("Show"), tr("Lines and histogram"), actions->getShowActions()));
    layout->addWidget(makeMenuButton(tr("Curve"), tr("Copy, paste, presets, reset and more"),
                                     actions->getCurveActions()));
    return bar;
}

QToolButton* CurvePanel::makeMenuButton(QString const& text, QString const& help,
                                        QList<QAction*> const& offered)
{
    QToolButton* const button = makeButton(text + QString::fromUtf8(" ▾"), help, this);
    auto* const menu = new QMenu(button);
    menu->addActions(offered);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    return button;
}

QWidget* CurvePanel::makeLine()
{
    auto* const bar = new QWidget(this);
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    line = new FittedLabel(bar);
    line->setFont(graph->font());
    cure = new QPushButton(bar);
    connect(cure, &QPushButton::clicked, this, [this] {
        if (auto const hindrance = findCurveHindrance(model.document)) {
            graph->attempt([&] {
                model.document.setNumbers("Set " + hindrance->name, {hindrance->name},
                                          hindrance->number);
            });
        }
    });
    layout->addWidget(line, 1);
    layout->addWidget(cure);
    // As high with one line as with two, and without the button: nothing jumps.
    bar->setFixedHeight(
        std::max(cure->sizeHint().height(), line->fontMetrics().lineSpacing() * nbLines));
    return bar;
}

KeyHelps CurvePanel::getKeyHelps() const
{
    return {
        {tr("Click on a curve"), tr("add a key, the shape stays")},
        {tr("Drag"), tr("move the key or handle; from an empty place, select the keys within")},
        {tr("Shift and drag"), tr("along one axis")},
        {tr("Alt and drag"), tr("a handle alone; a key's handles out of it; the graph")},
        {tr("Ctrl and click on a key"), tr("select it besides the others, or no more")},
        {tr("Double-click on a key"), tr("reset its handles")},
        {tr("Arrows"), tr("nudge the selected keys; Shift tenfold, Ctrl a tenth")},
        {tr("Alt+Arrows"), tr("nudge the handle after the selected keys; Shift the one before")},
        {tr("Tab, Shift+Tab"), tr("the next or previous key")},
        {tr("Wheel"), tr("zoom; Shift along x, Ctrl along y, Alt the histogram's height")},
        {tr("Middle button, wheel sideways"), tr("pan")},
        {tr("Esc"), tr("take back what is being dragged; select nothing")}};
}

void CurvePanel::addPickActions(QMenu& menu, int number)
{
    Pick const* const pick = model.picks.find(number);
    if (pick != nullptr && pick->in.has_value()) {
        auto const& [red, green, blue, alpha] = pick->in->mean;
        addColorActions(menu, {red, green, blue});
    }
}

void CurvePanel::addColorActions(QMenu& menu, CurveLines::Color const& color)
{
    menu.addAction(tr("Add a key here"), this, [this, color] {
        graph->attempt([&] { model.editor.insertKeys(model.lines.transfer(color)); });
    });
}

void CurvePanel::refresh()
{
    channels[model.editor.getChannel()]->setChecked(true);
    showLine();
}

/// What hinders comes first, then what is pointed at, then what the tables miss.
void CurvePanel::showLine()
{
    auto const hindrance = findCurveHindrance(model.document);
    cure->setVisible(hindrance.has_value());
    QPalette palette = line->palette();
    palette.setColor(QPalette::WindowText, hindrance.has_value() ? Theme::accent : Theme::dimText);
    QString text;
    if (hindrance.has_value()) {
        cure->setText(QString::fromStdString(hindrance->cure));
        text = QString::fromStdString(hindrance->text);
    } else if (!pointedText.isEmpty()) {
        text = pointedText;
    } else {
        text = QString::fromStdString(describeMissedKeys(model.document));
        text = text.isEmpty() ? describeHistogram() : text;
    }
    line->setPalette(palette);
    line->setLines(text);
}

QString CurvePanel::describeHistogram() const
{
    auto const& counts = model.histogram.getCounts();
    CurveDisplay const display = model.getDisplay();
    if (counts == nullptr || display.histogram == CurveDisplay::Histogram::None) {
        return {};
    }
    QString text = display.histogram == CurveDisplay::Histogram::Source ? tr("Histogram: source")
                   : display.histogram == CurveDisplay::Histogram::Result
                       ? tr("Histogram: result")
                       : tr("Histogram: after the transfer");
    text += display.isLogarithmic ? tr(", logarithmic") : QString();
    if (model.histogram.isStale()) {
        return text + tr(", being counted");
    }
    if (counts->nans > 0) {
        text += tr(", without %L1 NaN").arg(counts->nans, 0, 'f', 0);
    }
    if (counts->infinities > 0) {
        text += tr(", without %L1 infinite").arg(counts->infinities, 0, 'f', 0);
    }
    return text;
}

#include "editor/view/curves/moc_CurvePanel.cpp"
