#pragma once

#include "kernels/Kernels.h"

namespace test
{

/// Calls `use` with every kernel table that this processor can run, then lets the library choose again, also
/// where `use` throws.
template <typename Use>
void ForEachTarget(const Use& use)
{
    const struct Restore
    {
        ~Restore() { zel::SetKernelsForTest(nullptr); }
    } restore;
    zel::SetKernelsForTest(&zel::kScalarKernels);
    use();
#if defined(__x86_64__) || defined(__i386__)
    zel::SetKernelsForTest(&zel::kSse2Kernels);
    use();
    if (!__builtin_cpu_supports("avx2"))
        return;
    zel::SetKernelsForTest(&zel::kAvx2Kernels);
    use();
#endif
}

} // namespace test
