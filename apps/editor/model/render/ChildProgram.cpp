#include "editor/model/render/ChildProgram.h"

#include "editor/model/document/UserThread.h"
#include "files/FileError.h"
#include "session/Failures.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int signalStatus = 128;
constexpr int startFailure = 127; // as shells have it
constexpr int niceness = 5;       // who is worked with goes first
constexpr int millisecondsBetweenLooks = 100;
constexpr std::chrono::milliseconds longestEnd{400};

[[noreturn]] void runProgram(char* const* words, int errorEnd)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    std::signal(SIGPIPE, SIG_IGN); // it cleans up when nobody listens any more
    int const nothing = ::open("/dev/null", O_RDWR);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(nothing, STDOUT_FILENO);
    ::dup2(errorEnd, STDERR_FILENO);
    ::setpriority(PRIO_PROCESS, 0, niceness);
    ::execv(words[0], words);
    ::_exit(startFailure);
}

} // namespace

/// What the thread that waits for the program and the others share.
struct ChildProgram::Process {
    std::vector<std::string> words;
    Listener listener; // user-interface thread
    int status = 0;    // written before the task ends

    std::mutex mutex;
    pid_t id = 0;           // locked by mutex; 0 while there is none
    bool isStopped = false; // locked by mutex

    void start(int errorEnd)
    {
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        std::lock_guard const lock(mutex);
        if (isStopped) {
            status = signalStatus + SIGTERM;
            return;
        }
        id = ::fork();
        if (id == 0) {
            runProgram(pointers.data(), errorEnd);
        }
        if (id < 0) {
            id = 0;
            throw SurroundingsError(quote(words[0]) +
                                    " cannot be started: " + describeSystemError(errno));
        }
    }

    void stop()
    {
        std::lock_guard const lock(mutex);
        isStopped = true;
        if (id != 0) {
            ::kill(id, SIGTERM);
        }
    }

    /// Until there is nothing more to be read, or nobody wants to know.
    void read(int end, std::shared_ptr<Process> const& self, std::atomic<bool> const& cancelled)
    {
        std::string text;
        std::optional<std::chrono::steady_clock::time_point> until;
        for (;;) {
            pollfd wanted{end, POLLIN, 0};
            bool const isReady = ::poll(&wanted, 1, millisecondsBetweenLooks) > 0;
            auto const now = std::chrono::steady_clock::now();
            if (cancelled) {
                until = until.value_or(now + longestEnd);
                if (now > *until) {
                    return;
                }
            }
            char buffer[4096];
            ssize_t const size = isReady ? ::read(end, buffer, sizeof(buffer)) : -1;
            if (size == 0) {
                return;
            }
            if (size > 0) {
                text.append(buffer, static_cast<std::size_t>(size));
                tellLines(text, self);
            }
        }
    }

    static void tellLines(std::string& text, std::shared_ptr<Process> const& self)
    {
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            callOnUserThread(self, [&process = *self, line = text.substr(begin, end - begin)] {
                process.listener.line(line);
            });
        }
        text.erase(0, begin);
    }

    /// A program that has not ended is left to itself.
    void finish(std::atomic<bool> const& cancelled)
    {
        pid_t const waited = id; // only this thread changes it
        if (waited == 0) {
            return;
        }
        siginfo_t ended{};
        while (::waitid(P_PID, static_cast<id_t>(waited), &ended,
                        WEXITED | WNOWAIT | (cancelled ? WNOHANG : 0)) != 0 &&
               errno == EINTR) {
        }
        std::lock_guard const lock(mutex);
        id = 0;
        int result = 0;
        ::waitpid(waited, &result, WNOHANG);
        status = WIFSIGNALED(result) ? signalStatus + WTERMSIG(result) : WEXITSTATUS(result);
    }
};

ChildProgram::ChildProgram(std::vector<std::string> const& words, Listener listener)
    : process(std::make_shared<Process>())
{
    if (::access(words.at(0).c_str(), X_OK) != 0) {
        throw SurroundingsError(quote(words.at(0)) +
                                " cannot be started: " + describeSystemError(errno));
    }
    process->words = words;
    process->listener = std::move(listener);
    task = std::make_unique<AsideTask>(
        [shared = process](std::atomic<bool> const& cancelled) {
            int ends[2];
            if (::pipe2(ends, O_CLOEXEC) != 0) {
                throw SurroundingsError(std::string("no pipe: ") + describeSystemError(errno));
            }
            try {
                shared->start(ends[1]);
            } catch (...) {
                ::close(ends[0]);
                ::close(ends[1]);
                throw;
            }
            ::close(ends[1]);
            shared->read(ends[0], shared, cancelled);
            ::close(ends[0]);
            shared->finish(cancelled);
        },
        [this](std::exception_ptr const& failure) {
            auto const ended = process->listener.ended;
            ended(failure ? startFailure : process->status);
        });
}

ChildProgram::~ChildProgram()
{
    stop();
}

void ChildProgram::stop()
{
    process->stop();
}
