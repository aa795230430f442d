#include "media/oiio/FormatNames.h"

#include <algorithm>
#include <array>

namespace {

struct FormatName {
    char const* text;
    FileKind kind;
};
constexpr std::array<FormatName, 4> formatNames = {{{"png", FileKind::Png},
                                                    {"tiff", FileKind::Tiff},
                                                    {"jpeg", FileKind::Jpeg},
                                                    {"dpx", FileKind::Dpx}}};

} // namespace

char const* nameFormat(FileKind kind)
{
    auto const found = std::find_if(formatNames.begin(), formatNames.end(),
                                    [kind](FormatName const& known) { return known.kind == kind; });
    return found == formatNames.end() ? "" : found->text;
}

std::optional<FileKind> findKind(OIIO::string_view formatName)
{
    auto const found =
        std::find_if(formatNames.begin(), formatNames.end(),
                     [&](FormatName const& known) { return formatName == known.text; });
    return found == formatNames.end() ? std::nullopt : std::optional(found->kind);
}
