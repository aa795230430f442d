#include "editor/model/time/Timeline.h"

#include "runtime/values/NumberText.h"
#include "session/Failures.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double usualRate = 24.0;
constexpr double lowestRate = 0.1;
constexpr double highestRate = 1000.0;
constexpr Frame mostFrames = 1'000'000;

bool isRate(double rate)
{
    return rate >= lowestRate && rate <= highestRate;
}

} // namespace

Timeline::Timeline(Document& editedDocument, Plate& shownPlate)
    : document(editedDocument), plate(shownPlate), rate(usualRate)
{
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
}

void Timeline::setRange(FrameRange const& newRange)
{
    if (newRange.last < newRange.first) {
        throw UsageError("a range of frames ends where it begins or after it; " +
                         std::to_string(newRange.first) + "-" + std::to_string(newRange.last) +
                         " does not");
    }
    if (newRange.last - newRange.first >= mostFrames) {
        throw UsageError("a range has a million frames at most");
    }
    if (!(newRange == range)) {
        range = newRange;
        handlers.call(*this);
    }
}

void Timeline::resetRange()
{
    bool const hasFrames = plate.isSequence() && !plate.getFrames().empty();
    FrameRange own;
    if (hasFrames) {
        own = {plate.getFrames().front(), plate.getFrames().back()};
        own.last = std::min(own.last, own.first + mostFrames - 1);
    }
    setRange(own);
}

void Timeline::setRate(double newRate)
{
    if (!isRate(newRate)) {
        throw UsageError("frames a second are from " + formatNumber(lowestRate) + " to " +
                         formatNumber(highestRate) + ", not " + formatNumber(newRate));
    }
    if (newRate != rate) {
        rate = newRate;
        handlers.call(*this);
    }
}

void Timeline::setLooping(bool newLoops)
{
    if (newLoops != loops) {
        loops = newLoops;
        handlers.call(*this);
    }
}

Frame Timeline::getFrame() const
{
    constexpr auto most = static_cast<double>(largestFrame);
    return static_cast<Frame>(std::clamp(std::floor(document.getTime()), -most, most));
}

void Timeline::goTo(double time)
{
    constexpr auto most = static_cast<double>(largestFrame);
    double const within = std::clamp(time, -most, most);
    document.setTime(plate.isSequence() ? std::round(within) : within);
}

void Timeline::step(Frame frames)
{
    // From beyond an end the way leads back to it.
    goTo(static_cast<double>(std::clamp(getFrame() + frames, range.first, range.last)));
}

bool Timeline::hasFrame(Frame frame) const
{
    if (!plate.isSequence()) {
        return true;
    }
    FrameState const state = plate.getState(frame);
    return state == FrameState::Held || state == FrameState::Waiting;
}

void Timeline::takePlate()
{
    if (plate.getOpening() == opening) {
        if (plate.isSequence() && plate.getFrame() != getFrame()) { // it was given up
            document.setTime(static_cast<double>(plate.getFrame()));
        }
        return;
    }
    opening = plate.getOpening();
    double const own = plate.getPicture() == nullptr
                           ? usualRate
                           : static_cast<double>(plate.getPicture()->info.frameRate.getFloat());
    rate = isRate(own) ? own : usualRate;
    resetRange();
    handlers.call(*this);
    if (plate.isSequence()) {
        document.setTime(static_cast<double>(plate.getFrame()));
    }
}
