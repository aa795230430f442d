// What the file holds that is made of a source.

#include "media/ExrPlan.h"

#include "media/ExrCompression.h"
#include "media/LumaChroma.h"

#include <ImfStringAttribute.h>
#include <ImfVersion.h>
#include <algorithm>

namespace {

constexpr char const* stampName = "remapcolor";

Imath::Box2i toBox(GeRectangle<int> const& rectangle)
{
    return {Imath::V2i(rectangle.x0, rectangle.y0), Imath::V2i(rectangle.x1 - 1, rectangle.y1 - 1)};
}

bool isChroma(ExrColourKind kind)
{
    return kind == ExrColourKind::SubsampledLumaChroma || kind == ExrColourKind::FullLumaChroma;
}

/// Adds the channels of a part's next layer to `kept`; `old` are those of the source.
void planLayer(ExrPlannedPart& part, ExrColour const& colour, IxPixelFormat const& format,
               bool keepsInputDepth, Imf::ChannelList const& old, Imf::ChannelList& kept)
{
    std::size_t const layer = part.formats.size();
    auto const add = [&](std::string const& name, std::size_t component, std::string const& like) {
        Imf::Channel channel = old[like];
        channel.type = keepsInputDepth ? channel.type : typeOfDepth(format.getDepth());
        kept.insert(name, channel);
        part.colours.push_back({name, channel.type, layer, component});
    };
    part.luminanceWeights.emplace_back();
    std::string const luminance = colour.prefix + "Y";
    for (std::size_t component = 0; component < exrColourNames.size(); ++component) {
        if (colour.kind == ExrColourKind::Rgb && !colour.names[component].empty()) {
            add(colour.names[component], component, colour.names[component]);
        } else if (isChroma(colour.kind)) {
            add(colour.prefix + exrColourNames[component], component, luminance);
        }
    }
    if (colour.kind == ExrColourKind::Luminance) {
        part.luminanceWeights.back() = luminanceWeightsOf(part.header.header);
        add(luminance, 0, luminance);
    }
    if (colour.hasAlpha) {
        add(colour.alphaName, colour.kind == ExrColourKind::AlphaOnly ? 0 : exrColourNames.size(),
            colour.alphaName);
    }
    part.isConverted = part.isConverted || isChroma(colour.kind);
    part.formats.push_back(format);
}

ExrPlan planFromExr(ExrReader const& reader, ResultFormat const& formatOf,
                    WriteOptions const& options)
{
    ExrPlan plan;
    plan.version = reader.getHeaders().version;
    plan.hasPartNumbers = reader.getHeaders().hasPartNumbers;
    for (ExrHeader const& header : reader.getHeaders().parts) {
        plan.parts.emplace_back().header = header;
    }
    for (ExrSelectedPart const& selected : reader.getSelection()) {
        ExrPlannedPart& part = plan.parts[selected.part];
        part.further = selected.further;
        Imf::ChannelList const old = part.header.header.channels();
        Imf::ChannelList kept;
        for (ExrFurtherChannel const& channel : part.further) {
            kept.insert(channel.name, old[channel.name]);
        }
        for (ExrColour const& colour : selected.layers) {
            planLayer(part, colour, formatOf(reader.describe(selected.part, colour)),
                      options.keepsInputDepth, old, kept);
        }
        part.header.header.channels() = kept;
        applyCompression(options.compression, part.header.header);
        if (part.header.header.hasChunkCount()) {
            // Another compression may have blocks of another height.
            part.header.header.setChunkCount(
                static_cast<int>(ExrChunkGrid(part.header).countChunks()));
        }
    }
    return plan;
}

ExrPlan planFromOther(ImageSource const& source, IxPixelFormat const& format,
                      WriteOptions const& options)
{
    ImageInfo const& info = source.getInfo();
    ExrPlan plan;
    plan.version = Imf::EXR_VERSION;
    ExrPlannedPart& part = plan.parts.emplace_back();
    Imf::Header& header = part.header.header;
    header = Imf::Header(toBox(info.displayWindow), toBox(info.dataWindow),
                         info.format.getAspectRatio().getFloat());
    Imf::PixelType const type = typeOfDepth(format.getDepth());
    auto const add = [&](char const* name, std::size_t component) {
        header.channels().insert(name, Imf::Channel(type));
        part.colours.push_back({name, type, 0, component});
    };
    bool const isAlphaOnly = format.getComponents() == IxPixelFormat::ALPHA;
    for (std::size_t component = 0; !isAlphaOnly && component < exrColourNames.size();
         ++component) {
        add(exrColourNames[component], component);
    }
    if (format.getComponents() != IxPixelFormat::RGB) {
        add(exrAlphaName, isAlphaOnly ? 0 : exrColourNames.size());
    }
    // Colour in an EXR file is multiplied by alpha.
    part.isPremultiplying =
        format.getComponents() == IxPixelFormat::RGBA && !info.format.isPremultiplied();
    part.formats = {format};
    part.luminanceWeights.resize(1);
    applyCompression(options.compression, header);
    return plan;
}

} // namespace

ExrPlan planExr(ImageSource const& source, ResultFormat const& formatOf,
                WriteOptions const& options)
{
    auto const* const reader = dynamic_cast<ExrReader const*>(&source);
    ExrPlan plan = reader != nullptr ? planFromExr(*reader, formatOf, options)
                                     : planFromOther(source, formatOf(source.getInfo()), options);
    for (ExrPlannedPart& part : plan.parts) {
        if (part.isProcessed() && !options.stamp.empty()) {
            part.header.header.erase(stampName); // it may be of another type
            part.header.header.insert(stampName, Imf::StringAttribute(options.stamp));
        }
    }
    return plan;
}

std::vector<std::string> listRecompressed(ExrPlannedPart const& part, Imf::Header const& before)
{
    Imf::ChannelList const& channels = part.header.header.channels();
    Imf::ChannelList copied;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        bool const isColour = std::any_of(
            part.colours.begin(), part.colours.end(), [&](ExrPlannedChannel const& colour) {
                return colour.name == channel.name() && colour.component < exrColourNames.size() &&
                       part.formats[colour.layer].getComponents() != IxPixelFormat::ALPHA;
            });
        // A channel that was widened holds the same values; one that was narrowed is not copied.
        auto const* const old = before.channels().findChannel(channel.name());
        if (!isColour && old != nullptr && old->type == channel.channel().type) {
            copied.insert(channel.name(), channel.channel());
        }
    }
    return listLossyChannels(copied, before.compression(), part.header.header.compression());
}
