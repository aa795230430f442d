// Vectors of floats in the width of the instruction set that the including source is compiled for,
// and the few operations on them that have no operator. Not for sources that are compiled once.

#ifndef INSTRUCTION_SET
#error "for sources that are compiled for an instruction set"
#endif

#include "remapColorRowKernels.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace RemapColorRowKernels::INSTRUCTION_SET {

#if defined(__AVX512F__)
constexpr int lanes = 16;
#elif defined(__AVX2__)
constexpr int lanes = 8;
#else
constexpr int lanes = 4;
#endif

constexpr int doubleLanes = lanes / 2;

using Floats = float __attribute__((vector_size(lanes * 4)));
using Ints = std::int32_t __attribute__((vector_size(lanes * 4)));
using Words = std::uint32_t __attribute__((vector_size(lanes * 4)));
using Doubles = double __attribute__((vector_size(lanes * 4))); ///< half as many lanes
using LongWords = std::uint64_t __attribute__((vector_size(lanes * 4)));
using Quad = float __attribute__((vector_size(16)));

#define REMAPCOLOR_INLINE [[gnu::always_inline]] static inline

REMAPCOLOR_INLINE Floats load(float const* values)
{
    Floats loaded;
    std::memcpy(&loaded, values, sizeof(loaded));
    return loaded;
}

template <typename Vector, typename Number>
REMAPCOLOR_INLINE void store(Vector const& stored, Number* values)
{
    static_assert(sizeof(stored[0]) == sizeof(Number));
    std::memcpy(values, &stored, sizeof(stored));
}

REMAPCOLOR_INLINE Doubles load(double const* values)
{
    Doubles loaded;
    std::memcpy(&loaded, values, sizeof(loaded));
    return loaded;
}

/// Writes past the caches; `values` is aligned to the vector.
REMAPCOLOR_INLINE void stream(Floats streamed, float* values)
{
#if defined(__AVX512F__)
    _mm512_stream_ps(values, streamed);
#elif defined(__AVX2__)
    _mm256_stream_ps(values, streamed);
#elif defined(__SSE2__)
    _mm_stream_ps(values, streamed);
#else
    store(streamed, values);
#endif
}

/// Streamed rows are visible to other threads after this.
REMAPCOLOR_INLINE void finishStreaming()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

REMAPCOLOR_INLINE bool any(Ints mask)
{
#if defined(__AVX512F__)
    return _mm512_test_epi32_mask(reinterpret_cast<__m512i>(mask),
                                  reinterpret_cast<__m512i>(mask)) != 0;
#elif defined(__AVX2__)
    return _mm256_movemask_ps(reinterpret_cast<__m256>(mask)) != 0;
#elif defined(__SSE2__)
    return _mm_movemask_ps(reinterpret_cast<__m128>(mask)) != 0;
#else
    std::int32_t all = 0;
    for (int lane = 0; lane < lanes; ++lane) {
        all |= mask[lane];
    }
    return all != 0;
#endif
}

REMAPCOLOR_INLINE Floats broadcast(float value)
{
    return value - Floats{};
}

/// a > b ? a : b
REMAPCOLOR_INLINE Floats larger(Floats a, Floats b)
{
#if defined(__AVX512F__)
    return _mm512_max_ps(a, b);
#elif defined(__AVX2__)
    return _mm256_max_ps(a, b);
#elif defined(__SSE2__)
    return _mm_max_ps(a, b);
#else
    return a > b ? a : b;
#endif
}

/// a < b ? a : b
REMAPCOLOR_INLINE Floats smaller(Floats a, Floats b)
{
#if defined(__AVX512F__)
    return _mm512_min_ps(a, b);
#elif defined(__AVX2__)
    return _mm256_min_ps(a, b);
#elif defined(__SSE2__)
    return _mm_min_ps(a, b);
#else
    return a < b ? a : b;
#endif
}

REMAPCOLOR_INLINE Words bitsOf(Floats values)
{
    return reinterpret_cast<Words>(values);
}

