#include "editor/model/picture/Plate.h"

void Plate::open(std::filesystem::path const& file)
{
    readFile = file;
    loader.reset();
    try {
        loader = std::make_unique<PictureLoader>(
            file, threads,
            [this](auto const& loaded, auto const& failure) { take(loaded, failure); });
    } catch (...) {
        handlers.call(PlateNotice{std::current_exception()});
    }
}

void Plate::take(std::shared_ptr<HeldPicture const> const& loaded,
                 std::exception_ptr const& failure)
{
    loader.reset(); // closes the file
    if (!failure) {
        picture = loaded;
        pictureFile = readFile;
    }
    handlers.call(PlateNotice{failure});
}
