#pragma once

#include <exception>
#include <stdexcept>
#include <string>

/// Why a shot cannot be worked on.
enum class ShotFailure {
    Request,      ///< what was asked for cannot be
    Frames,       ///< there is no such frame, or none at all
    Surroundings, ///< the system refused: may work another time
};

/// A shot's failure. The text is one line that says what, where, and what to do.
class ShotError : public std::runtime_error {
public:
    ShotError(ShotFailure failureKind, std::string const& text)
        : std::runtime_error(text), kind(failureKind)
    {
    }
    ShotFailure getKind() const { return kind; }

private:
    ShotFailure kind;
};

/// The exit status that tells a scheduler of that failure: 1 for frames, 2 for a wrong request, 3
/// for surroundings, where another try may help.
int toExitStatus(ShotFailure kind);

/// A failure as a user sees it.
struct FrameFailure {
    ShotFailure kind;
    std::string text; ///< one line
};

/// The failure behind an exception, of whatever kind it is. Any thread.
FrameFailure describeFailure(std::exception_ptr const& failure);
