// The EXR display mode: its inputs, its transfer and its processing node.

#include "remapColorEXRMode.h"

#include "pluginAPI/PiInputPolicy.h"
#include "remapColorModeProcNode.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"
#include "remapColorParamNodes.h"
#include "remapColorTransferUtils.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

namespace Names = RemapColorNames::ExrDisplay;
using RemapColorNames::nbChannels;
using RemapColorNames::nbParams;
using Pixel = CoRgbaColorTyped<float>;

constexpr double exposureOffset = 2.47393;
constexpr double kneeTargetStops = 3.5;
constexpr int nbBisections = 30;
/// Does not follow the gamma, on purpose: only a gamma of 2.2 brings the knee's end near 1.
constexpr float displayScale = 84.66F;
constexpr float displayMaximum = 255.0F;

/// Range and default of one parameter.
struct ParamRange {
    double minimum;
    double maximum;
    double defaultValue;
};

constexpr double unbounded = std::numeric_limits<double>::max();
constexpr std::array<ParamRange, nbParams> paramRanges = {{
    {-10.0, 10.0, 0.0},                   // exposure
    {0.0, unbounded, 0.0},                // defog
    {3.5, 7.5, 5.0},                      // knee high
    {-3.0, 3.0, 0.0},                     // knee low
    {-unbounded, unbounded, 2.200000022}, // gamma: not 2.2, on purpose
}};

/// knee(x, f) = log(x f + 1) / f
float knee(double x, float factor)
{
    auto const f = static_cast<double>(factor);
    return static_cast<float>(::log(x * f + 1.0) / f);
}

/// The factor f with knee(x, f) = y, to 30 bisections; next to 0 where no factor compresses x so
/// little (x not above y). A NaN on the way counts as a knee that is low enough.
float findKneeFactor(double x, float y)
{
    float f0 = 0.0F;
    float f1 = 1.0F;
    while (knee(x, f1) > y) {
        f0 = f1;
        f1 = f1 + f1;
    }
    for (int bisection = 0; bisection < nbBisections; ++bisection) {
        float const f2 = (f0 + f1) * 0.5F;
        if (y > knee(x, f2)) {
            f1 = f2;
        } else {
            f0 = f2;
        }
    }
    return (f0 + f1) * 0.5F;
}

/// Working values of the three channels and the transfer of a value:
///   d = max(v - defog, 0)
///   e = d * exposureFactor,                     exposureFactor = 2^(exposure + 2.47393)
///   e = kneeLow + knee(e - kneeLow, kneeFactor) where e > kneeLow = 2^(knee low)
///   result = e^invGamma * 84.66 / 255
/// The knee brings 2^(knee high) to 2^3.5. The result is not clamped: the adjusted curves and the
/// output depth decide what becomes of values above 1.
/// Source of the transform: F. Kainz, R. Bogart, D. Hess, "The OpenEXR Image File Format", in "GPU
/// Gems" (2004), and the display settings described with it.
class EXRDisplayProcessBase {
public:
    void setChannel(int channel, float exposure, float defogAmount, float kneeHigh,
                    float kneeLowStops, float gamma)
    {
        exposureFactor[channel] =
            static_cast<float>(::pow(2.0, static_cast<double>(exposure) + exposureOffset));
        kneeLow[channel] = ::powf(2.0F, kneeLowStops);
        float const kneeEnd = ::powf(2.0F, kneeHigh);
        auto const span = static_cast<double>(kneeEnd - kneeLow[channel]);
        auto const target =
            static_cast<float>(::pow(2.0, kneeTargetStops) - static_cast<double>(kneeLow[channel]));
        kneeFactor[channel] = findKneeFactor(span, target);
        invGamma[channel] = RemapColorTransferUtils::invertGamma(gamma);
        defog[channel] = defogAmount;
    }
    void setAdjustedCurves(RCShdPtr<RemapColorController::AdjustedCurveScanline> const& stage)
    {
        adjustedCurves = stage;
    }

    float transferValue(int channel, float value) const
    {
        float const difference = value - defog[channel];
        float const defogged = difference > 0.0F ? difference : 0.0F; // a NaN becomes 0
        float exposed = defogged * exposureFactor[channel];
        if (exposed > kneeLow[channel]) {
            exposed = kneeLow[channel] +
                      knee(static_cast<double>(exposed - kneeLow[channel]), kneeFactor[channel]);
        }
        return ::powf(exposed, invGamma[channel]) * displayScale / displayMaximum;
    }

    Pixel transferPixel(Pixel const& in) const
    {
        return adjustedCurves->processPixel(transferColour(in));
    }

    void transferRow(PiPixelLoopOneSource::Row row, PiPixelLoopOneSource::SourceRow sourceRow) const
    {
        for (std::size_t pixel = 0; pixel < row.size(); ++pixel) {
            row[pixel] = transferColour(sourceRow[pixel]);
        }
        // The row is written whole before the stage runs: the stage works in place.
        adjustedCurves->processRow(row);
    }

private:
    Pixel transferColour(Pixel const& in) const
    {
        return {transferValue(0, in.red), transferValue(1, in.green), transferValue(2, in.blue),
                in.alpha};
    }

    float defog[nbChannels];
    float exposureFactor[nbChannels];
    float kneeLow[nbChannels];
    float kneeFactor[nbChannels];
    float invGamma[nbChannels];
    RCShdPtr<RemapColorController::AdjustedCurveScanline> adjustedCurves;
};

