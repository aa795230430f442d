// "info": parts, channels, windows, compression and attributes of pictures.

#include "remapcolor/commands/InfoCommand.h"

#include "files/PrintableText.h"
#include "media/ImageFiles.h"
#include "media/PictureDescription.h"
#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "session/Failures.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

std::string formatWindow(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight()) + " at " +
           std::to_string(window.x0) + "," + std::to_string(window.y0);
}

void addLine(std::string& text, std::string const& name, std::string const& value)
{
    constexpr std::size_t column = 14;
    text += "  " + name + std::string(name.size() < column ? column - name.size() : 1, ' ') +
            makePrintable(value) + "\n";
}

std::string formatChannel(ChannelDescription const& channel)
{
    bool const isSampled = channel.xSampling != 1 || channel.ySampling != 1;
    return channel.name + " " + channel.type +
           (isSampled ? " every " + std::to_string(channel.xSampling) + " x " +
                            std::to_string(channel.ySampling)
                      : "");
}

std::string formatPart(PartDescription const& part, std::size_t number)
{
    std::string text =
        "part " + std::to_string(number) + (part.name.empty() ? "" : " " + quote(part.name)) + "\n";
    addLine(text, "pixels", part.kind);
    addLine(text, "data", formatWindow(part.dataWindow));
    addLine(text, "display", formatWindow(part.displayWindow));
    if (!part.compression.empty()) {
        addLine(text, "compression", part.compression);
    }
    if (part.levels > 1) {
        addLine(text, "resolutions", std::to_string(part.levels));
    }
    for (ChannelDescription const& channel : part.channels) {
        addLine(text, "channel", formatChannel(channel));
    }
    for (AttributeDescription const& attribute : part.attributes) {
        std::string const value =
            attribute.value.empty() ? "(" + attribute.type + ")" : attribute.value;
        addLine(text, "attribute", attribute.name + " " + value);
    }
    return text;
}

std::string formatPicture(std::filesystem::path const& file, PictureDescription const& picture)
{
    std::string text = makePrintable(file.string()) + ": " + picture.format + "\n";
    for (std::size_t number = 0; number < picture.parts.size(); ++number) {
        text += formatPart(picture.parts[number], number);
    }
    return text;
}

Json toJson(GeRectangle<int> const& window)
{
    return {{"x", window.x0},
            {"y", window.y0},
            {"width", window.getWidth()},
            {"height", window.getHeight()}};
}

Json toJson(PartDescription const& part)
{
    Json channels = Json::array();
    for (ChannelDescription const& channel : part.channels) {
        channels.push_back({{"name", channel.name},
                            {"type", channel.type},
                            {"xSampling", channel.xSampling},
                            {"ySampling", channel.ySampling}});
    }
    Json attributes = Json::array();
    for (AttributeDescription const& attribute : part.attributes) {
        attributes.push_back(
            {{"name", attribute.name}, {"type", attribute.type}, {"value", attribute.value}});
    }
    return {{"name", part.name},
            {"pixels", part.kind},
            {"dataWindow", toJson(part.dataWindow)},
            {"displayWindow", toJson(part.displayWindow)},
            {"compression", part.compression},
            {"resolutions", part.levels},
            {"channels", channels},
            {"attributes", attributes}};
}

Json toJson(std::filesystem::path const& file, PictureDescription const& picture)
{
    Json parts = Json::array();
    for (PartDescription const& part : picture.parts) {
        parts.push_back(toJson(part));
    }
    return {{"file", file.string()}, {"format", picture.format}, {"parts", parts}};
}

} // namespace

void addInfoOptions(CommandOptions& options, InfoRequest& request)
{
    options.addArguments("INPUT...", "Pictures to read\n\n- is standard input.",
                         [&request](std::string const& text) { request.files.emplace_back(text); });
    options.addFlag("--json", "An array with an object for each picture",
                    [&request] { request.form = InfoRequest::Form::Json; });
}

void checkComplete(InfoRequest const& request)
{
    if (request.files.empty()) {
        throw UsageError("info needs a picture to read; write remapcolor info INPUT...");
    }
}

int runInfo(InfoRequest const& request, Reporter& reporter)
{
    int status = static_cast<int>(ExitStatus::Done);
    StopSignals const signals;
    Json pictures = Json::array();
    for (std::filesystem::path const& file : request.files) {
        refuseTerminal({file});
        try {
            PictureDescription const picture = describePicture(file);
            if (request.form == InfoRequest::Form::Json) {
                pictures.push_back(toJson(file, picture));
            } else {
                writeStandardOutput(formatPicture(file, picture));
            }
        } catch (ImageFileError const&) {
            Failure const failure = describeCurrentFailure();
            reporter.reportFailure(failure);
            status = std::max(status, failure.status);
        }
    }
    if (request.form == InfoRequest::Form::Json) {
        // Names in files may be of any bytes.
        constexpr int indent = 2;
        writeStandardOutput(pictures.dump(indent, ' ', false, Json::error_handler_t::replace) +
                            "\n");
    }
    return status;
}
