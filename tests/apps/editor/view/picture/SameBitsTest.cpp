// What the picture shows pixel for pixel is the render in 8 bit.

#include "apps/editor/view/picture/PanelFixture.h"
#include "pluginAPI/IxSampleConversion.h"
#include "runtime/engine/RenderEngine.h"
#include "support/MediaSupport.h"

namespace {

using Bytes = std::vector<std::byte>;

/// Keeps a render's strips as 8 bit RGBA.
class BytesSink : public ImageSink {
public:
    explicit BytesSink(GeRectangle<int> const& itsBounds)
        : bounds(itsBounds),
          bytes(static_cast<std::size_t>(bounds.getWidth() * bounds.getHeight()) * 4)
    {
    }
    void writeStrip(IxTile const& result, ImageStrip const&) override
    {
        IxReadGuard const guard(result);
        auto const width = static_cast<std::size_t>(bounds.getWidth());
        std::vector<CoRgbaColorTyped<float>> row(width);
        for (int y = result.getBounds().y0; y < result.getBounds().y1; ++y) {
            readPixelRow(result.getPixelFormat(), guard.getRow(y), row);
            writePixelRow({IxPixelFormat::RGBA, IxPixelFormat::UINT8, Rational(1, 1), false}, row,
                          bytes.data() + static_cast<std::size_t>(y - bounds.y0) * width * 4);
        }
    }
    void finish() override {}

    GeRectangle<int> bounds;
    Bytes bytes;
};

class SameBitsTest : public PanelTest, public testing::WithParamInterface<char const*> {
protected:
    ~SameBitsTest() noexcept override = default;

    std::filesystem::path makePicture(std::string const& kind)
    {
        std::filesystem::path const file = folder.path / (kind == "png" ? "p.png" : "p.exr");
        if (kind == "png") {
            std::string samples;
            for (int index = 0; index < 300 * 200 * 3; ++index) {
                samples.push_back(static_cast<char>(index * 7 / 3));
            }
            writeOther(file, 300, 3, 8, samples);
        } else {
            ExrRecipe recipe; // random bits, NaN and infinity among them
            auto const type = kind == "half" ? Imf::HALF : Imf::FLOAT;
            recipe.channels = {{"R", type}, {"G", type}, {"B", type}, {"A", type}};
            recipe.dataWindow = {{-20, 30}, {279, 229}};
            recipe.displayWindow = {{0, 0}, {319, 239}};
            writeExr(file, recipe);
        }
        return file;
    }

    BytesSink render(std::filesystem::path const& file)
    {
        auto const source = openImage(file, {});
        auto const start = makeNode<SourceImageNode>(source->getInfo());
        auto const chain = castNode<PxImageProtocol const>(
            document.getNode().buildChain(PxNodePtr<PxImageProtocol const>(start)));
        BytesSink sink(source->getInfo().dataWindow);
        renderImage(*chain, *start, *source, sink, {});
        return sink;
    }

    void expectShown(BytesSink const& expected)
    {
        QImage const shown = grab();
        GeRectangle<int> const& bounds = expected.bounds;
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            for (int x = bounds.x0; x < bounds.x1; ++x) {
                QPoint const place = widget.toWidget(QPointF(x, y)).toPoint();
                auto const at = 4 * static_cast<std::size_t>((y - bounds.y0) * bounds.getWidth() +
                                                             x - bounds.x0);
                auto const byte = [&](std::size_t channel) {
                    return std::to_integer<int>(expected.bytes[at + channel]);
                };
                bool const isBorder = x == 0 || y == 0 || x == -1 || y == -1; // of the display
                if (!isBorder) {
                    ASSERT_EQ(shown.pixelColor(place), QColor(byte(0), byte(1), byte(2)))
                        << "at " << x << ", " << y;
                }
            }
        }
    }
};

} // namespace

TEST_P(SameBitsTest, PixelForPixelInBothModesWithCurves)
{
    std::filesystem::path const file = makePicture(GetParam());
    open(file);
    widget.showPixels();
    document.setNumbers("", {"EXRDisplay.Exposure.Red"}, 0.7);
    document.setNumbers("", {"Linear.Gamma.Green"}, 1.7);
    CurvePoints curve = document.getCurve(0);
    curve[1].y += 0.2F;
    for (int const mode : {0, 1}) {
        settle([&] {
            document.setNumbers("", {"Mode"}, mode);
            document.setCurves("", {document.getCurve(0), curve, document.getCurve(2)});
        });
        expectShown(render(file));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, SameBitsTest, testing::Values("half", "float", "png"),
                         [](auto const& info) { return std::string(info.param); });
