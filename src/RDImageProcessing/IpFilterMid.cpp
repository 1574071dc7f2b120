#include "RDImageProcessing/IpFilterMid.hpp"

#include "RDImageProcessing/BoxMean.hpp"
#include "RDImageProcessing/BoxSums.hpp"
#include "RDImageProcessing/FillTools.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/SampleCast.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpFilterMid";
constexpr long nNoSuchType = 1; // no pass returns a positive result

// 255 times the square of this odd width still fits 32 bits unsigned, and 128 times it 32 bits signed.
constexpr long nWidest32BitSums = 4095;

/// The truncated mean of every box, of samples of one byte.
template <class T, class Sum> void BoxMeans(const ClImage& cIn, long nWidth, ClImage& cOut)
{
    SumBoxes<T, Sum>(cIn, nWidth,
                     [&cOut](int y)
                     {
                         T* pOut = Row<T>(cOut, y);
                         return [pOut](int x, Sum sum, Sum nSamples) { pOut[x] = static_cast<T>(sum / nSamples); };
                     });
}

/// The box of width 3. Rule turns the sums of 4, 6 and 9 samples into means, rowWriter(y) gives the function that takes
/// column and mean.
template <class T, class Rule, class RowWriter> void Means3x3(const ClImage& cIn, RowWriter&& rowWriter)
{
    const int nLast = cIn.m_nWidth - 1;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        auto write = rowWriter(y);
        const bool bTop = y == 0;
        const bool bBottom = y == cIn.m_nHeight - 1;
        const T* const p0 = Row<T>(cIn, bTop ? 0 : y - 1);
        const T* const p1 = Row<T>(cIn, bTop ? 1 : y);
        if (bTop || bBottom)
        {
            const auto column = [p0, p1](int x) { return p0[x] + p1[x]; };
            write(0, Rule::Of4(column(0) + column(1)));
            for (int x = 1; x < nLast; ++x)
            {
                write(x, Rule::Of6(column(x - 1) + column(x) + column(x + 1)));
            }
            write(nLast, Rule::Of4(column(nLast - 1) + column(nLast)));
        }
        else
        {
            const T* const p2 = Row<T>(cIn, y + 1);
            const auto column = [p0, p1, p2](int x) { return p0[x] + p1[x] + p2[x]; };
            write(0, Rule::Of6(column(0) + column(1)));
            for (int x = 1; x < nLast; ++x)
            {
                write(x, Rule::Of9(column(x - 1) + column(x) + column(x + 1)));
            }
            write(nLast, Rule::Of6(column(nLast - 1) + column(nLast)));
        }
    }
}

/// 4096 / 6 and 4096 / 9 rounded down. Not everywhere the exact quotient, and meant to be so; a flat box keeps its
/// value.
struct ClUnsigned3x3
{
    static int Of4(int nSum) { return (nSum + 2) >> 2; }
    static int Of6(int nSum) { return ((nSum + 3) * 682) >> 12; }
    static int Of9(int nSum) { return ((nSum + 4) * 455) >> 12; }
};

/// 256 / 6 and 256 / 9 rounded down; negative sums round downwards.
struct ClSigned3x3
{
    static int Of4(int nSum) { return static_cast<int>(static_cast<unsigned int>(nSum) >> 2); }
    static int Of6(int nSum) { return (nSum * 42) >> 8; }
    static int Of9(int nSum) { return (nSum * 28) >> 8; }
};

struct ClExact3x3
{
    static double Of4(int nSum) { return nSum * 0.25; }
    static double Of6(int nSum) { return nSum * 0.16666666666666666; }
    static double Of9(int nSum) { return nSum * 0.1111111111111111; }
};

/// The row function that stores a mean as a sample of one byte.
template <class T> auto StoreByte(ClImage& cOut)
{
    return [&cOut](int y)
    {
        T* pOut = Row<T>(cOut, y);
        return [pOut](int x, int nMean) { pOut[x] = static_cast<T>(nMean); };
    };
}

