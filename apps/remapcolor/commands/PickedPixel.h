#pragma once

#include "primitives/CoColor.h"
#include "primitives/GeRectangle.h"
#include "runtime/engine/ImageSource.h"

/// One pixel of a picture as a tool sees it: float, alpha 1 where there is none, colour 0 where
/// there is none. Reads no more than the rows that lie together with it, which is within the data
/// window. Throws ImageFileError.
CoRgbaColorTyped<float> readPixel(ImageSource& source, int x, int y);
