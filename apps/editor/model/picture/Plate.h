#pragma once

#include "callbacks/CbDispatcher.h"
#include "editor/model/picture/HeldPicture.h"

#include <exception>
#include <filesystem>
#include <memory>

/// What became of what the plate was asked for.
struct PlateNotice {
    std::exception_ptr failure; ///< why it could not be read; null where there is a new picture
};

/// The picture that is worked on, in memory, and the reading of the next one; what could not be
/// read leaves what was there. User-interface thread.
class Plate {
public:
    /// Reads on so many threads.
    explicit Plate(int nbReaders) : threads(nbReaders) {}

    /// Handlers are told later on what became of it, unless another picture is opened meanwhile.
    void open(std::filesystem::path const& file);

    /// Null before the first one.
    std::shared_ptr<HeldPicture const> const& getPicture() const { return picture; }
    std::filesystem::path const& getFile() const { return pictureFile; }
    bool isReading() const { return loader != nullptr; }

    /// Subscribes until the handler leaves or dies, or the plate goes.
    void addHandler(CbHandler<PlateNotice const>* handler) { handlers.addHandler(handler); }

private:
    void take(std::shared_ptr<HeldPicture const> const& loaded, std::exception_ptr const& failure);

    int threads;
    std::shared_ptr<HeldPicture const> picture;
    std::filesystem::path pictureFile;
    std::filesystem::path readFile;
    std::unique_ptr<PictureLoader> loader; ///< of readFile
    CbDispatcher<PlateNotice const> handlers;
};
