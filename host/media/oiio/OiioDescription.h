#pragma once

#include "media/PictureDescription.h"
#include "media/oiio/OiioReader.h"

/// What the open file says of itself, its further pictures as further parts.
PictureDescription describeOpenFile(OiioReader const& reader);
