#pragma once

#include "media/ExrChunks.h"
#include "media/ExrHeader.h"
#include "media/ExrStreams.h"

#include <ImfIO.h>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// One part of a file as if it were a file of its own, for those who read no parts: its header, a
/// table of its chunks, and the chunks without their part's number, one after the other. Of parts
/// of scan lines. One thread at a time.
class ExrPartInput : public Imf::IStream {
public:
    /// Opens the file anew. Throws ImageFileError, and what ExrChunks throws.
    ExrPartInput(std::filesystem::path const& file, ExrHeaders const& headers, std::size_t part,
                 ExrChunks const& chunks);

    bool read(char* bytes, int count) override;
    std::uint64_t tellg() override { return position; }
    void seekg(std::uint64_t wanted) override { position = wanted; }

    /// Error number that the file met, or 0.
    int getSystemError() const { return stream.getSystemError(); }

private:
    CheckedInput stream;
    std::vector<ExrChunks::Extent> extents; ///< of the chunks in the file
    std::vector<std::uint64_t> starts;      ///< of the chunks here
    std::string head;                       ///< what precedes them
    std::uint64_t position = 0;
};
