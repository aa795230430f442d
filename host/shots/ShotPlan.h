#pragma once

#include "shots/FrameList.h"
#include "shots/FramePattern.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// One frame's pictures.
struct FrameFiles {
    Frame frame = 0;
    double time = 0.0; ///< at which values are taken; the frame, unless a single picture says more
    std::filesystem::path input;
    std::filesystem::path output;
    std::optional<std::filesystem::path> mask;
};

/// Which pictures are to be rendered. Names are patterns; see FramePattern. "-" is standard input
/// and output.
struct ShotRequest {
    std::string input;
    std::string output;
    std::optional<std::string> mask;          ///< a sequence or one picture for all frames
    std::optional<std::vector<Frame>> frames; ///< without: those that there are
    Chunk chunk;
};

/// Frame by frame what becomes of which file.
struct ShotPlan {
    std::vector<FrameFiles> frames; ///< of the chunk
    std::string inputName;          ///< as it was asked for
    std::string outputName;
    std::filesystem::path fixedFolder; ///< of the outputs; see FramePattern
    std::size_t nbFramesOfShot = 0;    ///< of all chunks
    bool isSequence = false;           ///< some name is a pattern
    std::string gaps;                  ///< frames that a scanned folder lacks; "" for none
};

/// Finds the frames and checks that no output is another frame's output, an input or a mask, also
/// through links: of all frames, not only of the chunk. Opens no picture. A frame that is asked for
/// need not have an input. Any thread. Throws ShotError: Request for names and frames that do not
/// go together, Frames where nothing matches, Surroundings for a folder that cannot be read.
ShotPlan planShot(ShotRequest const& request);
