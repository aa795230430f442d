#pragma once

#include "runtime/values/Animated.h"
#include "runtime/values/HostValue.h"
#include "runtime/values/NumberText.h"
#include "runtime/values/TextParts.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// How keyframes of one kind of value are typed: VALUE@TIME, several with a separator between them.
struct KeyframeForm {
    char separator;
    char const* example; ///< "VALUE@TIME as in 0@1,2@24"
};

/// Reads keyframes; `parsePart(text, time)` makes a value of the text before an @. Throws
/// ValueError, which starts with `where`, for a part without time and for times that do not rise;
/// and what parsePart throws.
template <typename T, typename ParsePart>
std::vector<Keyframe<T>> parseKeyframes(std::string const& where, std::string_view text,
                                        KeyframeForm const& form, ParsePart const& parsePart)
{
    std::vector<Keyframe<T>> keys;
    for (std::string_view const part : split(text, form.separator)) {
        std::size_t const at = part.rfind('@');
        std::optional<double> const time =
            at == std::string_view::npos ? std::nullopt : parseNumber(trim(part.substr(at + 1)));
        if (!time.has_value()) {
            throw ValueError(where + ": " + "\"" + std::string(part) + "\"" +
                             " is no keyframe; write " + form.example);
        }
        if (!keys.empty() && *time <= keys.back().time) {
            throw ValueError(where + ": the keyframe at time " + formatNumber(*time) +
                             " comes after the one at " + formatNumber(keys.back().time) +
                             "; give them in rising order");
        }
        keys.push_back({*time, parsePart(trim(part.substr(0, at)), *time)});
    }
    return keys;
}
