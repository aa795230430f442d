#include "editor/model/document/Document.h"

#include "base/Assertions.h"
#include "runtime/values/Keyframes.h"
#include "session/ProjectFiles.h"

#include <type_traits>
#include <utility>

namespace {

/// The state with `number` at `time`.
struct WithNumber {
    double time;
    double number;

    ValueState operator()(Animated<bool> const& state) const
    {
        return withValueAt(state, time, number != 0.0);
    }
    ValueState operator()(Animated<int> const& state) const
    {
        return withValueAt(state, time, static_cast<int>(number));
    }
    ValueState operator()(Animated<double> const& state) const
    {
        return withValueAt(state, time, number);
    }
    template <typename Other>
    ValueState operator()(Other const& state) const
    {
        return state; // no number
    }
};

struct NumberAt {
    double time;

    template <typename State>
    double operator()(State const& state) const
    {
        if constexpr (std::is_same_v<State, Vector<double>> ||
                      std::is_same_v<State, Animated<CurvePoints>>) {
            return 0.0; // no number
        } else {
            return static_cast<double>(state.evaluate(time).getValue());
        }
    }
};

} // namespace

Document::Document() : link(session.linkController()) {}

HostGraph& Document::graph() const
{
    return *castShared<HostGraph>(session.getNode().getGraph());
}

bool Document::isModified() const
{
    return getHistory().getHistoryState().lastStep != savedStep;
}

void Document::openProject(std::filesystem::path const& file)
{
    NodeValues const values = loadProject(file, getNode());
    {
        PiUndoGuard const step(graph().getCommandStack(), "Open project", {});
        getNode().load(values);
    }
    projectFile = file;
    savedStep = getHistory().getHistoryState().lastStep;
}

void Document::saveProject(std::filesystem::path const& file)
{
    ::saveProject(file, getNode());
    projectFile = file;
    savedStep = getHistory().getHistoryState().lastStep;
}

void Document::edit(std::string const& label, NodeValues const& states)
{
    PiUndoGuard const step(graph().getCommandStack(), label, {});
    getNode().setValues(states);
}

void Document::setNumbers(std::string const& label, std::vector<std::string> const& names,
                          double number)
{
    NodeValues states;
    for (std::string const& name : names) {
        states.emplace(name,
                       std::visit(WithNumber{time, number}, *getNode().getValue(name)->getState()));
    }
    edit(label, states);
}

double Document::getNumber(std::string const& name) const
{
    return std::visit(NumberAt{time}, *getNode().getValue(name)->getState());
}

CurvePoints Document::getCurve(int channel) const
{
    auto const state = getNode().getValue(link->getCurveInputName(channel))->getState();
    return std::get<Animated<CurvePoints>>(*state).evaluate(time).getValue();
}

void Document::setCurves(std::string const& label, std::array<CurvePoints, 3> const& curves)
{
    NodeValues states;
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        std::string const name = link->getCurveInputName(channel);
        auto const state = getNode().getValue(name)->getState();
        auto const& animated = std::get<Animated<CurvePoints>>(*state);
        CurvePoints const& points = curves[static_cast<std::size_t>(channel)];
        if (points != getCurve(channel)) {
            states.emplace(name, withValueAt(animated, time, points));
        }
    }
    edit(label, states);
}

ControllerLink::Mode Document::getMode() const
{
    return static_cast<ControllerLink::Mode>(static_cast<int>(getNumber(link->getModeInputName())));
}

void Document::setTime(double newTime)
{
    if (newTime != time) {
        time = newTime;
        timeHandlers.call(std::as_const(time));
    }
}

void Document::beginDrag(std::string const& label)
{
    drag = std::make_unique<PiUndoGuard>(graph().getCommandStack(), label, PiExecParam());
}

void Document::abandonDrag()
{
    getHistory().abandonCommand();
    drag.reset();
}
