#include "runtime/values/NearestNames.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

TEST(NearestNames, AreWhatWasMeant)
{
    using Names = std::vector<std::string>;
    Names const names = {"Mode",
                         "Adjust",
                         "Adjust Curve",
                         "Linear.Gamma",
                         "Linear.Gamma.Red",
                         "EXRDisplay.Gamma",
                         "EXRDisplay.Exposure",
                         "EXRDisplay.Exposure.Red",
                         "EXRDisplay.Knee High",
                         "EXRDisplay.Knee Low"};
    std::pair<std::string, Names> const cases[] = {
        {"Adust", {"Adjust"}},
        {"Moed", {"Mode"}}, // swapped letters count once
        {"mODE", {"Mode"}},
        {"exposure", {"EXRDisplay.Exposure"}},
        {"Exposure.Red", {"EXRDisplay.Exposure.Red"}},
        {"EXRDisplay.Red", {"EXRDisplay.Exposure.Red"}},
        {"Knee Hihg", {"EXRDisplay.Knee High"}},
        {"EXRDisplay.knee", {"EXRDisplay.Knee High", "EXRDisplay.Knee Low"}},
        {"Low", {"EXRDisplay.Knee Low"}},
        {"Gamma", {"Linear.Gamma", "EXRDisplay.Gamma"}},
        {"Saturation", {}},
        {"", {}},
        {std::string(100'000, 'x'), {}}};
    for (auto const& [wanted, nearest] : cases) {
        EXPECT_EQ(findNearestNames(wanted, names), nearest) << wanted.substr(0, 20);
    }
    EXPECT_EQ(findNearestNames("x", {"A.x", "B.x", "C.x", "D.x"}), (Names{"A.x", "B.x", "C.x"}));
    EXPECT_EQ(suggestNames("Reed", {"Red", "Green"}, "see the list"), "; did you mean \"Red\"?");
    EXPECT_EQ(suggestNames("Purple", {"Red", "Green"}, "see the list"), "; see the list");
}

} // namespace
