#include "editor/model/picture/ViewGeometry.h"

#include "editor/model/picture/BoxReduction.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr GeRectangle<int> data{-20, 30, 3820, 2190};
constexpr GeRectangle<int> display{0, 0, 3840, 2160};

ViewGeometry makeView(int width, int height)
{
    ViewGeometry view;
    view.setWindows(data, display);
    view.setScreen(width, height);
    return view;
}

} // namespace

TEST(ViewGeometryTest, FitsTheDisplayWindowAndFollowsTheScreenUntilItIsZoomed)
{
    ViewGeometry view = makeView(1024, 1024);
    EXPECT_NEAR(view.getZoom(), 1000.0 / 3840, 1e-12);
    view.setScreen(2024, 1024);
    EXPECT_NEAR(view.getZoom(), 1000.0 / 2160, 1e-12);
    double const left = view.toScreen({0, 0}).x;
    double const right = 2024 - view.toScreen({3840, 0}).x;
    EXPECT_NEAR(left, right, 1.0);
    view.setZoom(0.5, {0, 0});
    view.setScreen(400, 300);
    EXPECT_EQ(view.getZoom(), 0.5);
}

TEST(ViewGeometryTest, ZoomKeepsThePlaceAndGoesByWholePixelsFromOneOn)
{
    ViewGeometry view = makeView(1000, 800);
    ViewGeometry::Place const cursor{300, 200};
    for (double const wanted : {0.3, 0.97, 1.4, 1.6, 7.2, 100.0}) {
        auto const place = view.toPicture(cursor);
        view.setZoom(wanted, cursor);
        auto const now = view.toPicture(cursor);
        EXPECT_NEAR(now.x, place.x, 1.0 / view.getZoom()) << wanted; // aligned to pixels
        EXPECT_TRUE(view.getZoom() < 1.0 || view.getZoom() == std::round(view.getZoom()));
    }
    EXPECT_EQ(view.getZoom(), ViewGeometry::greatest);
    view.setZoom(0.9, cursor);
    EXPECT_EQ(view.getZoom(), 1.0) << "next to 1:1";
    std::vector<double> ups;
    for (int step = 0; step < 4; ++step) {
        view.stepZoom(1, cursor);
        ups.push_back(view.getZoom());
    }
    EXPECT_EQ(ups, (std::vector<double>{2, 3, 4, 5}));
    view.stepZoom(-5, cursor);
    EXPECT_EQ(view.getZoom(), 0.8);
}

TEST(ViewGeometryTest, GridCoversWhatIsVisibleOfTheDataWindow)
{
    ViewGeometry view = makeView(1000, 800);
    view.setZoom(0.3, {0, 0});
    view.pan(-100, 77);
    PixelGrid const coarse = view.getGrid();
    auto const corner = view.toScreen({coarse.x0, coarse.y0});
    EXPECT_NEAR(corner.x, std::max(view.toScreen({-20, 30}).x, 0.0), 1e-6);
    EXPECT_NEAR(corner.y, std::max(view.toScreen({-20, 30}).y, 0.0), 1e-6);
    EXPECT_EQ(coarse.width, 1000 - std::lround(corner.x));

    view.setZoom(8.0, {0, 0});
    PixelGrid const fine = view.getGrid();
    EXPECT_EQ(fine.step, 1.0);
    EXPECT_EQ(fine.x0, std::max(std::floor(view.toPicture({0, 0}).x), -20.0));
    EXPECT_EQ(fine.width, std::ceil(view.toPicture({1000, 0}).x) - fine.x0);
    view.pan(1e6, 0);
    EXPECT_TRUE(view.getGrid().isEmpty());
}

TEST(BoxReductionTest, EachPixelIsTheMeanOfWhatItCoversByArea)
{
    // Columns 0 to 4 hold their number; squares of 1.5 from 0.5 on.
    PixelGrid const grid{.x0 = 0.5, .y0 = 0.0, .step = 1.5, .width = 3, .height = 2};
    BoxReduction const reduction(grid, {0, 0, 5, 3});
    EXPECT_EQ(reduction.findSource(0, 1), (GeRectangle<int>{0, 0, 5, 2}));
    EXPECT_EQ(reduction.findSource(1, 2), (GeRectangle<int>{0, 1, 5, 3}));
    std::vector<CoRgbaColorTyped<float>> row;
    auto const getRow = [&row](int y) {
        row.clear();
        for (int x = 0; x < 5; ++x) {
            row.push_back({float(x), float(y), 1.0F, -1.0F});
        }
        return std::span<CoRgbaColorTyped<float> const>(row);
    };
    std::vector<CoRgbaColorTyped<float>> reduced(3);
    reduction.reduce(0, getRow, reduced);
    EXPECT_NEAR(reduced[0].red, (0.5 * 0 + 1.0 * 1) / 1.5, 1e-6);
    EXPECT_NEAR(reduced[1].red, (1.0 * 2 + 0.5 * 3) / 1.5, 1e-6);
    EXPECT_NEAR(reduced[2].red, (0.5 * 3 + 1.0 * 4) / 1.5, 1e-6) << "ends with the picture";
    EXPECT_NEAR(reduced[0].green, (1.0 * 0 + 0.5 * 1) / 1.5, 1e-6);
    EXPECT_NEAR(reduced[1].blue, 1.0, 1e-6);
}

TEST(BoxReductionTest, WhatLiesBesideASquareDoesNotGetInByRounding)
{
    // A third is no binary fraction: squares of three pixels each, a NaN in every second one.
    PixelGrid const grid{
        .x0 = 0.0, .y0 = 0.0, .step = 1.0 / (1.0 / 3.0), .width = 1000, .height = 1};
    BoxReduction const reduction(grid, {0, 0, 3000, 3});
    std::vector<CoRgbaColorTyped<float>> row(3000, {1.0F, 1.0F, 1.0F, 1.0F});
    for (std::size_t x = 0; x < row.size(); x += 6) {
        row[x].red = std::numeric_limits<float>::quiet_NaN();
    }
    std::vector<CoRgbaColorTyped<float>> reduced(1000);
    reduction.reduce(
        0, [&row](int) { return std::span<CoRgbaColorTyped<float> const>(row); }, reduced);
    for (std::size_t x = 0; x < reduced.size(); ++x) {
        EXPECT_EQ(std::isnan(reduced[x].red), x % 2 == 0) << x;
    }
}
