#pragma once

#include "base/Vector.h"
#include "pluginAPI/PxResult.h"
#include "primitives/GePoint2.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

/// The control points of a curve: three per key.
using CurvePoints = Vector<GePoint2<float>>;

/// A value at a time.
template <typename T>
struct Keyframe {
    double time;
    T value;

    bool operator==(Keyframe const&) const = default;
};

/// Between two keyframes: doubles and curves go in a straight line, all else holds.
template <typename T>
struct Interpolation {
    static constexpr bool isLinear = false;
};

template <>
struct Interpolation<double> {
    static constexpr bool isLinear = true;
    static double between(double a, double b, double share) { return a + (b - a) * share; }
};

template <>
struct Interpolation<CurvePoints> {
    static constexpr bool isLinear = true;

    /// Both curves have the same number of keys.
    static CurvePoints between(CurvePoints const& a, CurvePoints const& b, double share)
    {
        CurvePoints points(a.size());
        auto const blend = [&](float from, float to) {
            return static_cast<float>(Interpolation<double>::between(from, to, share));
        };
        for (std::size_t point = 0; point < points.size(); ++point) {
            points[point] = {blend(a[point].x, b[point].x), blend(a[point].y, b[point].y)};
        }
        return points;
    }
};

/// A value over time: constant, or with keyframes at rising times. Constant before the first and
/// after the last keyframe and between two equal ones; a constant stretch is valid as a whole,
/// anything else for its moment. Immutable; several threads may evaluate it at once.
template <typename T>
class Animated {
public:
    explicit Animated(T constant) : keys{{0.0, std::move(constant)}}, animated(false) {}

    /// Throws std::invalid_argument unless there is a key and the times rise; for curves also
    /// unless all have the same number of points.
    explicit Animated(std::vector<Keyframe<T>> keyframes)
        : keys(std::move(keyframes)), animated(true)
    {
        if (keys.empty()) {
            throw std::invalid_argument("an animated value needs at least one key");
        }
        for (std::size_t key = 0; key < keys.size(); ++key) {
            if (!std::isfinite(keys[key].time) ||
                (key > 0 && !(keys[key].time > keys[key - 1].time))) {
                throw std::invalid_argument("the times of keys must rise");
            }
        }
        checkShapes();
    }

    bool isAnimated() const { return animated; }

    /// Whether it is the same at all times.
    bool isConstant() const
    {
        return std::all_of(keys.begin(), keys.end(), [this](Keyframe<T> const& key) {
            return key.value == keys.front().value;
        });
    }

    /// One key at time 0 for a constant.
    std::vector<Keyframe<T>> const& getKeys() const { return keys; }

    PxValueResult<T> evaluate(double time) const
    {
        if (!animated) {
            return {keys.front().value, PxValidityInterval::getFull()};
        }
        auto const next =
            std::upper_bound(keys.begin(), keys.end(), time,
                             [](double t, Keyframe<T> const& key) { return t < key.time; });
        if (next == keys.begin() || next == keys.end()) {
            auto const end = next == keys.begin() ? next : next - 1;
            return constantFrom(end);
        }
        auto const previous = next - 1;
        if constexpr (Interpolation<T>::isLinear) {
            if (previous->value == next->value) {
                return constantFrom(previous);
            }
            if (time == previous->time) {
                // The end of a constant stretch belongs to it, also of the one before the first
                // key.
                bool const endsStretch =
                    previous == keys.begin() || (previous - 1)->value == previous->value;
                return endsStretch ? constantFrom(previous) : atMoment(previous->value, time);
            }
            double const share = (time - previous->time) / (next->time - previous->time);
            return atMoment(Interpolation<T>::between(previous->value, next->value, share), time);
        } else {
            return constantFrom(previous);
        }
    }

    bool operator==(Animated const&) const = default;

private:
    using Key = typename std::vector<Keyframe<T>>::const_iterator;

    static PxValueResult<T> atMoment(T value, double time)
    {
        return {std::move(value), PxValidityInterval(time, time)};
    }

    /// The value of `key` over the whole stretch in which it stays the same.
    PxValueResult<T> constantFrom(Key key) const
    {
        PxValidityInterval stretch = PxValidityInterval::getFull();
        auto first = key;
        while (first != keys.begin() && (first - 1)->value == key->value) {
            --first;
        }
        auto last = key;
        while (last + 1 != keys.end() && (last + 1)->value == key->value) {
            ++last;
        }
        if (first != keys.begin()) {
            stretch.narrow({first->time, stretch.getEnd()});
        }
        if (last + 1 != keys.end()) {
            double const end = Interpolation<T>::isLinear
                                   ? last->time
                                   : std::nextafter((last + 1)->time, stretch.getStart());
            stretch.narrow({stretch.getStart(), end});
        }
        return {key->value, stretch};
    }

    void checkShapes() const
    {
        if constexpr (std::is_same_v<T, CurvePoints>) {
            for (Keyframe<T> const& key : keys) {
                if (key.value.size() != keys.front().value.size()) {
                    throw std::invalid_argument(
                        "all keys of an animated curve need the same number of curve keys");
                }
            }
        }
    }

    std::vector<Keyframe<T>> keys;
    bool animated;
};
