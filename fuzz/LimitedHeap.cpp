// A heap that serves no request above a gigabyte, as a machine may that has not so much: a sanitizer's own would end
// the program instead.

#include <cstddef>
#include <cstdlib>
#include <new>

namespace
{
constexpr std::size_t nLargest = std::size_t{1} << 30;

void* Allocate(std::size_t nSize)
{
    return nSize > nLargest ? nullptr : std::malloc(nSize == 0 ? 1 : nSize);
}

void* AllocateOrThrow(std::size_t nSize)
{
    void* const p = Allocate(nSize);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
} // namespace

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
