#include "runtime/values/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

template <typename Number>
std::string formatShortest(Number value)
{
    std::array<char, 32> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

} // namespace

std::string formatNumber(double value)
{
    return formatShortest(value);
}

std::string formatNumber(float value)
{
    return formatShortest(value);
}

std::string formatShort(double value)
{
    constexpr int digits = 4;
    std::array<char, 32> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::general, digits)
                         .ptr;
    return {text.data(), end};
}

std::optional<double> parseNumber(std::string_view text)
{
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    double value = 0.0;
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isWhole = failure == std::errc() && end == text.data() + text.size();
    return isWhole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}
