#pragma once

#include "media/ImageFormats.h"
#include "runtime/engine/ImageSource.h"

/// How a file other than EXR holds its samples.
struct OutputDepth {
    SampleStorage storage = SampleStorage::UInt8;
    int bits = 8;           ///< of a sample; 10 and 12 (DPX) are stored as UInt16
    bool isReduced = false; ///< the samples hold less than the tiles and the source do
};

/// The storage of `source` that a file of another kind may keep: half of an EXR file is none.
SampleStorage storageToKeep(ImageSource const& source);

/// Chooses the samples of a file of `kind` for tiles of `depth`. With `keepsInputDepth` the
/// source's storage and bits count where the kind can hold them. PNG is integer of 8 or 16 bit,
/// JPEG of 8 bit, DPX integer of the source's bits, 8 or 16; TIFF is whatever the tile is, but
/// half only where the source is or half is asked for: not every program reads it.
OutputDepth chooseOutputDepth(FileKind kind, IxPixelFormat::Depth depth, SampleStorage source,
                              int sourceBits, bool keepsInputDepth);
