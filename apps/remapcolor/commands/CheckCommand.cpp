// "check": what is wrong with the pictures of a sequence.

#include "remapcolor/commands/CheckCommand.h"

#include "files/PrintableText.h"
#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/FrameListOptions.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "session/Failures.h"

#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

std::vector<Frame> listFrames(ShotCheck const& check, std::optional<FrameFault::Kind> kind)
{
    std::vector<Frame> frames;
    for (FrameFault const& fault : check.faults) {
        if (!kind.has_value() || fault.kind == *kind) {
            frames.push_back(fault.frame);
        }
    }
    return frames;
}

/// Faults of many frames that are said alike take one line, where the first of them stands.
std::string formatFaults(ShotCheck const& check)
{
    std::map<std::string, std::vector<Frame>> framesOf;
    std::vector<std::string> lines;
    for (FrameFault const& fault : check.faults) {
        std::string const said =
            std::string(nameFault(fault.kind)) + ": " + makePrintable(fault.message) + "\n";
        std::vector<Frame>& frames = framesOf[said];
        if (frames.empty()) {
            lines.push_back(said);
        }
        frames.push_back(fault.frame);
    }
    std::string text;
    for (std::string const& said : lines) {
        std::vector<Frame> const& frames = framesOf.at(said);
        std::string const which = frames.size() == 1 ? "frame " : "frames ";
        text += (check.isSequence ? which + formatFrames(frames) + ": " : "") + said;
    }
    return text;
}

std::string formatSummary(ShotCheck const& check)
{
    if (!check.isSequence) {
        return check.faults.empty() ? "nothing is wrong\n" : "";
    }
    std::string text =
        std::to_string(check.frames.size()) + " frames, " + std::to_string(check.nbRead) + " read";
    std::string const faulty = formatFrames(listFrames(check, {}));
    return text +
           (faulty.empty() ? ", nothing is wrong\n" : "; something is wrong with " + faulty + "\n");
}

Json toJson(FrameFault const& fault)
{
    Json channels = Json::array();
    for (ChannelScan const& channel : fault.channels) {
        channels.push_back({{"part", channel.part},
                            {"channel", channel.name},
                            {"nan", channel.nbNan},
                            {"infinite", channel.nbInfinite}});
    }
    Json json = {{"frame", fault.frame},
                 {"file", fault.file.string()},
                 {"kind", nameFault(fault.kind)},
                 {"message", fault.message}};
    if (fault.kind == FrameFault::Kind::Values) {
        json["channels"] = channels;
    }
    return json;
}

Json toJson(CheckRequest const& request, ShotCheck const& check)
{
    Json faults = Json::array();
    for (FrameFault const& fault : check.faults) {
        faults.push_back(toJson(fault));
    }
    Json json = {{"input", request.shot.input},
                 {"frames", formatFrames(check.frames)},
                 {"read", check.nbRead}};
    for (FrameFault::Kind const kind :
         {FrameFault::Kind::Missing, FrameFault::Kind::Unreadable, FrameFault::Kind::Size,
          FrameFault::Kind::Channels, FrameFault::Kind::Values}) {
        json[nameFault(kind)] = formatFrames(listFrames(check, kind));
    }
    json["faults"] = faults;
    return json;
}

} // namespace

void addCheckOptions(CommandOptions& options, CheckRequest& request)
{
    options.addArgument(
        "INPUT",
        "Sequence (shot.####.exr, shot.%04d.exr) or picture to read\n\n- is standard input.",
        [&request](std::string const& text) { request.shot.input = text; });
    addFrameListOptions(options, request.shot.frames, request.framesFile);
    options.addFlag("--values", "Count NaN and infinity in every channel, too",
                    [&request] { request.shot.countsValues = true; });
    options.addFlag("--json", "One JSON object",
                    [&request] { request.form = CheckRequest::Form::Json; });
}

void checkComplete(CheckRequest const& request)
{
    if (request.shot.input.empty()) {
        throw UsageError("check needs pictures to read; write remapcolor check INPUT");
    }
    checkStandardInput({}, {{"INPUT", request.shot.input}, {"--frames-from", request.framesFile}});
}

int runCheck(CheckRequest const& request, Reporter& reporter)
{
    StopSignals const signals;
    refuseTerminal({request.shot.input});
    ShotCheckRequest shot = request.shot;
    if (!request.framesFile.empty()) {
        shot.frames = loadFrames(request.framesFile);
    }
    ShotCheck const check =
        checkShot(shot, {.cancelled = &StopSignals::getFlag(),
                         .progress = [&reporter](std::size_t done, std::size_t total) {
                             reporter.showProgress(static_cast<double>(done), total);
                         }});
    if (!check.isComplete) {
        throw Interrupted{StopSignals::getSignal(), "nothing was said of the pictures"};
    }
    if (request.form == CheckRequest::Form::Json) {
        // Names in files may be of any bytes.
        writeStandardOutput(
            toJson(request, check).dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    } else {
        writeStandardOutput(formatFaults(check) + formatSummary(check));
    }
    bool const isSound = check.faults.empty();
    return static_cast<int>(isSound ? ExitStatus::Done : ExitStatus::PictureFailed);
}
