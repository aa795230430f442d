// Levels, tiles and blocks of rows, counted as the file format counts them.

#include "media/ExrChunkGrid.h"

#include <algorithm>

namespace {

std::uint64_t divideUp(std::uint64_t value, std::uint64_t divisor)
{
    return (value + divisor - 1) / divisor;
}

int sizeAt(int size, int level, Imf::LevelRoundingMode rounding)
{
    std::int64_t const added = rounding == Imf::ROUND_UP ? (std::int64_t{1} << level) - 1 : 0;
    return static_cast<int>(std::max<std::int64_t>((size + added) >> level, 1));
}

int countLevels(int size, Imf::LevelRoundingMode rounding)
{
    int levels = 1;
    while (sizeAt(size, levels - 1, rounding) > 1) {
        ++levels;
    }
    return levels;
}

/// How often width and height are halved, level after level.
std::vector<ExrChunkGrid::Level> listLevels(ExrHeader const& header, GeRectangle<int> const& window)
{
    using Level = ExrChunkGrid::Level;
    std::vector<Level> levels;
    auto const add = [&levels](int x, int y) {
        Level& level = levels.emplace_back();
        level.x = x;
        level.y = y;
    };
    if (!header.isTiled || header.header.tileDescription().mode == Imf::ONE_LEVEL) {
        add(0, 0);
        return levels;
    }
    Imf::TileDescription const& tiles = header.header.tileDescription();
    int const across = countLevels(window.getWidth(), tiles.roundingMode);
    int const down = countLevels(window.getHeight(), tiles.roundingMode);
    if (tiles.mode == Imf::MIPMAP_LEVELS) {
        for (int level = 0; level < std::max(across, down); ++level) {
            add(level, level);
        }
        return levels;
    }
    for (int y = 0; y < down; ++y) {
        for (int x = 0; x < across; ++x) {
            add(x, y);
        }
    }
    return levels;
}

} // namespace

GeRectangle<int> toRectangle(Imath::Box2i const& box)
{
    return {box.min.x, box.min.y, box.max.x + 1, box.max.y + 1};
}

ExrChunkGrid::ExrChunkGrid(ExrHeader const& header)
    : isTiled(header.isTiled), rowsPerChunk(rowsPerBlockOf(header))
{
    GeRectangle<int> const window = toRectangle(header.header.dataWindow());
    Imf::LevelRoundingMode const rounding =
        isTiled ? header.header.tileDescription().roundingMode : Imf::ROUND_DOWN;
    columnsPerChunk =
        isTiled ? static_cast<int>(header.header.tileDescription().xSize) : window.getWidth();
    levels = listLevels(header, window);
    std::uint64_t chunks = 0;
    for (Level& level : levels) {
        int const width = sizeAt(window.getWidth(), level.x, rounding);
        int const height = sizeAt(window.getHeight(), level.y, rounding);
        level.window = {window.x0, window.y0, window.x0 + width, window.y0 + height};
        level.firstChunk = chunks;
        level.across = divideUp(static_cast<std::uint64_t>(width),
                                static_cast<std::uint64_t>(columnsPerChunk));
        level.down =
            divideUp(static_cast<std::uint64_t>(height), static_cast<std::uint64_t>(rowsPerChunk));
        chunks += level.across * level.down;
    }
}

std::uint64_t ExrChunkGrid::countChunks() const
{
    Level const& last = levels.back();
    return last.firstChunk + last.across * last.down;
}

ExrChunkGrid::Level const& ExrChunkGrid::levelOf(std::uint64_t chunk) const
{
    return *std::prev(std::upper_bound(
        levels.begin(), levels.end(), chunk,
        [](std::uint64_t wanted, Level const& level) { return wanted < level.firstChunk; }));
}

GeRectangle<int> ExrChunkGrid::boundsOf(std::uint64_t chunk) const
{
    Level const& level = levelOf(chunk);
    std::uint64_t const place = chunk - level.firstChunk;
    int const left = level.window.x0 + static_cast<int>(place % level.across) * columnsPerChunk;
    int const top = level.window.y0 + static_cast<int>(place / level.across) * rowsPerChunk;
    return {left, top, std::min(columnsPerChunk, level.window.x1 - left) + left,
            std::min(rowsPerChunk, level.window.y1 - top) + top};
}

std::uint64_t ExrChunkGrid::firstInRow(Level const& level, int y) const
{
    auto const row = static_cast<std::uint64_t>((y - level.window.y0) / rowsPerChunk);
    return level.firstChunk + row * level.across;
}

std::vector<int> ExrChunkGrid::coordinatesOf(std::uint64_t chunk) const
{
    Level const& level = levelOf(chunk);
    if (!isTiled) {
        return {boundsOf(chunk).y0};
    }
    std::uint64_t const place = chunk - level.firstChunk;
    return {static_cast<int>(place % level.across), static_cast<int>(place / level.across), level.x,
            level.y};
}

std::optional<std::uint64_t> ExrChunkGrid::findChunk(std::array<int, 4> const& coordinates) const
{
    if (!isTiled) {
        GeRectangle<int> const& window = levels.front().window;
        bool const isInside = coordinates[0] >= window.y0 && coordinates[0] < window.y1 &&
                              (coordinates[0] - window.y0) % rowsPerChunk == 0;
        return isInside ? std::optional(firstInRow(levels.front(), coordinates[0])) : std::nullopt;
    }
    auto const [column, row, x, y] = coordinates;
    for (Level const& level : levels) {
        if (level.x == x && level.y == y && column >= 0 && row >= 0 &&
            static_cast<std::uint64_t>(column) < level.across &&
            static_cast<std::uint64_t>(row) < level.down) {
            return level.firstChunk + static_cast<std::uint64_t>(row) * level.across +
                   static_cast<std::uint64_t>(column);
        }
    }
    return {};
}
