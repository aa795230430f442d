#pragma once

#include "shots/FrameList.h"
#include "shots/ShotError.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What came of a shot.
struct ShotSummary {
    std::size_t total = 0;
    std::size_t rendered = 0;
    std::size_t skipped = 0;
    std::vector<Frame> failed;
    std::vector<Frame> unfinished; ///< not begun, or dropped on the way
    double milliseconds = 0.0;
    std::optional<ShotFailure> worst; ///< of the failed frames

    void addFailure(ShotFailure kind);

    /// The exit status: that of the worst failure, but what suited some frames is no wrong request.
    int getStatus() const;
};

/// Something that happened to a shot. What does not belong to an event's kind is empty.
struct ShotEvent {
    enum class Kind {
        Start,   ///< frames, threads, memory, total; input and output as patterns
        Frame,   ///< a frame is complete under its name: milliseconds
        Skip,    ///< a frame was left as it is, or left out: message
        Note,    ///< message; of a frame or of the shot
        Warning, ///< something is missing from the result: message; of a frame or of the shot
        Error,   ///< a frame failed: status, message
        End,     ///< status, summary, milliseconds
    };

    Kind kind = Kind::Start;
    std::optional<double> frame; ///< none for what is about the whole shot
    std::filesystem::path input;
    std::filesystem::path output;
    double milliseconds = 0.0;
    std::size_t done = 0; ///< frames that are dealt with, this one too
    std::size_t total = 0;
    int status = 0;
    std::string message;
    std::string frames; ///< as a list
    int threads = 0;
    std::size_t memory = 0;
    ShotSummary summary;
};

/// Where events go, in the order in which things happened, on the thread that renders.
using ShotListener = std::function<void(ShotEvent const&)>;

/// The event as one JSON object without a line end. docs/reports.md says what is in it.
std::string formatJson(ShotEvent const& event);

/// The event that formatJson has made such a line of; nothing for other lines.
std::optional<ShotEvent> parseJson(std::string const& line);

/// The event as a sentence.
std::string formatText(ShotEvent const& event);

/// One line that says how many frames were rendered, skipped, failed and not done, and which ones
/// are to be done again, as a list of frames.
std::string formatSummary(ShotSummary const& summary);
