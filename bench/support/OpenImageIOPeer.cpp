// Levels and gamma by OpenImageIO's image functions; it has none for the curves and the knee.

#include "support/Peers.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

namespace bench {

void addOpenImageIO(std::vector<Peer>& peers, Work const& work, Look const& look)
{
    if (isDisplay(work) || (work.hasCurves && !work.hasGamma)) {
        return;
    }
    std::vector<float> scale{1, 1, 1, 1};
    std::vector<float> offset{0, 0, 0, 0};
    std::vector<float> exponent{1, 1, 1, 1};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        scale[channel] = look.levels.scale[channel];
        offset[channel] = look.levels.offset[channel];
        exponent[channel] = look.levels.invGamma[channel].exponent;
    }
    std::string const name = "OpenImageIO " OIIO_VERSION_STRING;
    peers.push_back({work.hasGamma ? name + ", no curves" : name,
                     [=](Frame const& source, Frame const& destination) {
                         constexpr int oneThread = 1;
                         OIIO::ImageSpec const spec(frameWidth, frameHeight, 4, OIIO::TypeFloat);
                         OIIO::ImageBuf const from(spec, source.getPixels().data());
                         OIIO::ImageBuf to(spec, destination.getPixels().data());
                         OIIO::ImageBufAlgo::mad(to, from, scale, offset, {}, oneThread);
                         if (work.hasGamma) {
                             OIIO::ImageBufAlgo::pow(to, to, exponent, {}, oneThread);
                         }
                     }});
}

} // namespace bench
