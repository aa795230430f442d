// What files that are not EXR say of themselves.

#include "media/oiio/OiioDescription.h"

namespace {

PartDescription describe(OIIO::ImageSpec const& spec)
{
    PartDescription part;
    part.name = spec.get_string_attribute("oiio:subimagename");
    part.kind = spec.tile_width > 0 ? "tiles " + std::to_string(spec.tile_width) + " x " +
                                          std::to_string(spec.tile_height)
                                    : "scan lines";
    part.dataWindow = {spec.x, spec.y, spec.x + spec.width, spec.y + spec.height};
    part.displayWindow = {spec.full_x, spec.full_y, spec.full_x + spec.full_width,
                          spec.full_y + spec.full_height};
    part.compression = spec.get_string_attribute("compression");
    for (int channel = 0; channel < spec.nchannels; ++channel) {
        part.channels.push_back(
            {spec.channel_name(channel), spec.channelformat(channel).c_str(), 1, 1});
    }
    for (OIIO::ParamValue const& attribute : spec.extra_attribs) {
        if (attribute.name() != "compression" && attribute.name() != "oiio:subimagename") {
            part.attributes.push_back(
                {attribute.name().string(), attribute.type().c_str(), attribute.get_string()});
        }
    }
    return part;
}

} // namespace

PictureDescription describeOpenFile(OiioReader const& reader)
{
    PictureDescription description{reader.getFormat(), {}};
    for (OIIO::ImageSpec const& spec : reader.listSpecs()) {
        description.parts.push_back(describe(spec));
    }
    return description;
}
