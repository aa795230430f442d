#pragma once

#include "shots/FramePattern.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Names of single pictures that are perhaps frames of a sequence.

/// Where a file's name tells its frame.
struct FrameNumber {
    long number;
    std::size_t begin; ///< in the name without folders; of the sign, if there is one
    std::size_t end;
    bool isVersion; ///< "v2", and there is no other number
};

/// The number by which a file of a sequence tells its frame: the last one in its name, but rather
/// one that is no version.
std::optional<FrameNumber> findFrameNumber(std::filesystem::path const& file);

/// `name` as a pattern of just that name.
std::string escapePattern(std::string const& name);

/// A sequence and the frames that have a file, rising.
struct FoundSequence {
    FramePattern pattern;
    std::vector<Frame> frames;
    Frame frame; ///< the one that it was found by
};

/// The sequence that a picture is a frame of; empty for one that stands alone. Its number counts if
/// no letter follows it, it is no version, and it has three digits or more where a letter stands
/// before it. Throws ShotError for a folder that cannot be read.
std::optional<FoundSequence> findSequence(std::filesystem::path const& file);
