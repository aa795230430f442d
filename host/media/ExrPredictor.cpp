// Differences of bytes and their sums, in vectors that every instruction set has.

#include "media/ExrPredictor.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr std::uint8_t differenceOffset = 128; // added to each difference
constexpr std::size_t vectorBytes = 16;

// The compiler's own vectors: 16 bytes are one register of the oldest x86-64 and ARM processors.
using Vector = std::uint8_t __attribute__((vector_size(vectorBytes)));

Vector load(std::uint8_t const* bytes)
{
    Vector vector;
    std::memcpy(&vector, bytes, vectorBytes);
    return vector;
}

/// `vector`, `places` further up, with zeros before it.
template <int places>
Vector moveUp(Vector vector)
{
    return [&]<std::size_t... index>(std::index_sequence<index...>)
    {
        return __builtin_shufflevector(Vector{}, vector,
                                       (static_cast<int>(vectorBytes + index) - places)...);
    }
    (std::make_index_sequence<vectorBytes>());
}

/// Each byte plus all before it.
Vector sumUp(Vector vector)
{
    vector += moveUp<1>(vector);
    vector += moveUp<2>(vector);
    vector += moveUp<4>(vector);
    return vector + moveUp<8>(vector);
}

Vector spread(std::uint8_t byte)
{
    return Vector{} + byte;
}

/// Makes sums of differences, from `sum` on.
void sumDifferences(std::span<std::uint8_t> bytes, std::uint8_t sum)
{
    std::size_t place = 0;
    Vector before = spread(sum);
    for (; place + vectorBytes <= bytes.size(); place += vectorBytes) {
        Vector const sums = sumUp(load(&bytes[place]) - differenceOffset);
        Vector const result = sums + before;
        before +=
            spread(sums[vectorBytes - 1]); // not of `result`: the next step waits for this one only
        std::memcpy(&bytes[place], &result, vectorBytes);
    }
    for (sum = before[0]; place < bytes.size(); ++place) {
        sum = static_cast<std::uint8_t>(sum + bytes[place] - differenceOffset);
        bytes[place] = sum;
    }
}

std::uint8_t* toNumbers(std::span<std::byte> bytes)
{
    return reinterpret_cast<std::uint8_t*>(bytes.data());
}

} // namespace

void predictBytes(std::span<std::byte const> samples, std::span<std::byte> predicted)
{
    std::size_t const pairs = samples.size() / 2;
    auto const* const from = reinterpret_cast<std::uint8_t const*>(samples.data());
    std::uint8_t* const first = toNumbers(predicted);
    std::uint8_t* const second = first + pairs;
    for (std::size_t pair = 1; pair < pairs; ++pair) {
        std::uint16_t now = 0;
        std::uint16_t before = 0;
        std::memcpy(&now, from + 2 * pair, sizeof now);
        std::memcpy(&before, from + 2 * pair - 2, sizeof before);
        first[pair] = static_cast<std::uint8_t>(now - before + differenceOffset);
        second[pair] = static_cast<std::uint8_t>((now >> 8U) - (before >> 8U) + differenceOffset);
    }
    first[0] = from[0];
    second[0] = static_cast<std::uint8_t>(from[1] - from[2 * pairs - 2] + differenceOffset);
}

void restoreBytes(std::span<std::byte> predicted, std::span<std::byte> samples)
{
    std::size_t const pairs = samples.size() / 2;
    std::uint8_t* const first = toNumbers(predicted);
    std::uint8_t const* const second = first + pairs;
    sumDifferences({first + 1, predicted.size() - 1}, first[0]);
    std::uint8_t* const to = toNumbers(samples);
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        auto const both = static_cast<std::uint16_t>(first[pair] | second[pair] << 8U);
        std::memcpy(to + 2 * pair, &both, sizeof both);
    }
}