/// The function of row y that splits a mean into its whole part and eight fractional bits.
auto StoreParts(ClImage& cOut, ClImage& cRemainder, int y)
{
    unsigned char* pOut = Row<unsigned char>(cOut, y);
    unsigned char* pRemainder = Row<unsigned char>(cRemainder, y);
    return [pOut, pRemainder](int x, double dMean)
    {
        pOut[x] = CastSample<unsigned char>(dMean);
        pRemainder[x] = CastSample<unsigned char>((dMean - std::floor(dMean)) * 256.0);
    };
}

/// How the passes in one direction sum up samples of type T: in Acc, wrapping, the half width added once for rounding.
/// Signed samples are lifted by half their range, so that sums are positive and the quotients round alike.
template <class T, class Acc> struct TpRoundedMean
{
    using Sample = T;
    using Sum = std::make_unsigned_t<Acc>;
    static constexpr std::int64_t nOffset = -static_cast<std::int64_t>(std::numeric_limits<T>::min());

    static Sum Start(long nHalf) { return static_cast<Sum>(nHalf); }
    static Sum Load(T value) { return static_cast<Sum>(static_cast<std::int64_t>(value) + nOffset); }
    static T Mean(Sum sum, long nSamples)
    {
        // A 32-bit sum widens with the sign of its type; the number of samples is positive.
        using Wide = std::conditional_t<std::is_signed_v<Acc>, long, unsigned long>;
        const Wide nMean = static_cast<Wide>(static_cast<Acc>(sum)) / static_cast<Wide>(nSamples);
        return static_cast<T>(static_cast<std::int64_t>(nMean) - nOffset);
    }
};

/// The same for floating point: no rounding, and sums as rounded by the order of the samples.
template <class T> struct TpRoundedMean<T, double>
{
    using Sample = T;
    using Sum = double;

    static Sum Start(long) { return 0.0; }
    static Sum Load(T value) { return static_cast<double>(value); }
    static T Mean(Sum sum, long nSamples) { return static_cast<T>(sum / static_cast<double>(nSamples)); }
};

/// Signed bytes as they are, the quotient truncated toward zero.
struct ClTruncatedByteMean
{
    using Sample = signed char;
    using Sum = long;

    static Sum Start(long) { return 0; }
    static Sum Load(signed char value) { return value; }
    static signed char Mean(Sum sum, long nSamples) { return static_cast<signed char>(sum / nSamples); }
};

template <class Rule> void SlideAlongRows(const ClImage& cIn, long nWidth, ClImage& cOut)
{
    using T = typename Rule::Sample;
    const int nHalf = static_cast<int>(nWidth / 2);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const T* const pIn = Row<T>(cIn, y);
        T* const pOut = Row<T>(cOut, y);
        SlideWindow(
            cIn.m_nWidth, nHalf, nWidth, Rule::Start(nHalf), [pIn](int x) { return Rule::Load(pIn[x]); },
            [pOut](int x, typename Rule::Sum sum, long nSamples) { pOut[x] = Rule::Mean(sum, nSamples); });
    }
}

/// The same window down all columns at once, so that memory is walked in rows.
template <class Rule> void SlideAlongColumns(const ClImage& cIn, long nWidth, ClImage& cOut)
{
    using T = typename Rule::Sample;
    using Sum = typename Rule::Sum;
    const int nHalf = static_cast<int>(nWidth / 2);
    const int nColumns = cIn.m_nWidth;
    const int nHeight = cIn.m_nHeight;
    TpArrayStatic<Sum> aSums(static_cast<unsigned long>(nColumns));
    Sum* const pSums = aSums.m_pData;
    std::fill_n(pSums, nColumns, Rule::Start(nHalf));
    const auto addRow = [&](int y)
    {
        const T* pIn = Row<T>(cIn, y);
        for (int x = 0; x < nColumns; ++x)
        {
            pSums[x] += Rule::Load(pIn[x]);
        }
    };
    for (int y = 0; y < nHalf; ++y)
    {
        addRow(y);
    }
    for (int y = 0; y < nHeight; ++y)
    {
        if (y + nHalf < nHeight)
        {
            addRow(y + nHalf);
        }
        const long nSamples = y <= nHalf            ? static_cast<long>(nHalf) + 1 + y
                              : y < nHeight - nHalf ? nWidth
                                                    : static_cast<long>(nHeight) - y + nHalf;
        T* pOut = Row<T>(cOut, y);
        for (int x = 0; x < nColumns; ++x)
        {
            pOut[x] = Rule::Mean(pSums[x], nSamples);
        }
        if (y >= nHalf)
        {
            const T* pIn = Row<T>(cIn, y - nHalf);
            for (int x = 0; x < nColumns; ++x)
            {
                pSums[x] -= Rule::Load(pIn[x]);
            }
        }
    }
}

