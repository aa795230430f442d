// The Linear mode: its inputs, its transfer and its processing node.

#include "remapColorLinearMode.h"

#include "pluginAPI/PiInputPolicy.h"
#include "remapColorModeProcNode.h"
#include "remapColorNames.h"
#include "remapColorNodeUtils.h"
#include "remapColorParamNodes.h"
#include "remapColorRowKernels.h"
#include "remapColorSteps.h"
#include "remapColorTransferUtils.h"

#include <algorithm>
#include <array>

namespace {

namespace Names = RemapColorNames::Linear;
using RemapColorNames::nbChannels;
using RemapColorNames::nbParams;
using RemapColorRowKernels::Pixel;

constexpr float smallestInputSpan = 1e-7F;
constexpr float gammaIsOneTolerance = 1e-6F;
constexpr float gammaIsOneMaximum = 1.00000095367F; // the float nearest 1 + gammaIsOneTolerance
constexpr float gammaIsAbsentTolerance = 1e-6F;
constexpr double rangeBound = 2147483647.0; // in effect no range

/// The five parameters of one channel.
struct LinearParams {
    float inMin;
    float inMax;
    float outMin;
    float outMax;
    float gamma;
};

/// What the parameters of one channel become before pixels flow:
///   scale    = max(outMax - outMin, 0) / max(inMax - inMin, 1e-7)
///   offset   = outMin - inMin * scale
///   invGamma = 1 / gamma, kept finite
/// Output levels that are reversed thus give a flat line at the output minimum, never an inverted
/// one.
struct LevelsLine {
    explicit LevelsLine(LinearParams const& params)
    {
        float const inSpan = params.inMax - params.inMin;
        float const outSpan = params.outMax - params.outMin;
        scale = (outSpan > 0.0F ? outSpan : 0.0F) /
                (inSpan > smallestInputSpan ? inSpan : smallestInputSpan);
        offset = params.outMin - params.inMin * scale;
        invGamma = RemapColorTransferUtils::invertGamma(params.gamma);
    }

    float scale;
    float offset;
    float invGamma;
};

bool countsAsOne(float gamma)
{
    return gamma > 1.0F ? gamma <= gammaIsOneMaximum : gamma + gammaIsOneTolerance >= 1.0F;
}

bool countsAsAbsent(float gamma)
{
    return gamma > 0.0F ? gamma <= gammaIsAbsentTolerance : gamma + gammaIsAbsentTolerance >= 0.0F;
}

using RemapColorRowKernels::KernelSet;

// Which steps a pixel goes through besides the levels line and the adjusted curves. The signed
// power comes before the curves, the clamp after them.
struct LinearFunction {
    static constexpr auto kernel = &KernelSet::line;
    static constexpr auto beforeCurves = kernel;
    static constexpr bool clamps = false;
};
struct LinearGammaFunction {
    static constexpr auto kernel = &KernelSet::linePower;
    static constexpr auto beforeCurves = kernel;
    static constexpr bool clamps = false;
};
struct LinearClampFunction {
    static constexpr auto kernel = &KernelSet::lineClamp;
    static constexpr auto beforeCurves = LinearFunction::kernel;
    static constexpr bool clamps = true;
};
struct LinearGammaClampFunction {
    static constexpr auto kernel = &KernelSet::linePowerClamp;
    static constexpr auto beforeCurves = LinearGammaFunction::kernel;
    static constexpr bool clamps = true;
};

/// Working values of the three channels, and the transfer before and after the adjusted curves.
/// The values never change while pixels flow.
class LinearProcess : private RemapColorRowKernels::Levels {
public:
    void setChannel(int channel, float inMin, float inMax, float outMin, float outMax, float gamma)
    {
        LevelsLine const line({inMin, inMax, outMin, outMax, gamma});
        scale[channel] = line.scale;
        offset[channel] = line.offset;
        invGamma[channel] = RemapColorPower::PreparedPower(line.invGamma);
        clampRange[channel] = {outMin, outMax};
    }
    /// What the gamma classes need besides the channels' values.
    void preparePowers()
    {
        for (RemapColorPower::PreparedPower& power : invGamma) {
            power.makeTables();
        }
    }
    void setAdjustedCurves(RCShdPtr<RemapColorController::AdjustedCurveScanline> const& stage)
    {
        adjustedCurves = stage;
    }

    /// Step by step; throws the null-pointer exception without adjusted curves.
    template <typename Function>
    Pixel transferPixel(Pixel const& in) const
    {
        Pixel transferred;
        auto const kernel = RemapColorRowKernels::chosenKernels().*Function::beforeCurves;
        kernel(*this, nullptr, &in, {&transferred}, 1);
        Pixel const adjusted = adjustedCurves->processPixel(transferred);
        if constexpr (!Function::clamps) {
            return adjusted;
        }
        return {clampValue(0, adjusted.red), clampValue(1, adjusted.green),
                clampValue(2, adjusted.blue), adjusted.alpha};
    }

