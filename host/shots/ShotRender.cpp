// The frames of a shot, several at a time.

#include "shots/ShotRender.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "media/ExistingPicture.h"
#include "shots/FrameRun.h"
#include "shots/MaskWindows.h"
#include "shots/ShotError.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <memory>
#include <system_error>

namespace {

using Kind = ShotEvent::Kind;
using Path = std::filesystem::path;

constexpr std::chrono::milliseconds longestWait{50};

bool isThere(Path const& file)
{
    std::error_code ignored; // who opens it says what is wrong
    return std::filesystem::exists(file, ignored);
}

/// Unlike a file that may not be looked at, which is found out when it is opened.
bool isMissing(Path const& file)
{
    std::error_code failure;
    return !std::filesystem::exists(file, failure) && !failure;
}

std::string formatSize(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight());
}

/// One run over the frames of a plan.
class ShotRender {
public:
    ShotRender(HostNode& shotNode, ShotPlan const& shotPlan, ShotOptions const& shotOptions)
        : node(shotNode), plan(shotPlan), options(shotOptions),
          pool({.threads = options.threads,
                .memory = options.memory,
                .cancelled = options.cancelled})
    {
        summary.total = plan.frames.size();
    }

    ShotSummary run()
    {
        tellStart();
        while (hasMore() || !running.empty()) {
            while (hasMore() && hasRoom()) {
                begin(plan.frames[nextFrame++]);
                showProgress();
            }
            conclude(pool.waitForEnd(running.empty() ? std::chrono::milliseconds(0) : longestWait));
            showProgress();
        }
        for (; nextFrame < plan.frames.size(); ++nextFrame) {
            summary.unfinished.push_back(plan.frames[nextFrame].frame);
        }
        if (nbMissing == plan.nbFramesOfShot && nbMissing > 0) {
            failForMissing();
        }
        summary.milliseconds = getMilliseconds();
        return summary;
    }

private:
    /// A frame that workers have.
    struct Running {
        RenderPool::Ticket ticket;
        std::size_t bytes; ///< of a strip
        std::unique_ptr<FrameRun> frame;
    };

    bool isCancelled() const { return options.cancelled != nullptr && *options.cancelled; }
    bool hasMore() const { return nextFrame < plan.frames.size() && !isStopped && !isCancelled(); }

    /// One frame more than workers, so that the next is open when one of them has nothing to do. A
    /// frame is taken to be as large as the last one.
    bool hasRoom() const
    {
        std::size_t bytes = 0;
        for (Running const& one : running) {
            bytes += one.bytes;
        }
        bool const isInMemory = running.empty() || bytes + running.back().bytes <= options.memory;
        return isInMemory && running.size() <= static_cast<std::size_t>(options.threads);
    }