REMAPCOLOR_INLINE Floats valuesOf(Words bits)
{
    return reinterpret_cast<Floats>(bits);
}

REMAPCOLOR_INLINE Ints asInts(Words bits)
{
    return reinterpret_cast<Ints>(bits);
}

/// Truncated towards zero; within the range of an int.
REMAPCOLOR_INLINE Ints toInts(Floats values)
{
    return __builtin_convertvector(values, Ints);
}

REMAPCOLOR_INLINE Floats toFloats(Ints values)
{
    return __builtin_convertvector(values, Floats);
}

struct DoublePair {
    Doubles low;
    Doubles high;
};

REMAPCOLOR_INLINE DoublePair toDoubles(Floats values)
{
#if defined(__AVX512F__)
    return {_mm512_cvtps_pd(_mm512_castps512_ps256(values)),
            _mm512_cvtps_pd(_mm512_extractf32x8_ps(values, 1))};
#elif defined(__AVX2__)
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(values)),
            _mm256_cvtps_pd(_mm256_extractf128_ps(values, 1))};
#elif defined(__SSE2__)
    return {_mm_cvtps_pd(values), _mm_cvtps_pd(_mm_movehl_ps(values, values))};
#else
    return {Doubles{values[0], values[1]}, Doubles{values[2], values[3]}};
#endif
}

REMAPCOLOR_INLINE Floats toFloats(DoublePair values)
{
#if defined(__AVX512F__)
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(values.low)),
                              _mm512_cvtpd_ps(values.high), 1);
#elif defined(__AVX2__)
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(values.low)),
                                _mm256_cvtpd_ps(values.high), 1);
#elif defined(__SSE2__)
    return _mm_movelh_ps(_mm_cvtpd_ps(values.low), _mm_cvtpd_ps(values.high));
#else
    return Floats{static_cast<float>(values.low[0]), static_cast<float>(values.low[1]),
                  static_cast<float>(values.high[0]), static_cast<float>(values.high[1])};
#endif
}

/// Joins quads of four lanes each.
REMAPCOLOR_INLINE Floats join(Quad const* quads)
{
#if defined(__AVX512F__)
    __m512 joined = _mm512_castps128_ps512(quads[0]);
    joined = _mm512_insertf32x4(joined, quads[1], 1);
    joined = _mm512_insertf32x4(joined, quads[2], 2);
    return _mm512_insertf32x4(joined, quads[3], 3);
#elif defined(__AVX2__)
    return _mm256_insertf128_ps(_mm256_castps128_ps256(quads[0]), quads[1], 1);
#else
    return quads[0];
#endif
}

/// In every quad: lanes `i` and `j` of `a`, then lanes `k` and `l` of `b`.
template <int i, int j, int k, int l>
REMAPCOLOR_INLINE Floats shuffle(Floats a, Floats b)
{
#if defined(__AVX512F__)
    return _mm512_shuffle_ps(a, b, i | j << 2 | k << 4 | l << 6);
#elif defined(__AVX2__)
    return _mm256_shuffle_ps(a, b, i | j << 2 | k << 4 | l << 6);
#else
    return __builtin_shufflevector(a, b, i, j, 4 + k, 4 + l);
#endif
}

/// In every quad: lanes 0 and 1 of both, in turns.
REMAPCOLOR_INLINE Floats interleaveLower(Floats a, Floats b)
{
#if defined(__AVX512F__)
    return _mm512_unpacklo_ps(a, b);
#elif defined(__AVX2__)
    return _mm256_unpacklo_ps(a, b);
#else
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
#endif
}

/// In every quad: lanes 2 and 3 of both, in turns.
REMAPCOLOR_INLINE Floats interleaveUpper(Floats a, Floats b)
{
#if defined(__AVX512F__)
    return _mm512_unpackhi_ps(a, b);
#elif defined(__AVX2__)
    return _mm256_unpackhi_ps(a, b);
#else
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
#endif
}

