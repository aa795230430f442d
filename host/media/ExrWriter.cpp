// Writing EXR pictures strip by strip.

#include "media/ExrWriter.h"

#include "files/StandardFiles.h"
#include "media/ErrorText.h"
#include "media/ExrCompression.h"
#include "media/ImageTarget.h"

#include <ImfMultiPartInputFile.h>

ExrWriter::ExrWriter(std::filesystem::path const& file, ImageSource& imageSource,
                     ResultFormat const& formatOf, WriteOptions const& options,
                     MediaReport const& mediaReport)
    : lines(mediaReport), temporary(makeTemporaryImage(file)), source(imageSource),
      reader(dynamic_cast<ExrReader const*>(&imageSource)),
      plan(planExr(imageSource, formatOf, options))
{
    report(options);
    try {
        stream = std::make_unique<CheckedOutput>(temporary);
        container.emplace(plan, *stream);
        startSection();
    } catch (...) {
        rethrowAsWriteError(file, stream != nullptr ? stream->getSystemError() : 0);
    }
}

ExrWriter::~ExrWriter() = default;

/// What the file holds in another way than its source.
void ExrWriter::report(WriteOptions const& options) const
{
    std::string const name = nameOutput(temporary.getTarget());
    std::vector<std::string> kept;
    for (std::size_t number = 0; number < plan.parts.size(); ++number) {
        ExrPlannedPart const& planned = plan.parts[number];
        Imf::Header const& header = planned.header.header;
        std::string const packed = nameCompression(header.compression());
        if (!planned.isProcessed()) {
            kept.push_back(header.name());
            continue;
        }
        if (planned.isConverted) {
            lines.note(name + " holds R, G and B in place of luminance and chroma");
        }
        if (options.compression && packsNothing(header)) {
            lines.note(name + " stays as large as without compression: " + packed +
                       " packs half only");
        }
        std::vector<std::string> names;
        if (reader != nullptr) {
            names = listRecompressed(planned, reader->getHeaders().parts[number].header);
        }
        if (!names.empty()) {
            lines.note(name + " is packed with " + packed +
                       ", which can change channels that are otherwise copied: " +
                       quoteList(names, names.size()) +
                       "; the compressions none, rle, zips, zip and piz keep them");
        }
    }
    if (options.compression && !kept.empty()) {
        lines.note(name + " holds parts that are copied with the compression they have: " +
                   quoteList(kept));
    }
}

void ExrWriter::startSection()
{
    std::size_t const before = partNumber;
    if (reader != nullptr) {
        partNumber = reader->getSelection()[reader->getPlace().selected].part;
        level = reader->getPlace().level;
    }
    rowsLeft = source.getInfo().dataWindow.getHeight();
    if (part != nullptr && partNumber == before) {
        return;
    }
    endPart();
    part = std::make_unique<ExrPartWriter>(plan.parts[partNumber], partNumber, *container);
    if (auto* const media = dynamic_cast<MediaSource*>(&source)) {
        media->alignStrips(part->getRowsPerBlock());
    }
}

void ExrWriter::endPart()
{
    hasLostColour = hasLostColour || (part != nullptr && part->hasLostColour());
    part.reset();
}

void ExrWriter::pack(IxTile const& result, ImageStrip const& strip, PackedBlocks& blocks) const
{
    blocks.clear();
    try {
        part->pack(result, strip, container->getGrid(partNumber).getLevels()[level], blocks);
    } catch (...) {
        constexpr int noSystemError = 0;
        rethrowAsWriteError(temporary.getTarget(), noSystemError);
    }
}

void ExrWriter::packStrip(IxTile const& result, ImageStrip& strip) const
{
    pack(result, strip, strip.packed);
}

void ExrWriter::writeStrip(IxTile const& result, ImageStrip const& strip)
{
    PackedBlocks packedHere;
    if (strip.packed.list.empty()) {
        pack(result, strip, packedHere);
    }
    try {
        container->write(partNumber, strip.packed.list.empty() ? packedHere : strip.packed);
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream->getSystemError());
    }
    rowsLeft -= result.getBounds().getHeight();
}

void ExrWriter::endSection()
{
    if (rowsLeft != 0) {
        throwWriteError(ImageFailure::File, temporary.getTarget(), "not all rows have come");
    }
    if (source.hasNextSection()) {
        return;
    }
    endPart();
    copyOtherParts();
    isEnded = true;
}

void ExrWriter::copyOtherParts()
{
    for (std::size_t number = 0; number < plan.parts.size(); ++number) {
        if (plan.parts[number].isProcessed()) {
            continue;
        }
        ExrChunks const& chunks = reader->getChunks()[number];
        for (std::uint64_t const chunk : chunks.listByPlace()) {
            std::vector<std::byte> bytes;
            try {
                bytes = chunks.readRaw(chunk);
            } catch (...) {
                rethrowAsReadError(reader->getFile(), reader->getSystemError());
            }
            try {
                container->write(number, chunk, bytes);
            } catch (...) {
                rethrowAsWriteError(temporary.getTarget(), stream->getSystemError());
            }
        }
    }
}

void ExrWriter::finish()
{
    if (!isEnded) {
        throwWriteError(ImageFailure::File, temporary.getTarget(), "not all rows have come");
    }
    try {
        container->finish();
    } catch (...) {
        rethrowAsWriteError(temporary.getTarget(), stream->getSystemError());
    }
    stream->close();
    check();
    publishImage(temporary);
    if (hasLostColour) {
        lines.warn(
            nameOutput(temporary.getTarget()) +
            " holds luminance only, as its source did: the colour of the result is not in it");
    }
}

void ExrWriter::check() const
{
    try {
        CheckedInput written(temporary.getPath());
        constexpr int noThreads = 0;
        constexpr bool repairsTables = false;
        Imf::MultiPartInputFile const file(written, noThreads, repairsTables);
        bool isGood = file.parts() == static_cast<int>(plan.parts.size());
        for (int number = 0; isGood && number < file.parts(); ++number) {
            Imf::Header const& wanted = plan.parts[static_cast<std::size_t>(number)].header.header;
            isGood = file.partComplete(number) &&
                     file.header(number).dataWindow() == wanted.dataWindow();
        }
        if (isGood) {
            return;
        }
    } catch (std::exception const&) {
        // One message for everything that is wrong with it.
    }
    throwNotAsWritten(temporary);
}