/// The accumulator of a sample type.
template <class T> struct TpAccumulator
{
    using Type =
        std::conditional_t<std::is_floating_point_v<T>, double,
                           std::conditional_t<std::is_signed_v<T>, std::conditional_t<sizeof(T) == 4, long, int>,
                                              std::conditional_t<sizeof(T) == 4, unsigned long, unsigned int>>>;
};

/// The sum of 2 nSteps + 1 samples from nSteps steps before the middle of pixel (x, y) to nSteps behind it. Steps and
/// positions have eight fractional bits, positions counted from the pixel, since columns beyond 2 to the power of 23
/// would not fit; a step is at most one pixel in each axis.
long SumAlongLine(const ClImage& cIn, int x, int y, int nStepX, int nStepY, int nSteps)
{
    int nX = 128 - nStepX * nSteps;
    int nY = 128 - nStepY * nSteps;
    long nSum = 0;
    for (int i = -nSteps; i <= nSteps; ++i)
    {
        nSum += Row<unsigned char>(cIn, y + (nY >> 8))[x + (nX >> 8)];
        nX += nStepX;
        nY += nStepY;
    }
    return nSum;
}
} // namespace

long ClIpFilterMid::ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_nFilterWidth = nWidth;
    return Apply();
}

void ClIpFilterMid::SetParametersToDefault()
{
    ClIpFilterBase::SetParametersToDefault();
}

ClProcessorBase* ClIpFilterMid::Create()
{
    return NewProcessor<ClIpFilterMid>();
}

const char* ClIpFilterMid::Name() const
{
    return "ClIpFilterMid";
}

long ClIpFilterMid::Initialize()
{
    m_nFilterWidth |= 1;
    return FPC_SUCCESS;
}

long ClIpFilterMid::DoProcess()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    const long nResult = DispatchSampleType(m_pInImage->m_eDataType, nNoSuchType,
                                            [this](auto cTag)
                                            {
                                                using T = typename decltype(cTag)::Type;
                                                if constexpr (std::is_same_v<T, unsigned char>)
                                                {
                                                    return ClIpFilterBase::DoProcess();
                                                }
                                                else
                                                {
                                                    return ProcessT<T, typename TpAccumulator<T>::Type>();
                                                }
                                            });
    if (nResult == nNoSuchType)
    {
        throw ClExVelmarin(FPC_ERROR_PARAM_OUT_OF_RANGE, szModule, __LINE__);
    }
    return nResult;
}

bool ClIpFilterMid::CopyIfTooSmall()
{
    // An even width reaches half of it to both sides, too, so its window is one wider; below 1 there is no window.
    if (m_nFilterWidth >= 1 && m_pInImage->m_nWidth >= (m_nFilterWidth | 1) &&
        m_pInImage->m_nHeight >= m_nFilterWidth && HasBytePerColumn(*m_pInImage))
    {
        return false;
    }
    *m_pOutImage = *m_pInImage;
    return true;
}

