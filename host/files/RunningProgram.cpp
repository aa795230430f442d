#include "files/RunningProgram.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <string_view>
#include <unistd.h>

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

std::string findHostName()
{
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "this machine";
}

std::vector<std::string> listOwnWords()
{
    std::vector<std::string> words;
    std::ifstream stream("/proc/self/cmdline", std::ios::binary);
    for (std::string word; std::getline(stream, word, '\0');) {
        words.push_back(word);
    }
    return words;
}

std::string formatShellLine(std::vector<std::string> const& words)
{
    std::string line;
    for (std::string const& word : words) {
        line += (line.empty() ? "" : " ") + quoteForShell(word);
    }
    return line;
}

std::string formatUniversalTime()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    std::array<char, sizeof("2030-01-31T23:59:59Z")> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&now, &parts));
    return text.data();
}
