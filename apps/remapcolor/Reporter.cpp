// Messages and progress on standard error.

#include "remapcolor/Reporter.h"

#include "runtime/values/NumberText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unistd.h>

namespace {

using Json = nlohmann::ordered_json;

constexpr int barWidth = 40;              // characters
constexpr double secondsWithoutBar = 0.3; // a bar that only flashes up tells nothing
constexpr double smallestStep = 0.01;     // share of the picture between two JSON lines
constexpr int frame = 0;                  // of a single picture

/// Not through C's stderr, which an image library may be kept away from meanwhile. In one piece, so
/// that lines of several processes do not mix.
void writeError(std::string_view text)
{
    static_cast<void>(!::write(STDERR_FILENO, text.data(), text.size()));
}

void writeLine(std::string const& line)
{
    writeError(line + "\n");
}

void writeText(std::string const& text)
{
    writeLine("remapcolor: " + makePrintable(text));
}

/// File names may hold bytes that are no UTF-8.
void writeJson(Json const& event)
{
    writeLine(event.dump(-1, ' ', false, Json::error_handler_t::replace));
}

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

char const* nameStorage(SampleStorage storage)
{
    switch (storage) {
    case SampleStorage::UInt8: return "8 bit";
    case SampleStorage::UInt16: return "16 bit";
    case SampleStorage::Half: return "half";
    case SampleStorage::Float: return "float";
    }
    return "unknown";
}

/// "512 x 256"
std::string formatSize(GeRectangle<int> const& window)
{
    return std::to_string(window.getWidth()) + " x " + std::to_string(window.getHeight());
}

std::string formatWindow(GeRectangle<int> const& window)
{
    return formatSize(window) + " at (" + std::to_string(window.x0) + ", " +
           std::to_string(window.y0) + ")";
}

std::string describePicture(ImageInfo const& info)
{
    std::string text = formatSize(info.dataWindow) + ", " + nameStorage(info.storage);
    if (!(info.dataWindow == info.displayWindow)) {
        text += ", pixels " + formatWindow(info.dataWindow) + ", display window " +
                formatWindow(info.displayWindow);
    }
    return text;
}

} // namespace

void Reporter::configure(ProgressStyle wantedStyle, Verbosity wantedVerbosity)
{
    style = wantedStyle;
    verbosity = wantedVerbosity;
}

void Reporter::note(std::string const& text)
{
    if (isQuiet()) {
        return;
    }
    clearBar();
    if (style == ProgressStyle::Json) {
        writeJson({{"event", "note"}, {"frame", frame}, {"message", text}});
    } else {
        writeText("note: " + text);
    }
}

void Reporter::startPicture(std::filesystem::path const& input, std::filesystem::path const& output,
                            ImageInfo const& info, int threads)
{
    outputFile = output;
    started = Clock::now();
    lastShown = -1.0;
    if (style == ProgressStyle::Json) {
        writeJson({{"event", "start"},
                   {"frame", frame},
                   {"input", input.string()},
                   {"output", output.string()},
                   {"width", info.dataWindow.getWidth()},
                   {"height", info.dataWindow.getHeight()},
                   {"threads", threads}});
    } else if (verbosity == Verbosity::Verbose) {
        writeText("reading " + quote(input.string()) + ": " + describePicture(info) + "; " +
                  std::to_string(threads) + (threads == 1 ? " thread" : " threads"));
    }
}

void Reporter::showProgress(double done)
{
    if (style == ProgressStyle::Json) {
        if (done >= lastShown + smallestStep) {
            writeJson({{"event", "progress"}, {"frame", frame}, {"done", done}});
            lastShown = done;
        }
    } else if (style == ProgressStyle::Bar || (style == ProgressStyle::Auto && !isQuiet())) {
        if (isTerminal() && getSeconds() >= secondsWithoutBar) {
            drawBar(done);
        }
    }
}

void Reporter::finishPicture()
{
    clearBar();
    double const seconds = std::round(getSeconds() * 1000.0) / 1000.0;
    if (style == ProgressStyle::Json) {
        writeJson({{"event", "done"},
                   {"frame", frame},
                   {"output", outputFile.string()},
                   {"seconds", seconds}});
    } else if (verbosity == Verbosity::Verbose) {
        writeText("wrote " + quote(outputFile.string()) + " in " + formatNumber(seconds) + " s");
    }
}

void Reporter::reportFailure(Failure const& failure)
{
    clearBar();
    if (style == ProgressStyle::Json) {
        writeJson({{"event", "error"},
                   {"frame", frame},
                   {"status", failure.status},
                   {"message", failure.text}});
    } else {
        writeText(failure.text);
    }
}

double Reporter::getSeconds() const
{
    return std::chrono::duration<double>(Clock::now() - started).count();
}

void Reporter::drawBar(double done)
{
    double const share = std::clamp(done, 0.0, 1.0);
    auto const filled = static_cast<std::size_t>(share * barWidth);
    std::string const bar = "\r[" + std::string(filled, '#') + std::string(barWidth - filled, '.') +
                            "] " + std::to_string(static_cast<int>(share * 100.0)) + " %";
    writeError(bar);
    isBarDrawn = true;
}

void Reporter::clearBar()
{
    if (isBarDrawn) {
        constexpr std::string_view toLineStartAndErase = "\r\033[K";
        writeError(toLineStartAndErase);
        isBarDrawn = false;
    }
}
