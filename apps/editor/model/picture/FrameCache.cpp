#include "editor/model/picture/FrameCache.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// Frames from a place on: the place itself, then always four ahead and one behind, round the ends.
class FrameOrder {
public:
    FrameOrder(std::vector<Frame> const& risingFrames, Frame from, int itsDirection)
        : frames(risingFrames), direction(itsDirection)
    {
        auto const found = std::lower_bound(frames.begin(), frames.end(), from);
        bool const isThere = found != frames.end() && *found == from;
        auto const at = static_cast<std::ptrdiff_t>(found - frames.begin());
        // Beside a place without a frame the next ones of both sides stand.
        ahead = direction > 0 || isThere ? at : at - 1;
        behind = ahead - direction;
    }

    /// Nothing after the last one.
    std::optional<Frame> next()
    {
        constexpr std::size_t share = 5;
        if (nbGiven == frames.size()) {
            return {};
        }
        bool const isBehind = nbGiven++ % share == share - 1;
        std::ptrdiff_t& place = isBehind ? behind : ahead;
        auto const size = static_cast<std::ptrdiff_t>(frames.size());
        std::ptrdiff_t const index = (place % size + size) % size;
        place += isBehind ? -direction : direction;
        return frames[static_cast<std::size_t>(index)];
    }

private:
    std::vector<Frame> const& frames;
    int direction;
    std::ptrdiff_t ahead;
    std::ptrdiff_t behind;
    std::size_t nbGiven = 0;
};

} // namespace

FrameCache::Picture FrameCache::find(Frame frame) const
{
    auto const found = held.find(frame);
    return found == held.end() ? nullptr : found->second;
}

void FrameCache::insert(Frame frame, Picture const& picture)
{
    remove(frame);
    lastBytes = picture->getBytes();
    heldBytes += lastBytes;
    held.emplace(frame, picture);
    expect(frame, lastBytes);
}

void FrameCache::remove(Frame frame)
{
    auto const found = held.find(frame);
    if (found != held.end()) {
        heldBytes -= found->second->getBytes();
        held.erase(found);
    }
}

void FrameCache::clear()
{
    held.clear();
    sizes.clear();
    heldBytes = 0;
}

std::size_t FrameCache::estimate(Frame frame) const
{
    auto const known = sizes.find(frame);
    return known == sizes.end() ? lastBytes : known->second;
}

/// The frames that fit, and the first of them that has to be read.
std::set<Frame> FrameCache::choose(std::vector<Frame> const& frames, Place const& place,
                                   std::set<Frame> const& lost, std::optional<Frame>& next) const
{
    std::set<Frame> chosen;
    std::size_t bytes = 0;
    auto const take = [&](Frame frame) {
        if (lost.contains(frame) || chosen.contains(frame)) {
            return true;
        }
        std::size_t const size = estimate(frame);
        bool const isNeeded = frame == place.wanted || frame == place.kept;
        if (!isNeeded && size > mostBytes) {
            return true; // for itself only
        }
        if (!isNeeded && bytes + size > mostBytes) {
            return false;
        }
        bytes += size;
        chosen.insert(frame);
        if (!next.has_value() && !held.contains(frame)) {
            next = frame;
        }
        return true;
    };
    if (place.kept.has_value() && held.contains(*place.kept)) {
        take(*place.kept);
    }
    take(place.wanted);
    FrameOrder order(frames, place.wanted, place.direction);
    for (auto frame = order.next(); frame.has_value() && take(*frame); frame = order.next()) {
    }
    return chosen;
}

void FrameCache::release(std::set<Frame> const& chosen, std::size_t room, Frame from,
                         std::vector<Picture>& released)
{
    std::vector<Frame> others;
    for (auto const& [frame, picture] : held) {
        if (!chosen.contains(frame)) {
            others.push_back(frame);
        }
    }
    std::sort(others.begin(), others.end(), [from](Frame one, Frame other) {
        return std::abs(one - from) > std::abs(other - from);
    });
    for (Frame const frame : others) {
        if (room <= mostBytes && heldBytes <= mostBytes - room) {
            return;
        }
        released.push_back(find(frame));
        remove(frame);
    }
}

std::optional<FrameCache::Next> FrameCache::plan(std::vector<Frame> const& frames,
                                                 Place const& place, std::set<Frame> const& lost,
                                                 std::vector<Picture>& released)
{
    std::optional<Frame> next;
    std::set<Frame> const chosen = choose(frames, place, lost, next);
    release(chosen, next.has_value() ? estimate(*next) : 0, place.wanted, released);
    if (!next.has_value()) {
        return {};
    }
    bool const isNeeded = *next == place.wanted;
    std::size_t const room = heldBytes < mostBytes ? mostBytes - heldBytes : 0;
    // What it has to take is known once its header has been read; see expect.
    return Next{*next, isNeeded && estimate(*next) > room ? estimate(*next) : room};
}
