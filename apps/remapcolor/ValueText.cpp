// Values as they are typed and shown.

#include "remapcolor/ValueText.h"

#include "remapcolor/CurveText.h"
#include "remapcolor/Failures.h"
#include "remapcolor/NearestNames.h"
#include "remapcolor/TextParts.h"
#include "runtime/values/NumberText.h"

#include <array>
#include <charconv>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace {

PiEnumPolicy const* getChoices(HostValue const& value)
{
    return dynamic_cast<PiEnumPolicy const*>(value.getPolicy().get());
}

template <typename T>
std::optional<T> parseOne(HostValue const& value, std::string_view text);

template <>
std::optional<double> parseOne(HostValue const&, std::string_view text)
{
    return parseNumber(text);
}

template <>
std::optional<bool> parseOne(HostValue const&, std::string_view text)
{
    static constexpr std::array<std::pair<std::string_view, bool>, 8> words = {{
        {"true", true},
        {"on", true},
        {"yes", true},
        {"1", true},
        {"false", false},
        {"off", false},
        {"no", false},
        {"0", false},
    }};
    std::string const lower = toLower(text);
    for (auto const& [word, state] : words) {
        if (word == lower) {
            return state;
        }
    }
    return std::nullopt;
}

template <>
std::optional<int> parseOne(HostValue const& value, std::string_view text)
{
    if (PiEnumPolicy const* const choices = getChoices(value)) {
        for (auto const& [number, label] : choices->getPairs()) {
            if (toLower(label) == toLower(text)) {
                return number;
            }
        }
    }
    int number = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// `0 "Linear", 1 "EXRDisplay"`
std::string listChoices(PiEnumPolicy const& choices)
{
    std::string list;
    for (PiEnumPolicy::Pair const& choice : choices.getPairs()) {
        list += (list.empty() ? "" : ", ") + formatChoice(choice);
    }
    return list;
}

/// What `value` takes and, where something is close, what was meant; for after `"NAME" takes `.
template <typename T>
std::string describeWrong(HostValue const& value, std::string_view text)
{
    std::string const given = ", not " + quote(std::string(text));
    if constexpr (std::is_same_v<T, bool>) {
        return "true or false (or on, off, yes, no, 1, 0)" + given;
    } else if constexpr (std::is_same_v<T, double>) {
        bool const hasComma = text.find(',') != std::string_view::npos;
        return "a number such as 1.5" + given +
               (hasComma ? "; decimals follow a full stop, keyframes are VALUE@TIME" : "");
    } else if (PiEnumPolicy const* const choices = getChoices(value)) {
        std::vector<std::string> labels;
        for (PiEnumPolicy::Pair const& choice : choices->getPairs()) {
            labels.push_back(choice.second);
        }
        std::string const meant = suggestNames(text, labels, "");
        return "one of " + listChoices(*choices) + given + (meant == "; " ? "" : meant);
    } else {
        return "a whole number" + given;
    }
}

template <typename T>
[[noreturn]] void throwWrong(HostValue const& value, std::string_view text)
{
    throw UsageError(quote(value.getName()) + " takes " + describeWrong<T>(value, text));
}

/// One of "VALUE@TIME,VALUE@TIME,...".
template <typename T>
Keyframe<T> parseKeyframe(HostValue const& value, std::string_view text)
{
    std::size_t const at = text.rfind('@');
    std::optional<double> const time =
        at == std::string_view::npos ? std::nullopt : parseNumber(trim(text.substr(at + 1)));
    if (!time.has_value()) {
        throw UsageError(quote(value.getName()) + ": " + quote(std::string(text)) +
                         " is no keyframe; write VALUE@TIME as in 0@1,2@24");
    }
    std::string_view const part = trim(text.substr(0, at));
    std::optional<T> const one = parseOne<T>(value, part);
    if (!one.has_value()) {
        throwWrong<T>(value, part);
    }
    return {*time, *one};
}

template <typename T>
Animated<T> parseKeyframes(HostValue const& value, std::string_view text)
{
    std::vector<Keyframe<T>> keys;
    for (std::string_view const part : split(text, ',')) {
        Keyframe<T> const key = parseKeyframe<T>(value, part);
        if (!keys.empty() && key.time <= keys.back().time) {
            throw UsageError(quote(value.getName()) + ": the keyframe at time " +
                             formatNumber(key.time) + " comes after the one at " +
                             formatNumber(keys.back().time) + "; give them in rising order");
        }
        keys.push_back(key);
    }
    return Animated<T>(std::move(keys));
}

template <typename T>
Animated<T> parseAnimated(HostValue const& value, std::string_view text)
{
    if (std::optional<T> const constant = parseOne<T>(value, text)) {
        return Animated<T>(*constant);
    }
    if (text.find('@') == std::string_view::npos) {
        throwWrong<T>(value, text);
    }
    return parseKeyframes<T>(value, text);
}

Vector<double> parseList(HostValue const& value, std::string_view text)
{
    Vector<double> numbers;
    for (std::string_view const part : split(text, ',')) {
        std::optional<double> const number = parseNumber(part);
        if (!number.has_value()) {
            throw UsageError(quote(value.getName()) + " takes numbers such as 0.2,0.4,0.6, not " +
                             quote(std::string(text)));
        }
        numbers.push_back(*number);
    }
    return numbers;
}

/// Reads what belongs to each kind of value.
struct Parser {
    HostValue const& value;
    std::string_view text;

    template <typename T>
    ValueState operator()(Animated<T> const&) const
    {
        return parseAnimated<T>(value, text);
    }
    ValueState operator()(Animated<CurvePoints> const&) const
    {
        return Animated<CurvePoints>(parseCurve(quote(value.getName()), text));
    }
    ValueState operator()(Vector<double> const&) const { return parseList(value, text); }
};

/// Shows each kind of value.
struct Formatter {
    HostValue const& value;

    std::string operator()(Animated<bool> const& state) const
    {
        return state.getKeys().front().value ? "true" : "false";
    }
    std::string operator()(Animated<int> const& state) const
    {
        int const number = state.getKeys().front().value;
        if (PiEnumPolicy const* const choices = getChoices(value)) {
            for (PiEnumPolicy::Pair const& choice : choices->getPairs()) {
                if (choice.first == number) {
                    return formatChoice(choice);
                }
            }
        }
        return std::to_string(number);
    }
    std::string operator()(Animated<double> const& state) const
    {
        return formatNumber(state.getKeys().front().value);
    }
    std::string operator()(Animated<CurvePoints> const& state) const
    {
        return formatCurveKeys(state.getKeys().front().value);
    }
    std::string operator()(Vector<double> const& numbers) const
    {
        std::string text;
        for (double const number : numbers) {
            text += (text.empty() ? "" : ",") + formatNumber(number);
        }
        return text;
    }
};

} // namespace

ValueState parseValue(HostValue const& value, std::string_view text)
{
    ValueState state = std::visit(Parser{value, trim(text)}, *value.getState());
    value.check(state);
    return state;
}

std::string formatValue(HostValue const& value)
{
    return std::visit(Formatter{value}, *value.getState());
}

std::string formatChoice(PiEnumPolicy::Pair const& choice)
{
    return std::to_string(choice.first) + " " + quote(choice.second);
}
