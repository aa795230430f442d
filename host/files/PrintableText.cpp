#include "files/PrintableText.h"

#include <algorithm>
#include <string_view>

namespace {

bool isPlain(char character)
{
    bool const isLetter =
        (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
    bool const isDigit = character >= '0' && character <= '9';
    return isLetter || isDigit ||
           std::string_view("_-+=:,./@%").find(character) != std::string::npos;
}

std::string quoteForShell(std::string const& word)
{
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) {
        return word;
    }
    std::string quoted = "'";
    for (char const character : word) {
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted + "'";
}

} // namespace

std::string makePrintable(std::string text)
{
    constexpr unsigned char deleteCharacter = 127;
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char character) { return character < ' ' || character == deleteCharacter; },
        '?');
    return text;
}

std::string quoteFile(std::filesystem::path const& file)
{
    return "\"" + makePrintable(file.string()) + "\"";
}

std::string formatShellLine(std::vector<std::string> const& words)
{
    std::string line;
    for (std::string const& word : words) {
        line += (line.empty() ? "" : " ") + quoteForShell(word);
    }
    return line;
}
