// What is told of a shot, for programs and for people.

#include "shots/ShotEvent.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "runtime/values/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Kind = ShotEvent::Kind;

constexpr Kind allKinds[] = {Kind::Start,   Kind::Frame, Kind::Skip, Kind::Note,
                             Kind::Warning, Kind::Error, Kind::End};

char const* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Start: return "start";
    case Kind::Frame: return "frame";
    case Kind::Skip: return "skip";
    case Kind::Note: return "note";
    case Kind::Warning: return "warning";
    case Kind::Error: return "error";
    case Kind::End: return "end";
    }
    return "";
}

/// A whole number without decimals, as file names have it.
Json frameToJson(std::optional<double> const& frame)
{
    if (!frame.has_value()) {
        return nullptr;
    }
    auto const limit = static_cast<double>(largestFrame);
    auto const whole = static_cast<std::int64_t>(std::clamp(*frame, -limit, limit));
    return static_cast<double>(whole) == *frame ? Json(whole) : Json(*frame);
}

double roundMilliseconds(double milliseconds)
{
    return std::round(milliseconds * 10.0) / 10.0;
}

std::string formatSeconds(double milliseconds)
{
    constexpr double perSecond = 1000.0;
    return formatNumber(std::round(milliseconds) / perSecond) + " s";
}

std::string countFrames(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

void addSummary(Json& json, ShotSummary const& summary)
{
    json["rendered"] = summary.rendered;
    json["skipped"] = summary.skipped;
    json["failed"] = formatFrames(summary.failed);
    json["unfinished"] = formatFrames(summary.unfinished);
    json["ms"] = roundMilliseconds(summary.milliseconds);
}

ShotSummary readSummary(Json const& json)
{
    auto const readFrames = [&](char const* name) {
        std::string const list = json.at(name);
        return list.empty() ? std::vector<Frame>() : parseFrames(list);
    };
    ShotSummary summary;
    summary.total = json.at("total");
    summary.rendered = json.at("rendered");
    summary.skipped = json.at("skipped");
    summary.failed = readFrames("failed");
    summary.unfinished = readFrames("unfinished");
    summary.milliseconds = json.at("ms");
    return summary;
}

/// Throws Json::exception and ShotError.
std::optional<ShotEvent> readEvent(Json const& json)
{
    std::string const name = json.at("event");
    auto const* const kind = std::find_if(std::begin(allKinds), std::end(allKinds),
                                          [&](Kind one) { return name == nameOf(one); });
    if (kind == std::end(allKinds)) {
        return {};
    }
    ShotEvent event;
    event.kind = *kind;
    if (json.contains("frame") && !json["frame"].is_null()) {
        event.frame = json["frame"].get<double>();
    }
    event.input = json.value("input", "");
    event.output = json.value("output", "");
    event.milliseconds = json.value("ms", 0.0);
    event.done = json.value("done", std::size_t{0});
    event.total = json.at("total");
    event.status = json.value("status", 0);
    event.message = json.value("message", "");
    event.frames = json.value("frames", "");
    event.threads = json.value("threads", 0);
    event.memory = json.value("memory", std::size_t{0});
    if (event.kind == Kind::End) {
        event.summary = readSummary(json);
    }
    return event;
}

std::string describeStart(ShotEvent const& event)
{
    constexpr std::size_t mebibyte = 1024 * 1024;
    return countFrames(event.total) + " of " + nameInput(event.input) + " to " +
           nameOutput(event.output) + ", " + std::to_string(event.threads) +
           (event.threads == 1 ? " thread" : " threads") + ", at most " +
           std::to_string(event.memory / mebibyte) + " MiB, " +
           (event.total == 1 ? "frame " : "frames ") + event.frames;
}

} // namespace

/// What another try may change comes first.
void ShotSummary::addFailure(ShotFailure kind)
{
    if (!worst.has_value() || kind == ShotFailure::Surroundings) {
        worst = kind;
    } else if (*worst != kind && *worst != ShotFailure::Surroundings) {
        worst = ShotFailure::Frames;
    }
}

int ShotSummary::getStatus() const
{
    if (!worst.has_value()) {
        return 0;
    }
    bool const hasSuited = rendered + skipped > 0 && *worst == ShotFailure::Request;
    return toExitStatus(hasSuited ? ShotFailure::Frames : *worst);
}

std::string formatJson(ShotEvent const& event)
{
    Json json = {{"event", nameOf(event.kind)}};
    bool const isOfShot = event.kind == Kind::Start || event.kind == Kind::End;
    if (!isOfShot) {
        json["frame"] = frameToJson(event.frame);
    }
    if (!event.input.empty()) {
        json["input"] = event.input.string();
        json["output"] = event.output.string();
    }
    switch (event.kind) {
    case Kind::Start:
        json["frames"] = event.frames;
        json["threads"] = event.threads;
        json["memory"] = event.memory;
        break;
    case Kind::Frame: json["ms"] = roundMilliseconds(event.milliseconds); break;
    case Kind::Error: json["status"] = event.status; [[fallthrough]];
    case Kind::Skip:
    case Kind::Note:
    case Kind::Warning: json["message"] = event.message; break;
    case Kind::End:
        json["status"] = event.status;
        addSummary(json, event.summary);
        break;
    }
    if (event.kind != Kind::Start) {
        json["done"] = event.done;
    }
    json["total"] = event.total;
    // File names may hold bytes that are no UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<ShotEvent> parseJson(std::string const& line)
{
    try {
        return readEvent(Json::parse(line));
    } catch (Json::exception const&) {
    } catch (ShotError const&) {
    }
    return {};
}

std::string formatText(ShotEvent const& event)
{
    std::string const frame =
        event.frame.has_value() ? "frame " + formatNumber(*event.frame) + ": " : "";
    switch (event.kind) {
    case Kind::Start: return describeStart(event);
    case Kind::Frame:
        return frame + "wrote " + nameOutput(event.output) + " in " +
               formatSeconds(event.milliseconds);
    case Kind::Skip: return frame + "skipped: " + event.message;
    case Kind::Note: return "note: " + frame + event.message;
    case Kind::Warning: return "warning: " + frame + event.message;
    case Kind::Error: return frame + event.message;
    case Kind::End: return formatSummary(event.summary);
    }
    return {};
}

std::string formatSummary(ShotSummary const& summary)
{
    std::string text =
        std::to_string(summary.rendered) + " of " + countFrames(summary.total) + " rendered";
    if (summary.skipped > 0) {
        text += ", " + std::to_string(summary.skipped) + " skipped";
    }
    if (!summary.failed.empty()) {
        text += ", " + std::to_string(summary.failed.size()) + " failed";
    }
    if (!summary.unfinished.empty()) {
        text += ", " + std::to_string(summary.unfinished.size()) + " not done";
    }
    text += " in " + formatSeconds(summary.milliseconds);
    std::vector<Frame> again = summary.failed;
    again.insert(again.end(), summary.unfinished.begin(), summary.unfinished.end());
    return again.empty() ? text : text + "; to do again: -f " + formatFrames(again);
}
