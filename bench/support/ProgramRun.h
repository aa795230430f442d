#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Whole programs, start and end included.
namespace bench {

using Words = std::vector<std::string>;

struct Run {
    bool isGood = false;
    double seconds = 0.0; ///< on the clock
    double cpuSeconds = 0.0;
    double peakMegabytes = 0.0;
};

/// Runs a program to its end. If it prints two numbers, these are seconds on the clock and of the
/// processor that do not count. Any thread.
Run runProgram(Words const& command);

/// A program that lies beside this one.
std::string findProgram(char const* name);

/// Sends a picture or a sequence through EXR display with curves.
Words makeRender(std::string const& input, std::string const& output, int threads);

/// Makes a half RGBA picture; `tile` 0: of rows.
bool makePicture(std::filesystem::path const& file, int width, int height, char const* compression,
                 int tile);

} // namespace bench
