#include "FailingHeap.hpp"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(p, n) (static_cast<void>(p), static_cast<void>(n))
#define ASAN_UNPOISON_MEMORY_REGION(p, n) (static_cast<void>(p), static_cast<void>(n))
#endif

namespace
{
constexpr long nUnlimited = -1;
thread_local long nAllocationsLeft = nUnlimited;
thread_local std::size_t nGreatest = 0;

/// Stands in front of each block; as large as the strictest alignment, so that the block keeps it.
struct alignas(std::max_align_t) StTag
{
    bool m_bArray;
};

constexpr std::size_t nAnySize = std::size_t(-1) - sizeof(StTag);
thread_local std::size_t nMostAtOnce = nAnySize;

void* Allocate(std::size_t nSize, bool bArray) noexcept
{
    if (nAllocationsLeft != nUnlimited && nAllocationsLeft-- <= 0)
    {
        nAllocationsLeft = 0;
        return nullptr;
    }
    if (nSize > nGreatest)
    {
        nGreatest = nSize;
    }
    if (nSize > nMostAtOnce)
    {
        return nullptr;
    }
    void* pRaw = std::malloc(sizeof(StTag) + nSize);
    if (pRaw == nullptr)
    {
        return nullptr;
    }
    StTag* pTag = new (pRaw) StTag{bArray};
    ASAN_POISON_MEMORY_REGION(pTag, sizeof(StTag));
    return pTag + 1;
}

void* AllocateOrThrow(std::size_t nSize, bool bArray)
{
    void* p = Allocate(nSize, bArray);
    if (p == nullptr)
    {
        throw std::bad_alloc();
    }
    return p;
}

void Release(void* p, bool bArray) noexcept
{
    if (p == nullptr)
    {
        return;
    }
    StTag* pTag = static_cast<StTag*>(p) - 1;
    ASAN_UNPOISON_MEMORY_REGION(pTag, sizeof(StTag));
    if (pTag->m_bArray != bArray)
    {
        std::fputs(bArray ? "array-delete of a single object\n" : "delete of an array\n", stderr);
        std::abort();
    }
    std::free(pTag);
}
} // namespace

ClFailingHeap::ClFailingHeap(long nPassing)
{
    nAllocationsLeft = nPassing;
}

ClFailingHeap::~ClFailingHeap()
{
    nAllocationsLeft = nUnlimited;
}

ClLimitedHeap::ClLimitedHeap(std::size_t nMost)
{
    nMostAtOnce = nMost;
    nGreatest = 0;
}

ClLimitedHeap::~ClLimitedHeap()
{
    nMostAtOnce = nAnySize;
}

std::size_t ClLimitedHeap::Greatest()
{
    return nGreatest;
}

void* operator new(std::size_t nSize)
{
    return AllocateOrThrow(nSize, false);
}

void* operator new[](std::size_t nSize)
{
    return AllocateOrThrow(nSize, true);
}

void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, false);
}

void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, true);
}

void operator delete(void* p) noexcept
{
    Release(p, false);
}

void operator delete[](void* p) noexcept
{
    Release(p, true);
}

void operator delete(void* p, std::size_t) noexcept
{
    Release(p, false);
}

void operator delete[](void* p, std::size_t) noexcept
{
    Release(p, true);
}

void operator delete(void* p, const std::nothrow_t&) noexcept
{
    Release(p, false);
}

void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    Release(p, true);
}
