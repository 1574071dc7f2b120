#include "RDImageProcessing/IpFilterMidRotating.hpp"

#include "RDImageProcessing/BoxSums.hpp"
#include "RDImageProcessing/FillTools.hpp"
#include "RDImageProcessing/Ip1to1Base.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/UniformMasks.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <type_traits>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpFilterMidRotating";
// The squared distances of larger masks would not fit their fixed point.
constexpr long nLargestFixPointMask = 15;

/// Refuses masks without pixels, and an image that is not as large as the model or whose samples are not of T's size.
template <class T> void RequireFit(const ClImage& cImage, const ClImage& cModel, int nMask)
{
    if (nMask < 1)
    {
        throw ClExVelmarin(FPC_ERROR_PARAM_OUT_OF_RANGE, szModule, __LINE__);
    }
    if (ClImage::SampleSize(cImage.m_eDataType) != static_cast<int>(sizeof(T)))
    {
        throw ClExVelmarin(FPC_ERROR_FORMAT_NOTSUPPORTED, szModule, __LINE__);
    }
    if (cImage.m_nWidth != cModel.m_nWidth || cImage.m_nHeight != cModel.m_nHeight || !HasBytePerColumn(cImage))
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_DIMENSION, szModule, __LINE__);
    }
}

bool IsFastMask(const ClImage& cImage, int nMask)
{
    return nMask == nFastMask && cImage.m_nWidth >= nFastMask && cImage.m_nHeight >= nFastMask;
}

/// The sum over the mask of nHalf around each pixel of row y that has a whole mask, into pSums at the pixel's column.
/// Each sum takes its terms row by row and from left to right, which counts for floating point.
template <class T, class Sum, class Term>
void SumWholeMasks(const ClImage& cIn, int nHalf, int y, Term&& term, Sum* pSums)
{
    const int nEnd = cIn.m_nWidth - nHalf;
    std::fill(pSums + nHalf, pSums + nEnd, Sum(0));
    for (int j = y - nHalf; j <= y + nHalf; ++j)
    {
        for (int i = -nHalf; i <= nHalf; ++i)
        {
            const T* pIn = Row<T>(cIn, j) + i;
            for (int x = nHalf; x < nEnd; ++x)
            {
                pSums[x] = static_cast<Sum>(pSums[x] + term(x, pIn[x]));
            }
        }
    }
}

/// The same for one pixel, clipped to the image, with the number of terms.
template <class T, class Sum, class Term>
Sum SumClippedMask(const ClImage& cIn, int nHalf, int x, int y, Term&& term, int& nCount)
{
    const int nLeft = std::max(x - nHalf, 0);
    const int nRight = std::min(x + nHalf, cIn.m_nWidth - 1);
    const int nTop = std::max(y - nHalf, 0);
    const int nBottom = std::min(y + nHalf, cIn.m_nHeight - 1);
    Sum sum = 0;
    for (int j = nTop; j <= nBottom; ++j)
    {
        const T* pIn = Row<T>(cIn, j);
        for (int i = nLeft; i <= nRight; ++i)
        {
            sum = static_cast<Sum>(sum + term(x, pIn[i]));
        }
    }
    nCount = (nRight - nLeft + 1) * (nBottom - nTop + 1);
    return sum;
}

