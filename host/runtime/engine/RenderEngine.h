#pragma once

#include "pluginAPI/PxImageProtocol.h"
#include "runtime/engine/ImageSink.h"
#include "runtime/engine/ImageSource.h"
#include "runtime/engine/MaskFeed.h"
#include "runtime/engine/SourceImageNode.h"

#include <atomic>
#include <functional>

/// How a picture is rendered.
struct RenderOptions {
    double time = 0.0;
    int threads = 1; ///< workers, at least 1

    /// Read along with the picture, for a chain that evaluates it too. May be null.
    MaskFeed* mask = nullptr;

    /// Called on the calling thread now and then with the share of the picture that is written,
    /// from 0 to 1. May be empty.
    std::function<void(double)> progress;

    /// When it becomes true the render ends with RenderCancelled. May be null.
    std::atomic<bool> const* cancelled = nullptr;
};

/// The render was asked to stop. Nothing is wrong.
class RenderCancelled {};

/// Sends a picture from `source` through `chain` to `sink`, strip by strip: reading, processing and
/// writing overlap, and there are never more strips on the way than workers, so memory grows with
/// the picture's width and the number of threads, not with its height. Strips are read and written
/// in the source's order, one at a time; the chain is evaluated on worker threads, several strips
/// at once. The pixels do not depend on the number of threads or the size of strips.
///
/// `sourceNode` is the start of `chain`. The caller's thread waits; it is no worker. Throws what
/// reading, the chain and writing throw, and RenderCancelled; `sink` is then not finished.
void renderImage(PxImageProtocol const& chain, SourceImageNode& sourceNode, ImageSource& source,
                 ImageSink& sink, RenderOptions const& options);

/// Rows per strip: whole blocks of the source, so many that a strip's pixels are worth setting the
/// chain up for them, and no more.
int chooseStripRows(ImageSource const& source);
