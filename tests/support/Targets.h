#pragma once

#include "kernels/Kernels.h"

namespace test
{

/// Calls `use` four times: scalar; scalar with shading always by table; SSE2; the best set of this processor.
/// Only x86 has the third.
template <typename Use>
void ForEachTarget(const Use& use)
{
    zel::KernelTable tabulating = zel::kScalarKernels;
    tabulating.shadeTablePixels = 0;
    struct Restore // also if `use` throws
    {
        ~Restore() { zel::SetKernelsForTest(nullptr); }
    } const restore;
    zel::SetKernelsForTest(&zel::kScalarKernels);
    use();
    zel::SetKernelsForTest(&tabulating);
    use();
#if defined(__x86_64__) || defined(__i386__)
    zel::SetKernelsForTest(&zel::kSse2Kernels);
    use();
#endif
    zel::SetKernelsForTest(nullptr);
    use();
}

} // namespace test
