// Edits of a drawn curve.

#include "editor/model/curves/CurveEditing.h"

#include "primitives/BzFunctionCurve.h"
#include "runtime/curves/CurveShapes.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace CurveEditing {
namespace {

using Point = GePoint2<double>;

constexpr double third = 1.0 / 3.0;
constexpr float likeness = 1e-4F; // of a handle's length

std::size_t indexOf(std::size_t key)
{
    return 3 * key + 1;
}

std::size_t indexOf(std::size_t key, Side side)
{
    return side == Side::Incoming ? indexOf(key) - 1 : indexOf(key) + 1;
}

Side getOther(Side side)
{
    return side == Side::Incoming ? Side::Outgoing : Side::Incoming;
}

Point widen(GePoint2<float> const& point)
{
    return {point.x, point.y};
}

GePoint2<float> narrow(Point const& point)
{
    return {static_cast<float>(point.x), static_cast<float>(point.y)};
}

Point mix(Point const& a, Point const& b, double share)
{
    return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
}

bool isSelected(Selection const& keys, std::size_t key)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/// The curve as the host evaluates it, whose handles may be other than those that are stored.
class CountingCurve : public BzFunctionCurve {
public:
    using BzBezierCurve::Segment;

    explicit CountingCurve(CurvePoints const& points) : BzFunctionCurve(Tangent, 0)
    {
        getCtrlPoints() = points;
    }

