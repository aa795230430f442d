#pragma once

#include <chrono>
#include <cstddef>
#include <string>

/// One line at the end of a terminal that shows how far a job is. It is made of plain characters:
/// no colours, no codes. Main thread.
class ProgressBar {
public:
    ProgressBar() = default;
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    /// Whether standard error is a terminal.
    static bool isPossible();

    /// Draws `done` of `total` frames, which may be a fraction; ten times a second at most, and not
    /// at all in the job's first moments.
    void show(double done, std::size_t total);

    /// Makes room for a line of text.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point const started = Clock::now();
    Clock::time_point lastDrawn;
    std::size_t drawnWidth = 0; // characters
};

/// "[####......] 3/10, 30 %, 2.5 frames/s, 0:03 left", cut to `columns`.
std::string formatBar(double done, std::size_t total, double seconds, std::size_t columns);
