#include "editor/model/picture/DisplayViews.h"

#include "apps/editor/DisplayConfigText.h"
#include "apps/editor/UserEvents.h"
#include "session/Failures.h"
#include "support/TestFolder.h"

#include <fstream>

namespace {

class DisplayViewsTest : public testing::Test {
protected:
    DisplayViewsTest() { std::ofstream(file) << displayConfigText; }
    ~DisplayViewsTest() noexcept override = default;

    void read()
    {
        views.read();
        waitUntil([this] { return views.getConfig() != nullptr; });
    }
    void choose(DisplayView const& view)
    {
        made.clear();
        views.choose(view);
        waitUntil([this] { return !made.empty(); });
    }

    TestFolder folder;
    std::string file = folder.path / "config.ocio";
    std::vector<std::shared_ptr<DisplayProcessor const>> made;
    std::vector<std::string> failures;
    DisplayViews views{file,
                       {[] {}, [this](auto const& processor) { made.push_back(processor); },
                        [this](auto const& failure) {
                            try {
                                std::rethrow_exception(failure);
                            } catch (...) {
                                failures.push_back(describeCurrentFailure().text);
                            }
                        }}};
};

} // namespace

TEST_F(DisplayViewsTest, ViewsAndLooksShowAsTheConfigurationSays)
{
    EXPECT_EQ(views.getConfig(), nullptr);
    read();
    auto const& displays = views.getConfig()->getDisplays();
    ASSERT_EQ(displays.size(), 2U);
    EXPECT_EQ(displays[0].name, "Screen");
    EXPECT_EQ(displays[0].views, (std::vector<std::string>{"Looked", "Twice"}));
    EXPECT_EQ(views.getConfig()->getLooks(), std::vector<std::string>{"half"});
    struct Case {
        DisplayView view;
        char const* name;
        std::uint32_t shown; ///< of 0.125, 0.25, 0.5
    };
    for (auto const& [view, name, shown] :
         {Case{{"Screen", "Twice"}, "Screen / Twice", 0xffff8040},
          Case{{"Screen", "Looked"}, "Screen / Looked", 0xff804020},
          Case{{"Screen", "Looked", ""}, "Screen / Looked, no look", 0xffff8040},
          Case{{"Screen", "Twice", "half"}, "Screen / Twice, look half", 0xff804020},
          Case{{"Other", "As is"}, "Other / As is", 0xff204080}}) {
        choose(view);
        EXPECT_EQ(made.back()->getName(), name);
        CoRgbaColorTyped<float> pixel{0.125F, 0.25F, 0.5F, 1.0F};
        std::uint32_t screen = 0;
        ScreenEncoder({.processor = made.back()})
            .encode(std::span(&pixel, 1), std::span(&screen, 1));
        EXPECT_EQ(screen, shown) << name;
    }
    EXPECT_TRUE(failures.empty());
}

TEST_F(DisplayViewsTest, TheNewestChoiceCounts)
{
    read();
    views.choose(DisplayView{"Screen", "Looked"});
    views.choose(std::nullopt);
    views.choose(DisplayView{"none", "none"});
    views.choose(DisplayView{"Other", "As is"});
    waitUntil([this] { return !made.empty(); });
    EXPECT_EQ(made.size(), 1U);
    EXPECT_EQ(made.back()->getName(), "Other / As is");
    EXPECT_TRUE(failures.empty());
}

TEST_F(DisplayViewsTest, WhatCannotBeUsedIsOneSentenceAndIsTriedAgain)
{
    std::string const text = displayConfigText;
    std::filesystem::remove(file);
    struct Case {
        char const* name;
        std::string content;
    };
    auto const without = [&](std::string const& part) {
        std::string rest = text;
        return rest.erase(rest.find(part), part.size());
    };
    for (auto const& [name, content] :
         {Case{"missing", ""}, Case{"no text", std::string("\0\1{[", 4)},
          Case{"cut", text.substr(0, 300)}, Case{"no linear space", without("scene_linear: lin, ")},
          Case{"no such space", without("  - !<ColorSpace> {name: lin}\n")}}) {
        if (!content.empty()) {
            std::ofstream(file) << content;
        }
        views.read();
        std::size_t const told = failures.size() + 1;
        waitUntil([&] { return failures.size() == told; });
        EXPECT_EQ(failures.back().find(file), 0U) << name << ": " << failures.back();
        EXPECT_EQ(failures.back().find('\n'), std::string::npos) << name;
    }
    std::ofstream(file) << text;
    read();
    views.choose(DisplayView{"Screen", "none"});
    waitUntil([this] { return failures.size() == 6; });
    EXPECT_TRUE(made.empty());
    choose({"Screen", "Twice"});
}
