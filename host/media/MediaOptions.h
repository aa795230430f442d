#pragma once

#include "media/ImageFormats.h"
#include "runtime/engine/ImageSource.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// How a picture is to be read.
struct ReadOptions {
    /// Layers of channels, each in the part or the first part that has it. Empty, or "": the
    /// part's own red, green, blue, or those of its only layer.
    std::vector<std::string> layers{};
    bool everyLayer = false; ///< all with red, green and blue instead; of all parts without `part`
    /// A part's name or number, from 0. Empty: the first part with colour.
    std::string part{};
    bool everyPart = false; ///< all with red, green and blue instead
    /// Set for a mask, of which one channel is read: this one of the layer; "" for alpha, or else
    /// the only channel or the first one of colour.
    std::optional<std::string> maskChannel{};
    std::size_t mostBytes = std::size_t{64} << 30; ///< pictures announcing more are refused
};

/// The format in which the pixels of a layer come back.
using ResultFormat = std::function<IxPixelFormat(ImageInfo const& layer)>;

/// How the pixels of an EXR file can be packed.
enum class Compression { None, Rle, Zips, Zip, Piz, Pxr24, B44, B44a, Dwaa, Dwab };

struct CompressionChoice {
    Compression kind = Compression::Zip;
    /// Of DWAA and DWAB: the more, the smaller the file and the farther the values from the
    /// picture's; from 0 to mostDwaLevel. Without one, the source's, or else the library's 45.
    std::optional<float> dwaLevel{};
};
inline constexpr float mostDwaLevel = 10000.0F; // at which values may be off by a tenth

/// How a picture is to be written.
struct WriteOptions {
    /// Files with integer samples keep the source's storage where the output format can.
    bool keepsInputDepth = false;
    /// Of EXR files only, for the parts that are processed; without one, that of an EXR source, or
    /// else ZIP.
    std::optional<CompressionChoice> compression{};
    /// Said in the file of how it was made, as an attribute of an EXR file, as the software of
    /// others; nothing for "", so that two runs agree.
    std::string stamp{};
    /// Of standard output, whose name says none; without one, what the name's extension says.
    std::optional<FileKind> kind{};
};

/// The kind that is to be written to `file`; nothing for an unknown extension.
inline std::optional<FileKind> findFileKind(std::filesystem::path const& file,
                                            WriteOptions const& options)
{
    return options.kind.has_value() ? options.kind : findFileKind(file);
}
