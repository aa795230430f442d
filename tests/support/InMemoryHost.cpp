#include "InMemoryHost.h"

#include "base/InPackageInit.h"
#include "pluginAPI/PxRequestMgr.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace memoryHost {

namespace {

constexpr Rational someFrameRate{24000, 1001};

class FakeShape : public PmShape2d {
public:
    explicit FakeShape(reference::ControlPoints const& controlPoints)
    {
        for (auto const& [x, y] : controlPoints) {
            points.push_back({x, y});
        }
    }
    bool hasControlPoints() const override { return !points.empty(); }
    Vector<GePoint2<float>> takeControlPoints() const override { return points; }

private:
    Vector<GePoint2<float>> points;
};

} // namespace

IxPixelFormat makeFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth)
{
    constexpr bool isPremultiplied = false;
    return {components, depth, Rational(), isPremultiplied};
}

Picture::Picture(IxPixelFormat const& pixelFormat, GeRectangle<int> const& dataWindow)
    : format(pixelFormat), window(dataWindow),
      bytes(format.getBytesPerPixel() *
            static_cast<std::size_t>(window.getWidth() * window.getHeight()))
{
}

Picture::Picture(Pixels const& pixels, int width)
    : Picture(makeFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32),
              {3, -2, 3 + width, -2 + (static_cast<int>(pixels.size()) + width - 1) / width})
{
    std::memcpy(bytes.data(), pixels.data(), pixels.size() * sizeof(reference::Pixel));
}

ImageInfo Picture::getInfo() const
{
    ImageInfo info;
    info.dataWindow = window;
    info.displayWindow = window;
    info.format = format;
    return info;
}

std::byte* Picture::getRow(int y)
{
    auto const rowBytes = static_cast<std::size_t>(window.getWidth()) * format.getBytesPerPixel();
    return bytes.data() + static_cast<std::size_t>(y - window.y0) * rowBytes;
}

Pixels Picture::getPixels()
{
    Pixels pixels(bytes.size() / sizeof(reference::Pixel));
    std::memcpy(pixels.data(), bytes.data(), bytes.size());
    return pixels;
}

IxTile copyToTile(Picture& picture, GeRectangle<int> const& bounds)
{
    std::size_t const pixelBytes = picture.format.getBytesPerPixel();
    IxWriteGuard const guard(IxTile(picture.format, bounds));
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::memcpy(guard.getRow(y),
                    picture.getRow(y) +
                        static_cast<std::size_t>(bounds.x0 - picture.window.x0) * pixelBytes,
                    static_cast<std::size_t>(bounds.getWidth()) * pixelBytes);
    }
    return guard.getTile();
}

void copyFromTile(IxTile const& tile, Picture& picture)
{
    GeRectangle<int> const& bounds = tile.getBounds();
    IxReadGuard const guard(tile);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::memcpy(picture.getRow(y), guard.getRow(y),
                    static_cast<std::size_t>(bounds.getWidth()) *
                        picture.format.getBytesPerPixel());
    }
}

Picture readTile(IxTile const& tile)
{
    Picture picture(tile.getPixelFormat(), tile.getBounds());
    copyFromTile(tile, picture);
    return picture;
}

MemorySource::MemorySource(Picture const& sourcePicture, int rowsOfABlock)
    : picture(sourcePicture), info(picture.getInfo()), rowsPerBlock(rowsOfABlock)
{
}

GeRectangle<int> MemorySource::getStripBounds(int index, int rows) const
{
    GeRectangle<int> bounds = picture.window;
    if (isBottomToTop) {
        bounds.y1 = bounds.y1 - index * rows;
        bounds.y0 = std::max(bounds.y1 - rows, bounds.y0);
    } else {
        bounds.y0 = bounds.y0 + index * rows;
        bounds.y1 = std::min(bounds.y0 + rows, bounds.y1);
    }
    return bounds;
}

void MemorySource::fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip)
{
    onRead();
    strip.colour = copyToTile(picture, bounds);
}

void MemorySink::writeStrip(IxTile const& result, ImageStrip const&)
{
    onWrite();
    firstRows.push_back(result.getBounds().y0);
    copyFromTile(result, picture);
}

Picture renderPicture(HostNode& node, Picture const& picture, RenderCase const& renderCase)
{
    MemorySource source(picture, renderCase.rowsPerBlock);
    source.isBottomToTop = renderCase.isBottomToTop;
    auto const sourceNode = makeNode<SourceImageNode>(source.getInfo());
    auto const chain = castNode<PxImageProtocol const>(
        node.buildChain(PxNodePtr<PxImageProtocol const>(sourceNode.get())));
    MemorySink sink(chain->getImageFormat().getPixelFormat(), picture.window);
    RenderOptions options;
    options.threads = renderCase.threads;
    renderImage(*chain, *sourceNode, source, sink, options);
    return sink.picture;
}

PxImageResult computeTile(PxImageProtocol const& chain, GeRectangle<int> const& region, double time)
{
    PxWorkerScope const worker;
    return chain.computeImage(PxImageContext(time, region));
}

RCShdPtr<HostNode> createToolNode(HostGraph& graph, std::string const& tool)
{
    constexpr bool runsForAUser = false;
    InPackageRegistry::getInstance().startPackages(runsForAUser);
    return graph.createNode(*PiToolRegistry::getInstance().find(tool));
}

void note(Journal& journal, std::string const& line)
{
    static std::mutex mutex;
    std::lock_guard const lock(mutex);
    journal.push_back(line);
}

Shape makeShape(reference::ControlPoints const& points)
{
    return makeShared<FakeShape>(points);
}

FakeSource::FakeSource(Init const& init, Journal& nodeJournal)
    : PxNode(init), PxImageNode(init, {}), format(IxPixelFormat(), someFrameRate),
      picture(IxPixelFormat(), {0, 0, 1, 1}), journal(nodeJournal)
{
}

PxImageResult FakeSource::computeImage(PxImageContext const& context) const
{
    note(journal, "read source");
    return {copyToTile(picture, intersect(context.getRegion(), picture.window)), validity};
}

void FakeSource::setPicture(Picture const& newPicture)
{
    picture = newPicture;
    format = PxImageFormat(picture.format, someFrameRate);
}

} // namespace memoryHost
