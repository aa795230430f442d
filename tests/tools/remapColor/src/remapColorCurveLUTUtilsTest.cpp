// Sampling of curves to tables and lookups in tables.

#include "remapColorCurveLUTUtils.h"

#include "ToolBench.h"
#include "support/PixelMatcher.h"
#include "support/StandardPixels.h"

#include "base/HostException.h"

#include <cmath>
#include <memory>
#include <random>

namespace {

using reference::ControlPoints;
using reference::Polyline;
using reference::sameBits;
using Utils = RemapColorCurveLUTUtils;

constexpr std::size_t stageLength = reference::stageTableLength;

/// A curve whose polyline is given.
class PolylineCurve : public BzFunctionCurve {
public:
    explicit PolylineCurve(Polyline line) : BzFunctionCurve(Tangent, 1), polyline(std::move(line))
    {
    }
    void evaluateCurve(Vector<GePoint2<float>>& data, int, float) const override
    {
        for (auto const& [x, y] : polyline) {
            data.push_back({x, y});
        }
    }

private:
    Polyline polyline;
};

RCShdPtr<BzFunctionCurve> makeCurve(ControlPoints const& points)
{
    auto curve = makeShared<BzFunctionCurve>(BzFunctionCurve::Tangent, 0);
    for (auto const& [x, y] : points) {
        curve->getCtrlPoints().push_back({x, y});
    }
    return curve;
}

/// A table with the range that it covers.
struct Sampled {
    void sample(RCShdPtr<BzFunctionCurve> curve, float rangeMin, float rangeMax)
    {
        Utils::curveToLUT(lut, rangeMin, rangeMax, curve, &minX, &maxX);
    }
    Vector<float> lut;
    float minX = -77.0F;
    float maxX = -77.0F;
};

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
        float const low = round % 3 == 0 ? unit() - 0.5F : line.front().x;
        float const high = round % 2 == 0 ? low + unit() * 3.0F : line.back().x;
        for (std::size_t const length : {std::size_t{3}, std::size_t{4}, stageLength}) {
            Sampled actual{Vector<float>(length)};
            actual.sample(makeShared<PolylineCurve>(line), low, high);
            auto const expected = reference::sampleTable(line, low, high, length);
            EXPECT_TRUE(sameBits(actual.minX, expected.minX) &&
                        sameBits(actual.maxX, expected.maxX));
            for (std::size_t entry = 0; entry < length; ++entry) {
                ASSERT_TRUE(sameBits(actual.lut[entry], expected.entries[entry])) << round;
            }
        }
    }
}

TEST(CurveToLutTest, ASegmentNarrowerThanAThousandthOfAStepGivesItsStart)
{
    // Four entries: samples at 0, 0.5 and 1, steps of a third.
    for (auto const& [halfWidth, expected] :
         {std::pair{1.6e-4F, 0.25F}, std::pair{1.7e-4F, 0.5F}, std::pair{1.6e-3F, 0.5F}}) {
        Sampled sampled{Vector<float>(4)};
        sampled.sample(makeShared<PolylineCurve>(Polyline{
                           {0, 0}, {0.5F - halfWidth, 0.25F}, {0.5F + halfWidth, 0.75F}, {1, 1}}),
                       0.0F, 1.0F);
        EXPECT_NEAR(sampled.lut[1], expected, 1e-3) << halfWidth;
    }
}

TEST(CurveToLutTest, BrokenCurvesAreFailuresWithTheirPlace)
{
    struct Broken {
        Polyline line;
        int place;
        char const* expression;
    };
    float const notANumber = std::nanf("");
    for (auto const& [line, place, expression] :
         {Broken{{}, 78, "!data.empty()"}, Broken{{{notANumber, 0}, {1, 1}}, 156, "x0 <= lutX"},
          Broken{{{0, 0}, {notANumber, 1}}, 159, "x1 > lutX"}}) {
        Sampled sampled{Vector<float>(5, 9.0F)};
        auto const failure = catchFailure<AssertionFailure>(
            [&] { sampled.sample(makeShared<PolylineCurve>(line), 0.0F, 1.0F); });
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getFile(), "tools\\remapColor\\src\\remapColorCurveLUTUtils");
        EXPECT_EQ(failure->getLine(), place);
        EXPECT_EQ(failure->getExpression(), expression);
        // Without points nothing was written; otherwise the range was.
        EXPECT_EQ(sampled.minX, line.empty() ? -77.0F : 0.0F);
        EXPECT_EQ(sampled.lut, Vector<float>(5, 9.0F));
    }
}

