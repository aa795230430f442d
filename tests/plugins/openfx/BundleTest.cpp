#include "BundleTest.h"

#include "runtime/curves/CurveSetText.h"

#include <random>

namespace {

IxPixelFormat makeFormatOf(OfxTestImage::Layout const& layout)
{
    auto const components = layout.components == OfxText::Components::rgba  ? IxPixelFormat::RGBA
                            : layout.components == OfxText::Components::rgb ? IxPixelFormat::RGB
                                                                            : IxPixelFormat::ALPHA;
    auto const depth = layout.depth == OfxText::Depth::byte   ? IxPixelFormat::UINT8
                       : layout.depth == OfxText::Depth::half ? IxPixelFormat::FLOAT16
                                                              : IxPixelFormat::FLOAT32;
    return memoryHost::makeFormat(components, depth);
}

ValueState toState(HostValue const& value, OfxTestValue const& given)
{
    if (std::holds_alternative<Animated<double>>(*value.getState())) {
        return Animated<double>(std::get<double>(given));
    }
    if (std::holds_alternative<Animated<int>>(*value.getState())) {
        return Animated<int>(std::get<int>(given));
    }
    return Animated<bool>(std::get<int>(given) != 0);
}

} // namespace

std::vector<Look> const& allLooks()
{
    static std::string const curves = "red=-0.1,0 0,0.1 0.2,0.3; 0.6,0.9 1,0.8 1.2,1\n"
                                      "green,blue=0,0 0.4,0.6 2,1.5";
    static std::vector<std::pair<std::string, std::string>> const linear = {
        {"mode", "Mode"},
        {"linearInputLevelMinRed", "Linear.Input Level.Min.Red"},
        {"linearInputLevelMaxGreen", "Linear.Input Level.Max.Green"},
        {"linearOutputLevelMinBlue", "Linear.Output Level.Min.Blue"},
        {"linearOutputLevelMaxRed", "Linear.Output Level.Max.Red"},
        {"linearGammaBlue", "Linear.Gamma.Blue"},
        {"linearClamp", "Linear.Clamp"}};
    static std::vector<std::pair<std::string, std::string>> const display = {
        {"mode", "Mode"},
        {"exrDisplayExposureRed", "EXRDisplay.Exposure.Red"},
        {"exrDisplayDefogGreen", "EXRDisplay.Defog.Green"},
        {"exrDisplayKneeHighBlue", "EXRDisplay.Knee High.Blue"},
        {"exrDisplayKneeLowRed", "EXRDisplay.Knee Low.Red"},
        {"exrDisplayGammaGreen", "EXRDisplay.Gamma.Green"},
        {"adjust", "Adjust"}};
    static std::vector<Look> const looks = {
        {"new", {}, {}, ""},
        {"linear", linear, {0, 0.1, 0.8, -0.2, 1.5, 2.2, 0}, ""},
        {"linear, curves", linear, {0, -0.0, 1.5, 0.0, 0.9, 0.4, 1}, curves},
        {"display", display, {1, 1.5, 0.01, 4.0, -1.0, 1.8, 0}, curves},
        {"display, curves", display, {1, -2.0, 0.2, 7.0, 2.0, -0.5, 1}, curves},
        {"linear, far levels", linear, {0, -5e9, 4e12, 0.0, 3e9, 2.2, 1}, ""}};
    return looks;
}

OfxImageEffect& BundleTest::makeEffect(OfxTestImage* source, OfxTestImage* output,
                                       std::string const& context)
{
    OfxImageEffect& effect = host->createInstance(context);
    for (auto const& [name, image] : {std::pair("Source", source), std::pair("Output", output)}) {
        effect.clip(name).image = image;
        if (image != nullptr) {
            auto& properties = effect.clip(name).properties.values;
            properties[OfxText::Prop::pixelDepth] = {image->layout.depth};
            properties[OfxText::Prop::components] = {image->layout.components};
        }
    }
    return effect;
}

Bytes BundleTest::renderAll(OfxImageEffect& effect, OfxTestImage& output)
{
    EXPECT_EQ(host->render(effect, output.layout.bounds), OfxStat::ok);
    EXPECT_TRUE(output.hasCleanGuards());
    EXPECT_EQ(host->nbLentImages, 0);
    return output.read();
}

OfxTestImage BundleTest::makePicture(OfxTestImage::Layout const& layout)
{
    OfxTestImage image(layout);
    Bytes bytes = image.read();
    std::mt19937 random(7);
    if (layout.depth == OfxText::Depth::single) {
        std::vector<float> const odd = reference::standardValues();
        std::uniform_real_distribution<float> usual(-0.2F, 1.3F);
        for (std::size_t at = 0; at < bytes.size(); at += sizeof(float)) {
            float const value = random() % 4 == 0 ? odd[random() % odd.size()] : usual(random);
            std::memcpy(bytes.data() + at, &value, sizeof(value));
        }
    } else {
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(random());
        }
    }
    image.write(bytes);
    return image;
}

void BundleTest::apply(Look const& look, OfxImageEffect& effect)
{
    for (std::size_t place = 0; place < look.names.size(); ++place) {
        effect.param(look.names[place].first).value = look.values[place];
    }
    effect.param("adjustCurveText").value = look.curves;
}

Bytes BundleTest::renderNative(Look const& look, OfxTestImage& source, int toolDepth, double mix)
{
    auto const graph = makeShared<HostGraph>();
    RCShdPtr<HostNode> const node = memoryHost::createToolNode(*graph, "Remap Color");
    for (std::size_t place = 0; place < look.names.size(); ++place) {
        RCShdPtr<HostValue> const value = node->getValue(look.names[place].second);
        value->setState(toState(*value, look.values[place]));
    }
    for (auto const& [channel, curve] : parseCurveSet(look.curves, {"Red", "Green", "Blue"})) {
        node->getValue("Adjust Curve." + channel)->setState(curve);
    }
    node->getValue("Output Depth")->setState(Animated<int>(toolDepth));
    node->getValue("Mix")->setState(Animated<double>(mix));
    OfxRectI const& bounds = source.layout.bounds;
    memoryHost::Picture picture(makeFormatOf(source.layout),
                                {bounds.x1, bounds.y1, bounds.x2, bounds.y2});
    picture.bytes = source.read();
    return memoryHost::renderPicture(*node, picture).bytes;
}
