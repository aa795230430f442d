// Keyframes of values of any kind.

#include "runtime/values/Keyframes.h"

#include <stdexcept>

namespace {

/// Gives the state that `edit` makes of a value over time.
template <typename Edit>
struct StateEdit {
    Edit const& edit;

    template <typename T>
    ValueState operator()(Animated<T> const& animated) const
    {
        return edit(animated);
    }
    ValueState operator()(Vector<double> const&) const
    {
        throw std::invalid_argument("a list of numbers has no keyframes");
    }
};

template <typename Edit>
ValueState editState(ValueState const& state, Edit const& edit)
{
    return std::visit(StateEdit<Edit>{edit}, state);
}

struct TimesOfState {
    template <typename T>
    std::vector<double> operator()(Animated<T> const& animated) const
    {
        std::vector<double> times;
        for (Keyframe<T> const& key : animated.getKeys()) {
            times.push_back(key.time);
        }
        return animated.isAnimated() ? times : std::vector<double>();
    }
    std::vector<double> operator()(Vector<double> const&) const { return {}; }
};

/// Takes the keyframe at `time` out; the value stays what it was if there is none.
template <typename T>
Animated<T> removeKey(Animated<T> const& animated, double time)
{
    std::vector<Keyframe<T>> keys = animated.getKeys();
    if (animated.isAnimated()) {
        std::erase_if(keys, [&](Keyframe<T> const& key) { return key.time == time; });
    }
    if (!animated.isAnimated() || keys.empty()) {
        return Animated<T>(animated.getKeys().front().value);
    }
    return Animated<T>(std::move(keys));
}

} // namespace

std::vector<double> getKeyframeTimes(ValueState const& state)
{
    return std::visit(TimesOfState(), state);
}

ValueState withKeyframe(ValueState const& state, double time)
{
    return editState(state, [&]<typename T>(Animated<T> const& animated) {
        T value = animated.evaluate(time).getValue();
        return animated.isAnimated()
                   ? withValueAt(animated, time, std::move(value))
                   : Animated<T>(std::vector<Keyframe<T>>{{time, std::move(value)}});
    });
}

ValueState withoutKeyframe(ValueState const& state, double time)
{
    return editState(state, [&](auto const& animated) { return removeKey(animated, time); });
}

ValueState withMovedKeyframe(ValueState const& state, double from, double to)
{
    return editState(state, [&]<typename T>(Animated<T> const& animated) {
        auto const& keys = animated.getKeys();
        auto const moved = std::find_if(keys.begin(), keys.end(),
                                        [&](Keyframe<T> const& key) { return key.time == from; });
        if (!animated.isAnimated() || moved == keys.end()) {
            return animated;
        }
        Animated<T> const rest = removeKey(animated, from);
        return rest.isAnimated() ? withValueAt(rest, to, moved->value)
                                 : Animated<T>(std::vector<Keyframe<T>>{{to, moved->value}});
    });
}
