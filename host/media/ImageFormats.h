#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Kinds of file that can be written.
enum class FileKind { Exr, Png, Tiff, Jpeg, Dpx };

/// The kind that `file`'s extension (in any case) asks for; nothing for another extension.
std::optional<FileKind> findFileKind(std::filesystem::path const& file);

/// The kind whose files begin like this; nothing for another, or too few bytes.
std::optional<FileKind> recogniseFileKind(std::string_view start);

/// Bytes that are enough to recognise a kind.
inline constexpr std::size_t fileKindBytes = 8;

/// ".exr, .png, ...": the extensions of which findFileKind knows.
std::string listExtensions();
