// "lut": the node's chain as a table.

#include "remapcolor/commands/LutCommand.h"

#include "files/PrintableText.h"
#include "files/StandardFiles.h"
#include "pluginAPI/IxSampleConversion.h"
#include "remapcolor/commands/LutText.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/LookNotes.h"
#include "remapcolor/session/RequestedSession.h"
#include "remapcolor/session/StopSignals.h"
#include "runtime/engine/SentPixels.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace {

using Color = CoRgbColorTyped<float>;
using Pixel = CoRgbaColorTyped<float>;

constexpr std::array channels = {&Color::red, &Color::green, &Color::blue};
constexpr std::size_t nbHalves = 65536;
constexpr int defaultSize = 4096;
constexpr float greatest = std::numeric_limits<float>::max();

/// Every half in the order of their bits.
std::vector<float> listHalves()
{
    std::vector<std::array<std::uint16_t, 4>> halves(nbHalves);
    for (std::size_t bits = 0; bits < nbHalves; ++bits) {
        halves[bits].fill(static_cast<std::uint16_t>(bits));
    }
    IxPixelFormat const format(IxPixelFormat::RGBA, IxPixelFormat::FLOAT16, Rational(1, 1), false);
    std::vector<Pixel> pixels(nbHalves);
    readPixelRow(format, std::as_bytes(std::span(halves)).data(), pixels);
    std::vector<float> values;
    for (Pixel const& pixel : pixels) {
        values.push_back(pixel.red);
    }
    return values;
}

std::vector<float> spreadPlaces(GeInterval<float> const& domain, int size)
{
    double const width = double{domain.maximum} - double{domain.minimum};
    std::vector<float> places;
    for (int place = 0; place < size; ++place) {
        places.push_back(static_cast<float>(double{domain.minimum} + width * place / (size - 1)));
    }
    places.back() = domain.maximum;
    return places;
}

/// A node at a time, asked for what becomes of grey values.
struct Chain {
    HostNode& node;
    double time;

    LutEntries map(std::vector<float> const& values) const
    {
        std::vector<Pixel> pixels;
        for (float const value : values) {
            pixels.push_back({value, value, value, 1.0F});
        }
        LutEntries entries;
        for (Pixel const& pixel : sendPixels(node, pixels, time)) {
            entries.push_back({pixel.red, pixel.green, pixel.blue});
        }
        return entries;
    }
};

/// Puts finite numbers in the place of others, and says how many.
void makeFinite(LutEntries& entries, Reporter& reporter)
{
    std::size_t nbInfinite = 0;
    std::size_t nbNan = 0;
    for (Color& entry : entries) {
        bool isInfinite = false;
        bool isNan = false;
        for (auto const channel : channels) {
            float& value = entry.*channel;
            isInfinite = isInfinite || std::isinf(value);
            isNan = isNan || std::isnan(value);
            value = std::isnan(value) ? 0.0F : std::clamp(value, -greatest, greatest);
        }
        nbInfinite += isInfinite ? 1 : 0;
        nbNan += isNan ? 1 : 0;
    }
    auto const say = [&](std::size_t nbPlaces, std::string const& what) {
        if (nbPlaces > 0) {
            reporter.note("tables hold finite numbers only: " + what + " at " +
                          std::to_string(nbPlaces) + " of the " + std::to_string(entries.size()) +
                          " places");
        }
    };
    say(nbInfinite, "infinity is " + formatNumber(greatest));
    say(nbNan, "NaN is 0");
}

/// How a table that is spread over a domain differs from the tool.
class SpreadCheck {
public:
    SpreadCheck(LutEntries const& tableEntries, GeInterval<float> const& tableDomain)
        : entries(tableEntries), domain(tableDomain)
    {
    }

    /// What the tool makes of a finite value.
    void add(float value, Color const& result)
    {
        for (auto const channel : channels) {
            float const wanted = std::clamp(result.*channel, -greatest, greatest);
            if (value < domain.minimum) {
                isCutBelow = isCutBelow || wanted != entries.front().*channel;
            } else if (value > domain.maximum) {
                isCutAbove = isCutAbove || wanted != entries.back().*channel;
            } else {
                addError(value, double{wanted}, interpolate(value, channel));
            }
        }
    }

