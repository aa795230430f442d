// Values as they are typed and shown.

#include "remapcolor/text/ValueText.h"

#include "runtime/curves/CurveText.h"
#include "runtime/values/KeyframeText.h"
#include "runtime/values/NearestNames.h"
#include "runtime/values/NumberText.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"

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

/// The choice whose label is `text`, or the only one whose label starts with the words of `text`:
/// "16" for "16 Bit (float)".
std::optional<int> findChoice(PiEnumPolicy const& choices, std::string const& text)
{
    std::optional<int> started;
    int nbStarted = 0;
    for (auto const& [number, label] : choices.getPairs()) {
        if (toLower(label) == text) {
            return number;
        }
        if (!text.empty() && toLower(label).starts_with(text + " ")) {
            started = number;
            ++nbStarted;
        }
    }
    return nbStarted == 1 ? started : std::nullopt;
}

template <>
std::optional<int> parseOne(HostValue const& value, std::string_view text)
{
    if (PiEnumPolicy const* const choices = getChoices(value)) {
        if (std::optional<int> const choice = findChoice(*choices, toLower(text))) {
            return choice;
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
[[noreturn]] T throwWrong(HostValue const& value, std::string_view text)
{
    throw UsageError(quote(value.getName()) + " takes " + describeWrong<T>(value, text));
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
    KeyframeForm const form{',', "VALUE@TIME as in 0@1,2@24"};
    return Animated<T>(parseKeyframes<T>(
        quote(value.getName()), text, form, [&value](std::string_view part, double /*time*/) {
            std::optional<T> const one = parseOne<T>(value, part);
            return one.has_value() ? *one : throwWrong<T>(value, part);
        }));
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
        return parseAnimatedCurve(quote(value.getName()), text);
    }
    ValueState operator()(Vector<double> const&) const { return parseList(value, text); }
};

/// Shows each kind of value, keyframes as they are typed.
struct Formatter {
    HostValue const& value;

    template <typename T>
    std::string operator()(Animated<T> const& state) const
    {
        if (!state.isAnimated()) {
            return formatOne(state.getKeys().front().value);
        }
        constexpr bool isCurve = std::is_same_v<T, CurvePoints>;
        std::string text;
        for (Keyframe<T> const& key : state.getKeys()) {
            text += (text.empty() ? ""
                     : isCurve    ? " | "
                                  : ",") +
                    formatOne(key.value) + (isCurve ? " @" : "@") + formatNumber(key.time);
        }
        return text;
    }
    std::string operator()(Vector<double> const& numbers) const
    {
        std::string text;
        for (double const number : numbers) {
            text += (text.empty() ? "" : ",") + formatNumber(number);
        }
        return text;
    }

private:
    static std::string formatOne(bool state) { return state ? "true" : "false"; }
    static std::string formatOne(double number) { return formatNumber(number); }
    static std::string formatOne(CurvePoints const& points) { return formatCurveKeys(points); }
    std::string formatOne(int number) const
    {
        if (PiEnumPolicy const* const choices = getChoices(value)) {
            for (PiEnumPolicy::Pair const& choice : choices->getPairs()) {
                if (choice.first == number) {
                    return formatChoice(choice);
                }
            }
        }
        return std::to_string(number);
    }
};

} // namespace

ValueState parseValue(HostValue const& value, std::string_view text)
{
    ValueState state = std::visit(Parser{value, trim(text)}, *value.getState());
    value.checkGiven(state);
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
