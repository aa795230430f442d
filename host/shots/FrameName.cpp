// Single pictures and the frames beside them.

#include "shots/FrameName.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::string_view digits = "0123456789";

std::string_view dropExtension(std::string_view name)
{
    std::size_t const dot = name.rfind('.');
    bool const isNumber = dot != std::string_view::npos && dot + 1 < name.size() &&
                          name.find_first_not_of(digits, dot + 1) == std::string_view::npos;
    return isNumber ? name : name.substr(0, dot);
}

/// A minus sign stands at the name's start or after a separator; between words it is a hyphen.
bool hasMinus(std::string_view name, std::size_t first)
{
    return first > 0 && name[first - 1] == '-' &&
           (first == 1 || name[first - 2] == '.' || name[first - 2] == '_');
}

/// The same in every locale; bytes beyond ASCII are parts of letters.
bool isLetter(char character)
{
    auto const lower = static_cast<unsigned char>(character | 0x20);
    return (lower >= 'a' && lower <= 'z') || static_cast<unsigned char>(character) >= 0x80;
}

/// Whether the frames beside a picture may be looked for by its number.
bool isOfSequence(std::string const& name, FrameNumber const& found)
{
    constexpr std::size_t fewestDigits = 3;
    bool const followsLetter = found.begin > 0 && isLetter(name[found.begin - 1]);
    bool const isWord = found.end < name.size() && isLetter(name[found.end]);
    return !found.isVersion && !isWord &&
           (!followsLetter || found.end - found.begin >= fewestDigits);
}

} // namespace

std::optional<FrameNumber> findFrameNumber(std::filesystem::path const& file)
{
    std::string const whole = file.filename().string();
    std::string_view const name = dropExtension(whole);
    std::optional<FrameNumber> version;
    std::size_t last = name.find_last_of(digits);
    while (last != std::string_view::npos) {
        std::size_t const before = name.find_last_not_of(digits, last);
        std::size_t const first = before == std::string_view::npos ? 0 : before + 1;
        std::size_t const start = hasMinus(name, first) ? first - 1 : first;
        long number = 0;
        bool const isRead =
            std::from_chars(name.data() + start, name.data() + last + 1, number).ec == std::errc();
        bool const isVersion = first > 0 && (name[first - 1] == 'v' || name[first - 1] == 'V');
        FrameNumber const found{number, start, last + 1, isVersion};
        if (isRead && !isVersion) {
            return found;
        }
        if (isRead && !version.has_value()) {
            version = found;
        }
        last = first == 0 ? std::string_view::npos : name.find_last_of(digits, first - 1);
    }
    return version;
}

std::string escapePattern(std::string const& name)
{
    std::string escaped;
    for (char const character : name) {
        escaped += std::string_view("#@%\\").find(character) == std::string_view::npos ? "" : "\\";
        escaped += character;
    }
    return escaped;
}

std::optional<FoundSequence> findSequence(std::filesystem::path const& file)
{
    std::string const name = file.filename().string();
    auto const found = findFrameNumber(file);
    if (!found.has_value() || !isOfSequence(name, *found)) {
        return {};
    }
    std::string const whole = file.string();
    std::size_t const folder = whole.size() - name.size();
    std::string const start = escapePattern(whole.substr(0, folder + found->begin));
    std::string const end = escapePattern(name.substr(found->end));
    std::size_t const width = found->end - found->begin;
    // Without zeros before it, the number may be one of numbers of any length.
    bool const isPadded = name.substr(found->begin, width).find_first_of("123456789") > 0;
    std::optional<FoundSequence> best;
    for (std::size_t const digitsOfIt : {width, std::size_t{1}}) {
        if (digitsOfIt != width && isPadded) {
            continue;
        }
        FramePattern const pattern(start + std::string(digitsOfIt, '#') + end);
        std::vector<Frame> frames = pattern.scan();
        if (frames.size() > (best.has_value() ? best->frames.size() : 1)) {
            best = FoundSequence{pattern, std::move(frames), found->number};
        }
    }
    return best;
}
