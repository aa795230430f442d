#include "support/Frame.h"

#include <cmath>
#include <random>

namespace bench {

namespace {

/// 0 to 1 and back while `phase` grows by 2; evenly spread.
float wave(float phase)
{
    return std::fabs(phase - 2.0F * std::round(phase * 0.5F));
}

float makeValue(Content content, float share)
{
    if (content == Content::Plate) {
        return share * 1.02F - 0.01F;
    }
    float const darkest = std::log2(0.001F);
    float const brightest = 4.0F;
    return std::exp2(darkest + share * (brightest - darkest));
}

} // namespace

Frame::Frame(Content content)
    : pixels(static_cast<Pixel*>(::operator new(framePixels * sizeof(Pixel), alignment)))
{
    std::minstd_rand random(1);
    std::uniform_real_distribution<float> noise(-0.01F, 0.01F);
    for (int y = 0; y < frameHeight; ++y) {
        for (int x = 0; x < frameWidth; ++x) {
            float const place = static_cast<float>(x) / 400.0F + static_cast<float>(y) / 300.0F;
            auto const channel = [&](float shift) {
                return makeValue(content, wave(place + shift + noise(random)));
            };
            getRow(y)[x] = {channel(0.0F), channel(0.05F), channel(0.1F), 1.0F};
        }
    }
}

Frame const& getFrame(Content content)
{
    static Frame const plate(Content::Plate);
    static Frame const scene(Content::Scene);
    return content == Content::Plate ? plate : scene;
}

} // namespace bench
