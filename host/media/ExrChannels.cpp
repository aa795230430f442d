// Which channels of an EXR file are its colour, and where the samples of the others go.

#include "media/ExrChannels.h"

#include "media/ErrorText.h"

#include <ImfFrameBuffer.h>
#include <ImfStringVectorAttribute.h>
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <set>

namespace {

constexpr char const* luminanceName = "Y";
constexpr std::array<char const*, 2> chromaNames = {"RY", "BY"};

std::string prefixOf(std::string const& layer)
{
    return layer.empty() ? "" : layer + ".";
}

Imf::Channel const* find(Imf::ChannelList const& channels, std::string const& name)
{
    return channels.findChannel(name);
}

constexpr std::array<char const*, 4> words = {"red", "green", "blue", "alpha"};
constexpr std::size_t alphaComponent = 3;

std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// Full names of red, green, blue and alpha; "" for none.
using RgbaNames = std::array<std::string, 4>;

/// The channel whose name without the prefix is `wanted` in whatever case, or "".
std::string findInAnyCase(Imf::ChannelList const& channels, std::string const& prefix,
                          std::string const& wanted)
{
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        std::string const name = channel.name();
        if (name.size() == prefix.size() + wanted.size() && name.starts_with(prefix) &&
            toLower(name.substr(prefix.size())) == wanted) {
            return name;
        }
    }
    return "";
}

bool hasAll(RgbaNames const& names)
{
    return std::none_of(names.begin(), names.begin() + alphaComponent,
                        [](std::string const& name) { return name.empty(); });
}

bool hasNone(RgbaNames const& names)
{
    return std::all_of(names.begin(), names.begin() + alphaComponent,
                       [](std::string const& name) { return name.empty(); });
}

/// Letters in lower case count as colour only where all three are there: "b" alone may be anything.
RgbaNames findNames(Imf::ChannelList const& channels, std::string const& prefix)
{
    RgbaNames names;
    RgbaNames withLetters;
    for (std::size_t component = 0; component < names.size(); ++component) {
        std::string const exact =
            prefix + (component == alphaComponent ? exrAlphaName : exrColourNames[component]);
        names[component] = find(channels, exact) != nullptr
                               ? exact
                               : findInAnyCase(channels, prefix, words[component]);
        withLetters[component] =
            !names[component].empty()
                ? names[component]
                : findInAnyCase(channels, prefix, std::string(words[component], 1));
    }
    return hasAll(withLetters) ? withLetters : names;
}

bool hasColour(Imf::ChannelList const& channels, std::string const& prefix)
{
    return find(channels, prefix + luminanceName) != nullptr ||
           !hasNone(findNames(channels, prefix));
}

bool hasAlpha(Imf::ChannelList const& channels, std::string const& prefix)
{
    return !findNames(channels, prefix)[alphaComponent].empty();
}

std::vector<std::string> layersWithColour(Imf::ChannelList const& channels)
{
    std::set<std::string> layers;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        std::string const name = channel.name();
        auto const dot = name.rfind('.');
        if (dot != std::string::npos && hasColour(channels, name.substr(0, dot + 1))) {
            layers.insert(name.substr(0, dot));
        }
    }
    return {layers.begin(), layers.end()};
}

std::vector<std::string> allNames(Imf::ChannelList const& channels)
{
    std::vector<std::string> names;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        names.emplace_back(channel.name());
    }
    return names;
}

/// The first of a file's views has its channels without the view's name, as has a part of a view.
bool isFirstView(Imf::Header const& header, std::string const& layer)
{
    if (header.hasView() && header.view() == layer) {
        return true;
    }
    auto const* const views = header.findTypedAttribute<Imf::StringVectorAttribute>("multiView");
    return views != nullptr && !views->value().empty() && views->value().front() == layer;
}

