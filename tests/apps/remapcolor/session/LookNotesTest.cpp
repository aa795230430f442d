#include "remapcolor/session/LookNotes.h"

#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/session/RequestedSession.h"
#include "session/CurveNotes.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Form = ValueSetting::Form;
using Names = std::vector<std::string>;

/// Settings "NAME=VALUE", or of curves "rgb=...".
RequestedSession makeSession(Names const& settings)
{
    NodeRequest request;
    for (std::string const& text : settings) {
        request.settings.push_back({text.starts_with("rgb=") ? Form::Curves : Form::Named, text});
    }
    return RequestedSession(request);
}

void expectNotes(Names const& notes, Names const& wanted, Names const& settings)
{
    ASSERT_EQ(notes.size(), wanted.size())
        << testing::PrintToString(settings) << testing::PrintToString(notes);
    for (std::size_t note = 0; note < notes.size(); ++note) {
        EXPECT_NE(notes[note].find(wanted[note]), std::string::npos) << notes[note];
    }
}

TEST(LookNotes, NameWhatIsSetInVainOrHardlyMeant)
{
    struct Case {
        Names settings;
        Names notes;
        std::vector<double> times = {0.0};
    };
    std::vector<Case> const cases = {
        {{}, {}},
        {{"Linear.Gamma=2", "Mix=0.5", "rgb=0,0 1,2", "Histo Zoom=2"}, {}},
        {{"EXRDisplay.Exposure=2"},
         {"no effect of \"EXRDisplay.Exposure\": \"Mode\" is Linear; add --mode EXRDisplay"}},
        {{"EXRDisplay.Exposure=0@1,2@2", "EXRDisplay.Gamma.Red=0"},
         {"no effect of \"EXRDisplay.Exposure\", \"EXRDisplay.Gamma.Red\": \"Mode\""}},
        {{"Mode=EXRDisplay", "EXRDisplay.Exposure=2", "Linear.Gamma=0", "Linear.Clamp=on",
          "Linear.Input Level=3"},
         {"no effect of \"Linear.Input Level\", \"Linear.Gamma\", \"Linear.Clamp\": \"Mode\" is "
          "EXRDisplay; add --mode Linear"}},
        {{"EXRDisplay.Exposure=0"}, {}},
        {{"Adjust=off"}, {}},
        {{"Adjust=off", "Adjust Curve.Red=0,0 1,2"},
         {"no effect of \"Adjust Curve.Red\": \"Adjust"}},
        {{"Adjust=on@1,off@5", "rgb=0,0 1,2"}, {}, {1.0, 5.0}},
        {{"Adjust=on@1,off@5", "rgb=0,0 1,2"}, {"no effect of \"Adjust Curve\": "}, {5.0}},
        {{"Mute=on"}, {}},
        {{"Mute=on", "Linear.Gamma=0", "rgb=0,0 1,2", "Output Depth=32"},
         {"no effect of \"Adjust Curve\", \"Linear.Gamma\": \"Mute\" is on"}},
        {{"Mix=0", "Linear.Gamma.Red=2"}, {"no effect of \"Linear.Gamma.Red\": \"Mix\" is 0"}},
        {{"Mix=0@1,1@3", "Linear.Gamma=2"}, {}, {2.0}},
        {{"Linear.Gamma=1@1,0@3", "Linear.Gamma.Blue=1"},
         {"\"Linear.Gamma.Red\", \"Linear.Gamma.Green\" is 0, which counts"},
         {1.0, 3.0}},
        {{"Mode=EXRDisplay", "EXRDisplay.Gamma=0"}, {"\"EXRDisplay.Gamma\" is 0, which counts"}},
        {{"Linear.Input Level=0.5"}, {"\"Linear.Input Level\": Min and Max are both 0.5, a range"}},
        {{"Linear.Output Level.Min.Red=2"},
         {"\"Linear.Output Level\" of Red: Min 2 is above Max 1, which does not invert"}},
        {{"Linear.Input Level.Max=1@1,-1@3"}, {"Min and Max are both 0"}, {1.0, 2.0}}};
    for (auto const& [settings, wanted, times] : cases) {
        RequestedSession const session = makeSession(settings);
        expectNotes(findLookNotes(session.getNode(), times), wanted, settings);
    }
    EXPECT_EQ(listKeyTimes(makeSession({"Linear.Gamma=1@-2,2@7", "Adjust=on@7,off@9"}).getNode()),
              (std::vector<double>{-2.0, 7.0, 9.0}));
}

TEST(CurveNotes, NameTheKeysThatTheTableMisses)
{
    struct Case {
        Names settings;
        Names notes;
    };
    std::vector<Case> const cases = {
        {{}, {}},
        {{"rgb=0,0 0.25,0.1 0.5,0.5 0.5,0.7 4,4"}, {}}, // a step is met between its ends
        // Between the first two places, 0 and 0.978, in a straight line to just below the key at 1.
        {{"rgb=0,0 0.25,0.1 1,1 1000,1000"},
         {"the curve \"Adjust Curve\" misses its key 0.25,0.1, which gets 0.249"}},
        {{"rgb=0,0 0.25,0.1 1,1 1000,1000", "Adjust=off"}, {}},
        {{"Adjust Curve.Blue=0,0 0.25,0.1 1,1 1000,1000 @1 | 0,0 0.25,0.1 1,1 2,2 @2"},
         {"\"Adjust Curve.Blue\" misses its key 0.25,0.1 at time 1, which gets 0.249"}}};
    for (auto const& [settings, wanted] : cases) {
        RequestedSession const session = makeSession(settings);
        HostNode const& node = session.getNode();
        expectNotes(findCurveNotes(node, listKeyTimes(node)), wanted, settings);
    }
}

} // namespace
