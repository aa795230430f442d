#pragma once

#include "runtime/engine/ImageSource.h"

/// Writes one picture strip by strip, in the order of its source. Used by one thread at a time,
/// unless said otherwise; throws ImageFileError. Destroyed before `finish`, it leaves nothing
/// behind.
class ImageSink {
public:
    virtual ~ImageSink() = default;

    /// The work before writeStrip that strips do not share: any thread, several at once. May be
    /// left out.
    virtual void packStrip(IxTile const&, ImageStrip&) const {}

    /// Writes the rows of `result` (in the format announced at creation), with what `strip` brought
    /// along for channels that the tool does not touch.
    virtual void writeStrip(IxTile const& result, ImageStrip const& strip) = 0;

    /// All strips of a section of the source have come.
    virtual void endSection() {}

    /// The source has gone on to its next section.
    virtual void startSection() {}

    /// Completes the file, checks it and lets it appear under its name.
    virtual void finish() = 0;
};