long ClIpFilterMid::ProcessXY()
{
    if (CopyIfTooSmall())
    {
        return FPC_SUCCESS;
    }
    m_pOutImage->New(*m_pInImage);
    if (m_pRemainder != nullptr)
    {
        if (m_pRemainder == m_pInImage || m_pRemainder == m_pOutImage)
        {
            return FPC_ERROR_BITMAP_PTR;
        }
        m_pRemainder->New(*m_pInImage);
        m_nFilterWidth == 3 ? Process3x3Remainder() : ProcessXYRemainder();
    }
    else if (m_nFilterWidth == 3)
    {
        Process3x3();
    }
    else if (m_nFilterWidth >= nLeastFastBox && m_nFilterWidth <= nMostFastBox && m_nFilterWidth % 2 != 0)
    {
        FastBoxMeans(*m_pInImage, static_cast<int>(m_nFilterWidth), *m_pOutImage);
    }
    else if (m_nFilterWidth <= nWidest32BitSums)
    {
        BoxMeans<unsigned char, std::uint32_t>(*m_pInImage, m_nFilterWidth, *m_pOutImage);
    }
    else
    {
        BoxMeans<unsigned char, std::uint64_t>(*m_pInImage, m_nFilterWidth, *m_pOutImage);
    }
    return FPC_SUCCESS;
}

void ClIpFilterMid::Process3x3()
{
    Means3x3<unsigned char, ClUnsigned3x3>(*m_pInImage, StoreByte<unsigned char>(*m_pOutImage));
}

void ClIpFilterMid::Process3x3Remainder()
{
    Means3x3<unsigned char, ClExact3x3>(*m_pInImage,
                                        [this](int y) { return StoreParts(*m_pOutImage, *m_pRemainder, y); });
}

void ClIpFilterMid::ProcessXYRemainder()
{
    SumBoxes<unsigned char, double>(*m_pInImage, m_nFilterWidth,
                                    [this](int y)
                                    {
                                        return [write = StoreParts(*m_pOutImage, *m_pRemainder, y)](
                                                   int x, double dSum, double dSamples) { write(x, dSum / dSamples); };
                                    });
}

long ClIpFilterMid::ProcessSignedXY()
{
    if (CopyIfTooSmall())
    {
        return FPC_SUCCESS;
    }
    m_pOutImage->New(*m_pInImage);
    if (m_nFilterWidth == 3)
    {
        ProcessSigned3x3();
    }
    else if (m_nFilterWidth <= nWidest32BitSums)
    {
        BoxMeans<signed char, std::int32_t>(*m_pInImage, m_nFilterWidth, *m_pOutImage);
    }
    else
    {
        BoxMeans<signed char, std::int64_t>(*m_pInImage, m_nFilterWidth, *m_pOutImage);
    }
    return FPC_SUCCESS;
}

void ClIpFilterMid::ProcessSigned3x3()
{
    Means3x3<signed char, ClSigned3x3>(*m_pInImage, StoreByte<signed char>(*m_pOutImage));
}

/// The frame of a pass in one direction, in which the image has nSize samples: the width is reduced until it fits,
/// slide() does the work.
template <class Slide> long ClIpFilterMid::Pass(int nSize, bool bOddWidths, Slide&& slide)
{
    m_pOutImage->New(*m_pInImage);
    if (nSize <= m_nFilterWidth)
    {
        m_nFilterWidth = nSize - 1L;
        if (bOddWidths && m_nFilterWidth % 2 == 0)
        {
            --m_nFilterWidth;
        }
    }
    if (m_nFilterWidth == 0)
    {
        return FPC_ERROR_INTERNAL;
    }
    // A sample alone is its own mean.
    if (m_nFilterWidth <= 1 || !HasBytePerColumn(*m_pInImage))
    {
        *m_pOutImage = *m_pInImage;
    }
    else
    {
        slide();
    }
    return FPC_SUCCESS;
}

template <class Rule> long ClIpFilterMid::PassX(bool bOddWidths)
{
    return Pass(m_pInImage->m_nWidth, bOddWidths,
                [this] { SlideAlongRows<Rule>(*m_pInImage, m_nFilterWidth, *m_pOutImage); });
}

template <class Rule> long ClIpFilterMid::PassY(bool bOddWidths)
{
    return Pass(m_pInImage->m_nHeight, bOddWidths,
                [this] { SlideAlongColumns<Rule>(*m_pInImage, m_nFilterWidth, *m_pOutImage); });
}

