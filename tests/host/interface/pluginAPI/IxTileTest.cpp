// Tiles' memory, which is used again.

#include "pluginAPI/IxTile.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

std::byte const* addressOf(IxTile const& tile)
{
    return IxReadGuard(tile).getRow(tile.getBounds().y0);
}

TEST(IxTileTest, MemoryIsUsedAgainByOneTileAtATimeThatItFits)
{
    IxPixelFormat const format;
    std::byte const* former = nullptr;
    {
        IxTile const tile(format, {0, 0, 64, 64});
        IxTile const copy = tile;
        former = addressOf(tile);
        EXPECT_EQ(addressOf(copy), former);
    }
    IxTile const larger(format, {0, 0, 64, 65});
    EXPECT_NE(addressOf(larger), former);
    IxTile const small(format, {0, 0, 64, 31});
    EXPECT_NE(addressOf(small), former);
    IxTile const same(format, {-3, 5, 61, 69});
    EXPECT_EQ(addressOf(same), former);
    IxTile const another(format, {0, 0, 64, 64});
    EXPECT_NE(addressOf(another), former);
}

TEST(IxTileTest, RowsLieApartAndStartAtEvenAddresses)
{
    IxPixelFormat const format(IxPixelFormat::RGB, IxPixelFormat::UINT8, Rational(), false);
    IxTile const tile(format, {2, -3, 25, 4}); // 69 bytes in a row
    IxReadGuard const guard(tile);
    for (int y = -3; y < 4; ++y) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(guard.getRow(y)) % 64, 0U);
        EXPECT_EQ(guard.getRow(y) - guard.getRow(-3), 128 * (y + 3));
    }
}

} // namespace
