#pragma once

#include <algorithm>

/// Pixels from (x0, y0) up to, not including, (x1, y1); y grows downwards.
template <typename T>
struct GeRectangle {
    T x0{};
    T y0{};
    T x1{};
    T y1{};

    constexpr T getWidth() const { return x1 - x0; }
    constexpr T getHeight() const { return y1 - y0; }
    constexpr bool isEmpty() const { return x1 <= x0 || y1 <= y0; }
    constexpr bool contains(GeRectangle const& other) const
    {
        return other.x0 >= x0 && other.x1 <= x1 && other.y0 >= y0 && other.y1 <= y1;
    }
    constexpr bool operator==(GeRectangle const&) const = default;
};

/// The pixels that lie in both; empty where they do not meet.
template <typename T>
constexpr GeRectangle<T> intersect(GeRectangle<T> const& a, GeRectangle<T> const& b)
{
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}
