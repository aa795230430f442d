// Signals that ask the program to stop.

#include "remapcolor/session/StopSignals.h"

#include "session/Failures.h"

#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int signalsThatWait = 2;
constexpr unsigned secondsToEnd = 30;
constexpr int millisecondsBetweenLooks = 50;

// The only state of the whole process: a signal handler sees nothing else.
std::atomic<bool> wasAskedToStop = false;
std::atomic<int> lastSignal = 0;
std::atomic<int> nbSignals = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may use them");

[[noreturn]] void endAtOnce(int signal)
{
    ::_exit(static_cast<int>(ExitStatus::SignalReceived) + signal);
}

extern "C" void giveUp(int)
{
    endAtOnce(lastSignal);
}

extern "C" void askToStop(int signal)
{
    lastSignal = signal;
    wasAskedToStop = true;
    if (++nbSignals > signalsThatWait) {
        endAtOnce(signal);
    }
    std::signal(SIGALRM, giveUp);
    ::alarm(secondsToEnd);
}

} // namespace

void ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

StopSignals::StopSignals()
{
    wasAskedToStop = false;
    lastSignal = 0;
    nbSignals = 0;
    struct sigaction action {};
    action.sa_handler = askToStop;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t entry = 0; entry < handled.size(); ++entry) {
        ::sigaction(handled[entry], nullptr, &previous[entry]);
        if (previous[entry].sa_handler != SIG_IGN) {
            ::sigaction(handled[entry], &action, nullptr);
        }
    }
}

StopSignals::~StopSignals()
{
    ::alarm(0);
    for (std::size_t entry = 0; entry < handled.size(); ++entry) {
        ::sigaction(handled[entry], &previous[entry], nullptr);
    }
}

std::atomic<bool> const& StopSignals::getFlag()
{
    return wasAskedToStop;
}

int StopSignals::getSignal()
{
    return lastSignal;
}

void StopSignals::throwIfAsked()
{
    if (wasAskedToStop) {
        throw Interrupted{lastSignal};
    }
}

void StopSignals::waitFor(int descriptor, short events)
{
    pollfd wanted{descriptor, events, 0};
    int nbReady = 0;
    while (nbReady == 0 || (nbReady < 0 && errno == EINTR)) {
        throwIfAsked();
        // Another thread may be the one that gets the signal.
        nbReady = ::poll(&wanted, 1, millisecondsBetweenLooks);
    }
}
