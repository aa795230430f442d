// The options of "render".

#include "remapcolor/options/RenderRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/FrameListOptions.h"
#include "remapcolor/options/LayerOptions.h"
#include "remapcolor/options/NumberOptions.h"
#include "remapcolor/options/ShotOptionText.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "runtime/values/NumberText.h"
#include "shots/FramePattern.h"

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

/// None for the input's.
using CompressionKind = std::optional<Compression>;
Words<CompressionKind> const compressionKinds = {
    {"none", Compression::None}, {"rle", Compression::Rle},   {"zips", Compression::Zips},
    {"zip", Compression::Zip},   {"piz", Compression::Piz},   {"pxr24", Compression::Pxr24},
    {"b44", Compression::B44},   {"b44a", Compression::B44a}, {"dwaa", Compression::Dwaa},
    {"dwab", Compression::Dwab}, {"input", CompressionKind()}};

std::optional<CompressionChoice> parseCompression(std::string const& text)
{
    using Kind = Compression;
    std::size_t const colon = text.find(':');
    CompressionKind const kind =
        chooseWord("--compression", compressionKinds, text.substr(0, colon));
    if (colon == std::string::npos) {
        return kind ? std::optional(CompressionChoice{*kind}) : std::nullopt;
    }
    if (kind != Kind::Dwaa && kind != Kind::Dwab) {
        throw UsageError("--compression takes a level after dwaa: or dwab: only, not " +
                         quote(text));
    }
    return CompressionChoice{*kind, parseLevel(text.substr(colon + 1))};
}

Words<ProgressStyle> const progressStyles = {{"auto", ProgressStyle::Auto},
                                             {"bar", ProgressStyle::Bar},
                                             {"json", ProgressStyle::Json},
                                             {"none", ProgressStyle::None}};
Words<ExistingOutput> const existingOutputs = {{"overwrite", ExistingOutput::Overwrite},
                                               {"skip", ExistingOutput::Skip},
                                               {"error", ExistingOutput::Error}};
Words<MissingInput> const missingInputs = {
    {"fail", MissingInput::Fail}, {"skip", MissingInput::Skip}, {"stop", MissingInput::Stop}};

Words<FileKind> const fileKinds = {{"exr", FileKind::Exr},   {"png", FileKind::Png},
                                   {"tiff", FileKind::Tiff}, {"jpeg", FileKind::Jpeg},
                                   {"dpx", FileKind::Dpx},   {"tif", FileKind::Tiff},
                                   {"jpg", FileKind::Jpeg}};

/// Adds an option that sets `choice` to what one of `words` stands for.
template <typename T>
void addChoice(CommandOptions& options, std::string const& name, std::string const& placeholder,
               std::string const& description, Words<T> const& words, T& choice)
{
    options.addOption(
        name, placeholder, description,
        [name, &words, &choice](std::string const& text) {
            choice = chooseWord(name, words, text);
        },
        hintWords(words));
}

void setVerbosity(RenderRequest& request, Verbosity wanted)
{
    if (request.verbosity != Verbosity::Normal && request.verbosity != wanted) {
        throw UsageError("--quiet and --verbose contradict each other; give one of them");
    }
    request.verbosity = wanted;
}

bool usesStandardStreams(RenderRequest const& request)
{
    return isStandardStream(request.shot.input) || isStandardStream(request.output) ||
           isStandardStream(request.mask.file.value_or(""));
}

/// Throws UsageError for what has no meaning where a picture is standard input or output, which is
/// one picture, has no age and is never there already.
void checkStandardStreams(RenderRequest const& request)
{
    checkFormat(request.output, fileKinds, request.kind);
    checkStandardInput(request.node, {{"INPUT", request.shot.input},
                                      {"--mask", request.mask.file.value_or("")},
                                      {"--frames-from", request.framesFile}});
    if (!usesStandardStreams(request)) {
        return;
    }
    bool const isSequence = FramePattern(request.shot.input).isSequence() ||
                            FramePattern(request.output.string()).isSequence() ||
                            FramePattern(request.mask.file.value_or("").string()).isSequence();
    bool const isChunk = request.shot.chunk.index != 0 || request.shot.chunk.count != 1;
    bool const looksAtOutput =
        request.existing == ExistingOutput::Skip ||
        (request.existing != ExistingOutput::Overwrite && isStandardStream(request.output));
    for (auto const& [isAsked, name] :
         {std::pair(isSequence, "a sequence of files"),
          std::pair(request.shot.frames.has_value(), "--frames (--frame NUMBER says the time)"),
          std::pair(!request.framesFile.empty(), "--frames-from (--frame NUMBER says the time)"),
          std::pair(isChunk, "--chunk"), std::pair(looksAtOutput, "--existing"),
          std::pair(request.missing != MissingInput::Fail, "--on-missing")}) {
        if (isAsked) {
            throw UsageError(std::string("standard input and output are one picture each, which "
                                         "does not go with ") +
                             name);
        }
    }
}

