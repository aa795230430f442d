#include "editor/model/time/Player.h"

#include "runtime/values/FlagScope.h"

#include <algorithm>

namespace {

using Milliseconds = std::chrono::milliseconds;

/// The rate is that of the last second or so.
constexpr std::chrono::seconds measured{1};
constexpr double slowShare = 0.97;

} // namespace

Player::Player(Timeline& playedTimeline, Document& document, Plate& shownPlate,
               Driver const& itsDriver)
    : timeline(playedTimeline), plate(shownPlate), driver(itsDriver)
{
    document.addTimeHandler(&timeChanged);
    plate.addHandler(&plateChanged);
}

void Player::play(int newDirection)
{
    direction = newDirection;
    reason.clear();
    shownAt.clear();
    nbLost = 0;
    due = driver.now();
    FrameRange const& range = timeline.getRange();
    Frame const last = direction > 0 ? range.last : range.first;
    bool const isAtEnd = timeline.getFrame() == last || !range.contains(timeline.getFrame());
    if (isAtEnd && !timeline.isLooping()) {
        FlagScope const advancing(isAdvancing);
        direction > 0 ? timeline.goToStart() : timeline.goToEnd();
    }
    isWaiting = false;
    driver.wakeIn(Milliseconds(0));
    handlers.call(*this);
}

void Player::stop()
{
    end({});
}

void Player::end(std::string const& why)
{
    if (isPlaying()) {
        direction = 0;
        isWaiting = false;
        reason = why;
        handlers.call(*this);
    }
}

void Player::wake()
{
    if (isPlaying() && !isWaiting) {
        advance();
    }
}

/// The next frame that has something to show; nothing at the end or where there is no other.
std::optional<Frame> Player::findNext() const
{
    FrameRange const& range = timeline.getRange();
    Frame const size = range.last - range.first + 1;
    Frame frame = timeline.getFrame();
    for (Frame tried = 0; tried < size; ++tried) {
        frame += direction;
        if (!range.contains(frame)) {
            if (!timeline.isLooping()) {
                return {};
            }
            frame = direction > 0 ? range.first : range.last;
        }
        if (timeline.hasFrame(frame)) {
            return frame;
        }
    }
    return {};
}

void Player::advance()
{
    std::optional<Frame> const next = findNext();
    if (!next.has_value() || *next == timeline.getFrame()) {
        end(timeline.isLooping() ? "there is no other frame to play" : "");
        return;
    }
    auto const period = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(1.0 / timeline.getRate()));
    // What was late is not made up for.
    begun = due;
    due = std::max(due + period, driver.now());
    isWaiting = true;
    FlagScope const advancing(isAdvancing);
    timeline.goTo(static_cast<double>(*next));
}

void Player::takeShown(double time)
{
    if (!isPlaying() || !isWaiting || time != timeline.getTime()) {
        return;
    }
    isWaiting = false;
    nbLost = 0;
    Clock::time_point const now = driver.now();
    shownAt.push_back(now);
    while (shownAt.size() > 2 && now - shownAt.front() > measured) {
        shownAt.pop_front();
    }
    driver.wakeIn(std::max(Milliseconds(0), std::chrono::ceil<Milliseconds>(due - now)));
    handlers.call(*this);
}

/// A frame that has vanished or cannot be read is passed over.
void Player::takePlate()
{
    bool const isLost = plate.getPicture() == nullptr && !plate.isReading();
    if (!isPlaying() || !isWaiting || !isLost) {
        return;
    }
    isWaiting = false;
    due = begun; // another one takes its turn
    FrameRange const& range = timeline.getRange();
    if (++nbLost > range.last - range.first) {
        end("there is no frame to play");
    } else {
        driver.wakeIn(Milliseconds(0));
    }
}

double Player::getMeasuredRate() const
{
    if (shownAt.size() < 2) {
        return 0.0;
    }
    double const seconds = std::chrono::duration<double>(shownAt.back() - shownAt.front()).count();
    return seconds > 0.0 ? static_cast<double>(shownAt.size() - 1) / seconds : 0.0;
}

bool Player::isSlow() const
{
    return getMeasuredRate() > 0.0 && getMeasuredRate() < timeline.getRate() * slowShare;
}
