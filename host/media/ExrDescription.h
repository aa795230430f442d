#pragma once

#include "media/PictureDescription.h"

/// As describePicture, for EXR files, deep ones too.
PictureDescription describeExr(std::filesystem::path const& file);
