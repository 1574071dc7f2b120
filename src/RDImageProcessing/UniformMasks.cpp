#include "RDImageProcessing/UniformMasks.hpp"

#include "RDImageProcessing/BoxQuotient.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace
{
constexpr int nHalf = nFastMask / 2;
constexpr int nMargin = 2 * nHalf; // columns beyond the image, to both sides together

using Sum_t = std::uint16_t;
using Sample_t = std::int16_t; // 8-bit, in lanes of 16; the smaller of two takes one instruction if they are signed

RD_KERNEL void Widen(const unsigned char* __restrict pIn, Sample_t* __restrict pOut, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pOut[x] = pIn[x];
    }
}

/// The sums of the columns of masks.
RD_KERNEL void AddColumns(const Sample_t* __restrict p0, const Sample_t* __restrict p1, const Sample_t* __restrict p2,
                          const Sample_t* __restrict p3, const Sample_t* __restrict p4, Sum_t* __restrict pSum,
                          std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pSum[x] = static_cast<Sum_t>(p0[x] + p1[x] + p2[x] + p3[x] + p4[x]);
    }
}

RD_KERNEL Sample_t Smaller(Sample_t a, Sample_t b)
{
    return a < b ? a : b;
}

/// The smaller ones of a and of each of five samples, added up.
RD_KERNEL Sample_t SumOfSmaller(Sample_t a, const Sample_t* p)
{
    return static_cast<Sample_t>(Smaller(a, p[0]) + Smaller(a, p[1]) + Smaller(a, p[2]) + Smaller(a, p[3]) +
                                 Smaller(a, p[4]));
}

/// One row, from the five rows of its masks, each from the first column of the first mask on, and the sums of their
/// columns. All sums stay below 256 * 25.
RD_KERNEL void DeviationRow(const Sample_t* __restrict pAvg, const Sample_t* __restrict p0,
                            const Sample_t* __restrict p1, const Sample_t* __restrict p2, const Sample_t* __restrict p3,
                            const Sample_t* __restrict p4, const Sum_t* __restrict pColumns,
                            const Sum_t* __restrict pSamples, const Sum_t* __restrict pReciprocal,
                            unsigned char* __restrict pDev, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        const Sample_t a = pAvg[x];
        const auto nSmaller =
            static_cast<Sum_t>(SumOfSmaller(a, p0 + x) + SumOfSmaller(a, p1 + x) + SumOfSmaller(a, p2 + x) +
                               SumOfSmaller(a, p3 + x) + SumOfSmaller(a, p4 + x));
        const Sum_t* const p = pColumns + x;
        const auto nSum = static_cast<Sum_t>(p[0] + p[1] + p[2] + p[3] + p[4]);
        const auto nDistance = static_cast<Sum_t>(nSum + pSamples[x] * a - 2 * nSmaller);
        pDev[x] = ClShortQuotient::Of(nDistance, pReciprocal[x]);
    }
}

RD_KERNEL void DeviationRows(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev)
{
    const int nHeight = cIn.m_nHeight;
    const std::ptrdiff_t nWidth = cIn.m_nWidth;
    const std::ptrdiff_t nRow = nWidth + nMargin;
    // Samples beyond the image are zeros: they add nothing to either sum, and are not counted. So are whole rows.
    TpArrayStatic<Sample_t> aRows(static_cast<unsigned long>(nRow * (nFastMask + 1)));
    TpArrayStatic<Sample_t> aAvg(static_cast<unsigned long>(nWidth));
    TpArrayStatic<Sum_t> aColumns(static_cast<unsigned long>(nRow));
    std::fill_n(aRows.m_pData, nRow * (nFastMask + 1), Sample_t(0));
    ClBoxCounts cCounts(cIn.m_nWidth, nHalf, ClShortQuotient::Reciprocal);
    const auto slot = [pRows = aRows.m_pData, nRow](int j) { return pRows + j % nFastMask * nRow; };
    const auto row = [&](int j) { return j >= 0 && j < nHeight ? slot(j) : slot(0) + nFastMask * nRow; };
    for (int y = -nHalf; y < nHeight; ++y)
    {
        if (y + nHalf < nHeight)
        {
            Widen(Row<unsigned char>(cIn, y + nHalf), slot(y + nHalf) + nHalf, nWidth);
        }
        if (y >= 0)
        {
            const Sample_t* const ap[] = {row(y - 2), row(y - 1), row(y), row(y + 1), row(y + 2)};
            Widen(Row<unsigned char>(cAvg, y), aAvg.m_pData, nWidth);
            AddColumns(ap[0], ap[1], ap[2], ap[3], ap[4], aColumns.m_pData, nRow);
            cCounts.SetRows(std::min(y + nHalf, nHeight - 1) - std::max(y - nHalf, 0) + 1);
            DeviationRow(aAvg.m_pData, ap[0], ap[1], ap[2], ap[3], ap[4], aColumns.m_pData, cCounts.Counts(),
                         cCounts.Reciprocals(), Row<unsigned char>(cDev, y), nWidth);
        }
    }
}

