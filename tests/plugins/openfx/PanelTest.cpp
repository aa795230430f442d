#include "BundleTest.h"

#include <cmath>

namespace {

namespace Prop = OfxText::Prop;
namespace Context = OfxText::Context;

class BundlePanel : public BundleTest {
protected:
    double number(OfxImageEffect& effect, std::string const& name)
    {
        return std::get<double>(effect.param(name).value);
    }
};

/// Hosts save these names: none may ever change or go.
std::vector<std::string> const savedNames = {"mode",
                                             "linear",
                                             "linearInputLevel",
                                             "linearInputLevelMin",
                                             "linearInputLevelMinLink",
                                             "linearInputLevelMinRed",
                                             "linearInputLevelMinGreen",
                                             "linearInputLevelMinBlue",
                                             "linearInputLevelMax",
                                             "linearInputLevelMaxLink",
                                             "linearInputLevelMaxRed",
                                             "linearInputLevelMaxGreen",
                                             "linearInputLevelMaxBlue",
                                             "linearOutputLevel",
                                             "linearOutputLevelMin",
                                             "linearOutputLevelMinLink",
                                             "linearOutputLevelMinRed",
                                             "linearOutputLevelMinGreen",
                                             "linearOutputLevelMinBlue",
                                             "linearOutputLevelMax",
                                             "linearOutputLevelMaxLink",
                                             "linearOutputLevelMaxRed",
                                             "linearOutputLevelMaxGreen",
                                             "linearOutputLevelMaxBlue",
                                             "linearGamma",
                                             "linearGammaLink",
                                             "linearGammaRed",
                                             "linearGammaGreen",
                                             "linearGammaBlue",
                                             "linearClamp",
                                             "exrDisplay",
                                             "exrDisplayExposure",
                                             "exrDisplayExposureLink",
                                             "exrDisplayExposureRed",
                                             "exrDisplayExposureGreen",
                                             "exrDisplayExposureBlue",
                                             "exrDisplayDefog",
                                             "exrDisplayDefogLink",
                                             "exrDisplayDefogRed",
                                             "exrDisplayDefogGreen",
                                             "exrDisplayDefogBlue",
                                             "exrDisplayKneeHigh",
                                             "exrDisplayKneeHighLink",
                                             "exrDisplayKneeHighRed",
                                             "exrDisplayKneeHighGreen",
                                             "exrDisplayKneeHighBlue",
                                             "exrDisplayKneeLow",
                                             "exrDisplayKneeLowLink",
                                             "exrDisplayKneeLowRed",
                                             "exrDisplayKneeLowGreen",
                                             "exrDisplayKneeLowBlue",
                                             "exrDisplayGamma",
                                             "exrDisplayGammaLink",
                                             "exrDisplayGammaRed",
                                             "exrDisplayGammaGreen",
                                             "exrDisplayGammaBlue",
                                             "adjust",
                                             "adjustCurve",
                                             "adjustCurveText",
                                             "adjustCurveEdits",
                                             "resetAdjustedCurves",
                                             "outputDepth",
                                             "unpremult",
                                             "mix"};

TEST_F(BundlePanel, ParametersKeepTheirNamesAndLieInTheirGroups)
{
    load();
    for (char const* const context : {Context::filter, Context::general}) {
        std::vector<std::string> names;
        OfxImageEffect& described = host->getContext(context);
        for (auto const& param : described.params.params) {
            names.push_back(param->name);
            auto const parent = param->properties.get<std::string>(Prop::parent);
            bool const isKnown =
                parent.empty() || std::find(names.begin(), names.end(), parent) != names.end();
            EXPECT_TRUE(isKnown) << param->name << " lies in " << parent;
            EXPECT_FALSE(param->properties.get<std::string>(Prop::label).empty()) << param->name;
        }
        EXPECT_EQ(names, savedNames) << context;
        EXPECT_EQ(described.clips.contains("Mask"), context == std::string(Context::general));
    }
    OfxParam& red = host->getContext(Context::filter).param("exrDisplayKneeHighRed");
    EXPECT_EQ(red.properties.get<std::string>(Prop::parent), "exrDisplayKneeHigh");
    EXPECT_EQ(red.properties.get<double>(Prop::defaultValue), 5.0);
    EXPECT_EQ(red.properties.get<double>(Prop::minimum), 3.5);
    EXPECT_EQ(red.properties.get<double>(Prop::displayMaximum), 7.5);
    OfxParam& depth = host->getContext(Context::filter).param("outputDepth");
    EXPECT_EQ(
        depth.properties.getTexts(Prop::choiceOption),
        (std::vector<std::string>{"8 Bit", "16 Bit (float)", "32 Bit (float)", "Input Depth"}));
    EXPECT_EQ(depth.properties.get<int>(Prop::defaultValue), 3);
}

TEST_F(BundlePanel, EveryRangeIsFiniteAndHoldsItsSliderAndItsDefault)
{
    load();
    int nbNumbers = 0;
    for (auto const& param : host->getContext(Context::filter).params.params) {
        if (param->type != OfxText::Param::number) {
            continue;
        }
        ++nbNumbers;
        auto const read = [&](char const* name) { return param->properties.get<double>(name); };
        EXPECT_TRUE(std::isfinite(read(Prop::minimum)) && std::isfinite(read(Prop::maximum)));
        EXPECT_LT(read(Prop::displayMinimum), read(Prop::displayMaximum)) << param->name;
        for (char const* const inside :
             {Prop::displayMinimum, Prop::displayMaximum, Prop::defaultValue}) {
            EXPECT_GE(read(inside), read(Prop::minimum)) << param->name << " " << inside;
            EXPECT_LE(read(inside), read(Prop::maximum)) << param->name << " " << inside;
        }
    }
    EXPECT_EQ(nbNumbers, 31);
}

TEST_F(BundlePanel, ALinkTakesTheOtherChannelsAlong)
{
    load();
    OfxImageEffect& effect = host->createInstance();
    host->edit(effect, "linearGammaGreen", 2.0);
    EXPECT_EQ(number(effect, "linearGammaRed"), 2.0);
    EXPECT_EQ(number(effect, "linearGammaBlue"), 2.0);
    EXPECT_EQ(number(effect, "exrDisplayGammaBlue"), 2.200000022);
    EXPECT_EQ(effect.params.edits, std::vector<std::string>{"Linked Channels"});
    EXPECT_EQ(effect.params.depth, 0);

    effect.param("linearGammaLink").value = 0;
    host->edit(effect, "linearGammaRed", 3.0);
    EXPECT_EQ(number(effect, "linearGammaBlue"), 2.0);

    effect.param("exrDisplayDefogRed").keys[7.0] = 0.5;
    host->notifyEdited(effect, "exrDisplayDefogRed", 7.0);
    EXPECT_EQ(std::get<double>(effect.param("exrDisplayDefogBlue").keys.at(7.0)), 0.5);

    // A change that is no user's own moves nothing.
    OfxPropertySet in;
    in.values = {{Prop::type, {std::string(OfxText::Type::parameter)}},
                 {Prop::name, {std::string("mix")}},
                 {Prop::changeReason, {std::string("OfxChangePluginEdited")}}};
    EXPECT_EQ(host->call(OfxText::Action::instanceChanged, &effect, &in), OfxStat::replyDefault);
}

/// Straight to (0.5, 0.8), straight to (1, 0.7); what a host's widget gives beyond its ends is its
/// own.
double bent(double x)
{
    return x < 0.5 ? 1.6 * x : 0.9 - 0.2 * x;
}

TEST_F(BundlePanel, TheHostsCurvesAreSampledAndGoOnStraight)
{
    load();
    std::vector<float> const values = {-1.0F, -0.25F, 0.0F, 0.125F, 0.45F, 0.7F, 1.0F, 3.0F};
    OfxTestImage source({.bounds = {0, 0, 8, 1}});
    for (int x = 0; x < 8; ++x) {
        float const pixel[4] = {values[x], values[x], values[x], 0.5F};
        std::memcpy(source.getPixel(x, 0), pixel, sizeof pixel);
    }
    OfxTestImage output(source.layout);
    OfxImageEffect& effect = makeEffect(&source, &output);
    Bytes const untouched = renderAll(effect, output);
    effect.param("adjustCurve").curve = [](int, double x) { return x + 9e-7; };
    EXPECT_EQ(renderAll(effect, output), untouched); // as good as the identity
    effect.param("adjustCurve").curve = [](int curve, double x) {
        return curve == 1 ? bent(x) : x;
    };
    renderAll(effect, output);
    for (int x = 0; x < 8; ++x) {
        float pixel[4];
        std::memcpy(pixel, output.getPixel(x, 0), sizeof pixel);
        EXPECT_NEAR(pixel[0], values[x], 1e-6);
        EXPECT_NEAR(pixel[1], bent(values[x]), 2e-6) << values[x];
        EXPECT_EQ(pixel[3], 0.5F);
    }

    // Exact curves lead until the user edits the visible ones.
    Look const& look = allLooks()[2];
    effect.param("adjustCurveText").value = look.curves;
    EXPECT_EQ(renderAll(effect, output), renderNative({"", {}, {}, look.curves}, source, 3));
    host->notifyEdited(effect, "adjustCurve");
    EXPECT_EQ(std::get<std::string>(effect.param("adjustCurveText").value), "");
    EXPECT_NE(renderAll(effect, output), untouched);

    // All back in one step.
    effect.param("adjustCurveText").value = look.curves;
    effect.params.edits.clear();
    host->notifyEdited(effect, "resetAdjustedCurves");
    EXPECT_EQ(effect.params.edits, std::vector<std::string>{"Reset Adjusted Curves"});
    EXPECT_EQ(effect.param("adjustCurve").points[2],
              (std::map<double, double>{{0.0, 0.0}, {1.0, 1.0}}));
    EXPECT_EQ(std::get<int>(effect.param("adjustCurveEdits").value), 1);
    EXPECT_EQ(renderAll(effect, output), untouched);
}

TEST_F(BundlePanel, WithoutCurvesInTheHostTheTextIsThere)
{
    for (bool const hasCurves : {true, false}) {
        load({.hasCurves = hasCurves, .hasThreads = false});
        OfxImageEffect& described = host->getContext(Context::filter);
        OfxPropertySet const& text = described.param("adjustCurveText").properties;
        EXPECT_EQ(text.get<int>(Prop::secret), hasCurves ? 1 : 0);
        EXPECT_EQ(text.get<std::string>(Prop::stringMode), "OfxParamStringIsMultiLine");
        EXPECT_EQ(described.params.find("adjustCurve") != nullptr, hasCurves);
        OfxImageEffect& effect = host->createInstance();
        host->messages.clear();
        host->edit(effect, "adjustCurveText", std::string("0,0 1,1\nblu=0,0 1,1"));
        ASSERT_EQ(host->messages.size(), 1);
        EXPECT_NE(host->messages[0].find("line 2: there is no channel \"blu\""), std::string::npos);
        host->notifyEdited(effect, "resetAdjustedCurves");
        EXPECT_EQ(std::get<std::string>(effect.param("adjustCurveText").value), "");
        host.reset();
    }
}

TEST_F(BundlePanel, CurvesOfTheTextChangeOverTime)
{
    load();
    OfxTestImage source = makePicture({});
    OfxTestImage output(source.layout);
    OfxImageEffect& effect = makeEffect(&source, &output);
    effect.param("adjustCurveText").value = std::string("rgb=0,0 1,1 @0 | 0,0 1,3 @10");
    ASSERT_EQ(host->render(effect, source.layout.bounds, 10.0), OfxStat::ok);
    EXPECT_EQ(output.read(), renderNative({"", {}, {}, "rgb=0,0 1,3"}, source, 3));
    effect.param("exrDisplayExposureRed").keys = {{1.0, 2.0}, {5.0, -1.0}};
    effect.param("adjustCurveText").value = std::string();
    effect.param("mode").value = 1;
    ASSERT_EQ(host->render(effect, source.layout.bounds, 5.5), OfxStat::ok);
    EXPECT_EQ(output.read(),
              renderNative({"", {{"", "Mode"}, {"", "EXRDisplay.Exposure.Red"}}, {1, -1.0}, ""},
                           source, 3));
}

} // namespace
