#include "media/oiio/PngOutline.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
constexpr std::streamoff checksumBytes = 4;

struct ChunkHead {
    std::uint32_t size = 0; ///< of the data that follow
    std::string name;
};

ChunkHead readChunkHead(std::istream& stream)
{
    std::array<char, 8> bytes{};
    stream.read(bytes.data(), bytes.size());
    ChunkHead head;
    for (std::size_t index = 0; index < 4; ++index) {
        head.size = head.size << 8U | static_cast<unsigned char>(bytes[index]);
    }
    head.name.assign(bytes.begin() + 4, bytes.end());
    return head;
}

bool saysWhatColoursMean(std::string_view name)
{
    return name == "sRGB" || name == "gAMA" || name == "cHRM" || name == "iCCP";
}

} // namespace

PngOutline outlinePng(std::filesystem::path const& file)
{
    PngOutline outline;
    std::error_code failure;
    auto const fileSize = static_cast<std::streamoff>(std::filesystem::file_size(file, failure));
    std::ifstream stream(file, std::ios::binary);
    std::string start(signature.size(), ' ');
    stream.read(start.data(), static_cast<std::streamsize>(start.size()));
    outline.isPng = !failure && stream && start == signature;
    for (bool hasPixels = false; outline.isPng && !outline.isComplete;) {
        ChunkHead const head = readChunkHead(stream);
        std::streamoff const next =
            static_cast<std::streamoff>(stream.tellg()) + head.size + checksumBytes;
        if (!stream || next > fileSize) {
            break;
        }
        hasPixels = hasPixels || head.name == "IDAT";
        outline.namesColourSpace =
            outline.namesColourSpace || (!hasPixels && saysWhatColoursMean(head.name));
        outline.isComplete = hasPixels && head.name == "IEND";
        stream.seekg(next);
    }
    return outline;
}