long ClIpFilterMid::ProcessX()
{
    return PassX<TpRoundedMean<unsigned char, unsigned int>>(true);
}

long ClIpFilterMid::ProcessY()
{
    return PassY<TpRoundedMean<unsigned char, unsigned int>>(true);
}

long ClIpFilterMid::ProcessSignedX()
{
    return PassX<ClTruncatedByteMean>(true);
}

long ClIpFilterMid::ProcessSignedY()
{
    return PassY<ClTruncatedByteMean>(true);
}

template <class T, class Acc> long ClIpFilterMid::ProcessT()
{
    switch (m_nMode)
    {
    case eModeX: return ProcessT_X<T, Acc>();
    case eModeY: return ProcessT_Y<T, Acc>();
    case eModeXY: return ProcessT_XY<T, Acc>();
    case eModeDirected:
    case eModeDirectedOrtho: return FPC_ERROR_FORMAT_NOTSUPPORTED;
    default: throw ClExVelmarin(FPC_ERROR_PARAM_OUT_OF_RANGE, szModule, __LINE__);
    }
}

template <class T, class Acc> long ClIpFilterMid::ProcessT_X()
{
    return PassX<TpRoundedMean<T, Acc>>(false);
}

template <class T, class Acc> long ClIpFilterMid::ProcessT_Y()
{
    return PassY<TpRoundedMean<T, Acc>>(false);
}

template <class T, class Acc> long ClIpFilterMid::ProcessT_XY()
{
    return InTwoPasses([this] { return ProcessT_X<T, Acc>(); }, [this] { return ProcessT_Y<T, Acc>(); });
}

long ClIpFilterMid::ProcessDirected(bool bOrtho)
{
    if (m_pInDxImage == nullptr)
    {
        throw ClException("m_pInDxImage is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    if (m_pInDyImage == nullptr)
    {
        throw ClException("m_pInDyImage is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    const ClImage& cIn = *m_pInImage;
    for (const ClImage* pImage : {m_pInDxImage, m_pInDyImage})
    {
        if (ClImage::SampleSize(pImage->m_eDataType) != 1 || pImage->m_nPlanes != cIn.m_nPlanes)
        {
            return FPC_ERROR_FORMAT_NOTSUPPORTED;
        }
        if (pImage->m_nWidth != cIn.m_nWidth || pImage->m_nHeight != cIn.m_nHeight || !HasBytePerColumn(*pImage))
        {
            return FPC_ERROR_BITMAP_DIMENSION;
        }
    }
    m_pOutImage->New(cIn);
    const long nHalfWidth = m_nFilterWidth / 2;
    if (m_nFilterWidth < 1 || cIn.m_nWidth <= 2 * nHalfWidth || !HasBytePerColumn(cIn))
    {
        *m_pOutImage = cIn;
        return FPC_ERROR_BITMAP_DIMENSION;
    }
    const int nHalf = static_cast<int>(nHalfWidth);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const signed char* pDx = Row<signed char>(*m_pInDxImage, y);
        const signed char* pDy = Row<signed char>(*m_pInDyImage, y);
        unsigned char* pOut = Row<unsigned char>(*m_pOutImage, y);
        const int nToEdgeY = std::min(y, cIn.m_nHeight - 1 - y);
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            // Doubling turns the scale of 128 into 256, one pixel. Directions have y upwards against the rows.
            const int nStepX = bOrtho ? 2 * pDy[x] : 2 * pDx[x];
            const int nStepY = bOrtho ? 2 * pDx[x] : -2 * pDy[x];
            const int nToEdge = std::min({x, cIn.m_nWidth - 1 - x, nToEdgeY});
            const int nSteps = std::min(nToEdge, nHalf);
            const long nSamples = nToEdge >= nHalf ? m_nFilterWidth : 2L * nSteps + 1;
            pOut[x] = static_cast<unsigned char>(SumAlongLine(cIn, x, y, nStepX, nStepY, nSteps) / nSamples);
        }
    }
    return FPC_SUCCESS;
}
