// A chain as three tables of half to half.

#include "runtime/engine/HalfTables.h"

#include "runtime/engine/DeliveredStrip.h"

#include <cstring>
#include <optional>

namespace {

constexpr int side = 256; // of a tile with all halves
constexpr std::uint32_t nbHalves = 1U << 16;
constexpr std::size_t nbColours = 3;

/// All halves in an order of each component's own: index times an odd number, plus a shift.
struct Order {
    struct Step {
        std::uint32_t factor;
        std::uint32_t shift;
    };
    std::array<Step, 4> steps; ///< red, green, blue, alpha

    std::uint16_t valueAt(std::size_t component, std::uint32_t index) const
    {
        return static_cast<std::uint16_t>(index * steps[component].factor + steps[component].shift);
    }
};
constexpr Order together = {{{{1, 0}, {1, 0}, {1, 0}, {1, 0x3c00}}}};
constexpr Order apart = {{{{40503, 1}, {24571, 17713}, {52711, 43691}, {9973, 60000}}}};

/// The sample of a component in a tile of halves that is `side` pixels wide and high.
std::uint16_t* sampleAt(IxWriteGuard const& guard, std::uint32_t index, std::size_t component)
{
    IxTile const& tile = guard.getTile();
    int const row = static_cast<int>(index / side);
    auto* const samples = reinterpret_cast<std::uint16_t*>(guard.getRow(tile.getBounds().y0 + row));
    auto const components = static_cast<std::size_t>(tile.getPixelFormat().getNbComponents());
    return samples + index % side * components + component;
}

/// Sends all halves through the chain. Nothing where what comes back is no tile of the like, or has
/// another alpha.
std::optional<IxTile> send(PxImageProtocol const& chain, SourceImageNode& start, double time,
                           Order const& order, GeRectangle<int> const& bounds)
{
    IxPixelFormat const format = start.getImageFormat().getPixelFormat();
    auto const components = static_cast<std::size_t>(format.getNbComponents());
    IxTile const tile(format, bounds);
    IxWriteGuard const guard(tile);
    for (std::uint32_t index = 0; index < nbHalves; ++index) {
        for (std::size_t component = 0; component < components; ++component) {
            *sampleAt(guard, index, component) = order.valueAt(component, index);
        }
    }
    DeliveredStrip const delivered(start, tile);
    IxTile result = chain.computeImage(PxImageContext(time, bounds)).getTileGuard().getTile();
    IxPixelFormat const& made = result.getPixelFormat();
    if (made.getDepth() != format.getDepth() || made.getComponents() != format.getComponents() ||
        !(result.getBounds() == bounds)) {
        return {};
    }
    IxWriteGuard const resultGuard(result); // only read from
    for (std::uint32_t index = 0; components > nbColours && index < nbHalves; ++index) {
        if (*sampleAt(resultGuard, index, nbColours) != order.valueAt(nbColours, index)) {
            return {};
        }
    }
    return result;
}

} // namespace

std::unique_ptr<HalfTables const> HalfTables::make(PxImageProtocol const& chain,
                                                   SourceImageNode& start, double time)
{
    IxPixelFormat const format = start.getImageFormat().getPixelFormat();
    if (format.getDepth() != IxPixelFormat::FLOAT16 ||
        format.getComponents() == IxPixelFormat::ALPHA) {
        return nullptr;
    }
    // Strips begin where the picture does: no strip has these bounds.
    GeRectangle<int> const picture = start.getImageROD(PxTimeContext(time));
    GeRectangle<int> const first{picture.x0 - 1, picture.y0, picture.x0 - 1 + side,
                                 picture.y0 + side};
    GeRectangle<int> const second{picture.x0 - 2, picture.y1, picture.x0 - 2 + side,
                                  picture.y1 + side};
    std::optional<IxTile> const made = send(chain, start, time, together, first);
    std::optional<IxTile> const again =
        made ? send(chain, start, time, apart, second) : std::nullopt;
    if (!again) {
        return nullptr;
    }
    IxWriteGuard const madeGuard(*made); // both only read from
    IxWriteGuard const againGuard(*again);
    std::array<Table, nbColours> tables;
    for (std::size_t colour = 0; colour < nbColours; ++colour) {
        tables[colour].resize(nbHalves);
        for (std::uint32_t index = 0; index < nbHalves; ++index) {
            tables[colour][together.valueAt(colour, index)] = *sampleAt(madeGuard, index, colour);
        }
        for (std::uint32_t index = 0; index < nbHalves; ++index) {
            if (tables[colour][apart.valueAt(colour, index)] !=
                *sampleAt(againGuard, index, colour)) {
                return nullptr;
            }
        }
    }
    return std::unique_ptr<HalfTables const>(
        new HalfTables(std::move(tables), made->getPixelFormat()));
}

HalfTables::HalfTables(std::array<Table, 3> madeTables, IxPixelFormat const& madeFormat)
    : format(madeFormat), tables(std::move(madeTables))
{
    for (std::size_t colour = 0; colour < nbColours; ++colour) {
        used[colour] =
            tables[colour] == tables.front() ? tables.front().data() : tables[colour].data();
        for (std::uint32_t index = 0; index < nbHalves; ++index) {
            isIdentity = isIdentity && tables[colour][index] == index;
        }
    }
}

namespace {

/// Rows of RGBA; alpha is handed on with its bits.
void applyToRgba(std::array<std::uint16_t const*, nbColours> const& tables, std::byte const* from,
                 std::byte* to, int width)
{
    auto const [red, green, blue] = tables;
    for (int x = 0; x < width; ++x) {
        std::array<std::uint16_t, 4> pixel; // NOLINT: filled at once
        std::memcpy(pixel.data(), from, sizeof pixel);
        pixel[0] = red[pixel[0]];
        pixel[1] = green[pixel[1]];
        pixel[2] = blue[pixel[2]];
        std::memcpy(to, pixel.data(), sizeof pixel);
        from += sizeof pixel;
        to += sizeof pixel;
    }
}

void applyToRgb(std::array<std::uint16_t const*, nbColours> const& tables, std::byte const* from,
                std::byte* to, int width)
{
    for (int x = 0; x < width; ++x) {
        for (std::uint16_t const* const table : tables) {
            std::uint16_t value = 0;
            std::memcpy(&value, from, sizeof value);
            std::memcpy(to, &table[value], sizeof value);
            from += sizeof value;
            to += sizeof value;
        }
    }
}

} // namespace

IxTile HalfTables::apply(IxTile const& tile) const
{
    if (isIdentity && tile.getPixelFormat() == format) {
        return tile;
    }
    GeRectangle<int> const& bounds = tile.getBounds();
    IxTile result(format, bounds);
    IxReadGuard const from(tile);
    IxWriteGuard const to(result);
    bool const hasAlpha = format.getComponents() == IxPixelFormat::RGBA;
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        (hasAlpha ? applyToRgba : applyToRgb)(used, from.getRow(y), to.getRow(y),
                                              bounds.getWidth());
    }
    return result;
}