    /// All steps in one kernel. Throws the null-pointer exception without adjusted curves, when the
    /// row is transferred.
    template <typename Function>
    void transferRow(PiPixelLoopOneSource::SourceRow source,
                     RemapColorRowKernels::RowTarget destination) const
    {
        auto const kernel = RemapColorRowKernels::chosenKernels().*Function::kernel;
        auto const* const tables = adjustedCurves ? adjustedCurves->getTables() : nullptr;
        kernel(*this, tables, source.data(), destination, source.size());
        (void)*adjustedCurves;
    }

private:
    float clampValue(int channel, float value) const
    {
        return RemapColorSteps::limit(value, clampRange[channel].low, clampRange[channel].high);
    }

    RCShdPtr<RemapColorController::AdjustedCurveScanline> adjustedCurves;
};

/// Runs the transfer over a tile; lives for one computation.
template <typename Function>
class LinearLoop : public LinearProcess, public PiPixelLoopOneSource {
public:
    LinearLoop(LinearProcess const& process, IxWriteGuard& destination,
               PiImageModifierTypes::AffectType affect)
        : LinearProcess(process), PiPixelLoopOneSource(destination, affect),
          isStreamed(RemapColorNodeUtils::isLargeFloatTile(destination.getTile()))
    {
    }
    ~LinearLoop() override = default;

    void processRow(Row row, SourceRow sourceRow) override
    {
        transferRow<Function>(sourceRow, {row.data(), isStreamed});
    }
    Pixel processPixel(Pixel const& in) override { return transferPixel<Function>(in); }

private:
    bool isStreamed;
};

enum class ClampOutput { No, Yes };
enum class ApplyGamma { No, Yes };

/// Calls `function` with the function class that does no more than is asked for.
template <typename Function>
auto withFunctionClass(ApplyGamma gamma, ClampOutput clamp, Function const& function)
{
    if (clamp == ClampOutput::Yes) {
        return gamma == ApplyGamma::Yes ? function(LinearGammaClampFunction())
                                        : function(LinearClampFunction());
    }
    return gamma == ApplyGamma::Yes ? function(LinearGammaFunction()) : function(LinearFunction());
}

/// Evaluates the Linear mode: each request reads the inputs afresh at its own time.
class ProcNode : public RemapColorController::ModeProcNode {
public:
    ProcNode(Init const& init, PxNodePtr<PxImageProtocol const> const& imageSource,
             PxStrongHndl<> const& clampNode, RemapColorParamNodes::Handles const& valueNodes,
             PiInputNodeBuilder& builder)
        : PxNode(init), ModeProcNode(init, imageSource, builder), source(imageSource),
          values(valueNodes), clamp(castNode<PxAnimValueProtocol<bool> const>(clampNode))
    {
    }

    ~ProcNode() noexcept(false) override
    {
        unregisterChild(source);
        unregisterChild(clamp);
        values.forEach([&](auto const& value) { unregisterChild(value); });
    }

    void init() override
    {
        ModeProcNode::init();
        registerChild(source);
        registerChild(clamp);
        values.forEach([&](auto const& value) { registerChild(value); });
    }

    PxImageResult computeImage(PxImageContext const& context) const override
    {
        PxImageResult const sourceResult = source->computeImage(context);
        PxValidityInterval validity = sourceResult.getValidity();
        IxWriteGuard guard(allocateImageBuffer(context, sourceResult.getPixelRegion()));
        Request const request = readRequest(context, validity);
        withFunctionClass(request.gamma, request.clamp, [&](auto function) {
            LinearLoop<decltype(function)> loop(request.process, guard,
                                                static_cast<PiImageModifierTypes::AffectType>(1));
            loop.process(sourceResult.getTileGuard());
        });
        return {guard.getTile(), validity};
    }

    Pixel computePixel(PxTimeContext const& time, Pixel const& in) const override
    {
        PxValidityInterval validity = PxValidityInterval::getFull();
        Request const request = readRequest(time, validity);
        return withFunctionClass(request.gamma, request.clamp, [&](auto function) {
            return request.process.template transferPixel<decltype(function)>(in);
        });
    }

private:
    struct Request {
        ClampOutput clamp;
        ApplyGamma gamma;
        LinearProcess process;
    };

