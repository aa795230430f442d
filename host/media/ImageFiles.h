#pragma once

#include "media/ImageFailure.h"
#include "media/MediaOptions.h"
#include "media/MediaReport.h"
#include "runtime/engine/ImageSink.h"
#include "runtime/engine/ImageSource.h"

#include <filesystem>
#include <memory>

/// Opens a picture by content and extension; "-" is standard input, which is opened once. Any
/// thread; throws ImageFileError.
std::unique_ptr<ImageSource> openImage(std::filesystem::path const& file,
                                       ReadOptions const& options);

/// Checks, before anything is read or written, whether `file`'s extension and folder can take a
/// picture of `depth` with these options. Throws ImageFileError.
void checkOutput(std::filesystem::path const& file, IxPixelFormat::Depth depth,
                 WriteOptions const& options);

/// Begins a picture that keeps everything of `source` but its colour pixels, which come as
/// `formatOf` says. The file appears under its name in finish(); until then it is a hidden
/// temporary beside it. A sink that can only write from top to bottom or has no place for further
/// channels tells `source`, whose strips then follow: ask for their bounds afterwards, and read
/// none before. Main thread; throws ImageFileError.
std::unique_ptr<ImageSink> createImage(std::filesystem::path const& file, ImageSource& source,
                                       ResultFormat const& formatOf, WriteOptions const& options,
                                       MediaReport const& report);

/// Threads that image libraries may use for themselves, 0 for none.
void setMediaThreads(int threads);