/// Sums over all masks. rowTerm(y) gives the function of column and sample that is summed up around the pixels of row
/// y; rowWhole(y) the function of column and sum that takes whole masks, and rowClipped(y) that of column, sum and
/// number of terms for those at the border.
template <class T, class Sum, class RowTerm, class RowWhole, class RowClipped>
void SumMasks(const ClImage& cIn, int nHalf, RowTerm&& rowTerm, RowWhole&& rowWhole, RowClipped&& rowClipped)
{
    const int nWidth = cIn.m_nWidth;
    const int nHeight = cIn.m_nHeight;
    TpArrayStatic<Sum> aSums(static_cast<unsigned long>(nWidth));
    const Sum* const pSums = aSums.m_pData;
    const bool bAnyWhole = pSums != nullptr && nWidth > 2 * nHalf;
    for (int y = nHalf; bAnyWhole && y < nHeight - nHalf; ++y)
    {
        SumWholeMasks<T>(cIn, nHalf, y, rowTerm(y), aSums.m_pData);
        const auto write = rowWhole(y);
        for (int x = nHalf; x < nWidth - nHalf; ++x)
        {
            write(x, pSums[x]);
        }
    }
    for (int y = 0; y < nHeight; ++y)
    {
        const auto term = rowTerm(y);
        const auto write = rowClipped(y);
        const bool bInnerRow = bAnyWhole && y >= nHalf && y < nHeight - nHalf;
        const auto clipped = [&](int x)
        {
            int nCount = 0;
            const Sum sum = SumClippedMask<T, Sum>(cIn, nHalf, x, y, term, nCount);
            write(x, sum, nCount);
        };
        for (int x = 0; x < (bInnerRow ? nHalf : nWidth); ++x)
        {
            clipped(x);
        }
        for (int x = nWidth - nHalf; bInnerRow && x < nWidth; ++x)
        {
            clipped(x);
        }
    }
}

/// Gives each row of an image the function of column and further arguments that stores what value() makes of them.
template <class T, class Value> auto StoreRows(ClImage& cImage, Value value)
{
    return [&cImage, value](int y)
    {
        T* pRow = Row<T>(cImage, y);
        return [pRow, value](int x, auto... args) { pRow[x] = value(args...); };
    };
}

template <class Sum> void DeviationsOfBytes(const ClImage& cAvg, const ClImage& cIn, int nMask, ClImage& cDev)
{
    const Sum nSquare = static_cast<Sum>(static_cast<long>(nMask) * nMask);
    SumMasks<unsigned char, Sum>(
        cIn, nMask / 2,
        [&cAvg](int y)
        {
            const unsigned char* pAvg = Row<unsigned char>(cAvg, y);
            return [pAvg](int x, unsigned char nSample)
            { return static_cast<unsigned char>(std::max(pAvg[x], nSample) - std::min(pAvg[x], nSample)); };
        },
        StoreRows<unsigned char>(cDev, [nSquare](Sum sum) { return static_cast<unsigned char>(sum / nSquare); }),
        StoreRows<unsigned char>(cDev, [](Sum sum, int nCount)
                                 { return static_cast<unsigned char>(sum / static_cast<Sum>(nCount)); }));
}

/// A column's best deviation in the rows around the present one, with the mean at that position and its row.
template <class T> struct ClColumnMinima
{
    explicit ClColumnMinima(int nColumns)
        : m_aDev(static_cast<unsigned long>(nColumns)), m_aMean(static_cast<unsigned long>(nColumns)),
          m_aRow(static_cast<unsigned long>(nColumns))
    {
    }
    void Take(int x, T dev, T mean, int nRow)
    {
        m_aDev.m_pData[x] = dev;
        m_aMean.m_pData[x] = mean;
        m_aRow.m_pData[x] = nRow;
    }
    void TakeIfSmaller(int x, T dev, T mean, int nRow)
    {
        if (dev < m_aDev.m_pData[x])
        {
            Take(x, dev, mean, nRow);
        }
    }

    TpArrayStatic<T> m_aDev;
    TpArrayStatic<T> m_aMean;
    TpArrayStatic<int> m_aRow;
};

/// Brings the minima of all columns from row y - 1 to row y: an entry that has left the rows around y is found anew
/// from the lowest row upwards, any other meets the one new row.
template <class T>
void AdvanceColumns(const ClImage& cDev, const ClImage& cAvg, int nHalf, int y, ClColumnMinima<T>& cMinima)
{
    const int nFirst = y - nHalf;
    const int nNew = y + nHalf;
    const int nLast = std::min(nNew, cDev.m_nHeight - 1);
    for (int x = 0; x < cDev.m_nWidth; ++x)
    {
        if (cMinima.m_aRow.m_pData[x] < nFirst)
        {
            cMinima.Take(x, Row<T>(cDev, nFirst)[x], Row<T>(cAvg, nFirst)[x], nFirst);
            for (int j = nFirst + 1; j <= nLast; ++j)
            {
                cMinima.TakeIfSmaller(x, Row<T>(cDev, j)[x], Row<T>(cAvg, j)[x], j);
            }
        }
        else if (nNew < cDev.m_nHeight)
        {
            cMinima.TakeIfSmaller(x, Row<T>(cDev, nNew)[x], Row<T>(cAvg, nNew)[x], nNew);
        }
    }
}

