#include "FailingHeap.hpp"

#include <cerrno>
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

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MALLOC_OF_A_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MALLOC_OF_A_SANITIZER
#endif

// glibc lets a program define these functions, and offers its own under other names.
#if defined(__GLIBC__) && !defined(MALLOC_OF_A_SANITIZER)
#define OWN_MALLOC
extern "C"
{
    void* __libc_malloc(std::size_t nSize);                   // NOLINT(bugprone-reserved-identifier)
    void* __libc_calloc(std::size_t nCount, std::size_t n);   // NOLINT(bugprone-reserved-identifier)
    void* __libc_realloc(void* p, std::size_t nSize);         // NOLINT(bugprone-reserved-identifier)
    void* __libc_memalign(std::size_t nAlign, std::size_t n); // NOLINT(bugprone-reserved-identifier)
    void __libc_free(void* p);                                // NOLINT(bugprone-reserved-identifier)
}
#endif

namespace
{
constexpr long nUnlimited = -1;

struct StHeap
{
    long nLeft = nUnlimited; ///< allocations that pass before the one that fails
    bool bOnlyThat = false;
    bool bMalloc = false; ///< malloc and its kin fail and count, too
    long nFailed = 0;
    long nLive = 0;
};

thread_local StHeap cHeap;
thread_local std::size_t nGreatest = 0;

/// Stands in front of each block; as large as the strictest usual alignment, so that the block keeps it.
struct alignas(std::max_align_t) StTag
{
    bool m_bArray;
};

constexpr std::size_t nAnySize = std::size_t(-1) - sizeof(StTag);
thread_local std::size_t nMostAtOnce = nAnySize;

/// Whether the next allocation is one that fails.
bool Fails()
{
    if (cHeap.nLeft == nUnlimited)
    {
        return false;
    }
    if (cHeap.nLeft > 0)
    {
        --cHeap.nLeft;
        return false;
    }
    cHeap.nLeft = cHeap.bOnlyThat ? nUnlimited : 0;
    ++cHeap.nFailed;
    return true;
}

void* RawBlock(std::size_t nSize, std::size_t nAlignment)
{
#if defined(OWN_MALLOC)
    return nAlignment <= alignof(StTag) ? __libc_malloc(nSize) : __libc_memalign(nAlignment, nSize);
#else
    return nAlignment <= alignof(StTag) ? std::malloc(nSize)
                                        : std::aligned_alloc(nAlignment, (nSize + nAlignment - 1) & ~(nAlignment - 1));
#endif
}

void FreeRawBlock(void* p)
{
#if defined(OWN_MALLOC)
    __libc_free(p);
#else
    std::free(p);
#endif
}

/// Bytes between the start of a raw block and the block that is given out.
std::size_t Ahead(std::size_t nAlignment)
{
    return nAlignment > sizeof(StTag) ? nAlignment : sizeof(StTag);
}

void* Allocate(std::size_t nSize, bool bArray, std::size_t nAlignment) noexcept
{
    if (Fails())
    {
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
    auto* pRaw = static_cast<unsigned char*>(RawBlock(Ahead(nAlignment) + nSize, nAlignment));
    if (pRaw == nullptr)
    {
        return nullptr;
    }
    ++cHeap.nLive;
    StTag* pTag = new (pRaw + Ahead(nAlignment) - sizeof(StTag)) StTag{bArray};
    ASAN_POISON_MEMORY_REGION(pTag, sizeof(StTag));
    return pTag + 1;
}

void* AllocateOrThrow(std::size_t nSize, bool bArray, std::size_t nAlignment)
{
    void* p = Allocate(nSize, bArray, nAlignment);
    if (p == nullptr)
    {
        throw std::bad_alloc();
    }
    return p;
}

void Release(void* p, bool bArray, std::size_t nAlignment) noexcept
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
    --cHeap.nLive;
    FreeRawBlock(static_cast<unsigned char*>(p) - Ahead(nAlignment));
}

constexpr std::size_t nUsualAlignment = alignof(StTag);

std::size_t Number(std::align_val_t eAlignment)
{
    return static_cast<std::size_t>(eAlignment);
}

#if defined(OWN_MALLOC)
bool MallocFails()
{
    if (!cHeap.bMalloc || !Fails())
    {
        return false;
    }
    errno = ENOMEM;
    return true;
}

void* Counted(void* p)
{
    cHeap.nLive += p != nullptr ? 1 : 0;
    return p;
}
#endif
} // namespace

ClFailingHeap::ClFailingHeap(long nPassing)
{
    cHeap.nLeft = nPassing;
    cHeap.bOnlyThat = false;
    cHeap.bMalloc = false;
    cHeap.nFailed = 0;
}

