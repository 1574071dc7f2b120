// A heap that serves no request above 64 megabytes, as a machine may that has not so much: a sanitizer's own would end
// the program instead. What it serves is filled with the value that the target has asked for.

#include "Promise.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace
{
std::size_t g_nLargest = std::size_t{1} << 26;
constexpr std::size_t nMostFilled = std::size_t{1} << 20; // larger blocks would cost more than the run itself
int g_nFill = 0;

void* Allocate(std::size_t nSize)
{
    if (nSize > g_nLargest) return nullptr;
    void* const p = std::malloc(nSize == 0 ? 1 : nSize);
    if (p != nullptr) std::memset(p, g_nFill, std::min(nSize, nMostFilled));
    return p;
}

void* AllocateOrThrow(std::size_t nSize)
{
    void* const p = Allocate(nSize);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
} // namespace

void LimitNewMemory(std::size_t nBytes)
{
    g_nLargest = nBytes;
}

void FillNewMemory(unsigned char nValue)
{
    g_nFill = nValue;
}

void* operator new(std::size_t nSize)
{
    return AllocateOrThrow(nSize);
}
void* operator new[](std::size_t nSize)
{
    return AllocateOrThrow(nSize);
}
void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize);
}
void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Allocate(nSize);
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}
