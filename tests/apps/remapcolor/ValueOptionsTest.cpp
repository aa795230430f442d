#include "remapcolor/ValueOptions.h"

#include "remapcolor/Failures.h"
#include "remapcolor/NodeRequest.h"
#include "remapcolor/ToolSession.h"
#include "remapcolor/ValueText.h"

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

TEST_F(ValueOptions, NameThatBeginsAnotherDoesNotSetIt)
{
    EXPECT_EQ(collect({"Adjust=off"}).size(), 1U); // and not "Adjust Curve"
}

TEST_F(ValueOptions, LaterSettingWins)
{
    NodeValues const values = collect({"Linear.Gamma=2", "Linear.Gamma.Red=3", "Linear.Gamma=1e1"});
    EXPECT_EQ(take<double>(values, "Linear.Gamma.Red"), Animated<double>(10.0));
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

TEST_F(ValueOptions, DefaultsReadBackAsTheyAreShown)
{
    for (HostNode::ValueSlot const& slot : session.getNode().getValues()) {
        if (dynamic_cast<PiEnumPolicy const*>(slot.value->getPolicy().get()) == nullptr &&
            !std::holds_alternative<Animated<CurvePoints>>(*slot.value->getState())) {
            EXPECT_EQ(parseValue(*slot.value, formatValue(*slot.value)), *slot.value->getState())
                << slot.name;
        }
    }
}

struct Wrong {
    std::string title;
    Form form;
    std::string text;
    std::string complaint;
};

class WrongValueOption : public testing::TestWithParam<Wrong> {};

TEST_P(WrongValueOption, IsRefusedWithAHint)
{
    ToolSession const session{NodeRequest()};
    std::string complaint;
    try {
        collectValues(session.getNode(), {{GetParam().form, GetParam().text}});
    } catch (std::exception const&) {
        Failure const failure = describeCurrentFailure();
        EXPECT_EQ(failure.status, static_cast<int>(ExitStatus::WrongRequest));
        complaint = failure.text;
    }
    EXPECT_NE(complaint.find(GetParam().complaint), std::string::npos) << complaint;
}

INSTANTIATE_TEST_SUITE_P(
    , WrongValueOption,
    testing::Values(
        Wrong{"NoValue", Form::Named, "Mode", "write NAME=VALUE"},
        Wrong{"UnknownName", Form::Named, "Exposure=1", "did you mean \"EXRDisplay.Exposure\"?"},
        Wrong{"NoName", Form::Named, "=1", "there is no input \"\""},
        Wrong{"MixedStructure", Form::Named, "Linear=1", "groups inputs of several kinds"},
        Wrong{"OutOfRange", Form::Named, "EXRDisplay.Exposure=11", "takes -10 to 10, not 11"},
        Wrong{"KeyOutOfRange", Form::Named, "EXRDisplay.Exposure=1@1,11@2", "takes -10 to 10"},
        Wrong{"NoNumber", Form::Named, "Linear.Gamma=2x", "takes a number such as 1.5, not \"2x\""},
        Wrong{"NotFinite", Form::Named, "Linear.Gamma=inf", "takes a number"},
        Wrong{"DecimalComma", Form::Named, "Linear.Gamma=2,2", "decimals follow a full stop"},
        Wrong{"NoSwitch", Form::Named, "Adjust=2", "takes true or false"},
        Wrong{"NearChoice", Form::Named, "Mode=Linaer", "did you mean \"Linear\"?"},
        Wrong{"NoChoice", Form::Named, "Mode=2", "takes one of 0 \"Linear\", 1 \"EXRDisplay\""},
        Wrong{"AnimatedChoice", Form::Named, "Mode=0@1,1@2", "\"Mode\" cannot be animated"},
        Wrong{"KeyWithoutTime", Form::Named, "Linear.Gamma=1@1,2", "\"2\" is no keyframe"},
        Wrong{"KeysNotRising", Form::Named, "Linear.Gamma=1@2,2@2", "give them in rising order"},
        Wrong{"NearChannel", Form::Curves, "gren=0,0 1,1", "did you mean \"green\"?"},
        Wrong{"NoChannel", Form::Curves, "=0,0 1,1", "write red, green, blue or rgb"},
        Wrong{"CurveRunsBack", Form::Curves, "rgb=1,0 0,1", "key 2 at x 0 runs back"},
        Wrong{"CurveTooLarge", Form::Curves, "rgb=0,0 1,1e300", "not a finite number"}),
    [](auto const& info) { return info.param.title; });

} // namespace
