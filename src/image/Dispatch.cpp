#include "image/Kernels.h"

#include <atomic>

namespace zel
{

constinit const Kernels kPlainKernels = {
    FilterRow,       AddRows,     CubicPixels, PairRow,         AddPairRows, SixthsRow,
    BlendRowByAlpha, BlendRow,    KeyRow,      ShadeRow,        MultiplyRow, SetAlphaRow,
    FillAlphaRow,    KeyAlphaRow, MixRow,      ExpandTripleRow, GatherRow};

namespace
{

const Kernels& FastestKernels()
{
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2") ? kAvx2Kernels : kSse2Kernels;
#else
    return kPlainKernels;
#endif
}

// Null until the first call. Threads that ask at once find the same.
constinit std::atomic<const Kernels*> g_active = nullptr;

} // namespace

const Kernels& ActiveKernels()
{
    const Kernels* kernels = g_active.load(std::memory_order_relaxed);
    if (kernels == nullptr)
    {
        kernels = &FastestKernels();
        g_active.store(kernels, std::memory_order_relaxed);
    }
    return *kernels;
}

void ForceKernels(const Kernels* kernels)
{
    g_active.store(kernels, std::memory_order_relaxed);
}

} // namespace zel
