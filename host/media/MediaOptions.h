#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// How a picture is to be read.
struct ReadOptions {
    std::string layer{}; ///< channels of this layer ("" = the file's own R, G, B)
    /// Set for a mask, of which one channel is read: this one of the layer; "" for alpha, or else
    /// the only channel or the first one of colour.
    std::optional<std::string> maskChannel{};
    std::size_t mostBytes = std::size_t{64} << 30; ///< pictures announcing more are refused
};

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
    /// Of EXR files only; without one, that of an EXR source, or else ZIP.
    std::optional<CompressionChoice> compression{};
};
