#pragma once

#include "support/MediaSupport.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// How a run of the built program ended.
struct ProgramResult {
    int status = 0;                  ///< as a shell shows it
    std::vector<std::string> errors; ///< lines on standard error
    std::string output;              ///< standard output
};

/// The built program, running in a folder. Standard input is empty.
class Program {
public:
    /// Starts it; standard output goes to the file `outputFile` instead if that is not empty.
    /// `prepare` runs in the new process before.
    Program(
        TestFolder const& folder, std::vector<std::string> const& arguments,
        std::filesystem::path const& outputFile = {}, std::function<void()> const& prepare = [] {})
        : output(outputFile.empty() ? streams.path / "output" : outputFile)
    {
        // Programs and tests are built into one folder.
        auto const program =
            std::filesystem::read_symlink("/proc/self/exe").replace_filename("remapcolor");
        std::vector<char const*> words = {program.c_str()};
        for (std::string const& argument : arguments) {
            words.push_back(argument.c_str());
        }
        words.push_back(nullptr);
        std::fflush(nullptr);
        process = ::fork();
        if (process == 0) {
            bool const isReady = std::freopen("/dev/null", "r", stdin) != nullptr &&
                                 std::freopen(output.c_str(), "w", stdout) != nullptr &&
                                 std::freopen(errors.c_str(), "w", stderr) != nullptr &&
                                 ::chdir(folder.path.c_str()) == 0;
            if (isReady) {
                prepare();
                ::execv(words[0], const_cast<char* const*>(words.data()));
            }
            ::_exit(127);
        }
    }
    void sendSignal(int signal) const { ::kill(process, signal); }

    /// To be called once.
    ProgramResult wait() const
    {
        constexpr int signalBase = 128;
        int ending = 0;
        ::waitpid(process, &ending, 0);
        ProgramResult result;
        result.status = WIFEXITED(ending) ? WEXITSTATUS(ending) : signalBase + WTERMSIG(ending);
        result.output = loadBytes(streams.path / "output");
        std::ifstream lines(errors);
        for (std::string line; std::getline(lines, line);) {
            result.errors.push_back(line);
        }
        return result;
    }

private:
    TestFolder streams;
    std::filesystem::path output;
    std::filesystem::path errors = streams.path / "errors";
    int process = 0;
};
