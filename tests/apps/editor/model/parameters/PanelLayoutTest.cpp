// The tool's own panel file, and files that are none.

#include "editor/model/parameters/PanelLayout.h"
#include "editor/model/document/Document.h"
#include "support/Failures.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

class PanelLayoutTest : public testing::Test {
protected:
    std::string errorOf(std::string const& text) const
    {
        saveBytes(folder.path / "panel.xml", text);
        try {
            arrangeRows(listParameters(document), loadPanelLayout(folder.path / "panel.xml"),
                        "panel.xml");
        } catch (PanelLayoutError const& error) {
            return error.what();
        }
        return {};
    }

    TestFolder folder;
    Document document;
};

} // namespace

TEST_F(PanelLayoutTest, TheToolsOwnFileNamesEveryParameterAndFitsTheirRanges)
{
    auto const declared = listParameters(document);
    auto const layout = loadPanelLayout(document.getPanelFile());
    EXPECT_EQ(layout.size(), declared.size());
    for (ParameterRow const& row : arrangeRows(declared, layout, document.getPanelFile())) {
        EXPECT_FALSE(row.group.empty()) << row.name;
        bool const isNumber = row.kind == ParameterRow::Numbers || row.kind == ParameterRow::Number;
        EXPECT_EQ(row.slider.has_value(), isNumber) << row.name;
        if (isNumber) {
            // Whatever the slider reaches, the tool takes.
            for (double const number : {row.slider->from, row.slider->to}) {
                EXPECT_NO_THROW(document.setNumbers("Try", row.names, number)) << row.name;
            }
            EXPECT_LE(row.step, (row.slider->to - row.slider->from) / 10) << row.name;
        }
    }
}

TEST_F(PanelLayoutTest, WhatIsNotNamedFollowsAsItWas)
{
    auto const declared = listParameters(document);
    auto const rows = arrangeRows(
        declared, {{.value = "Mix", .label = "Off"}, {.value = declared[1].name, .step = 2}}, {});
    ASSERT_EQ(rows.size(), declared.size());
    EXPECT_EQ(rows[0].label, "Off");
    EXPECT_EQ(rows[1].label, declared[1].label);
    EXPECT_EQ(rows[1].step, 2);
    EXPECT_EQ(rows[2].name, declared[0].name);
    EXPECT_EQ(rows[3].name, declared[2].name);
}

TEST_F(PanelLayoutTest, WrongFilesAreNamedWithTheReason)
{
    EXPECT_EQ(errorOf("<panel><!-- none --></panel>"), "");
    for (auto const& [text, reason] : std::vector<std::pair<std::string, std::string>>{
             {"<panel><row", "at byte"},
             {"", "at byte"},
             {"<other/>", "no panel"},
             {"<panel><line/></panel>", "no element \"line\""},
             {"<panel><row label='a'/></panel>", "has no value"},
             {"<panel><row value='Mute'/><row value='Mute'/></panel>", "\"Mute\" has two rows"},
             {"<panel><row value='Tint'/></panel>", "no value \"Tint\""},
             {"<panel><row value='Mix' stp='1'/></panel>", "no attribute \"stp\""},
             {"<panel><row value='Mix' step='0'/></panel>", "not above 0"},
             {"<panel><row value='Mix' step='1e999'/></panel>", "no number for \"step\""},
             {"<panel><row value='Mix' from='0'/></panel>", "greater \"to\""},
             {"<panel><row value='Mix' from='1' to='1'/></panel>", "greater \"to\""}}) {
        expectLineWith(reason, errorOf(text));
    }
    std::filesystem::remove(folder.path / "panel.xml");
    EXPECT_THROW(loadPanelLayout(folder.path / "panel.xml"), PanelLayoutError);
}
