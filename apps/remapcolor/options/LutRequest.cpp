// The options of "lut".

#include "remapcolor/options/LutRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/NumberOptions.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "session/Failures.h"

namespace {

// Within what readers of either format take.
constexpr int leastSize = 2;
constexpr int mostSize = 65536;

Words<LutFormat> const lutFormats = {
    {"clf", LutFormat::Clf}, {"cube", LutFormat::Cube}, {"spi1d", LutFormat::Spi1d}};

} // namespace

void addLutOptions(CommandOptions& options, LutRequest& request)
{
    addOutputOption(options, "OUT", "Table to write: .clf, .cube or .spi1d", request.output);
    addFormatOption(options, lutFormats, request.format);
    addNodeOptions(options, request.node);
    addDepthOption(options, request.node);
    addFrameOption(options, "-f,--frame", request.frame);
    options.addOption(
        "--domain", "LO,HI",
        "Values that a .cube or .spi1d spreads over (0,1)\n\n"
        "What lies beyond gets what the ends get.",
        [&request](std::string const& text) { request.domain = parseRange("--domain", text); });
    options.addOption("--size", "N", "Places of a .cube or .spi1d, 2 to 65536 (4096)",
                      [&request](std::string const& text) {
                          request.size = parseWhole("--size", text, leastSize, mostSize);
                      });
    addMaskOptions(options, request.mask);
    options.addFlag("-q,--quiet", "Print warnings and errors only",
                    [&request] { request.verbosity = Verbosity::Quiet; });
}

void checkComplete(LutRequest& request)
{
    if (request.output.empty()) {
        throw UsageError("lut needs a table to write; add -o OUT.clf, OUT.cube or OUT.spi1d");
    }
    request.format = findFormat(request.output, lutFormats, request.format);
    if (!request.format.has_value()) {
        throw UsageError("cannot write the table " + quote(request.output.string()) +
                         ": its name must end in .clf, .cube or .spi1d");
    }
    checkStandardInput(request.node, {});
    bool const isSpread = request.domain.has_value() || request.size.has_value();
    if (request.format == LutFormat::Clf && isSpread) {
        throw UsageError("--domain and --size are for .cube and .spi1d; a .clf has a place for "
                         "every half");
    }
    checkComplete(request.mask);
}
