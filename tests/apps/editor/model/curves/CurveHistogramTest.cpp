// Histograms of whole pictures, against counting pixel by pixel.

#include "editor/model/curves/CurveHistogram.h"

#include "base/EvEventManager.h"
#include "pluginAPI/IxSampleConversion.h"
#include "support/MediaSupport.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

using Kind = CurveDisplay::Histogram;
using Pixel = CoRgbaColorTyped<float>;

constexpr std::chrono::seconds longestCount{30}; // no measure of speed
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr int pictureWidth = 61;
constexpr int pictureHeight = 43;

std::unique_ptr<HeldPicture> makePicture(IxPixelFormat::Components components,
                                         IxPixelFormat::Depth depth)
{
    ImageInfo info;
    info.format = IxPixelFormat(components, depth, Rational(1, 1), false);
    info.dataWindow = {-5, 7, pictureWidth - 5, pictureHeight + 7};
    auto picture = std::make_unique<HeldPicture>(info);
    std::mt19937 random(7);
    for (int y = 7; y < pictureHeight + 7; ++y) {
        std::vector<Pixel> row(pictureWidth);
        for (Pixel& pixel : row) {
            for (float* const value : {&pixel.red, &pixel.green, &pixel.blue}) {
                float const odd[] = {0.0F, -0.0F, nan, infinite, -infinite};
                *value = random() % 9 == 0 ? odd[random() % std::size(odd)]
                                           : std::normal_distribution<float>(0.4F, 0.8F)(random);
            }
        }
        writePixelRow(info.format, row, IxWriteGuard(picture->pixels).getRow(y));
    }
    return picture;
}

TEST(ValueCounts, EveryValueIsCountedOnceInEachFormat)
{
    for (auto const depth :
         {IxPixelFormat::UINT8, IxPixelFormat::FLOAT16, IxPixelFormat::FLOAT32}) {
        auto const made = makePicture(IxPixelFormat::RGB, depth);
        HeldPicture const& picture = *made;
        auto const counts = countValues(picture, false);
        double nans = 0;
        double infinities = 0;
        std::array<std::vector<CountedValues>, 3> left = counts->channels;
        for (int y = 7; y < pictureHeight + 7; ++y) {
            for (int x = -5; x < pictureWidth - 5; ++x) {
                Pixel const pixel = picture.getPixel(x, y);
                float const values[] = {pixel.red, pixel.green, pixel.blue};
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    float const value = values[channel];
                    nans += std::isnan(value) ? 1.0 : 0.0;
                    infinities += std::isinf(value) ? 1.0 : 0.0;
                    auto const drawer =
                        std::find_if(left[channel].begin(), left[channel].end(),
                                     [&](CountedValues const& counted) {
                                         return std::min(counted.low, counted.high) <= value &&
                                                value <= std::max(counted.low, counted.high) &&
                                                counted.count > 0.0;
                                     });
                    ASSERT_EQ(drawer != left[channel].end(), std::isfinite(value)) << value;
                    if (drawer != left[channel].end()) {
                        EXPECT_LE(std::abs(drawer->high - drawer->low),
                                  depth == IxPixelFormat::UINT8 ? 1.001F / 255.0F
                                                                : std::abs(value) / 500.0F);
                        drawer->count -= 1.0;
                    }
                }
            }
        }
        EXPECT_EQ(counts->nans, nans);
        EXPECT_EQ(counts->infinities, infinities);
        for (CountedValues const& counted : left[1]) {
            EXPECT_EQ(counted.count, 0.0);
        }
    }
    EXPECT_EQ(countValues(*makePicture(IxPixelFormat::ALPHA, IxPixelFormat::FLOAT16), false),
              nullptr);
    EXPECT_EQ(countValues(*makePicture(IxPixelFormat::RGBA, IxPixelFormat::FLOAT16), true),
              nullptr);
}

