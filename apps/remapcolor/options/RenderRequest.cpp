// The options of "render".

#include "remapcolor/options/RenderRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/NumberOptions.h"
#include "remapcolor/options/OptionText.h"
#include "remapcolor/options/ShotOptionText.h"
#include "runtime/values/NumberText.h"

namespace {

constexpr int mostThreads = 1024;

float parseLevel(std::string const& text)
{
    std::optional<double> const level = parseNumber(text);
    if (!level.has_value() || !(*level >= 0.0 && *level <= mostDwaLevel)) {
        throw UsageError("--compression takes a level from 0 to " + formatNumber(mostDwaLevel) +
                         " after dwaa: or dwab:, not " + quote(text));
    }
    return static_cast<float>(*level);
}

/// "input" for none.
std::optional<CompressionChoice> parseCompression(std::string const& text)
{
    using Kind = Compression;
    using Choice = std::optional<Kind>;
    Words<Choice> const kinds = {{"none", Kind::None}, {"rle", Kind::Rle},   {"zips", Kind::Zips},
                                 {"zip", Kind::Zip},   {"piz", Kind::Piz},   {"pxr24", Kind::Pxr24},
                                 {"b44", Kind::B44},   {"b44a", Kind::B44a}, {"dwaa", Kind::Dwaa},
                                 {"dwab", Kind::Dwab}, {"input", {}}};
    std::size_t const colon = text.find(':');
    Choice const kind = chooseWord("--compression", kinds, text.substr(0, colon));
    if (colon == std::string::npos) {
        return kind ? std::optional(CompressionChoice{*kind}) : std::nullopt;
    }
    if (kind != Kind::Dwaa && kind != Kind::Dwab) {
        throw UsageError("--compression takes a level after dwaa: or dwab: only, not " +
                         quote(text));
    }
    return CompressionChoice{*kind, parseLevel(text.substr(colon + 1))};
}

ProgressStyle parseProgress(std::string const& text)
{
    Words<ProgressStyle> const styles = {{"auto", ProgressStyle::Auto},
                                         {"bar", ProgressStyle::Bar},
                                         {"json", ProgressStyle::Json},
                                         {"none", ProgressStyle::None}};
    return chooseWord("--progress", styles, text);
}

void setVerbosity(RenderRequest& request, Verbosity wanted)
{
    if (request.verbosity != Verbosity::Normal && request.verbosity != wanted) {
        throw UsageError("--quiet and --verbose contradict each other; give one of them");
    }
    request.verbosity = wanted;
}

ExistingOutput parseExisting(std::string const& text)
{
    Words<ExistingOutput> const words = {{"overwrite", ExistingOutput::Overwrite},
                                         {"skip", ExistingOutput::Skip},
                                         {"error", ExistingOutput::Error}};
    return chooseWord("--existing", words, text);
}

MissingInput parseMissing(std::string const& text)
{
    Words<MissingInput> const words = {
        {"fail", MissingInput::Fail}, {"skip", MissingInput::Skip}, {"stop", MissingInput::Stop}};
    return chooseWord("--on-missing", words, text);
}

/// Which frames there are, and what becomes of those that are there already or not at all.
void addShotOptions(CommandOptions& options, RenderRequest& request)
{
    options.addOption("-f,--frames", "LIST",
                      "Frames, which are the times too: 1-10,15,20-40x5\n"
                      "(default: all that INPUT matches)",
                      [&request](std::string const& text) {
                          request.shot.frames = parseFrames(text);
                          request.framesFile.clear();
                      });
    options.addOption("--frames-from", "FILE", "Read that list from a file, or from - (input)",
                      [&request](std::string const& text) { request.framesFile = text; });
    addFrameOption(options, "--frame", request.frame);
    options.addOption(
        "--chunk", "I/N", "The I-th of N equal parts of the frames, from 0",
        [&request](std::string const& text) { request.shot.chunk = parseChunk(text); });
    options.addOption(
        "--existing", "DO", "Outputs that are there: overwrite, skip or error",
        [&request](std::string const& text) { request.existing = parseExisting(text); });
    options.addFlag("--any-age", "Skip outputs that are older than what they are made of",
                    [&request] { request.skipsAnyAge = true; });
    options.addOption(
        "--on-missing", "DO", "Frames without input: fail, skip or stop",
        [&request](std::string const& text) { request.missing = parseMissing(text); });
}

void addReportOptions(CommandOptions& options, RenderRequest& request)
{
    options.addOption(
        "--progress", "STYLE", "auto, bar (on a terminal), json or none",
        [&request](std::string const& text) { request.progress = parseProgress(text); });
    options.addOption("--log", "FILE", "Add every event to FILE as a line",
                      [&request](std::string const& text) { request.log = text; });
    options.addFlag("-n,--dry-run", "List what would be done",
                    [&request] { request.isDryRun = true; });
    options.addFlag("-q,--quiet", "Print warnings (what the output lacks) and errors only",
                    [&request] { setVerbosity(request, Verbosity::Quiet); });
    options.addFlag("-v,--verbose",
                    "Say what is read and written, with which values, and\n"
                    "how long it took",
                    [&request] { setVerbosity(request, Verbosity::Verbose); });
}

} // namespace

void addRenderOptions(CommandOptions& options, RenderRequest& request)
{
    options.addArgument("INPUT", "Picture or sequence (shot.####.exr, shot.%04d.exr) to read",
                        [&request](std::string const& text) { request.shot.input = text; });
    addOutputOption(options, "OUTPUT", "The same to write; its extension says the format",
                    request.output);
    addNodeOptions(options, request.node);
    addShotOptions(options, request);
    addMaskOptions(options, request.mask);
    addDepthOption(options, request.node);
    options.addOption(
        "--compression", "NAME",
        "Of an EXR output: none, rle, zips, zip, piz, pxr24, b44,\n"
        "b44a, dwaa, dwab, or input (default; zip where there is\n"
        "none). dwaa:LEVEL, dwab:LEVEL: the more, the smaller",
        [&request](std::string const& text) { request.compression = parseCompression(text); });
    options.addOption("--layer", "NAME", "Process the channels NAME.R, NAME.G, NAME.B of the file",
                      [&request](std::string const& text) { request.layer = text; });
    options.addOption("-j,--threads", "N", "Workers (default: the cores this process may use)",
                      [&request](std::string const& text) {
                          request.threads = parseWhole("--threads", text, 1, mostThreads);
                      });
    options.addOption("--memory", "SIZE", "Bound for pixels on their way, such as 4G",
                      [&request](std::string const& text) { request.memory = parseMemory(text); });
    addReportOptions(options, request);
}

void checkComplete(RenderRequest const& request)
{
    if (request.shot.input.empty()) {
        throw UsageError("render needs a picture to read; write remapcolor render INPUT -o OUTPUT");
    }
    if (request.output.empty()) {
        throw UsageError("render needs a picture to write; add -o OUTPUT");
    }
    bool const hasFrames = request.shot.frames.has_value() || !request.framesFile.empty();
    if (hasFrames && request.frame.has_value()) {
        throw UsageError("give either --frame or --frames");
    }
    if (request.skipsAnyAge && request.existing != ExistingOutput::Skip) {
        throw UsageError("--any-age needs --existing skip");
    }
    checkComplete(request.mask);
}
