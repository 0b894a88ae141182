#include "kernels/Kernels.h"

#include <atomic>

namespace zel
{

constinit const KernelTable kScalarKernels = {
    HorizontalRow,   VerticalRow, FixUpCubicPixels, HorizontalFixedRow, VerticalFixedRow, Filter141Row,
    BlendRowByAlpha, BlendRow,    KeyRow,           ShadeRow,           MultiplyRow,      SetAlphaRow,
    FillAlphaRow,    KeyAlphaRow, LerpToColorRow,   Bgr24ToBgra32Row,   ScaleColumnsRow};

namespace
{

const KernelTable& FastestKernels()
{
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2") ? kAvx2Kernels : kSse2Kernels;
#else
    return kScalarKernels;
#endif
}

// Null until the first call. Threads that ask at once find the same.
constinit std::atomic<const KernelTable*> g_active = nullptr;

} // namespace

const KernelTable& ActiveKernels()
{
    const KernelTable* kernels = g_active.load(std::memory_order_relaxed);
    if (kernels == nullptr)
    {
        kernels = &FastestKernels();
        g_active.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

void SetKernelsForTest(const KernelTable* kernels)
{
    g_active.store(kernels, std::memory_order_relaxed);
}

} // namespace zel
