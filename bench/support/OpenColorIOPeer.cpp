// The works as transforms of OpenColorIO: what a user of the library would put together.

#include "support/Peers.h"

#include <OpenColorIO/OpenColorIO.h>

namespace bench {

namespace {

namespace OCIO = OCIO_NAMESPACE;

/// value * scale + offset
OCIO::TransformRcPtr makeLine(float const (&scale)[3], double const (&offset)[3])
{
    auto const line = OCIO::MatrixTransform::Create();
    double const matrix[16] = {scale[0], 0, 0, 0, 0, scale[1], 0, 0, 0, 0, scale[2], 0, 0, 0, 0, 1};
    double const offsets[4] = {offset[0], offset[1], offset[2], 0.0};
    line->setMatrix(matrix);
    line->setOffset(offsets);
    return line;
}

OCIO::TransformRcPtr makePower(RemapColorPower::PreparedPower const (&powers)[3])
{
    auto const power = OCIO::ExponentTransform::Create();
    power->setValue({powers[0].exponent, powers[1].exponent, powers[2].exponent, 1.0});
    power->setNegativeStyle(OCIO::NEGATIVE_MIRROR);
    return power;
}

/// Straight up to the knee, a logarithm of the same slope from there.
OCIO::TransformRcPtr makeKnee(RemapColorRowKernels::Display const& display)
{
    auto const low = [&](int channel) { return static_cast<double>(display.kneeLow[channel]); };
    auto const factor = [&](int channel) {
        return static_cast<double>(display.kneeFactor[channel]);
    };
    auto const knee = OCIO::LogCameraTransform::Create({low(0), low(1), low(2)});
    knee->setBase(2.718281828459045);
    knee->setLogSideSlopeValue({1 / factor(0), 1 / factor(1), 1 / factor(2)});
    knee->setLogSideOffsetValue({low(0), low(1), low(2)});
    knee->setLinSideSlopeValue({factor(0), factor(1), factor(2)});
    knee->setLinSideOffsetValue(
        {1 - low(0) * factor(0), 1 - low(1) * factor(1), 1 - low(2) * factor(2)});
    knee->setLinearSlopeValue({1.0, 1.0, 1.0});
    return knee;
}

OCIO::TransformRcPtr makeCurves(Look const& look)
{
    constexpr bool isHalfDomain = false;
    auto const curves = OCIO::Lut1DTransform::Create(Look::nbEntries, isHalfDomain);
    curves->setInterpolation(OCIO::INTERP_LINEAR);
    for (int entry = 0; entry < Look::nbEntries; ++entry) {
        curves->setValue(static_cast<unsigned long>(entry), look.entries[0][entry],
                         look.entries[1][entry], look.entries[2][entry]);
    }
    return curves;
}

void appendDisplay(OCIO::GroupTransform& group, RemapColorRowKernels::Display const& display)
{
    double offset[3];
    float outputScale[3];
    for (int channel = 0; channel < 3; ++channel) {
        offset[channel] = -display.defog[channel] * display.exposureFactor[channel];
        outputScale[channel] = 84.66F / 255.0F;
    }
    group.appendTransform(makeLine(display.exposureFactor, offset));
    auto const notBelow = OCIO::RangeTransform::Create();
    notBelow->setMinInValue(0.0);
    notBelow->setMinOutValue(0.0);
    group.appendTransform(notBelow);
    group.appendTransform(makeKnee(display));
    group.appendTransform(makePower(display.invGamma));
    group.appendTransform(makeLine(outputScale, {0.0, 0.0, 0.0}));
}

OCIO::ConstCPUProcessorRcPtr makeProcessor(Work const& work, Look const& look)
{
    auto const group = OCIO::GroupTransform::Create();
    if (isDisplay(work)) {
        appendDisplay(*group, look.display);
    } else {
        auto const& offset = look.levels.offset;
        group->appendTransform(makeLine(look.levels.scale, {offset[0], offset[1], offset[2]}));
        if (work.hasGamma) {
            group->appendTransform(makePower(look.levels.invGamma));
        }
    }
    if (work.hasCurves) {
        group->appendTransform(makeCurves(look));
    }
    auto const config = OCIO::Config::CreateRaw();
    return config->getProcessor(group)->getDefaultCPUProcessor();
}

} // namespace

void addOpenColorIO(std::vector<Peer>& peers, Work const& work, Look const& look)
{
    auto const processor = makeProcessor(work, look);
    peers.push_back({"OpenColorIO " + std::string(OCIO::GetVersion()),
                     [processor](Frame const& source, Frame const& destination) {
                         constexpr long nbComponents = 4;
                         OCIO::PackedImageDesc const from(source.getPixels().data(), frameWidth,
                                                          frameHeight, nbComponents);
                         OCIO::PackedImageDesc to(destination.getPixels().data(), frameWidth,
                                                  frameHeight, nbComponents);
                         processor->apply(from, to);
                     }});
}

} // namespace bench
