#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A folder of its own for a test, removed with everything in it.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;

    std::filesystem::path const& getPath() const { return path; }

    /// Names of what is in it, sorted.
    std::vector<std::string> list() const;

private:
    std::filesystem::path path;
};

/// How a run of the built program ended.
struct ProgramResult {
    int status = 0;                  ///< as a shell shows it
    std::vector<std::string> errors; ///< lines on standard error
    std::string output;              ///< standard output
};

/// The built program, running in a folder. Standard input is empty.
class Program {
public:
    /// Starts it. Standard output goes to the file `outputFile` instead of into the result if that
    /// is not empty. Throws std::system_error.
    Program(std::filesystem::path const& folder, std::vector<std::string> const& arguments,
            std::filesystem::path const& outputFile = {});
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;

    void sendSignal(int signal) const;

    /// To be called once.
    ProgramResult wait();

private:
    TestFolder streams;
    int process = 0;
};

ProgramResult runProgram(std::filesystem::path const& folder,
                         std::vector<std::string> const& arguments);
