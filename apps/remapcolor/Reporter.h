#pragma once

#include "remapcolor/Failures.h"
#include "runtime/engine/ImageSource.h"

#include <chrono>
#include <filesystem>
#include <string>

/// How a running job shows itself on standard error.
enum class ProgressStyle {
    Auto, ///< Bar, unless quiet
    Bar,  ///< a bar where standard error is a terminal, nothing elsewhere
    Json, ///< everything, errors too, as one JSON object a line
    None,
};

enum class Verbosity { Quiet, Normal, Verbose };

/// Everything that the program says besides its data: on standard error, one line each. What cannot
/// be written there is lost without harm. Main thread.
class Reporter {
public:
    Reporter() = default;
    Reporter(Reporter const&) = delete;
    Reporter& operator=(Reporter const&) = delete;

    /// Before this is called: Auto, Normal.
    void configure(ProgressStyle wantedStyle, Verbosity wantedVerbosity);

    /// Something worth knowing that stops nothing; silent when quiet.
    void note(std::string const& text);

    void startPicture(std::filesystem::path const& input, std::filesystem::path const& output,
                      ImageInfo const& info, int threads);

    /// The written share of the picture, 0 to 1.
    void showProgress(double done);

    /// The picture that was started is complete under its name.
    void finishPicture();

    void reportFailure(Failure const& failure);

private:
    using Clock = std::chrono::steady_clock;

    bool isQuiet() const { return verbosity == Verbosity::Quiet; }
    double getSeconds() const;
    void drawBar(double done);
    void clearBar();

    ProgressStyle style = ProgressStyle::Auto;
    Verbosity verbosity = Verbosity::Normal;
    std::filesystem::path outputFile; // of the picture that was started
    Clock::time_point started;
    double lastShown = -1.0; // share
    bool isBarDrawn = false;
};
