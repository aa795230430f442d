#pragma once

#include "media/PictureScan.h"

/// scanPicture for EXR files.
PictureScan scanExr(std::filesystem::path const& file);
