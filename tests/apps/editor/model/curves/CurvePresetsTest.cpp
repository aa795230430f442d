// Files of presets.

#include "editor/model/curves/CurvePresets.h"

#include "runtime/curves/CurveText.h"
#include "session/ProjectFiles.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(CurvePresets, AFileIsAProjectOfCurvesOnlyWhichTheCommandLineReads)
{
    TestFolder const folder;
    Document document;
    document.setNumbers("", {"Linear.Gamma.Red"}, 2.0);
    CurvePresets presets(document, folder.path);
    CurvePoints const one = parseCurve("", "0,0 0.3,0.7 1,1");
    CurvePoints const other = parseCurve("", "-1,0.25 4,1");
    presets.save({"Später", {one, one, other}});
    EXPECT_EQ(folder.list(), std::vector<std::string>{"Später.json"});
    NodeValues const values = loadProject(folder.path / "Später.json", document.getNode());
    EXPECT_EQ(values.size(), 3U);
    document.getNode().load({});
    document.openProject(folder.path / "Später.json");
    EXPECT_EQ(document.getCurve(2), other);
    auto const listed = presets.list();
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0].curves[0], one);
}

TEST(CurvePresets, AKeyframedFileCountsAsItIsAtTheTime)
{
    TestFolder const folder;
    Document document;
    for (char const* const name : {"Red", "Green", "Blue"}) {
        document.edit("", {{"Adjust Curve." + std::string(name),
                            parseAnimatedCurve("", "0,0 1,1 @0 | 0,1 1,0 @10")}});
    }
    saveProject(folder.path / "shot.json", document.getNode());
    CurvePresets presets(document, folder.path);
    document.setTime(5.0);
    EXPECT_EQ(presets.list().at(0).curves[1][1].y, 0.5F);
}

} // namespace
