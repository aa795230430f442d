// From the host's images through the tool's chain and back.

#include "Render.h"

#include "HostAccess.h"
#include "Image.h"
#include "pluginAPI/IxSampleConversion.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace {

namespace Prop = OfxText::Prop;
using Pixel = CoRgbaColorTyped<float>;

/// Choices of the tool's "Output Depth".
enum OutputDepth { Depth8Bit = 0, Depth16Bit = 1, Depth32Bit = 2 };

/// Rows between two questions whether to stop. Long enough that setting up the curves' tables for
/// each run counts for little.
constexpr int fewestRows = 64;
constexpr std::size_t fewestPixels = 1 << 16;
/// The tool writes float RGBA past the caches from so many bytes on, which is faster for what does
/// not fit.
constexpr std::size_t streamedBytes = std::size_t{16} << 20;
/// Tables of long curves, such as sampled ones, take longer.
constexpr std::size_t pixelsPerCurvePoint = 256;

/// What one render call works on.
struct Job {
    Frame source;
    Frame output;
    GeRectangle<int> region; ///< in both
    OfxTime time = 0.0;
    IxPixelFormat resultFormat;
    bool isDirect = false; ///< the chain may write into the output's memory
};

/// Whether the tool writes past the caches if it gets enough rows at once.
bool canStream(Job const& job)
{
    std::size_t const rowBytes =
        job.output.getBytesPerPixel() * static_cast<std::size_t>(job.region.getWidth());
    return job.isDirect && job.output.depth == SampleDepth::Float &&
           job.output.components == IxPixelFormat::RGBA &&
           rowBytes * static_cast<std::size_t>(job.region.getHeight()) >= streamedBytes;
}

std::size_t countCurvePoints(NodeValues const& values)
{
    std::size_t count = 0;
    for (auto const& [name, state] : values) {
        auto const* const curve = std::get_if<Animated<CurvePoints>>(&state);
        count += curve == nullptr ? 0 : curve->getKeys().front().value.size();
    }
    return count;
}

int chooseRunRows(Job const& job, std::size_t nbCurvePoints)
{
    auto const width = static_cast<std::size_t>(job.region.getWidth());
    std::size_t pixels =
        std::max({fewestPixels, fewestRows * width, nbCurvePoints * pixelsPerCurvePoint});
    if (canStream(job)) {
        pixels = std::max(pixels, streamedBytes / job.output.getBytesPerPixel());
    }
    std::size_t const rows = (pixels + width - 1) / width;
    return static_cast<int>(std::min<std::size_t>(rows, std::numeric_limits<int>::max()));
}

/// The rows of a result that are not in the output yet.
void copyResult(IxReadGuard const& result, Frame const& output)
{
    IxPixelFormat const& format = result.getTile().getPixelFormat();
    GeRectangle<int> const& bounds = result.getTile().getBounds();
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    bool const isSameLayout = output.findTileFormat() == format;
    std::vector<Pixel> row(isSameLayout ? 0 : width);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        std::byte* const target = output.getPixel(bounds.x0, y);
        std::byte const* const bytes = result.getRow(y);
        if (bytes == target) {
            return; // all of them lie there
        }
        if (isSameLayout) {
            std::memcpy(target, bytes, width * format.getBytesPerPixel());
        } else {
            readPixelRow(format, bytes, row);
            writePixels(output, bounds.x0, y, row);
        }
    }
}

/// False when the host wants the render to stop.
bool renderRuns(Instance const& instance, PxImageProtocol const& chain, Job const& job, int runRows)
{
    PxWorkerScope const worker;
    for (std::int64_t y = job.region.y0; y < job.region.y1; y += runRows) {
        if (HostAccess::get().effects->abort(instance.getEffect()) != 0) {
            return false;
        }
        GeRectangle<int> run = job.region;
        run.y0 = static_cast<int>(y);
        run.y1 = static_cast<int>(std::min<std::int64_t>(y + runRows, job.region.y1));
        PxImageContext const context =
            job.isDirect ? PxImageContext(job.time, IxTile(job.resultFormat, run,
                                                           job.output.getPixel(run.x0, run.y0),
                                                           job.output.rowStep))
                         : PxImageContext(job.time, run);
        PxImageResult const result = chain.computeImage(context);
        copyResult(result.getTileGuard(), job.output);
    }
    return true;
}

int chooseToolDepth(SampleDepth depth)
{
    switch (depth) {
    case SampleDepth::Byte: return Depth8Bit;
    case SampleDepth::Half: return Depth16Bit;
    case SampleDepth::Short:
    case SampleDepth::Float: break;
    }
    return Depth32Bit;
}

/// Null where nothing is connected: some hosts have a black image then.
OfxImageClip* findConnectedMask(Instance const& instance)
{
    OfxImageClip* const mask = instance.getMask();
    return propertiesOf(mask).getInt(Prop::clipConnected) == 0 ? nullptr : mask;
}

/// The mask's pixels for the chain; nothing where there is no mask, whatever the host says.
bool prepareMask(Image const& mask, FrameNode& node)
{
    if (mask.getState() != Image::State::Present) {
        return false;
    }
    Frame const& frame = mask.getFrame();
    node.setFrame(frame, frame.findTileFormat().value_or(
                             makeTileFormat(frame.components, IxPixelFormat::FLOAT32)));
    return true;
}

