// Lists of frames: parsing, writing, cutting into parts.

#include "shots/FrameList.h"

#include "shots/ShotError.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <unordered_set>

namespace {

constexpr std::size_t mostFrames = 1'000'000;
constexpr std::size_t mostNamedGaps = 8;
constexpr std::string_view separators = ", \t\r\n";

struct Range {
    Frame first;
    Frame last;
    Frame step; ///< at least 1, also downwards
};

constexpr char const* listHint = "; a list of frames is like 1-10,15,20-40x5 or -3--1";

[[noreturn]] void refuse(std::string_view item, std::string const& reason)
{
    throw ShotError(ShotFailure::Request,
                    "the frames \"" + std::string(item) + "\" " + reason + listHint);
}

/// Takes a whole number off the front of `rest`; none leaves `rest` as it is.
std::optional<Frame> takeNumber(std::string_view& rest)
{
    Frame number = 0;
    char const* const end = rest.data() + rest.size();
    auto const [stop, failure] = std::from_chars(rest.data(), end, number);
    if (failure != std::errc() || number > largestFrame || number < -largestFrame) {
        return std::nullopt;
    }
    rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
    return number;
}

constexpr char const* numberTooLarge = "hold a number that is too large";

bool beginsNumber(std::string_view rest)
{
    return rest.find_first_of("0123456789") == (rest.starts_with('-') ? 1 : 0);
}

bool takeCharacter(std::string_view& rest, char character)
{
    bool const isThere = rest.starts_with(character);
    rest.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

Range parseRange(std::string_view item)
{
    std::string_view rest = item;
    std::optional<Frame> const first = takeNumber(rest);
    if (!first.has_value()) {
        refuse(item, beginsNumber(rest) ? numberTooLarge : "are no number or range of numbers");
    }
    Range range{*first, *first, 1};
    if (takeCharacter(rest, '-')) {
        std::optional<Frame> const last = takeNumber(rest);
        if (!last.has_value()) {
            refuse(item, beginsNumber(rest) ? numberTooLarge : "do not say where they end");
        }
        range.last = *last;
        if (takeCharacter(rest, 'x')) {
            std::optional<Frame> const step = takeNumber(rest);
            if (!step.has_value() || *step < 1) {
                refuse(item, "need a step of at least 1");
            }
            range.step = *step;
        }
    }
    if (!rest.empty()) {
        refuse(item, "are followed by \"" + std::string(rest) + "\"");
    }
    return range;
}

/// "5", "5-6" or "5-15x5"
std::string formatRange(Range const& range)
{
    if (range.first == range.last) {
        return std::to_string(range.first);
    }
    std::string const text = std::to_string(range.first) + "-" + std::to_string(range.last);
    return range.step == 1 ? text : text + "x" + std::to_string(range.step);
}

void sortOnce(std::vector<Frame>& frames)
{
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
}

/// The end of the run of even steps that begins at `first`: one past its last frame.
std::size_t findRunEnd(std::vector<Frame> const& frames, std::size_t first)
{
    std::size_t end = first + 1;
    while (end < frames.size() &&
           frames[end] - frames[end - 1] == frames[first + 1] - frames[first]) {
        ++end;
    }
    return end;
}

void append(std::string& list, std::string const& item)
{
    list += (list.empty() ? "" : ",") + item;
}

/// What is missing in a row of even steps.
std::vector<Range> findGapRanges(std::vector<Frame> frames)
{
    sortOnce(frames);
    Frame step = 0;
    for (std::size_t index = 1; index < frames.size(); ++index) {
        step = std::gcd(step, frames[index] - frames[index - 1]);
    }
    std::vector<Range> gaps;
    for (std::size_t index = 1; index < frames.size(); ++index) {
        if (frames[index] - frames[index - 1] != step) {
            gaps.push_back({frames[index - 1] + step, frames[index] - step, step});
        }
    }
    return gaps;
}

} // namespace

std::vector<Frame> parseFrames(std::string_view text)
{
    std::vector<Frame> frames;
    std::unordered_set<Frame> known;
    std::string_view rest = text;
    for (;;) {
        rest.remove_prefix(std::min(rest.find_first_not_of(separators), rest.size()));
        if (rest.empty()) {
            break;
        }
        std::string_view const item = rest.substr(0, rest.find_first_of(separators));
        rest.remove_prefix(item.size());
        Range const range = parseRange(item);
        Frame const steps = std::abs(range.last - range.first) / range.step;
        if (frames.size() + static_cast<std::size_t>(steps) >= mostFrames) {
            refuse(item, "make more than a million");
        }
        Frame const direction = range.last < range.first ? -range.step : range.step;
        for (Frame step = 0; step <= steps; ++step) {
            Frame const frame = range.first + step * direction;
            if (known.insert(frame).second) {
                frames.push_back(frame);
            }
        }
    }
    if (frames.empty()) {
        throw ShotError(ShotFailure::Request,
                        std::string("the list of frames is empty") + listHint);
    }
    return frames;
}

std::string formatFrames(std::vector<Frame> frames)
{
    sortOnce(frames);
    std::string list;
    for (std::size_t first = 0; first < frames.size();) {
        std::size_t end = findRunEnd(frames, first);
        Frame const step = end - first < 2 ? 1 : frames[first + 1] - frames[first];
        if (end - first == 2 && step != 1) {
            --end; // two frames apart are no range
        }
        append(list, formatRange({frames[first], frames[end - 1], step}));
        first = end;
    }
    return list;
}

std::string describeGaps(std::vector<Frame> frames)
{
    std::string list;
    std::size_t nbNamed = 0;
    for (Range const& gap : findGapRanges(std::move(frames))) {
        if (nbNamed++ == mostNamedGaps) {
            return list + ",...";
        }
        append(list, formatRange(gap));
    }
    return list;
}

std::vector<Frame> findGaps(std::vector<Frame> frames)
{
    std::vector<Frame> missing;
    for (Range const& gap : findGapRanges(std::move(frames))) {
        for (Frame frame = gap.first; frame <= gap.last && missing.size() < mostFrames;
             frame += gap.step) {
            missing.push_back(frame);
        }
    }
    return missing;
}

Chunk parseChunk(std::string_view text)
{
    std::string_view rest = text;
    std::optional<Frame> const index = takeNumber(rest);
    bool const hasCount = takeCharacter(rest, '/');
    std::optional<Frame> const count = takeNumber(rest);
    if (!index.has_value() || !hasCount || !count.has_value() || !rest.empty() || *index < 0 ||
        *index >= *count) {
        throw ShotError(ShotFailure::Request,
                        "a chunk is I/N with I from 0 to N - 1, such as 0/4 for the first of "
                        "four, not \"" +
                            std::string(text) + "\"");
    }
    return {static_cast<std::size_t>(*index), static_cast<std::size_t>(*count)};
}

ChunkRange findChunk(Chunk const& chunk, std::size_t size)
{
    // The first `longer` parts have one thing more.
    std::size_t const shortest = size / chunk.count;
    std::size_t const longer = size % chunk.count;
    auto const beginOf = [&](std::size_t index) {
        return index * shortest + std::min(index, longer);
    };
    return {beginOf(chunk.index), beginOf(chunk.index + 1)};
}
