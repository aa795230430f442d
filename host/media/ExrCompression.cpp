// How EXR files are packed, and what that does to channels that are only copied.

#include "media/ExrCompression.h"

#include <ImfFloatAttribute.h>
#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr char const* levelName = "dwaCompressionLevel"; // a standard attribute

constexpr std::array<std::string_view, 6> lossyDwaNames = {"R", "G", "B", "Y", "RY", "BY"};

Imf::Compression toLibrary(Compression compression)
{
    switch (compression) {
    case Compression::None: return Imf::NO_COMPRESSION;
    case Compression::Rle: return Imf::RLE_COMPRESSION;
    case Compression::Zips: return Imf::ZIPS_COMPRESSION;
    case Compression::Zip: return Imf::ZIP_COMPRESSION;
    case Compression::Piz: return Imf::PIZ_COMPRESSION;
    case Compression::Pxr24: return Imf::PXR24_COMPRESSION;
    case Compression::B44: return Imf::B44_COMPRESSION;
    case Compression::B44a: return Imf::B44A_COMPRESSION;
    case Compression::Dwaa: return Imf::DWAA_COMPRESSION;
    case Compression::Dwab: return Imf::DWAB_COMPRESSION;
    }
    return Imf::ZIP_COMPRESSION;
}

bool canChange(std::string_view name, Imf::PixelType type, Imf::Compression before,
               Imf::Compression now)
{
    switch (now) {
    case Imf::PXR24_COMPRESSION: return type == Imf::FLOAT && before != now;
    case Imf::B44_COMPRESSION:
    case Imf::B44A_COMPRESSION: return type == Imf::HALF;
    case Imf::DWAA_COMPRESSION:
    case Imf::DWAB_COMPRESSION:
        return type != Imf::UINT &&
               std::find(lossyDwaNames.begin(), lossyDwaNames.end(),
                         name.substr(name.rfind('.') + 1)) != lossyDwaNames.end();
    default: return false;
    }
}

} // namespace

void applyCompression(std::optional<CompressionChoice> const& choice, Imf::Header& header)
{
    if (choice) {
        header.compression() = toLibrary(choice->kind);
        if (choice->dwaLevel) {
            header.insert(levelName, Imf::FloatAttribute(*choice->dwaLevel));
        }
    }
    auto const* const level = header.findTypedAttribute<Imf::FloatAttribute>(levelName);
    if (level != nullptr && level->value() >= 0.0F && level->value() <= mostDwaLevel) {
        header.dwaCompressionLevel() = level->value();
    }
}

std::vector<std::string> listLossyChannels(Imf::ChannelList const& channels,
                                           Imf::Compression before, Imf::Compression now)
{
    std::vector<std::string> names;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        if (canChange(channel.name(), channel.channel().type, before, now)) {
            names.emplace_back(channel.name());
        }
    }
    return names;
}

bool packsNothing(Imf::Header const& header)
{
    bool hasHalf = false;
    for (auto channel = header.channels().begin(); channel != header.channels().end(); ++channel) {
        hasHalf = hasHalf || channel.channel().type == Imf::HALF;
    }
    Imf::Compression const compression = header.compression();
    return !hasHalf &&
           (compression == Imf::B44_COMPRESSION || compression == Imf::B44A_COMPRESSION);
}

std::string nameCompression(Imf::Compression compression)
{
    constexpr std::array<char const*, Imf::NUM_COMPRESSION_METHODS> names = {
        "no compression", "RLE", "ZIPS", "ZIP", "PIZ", "PXR24", "B44", "B44A", "DWAA", "DWAB"};
    return names[static_cast<std::size_t>(compression)];
}
