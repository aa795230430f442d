#include "editor/view/curves/CurveActions.h"

#include "editor/model/document/UserFolders.h"
#include "editor/view/curves/OffsetDialog.h"
#include "editor/view/curves/PresetsDialog.h"

#include <QActionGroup>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <algorithm>
#include <numeric>

namespace {

using CurveEditing::Handles;
using Histogram = CurveDisplay::Histogram;

} // namespace

CurveActions::CurveActions(CurveModel& shownModel, CurveWidget& graphWidget)
    : QObject(&graphWidget), model(shownModel), graph(graphWidget)
{
    buildCurveActions();
    buildKeyActions();
    buildShowActions();
    add(fitActions, {tr("Fit the curve"), tr("The unit square and all keys"), {Qt::Key_F}},
        [this] { graph.fitCurve(); });
    add(fitActions,
        {tr("Fit the picture"),
         tr("As far as the picture's values go"),
         {QKeySequence(Qt::SHIFT | Qt::Key_F)}},
        [this] { graph.fitPicture(); });
    model.editor.addHandler(&edited);
    connect(&graph, &CurveWidget::menuAsked, this, &CurveActions::openMenu);
    refresh();
}

QList<QAction*> CurveActions::getAll() const
{
    QList<QAction*> all = curveActions;
    for (auto const* const more : {&keyActions, &showActions, &fitActions}) {
        all.append(makeSeparator(&graph));
        all.append(*more);
    }
    return all;
}

QAction* CurveActions::add(QList<QAction*>& list, ActionText const& text,
                           std::function<void()> function)
{
    list.append(makeAction(
        &graph, text, [this, called = std::move(function)] { graph.attempt(called); },
        Qt::WidgetShortcut));
    return list.last();
}

QAction* CurveActions::addSwitch(QList<QAction*>& list, ActionText const& text,
                                 std::function<void(CurveDisplay&, bool)> const& change)
{
    QAction* const action = add(list, text, [] {});
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [this, change](bool isOn) {
        CurveDisplay display = model.getDisplay();
        change(display, isOn);
        model.setDisplay(display);
        refresh();
    });
    return action;
}

void CurveActions::addSeparator(QList<QAction*>& list)
{
    list.append(makeSeparator(&graph));
}

void CurveActions::buildCurveActions()
{
    QList<QAction*>& list = curveActions;
    add(list, {tr("&Copy"), tr("As text that --curve takes, too"), {QKeySequence::Copy}},
        [this] { copy(); });
    add(list, {tr("&Paste"), tr("To what is edited"), {QKeySequence::Paste}},
        [this] { paste(CurveEditor::Target::Edited); });
    add(list,
        {tr("Paste to &all"),
         tr("To the three curves"),
         {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_V)}},
        [this] { paste(CurveEditor::Target::All); });
    add(list, {tr("Add &key"), tr("Halfway to the next; the shape stays"), {Qt::Key_Insert}},
        [this] { insertHalfway(); });
    add(list, {tr("P&resets…"), tr("Curves that are kept by name")}, [this] { openPresets(); });
    addSeparator(list);
    add(list, {tr("&Straight"), tr("Lines from key to key")},
        [this] { model.editor.change("Straighten curve", &CurveEditing::straighten); });
    add(list, {tr("&Flip"), tr("What was light is dark")},
        [this] { model.editor.change("Flip curve", &CurveEditing::flip); });
    add(list, {tr("&Offset…"), tr("Move the curve by an amount")}, [this] { openOffset(); });
    add(list, {tr("Swap red and green"), {}}, [this] { model.editor.swap(0, 1); });
    add(list, {tr("Swap green and blue"), {}}, [this] { model.editor.swap(1, 2); });
    add(list, {tr("Swap red and blue"), {}}, [this] { model.editor.swap(0, 2); });
    addSeparator(list);
    add(list, {tr("R&eset"), tr("To the line that changes nothing")},
        [this] { model.editor.reset(); });
    add(list, {tr("Reset a&ll"), tr("The three curves")}, [this] { model.editor.resetAll(); });
}

void CurveActions::buildKeyActions()
{
    QList<QAction*>& list = keyActions;
    add(list, {tr("Select all keys"), {}, {QKeySequence::SelectAll}},
        [this] { model.editor.selectAll(); });
    add(list,
        {tr("Remove keys"), {}, {QKeySequence(Qt::Key_Delete), QKeySequence(Qt::Key_Backspace)}},
        [this] { model.editor.removeSelected(); });
    add(list, {tr("Reset handles"), tr("Smooth, without reaching above or below the keys")},
        [this] { model.editor.resetHandles(); });
    struct Choice {
        QString text;
        Handles handles;
    };
    for (auto const& [text, handles] :
         {Choice{tr("Smooth handles"), Handles::Smooth},
          Choice{tr("Mirrored handles"), Handles::Mirrored},
          Choice{tr("Broken handles"), Handles::Broken}, Choice{tr("Flat handles"), Handles::Flat},
          Choice{tr("Straight handles"), Handles::Straight}}) {
        add(list, {text, {}}, [this, kind = handles] { model.editor.setHandles(kind); });
    }
}