    /// From `key` to the one after it.
    Segment getSegment(std::size_t key) const
    {
        CurvePoints const& points = getCtrlPoints();
        Segment segment{widen(points[indexOf(key)]), widen(points[indexOf(key) + 1]),
                        widen(points[indexOf(key) + 2]), widen(points[indexOf(key) + 3])};
        prepareSegment(segment);
        return segment;
    }
};

double evaluate(double a, double b, double c, double d, double t)
{
    double const s = 1.0 - t;
    return s * s * s * a + 3.0 * s * s * t * b + 3.0 * s * t * t * c + t * t * t * d;
}

/// The parameter at which a segment, whose x never runs back, is at `x`.
double findParameter(CountingCurve::Segment const& segment, double x)
{
    constexpr int nbHalvings = 60; // more than a double tells apart
    double low = 0.0;
    double high = 1.0;
    for (int halving = 0; halving < nbHalvings; ++halving) {
        double const middle = 0.5 * (low + high);
        double const there = evaluate(segment.start.x, segment.outgoing.x, segment.incoming.x,
                                      segment.end.x, middle);
        (there < x ? low : high) = middle;
    }
    return high;
}

/// At the parameter `t` between the key `before` and the next one. The key's x is `x` to the bit.
Insertion insertWithin(CurvePoints const& points, std::size_t before, double t,
                       std::optional<float> x = {})
{
    CountingCurve::Segment const segment = CountingCurve(points).getSegment(before);
    Point const outgoing = mix(segment.start, segment.outgoing, t);
    Point const middle = mix(segment.outgoing, segment.incoming, t);
    Point const incoming = mix(segment.incoming, segment.end, t);
    Point const left = mix(outgoing, middle, t);
    Point const right = mix(middle, incoming, t);

    CurvePoints edited = points;
    edited[indexOf(before, Side::Outgoing)] = narrow(outgoing);
    edited[indexOf(before + 1, Side::Incoming)] = narrow(incoming);
    GePoint2<float> key = narrow(mix(left, right, t));
    key.x = x.value_or(key.x);
    CurvePoints const added = {narrow(left), key, narrow(right)};
    edited.insert(edited.begin() + static_cast<std::ptrdiff_t>(indexOf(before + 1) - 1),
                  added.begin(), added.end());
    return {edited, before + 1};
}

/// On the line beyond an end key; the key's outer handle then lies on it within the curve.
Insertion insertBeyond(CurvePoints const& points, Side end, float x)
{
    CurvePoints edited = points;
    completeEndHandles(edited);
    std::size_t const last = end == Side::Incoming ? 0 : countKeys(edited) - 1;
    Point const key = widen(getKey(edited, last));
    Point const handle = widen(getHandle(edited, last, end));
    double const width = x - key.x;
    double const slope = handle.x == key.x ? 0.0 : (handle.y - key.y) / (handle.x - key.x);
    auto const onLine = [&](double share) {
        return narrow({key.x + share * width, key.y + share * width * slope});
    };
    edited[indexOf(last, end)] = onLine(third);
    GePoint2<float> const outer = onLine(1.0 + third);
    GePoint2<float> const inner = onLine(1.0 - third);
    GePoint2<float> const added{x, onLine(1.0).y};
    if (end == Side::Incoming) {
        edited.insert(edited.begin(), {outer, added, inner});
        return {edited, 0};
    }
    edited.insert(edited.end(), {inner, added, outer});
    return {edited, last + 1};
}

std::size_t countKeysBelow(CurvePoints const& points, float x)
{
    std::size_t key = 0;
    while (key < countKeys(points) && getKey(points, key).x < x) {
        ++key;
    }
    return key;
}

bool hasTwoPlaces(CurvePoints const& points)
{
    std::size_t const nbKeys = countKeys(points);
    return nbKeys >= 2 && getKey(points, 0).x < getKey(points, nbKeys - 1).x;
}

CurvePoints erase(CurvePoints const& points, Selection const& keys)
{
    CurvePoints left;
    for (std::size_t key = 0; key < countKeys(points); ++key) {
        if (!isSelected(keys, key)) {
            auto const first = points.begin() + static_cast<std::ptrdiff_t>(3 * key);
            left.insert(left.end(), first, first + 3);
        }
    }
    return left;
}

/// Where the move takes an x of a key or handle that belongs to a key at `keyX`.
float moveX(float x, float keyX, Move const& move)
{
    return keyX > 0.0F ? x * move.factor + move.dx : x + move.dx;
}

float measure(GePoint2<float> const& from, GePoint2<float> const& to)
{
    return std::hypot(to.x - from.x, to.y - from.y);
}

/// The place at `length` from `key`, opposite to `from`.
GePoint2<float> turnAbout(GePoint2<float> const& key, GePoint2<float> const& from, float length)
{
    float const whole = measure(key, from);
    float const share = whole > 0.0F ? length / whole : 0.0F;
    return {key.x - (from.x - key.x) * share, key.y - (from.y - key.y) * share};
}

/// A third of the way to the key on that side, in that slope; the outer handle of an end key is as
/// long as the inner one.
GePoint2<float> layHandle(CurvePoints const& points, std::size_t key, Side side, double slope)
{
    GePoint2<float> const place = getKey(points, key);
    bool const isEnd = side == Side::Incoming ? key == 0 : key + 1 == countKeys(points);
    Side const reach = isEnd ? getOther(side) : side;
    std::size_t const next = reach == Side::Incoming ? key - 1 : key + 1;
    double const length = std::abs(getKey(points, next).x - place.x) * third;
    double const width = side == Side::Incoming ? -length : length;
    return narrow({place.x + width, place.y + width * slope});
}

void layStraight(CurvePoints& points, std::size_t key)
{
    GePoint2<float> const place = getKey(points, key);
    std::size_t const last = countKeys(points) - 1;
    auto const findSlope = [&](std::size_t other) {
        GePoint2<float> const there = getKey(points, other);
        return there.x == place.x ? 0.0
                                  : static_cast<double>(there.y - place.y) / (there.x - place.x);
    };
    double const left = findSlope(key == 0 ? 1 : key - 1);
    double const right = findSlope(key == last ? last - 1 : key + 1);
    points[indexOf(key, Side::Incoming)] = layHandle(points, key, Side::Incoming, left);
    points[indexOf(key, Side::Outgoing)] = layHandle(points, key, Side::Outgoing, right);
}

void layFlat(CurvePoints& points, std::size_t key)
{
    for (Side const side : {Side::Incoming, Side::Outgoing}) {
        GePoint2<float> const place = getKey(points, key);
        GePoint2<float>& handle = points[indexOf(key, side)];
        handle.y = place.y;
        if (handle.x == place.x) {
            handle = layHandle(points, key, side, 0.0);
        }
    }
}

/// Both handles on the line between the directions that they have.
void laySmooth(CurvePoints& points, std::size_t key, bool areEqual)
{
    GePoint2<float> const place = getKey(points, key);
    GePoint2<float>& incoming = points[indexOf(key, Side::Incoming)];
    GePoint2<float>& outgoing = points[indexOf(key, Side::Outgoing)];
    float left = measure(place, incoming);
    float right = measure(place, outgoing);
    GePoint2<float> direction{outgoing.x - incoming.x, outgoing.y - incoming.y};
    if (left > 0.0F && right > 0.0F) {
        direction = {(outgoing.x - place.x) / right - (incoming.x - place.x) / left,
                     (outgoing.y - place.y) / right - (incoming.y - place.y) / left};
    }
    float const whole = std::hypot(direction.x, direction.y);
    if (whole == 0.0F) {
        layFlat(points, key);
        return;
    }
    if (areEqual || left == 0.0F || right == 0.0F) {
        left = right =
            left == 0.0F || right == 0.0F ? std::max(left, right) : 0.5F * (left + right);
    }
    incoming = {place.x - direction.x / whole * left, place.y - direction.y / whole * left};
    outgoing = {place.x + direction.x / whole * right, place.y + direction.y / whole * right};
}

bool isStraight(CurvePoints const& points, std::size_t key)
{
    CurvePoints straight = points;
    layStraight(straight, key);
    for (Side const side : {Side::Incoming, Side::Outgoing}) {
        GePoint2<float> const handle = getHandle(points, key, side);
        GePoint2<float> const wanted = getHandle(straight, key, side);
        float const length = measure(getKey(points, key), wanted);
        if (measure(handle, wanted) > likeness * length) {
            return false;
        }
    }
    return true;
}

} // namespace

