#pragma once

#include "media/ImageFormats.h"

#include <OpenImageIO/string_view.h>
#include <optional>

/// What the library calls a kind of file; "" for EXR, which does not go through it.
char const* nameFormat(FileKind kind);

/// The kind behind the library's name; nothing for one that cannot be written.
std::optional<FileKind> findKind(OIIO::string_view formatName);
