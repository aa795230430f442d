#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

/// Numbers out of an input's bytes, one after another; zeros where there are no more.
class Bytes {
public:
    Bytes(std::uint8_t const* data, std::size_t size) : rest(data, size) {}

    bool isEmpty() const { return rest.empty(); }

    std::uint8_t byte() { return take<std::uint8_t>(); }

    /// From 0 to `end` - 1; `end` is at most 256.
    int below(int end) { return byte() % end; }

    /// Any float at all, but mostly a small one.
    float number()
    {
        constexpr float sixteenth = 0.0625F;
        std::uint8_t const kind = byte();
        return kind % 4 == 0 ? take<float>() : sixteenth * static_cast<std::int8_t>(byte());
    }

private:
    template <typename T>
    T take()
    {
        T value{};
        std::size_t const length = rest.size() < sizeof(T) ? rest.size() : sizeof(T);
        std::memcpy(&value, rest.data(), length);
        rest = rest.subspan(length);
        return value;
    }

    std::span<std::uint8_t const> rest;
};
