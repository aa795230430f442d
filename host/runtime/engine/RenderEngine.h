#pragma once

#include "runtime/engine/RenderPool.h"

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

/// Sends a picture from `source` through `chain` to `sink` on workers of its own and waits for its
/// end; see RenderPool. Memory grows with the picture's width and the number of threads, not with
/// its height. Throws what reading, the chain and writing throw, and RenderCancelled; `sink` is
/// then not finished.
void renderImage(PxImageProtocol const& chain, SourceImageNode& sourceNode, ImageSource& source,
                 ImageSink& sink, RenderOptions const& options);
