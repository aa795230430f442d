// --frames and --frames-from: which frames of a sequence.

#include "remapcolor/options/FrameListOptions.h"

#include "files/FileError.h"
#include "files/StandardFiles.h"
#include "remapcolor/options/CommandOptions.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"

void addFrameListOptions(CommandOptions& options, std::optional<std::vector<Frame>>& frames,
                         std::string& framesFile)
{
    options.addOption("-f,--frames", "LIST",
                      "Frames, such as 1-10,15,20-40x5 (default: all)\n\n"
                      "The frame is the time of keyframed values. Without a list the frames are "
                      "all that INPUT matches.",
                      [&](std::string const& text) {
                          frames = parseFrames(text);
                          framesFile.clear();
                      });
    options.addOption("--frames-from", "FILE", "Read that list from a file, or from - (input)",
                      [&](std::string const& text) { framesFile = text; }, {ValueHint::Kind::File});
}

std::vector<Frame> loadFrames(std::string const& file)
{
    try {
        return parseFrames(loadTextFile(file));
    } catch (FileError const& error) {
        throw UsageError("cannot read the frames from " + nameInput(file) + ": " + error.what());
    }
}