ClFailingHeap::ClFailingHeap(long nPassing, EFailing eFailing)
{
    cHeap.nLeft = nPassing;
    cHeap.bOnlyThat = eFailing == eOnlyThat;
    cHeap.bMalloc = true;
    cHeap.nFailed = 0;
}

ClFailingHeap::~ClFailingHeap()
{
    cHeap.nLeft = nUnlimited;
}

long ClFailingHeap::Failed() const
{
    return cHeap.nFailed;
}

bool ClFailingHeap::KnowsMalloc()
{
#if defined(OWN_MALLOC)
    return true;
#else
    return false;
#endif
}

long ClFailingHeap::LiveBlocks()
{
    return cHeap.nLive;
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
    return AllocateOrThrow(nSize, false, nUsualAlignment);
}

void* operator new[](std::size_t nSize)
{
    return AllocateOrThrow(nSize, true, nUsualAlignment);
}

void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, false, nUsualAlignment);
}

void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, true, nUsualAlignment);
}

void* operator new(std::size_t nSize, std::align_val_t eAlignment)
{
    return AllocateOrThrow(nSize, false, Number(eAlignment));
}

void* operator new[](std::size_t nSize, std::align_val_t eAlignment)
{
    return AllocateOrThrow(nSize, true, Number(eAlignment));
}

void* operator new(std::size_t nSize, std::align_val_t eAlignment, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, false, Number(eAlignment));
}

void* operator new[](std::size_t nSize, std::align_val_t eAlignment, const std::nothrow_t&) noexcept
{
    return Allocate(nSize, true, Number(eAlignment));
}

void operator delete(void* p) noexcept
{
    Release(p, false, nUsualAlignment);
}

void operator delete[](void* p) noexcept
{
    Release(p, true, nUsualAlignment);
}

void operator delete(void* p, std::size_t) noexcept
{
    Release(p, false, nUsualAlignment);
}

void operator delete[](void* p, std::size_t) noexcept
{
    Release(p, true, nUsualAlignment);
}

void operator delete(void* p, const std::nothrow_t&) noexcept
{
    Release(p, false, nUsualAlignment);
}

void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    Release(p, true, nUsualAlignment);
}

void operator delete(void* p, std::align_val_t eAlignment) noexcept
{
    Release(p, false, Number(eAlignment));
}

void operator delete[](void* p, std::align_val_t eAlignment) noexcept
{
    Release(p, true, Number(eAlignment));
}

void operator delete(void* p, std::size_t, std::align_val_t eAlignment) noexcept
{
    Release(p, false, Number(eAlignment));
}

void operator delete[](void* p, std::size_t, std::align_val_t eAlignment) noexcept
{
    Release(p, true, Number(eAlignment));
}

void operator delete(void* p, std::align_val_t eAlignment, const std::nothrow_t&) noexcept
{
    Release(p, false, Number(eAlignment));
}

void operator delete[](void* p, std::align_val_t eAlignment, const std::nothrow_t&) noexcept
{
    Release(p, true, Number(eAlignment));
}

#if defined(OWN_MALLOC)
extern "C"
{
    void* malloc(std::size_t nSize) noexcept
    {
        return MallocFails() ? nullptr : Counted(__libc_malloc(nSize));
    }

    void* calloc(std::size_t nCount, std::size_t nSize) noexcept
    {
        return MallocFails() ? nullptr : Counted(__libc_calloc(nCount, nSize));
    }

    void* realloc(void* p, std::size_t nSize) noexcept
    {
        if (nSize != 0 && MallocFails())
        {
            return nullptr;
        }
        void* pNew = __libc_realloc(p, nSize);
        cHeap.nLive += (pNew != nullptr ? 1 : 0) - (p != nullptr && (pNew != nullptr || nSize == 0) ? 1 : 0);
        return pNew;
    }

    void* memalign(std::size_t nAlignment, std::size_t nSize) noexcept
    {
        return MallocFails() ? nullptr : Counted(__libc_memalign(nAlignment, nSize));
    }

    void* aligned_alloc(std::size_t nAlignment, std::size_t nSize) noexcept
    {
        return memalign(nAlignment, nSize);
    }

    int posix_memalign(void** pp, std::size_t nAlignment, std::size_t nSize) noexcept
    {
        void* p = memalign(nAlignment, nSize);
        if (p == nullptr)
        {
            return ENOMEM;
        }
        *pp = p;
        return 0;
    }

    void free(void* p) noexcept
    {
        cHeap.nLive -= p != nullptr ? 1 : 0;
        __libc_free(p);
    }
}
#endif
