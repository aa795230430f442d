// From patterns and frames to files.

#include "shots/ShotPlan.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "shots/ShotError.h"

#include <functional>
#include <map>
#include <sys/stat.h>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace {

using Path = std::filesystem::path;

/// Finds out which files are the same, without looking at a folder twice.
class FileIdentity {
public:
    /// The path without links in its folders; also where there is nothing yet.
    std::string findRealPath(Path const& file)
    {
        Path const folder = file.has_parent_path() ? file.parent_path() : Path(".");
        auto const [known, isNew] = folders.try_emplace(folder.string());
        if (isNew) {
            std::error_code failure;
            Path const real = std::filesystem::weakly_canonical(folder, failure);
            known->second =
                failure ? std::filesystem::absolute(folder, failure).lexically_normal() : real;
        }
        return (known->second / file.filename()).lexically_normal().string();
    }

private:
    std::unordered_map<std::string, Path> folders;
};

/// Device and number of a file, through links; empty where there is none.
using FileNumber = std::optional<std::pair<dev_t, ino_t>>;

FileNumber findNumber(Path const& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) {
        return {};
    }
    return std::pair(status.st_dev, status.st_ino);
}

/// What a picture is to a frame, for error texts.
struct PictureRole {
    Frame frame;
    char const* name; ///< "input" or "mask"
};

/// Throws where an output is something else as well.
class OutputCheck {
public:
    explicit OutputCheck(std::vector<FrameFiles> const& shotFrames) : frames(shotFrames)
    {
        for (FrameFiles const& files : frames) {
            addSource(files.input, {files.frame, "input"});
            if (files.mask.has_value()) {
                addSource(*files.mask, {files.frame, "mask"});
            }
        }
    }

    void run()
    {
        std::map<FileNumber, Frame> existing;
        for (FrameFiles const& files : frames) {
            if (isStandardStream(files.output)) {
                continue;
            }
            checkPath(files);
            FileNumber const number = findNumber(files.output);
            if (number.has_value()) {
                checkNumber(files, number);
                checkOnce(files, existing.try_emplace(number, files.frame).first->second);
            }
        }
    }

private:
    void addSource(Path const& file, PictureRole const& role)
    {
        if (isStandardStream(file)) {
            return;
        }
        sources.try_emplace(identity.findRealPath(file), role);
    }

    void checkPath(FrameFiles const& files)
    {
        std::string const real = identity.findRealPath(files.output);
        checkOnce(files, outputs.try_emplace(real, files.frame).first->second);
        auto const source = sources.find(real);
        if (source != sources.end()) {
            refuse(files, source->second);
        }
    }

    /// Links of both kinds. Sources are only looked at where there is an output already.
    void checkNumber(FrameFiles const& files, FileNumber const& number)
    {
        if (sourceNumbers.empty()) {
            for (auto const& [path, role] : sources) {
                sourceNumbers.try_emplace(findNumber(path), role);
            }
        }
        auto const source = sourceNumbers.find(number);
        if (source != sourceNumbers.end()) {
            refuse(files, source->second);
        }
    }

    void checkOnce(FrameFiles const& files, Frame owner) const
    {
        if (owner != files.frame) {
            throw ShotError(ShotFailure::Request,
                            "frames " + std::to_string(owner) + " and " +
                                std::to_string(files.frame) + " have one output, " +
                                quoteFile(files.output) + "; put #### into its name");
        }
    }

    [[noreturn]] void refuse(FrameFiles const& files, PictureRole const& source) const
    {
        std::string const own = std::string("the ") + source.name + " itself";
        std::string const other =
            "the " + std::string(source.name) + " of frame " + std::to_string(source.frame);
        throw ShotError(ShotFailure::Request, "the output " + quoteFile(files.output) + " is " +
                                                  (source.frame == files.frame ? own : other) +
                                                  "; choose another name");
    }

    std::vector<FrameFiles> const& frames;
    FileIdentity identity;
    std::unordered_map<std::string, PictureRole> sources; // by real path
    std::unordered_map<std::string, Frame> outputs;       // by real path
    std::map<FileNumber, PictureRole> sourceNumbers;
};

std::vector<Frame> chooseFrames(ShotRequest const& request, FramePattern const& input,
                                bool hasFrameNames)
{
    if (request.frames.has_value()) {
        return *request.frames;
    }
    if (input.isSequence()) {
        std::vector<Frame> frames = input.scan();
        if (frames.empty()) {
            throwNothingMatches(input);
        }
        return frames;
    }
    if (hasFrameNames) {
        throw ShotError(ShotFailure::Request,
                        "the input \"" + input.getText() +
                            "\" is one picture; say with --frames which frames to make of it");
    }
    return {0};
}

} // namespace

ShotPlan planShot(ShotRequest const& request)
{
    FramePattern const input(request.input);
    FramePattern const output(request.output);
    std::optional<FramePattern> mask;
    if (request.mask.has_value()) {
        mask.emplace(*request.mask);
    }
    ShotPlan plan;
    plan.inputName = request.input;
    plan.outputName = request.output;
    plan.fixedFolder = output.getFixedFolder();
    bool const hasFrameNames = output.isSequence() || (mask.has_value() && mask->isSequence());
    plan.isSequence = input.isSequence() || hasFrameNames;
    std::vector<Frame> const frames = chooseFrames(request, input, hasFrameNames);
    if (!request.frames.has_value()) {
        plan.gaps = describeGaps(frames);
    }
    for (Frame const frame : frames) {
        FrameFiles files{
            frame, static_cast<double>(frame), input.expand(frame), output.expand(frame), {}};
        if (mask.has_value()) {
            files.mask = mask->expand(frame);
        }
        plan.frames.push_back(std::move(files));
    }
    OutputCheck(plan.frames).run();
    plan.nbFramesOfShot = plan.frames.size();
    auto const [begin, end] = findChunk(request.chunk, plan.frames.size());
    plan.frames.assign(
        std::make_move_iterator(plan.frames.begin() + static_cast<std::ptrdiff_t>(begin)),
        std::make_move_iterator(plan.frames.begin() + static_cast<std::ptrdiff_t>(end)));
    return plan;
}
