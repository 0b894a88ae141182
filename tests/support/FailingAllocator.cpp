#include "FailingAllocator.h"

#include <cstdlib>
#include <new>

namespace
{

long g_live = 0;
int g_countdown = -1;
bool g_failed = false;

void* Allocate(std::size_t bytes)
{
    if (g_countdown == 0)
    {
        g_countdown = -1;
        g_failed = true;
        throw std::bad_alloc();
    }
    if (g_countdown > 0)
        --g_countdown;
    void* block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr)
        throw std::bad_alloc();
    ++g_live;
    return block;
}

void Release(void* block)
{
    if (block != nullptr)
        --g_live;
    std::free(block);
}

} // namespace

namespace test
{

long LiveBlocks()
{
    return g_live;
}

void FailAllocation(int count)
{
    g_countdown = count;
    g_failed = false;
}

bool AllocationFailed()
{
    return g_failed;
}

} // namespace test

void* operator new(std::size_t bytes)
{
    return Allocate(bytes);
}

void* operator new[](std::size_t bytes)
{
    return Allocate(bytes);
}

void operator delete(void* block) noexcept
{
    Release(block);
}

void operator delete[](void* block) noexcept
{
    Release(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    Release(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    Release(block);
}
