#include "files/PrintableText.h"

#include <algorithm>

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
