#pragma once

#include "files/StandardFiles.h"
#include "media/ImageFailure.h"
#include "media/MediaOptions.h"
#include "media/MediaReport.h"
#include "media/PictureDescription.h"
#include "runtime/engine/ImageSink.h"
#include "runtime/engine/ImageSource.h"

#include <filesystem>
#include <memory>

/// What the module for files other than EXR offers. It lives until the process ends.
class OiioModule {
public:
    virtual ~OiioModule() = default;

    virtual std::unique_ptr<ImageSource> open(std::filesystem::path const& file,
                                              ReadOptions const& options) = 0;
    virtual std::unique_ptr<ImageSink> create(std::filesystem::path const& file,
                                              ImageSource& source, IxPixelFormat const& format,
                                              WriteOptions const& options,
                                              MediaReport const& report) = 0;
    virtual PictureDescription describe(std::filesystem::path const& file) = 0;
    virtual void setThreads(int threads) = 0;
};

/// Name of the function that the module exports; it is given the process's standard files and
/// returns the one OiioModule.
inline constexpr char const* oiioModuleFunction = "remapMediaOiioModule";
using OiioModuleFunction = OiioModule* (*)(StandardFiles&);

/// Loads the module the first time. Any thread. Throws ImageFileError (Surroundings).
OiioModule& loadOiioModule();

/// The module if it has been loaded, or null.
OiioModule* findOiioModule();
