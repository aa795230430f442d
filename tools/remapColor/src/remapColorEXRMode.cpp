// The EXR display mode: its inputs, its transfer and its processing node.

#include "remapColorEXRMode.h"

#include "pluginAPI/PiInputPolicy.h"
#include "remapColorModeProcNode.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"
#include "remapColorParamNodes.h"
#include "remapColorRowKernels.h"
#include "remapColorTransferUtils.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>

namespace {

namespace Names = RemapColorNames::ExrDisplay;
using RemapColorNames::nbChannels;
using RemapColorNames::nbParams;
using RemapColorRowKernels::Pixel;

constexpr double exposureOffset = 2.47393;
constexpr double kneeTarget = 8.0 * std::numbers::sqrt2; // 2^3.5, the double next to it
constexpr int nbBisections = 30;
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

using RemapColorPower::knee;

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

/// 2^stops as the platform's `powf` gives it: next to a knee high of 3.5 the difference of two such
/// numbers decides, to the last bit.
float exposedLight(float stops)
{
    return std::pow(2.0F, stops);
}

/// Working values of the three channels, and the transfer before and after the adjusted curves:
/// expose, compress, power and display of RemapColorSteps, with
///   exposureFactor = 2^(exposure + 2.47393)
///   kneeLow        = 2^(knee low)
///   invGamma       = 1 / gamma, kept finite
/// The knee brings 2^(knee high) to 2^3.5. The result is not clamped: the adjusted curves and the
/// output depth decide what becomes of values above 1.
/// Source of the transform: F. Kainz, R. Bogart, D. Hess, "The OpenEXR Image File Format", in "GPU
/// Gems" (2004), and the display settings described with it.
class EXRDisplayProcessBase : private RemapColorRowKernels::Display {
public:
    void setChannel(int channel, float exposure, float defogAmount, float kneeHigh,
                    float kneeLowStops, float gamma)
    {
        exposureFactor[channel] = static_cast<float>(
            RemapColorPower::powerOfTwo(static_cast<double>(exposure) + exposureOffset));
        kneeLow[channel] = exposedLight(kneeLowStops);
        auto const span = static_cast<double>(exposedLight(kneeHigh) - kneeLow[channel]);
        auto const target = static_cast<float>(kneeTarget - static_cast<double>(kneeLow[channel]));
        kneeFactor[channel] = findKneeFactor(span, target);
        invGamma[channel] =
            RemapColorPower::PreparedPower(RemapColorTransferUtils::invertGamma(gamma));
        invGamma[channel].makeTables();
        defog[channel] = defogAmount;
    }
    /// The same working values in all three channels.
    void setAllChannels(float exposure, float defogAmount, float kneeHigh, float kneeLowStops,
                        float gamma)
    {
        setChannel(0, exposure, defogAmount, kneeHigh, kneeLowStops, gamma);
        for (int channel = 1; channel < nbChannels; ++channel) {
            exposureFactor[channel] = exposureFactor[0];
            kneeLow[channel] = kneeLow[0];
            kneeFactor[channel] = kneeFactor[0];
            invGamma[channel] = invGamma[0];
            defog[channel] = defog[0];
        }
    }
    void setAdjustedCurves(RCShdPtr<RemapColorController::AdjustedCurveScanline> const& stage)
    {
        adjustedCurves = stage;
    }

    /// Before the adjusted curves.
    void transferColour(std::span<Pixel> row) const
    {
        RemapColorRowKernels::chosenKernels().display(*this, nullptr, row.data(), {row.data()},
                                                      row.size());
    }

    /// Step by step; throws the null-pointer exception without adjusted curves.
    Pixel transferPixel(Pixel const& in) const
    {
        Pixel transferred = in;
        transferColour({&transferred, 1});
        return adjustedCurves->processPixel(transferred);
    }

    /// All steps in one kernel. Throws the null-pointer exception without adjusted curves, when the
    /// row is transferred.
    void transferRow(PiPixelLoopOneSource::SourceRow source,
                     RemapColorRowKernels::RowTarget destination) const
    {
        auto const kernel = RemapColorRowKernels::chosenKernels().display;
        auto const* const tables = adjustedCurves ? adjustedCurves->getTables() : nullptr;
        kernel(*this, tables, source.data(), destination, source.size());
        (void)*adjustedCurves;
    }

private:
    RCShdPtr<RemapColorController::AdjustedCurveScanline> adjustedCurves;
};

/// Runs the transfer over a tile; lives for one computation.
class EXRDisplayLoop : public EXRDisplayProcessBase, public PiPixelLoopOneSource {
public:
    EXRDisplayLoop(EXRDisplayProcessBase const& process, IxWriteGuard& destination,
                   PiImageModifierTypes::AffectType affect)
        : EXRDisplayProcessBase(process), PiPixelLoopOneSource(destination, affect),
          isStreamed(RemapColorNodeUtils::isLargeFloatTile(destination.getTile()))
    {
    }
    ~EXRDisplayLoop() override = default;

    void processRow(Row row, SourceRow sourceRow) override
    {
        transferRow(sourceRow, {row.data(), isStreamed});
    }
    Pixel processPixel(Pixel const& in) override { return transferPixel(in); }

private:
    bool isStreamed;
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
    for (std::string const& channel : RemapColorNames::channelNames) {
        for (int param = 0; param < nbParams; ++param) {
            params[param].add(channel, PiSocketType::Double, policies[param], PiSocketType::Single);
        }
    }

    PiStructuredPolicyDescriptor mode;
    for (int param = 0; param < nbParams; ++param) {
        mode.add(Names::paramNames[param], params[param], PiSocketType::Single);
    }

    for (std::string const& link : Names::linkNames) {
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
            castShared<PiStructuredInput>(inputs->findMember(Names::paramNames[param], false));
        for (int channel = 0; channel < nbChannels; ++channel) {
            valueNodes[param][channel] = builder.getInputNode(
                members->findMember(RemapColorNames::channelNames[channel], false));
        }
    }
    return PxStrongHndl<>(makeNode<ProcNode>(source, valueNodes, builder).get());
}

void RemapColorEXRMode::resetLinks(RCShdPtr<PiNode> const& node)
{
    switchOn(node, Names::linkNames);
}

std::string RemapColorEXRMode::getName()
{
    return Names::modeName;
}

std::string RemapColorEXRMode::getChannelName(int channel)
{
    return RemapColorNames::channelNames[channel];
}

std::string RemapColorEXRMode::getParamName(int param)
{
    return Names::paramNames[param];
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
    RemapColorTransferUtils::samplePositions(range, samples, points);
    EXRDisplayProcessBase process;
    process.setAllChannels(exposure, defog, kneeHigh, kneeLow, gamma);
    std::span<GePoint2<float>> rest(points);
    while (!rest.empty()) {
        std::array<Pixel, 64> row; // a sample in the red of each
        std::size_t const nbTaken = std::min(rest.size(), row.size());
        for (std::size_t sample = 0; sample < nbTaken; ++sample) {
            row[sample].red = rest[sample].x;
        }
        process.transferColour(std::span(row).first(nbTaken));
        for (std::size_t sample = 0; sample < nbTaken; ++sample) {
            rest[sample].y = row[sample].red;
        }
        rest = rest.subspan(nbTaken);
    }
}
