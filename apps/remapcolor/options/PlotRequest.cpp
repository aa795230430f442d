// The options of "plot".

#include "remapcolor/options/PlotRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/LayerOptions.h"
#include "remapcolor/options/NumberOptions.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"

namespace {

Words<FigureFormat> const plotFormats = {{"svg", FigureFormat::Svg}, {"png", FigureFormat::Png}};

GeInterval<float> parseStops(std::string const& text)
{
    constexpr float most = 120.0F; // from 1 to where floats end
    GeInterval<float> const stops = parseRange("--stops", text);
    if (stops.minimum < -most || stops.maximum > most) {
        throw UsageError("--stops takes stops from -120 to 120, 0 being the value 1, not " +
                         quote(text));
    }
    return stops;
}

Words<PlotPanel> const panelWords = {
    {"transfer", PlotPanel::Transfer}, {"curves", PlotPanel::Curves}, {"both", PlotPanel::Both}};

std::set<PlotPanel> parsePanels(std::string const& text)
{
    std::set<PlotPanel> panels;
    for (std::string_view const word : split(text, ',')) {
        panels.insert(chooseWord("--show", panelWords, std::string(word)));
    }
    return panels;
}

} // namespace

void addPlotOptions(CommandOptions& options, PlotRequest& request)
{
    options.addArgument("INPUT",
                        "Picture whose histogram lies behind the curves\n\n- is standard input.",
                        [&request](std::string const& text) { request.input = text; });
    addOutputOption(options, "OUT", "Figure to write: .svg or .png", request.output);
    addFormatOption(options, plotFormats, request.format);
    options.addOption("--range", "LO,HI", "Values of the input to plot (0,1)",
                      [&request](std::string const& text) {
                          request.range = parseRange("--range", text);
                          request.hasStops = false;
                      });
    options.addOption("--stops", "LO,HI", "The same in stops, 0 being the value 1: -8,6",
                      [&request](std::string const& text) {
                          request.range = parseStops(text);
                          request.hasStops = true;
                      });
    options.addOption(
        "--results", "LO,HI", "Results to plot (default: all there are)",
        [&request](std::string const& text) { request.results = parseRange("--results", text); });
    options.addOption(
        "--show", "PANELS", "transfer, curves, both, or two of them with a comma",
        [&request](std::string const& text) { request.panels = parsePanels(text); },
        hintWords(panelWords));
    addNodeOptions(options, request.node);
    addDepthOption(options, request.node);
    addFrameOption(options, "-f,--frame", request.frame);
    addLayerOptions(options, LayerCount::One, request.read);
    options.addFlag("-q,--quiet", "Print errors only",
                    [&request] { request.verbosity = Verbosity::Quiet; });
}

void checkComplete(PlotRequest& request)
{
    if (request.output.empty()) {
        throw UsageError("plot needs a figure to write; add -o OUT.svg or OUT.png");
    }
    request.format = findFormat(request.output, plotFormats, request.format);
    if (!request.format.has_value()) {
        throw UsageError("cannot write the plot " + quote(request.output.string()) +
                         ": its name must end in .svg or .png");
    }
    checkStandardInput(request.node, {{"INPUT", request.input}});
    bool const isPlain = request.read.layers.empty() && request.read.part.empty();
    if (!isPlain && request.input.empty()) {
        throw UsageError(
            "--layer and --part need a picture; write remapcolor plot INPUT -o OUT.svg");
    }
}
