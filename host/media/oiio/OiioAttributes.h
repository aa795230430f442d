#pragma once

#include "media/ImageFormats.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>
#include <string>
#include <vector>

// What a written file keeps of its source besides the pixels.

/// For a target of the source's own kind: everything but what describes how samples are stored.
void copyAllAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target);

/// Of `source`, the attributes that are not in `written`, a file of the same kind, or other there.
std::vector<std::string> listLost(OIIO::ImageSpec const& source, OIIO::ImageSpec const& written);

/// For a target of another kind: the colour profile, without which the picture looks wrong, and
/// which side is up where the target can say so.
void copyLookAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target);

/// Of `source`, the attributes that this leaves out, but for those of storage.
std::vector<std::string> listLostByConversion(OIIO::ImageSpec const& source, FileKind target);

/// Keeps the library from adding the date: no two runs would agree.
void suppressDate(FileKind kind, OIIO::ImageSpec& target);

/// Takes the library's own name out of a written DPX file where `written` names no software.
void clearOwnName(FileKind kind, OIIO::ImageSpec const& written, OIIO::Filesystem::IOProxy& stream);

/// The library cannot write Exif data to TIFF files, and says so for each of them.
bool isComplaintAboutExif(std::string const& error, FileKind kind);
