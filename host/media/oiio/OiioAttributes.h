#pragma once

#include "media/ImageFormats.h"

#include <OpenImageIO/imageio.h>

// What a written file keeps of its source besides the pixels.

/// For a target of the source's own kind: everything but what describes how samples are stored.
void copyAllAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target);

/// For a target of another kind: the colour profile, without which the picture looks wrong, and
/// which side is up where the target can say so.
void copyLookAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target);

/// Keeps the library from adding a date and its own name: no two runs would agree.
void suppressOwnAttributes(FileKind kind, OIIO::ImageSpec& target);

/// The library cannot write Exif data to TIFF files, and says so for each of them.
bool losesExif(OIIO::ImageSpec const& source, FileKind kind);
bool isComplaintAboutExif(std::string const& error, FileKind kind);
