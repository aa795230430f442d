// What is wrong with the pictures of a shot.

#include "shots/ShotCheck.h"

#include "shots/FramePattern.h"
#include "shots/ShotError.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

using Fault = FrameFault::Kind;

/// A frame that could be read.
struct ReadFrame {
    Frame frame;
    std::filesystem::path file;
    PictureScan scan;
};

std::string format(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight()) + " at " +
           std::to_string(window.x0) + "," + std::to_string(window.y0);
}

std::string formatDisplay(ReadFrame const& frame)
{
    return format(frame.scan.description.parts.front().displayWindow);
}

std::string formatData(ReadFrame const& frame)
{
    return format(frame.scan.description.parts.front().dataWindow);
}

/// Every channel as "name type", with its part where there are several.
std::set<std::string> listChannels(ReadFrame const& frame)
{
    std::set<std::string> channels;
    auto const& parts = frame.scan.description.parts;
    for (std::size_t number = 0; number < parts.size(); ++number) {
        PartDescription const& part = parts[number];
        std::string const name = part.name.empty() ? std::to_string(number) : part.name;
        std::string const place = parts.size() > 1 ? " of part " + name : "";
        for (ChannelDescription const& channel : part.channels) {
            channels.insert(channel.name + " (" + channel.type + ")" + place);
        }
    }
    return channels;
}

std::string join(std::vector<std::string> const& texts)
{
    constexpr std::size_t mostNamed = 6;
    std::string list;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        if (index == mostNamed) {
            return list + " and " + std::to_string(texts.size() - mostNamed) + " more";
        }
        list += (index == 0 ? "" : ", ") + texts[index];
    }
    return list;
}

std::vector<std::string> subtract(std::set<std::string> const& from,
                                  std::set<std::string> const& what)
{
    std::vector<std::string> rest;
    std::set_difference(from.begin(), from.end(), what.begin(), what.end(),
                        std::back_inserter(rest));
    return rest;
}

std::string describeDifference(std::set<std::string> const& own, std::set<std::string> const& usual)
{
    std::vector<std::string> const lacking = subtract(usual, own);
    std::vector<std::string> const further = subtract(own, usual);
    std::string text = lacking.empty() ? "" : "it lacks " + join(lacking);
    if (!further.empty()) {
        text += (text.empty() ? "it has " : ", and has ") + join(further);
    }
    return text + (lacking.empty() ? ", unlike most frames" : ", which most frames have");
}

/// What more than half of the frames have; nothing where there is no such thing.
template <typename Feature>
auto findUsual(std::vector<ReadFrame> const& frames, Feature const& featureOf)
{
    using Value = decltype(featureOf(frames.front()));
    std::map<Value, std::size_t> counts;
    std::optional<Value> usual;
    for (ReadFrame const& frame : frames) {
        Value const value = featureOf(frame);
        if (2 * ++counts[value] > frames.size()) {
            usual = value;
        }
    }
    return usual;
}

std::string describeValues(std::vector<ChannelScan> const& channels, bool hasParts)
{
    std::vector<std::string> texts;
    for (ChannelScan const& channel : channels) {
        std::string text = channel.name + ":";
        if (channel.nbNan > 0) {
            text += " " + std::to_string(channel.nbNan) + " NaN";
        }
        if (channel.nbInfinite > 0) {
            text += " " + std::to_string(channel.nbInfinite) + " infinite";
        }
        texts.push_back(text + (hasParts ? " in part " + std::to_string(channel.part) : ""));
    }
    return join(texts);
}

void compare(std::vector<ReadFrame> const& frames, ShotCheck& check)
{
    auto const display = findUsual(frames, formatDisplay);
    auto const data = findUsual(frames, formatData);
    auto const channels = findUsual(frames, listChannels);
    for (ReadFrame const& frame : frames) {
        if (display.has_value() && formatDisplay(frame) != *display) {
            check.faults.push_back(
                {frame.frame, frame.file, Fault::Size,
                 "it is " + formatDisplay(frame) + ", most frames are " + *display});
        } else if (data.has_value() && formatData(frame) != *data) {
            check.faults.push_back(
                {frame.frame, frame.file, Fault::Size,
                 "its data window is " + formatData(frame) + ", that of most frames " + *data});
        }
        std::set<std::string> const own = listChannels(frame);
        if (channels.has_value() && own != *channels) {
            check.faults.push_back(
                {frame.frame, frame.file, Fault::Channels, describeDifference(own, *channels)});
        }
    }
}

void addValues(ReadFrame const& frame, ShotCheck& check)
{
    std::vector<ChannelScan> channels = frame.scan.channels;
    std::erase_if(channels, [](ChannelScan const& channel) {
        return channel.nbNan == 0 && channel.nbInfinite == 0;
    });
    if (!channels.empty()) {
        std::string const text = describeValues(channels, frame.scan.description.parts.size() > 1);
        check.faults.push_back({frame.frame, frame.file, Fault::Values, text, std::move(channels)});
    }
}

std::vector<Frame> chooseFrames(ShotCheckRequest const& request, FramePattern const& input)
{
    if (!input.isSequence()) {
        if (request.frames.has_value()) {
            throw ShotError(ShotFailure::Request, "the input \"" + input.getText() +
                                                      "\" is one picture; --frames is for "
                                                      "sequences such as shot.####.exr");
        }
        return {0};
    }
    if (request.frames.has_value()) {
        return *request.frames;
    }
    std::vector<Frame> frames = input.scan();
    if (frames.empty()) {
        throwNothingMatches(input);
    }
    std::vector<Frame> const gaps = findGaps(frames);
    frames.insert(frames.end(), gaps.begin(), gaps.end());
    return frames;
}

} // namespace

char const* nameFault(FrameFault::Kind kind)
{
    switch (kind) {
    case Fault::Missing: return "missing";
    case Fault::Unreadable: return "unreadable";
    case Fault::Size: return "size";
    case Fault::Channels: return "channels";
    case Fault::Values: return "values";
    }
    return "";
}

ShotCheck checkShot(ShotCheckRequest const& request, ShotCheckOptions const& options)
{
    FramePattern const input(request.input);
    ShotCheck check;
    check.isSequence = input.isSequence();
    check.frames = chooseFrames(request, input);
    std::sort(check.frames.begin(), check.frames.end());
    std::vector<ReadFrame> readFrames;
    std::size_t done = 0;
    for (Frame const frame : check.frames) {
        if (options.cancelled != nullptr && *options.cancelled) {
            break;
        }
        std::filesystem::path const file = input.expand(frame);
        std::error_code ignored;
        if (check.isSequence && !std::filesystem::exists(file, ignored)) {
            check.faults.push_back({frame, file, Fault::Missing, "there is no such file"});
        } else {
            try {
                readFrames.push_back({frame, file, scanPicture(file)});
                for (PartDescription& part : readFrames.back().scan.description.parts) {
                    part.attributes.clear(); // of thousands of frames they take memory
                }
            } catch (...) {
                check.faults.push_back({frame, file, Fault::Unreadable,
                                        describeFailure(std::current_exception()).text});
            }
        }
        options.progress(++done, check.frames.size());
    }
    // Also where a picture was waited for.
    check.isComplete = options.cancelled == nullptr || !*options.cancelled;
    check.nbRead = readFrames.size();
    compare(readFrames, check);
    if (request.countsValues) {
        for (ReadFrame const& frame : readFrames) {
            addValues(frame, check);
        }
    }
    std::stable_sort(check.faults.begin(), check.faults.end(),
                     [](FrameFault const& a, FrameFault const& b) { return a.frame < b.frame; });
    return check;
}
