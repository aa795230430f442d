#pragma once

#include <stdexcept>
#include <string>

// What an image failure is. Everything else in this folder stands above this header.

/// Why a picture could not be read or written.
enum class ImageFailure {
    Request,      ///< what was asked for cannot be (unknown extension, a depth the format lacks)
    File,         ///< the file is missing, damaged or of an unsupported kind
    Surroundings, ///< the disk is full, a permission or memory is missing: may work another time
};

/// A picture file's failure. The text is one line that says what, which file, and what to do.
class ImageFileError : public std::runtime_error {
public:
    ImageFileError(ImageFailure failureKind, std::string const& text)
        : std::runtime_error(text), kind(failureKind)
    {
    }
    ImageFailure getKind() const { return kind; }

private:
    ImageFailure kind;
};
