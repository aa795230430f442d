#include "remapcolor/ValueOptions.h"

#include "remapcolor/Failures.h"
#include "remapcolor/NodeRequest.h"
#include "remapcolor/ToolSession.h"
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

    ToolSession const session{NodeRequest()};
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
    EXPECT_EQ(take<int>(collect({"Output Depth=16 bit (FLOAT)"}), "Output Depth"),
              Animated<int>(1));
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

TEST_F(ValueOptions, WrongOnesAreRefusedWithAHint)
{
    struct Case {
        std::string text, complaint;
        Form form = Form::Named;
    };
    for (auto const& [text, complaint, form] :
         {Case{"Mode", "write NAME=VALUE"},
          Case{"Exposure=1", "did you mean \"EXRDisplay.Exposure\"?"},
          Case{"=1", "there is no input \"\""}, Case{"Linear=1", "groups inputs of several kinds"},
          Case{"EXRDisplay.Exposure=11", "takes -10 to 10, not 11"},
          Case{"EXRDisplay.Exposure=1@1,11@2", "takes -10 to 10"},
          Case{"Linear.Gamma=2x", "takes a number such as 1.5, not \"2x\""},
          Case{"Linear.Gamma=inf", "takes a number"},
          Case{"Linear.Gamma=2,2", "decimals follow a full stop"},
          Case{"Adjust=2", "takes true or false"}, Case{"Mode=Linaer", "did you mean \"Linear\"?"},
          Case{"Mode=2", "takes one of 0 \"Linear\", 1 \"EXRDisplay\""},
          Case{"Mode=0@1,1@2", "\"Mode\" cannot be animated"},
          Case{"Linear.Gamma=1@1,2", "\"2\" is no keyframe"},
          Case{"Linear.Gamma=1@2,2@2", "give them in rising order"},
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