/// In every two lanes: the first ones of both.
REMAPCOLOR_INLINE Doubles interleaveLower(Doubles a, Doubles b)
{
#if defined(__AVX512F__)
    return _mm512_unpacklo_pd(a, b);
#elif defined(__AVX2__)
    return _mm256_unpacklo_pd(a, b);
#else
    return __builtin_shufflevector(a, b, 0, 2);
#endif
}

/// In every two lanes: the second ones of both.
REMAPCOLOR_INLINE Doubles interleaveUpper(Doubles a, Doubles b)
{
#if defined(__AVX512F__)
    return _mm512_unpackhi_pd(a, b);
#elif defined(__AVX2__)
    return _mm256_unpackhi_pd(a, b);
#else
    return __builtin_shufflevector(a, b, 1, 3);
#endif
}

/// Two lists of lanes that are the first and the second of neighbouring numbers in memory.
struct Neighbours {
    Floats first;
    Floats second;
};

/// Two lanes of a list of indices that are 0 or more.
struct IndexPair {
    std::size_t first;
    std::size_t second;
};

REMAPCOLOR_INLINE IndexPair loadIndices(std::int32_t const* indices)
{
#if defined(__SSE2__)
    // In one load: look-ups are bound by the number of loads.
    std::uint64_t both;
    std::memcpy(&both, indices, sizeof(both));
    return {static_cast<std::uint32_t>(both), both >> 32};
#else
    return {static_cast<std::uint32_t>(indices[0]), static_cast<std::uint32_t>(indices[1])};
#endif
}

/// Two floats from each of two places in the table.
REMAPCOLOR_INLINE Quad twoPairs(float const* table, IndexPair index)
{
    float const* const first = table + index.first;
    float const* const second = table + index.second;
#if defined(__SSE2__)
    __m128i const low = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(first));
    return _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<__m64 const*>(second));
#else
    return Quad{first[0], first[1], second[0], second[1]};
#endif
}

/// Lane by lane the pair of floats from `table[index]` on.
REMAPCOLOR_INLINE Neighbours loadNeighbours(float const* table, std::int32_t const* index)
{
    // Two pairs in a quad: lanes 0, 1 of each four in `even`, lanes 2, 3 in `odd`.
    Quad even[lanes / 4];
    Quad odd[lanes / 4];
#pragma GCC unroll 4
    for (int quad = 0; quad < lanes / 4; ++quad) {
        even[quad] = twoPairs(table, loadIndices(index + 4 * quad));
        odd[quad] = twoPairs(table, loadIndices(index + 4 * quad + 2));
    }
    Floats const a = join(even);
    Floats const b = join(odd);
    return {shuffle<0, 2, 0, 2>(a, b), shuffle<1, 3, 1, 3>(a, b)};
}

struct Rows {
    Floats columns[4];
};

/// Lane by lane the four floats that begin `offset` bytes into the table: all first ones, all
/// second ones ...
template <typename Row>
REMAPCOLOR_INLINE Rows loadRows(Row const* table, std::int32_t const* offset)
{
    static_assert(sizeof(Row) == sizeof(Quad));
    auto const* const bytes = reinterpret_cast<char const*>(table);
    Quad quads[4][lanes / 4]; // of lanes 0, 4, 8 and 12 in the first, of 1, 5, 9 and 13 next ...
#pragma GCC unroll 4
    for (int quad = 0; quad < lanes / 4; ++quad) {
#pragma GCC unroll 2
        for (int row = 0; row < 4; row += 2) {
            IndexPair const at = loadIndices(offset + 4 * quad + row);
            std::memcpy(&quads[row][quad], bytes + at.first, sizeof(Quad));
            std::memcpy(&quads[row + 1][quad], bytes + at.second, sizeof(Quad));
        }
    }
    Floats const rows[4] = {join(quads[0]), join(quads[1]), join(quads[2]), join(quads[3])};
    Floats const firstLower = interleaveLower(rows[0], rows[1]);
    Floats const firstUpper = interleaveUpper(rows[0], rows[1]);
    Floats const lastLower = interleaveLower(rows[2], rows[3]);
    Floats const lastUpper = interleaveUpper(rows[2], rows[3]);
    return {{shuffle<0, 1, 0, 1>(firstLower, lastLower), shuffle<2, 3, 2, 3>(firstLower, lastLower),
             shuffle<0, 1, 0, 1>(firstUpper, lastUpper),
             shuffle<2, 3, 2, 3>(firstUpper, lastUpper)}};
}