/// The column of the minimum for each pixel of a row, by the minima of the columns: store(x, column).
template <class T, class Store> void MinimaAcross(const T* pDev, int nWidth, int nHalf, Store&& store)
{
    int nBest = 0;
    for (int i = 1; i < std::min(nHalf, nWidth); ++i)
    {
        if (pDev[i] <= pDev[nBest]) // only here an equal one replaces
        {
            nBest = i;
        }
    }
    for (int x = 0; x < nWidth; ++x)
    {
        const int nFirst = x - nHalf;
        const int nNew = x + nHalf;
        if (nBest < nFirst)
        {
            nBest = nFirst;
            for (int i = nFirst + 1; i <= std::min(nNew, nWidth - 1); ++i)
            {
                nBest = pDev[i] < pDev[nBest] ? i : nBest;
            }
        }
        else if (nNew < nWidth && pDev[nNew] < pDev[nBest])
        {
            nBest = nNew;
        }
        store(x, nBest);
    }
}
} // namespace

ClIpFilterMidRotating::ClIpFilterMidRotating()
{
    m_nFilterWidth = 5;
}

long ClIpFilterMidRotating::ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth)
{
    return ApplyParam(cIn, cOut, nWidth, m_eVarMode);
}

long ClIpFilterMidRotating::ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth, EVarianceMode eMode)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_nFilterWidth = nWidth;
    m_eVarMode = eMode;
    return Apply();
}

void ClIpFilterMidRotating::SetParametersToDefault()
{
    ClIpFilterBase::SetParametersToDefault();
    m_eVarMode = ModeLocalMaskDeviation;
    m_nFilterWidth = 5;
}

void ClIpFilterMidRotating::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.SetName("ClIpFilterMidRotating");
    ClIpFilterBase::PublishParameters(cContainer);
    auto* pMode = cContainer.AddParam<TpParameterEnumPointer<EVarianceMode, ClParameter>>("eVarMode", &m_eVarMode);
    pMode->SetDescription("ClIpFilterMidRotating::m_eVarMode");
    pMode->AddValue(ModeLocalMinDistanceToAverage, "ModeLocalMinDistanceToAverage");
    pMode->AddValue(ModeLocalMaskDeviation, "ModeLocalMaskDeviation");
    pMode->AddValue(ModeLocalMaskDeviationFixPoint, "ModeLocalMaskDeviationFixPoint");
    pMode->AddValue(ModeLocalMaskDeviationFloat, "ModeLocalMaskDeviationFloat");
}

ClProcessorBase* ClIpFilterMidRotating::Create()
{
    return NewProcessor<ClIpFilterMidRotating>();
}

const char* ClIpFilterMidRotating::Name() const
{
    return "ClIpFilterMidRotating";
}

bool ClIpFilterMidRotating::IsWidthAllowed() const
{
    return m_nFilterWidth % 2 != 0 && (MaskSide() == 1 || MaskSide() >= 3);
}

bool ClIpFilterMidRotating::IsWiderThanInput() const
{
    return m_nFilterWidth > m_pInImage->m_nWidth || m_nFilterWidth > m_pInImage->m_nHeight;
}

bool ClIpFilterMidRotating::CanApply()
{
    return m_pInImage != nullptr && m_pOutImage != nullptr && IsWidthAllowed() && !IsWiderThanInput();
}

long ClIpFilterMidRotating::Initialize()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        return FPC_ERROR_PARAM_IS_MISSING;
    }
    if (!IsWidthAllowed())
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    return IsWiderThanInput() ? FPC_ERROR_BITMAP_DIMENSION : FPC_SUCCESS;
}

