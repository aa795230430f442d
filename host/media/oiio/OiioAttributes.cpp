#include "media/oiio/OiioAttributes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>

namespace {

constexpr char const* orientationName = "Orientation";
constexpr char const* dateName = "DateTime";
constexpr char const* softwareName = "Software";
constexpr char const* profileName = "ICCProfile";
constexpr char const* compressionName = "compression";
constexpr char const* aspectName = "PixelAspectRatio";
constexpr char const* densityAcrossName = "XResolution";
constexpr char const* densityDownName = "YResolution";
constexpr char const* densityUnitName = "ResolutionUnit";
constexpr float usualDensity = 10000.F;
constexpr float mostDensity = 65535.F; // that fits into a JPEG file
constexpr float centimetresInMetre = 100.F;

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
    return OIIO::Strutil::starts_with(name, "Exif:") || OIIO::Strutil::starts_with(name, "GPS:") ||
           name == "ExposureTime" || name == "FNumber";
}

/// How samples are stored or what the library works out from that.
bool isStorage(OIIO::string_view name)
{
    constexpr std::array<OIIO::string_view, 5> prefixes = {
        "oiio:", "tiff:", "png:", "jpeg:", "dpx:"};
    return isIn(storageNames, name) || name == compressionName || name == "planarconfig" ||
           std::any_of(prefixes.begin(), prefixes.end(), [&](OIIO::string_view prefix) {
               return OIIO::Strutil::starts_with(name, prefix);
           });
}

bool isTakenByConversion(OIIO::ParamValue const& attribute, FileKind target)
{
    bool const takesOrientation = target == FileKind::Tiff || target == FileKind::Jpeg;
    return (attribute.name() == profileName && target != FileKind::Exr) ||
           (attribute.name() == orientationName && takesOrientation);
}

/// Where a file of IPTC data says the same twice: the library writes the second one into the place
/// of the first too, and reads them both.
struct Twin {
    OIIO::string_view iptc;
    OIIO::string_view plain;
};
constexpr std::array<Twin, 4> twins = {{{"IPTC:Creator", "Artist"},
                                        {"IPTC:Caption", "ImageDescription"},
                                        {"IPTC:CopyrightNotice", "Copyright"},
                                        {"IPTC:OriginatingProgram", "Software"}}};

/// The library ends the process when it is to write an empty text as IPTC.
void dropEmptyTexts(OIIO::ImageSpec& target)
{
    auto const isIptc = [](OIIO::string_view name) {
        return OIIO::Strutil::starts_with(name, "IPTC:") ||
               std::any_of(twins.begin(), twins.end(),
                           [&](Twin const& twin) { return twin.plain == name; });
    };
    auto const isEmpty = [&](OIIO::ParamValue const& attribute) {
        return attribute.type() == OIIO::TypeString && attribute.get_string().empty() &&
               isIptc(attribute.name());
    };
    auto& attributes = target.extra_attribs;
    attributes.erase(std::remove_if(attributes.begin(), attributes.end(), isEmpty),
                     attributes.end());
}

/// Takes out of the lists of IPTC what their twins add again: else they grow with every copy.
void dropTwins(OIIO::ImageSpec& target)
{
    for (Twin const& twin : twins) {
        std::string list(target.get_string_attribute(twin.iptc));
        std::string const added(target.get_string_attribute(twin.plain));
        if (added.empty() || !OIIO::Strutil::ends_with(list, added)) {
            continue;
        }
        list.resize(list.size() - added.size());
        if (list.empty()) {
            target.erase_attribute(twin.iptc);
        } else if (OIIO::Strutil::ends_with(list, "; ")) {
            target.attribute(twin.iptc, list.substr(0, list.size() - 2));
        }
    }
}

// Fields of the header of a DPX file, SMPTE ST 268.
constexpr std::int64_t dpxFileNameOffset = 36;
constexpr std::int64_t dpxCreatorOffset = 160;
constexpr std::array<char, 100> emptyDpxText{};

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
    if (kind == FileKind::Jpeg) {
        dropTwins(target);
    }
    if (kind == FileKind::Jpeg || kind == FileKind::Tiff) {
        dropEmptyTexts(target);
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
    for (OIIO::ParamValue const& attribute : source.extra_attribs) {
        if (isTakenByConversion(attribute, kind)) {
            target.extra_attribs.push_back(attribute);
        }
    }
}

