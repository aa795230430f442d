#pragma once

#include "editor/model/document/AsideTask.h"
#include "editor/model/picture/HeldPicture.h"
#include "runtime/engine/ImageSource.h"

#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>

/// Reads a picture into memory aside, on several threads. Made, used and destroyed on the
/// user-interface thread.
class PictureLoader {
public:
    /// Any thread; throws ImageFileError.
    using Opener = std::function<std::unique_ptr<ImageSource>(std::filesystem::path const&)>;
    static std::unique_ptr<ImageSource> openPlainly(std::filesystem::path const& file);

    struct Wish {
        std::filesystem::path file;
        int threads = 1;
        std::size_t mostBytes = std::numeric_limits<std::size_t>::max();
        bool isAhead = false; ///< nobody waits for it: whoever else computes goes first
        /// Let go of on the reading thread: that of a large picture takes its time.
        std::shared_ptr<void const> replaced{};
        /// Told on the user-interface thread how much has been read, 0 to 1, a hundred times at
        /// most.
        std::function<void(double share)> progressed{};
        Opener open = &openPlainly;
    };

    /// What became of it: the picture, or what went wrong, or, for one that needs more than it
    /// may take, how much.
    struct Result {
        std::shared_ptr<HeldPicture const> picture;
        std::exception_ptr failure;
        std::size_t neededBytes = 0;
    };
    using Ended = std::function<void(Result const&)>;

    /// `ended` is called on the user-interface thread later on, also after a cancellation
    /// (RenderCancelled), unless the loader is destroyed before.
    PictureLoader(Wish wish, Ended ended);

    void cancel() { task->cancel(); }

private:
    struct Reading;
    std::shared_ptr<Reading> reading;
    std::unique_ptr<AsideTask> task; // ends before what it fills
};