std::string chooseLayer(Imf::Header const& header, std::string const& wanted,
                        std::filesystem::path const& file)
{
    Imf::ChannelList const& channels = header.channels();
    bool const isOwn = wanted.empty() || isFirstView(header, wanted);
    std::string layer = isOwn ? "" : wanted;
    std::string const prefix = prefixOf(layer);
    if (hasColour(channels, prefix)) {
        return layer;
    }
    std::vector<std::string> const layers = layersWithColour(channels);
    bool const isAlpha = hasAlpha(channels, prefix);
    if (!isOwn && !isAlpha) {
        throwReadError(ImageFailure::Request, file,
                       "it has no layer " + quoteName(wanted) + " with colour; " +
                           (layers.empty() ? "it has no layers with colour at all"
                                           : "there are " + quoteList(layers)));
    }
    if (isOwn && layers.size() == 1) {
        return layers.front();
    }
    if (isOwn && layers.size() > 1) {
        throwReadError(ImageFailure::Request, file,
                       "only its layers have colour; choose one of " + quoteList(layers));
    }
    if (!isAlpha) {
        throwReadError(ImageFailure::File, file,
                       "it has no channels of colour; its channels are " +
                           quoteList(allNames(channels)));
    }
    return layer;
}

ExrColourKind findKind(Imf::ChannelList const& channels, std::string const& prefix)
{
    if (!hasNone(findNames(channels, prefix))) {
        return ExrColourKind::Rgb;
    }
    if (find(channels, prefix + luminanceName) == nullptr) {
        return ExrColourKind::AlphaOnly;
    }
    Imf::Channel const* const red = find(channels, prefix + chromaNames[0]);
    Imf::Channel const* const blue = find(channels, prefix + chromaNames[1]);
    if (red == nullptr || blue == nullptr) {
        return ExrColourKind::Luminance;
    }
    return red->xSampling == 1 && red->ySampling == 1 ? ExrColourKind::FullLumaChroma
                                                      : ExrColourKind::SubsampledLumaChroma;
}

bool isChroma(std::string const& name, ExrColour const& colour)
{
    return name == colour.prefix + chromaNames[0] || name == colour.prefix + chromaNames[1];
}

bool isColour(std::string const& name, ExrColour const& colour)
{
    if (name == colour.alphaName) {
        return true;
    }
    switch (colour.kind) {
    case ExrColourKind::Rgb:
        return std::find(colour.names.begin(), colour.names.end(), name) != colour.names.end();
    case ExrColourKind::Luminance: return name == colour.prefix + luminanceName;
    case ExrColourKind::SubsampledLumaChroma:
    case ExrColourKind::FullLumaChroma:
        return name == colour.prefix + luminanceName || isChroma(name, colour);
    case ExrColourKind::AlphaOnly: return false;
    }
    return false;
}

void checkSampling(std::string const& name, Imf::Channel const& channel, int sampling,
                   std::filesystem::path const& file)
{
    if (channel.xSampling != sampling || channel.ySampling != sampling) {
        throwReadError(ImageFailure::File, file,
                       "its channel " + quoteName(name) +
                           " is sub-sampled in a way that cannot be processed");
    }
}

/// The full name; "" where chooseExrColour knows.
std::string findMaskChannel(Imf::ChannelList const& channels, std::string const& prefix,
                            std::string const& wanted, std::filesystem::path const& file)
{
    std::vector<std::string> names = allNames(channels);
    std::erase_if(names, [&](std::string const& name) { return !name.starts_with(prefix); });
    if (!wanted.empty()) {
        if (find(channels, prefix + wanted) == nullptr) {
            throwReadError(ImageFailure::Request, file,
                           "it has no channel " + quoteName(prefix + wanted) + "; there are " +
                               quoteList(allNames(channels)));
        }
        return prefix + wanted;
    }
    if (names.empty()) {
        throwReadError(ImageFailure::Request, file,
                       "it has no layer " +
                           quoteName(prefix.substr(0, prefix.empty() ? 0 : prefix.size() - 1)) +
                           "; its channels are " + quoteList(allNames(channels)));
    }
    if (names.size() == 1) {
        return names.front();
    }
    RgbaNames const colours = findNames(channels, prefix);
    if (!colours[alphaComponent].empty()) {
        return "";
    }
    for (std::string const& colour : colours) {
        if (!colour.empty()) {
            return colour;
        }
    }
    if (!hasColour(channels, prefix) && layersWithColour(channels).empty()) {
        throwReadError(ImageFailure::Request, file,
                       "it is not clear which channel is the mask; choose one of " +
                           quoteList(allNames(channels)));
    }
    return "";
}

