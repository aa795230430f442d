// Vectors of floats in the width of the instruction set that the including source is compiled for,
// and the few operations on them that have no operator. Not for sources that are compiled once.

#ifndef INSTRUCTION_SET
#error "for sources that are compiled for an instruction set"
#endif

#include "remapColorPower.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

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

using Floats = float __attribute__((vector_size(lanes * 4)));
using Ints = std::int32_t __attribute__((vector_size(lanes * 4)));
using Words = std::uint32_t __attribute__((vector_size(lanes * 4)));
using HalfFloats = float __attribute__((vector_size(lanes * 2)));
using Doubles = double __attribute__((vector_size(lanes * 4))); ///< half as many lanes
using Quad = float __attribute__((vector_size(16)));

#define REMAPCOLOR_INLINE [[gnu::always_inline]] static inline

REMAPCOLOR_INLINE Floats load(float const* values)
{
    Floats loaded;
    std::memcpy(&loaded, values, sizeof(loaded));
    return loaded;
}

REMAPCOLOR_INLINE void store(Floats stored, float* values)
{
    std::memcpy(values, &stored, sizeof(stored));
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
    return {{values[0], values[1]}, {values[2], values[3]}};
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
    return {static_cast<float>(values.low[0]), static_cast<float>(values.low[1]),
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

/// Calls `visit(lane, first, second)` for the lanes 0, 2, 4, ...: each even lane's number and its
/// neighbour's. They leave the vector two at a time, which is sooner than by way of memory.
template <typename Visit>
REMAPCOLOR_INLINE void forLanePairs(Ints numbers, Visit const& visit)
{
    using TwoWide = std::uint64_t __attribute__((vector_size(16)));
    auto const visitQuad = [&](int firstLane, TwoWide quad) __attribute__((always_inline))
    {
        visit(firstLane, static_cast<std::uint32_t>(quad[0]), quad[0] >> 32);
        visit(firstLane + 2, static_cast<std::uint32_t>(quad[1]), quad[1] >> 32);
    };
#if defined(__AVX512F__)
    auto const all = reinterpret_cast<__m512i>(numbers);
    visitQuad(0, reinterpret_cast<TwoWide>(_mm512_castsi512_si128(all)));
    visitQuad(4, reinterpret_cast<TwoWide>(_mm512_extracti32x4_epi32(all, 1)));
    visitQuad(8, reinterpret_cast<TwoWide>(_mm512_extracti32x4_epi32(all, 2)));
    visitQuad(12, reinterpret_cast<TwoWide>(_mm512_extracti32x4_epi32(all, 3)));
#elif defined(__AVX2__)
    auto const all = reinterpret_cast<__m256i>(numbers);
    visitQuad(0, reinterpret_cast<TwoWide>(_mm256_castsi256_si128(all)));
    visitQuad(4, reinterpret_cast<TwoWide>(_mm256_extracti128_si256(all, 1)));
#else
    visitQuad(0, reinterpret_cast<TwoWide>(numbers));
#endif
}

/// Two lists of lanes that are the first and the second of neighbouring numbers in memory.
struct Neighbours {
    Floats first;
    Floats second;
};

/// Two floats from each of two places.
REMAPCOLOR_INLINE Quad twoPairs(float const* first, float const* second)
{
#if defined(__SSE2__)
    __m128i const low = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(first));
    return _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<__m64 const*>(second));
#else
    return {first[0], first[1], second[0], second[1]};
#endif
}

