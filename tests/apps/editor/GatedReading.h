#pragma once

#include "editor/model/picture/PictureLoader.h"

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <utility>

/// A disk that gives what is called slow only step by step, as a test lets it: opening a file is a
/// step, and each strip of it. Outlives who reads.
class SlowDisk {
public:
    PictureLoader::Opener makeOpener()
    {
        return [this](std::filesystem::path const& file) -> std::unique_ptr<ImageSource> {
            if (file.filename().string().find("slow") == std::string::npos) {
                return PictureLoader::openPlainly(file);
            }
            takeStep();
            return std::make_unique<Source>(*this, PictureLoader::openPlainly(file));
        };
    }

    void allow(int steps)
    {
        std::lock_guard const lock(mutex);
        allowed += steps;
        changed.notify_all();
    }
    void allowAll() { allow(1 << 20); }

    /// Whether somebody waits for a step.
    bool isAwaited() const
    {
        std::lock_guard const lock(mutex);
        return nbWaiting > 0;
    }

private:
    class Source : public ImageSource {
    public:
        Source(SlowDisk& itsDisk, std::unique_ptr<ImageSource> itsSource)
            : disk(itsDisk), source(std::move(itsSource))
        {
        }
        ImageInfo const& getInfo() const override { return source->getInfo(); }
        int getRowsPerBlock() const override { return source->getRowsPerBlock(); }
        GeRectangle<int> getStripBounds(int index, int rows) const override
        {
            return source->getStripBounds(index, rows);
        }
        void fetchStrip(GeRectangle<int> const& bounds, ImageStrip& strip) override
        {
            disk.takeStep();
            source->fetchStrip(bounds, strip);
        }
        void unpackStrip(ImageStrip& strip) const override { source->unpackStrip(strip); }

    private:
        SlowDisk& disk;
        std::unique_ptr<ImageSource> source;
    };

    void takeStep()
    {
        std::unique_lock lock(mutex);
        ++nbWaiting;
        changed.wait(lock, [this] { return allowed > 0; });
        --nbWaiting;
        --allowed;
    }

    mutable std::mutex mutex;
    std::condition_variable changed;
    int allowed = 0;
    int nbWaiting = 0;
};
