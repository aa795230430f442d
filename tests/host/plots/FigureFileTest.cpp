#include "plots/FigureFile.h"

#include "support/MediaSupport.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double far = std::numeric_limits<float>::max();

Figure makeFigure(std::vector<FigurePoint> const& points)
{
    FigurePanel panel;
    panel.x = {0.0, 1.0, "x"};
    panel.y = {0.0, 1.0, "y"};
    panel.lines = {{FigureTone::Red, "R", points}};
    return {"Figure", "ü", {panel}, "", "", ""};
}

/// Rows of the figure's PNG in which pixels of that look make a line, from top to bottom.
std::vector<std::size_t> findRows(std::filesystem::path const& folder, Figure const& figure,
                                  bool (*isMeant)(float red, float green))
{
    saveBytes(folder / "figure.png", drawFigure(figure, FigureFormat::Png));
    std::vector<float> const values = loadValues(folder / "figure.png");
    std::size_t const width = openImage(folder / "figure.png", {})->getInfo().dataWindow.x1;
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < values.size() / width / 3; ++row) {
        std::size_t found = 0;
        for (std::size_t column = 0; column < width; ++column) {
            float const* const pixel = &values[3 * (row * width + column)];
            found += isMeant(pixel[0], pixel[1]) ? 1 : 0;
        }
        if (found > 100) {
            rows.push_back(row);
        }
    }
    return rows;
}

bool isRed(float red, float green)
{
    return red > 0.6F && green < 0.4F;
}

bool isFrame(float red, float green)
{
    return red > 0.3F && red < 0.45F && red == green;
}

TEST(FigureFile, LinesStandWhereTheirValuesAreOnTheAxes)
{
    TestFolder const folder;
    struct Case {
        double y;
        std::vector<FigurePoint> points;
    };
    std::vector<Case> const cases = {
        {0.5, {{0.0, 0.5}, {0.6, 0.5}, {0.7, nan}, {0.9, 0.5}, {1.0, 0.5}}},
        {0.9, {{-far, 0.9}, {far, 0.9}}},
        {0.25, {{0.0, 0.25}, {1e6, 0.25 + 1e3}}}}; // nearly level
    for (auto const& [y, points] : cases) {
        auto const frame = findRows(folder.path, makeFigure(points), isFrame);
        auto const line = findRows(folder.path, makeFigure(points), isRed);
        ASSERT_FALSE(frame.empty() || line.empty()) << y;
        auto const bottom = static_cast<double>(frame.back());
        auto const height = bottom - static_cast<double>(frame.front());
        double const middle = 0.5 * static_cast<double>(line.front() + line.back());
        EXPECT_NEAR((bottom - middle) / height, y, 0.006); // two pixels
    }
}

TEST(FigureFile, SameFigureGivesSameBytesWhateverItsValues)
{
    Figure const figure = makeFigure({{0.0, -far}, {0.5, far}, {0.5, -INFINITY}, {1.0, 0.3}});
    for (FigureFormat const format : {FigureFormat::Svg, FigureFormat::Png}) {
        std::string const bytes = drawFigure(figure, format);
        drawFigure(makeFigure({}), format);
        EXPECT_TRUE(drawFigure(figure, format) == bytes);
        EXPECT_FALSE(drawFigure(makeFigure({{0.0, 0.1}, {1.0, 0.3}}), format) == bytes);
    }
}

} // namespace
