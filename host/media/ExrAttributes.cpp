// A header's attributes, held against the sizes that they announce.

#include "media/ExrAttributes.h"

#include <Iex.h>
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t longestName = 255;              // bytes, of attributes and their types
constexpr std::uint64_t longestAttribute = 256 << 20; // bytes; previews and manifests are far less
constexpr std::uint64_t intBytes = 4;

struct TypeSize {
    std::string_view type;
    std::uint64_t bytes;
};
constexpr TypeSize typeSizes[] = {
    {"box2f", 16},         {"box2i", 16},    {"chromaticities", 32},
    {"compression", 1},    {"double", 8},    {"envmap", 1},
    {"deepImageState", 1}, {"float", 4},     {"int", 4},
    {"keycode", 28},       {"lineOrder", 1}, {"m33d", 72},
    {"m33f", 36},          {"m44d", 128},    {"m44f", 64},
    {"rational", 8},       {"tiledesc", 9},  {"timecode", 8},
    {"v2d", 16},           {"v2f", 8},       {"v2i", 8},
    {"v3d", 24},           {"v3f", 12},      {"v3i", 12},
};

std::string readName(CheckedInput& stream)
{
    std::string name;
    for (char letter = 0; stream.read(&letter, 1), letter != 0;) {
        name += letter;
        if (name.size() > longestName) {
            throw Iex::InputExc("a name in the header does not end");
        }
    }
    return name;
}

void skip(CheckedInput& stream, std::uint64_t bytes)
{
    stream.seekg(stream.tellg() + bytes);
}

std::uint64_t measureChannels(CheckedInput& stream)
{
    constexpr std::uint64_t channelBytes = 16; // after the name: type, linearity, both samplings
    std::uint64_t const start = stream.tellg();
    while (!readName(stream).empty()) {
        skip(stream, channelBytes);
    }
    return stream.tellg() - start;
}

std::uint64_t measureStrings(CheckedInput& stream, std::uint64_t announced)
{
    std::uint64_t bytes = 0;
    while (bytes < announced) {
        std::uint64_t const length = static_cast<std::uint32_t>(readHeaderInt(stream));
        bytes += intBytes + length;
        if (bytes < announced) {
            skip(stream, length);
        }
    }
    return bytes;
}

std::uint64_t measurePreview(CheckedInput& stream)
{
    constexpr std::uint64_t pixelBytes = 4;
    std::uint64_t const width = static_cast<std::uint32_t>(readHeaderInt(stream));
    std::uint64_t const height = static_cast<std::uint32_t>(readHeaderInt(stream));
    bool const isHuge = width > longestAttribute || height > longestAttribute;
    return isHuge ? longestAttribute + 1 : 2 * intBytes + width * height * pixelBytes;
}

/// Bytes that the library would read for a value of this type.
std::uint64_t measureValue(CheckedInput& stream, std::string_view type, std::uint64_t announced)
{
    auto const* const fixed =
        std::find_if(std::begin(typeSizes), std::end(typeSizes),
                     [type](TypeSize const& one) { return one.type == type; });
    if (fixed != std::end(typeSizes)) {
        return fixed->bytes;
    }
    if (type == "chlist") {
        return measureChannels(stream);
    }
    if (type == "stringvector") {
        return measureStrings(stream, announced);
    }
    if (type == "preview") {
        return measurePreview(stream);
    }
    return type == "floatvector" ? announced / sizeof(float) * sizeof(float) : announced;
}

} // namespace

int readHeaderInt(CheckedInput& stream)
{
    std::array<std::byte, intBytes> bytes{};
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<int>(bytes.size()));
    return static_cast<int>(readNumber<std::uint32_t>(bytes.data()));
}

bool walkAttributes(CheckedInput& stream)
{
    bool hasAttributes = false;
    while (!readName(stream).empty()) {
        hasAttributes = true;
        std::string const type = readName(stream);
        std::uint64_t const size = static_cast<std::uint32_t>(readHeaderInt(stream));
        if (size > std::min(longestAttribute, stream.getSize() - stream.tellg())) {
            throw Iex::InputExc("an attribute announces an impossible size");
        }
        std::uint64_t const end = stream.tellg() + size;
        if (measureValue(stream, type, size) != size) {
            throw Iex::InputExc("an attribute is not as long as its type");
        }
        stream.seekg(end);
    }
    return hasAttributes;
}
