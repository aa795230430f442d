// Keyframes of values of any kind.

#include "runtime/values/Keyframes.h"

#include <stdexcept>
#include <type_traits>

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

enum class Times { Listed, Others };

/// The keyframes at these times, or all others.
template <typename T>
std::vector<Keyframe<T>> choose(Animated<T> const& animated, std::set<double> const& times,
                                Times wanted)
{
    std::vector<Keyframe<T>> keys;
    for (Keyframe<T> const& key : animated.getKeys()) {
        if (animated.isAnimated() && times.contains(key.time) == (wanted == Times::Listed)) {
            keys.push_back(key);
        }
    }
    return keys;
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

std::optional<ValueState> onlyKeyframes(ValueState const& state, std::set<double> const& times)
{
    std::optional<ValueState> only;
    std::visit(
        [&]<typename State>(State const& animated) {
            if constexpr (!std::is_same_v<State, Vector<double>>) {
                auto keys = choose(animated, times, Times::Listed);
                if (!keys.empty()) {
                    only = State(std::move(keys));
                }
            }
        },
        state);
    return only;
}

ValueState withoutKeyframes(ValueState const& state, std::set<double> const& times, double moment)
{
    return editState(state, [&]<typename T>(Animated<T> const& animated) {
        auto keys = choose(animated, times, Times::Others);
        return keys.empty() ? Animated<T>(animated.evaluate(moment).getValue())
                            : Animated<T>(std::move(keys));
    });
}

ValueState withKeyframesOf(ValueState const& state, ValueState const& other, double by)
{
    return editState(state, [&]<typename T>(Animated<T> animated) {
        auto const* const added = std::get_if<Animated<T>>(&other);
        if (added == nullptr) {
            throw std::invalid_argument("keyframes of another kind of value");
        }
        std::vector<Keyframe<T>> keys =
            added->isAnimated() ? added->getKeys() : std::vector<Keyframe<T>>();
        for (Keyframe<T>& key : keys) {
            key.time += by;
        }
        if (!keys.empty() && !animated.isAnimated()) {
            return Animated<T>(std::move(keys));
        }
        for (Keyframe<T>& key : keys) {
            animated = withValueAt(animated, key.time, std::move(key.value));
        }
        return animated;
    });
}
