#include "FailingAllocator.h"

#include <atomic>
#include <cstddef>
#include <new>

extern "C"
{
    void* __real_malloc(std::size_t bytes);
    void* __real_calloc(std::size_t count, std::size_t bytes);
    void __real_free(void* block);
}

namespace
{

std::atomic<long> g_live = 0; // threads that a test started release too
int g_countdown = -1;
bool g_failed = false;

bool Refused()
{
    if (g_countdown < 0)
        return false;
    g_failed = g_countdown == 0;
    --g_countdown;
    return g_failed;
}

void* Counted(void* block)
{
    g_live += block != nullptr;
    return block;
}

void* Allocate(std::size_t bytes)
{
    void* block = Refused() ? nullptr : Counted(__real_malloc(bytes == 0 ? 1 : bytes));
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void Release(void* block)
{
    g_live -= block != nullptr;
    __real_free(block);
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

extern "C"
{
    void* __wrap_malloc(std::size_t bytes)
    {
        return Refused() ? nullptr : Counted(__real_malloc(bytes));
    }

    void* __wrap_calloc(std::size_t count, std::size_t bytes)
    {
        return Refused() ? nullptr : Counted(__real_calloc(count, bytes));
    }

    void __wrap_free(void* block)
    {
        Release(block);
    }
}

void* operator new(std::size_t bytes)
{
    return Allocate(bytes);
}

void* operator new[](std::size_t bytes)
{
    return Allocate(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return Refused() ? nullptr : Counted(__real_malloc(bytes == 0 ? 1 : bytes));
}

void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept
{
    return operator new(bytes, tag);
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
