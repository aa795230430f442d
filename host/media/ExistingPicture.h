#pragma once

#include "media/MediaOptions.h"
#include "pluginAPI/IxPixelFormat.h"
#include "runtime/engine/ImageSource.h"

#include <filesystem>
#include <optional>
#include <string>

/// Why the picture in `file` is not what createImage would make of `source` for pixels as
/// `formatOf` says: it does not open, is incomplete, or has other windows, parts, levels, channels
/// or depths. Nothing for a picture that is. The pixels' values are not looked at; of EXR files
/// only the header, the table of blocks and the last strip are read, others whole. Main thread;
/// never throws for what is in the file.
std::optional<std::string> findPictureFault(std::filesystem::path const& file,
                                            ImageSource const& source, ResultFormat const& formatOf,
                                            ReadOptions const& readOptions,
                                            WriteOptions const& writeOptions);
