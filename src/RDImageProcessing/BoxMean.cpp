#include "RDImageProcessing/BoxMean.hpp"

#include "RDImageProcessing/BoxQuotient.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace
{
using Sum_t = std::uint16_t; // of 257 samples at most

constexpr int nMostShortBox = 7; // the widest whose sums are one part

RD_KERNEL void MoveDown(const unsigned char* __restrict pEnters, const unsigned char* __restrict pLeaves,
                        Sum_t* __restrict pColumns, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pColumns[x] = static_cast<Sum_t>(pColumns[x] + pEnters[x] - pLeaves[x]);
    }
}

RD_KERNEL void AddRows(const Sum_t* __restrict p1, const Sum_t* __restrict p2, Sum_t* __restrict pSum,
                       std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pSum[x] = static_cast<Sum_t>(p1[x] + p2[x]);
    }
}

/// A box is its left half, its right half and its last column.
RD_KERNEL void ShortMeans(const Sum_t* __restrict pLeft, const Sum_t* __restrict pRight, const Sum_t* __restrict pLast,
                          const Sum_t* __restrict pReciprocal, unsigned char* __restrict pOut, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pOut[x] = ClShortQuotient::Of(static_cast<Sum_t>(pLeft[x] + pRight[x] + pLast[x]), pReciprocal[x]);
    }
}

RD_KERNEL void LongMeans(const Sum_t* __restrict pLeft, const Sum_t* __restrict pRight, const Sum_t* __restrict pLast,
                         const Sum_t* __restrict pReciprocal, const Sum_t* __restrict pCount,
                         unsigned char* __restrict pOut, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pOut[x] = ClLongQuotient::Of(pLeft[x], static_cast<Sum_t>(pRight[x] + pLast[x]), pReciprocal[x], pCount[x]);
    }
}

/// Room for the sums of all columns in the rows around the present one, with zeros for the columns to both sides of the
/// image, and the steps from there to the sums of half a box: those of one, two, four columns and so on double, and
/// those whose numbers add up to the half are put together.
class ClColumnSums
{
public:
    /// pSum[x] = p1[x] + p2[x]
    struct StStep
    {
        const Sum_t* p1;
        const Sum_t* p2;
        Sum_t* pSum;
        std::ptrdiff_t nCount;
    };

    ClColumnSums(int nWidth, int nHalf)
        : m_nRow(std::ptrdiff_t{nWidth} + 2 * nHalf), m_anSums(static_cast<unsigned long>(m_nRow * (nMostSteps + 1))),
          m_anZero(static_cast<unsigned long>(nWidth)), m_pHalves(m_anSums.m_pData)
    {
        std::fill_n(Columns(), m_nRow, Sum_t(0));
        std::fill_n(m_anZero.m_pData, nWidth, static_cast<unsigned char>(0));
        const Sum_t* pPower = Columns();
        int nSummed = 0;
        for (int nPower = 1; nPower <= nHalf; nPower *= 2)
        {
            pPower = nPower == 1 ? pPower : AddStep(pPower, pPower + nPower / 2, nPower);
            if ((nHalf & nPower) != 0)
            {
                m_pHalves = nSummed == 0 ? pPower : AddStep(pPower, m_pHalves + nPower, nSummed + nPower);
                nSummed += nPower;
            }
        }
    }

    const unsigned char* NoRow() const { return m_anZero.m_pData; }
    Sum_t* Columns() { return m_anSums.m_pData; }     ///< from nHalf columns before the first on
    const Sum_t* Halves() const { return m_pHalves; } ///< of nHalf columns from each place on, after the steps
    const StStep* begin() const { return m_acStep; }
    const StStep* end() const { return m_acStep + m_nSteps; }

private:
    static constexpr int nMostSteps = 4; // for the halves 7 and 10; 9 and less need fewer

    const Sum_t* AddStep(const Sum_t* p1, const Sum_t* p2, int nColumns)
    {
        Sum_t* const pSum = Columns() + m_nRow * (m_nSteps + 1);
        m_acStep[m_nSteps++] = {p1, p2, pSum, m_nRow + 1 - nColumns};
        return pSum;
    }

    const std::ptrdiff_t m_nRow;
    TpArrayStatic<Sum_t> m_anSums;
    TpArrayStatic<unsigned char> m_anZero;
    StStep m_acStep[nMostSteps];
    int m_nSteps = 0;
    const Sum_t* m_pHalves;
};

RD_KERNEL void MeanRows(const ClImage& cIn, int nWidth, ClImage& cOut)
{
    const int nHalf = nWidth / 2;
    const int nHeight = cIn.m_nHeight;
    const std::ptrdiff_t nColumns = cIn.m_nWidth;
    const bool bShort = nWidth <= nMostShortBox;
    ClBoxCounts cCounts(cIn.m_nWidth, nHalf, bShort ? ClShortQuotient::Reciprocal : ClLongQuotient::Reciprocal);
    ClColumnSums cSums(cIn.m_nWidth, nHalf);
    for (int y = -nHalf; y < nHeight; ++y)
    {
        MoveDown(y + nHalf < nHeight ? Row<unsigned char>(cIn, y + nHalf) : cSums.NoRow(),
                 y > nHalf ? Row<unsigned char>(cIn, y - nHalf - 1) : cSums.NoRow(), cSums.Columns() + nHalf, nColumns);
        if (y < 0)
        {
            continue;
        }
        for (const ClColumnSums::StStep& c : cSums)
        {
            AddRows(c.p1, c.p2, c.pSum, c.nCount);
        }
        cCounts.SetRows(std::min(y + nHalf, nHeight - 1) - std::max(y - nHalf, 0) + 1);
        const Sum_t* const pLeft = cSums.Halves();
        const Sum_t* const pLast = cSums.Columns() + 2 * nHalf;
        unsigned char* const pOut = Row<unsigned char>(cOut, y);
        if (bShort)
        {
            ShortMeans(pLeft, pLeft + nHalf, pLast, cCounts.Reciprocals(), pOut, nColumns);
        }
        else
        {
            LongMeans(pLeft, pLeft + nHalf, pLast, cCounts.Reciprocals(), cCounts.Counts(), pOut, nColumns);
        }
    }
}

void NarrowMeanRows(const ClImage& cIn, int nWidth, ClImage& cOut)
{
    MeanRows(cIn, nWidth, cOut);
}

RD_FOR_WIDE_VECTORS void WideMeanRows(const ClImage& cIn, int nWidth, ClImage& cOut)
{
    MeanRows(cIn, nWidth, cOut);
}
} // namespace

void FastBoxMeans(const ClImage& cIn, int nWidth, ClImage& cOut, bool bWideVectors)
{
    (bWideVectors ? WideMeanRows : NarrowMeanRows)(cIn, nWidth, cOut);
}