std::vector<std::string> listLost(OIIO::ImageSpec const& source, OIIO::ImageSpec const& written)
{
    std::vector<std::string> names;
    for (OIIO::ParamValue const& attribute : source.extra_attribs) {
        OIIO::ParamValue const* const kept = written.find_attribute(attribute.name());
        std::string const text = attribute.get_string();
        bool const isKept = text.empty() || (kept != nullptr && kept->get_string() == text);
        if (!isKept && !isStorage(attribute.name())) {
            names.emplace_back(attribute.name());
        }
    }
    return names;
}

std::vector<std::string> listLostByConversion(OIIO::ImageSpec const& source, FileKind target)
{
    // The first says what is so without it; the others come of the first ones' absence.
    constexpr std::array<OIIO::string_view, 4> plain = {aspectName, densityUnitName,
                                                        densityAcrossName, densityDownName};
    std::vector<std::string> names;
    for (OIIO::ParamValue const& attribute : source.extra_attribs) {
        OIIO::string_view const name = attribute.name();
        bool const isUpright = name == orientationName && attribute.get_int() == 1;
        bool const isOfProfile =
            OIIO::Strutil::starts_with(name, profileName) && name != profileName;
        if (!isStorage(name) && !isIn(plain, name) && !isUpright && !isOfProfile &&
            !isTakenByConversion(attribute, target)) {
            names.emplace_back(name);
        }
    }
    return names;
}

void setAspect(FileKind kind, Rational const& aspect, OIIO::ImageSpec& target)
{
    float const ratio = aspect.getFloat();
    if (ratio == 1.F) {
        return;
    }
    target.attribute(aspectName, ratio);
    if (kind != FileKind::Jpeg && kind != FileKind::Png) {
        return;
    }
    // Whole numbers of pixels in some length, of 16 bits in JPEG. Its readers, the library among
    // them, have always taken the wider pixels to be those of which there are more across.
    float const low = std::round(std::clamp(mostDensity / ratio, 1.F, usualDensity));
    float const high = std::clamp(std::round(low * ratio), 1.F, mostDensity);
    bool const isJpeg = kind == FileKind::Jpeg;
    target.attribute(densityAcrossName, isJpeg ? high : low);
    target.attribute(densityDownName, isJpeg ? low : high);
    target.attribute(densityUnitName, "none");
}

void holdAspect(FileKind kind, OIIO::ImageSpec& target)
{
    float const aspect = target.get_float_attribute(aspectName, 1.F);
    if (aspect == 1.F) {
        return;
    }
    if (kind == FileKind::Dpx && 1.F / aspect == std::round(1.F / aspect)) {
        target.attribute(aspectName, std::nextafter(aspect, 1.F)); // 1 / 2 would become 1 / 0
    }
    float const across = target.get_float_attribute(densityAcrossName);
    float const down = target.get_float_attribute(densityDownName);
    if (kind == FileKind::Png && across > 0.F && down > 0.F) {
        // The rows are worked out from the columns and cut to a whole number.
        bool const isInMetres = target.get_string_attribute(densityUnitName) == "cm";
        float const part = 0.25F / (isInMetres ? centimetresInMetre : 1.F);
        target.attribute(aspectName, (down + part) / across);
    }
}

void suppressDate(FileKind kind, OIIO::ImageSpec& target)
{
    if (kind == FileKind::Tiff && target.find_attribute(dateName) == nullptr) {
        target.attribute(dateName, "");
    }
}

void setSoftware(std::string const& text, OIIO::ImageSpec& source, OIIO::ImageSpec& target)
{
    source.erase_attribute(softwareName);
    target.attribute(softwareName, text);
}

void clearOwnName(FileKind kind, OIIO::ImageSpec const& written, OIIO::Filesystem::IOProxy& stream)
{
    if (kind == FileKind::Dpx && written.find_attribute(softwareName) == nullptr) {
        stream.pwrite(emptyDpxText.data(), emptyDpxText.size(), dpxCreatorOffset);
    }
}

void clearFileName(FileKind kind, OIIO::Filesystem::IOProxy& stream)
{
    if (kind == FileKind::Dpx) {
        stream.pwrite(emptyDpxText.data(), emptyDpxText.size(), dpxFileNameOffset);
    }
}

bool isComplaintAboutExif(std::string const& error, FileKind kind)
{
    return kind == FileKind::Tiff && error.find("Exif") != std::string::npos;
}
