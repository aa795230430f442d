// Numbers as options take them.

#include "remapcolor/options/NumberOptions.h"

#include "runtime/values/NumberText.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"

#include <charconv>
#include <cmath>
#include <vector>

int parseWhole(std::string const& option, std::string const& text, int least, int most)
{
    int number = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stop != end || number < least || number > most) {
        throw UsageError(option + " takes a whole number from " + std::to_string(least) + " to " +
                         std::to_string(most) + ", not " + quote(text));
    }
    return number;
}

GeInterval<float> parseRange(std::string const& option, std::string const& text)
{
    std::vector<float> bounds;
    for (std::string_view const part : split(text, ',')) {
        bounds.push_back(static_cast<float>(parseNumber(trim(part)).value_or(NAN)));
    }
    bool const isRange = bounds.size() == 2 && std::isfinite(bounds[0]) &&
                         std::isfinite(bounds[1]) && bounds[0] < bounds[1];
    if (!isRange) {
        throw UsageError(option + " takes two numbers, the lower one first, as in 0,1, not " +
                         quote(text));
    }
    return {bounds[0], bounds[1]};
}
