#include "editor/model/time/Keys.h"

#include "runtime/values/Keyframes.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

/// What does not fit is refused as a value is.
ValueState addKeyframes(std::string const& name, ValueState const& state, ValueState const& added,
                        double by)
{
    try {
        return withKeyframesOf(state, added, by);
    } catch (std::invalid_argument const& error) {
        throw ValueError("the keyframes do not fit \"" + name + "\": " + error.what());
    }
}

bool hasKeyAt(ValueState const& state, double time)
{
    std::vector<double> const times = getKeyframeTimes(state);
    return std::find(times.begin(), times.end(), time) != times.end();
}

} // namespace

Keys::Names Keys::orAll(Names const& names) const
{
    if (!names.empty()) {
        return names;
    }
    Names all;
    for (HostNode::ValueSlot const& slot : document.getNode().getValues()) {
        all.push_back(slot.name);
    }
    return all;
}

/// Values keep a state for as long as it is theirs.
ValueState const& Keys::stateOf(std::string const& name) const
{
    return *document.getNode().getValue(name)->getState();
}

std::map<double, Keys::Names> Keys::list(Names const& names) const
{
    std::map<double, Names> keys;
    for (std::string const& name : orAll(names)) {
        for (double const time : getKeyframeTimes(stateOf(name))) {
            keys[time].push_back(name);
        }
    }
    return keys;
}

Keys::Presence Keys::find(Names const& names) const
{
    bool canHaveSome = false;
    bool hasSome = false;
    bool isHere = true;
    for (std::string const& name : names) {
        if (document.getNode().getValue(name)->isAnimatable()) {
            canHaveSome = true;
            hasSome = hasSome || !getKeyframeTimes(stateOf(name)).empty();
            isHere = isHere && hasKeyAt(stateOf(name), document.getTime());
        }
    }
    return !canHaveSome ? Presence::Never
           : isHere     ? Presence::Here
           : hasSome    ? Presence::Elsewhere
                        : Presence::None;
}

std::optional<double> Keys::findNext(int direction) const
{
    auto const keys = list();
    if (direction > 0) {
        auto const next = keys.upper_bound(document.getTime());
        return next == keys.end() ? std::nullopt : std::optional(next->first);
    }
    auto const next = keys.lower_bound(document.getTime());
    return next == keys.begin() ? std::nullopt : std::optional(std::prev(next)->first);
}

void Keys::toggle(std::string const& title, Names const& names)
{
    bool const isHere = find(names) == Presence::Here;
    double const time = document.getTime();
    NodeValues states;
    for (std::string const& name : names) {
        if (document.getNode().getValue(name)->isAnimatable()) {
            states.emplace(name, isHere ? withoutKeyframes(stateOf(name), {time}, time)
                                        : withKeyframe(stateOf(name), time));
        }
    }
    document.edit((isHere ? "Remove key of " : "Set key of ") + title, states);
}

void Keys::remove(Names const& names, Times const& times)
{
    NodeValues states;
    for (std::string const& name : orAll(names)) {
        if (onlyKeyframes(stateOf(name), times).has_value()) {
            states.emplace(name, withoutKeyframes(stateOf(name), times, document.getTime()));
        }
    }
    document.edit(times.size() == 1 ? "Remove key" : "Remove keys", states);
}

void Keys::copy(Names const& names, Times const& times)
{
    copied.clear();
    copiedFrom = std::numeric_limits<double>::infinity();
    for (std::string const& name : orAll(names)) {
        if (auto const chosen = onlyKeyframes(stateOf(name), times)) {
            copiedFrom = std::min(copiedFrom, getKeyframeTimes(*chosen).front());
            copied.emplace(name, *chosen);
        }
    }
}

Keys::Times Keys::paste()
{
    double const by = document.getTime() - copiedFrom;
    NodeValues states;
    Times times;
    for (auto const& [name, keyframes] : copied) {
        states.emplace(name, addKeyframes(name, stateOf(name), keyframes, by));
        for (double const time : getKeyframeTimes(keyframes)) {
            times.insert(time + by);
        }
    }
    document.edit("Paste keys", states);
    return times;
}

void Keys::beginDrag(Names const& names, Times const& times, Drag kind)
{
    dragged.clear();
    for (std::string const& name : orAll(names)) {
        dragged.emplace(name, stateOf(name));
    }
    draggedTimes = times;
    dragKind = kind;
    document.beginDrag(kind == Drag::Copy  ? "Copy keys"
                       : times.size() == 1 ? "Move key"
                                           : "Move keys");
}

void Keys::drag(double by)
{
    NodeValues states;
    for (auto const& [name, before] : dragged) {
        auto const chosen = onlyKeyframes(before, draggedTimes);
        if (!chosen.has_value()) {
            continue;
        }
        ValueState const rest = dragKind == Drag::Copy
                                    ? before
                                    : withoutKeyframes(before, draggedTimes, document.getTime());
        states.emplace(name, by == 0.0 ? before : withKeyframesOf(rest, *chosen, by));
    }
    document.edit("Move keys", states);
}
