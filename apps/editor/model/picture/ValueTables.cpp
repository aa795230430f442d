#include "editor/model/picture/ValueTables.h"

#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>

namespace {

constexpr int valuesPerRow = 256;

int countValues(IxPixelFormat const& format)
{
    return format.getDepth() == IxPixelFormat::UINT8 ? 256 : 65536;
}

GeRectangle<int> boundsOfValues(IxPixelFormat const& format)
{
    return {0, 0, valuesPerRow, countValues(format) / valuesPerRow};
}

template <typename Sample>
void fillRow(std::byte* row, int first, int nbComponents)
{
    auto* sample = reinterpret_cast<Sample*>(row);
    for (int value = first; value < first + valuesPerRow; ++value) {
        sample = std::fill_n(sample, nbComponents, static_cast<Sample>(value));
    }
}

/// Every value, in all components of a pixel.
IxTile makeValues(IxPixelFormat const& format)
{
    IxTile const tile(format, boundsOfValues(format));
    IxWriteGuard const guard(tile);
    for (int y = 0; y < tile.getBounds().y1; ++y) {
        auto* const fill = format.getDepth() == IxPixelFormat::UINT8 ? &fillRow<std::uint8_t>
                                                                     : &fillRow<std::uint16_t>;
        fill(guard.getRow(y), y * valuesPerRow, format.getNbComponents());
    }
    return tile;
}

template <typename Sample>
void lookUp(std::byte const* row, std::span<std::uint32_t const> offsets,
            std::array<std::uint8_t const*, 3> const& tables,
            std::array<std::size_t, 3> const& components, std::span<std::uint32_t> screen)
{
    for (std::size_t x = 0; x < screen.size(); ++x) {
        auto const* const pixel = reinterpret_cast<Sample const*>(row + offsets[x]);
        auto const byte = [&](std::size_t channel) {
            return std::uint32_t{tables[channel][pixel[components[channel]]]};
        };
        screen[x] = 0xff000000U | byte(0) << 16U | byte(1) << 8U | byte(2);
    }
}

std::array<std::size_t, 3> findShown(ViewTransform::Channels channels)
{
    switch (channels) {
    case ViewTransform::Rgb: return {0, 1, 2};
    case ViewTransform::Red: return {0, 0, 0};
    case ViewTransform::Green: return {1, 1, 1};
    case ViewTransform::Blue: return {2, 2, 2};
    case ViewTransform::Alpha: break;
    }
    return {3, 3, 3};
}

} // namespace

bool ValueTables::canShow(IxPixelFormat const& format, ScreenEncoder const& encoder)
{
    bool const isAlpha = encoder.getTransform().channels == ViewTransform::Alpha;
    return format.getDepth() != IxPixelFormat::FLOAT32 && encoder.isPerChannel() &&
           format.getNbComponents() >= (isAlpha ? 4 : 3);
}

ImageInfo ValueTables::describeValues(ImageInfo const& picture)
{
    ImageInfo info = picture;
    info.dataWindow = boundsOfValues(picture.format);
    info.displayWindow = info.dataWindow;
    return info;
}

void ValueTables::fill(NodeChain const* chain, double time, ScreenEncoder const& encoder)
{
    IxTile const values = makeValues(format);
    IxTile const results = chain == nullptr ? values : chain->send(values, time);
    IxReadGuard const guard(results);
    shown = findShown(encoder.getTransform().channels);
    ViewTransform transform = encoder.getTransform();
    transform.channels = shown[0] == 3 ? ViewTransform::Alpha : ViewTransform::Rgb;
    ScreenEncoder const all(transform);
    std::vector<CoRgbaColorTyped<float>> row(valuesPerRow);
    std::vector<std::uint32_t> screen(valuesPerRow);
    for (auto& table : bytes) {
        table.clear();
    }
    for (int y = 0; y < results.getBounds().y1; ++y) {
        readPixelRow(results.getPixelFormat(), guard.getRow(y), row);
        all.encode(row, screen);
        for (std::uint32_t const pixel : screen) {
            bytes[0].push_back(static_cast<std::uint8_t>(pixel >> 16U));
            bytes[1].push_back(static_cast<std::uint8_t>(pixel >> 8U));
            bytes[2].push_back(static_cast<std::uint8_t>(pixel));
        }
    }
    bytes[3] = bytes[0]; // all the same where alpha is shown
}

void ValueTables::show(std::byte const* row, std::span<std::uint32_t const> offsets,
                       std::span<std::uint32_t> screen) const
{
    std::array const tables{bytes[shown[0]].data(), bytes[shown[1]].data(), bytes[shown[2]].data()};
    auto const look =
        format.getDepth() == IxPixelFormat::UINT8 ? &lookUp<std::uint8_t> : &lookUp<std::uint16_t>;
    look(row, offsets, tables, shown, screen);
}
