#include "files/RunningProgram.h"

#include <array>
#include <ctime>
#include <fstream>
#include <unistd.h>

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

std::string formatUniversalTime()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    std::array<char, sizeof("2030-01-31T23:59:59Z")> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&now, &parts));
    return text.data();
}
