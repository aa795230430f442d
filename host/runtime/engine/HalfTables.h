#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "runtime/engine/SourceImageNode.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

/// What a chain makes of each of the 65,536 halves, for red, green and blue: for large half
/// pictures, whose pixels cost a look-up then, to the same bits.
///
/// That is right for chains in which a component of colour depends on nothing but itself, and alpha
/// stays; no mask may be part of them. Immutable after construction; any thread.
class HalfTables {
public:
    /// From how many pixels on a picture gains by tables.
    static constexpr std::int64_t leastPixels = 1 << 19;

    /// Evaluates the chain at a time. Null where it does not go from half to half of the same
    /// components of colour, or where two orders of the values at two places show that a result
    /// depends on the pixel's other components or its place, or that alpha changes. A worker;
    /// throws what the chain throws.
    static std::unique_ptr<HalfTables const> make(PxImageProtocol const& chain,
                                                  SourceImageNode& start, double time);

    /// A tile with the results of `tile`, or itself where all halves stay.
    IxTile apply(IxTile const& tile) const;

private:
    using Table = std::vector<std::uint16_t>;
    using TablePointers = std::array<std::uint16_t const*, 3>;

    HalfTables(std::array<Table, 3> madeTables, IxPixelFormat const& madeFormat);

    IxPixelFormat format; ///< of results
    std::array<Table, 3> tables;
    TablePointers used; ///< equal ones are one, which the caches hold better
    bool isIdentity = true;
};
