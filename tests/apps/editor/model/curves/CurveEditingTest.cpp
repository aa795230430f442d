#include "editor/model/curves/CurveEditing.h"

#include "primitives/BzFunctionCurve.h"
#include "runtime/curves/CurveText.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace CurveEditing;

CurvePoints make(char const* text)
{
    return parseCurve("curve", text);
}

/// The polyline that the tool gets of the curve.
Vector<GePoint2<float>> sample(CurvePoints const& points)
{
    BzFunctionCurve curve(BzFunctionCurve::Tangent, 0);
    curve.getCtrlPoints() = points;
    Vector<GePoint2<float>> line;
    curve.evaluateCurve(line, 256, 0.0F);
    return line;
}

double valueAt(Vector<GePoint2<float>> const& line, double x)
{
    for (std::size_t point = 1; point < line.size(); ++point) {
        if (line[point].x >= x) {
            double const width = line[point].x - line[point - 1].x;
            double const share = width > 0.0 ? (x - line[point - 1].x) / width : 1.0;
            return line[point - 1].y + share * (line[point].y - line[point - 1].y);
        }
    }
    return line.back().y;
}

void expectSameShape(CurvePoints const& a, CurvePoints const& b, double low, double high)
{
    constexpr int nbPlaces = 97;
    auto const first = sample(a);
    auto const second = sample(b);
    for (int place = 0; place < nbPlaces; ++place) {
        double const x = low + (high - low) * place / (nbPlaces - 1);
        EXPECT_NEAR(valueAt(first, x), valueAt(second, x), 2e-4) << "at " << x;
    }
}

TEST(CurveEditing, AnInsertedKeyLeavesTheShape)
{
    // Plain, steep, with a handle that reaches too far, with handles that run back, with a step.
    for (char const* const text :
         {"0,0 0.3,0.6 1,1", "-1,3 0,-2 0.1,5 40,7", "-1,0 0,0 5,1; 0.9,0 1,1 2,2",
          "-1,0 0,0 -0.3,0.5; 1.2,0.5 1,1 2,2", "0,0 0.5,0 0.5,1 1,1"}) {
        CurvePoints const points = make(text);
        double const low = getKey(points, 0).x;
        double const high = getKey(points, countKeys(points) - 1).x;
        for (double const share : {0.03, 0.2, 0.55, 0.9}) {
            auto const x = static_cast<float>(low + share * (high - low));
            Insertion const inserted = insertKey(points, x);
            ASSERT_EQ(countKeys(inserted.points), countKeys(points) + 1);
            EXPECT_EQ(getKey(inserted.points, inserted.key).x, x);
            expectSameShape(points, inserted.points, low, high);
        }
    }
}

TEST(CurveEditing, AKeyBetweenHandlesThatCrossLiesOnTheCurve)
{
    CurvePoints const points = make("-1,0 0,0 5,1; -4,0 1,1 2,2");
    for (float const x : {0.1F, 0.4F, 0.8F}) {
        Insertion const inserted = insertKey(points, x);
        EXPECT_NEAR(getKey(inserted.points, 1).y, valueAt(sample(points), x), 1e-4);
    }
}

TEST(CurveEditing, BeyondTheEndsAKeyGoesOnTheLine)
{
    CurvePoints const points = make("-1,-2 0,0 0.3,0; 0.9,0 1,1 1.1,0.5");
    Insertion const right = insertKey(points, 3.0F);
    EXPECT_EQ(right.key, 2U);
    EXPECT_FLOAT_EQ(getKey(right.points, 2).y, -9.0F);
    expectSameShape(points, right.points, 0.0, 1.0);
    EXPECT_NEAR(valueAt(sample(right.points), 2.0), -4.0, 1e-5);
    Insertion const left = insertKey(right.points, -2.0F);
    EXPECT_EQ(left.key, 0U);
    EXPECT_FLOAT_EQ(getKey(left.points, 0).y, -4.0F);
    EXPECT_EQ(insertKey(points, 1.0F).key, 1U);
    EXPECT_EQ(insertKey(points, 1.0F).points, points);
}