void checkColourChannel(std::string const& name, Imf::Channel const& channel,
                        ExrColour const& colour, std::filesystem::path const& file)
{
    if (channel.type == Imf::UINT) {
        throwReadError(ImageFailure::File, file,
                       "its channel " + quoteName(name) +
                           " holds whole numbers; only half and float can be processed");
    }
    int const sampling =
        colour.kind == ExrColourKind::SubsampledLumaChroma && isChroma(name, colour) ? 2 : 1;
    checkSampling(name, channel, sampling, file);
}

/// Samples at multiples of `sampling` from `begin` up to, not including, `end`. The quotients are
/// rounded up for negative coordinates too.
std::int64_t countSamples(int begin, int end, int sampling)
{
    auto const divideUp = [](std::int64_t value, std::int64_t divisor) {
        return value > 0 ? (value + divisor - 1) / divisor : -(-value / divisor);
    };
    return divideUp(end, sampling) - divideUp(begin, sampling);
}

} // namespace

ExrColour chooseExrColour(Imf::Header const& header, std::string const& layer,
                          std::filesystem::path const& file)
{
    Imf::ChannelList const& channels = header.channels();
    ExrColour colour;
    colour.layer = chooseLayer(header, layer, file);
    colour.prefix = prefixOf(colour.layer);
    colour.kind = findKind(channels, colour.prefix);
    RgbaNames const names = findNames(channels, colour.prefix);
    std::copy_n(names.begin(), colour.names.size(), colour.names.begin());
    colour.alphaName = names[alphaComponent];
    colour.hasAlpha = !colour.alphaName.empty();
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        if (isColour(channel.name(), colour)) {
            checkColourChannel(channel.name(), channel.channel(), colour, file);
            if (channel.channel().type == Imf::FLOAT) {
                colour.type = Imf::FLOAT;
            }
        }
    }
    return colour;
}

bool hasLayer(Imf::Header const& header, std::string const& layer)
{
    Imf::ChannelList const& channels = header.channels();
    if (layer.empty() && hasAnyColour(header)) {
        return true;
    }
    std::string const prefix = prefixOf(isFirstView(header, layer) ? "" : layer);
    return hasColour(channels, prefix) || hasAlpha(channels, prefix);
}

bool hasAnyColour(Imf::Header const& header)
{
    return hasColour(header.channels(), "") || !layersWithColour(header.channels()).empty();
}

std::vector<std::string> listFullLayers(Imf::Header const& header)
{
    Imf::ChannelList const& channels = header.channels();
    std::vector<std::string> layers = layersWithColour(channels);
    layers.insert(layers.begin(), "");
    std::erase_if(layers, [&](std::string const& layer) {
        std::string const prefix = prefixOf(layer);
        RgbaNames const names = findNames(channels, prefix);
        if (hasNone(names)) {
            return findKind(channels, prefix) != ExrColourKind::SubsampledLumaChroma &&
                   findKind(channels, prefix) != ExrColourKind::FullLumaChroma;
        }
        return !hasAll(names) || std::any_of(names.begin(), names.begin() + alphaComponent,
                                             [&](std::string const& name) {
                                                 Imf::Channel const& channel = channels[name];
                                                 return channel.type == Imf::UINT ||
                                                        channel.xSampling != 1 ||
                                                        channel.ySampling != 1;
                                             });
    });
    return layers;
}

std::vector<ExrFurtherChannel> listChannels(Imf::ChannelList const& channels)
{
    std::vector<ExrFurtherChannel> all;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        Imf::Channel const& entry = channel.channel();
        all.push_back({channel.name(), entry.type, entry.xSampling, entry.ySampling});
    }
    return all;
}

