// The options of "pick".

#include "remapcolor/options/PickRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/LayerOptions.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"

#include <charconv>
#include <optional>

namespace {

std::optional<int> parseCoordinate(std::string_view text)
{
    int coordinate = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), end, coordinate);
    return failure == std::errc() && stop == end ? std::optional(coordinate) : std::nullopt;
}

PickPlace parsePlace(std::string const& text)
{
    std::vector<int> numbers;
    for (std::string_view const part : split(text, ',')) {
        std::optional<int> const number = parseCoordinate(part);
        if (number.has_value()) {
            numbers.push_back(*number);
        }
    }
    bool const isWhole = numbers.size() == split(text, ',').size();
    if (isWhole && numbers.size() == 2) {
        return {numbers[0], numbers[1]};
    }
    if (isWhole && numbers.size() == 4 && numbers[2] > 0 && numbers[3] > 0) {
        return {numbers[0], numbers[1], numbers[2], numbers[3], true};
    }
    throw UsageError("a pixel is X,Y and an area X,Y,W,H in whole numbers such as 12,40 or "
                     "12,40,16,16, not " +
                     quote(text));
}

} // namespace

void addPickOptions(CommandOptions& options, PickRequest& request)
{
    options.addArgument("INPUT",
                        "Picture to read (EXR, PNG, TIFF, JPEG, DPX)\n\n- is standard input.",
                        [&request](std::string const& text) { request.input = text; });
    options.addArguments(
        "PLACE...", "Pixels X,Y and areas X,Y,W,H, as the data window counts",
        [&request](std::string const& text) { request.places.push_back(parsePlace(text)); });
    addNodeOptions(options, request.node);
    addLayerOptions(options, LayerCount::One, request.read);
    addMaskOptions(options, request.mask);
    addFrameOption(options, "-f,--frame", request.frame);
    options.addFlag("--json", "One JSON object, or an array of them for several places",
                    [&request] { request.form = PickRequest::Form::Json; });
}

void checkComplete(PickRequest const& request)
{
    if (request.input.empty()) {
        throw UsageError("pick needs a picture to read; write remapcolor pick INPUT X,Y");
    }
    if (request.places.empty()) {
        throw UsageError("pick needs a pixel; write remapcolor pick INPUT X,Y as in 12,40");
    }
    checkComplete(request.mask);
    checkStandardInput(request.node,
                       {{"INPUT", request.input}, {"--mask", request.mask.file.value_or("")}});
}
