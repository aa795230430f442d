#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// Kinds of file that can be written.
enum class FileKind { Exr, Png, Tiff, Jpeg, Dpx };

/// The kind that `file`'s extension (in any case) asks for; nothing for another extension.
std::optional<FileKind> findFileKind(std::filesystem::path const& file);

/// ".exr, .png, ...": the extensions of which findFileKind knows.
std::string listExtensions();
