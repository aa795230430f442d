// What the headers of an EXR file say.

#include "media/ExrDescription.h"

#include "media/ExrChannels.h"
#include "media/ExrChunkGrid.h"
#include "media/ExrCompression.h"
#include "media/ExrHeader.h"

#include <ImfBoxAttribute.h>
#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfDoubleAttribute.h>
#include <ImfFloatAttribute.h>
#include <ImfIntAttribute.h>
#include <ImfLineOrderAttribute.h>
#include <ImfMatrixAttribute.h>
#include <ImfRationalAttribute.h>
#include <ImfStringAttribute.h>
#include <ImfStringVectorAttribute.h>
#include <ImfTimeCodeAttribute.h>
#include <ImfVecAttribute.h>
#include <array>
#include <limits>
#include <set>
#include <sstream>

namespace {

template <typename Value>
std::string format(Value const& value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    return text.str();
}

std::string format(Imf::Rational const& value)
{
    return std::to_string(value.n) + "/" + std::to_string(value.d);
}

std::string format(Imf::StringVector const& values)
{
    std::string text;
    for (std::string const& value : values) {
        text += (text.empty() ? "" : ", ") + value;
    }
    return text;
}

std::string format(Imf::LineOrder const& order)
{
    constexpr std::array<char const*, 3> names = {"increasing y", "decreasing y", "random y"};
    return names.at(static_cast<std::size_t>(order));
}

std::string format(Imf::TimeCode const& code)
{
    return std::to_string(code.hours()) + ":" + std::to_string(code.minutes()) + ":" +
           std::to_string(code.seconds()) + ":" + std::to_string(code.frame());
}

template <typename Value>
std::string format(Imath::Box<Value> const& box)
{
    return format(box.min) + " to " + format(box.max);
}

std::string format(Imf::Chromaticities const& colours)
{
    return "red " + format(colours.red) + ", green " + format(colours.green) + ", blue " +
           format(colours.blue) + ", white " + format(colours.white);
}

/// Text of the first of the types that the attribute is of; "" for none.
template <typename... Values>
std::string formatFirst(Imf::Attribute const& attribute)
{
    std::string text;
    auto const tryOne = [&](auto const* typed) {
        if (typed != nullptr) {
            text = format(typed->value());
        }
        return typed != nullptr;
    };
    static_cast<void>(
        (tryOne(dynamic_cast<Imf::TypedAttribute<Values> const*>(&attribute)) || ...));
    return text;
}

std::string formatValue(Imf::Attribute const& attribute)
{
    return formatFirst<std::string, int, float, double, Imath::V2i, Imath::V2f, Imath::V3i,
                       Imath::V3f, Imath::Box2i, Imath::Box2f, Imath::M33f, Imath::M44f,
                       Imf::Rational, Imf::StringVector, Imf::TimeCode, Imf::Chromaticities,
                       Imf::LineOrder>(attribute);
}

std::string formatKind(ExrHeader const& header)
{
    std::string const deep = header.isDeep ? "deep " : "";
    if (!header.isTiled) {
        return deep + "scan lines";
    }
    Imf::TileDescription const& tiles = header.header.tileDescription();
    return deep + "tiles " + std::to_string(tiles.xSize) + " x " + std::to_string(tiles.ySize);
}

PartDescription describe(ExrHeader const& part)
{
    static std::set<std::string> const told = {"channels",      "compression", "dataWindow",
                                               "displayWindow", "name",        "tiles"};
    constexpr std::array<char const*, 3> types = {"uint", "half", "float"};
    Imf::Header const& header = part.header;
    PartDescription description;
    description.name = header.hasName() ? header.name() : "";
    description.kind = formatKind(part);
    description.dataWindow = toRectangle(header.dataWindow());
    description.displayWindow = toRectangle(header.displayWindow());
    description.compression = nameCompression(header.compression());
    description.levels = static_cast<int>(ExrChunkGrid(part).getLevels().size());
    for (ExrFurtherChannel const& channel : listChannels(header.channels())) {
        description.channels.push_back({channel.name,
                                        types.at(static_cast<std::size_t>(channel.type)),
                                        channel.xSampling, channel.ySampling});
    }
    for (auto attribute = header.begin(); attribute != header.end(); ++attribute) {
        if (!told.contains(attribute.name())) {
            description.attributes.push_back({attribute.name(), attribute.attribute().typeName(),
                                              formatValue(attribute.attribute())});
        }
    }
    return description;
}

} // namespace

PictureDescription describeExr(std::filesystem::path const& file)
{
    CheckedInput stream(file);
    PictureDescription description{"exr", {}};
    for (ExrHeader const& part :
         readExrHeaders(stream, file, std::numeric_limits<std::size_t>::max()).parts) {
        description.parts.push_back(describe(part));
    }
    return description;
}
