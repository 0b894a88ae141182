#include "Failing.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <unistd.h>

using test::Fault;
using test::g_plan;

static bool IsHit(bool isAllocation)
{
    if (g_plan.callsBefore < 0 || isAllocation != (g_plan.fault <= Fault::AllAllocations))
        return false;
    const bool isHit = g_plan.callsBefore == 0;
    g_plan.hasHappened |= isHit;
    g_plan.callsBefore -= !isHit || g_plan.fault != Fault::AllAllocations;
    return isHit;
}

extern "C"
{
    void* __real_malloc(std::size_t bytes);
    void __real_free(void* block);
    std::size_t __real_fread(void* to, std::size_t size, std::size_t count, std::FILE* file);

    void* __wrap_malloc(std::size_t bytes)
    {
        void* const block = IsHit(true) ? nullptr : __real_malloc(std::max<std::size_t>(bytes, 1));
        if (block == nullptr)
            return nullptr;
        ++test::g_liveBlocks;
        return std::memset(block, 0xA5, std::min<std::size_t>(bytes, 65536));
    }

    void __wrap_free(void* block)
    {
        test::g_liveBlocks -= block != nullptr;
        __real_free(block);
    }

    std::size_t __wrap_fread(void* to, std::size_t size, std::size_t count, std::FILE* file)
    {
        const bool isHit = IsHit(false);
        if (isHit && g_plan.fault == Fault::Cut)
            std::filesystem::resize_file(g_plan.path, 100);
        if (!isHit || g_plan.fault == Fault::Cut)
            return __real_fread(to, size, count, file);

        // The system refuses to read from a descriptor that is open for writing alone.
        const int descriptor = fileno(file), saved = dup(descriptor), broken = open(g_plan.path, O_WRONLY);
        dup2(broken, descriptor);
        const std::size_t result = __real_fread(to, size, count, file);
        dup2(saved, descriptor);
        close(broken);
        close(saved);
        return result;
    }
}

void* operator new(std::size_t bytes)
{
    void* const block = __wrap_malloc(bytes);
    return block != nullptr ? block : throw std::bad_alloc();
}

void* operator new[](std::size_t bytes)
{
    return operator new(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return __wrap_malloc(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    return __wrap_malloc(bytes);
}

void operator delete(void* block) noexcept
{
    __wrap_free(block);
}

void operator delete[](void* block) noexcept
{
    __wrap_free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    __wrap_free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    __wrap_free(block);
}
