#include "remapcolor/options/ValueOptions.h"

#include "session/Failures.h"
#include "session/ToolSession.h"
#include "support/Failures.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Form = ValueSetting::Form;

template <typename T>
Animated<T> const& take(NodeValues const& values, std::string const& name)
{
    return std::get<Animated<T>>(values.at(name));
}

class ValueOptions : public testing::Test {
protected:
    NodeValues collect(std::vector<std::string> const& named) const
    {
        std::vector<ValueSetting> settings;
        for (std::string const& text : named) {
            settings.push_back({Form::Named, text});
        }
        return collectValues(session.getNode(), settings);
    }

    ToolSession const session;
};

TEST_F(ValueOptions, StructureSetsItsMembersAndNothingElse)
{
    NodeValues const values = collect({"exrdisplay.KNEE high = 4.5"});
    ASSERT_EQ(values.size(), 3U);
    for (std::string const channel : {"Red", "Green", "Blue"}) {
        EXPECT_EQ(take<double>(values, "EXRDisplay.Knee High." + channel), Animated<double>(4.5));
    }
}

TEST_F(ValueOptions, LaterSettingWins)
{
    NodeValues const values = collect({"Linear.Gamma=2", "Linear.Gamma.Red=3", "Linear.Gamma=1e1"});
    EXPECT_EQ(take<double>(values, "Linear.Gamma.Red"), Animated<double>(10.0));
    EXPECT_EQ(collect({"Adjust=off"}).size(), 1U); // and not "Adjust Curve"
}

TEST_F(ValueOptions, ChoicesAndSwitchesAreReadInAllTheirForms)
{
    for (std::string const text : {"EXRDisplay", "exrdisplay", "1"}) {
        EXPECT_EQ(take<int>(collect({"Mode=" + text}), "Mode"), Animated<int>(1)) << text;
    }
    for (std::string const text : {"16 bit (FLOAT)", "16", "16 bit", "1"}) {
        EXPECT_EQ(take<int>(collect({"Output Depth=" + text}), "Output Depth"), Animated<int>(1))
            << text;
    }
    for (std::string const text : {"false", "OFF", "no", "0"}) {
        EXPECT_EQ(take<bool>(collect({"Adjust=" + text}), "Adjust"), Animated<bool>(false)) << text;
    }
}

TEST_F(ValueOptions, KeyframesBecomeKeysOfTheValue)
{
    NodeValues const values =
        collect({"EXRDisplay.Exposure.Red=-1@-2.5, 2@24", "Linear.Clamp=off@1,on@2"});
    EXPECT_EQ(take<double>(values, "EXRDisplay.Exposure.Red"),
              Animated<double>(std::vector<Keyframe<double>>{{-2.5, -1.0}, {24.0, 2.0}}));
    EXPECT_EQ(take<bool>(values, "Linear.Clamp"),
              Animated<bool>(std::vector<Keyframe<bool>>{{1.0, false}, {2.0, true}}));
}

TEST_F(ValueOptions, CurvesGoToTheChannelsThatAreNamed)
{
    auto const channelsOf = [&](std::string const& channels) {
        std::string found;
        NodeValues const values =
            collectValues(session.getNode(), {{Form::Curves, channels + "=0,0 1,2"}});
        for (auto const& [name, state] : values) {
            found += name + ";";
        }
        return found;
    };
    EXPECT_EQ(channelsOf("Red, blue"), "Adjust Curve.Blue;Adjust Curve.Red;");
    EXPECT_EQ(channelsOf("RGB"), "Adjust Curve.Blue;Adjust Curve.Green;Adjust Curve.Red;");
    EXPECT_EQ(collect({"Adjust Curve.Red=0,0 1,2"}),
              collectValues(session.getNode(), {{Form::Curves, "red=0,0 1,2"}}));
}

