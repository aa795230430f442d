// How far, and how much longer.

#include "shots/ShotPace.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

std::string formatDuration(double seconds)
{
    constexpr long longest = 359'999; // hours of two digits
    constexpr long perMinute = 60;
    long const whole = std::lround(std::clamp(seconds, 0.0, static_cast<double>(longest)));
    long const hours = whole / (perMinute * perMinute);
    long const minutes = whole / perMinute % perMinute;
    char text[32];
    if (hours > 0) {
        std::snprintf(text, sizeof(text), "%ld:%02ld:%02ld", hours, minutes, whole % perMinute);
    } else {
        std::snprintf(text, sizeof(text), "%ld:%02ld", minutes, whole % perMinute);
    }
    return text;
}

std::string formatPace(double done, std::size_t total, double seconds)
{
    double const share = total == 0 ? 1.0 : std::clamp(done / static_cast<double>(total), 0.0, 1.0);
    std::string pace;
    if (total > 1) {
        pace = std::to_string(static_cast<std::size_t>(done)) + "/" + std::to_string(total) + ", ";
    }
    pace += std::to_string(static_cast<int>(share * 100.0)) + " %";
    if (done > 0.0 && seconds > 0.0) {
        if (total > 1) {
            char rate[48];
            std::snprintf(rate, sizeof(rate), ", %.3g frames/s", done / seconds);
            pace += rate;
        }
        pace += ", " + formatDuration(seconds * (1.0 - share) / share) + " left";
    }
    return pace;
}
