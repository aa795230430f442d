#include "runtime/curves/CurveText.h"

#include "runtime/values/HostValue.h"
#include "support/Failures.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(CurveText, HandlesAreTakenAsTheyAreWritten)
{
    CurvePoints const curve = parseCurve("c", " -0.5,-1 0,0 0.25,0.5;0.75,1  1,1.5\t1.25,2 ; ");
    EXPECT_EQ(curve, (CurvePoints{{-0.5F, -1.0F},
                                  {0.0F, 0.0F},
                                  {0.25F, 0.5F},
                                  {0.75F, 1.0F},
                                  {1.0F, 1.5F},
                                  {1.25F, 2.0F}}));
}

TEST(CurveText, EndKeysWithoutHandleGetOneAlongTheEndTangent)
{
    CurvePoints const curve = parseCurve("c", "0,0 0,0 0.25,0.5; 0.75,0.5 1,1 1,1");
    EXPECT_EQ(curve.front(), (GePoint2<float>{-0.25F, -0.5F}));
    EXPECT_EQ(curve.back(), (GePoint2<float>{1.25F, 1.5F}));
}

TEST(CurveText, PlainKeysAreKeptAndJoinedWithoutOvershoot)
{
    CurvePoints const curve = parseCurve("c", "0,0 0.5,1 1,1 2,1e-1");
    EXPECT_EQ(formatCurveKeys(curve), "0,0 0.5,1 1,1 2,0.1");
    EXPECT_EQ(formatCurveKeys(parseCurve("c", "0,0 0.5,0 0.5,1 1,1")), "0,0 0.5,0 0.5,1 1,1");
}

TEST(CurveText, HandlesBetweenPlainKeysAreAThirdOfTheWayAlongTheirSlopes)
{
    struct Case {
        char const* name;
        std::string keys;
        std::vector<double> slopes;
    };
    for (auto const& [name, keys, slopes] :
         {Case{"mean of the neighbours", "0,0 3,3 6,12", {1, 2, 3}},
          Case{"a top", "0,0 3,3 6,-3", {1, 0, -2}}, Case{"a bottom", "0,0 3,-3 9,9", {-1, 0, 2}},
          Case{"beside a level", "0,0 3,0 6,3", {0, 0, 1}},
          Case{"at most three times the flatter", "0,0 3,3 6,33", {1, 3, 10}},
          Case{"falling", "0,0 3,-30 6,-33", {-10, -3, -1}},
          Case{"a step", "0,0 3,3 3,9 6,12", {1, 1, 1, 1}}}) {
        SCOPED_TRACE(name);
        CurvePoints const curve = parseCurve("c", keys);
        ASSERT_EQ(curve.size(), 3 * slopes.size());
        for (std::size_t key = 0; key < slopes.size(); ++key) {
            auto const [x, y] = curve[3 * key + 1];
            bool const isFirst = key == 0;
            bool const isLast = key + 1 == slopes.size();
            // The ends mirror their inner handle.
            float const left =
                isFirst ? curve[3 * key + 2].x - x : (x - curve[3 * key - 2].x) / 3.0F;
            float const right = isLast ? left : (curve[3 * key + 4].x - x) / 3.0F;
            auto const slope = static_cast<float>(slopes[key]);
            EXPECT_EQ(curve[3 * key], (GePoint2<float>{x - left, y - slope * left})) << key;
            EXPECT_EQ(curve[3 * key + 2], (GePoint2<float>{x + right, y + slope * right})) << key;
        }
    }
}

TEST(CurveText, WrittenCurvesReadBackBitForBit)
{
    CurvePoints const curve = parseCurve("c", "0.1,-7e-12 0.3333333,0.1 16777216,3.4e30");
    EXPECT_EQ(parseCurve("c", formatCurve(curve)), curve);
    Animated<CurvePoints> const moving({{-0.1, curve}, {24.0, parseCurve("c", "0,1 0.5,1 1,1")}});
    EXPECT_EQ(parseAnimatedCurve("c", formatAnimatedCurve(moving)), moving);
}

TEST(CurveText, WrongOnesAreRefusedWithTheirPlace)
{
    struct Case {
        std::string text, complaint;
    };
    for (auto const& [text, complaint] :
         {Case{"", "a curve needs at least two keys, not 0"},
          Case{"0,0", "a curve needs at least two keys, not 1"},
          Case{"-1,-1 0,0 1,1;", "a curve needs at least two keys, not 1"},
          Case{";", "key 1 has 0 points"},
          Case{"0,0 0.5,1 0.4,1", "key 3 at x 0.4 runs back behind key 2 at x 0.5"},
          Case{"0,0 1,0 2,0; -1,0 0,0 1,0", "key 2 at x 0 runs back"},
          Case{"0,0 1,a", "key 2: \"1,a\" is no point"}, Case{"0,0 1", "key 2: \"1\" is no point"},
          Case{"0,0,0 1,1", "key 1: \"0,0,0\" is no point"},
          Case{"0,0 1,inf", "key 2: \"1,inf\" is no point"},
          Case{"0,0 1,1; 1,1 2,2 3,3", "key 1 has 2 points"},
          Case{"0,0 1,1 2,2;; 2,2 3,3 4,4", "key 2 has 0 points"}}) {
        std::string const failure = messageOf<ValueError>([&] { parseCurve("--curve red", text); });
        EXPECT_TRUE(failure.starts_with("--curve red: " + complaint)) << text << ": " << failure;
    }
}

} // namespace
