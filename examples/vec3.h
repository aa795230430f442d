/// Three doubles used both as a vector of space and as a linear RGB colour.
///
/// Only + - * / and sqrt occur here and in everything built on it: these are rounded the same
/// way on every IEEE 754 machine, so the example pictures have the same pixels everywhere.
#pragma once

#include <cmath>

namespace examples {

struct Vec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

constexpr Vec3 operator+(Vec3 const& a, Vec3 const& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr Vec3 operator-(Vec3 const& a, Vec3 const& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// Product component by component: a colour seen through a filter.
constexpr Vec3 operator*(Vec3 const& a, Vec3 const& b)
{
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}

constexpr Vec3 operator*(Vec3 const& a, double scale)
{
    return {a.x * scale, a.y * scale, a.z * scale};
}

constexpr double dot(Vec3 const& a, Vec3 const& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double length(Vec3 const& a)
{
    return std::sqrt(dot(a, a));
}

/// `a` scaled to length 1; `a` must not be zero.
inline Vec3 normalized(Vec3 const& a)
{
    return a * (1.0 / length(a));
}

/// `direction` mirrored at a surface with the unit normal `normal`.
constexpr Vec3 reflected(Vec3 const& direction, Vec3 const& normal)
{
    return direction - normal * (2.0 * dot(direction, normal));
}

/// `a` at weight 0, `b` at weight 1, linear between and beyond.
constexpr Vec3 mix(Vec3 const& a, Vec3 const& b, double weight)
{
    return a * (1.0 - weight) + b * weight;
}

/// `value` limited to [0, 1].
constexpr double clamp01(double value)
{
    return value < 0.0 ? 0.0 : (value > 1.0 ? 1.0 : value);
}

/// 0 up to `from`, 1 beyond `to`, a smooth cubic between; `from` and `to` must differ.
/// With `from` above `to` the step falls.
constexpr double smoothStep(double from, double to, double value)
{
    double const t = clamp01((value - from) / (to - from));
    return t * t * (3.0 - 2.0 * t);
}

/// `base` to a whole power of at least 1, by multiplication only.
constexpr double wholePower(double base, int exponent)
{
    double result = base;
    for (int step = 1; step < exponent; ++step) {
        result *= base;
    }
    return result;
}

} // namespace examples
