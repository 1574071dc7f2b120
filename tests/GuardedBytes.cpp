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

unsigned char* FirstPage(unsigned char* pBytes)
{
    return pBytes - reinterpret_cast<std::uintptr_t>(pBytes) % Page();
}
} // namespace

unsigned char* MapGuarded(std::size_t nSize, EGuard eGuard)
{
    const std::size_t nUsable = WholePages(nSize);
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
    return eGuard == EGuard::eBehind ? pUsable + nUsable - nSize : pUsable;
}

void UnmapGuarded(unsigned char* pBytes, std::size_t nSize)
{
    munmap(FirstPage(pBytes) - Page(), Page() + WholePages(nSize) + Page());
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
    if (m_nSize != 0 && mprotect(FirstPage(m_pBytes), WholePages(m_nSize), PROT_READ) != 0)
    {
        throw std::runtime_error("a guarded block could not be protected");
    }
}
