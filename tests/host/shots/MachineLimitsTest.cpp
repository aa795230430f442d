// What is granted, read from folders that look like the system's.

#include "shots/MachineLimits.h"

#include "support/TestFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace {

TEST(MachineLimitsTest, TheSmallestGrantOfAllCounts)
{
    constexpr std::size_t mebibyte = 1024 * 1024;
    struct Case {
        char const* name;
        std::vector<std::pair<char const*, char const*>> files;
        std::size_t mebibytes;
        std::vector<std::pair<char const*, char const*>> environment = {};
    };
    auto const cores = static_cast<std::size_t>(countUsableCores());
    char const* const machine = "MemTotal:  2048000 kB\nMemFree: 1 kB\n";
    Case const cases[] = {
        {"machine", {{"proc/meminfo", machine}}, 2000},
        {"no word of it", {{"sys/memory.max", "max\n"}, {"proc/meminfo", machine}}, 2000},
        {"unified group",
         {{"proc/meminfo", machine},
          {"proc/self/cgroup", "0::/jobs/job\n"},
          {"sys/jobs/job/memory.max", "1048576000"},
          {"sys/jobs/memory.max", "max"}},
         1000},
        {"group around it",
         {{"proc/meminfo", machine},
          {"proc/self/cgroup", "0::/jobs/job\n"},
          {"sys/jobs/memory.max", "524288000"}},
         500},
        {"older group",
         {{"proc/meminfo", machine},
          {"proc/self/cgroup", "12:cpu,cpuacct:/x\n5:memory:/job\n"},
          {"sys/memory/job/memory.limit_in_bytes", "314572800"},
          {"sys/memory/x/memory.limit_in_bytes", "1"}},
         300},
        {"scheduler's node", {{"proc/meminfo", machine}}, 700, {{"SLURM_MEM_PER_NODE", "700"}}},
        {"scheduler's cores",
         {{"proc/meminfo", machine}},
         100 * cores,
         {{"SLURM_MEM_PER_CPU", "100"}, {"SLURM_MEM_PER_NODE", "1900"}}},
        {"never less", {{"sys/memory.max", "4096"}}, 64},
    };
    for (auto const& [name, files, mebibytes, environment] : cases) {
        for (auto const& [variable, value] : environment) {
            ::setenv(variable, value, 1);
        }
        TestFolder const folder;
        for (auto const& [file, text] : files) {
            std::filesystem::create_directories((folder.path / file).parent_path());
            saveBytes(folder.path / file, text);
        }
        SystemFolders const system{folder.path / "proc", folder.path / "sys"};
        EXPECT_EQ(findUsableMemory(system), mebibytes * mebibyte) << name;
        for (auto const& [variable, value] : environment) {
            ::unsetenv(variable);
        }
    }
}

TEST(MachineLimitsTest, CoresAreNoMoreThanTheSchedulerAndTheGroupsSay)
{
    int const cores = countUsableCores();
    for (auto const& [own, around, expected] :
         {std::tuple("max 100000", "max 100000", cores),
          std::tuple("20000 100000", "max 100000", 1), std::tuple("max 100000", "100000 100000", 1),
          std::tuple("150000 100000", "max 100000", std::min(cores, 2)),
          std::tuple("900000000 100000", "max", cores)}) {
        TestFolder const folder;
        std::filesystem::create_directories(folder.path / "proc/self");
        std::filesystem::create_directories(folder.path / "sys/jobs/job");
        saveBytes(folder.path / "proc/self/cgroup", "0::/jobs/job\n");
        saveBytes(folder.path / "sys/jobs/job/cpu.max", own);
        saveBytes(folder.path / "sys/jobs/cpu.max", around);
        EXPECT_EQ(countUsableCores({folder.path / "proc", folder.path / "sys"}), expected) << own;
    }
    ::setenv("SLURM_CPUS_PER_TASK", "1", 1);
    EXPECT_EQ(countUsableCores(), 1);
    ::setenv("SLURM_CPUS_PER_TASK", "many", 1);
    EXPECT_GE(countUsableCores(), 1);
    ::unsetenv("SLURM_CPUS_PER_TASK");
}

} // namespace
