#include "media/ImageFormats.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace {

struct Extension {
    char const* text;
    FileKind kind;
};

constexpr std::array<Extension, 7> extensions = {{
    {".exr", FileKind::Exr},
    {".png", FileKind::Png},
    {".tif", FileKind::Tiff},
    {".tiff", FileKind::Tiff},
    {".jpg", FileKind::Jpeg},
    {".jpeg", FileKind::Jpeg},
    {".dpx", FileKind::Dpx},
}};

/// How files begin.
struct Start {
    std::string_view bytes;
    FileKind kind;
};

using namespace std::string_view_literals;

constexpr std::array<Start, 9> starts = {{
    {"\x76\x2f\x31\x01"sv, FileKind::Exr},
    {"\x89PNG\r\n\x1a\n"sv, FileKind::Png},
    {"II*\0"sv, FileKind::Tiff},
    {"MM\0*"sv, FileKind::Tiff},
    {"II+\0"sv, FileKind::Tiff}, // beyond 4 GiB
    {"MM\0+"sv, FileKind::Tiff},
    {"\xff\xd8\xff"sv, FileKind::Jpeg},
    {"SDPX"sv, FileKind::Dpx},
    {"XPDS"sv, FileKind::Dpx},
}};

} // namespace

std::optional<FileKind> recogniseFileKind(std::string_view start)
{
    auto const found = std::find_if(starts.begin(), starts.end(), [start](Start const& known) {
        return start.starts_with(known.bytes);
    });
    return found == starts.end() ? std::nullopt : std::optional(found->kind);
}

std::optional<FileKind> findFileKind(std::filesystem::path const& file)
{
    std::string wanted = file.extension().string();
    std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    auto const found = std::find_if(extensions.begin(), extensions.end(),
                                    [&](Extension const& known) { return wanted == known.text; });
    return found == extensions.end() ? std::nullopt : std::optional(found->kind);
}

std::string listExtensions()
{
    std::string list;
    for (Extension const& extension : extensions) {
        list += (list.empty() ? "" : ", ") + std::string(extension.text);
    }
    return list;
}
