// "plot": that the figure's values are the tool's, and the program around it.

#include "apps/remapcolor/Program.h"
#include "remapcolor/commands/PlotFigure.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/session/RequestedSession.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using Form = ValueSetting::Form;
using Names = std::vector<std::string>;

constexpr double nearlySame = 1e-5; // of functions that are smooth between a curve's places

/// A figure and the session that it lives on. Settings "NAME=VALUE", or of curves "rgb=...".
struct Plotted {
    Plotted(Names const& settings, PlotRanges const& ranges)
        : session(makeRequest(settings)), link(session.linkController()),
          plot(session.getNode(), *link, 0.0, ranges)
    {
    }

    static NodeRequest makeRequest(Names const& settings)
    {
        NodeRequest request;
        for (std::string const& text : settings) {
            request.settings.push_back(
                {text.starts_with("rgb=") ? Form::Curves : Form::Named, text});
        }
        return request;
    }

    FigurePanel const& panel(std::size_t index) const { return plot.getFigure().panels[index]; }

    RequestedSession session;
    RCShdPtr<ControllerLink> link;
    PlotFigure plot;
};

TEST(PlotFigure, ShowsTransferCurvesAndChain)
{
    Plotted const plotted({"Linear.Gamma=2", "Linear.Output Level.Max=1.5", "Linear.Clamp=on",
                           "Linear.Gamma.Blue=1", "rgb=0,0 2,1", "Mix=0.5"},
                          {{0.0, 8.0, "input"}, {}});
    FigureLine const& transfer = plotted.panel(0).lines.front();
    FigureLine const& curve = plotted.panel(1).lines.front();
    FigureLine const& chain = plotted.panel(2).lines.front();
    EXPECT_EQ(plotted.panel(0).lines[0].label, "R G");
    EXPECT_EQ(plotted.panel(0).lines[1].label, "");
    EXPECT_EQ(plotted.panel(0).lines[2].label, "B");
    ASSERT_EQ(plotted.panel(1).lines.size(), 1U);
    for (FigurePoint const& point : transfer.points) {
        EXPECT_NEAR(point.y, std::sqrt(1.5 * point.x), nearlySame); // never clamped
    }
    for (FigurePoint const& point : curve.points) {
        EXPECT_NEAR(point.y, 0.5 * point.x, nearlySame);
    }
    for (FigurePoint const& point : chain.points) {
        double const result = std::min(0.5 * std::sqrt(1.5 * point.x), 1.5);
        EXPECT_NEAR(point.y, 0.5 * (result + point.x), nearlySame);
    }
    EXPECT_EQ(plotted.panel(2).remark, "Mix 0.5");
    ASSERT_EQ(plotted.panel(1).keys.size(), 2U);
    EXPECT_EQ(plotted.panel(1).keys[1].key.x, 2.0);
    EXPECT_EQ(plotted.panel(1).keys[1].handles.size(), 2U);
}

TEST(PlotFigure, StopsCountFromOneAndPlotColourIsMarked)
{
    Plotted const plotted({"Mode=EXRDisplay", "Adjust=off", "Plot Color=0.25,9,0.5",
                           "Plot Color Enabled=on", "rgb=0,0 0.5,3 1,1 500,2"},
                          {{-4.0, 2.0, "input", FigureAxis::Unit::Stop}, {}});
    for (FigurePoint const& point : plotted.panel(0).reference) {
        EXPECT_NEAR(point.y, std::exp2(point.x), nearlySame);
    }
    EXPECT_EQ(plotted.panel(0).lines.front().points.back().y,
              plotted.panel(2).lines.front().points.back().y);
    EXPECT_EQ(plotted.panel(1).remark, "off: Adjust is false");
    EXPECT_EQ(plotted.plot.getHiddenKeys(), Names{"500,2"});
    ASSERT_EQ(plotted.panel(2).marks.size(), 2U); // 9 lies beyond
    EXPECT_EQ(plotted.panel(2).marks[0].place.x, -2.0);
    EXPECT_EQ(plotted.panel(2).marks[1].tone, FigureTone::Blue);
}

