#pragma once

#include "editor/model/picture/HeldPicture.h"
#include "shots/FrameList.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

/// Frames of a sequence in memory within a bound in bytes, and which one is to be read next. What
/// lies ahead comes first: of five frames that are kept, four lie ahead of the one that is wanted,
/// and one behind it.
class FrameCache {
public:
    using Picture = std::shared_ptr<HeldPicture const>;

    /// Where the hand is.
    struct Place {
        Frame wanted = 0; ///< kept however large it is
        std::optional<Frame>
            kept{};        ///< another one that stays: it is shown until the wanted one is
        int direction = 1; ///< ahead: 1 or -1
    };

    /// The next frame to be read and the bytes that there are for it.
    struct Next {
        Frame frame;
        std::size_t room;
    };

    explicit FrameCache(std::size_t bound) : mostBytes(bound) {}

    void setBound(std::size_t bound) { mostBytes = bound; }
    std::size_t getBound() const { return mostBytes; }
    std::size_t getBytes() const { return heldBytes; }

    /// Null for a frame that is not held.
    Picture find(Frame frame) const;
    void insert(Frame frame, Picture const& picture);
    void remove(Frame frame);
    void clear();

    /// A frame that has not been read is of that size.
    void expect(Frame frame, std::size_t bytes) { sizes[frame] = bytes; }

    /// The first of `frames` (rising) in the order from `place` on that is neither held nor in
    /// `lost`; nothing when all that fit are held. Makes room: frames that lie farther away than
    /// all that fit go to `released`.
    std::optional<Next> plan(std::vector<Frame> const& frames, Place const& place,
                             std::set<Frame> const& lost, std::vector<Picture>& released);

private:
    std::size_t estimate(Frame frame) const;
    std::set<Frame> choose(std::vector<Frame> const& frames, Place const& place,
                           std::set<Frame> const& lost, std::optional<Frame>& next) const;
    void release(std::set<Frame> const& chosen, std::size_t room, Frame from,
                 std::vector<Picture>& released);

    std::size_t mostBytes;
    std::size_t heldBytes = 0;
    std::size_t lastBytes = 0; ///< of the frame that came last
    std::map<Frame, Picture> held;
    std::map<Frame, std::size_t> sizes;
};