    double getMilliseconds() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started)
            .count();
    }

    std::size_t countDone() const
    {
        return summary.rendered + summary.skipped + summary.failed.size();
    }

    void showProgress() const
    {
        double done = static_cast<double>(countDone());
        for (Running const& one : running) {
            done += one.frame->getShare(pool.getShare(one.ticket));
        }
        options.progress(done);
    }

    void tellStart() const
    {
        ShotEvent event;
        event.kind = Kind::Start;
        if (!plan.frames.empty()) {
            event.input = plan.inputName;
            event.output = plan.outputName;
        }
        std::vector<Frame> frames;
        for (FrameFiles const& files : plan.frames) {
            frames.push_back(files.frame);
        }
        event.frames = formatFrames(frames);
        event.threads = options.threads;
        event.memory = options.memory;
        event.total = summary.total;
        options.listener(event);
    }

    void tell(Kind kind, FrameFiles const& files, std::string const& message, int status = 0,
              double milliseconds = 0.0) const
    {
        ShotEvent event;
        event.kind = kind;
        event.frame = files.time;
        event.input = files.input;
        event.output = files.output;
        event.message = message;
        event.status = status;
        event.milliseconds = milliseconds;
        event.done = countDone();
        event.total = summary.total;
        options.listener(event);
    }

    void fail(FrameFiles const& files, std::exception_ptr const& failure)
    {
        FrameFailure const described = describeFailure(failure);
        summary.failed.push_back(files.frame);
        summary.addFailure(described.kind);
        tell(Kind::Error, files, described.text, toExitStatus(described.kind));
    }

    /// A shot of which nothing is there is hardly meant, whatever may be skipped.
    void failForMissing()
    {
        summary.addFailure(ShotFailure::Frames);
        ShotEvent event;
        event.kind = Kind::Error;
        event.message =
            "there is no input for any frame: nothing matches " + nameInput(plan.inputName);
        event.status = toExitStatus(ShotFailure::Frames);
        event.done = countDone();
        event.total = summary.total;
        options.listener(event);
    }

    void skip(FrameFiles const& files, std::string const& reason)
    {
        ++summary.skipped;
        tell(Kind::Skip, files, reason);
    }

    /// Hands the frame to the workers, or deals with it at once.
    void begin(FrameFiles const& files)
    {
        try {
            if (isDealtWithByMissing(files)) {
                return;
            }
            auto frame = std::make_unique<FrameRun>(files, options.read, options.mask);
            frame->connect(node, options.maskUse);
            if (isThere(files.output) && isDealtWithByExisting(*frame)) {
                return;
            }
            compareWithFirst(*frame);
            frame->create(options.write, plan.fixedFolder);
            RenderJob const job = frame->getJob();
            running.push_back({pool.add(job), estimateStripBytes(job), std::move(frame)});
        } catch (...) {
            if (isCancelled()) { // while standard input was waited for
                summary.unfinished.push_back(files.frame);
            } else {
                fail(files, correctFailure(files, std::current_exception()));
            }
        }
    }

    bool isDealtWithByMissing(FrameFiles const& files)
    {
        if (options.missing == MissingInput::Fail) {
            return false; // opening it says so
        }
        bool const isMaskMissing = files.mask.has_value() && isMissing(*files.mask);
        if (!isMaskMissing && !isMissing(files.input)) {
            return false;
        }
        if (options.missing == MissingInput::Stop) {
            isStopped = true;
            return false;
        }
        nbMissing += isMaskMissing ? 0 : 1;
        skip(files, quoteFile(isMaskMissing ? *files.mask : files.input) + " is missing");
        return true;
    }

    bool isDealtWithByExisting(FrameRun const& frame)
    {
        FrameFiles const& files = frame.getFiles();
        switch (options.existing) {
        case ExistingOutput::Overwrite: return false;
        case ExistingOutput::Error:
            throw ShotError(ShotFailure::Request, quoteFile(files.output) + " is there already");
        case ExistingOutput::Skip: break;
        }
        std::optional<std::string> const fault = findFault(frame);
        if (!fault.has_value()) {
            skip(files, quoteFile(files.output) + " is there");
            return true;
        }
        tell(Kind::Note, files, quoteFile(files.output) + " is made again: " + *fault);
        return false;
    }

    /// Why an output that is there cannot stay.
    std::optional<std::string> findFault(FrameRun const& frame) const
    {
        FrameFiles const& files = frame.getFiles();
        if (options.newestChange.has_value()) {
            std::int64_t const written = readFileStamp(files.output).written;
            if (written < frame.getTimeOfSources()) {
                return "its input or mask is newer";
            }
            if (written < *options.newestChange) {
                return "the project is newer";
            }
        }
        return findPictureFault(files.output, frame.getSource(), frame.getResultFormat(),
                                options.read, options.write);
    }

    /// A frame unlike the first one is rendered as it is, but hardly meant.
    void compareWithFirst(FrameRun const& frame)
    {
        FrameFiles const& files = frame.getFiles();
        ImageInfo const& info = frame.getSource().getInfo();
        std::string const size = formatSize(info.displayWindow);
        if (frame.getMask() != nullptr) {
            std::string const windows = describeMaskWindows(frame.getMask()->getInfo(), info);
            if (!windows.empty() && windows != lastMaskNote) {
                tell(Kind::Note, files, windows);
                lastMaskNote = windows;
            }
        }
        Likeness const likeness{
            files.frame, size, info.format.getComponents(), info.storage,
            frame.getSource().getFurtherBytesPerRow() /
                static_cast<std::size_t>(std::max(info.dataWindow.getWidth(), 1))};
        if (!first.has_value()) {
            first = likeness;
        }
        std::string const other = "frame " + std::to_string(first->frame);
        if (size != first->size) {
            tell(Kind::Warning, files, "it is " + size + ", " + other + " is " + first->size);
        } else if (likeness.components != first->components || likeness.storage != first->storage ||
                   likeness.furtherBytes != first->furtherBytes) {
            tell(Kind::Warning, files, "its channels are not those of " + other);
        }
    }

    /// A folder that was there when the run began is a matter of the surroundings.
    static std::exception_ptr correctFailure(FrameFiles const& files,
                                             std::exception_ptr const& failure)
    {
        Path const folder = files.output.has_parent_path() ? files.output.parent_path() : ".";
        try {
            std::rethrow_exception(failure);
        } catch (ImageFileError const& error) {
            if (error.getKind() == ImageFailure::Request && !isThere(folder)) {
                return std::make_exception_ptr(
                    ImageFileError(ImageFailure::Surroundings, error.what()));
            }
        } catch (...) {
        }
        return failure;
    }

    void conclude(std::optional<RenderPool::Ended> const& ended)
    {
        if (!ended.has_value()) {
            return;
        }
        auto const found = std::find_if(running.begin(), running.end(), [&](Running const& one) {
            return one.ticket == ended->ticket;
        });
        std::exception_ptr failure = ended->failure;
        try {
            if (!failure && found->frame->startNextSection()) {
                found->ticket = pool.add(found->frame->getJob());
                return;
            }
            if (!failure) {
                options.deliver(found->frame->getFiles());
            }
        } catch (...) {
            failure = std::current_exception();
        }
        std::unique_ptr<FrameRun> const frame = std::move(found->frame);
        running.erase(found);
        FrameFiles const& files = frame->getFiles();
        if (!failure) {
            // What a picture lacks is told of a picture that is there.
            for (FrameMessage const& message : frame->takeMessages()) {
                tell(message.kind == FrameMessage::Kind::Note ? Kind::Note : Kind::Warning, files,
                     message.text);
            }
            ++summary.rendered;
            tell(Kind::Frame, files, {}, 0, frame->getMilliseconds());
        } else if (isCancellation(failure)) {
            summary.unfinished.push_back(files.frame);
        } else {
            fail(files, correctFailure(files, failure));
        }
    }

    static bool isCancellation(std::exception_ptr const& failure)
    {
        try {
            std::rethrow_exception(failure);
        } catch (RenderCancelled const&) {
            return true;
        } catch (...) {
            return false;
        }
    }

    /// What frames of a shot have in common.
    struct Likeness {
        Frame frame;
        std::string size;
        IxPixelFormat::Components components;
        SampleStorage storage;
        std::size_t furtherBytes; ///< of a pixel
    };

    HostNode& node;
    ShotPlan const& plan;
    ShotOptions const& options;
    std::chrono::steady_clock::time_point const started = std::chrono::steady_clock::now();
    ShotSummary summary;
    std::size_t nextFrame = 0;
    std::size_t nbMissing = 0; // frames that were skipped for want of their input
    bool isStopped = false;
    std::optional<Likeness> first;
    std::string lastMaskNote;
    std::list<Running> running; // oldest first; outlives what the pool does with it
    RenderPool pool;
};

} // namespace

