#pragma once

/// A 2-D vector, such as a view's pan or zoom.
template <typename T>
struct GeVector2 {
    T x{};
    T y{};

    constexpr bool operator==(GeVector2 const&) const = default;
};
