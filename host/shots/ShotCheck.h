#pragma once

#include "media/PictureScan.h"
#include "shots/FrameList.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Which pictures are looked at, and how.
struct ShotCheckRequest {
    std::string input;                        ///< a pattern, or one picture
    std::optional<std::vector<Frame>> frames; ///< without: those that there are, and their gaps
    bool countsValues = false;                ///< NaN and infinity are wrong, too
};

struct ShotCheckOptions {
    /// When it becomes true no further picture is begun. May be null.
    std::atomic<bool> const* cancelled = nullptr;
    /// Called after each picture with how many there were, and how many there are.
    std::function<void(std::size_t done, std::size_t total)> progress = [](std::size_t,
                                                                           std::size_t) {};
};

/// What is wrong with a frame.
struct FrameFault {
    enum class Kind {
        Missing,
        Unreadable, ///< damaged, incomplete, no picture, or not permitted
        Size,       ///< other windows than most frames have
        Channels,   ///< other channels or parts than most frames have
        Values,     ///< NaN or infinity
    };

    Frame frame;
    std::filesystem::path file;
    Kind kind;
    std::string message;                 ///< one line
    std::vector<ChannelScan> channels{}; ///< of Values: those that have any
};

/// "missing", "unreadable" and so on.
char const* nameFault(FrameFault::Kind kind);

struct ShotCheck {
    std::vector<Frame> frames;      ///< that there are or should be
    std::size_t nbRead = 0;         ///< frames that were read to the end
    std::vector<FrameFault> faults; ///< in the order of the frames
    bool isSequence = false;
    bool isComplete = true; ///< false when it was cancelled
};

/// Reads every picture fully and compares it with the others. What most of the readable frames have
/// in common, more than half of them, is what the others are held against. User-interface thread.
/// Throws ShotError: Request for a wrong pattern, Frames where nothing matches.
ShotCheck checkShot(ShotCheckRequest const& request, ShotCheckOptions const& options);
