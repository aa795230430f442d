#include "editor/model/picture/ViewTransform.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Pixel = CoRgbaColorTyped<float>;

constexpr float infinity = std::numeric_limits<float>::infinity();
float const notANumber = std::numeric_limits<float>::quiet_NaN();

std::uint32_t show(ViewTransform const& transform, Pixel pixel)
{
    std::uint32_t screen = 0;
    ScreenEncoder(transform).encode(std::span(&pixel, 1), std::span(&screen, 1));
    return screen;
}

/// The curve's formula in double.
double srgb(double value)
{
    return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1.0 / 2.4) - 0.055;
}

} // namespace

TEST(ViewTransformTest, ShowsWhatIsAskedFor)
{
    Pixel const pixel{0.2F, 0.4F, -1.0F, 0.6F};
    using View = ViewTransform;
    struct Case {
        char const* name;
        View transform;
        std::uint32_t shown;
    };
    for (auto const& [name, transform, shown] :
         {Case{"neutral", {}, 0xff336600}, Case{"red", {View::Red}, 0xff333333},
          Case{"blue", {View::Blue}, 0xff000000}, Case{"alpha", {View::Alpha}, 0xff999999},
          Case{"a stop more", {View::Rgb, 1.0}, 0xff66cc00},
          Case{"no more alpha", {View::Alpha, 1.0}, 0xff999999},
          Case{"half a stop less of green", {View::Green, -0.5}, 0xff484848}}) {
        EXPECT_EQ(show(transform, pixel), shown) << name;
    }
    EXPECT_EQ(show({}, {notANumber, infinity, -infinity, 1.0F}), 0xff00ff00);
    EXPECT_EQ(show({View::Rgb, 0.0, true}, {notANumber, infinity, -infinity, 1.0F}), 0xff00ff00);
}

TEST(ViewTransformTest, SrgbIsTheFormulaRoundedForAllHalvesOfTheRange)
{
    // Every 16-bit pattern as the upper half of a float, and its neighbours.
    for (std::uint32_t upper = 0; upper < 0x4000; ++upper) {
        for (std::uint32_t const lower : {0x0U, 0x1U, 0x7fffU, 0xffffU}) {
            float const value = std::bit_cast<float>(upper << 16U | lower);
            double const exact = std::fmin(srgb(double{value}), 1.0) * 255.0;
            auto const byte =
                show({ViewTransform::Rgb, 0.0, true}, {value, 0.0F, 0.0F, 1.0F}) >> 16U & 0xffU;
            // Where the formula lies between two bytes, the float formula may round either way.
            EXPECT_LE(std::fabs(byte - exact), 0.5 + 1e-3) << value;
        }
    }
}