    /// Reads all inputs at `time`, narrowing `validity`, and derives the working values.
    Request readRequest(PxTimeContext const& time, PxValidityInterval& validity) const
    {
        using RemapColorNodeUtils::readValue;
        Request request{};
        request.clamp = readValue(clamp, time, validity) ? ClampOutput::Yes : ClampOutput::No;
        auto const params = values.read(time, validity);
        auto const& gammas = params[4];
        request.gamma = std::all_of(gammas.begin(), gammas.end(), countsAsOne) ? ApplyGamma::No
                                                                               : ApplyGamma::Yes;
        request.process.setAdjustedCurves(createAdjustedCurveScanline(time, validity));
        for (int channel = 0; channel < nbChannels; ++channel) {
            request.process.setChannel(channel, params[0][channel], params[1][channel],
                                       params[2][channel], params[3][channel], gammas[channel]);
        }
        if (request.gamma == ApplyGamma::Yes) {
            request.process.preparePowers();
        }
        return request;
    }

    PxNodePtr<PxImageProtocol const> source;
    RemapColorParamNodes values;
    PxNodePtr<PxAnimValueProtocol<bool> const> clamp;
};

/// A structure with the members red, green and blue; `policy` may be empty.
PiStructuredPolicyDescriptor describeChannels(RCShdPtr<PiInputPolicy const> const& policy)
{
    PiStructuredPolicyDescriptor channels;
    for (std::string const& channel : RemapColorNames::channelNames) {
        if (policy) {
            channels.add(channel, PiSocketType::Double, policy, PiSocketType::Single);
        } else {
            channels.add(channel, PiSocketType::Double, PiSocketType::Single);
        }
    }
    return channels;
}

} // namespace

std::string RemapColorLinearMode::getModeName()
{
    return getName();
}

void RemapColorLinearMode::describeInputs(PiToolPolicyDescriptor& descriptor)
{
    // The minima carry no policy: the range policy's default of 1 is not theirs.
    PiStructuredPolicyDescriptor const withoutPolicy = describeChannels({});
    PiStructuredPolicyDescriptor const withPolicy = describeChannels(
        PiRangeInputPolicy<double>::create(-rangeBound, rangeBound, 1.0, true, false));

    PiStructuredPolicyDescriptor levels;
    levels.add(Names::minimum, withoutPolicy, PiSocketType::Single);
    levels.add(Names::maximum, withPolicy, PiSocketType::Single);

    PiStructuredPolicyDescriptor mode;
    mode.add(Names::inputLevel, levels, PiSocketType::Single);
    mode.add(Names::outputLevel, levels, PiSocketType::Single);
    mode.add(Names::gamma, withPolicy, PiSocketType::Single);
    mode.add(Names::clamp, PiSocketType::Switch, PiSwitchInputPolicy::create(true, true, false),
             PiSocketType::Single);

    for (std::string const& link : Names::linkNames) {
        descriptor.stores(link, PiValueType::Boolean);
    }
    descriptor.requires_(Names::modeName, mode, PiSocketType::Single);
}

PxStrongHndl<>
RemapColorLinearMode::createModeProcNode(RCShdPtr<PiNode> const& node, PiInputNodeBuilder& builder,
                                         PxNodePtr<PxImageProtocol const> const& source)
{
    RemapColorParamNodes::Handles valueNodes;
    auto const inputs = castShared<PiStructuredInput>(node->findInput(Names::modeName, true));
    for (int param = 0; param < nbParams; ++param) {
        for (int channel = 0; channel < nbChannels; ++channel) {
            valueNodes[param][channel] = builder.getInputNode(getInputName(param, channel));
        }
    }
    PxStrongHndl<> const clampNode = builder.getInputNode(inputs->findMember(Names::clamp, false));
    return PxStrongHndl<>(makeNode<ProcNode>(source, clampNode, valueNodes, builder).get());
}

void RemapColorLinearMode::resetLinks(RCShdPtr<PiNode> const& node)
{
    switchOn(node, Names::linkNames);
}

std::string RemapColorLinearMode::getName()
{
    return Names::modeName;
}

std::string RemapColorLinearMode::getChannelName(int channel)
{
    return RemapColorNames::channelNames[channel];
}

std::string RemapColorLinearMode::getParamName(int param)
{
    return Names::paramNames[param];
}

std::string RemapColorLinearMode::getInputName(int param, int channel)
{
    return RemapColorNames::join(RemapColorNames::join(getName(), getParamName(param)),
                                 getChannelName(channel));
}

std::string RemapColorLinearMode::getClampName()
{
    return RemapColorNames::join(getName(), Names::clamp);
}

void RemapColorLinearMode::computeCurve(GeInterval<float> const& range, int samples, bool,
                                        float inMin, float inMax, float outMin, float outMax,
                                        float gamma, Vector<GePoint2<float>>& points)
{
    LevelsLine const line({inMin, inMax, outMin, outMax, gamma});
    bool const isStraight = countsAsAbsent(gamma);
    RemapColorTransferUtils::samplePositions(range, samples, points);
    for (auto& [x, y] : points) {
        y = RemapColorSteps::alongLevels(x, line.scale, line.offset);
        y = isStraight ? y : RemapColorSteps::signedPower(y, line.invGamma);
    }
}
