#pragma once

#include "media/MediaOptions.h"
#include "runtime/graph/HostNode.h"
#include "runtime/graph/MaskUse.h"
#include "shots/ShotEvent.h"
#include "shots/ShotPlan.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

/// What becomes of outputs that are there already.
enum class ExistingOutput {
    Overwrite,
    Skip,  ///< left as they are if they are what would be written, as far as a look at them tells
    Error, ///< the frame fails
};

/// What becomes of frames whose input or mask is not there.
enum class MissingInput {
    Fail, ///< the frame fails, the others go on
    Skip, ///< the frame is left out
    Stop, ///< the frame fails, and none is begun after it
};

/// How a shot is rendered.
struct ShotOptions {
    ReadOptions read{};
    ReadOptions mask{.maskChannel = ""};
    MaskUse maskUse = MaskUse::AsIs;
    WriteOptions write{};
    int threads = 1;        ///< workers, at least 1
    std::size_t memory = 0; ///< bytes of pixels on the way; a single strip may take more

    ExistingOutput existing = ExistingOutput::Overwrite;
    MissingInput missing = MissingInput::Fail;

    /// Outputs older than their input, their mask or this time (nanoseconds as FileStamp counts)
    /// are not skipped. None: age does not count.
    std::optional<std::int64_t> newestChange;

    /// When it becomes true no frame is begun and those on the way are dropped. May be null.
    std::atomic<bool> const* cancelled = nullptr;

    /// Called when a frame's picture is complete, before that is told; what it throws is the
    /// frame's failure, RenderCancelled where it was cancelled. For standard output, which is
    /// written by whom it belongs to.
    std::function<void(FrameFiles const&)> deliver = [](FrameFiles const&) {};

    ShotListener listener = [](ShotEvent const&) {};
    /// Called some twenty times a second with the frames dealt with, those on the way by their
    /// share.
    std::function<void(double)> progress = [](double) {};
};

/// Checks, before a picture is opened, what can be known of the outputs: their kind holds the
/// node's depth, their folder is there and may be written, and none is there where that is an
/// error. Throws ImageFileError, ShotError.
void checkOutputs(HostNode& node, ShotPlan const& plan, ExistingOutput existing,
                  WriteOptions const& options);

/// Renders the frames of `plan` through the node, several at a time: while some are processed and
/// written, the next is opened. A frame's failure is an event and does not stop the others. What
/// the pixels are depends on nothing but the frame's pictures, the node's values at its time, and
/// the options' layer and format.
///
/// User-interface thread, which is also where events come; the end has none, because only the
/// caller knows its status.
/// Throws std::system_error and std::bad_alloc if not even a worker can be had.
ShotSummary renderShot(HostNode& node, ShotPlan const& plan, ShotOptions const& options);

/// The event that closes a shot.
ShotEvent makeEndEvent(ShotSummary const& summary, int status);
