// Sampling of curves to tables and lookups in tables.

#include "remapColorCurveLUTUtils.h"

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include "base/HostException.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

using reference::ControlPoints;
using reference::Polyline;
using reference::sameBits;
using Utils = RemapColorCurveLUTUtils;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t stageLength = reference::stageTableLength;

/// A curve whose polyline is given; remembers what it was asked.
class PolylineCurve : public BzFunctionCurve {
public:
    explicit PolylineCurve(Polyline line) : BzFunctionCurve(Tangent, 1), polyline(std::move(line))
    {
    }

    void evaluateCurve(Vector<GePoint2<float>>& data, int subdivisions, float step) const override
    {
        askedSubdivisions = subdivisions;
        askedStep = step;
        for (auto const& [x, y] : polyline) {
            data.push_back({x, y});
        }
    }
    GePoint2<float> getTangentHandle(int key) const override
    {
        askedHandles.push_back(key);
        return BzFunctionCurve::getTangentHandle(key);
    }

    Polyline polyline;
    mutable int askedSubdivisions = 0;
    mutable float askedStep = 0.0F;
    mutable std::vector<int> askedHandles;
};

RCShdPtr<BzFunctionCurve> makeCurve(ControlPoints const& points)
{
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    for (auto const& [x, y] : points) {
        curve->getCtrlPoints().push_back({x, y});
    }
    return curve;
}

struct Sampled {
    Vector<float> lut;
    float minX = -77.0F;
    float maxX = -77.0F;
};

Sampled sample(Polyline const& line, float rangeMin, float rangeMax, std::size_t length)
{
    Sampled sampled{Vector<float>(length)};
    RCShdPtr<BzFunctionCurve> curve = makeShared<PolylineCurve>(line);
    Utils::curveToLUT(sampled.lut, rangeMin, rangeMax, curve, &sampled.minX, &sampled.maxX);
    return sampled;
}

struct SampleCase {
    char const* name;
    Polyline line;
    float rangeMin, rangeMax;
    float minX, maxX;
    std::vector<float> lut; ///< of 5 entries, the guard included
};

TEST(CurveToLutTest, FollowsThePolyline)
{
    Polyline const identity{{0, 0}, {1, 1}};
    for (auto const& [name, line, rangeMin, rangeMax, minX, maxX, lut] :
         {SampleCase{"identity", {{0, 0}, {3, 3}}, 0, 3, 0, 3, {0, 1, 2, 3, 3}},
          SampleCase{"clipped to the line", identity, -1, 2, 0, 1, {0, 1 / 3.0F, 2 / 3.0F, 1, 1}},
          SampleCase{"part of the line", {{0, 0}, {4, 8}}, 0.5F, 2, 0.5F, 2, {1, 2, 3, 4, 4}},
          SampleCase{"one point", {{0.5F, 7}}, 0, 1, 0.5F, 0.5F, {7, 7, 7, 7, 7}},
          SampleCase{
              "two keys at one x", {{0, 0}, {1, 0}, {1, 5}, {3, 5}}, 0, 3, 0, 3, {0, 5, 5, 5, 5}},
          // The step of 3 / 4 makes every segment under 0.00075 a step.
          SampleCase{"narrow segment",
                     {{0, 2}, {0.9997F, 2}, {1.0003F, 8}, {3, 8}},
                     0,
                     3,
                     0,
                     3,
                     {2, 2, 8, 8, 8}},
          SampleCase{"wide enough segment",
                     {{0, 2}, {0.5F, 2}, {1.5F, 8}, {3, 8}},
                     0,
                     3,
                     0,
                     3,
                     {2, 5, 8, 8, 8}}}) {
        SCOPED_TRACE(name);
        Sampled const sampled = sample(line, rangeMin, rangeMax, 5);
        EXPECT_EQ(sampled.minX, minX);
        EXPECT_EQ(sampled.maxX, maxX);
        for (std::size_t entry = 0; entry < lut.size(); ++entry) {
            EXPECT_FLOAT_EQ(sampled.lut[entry], lut[entry]) << entry;
        }
    }
}