/// The part of the window that the source covers, through the chain.
bool renderCovered(Instance const& instance, ToolNodePool& nodes, Job job, Image const& mask)
{
    NodeValues values = instance.readValues(job.time);
    ChainUse use;
    use.isUnpremultiplied = instance.isUnpremultiplied(job.time);
    use.mix = instance.readMix(job.time);

    auto const sourceFormat = job.source.findTileFormat();
    auto const outputFormat = job.output.findTileFormat();
    bool const isNative = sourceFormat && outputFormat && !use.isUnpremultiplied &&
                          job.source.components == job.output.components;
    job.resultFormat =
        isNative ? *outputFormat : makeTileFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32);
    int const toolDepth = isNative ? chooseToolDepth(job.output.depth) : Depth32Bit;
    values.insert_or_assign("Output Depth", Animated<int>(toolDepth));

    ToolNodePool::Lease const node = nodes.take();
    node->setValues(values);
    node->getSource().setFrame(job.source, isNative ? *sourceFormat : job.resultFormat);
    use.isMasked = prepareMask(mask, node->getMask());
    PxImageProtocol const& chain = node->prepareChain(use);
    job.isDirect = isNative && !use.isMasked && use.mix == 1.0;
    return renderRuns(instance, chain, job, chooseRunRows(job, countCurvePoints(values)));
}

/// What lies in the window but not in the region.
void clearAround(Frame const& output, GeRectangle<int> const& window,
                 GeRectangle<int> const& region)
{
    if (region.isEmpty()) {
        return clearPixels(output, window);
    }
    clearPixels(output, {window.x0, window.y0, window.x1, region.y0});
    clearPixels(output, {window.x0, region.y1, window.x1, window.y1});
    clearPixels(output, {window.x0, region.y0, region.x0, region.y1});
    clearPixels(output, {region.x1, region.y0, window.x1, region.y1});
}

/// Whether both clips have the same known depth and components.
bool haveSameLayout(OfxImageClip* one, OfxImageClip* other)
{
    Properties const first = propertiesOf(one);
    Properties const second = propertiesOf(other);
    auto const depth = findDepth(first.getString(Prop::pixelDepth).value_or(""));
    auto const components = findComponents(first.getString(Prop::components).value_or(""));
    return depth && components &&
           depth == findDepth(second.getString(Prop::pixelDepth).value_or("")) &&
           components == findComponents(second.getString(Prop::components).value_or(""));
}

/// Whether the host's list of depths has that one; a host without a list takes those that every
/// host knows.
bool hostTakes(SampleDepth depth)
{
    Properties const host(HostAccess::get().host->host);
    int const count = host.getCount(Prop::supportedPixelDepths);
    for (int place = 0; place < count; ++place) {
        if (host.getString(Prop::supportedPixelDepths, place) == nameDepth(depth)) {
            return true;
        }
    }
    return count == 0 && depth != SampleDepth::Half;
}

} // namespace

OfxStatus render(Instance& instance, ToolNodePool& nodes, OfxPropertySet* inArgs)
{
    Properties const arguments(inArgs);
    auto const wanted = arguments.getRectangle(Prop::renderWindow);
    Job job;
    job.time = arguments.getDouble(Prop::time).value_or(0.0);
    if (!wanted) {
        return OfxStat::failed;
    }
    Image const output(instance.getOutput(), job.time);
    if (output.getState() != Image::State::Present) {
        bool const isMemory = output.getState() == Image::State::OutOfMemory;
        bool const isUnusable = output.getState() == Image::State::Unusable;
        return isMemory ? OfxStat::memory : isUnusable ? OfxStat::imageFormat : OfxStat::failed;
    }
    Image const source(instance.getSource(), job.time);
    Image const mask(findConnectedMask(instance), job.time);
    for (Image const* const image : {&source, &mask}) {
        if (image->getState() == Image::State::OutOfMemory) {
            return OfxStat::memory;
        }
        if (image->getState() == Image::State::Unusable) {
            return OfxStat::imageFormat;
        }
    }

    job.output = output.getFrame();
    GeRectangle<int> const window =
        intersect({wanted->x1, wanted->y1, wanted->x2, wanted->y2}, job.output.bounds);
    if (window.isEmpty()) {
        return OfxStat::ok;
    }
    if (source.getState() == Image::State::Present) {
        job.source = source.getFrame();
        job.region = intersect(window, job.source.bounds);
    }
    clearAround(job.output, window, job.region);
    if (!job.region.isEmpty()) {
        renderCovered(instance, nodes, job, mask);
    }
    return OfxStat::ok; // after a stop the host throws the picture away
}

bool isIdentity(Instance const& instance, OfxTime time)
{
    return instance.readMix(time) == 0.0 &&
           haveSameLayout(instance.getSource(), instance.getOutput());
}

bool chooseOutputDepth(Instance& instance, OfxPropertySet* outArgs)
{
    std::optional<SampleDepth> depth = instance.readOutputDepth();
    if (!depth) {
        return false;
    }
    if (Properties(HostAccess::get().host->host).getInt(Prop::multipleClipDepths).value_or(0) ==
        0) {
        instance.tellOnce("Output Depth has no effect here: this host keeps one depth for all "
                          "clips");
        return false;
    }
    if (*depth == SampleDepth::Half && !hostTakes(SampleDepth::Half)) {
        instance.tellOnce("this host has no half pictures: Output Depth gives 32 Bit (float)");
        depth = SampleDepth::Float;
    }
    bool const isSet =
        hostTakes(*depth) && Properties(outArgs).put(Prop::clipDepthOutput, nameDepth(*depth));
    if (!isSet) {
        instance.tellOnce(std::string("this host refuses pictures of the depth ") +
                          nameDepth(*depth) + ": Output Depth has no effect");
    }
    return isSet;
}
