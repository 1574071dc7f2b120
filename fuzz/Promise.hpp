#pragma once

#include "RDTools/FpImage.hpp"

#include <cstddef>
#include <cstdint>

/// Ends the program: what the library promises does not hold.
[[noreturn]] void FailPromise(const char* szWhat);
inline void Promise(bool bHolds, const char* szWhat)
{
    if (!bHolds) FailPromise(szWhat);
}

/// 0, or the number of an error that has a text in the catalogue.
void PromiseCode(long nCode);

/// Requests for more bytes than this get no memory from here on; 64 megabytes at the start.
void LimitNewMemory(std::size_t nBytes);

/// Every byte of new memory is nValue from here on: two runs over memory that differs give the same result only if no
/// byte of it is read before it is written.
void FillNewMemory(unsigned char nValue);

/// Sums up what a run has left, for comparing two runs.
class ClDigest
{
public:
    void Add(std::uint64_t nValue)
    {
        m_nSum = (m_nSum ^ nValue) * 0x9e3779b97f4a7c15u;
        m_nSum ^= m_nSum >> 29;
    }
    void Add(double dValue);
    void AddBytes(const void* pBytes, std::size_t nBytes);
    void Add(const ClImage& cImage); ///< fields and samples, without the padding and m_nAttribute

    std::uint64_t Sum() const { return m_nSum; }

private:
    std::uint64_t m_nSum = 1;
};
