#include "runtime/values/TextParts.h"

#include <cstddef>

namespace {

constexpr std::string_view whiteSpace = " \t\r\n";

} // namespace

std::string_view trim(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(whiteSpace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;) {
        std::size_t const end = text.find(separator);
        parts.push_back(trim(text.substr(0, end)));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::vector<std::string_view> splitWords(std::string_view text)
{
    std::vector<std::string_view> words;
    for (text = trim(text); !text.empty(); text = trim(text)) {
        std::string_view const word = text.substr(0, text.find_first_of(whiteSpace));
        words.push_back(word);
        text.remove_prefix(word.size());
    }
    return words;
}