TEST(CurveEditing, KeysStopAtThoseThatStay)
{
    CurvePoints const points = make("0,0 0.2,0.1 0.4,0.5 0.8,0.7 1,1");
    CurvePoints const moved = moveKeys(points, {1, 2}, {5.0F, 0.25F});
    EXPECT_EQ(getKey(moved, 2).x, 0.8F);
    EXPECT_FLOAT_EQ(getKey(moved, 1).x, 0.6F);
    EXPECT_FLOAT_EQ(getKey(moved, 1).y, 0.35F);
    // Handles go with their key.
    EXPECT_FLOAT_EQ(getHandle(moved, 1, Side::Outgoing).x - getKey(moved, 1).x,
                    getHandle(points, 1, Side::Outgoing).x - getKey(points, 1).x);
    // All go as far as the first of them that has to stop.
    CurvePoints const movedLeft = moveKeys(points, {1, 3}, {-9.0F});
    EXPECT_EQ(getKey(movedLeft, 1).x, 0.0F);
    EXPECT_FLOAT_EQ(getKey(movedLeft, 3).x, 0.6F);
    EXPECT_EQ(getKey(moveKeys(points, {0, 1, 2, 3, 4}, {7.0F}), 4).x, 8.0F);
    EXPECT_EQ(moveKeys(make("0,0 1,1"), {0}, {1.0F}), make("0,0 1,1"));
    // By a factor: where an axis has stops, keys go by as many.
    CurvePoints const scaled = moveKeys(points, {0, 1, 2}, {0.0F, 0.0F, 1.5F});
    EXPECT_EQ(getKey(scaled, 0).x, 0.0F);
    EXPECT_FLOAT_EQ(getKey(scaled, 1).x, 0.3F);
    EXPECT_FLOAT_EQ(getHandle(scaled, 2, Side::Incoming).x,
                    1.5F * getHandle(points, 2, Side::Incoming).x);
    EXPECT_EQ(getKey(moveKeys(points, {1, 2}, {0.0F, 0.0F, 9.0F}), 2).x, 0.8F);
    EXPECT_FLOAT_EQ(getKey(moveKeys(points, {1, 3}, {0.0F, 0.0F, 0.1F}), 1).x, 0.1F);
}

TEST(CurveEditing, KeysAreAtThePlacesThatAreTypedToTheBitOrNotAtAll)
{
    CurvePoints const points = make("0,0 0.2,0.1 0.4,0.5 1,1");
    GePoint2<float> const typed{0.1F * 3.0F, 0.18F * 2.0F};
    CurvePoints const placed = *placeKeys(points, {2}, {typed});
    EXPECT_EQ(getKey(placed, 2), typed);
    EXPECT_FLOAT_EQ(getHandle(placed, 2, Side::Outgoing).y - typed.y,
                    getHandle(points, 2, Side::Outgoing).y - 0.5F);
    EXPECT_TRUE(placeKeys(points, {1, 2}, {{0.5F, 0.0F}, {0.6F, 0.0F}}).has_value());
    EXPECT_FALSE(placeKeys(points, {2}, {{1.1F, 0.0F}}).has_value());
    EXPECT_FALSE(placeKeys(points, {1, 2}, {{0.5F, 0.0F}, {0.3F, 0.0F}}).has_value());
    EXPECT_FALSE(placeKeys(make("0,0 1,1"), {0}, {{1.0F, 0.0F}}).has_value());
}

TEST(CurveEditing, KeysInAllKeyframesLeaveWhatIsBetweenThem)
{
    CurvePoints const first = make("0,0 0.3,0.6 1,1");
    CurvePoints const last = make("0.1,0.3 0.8,0.4 2,0.9");
    for (double const share : {0.0, 0.4, 1.0}) {
        CurvePoints const between = Interpolation<CurvePoints>::between(first, last, share);
        for (float const x : {-0.5F, 0.2F, 0.5F, 0.9F, 2.5F}) {
            CurvePoints const inserted = Interpolation<CurvePoints>::between(
                insertKeyAlike(first, between, x), insertKeyAlike(last, between, x), share);
            Insertion const wanted = insertKey(between, x);
            ASSERT_EQ(inserted.size(), wanted.points.size());
            EXPECT_NEAR(getKey(inserted, wanted.key).x, x, 1e-5);
            expectSameShape(between, inserted, getKey(between, 0).x, getKey(between, 2).x);
        }
        EXPECT_EQ(insertKeyAlike(first, between, getKey(between, 1).x), first);
    }
}

