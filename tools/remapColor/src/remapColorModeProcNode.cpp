// The processing nodes' common base.

#include "remapColorModeProcNode.h"

#include "remapColorCurveSampling.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"

namespace {

using RemapColorNodeUtils::readValue;

/// The choices of "Output Depth".
enum OutputDepth { Depth8Bit = 0, Depth16Bit = 1, Depth32Bit = 2, DepthOfInput = 3 };

IxPixelFormat::Depth chooseDepth(int choice, IxPixelFormat::Depth inputDepth, int abortLine)
{
    switch (choice) {
    case Depth8Bit: return IxPixelFormat::UINT8;
    case Depth16Bit: return IxPixelFormat::FLOAT16;
    case Depth32Bit: return IxPixelFormat::FLOAT32;
    case DepthOfInput: return inputDepth;
    }
    Assertions::throwProgramAborted(RemapColorNodeUtils::controllerSourceFile, abortLine, nullptr);
}

/// The curve of a shape. A shape that holds none gives one key at the origin with its handles on
/// it. Throws the null-pointer exception for an empty shape.
RCShdPtr<BzFunctionCurve> makeCurve(RCPvtEngPtr<PmShape2d> const& shape)
{
    return RemapColorCurveSampling::makeCurve(
        shape->hasControlPoints() ? shape->takeControlPoints()
                                  : Vector<GePoint2<float>>(3, GePoint2<float>{0.0F, 0.0F}));
}

} // namespace

PxImageFormat RemapColorNodeUtils::computeOutputFormat(
    PxNodePtr<PxImageProtocol const> const& source,
    PxNodePtr<PxAnimValueProtocol<int> const> const& outputDepth, int abortLine)
{
    PxTimeContext const start(0.0);
    PxImageFormat const sourceFormat = source->getImageFormat();
    IxPixelFormat const& sourcePixels = sourceFormat.getPixelFormat();
    IxPixelFormat::Depth const depth =
        chooseDepth(outputDepth->evaluate(start).getValue(), sourcePixels.getDepth(), abortLine);
    constexpr bool isPremultiplied = false;
    return {IxPixelFormat(sourcePixels.getComponents(), depth, sourcePixels.getAspectRatio(),
                          isPremultiplied),
            sourceFormat.getFrameRate()};
}

bool RemapColorNodeUtils::isLargeFloatTile(IxTile const& tile)
{
    constexpr std::size_t largeTile = std::size_t{16} << 20;
    IxPixelFormat const& format = tile.getPixelFormat();
    return format.getDepth() == IxPixelFormat::FLOAT32 &&
           format.getComponents() == IxPixelFormat::RGBA &&
           format.getBytesPerPixel() * static_cast<std::size_t>(tile.getBounds().getWidth()) *
                   static_cast<std::size_t>(tile.getBounds().getHeight()) >=
               largeTile;
}

RemapColorController::ModeProcNode::ModeProcNode(
    Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
    PiInputNodeBuilder& builder)
    : PxNode(init), PxImageNode(init, imageSource), source(imageSource),
      outputDepth(castNode<PxAnimValueProtocol<int> const>(
          builder.getInputNode(RemapColorNames::outputDepth))),
      redCurve(castNode<PxShape2dProtocol const>(
          builder.getInputNode(getCurveName(RemapColorTool::Red)))),
      greenCurve(castNode<PxShape2dProtocol const>(
          builder.getInputNode(getCurveName(RemapColorTool::Green)))),
      blueCurve(castNode<PxShape2dProtocol const>(
          builder.getInputNode(getCurveName(RemapColorTool::Blue)))),
      adjust(
          castNode<PxAnimValueProtocol<bool> const>(builder.getInputNode(RemapColorNames::adjust)))
{
}

RemapColorController::ModeProcNode::~ModeProcNode() noexcept(false)
{
    unregisterChild(source);
    unregisterChild(outputDepth);
    unregisterChild(adjust);
    unregisterChild(redCurve);
    unregisterChild(greenCurve);
    unregisterChild(blueCurve);
}

PxImageFormat RemapColorController::ModeProcNode::computeImageFormat() const
{
    constexpr int abortLine = 1219;
    return RemapColorNodeUtils::computeOutputFormat(source, outputDepth, abortLine);
}

void RemapColorController::ModeProcNode::init()
{
    PxImageNode::init();
    registerChild(source);
    registerChild(outputDepth);
    registerChild(adjust);
    registerChild(redCurve);
    registerChild(greenCurve);
    registerChild(blueCurve);
}

RCShdPtr<RemapColorController::AdjustedCurveScanline>
RemapColorController::ModeProcNode::createAdjustedCurveScanline(PxTimeContext const& time,
                                                                PxValidityInterval& validity) const
{
    RCPvtEngPtr<PmShape2d> const redShape = readValue(redCurve, time, validity);
    RCPvtEngPtr<PmShape2d> const greenShape = readValue(greenCurve, time, validity);
    RCPvtEngPtr<PmShape2d> const blueShape = readValue(blueCurve, time, validity);
    RCShdPtr<BzFunctionCurve> red = makeCurve(redShape);
    RCShdPtr<BzFunctionCurve> green = makeCurve(greenShape);
    RCShdPtr<BzFunctionCurve> blue = makeCurve(blueShape);
    bool const enabled = readValue(adjust, time, validity);
    return makeShared<AdjustedCurveScanline>(enabled, red, green, blue);
}
