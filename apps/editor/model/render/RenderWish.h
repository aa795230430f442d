#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// What is to be rendered and how, in the words of the command line; empty ones are left out.
struct RenderWish {
    std::string input;            ///< a pattern; see FramePattern
    std::string output;           ///< the same
    std::string frames{};         ///< of a sequence: a list
    std::optional<double> time{}; ///< of a single picture
    std::string existing{};
    std::string missing{};
    std::string depth{};
    std::string compression{};
};

/// The words after the program's name. Names are those of files whatever folder they are used in.
std::vector<std::string> makeRenderWords(RenderWish const& wish,
                                         std::filesystem::path const& project);

/// An output beside an input, as patterns: "shot_remap.####.exr" for "shot.####.exr".
std::string suggestOutput(std::string const& input);
