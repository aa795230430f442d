#pragma once

#include <cstddef>
#include <filesystem>

// What the machine, the container or the scheduler grants this process. Any thread.

/// Where the system tells about itself; another place for tests.
struct SystemFolders {
    std::filesystem::path processes = "/proc";
    std::filesystem::path groups = "/sys/fs/cgroup";
};

/// Processor cores that this process may use, at least 1: those of its affinity mask, and no more
/// than the processor time that its control group is granted or than SLURM_CPUS_PER_TASK says.
int countUsableCores(SystemFolders const& folders = {});

/// Bytes of memory that this process may use: the machine's, and no more than its control groups
/// (of either version) and those around them are granted, than its limit of address space, or than
/// SLURM_MEM_PER_NODE or SLURM_MEM_PER_CPU says.
std::size_t findUsableMemory(SystemFolders const& folders = {});