#if defined(__AVX2__)
/// Lane by lane the number of that index (0 to 15; higher bits do not count).
REMAPCOLOR_INLINE Floats select(float const (&column)[16], Ints index)
{
#if defined(__AVX512F__)
    return _mm512_permutexvar_ps(reinterpret_cast<__m512i>(index), _mm512_load_ps(column));
#else
    auto const lanesToTake = reinterpret_cast<__m256i>(index);
    Floats const lower = _mm256_permutevar8x32_ps(_mm256_load_ps(column), lanesToTake);
    Floats const upper = _mm256_permutevar8x32_ps(_mm256_load_ps(column + 8), lanesToTake);
    return _mm256_blendv_ps(lower, upper, reinterpret_cast<Floats>(index << 28));
#endif
}
#endif

#if defined(__AVX512F__)
/// Lane by lane the number of that index (0 to 31; higher bits do not count).
REMAPCOLOR_INLINE Floats select(float const (&column)[32], Ints index)
{
    return _mm512_permutex2var_ps(_mm512_load_ps(column), reinterpret_cast<__m512i>(index),
                                  _mm512_load_ps(column + 16));
}
#endif

/// Lane by lane the entry of the power's tables, from its place in bytes.
REMAPCOLOR_INLINE RemapColorPower::PowerEntry<Floats>
powerEntries(RemapColorPower::PowerTables const& tables, std::int32_t const* offset)
{
#if defined(__AVX512F__)
    auto const entry = reinterpret_cast<Ints>(_mm512_loadu_si512(offset)) >> 4;
    Ints const whole = entry >> RemapColorPower::logIndexBits;
    return RemapColorPower::makePowerEntry<Floats>(
        select(tables.wholeColumns[0], whole), select(tables.wholeColumns[1], whole),
        select(tables.wholeColumns[2], whole), select(tables.centreColumns[0], entry),
        select(tables.centreColumns[1], entry), select(tables.centreColumns[2], entry));
#else
    auto const [inverse, head, tail, sum] = loadRows(tables.entries, offset).columns;
    return {inverse, head, tail, sum};
#endif
}

/// Lane by lane the entry of the logarithm's table: 1 / c and a number of c as a pair.
struct EntryVectors {
    Floats inverse;
    Floats head;
    Floats tail;
};

/// Higher bits of the index than an entry needs do not count.
REMAPCOLOR_INLINE EntryVectors logEntries(Ints index)
{
    auto const& table = RemapColorPower::logTable;
#if defined(__AVX2__)
    return {select(table.columns[0], index), select(table.columns[1], index),
            select(table.columns[2], index)};
#else
    std::int32_t offsets[lanes];
    store((index & (RemapColorPower::logEntries - 1)) * std::int32_t{sizeof(Quad)}, offsets);
    auto const [inverse, head, tail, unused] = loadRows(table.rows, offsets).columns;
    return {inverse, head, tail};
#endif
}

struct KneeEntries {
    Doubles inverse;
    Doubles log;
};

/// The entries that begin `offset` bytes into the knee's table.
REMAPCOLOR_INLINE KneeEntries kneeEntries(std::uint64_t const* offset)
{
    auto const* const bytes = reinterpret_cast<char const*>(RemapColorPower::kneeTable.rows);
    Quad even[lanes / 4]; // of lanes 0, 2, 4 and 6
    Quad odd[lanes / 4];
#pragma GCC unroll 4
    for (int quad = 0; quad < lanes / 4; ++quad) {
        std::memcpy(&even[quad], bytes + offset[2 * quad], sizeof(Quad));
        std::memcpy(&odd[quad], bytes + offset[2 * quad + 1], sizeof(Quad));
    }
    auto const first = reinterpret_cast<Doubles>(join(even));
    auto const second = reinterpret_cast<Doubles>(join(odd));
    return {interleaveLower(first, second), interleaveUpper(first, second)};
}

