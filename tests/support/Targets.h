#pragma once

#include "image/Kernels.h"

#include <vector>

namespace test
{

/// The sets of row kernels that this processor can run.
inline std::vector<const zel::Kernels*> KernelSets()
{
    std::vector<const zel::Kernels*> sets = {&zel::kPlainKernels};
#if defined(__x86_64__) || defined(__i386__)
    sets.push_back(&zel::kSse2Kernels);
    if (__builtin_cpu_supports("avx2"))
        sets.push_back(&zel::kAvx2Kernels);
#endif
    return sets;
}

/// Runs `use` by each of them.
template <typename Use>
void ByEveryKernelSet(const Use& use)
{
    for (const zel::Kernels* const set : KernelSets())
    {
        zel::ForceKernels(set);
        use();
    }
    zel::ForceKernels(nullptr);
}

} // namespace test
