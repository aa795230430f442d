#pragma once

#include "editor/model/time/Timeline.h"

#include <chrono>
#include <deque>
#include <functional>
#include <string>

/// Goes through the frames of a timeline: each is shown, at the rate that is asked for or as fast
/// as frames come, and the next one begins when it is. Frames without a picture are left out. It
/// has no clock of its own: whoever drives it wakes it up when it asks for that. Whoever else
/// changes the moment stops it. User-interface thread.
class Player {
public:
    using Clock = std::chrono::steady_clock;

    struct Driver {
        std::function<Clock::time_point()> now;
        /// Wakes the player up once after that time; the newest call counts.
        std::function<void(std::chrono::milliseconds)> wakeIn;
    };

    Player(Timeline& playedTimeline, Document& document, Plate& shownPlate,
           Driver const& itsDriver);

    /// Forwards (1) or backwards (-1), from an end on from the other one.
    void play(int direction);
    void stop();
    bool isPlaying() const { return direction != 0; }

    /// For the driver.
    void wake();

    /// The picture of that moment is on the screen.
    void takeShown(double time);

    /// Frames a second that were shown of late; 0 while that is not known.
    double getMeasuredRate() const;

    /// Whether that is less than what is asked for.
    bool isSlow() const;

    /// Why it stopped by itself; empty where there is nothing to say.
    std::string const& getReason() const { return reason; }

    /// Told when it begins, shows a frame, and stops. Subscribes until the handler leaves or dies,
    /// or the player goes.
    void addHandler(CbHandler<Player const>* handler) { handlers.addHandler(handler); }

private:
    std::optional<Frame> findNext() const;
    void advance();
    void takePlate();
    void end(std::string const& why);

    Timeline& timeline;
    Plate& plate;
    Driver driver;
    int direction = 0;        ///< 0 while it does not play
    bool isAdvancing = false; ///< the moment is changed by the player itself
    bool isWaiting = false;   ///< for the frame to be shown
    Frame nbLost = 0;         ///< frames in a row that turned out to have no picture
    Clock::time_point begun;  ///< when the frame that is waited for was due
    Clock::time_point due;    ///< when the next frame is to be begun
    std::deque<Clock::time_point> shownAt;
    std::string reason;
    CbDispatcher<Player const> handlers;
    CbFunction<double const> timeChanged{[this](double const&) {
        if (!isAdvancing) {
            stop();
        }
    }};
    CbFunction<PlateNotice const> plateChanged{[this](PlateNotice const&) { takePlate(); }};
};
