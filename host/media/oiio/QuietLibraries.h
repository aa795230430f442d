#pragma once

#include "media/ImageFormats.h"

#include <cstdio>
#include <optional>

/// While one lives for a PNG file, what C code prints on standard error goes nowhere: the PNG
/// library prints complaints that also arrive as errors. Nothing else may use C's `stderr`
/// meanwhile; C++ streams and file descriptors are not touched. Lives for one call of the library
/// at a time, and never while a note is given.
class QuietLibraries {
public:
    explicit QuietLibraries(std::optional<FileKind> kind) : shown(stderr)
    {
        static std::FILE* const nowhere = std::fopen("/dev/null", "we");
        if (kind == FileKind::Png && nowhere != nullptr) {
            stderr = nowhere;
            isQuiet = true;
        }
    }
    ~QuietLibraries()
    {
        if (isQuiet) {
            stderr = shown;
        }
    }
    QuietLibraries(QuietLibraries const&) = delete;
    QuietLibraries& operator=(QuietLibraries const&) = delete;

private:
    std::FILE* shown;
    bool isQuiet = false;
};
