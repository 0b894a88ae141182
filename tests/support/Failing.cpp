#include "Failing.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

using test::g_plan;

static bool IsHit(bool isOfReads)
{
    if (g_plan.callsBefore < 0 || isOfReads != g_plan.isOfReads)
        return false;
    const bool isHit = g_plan.callsBefore == 0;
    g_plan.hasHappened |= isHit;
    g_plan.callsBefore -= !isHit || isOfReads || !g_plan.isLasting;
    return isHit;
}

extern "C"
{
    void* __real_malloc(std::size_t bytes);
    void __real_free(void* block);
    std::size_t __real_fread(void* to, std::size_t size, std::size_t count, std::FILE* file);

    void* __wrap_malloc(std::size_t bytes)
    {
        void* const block = IsHit(false) ? nullptr : __real_malloc(std::max<std::size_t>(bytes, 1));
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
        const bool isHit = IsHit(true);
        if (isHit && g_plan.isLasting)
            std::filesystem::resize_file(g_plan.path, 100);
        else if (isHit) // a stream for reading alone refuses to write and keeps that in mind as an error
            return std::fputc(0, file), 0U;
        return __real_fread(to, size, count, file);
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