TEST(CurveToLutTest, EqualsReferenceForRandomPolylines)
{
    std::mt19937 words(11);
    auto const unit = [&] { return static_cast<float>(words() >> 8U) * 0x1p-24F; };
    for (int round = 0; round < 60; ++round) {
        Polyline line;
        float x = unit() - 0.5F;
        for (std::size_t point = 0; point <= words() % 40U; ++point) {
            line.push_back({x, unit() * 3.0F - 1.0F});
            constexpr float nearlyVertical = 1e-6F;
            std::uint32_t const kind = words() % 8U;
            x += kind == 0 ? 0.0F : unit() * (kind == 1 ? nearlyVertical : 0.2F);
        }
        for (std::size_t const length : {std::size_t{3}, std::size_t{4}, stageLength}) {
            Sampled const actual = sample(line, -0.2F, 0.9F + unit(), length);
            Sampled const whole = sample(line, line.front().x, line.back().x, length);
            auto const table = reference::sampleTable(line, line.front().x, line.back().x, length);
            EXPECT_TRUE(sameBits(whole.minX, table.minX) && sameBits(whole.maxX, table.maxX));
            for (std::size_t entry = 0; entry < length; ++entry) {
                ASSERT_TRUE(sameBits(whole.lut[entry], table.entries[entry])) << round;
            }
            EXPECT_TRUE(sameBits(actual.lut[length - 1], actual.lut[length - 2]));
        }
    }
}

TEST(CurveToLutTest, AsksForThirtySubdivisionsAndTheEvaluationStep)
{
    auto const line = makeShared<PolylineCurve>(Polyline{{0, 0}, {1, 1}});
    RCShdPtr<BzFunctionCurve> curve = line;
    Vector<float> lut(stageLength);
    float minX = 0.0F;
    float maxX = 0.0F;
    Utils::curveToLUT(lut, 0.0F, 2.0F, curve, &minX, &maxX);
    EXPECT_EQ(line->askedSubdivisions, 30);
    EXPECT_EQ(line->askedStep, 2.0F / 1024.0F);
}

TEST(CurveToLutTest, BrokenPolylinesAreAssertionFailuresWithTheirPlace)
{
    struct Broken {
        Polyline line;
        int place;
        char const* expression;
    };
    for (auto const& [line, place, expression] :
         {Broken{{}, 78, "!data.empty()"}, Broken{{{notANumber, 0}, {1, 1}}, 156, "x0 <= lutX"},
          Broken{{{0, 0}, {notANumber, 1}}, 159, "x1 > lutX"}}) {
        Sampled sampled{Vector<float>(5, 9.0F)};
        RCShdPtr<BzFunctionCurve> curve = makeShared<PolylineCurve>(line);
        auto const failure = catchFailure<AssertionFailure>([&] {
            Utils::curveToLUT(sampled.lut, 0.0F, 1.0F, curve, &sampled.minX, &sampled.maxX);
        });
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getFile(), "tools\\remapColor\\src\\remapColorCurveLUTUtils");
        EXPECT_EQ(failure->getLine(), place);
        EXPECT_EQ(failure->getExpression(), expression);
        // Without points nothing was written; otherwise the range was.
        EXPECT_EQ(sampled.minX, line.empty() ? -77.0F : 0.0F);
        EXPECT_EQ(sampled.lut, Vector<float>(5, 9.0F));
    }
}

TEST(CurveToLutTest, EmptyCurveIsNamedAndNothingIsWritten)
{
    Sampled sampled{Vector<float>(5, 9.0F)};
    RCShdPtr<BzFunctionCurve> none;
    expectFailure<NullPointerException>("Null pointer: BzFunctionCurve", [&] {
        Utils::curveToLUT(sampled.lut, 0.0F, 1.0F, none, &sampled.minX, &sampled.maxX);
    });
    EXPECT_EQ(sampled.minX, -77.0F);
    EXPECT_EQ(sampled.lut, Vector<float>(5, 9.0F));
    expectFailure<NullPointerException>("Null pointer: BzFunctionCurve", [&] {
        Utils::ScanlineLut const lut(none, Vector<float>(5), 0.0F, 1.0F);
    });
}

float map(Utils::ScanlineLut const& lut, float value)
{
    float out = 0.0F;
    lut.processScanline(out, value);
    return out;
}

TEST(ScanlineLutTest, EqualsReferenceForRandomCurves)
{
    std::vector<float> values = reference::standardValues();
    for (float value = -1.5F; value < 3.0F; value += 0.0137F) {
        values.push_back(value);
    }
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        ControlPoints const points = makeRandomCurve(seed);
        reference::CurveLookup const expected(points);
        RCShdPtr<BzFunctionCurve> curve = makeCurve(points);
        Sampled sampled{Vector<float>(stageLength)};
        Utils::curveToLUT(sampled.lut, points[1].x, points[points.size() - 2].x, curve,
                          &sampled.minX, &sampled.maxX);
        Utils::ScanlineLut const lut(curve, sampled.lut, sampled.minX, sampled.maxX);
        for (float const value : values) {
            ASSERT_TRUE(reference::nearFloat(expected.map(value), map(lut, value), 0))
                << "seed " << seed << ", value " << value;
        }
    }
}

