#pragma once

#include <array>
#include <cstdlib>
#include <string_view>

/// Instruction sets that row kernels are compiled for, the slowest first. Other processors than
/// x86-64 have the baseline alone. Header only, so that a plug-in needs nothing more of the host.
enum class InInstructionSet { Baseline, Avx2, Avx512 };

inline constexpr std::array<InInstructionSet, 3> inAllInstructionSets = {
    InInstructionSet::Baseline, InInstructionSet::Avx2, InInstructionSet::Avx512};
inline constexpr std::array<char const*, 3> inInstructionSetNames = {"Baseline", "Avx2", "Avx512"};

/// Whether this build has the set and this processor runs it.
inline bool isInstructionSetAvailable(InInstructionSet set)
{
#if defined(__x86_64__)
    switch (set) {
    case InInstructionSet::Baseline: return true;
    case InInstructionSet::Avx2:
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("f16c");
    case InInstructionSet::Avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
               __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq");
    }
#endif
    return set == InInstructionSet::Baseline;
}

/// Names one of the sets, or nothing.
inline constexpr char const* inInstructionSetVariable = "REMAPCOLOR_INSTRUCTIONS";

/// The fastest available one, or the one that the environment variable REMAPCOLOR_INSTRUCTIONS
/// names ("Baseline", "Avx2", "Avx512") if it is available. Ask once and keep the answer.
inline InInstructionSet chooseInstructionSet()
{
    char const* const wanted = std::getenv(inInstructionSetVariable);
    auto fastest = InInstructionSet::Baseline;
    for (InInstructionSet const set : inAllInstructionSets) {
        if (isInstructionSetAvailable(set)) {
            fastest = set;
            auto const index = static_cast<std::size_t>(set);
            if (wanted != nullptr && std::string_view(inInstructionSetNames[index]) == wanted) {
                return set;
            }
        }
    }
    return fastest;
}
