// How much there is for us: farms and containers grant less than the machine has.

#include "shots/MachineLimits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <optional>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <thread>

namespace {

using Path = std::filesystem::path;

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double bytesOfMebibyte = 1024.0 * 1024.0;
constexpr double bytesOfKibibyte = 1024.0;

int countAffineCores()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (::sched_getaffinity(0, sizeof(cores), &cores) == 0) {
        return CPU_COUNT(&cores);
    }
    return static_cast<int>(std::thread::hardware_concurrency());
}

/// A number above 0 that a scheduler left in the environment.
double readEnvironment(char const* name)
{
    char const* const text = std::getenv(name);
    if (text == nullptr) {
        return unlimited;
    }
    double number = 0.0;
    std::string_view const whole = text;
    auto const [stop, failure] = std::from_chars(whole.data(), whole.data() + whole.size(), number);
    bool const isNumber = failure == std::errc() && stop == whole.data() + whole.size();
    return isNumber && number > 0.0 ? number : unlimited;
}

/// Cores' worth of time that `group` itself is granted: "QUOTA PERIOD", or "max PERIOD" for all.
double readQuota(Path const& group)
{
    std::ifstream file(group / "cpu.max");
    double quota = 0.0;
    double period = 0.0;
    return file >> quota >> period && period > 0.0 ? quota / period : unlimited;
}

/// The one number in a file; "max" and missing files say that there is no limit.
double readLimit(Path const& file)
{
    std::ifstream stream(file);
    double limit = 0.0;
    return stream >> limit && limit > 0.0 ? limit : unlimited;
}

/// The process's place in a hierarchy, such as "/user.slice"; empty where there is none. The
/// unified hierarchy has no controller's name.
std::string findGroup(SystemFolders const& folders, std::string_view controller)
{
    std::ifstream file(folders.processes / "self/cgroup");
    for (std::string line; std::getline(file, line);) {
        std::size_t const first = line.find(':');
        std::size_t const second = line.find(':', first + 1);
        if (second == std::string::npos) {
            continue;
        }
        std::string const names = "," + line.substr(first + 1, second - first - 1) + ",";
        if (names == "," + std::string(controller) + "," ||
            (!controller.empty() &&
             names.find("," + std::string(controller) + ",") != names.npos)) {
            return line.substr(second + 1);
        }
    }
    return {};
}

/// A group gets no more than any of those around it.
double findSmallest(Path const& root, std::string const& name,
                    std::function<double(Path const&)> const& read)
{
    double smallest = read(root);
    for (Path group = Path(name).relative_path(); !group.empty(); group = group.parent_path()) {
        smallest = std::min(smallest, read(root / group));
    }
    return smallest;
}

double readMachineMemory(SystemFolders const& folders)
{
    std::ifstream file(folders.processes / "meminfo");
    std::string name;
    double kibibytes = 0.0;
    return file >> name >> kibibytes && name == "MemTotal:" ? kibibytes * bytesOfKibibyte
                                                            : unlimited;
}

double readAddressSpace()
{
    struct rlimit limit {};
    bool const isLimited = ::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    return isLimited ? static_cast<double>(limit.rlim_cur) : unlimited;
}

} // namespace

int countUsableCores(SystemFolders const& folders)
{
    double const quota = findSmallest(folders.groups, findGroup(folders, ""), readQuota);
    double const granted = std::min(std::ceil(quota), readEnvironment("SLURM_CPUS_PER_TASK"));
    int const cores = std::max(countAffineCores(), 1);
    return granted < cores ? std::max(static_cast<int>(granted), 1) : cores;
}

std::size_t findUsableMemory(SystemFolders const& folders)
{
    constexpr double smallestClaim = 64.0 * bytesOfMebibyte;
    double const unified =
        findSmallest(folders.groups, findGroup(folders, ""),
                     [](Path const& group) { return readLimit(group / "memory.max"); });
    double const older =
        findSmallest(folders.groups / "memory", findGroup(folders, "memory"),
                     [](Path const& group) { return readLimit(group / "memory.limit_in_bytes"); });
    double const perCore =
        readEnvironment("SLURM_MEM_PER_CPU") * static_cast<double>(countUsableCores(folders));
    double const scheduled =
        bytesOfMebibyte * std::min(readEnvironment("SLURM_MEM_PER_NODE"), perCore);
    double const granted = std::min(
        {readMachineMemory(folders), unified, older, scheduled, readAddressSpace(), 0x1p62});
    return static_cast<std::size_t>(std::max(granted, smallestClaim));
}
