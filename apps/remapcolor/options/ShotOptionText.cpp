#include "remapcolor/options/ShotOptionText.h"

#include "runtime/values/NearestNames.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"

#include <cmath>
#include <optional>
#include <string_view>

std::size_t parseMemory(std::string const& text)
{
    constexpr std::string_view units = "kmgt";
    constexpr double step = 1024.0;
    constexpr double most = 0x1p60;
    std::string number = toLower(text);
    for (std::string_view const ending : {"ib", "b"}) {
        if (number.ends_with(ending)) {
            number.resize(number.size() - ending.size());
            break;
        }
    }
    double factor = 1.0;
    std::size_t const unit = number.empty() ? units.npos : units.find(number.back());
    if (unit != units.npos) {
        factor = std::pow(step, static_cast<double>(unit + 1));
        number.pop_back();
    }
    std::optional<double> const value = parseNumber(number);
    if (!value.has_value() || !(*value * factor >= 1.0) || *value * factor > most) {
        throw UsageError("--memory takes a size such as 500M or 4G, not " + quote(text));
    }
    return static_cast<std::size_t>(*value * factor);
}
