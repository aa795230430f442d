#pragma once

#include <array>
#include <atomic>
#include <csignal>

/// Writing to a closed pipe or beyond the largest allowed file becomes an error of that write
/// instead of the end of the process, which would leave temporary files behind.
void ignoreWriteSignals();

/// While it lives, SIGINT, SIGTERM, SIGHUP and SIGQUIT ask for an end instead of ending the
/// process; where they were ignored they stay so. The first two only raise the flag: some
/// supervisors signal the process and its group. The third ends the process at once, and so does
/// half a minute in which it could not end by itself: a file may be on a disk that does not answer.
/// One at a time; main thread.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(StopSignals const&) = delete;
    StopSignals& operator=(StopSignals const&) = delete;

    /// True from the first signal on. Any thread.
    static std::atomic<bool> const& getFlag();

    /// The signal that came last; 0 for none.
    static int getSignal();

    /// Throws Interrupted from the first signal on.
    static void throwIfAsked();

    /// Waits until `descriptor` can be read or written without waiting (`events` as poll takes
    /// them), or has failed. Throws Interrupted from the first signal on.
    static void waitFor(int descriptor, short events);

private:
    static constexpr std::array handled = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    std::array<struct sigaction, handled.size()> previous{};
};
