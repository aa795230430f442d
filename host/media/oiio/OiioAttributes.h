#pragma once

#include "base/Rational.h"
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

/// Says in the attributes of a new file how wide its pixels are for their height.
void setAspect(FileKind kind, Rational const& aspect, OIIO::ImageSpec& target);

/// Changes how wide pixels are said to be to what makes the library write just that: in PNG and DPX
/// it rounds to something else.
void holdAspect(FileKind kind, OIIO::ImageSpec& target);

/// Keeps the library from adding the date: no two runs would agree.
void suppressDate(FileKind kind, OIIO::ImageSpec& target);

/// Makes `text` the software of a file in place of that of its source.
void setSoftware(std::string const& text, OIIO::ImageSpec& source, OIIO::ImageSpec& target);

/// Takes the library's own name out of a written DPX file where `written` names no software.
void clearOwnName(FileKind kind, OIIO::ImageSpec const& written, OIIO::Filesystem::IOProxy& stream);

/// Removes the name of the file that DPX files hold: standard output has none. After the file is
/// complete.
void clearFileName(FileKind kind, OIIO::Filesystem::IOProxy& stream);

/// The library cannot write Exif data to TIFF files, and says so for each of them.
bool isComplaintAboutExif(std::string const& error, FileKind kind);
