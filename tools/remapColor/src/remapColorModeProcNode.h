#pragma once

#include "pluginAPI/PiInputNodeBuilder.h"
#include "pluginAPI/PiPixelLoopOneSource.h"
#include "pluginAPI/PxImageNode.h"
#include "pluginAPI/PxValueProtocols.h"
#include "remapColorController.h"
#include "remapColorCurveLUTUtils.h"

#include <array>
#include <memory>

/// The second stage of a pixel: red, green and blue through the three adjustment curves, or nothing
/// if the stage is not enabled. Immutable after construction; several threads may use it at once.
class RemapColorController::AdjustedCurveScanline : public RCBase<LkCounter<int>> {
public:
    /// Entries of a channel's table: 1024 samples and a guard.
    static constexpr std::size_t tableLength = 1025;

    /// Samples the curves, which are only read, whether enabled or not. Throws the null-pointer
    /// exception for an empty curve.
    AdjustedCurveScanline(bool enabled, RCShdPtr<BzFunctionCurve>& red,
                          RCShdPtr<BzFunctionCurve>& green, RCShdPtr<BzFunctionCurve>& blue);
    ~AdjustedCurveScanline() noexcept(false) override;

    /// The pixel with its colour mapped and its alpha as it is.
    CoRgbaColorTyped<float> processPixel(CoRgbaColorTyped<float> const& in) const;

    /// The same for every pixel of a row, in place.
    void processRow(PiPixelLoopOneSource::Row row) const;

    /// The tables of red, green and blue for a row kernel that does the same; null if not enabled.
    RemapColorRowKernels::CurveTable const* getTables() const
    {
        return enabled ? tables.data() : nullptr;
    }

private:
    using ScanlineLut = RemapColorCurveLUTUtils::ScanlineLut;

    bool enabled;
    std::unique_ptr<ScanlineLut> redLut;
    std::unique_ptr<ScanlineLut> greenLut;
    std::unique_ptr<ScanlineLut> blueLut;
    std::array<RemapColorRowKernels::CurveTable, RemapColorRowKernels::nbChannels> tables;
};

/// What the processing nodes of both modes share: the inputs besides the mode's own, the output
/// format, and the adjusted-curve stage. Made and destroyed on the user-interface thread; workers
/// only read it.
///
/// A derived node sends each pixel through its transfer and then through the stage, narrows its
/// result's validity by the stage's, calls this class's `init` before it registers its own children
/// and unregisters those in its destructor.
class RemapColorController::ModeProcNode : public PxImageNode {
public:
    ~ModeProcNode() noexcept(false) override;

    /// The source's format in the depth that "Output Depth" asks for at time 0.
    PxImageFormat computeImageFormat() const override;

    /// One pixel through the transfer and the adjusted curves as they are at `time`: the same bits
    /// as in a tile.
    virtual CoRgbaColorTyped<float> computePixel(PxTimeContext const& time,
                                                 CoRgbaColorTyped<float> const& in) const = 0;

    void init() override;

protected:
    /// `builder` is asked for the nodes of the shared inputs. Throws the cast failure for one of
    /// another kind.
    ModeProcNode(Init const& init, PxNodePtr<PxImageProtocol const> const& source,
                 PiInputNodeBuilder& builder);

    /// The stage for `time`; narrows `validity` to what it was built from. Worker threads.
    RCShdPtr<AdjustedCurveScanline> createAdjustedCurveScanline(PxTimeContext const& time,
                                                                PxValidityInterval& validity) const;

private:
    PxNodePtr<PxImageProtocol const> source;
    PxNodePtr<PxAnimValueProtocol<int> const> outputDepth;
    PxNodePtr<PxShape2dProtocol const> redCurve;
    PxNodePtr<PxShape2dProtocol const> greenCurve;
    PxNodePtr<PxShape2dProtocol const> blueCurve;
    PxNodePtr<PxAnimValueProtocol<bool> const> adjust;
};
