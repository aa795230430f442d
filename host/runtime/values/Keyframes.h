#pragma once

// Values over time, edited at a frame: every function gives a new state and leaves the old one as
// it is. What it gives is set like any state, several at once with HostNode::setValues. All of them
// throw std::invalid_argument for a time that is not finite, and for a curve that has another
// number of keys than those of the other keyframes.

#include "runtime/values/HostValue.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

/// With `value` at `time`: a constant is that from now on; otherwise the keyframes stay, and the
/// one at `time` is added or replaced.
template <typename T>
Animated<T> withValueAt(Animated<T> const& animated, double time, T value)
{
    if (!animated.isAnimated()) {
        return Animated<T>(std::move(value));
    }
    std::vector<Keyframe<T>> keys = animated.getKeys();
    auto const place =
        std::lower_bound(keys.begin(), keys.end(), time,
                         [](Keyframe<T> const& key, double t) { return key.time < t; });
    if (place != keys.end() && place->time == time) {
        place->value = std::move(value);
    } else {
        keys.insert(place, {time, std::move(value)});
    }
    return Animated<T>(std::move(keys));
}

/// With every value, the constant or those of all keyframes, as `change` makes it: how a key is
/// added to a curve that has keyframes.
template <typename T, typename Change>
Animated<T> withEachValue(Animated<T> const& animated, Change const& change)
{
    std::vector<Keyframe<T>> keys = animated.getKeys();
    for (Keyframe<T>& key : keys) {
        key.value = change(key.value);
    }
    return animated.isAnimated() ? Animated<T>(std::move(keys))
                                 : Animated<T>(std::move(keys.front().value));
}

/// Whether the state has keyframes, and when.
std::vector<double> getKeyframeTimes(ValueState const& state);

/// With a keyframe at `time` of the value that there is then. A list of numbers has no keyframes:
/// throws std::invalid_argument.
ValueState withKeyframe(ValueState const& state, double time);

/// Only the keyframes at these times; nothing where there are none.
std::optional<ValueState> onlyKeyframes(ValueState const& state, std::set<double> const& times);

/// Without the keyframes at these times; without any left, the value at `moment` for good.
ValueState withoutKeyframes(ValueState const& state, std::set<double> const& times, double moment);

/// With the keyframes of `other`, which is of the same kind, `by` later and in the place of those
/// that are there; a constant gets these alone. Throws std::invalid_argument for another kind.
ValueState withKeyframesOf(ValueState const& state, ValueState const& other, double by);
