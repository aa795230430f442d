#pragma once

#include "remapcolor/reports/LogFile.h"
#include "remapcolor/reports/ProgressBar.h"
#include "session/Failures.h"
#include "shots/ShotEvent.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// How a running job shows itself on standard error.
enum class ProgressStyle {
    Auto, ///< Bar, unless quiet
    Bar,  ///< a bar where standard error is a terminal, nothing elsewhere
    Json, ///< everything, errors too, as one JSON object a line
    None,
};

enum class Verbosity { Quiet, Normal, Verbose };

/// Everything that the program says besides its data: on standard error, one line each, and in the
/// log. What cannot be written there is lost without harm. Main thread.
class Reporter {
public:
    Reporter() = default;
    Reporter(Reporter const&) = delete;
    Reporter& operator=(Reporter const&) = delete;

    /// Before this is called: Auto, Normal.
    void configure(ProgressStyle wantedStyle, Verbosity wantedVerbosity);

    /// From now on every event is a line in the file, too. Throws what LogFile throws.
    void openLog(std::filesystem::path const& file) { log.emplace(file); }

    /// From now on messages name their frame. Before this is called there is one picture, which
    /// needs no name.
    void nameFrames() { namesFrames = true; }

    /// Shows what the verbosity lets through; the log and JSON get everything.
    void tell(ShotEvent const& event);

    /// Something worth knowing that stops nothing; silent when quiet.
    void note(std::string const& text);

    /// Something of the input is missing from the output; also when quiet.
    void warn(std::string const& text);

    /// What the pictures are made with, as names and values; when verbose.
    using Facts = std::vector<std::pair<std::string, std::string>>;
    void showLook(Facts const& facts);

    /// `done` of `total` frames, which may be a fraction.
    void showProgress(double done, std::size_t total);

    void reportFailure(Failure const& failure);

private:
    bool isShown(ShotEvent const& event) const;
    void addToLog(ShotEvent const& event);

    ProgressStyle style = ProgressStyle::Auto;
    Verbosity verbosity = Verbosity::Normal;
    bool namesFrames = false;
    std::optional<LogFile> log;
    ProgressBar bar;
};
