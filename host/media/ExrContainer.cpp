// Headers, tables and chunks of EXR files.
// Source: "OpenEXR File Layout", of the OpenEXR project.

#include "media/ExrContainer.h"

#include <Iex.h>
#include <ImfVersion.h>
#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t headNumberBytes = 4;

} // namespace

ExrContainer::ExrContainer(ExrPlan const& plan, CheckedOutput& output)
    : stream(output), hasPartNumbers(plan.hasPartNumbers)
{
    writeNumber(stream, static_cast<std::uint32_t>(Imf::MAGIC));
    writeNumber(stream, static_cast<std::uint32_t>(plan.version));
    std::size_t entries = 0;
    for (ExrPlannedPart const& part : plan.parts) {
        part.header.header.sanityCheck(part.header.isTiled, hasPartNumbers);
        part.header.header.writeTo(stream, part.header.isTiled);
        Part& added = parts.emplace_back(Part{ExrChunkGrid(part.header), {}});
        added.offsets.resize(added.grid.countChunks());
        entries += added.offsets.size();
    }
    if (hasPartNumbers) {
        stream.write("", 1); // an empty header ends them
    }
    tables = stream.tellp();
    for (std::size_t entry = 0; entry < entries; ++entry) {
        writeNumber(stream, std::uint64_t{0});
    }
}

void ExrContainer::beginChunk(std::size_t part, std::uint64_t chunk)
{
    parts[part].offsets.at(chunk) = stream.tellp();
    if (hasPartNumbers) {
        writeNumber(stream, static_cast<std::uint32_t>(part));
    }
}

void ExrContainer::writeBytes(std::span<std::byte const> bytes)
{
    while (!bytes.empty()) {
        std::size_t const count =
            std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max());
        stream.write(reinterpret_cast<char const*>(bytes.data()), static_cast<int>(count));
        bytes = bytes.subspan(count);
    }
}

void ExrContainer::write(std::size_t part, std::uint64_t chunk, std::span<std::byte const> bytes)
{
    beginChunk(part, chunk);
    writeBytes(bytes);
}

/// The part's number, where the block belongs, and its size.
std::size_t ExrContainer::getHeadBytes(std::size_t part) const
{
    return ((hasPartNumbers ? 1 : 0) + parts[part].grid.countCoordinates() + 1) * headNumberBytes;
}

void ExrContainer::fillHeads(std::size_t part, PackedBlocks& blocks) const
{
    for (PackedBlock const& block : blocks.list) {
        std::byte* next = &blocks.memory.bytes()[block.begin - getHeadBytes(part)];
        auto const put = [&next](std::uint32_t number) {
            for (std::size_t byte = 0; byte < headNumberBytes; ++byte, number >>= 8U) {
                *next++ = static_cast<std::byte>(number); // the low byte first
            }
        };
        if (hasPartNumbers) {
            put(static_cast<std::uint32_t>(part));
        }
        for (int const coordinate : parts[part].grid.coordinatesOf(block.number)) {
            put(static_cast<std::uint32_t>(coordinate));
        }
        put(static_cast<std::uint32_t>(block.size));
    }
}

void ExrContainer::write(std::size_t part, PackedBlocks const& blocks)
{
    std::uint64_t const start = stream.tellp();
    for (PackedBlock const& block : blocks.list) {
        parts[part].offsets.at(block.number) = start + block.begin - getHeadBytes(part);
    }
    writeBytes(blocks.memory.bytes());
}

void ExrContainer::finish()
{
    stream.seekp(tables);
    for (Part const& part : parts) {
        for (std::uint64_t const offset : part.offsets) {
            writeNumber(stream, offset);
        }
    }
}