long ClIpFilterMidRotating::ProcessXY()
{
    if (IsWiderThanInput()) // Initialize has told this, unless it was passed over
    {
        return FPC_ERROR_BITMAP_DIMENSION;
    }
    const int nMask = static_cast<int>(MaskSide());
    if (m_nFilterWidth < 1 || m_eVarMode < ModeLocalMinDistanceToAverage || m_eVarMode > ModeLocalMaskDeviationFloat ||
        (m_eVarMode == ModeLocalMaskDeviationFixPoint && nMask > nLargestFixPointMask))
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (m_pInImage->m_eDataType != ClImage::eUInt8)
    {
        return FPC_ERROR_FORMAT_NOTSUPPORTED;
    }
    if (!HasBytePerColumn(*m_pInImage))
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    switch (m_eVarMode)
    {
    case ModeLocalMaskDeviationFixPoint:
        LocalDeviation<unsigned char, unsigned char, unsigned int, ClConvertFixPoint>(*m_pInImage, nMask, *m_pOutImage);
        return FPC_SUCCESS;
    case ModeLocalMaskDeviationFloat:
        LocalDeviation<unsigned char, unsigned char, float, ClConvertFloat>(*m_pInImage, nMask, *m_pOutImage);
        return FPC_SUCCESS;
    default: return DeviationFromLocalMean(nMask);
    }
}

long ClIpFilterMidRotating::DeviationFromLocalMean(int nMask)
{
    ClIpFilterMid cMid;
    cMid.Timer(IsTimerEnabled());
    ClImage cAvg;
    ClImage cDev;
    if (const long nFailure = cMid.ApplyParam(*m_pInImage, cAvg, nMask))
    {
        return nFailure;
    }
    if (m_eVarMode == ModeLocalMaskDeviation)
    {
        CalculateDeviationByte(cAvg, *m_pInImage, nMask, cDev);
    }
    else if (const long nFailure = CalculateMinDistanceToAverage(cAvg, *m_pInImage, nMask, cDev))
    {
        return nFailure;
    }
    TraceImageByte(cDev);
    m_pOutImage->New(cDev);
    FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, nMask, *m_pOutImage);
    return FPC_SUCCESS;
}

long ClIpFilterMidRotating::ProcessSignedXY()
{
    if (IsWiderThanInput())
    {
        return FPC_SUCCESS;
    }
    const int nMask = static_cast<int>(MaskSide());
    const bool bFixPoint = m_eVarMode == ModeLocalMaskDeviationFixPoint && nMask <= nLargestFixPointMask;
    if (m_nFilterWidth < 1 || (!bFixPoint && m_eVarMode != ModeLocalMaskDeviationFloat))
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (m_pInImage->m_eDataType != ClImage::eSInt8)
    {
        return FPC_ERROR_FORMAT_NOTSUPPORTED;
    }
    if (!HasBytePerColumn(*m_pInImage))
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (bFixPoint)
    {
        LocalDeviation<signed char, signed char, int, ClConvertFixPoint>(*m_pInImage, nMask, *m_pOutImage);
    }
    else
    {
        LocalDeviation<signed char, signed char, float, ClConvertFloat>(*m_pInImage, nMask, *m_pOutImage);
    }
    return FPC_SUCCESS;
}

long ClIpFilterMidRotating::CalculateMinDistanceToAverage(ClImage& cAvg, ClImage& cIn, int nMask, ClImage& cDev)
{
    ClIpDelta cDelta;
    cDelta.Timer(IsTimerEnabled());
    ClImage cDistance;
    if (const long nFailure = cDelta.ApplyParam(cAvg, cIn, cDistance, ClIp1to1Base::nTypeOfInput))
    {
        return nFailure;
    }
    ClIpFilterMid cMid;
    cMid.Timer(IsTimerEnabled());
    return cMid.ApplyParam(cDistance, cDev, nMask);
}

