#pragma once

#include "callbacks/CbDispatcher.h"
#include "callbacks/CbFunction.h"
#include "editor/model/curves/CurveDisplay.h"
#include "editor/model/curves/ValueCounts.h"
#include "editor/model/document/NodeCopy.h"
#include "editor/model/picture/Plate.h"
#include "runtime/engine/SentPixels.h"
#include "session/AxisHistogram.h"

#include <array>
#include <memory>
#include <optional>

/// The histogram that the display asks for, of all of the plate: of its own values, of what the
/// transfer makes of them, or of the result. The plate is counted once; what the look makes of its
/// values is worked out from their counts, since the tool takes each channel's values for
/// themselves. Both are done aside; what has been overtaken meanwhile is given up. User-interface
/// thread.
class CurveHistogram {
public:
    CurveHistogram(Document& shownDocument, Plate& shownPlate);
    ~CurveHistogram();

    /// The newest that is known; null before the first, in a gap of a sequence, where counting
    /// failed, and for pictures without colour.
    std::shared_ptr<ValueCounts const> const& getCounts() const { return counts; }

    /// The histogram in equally wide classes along an axis.
    struct Classes {
        AxisHistogram histogram;
        std::array<double, 3>
            withoutStop{}; ///< of each channel: values that an axis of stops lacks
    };
    /// There is one. The answer holds until the next question.
    Classes const& classify(FigureAxis const& axis, std::size_t nbClasses) const;

    /// While frames follow one another nothing is counted: it would be overtaken.
    void setPaused(bool newIsPaused);

    /// Whether it is of another look, moment or plate than those that are shown.
    bool isStale() const { return stale; }

    /// The least and the greatest finite value of the plate, for each channel; empty until counted.
    struct Extent {
        std::array<float, 3> low;
        std::array<float, 3> high;
    };
    std::optional<Extent> const& getExtent() const { return extent; }

    /// Told when there is another histogram, or it has become stale.
    void addHandler(CbHandler<CurveHistogram const>* handler) { handlers.addHandler(handler); }

private:
    class Work;
    struct Classified {
        std::shared_ptr<ValueCounts const> counts;
        FigureAxis axis;
        Classes classes;
    };

    NodeValues listValues() const;
    void takePlate();
    void refresh();
    void request();
    void startIfWanted();
    void start();
    void end();

    Document& document;
    Plate& plate;
    NodeCopy copy;
    PixelChain chain; ///< of `copy`
    std::shared_ptr<HeldPicture const> picture;
    std::shared_ptr<ValueCounts const> source; ///< of `picture`; null until counted
    std::shared_ptr<ValueCounts const> counts;
    std::optional<Extent> extent;
    CurveDisplay::Histogram kind = CurveDisplay::Histogram::None;
    NodeValues used;   ///< by what was started last
    double time = 0.0; ///< the same
    bool stale = false;
    bool isWanted = false; ///< something newer than what is on its way
    bool isPaused = false;
    std::shared_ptr<Work> work;
    mutable std::optional<Classified> classified; ///< what was asked for last
    CbDispatcher<CurveHistogram const> handlers;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refresh(); }};
    CbFunction<double const> timeChanged{[this](double const&) { refresh(); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const& notice) {
        if (!notice.failure) {
            takePlate();
        }
    }};
};
