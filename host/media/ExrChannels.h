#pragma once

#include "pluginAPI/IxPixelFormat.h"
#include "primitives/GeRectangle.h"

#include <ImfChannelList.h>
#include <ImfForward.h>
#include <ImfHeader.h>
#include <ImfPixelType.h>
#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// What a file's colour consists of.
enum class ExrColourKind {
    Rgb,                  ///< one to three of R, G, B
    Luminance,            ///< Y alone
    SubsampledLumaChroma, ///< Y, and RY and BY at every second pixel of every second row
    FullLumaChroma,       ///< Y, RY and BY at every pixel
    AlphaOnly,
};

/// The channels that become a tile's pixels.
struct ExrColour {
    ExrColourKind kind = ExrColourKind::Rgb;
    std::string layer;                  ///< "" for the file's own
    std::string prefix;                 ///< of channel names: "" or the layer and a dot
    std::array<std::string, 3> names{}; ///< full names of red, green, blue; "" for none (Rgb only)
    bool hasAlpha = false;
    std::string alphaName;           ///< the channel's full name, if any; any channel of a mask
    Imf::PixelType type = Imf::HALF; ///< the widest of them
};

/// A channel that is copied as it is.
struct ExrFurtherChannel {
    std::string name;
    Imf::PixelType type = Imf::HALF;
    int xSampling = 1;
    int ySampling = 1;
};

/// Names of the channels R, G, B without layer, in the order of a tile's components.
inline constexpr std::array<char const*, 3> exrColourNames = {"R", "G", "B"};
inline constexpr char const* exrAlphaName = "A";

/// Finds the colour of `layer`, or for "" the part's own or that of its only layer. Where there is
/// no R, a channel called "red", or "r" beside green and blue, in whatever case, counts as R; so do
/// others. Throws ImageFileError where there is none, several, or a kind that cannot be processed.
ExrColour chooseExrColour(Imf::Header const& header, std::string const& layer,
                          std::filesystem::path const& file);

/// Whether there is something that can be processed: colour, or alpha alone. Of any layer for "".
bool hasLayer(Imf::Header const& header, std::string const& layer);

/// Whether there is colour in any layer.
bool hasAnyColour(Imf::Header const& header);

/// The layers with red, green and blue or luminance and chroma of half or float, the part's own
/// ("") first.
std::vector<std::string> listFullLayers(Imf::Header const& header);

/// Finds the channel of a mask, which becomes the alpha of a picture of alpha alone: `channel` of
/// `layer`, or for "" the alpha, the only channel there is, or the first one of colour. Of
/// sub-sampled chroma without alpha, all of the colour. Throws ImageFileError.
ExrColour chooseExrMask(Imf::Header const& header, std::string const& layer,
                        std::string const& channel, std::filesystem::path const& file);

/// All channels that are part of no colour, in the file's order.
std::vector<ExrFurtherChannel> findFurtherChannels(Imf::ChannelList const& channels,
                                                   std::vector<ExrColour> const& colours);

/// All channels there are, in the file's order.
std::vector<ExrFurtherChannel> listChannels(Imf::ChannelList const& channels);

/// Of a tile's samples in a file.
Imf::PixelType typeOfDepth(IxPixelFormat::Depth depth);

std::size_t sampleBytesOf(Imf::PixelType type);

/// Components of the tiles that hold `colour`.
IxPixelFormat::Components componentsOf(ExrColour const& colour);

/// Bytes that the samples of `channels` within `bounds` take: channel after channel, each row after
/// row without gaps.
std::size_t furtherBytesOf(std::vector<ExrFurtherChannel> const& channels,
                           GeRectangle<int> const& bounds);

/// Lets `frame` read or write `channels` within `bounds` at `memory`, laid out as above.
void insertFurtherChannels(Imf::FrameBuffer& frame, std::vector<ExrFurtherChannel> const& channels,
                           GeRectangle<int> const& bounds, std::byte* memory);

/// Where a channel's samples lie: the first at `first`, belonging to the first sampled pixel of
/// `bounds`.
struct ExrSamples {
    Imf::PixelType type = Imf::HALF;
    std::byte* first = nullptr;
    std::size_t pixelBytes = 0; ///< from one sample to the next in a row
    std::size_t rowBytes = 0;   ///< from one sampled row to the next
    int xSampling = 1;
    int ySampling = 1;
};
void insertSamples(Imf::FrameBuffer& frame, std::string const& name, ExrSamples const& samples,
                   GeRectangle<int> const& bounds);
