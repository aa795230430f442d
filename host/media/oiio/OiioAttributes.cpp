#include "media/oiio/OiioAttributes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace {

constexpr char const* orientationName = "Orientation";
constexpr char const* dateName = "DateTime";
constexpr char const* softwareName = "Software";
constexpr char const* profileName = "ICCProfile";
constexpr char const* compressionName = "compression";

/// Storage of the samples, which the target has its own of, and what the library works out itself.
constexpr std::array<OIIO::string_view, 12> storageNames = {
    "oiio:BitsPerSample", "oiio:UnassociatedAlpha",   "oiio:subimages",
    "oiio:subimagename",  "tiff:Compression",         "tiff:PhotometricInterpretation",
    "tiff:ColorSpace",    "tiff:PlanarConfiguration", "tiff:bigtiff",
    "tiff:subfiletype",   "dpx:ImageDescriptor",      "dpx:Packing",
};

/// Loss-free and good for every depth. Files with another one take the library's, which is ZIP.
constexpr std::array<OIIO::string_view, 4> keptTiffCompressions = {"none", "lzw", "zip",
                                                                   "packbits"};

template <typename Names>
bool isIn(Names const& names, OIIO::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isExif(OIIO::string_view name)
{
    return OIIO::Strutil::starts_with(name, "Exif:") || OIIO::Strutil::starts_with(name, "GPS:");
}

} // namespace

void copyAllAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target)
{
    for (OIIO::ParamValue const& attribute : source.extra_attribs) {
        OIIO::string_view const name = attribute.name();
        bool const isLost = kind == FileKind::Tiff && isExif(name);
        bool const isOtherCompression = kind == FileKind::Tiff && name == compressionName &&
                                        !isIn(keptTiffCompressions, attribute.get_string());
        if (!isIn(storageNames, name) && !isLost && !isOtherCompression) {
            target.extra_attribs.push_back(attribute);
        }
    }
    target.x = source.x;
    target.y = source.y;
    target.full_x = source.full_x;
    target.full_y = source.full_y;
    target.full_width = source.full_width;
    target.full_height = source.full_height;
}

void copyLookAttributes(OIIO::ImageSpec const& source, FileKind kind, OIIO::ImageSpec& target)
{
    bool const takesOrientation = kind == FileKind::Tiff || kind == FileKind::Jpeg;
    for (OIIO::ParamValue const& attribute : source.extra_attribs) {
        if (attribute.name() == profileName ||
            (takesOrientation && attribute.name() == orientationName)) {
            target.extra_attribs.push_back(attribute);
        }
    }
}

void suppressDate(FileKind kind, OIIO::ImageSpec& target)
{
    if (kind == FileKind::Tiff && target.find_attribute(dateName) == nullptr) {
        target.attribute(dateName, "");
    }
}

void clearOwnName(FileKind kind, OIIO::ImageSpec const& written, OIIO::Filesystem::IOProxy& stream)
{
    // The field "creator" of the file's header, SMPTE ST 268.
    constexpr std::int64_t creatorOffset = 160;
    std::array<char, 100> const creator{};
    if (kind == FileKind::Dpx && written.find_attribute(softwareName) == nullptr) {
        stream.pwrite(creator.data(), creator.size(), creatorOffset);
    }
}

bool losesExif(OIIO::ImageSpec const& source, FileKind kind)
{
    return kind == FileKind::Tiff &&
           std::any_of(source.extra_attribs.begin(), source.extra_attribs.end(),
                       [](OIIO::ParamValue const& attribute) { return isExif(attribute.name()); });
}

bool isComplaintAboutExif(std::string const& error, FileKind kind)
{
    return kind == FileKind::Tiff && error.find("Exif") != std::string::npos;
}
