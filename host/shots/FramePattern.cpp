// Names with a frame's number in them.

#include "shots/FramePattern.h"

#include "files/FileError.h"
#include "shots/ShotError.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

namespace {

constexpr int mostDigits = 20;
constexpr std::string_view runCharacters = "#@";
constexpr std::string_view escapable = "#@%\\";

[[noreturn]] void refuse(std::string const& text, std::string const& reason)
{
    throw ShotError(ShotFailure::Request, "the name \"" + text + "\" " + reason);
}

std::string formatPadded(Frame frame, int digits)
{
    std::string const magnitude = std::to_string(frame < 0 ? -frame : frame);
    std::string const sign = frame < 0 ? "-" : "";
    std::size_t const length = sign.size() + magnitude.size();
    auto const wanted = static_cast<std::size_t>(digits);
    return sign + std::string(wanted > length ? wanted - length : 0, '0') + magnitude;
}

/// The frame that all of `digits` says.
std::optional<Frame> parseNumber(std::string_view digits)
{
    Frame frame = 0;
    char const* const end = digits.data() + digits.size();
    auto const [stop, failure] = std::from_chars(digits.data(), end, frame);
    bool const isFrame =
        failure == std::errc() && stop == end && frame <= largestFrame && frame >= -largestFrame;
    return isFrame ? std::optional(frame) : std::nullopt;
}

[[noreturn]] void throwUnreadable(std::filesystem::path const& folder, std::error_code failure)
{
    bool const isMissing =
        failure == std::errc::no_such_file_or_directory || failure == std::errc::not_a_directory;
    throw ShotError(isMissing ? ShotFailure::Frames : ShotFailure::Surroundings,
                    "cannot read the folder \"" + folder.string() +
                        "\": " + describeSystemError(failure.value()));
}

} // namespace

FramePattern::FramePattern(std::string const& wholeText) : text(wholeText)
{
    for (std::size_t position = 0; position < text.size();) {
        char const character = text[position];
        bool const hasNext = position + 1 < text.size();
        if (character == '\\' && hasNext && escapable.find(text[position + 1]) != escapable.npos) {
            addLiteral(text[position + 1]);
            position += 2;
        } else if (runCharacters.find(character) != runCharacters.npos) {
            position = parseRun(position);
        } else if (character == '%') {
            position = parsePercent(position);
        } else {
            addLiteral(character);
            ++position;
        }
    }
}

void FramePattern::addLiteral(char character)
{
    if (pieces.empty() || pieces.back().digits > 0) {
        pieces.emplace_back();
    }
    pieces.back().literal += character;
}

void FramePattern::addNumber(int digits)
{
    if (digits > mostDigits) {
        refuse(text, "asks for more than " + std::to_string(mostDigits) + " digits");
    }
    if (!pieces.empty() && pieces.back().digits > 0) {
        refuse(text, "has two frame numbers side by side; write a character itself as \\# or \\@");
    }
    pieces.push_back({"", std::max(digits, 1)});
    hasNumber = true;
}

/// A run of one character; returns where it ends.
std::size_t FramePattern::parseRun(std::size_t start)
{
    std::size_t const end = std::min(text.find_first_not_of(text[start], start), text.size());
    constexpr std::size_t tooMany = mostDigits + 1;
    addNumber(static_cast<int>(std::min(end - start, tooMany)));
    return end;
}

/// "%d", "%04d" and "%%"; anything else is a percent sign. Returns where it ends.
std::size_t FramePattern::parsePercent(std::size_t start)
{
    std::size_t const next = start + 1;
    if (text.compare(next, 1, "%") == 0) {
        addLiteral('%');
        return next + 1;
    }
    std::size_t const letter = std::min(text.find_first_not_of("0123456789", next), text.size());
    if (text.compare(letter, 1, "d") != 0) {
        addLiteral('%');
        return next;
    }
    std::string const width = text.substr(next, letter - next);
    if (!width.empty() && width.front() != '0') {
        refuse(text, "asks for numbers padded with spaces; write %0" + width + "d");
    }
    constexpr Frame tooMany = mostDigits + 1;
    Frame const digits = width.empty() ? 1 : parseNumber(width).value_or(tooMany);
    addNumber(static_cast<int>(std::min(digits, tooMany)));
    return letter + 1;
}

std::string FramePattern::expand(Pieces const& pieces, Frame frame)
{
    std::string name;
    for (Piece const& piece : pieces) {
        name += piece.digits > 0 ? formatPadded(frame, piece.digits) : piece.literal;
    }
    return name;
}

std::filesystem::path FramePattern::expand(Frame frame) const
{
    return expand(pieces, frame);
}

std::filesystem::path FramePattern::getFixedFolder() const
{
    std::string const start =
        pieces.empty() || pieces.front().digits > 0 ? std::string() : pieces.front().literal;
    std::size_t const slash = start.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return start.substr(0, std::max(slash, std::size_t{1}));
}

/// The outermost name with a number in it: a file's, or a folder's on the way to it.
FramePattern::Pieces FramePattern::getNumberedName() const
{
    Pieces name;
    for (Piece piece : pieces) {
        std::size_t cut = std::string::npos;
        if (name.empty()) {
            piece.literal.erase(0, piece.literal.rfind('/') + 1);
        } else {
            cut = piece.literal.find('/');
            piece.literal.erase(std::min(cut, piece.literal.size()));
        }
        name.push_back(piece);
        if (cut != std::string::npos) {
            break;
        }
    }
    return name;
}

std::vector<Frame> FramePattern::scan() const
{
    Pieces const numbered = getNumberedName();
    std::string const start = numbered.front().literal;
    std::filesystem::path const folder = getFixedFolder();
    std::error_code failure;
    std::filesystem::directory_iterator entries(folder, failure);
    std::vector<Frame> frames;
    for (; !failure && entries != std::filesystem::directory_iterator();
         entries.increment(failure)) {
        std::string const name = entries->path().filename().string();
        if (!name.starts_with(start)) {
            continue;
        }
        // What follows the number may begin with digits too: every length is tried.
        std::size_t const end =
            std::min(name.find_first_not_of("-0123456789", start.size()), name.size());
        for (std::size_t stop = start.size() + 1; stop <= end; ++stop) {
            auto const frame =
                parseNumber(std::string_view(name).substr(start.size(), stop - start.size()));
            if (frame.has_value() && expand(numbered, *frame) == name) {
                frames.push_back(*frame);
            }
        }
    }
    if (failure) {
        throwUnreadable(folder, failure);
    }
    std::sort(frames.begin(), frames.end());
    if (expand(0).filename() != expand(numbered, 0)) {
        // What was found are folders: the file within may be missing.
        std::erase_if(frames, [this, &failure](Frame frame) {
            return !std::filesystem::exists(expand(frame), failure);
        });
    }
    return frames;
}

void throwNothingMatches(FramePattern const& pattern)
{
    throw ShotError(ShotFailure::Frames,
                    "nothing matches \"" + pattern.getText() + "\" in \"" +
                        pattern.getFixedFolder().string() +
                        "\"; every # stands for a digit, and \\# or \\@ for the character itself");
}