/// The entries of the exponential's table, head and tail.
REMAPCOLOR_INLINE Neighbours expEntries(Ints index)
{
    auto const& table = RemapColorPower::expTable;
#if defined(__AVX2__)
    return {select(table.columns[0], index), select(table.columns[1], index)};
#else
    std::int32_t places[lanes];
    store((index & (RemapColorPower::expEntries - 1)) << 1, places);
    return loadNeighbours(&table.rows[0].head, places);
#endif
}

/// As many pixels as there are lanes, in four vectors of interleaved components.
struct PixelBlock {
    Floats vectors[4];
};

/// The colour of as many pixels as there are lanes: red, green and blue.
struct Colours {
    Floats vectors[3];
};

/// Lanes that hold alpha in a block's vectors, all bits set.
REMAPCOLOR_INLINE Ints alphaLanes()
{
    Ints mask{};
    for (int lane = 3; lane < lanes; lane += 4) {
        mask[lane] = -1;
    }
    return mask;
}

/// Red, green and blue of the block's pixels: quad q, lane v holds the pixel of vector v, quad q.
REMAPCOLOR_INLINE Colours takeColour(PixelBlock const& in)
{
    auto const& [first, second, third, fourth] = in.vectors;
    Floats const redGreen01 = interleaveLower(first, second);
    Floats const redGreen23 = interleaveLower(third, fourth);
    Floats const blue01 = interleaveUpper(first, second);
    Floats const blue23 = interleaveUpper(third, fourth);
    return {{shuffle<0, 1, 0, 1>(redGreen01, redGreen23),
             shuffle<2, 3, 2, 3>(redGreen01, redGreen23), shuffle<0, 1, 0, 1>(blue01, blue23)}};
}

/// The block with the alpha of `in`, whose bits stay as they are.
REMAPCOLOR_INLINE PixelBlock withAlphaOf(PixelBlock const& in, PixelBlock const& block)
{
    Ints const alpha = alphaLanes();
    return {{alpha ? in.vectors[0] : block.vectors[0], alpha ? in.vectors[1] : block.vectors[1],
             alpha ? in.vectors[2] : block.vectors[2], alpha ? in.vectors[3] : block.vectors[3]}};
}

/// The block's colour with the alpha of `in`.
REMAPCOLOR_INLINE PixelBlock withAlphaOf(PixelBlock const& in, Colours const& colour)
{
    auto const& [red, green, blue] = colour.vectors;
    Floats const redGreen01 = interleaveLower(red, green);
    Floats const redGreen23 = interleaveUpper(red, green);
    return withAlphaOf(
        in,
        PixelBlock{{shuffle<0, 1, 0, 0>(redGreen01, blue), shuffle<2, 3, 1, 1>(redGreen01, blue),
                    shuffle<0, 1, 2, 2>(redGreen23, blue), shuffle<2, 3, 3, 3>(redGreen23, blue)}});
}

/// As many pixels as a step of the arithmetic goes over before the next one begins.
constexpr int runPixels = 64;

/// One number for each pixel of a run.
template <typename Number>
struct Plane {
    alignas(64) Number numbers[runPixels];
};
using Values = Plane<float>;

/// A plane for each channel.
using Colour = Values[nbChannels];

/// Goes over a run's vectors; `step(first)` gets the number of a vector's first lane.
template <typename Step>
REMAPCOLOR_INLINE void forVectors(Step const& step)
{
#pragma GCC unroll 8
    for (int at = 0; at < runPixels; at += lanes) {
        step(at);
    }
}

template <typename Step>
REMAPCOLOR_INLINE void forChannels(Step const& step)
{
    for (int channel = 0; channel < nbChannels; ++channel) {
        step(channel);
    }
}

} // namespace RemapColorRowKernels::INSTRUCTION_SET