TEST(CurveEditing, TwoPlacesAreLeft)
{
    CurvePoints const points = make("0,0 0.5,0 0.5,1 1,1");
    EXPECT_EQ(countKeys(removeKeys(points, {1})), 3U);
    EXPECT_EQ(countKeys(removeKeys(points, {0, 3})), 3U);
    for (Selection const& keys : {Selection{0, 1, 2, 3}, Selection{0, 1, 2}, Selection{1, 2, 3}}) {
        CurvePoints const left = removeKeys(points, keys);
        ASSERT_EQ(countKeys(left), 2U);
        EXPECT_LT(getKey(left, 0).x, getKey(left, 1).x);
        EXPECT_NE(getHandle(left, 0, Side::Incoming), getKey(left, 0));
        EXPECT_NE(getHandle(left, 1, Side::Outgoing), getKey(left, 1));
    }
}

TEST(CurveEditing, HandlesHoldTogetherAsTheyAreSaidTo)
{
    CurvePoints const points = make("0,0 0.25,0.5 1,1");
    CurvePoints const smooth = moveHandle(points, 1, Side::Outgoing, {0.6F, 1.0F}, Handles::Smooth);
    EXPECT_EQ(classifyHandles(smooth, 1), Handles::Smooth);
    EXPECT_EQ(getHandle(smooth, 1, Side::Outgoing), (GePoint2<float>{0.6F, 1.0F}));
    EXPECT_EQ(
        classifyHandles(moveHandle(smooth, 1, Side::Incoming, {0.1F, 0.2F}, Handles::Mirrored), 1),
        Handles::Mirrored);
    CurvePoints const broken = moveHandle(smooth, 1, Side::Incoming, {0.2F, 0.9F}, Handles::Broken);
    EXPECT_EQ(classifyHandles(broken, 1), Handles::Broken);
    for (Handles const handles :
         {Handles::Smooth, Handles::Mirrored, Handles::Flat, Handles::Straight}) {
        CurvePoints const set = setHandles(broken, {0, 1, 2}, handles);
        EXPECT_EQ(classifyHandles(set, 1), handles);
        EXPECT_EQ(getKey(set, 1), getKey(broken, 1));
    }
    CurvePoints const reset = resetHandles(broken, {1});
    EXPECT_EQ(reset, points) << "as typed without handles";
    EXPECT_EQ(resetHandles(broken, {0, 2}), broken);
    EXPECT_EQ(classifyHandles(straighten(broken), 1), Handles::Straight);
    EXPECT_EQ(straighten(make("0,0.5 3,2 6,0.5")),
              make("-1,0 0,0.5 1,1; 2,1.5 3,2 4,1.5; 5,1 6,0.5 7,0"));
    EXPECT_EQ(flip(make("-1,0.5 0,0.25 1,0; 0.5,1 1,2 2,2")),
              make("-1,0.5 0,0.75 1,1; 0.5,0 1,-1 2,-1"));
}

TEST(CurveEditing, WhateverIsDoneTheCurveStaysOne)
{
    std::mt19937 random(20260101);
    auto const number = [&] { return std::uniform_real_distribution<float>(-3.0F, 4.0F)(random); };
    CurvePoints points = make("0,0 0.5,0.5 1,1");
    for (int step = 0; step < 3000; ++step) {
        std::size_t const nbKeys = countKeys(points);
        std::size_t const key = random() % nbKeys;
        Selection const keys = {key, (key + 1) % nbKeys};
        Side const side = random() % 2 == 0 ? Side::Incoming : Side::Outgoing;
        auto const handles = static_cast<Handles>(random() % 5);
        switch (random() % 7) {
        case 0: points = insertKey(points, number()).points; break;
        case 1: points = removeKeys(points, keys); break;
        case 2: points = moveKeys(points, keys, {number(), number()}); break;
        case 3:
            points = placeKeys(points, {key}, {{number(), number()}}).value_or(points);
            points = moveKeys(points, keys, {0.0F, 0.0F, std::abs(number()) + 0.1F});
            break;
        case 4: points = moveHandle(points, key, side, {number(), number()}, handles); break;
        case 5: points = setHandles(points, keys, handles); break;
        default: points = flip(offset(points, 0.1F, -0.1F)); break;
        }
        // Reads it back: finite, in order, at two places.
        ASSERT_EQ(parseCurve("curve", formatCurve(points)), points) << "step " << step;
    }
}

} // namespace
