#pragma once

/// Colour in the order red, green, blue.
template <typename T>
struct CoRgbColorTyped {
    T red{};
    T green{};
    T blue{};

    constexpr bool operator==(CoRgbColorTyped const&) const = default;
};

/// Colour in the order red, green, blue, alpha: the layout of a float RGBA row.
template <typename T>
struct CoRgbaColorTyped {
    T red{};
    T green{};
    T blue{};
    T alpha{};

    constexpr bool operator==(CoRgbaColorTyped const&) const = default;
};

static_assert(sizeof(CoRgbaColorTyped<float>) == 16, "rows are runs of 16-byte pixels");
