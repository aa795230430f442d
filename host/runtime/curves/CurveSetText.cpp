// Several curves as text.

#include "runtime/curves/CurveSetText.h"

#include "runtime/curves/CurveText.h"
#include "runtime/values/HostValue.h"
#include "runtime/values/NearestNames.h"
#include "runtime/values/TextParts.h"

#include <algorithm>
#include <vector>

namespace {

constexpr char const* allChannels = "rgb";

std::vector<std::string> findChannels(std::string const& where, std::string_view names,
                                      std::vector<std::string> const& channels)
{
    if (names.empty() || toLower(names) == allChannels) {
        return channels;
    }
    std::vector<std::string> found;
    for (std::string_view const name : split(names, ',')) {
        auto const channel =
            std::find_if(channels.begin(), channels.end(), [&](std::string const& candidate) {
                return toLower(candidate) == toLower(name);
            });
        if (channel == channels.end()) {
            throw ValueError(where + ": there is no channel \"" + std::string(name) +
                             "\"; write red, green, blue or rgb");
        }
        found.push_back(*channel);
    }
    return found;
}

void parseLine(std::string const& where, std::string_view line,
               std::vector<std::string> const& channels, CurveSet& found)
{
    std::size_t const equals = line.find('=');
    bool const isNamed = equals != std::string_view::npos;
    std::string_view const names = isNamed ? trim(line.substr(0, equals)) : std::string_view();
    std::string_view keys = isNamed ? trim(line.substr(equals + 1)) : line;
    if (keys.size() > 1 && keys.front() == '"' && keys.back() == '"') {
        keys = keys.substr(1, keys.size() - 2);
    }
    Animated<CurvePoints> const curve = parseAnimatedCurve(where, keys);
    for (std::string const& name : findChannels(where, names, channels)) {
        found.insert_or_assign(name, curve);
    }
}

} // namespace

CurveSet parseCurveSet(std::string_view text, std::vector<std::string> const& channels)
{
    CurveSet curves;
    std::size_t number = 0;
    for (std::string_view const line : split(text, '\n')) {
        ++number;
        if (!line.empty()) {
            parseLine("line " + std::to_string(number), line, channels, curves);
        }
    }
    return curves;
}

std::string formatCurveSet(CurveSet const& curves, std::vector<std::string> const& channels)
{
    std::string text;
    for (std::string const& channel : channels) {
        auto const found = curves.find(channel);
        if (found != curves.end()) {
            text += toLower(channel) + "=" + formatAnimatedCurve(found->second) + "\n";
        }
    }
    return text;
}
