#pragma once

#include "media/ExrChannels.h"
#include "media/ExrHeader.h"
#include "media/ExrReader.h"
#include "media/MediaOptions.h"

#include <ImathVec.h>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// A channel that is written from a tile.
struct ExrPlannedChannel {
    std::string name;
    Imf::PixelType type = Imf::HALF;
    std::size_t layer = 0;     ///< whose tile
    std::size_t component = 0; ///< of the tile's format
};

/// One part of a file that is to be written.
struct ExrPlannedPart {
    ExrHeader header;
    /// Of the part's layers; empty for a part that is copied as it is.
    std::vector<IxPixelFormat> formats;
    std::vector<ExrPlannedChannel> colours;
    std::vector<ExrFurtherChannel> further;
    /// By layer: set where the first three components end in one channel.
    std::vector<std::optional<Imath::V3f>> luminanceWeights;
    bool isConverted = false;      ///< R, G, B instead of luminance and chroma
    bool isPremultiplying = false; ///< colour comes unmultiplied

    bool isProcessed() const { return !formats.empty(); }
};

/// What a file that is made of a source holds. From an EXR source everything stays but the colour:
/// attributes, windows, tiling, line order, compression (unless another is chosen), names, order,
/// further channels and parts. From another source it becomes a picture of R, G, B (and A) with ZIP
/// compression.
struct ExrPlan {
    int version = 0;
    bool hasPartNumbers = false;
    std::vector<ExrPlannedPart> parts; ///< of an EXR source in its order
};

ExrPlan planExr(ImageSource const& source, ResultFormat const& formatOf,
                WriteOptions const& options);

/// Names of the channels that should be copied to the bit and cannot be, because they are packed
/// anew.
std::vector<std::string> listRecompressed(ExrPlannedPart const& part, Imf::Header const& before);
