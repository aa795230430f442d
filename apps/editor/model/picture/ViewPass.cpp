#include "editor/model/picture/ViewPass.h"

#include "editor/model/picture/BoxReduction.h"
#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr int pixelsPerQuickPart = 1 << 16;
/// Few, so that a pass which nobody wants any more ends soon.
constexpr int pixelsPerThoroughPart = 1 << 17;

/// Parts of a task are runs of the image's rows.
class RowsPass : public WorkCrew::Job {
public:
    explicit RowsPass(ViewTask const& itsTask)
        : task(itsTask), encoder(task.transform), grid(task.image->grid)
    {
    }

protected:
    int countParts(double pixelsPerRow, int pixelsPerPart)
    {
        rowsPerPart = std::clamp(static_cast<int>(pixelsPerPart / pixelsPerRow), 1, grid.height);
        return (grid.height + rowsPerPart - 1) / rowsPerPart;
    }
    int getFirst(int part) const { return part * rowsPerPart; }
    int getLast(int part) const { return std::min((part + 1) * rowsPerPart, grid.height); }

    std::span<std::uint32_t> getScreenRow(int row) const
    {
        auto const width = static_cast<std::size_t>(grid.width);
        return std::span(task.image->pixels).subspan(static_cast<std::size_t>(row) * width, width);
    }
    IxTile process(IxTile const& tile) const
    {
        return task.chain == nullptr ? tile : task.chain->send(tile, task.time);
    }

    ViewTask const task;
    ScreenEncoder const encoder;
    PixelGrid const& grid;

private:
    int rowsPerPart = 1;
};

class QuickPass : public RowsPass {
public:
    explicit QuickPass(ViewTask const& itsTask)
        : RowsPass(itsTask), tables(task.picture->info.format)
    {
    }

    int begin() override
    {
        GeRectangle<int> const& data = task.picture->info.dataWindow;
        IxPixelFormat const& format = task.picture->info.format;
        for (int column = 0; column < grid.width; ++column) {
            int const x = findPixel(grid.x0, column, data.x0, data.x1);
            offsets.push_back(static_cast<std::uint32_t>(x - data.x0) *
                              static_cast<std::uint32_t>(format.getBytesPerPixel()));
        }
        usesTables = ValueTables::canShow(format, encoder);
        if (usesTables) {
            tables.fill(task.valueChain, task.time, encoder);
        }
        return countParts(grid.width, pixelsPerQuickPart);
    }

    void doPart(int part) override
    {
        if (usesTables) {
            for (int row = getFirst(part); row < getLast(part); ++row) {
                tables.show(getSourceRow(row), offsets, getScreenRow(row));
            }
            return;
        }
        IxTile const results = process(gather(getFirst(part), getLast(part)));
        IxReadGuard const guard(results);
        std::vector<Pixel> pixels(static_cast<std::size_t>(grid.width));
        for (int row = getFirst(part); row < getLast(part); ++row) {
            int const y = results.getBounds().y0 + row - getFirst(part);
            readPixelRow(results.getPixelFormat(), guard.getRow(y), pixels);
            encoder.encode(pixels, getScreenRow(row));
        }
    }

private:
    /// In the middle of a square.
    int findPixel(double from, int index, int begin, int end) const
    {
        auto const place = std::floor(from + (index + 0.5) * grid.step);
        return static_cast<int>(std::clamp(place, double(begin), end - 1.0));
    }

    std::byte const* getSourceRow(int row) const
    {
        GeRectangle<int> const& data = task.picture->info.dataWindow;
        return IxReadGuard(task.picture->pixels).getRow(findPixel(grid.y0, row, data.y0, data.y1));
    }

    /// The picture's pixels at those rows' places, side by side.
    IxTile gather(int first, int last) const
    {
        GeRectangle<int> const& data = task.picture->info.dataWindow;
        IxPixelFormat const& format = task.picture->info.format;
        IxTile const tile(format, {data.x0, data.y0 + first, data.x0 + grid.width, data.y0 + last});
        IxWriteGuard const guard(tile);
        std::size_t const pixelBytes = format.getBytesPerPixel();
        for (int row = first; row < last; ++row) {
            std::byte const* const from = getSourceRow(row);
            std::byte* to = guard.getRow(data.y0 + row);
            for (std::uint32_t const offset : offsets) {
                std::memcpy(to, from + offset, pixelBytes);
                to += pixelBytes;
            }
        }
        return tile;
    }

    ValueTables tables;
    bool usesTables = false;
    std::vector<std::uint32_t> offsets; ///< of the columns, in bytes
};

class ThoroughPass : public RowsPass {
public:
    explicit ThoroughPass(ViewTask const& itsTask)
        : RowsPass(itsTask), reduction(grid, task.picture->info.dataWindow)
    {
    }

    int begin() override
    {
        return countParts(grid.width * grid.step * grid.step, pixelsPerThoroughPart);
    }

    void doPart(int part) override
    {
        GeRectangle<int> const source = reduction.findSource(getFirst(part), getLast(part));
        IxTile const results = process(viewOf(task.picture->pixels, source));
        IxReadGuard const guard(results);
        std::vector<Pixel> wide(static_cast<std::size_t>(source.getWidth()));
        std::vector<Pixel> pixels(static_cast<std::size_t>(grid.width));
        auto const read = [&](int y) {
            readPixelRow(results.getPixelFormat(), guard.getRow(y), wide);
            return std::span<Pixel const>(wide);
        };
        for (int row = getFirst(part); row < getLast(part); ++row) {
            if (grid.step == 1.0) { // every bit as it is
                readPixelRow(results.getPixelFormat(),
                             guard.getRow(source.y0 + row - getFirst(part)), pixels);
            } else {
                reduction.reduce(row, read, pixels);
            }
            encoder.encode(pixels, getScreenRow(row));
        }
    }

private:
    BoxReduction const reduction;
};

} // namespace

std::unique_ptr<WorkCrew::Job> makeQuickPass(ViewTask const& task)
{
    return std::make_unique<QuickPass>(task);
}

std::unique_ptr<WorkCrew::Job> makeThoroughPass(ViewTask const& task)
{
    return std::make_unique<ThoroughPass>(task);
}
