#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Runs of equal bytes in a row, 64 bytes at a time. No function touches a byte outside of the row that it is given.

/// Bit i tells whether byte i of the 64 at p is nValue: the definition, and what serves where there is no SSE2.
inline std::uint64_t EqualBytesOneByOne(const unsigned char* p, int nBytes, unsigned char nValue)
{
    std::uint64_t nMask = 0;
    for (int i = 0; i < nBytes; ++i)
    {
        nMask |= static_cast<std::uint64_t>(p[i] == nValue) << i;
    }
    return nMask;
}

/// The same of exactly 64 bytes.
inline std::uint64_t EqualBytes64(const unsigned char* p, unsigned char nValue)
{
#if defined(__SSE2__)
    const __m128i cValue = _mm_set1_epi8(static_cast<char>(nValue));
    std::uint64_t nMask = 0;
    for (int i = 0; i < 4; ++i)
    {
        const __m128i cBytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * i));
        const int nPart = _mm_movemask_epi8(_mm_cmpeq_epi8(cBytes, cValue));
        nMask |= static_cast<std::uint64_t>(static_cast<unsigned int>(nPart)) << (16 * i);
    }
    return nMask;
#else
    return EqualBytesOneByOne(p, 64, nValue);
#endif
}

/// Bit i tells whether byte nFrom + i of a row of nWidth bytes is nValue, of at most 64 bytes; bits beyond the row are
/// 0.
inline std::uint64_t EqualBytesFrom(const unsigned char* pRow, long nFrom, long nWidth, unsigned char nValue)
{
    const long nRest = nWidth - nFrom;
    if (nRest >= 64)
    {
        return EqualBytes64(pRow + nFrom, nValue);
    }
    if (nWidth >= 64 && nRest > 0)
    {
        return EqualBytes64(pRow + nWidth - 64, nValue) >> (64 - nRest); // from the end of the row backwards
    }
    return EqualBytesOneByOne(pRow + nFrom, static_cast<int>(nRest), nValue);
}

/// The first column from nFrom on whose byte is nValue; nWidth if there is none.
inline int FindByte(const unsigned char* pRow, int nFrom, int nWidth, unsigned char nValue)
{
    const void* const pFound = std::memchr(pRow + nFrom, nValue, static_cast<std::size_t>(nWidth - nFrom));
    return pFound != nullptr ? static_cast<int>(static_cast<const unsigned char*>(pFound) - pRow) : nWidth;
}

// A block is not worth its setting up for the few bytes of a short run.
constexpr long nBytesOneByOne = 8;

/// The first column from nFrom on whose byte is not nValue; nWidth if there is none.
inline long EndOfRun(const unsigned char* pRow, long nFrom, long nWidth, unsigned char nValue)
{
    for (const long nEnd = std::min(nFrom + nBytesOneByOne, nWidth); nFrom < nEnd; ++nFrom)
    {
        if (pRow[nFrom] != nValue)
        {
            return nFrom;
        }
    }
    for (; nFrom < nWidth; nFrom += 64)
    {
        const std::uint64_t nOther = ~EqualBytesFrom(pRow, nFrom, nWidth, nValue);
        if (nOther != 0)
        {
            return std::min(nFrom + __builtin_ctzll(nOther), nWidth); // beyond the row no byte is nValue
        }
    }
    return nWidth;
}

/// The first column of the run of nValue that ends before column nEnd; nEnd if the byte there is another.
inline long StartOfRun(const unsigned char* pRow, long nEnd, long nWidth, unsigned char nValue)
{
    for (const long nFirst = std::max(nEnd - nBytesOneByOne, 0L); nEnd > nFirst; --nEnd)
    {
        if (pRow[nEnd - 1] != nValue)
        {
            return nEnd;
        }
    }
    for (; nEnd >= 64; nEnd -= 64)
    {
        const std::uint64_t nOther = ~EqualBytes64(pRow + nEnd - 64, nValue);
        if (nOther != 0)
        {
            return nEnd - __builtin_clzll(nOther);
        }
    }
    // The bit below those of the row's first nEnd bytes is set, so that the count ends there.
    return nEnd == 0 ? 0 : nEnd - __builtin_clzll(~(EqualBytesFrom(pRow, 0, nWidth, nValue) << (64 - nEnd)));
}

/// fn(first column, column behind the last) for each run of nValue among the columns nFrom to nEnd - 1 of a row of
/// nWidth bytes, from left to right. Runs are cut off at nFrom and nEnd.
template <class Fn>
void ForEachRun(const unsigned char* pRow, long nWidth, long nFrom, long nEnd, unsigned char nValue, Fn&& fn)
{
    if (nEnd - nFrom <= nBytesOneByOne)
    {
        while (nFrom < nEnd)
        {
            const long nFirst = nFrom;
            for (; nFrom < nEnd && pRow[nFrom] == nValue; ++nFrom)
            {
            }
            if (nFrom != nFirst)
            {
                fn(nFirst, nFrom);
            }
            ++nFrom;
        }
        return;
    }
    std::uint64_t nBefore = 0; // whether the byte before the block is nValue
    long nFirst = 0;           // of the run that is open
    for (long x = nFrom; x < nEnd; x += 64)
    {
        const long nBytes = nEnd - x;
        std::uint64_t nMask = EqualBytesFrom(pRow, x, nWidth, nValue);
        if (nBytes < 64)
        {
            nMask &= (std::uint64_t(1) << nBytes) - 1;
        }
        std::uint64_t nEdges = nMask ^ (nMask << 1 | nBefore); // where a run begins or has ended
        bool bOpen = nBefore != 0;
        while (nEdges != 0)
        {
            const long nColumn = x + __builtin_ctzll(nEdges);
            nEdges &= nEdges - 1;
            if (bOpen)
            {
                fn(nFirst, nColumn);
            }
            nFirst = nColumn;
            bOpen = !bOpen;
        }
        nBefore = nMask >> 63;
    }
    if (nBefore != 0)
    {
        fn(nFirst, nEnd);
    }
}