/// Runs the transfer over a tile; lives for one computation.
class EXRDisplayLoop : public EXRDisplayProcessBase, public PiPixelLoopOneSource {
public:
    EXRDisplayLoop(EXRDisplayProcessBase const& process, IxWriteGuard& destination,
                   PiImageModifierTypes::AffectType affect)
        : EXRDisplayProcessBase(process), PiPixelLoopOneSource(destination, affect)
    {
    }
    ~EXRDisplayLoop() override = default;

    void processRow(Row row, SourceRow sourceRow) override { transferRow(row, sourceRow); }
    Pixel processPixel(Pixel const& in) override { return transferPixel(in); }
};

/// Evaluates the EXR display mode: each request reads the inputs afresh at its own time.
class ProcNode : public RemapColorController::ModeProcNode {
public:
    ProcNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
             RemapColorParamNodes::Handles const& valueNodes, PiInputNodeBuilder& builder)
        : PxNode(init), ModeProcNode(init, imageSource, builder), source(imageSource),
          values(valueNodes)
    {
    }

    ~ProcNode() noexcept(false) override
    {
        unregisterChild(source);
        values.forEach([&](auto const& value) { unregisterChild(value); });
    }

    void init() override
    {
        ModeProcNode::init();
        registerChild(source);
        values.forEach([&](auto const& value) { registerChild(value); });
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        PxImageResult const sourceResult = source->computeImage(context);
        PxValidityInterval validity = sourceResult.getValidity();
        IxWriteGuard guard(allocateImageBuffer(context, sourceResult.getPixelRegion()));
        EXRDisplayLoop loop(readProcess(context, validity), guard,
                            static_cast<PiImageModifierTypes::AffectType>(1));
        loop.process(sourceResult.getTileGuard());
        return {guard.getTile(), validity};
    }

    Pixel computePixel(PxTimeContext const& time, Pixel const& in) const override
    {
        PxValidityInterval validity = PxValidityInterval::getFull();
        return readProcess(time, validity).transferPixel(in);
    }

private:
    /// Reads all inputs at `time`, narrowing `validity`, and derives the working values.
    EXRDisplayProcessBase readProcess(PxTimeContext const& time, PxValidityInterval& validity) const
    {
        auto const params = values.read(time, validity);
        EXRDisplayProcessBase process;
        process.setAdjustedCurves(createAdjustedCurveScanline(time, validity));
        for (int channel = 0; channel < nbChannels; ++channel) {
            process.setChannel(channel, params[0][channel], params[1][channel], params[2][channel],
                               params[3][channel], params[4][channel]);
        }
        return process;
    }

    PxNodePtr<PxImageProtocol const> source;
    RemapColorParamNodes values;
};

} // namespace

std::string RemapColorEXRMode::getModeName()
{
    return getName();
}

void RemapColorEXRMode::describeInputs(PiToolPolicyDescriptor& descriptor)
{
    std::array<RCShdPtr<PiInputPolicy const>, nbParams> policies;
    for (int param = 0; param < nbParams; ++param) {
        ParamRange const& range = paramRanges[param];
        policies[param] = PiRangeInputPolicy<double>::create(range.minimum, range.maximum,
                                                             range.defaultValue, true, false);
    }

    std::array<PiStructuredPolicyDescriptor, nbParams> params;
    for (std::string const& channel : RemapColorNames::channels) {
        for (int param = 0; param < nbParams; ++param) {
            params[param].add(channel, PiSocketType::Double, policies[param], PiSocketType::Single);
        }
    }

    PiStructuredPolicyDescriptor mode;
    for (int param = 0; param < nbParams; ++param) {
        mode.add(Names::params[param], params[param], PiSocketType::Single);
    }

    for (std::string const& link : Names::links) {
        descriptor.stores(link, PiValueType::Boolean);
    }
    descriptor.requires_(Names::modeName, mode, PiSocketType::Single);
}

PxStrongHndl<> RemapColorEXRMode::createModeProcNode(RCShdPtr<PiNode> const& node,
                                                     PiInputNodeBuilder& builder,
                                                     PxNodePtr<PxImageProtocol const> const& source)
{
    RemapColorParamNodes::Handles valueNodes;
    auto const inputs = castShared<PiStructuredInput>(node->findInput(Names::modeName, true));
    for (int param = 0; param < nbParams; ++param) {
        auto const members =
            castShared<PiStructuredInput>(inputs->findMember(Names::params[param], false));
        for (int channel = 0; channel < nbChannels; ++channel) {
            valueNodes[param][channel] = builder.getInputNode(
                members->findMember(RemapColorNames::channels[channel], false));
        }
    }
    return PxStrongHndl<>(makeNode<ProcNode>(source, valueNodes, builder).get());
}

void RemapColorEXRMode::resetLinks(RCShdPtr<PiNode> const& node)
{
    switchOn(node, Names::links);
}

std::string RemapColorEXRMode::getName()
{
    return Names::modeName;
}

std::string RemapColorEXRMode::getChannelName(int channel)
{
    return RemapColorNames::channels[channel];
}

std::string RemapColorEXRMode::getParamName(int param)
{
    return Names::params[param];
}

std::string RemapColorEXRMode::getInputName(int param, int channel)
{
    return RemapColorNames::join(RemapColorNames::join(getName(), getParamName(param)),
                                 getChannelName(channel));
}

void RemapColorEXRMode::computeCurve(GeInterval<float> const& range, int samples, float exposure,
                                     float defog, float kneeHigh, float kneeLow, float gamma,
                                     Vector<GePoint2<float>>& points)
{
    EXRDisplayProcessBase process;
    constexpr int anyChannel = 0;
    process.setChannel(anyChannel, exposure, defog, kneeHigh, kneeLow, gamma);
    RemapColorTransferUtils::sampleTransfer(
        range, samples, points, [&](float x) { return process.transferValue(anyChannel, x); });
}