/// A deviation and the mean at its place; of equal deviations the one that was there first stays.
struct StPlace
{
    unsigned char nDev;
    unsigned char nMean;

    RD_KERNEL void Meet(unsigned char nOtherDev, unsigned char nOtherMean)
    {
        const bool bSmaller = nOtherDev < nDev;
        nMean = bSmaller ? nOtherMean : nMean;
        nDev = bSmaller ? nOtherDev : nDev;
    }
};

using Byte_t = unsigned char;

/// The best of five rows in each column.
RD_KERNEL void SearchDown(const Byte_t* __restrict pDev0, const Byte_t* __restrict pDev1,
                          const Byte_t* __restrict pDev2, const Byte_t* __restrict pDev3,
                          const Byte_t* __restrict pDev4, const Byte_t* __restrict pAvg0,
                          const Byte_t* __restrict pAvg1, const Byte_t* __restrict pAvg2,
                          const Byte_t* __restrict pAvg3, const Byte_t* __restrict pAvg4, Byte_t* __restrict pDev,
                          Byte_t* __restrict pMean, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        StPlace c{pDev0[x], pAvg0[x]};
        c.Meet(pDev1[x], pAvg1[x]);
        c.Meet(pDev2[x], pAvg2[x]);
        c.Meet(pDev3[x], pAvg3[x]);
        c.Meet(pDev4[x], pAvg4[x]);
        pDev[x] = c.nDev;
        pMean[x] = c.nMean;
    }
}

/// The mean of the best of five columns from each one on.
RD_KERNEL void SearchAcross(const Byte_t* __restrict pDev, const Byte_t* __restrict pMean, Byte_t* __restrict pOut,
                            std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        StPlace c{pDev[x], pMean[x]};
        c.Meet(pDev[x + 1], pMean[x + 1]);
        c.Meet(pDev[x + 2], pMean[x + 2]);
        c.Meet(pDev[x + 3], pMean[x + 3]);
        c.Meet(pDev[x + 4], pMean[x + 4]);
        pOut[x] = c.nMean;
    }
}

RD_KERNEL void SearchRows(const ClImage& cDev, const ClImage& cAvg, ClImage& cOut)
{
    const int nHeight = cDev.m_nHeight;
    const std::ptrdiff_t nWidth = cDev.m_nWidth;
    TpArrayStatic<Byte_t> aDev(static_cast<unsigned long>(nWidth + nMargin));
    TpArrayStatic<Byte_t> aMean(static_cast<unsigned long>(nWidth + nMargin));
    Byte_t* const pDev = aDev.m_pData + nHalf;
    Byte_t* const pMean = aMean.m_pData + nHalf;
    // Rows and columns beyond the image repeat the ones at its edge: these win, being equal.
    for (int y = 0; y < nHeight; ++y)
    {
        const auto dev = [&](int j) { return Row<Byte_t>(cDev, std::max(0, std::min(j, nHeight - 1))); };
        const auto avg = [&](int j) { return Row<Byte_t>(cAvg, std::max(0, std::min(j, nHeight - 1))); };
        SearchDown(dev(y - 2), dev(y - 1), dev(y), dev(y + 1), dev(y + 2), avg(y - 2), avg(y - 1), avg(y), avg(y + 1),
                   avg(y + 2), pDev, pMean, nWidth);
        // Of the first two columns the second one wins, if they are equal, as long as it is in reach; no pixel reaches
        // the first alone.
        pMean[0] = pDev[0] == pDev[1] ? pMean[1] : pMean[0];
        std::fill_n(aDev.m_pData, nHalf, pDev[0]);
        std::fill_n(aMean.m_pData, nHalf, pMean[0]);
        std::fill_n(pDev + nWidth, nHalf, pDev[nWidth - 1]);
        std::fill_n(pMean + nWidth, nHalf, pMean[nWidth - 1]);
        SearchAcross(aDev.m_pData, aMean.m_pData, Row<Byte_t>(cOut, y), nWidth);
    }
}

void NarrowDeviationRows(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev)
{
    DeviationRows(cAvg, cIn, cDev);
}

RD_FOR_WIDE_VECTORS void WideDeviationRows(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev)
{
    DeviationRows(cAvg, cIn, cDev);
}

void NarrowSearchRows(const ClImage& cDev, const ClImage& cAvg, ClImage& cOut)
{
    SearchRows(cDev, cAvg, cOut);
}

RD_FOR_WIDE_VECTORS void WideSearchRows(const ClImage& cDev, const ClImage& cAvg, ClImage& cOut)
{
    SearchRows(cDev, cAvg, cOut);
}
} // namespace

void FastMaskDeviations(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev, bool bWideVectors)
{
    (bWideVectors ? WideDeviationRows : NarrowDeviationRows)(cAvg, cIn, cDev);
}

void FastMaskSearch(const ClImage& cDev, const ClImage& cAvg, ClImage& cOut, bool bWideVectors)
{
    (bWideVectors ? WideSearchRows : NarrowSearchRows)(cDev, cAvg, cOut);
}
