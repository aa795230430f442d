#include "remapcolor/reports/ProgressBar.h"

#include "remapcolor/reports/StandardStreams.h"
#include "shots/ShotPace.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::size_t barWidth = 30;
constexpr std::size_t usualColumns = 80;
constexpr std::chrono::milliseconds timeWithoutBar{300}; // one that only flashes up tells nothing
constexpr std::chrono::milliseconds timeBetween{100};

std::size_t countColumns()
{
    struct winsize size {};
    bool const isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    // The last column stays free: some terminals begin a new line after it.
    return (isKnown ? size.ws_col : usualColumns) - 1;
}

} // namespace

std::string formatBar(double done, std::size_t total, double seconds, std::size_t columns)
{
    double const share = total == 0 ? 1.0 : std::clamp(done / static_cast<double>(total), 0.0, 1.0);
    auto const filled = static_cast<std::size_t>(share * barWidth);
    std::string bar = "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] ";
    bar += formatPace(done, total, seconds);
    return bar.substr(0, columns);
}

bool ProgressBar::isPossible()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void ProgressBar::show(double done, std::size_t total)
{
    Clock::time_point const now = Clock::now();
    if (now - started < timeWithoutBar || now - lastDrawn < timeBetween) {
        return;
    }
    lastDrawn = now;
    double const seconds = std::chrono::duration<double>(now - started).count();
    std::string const bar = formatBar(done, total, seconds, countColumns());
    std::size_t const rest = drawnWidth > bar.size() ? drawnWidth - bar.size() : 0;
    writeStandardError("\r" + bar + std::string(rest, ' '));
    drawnWidth = bar.size();
}

void ProgressBar::clear()
{
    if (drawnWidth > 0) {
        writeStandardError("\r" + std::string(drawnWidth, ' ') + "\r");
        drawnWidth = 0;
    }
}