void ClIpFilterMidRotating::CalculateDeviationByte(const ClImage& cAvg, const ClImage& cIn, int nMask, ClImage& cDev)
{
    RequireFit<unsigned char>(cIn, cIn, nMask);
    RequireFit<unsigned char>(cAvg, cIn, nMask);
    cDev.New(cAvg);
    if (IsFastMask(cIn, nMask))
    {
        FastMaskDeviations(cAvg, cIn, cDev);
        return;
    }
    // The absolute distances of 16 by 16 pixels fit 16 bits; a mask is 2 (nMask / 2) + 1 pixels wide.
    if (nMask <= 15)
    {
        DeviationsOfBytes<std::uint16_t>(cAvg, cIn, nMask, cDev);
    }
    else
    {
        DeviationsOfBytes<std::uint64_t>(cAvg, cIn, nMask, cDev);
    }
}

template <class TIn, class TOut, class TMean, class TConvert>
void ClIpFilterMidRotating::LocalDeviation(const ClImage& cIn, int nMask, ClImage& cOut)
{
    constexpr unsigned char eMeanType = std::is_floating_point_v<TMean> ? ClImage::eFloat32 : ClImage::eUInt32;
    ClImage cMean;
    ClImage cDev;
    cMean.Resize(cIn, eMeanType);
    cDev.Resize(cIn, eMeanType);
    cOut.Resize(cIn, ClImage::eUInt8);
    CalculateAverage<TIn, TMean, TConvert>(cIn, nMask, cMean);
    CalculateDeviation<TIn, TMean, TConvert>(cIn, cMean, nMask, cDev);
    TraceImage(cDev);
    FindMinimum<TMean, TOut, TConvert>(cDev, cMean, nMask, cOut);
}

template <class T, class TMean, class TConvert>
void ClIpFilterMidRotating::CalculateAverage(const ClImage& cIn, int nMask, ClImage& cMean)
{
    RequireFit<T>(cIn, cIn, nMask);
    RequireFit<TMean>(cMean, cIn, nMask);
    const long nSide = 2L * (nMask / 2) + 1;
    if (cIn.m_nWidth < nSide || cIn.m_nHeight < nSide)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_DIMENSION, szModule, __LINE__);
    }
    const long nWhole = nSide * nSide;
    const long nSquare = static_cast<long>(nMask) * nMask;
    SumBoxes<T, long>(cIn, nSide,
                      [&cMean, nWhole, nSquare](int y)
                      {
                          TMean* pMean = Row<TMean>(cMean, y);
                          return [pMean, nWhole, nSquare](int x, long nSum, long nSamples)
                          {
                              const long nCount = nSamples == nWhole ? nSquare : nSamples;
                              if constexpr (std::is_floating_point_v<TMean>)
                              {
                                  pMean[x] = static_cast<TMean>(nSum) / static_cast<TMean>(nCount);
                              }
                              else
                              {
                                  // Unsigned in 32 bits for signed samples, too.
                                  const auto nShifted = static_cast<std::uint32_t>(nSum * 256);
                                  pMean[x] = static_cast<TMean>(nShifted / static_cast<std::uint32_t>(nCount));
                              }
                          };
                      });
}

template <class T, class TMean, class TConvert>
void ClIpFilterMidRotating::CalculateDeviation(const ClImage& cIn, const ClImage& cMean, int nMask, ClImage& cDev)
{
    RequireFit<T>(cIn, cIn, nMask);
    RequireFit<TMean>(cMean, cIn, nMask);
    RequireFit<TMean>(cDev, cIn, nMask);
    using Sum = std::conditional_t<std::is_floating_point_v<TMean>, TMean, std::int64_t>;
    const long nSquare = static_cast<long>(nMask) * nMask;
    const auto rowTerm = [&cMean](int y)
    {
        const TMean* pMean = Row<TMean>(cMean, y);
        return [pMean](int x, T sample)
        {
            const Sum distance = static_cast<Sum>(TConvert::template ToMean<Sum>(sample)) - static_cast<Sum>(pMean[x]);
            return distance * distance;
        };
    };
    if constexpr (std::is_floating_point_v<TMean>)
    {
        const TMean factor = static_cast<TMean>(1) / static_cast<TMean>(nSquare);
        SumMasks<T, Sum>(cIn, nMask / 2, rowTerm, StoreRows<TMean>(cDev, [factor](Sum sum) { return sum * factor; }),
                         StoreRows<TMean>(cDev, [](Sum sum, int nCount) { return sum / static_cast<TMean>(nCount); }));
    }
    else
    {
        // Sixteen fractional bits of the squares become eight.
        const auto variance = [](Sum sum, long nCount)
        { return static_cast<TMean>(static_cast<std::uint32_t>((sum / nCount) >> 8)); };
        SumMasks<T, Sum>(cIn, nMask / 2, rowTerm,
                         StoreRows<TMean>(cDev, [variance, nSquare](Sum sum) { return variance(sum, nSquare); }),
                         StoreRows<TMean>(cDev, variance));
    }
}

