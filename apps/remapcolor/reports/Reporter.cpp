// Messages and progress on standard error.

#include "remapcolor/reports/Reporter.h"

#include "files/PrintableText.h"
#include "remapcolor/reports/StandardStreams.h"

#include <nlohmann/json.hpp>

namespace {

using Kind = ShotEvent::Kind;

void writeText(std::string const& text)
{
    writeStandardError("remapcolor: " + makePrintable(text) + "\n");
}

ShotEvent makeMessage(Kind kind, std::string const& text)
{
    ShotEvent event;
    event.kind = kind;
    event.message = text;
    return event;
}

} // namespace

void Reporter::configure(ProgressStyle wantedStyle, Verbosity wantedVerbosity)
{
    style = wantedStyle;
    verbosity = wantedVerbosity;
}

void Reporter::tell(ShotEvent const& event)
{
    addToLog(event);
    if (style == ProgressStyle::Json) {
        writeStandardError(formatJson(event) + "\n");
    } else if (isShown(event)) {
        bar.clear();
        ShotEvent shown = event;
        if (!namesFrames) {
            shown.frame.reset();
        }
        writeText(formatText(shown));
    }
}

bool Reporter::isShown(ShotEvent const& event) const
{
    switch (event.kind) {
    case Kind::Start:
    case Kind::Frame: return verbosity == Verbosity::Verbose;
    case Kind::Skip:
        // Of several frames the end says how many there were.
        return verbosity == Verbosity::Verbose || (!namesFrames && verbosity == Verbosity::Normal);
    case Kind::Note: return verbosity != Verbosity::Quiet;
    case Kind::Warning:
    case Kind::Error: return true;
    case Kind::End: return namesFrames && (verbosity != Verbosity::Quiet || event.status != 0);
    }
    return true;
}

/// A log that cannot be written is said once.
void Reporter::addToLog(ShotEvent const& event)
{
    if (!log.has_value()) {
        return;
    }
    try {
        log->add(formatText(event));
    } catch (SurroundingsError const& error) {
        log.reset();
        warn(error.what());
    }
}

void Reporter::note(std::string const& text)
{
    tell(makeMessage(Kind::Note, text));
}

void Reporter::warn(std::string const& text)
{
    tell(makeMessage(Kind::Warning, text));
}

void Reporter::showLook(Facts const& facts)
{
    if (verbosity != Verbosity::Verbose) {
        return;
    }
    nlohmann::ordered_json event = {{"event", "look"}};
    for (auto const& [name, value] : facts) {
        event[name] = value;
        if (style != ProgressStyle::Json) {
            writeText(name + ": " + value);
        }
    }
    if (style == ProgressStyle::Json) {
        using Handler = nlohmann::ordered_json::error_handler_t;
        writeStandardError(event.dump(-1, ' ', false, Handler::replace) + "\n");
    }
}

void Reporter::showProgress(double done, std::size_t total)
{
    bool const isWanted = style == ProgressStyle::Bar ||
                          (style == ProgressStyle::Auto && verbosity != Verbosity::Quiet);
    if (isWanted && ProgressBar::isPossible()) {
        bar.show(done, total);
    }
}

void Reporter::reportFailure(Failure const& failure)
{
    ShotEvent event = makeMessage(Kind::Error, failure.text);
    event.status = failure.status;
    tell(event);
    bar.clear();
}