    void report(Reporter& reporter) const
    {
        std::string const low = formatNumber(domain.minimum);
        std::string const high = formatNumber(domain.maximum);
        if (isCutBelow || isCutAbove) {
            reporter.warn(
                "the table clamps: values " + (isCutBelow ? "below " + low : std::string()) +
                (isCutBelow && isCutAbove ? " and " : "") +
                (isCutAbove ? "above " + high : std::string()) +
                " get what the domain's ends get; widen --domain, or write a .clf, which has "
                "every half");
        }
        constexpr double noticeable = 0.001;
        if (worstShare > noticeable) {
            reporter.note("between its places the table is off by up to " +
                          formatShort(worstError) + ", at " + formatShort(worstValue) +
                          "; more places (--size) come closer, a .clf has every half");
        }
    }

private:
    /// As readers of the table do.
    double interpolate(float value, float Color::*channel) const
    {
        double const width = double{domain.maximum} - double{domain.minimum};
        double const place = (double{value} - double{domain.minimum}) / width *
                             static_cast<double>(entries.size() - 1);
        auto const before = std::min(static_cast<std::size_t>(place), entries.size() - 2);
        double const share = place - static_cast<double>(before);
        return double{entries[before].*channel} * (1.0 - share) +
               double{entries[before + 1].*channel} * share;
    }

    void addError(float value, double wanted, double got)
    {
        double const error = std::abs(got - wanted);
        double const share = error / std::max(1.0, std::abs(wanted));
        if (share > worstShare) {
            worstShare = share;
            worstError = error;
            worstValue = value;
        }
    }

    LutEntries const& entries;
    GeInterval<float> domain;
    bool isCutBelow = false;
    bool isCutAbove = false;
    double worstShare = 0.0; // of the result, or of 1 where that is less
    double worstError = 0.0;
    float worstValue = 0.0F;
};

void checkSpread(Chain const& chain, LutEntries const& entries, GeInterval<float> const& domain,
                 Reporter& reporter)
{
    SpreadCheck check(entries, domain);
    std::vector<float> halves = listHalves();
    std::erase_if(halves, [](float value) { return !std::isfinite(value); });
    LutEntries const results = chain.map(halves);
    for (std::size_t index = 0; index < halves.size(); ++index) {
        check.add(halves[index], results[index]);
    }
    check.report(reporter);
}

/// What no table holds.
void reportLosses(LutRequest const& request, Chain const& chain, Reporter& reporter)
{
    if (request.mask.file.has_value()) {
        reporter.warn("the mask " + nameInput(*request.mask.file) +
                      " is not in the table, which changes every pixel");
    }
    std::string const keyframed = findKeyframedValue(chain.node);
    if (!keyframed.empty()) {
        reporter.note("keyframes are not in the table: it holds " + quote(keyframed) +
                      " and all others as they are at time " + formatNumber(chain.time));
    }
    reporter.note("alpha is not in the table; the tool leaves it as it is");
}

std::vector<std::string> describeTable(Chain const& chain)
{
    std::string look;
    for (auto const& [name, value] : describeLook(chain.node)) {
        look += (look.empty() ? "" : "; ") + name + " " + value;
    }
    std::vector<std::string> remarks = {makePrintable(look)};
    if (!findKeyframedValue(chain.node).empty()) {
        remarks.push_back("at time " + formatNumber(chain.time));
    }
    return remarks;
}

bool writesHalves(HostNode const& node)
{
    auto const state = node.getValue(ToolKeys::outputDepth)->getState();
    return std::get<Animated<int>>(*state).getKeys().front().value == ToolKeys::depth16;
}

std::string makeText(LutRequest const& request, Chain const& chain, Reporter& reporter)
{
    std::vector<std::string> const remarks = describeTable(chain);
    if (request.format == LutFormat::Clf) {
        LutEntries entries = chain.map(listHalves());
        makeFinite(entries, reporter);
        return formatClf(entries, ToolKeys::tool, remarks, writesHalves(chain.node));
    }
    GeInterval<float> const domain = request.domain.value_or(GeInterval<float>{0.0F, 1.0F});
    LutEntries entries = chain.map(spreadPlaces(domain, request.size.value_or(defaultSize)));
    makeFinite(entries, reporter);
    checkSpread(chain, entries, domain, reporter);
    return request.format == LutFormat::Cube ? formatCube(entries, domain, ToolKeys::tool, remarks)
                                             : formatSpi1d(entries, domain);
}

} // namespace

void runLut(LutRequest const& request, Reporter& reporter)
{
    StopSignals const signals;
    RequestedSession const session(request.node);
    HostNode& node = session.getNode();
    Chain const chain{node, chooseTime(node, request.frame, {})};
    checkOutput(request.output, "table");
    reportLook(node, {chain.time}, reporter);
    reportLosses(request, chain, reporter);
    saveText(request.output, "table", makeText(request, chain, reporter));
    if (isStandardStream(request.output)) {
        sendStandardFile(EarlyEnd::IsEnough);
    }
}