template <class TDev, class TOut, class TConvert>
void ClIpFilterMidRotating::FindMinimum(const ClImage& cDev, const ClImage& cAvg, int nMask, ClImage& cOut)
{
    RequireFit<TDev>(cDev, cDev, nMask);
    RequireFit<TDev>(cAvg, cDev, nMask);
    RequireFit<TOut>(cOut, cDev, nMask);
    const int nWidth = cDev.m_nWidth;
    const int nHeight = cDev.m_nHeight;
    if (nWidth <= 0 || nHeight <= 0)
    {
        return;
    }
    if constexpr (std::is_same_v<TDev, unsigned char> && std::is_same_v<TOut, unsigned char>)
    {
        if (IsFastMask(cDev, nMask))
        {
            FastMaskSearch(cDev, cAvg, cOut);
            return;
        }
    }
    const int nHalf = nMask / 2;
    ClColumnMinima<TDev> cMinima(nWidth);
    for (int y = 0; y < std::min(std::max(nHalf, 1), nHeight); ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            y == 0 ? cMinima.Take(x, Row<TDev>(cDev, y)[x], Row<TDev>(cAvg, y)[x], y)
                   : cMinima.TakeIfSmaller(x, Row<TDev>(cDev, y)[x], Row<TDev>(cAvg, y)[x], y);
        }
    }
    for (int y = 0; y < nHeight; ++y)
    {
        AdvanceColumns(cDev, cAvg, nHalf, y, cMinima);
        TOut* pOut = Row<TOut>(cOut, y);
        const TDev* pMean = cMinima.m_aMean.m_pData;
        MinimaAcross(cMinima.m_aDev.m_pData, nWidth, nHalf,
                     [pOut, pMean](int x, int nColumn)
                     { pOut[x] = TConvert::template FromMean<TOut>(pMean[nColumn]); });
    }
}

// The instances of the four modes.
#define RD_INSTANCE(TIn, TMean, TConvert)                                                                              \
    template void ClIpFilterMidRotating::LocalDeviation<TIn, TIn, TMean, TConvert>(const ClImage&, int, ClImage&);     \
    template void ClIpFilterMidRotating::CalculateAverage<TIn, TMean, TConvert>(const ClImage&, int, ClImage&);        \
    template void ClIpFilterMidRotating::CalculateDeviation<TIn, TMean, TConvert>(const ClImage&, const ClImage&, int, \
                                                                                  ClImage&);                           \
    template void ClIpFilterMidRotating::FindMinimum<TMean, TIn, TConvert>(const ClImage&, const ClImage&, int,        \
                                                                           ClImage&);
RD_INSTANCE(unsigned char, unsigned int, ClConvertFixPoint)
RD_INSTANCE(unsigned char, float, ClConvertFloat)
RD_INSTANCE(signed char, int, ClConvertFixPoint)
RD_INSTANCE(signed char, float, ClConvertFloat)
#undef RD_INSTANCE
template void ClIpFilterMidRotating::FindMinimum<unsigned char, unsigned char, ClConvertFloat>(const ClImage&,
                                                                                               const ClImage&, int,
                                                                                               ClImage&);
