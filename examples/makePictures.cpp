/// Program that renders the example pictures: makePictures OUTDIR writes OUTDIR/scene.exr and
/// OUTDIR/chart.exr. The directory must exist; files of these names are replaced.
#include "chart.h"
#include "picture.h"
#include "scene.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace {

void makePictures(std::filesystem::path const& directory)
{
    if (!std::filesystem::is_directory(directory)) {
        throw std::runtime_error("not a directory: " + directory.string());
    }
    examples::writePicture(examples::renderScene(), examples::Channels::RgbaZ,
                           (directory / "scene.exr").string());
    examples::writePicture(examples::renderChart(), examples::Channels::Rgb,
                           (directory / "chart.exr").string());
}

} // namespace

/// Status 0: both files written; 1: a file could not be written; 2: wrong usage.
int main(int argc, char** argv)
{
    constexpr int wrongUsage = 2;
    if (argc != 2) {
        std::cerr << "usage: makePictures OUTDIR\n";
        return wrongUsage;
    }
    try {
        makePictures(argv[1]);
    } catch (std::exception const& error) {
        std::cerr << "makePictures: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
