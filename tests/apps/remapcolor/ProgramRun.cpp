#include "ProgramRun.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

std::string readFile(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Programs and tests are built into one folder.
std::filesystem::path findProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "remapcolor";
}

} // namespace

TestFolder::TestFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "remapcolor-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    path = name;
}

TestFolder::~TestFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::vector<std::string> TestFolder::list() const
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Program::Program(std::filesystem::path const& folder, std::vector<std::string> const& arguments,
                 std::filesystem::path const& outputFile)
{
    std::string const program = findProgram().string();
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    std::string const output =
        (outputFile.empty() ? streams.getPath() / "output" : outputFile).string();
    std::string const errors = (streams.getPath() / "errors").string();
    constexpr int writing = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), writing, 0600);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), writing, 0600);
    ::posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    int const failure =
        ::posix_spawn(&process, program.c_str(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::system_error(failure, std::generic_category(), program);
    }
}

void Program::sendSignal(int signal) const
{
    ::kill(process, signal);
}

ProgramResult Program::wait()
{
    constexpr int signalBase = 128;
    int ending = 0;
    ::waitpid(process, &ending, 0);
    ProgramResult result;
    result.status = WIFEXITED(ending) ? WEXITSTATUS(ending) : signalBase + WTERMSIG(ending);
    result.output = readFile(streams.getPath() / "output");
    std::ifstream errors(streams.getPath() / "errors");
    for (std::string line; std::getline(errors, line);) {
        result.errors.push_back(line);
    }
    return result;
}

ProgramResult runProgram(std::filesystem::path const& folder,
                         std::vector<std::string> const& arguments)
{
    return Program(folder, arguments).wait();
}
