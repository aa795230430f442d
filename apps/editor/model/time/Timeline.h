#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"

#include <cstdint>
#include <string>

/// The frames from the first to the last one.
struct FrameRange {
    Frame first = 0;
    Frame last = 100;

    bool contains(Frame frame) const { return frame >= first && frame <= last; }
    bool operator==(FrameRange const&) const = default;
};

/// The moments of a document: their range and rate, and the ways through them. It ties the
/// document's moment to the plate's frame: a sequence brings its frames and rate along and has
/// moments at whole frames only. User-interface thread.
class Timeline {
public:
    Timeline(Document& editedDocument, Plate& shownPlate);

    FrameRange const& getRange() const { return range; }
    /// Throws UsageError for a range that ends before it begins or has more than a million frames.
    void setRange(FrameRange const& newRange);
    /// As it would be without anybody's wish: the sequence's frames.
    void resetRange();

    /// Frames a second.
    double getRate() const { return rate; }
    /// Throws UsageError for none between 0.1 and 1000.
    void setRate(double newRate);

    bool isLooping() const { return loops; }
    void setLooping(bool newLoops);

    double getTime() const { return document.getTime(); }
    void goTo(double time);

    /// So many frames on, within the range.
    void step(Frame frames);
    void goToStart() { goTo(static_cast<double>(range.first)); }
    void goToEnd() { goTo(static_cast<double>(range.last)); }

    /// A moment in the middle of a frame belongs to that frame.
    Frame getFrame() const;

    /// Whether there is anything to show at a frame.
    bool hasFrame(Frame frame) const;

    /// Told when range, rate or looping is another. Subscribes until the handler leaves or dies, or
    /// the timeline goes.
    void addHandler(CbHandler<Timeline const>* handler) { handlers.addHandler(handler); }

private:
    void takePlate();

    Document& document;
    Plate& plate;
    FrameRange range;
    double rate;
    bool loops = true;
    std::uint64_t opening = 0;
    CbDispatcher<Timeline const> handlers;
    CbFunction<double const> timeChanged{[this](double const&) { plate.showFrame(getFrame()); }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const&) { takePlate(); }};
};
