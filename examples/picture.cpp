/// Writing of a picture: planes of half and float, handed to the OpenEXR library in one call.
#include "picture.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>
#include <half.h>

namespace examples {

namespace {

/// One channel of the whole picture in the order of the file.
template <typename Value>
using Plane = std::vector<Value>;

template <typename Value, typename Select>
Plane<Value> makePlane(Picture const& picture, Select select)
{
    Plane<Value> plane;
    plane.reserve(static_cast<std::size_t>(picture.width()) *
                  static_cast<std::size_t>(picture.height()));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            plane.emplace_back(static_cast<float>(select(picture.at(x, y))));
        }
    }
    return plane;
}

/// Declares the channel and binds it to `plane`, which must outlive the writing.
template <typename Value>
void addChannel(Imf::Header& header, Imf::FrameBuffer& frame, char const* name, Imf::PixelType type,
                Plane<Value>& plane)
{
    auto const width = static_cast<std::size_t>(header.dataWindow().max.x + 1);
    header.channels().insert(name, Imf::Channel(type));
    frame.insert(name, Imf::Slice(type, reinterpret_cast<char*>(plane.data()), sizeof(Value),
                                  sizeof(Value) * width));
}

} // namespace

Picture::Picture(int width, int height)
    : m_width(width), m_height(height),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
{
}

void writePicture(Picture const& picture, Channels channels, std::string const& path)
{
    Plane<half> red = makePlane<half>(picture, [](Pixel const& p) { return p.color.x; });
    Plane<half> green = makePlane<half>(picture, [](Pixel const& p) { return p.color.y; });
    Plane<half> blue = makePlane<half>(picture, [](Pixel const& p) { return p.color.z; });
    Plane<half> alpha;
    Plane<float> depth;

    Imf::Header header(picture.width(), picture.height());
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::FrameBuffer frame;
    addChannel(header, frame, "R", Imf::HALF, red);
    addChannel(header, frame, "G", Imf::HALF, green);
    addChannel(header, frame, "B", Imf::HALF, blue);
    if (channels == Channels::RgbaZ) {
        alpha = makePlane<half>(picture, [](Pixel const& p) { return p.alpha; });
        depth = makePlane<float>(picture, [](Pixel const& p) { return p.depth; });
        addChannel(header, frame, "A", Imf::HALF, alpha);
        addChannel(header, frame, "Z", Imf::FLOAT, depth);
    }

    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(frame);
    file.writePixels(picture.height());
}

} // namespace examples
