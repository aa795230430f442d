#include "remapcolor/NearestNames.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

struct Case {
    std::string title;
    std::string wanted;
    std::vector<std::string> nearest;
};

class NearestNames : public testing::TestWithParam<Case> {};

TEST_P(NearestNames, AreWhatWasMeant)
{
    std::vector<std::string> const names = {
        "Mode",
        "Adjust",
        "Adjust Curve",
        "Linear.Gamma",
        "Linear.Gamma.Red",
        "EXRDisplay.Gamma",
        "EXRDisplay.Exposure",
        "EXRDisplay.Exposure.Red",
        "EXRDisplay.Knee High",
    };
    EXPECT_EQ(findNearestNames(GetParam().wanted, names), GetParam().nearest);
}

INSTANTIATE_TEST_SUITE_P(
    , NearestNames,
    testing::Values(Case{"MissingLetter", "Adust", {"Adjust"}},
                    Case{"SwappedLettersCountOnce", "Moed", {"Mode"}},
                    Case{"OtherCase", "mODE", {"Mode"}},
                    Case{"MissingPrefix", "exposure", {"EXRDisplay.Exposure"}},
                    Case{"MissingPrefixWithMember", "Exposure.Red", {"EXRDisplay.Exposure.Red"}},
                    Case{"MissingMiddle", "EXRDisplay.Red", {"EXRDisplay.Exposure.Red"}},
                    Case{"MistypedWithoutPrefix", "Knee Hihg", {"EXRDisplay.Knee High"}},
                    Case{"AllThatAreEquallyNear", "Gamma", {"Linear.Gamma", "EXRDisplay.Gamma"}},
                    Case{"NothingNear", "Saturation", {}}, Case{"NothingForNothing", "", {}},
                    Case{"NotTooLongToCompare", std::string(100'000, 'x'), {}}),
    [](auto const& info) { return info.param.title; });

TEST(SuggestNames, OffersSomethingElseWhereNothingIsNear)
{
    EXPECT_EQ(suggestNames("Reed", {"Red", "Green"}, "see the list"), "; did you mean \"Red\"?");
    EXPECT_EQ(suggestNames("Purple", {"Red", "Green"}, "see the list"), "; see the list");
}

} // namespace