/// Loads the pair of floats at `addressOf(lane, index)` for every lane.
template <typename AddressOf>
REMAPCOLOR_INLINE Neighbours loadNeighbours(Ints index, AddressOf const& addressOf)
{
    // Two pairs in a quad: lanes 0, 1 of each four in `even`, lanes 2, 3 in `odd`.
    Quad even[lanes / 4];
    Quad odd[lanes / 4];
    forLanePairs(index, [&](int lane, std::size_t first, std::size_t second) {
        Quad const pairs = twoPairs(addressOf(lane, first), addressOf(lane + 1, second));
        (lane % 4 == 0 ? even : odd)[lane / 4] = pairs;
    });
    Floats const a = join(even);
    Floats const b = join(odd);
    return {shuffle<0, 2, 0, 2>(a, b), shuffle<1, 3, 1, 3>(a, b)};
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

/// Lane by lane the pair of that index (0 to 31; higher bits do not count).
REMAPCOLOR_INLINE Neighbours selectWhole(RemapColorPower::PreparedPower const& power, Ints index)
{
#if defined(__AVX512F__)
    auto const column = [&](float const* numbers) {
        return _mm512_permutex2var_ps(_mm512_load_ps(numbers), reinterpret_cast<__m512i>(index),
                                      _mm512_load_ps(numbers + 16));
    };
    return {column(power.wholeColumns[0]), column(power.wholeColumns[1])};
#else
    return loadNeighbours(index & (RemapColorPower::PreparedPower::nbTablePowers - 1),
                          [&](int, std::size_t entry) { return &power.wholeRows[entry].head; });
#endif
}

/// Lane by lane the entry of a table with centres: 1 / c and a number of c as a pair.
struct EntryVectors {
    Floats inverse;
    Floats head;
    Floats tail;
};

#if !defined(__AVX2__)
/// Lane by lane the first three numbers of the row of that index (0 to 15; higher bits do not
/// count).
template <typename Row>
REMAPCOLOR_INLINE EntryVectors loadRows(Row const* table, Ints index)
{
    Quad rows[lanes];
    forLanePairs(index & (RemapColorPower::logEntries - 1),
                 [&](int lane, std::size_t first, std::size_t second) {
                     std::memcpy(&rows[lane], &table[first], sizeof(Quad));
                     std::memcpy(&rows[lane + 1], &table[second], sizeof(Quad));
                 });
    Floats const firstLower = interleaveLower(rows[0], rows[1]);
    Floats const firstUpper = interleaveUpper(rows[0], rows[1]);
    Floats const lastLower = interleaveLower(rows[2], rows[3]);
    Floats const lastUpper = interleaveUpper(rows[2], rows[3]);
    return {shuffle<0, 1, 0, 1>(firstLower, lastLower), shuffle<2, 3, 2, 3>(firstLower, lastLower),
            shuffle<0, 1, 0, 1>(firstUpper, lastUpper)};
}
#endif

/// The entries of the logarithm's table.
REMAPCOLOR_INLINE EntryVectors logEntries(Ints index)
{
    auto const& table = RemapColorPower::logTable;
#if defined(__AVX2__)
    return {select(table.columns[0], index), select(table.columns[1], index),
            select(table.columns[2], index)};
#else
    return loadRows(table.rows, index);
#endif
}

/// The centres of a prepared power.
REMAPCOLOR_INLINE EntryVectors selectCentre(RemapColorPower::PreparedPower const& power, Ints index)
{
#if defined(__AVX2__)
    return {select(RemapColorPower::logTable.columns[0], index),
            select(power.centreColumns[0], index), select(power.centreColumns[1], index)};
#else
    return loadRows(power.centreRows, index);
#endif
}

/// The entries of the exponential's table, head and tail.
REMAPCOLOR_INLINE Neighbours expEntries(Ints index)
{
    auto const& table = RemapColorPower::expTable;
#if defined(__AVX2__)
    return {select(table.columns[0], index), select(table.columns[1], index)};
#else
    return loadNeighbours(index & (RemapColorPower::expEntries - 1),
                          [&](int, std::size_t entry) { return &table.rows[entry].head; });
#endif
}

/// As many pixels as there are lanes, in four vectors of interleaved components.
struct PixelBlock {
    Floats vectors[4];
};

/// The colour of as many pixels as there are lanes: red, green and blue. Arithmetic goes step by
/// step over all three, so that a step's latency is filled by the other two's work.
constexpr int nbColourVectors = 3;

template <typename Vector>
struct Colours {
    Vector vectors[nbColourVectors];
};

using Values = Colours<Floats>;
using Masks = Colours<Ints>; ///< every lane 0 or all bits set
using Bits = Colours<Words>;

/// The operation on one vector after the other.
template <typename Operation>
REMAPCOLOR_INLINE auto forVectors(Operation const& operation)
{
    return Colours<decltype(operation(0))>{{operation(0), operation(1), operation(2)}};
}

/// The type of a vector's numbers.
template <typename Vector>
using Lane = std::decay_t<decltype(Vector()[0])>;

#define REMAPCOLOR_OPERATOR(op)                                                                    \
    template <typename Vector>                                                                     \
    REMAPCOLOR_INLINE auto operator op(Colours<Vector> const& a, Colours<Vector> const& b)         \
    {                                                                                              \
        return forVectors([&](int v) { return a.vectors[v] op b.vectors[v]; });                    \
    }                                                                                              \
    template <typename Vector>                                                                     \
    REMAPCOLOR_INLINE auto operator op(Colours<Vector> const& a, Lane<Vector> b)                   \
    {                                                                                              \
        return forVectors([&](int v) { return a.vectors[v] op b; });                               \
    }                                                                                              \
    template <typename Vector>                                                                     \
    REMAPCOLOR_INLINE auto operator op(Lane<Vector> a, Colours<Vector> const& b)                   \
    {                                                                                              \
        return forVectors([&](int v) { return a op b.vectors[v]; });                               \
    }

REMAPCOLOR_OPERATOR(+)
REMAPCOLOR_OPERATOR(-)
REMAPCOLOR_OPERATOR(*)
REMAPCOLOR_OPERATOR(/)
REMAPCOLOR_OPERATOR(&)
REMAPCOLOR_OPERATOR(|)
REMAPCOLOR_OPERATOR(<<)
REMAPCOLOR_OPERATOR(>>)
REMAPCOLOR_OPERATOR(<)
REMAPCOLOR_OPERATOR(>)
REMAPCOLOR_OPERATOR(>=)
REMAPCOLOR_OPERATOR(==)
#undef REMAPCOLOR_OPERATOR

template <typename Vector>
REMAPCOLOR_INLINE auto operator~(Colours<Vector> const& a)
{
    return forVectors([&](int v) { return ~a.vectors[v]; });
}

REMAPCOLOR_INLINE Values choose(Masks const& mask, Values const& yes, Values const& no)
{
    return forVectors([&](int v) { return mask.vectors[v] ? yes.vectors[v] : no.vectors[v]; });
}

REMAPCOLOR_INLINE Values choose(Masks const& mask, Values const& yes, float no)
{
    return choose(mask, yes, forVectors([&](int) { return broadcast(no); }));
}

REMAPCOLOR_INLINE Values choose(Masks const& mask, float yes, Values const& no)
{
    return choose(mask, forVectors([&](int) { return broadcast(yes); }), no);
}

REMAPCOLOR_INLINE bool any(Masks const& mask)
{
    return any(mask.vectors[0] | mask.vectors[1] | mask.vectors[2]);
}

REMAPCOLOR_INLINE Bits bitsOf(Values const& values)
{
    return forVectors([&](int v) { return reinterpret_cast<Words>(values.vectors[v]); });
}

REMAPCOLOR_INLINE Values valuesOf(Bits const& bits)
{
    return forVectors([&](int v) { return reinterpret_cast<Floats>(bits.vectors[v]); });
}

REMAPCOLOR_INLINE Masks asInts(Bits const& bits)
{
    return forVectors([&](int v) { return reinterpret_cast<Ints>(bits.vectors[v]); });
}

REMAPCOLOR_INLINE Values toFloats(Masks const& ints)
{
    return forVectors([&](int v) { return toFloats(ints.vectors[v]); });
}

REMAPCOLOR_INLINE Masks toInts(Values const& values)
{
    return forVectors([&](int v) { return toInts(values.vectors[v]); });
}

REMAPCOLOR_INLINE Bits bitsOfInts(Masks const& ints)
{
    return forVectors([&](int v) { return reinterpret_cast<Words>(ints.vectors[v]); });
}

REMAPCOLOR_INLINE Values negated(Values const& values)
{
    return forVectors([&](int v) { return -values.vectors[v]; });
}

struct PairLanes {
    Values head;
    Values tail;
};

/// The pairs that `select(vector)` gives.
template <typename Select>
REMAPCOLOR_INLINE PairLanes forPairs(Select const& select)
{
    auto const pairs = forVectors(select);
    return {forVectors([&](int v) { return pairs.vectors[v].first; }),
            forVectors([&](int v) { return pairs.vectors[v].second; })};
}

struct EntryLanes {
    Values inverse;
    Values head;
    Values tail;
};

/// The entries that `select(vector)` gives.
template <typename Select>
REMAPCOLOR_INLINE EntryLanes forEntries(Select const& select)
{
    auto const entries = forVectors(select);
    return {forVectors([&](int v) { return entries.vectors[v].inverse; }),
            forVectors([&](int v) { return entries.vectors[v].head; }),
            forVectors([&](int v) { return entries.vectors[v].tail; })};
}

REMAPCOLOR_INLINE EntryLanes logEntries(Masks const& index)
{
    return forEntries([&](int v) { return logEntries(index.vectors[v]); });
}

REMAPCOLOR_INLINE PairLanes expEntries(Masks const& index)
{
    return forPairs([&](int v) { return expEntries(index.vectors[v]); });
}

/// Each channel's 2^(k e).
REMAPCOLOR_INLINE PairLanes selectWhole(RemapColorPower::PreparedPower const* powers,
                                        Masks const& index)
{
    return forPairs([&](int v) { return selectWhole(powers[v], index.vectors[v]); });
}

/// Each channel's c^e.
REMAPCOLOR_INLINE EntryLanes selectCentre(RemapColorPower::PreparedPower const* powers,
                                          Masks const& index)
{
    return forEntries([&](int v) { return selectCentre(powers[v], index.vectors[v]); });
}

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
REMAPCOLOR_INLINE Values takeColour(PixelBlock const& in)
{
    auto const& [first, second, third, fourth] = in.vectors;
    Floats const redGreen01 = interleaveLower(first, second);
    Floats const redGreen23 = interleaveLower(third, fourth);
    Floats const blue01 = interleaveUpper(first, second);
    Floats const blue23 = interleaveUpper(third, fourth);
    return {{shuffle<0, 1, 0, 1>(redGreen01, redGreen23),
             shuffle<2, 3, 2, 3>(redGreen01, redGreen23), shuffle<0, 1, 0, 1>(blue01, blue23)}};
}

/// The block's colour with the alpha of `in`, whose bits stay as they are.
REMAPCOLOR_INLINE PixelBlock withAlphaOf(PixelBlock const& in, Values const& colour)
{
    auto const& [red, green, blue] = colour.vectors;
    Floats const redGreen01 = interleaveLower(red, green);
    Floats const redGreen23 = interleaveUpper(red, green);
    Ints const alpha = alphaLanes();
    return {{alpha ? in.vectors[0] : shuffle<0, 1, 0, 0>(redGreen01, blue),
             alpha ? in.vectors[1] : shuffle<2, 3, 1, 1>(redGreen01, blue),
             alpha ? in.vectors[2] : shuffle<0, 1, 2, 2>(redGreen23, blue),
             alpha ? in.vectors[3] : shuffle<2, 3, 3, 3>(redGreen23, blue)}};
}

} // namespace RemapColorRowKernels::INSTRUCTION_SET