ExrColour chooseExrMask(Imf::Header const& header, std::string const& layer,
                        std::string const& channel, std::filesystem::path const& file)
{
    Imf::ChannelList const& channels = header.channels();
    std::string const prefix = prefixOf(isFirstView(header, layer) ? "" : layer);
    std::string const name = findMaskChannel(channels, prefix, channel, file);
    if (name.empty()) {
        return chooseExrColour(header, layer, file);
    }
    ExrColour colour;
    colour.layer = layer;
    colour.prefix = prefix;
    colour.kind = ExrColourKind::AlphaOnly;
    colour.hasAlpha = true;
    colour.alphaName = name;
    Imf::Channel const& chosen = channels[name];
    colour.type = chosen.type == Imf::HALF ? Imf::HALF : Imf::FLOAT;
    checkSampling(name, chosen, 1, file);
    return colour;
}

std::vector<ExrFurtherChannel> findFurtherChannels(Imf::ChannelList const& channels,
                                                   std::vector<ExrColour> const& colours)
{
    std::vector<ExrFurtherChannel> further = listChannels(channels);
    std::erase_if(further, [&colours](ExrFurtherChannel const& channel) {
        return std::any_of(colours.begin(), colours.end(), [&channel](ExrColour const& colour) {
            return isColour(channel.name, colour);
        });
    });
    return further;
}

std::size_t sampleBytesOf(Imf::PixelType type)
{
    return type == Imf::HALF ? 2 : 4;
}

Imf::PixelType typeOfDepth(IxPixelFormat::Depth depth)
{
    return depth == IxPixelFormat::FLOAT16 ? Imf::HALF : Imf::FLOAT;
}

IxPixelFormat::Components componentsOf(ExrColour const& colour)
{
    if (colour.kind == ExrColourKind::AlphaOnly) {
        return IxPixelFormat::ALPHA;
    }
    return colour.hasAlpha ? IxPixelFormat::RGBA : IxPixelFormat::RGB;
}

std::size_t furtherBytesOf(std::vector<ExrFurtherChannel> const& channels,
                           GeRectangle<int> const& bounds)
{
    std::size_t bytes = 0;
    for (ExrFurtherChannel const& channel : channels) {
        bytes += static_cast<std::size_t>(countSamples(bounds.x0, bounds.x1, channel.xSampling)) *
                 static_cast<std::size_t>(countSamples(bounds.y0, bounds.y1, channel.ySampling)) *
                 sampleBytesOf(channel.type);
    }
    return bytes;
}

void insertFurtherChannels(Imf::FrameBuffer& frame, std::vector<ExrFurtherChannel> const& channels,
                           GeRectangle<int> const& bounds, std::byte* memory)
{
    for (ExrFurtherChannel const& channel : channels) {
        std::size_t const pixelBytes = sampleBytesOf(channel.type);
        std::size_t const rowBytes =
            pixelBytes *
            static_cast<std::size_t>(countSamples(bounds.x0, bounds.x1, channel.xSampling));
        insertSamples(
            frame, channel.name,
            {channel.type, memory, pixelBytes, rowBytes, channel.xSampling, channel.ySampling},
            bounds);
        memory += rowBytes *
                  static_cast<std::size_t>(countSamples(bounds.y0, bounds.y1, channel.ySampling));
    }
}

void insertSamples(Imf::FrameBuffer& frame, std::string const& name, ExrSamples const& samples,
                   GeRectangle<int> const& bounds)
{
    // The library counts from the sample at pixel (0, 0), which need not lie in any memory of ours:
    // the address is formed as a number.
    auto const left = countSamples(0, bounds.x0, samples.xSampling);
    auto const top = countSamples(0, bounds.y0, samples.ySampling);
    auto const origin = reinterpret_cast<std::uintptr_t>(samples.first) -
                        static_cast<std::uintptr_t>(left) * samples.pixelBytes -
                        static_cast<std::uintptr_t>(top) * samples.rowBytes;
    frame.insert(name, Imf::Slice(samples.type, reinterpret_cast<char*>(origin), samples.pixelBytes,
                                  samples.rowBytes, samples.xSampling, samples.ySampling));
}
