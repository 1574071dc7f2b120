#pragma once

// Exact means of 8-bit samples by multiplication, in 16-bit arithmetic, of which vectors hold the most lanes.

#include "RDTools/TpArrayStatic.hpp"
#include "RDTools/WideVectors.hpp"

#include <cstdint>

/// floor(s / n) for n samples that add up to s, n from 9 to 49, but not 47, which is no box. With m = ceil(2^19 / n),
/// floor(s m / 2^19) is the quotient as long as s times the excess of m n over 2^19 is below 2^19: always up to n = 45,
/// since the excess is below n, and then by the excess itself: 20 for 46, 16 for 48, 12 for 49.
struct ClShortQuotient
{
    static constexpr int nLeast = 9; // the reciprocals of fewer have more than 16 bits
    static constexpr int nMost = 49;

    static std::uint16_t Reciprocal(std::uint32_t n) { return static_cast<std::uint16_t>(((1u << 19) + n - 1) / n); }
    RD_KERNEL static unsigned char Of(std::uint16_t nSum, std::uint16_t nReciprocal)
    {
        const auto nHigh = static_cast<std::uint16_t>((static_cast<std::uint32_t>(nSum) * nReciprocal) >> 16);
        return static_cast<unsigned char>(nHigh >> 3);
    }
};

/// The same for n from 17 to 441, where the sum has 17 bits and comes in two parts of 16. With m = floor(2^20 / n) each
/// truncation takes less than 1 from 16 s / n, and so does the fraction missing from m from each part; so the quotient
/// is right or one too small, and the rest, which is below 2 n, tells which.
struct ClLongQuotient
{
    static constexpr int nLeast = 17;
    static constexpr int nMost = 441;

    static std::uint16_t Reciprocal(std::uint32_t n) { return static_cast<std::uint16_t>((1u << 20) / n); }
    RD_KERNEL static unsigned char Of(std::uint16_t nPart1, std::uint16_t nPart2, std::uint16_t nReciprocal,
                                      std::uint16_t nCount)
    {
        const auto nHigh1 = static_cast<std::uint16_t>((static_cast<std::uint32_t>(nPart1) * nReciprocal) >> 16);
        const auto nHigh2 = static_cast<std::uint16_t>((static_cast<std::uint32_t>(nPart2) * nReciprocal) >> 16);
        const auto nQuotient = static_cast<std::uint16_t>(static_cast<std::uint16_t>(nHigh1 + nHigh2) >> 4);
        const auto nTaken = static_cast<std::uint16_t>(nQuotient * nCount);
        const auto nRest = static_cast<std::uint16_t>(nPart1 + nPart2 - nTaken);
        return static_cast<unsigned char>(nQuotient + (nRest >= nCount ? 1 : 0));
    }
};

/// For each pixel of a row the number of pixels in the box around it, clipped to the image, and its reciprocal. Rows
/// differ only by the number of rows in their boxes.
class ClBoxCounts
{
public:
    using Reciprocal_t = std::uint16_t (*)(std::uint32_t nCount);

    /// Boxes of 2 nHalf + 1 columns on rows of nWidth, at least as wide. Errors: ClExBadAlloc.
    ClBoxCounts(int nWidth, int nHalf, Reciprocal_t pReciprocal);

    void SetRows(int nRows); ///< boxes of nRows rows from now on

    const std::uint16_t* Counts() const { return m_anCount.m_pData; }
    const std::uint16_t* Reciprocals() const { return m_anReciprocal.m_pData; }

private:
    void Fill(int nFrom, int nEnd, int nColumns);

    TpArrayStatic<std::uint16_t> m_anCount;
    TpArrayStatic<std::uint16_t> m_anReciprocal;
    const int m_nWidth;
    const int m_nHalf;
    const Reciprocal_t m_pReciprocal;
    int m_nRows = 0;
};
