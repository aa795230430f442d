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
    // Handles inside stay between their keys' heights; 1 is the highest key.
    for (std::size_t point = 1; point + 1 < curve.size(); ++point) {
        EXPECT_LE(curve[point].y, 1.0F) << "point " << point;
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