TEST(PlotFigure, CountsPixelsBeforeAndAfterTheTransfer)
{
    Plotted plotted({"Linear.Output Level.Max=0.5"}, {{0.0, 1.0, "input"}, {}});
    plotted.plot.addPixels({{0.0F, 1.0F, 0.999F, 1.0F}, {-1.0F, NAN, 2.0F, 1.0F}});
    plotted.plot.addHistograms("a.exr");
    EXPECT_EQ(plotted.plot.getInputHistogram().getNbOutside(), 3.0);
    for (std::size_t const panel : {0U, 1U, 2U}) {
        ASSERT_EQ(plotted.panel(panel).histograms.size(), 3U);
        std::vector<double> const& greens = plotted.panel(panel).histograms[1].counts;
        EXPECT_EQ(std::accumulate(greens.begin(), greens.end(), 0.0), 1.0);
        // The curves' panel starts with what the transfer makes: 0.5 of 1.
        std::size_t const place = panel == 1 ? greens.size() / 2 : greens.size() - 1;
        EXPECT_EQ(greens[place], 1.0) << panel;
    }
}

class PlotTest : public MediaTest {};

TEST_F(PlotTest, WritesTheSameFigureEachTimeOrOneLine)
{
    struct Case {
        Names words;
        int status;
        std::string said; ///< empty for nothing
    };
    writeExr(file("in.exr"), {});
    writeExr(file("alpha.exr"), {.channels = {{"A"}}});
    for (auto const& [words, status, said] :
         {Case{{"plot", "-o", "a.svg"}, 0, ""},
          Case{{"plot", "-o", "a.png", "--stops", "-8,6"}, 0, ""},
          Case{{"plot", "in.exr", "-o", "a.png", "-q"}, 0, ""},
          Case{{"plot", "in.exr", "-o", "a.svg"}, 0, "the histogram lacks"},
          Case{{"plot", "in.exr", "-o", "a.png", "--show", "curves", "--mode", "EXRDisplay"},
               0,
               "the histogram lacks"},
          Case{{"plot", "-o", "a.svg", "-s", "Mix=0@1,1@5", "-f", "3"}, 0, ""},
          Case{{"plot", "-o", "a.svg", "-s", "Mix=0@1,1@5"}, 2, "add --frame NUMBER"},
          Case{{"plot", "x.0012.exr", "-o", "a.svg", "-s", "Mix=0@1,1@5"}, 2, "add --frame 12"},
          Case{{"plot"}, 2, "add -o OUT.svg"},
          Case{{"plot", "-o", "a.pdf"}, 2, "must end in .svg or .png"},
          Case{{"plot", "-o", "b/a.svg"}, 2, "does not exist"},
          Case{{"plot", "-o", "a.svg", "--range", "1,0"}, 2, "the lower one first"},
          Case{{"plot", "-o", "a.svg", "--stops", "-8,200"}, 2, "from -120 to 120"},
          Case{{"plot", "-o", "a.svg", "--results", "all"}, 2, "--results takes two numbers"},
          Case{{"plot", "-o", "a.svg", "--layer", "x"}, 2, "need a picture"},
          Case{{"plot", "-o", "a.svg", "--show", "both,all"}, 2, "transfer, curves or both, not"},
          Case{{"plot", "alpha.exr", "-o", "a.svg"}, 2, "there is no colour in \"alpha.exr\""},
          Case{{"plot", "gone.exr", "-o", "a.svg"}, 1, "there is no such file"}}) {
        ProgramResult const result = Program(folder, words).wait();
        EXPECT_EQ(result.status, status) << testing::PrintToString(words);
        EXPECT_EQ(result.errors.size(), said.empty() ? 0U : 1U)
            << testing::PrintToString(result.errors);
        if (!said.empty() && !result.errors.empty()) {
            expectLineWith(said, result.errors.front());
        }
        EXPECT_EQ(folder.list().size(), status == 0 ? 3U : 2U) << testing::PrintToString(words);
        for (char const* name : {"a.svg", "a.png"}) {
            if (std::filesystem::exists(file(name))) {
                std::string const first = loadBytes(file(name));
                Program(folder, words).wait();
                EXPECT_EQ(loadBytes(file(name)), first);
                EXPECT_GT(first.size(), 10000U);
                std::filesystem::remove(file(name));
            }
        }
    }
}

TEST_F(PlotTest, NeverReplacesItsInput)
{
    writeOther(file("in.png"), 4, 3, 8, std::string(48, 'x'));
    std::string const before = loadBytes(file("in.png"));
    std::filesystem::create_symlink("in.png", file("link.png"));
    for (char const* output : {"in.png", "./in.png", "link.png"}) {
        ProgramResult const result = Program(folder, {"plot", "in.png", "-o", output}).wait();
        EXPECT_EQ(result.status, 2);
        ASSERT_EQ(result.errors.size(), 1U);
        expectLineWith("would replace its input", result.errors.front());
    }
    EXPECT_EQ(loadBytes(file("in.png")), before);
}

} // namespace
