#pragma once

#include <cstddef>
#include <string>

/// "1:05", "2:00:09"
std::string formatDuration(double seconds);

/// How far a shot is after so many seconds, and how long the rest takes: "3/10, 30 %, 2.5 frames/s,
/// 0:12 left". Frames on their way count by their share. Of a single picture: "30 %, 0:12 left".
std::string formatPace(double done, std::size_t total, double seconds);