std::size_t countKeys(CurvePoints const& points)
{
    return points.size() / 3;
}

GePoint2<float> getKey(CurvePoints const& points, std::size_t key)
{
    return points[indexOf(key)];
}

GePoint2<float> getHandle(CurvePoints const& points, std::size_t key, Side side)
{
    return points[indexOf(key, side)];
}

GePoint2<float> getCountingHandle(CurvePoints const& points, std::size_t key, Side side)
{
    CountingCurve const curve(points);
    if (side == Side::Incoming && key > 0) {
        return narrow(curve.getSegment(key - 1).incoming);
    }
    if (side == Side::Outgoing && key + 1 < countKeys(points)) {
        return narrow(curve.getSegment(key).outgoing);
    }
    return getHandle(points, key, side);
}

Handles classifyHandles(CurvePoints const& points, std::size_t key)
{
    GePoint2<float> const place = getKey(points, key);
    GePoint2<float> const incoming = getHandle(points, key, Side::Incoming);
    GePoint2<float> const outgoing = getHandle(points, key, Side::Outgoing);
    float const left = measure(place, incoming);
    float const right = measure(place, outgoing);
    if (isStraight(points, key)) {
        return Handles::Straight;
    }
    if (left == 0.0F || right == 0.0F) {
        return Handles::Broken;
    }
    if (std::abs(incoming.y - place.y) <= likeness * left &&
        std::abs(outgoing.y - place.y) <= likeness * right) {
        return Handles::Flat;
    }
    if (measure(turnAbout(place, incoming, right), outgoing) > likeness * right) {
        return Handles::Broken;
    }
    return std::abs(left - right) <= likeness * right ? Handles::Mirrored : Handles::Smooth;
}

