// Lets every call of the system that the program makes fail once, and looks at what is left: one
// line and the right status or success, the folder as it was or complete.
//
//   faults [--sample N] [SCENARIO [KIND]]     at most N calls of a kind, spread over all of them

#include "support/TestFolder.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char const* kinds[] = {"memory", "open",  "read",   "write",
                                 "sync",   "close", "rename", "thread"};
constexpr int surroundingsFailed = 3;
constexpr int pictureFailed = 1;
constexpr int neverEnded = -1;

/// What the program is asked for, in a folder with the pictures in.exr and in.png.
struct Scenario {
    std::string name;
    std::vector<std::string> arguments;
    std::string output; ///< the file that it makes; empty for none
};

std::vector<Scenario> makeScenarios()
{
    std::vector<Scenario> scenarios;
    for (std::string const kind : {"exr", "png"}) {
        for (std::string const threads : {"1", "2"}) {
            scenarios.push_back({kind + threads,
                                 {"render", "in." + kind, "-q", "-j", threads, "-o", "out." + kind},
                                 "out." + kind});
        }
    }
    scenarios.push_back(
        {"project", {"project", "--mode", "EXRDisplay", "-o", "out.json"}, "out.json"});
    scenarios.push_back({"describe", {"describe"}, ""});
    return scenarios;
}

/// One call that is to fail.
struct Fault {
    std::string kind;
    long call = 0; ///< 0 for none
};

struct Outcome {
    int status = 0;
    bool fired = false;
    std::string errors;
    std::map<std::string, std::string> files;
};

class Bench {
public:
    explicit Bench(Scenario const& wanted) : scenario(wanted)
    {
        saveBytes(folder.path / "in.exr", loadBytes(SMALL_PICTURE));
        run({}, {"render", "in.exr", "-q", "--depth", "16", "-o", "in.png"});
        before = listFiles();
        Outcome const plain = run({}, scenario.arguments);
        isReady = plain.status == 0;
        after = plain.files;
    }

    /// How often the program makes such a call.
    long count(std::string const& kind)
    {
        restore();
        run({kind, 0}, scenario.arguments);
        return std::atol(loadBytes(marks.path / "count").c_str());
    }

    /// Whether the call came; `problem` says what was wrong then.
    bool tryFault(Fault const& fault, std::string& problem)
    {
        restore();
        // Something of that name may be there already.
        bool const isThere = fault.call % 2 == 0 && !scenario.output.empty();
        if (isThere) {
            saveBytes(folder.path / scenario.output, "what was there");
        }
        Outcome const outcome = run(fault, scenario.arguments);
        problem = judge(outcome, fault, isThere);
        if (!problem.empty()) {
            problem +=
                " (status " + std::to_string(outcome.status) + ", \"" + outcome.errors + "\")";
        }
        return outcome.fired;
    }

    bool isReady = false;

private:
    std::string judge(Outcome const& outcome, Fault const& fault, bool isThere) const
    {
        if (outcome.status == neverEnded) {
            return "it does not end";
        }
        auto old = before;
        if (isThere) {
            old[scenario.output] = "what was there";
        }
        if (outcome.status == 0) {
            return outcome.files == after ? "" : "success, and not the right files";
        }
        bool const mayBeDamaged = fault.kind == "read";
        if (outcome.status != surroundingsFailed &&
            !(mayBeDamaged && outcome.status == pictureFailed)) {
            return "the wrong status";
        }
        auto const nbLines = std::count(outcome.errors.begin(), outcome.errors.end(), '\n');
        if (nbLines != 1 || outcome.errors.find("internal fault") != std::string::npos) {
            return "not one clear line";
        }
        return outcome.files == old || outcome.files == after ? "" : "the folder was changed";
    }

    Outcome run(Fault const& fault, std::vector<std::string> const& arguments)
    {
        fs::path const mark = marks.path / "mark";
        fs::remove(mark);
        std::fflush(stdout); // or the child has it too
        pid_t const process = ::fork();
        if (process == 0) {
            execute(fault, arguments, mark);
        }
        Outcome outcome;
        outcome.status = waitFor(process);
        outcome.fired = fs::exists(mark);
        outcome.errors = loadBytes(marks.path / "errors");
        outcome.files = listFiles();
        return outcome;
    }

