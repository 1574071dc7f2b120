#pragma once

#include "RDTools/TpArrayStatic.hpp"

#include <cstdint>

/// Means over consecutive spans of equal length, the kernel that reduces pictures. A span is a number of source samples
/// with 12 fractional bits; a sample at the end of a span is shared between two of them by its parts. Means are
/// truncated, so results are exact integers and the same on every machine.
/// Where the source ends within a span, its mean is that over the part that was there; places behind it repeat it.
class ClSpanMean
{
public:
    static constexpr int nFractionBits = 12;
    static constexpr std::int64_t nOne = std::int64_t(1) << nFractionBits;
    static constexpr int nMostWhole = 16; ///< samples of a whole span that is summed up without fractions

    /// nSpan: at least a sample, at most 2^43, what a side of 2^31 samples has that becomes one pixel.
    explicit ClSpanMean(std::int64_t nSpan);

    /// nOut means of a row of nIn samples, at least one; nothing outside the two rows is touched. They may be the same.
    void Reduce(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const;

    /// The mean of a full span whose samples, each times its weight of up to 4096, add up to nSum.
    unsigned char Quotient(std::int64_t nSum) const
    {
        return m_nReciprocal != 0
                   ? static_cast<unsigned char>((static_cast<std::uint64_t>(nSum) * m_nReciprocal) >> nReciprocalBits)
                   : static_cast<unsigned char>(nSum / m_nSpan);
    }

    /// The same of m_nWhole samples that add up to nSum.
    unsigned char WholeQuotient(unsigned int nSum) const { return WholeQuotient(nSum, m_nWholeReciprocal); }
    static unsigned char WholeQuotient(unsigned int nSum, std::uint16_t nReciprocal)
    {
        return static_cast<unsigned char>((nSum * nReciprocal) >> 16);
    }

    std::int64_t m_nSpan;
    int m_nWhole = 0; ///< the samples of a span of 2 to nMostWhole whole samples, else 0
    std::uint16_t m_nWholeReciprocal = 0;

private:
    static constexpr int nReciprocalBits = 48;

    int ReduceWholeByBlocks(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const;
    void ReduceWhole(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const;
    void ReduceShared(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const;

    std::uint64_t m_nReciprocal = 0; ///< 0 where the division itself is needed
};

/// The same down the columns, row by row: source rows go in, and now and then a row of means comes out.
class ClColumnSpanMean
{
public:
    /// nSpan as above.
    ClColumnSpanMean(std::int64_t nSpan, int nWidth);

    /// Takes the next source row. True if a span ended in it: then pOut holds its means.
    bool Add(const unsigned char* pIn, unsigned char* pOut);
    /// The means over the part of the last span that the source had. False if it ended with a span.
    bool Finish(unsigned char* pOut) const;

private:
    bool AddWhole(const unsigned char* pIn, unsigned char* pOut);
    bool AddShared(const unsigned char* pIn, unsigned char* pOut);

    ClSpanMean m_cMean;
    int m_nWidth;
    std::int64_t m_nFilled = 0; ///< length of the span's part that is in the sums; samples if it is whole
    TpArrayStatic<std::uint16_t> m_anWholeSum; ///< of a whole span
    TpArrayStatic<std::int64_t> m_anSum;       ///< of any other
};
