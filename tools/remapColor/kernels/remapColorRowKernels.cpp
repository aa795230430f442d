// The choice of the row kernels' instruction set.

#include "remapColorRowKernels.h"

namespace RemapColorRowKernels {

namespace Baseline {
extern KernelSet const kernels;
}
#if defined(__x86_64__)
namespace Avx2 {
extern KernelSet const kernels;
}
namespace Avx512 {
extern KernelSet const kernels;
}
#endif

KernelSet const& kernelsOf([[maybe_unused]] InInstructionSet set)
{
#if defined(__x86_64__)
    switch (set) {
    case InInstructionSet::Baseline: return Baseline::kernels;
    case InInstructionSet::Avx2: return Avx2::kernels;
    case InInstructionSet::Avx512: return Avx512::kernels;
    }
#endif
    return Baseline::kernels;
}

KernelSet const& chosenKernels()
{
    static KernelSet const& kernels = kernelsOf(chooseInstructionSet());
    return kernels;
}

} // namespace RemapColorRowKernels