void checkOutputs(HostNode& node, ShotPlan const& plan, ExistingOutput existing,
                  WriteOptions const& options)
{
    if (plan.frames.empty()) {
        return;
    }
    // Folders with a frame's number in their name are made as they are needed.
    Path const& first = plan.frames.front().output;
    bool const isFixed = isStandardStream(first) || !first.has_parent_path() ||
                         first.parent_path() == plan.fixedFolder;
    checkOutput(isFixed ? first : plan.fixedFolder / first.filename(), foreseeDepth(node), options);
    std::vector<Frame> there;
    for (FrameFiles const& files : plan.frames) {
        if (existing == ExistingOutput::Error && isThere(files.output)) {
            there.push_back(files.frame);
        }
    }
    if (!there.empty() && !plan.isSequence) {
        throw ShotError(ShotFailure::Request,
                        nameOutput(plan.frames.front().output) +
                            " is there already; remove it, or take --existing skip or overwrite");
    }
    if (!there.empty()) {
        throw ShotError(ShotFailure::Request,
                        "outputs are there already, of the frames " + formatFrames(there) +
                            "; remove them, or take --existing skip or overwrite");
    }
}

ShotSummary renderShot(HostNode& node, ShotPlan const& plan, ShotOptions const& options)
{
    return ShotRender(node, plan, options).run();
}

ShotEvent makeEndEvent(ShotSummary const& summary, int status)
{
    ShotEvent event;
    event.kind = Kind::End;
    event.status = status;
    event.summary = summary;
    event.done = summary.rendered + summary.skipped + summary.failed.size();
    event.total = summary.total;
    return event;
}
