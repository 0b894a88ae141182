#pragma once

#include "kernels/Kernels.h"

namespace test
{

/// Calls `use` with the kernel tables that every processor can run, with one that shades even small pictures
/// by a table of results, and last with the library's own choice, the best table for this processor.
template <typename Use>
void ForEachTarget(const Use& use)
{
    zel::KernelTable tabulating = zel::kScalarKernels;
    tabulating.shadeTablePixels = 0;
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
