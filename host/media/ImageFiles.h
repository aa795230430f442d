#pragma once

#include "runtime/engine/ImageSink.h"
#include "runtime/engine/ImageSource.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

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

/// Receives one line that a careful user wants to know but that stops nothing.
using MediaNote = std::function<void(std::string const&)>;

struct ReadOptions {
    std::string layer{}; ///< channels of this layer ("" = the file's own R, G, B)
    std::size_t mostBytes = std::size_t{64} << 30; ///< pictures announcing more are refused
};

/// Opens a picture by content and extension. Main thread; throws ImageFileError.
std::unique_ptr<ImageSource> openImage(std::filesystem::path const& file,
                                       ReadOptions const& options, MediaNote const& note);

/// Checks, before anything is read or written, whether `file`'s extension and folder can take a
/// picture of `depth`. Throws ImageFileError.
void checkOutput(std::filesystem::path const& file, IxPixelFormat::Depth depth);

/// Begins a picture that keeps everything of `source` but its colour pixels, which come in
/// `format`. `keepsInputDepth` makes files with integer samples keep the source's storage where
/// the output format can. The file appears under its name in finish(); until then it is a hidden
/// temporary beside it. A sink that can only write from top to bottom or has no place for further
/// channels tells `source`, whose strips then follow: ask for their bounds afterwards, and read
/// none before. Main thread; throws ImageFileError.
std::unique_ptr<ImageSink> createImage(std::filesystem::path const& file, ImageSource& source,
                                       IxPixelFormat const& format, bool keepsInputDepth,
                                       MediaNote const& note);

/// Threads that image libraries may use for themselves, 0 for none.
void setMediaThreads(int threads);
