#include "media/ExrPartInput.h"

#include <Iex.h>
#include <ImfStdIO.h>
#include <ImfVersion.h>
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

namespace {

std::string makeHeader(ExrHeaders const& headers, std::size_t part)
{
    constexpr int flagsOfParts = Imf::MULTI_PART_FILE_FLAG | Imf::NON_IMAGE_FLAG;
    Imf::StdOSStream text;
    writeNumber(text, Imf::MAGIC);
    writeNumber(text, headers.version & ~flagsOfParts);
    headers.parts[part].header.writeTo(text);
    return text.str();
}

std::string makeTable(std::vector<std::uint64_t> const& starts)
{
    Imf::StdOSStream text;
    for (std::uint64_t const start : starts) {
        writeNumber(text, start);
    }
    return text.str();
}

} // namespace

ExrPartInput::ExrPartInput(std::filesystem::path const& file, ExrHeaders const& headers,
                           std::size_t part, ExrChunks const& chunks)
    : Imf::IStream(file.c_str()), stream(file), extents(chunks.listExtents()),
      head(makeHeader(headers, part))
{
    std::uint64_t start = head.size() + extents.size() * sizeof(std::uint64_t);
    for (ExrChunks::Extent const& extent : extents) {
        starts.push_back(start);
        start += extent.size;
    }
    head += makeTable(starts);
}

bool ExrPartInput::read(char* bytes, int count)
{
    auto const wanted = static_cast<std::uint64_t>(count);
    auto const next = std::upper_bound(starts.begin(), starts.end(), position);
    if (next == starts.begin()) {
        if (position + wanted > head.size()) {
            throw Iex::InputExc("unexpected end of header");
        }
        std::memcpy(bytes, head.data() + position, wanted);
    } else {
        auto const chunk = static_cast<std::size_t>(next - starts.begin()) - 1;
        std::uint64_t const place = position - starts[chunk];
        if (place + wanted > extents[chunk].size) {
            throw Iex::InputExc("unexpected end of block");
        }
        stream.readAt(extents[chunk].offset + place,
                      std::as_writable_bytes(std::span(bytes, wanted)));
    }
    position += wanted;
    return true;
}