TEST_F(ValueOptions, KeyframesOfCurvesAreReadByBothOptions)
{
    auto const line = [](float top) {
        return CurvePoints{{-1, -1}, {0, 0}, {1, 1}, {1, 1}, {2, top}, {3, top}};
    };
    std::string const text = "-1,-1 0,0 1,1; 1,1 2,2 3,2 @-1.5 | -1,-1 0,0 1,1; 1,1 2,4 3,4;@ 2 ";
    NodeValues const values = collectValues(session.getNode(), {{Form::Curves, "blue=" + text}});
    EXPECT_EQ(take<CurvePoints>(values, "Adjust Curve.Blue"),
              Animated<CurvePoints>({{-1.5, line(2)}, {2.0, line(4)}}));
    EXPECT_EQ(collect({"adjust curve.blue=" + text}), values);
    EXPECT_EQ(collect({"Adjust Curve=" + text}),
              collectValues(session.getNode(), {{Form::Curves, "rgb=" + text}}));
}

TEST_F(ValueOptions, WrongOnesAreRefusedWithAHint)
{
    struct Case {
        std::string text, complaint;
        Form form = Form::Named;
    };
    for (auto const& [text, complaint, form] :
         {Case{"Mode", "write NAME=VALUE"},
          Case{"Exposure=1", "did you mean \"EXRDisplay.Exposure\"?"},
          Case{"=1", "there is no input \"\""},
          Case{"Linear.Gam=1", "there is no input \"Linear.Gam\""},
          Case{"Linear=1", "groups inputs of several kinds"},
          Case{"EXRDisplay.Exposure=11", "takes -10 to 10, not 11"},
          Case{"EXRDisplay.Exposure=1@1,11@2", "takes -10 to 10"},
          Case{"Linear.Gamma=2x", "takes a number such as 1.5, not \"2x\""},
          Case{"Linear.Gamma=inf", "takes a number"},
          Case{"Linear.Gamma=2,2", "decimals follow a full stop"},
          Case{"Adjust=2", "takes true or false"},
          Case{"Mode=Linaer", "did you mean \"Linear\"?"},
          Case{"Mode=2", "takes one of 0 \"Linear\", 1 \"EXRDisplay\""},
          Case{"Mode=0@1,1@2", "\"Mode\" cannot be animated"},
          Case{"Output Depth=5", "takes one of 0 \"8 Bit\""},
          Case{"Mute=on@1,off@2", "\"Mute\" cannot be animated"},
          Case{"Plot Color=1,2", "takes 3 finite numbers, not 2"},
          Case{"Adjust Curve=0.5,0 0.5,1", "has keys at x 0.5 alone"},
          Case{"EXRDisplay.Knee=4", "did you mean \"EXRDisplay.Knee High\" or"},
          Case{"red=0,0 1,1@1|1,0 1,1@2", "has keys at x 1 alone", Form::Curves},
          Case{"Linear.Gamma=1@1,2", "\"2\" is no keyframe"},
          Case{"Linear.Gamma=1@2,2@2", "give them in rising order"},
          Case{"Adjust Curve=0,0 1,1@1,0,0 1,2@2", "put a | between keyframes"},
          Case{"red=0,0 1,1@1|0,0 1,2", "\"0,0 1,2\" is no keyframe", Form::Curves},
          Case{"red=0,0 1,1@2|0,0 1,2@1", "give them in rising order", Form::Curves},
          Case{"red=0,0 1,1@2|0,0 1,b@3", "red at time 3: key 2: \"1,b\"", Form::Curves},
          Case{"red=0,0 1,1@2|0,0 1,1 2,2@3", "has 3 keys, the one at 2 has 2", Form::Curves},
          Case{"gren=0,0 1,1", "did you mean \"green\"?", Form::Curves},
          Case{"=0,0 1,1", "write red, green, blue or rgb", Form::Curves},
          Case{"rgb=1,0 0,1", "key 2 at x 0 runs back", Form::Curves},
          Case{"rgb=0,0 1,1e300", "not a finite number", Form::Curves}}) {
        std::string failure;
        try {
            collectValues(session.getNode(), {{form, text}});
        } catch (std::exception const&) {
            failure = describeCurrentFailure().text;
            EXPECT_EQ(describeCurrentFailure().status, static_cast<int>(ExitStatus::WrongRequest));
        }
        expectLineWith(complaint, failure);
    }
}

} // namespace