void CurveActions::buildShowActions()
{
    QList<QAction*>& list = showActions;
    auto const offer = [&](ActionText const& text, auto const& change, auto const& isOn) {
        QAction* const action = addSwitch(list, text, change);
        switches.append({action, isOn});
        return action;
    };
    stops = offer(
        {tr("x axis in stops"),
         tr("For shadows, and for what goes beyond 1"),
         {Qt::Key_S},
         tr("Stops")},
        [](CurveDisplay& display, bool isOn) {
            display.axis = isOn ? CurveAxis::Stops : CurveAxis::Linear;
        },
        [](CurveDisplay const& display) { return display.axis == CurveAxis::Stops; });
    offer(
        {tr("Transfer"), tr("What the mode makes of values, without curve"), {Qt::Key_T}},
        [](CurveDisplay& display, bool isOn) {
            display.hasTransfer = isOn;
            display.hasBoth = display.hasBoth && isOn;
        },
        [](CurveDisplay const& display) { return display.hasTransfer; });
    offer(
        {tr("Both together"),
         tr("What becomes of values: transfer, curve, clamp, mute and mix"),
         {QKeySequence(Qt::SHIFT | Qt::Key_T)}},
        [](CurveDisplay& display, bool isOn) {
            display.hasBoth = isOn;
            display.hasTransfer = display.hasTransfer || isOn;
        },
        [](CurveDisplay const& display) { return display.hasBoth; });
    addSeparator(list);
    auto* const oneOfThese = new QActionGroup(this);
    struct Choice {
        QString text;
        Histogram histogram;
    };
    for (auto const& [text, histogram] :
         {Choice{tr("No histogram"), Histogram::None},
          Choice{tr("Histogram of the source"), Histogram::Source},
          Choice{tr("Histogram after the transfer"), Histogram::Transferred},
          Choice{tr("Histogram of the result"), Histogram::Result}}) {
        QAction* const action = offer(
            {text, {}},
            [kind = histogram](CurveDisplay& display, bool) { display.histogram = kind; },
            [kind = histogram](CurveDisplay const& display) { return display.histogram == kind; });
        action->setActionGroup(oneOfThese);
    }
    offer(
        {tr("Logarithmic counts"), tr("Few values show beside many"), {Qt::Key_L}},
        [](CurveDisplay& display, bool isOn) { display.isLogarithmic = isOn; },
        [](CurveDisplay const& display) { return display.isLogarithmic; });
    add(list, {tr("Histogram's own height"), tr("Alt and the wheel change it")}, [this] {
        CurveDisplay display = model.getDisplay();
        display.histogramZoom = 1.0;
        model.setDisplay(display);
    });
}

void CurveActions::refresh()
{
    CurveDisplay const display = model.getDisplay();
    for (auto const& [action, isOn] : switches) {
        action->setChecked(isOn(display));
    }
    for (QAction* const action : keyActions) {
        action->setEnabled(action == keyActions.first() || model.editor.hasSelection());
    }
}

void CurveActions::copy()
{
    QGuiApplication::clipboard()->setText(QString::fromStdString(model.editor.copy()));
}

void CurveActions::paste(CurveEditor::Target target)
{
    try {
        model.editor.paste(QGuiApplication::clipboard()->text().trimmed().toStdString(), target);
    } catch (ValueError const& error) {
        throw ValueError("the clipboard has no curve: " + std::string(error.what()));
    }
}

/// From the selected key to the next one, or between the last two.
void CurveActions::insertHalfway()
{
    int const lead = model.editor.getLead();
    CurvePoints const points = model.editor.getCurve(lead);
    std::size_t const nbKeys = CurveEditing::countKeys(points);
    if (nbKeys > 1) {
        CurveEditing::Selection const& keys = model.editor.getSelection(lead);
        std::size_t const from = std::min(keys.empty() ? 0 : keys.back(), nbKeys - 2);
        model.editor.insertKey(lead, std::midpoint(CurveEditing::getKey(points, from).x,
                                                   CurveEditing::getKey(points, from + 1).x));
    }
}

void CurveActions::openPresets()
{
    if (presets == nullptr) {
        std::filesystem::path const data = getDataFolder();
        presets = new PresetsDialog(model.editor, data.empty() ? data : data / "curves", &graph);
    }
    presets->show();
    presets->activateWindow();
}

void CurveActions::openOffset()
{
    if (offset == nullptr) {
        offset = new OffsetDialog(&graph);
        connect(offset, &OffsetDialog::asked, this, [this](double dx, double dy) {
            graph.attempt([&] {
                model.editor.change("Offset curve", [&](CurvePoints const& points) {
                    return CurveEditing::offset(points, static_cast<float>(dx),
                                                static_cast<float>(dy));
                });
            });
        });
    }
    offset->show();
    offset->activateWindow();
}

void CurveActions::openMenu(QPoint const& place, QPoint const& onScreen)
{
    auto* const menu = new QMenu(&graph);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    addPlaceActions(*menu, place);
    menu->addActions(keyActions);
    menu->addSeparator();
    menu->addActions(fitActions);
    menu->addMenu(tr("Show"))->addActions(showActions);
    menu->addMenu(tr("Curve"))->addActions(curveActions);
    menu->popup(onScreen);
}

/// What can be done right there; a key that is not selected becomes so.
void CurveActions::addPlaceActions(QMenu& menu, QPoint const& place)
{
    CurveScale const scale = graph.getScale();
    CurveHits const hits(model, scale);
    auto const grip = hits.findGrip(place);
    if (grip.has_value()) {
        if (!model.editor.isSelected(grip->key)) {
            model.editor.select(grip->key);
        }
        return;
    }
    if (auto const mark = hits.findMark(place)) {
        QString const text = mark->number > 0 ? tr("Add a key at pick %1").arg(mark->number)
                                              : tr("Add a key at the plot colour");
        menu.addAction(text, [this, in = mark->in] {
            graph.attempt([&] { model.editor.insertKeys(model.lines.transfer(in)); });
        });
    }
    auto const x = static_cast<float>(scale.toX(place.x()));
    menu.addAction(tr("Add a key here"), [this, x] {
        graph.attempt([&] { model.editor.insertKey(model.editor.getLead(), x); });
    });
    menu.addSeparator();
}

#include "editor/view/curves/moc_CurveActions.cpp"
