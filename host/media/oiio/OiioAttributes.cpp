#include "media/oiio/OiioAttributes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <string>

namespace {

constexpr char const* orientationName = "Orientation";
constexpr char const* dateName = "DateTime";
constexpr char const* softwareName = "Software";
constexpr char const* profileName = "ICCProfile";
constexpr char const* compressionName = "compression";

/// Storage of the samples, which the target has its own of, and what the library works out itself.
constexpr std::array<OIIO::string_view, 12> storageNames = {
    "oiio:BitsPerSample", "oiio:UnassociatedAlpha",  "oiio:subimages",
    "oiio:subimagename",  "tiff:Compression",        "tiff:PhotometricInterpretation",
    "tiff:ColorSpace",    "tiff:PlanarConfiguration", "tiff:bigtiff",
    "tiff:subfiletype",   "dpx:ImageDescriptor",     "dpx:Packing",
};

/// Loss-free and good for every depth. Files with another one take the library's, which is ZIP.
constexpr std::array<OIIO::string_view, 4> keptTiffCompressions = {"none", "lzw", "zip",
                                                                   "packbits"};

template <typename Names>
bool isIn(Names const& names, OIIO::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::uint32_t readBigEndian(std::istream& stream)
{
    std::array<char, 4> bytes{};
    stream.read(bytes.data(), bytes.size());
    std::uint32_t value = 0;
    for (char const byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Whether a chunk before a PNG file's pixels says what its colours mean.
bool hasPngColourSpace(std::filesystem::path const& file)
{
    constexpr std::streamoff firstChunk = 8;
    constexpr std::streamoff checksumBytes = 4;
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(firstChunk);
    while (stream) {
        std::uint32_t const size = readBigEndian(stream);
        std::string name(4, ' ');
        stream.read(name.data(), static_cast<std::streamsize>(name.size()));
        if (name == "sRGB" || name == "gAMA" || name == "cHRM" || name == "iCCP") {
            return static_cast<bool>(stream);
        }
        if (name == "IDAT") {
            return false;
        }
        stream.seekg(static_cast<std::streamoff>(size) + checksumBytes, std::ios::cur);
    }
    return false;
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

void dropAssumedColourSpace(std::filesystem::path const& file, std::optional<FileKind> kind,
                            OIIO::ImageSpec& source)
{
    bool const isNamed = kind == FileKind::Png && hasPngColourSpace(file);
    if (kind.has_value() && !isNamed) {
        source.erase_attribute("oiio:ColorSpace");
    }
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
