#pragma once

#include "kernels/Kernels.h"

#include <vector>

namespace test
{

/// The sets of row kernels that this processor can run.
inline std::vector<const zel::KernelTable*> Targets()
{
    std::vector<const zel::KernelTable*> sets = {&zel::kScalarKernels};
#if defined(__x86_64__) || defined(__i386__)
    sets.push_back(&zel::kSse2Kernels);
    if (__builtin_cpu_supports("avx2"))
        sets.push_back(&zel::kAvx2Kernels);
#endif
    return sets;
}

/// Runs `use` by each of them.
template <typename Use>
void ForEachTarget(const Use& use)
{
    for (const zel::KernelTable* const set : Targets())
    {
        zel::SetKernelsForTest(set);
        use();
    }
    zel::SetKernelsForTest(nullptr);
}

} // namespace test
