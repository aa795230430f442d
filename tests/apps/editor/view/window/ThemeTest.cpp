// Whether what is drawn can be read.

#include "editor/view/window/Theme.h"

#include <QApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

/// Of sRGB, as the web's guidelines for accessible content define it.
double findLuminance(QColor const& color)
{
    auto const linear = [](double share) {
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double findContrast(QColor const& one, QColor const& other)
{
    auto const [low, high] = std::minmax({findLuminance(one), findLuminance(other)});
    return (high + 0.05) / (low + 0.05);
}

constexpr double leastOfText = 4.5;
constexpr double leastOfShapes = 3.0;

} // namespace

TEST(ThemeTest, TextAndWhatIsDrawnStandOutFromWhatIsBehind)
{
    struct Case {
        char const* what;
        QColor before;
        QColor behind;
        double least;
    };
    QPalette const palette = QApplication::palette();
    auto const ofRoles = [&](char const* what, QPalette::ColorRole before,
                             QPalette::ColorRole behind) {
        return Case{what, palette.color(before), palette.color(behind), leastOfText};
    };
    for (auto const& [what, before, behind, least] :
         {ofRoles("label", QPalette::WindowText, QPalette::Window),
          ofRoles("field", QPalette::Text, QPalette::Base),
          ofRoles("button", QPalette::ButtonText, QPalette::Button),
          ofRoles("selection", QPalette::HighlightedText, QPalette::Highlight),
          ofRoles("tip", QPalette::ToolTipText, QPalette::ToolTipBase),
          ofRoles("placeholder", QPalette::PlaceholderText, QPalette::Base),
          Case{"dim on panel", Theme::dimText, Theme::panel, leastOfText},
          Case{"dim around", Theme::dimText, Theme::surround, leastOfText},
          Case{"failure", Theme::failure, Theme::panel, leastOfText},
          Case{"heading", Theme::accent, Theme::panel, leastOfText},
          Case{"red", Theme::channels[0], Theme::panel, leastOfText},
          Case{"green", Theme::channels[1], Theme::panel, leastOfText},
          Case{"blue", Theme::channels[2], Theme::panel, leastOfText},
          Case{"box on panel", Theme::outline, Theme::panel, leastOfShapes},
          Case{"box in menu", Theme::outline, Theme::field, leastOfShapes}}) {
        EXPECT_GE(findContrast(before, behind), least) << what;
    }
    for (QColor const& grey : {Theme::surround, Theme::panel, Theme::field, Theme::text}) {
        EXPECT_EQ(grey.saturation(), 0) << "pictures are judged beside it";
    }
}
