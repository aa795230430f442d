#pragma once

/// A point (x, y).
template <typename T>
struct GePoint2 {
    T x{};
    T y{};

    constexpr bool operator==(GePoint2 const&) const = default;
};
