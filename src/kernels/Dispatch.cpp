#include "kernels/Kernels.h"

#include <atomic>

namespace zel
{

constinit const KernelTable kScalarKernels = {.nearSpan = 0,
                                              .horizontalRow = HorizontalRow,
                                              .verticalRow = VerticalRow,
                                              .linearPixels = LinearPixels,
                                              .cubicPixels = CubicPixels,
                                              .horizontalFixedRow = HorizontalFixedRow,
                                              .verticalFixedRow = VerticalFixedRow,
                                              .scaleColumnsRow = ScaleColumnsRow,
                                              .blendRowByAlpha = BlendRowByAlpha,
                                              .blendRow = BlendRow,
                                              .keyRow = KeyRow,
                                              .shadeRow = ShadeRow,
                                              .multiplyRow = MultiplyRow,
                                              .setAlphaRow = SetAlphaRow,
                                              .fillAlphaRow = FillAlphaRow,
                                              .keyAlphaRow = KeyAlphaRow,
                                              .lerpToColorRow = LerpToColorRow,
                                              .bgr24ToBgra32Row = Bgr24ToBgra32Row,
                                              .shadeTablePixels = kShadeTablePixels};

namespace
{

const KernelTable& FastestKernels()
{
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? kAvx2Kernels : kSse2Kernels;
#else
    return kScalarKernels;
#endif
}

// Null until the first call. Threads that ask at the same time find the same table.
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
