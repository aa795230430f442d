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

} // namespace

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
