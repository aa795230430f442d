#pragma once

#include "runtime/engine/ImageSource.h"

#include <string>

/// What a user wants to know of a mask whose windows are not those of its picture; empty where they
/// are. Pixels of the same coordinates belong together.
std::string describeMaskWindows(ImageInfo const& mask, ImageInfo const& picture);
