// "render": values into the node, pictures through its chain.

#include "remapcolor/commands/RenderCommand.h"

#include "files/PrintableText.h"
#include "files/RunningProgram.h"
#include "files/StandardFiles.h"
#include "media/ImageFiles.h"
#include "remapcolor/options/FrameListOptions.h"
#include "remapcolor/options/RenderRequest.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/LookNotes.h"
#include "remapcolor/session/RequestedSession.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "runtime/engine/RenderPool.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "session/ToolKeys.h"
#include "shots/FileStamp.h"
#include "shots/MachineLimits.h"
#include "shots/ShotError.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

namespace {

using Path = std::filesystem::path;

bool keepsInputDepth(HostNode const& node)
{
    auto const state = node.getValue(ToolKeys::outputDepth)->getState();
    auto const& depth = std::get<Animated<int>>(*state);
    return depth.getKeys().front().value == ToolKeys::depthOfInput;
}

/// `request.shot` with the frames that the other options say.
ShotRequest completeShot(RenderRequest const& request)
{
    ShotRequest shot = request.shot;
    shot.output = request.output.string();
    if (request.mask.file.has_value()) {
        shot.mask = request.mask.file->string();
    }
    if (!request.framesFile.empty()) {
        shot.frames = loadFrames(request.framesFile);
    }
    double const time = request.frame.value_or(0.5);
    if (std::floor(time) == time && std::abs(time) <= static_cast<double>(largestFrame)) {
        shot.frames = {static_cast<Frame>(time)};
    }
    return shot;
}

/// Mode, mask, and every value that is not at its default.
Reporter::Facts describeLookAndMask(HostNode const& node, RenderRequest const& request)
{
    Reporter::Facts facts = describeLook(node);
    facts.insert(facts.begin() + 1,
                 {"mask", request.mask.file.has_value() ? request.mask.file->string() : "none"});
    return facts;
}

std::vector<double> listTimes(ShotPlan const& plan)
{
    std::vector<double> times;
    for (FrameFiles const& files : plan.frames) {
        times.push_back(files.time);
    }
    return times;
}

/// When the newest project was written; the smallest number for none.
std::int64_t getTimeOfProjects(RenderRequest const& request)
{
    std::int64_t newest = std::numeric_limits<std::int64_t>::min();
    for (Path const& project : request.node.projects) {
        newest = std::max(newest, readFileStamp(project).written);
    }
    return newest;
}

/// A picture by itself may be at any time.
void setTimeOfPicture(RenderRequest const& request, HostNode const& node, ShotPlan& plan)
{
    if (plan.isSequence) {
        if (request.frame.has_value() && !request.shot.frames.has_value() &&
            std::floor(*request.frame) != *request.frame) {
            throw UsageError("--frame " + formatNumber(*request.frame) +
                             " is for a single picture; frames of a sequence are whole numbers");
        }
        return;
    }
    bool const hasFrame = request.shot.frames.has_value() || !request.framesFile.empty();
    if (!hasFrame && !plan.frames.empty()) {
        plan.frames.front().time = chooseTime(node, request.frame, plan.frames.front().input);
    }
}

void listPlan(ShotPlan const& plan)
{
    auto const describe = [](Path const& file, bool isWanted, char const* word) {
        std::error_code ignored;
        bool const isRemarkable =
            !isStandardStream(file) && std::filesystem::exists(file, ignored) != isWanted;
        return makePrintable(file.string()) + (isRemarkable ? word : "");
    };
    std::string text;
    for (FrameFiles const& files : plan.frames) {
        text +=
            "frame " + formatNumber(files.time) + ": " + describe(files.input, true, " (missing)");
        if (files.mask.has_value()) {
            text += " + " + describe(*files.mask, true, " (missing)");
        }
        text += " -> " + describe(files.output, false, " (there already)") + "\n";
    }
    writeStandardOutput(text);
}

std::string makeRunStamp()
{
    return "remapcolor " REMAPCOLOR_VERSION " on " + findHostName() + ", " + formatUniversalTime() +
           ": " + makePrintable(formatShellLine(listOwnWords()));
}

WriteOptions makeWriteOptions(RenderRequest const& request, HostNode const& node)
{
    return {.keepsInputDepth = keepsInputDepth(node),
            .compression = request.compression,
            .stamp = request.isStamped ? makeRunStamp() : "",
            .kind = request.kind};
}

/// Standard output gets its picture.
void deliver(FrameFiles const& files)
{
    if (!isStandardStream(files.output)) {
        return;
    }
    try {
        sendStandardFile(EarlyEnd::IsFailure);
    } catch (SurroundingsError const& error) {
        throw ShotError(ShotFailure::Surroundings, error.what());
    } catch (Interrupted const&) {
        throw RenderCancelled();
    }
}

ShotOptions makeOptions(RenderRequest const& request, HostNode const& node, ShotPlan const& plan,
                        Reporter& reporter)
{
    ShotOptions options;
    options.read = request.read;
    options.mask = makeReadOptions(request.mask);
    options.maskUse = request.mask.use;
    options.write = makeWriteOptions(request, node);
    options.threads = request.threads > 0 ? request.threads : countUsableCores();
    // Half of it is left to the libraries and to the system's file cache.
    options.memory = request.memory > 0 ? request.memory : findUsableMemory() / 2;
    options.existing = request.existing;
    options.missing = request.missing;
    if (!request.skipsAnyAge) {
        options.newestChange = getTimeOfProjects(request);
    }
    options.cancelled = &StopSignals::getFlag();
    options.deliver = &deliver;
    options.listener = [&reporter](ShotEvent const& event) { reporter.tell(event); };
    options.progress = [&reporter, total = plan.frames.size()](double done) {
        reporter.showProgress(done, total);
    };
    return options;
}

std::string describeOutcome(ShotSummary const& summary)
{
    return summary.rendered == 0 ? "nothing was written"
                                 : std::to_string(summary.rendered) + " of " +
                                       std::to_string(summary.total) + " frames were written";
}

/// Renders and closes the report; returns the exit status.
int renderPlan(HostNode& node, ShotPlan const& plan, ShotOptions const& options, Reporter& reporter)
{
    // Several pictures share the workers; a single one leaves some of the work to the libraries.
    bool const isOne = plan.frames.size() == 1;
    setMediaThreads(isOne && options.threads > 1 ? options.threads : 0);
    ShotSummary const summary = renderShot(node, plan, options);
    int status = summary.getStatus();
    if (StopSignals::getFlag() && !summary.unfinished.empty()) {
        try {
            throw Interrupted{StopSignals::getSignal(), describeOutcome(summary)};
        } catch (...) {
            Failure const failure = describeCurrentFailure();
            reporter.reportFailure(failure);
            status = failure.status;
        }
    }
    reporter.tell(makeEndEvent(summary, status));
    return status;
}

} // namespace

int runRender(RenderRequest const& request, Reporter& reporter)
{
    if (request.log.has_value()) {
        reporter.openLog(*request.log);
    }
    StopSignals const signals;
    RequestedSession const session(request.node);
    HostNode& node = session.getNode();
    ShotPlan plan = planShot(completeShot(request));
    setTimeOfPicture(request, node, plan);
    if (plan.isSequence) {
        reporter.nameFrames();
    }
    if (!plan.gaps.empty()) {
        reporter.warn("there are gaps: no frames " + plan.gaps);
    }
    checkOutputs(node, plan, request.existing, makeWriteOptions(request, node));
    if (request.isDryRun) {
        listPlan(plan);
        return static_cast<int>(ExitStatus::Done);
    }
    refuseTerminal({request.shot.input, request.mask.file.value_or("")});
    checkStandardOutput(request.output);
    if (plan.frames.empty()) {
        reporter.note("this chunk has no frames: the shot has " +
                      std::to_string(plan.nbFramesOfShot));
    } else {
        reportLook(node, listTimes(plan), reporter);
        reporter.showLook(describeLookAndMask(node, request));
    }
    return renderPlan(node, plan, makeOptions(request, node, plan, reporter), reporter);
}
