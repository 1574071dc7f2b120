#pragma once

// Memory between two pages that cannot be touched: whoever reads or writes beyond it dies at once.

#include <cstddef>
#include <vector>

/// On which side the bytes touch the guard page; on the other side it is as near as whole pages allow.
enum class EGuard
{
    eBehind, ///< the bytes end where the page begins, and begin on whatever alignment their size gives
    eBefore, ///< they begin where the page ends
    eOdd     ///< they begin at an odd address, and end at the page or, if their size is even, one byte before it
};

/// The pages of nSize bytes, zeroes, and how they are given back. Errors: std::runtime_error without memory for them.
unsigned char* MapGuarded(std::size_t nSize, EGuard eGuard);
void UnmapGuarded(unsigned char* pBytes, std::size_t nSize);

/// A block of nSize bytes beside a guard page.
class ClGuardedBytes
{
public:
    ClGuardedBytes(const void* pBytes, std::size_t nSize, EGuard eGuard = EGuard::eBehind); ///< a copy
    explicit ClGuardedBytes(std::size_t nSize, EGuard eGuard = EGuard::eBehind);            ///< zeroes
    ClGuardedBytes(const ClGuardedBytes&) = delete;
    ClGuardedBytes& operator=(const ClGuardedBytes&) = delete;
    ~ClGuardedBytes() { UnmapGuarded(m_pBytes, m_nSize); }

    void ForbidWriting(); ///< from now on a write kills the test as well

    unsigned char* Data() const { return m_pBytes; }
    std::size_t Size() const { return m_nSize; }

private:
    unsigned char* m_pBytes;
    std::size_t m_nSize;
};

/// A copy that can only be read: the input of a call that must not write to it.
class ClReadOnlyBytes : public ClGuardedBytes
{
public:
    ClReadOnlyBytes(const void* pBytes, std::size_t nSize, EGuard eGuard = EGuard::eBehind)
        : ClGuardedBytes(pBytes, nSize, eGuard)
    {
        ForbidWriting();
    }
    template <class Bytes_t>
    explicit ClReadOnlyBytes(const Bytes_t& aBytes, EGuard eGuard = EGuard::eBehind)
        : ClReadOnlyBytes(aBytes.data(), aBytes.size(), eGuard)
    {
    }
};

/// The input of a call that is made several times, each time at another place: exactly at a guard page, and at an odd
/// address.
class ClMovingInput
{
public:
    template <class Bytes_t>
    explicit ClMovingInput(const Bytes_t& aBytes) : m_cExact(aBytes), m_cOdd(aBytes, EGuard::eOdd)
    {
    }
    const ClReadOnlyBytes& Place(long nCall) const { return nCall % 2 == 0 ? m_cExact : m_cOdd; } ///< nCall from 0

private:
    ClReadOnlyBytes m_cExact;
    ClReadOnlyBytes m_cOdd;
};

/// Puts the elements of a vector in front of a guard page.
template <class T> struct TpGuardedAllocator
{
    using value_type = T;
    TpGuardedAllocator() = default;
    template <class U> explicit TpGuardedAllocator(const TpGuardedAllocator<U>&) {}

    T* allocate(std::size_t n) { return reinterpret_cast<T*>(MapGuarded(n * sizeof(T), EGuard::eBehind)); }
    void deallocate(T* p, std::size_t n) { UnmapGuarded(reinterpret_cast<unsigned char*>(p), n * sizeof(T)); }
    bool operator==(const TpGuardedAllocator&) const { return true; }
    bool operator!=(const TpGuardedAllocator&) const { return false; }
};

/// A vector of bytes that ends in front of a guard page as long as it keeps the size it was made with.
class ClGuardedVector : public std::vector<unsigned char, TpGuardedAllocator<unsigned char>>
{
public:
    using vector::vector;
    ClGuardedVector() = default;
    ClGuardedVector(const std::vector<unsigned char>& aBytes) : vector(aBytes.begin(), aBytes.end()) {}
    operator std::vector<unsigned char>() const { return {begin(), end()}; }
};
