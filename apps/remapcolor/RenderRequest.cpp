// The options of "render".

#include "remapcolor/RenderRequest.h"

#include "remapcolor/CommandOptions.h"
#include "remapcolor/OptionText.h"

#include <charconv>

namespace {

constexpr int mostThreads = 1024;

int parseThreads(std::string const& text)
{
    int threads = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), end, threads);
    if (failure != std::errc() || stop != end || threads < 1 || threads > mostThreads) {
        throw UsageError("--threads takes a whole number from 1 to " + std::to_string(mostThreads) +
                         ", not " + quote(text));
    }
    return threads;
}

ProgressStyle parseProgress(std::string const& text)
{
    Words<ProgressStyle> const styles = {{"auto", ProgressStyle::Auto},
                                         {"bar", ProgressStyle::Bar},
                                         {"json", ProgressStyle::Json},
                                         {"none", ProgressStyle::None}};
    return chooseWord("--progress", styles, text);
}

} // namespace

void addRenderOptions(CommandOptions& options, RenderRequest& request)
{
    options.addArgument("INPUT", "Picture to read (EXR, PNG, TIFF, JPEG, DPX)",
                        [&request](std::string const& text) { request.input = text; });
    options.addOption("-o,--output", "OUTPUT", "Picture to write; its extension says the format",
                      [&request](std::string const& text) { request.output = text; });
    addNodeOptions(options, request.node);
    options.addOption("--mask", "FILE",
                      "Blend source and result by this picture's alpha, or its\n"
                      "first channel; times --mix",
                      [&request](std::string const& text) { request.mask = text; });
    addDepthOption(options, request.node);
    options.addOption("--layer", "NAME", "Process the channels NAME.R, NAME.G, NAME.B of the file",
                      [&request](std::string const& text) { request.layer = text; });
    options.addOption(
        "-j,--threads", "N", "Workers (default: the cores this process may use)",
        [&request](std::string const& text) { request.threads = parseThreads(text); });
    options.addOption(
        "--progress", "STYLE", "auto, bar (on a terminal), json or none",
        [&request](std::string const& text) { request.progress = parseProgress(text); });
    options.addFlag("-q,--quiet", "Print errors only",
                    [&request] { request.verbosity = Verbosity::Quiet; });
    options.addFlag("-v,--verbose", "Say what is read and written, and how long it took",
                    [&request] { request.verbosity = Verbosity::Verbose; });
}

void checkComplete(RenderRequest const& request)
{
    if (request.input.empty()) {
        throw UsageError("render needs a picture to read; write remapcolor render INPUT -o OUTPUT");
    }
    if (request.output.empty()) {
        throw UsageError("render needs a picture to write; add -o OUTPUT");
    }
}
