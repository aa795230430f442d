#include "support/ProgramRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>

namespace bench {

namespace {

double toSeconds(timeval const& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// A pipe for what a child prints, none of it inherited but as its standard output.
class PrintedText {
public:
    PrintedText()
    {
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            return;
        }
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        isOpen = true;
    }
    ~PrintedText()
    {
        if (isOpen) {
            ::posix_spawn_file_actions_destroy(&actions);
            ::close(ends[0]);
            closeWritingEnd();
        }
    }
    PrintedText(PrintedText const&) = delete;
    PrintedText& operator=(PrintedText const&) = delete;

    posix_spawn_file_actions_t* getActions() { return isOpen ? &actions : nullptr; }

    /// Once, after the child has begun; until it ends.
    std::string read()
    {
        std::string text;
        std::array<char, 256> bytes{};
        closeWritingEnd();
        for (ssize_t got = 0; (got = ::read(ends[0], bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(got));
        }
        return text;
    }

private:
    void closeWritingEnd()
    {
        if (ends[1] != -1) {
            ::close(ends[1]);
            ends[1] = -1;
        }
    }

    std::array<int, 2> ends{-1, -1};
    posix_spawn_file_actions_t actions{};
    bool isOpen = false;
};

} // namespace

// This process stays small: a child's peak starts with its parent's.
Run runProgram(Words const& command)
{
    std::vector<char*> arguments;
    for (std::string const& word : command) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    PrintedText printed;
    auto const start = std::chrono::steady_clock::now();
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], printed.getActions(), nullptr, arguments.data(),
                       environ) != 0) {
        return {};
    }
    std::string const text = printed.read();
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
    double aside = 0.0;
    double cpuAside = 0.0;
    if (std::sscanf(text.c_str(), "%lf %lf", &aside, &cpuAside) != 2) {
        aside = cpuAside = 0.0;
    }
    return {status == 0, time.count() - aside,
            toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime) - cpuAside,
            static_cast<double>(usage.ru_maxrss) / 1024.0};
}

std::string findProgram(char const* name)
{
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name).string();
}

Words makeRender(std::string const& input, std::string const& output, int threads)
{
    return {findProgram("remapcolor"),
            "render",
            input,
            "-o",
            output,
            "-q",
            "-j",
            std::to_string(threads),
            "--mode",
            "EXRDisplay",
            "--curve",
            "rgb=0,0 0.25,0.2 0.75,0.82 1,1"};
}

bool makePicture(std::filesystem::path const& file, int width, int height, char const* compression,
                 int tile)
{
    return runProgram({findProgram("exrFiles"), "make", file, std::to_string(width),
                       std::to_string(height), compression, std::to_string(tile)})
        .isGood;
}

} // namespace bench
