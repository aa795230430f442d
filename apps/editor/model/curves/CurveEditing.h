#pragma once

// Edits of a drawn curve: every function gives new points and leaves the old ones as they are, so
// that a drag can start from where it began. Points are three a key (incoming handle, key, outgoing
// handle); keys keep their order from left to right and are never fewer than two at two places.
// Functions of no state; any thread.

#include "runtime/values/Animated.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace CurveEditing {

/// Numbers of keys, from 0.
using Selection = std::vector<std::size_t>;

enum class Side { Incoming, Outgoing };

/// How the two handles of a key hold together.
enum class Handles {
    Smooth,   ///< in one line, each of its own length
    Mirrored, ///< in one line and equally long
    Broken,   ///< each by itself
    Flat,     ///< in one level line
    Straight, ///< towards the keys beside it, so that the curve is a line there
};

std::size_t countKeys(CurvePoints const& points);
GePoint2<float> getKey(CurvePoints const& points, std::size_t key);
GePoint2<float> getHandle(CurvePoints const& points, std::size_t key, Side side);

/// Where a handle counts: one that would make x run back is shortened or taken for its key.
GePoint2<float> getCountingHandle(CurvePoints const& points, std::size_t key, Side side);

/// What a key's handles look like; Smooth, Mirrored and Flat within 1e-4 of their length.
Handles classifyHandles(CurvePoints const& points, std::size_t key);

struct Insertion {
    CurvePoints points;
    std::size_t key;
};

/// With a key at `x`, and the same curve: between two keys by de Casteljau's construction, beyond
/// an end on the straight line there. Where handles of a segment reach past each other, a part of
/// it may need a handle that would make x run back: that one counts shortened, and the curve
/// changes a little. At the x of a key nothing is added, and `key` is that one. `x` is finite.
/// Source: G. Farin, "Curves and Surfaces for CAGD".
Insertion insertKey(CurvePoints const& points, float x);

/// `other`, which has as many keys, with a key where insertKey puts one into `points`: in the same
/// segment at the same share of it. So a curve that is blended of several stays as it was.
CurvePoints insertKeyAlike(CurvePoints const& other, CurvePoints const& points, float x);

/// The key at `x`; of several the one that stands `rank` places behind the first.
std::optional<std::size_t> findKey(CurvePoints const& points, float x, std::size_t rank = 0);

/// How many keys before this one are at its x.
std::size_t getRank(CurvePoints const& points, std::size_t key);

/// Those of the keys that can go: not all, if there would be fewer than two places.
Selection limitRemoval(CurvePoints const& points, Selection const& keys);

/// Without these keys, as far as they can go.
CurvePoints removeKeys(CurvePoints const& points, Selection const& keys);

/// Where keys and their handles go: x to `factor` times itself and `dx` further, y `dy` further.
/// The factor does not count for keys at 0 and below, which an axis in stops has not.
struct Move {
    float dx = 0.0F;
    float dy = 0.0F;
    float factor = 1.0F; ///< above 0; 1 where there is a dx
};

/// The part of the move that leaves the keys between those beside them that stay.
Move limitMove(CurvePoints const& points, Selection const& keys, Move move);

/// With these keys moved. They stop at the keys beside them that stay.
CurvePoints moveKeys(CurvePoints const& points, Selection const& keys, Move const& move);

/// With these keys at these places, a place each; nothing where keys would change places or all
/// come to lie at one x.
std::optional<CurvePoints> placeKeys(CurvePoints const& points, Selection const& keys,
                                     std::vector<GePoint2<float>> const& places);

/// With a handle at that place, and the other one following as `handles` says: Smooth turns it,
/// Mirrored makes it equal too, every other leaves it. The outer handle of an end key never comes
/// to lie on it.
CurvePoints moveHandle(CurvePoints const& points, std::size_t key, Side side,
                       GePoint2<float> const& place, Handles handles);

/// With the handles of these keys in that relation; Broken changes nothing.
CurvePoints setHandles(CurvePoints const& points, Selection const& keys, Handles handles);

/// With the handles of these keys as a curve has them of which only keys are given: smooth, without
/// reaching above or below the keys.
CurvePoints resetHandles(CurvePoints const& points, Selection const& keys);

/// With every key's handles straight: lines from key to key.
CurvePoints straighten(CurvePoints const& points);

/// Turned over about y 0.5: what was light is dark.
CurvePoints flip(CurvePoints const& points);

/// All of it moved.
CurvePoints offset(CurvePoints const& points, float dx, float dy);

} // namespace CurveEditing
