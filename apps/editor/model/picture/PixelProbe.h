#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "runtime/engine/SourceImageNode.h"

#include <functional>
#include <optional>

/// A pixel of the plate before and after the tool, as the controller's picks give it.
/// User-interface thread.
class PixelProbe {
public:
    struct Reading {
        int x;
        int y;
        CoRgbaColorTyped<float> in;
        std::optional<CoRgbaColorTyped<float>> out; ///< empty until the first answer
    };

    /// `changed` is called whenever there is another reading.
    PixelProbe(Document& document, Plate& plate, std::function<void()> changed);

    /// A pixel within the data window.
    void point(int x, int y);
    void leave();

    /// Asks again after the look has changed.
    void refresh();

    std::optional<Reading> const& getReading() const { return reading; }

private:
    void takePlate();
    void take(PickAnswer const& answer);

    Document& document;
    Plate& plate;
    std::function<void()> changed;
    PxStrongHndl<SourceImageNode> start; ///< of the chain that picks are sent through
    PxStrongHndl<PxNode const> chain;
    std::optional<Reading> reading;
    std::uint64_t pick = 0;
    double pickTime = 0.0;
    CbFunction<PickAnswer const> picked{[this](PickAnswer const& answer) { take(answer); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            takePlate();
        }
    }};
};
