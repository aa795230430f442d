#pragma once

/// What tests need of a host without files: pictures in memory, nodes whose values a test chooses,
/// and evaluation as the engine does it.

#include "ReferenceTransfer.h"
#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"
#include "runtime/engine/RenderEngine.h"
#include "runtime/graph/HostGraph.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace memoryHost {

using Pixels = std::vector<reference::Pixel>;

/// Pixel aspect ratio 1, colour not premultiplied.
IxPixelFormat makeFormat(IxPixelFormat::Components components, IxPixelFormat::Depth depth);

/// A picture in memory: rows one below the other, without padding.
struct Picture {
    Picture(IxPixelFormat const& pixelFormat, GeRectangle<int> const& dataWindow);

    /// Float RGBA at (3, -2), as many rows as the pixels fill; the rest of the last one is zero.
    explicit Picture(Pixels const& pixels, int width = 16);

    ImageInfo getInfo() const;
    std::byte* getRow(int y);

    /// All samples in order; T is the type of the format's depth.
    template <typename T>
    std::span<T> getSamples()
    {
        return {reinterpret_cast<T*>(bytes.data()), bytes.size() / sizeof(T)};
    }

    /// The pixels of a float RGBA picture.
    Pixels getPixels();

    IxPixelFormat format;
    GeRectangle<int> window;
    std::vector<std::byte> bytes;
};

IxTile copyToTile(Picture& picture, GeRectangle<int> const& bounds);
void copyFromTile(IxTile const& tile, Picture& picture);

/// The whole tile as a picture.
Picture readTile(IxTile const& tile);

/// Delivers a picture strip by strip. `onRead` is called before a strip is read.
class MemorySource : public ImageSource {
public:
    explicit MemorySource(Picture const& sourcePicture, int rowsOfABlock = 1);

    ImageInfo const& getInfo() const override { return info; }
    int getRowsPerBlock() const override { return rowsPerBlock; }
    GeRectangle<int> getStripBounds(int index, int rows) const override;
    void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override;

    std::function<void()> onRead = [] {};
    bool isBottomToTop = false;

private:
    Picture picture;
    ImageInfo info;
    int rowsPerBlock;
};

/// Collects strips in a picture. `onWrite` is called before a strip is taken.
class MemorySink : public ImageSink {
public:
    MemorySink(IxPixelFormat const& format, GeRectangle<int> const& window)
        : picture(format, window)
    {
    }
    void writeStrip(IxTile const& result, ImageStrip const& strip) override;
    void finish() override { isFinished = true; }

    std::function<void()> onWrite = [] {};
    Picture picture;
    std::vector<int> firstRows; ///< of the strips, in the order of writing
    bool isFinished = false;
};

/// How renderPicture sends a picture.
struct RenderCase {
    int threads = 1;
    int rowsPerBlock = 1;
    bool isBottomToTop = false;
};

/// Sends the picture through a new chain of `node` by the engine.
Picture renderPicture(HostNode& node, Picture const& picture, RenderCase const& renderCase = {});

/// One evaluation as a worker does it.
PxImageResult computeTile(PxImageProtocol const& chain, GeRectangle<int> const& region,
                          double time = 0.0);

/// Starts the packages of this program and gives a new node of the tool of that name; `graph` lives
/// longer.
RCShdPtr<HostNode> createToolNode(HostGraph& graph, std::string const& tool);

/// Fake nodes write down here what happens to them: "read NAME", "gone NAME".
using Journal = std::vector<std::string>;

/// Fake nodes may be read on several threads.
void note(Journal& journal, std::string const& line);

/// How long what a fake node delivers holds.
struct FakeValidity {
    PxValidityInterval validity = PxValidityInterval::getFull();
};

using Shape = RCPvtEngPtr<PmShape2d>;
template <typename Value>
using ProtocolOf =
    std::conditional_t<std::is_same_v<Value, Shape>, PxShape2dProtocol, PxAnimValueProtocol<Value>>;

/// Delivers what a test chooses.
template <typename Value>
class FakeNode : public ProtocolOf<Value>, public FakeValidity {
public:
    FakeNode(PxNode::Init const& init, std::string nodeName, Journal& nodeJournal)
        : PxNode(init), name(std::move(nodeName)), journal(nodeJournal)
    {
    }
    ~FakeNode() noexcept(false) override { note(journal, "gone " + name); }

    PxValueResult<Value> evaluate(PxTimeContext const& context) const override
    {
        note(journal, "read " + name);
        return {valueAt(context.getTime()), validity};
    }

    std::function<Value(double)> valueAt;

private:
    std::string name;
    Journal& journal;
};

/// A shape with these control points; without any, a shape that holds no curve.
Shape makeShape(reference::ControlPoints const& points);

/// The start of a chain: gives any part of a picture.
class FakeSource : public PxImageNode, public FakeValidity {
public:
    FakeSource(Init const& init, Journal& nodeJournal);
    ~FakeSource() noexcept(false) override { note(journal, "gone source"); }

    PxImageFormat getImageFormat() const override { return format; }
    GeRectangle<int> getImageROD(PxTimeContext const&) const override { return picture.window; }
    bool isChainConnected() const override { return true; }
    PxImageResult computeImage(PxImageContext const& context) const override;

    void setPicture(Picture const& newPicture);

    PxImageFormat format;

private:
    mutable Picture picture;
    Journal& journal;
};

} // namespace memoryHost