    [[noreturn]] void execute(Fault const& fault, std::vector<std::string> const& arguments,
                              fs::path const& mark) const
    {
        if (!fault.kind.empty()) {
            ::setenv("FAULT_KIND", fault.kind.c_str(), 1);
            ::setenv("FAULT_CALL", std::to_string(fault.call).c_str(), 1);
            ::setenv("FAULT_MARK", mark.c_str(), 1);
            ::setenv("FAULT_COUNT", (marks.path / "count").c_str(), 1);
            ::setenv("LD_PRELOAD", FAULT_LIBRARY, 1);
        }
        auto const program = fs::read_symlink("/proc/self/exe").replace_filename("remapcolor");
        std::vector<char const*> words = {program.c_str()};
        for (std::string const& argument : arguments) {
            words.push_back(argument.c_str());
        }
        words.push_back(nullptr);
        bool const isSet = ::chdir(folder.path.c_str()) == 0 &&
                           std::freopen("/dev/null", "r", stdin) != nullptr &&
                           std::freopen("/dev/null", "w", stdout) != nullptr &&
                           std::freopen((marks.path / "errors").c_str(), "w", stderr) != nullptr;
        if (isSet) {
            ::execv(words[0], const_cast<char* const*>(words.data()));
        }
        ::_exit(127);
    }

    /// As a shell shows it.
    static int waitFor(pid_t process)
    {
        constexpr auto longest = std::chrono::seconds(60);
        auto const end = std::chrono::steady_clock::now() + longest;
        int ending = 0;
        while (::waitpid(process, &ending, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > end) {
                ::kill(process, SIGKILL);
                ::waitpid(process, &ending, 0);
                return neverEnded;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        constexpr int signalBase = 128;
        return WIFEXITED(ending) ? WEXITSTATUS(ending) : signalBase + WTERMSIG(ending);
    }

    /// Name and content of everything, hidden files too.
    std::map<std::string, std::string> listFiles() const
    {
        std::map<std::string, std::string> files;
        for (std::string const& name : folder.list()) {
            files[name] = loadBytes(folder.path / name);
        }
        return files;
    }

    void restore() const
    {
        for (std::string const& name : folder.list()) {
            if (!before.contains(name)) {
                fs::remove_all(folder.path / name);
            }
        }
    }

    Scenario scenario;
    TestFolder folder;
    TestFolder marks;
    std::map<std::string, std::string> before;
    std::map<std::string, std::string> after;
};

/// Returns the number of faults that ended badly.
int tryKind(Bench& bench, std::string const& name, std::string const& kind, long sample)
{
    long const total = bench.count(kind);
    long const step = sample == 0 ? 1 : total / sample + 1;
    int nbTried = 0;
    int nbBad = 0;
    std::string problem;
    for (long call = 1; bench.tryFault({kind, call}, problem); call += step) {
        ++nbTried;
        if (!problem.empty()) {
            ++nbBad;
            std::printf("%s %s %ld: %s\n", name.c_str(), kind.c_str(), call, problem.c_str());
        }
    }
    std::printf("%-10s %-8s %5d of %5ld calls, %d bad\n", name.c_str(), kind.c_str(), nbTried,
                total, nbBad);
    std::fflush(stdout);
    return nbBad;
}

} // namespace

int main(int nbArguments, char** arguments)
{
    std::vector<std::string> words(arguments + 1, arguments + nbArguments);
    long sample = 0;
    if (words.size() >= 2 && words[0] == "--sample") {
        sample = std::atol(words[1].c_str());
        words.erase(words.begin(), words.begin() + 2);
    }
    int nbBad = 0;
    for (Scenario const& scenario : makeScenarios()) {
        // A library's start is in both: a sample does with the one that has more to lose.
        bool const isLeftOut =
            words.empty() ? sample > 0 && scenario.name == "png1" : words[0] != scenario.name;
        if (isLeftOut) {
            continue;
        }
        Bench bench(scenario);
        if (!bench.isReady) {
            std::printf("%s fails without a fault\n", scenario.name.c_str());
            return 1;
        }
        for (std::string const kind : kinds) {
            if (words.size() < 2 || words[1] == kind) {
                nbBad += tryKind(bench, scenario.name, kind, sample);
            }
        }
    }
    return nbBad == 0 ? 0 : 1;
}
