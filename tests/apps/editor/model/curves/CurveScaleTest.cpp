#include "editor/model/curves/CurveScale.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(CurveScale, PlacesAndValuesLeadToEachOther)
{
    CurveScale const linear(CurveAxis::Linear, {-1.0, 0.0, 4.0, 2.0}, 400.0, 100.0);
    EXPECT_EQ(linear.toPlaceX(0.0), 100.0);
    EXPECT_EQ(linear.toPlaceY(2.0), 0.0);
    EXPECT_EQ(linear.toX(200.0), 1.0);
    EXPECT_EQ(linear.toY(100.0), 0.0);
    // The strip is 34 wide.
    CurveScale const stops(CurveAxis::Stops, {-4.0, 0.0, 8.0, 1.0}, 434.0, 100.0);
    EXPECT_EQ(stops.toPlaceX(1.0), 234.0);
    EXPECT_EQ(stops.toPlaceX(0.0625), 34.0);
    EXPECT_EQ(stops.toX(284.0), 2.0);
    for (double const below : {0.0, -3.0}) {
        EXPECT_EQ(stops.toPlaceX(below), 17.0) << "values without stops have one place";
    }
    EXPECT_EQ(stops.toX(20.0), 0.0);
    for (double const wide : {std::numeric_limits<double>::max(), -1e300}) {
        EXPECT_TRUE(std::isfinite(linear.toPlaceX(wide)) && std::isfinite(linear.toPlaceY(wide)));
    }
}

TEST(CurveScale, ZoomKeepsThePlaceAndEndsWhereFloatsDo)
{
    for (CurveAxis const axis : {CurveAxis::Linear, CurveAxis::Stops}) {
        GraphRange range = getPlainRange(axis);
        double const x = range.left + 0.3 * range.width;
        GraphRange const taller = zoomRange(axis, range, x, 0.5, 1.0, 2.0);
        EXPECT_DOUBLE_EQ(taller.width, range.width);
        EXPECT_DOUBLE_EQ(taller.height, 0.5 * range.height);
        for (int notch = 0; notch < 200; ++notch) {
            range = zoomRange(axis, range, x, 0.5, 1.2, 1.2);
            EXPECT_NEAR((x - range.left) / range.width, 0.3, 1e-6);
        }
        EXPECT_GE(range.width, 1e-4);
        EXPECT_NE(static_cast<float>(range.left), static_cast<float>(range.getRight()));
        for (int notch = 0; notch < 400; ++notch) {
            range = zoomRange(axis, range, x, 0.5, 1.0 / 1.2, 1.0 / 1.2);
        }
        EXPECT_LE(range.height, 1e6);
    }
}

} // namespace
