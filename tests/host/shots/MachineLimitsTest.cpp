// What is granted, read from folders that look like the system's.

#include "shots/MachineLimits.h"

#include "support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(MachineLimitsTest, TheSmallestGrantOfAllCounts)
{
    constexpr std::size_t mebibyte = 1024 * 1024;
    struct Case {
        char const* name;
        std::vector<std::pair<char const*, char const*>> files;
        std::size_t mebibytes;
    };
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
    };
    for (auto const& [name, files, mebibytes] : cases) {
        TestFolder const folder;
        for (auto const& [file, text] : files) {
            std::filesystem::create_directories((folder.path / file).parent_path());
            saveBytes(folder.path / file, text);
        }
        SystemFolders const system{folder.path / "proc", folder.path / "sys"};
        EXPECT_EQ(findUsableMemory(system), mebibytes * mebibyte) << name;
    }
}

TEST(MachineLimitsTest, CoresAreNoMoreThanTheSchedulerSays)
{
    ::setenv("SLURM_CPUS_PER_TASK", "1", 1);
    EXPECT_EQ(countUsableCores(), 1);
    ::setenv("SLURM_CPUS_PER_TASK", "many", 1);
    EXPECT_GE(countUsableCores(), 1);
    ::unsetenv("SLURM_CPUS_PER_TASK");
}

} // namespace
