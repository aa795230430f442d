// What "pick" prints.

#include "remapcolor/commands/PickText.h"

#include "runtime/project/ProjectValues.h"
#include "runtime/values/NumberText.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;
using Pixel = CoRgbaColorTyped<float>;

constexpr std::array<char const*, 4> channelNames = {"red", "green", "blue", "alpha"};
constexpr std::size_t labelWidth = 11;
constexpr std::size_t columnWidth = 15;

std::array<float, 4> valuesOf(Pixel const& pixel)
{
    return {pixel.red, pixel.green, pixel.blue, pixel.alpha};
}

/// The sign of a NaN is noise.
std::string formatValue(float value)
{
    return std::isnan(value) ? "nan" : formatNumber(value);
}

std::string pad(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

std::string formatLine(std::string const& label, std::string const& value)
{
    return pad(label, labelWidth) + value + "\n";
}

std::string formatSide(std::string const& side, Pixel const& pixel)
{
    std::string text;
    for (std::size_t channel = 0; channel < channelNames.size(); ++channel) {
        text += formatLine(side + channelNames[channel], formatValue(valuesOf(pixel)[channel]));
    }
    return text;
}

std::string formatSide(std::string const& side, std::array<ChannelSummary, 4> const& summaries)
{
    std::string text;
    for (std::size_t channel = 0; channel < channelNames.size(); ++channel) {
        ChannelSummary const& summary = summaries[channel];
        bool const isEmpty = summary.values == 0;
        std::string line;
        for (std::string const& value : {formatNumber(summary.mean), formatNumber(summary.least),
                                         formatNumber(summary.greatest)}) {
            line += pad(isEmpty ? "-" : value, columnWidth);
        }
        text += formatLine(side + channelNames[channel],
                           line + pad(std::to_string(summary.nans), columnWidth / 2) +
                               std::to_string(summary.infinities));
    }
    return text;
}

std::string formatColumns(PickedPixel const&)
{
    return "";
}

std::string formatColumns(AreaSummary const&)
{
    std::string line;
    for (char const* const name : {"mean", "least", "greatest"}) {
        line += pad(name, columnWidth);
    }
    return formatLine("", line + pad("nan", columnWidth / 2) + "inf");
}

std::string formatBlock(Picks const& picks, PickResult const& result, bool isNamed)
{
    std::string text;
    if (isNamed) {
        text += formatLine(result.place.isArea ? "area" : "pixel", formatPlace(result.place));
    }
    text += formatLine("mode", picks.mode) + formatLine("time", formatNumber(picks.time));
    std::visit(
        [&text](auto const& values) {
            text += formatColumns(values) + formatSide("in.", values.in) +
                    formatSide("out.", values.out);
        },
        result.values);
    return text;
}

Json toJson(Pixel const& pixel)
{
    Json json;
    for (std::size_t channel = 0; channel < channelNames.size(); ++channel) {
        json[channelNames[channel]] = numberToJson(valuesOf(pixel)[channel]);
    }
    return json;
}

Json toJson(std::array<ChannelSummary, 4> const& summaries)
{
    Json json;
    for (std::size_t channel = 0; channel < channelNames.size(); ++channel) {
        ChannelSummary const& summary = summaries[channel];
        auto const number = [&](double value) {
            return summary.values == 0 ? Json() : Json(value);
        };
        json[channelNames[channel]] = {{"mean", number(summary.mean)},
                                       {"least", number(summary.least)},
                                       {"greatest", number(summary.greatest)},
                                       {"nan", summary.nans},
                                       {"inf", summary.infinities}};
    }
    return json;
}

Json toJson(Picks const& picks, PickResult const& result)
{
    PickPlace const& place = result.place;
    Json json = {{"input", picks.input}};
    if (place.isArea) {
        json["area"] = {place.x, place.y, place.width, place.height};
    } else {
        json["pixel"] = {place.x, place.y};
    }
    json["mode"] = picks.mode;
    json["time"] = picks.time;
    std::visit(
        [&json](auto const& values) {
            json["in"] = toJson(values.in);
            json["out"] = toJson(values.out);
        },
        result.values);
    return json;
}

} // namespace

std::string formatLines(Picks const& picks)
{
    bool const isNamed = picks.results.size() > 1 || picks.results.front().place.isArea;
    std::string text;
    for (PickResult const& result : picks.results) {
        text += (text.empty() ? "" : "\n") + formatBlock(picks, result, isNamed);
    }
    return text;
}

std::string formatJson(Picks const& picks)
{
    Json json;
    for (PickResult const& result : picks.results) {
        json.push_back(toJson(picks, result));
    }
    Json const& whole = json.size() == 1 ? json.front() : json;
    return whole.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string formatPlace(PickPlace const& place)
{
    std::string const pixel = std::to_string(place.x) + "," + std::to_string(place.y);
    return place.isArea
               ? pixel + "," + std::to_string(place.width) + "," + std::to_string(place.height)
               : pixel;
}
