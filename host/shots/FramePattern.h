#pragma once

#include "shots/FrameList.h"

#include <filesystem>
#include <string>
#include <vector>

/// The name of a picture, or of one picture a frame: a run of `#` or `@` stands for the frame's
/// number with at least as many digits, `%04d` for one of at least four, `%d` for one without
/// leading zeros; numbers with more digits keep them, and a minus sign counts as one. They may
/// stand in the names of folders too, and several times. `\#`, `\@`, `\%` and `\\` are the
/// characters themselves, and `%%` is a `%`. Immutable; any thread.
class FramePattern {
public:
    /// Throws ShotError (Request): two numbers side by side, padding by spaces, more than twenty
    /// digits.
    explicit FramePattern(std::string const& text);

    /// False for one picture.
    bool isSequence() const { return hasNumber; }

    /// As it was written.
    std::string const& getText() const { return text; }

    /// The frame's file.
    std::filesystem::path expand(Frame frame) const;

    /// The innermost folder that does not depend on the frame; "." for the current one.
    std::filesystem::path getFixedFolder() const;

    /// The frames that have a file, from the lowest to the highest; for sequences. A file of frame
    /// 7 is one that expand(7) names: 007 is none of "####". Throws ShotError: Frames for a folder
    /// that is not there, Surroundings for one that cannot be read.
    std::vector<Frame> scan() const;

private:
    /// Some text, or the frame's number.
    struct Piece {
        std::string literal; ///< of text
        int digits = 0;      ///< of a number: the fewest there are; 0 for text
    };
    using Pieces = std::vector<Piece>;

    void addNumber(int digits);
    void addLiteral(char character);
    std::size_t parseRun(std::size_t start);
    std::size_t parsePercent(std::size_t start);
    Pieces getNumberedName() const;
    static std::string expand(Pieces const& pieces, Frame frame);

    std::string text;
    Pieces pieces;
    bool hasNumber = false;
};

/// Throws ShotError (Frames): there is no file of that name in any frame.
[[noreturn]] void throwNothingMatches(FramePattern const& pattern);
