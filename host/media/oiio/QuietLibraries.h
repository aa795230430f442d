#pragma once

#include <cstdio>

/// While one lives, what C code prints on standard error goes nowhere: the PNG library prints the
/// complaints that also arrive as errors. C++ streams have their own handle of standard error and
/// are heard all the same. Lives for one call of the image library at a time.
class QuietLibraries {
public:
    QuietLibraries() : shown(stderr)
    {
        static std::FILE* const nowhere = std::fopen("/dev/null", "we");
        if (nowhere != nullptr) {
            stderr = nowhere;
        }
    }
    ~QuietLibraries() { stderr = shown; }
    QuietLibraries(QuietLibraries const&) = delete;
    QuietLibraries& operator=(QuietLibraries const&) = delete;

private:
    std::FILE* shown;
};
