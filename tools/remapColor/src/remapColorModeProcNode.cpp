// The processing nodes' common base and the adjusted-curve stage.

#include "remapColorModeProcNode.h"

#include "remapColorNames.h"
#include "remapColorNodeUtils.h"

#include <utility>

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

/// Gives the curve the shape's control points. A shape that holds no curve gives one key at the
/// origin with its handles on it. Throws the null-pointer exception for an empty shape.
void curveFromShape(RCShdPtr<BzFunctionCurve>& curve, RCPvtEngPtr<PmShape2d> const& shape)
{
    if (!shape->hasControlPoints()) {
        curve->getCtrlPoints().assign(3, GePoint2<float>{0.0F, 0.0F});
        return;
    }
    Vector<GePoint2<float>> points = shape->takeControlPoints();
    std::swap(points, curve->getCtrlPoints());
}

RCShdPtr<BzFunctionCurve> makeCurve(RCPvtEngPtr<PmShape2d> const& shape)
{
    auto curve = makeShared<BzFunctionCurve>(static_cast<BzFunctionCurve::InfiniteType>(3), 0);
    curveFromShape(curve, shape);
    return curve;
}

struct SampledCurve {
    Vector<float> table;
    float lutMin = 0.0F;
    float lutMax = 0.0F;
};

/// Samples the curve from its first key to its last.
SampledCurve sampleCurve(RCShdPtr<BzFunctionCurve>& curve)
{
    SampledCurve sampled;
    sampled.table.assign(RemapColorController::AdjustedCurveScanline::tableLength, 0.0F);
    Vector<GePoint2<float>> const& points = curve->getCtrlPoints();
    float const rangeMin = points.empty() ? 0.0F : points[1].x;
    float const rangeMax = points.empty() ? 0.0F : points[3 * (points.size() / 3 - 1) + 1].x;
    RemapColorCurveLUTUtils::curveToLUT(sampled.table, rangeMin, rangeMax, curve, &sampled.lutMin,
                                        &sampled.lutMax);
    return sampled;
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
           tile.getRowBytes() * static_cast<std::size_t>(tile.getBounds().getHeight()) >= largeTile;
}

RemapColorController::AdjustedCurveScanline::AdjustedCurveScanline(bool isEnabled,
                                                                   RCShdPtr<BzFunctionCurve>& red,
                                                                   RCShdPtr<BzFunctionCurve>& green,
                                                                   RCShdPtr<BzFunctionCurve>& blue)
    : enabled(isEnabled)
{
    SampledCurve sampledRed = sampleCurve(red);
    SampledCurve sampledGreen = sampleCurve(green);
    SampledCurve sampledBlue = sampleCurve(blue);
    auto const makeLut = [](RCShdPtr<BzFunctionCurve>& curve, SampledCurve& sampled) {
        return std::make_unique<ScanlineLut>(curve, std::move(sampled.table), sampled.lutMin,
                                             sampled.lutMax);
    };
    redLut = makeLut(red, sampledRed);
    greenLut = makeLut(green, sampledGreen);
    blueLut = makeLut(blue, sampledBlue);
    tables = {redLut->getTable(), greenLut->getTable(), blueLut->getTable()};
}

RemapColorController::AdjustedCurveScanline::~AdjustedCurveScanline() noexcept(false) = default;

CoRgbaColorTyped<float>
RemapColorController::AdjustedCurveScanline::processPixel(CoRgbaColorTyped<float> const& in) const
{
    CoRgbaColorTyped<float> pixel = in;
    processRow({&pixel, 1});
    return pixel;
}

void RemapColorController::AdjustedCurveScanline::processRow(PiPixelLoopOneSource::Row row) const
{
    if (enabled) {
        RemapColorRowKernels::chosenKernels().curves(tables.data(), row.data(), row.size());
    }
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