class CurveHistogramTest : public MediaTest {
protected:
    CurveHistogramTest()
    {
        ExrRecipe recipe;
        writeExr(file("a.exr"), recipe);
        recipe.channels = {{"A"}};
        writeExr(file("alpha.exr"), recipe);
        open("a.exr");
    }
    ~CurveHistogramTest() noexcept override = default;

    void open(char const* name)
    {
        plate.open(file(name));
        waitUntil([this] { return !plate.isReading() && !histogram.isStale(); });
    }
    void waitUntil(auto const& isReached)
    {
        auto const end = std::chrono::steady_clock::now() + longestCount;
        while (!isReached()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            EvEventManager::getInstance().waitForEvents(std::chrono::milliseconds(100));
            EvEventManager::getInstance().processEvents();
        }
    }
    void settle()
    {
        waitUntil([this] { return !histogram.isStale(); });
    }
    void show(Kind kind)
    {
        CurveDisplay display;
        display.histogram = kind;
        writeCurveDisplay(document, display);
        settle();
    }
    /// Values below 0.5 of the middle channel.
    double countBelow() const
    {
        double count = 0.0;
        for (CountedValues const& values : histogram.getCounts()->channels[1]) {
            count += values.high < 0.5F ? values.count : 0.0;
        }
        return count;
    }
    /// The same of the picture's values times `gain`, counted one by one.
    double countPlain(float gain) const
    {
        HeldPicture const& picture = *plate.getPicture();
        GeRectangle<int> const& window = picture.info.dataWindow;
        double count = 0.0;
        for (int y = window.y0; y < window.y1; ++y) {
            for (int x = window.x0; x < window.x1; ++x) {
                float const value = picture.getPixel(x, y).green;
                count += std::isfinite(value) && value * gain < 0.499F ? 1.0 : 0.0;
            }
        }
        return count;
    }

    Document document;
    Plate plate{2};
    CurveHistogram histogram{document, plate};
};

TEST_F(CurveHistogramTest, CountsTheSourceTheTransferAndTheResult)
{
    document.setNumbers("", {"Linear.Output Level.Max.Green"}, 2.0);
    document.setNumbers("", {"Linear.Clamp"}, 1.0); // which the transfer's has not
    document.setNumbers("", {"Adjust"}, 0.0);
    show(Kind::Source);
    EXPECT_NEAR(countBelow(), countPlain(1.0F), 2.0);
    show(Kind::Transferred);
    EXPECT_NEAR(countBelow(), countPlain(2.0F), 2.0);
    document.setNumbers("", {"Mix"}, 0.0);
    show(Kind::Result);
    EXPECT_NEAR(countBelow(), countPlain(1.0F), 2.0);
    EXPECT_LT(countPlain(2.0F), countPlain(1.0F));
}

TEST_F(CurveHistogramTest, IsStaleUntilItIsOfWhatIsShown)
{
    show(Kind::Transferred);
    auto const before = histogram.getCounts();
    document.edit("", {{"Adjust Curve.Red", Animated<CurvePoints>(document.getCurve(1))}});
    document.setNumbers("", {"InputMinLink"}, 1.0);
    EXPECT_FALSE(histogram.isStale()) << "curves come after the transfer";
    for (double const maximum : {3.0, 4.0, 5.0}) { // overtaken
        document.setNumbers("", {"Linear.Output Level.Max.Green"}, maximum);
        EXPECT_TRUE(histogram.isStale());
        EXPECT_EQ(histogram.getCounts(), before) << "it stays, dimmed";
    }
    settle();
    EXPECT_NEAR(countBelow(), countPlain(5.0F), 2.0);
    histogram.setPaused(true);
    document.setNumbers("", {"Linear.Output Level.Max.Green"}, 6.0);
    EXPECT_TRUE(histogram.isStale());
    histogram.setPaused(false);
    settle();
    EXPECT_NEAR(countBelow(), countPlain(6.0F), 2.0);
    open("alpha.exr");
    EXPECT_EQ(histogram.getCounts(), nullptr);
}

} // namespace