/// Which frames there are, and what becomes of those that are there already or not at all.
void addShotOptions(CommandOptions& options, RenderRequest& request)
{
    addFrameListOptions(options, request.shot.frames, request.framesFile);
    addFrameOption(options, "--frame", request.frame);
    options.addOption(
        "--chunk", "I/N", "The I-th of N equal parts of the frames, from 0",
        [&request](std::string const& text) { request.shot.chunk = parseChunk(text); });
    addChoice(options, "--existing", "DO",
              "Outputs that are there: overwrite, skip or error\n\n"
              "Only what is whole and fits is skipped.",
              existingOutputs, request.existing);
    options.addFlag("--any-age", "Skip outputs older than what they are made of, too",
                    [&request] { request.skipsAnyAge = true; });
    addChoice(options, "--on-missing", "DO",
              "Frames without input: fail, skip or stop\n\n"
              "All but stop go on with the others.",
              missingInputs, request.missing);
}

void addReportOptions(CommandOptions& options, RenderRequest& request)
{
    addChoice(options, "--progress", "STYLE", "auto, bar (on a terminal), json or none",
              progressStyles, request.progress);
    options.addOption("--log", "FILE", "Add every event to FILE as a line",
                      [&request](std::string const& text) {
                          if (isStandardStream(text)) {
                              throw UsageError("--log takes a file; standard output is for data, "
                                               "and --verbose says the same on standard error");
                          }
                          request.log = text;
                      },
                      {ValueHint::Kind::File});
    options.addFlag("-n,--dry-run", "List what would be done",
                    [&request] { request.isDryRun = true; });
    options.addFlag("-q,--quiet",
                    "Print warnings and errors only\n\n"
                    "A warning says that the output lacks something.",
                    [&request] { setVerbosity(request, Verbosity::Quiet); });
    options.addFlag("-v,--verbose", "Say what is read and written, how, and how long it took",
                    [&request] { setVerbosity(request, Verbosity::Verbose); });
}

} // namespace

void addRenderOptions(CommandOptions& options, RenderRequest& request)
{
    options.addArgument("INPUT",
                        "Picture or sequence (shot.####.exr, shot.%04d.exr) to read\n\n"
                        "- is a picture on standard input. So are FILE of --mask and of "
                        "--project, one of them at a time.",
                        [&request](std::string const& text) { request.shot.input = text; });
    addOutputOption(options, "OUTPUT",
                    "The same to write; its extension says the format\n\n"
                    "- is standard output, which gets the picture as a whole.",
                    request.output);
    addFormatOption(options, fileKinds, request.kind);
    addNodeOptions(options, request.node);
    addShotOptions(options, request);
    addMaskOptions(options, request.mask);
    addDepthOption(options, request.node);
    options.addOption(
        "--compression", "NAME",
        "Of an EXR output, such as zip, piz or input (default)\n\n"
        "none, rle, zips, zip, piz, pxr24, b44, b44a, dwaa, dwab, or input (zip where there is "
        "none). dwaa:LEVEL, dwab:LEVEL: the more, the smaller.",
        [&request](std::string const& text) { request.compression = parseCompression(text); },
        hintWords(compressionKinds));
    options.addFlag("--stamp",
                    "Say in each picture when and how it was made\n\n"
                    "Two runs do not give the same bytes then. An EXR file has it as its attribute "
                    "remapcolor, other files as their software.",
                    [&request] { request.isStamped = true; });
    addLayerOptions(options, LayerCount::Several, request.read);
    options.addOption("-j,--threads", "N", "Workers (default: the cores it may use)",
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
    checkStandardStreams(request);
}
