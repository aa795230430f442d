#pragma once

#include "pluginAPI/PiPixelLoopOneSource.h"
#include "remapColorController.h"
#include "remapColorCurveLUTUtils.h"
#include "remapColorSteps.h"

#include <array>
#include <memory>

/// The second stage of a pixel: red, green and blue through the three adjustment curves, or nothing
/// if the stage is not enabled. Immutable after construction; several threads may use it at once.
class RemapColorController::AdjustedCurveScanline : public RCBase<LkCounter<int>> {
public:
    /// Samples the curves, which are only read, whether enabled or not. Throws the null-pointer
    /// exception for an empty curve.
    AdjustedCurveScanline(bool enabled, RCShdPtr<BzFunctionCurve>& red,
                          RCShdPtr<BzFunctionCurve>& green, RCShdPtr<BzFunctionCurve>& blue);
    ~AdjustedCurveScanline() noexcept(false) override;

    /// The pixel with its colour mapped and its alpha as it is.
    CoRgbaColorTyped<float> processPixel(CoRgbaColorTyped<float> const& in) const;

    /// The same for every pixel of a row, in place: for rows that no kernel has taken through the
    /// curves.
    void processRow(PiPixelLoopOneSource::Row row) const;

    /// The tables of red, green and blue for a row kernel that does the same; null if not enabled.
    RemapColorSteps::CurveTable const* getTables() const
    {
        return enabled ? tables.data() : nullptr;
    }

private:
    using ScanlineLut = RemapColorCurveLUTUtils::ScanlineLut;

    bool enabled;
    std::unique_ptr<ScanlineLut> redLut;
    std::unique_ptr<ScanlineLut> greenLut;
    std::unique_ptr<ScanlineLut> blueLut;
    std::array<RemapColorSteps::CurveTable, 3> tables;
};
