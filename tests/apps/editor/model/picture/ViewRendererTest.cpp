// What a view is given, without a window: by the real tool's chains.

#include "editor/model/picture/ViewRenderer.h"

#include "apps/editor/UserEvents.h"
#include "editor/model/document/Document.h"
#include "editor/model/picture/Plate.h"
#include "support/MediaSupport.h"

#include <cmath>

namespace {

constexpr int size = 128;

class ViewRendererTest : public MediaTest {
protected:
    struct Shown {
        ViewRenderer::Side side;
        ViewRenderer::Stage stage;
        std::vector<std::uint32_t> pixels;
    };

    ViewRendererTest()
    {
        ExrRecipe recipe; // random bits, NaN and infinity among them
        recipe.dataWindow = {{0, 0}, {size - 1, size - 1}};
        recipe.displayWindow = recipe.dataWindow;
        writeExr(file("odd.exr"), recipe);
        samples = loadExr(file("odd.exr")).at("G");
        document.setNumbers("", {"Adjust"}, 0.0);
        plate.open(file("odd.exr"));
        waitUntil([this] { return plate.getPicture() != nullptr; });
        renderer.setPicture(plate.getPicture());
    }
    ~ViewRendererTest() noexcept override = default;

    void request(ViewRequest const& wanted)
    {
        isSettled = false;
        renderer.request(wanted, document.getNode());
    }
    void waitUntilSettled()
    {
        waitUntil([this] { return isSettled; });
    }
    void setMaximum(double value) { document.setNumbers("", {maximum}, value); }

    /// What is shown of green where every value is multiplied, each pixel being a mean of four.
    std::uint8_t findGreen(int x, int y, float factor) const
    {
        float sum = 0.0F;
        for (int const row : {2 * y, 2 * y + 1}) {
            for (int const column : {2 * x, 2 * x + 1}) {
                auto const index = static_cast<std::size_t>(row * size + column);
                // A half, like the picture.
                sum += factor * valueOf(samples, index) / 4.0F;
            }
        }
        return std::isnan(sum) ? 0 : std::uint8_t(std::lround(std::clamp(sum, 0.0F, 1.0F) * 255));
    }

    std::string const maximum = "Linear.Output Level.Max.Green";
    PixelGrid const halved{0.0, 0.0, 2.0, size / 2, size / 2};
    std::string samples;
    Document document;
    Plate plate{2};
    std::vector<Shown> shown;
    bool isSettled = false;
    ViewRenderer renderer{document.getNode().getTool(),
                          2,
                          {[this](auto side, auto const& image, auto stage) {
                               shown.push_back({side, stage, image->pixels});
                           },
                           [](auto const& failure) { std::rethrow_exception(failure); },
                           [this] { isSettled = true; }}};
};

} // namespace

TEST_F(ViewRendererTest, ShowsAPixelOfEachSquareAndThenTheMeansOfResults)
{
    document.setNumbers("", {"Output Depth"}, 2); // 32 bit: no result is rounded
    setMaximum(0.5);
    request({halved});
    waitUntilSettled();
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0].stage, ViewRenderer::Stage::Quick);
    EXPECT_EQ(shown[1].stage, ViewRenderer::Stage::Final);
    for (int y = 0; y < halved.height; ++y) {
        for (int x = 0; x < halved.width; ++x) {
            auto const at = static_cast<std::size_t>(y * halved.width + x);
            EXPECT_NEAR(shown[1].pixels[at] >> 8U & 0xffU, findGreen(x, y, 0.5F), 1) // sums round
                << x << ", " << y;
        }
    }
}

TEST_F(ViewRendererTest, TheNewestRequestIsShownInTheEnd)
{
    for (int step = 1; step <= 30; ++step) {
        setMaximum(step);
        request({halved});
        EvEventManager::getInstance().processEvents();
    }
    waitUntilSettled();
    std::vector<std::uint32_t> const last = shown.back().pixels;
    EXPECT_EQ(shown.back().stage, ViewRenderer::Stage::Final);
    setMaximum(1.0);
    request({halved});
    waitUntilSettled();
    EXPECT_NE(shown.back().pixels, last);
    setMaximum(30.0);
    request({halved});
    waitUntilSettled();
    EXPECT_EQ(shown.back().pixels, last);
}

TEST_F(ViewRendererTest, SourceIsRenderedWhenItChangesAndTheResultWhenItIsNeeded)
{
    ViewRequest both{halved};
    both.needsSource = true;
    request(both);
    waitUntilSettled();
    auto const countSources = [this] {
        return std::count_if(shown.begin(), shown.end(),
                             [](Shown const& image) { return image.side == ViewRenderer::Source; });
    };
    EXPECT_EQ(countSources(), 2);
    EXPECT_EQ(shown.back().side, ViewRenderer::Source);
    shown.clear();

    setMaximum(3.0); // does not concern the source
    request(both);
    waitUntilSettled();
    EXPECT_EQ(countSources(), 0);
    EXPECT_EQ(shown.size(), 2U);
    shown.clear();

    ViewRequest sourceOnly = both;
    sourceOnly.needsResult = false;
    setMaximum(4.0);
    request(sourceOnly);
    waitUntilSettled();
    EXPECT_TRUE(shown.empty());
    request(both);
    waitUntilSettled();
    EXPECT_EQ(shown.size(), 2U) << "the result of meanwhile";
    shown.clear();
    request(both);
    waitUntilSettled();
    EXPECT_TRUE(shown.empty()) << "nothing has changed";
}

TEST_F(ViewRendererTest, NothingIsShownOfAnEmptyViewAndItSettles)
{
    request({});
    EXPECT_TRUE(isSettled);
    request({halved});
    renderer.setPicture(nullptr); // what is on its way is dropped
    EvEventManager::getInstance().processEvents();
    EXPECT_TRUE(shown.empty());
}