void expectReference(Utils::ScanlineLut& lut, reference::Mapping const& expected)
{
    std::vector<float> values = reference::standardValues();
    for (float value = -1.5F; value < 3.0F; value += 0.0137F) {
        values.push_back(value);
    }
    for (float const value : values) {
        float out = 0.0F;
        lut.processScanline(out, value);
        ASSERT_TRUE(reference::sameValue(expected(value), out)) << "for " << value;
    }
}

TEST(ScanlineLutTest, AnyRangeAndEndHandlesEqualReference)
{
    struct Case {
        char const* name;
        float minX, maxX;
        reference::Point incoming, outgoing;
    };
    for (auto const& [name, minX, maxX, incoming, outgoing] :
         {Case{"steep and flat", 0, 1, {-0.5F, -1}, {2, 1}},
          Case{"handles on their keys", 0, 1, {0, 0}, {1, 1}},
          Case{"handles a hair off their keys", 0, 1, {-0x1p-23F, 0}, {1, 1.0000001F}},
          Case{"handles just off", 0, 1, {-0x1.000002p-23F, 0}, {1.0000004F, 1}},
          Case{"reversed range", 1, -0.5F, {-1, -2}, {1.5F, 3}},
          Case{"empty range", 0.5F, 0.5F, {-1, -2}, {1.5F, 3}},
          Case{"denormal range", 0, 1e-40F, {-1, -2}, {1.5F, 3}},
          Case{"huge range", -1e30F, 1e30F, {-1, -2}, {1.5F, 3}},
          Case{"range of one step", 2, 2.0000002F, {-1, -2}, {1.5F, 3}}}) {
        SCOPED_TRACE(name);
        ControlPoints const points{incoming, {0, 0}, {0.3F, 0.3F}, {0.7F, 0.7F}, {1, 1}, outgoing};
        RCShdPtr<BzFunctionCurve> curve = makeCurve(points);
        Vector<float> const entries{0, 2, 1, 5, 3, 3};
        Utils::ScanlineLut lut(curve, entries, minX, maxX);
        expectReference(lut, reference::makeLookup(points, {entries, minX, maxX}));
    }
}

/// What a curve editor's library may do with the class.
struct NamedLut : Utils::ScanlineLut {
    using ScanlineLut::ScanlineLut;
    char const* name = "red";
};

TEST(ScanlineLutTest, OtherLibrariesDeriveFromItAndFindItsKind)
{
    RCShdPtr<BzFunctionCurve> curve = makeCurve({{-1, -1}, {0, 0}, {1, 1}});
    std::unique_ptr<Utils::ScanlineLut> const lut =
        std::make_unique<NamedLut>(curve, Vector<float>{0, 4, 4}, 0.0F, 1.0F);
    EXPECT_NE(dynamic_cast<NamedLut*>(lut.get()), nullptr);
    float out = 0.0F;
    lut->processScanline(out, 0.5F);
    EXPECT_EQ(out, 2.0F);
}

TEST(ScanlineLutTest, ProcessCurveAppendsMappedPoints)
{
    RCShdPtr<BzFunctionCurve> curve = makeCurve({{-1, -2}, {0, 0}, {1, 3}});
    Utils::ScanlineLut lut(curve, {0, 4, 4}, 0.0F, 1.0F);
    Vector<GePoint2<float>> out{{9, 9}};
    lut.processCurve(out, {{5, 0.5F}, {-3, -2}, {7, 1}});
    EXPECT_EQ(out, (Vector<GePoint2<float>>{{9, 9}, {5, 2}, {-3, -4}, {7, 4}}));
}

} // namespace
