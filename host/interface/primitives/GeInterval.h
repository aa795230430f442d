#pragma once

/// A closed range. A maximum below the minimum makes it empty.
template <typename T>
struct GeInterval {
    T minimum{};
    T maximum{};

    constexpr bool operator==(GeInterval const&) const = default;
};
