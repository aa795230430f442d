#pragma once

#include "media/ImageFiles.h"
#include "primitives/CoColor.h"

struct PixelPlace;

/// One pixel of a picture as a tool sees it: float, alpha 1 where there is none, colour 0 where
/// there is none. Reads no more than the rows that lie together with it. Throws UsageError for a
/// place outside the data window; `name` is the picture's in its text; ImageFileError.
CoRgbaColorTyped<float> readPixel(ImageSource& source, PixelPlace const& place,
                                  std::string const& name);
