// Headers, tables and chunks of EXR files.
// Source: "OpenEXR File Layout", of the OpenEXR project.

#include "media/ExrContainer.h"

#include <Iex.h>
#include <ImfVersion.h>
#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr std::size_t headNumberBytes = 4;

/// The low byte first.
template <typename Number>
void writeNumber(Imf::OStream& stream, Number number)
{
    char bytes[sizeof(Number)];
    for (char& byte : bytes) {
        byte = static_cast<char>(number & 0xff);
        number >>= 8;
    }
    stream.write(bytes, sizeof(bytes));
}

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

void ExrContainer::writeRows(std::size_t part, int firstRow, std::span<std::byte const> packed)
{
    ExrChunkGrid const& grid = parts[part].grid;
    beginChunk(part, grid.firstInRow(grid.getLevels().front(), firstRow));
    writeNumber(stream, static_cast<std::uint32_t>(firstRow));
    writeNumber(stream, static_cast<std::uint32_t>(packed.size()));
    writeBytes(packed);
}

void ExrContainer::writeAll(std::size_t part, std::span<std::byte const> chunks)
{
    ExrChunkGrid const& grid = parts[part].grid;
    std::size_t const headBytes = (grid.countCoordinates() + 1) * headNumberBytes;
    while (!chunks.empty()) {
        std::array<int, 4> coordinates{};
        for (std::size_t index = 0; index < grid.countCoordinates(); ++index) {
            coordinates[index] =
                static_cast<int>(readNumber<std::uint32_t>(&chunks[index * headNumberBytes]));
        }
        std::size_t const size =
            headBytes + readNumber<std::uint32_t>(&chunks[headBytes - headNumberBytes]);
        write(part, grid.findChunk(coordinates).value(), chunks.first(size));
        chunks = chunks.subspan(size);
    }
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
