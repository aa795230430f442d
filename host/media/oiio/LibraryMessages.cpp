// Stands between OpenImageIO and two libraries that it uses, libpng and libjpeg, where it tells
// them what to do about errors. Left alone,
//
// - libpng prints an error on standard error although OpenImageIO has taken its text, because
//   OpenImageIO's error function returns;
// - libjpeg prints an error while writing and ends the process.
//
// Here libpng's error function goes back to OpenImageIO without returning to libpng, and libjpeg's
// throws. Both get the text into the one failure of the one file that it is about. That holds for
// several files on several threads: error functions belong to a file's own state in the library,
// nothing of the process is switched. (libtiff's, which do belong to the process, OpenImageIO keeps
// apart by thread itself.)
//
// The functions below have the names of the libraries' own; see LibraryFunctions.h.

#include "media/oiio/LibraryFunctions.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <utility>

// In this order: libjpeg's header needs <cstdio>.
#include <jpeglib.h>
#include <png.h>

namespace {

/// OpenImageIO's error functions, each of which stands for a kind of file and a direction. Filled
/// from the front and never changed again.
constexpr std::size_t mostFunctions = 16;
std::array<std::atomic<png_error_ptr>, mostFunctions> pngErrorFunctions{};

template <std::size_t index>
void callAndLeave(png_structp png, png_const_charp text)
{
    (*pngErrorFunctions[index].load())(png, text);
    png_longjmp(png, 1);
}

template <std::size_t... indices>
constexpr std::array<png_error_ptr, mostFunctions> listLeaving(std::index_sequence<indices...>)
{
    return {&callAndLeave<indices>...};
}
constexpr auto leavingFunctions = listLeaving(std::make_index_sequence<mostFunctions>());

/// A function that does what `function` does and does not return to libpng.
png_error_ptr makeLeaving(png_error_ptr function)
{
    bool const isLeaving = std::find(leavingFunctions.begin(), leavingFunctions.end(), function) !=
                           leavingFunctions.end(); // libpng hands them to itself
    for (std::size_t index = 0; function != nullptr && !isLeaving && index < mostFunctions;
         ++index) {
        png_error_ptr known = nullptr;
        if (pngErrorFunctions[index].compare_exchange_strong(known, function) ||
            known == function) {
            return leavingFunctions[index];
        }
    }
    return function;
}

void throwJpegError(j_common_ptr jpeg)
{
    char text[JMSG_LENGTH_MAX] = "";
    (*jpeg->err->format_message)(jpeg, text);
    throw std::runtime_error(text);
}

void ignoreJpegWarning(j_common_ptr) {}

} // namespace

extern "C" {

__attribute__((visibility("default"))) void
png_set_error_fn(png_structrp png, png_voidp owner, png_error_ptr error, png_error_ptr warning)
{
    static auto const original = findNext<decltype(&png_set_error_fn)>("png_set_error_fn");
    original(png, owner, makeLeaving(error), warning);
}

__attribute__((visibility("default"))) png_structp png_create_write_struct(png_const_charp version,
                                                                           png_voidp owner,
                                                                           png_error_ptr error,
                                                                           png_error_ptr warning)
{
    static auto const original =
        findNext<decltype(&png_create_write_struct)>("png_create_write_struct");
    return original(version, owner, makeLeaving(error), warning);
}

__attribute__((visibility("default"))) jpeg_error_mgr* jpeg_std_error(jpeg_error_mgr* errors)
{
    static auto const original = findNext<decltype(&jpeg_std_error)>("jpeg_std_error");
    original(errors);
    errors->error_exit = &throwJpegError;
    errors->output_message = &ignoreJpegWarning;
    return errors;
}
}
