#include "editor/model/document/Document.h"

#include "base/Assertions.h"
#include "runtime/values/Keyframes.h"
#include "session/ProjectFiles.h"

#include <limits>
#include <type_traits>
#include <utility>

namespace {

/// What no step of the history is.
constexpr auto noStep = std::numeric_limits<std::uint64_t>::max();

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

Document::Document() : link(session.linkController())
{
    getHistory().addHistoryHandler(&historyChanged);
}

HostGraph& Document::graph() const
{
    return *castShared<HostGraph>(session.getNode().getGraph());
}

bool Document::isModified() const
{
    return getHistory().getHistoryState().lastStep != binding.savedStep;
}

void Document::openProject(std::filesystem::path const& file)
{
    std::string text = loadProjectText(file);
    NodeValues const values = readProjectText(file, text, getNode());
    replaceAll("Open project", values, ProjectFile(file, std::move(text)), true);
}

void Document::beginProject()
{
    replaceAll("New project", {}, ProjectFile(), true);
}

void Document::recoverProject(std::string const& text, std::filesystem::path const& file,
                              std::string const& knownText)
{
    NodeValues const values = readProjectText(file, text, getNode());
    replaceAll("Recover work", values, ProjectFile(file, knownText), false);
}

void Document::replaceAll(std::string const& label, NodeValues const& values, ProjectFile file,
                          bool isSaved)
{
    endDrag();
    std::uint64_t const stepBefore = getHistory().getHistoryState().lastStep;
    {
        PiUndoGuard const step(graph().getCommandStack(), label, {});
        getNode().load(values);
    }
    std::uint64_t const step = getHistory().getHistoryState().lastStep;
    Binding const next{std::make_shared<ProjectFile>(std::move(file)), isSaved ? step : noStep};
    if (step != stepBefore) { // the values were others
        openings.push_back({step, binding, next});
        nbOpened = openings.size();
    }
    bind(next);
}

void Document::saveProject(std::filesystem::path const& file, Overwrite what)
{
    std::error_code ignored; // what is not there yet is no other file's equal
    bool const isOwn = file == getProjectFile().getPath() ||
                       std::filesystem::equivalent(file, getProjectFile().getPath(), ignored);
    auto const target =
        isOwn ? binding.file : std::make_shared<ProjectFile>(ProjectFile::makeTarget(file));
    target->save(getNode(), what);
    bind({target, getHistory().getHistoryState().lastStep});
}

void Document::bind(Binding const& next)
{
    if (next.file != binding.file) {
        binding.file->leave();
        next.file->hold();
    }
    binding = next;
    wasModified = isModified();
    fileHandlers.call(std::as_const(*binding.file));
}

/// An opening that is undone or redone leads to the file before or after it.
void Document::followHistory(HistoryState const& state)
{
    while (nbOpened > 0 && openings[nbOpened - 1].step > state.lastStep) {
        Opening& undone = openings[--nbOpened];
        undone.after = binding;
        bind(undone.before);
    }
    if (nbOpened < openings.size() && openings[nbOpened].step == state.lastStep) {
        Opening& redone = openings[nbOpened++];
        redone.before = binding;
        bind(redone.after);
    } else if (nbOpened < openings.size() && openings[nbOpened].step < state.lastStep) {
        openings.resize(nbOpened); // something else was done instead
    }
    if (wasModified != isModified()) {
        bind(binding);
    }
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
        auto const value = getNode().getValue(name);
        ValueState const state = std::visit(WithNumber{time, number}, *value->getState());
        value->check(state);
        states.emplace(name, state);
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

std::vector<std::string> Document::listCurveNames() const
{
    std::vector<std::string> names;
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        names.push_back(link->getCurveInputName(channel));
    }
    return names;
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