Insertion insertKey(CurvePoints const& points, float x)
{
    std::optional<std::size_t> const there = findKey(points, x);
    if (there.has_value()) {
        return {points, *there};
    }
    std::size_t const next = countKeysBelow(points, x);
    if (next == 0 || next == countKeys(points)) {
        return insertBeyond(points, next == 0 ? Side::Incoming : Side::Outgoing, x);
    }
    double const t = findParameter(CountingCurve(points).getSegment(next - 1), x);
    return insertWithin(points, next - 1, t, x);
}

CurvePoints insertKeyAlike(CurvePoints const& other, CurvePoints const& points, float x)
{
    std::size_t const next = countKeysBelow(points, x);
    if (findKey(points, x).has_value()) {
        return other;
    }
    if (next == 0 || next == countKeys(points)) {
        Side const end = next == 0 ? Side::Incoming : Side::Outgoing;
        std::size_t const last = next == 0 ? 0 : next - 1;
        float const distance = x - getKey(points, last).x;
        return insertBeyond(other, end, getKey(other, last).x + distance).points;
    }
    double const t = findParameter(CountingCurve(points).getSegment(next - 1), x);
    return insertWithin(other, next - 1, t).points;
}

std::optional<std::size_t> findKey(CurvePoints const& points, float x, std::size_t rank)
{
    for (std::size_t key = 0; key < countKeys(points); ++key) {
        if (getKey(points, key).x == x && getRank(points, key) == rank) {
            return key;
        }
    }
    return {};
}

std::size_t getRank(CurvePoints const& points, std::size_t key)
{
    std::size_t rank = 0;
    while (rank < key && getKey(points, key - rank - 1).x == getKey(points, key).x) {
        ++rank;
    }
    return rank;
}

Selection limitRemoval(CurvePoints const& points, Selection const& keys)
{
    if (keys.empty() || hasTwoPlaces(erase(points, keys))) {
        return keys;
    }
    // The end that is selected stays, or whichever comes first.
    std::size_t const last = countKeys(points) - 1;
    Selection fewer = keys;
    auto const end = std::find_if(fewer.begin(), fewer.end(),
                                  [&](std::size_t key) { return key == 0 || key == last; });
    fewer.erase(end == fewer.end() ? fewer.begin() : end);
    return limitRemoval(points, fewer);
}

CurvePoints removeKeys(CurvePoints const& points, Selection const& keys)
{
    CurvePoints left = erase(points, limitRemoval(points, keys));
    completeEndHandles(left);
    return left;
}

Move limitMove(CurvePoints const& points, Selection const& keys, Move move)
{
    std::size_t const nbKeys = countKeys(points);
    for (std::size_t key = 0; key + 1 < nbKeys; ++key) {
        float const x = getKey(points, key).x;
        float const next = getKey(points, key + 1).x;
        bool const moves = isSelected(keys, key);
        bool const nextMoves = isSelected(keys, key + 1);
        if (moves && !nextMoves) {
            move.dx = std::min(move.dx, next - x);
            move.factor = x > 0.0F ? std::min(move.factor, next / x) : move.factor;
        } else if (!moves && nextMoves) {
            move.dx = std::max(move.dx, x - next);
            move.factor = next > 0.0F ? std::max(move.factor, x / next) : move.factor;
        }
    }
    return move;
}

CurvePoints moveKeys(CurvePoints const& points, Selection const& keys, Move const& move)
{
    Move const allowed = limitMove(points, keys, move);
    CurvePoints moved = points;
    for (std::size_t const key : keys) {
        float const keyX = getKey(points, key).x;
        for (std::size_t point = 3 * key; point < 3 * key + 3; ++point) {
            moved[point] = {moveX(points[point].x, keyX, allowed), points[point].y + allowed.dy};
        }
    }
    // Rounding may have taken a key a little past the one where it was to stop.
    for (std::size_t key = 1; key < countKeys(moved); ++key) {
        float& x = moved[indexOf(key)].x;
        float& before = moved[indexOf(key - 1)].x;
        if (x < before) {
            (isSelected(keys, key) ? x : before) = isSelected(keys, key) ? before : x;
        }
    }
    return hasTwoPlaces(moved) || !hasTwoPlaces(points) ? moved : points;
}

