#pragma once

#include "remapcolor/options/MaskRequest.h"
#include "remapcolor/reports/Reporter.h"
#include "runtime/engine/ImageSource.h"

#include <memory>

/// Opens the mask that is asked for; null for none. Says in a note where its windows are not those
/// of `picture`: pixels of the same coordinates belong together. Throws ImageFileError.
std::unique_ptr<ImageSource> openMask(MaskRequest const& request, ImageInfo const& picture,
                                      Reporter& reporter);