TEST(ScanlineLutTest, AnyRangeOfTheTableEqualsReference)
{
    ControlPoints const points{{-1, -2}, {0, 0}, {0.3F, 0.3F}, {0.7F, 0.7F}, {1, 1}, {1.5F, 3}};
    RCShdPtr<BzFunctionCurve> curve = makeCurve(points);
    Vector<float> const entries{0, 2, 1, 5, 3, 3};
    for (auto const& [minX, maxX] :
         {std::pair(0.0F, 1.0F), std::pair(1.0F, -0.5F), std::pair(0.5F, 0.5F),
          std::pair(0.0F, 1e-40F), std::pair(-1e30F, 1e30F), std::pair(2.0F, 2.0000002F)}) {
        Utils::ScanlineLut const lut(curve, entries, minX, maxX);
        reference::CurveLookup const expected(points, {entries, minX, maxX});
        for (float const value : reference::standardValues()) {
            EXPECT_TRUE(reference::nearFloat(expected.map(value), map(lut, value), 0))
                << minX << " to " << maxX << ", value " << value;
        }
    }
}

struct ExtensionCase {
    char const* name;
    GePoint2<float> incoming, outgoing;
    float below, above; ///< mapped -1 and 2
};

TEST(ScanlineLutTest, ValuesBeyondTheTableFollowTheEndHandles)
{
    for (auto const& [name, incoming, outgoing, below, above] :
         {ExtensionCase{"diagonal", {-0.2F, -0.2F}, {1.5F, 1.5F}, -1, 2},
          ExtensionCase{"steep and flat", {-0.5F, -1}, {2, 1}, -2, 1},
          ExtensionCase{"on their keys", {0, 0}, {1, 1}, 0, 0},
          ExtensionCase{"a hair off their keys", {-0x1p-23F, 0}, {1, 1.0000001F}, 0, 0},
          ExtensionCase{"just off", {-0x1.000002p-23F, 0}, {1.0000004F, 1}, 0, 1}}) {
        SCOPED_TRACE(name);
        RCShdPtr<BzFunctionCurve> curve = makeCurve({{incoming.x, incoming.y},
                                                     {0, 0},
                                                     {0.3F, 0.3F},
                                                     {0.7F, 0.7F},
                                                     {1, 1},
                                                     {outgoing.x, outgoing.y}});
        Utils::ScanlineLut const lut(curve, {0, 1, 1}, 0.0F, 1.0F);
        EXPECT_FLOAT_EQ(map(lut, -1.0F), below);
        EXPECT_FLOAT_EQ(map(lut, 2.0F), above);
        EXPECT_EQ(map(lut, 0.0F), 0.0F);
        EXPECT_EQ(map(lut, 0.5F), 0.5F);
        EXPECT_EQ(map(lut, 1.0F), 1.0F);
    }
}

TEST(ScanlineLutTest, AsksForTheHandlesOfBothEndKeysOnly)
{
    auto const line = makeShared<PolylineCurve>(Polyline{});
    line->getCtrlPoints().resize(12);
    RCShdPtr<BzFunctionCurve> curve = line;
    Utils::ScanlineLut const lut(curve, {0, 1, 1}, 0.0F, 1.0F);
    EXPECT_EQ(line->askedHandles, (std::vector<int>{0, 3}));
}

TEST(ScanlineLutTest, ProcessCurveAppendsMappedPoints)
{
    RCShdPtr<BzFunctionCurve> curve = makeCurve({{-1, -1}, {0, 0}, {1, 1}});
    Utils::ScanlineLut const lut(curve, {0, 4, 4}, 0.0F, 1.0F);
    Vector<GePoint2<float>> out{{9, 9}};
    lut.processCurve(out, {{5, 0.5F}, {-3, -2}, {7, 1}});
    EXPECT_EQ(out, (Vector<GePoint2<float>>{{9, 9}, {5, 2}, {-3, -2}, {7, 4}}));
    lut.processCurve(out, {});
    EXPECT_EQ(out.size(), 4U);
}

} // namespace