std::optional<CurvePoints> placeKeys(CurvePoints const& points, Selection const& keys,
                                     std::vector<GePoint2<float>> const& places)
{
    CurvePoints placed = points;
    for (std::size_t index = 0; index < keys.size(); ++index) {
        GePoint2<float> const from = getKey(points, keys[index]);
        GePoint2<float> const to = places[index];
        for (Side const side : {Side::Incoming, Side::Outgoing}) {
            GePoint2<float>& handle = placed[indexOf(keys[index], side)];
            handle = {handle.x + (to.x - from.x), handle.y + (to.y - from.y)};
        }
        placed[indexOf(keys[index])] = to; // what is typed is there to the bit
    }
    for (std::size_t key = 1; key < countKeys(placed); ++key) {
        if (getKey(placed, key).x < getKey(placed, key - 1).x) {
            return {};
        }
    }
    return hasTwoPlaces(placed) ? std::optional(placed) : std::nullopt;
}

CurvePoints moveHandle(CurvePoints const& points, std::size_t key, Side side,
                       GePoint2<float> const& place, Handles handles)
{
    GePoint2<float> const middle = getKey(points, key);
    bool const isOuter = side == Side::Incoming ? key == 0 : key + 1 == countKeys(points);
    if (isOuter && place == middle) {
        return points;
    }
    CurvePoints moved = points;
    moved[indexOf(key, side)] = place;
    GePoint2<float>& other = moved[indexOf(key, getOther(side))];
    if (place != middle && handles == Handles::Smooth) {
        other = turnAbout(middle, place, measure(middle, other));
    } else if (place != middle && handles == Handles::Mirrored) {
        other = turnAbout(middle, place, measure(middle, place));
    }
    return moved;
}

CurvePoints setHandles(CurvePoints const& points, Selection const& keys, Handles handles)
{
    CurvePoints changed = points;
    for (std::size_t const key : keys) {
        switch (handles) {
        case Handles::Smooth: laySmooth(changed, key, false); break;
        case Handles::Mirrored: laySmooth(changed, key, true); break;
        case Handles::Broken: break;
        case Handles::Flat: layFlat(changed, key); break;
        case Handles::Straight: layStraight(changed, key); break;
        }
    }
    completeEndHandles(changed);
    return changed;
}

CurvePoints resetHandles(CurvePoints const& points, Selection const& keys)
{
    std::vector<GePoint2<double>> places;
    for (std::size_t key = 0; key < countKeys(points); ++key) {
        places.push_back(widen(getKey(points, key)));
    }
    CurvePoints const smooth = makeSmoothCurve(places);
    CurvePoints changed = points;
    for (std::size_t const key : keys) {
        for (Side const side : {Side::Incoming, Side::Outgoing}) {
            changed[indexOf(key, side)] = smooth[indexOf(key, side)];
        }
    }
    return changed;
}

CurvePoints straighten(CurvePoints const& points)
{
    Selection keys(countKeys(points));
    std::iota(keys.begin(), keys.end(), std::size_t{0});
    return setHandles(points, keys, Handles::Straight);
}

CurvePoints flip(CurvePoints const& points)
{
    CurvePoints flipped = points;
    for (GePoint2<float>& point : flipped) {
        point.y = 1.0F - point.y;
    }
    return flipped;
}

CurvePoints offset(CurvePoints const& points, float dx, float dy)
{
    CurvePoints moved = points;
    for (GePoint2<float>& point : moved) {
        point = {point.x + dx, point.y + dy};
    }
    return moved;
}

} // namespace CurveEditing
