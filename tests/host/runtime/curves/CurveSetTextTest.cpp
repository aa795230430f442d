#include "runtime/curves/CurveSetText.h"

#include "runtime/curves/CurveText.h"
#include "runtime/values/HostValue.h"
#include "support/Failures.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> const channels = {"Red", "Green", "Blue"};

CurvePoints smooth(std::string const& keys)
{
    return parseCurve("c", keys);
}

TEST(CurveSetText, LinesNameChannelsAndTimes)
{
    CurveSet const set = parseCurveSet("0,0 1,2\r\n\n BLUE,green = \"0,0 1,3\" \n"
                                       "green=0,0 1,6",
                                       channels);
    EXPECT_EQ(set.at("Red"), Animated<CurvePoints>(smooth("0,0 1,2")));
    EXPECT_EQ(set.at("Green"), Animated<CurvePoints>(smooth("0,0 1,6")));
    EXPECT_EQ(set.at("Blue"), Animated<CurvePoints>(smooth("0,0 1,3")));
    EXPECT_TRUE(parseCurveSet(" \n\t\n", channels).empty());
}

TEST(CurveSetText, WrongLinesAreRefusedWithTheirNumber)
{
    struct Case {
        std::string text, complaint;
    };
    for (auto const& [text, complaint] :
         {Case{"red=0,0 1,1\ngreem=0,0 1,1", "line 2: there is no channel \"greem\""},
          Case{"red=0,0 1,1 @x", "line 1: \"0,0 1,1 @x\" is no keyframe"},
          Case{"\nblue=0,0 1,1;", "line 2: key 1 has 2 points"}}) {
        std::string const failure = messageOf<ValueError>([&] { parseCurveSet(text, channels); });
        EXPECT_TRUE(failure.starts_with(complaint)) << text << ": " << failure;
    }
}

TEST(CurveSetText, WhatIsWrittenReadsBack)
{
    CurveSet const set = {
        {"Red", Animated<CurvePoints>({{-1.0, smooth("0,0 1,2")}, {2.5, smooth("0,0.1 1,3")}})},
        {"Blue", Animated<CurvePoints>(smooth("0,0 0.5,0.7 1,1"))}};
    EXPECT_EQ(parseCurveSet(formatCurveSet(set, channels), channels), set);
}

} // namespace
