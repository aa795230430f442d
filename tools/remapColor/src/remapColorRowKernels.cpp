// The choice of the row kernels' instruction set.

#include "remapColorRowKernels.h"

#include <cstdlib>
#include <string_view>

namespace RemapColorRowKernels {

namespace Baseline {
extern KernelSet const kernels;
}
#ifdef REMAPCOLOR_HAS_X86_KERNELS
namespace Avx2 {
extern KernelSet const kernels;
}
namespace Avx512 {
extern KernelSet const kernels;
}
#endif

namespace {

KernelSets findAvailable()
{
    KernelSets available{{&Baseline::kernels}, 1};
#ifdef REMAPCOLOR_HAS_X86_KERNELS
    if (__builtin_cpu_supports("avx2")) {
        available.sets[available.count++] = &Avx2::kernels;
    }
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq")) {
        available.sets[available.count++] = &Avx512::kernels;
    }
#endif
    return available;
}

KernelSet const& choose()
{
    KernelSets const& available = availableKernels();
    char const* const wanted = std::getenv("REMAPCOLOR_INSTRUCTIONS");
    for (int set = 0; wanted != nullptr && set < available.count; ++set) {
        if (std::string_view(available.sets[set]->name) == wanted) {
            return *available.sets[set];
        }
    }
    return *available.sets[available.count - 1];
}

} // namespace

KernelSets const& availableKernels()
{
    static KernelSets const available = findAvailable();
    return available;
}

KernelSet const& chosenKernels()
{
    static KernelSet const& chosen = choose();
    return chosen;
}

} // namespace RemapColorRowKernels
