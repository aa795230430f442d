// The options of "pick".

#include "remapcolor/PickRequest.h"

#include "remapcolor/CommandOptions.h"
#include "remapcolor/Failures.h"
#include "remapcolor/TextParts.h"
#include "runtime/values/NumberText.h"

#include <charconv>

namespace {

std::optional<int> parseCoordinate(std::string_view text)
{
    int coordinate = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), end, coordinate);
    return failure == std::errc() && stop == end ? std::optional(coordinate) : std::nullopt;
}

PixelPlace parsePlace(std::string const& text)
{
    auto const parts = split(text, ',');
    if (parts.size() == 2) {
        std::optional<int> const x = parseCoordinate(parts[0]);
        std::optional<int> const y = parseCoordinate(parts[1]);
        if (x.has_value() && y.has_value()) {
            return {*x, *y};
        }
    }
    throw UsageError("a pixel is X,Y in whole numbers such as 12,40, not " + quote(text));
}

double parseTime(std::string const& text)
{
    std::optional<double> const time = parseNumber(text);
    if (!time.has_value()) {
        throw UsageError("--frame takes a number, not " + quote(text));
    }
    return *time;
}

} // namespace

void addPickOptions(CommandOptions& options, PickRequest& request)
{
    options.addArgument("INPUT", "Picture to read (EXR, PNG, TIFF, JPEG, DPX)",
                        [&request](std::string const& text) { request.input = text; });
    options.addArgument("PIXEL", "X,Y of the pixel, as the data window counts",
                        [&request](std::string const& text) { request.place = parsePlace(text); });
    addNodeOptions(options, request.node);
    options.addOption("--layer", "NAME", "Take the channels NAME.R, NAME.G, NAME.B of the file",
                      [&request](std::string const& text) { request.layer = text; });
    options.addOption("-f,--frame", "FRAME", "The time of keyframed values (default: 0)",
                      [&request](std::string const& text) { request.time = parseTime(text); });
    options.addFlag("--json", "One JSON object instead of a value a line",
                    [&request] { request.form = PickRequest::Form::Json; });
}

void checkComplete(PickRequest const& request)
{
    if (request.input.empty()) {
        throw UsageError("pick needs a picture to read; write remapcolor pick INPUT X,Y");
    }
    if (!request.place.has_value()) {
        throw UsageError("pick needs a pixel; write remapcolor pick INPUT X,Y as in 12,40");
    }
}
