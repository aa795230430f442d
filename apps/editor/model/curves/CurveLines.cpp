#include "editor/model/curves/CurveLines.h"

#include "editor/model/curves/CurveEditing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr double partWidth = 12.0; // pixels; the tool spreads its samples evenly over values
constexpr std::array channels = {&Pixel::red, &Pixel::green, &Pixel::blue};

/// An x for every pixel, and 0 where the axis has none.
std::vector<float> listPlaces(CurveScale const& scale)
{
    std::vector<float> places;
    if (scale.getStart() > 0.0) {
        places.push_back(0.0F);
    }
    for (double place = scale.getStart(); place <= scale.getWidth(); place += 1.0) {
        places.push_back(static_cast<float>(scale.toX(place)));
    }
    return places;
}

} // namespace

CurveLines::CurveLines(Document& shownDocument) : document(shownDocument), chain(document.getNode())
{
}

std::array<float, ControllerLink::nbParams> CurveLines::getParams(int channel) const
{
    ControllerLink const& link = document.getLink();
    std::array<float, ControllerLink::nbParams> params{};
    for (int param = 0; param < ControllerLink::nbParams; ++param) {
        params[static_cast<std::size_t>(param)] = static_cast<float>(
            document.getNumber(link.getParamInputName(document.getMode(), param, channel)));
    }
    return params;
}

CurveLines::Line CurveLines::sampleTransfer(int channel, CurveScale const& scale) const
{
    ControllerLink const& link = document.getLink();
    auto const params = getParams(channel);
    Line line;
    for (double left = scale.getStart(); left < scale.getWidth(); left += partWidth) {
        auto const low = static_cast<float>(scale.toX(left));
        auto const high = static_cast<float>(scale.toX(left + partWidth));
        constexpr int nbSamples = static_cast<int>(partWidth);
        float const step = (high - low) / static_cast<float>(nbSamples);
        if (!std::isfinite(step) || !(low + step > low && high + step > high)) {
            continue; // so near or far that floats cannot tell the places apart
        }
        for (GePoint2<float> const& point :
             link.computeCurve(document.getMode(), params, {low, high}, nbSamples)) {
            if (std::isfinite(point.y)) {
                line.push_back(point);
            }
        }
    }
    return line;
}

CurveLines::Line CurveLines::sampleCurve(int channel, CurveScale const& scale) const
{
    CurvePoints const points = document.getCurve(channel);
    Line line;
    if (points.empty()) {
        return line;
    }
    std::vector<float> places = listPlaces(scale);
    float const first = places.front();
    float const last = places.back();
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        float const x = CurveEditing::getKey(points, key).x;
        if (x > first && x < last) {
            places.push_back(x);
        }
    }
    std::sort(places.begin(), places.end());
    std::vector<float> const values = document.getLink().mapThroughCurve(points, places);
    for (std::size_t index = 0; index < places.size(); ++index) {
        line.push_back({places[index], values[index]});
    }
    return line;
}

std::array<CurveLines::Line, CurveLines::nbChannels>
CurveLines::sampleBoth(CurveScale const& scale) const
{
    std::vector<Pixel> pixels;
    for (float const x : listPlaces(scale)) {
        pixels.push_back({x, x, x, 1.0F});
    }
    std::vector<Pixel> const results = chain.send(pixels, document.getTime());
    std::array<Line, nbChannels> lines;
    for (std::size_t channel = 0; channel < lines.size(); ++channel) {
        for (std::size_t index = 0; index < pixels.size(); ++index) {
            float const y = results[index].*channels[channel];
            if (std::isfinite(y)) {
                lines[channel].push_back({pixels[index].red, y});
            }
        }
    }
    return lines;
}

CurveLines::Color CurveLines::transfer(Color const& color) const
{
    Color made{};
    for (int channel = 0; channel < nbChannels; ++channel) {
        float const x = color[static_cast<std::size_t>(channel)];
        float const next = std::nextafter(x, std::numeric_limits<float>::infinity());
        // The first of the tool's samples is that of x itself.
        bool const isPlace = std::isfinite(x) && std::isfinite(next + (next - x));
        made[static_cast<std::size_t>(channel)] =
            isPlace ? document.getLink()
                          .computeCurve(document.getMode(), getParams(channel), {x, next}, 1)
                          .front()
                          .y
                    : std::numeric_limits<float>::quiet_NaN();
    }
    return made;
}

CurveLines::Color CurveLines::curve(Color const& color) const
{
    Color made{};
    for (int channel = 0; channel < nbChannels; ++channel) {
        auto const index = static_cast<std::size_t>(channel);
        CurvePoints const points = document.getCurve(channel);
        made[index] = points.empty()
                          ? std::numeric_limits<float>::quiet_NaN()
                          : document.getLink().mapThroughCurve(points, {&color[index], 1}).front();
    }
    return made;
}

CurveLines::Color CurveLines::finish(Color const& color) const
{
    Pixel const pixel{color[0], color[1], color[2], 1.0F};
    Pixel const made = chain.send({&pixel, 1}, document.getTime()).front();
    return {made.red, made.green, made.blue};
}
