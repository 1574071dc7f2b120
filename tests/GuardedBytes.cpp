#include "GuardedBytes.hpp"

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

namespace
{
std::size_t Page()
{
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// Bytes of the whole pages that hold nSize bytes.
std::size_t WholePages(std::size_t nSize)
{
    return (nSize + Page() - 1) / Page() * Page();
}

std::size_t PlaceInPage(const unsigned char* pBytes)
{
    return reinterpret_cast<std::uintptr_t>(pBytes) % Page();
}

/// From the first page of a block to the last.
unsigned char* FirstPage(unsigned char* pBytes)
{
    return pBytes - PlaceInPage(pBytes);
}
std::size_t PagesOf(const unsigned char* pBytes, std::size_t nSize)
{
    return WholePages(PlaceInPage(pBytes) + nSize);
}
} // namespace

unsigned char* MapGuarded(std::size_t nSize, EGuard eGuard)
{
    const std::size_t nUsable = WholePages(nSize + (eGuard == EGuard::eOdd ? 1 : 0));
    const std::size_t nMap = Page() + nUsable + Page();
    void* pMap = mmap(nullptr, nMap, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pMap == MAP_FAILED)
    {
        throw std::runtime_error("no memory for a guarded block");
    }
    unsigned char* pUsable = static_cast<unsigned char*>(pMap) + Page();
    if (nUsable != 0 && mprotect(pUsable, nUsable, PROT_READ | PROT_WRITE) != 0)
    {
        munmap(pMap, nMap);
        throw std::runtime_error("the pages of a guarded block could not be opened");
    }
    unsigned char* pLast = pUsable + nUsable - nSize;
    switch (eGuard)
    {
    case EGuard::eBehind: return pLast;
    case EGuard::eOdd: return pLast - (nSize % 2 == 0 ? 1 : 0);
    case EGuard::eBefore: break;
    }
    return pUsable;
}

void UnmapGuarded(unsigned char* pBytes, std::size_t nSize)
{
    munmap(FirstPage(pBytes) - Page(), Page() + PagesOf(pBytes, nSize) + Page());
}

ClGuardedBytes::ClGuardedBytes(std::size_t nSize, EGuard eGuard) : m_pBytes(MapGuarded(nSize, eGuard)), m_nSize(nSize)
{
}

ClGuardedBytes::ClGuardedBytes(const void* pBytes, std::size_t nSize, EGuard eGuard) : ClGuardedBytes(nSize, eGuard)
{
    if (nSize != 0)
    {
        std::memcpy(m_pBytes, pBytes, nSize);
    }
}

void ClGuardedBytes::ForbidWriting()
{
    if (m_nSize != 0 && mprotect(FirstPage(m_pBytes), PagesOf(m_pBytes, m_nSize), PROT_READ) != 0)
    {
        throw std::runtime_error("a guarded block could not be protected");
    }
}
