// How many cores there are for us: farms and containers grant less than the machine has.

#include "remapcolor/UsableCores.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sched.h>
#include <string>
#include <thread>

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr char const* groupRoot = "/sys/fs/cgroup";

int countAffineCores()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (::sched_getaffinity(0, sizeof(cores), &cores) == 0) {
        return CPU_COUNT(&cores);
    }
    return static_cast<int>(std::thread::hardware_concurrency());
}

/// Cores' worth of time that `group` itself is granted: "QUOTA PERIOD", or "max PERIOD" for all.
double readQuota(std::filesystem::path const& group)
{
    std::ifstream file(group / "cpu.max");
    double quota = 0.0;
    double period = 0.0;
    return file >> quota >> period && period > 0.0 ? quota / period : unlimited;
}

/// The process's place in the unified hierarchy, such as "/user.slice"; empty where there is none.
std::string findGroup()
{
    std::ifstream file("/proc/self/cgroup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("0::/")) {
            return line.substr(3);
        }
    }
    return {};
}

/// A group gets no more than any of those around it.
double readSmallestQuota()
{
    double smallest = unlimited;
    std::filesystem::path const root = groupRoot;
    std::filesystem::path group = std::filesystem::path(findGroup()).relative_path();
    while (!group.empty()) {
        smallest = std::min(smallest, readQuota(root / group));
        group = group.parent_path();
    }
    return std::min(smallest, readQuota(root));
}

} // namespace

int countUsableCores()
{
    int const cores = std::max(countAffineCores(), 1);
    double const granted = std::max(std::ceil(readSmallestQuota()), 1.0);
    return granted < cores ? static_cast<int>(granted) : cores;
}
