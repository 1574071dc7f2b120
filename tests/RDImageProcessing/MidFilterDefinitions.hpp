#pragma once

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The box means and their relatives by definition: slow on purpose, sharing no line with the filter.
namespace MidFilterDefinitions
{
using Size = std::pair<int, int>;

template <class T> T Sample(const ClImage& cImage, int x, int y)
{
    return Row<T>(cImage, y)[x];
}

/// Sum and number of the samples in the window of nHalf around (x, y), clipped to the image.
template <class T> std::pair<double, int> ClippedSum(const ClImage& cIn, int x, int y, int nHalfX, int nHalfY)
{
    double dSum = 0;
    int nCount = 0;
    for (int j = y - nHalfY; j <= y + nHalfY; ++j)
    {
        for (int i = x - nHalfX; i <= x + nHalfX; ++i)
        {
            if (i >= 0 && j >= 0 && i < cIn.m_nWidth && j < cIn.m_nHeight)
            {
                dSum += Sample<T>(cIn, i, j);
                ++nCount;
            }
        }
    }
    return {dSum, nCount};
}

/// Sums over windows of one-byte samples, by the sums of all rectangles that begin at (0, 0).
class ClSumTable
{
public:
    template <class T>
    ClSumTable(const ClImage& cIn, T)
        : m_nWidth(cIn.m_nWidth), m_nHeight(cIn.m_nHeight),
          m_anSums(static_cast<std::size_t>(m_nWidth + 1) * static_cast<std::size_t>(m_nHeight + 1))
    {
        for (int y = 0; y < m_nHeight; ++y)
        {
            for (int x = 0; x < m_nWidth; ++x)
            {
                UpTo(x + 1, y + 1) = Sample<T>(cIn, x, y) + UpTo(x, y + 1) + UpTo(x + 1, y) - UpTo(x, y);
            }
        }
    }

    /// Sum and number of the samples in the window of nHalf around (x, y), clipped to the image.
    std::pair<long, long> Clipped(int x, int y, int nHalf)
    {
        const int nLeft = std::max(x - nHalf, 0);
        const int nTop = std::max(y - nHalf, 0);
        const int nRight = std::min(x + nHalf + 1, m_nWidth);
        const int nBottom = std::min(y + nHalf + 1, m_nHeight);
        const long nSum = UpTo(nRight, nBottom) - UpTo(nLeft, nBottom) - UpTo(nRight, nTop) + UpTo(nLeft, nTop);
        return {nSum, static_cast<long>(nRight - nLeft) * (nBottom - nTop)};
    }

private:
    long& UpTo(int x, int y)
    {
        return m_anSums[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_nWidth + 1) +
                        static_cast<std::size_t>(x)];
    }

    const int m_nWidth;
    const int m_nHeight;
    std::vector<long> m_anSums;
};

/// The 8-bit box mean as it is defined.
template <class T> void BoxMeanByDefinition(const ClImage& cIn, int nHalf, ClImage& cOut)
{
    cOut.New(cIn);
    ClSumTable cSums(cIn, T());
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            const auto [nSum, nCount] = cSums.Clipped(x, y, nHalf);
            Row<T>(cOut, y)[x] = static_cast<T>(nSum / nCount);
        }
    }
}

inline int Floor(double d)
{
    return static_cast<int>(std::floor(d));
}

inline void Mean3x3ByDefinition(const ClImage& cIn, ClImage& cOut)
{
    cOut.New(cIn);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            const auto [dSum, nCount] = ClippedSum<unsigned char>(cIn, x, y, 1, 1);
            const int nMean = nCount == 4   ? Floor((dSum + 2) / 4)
                              : nCount == 6 ? Floor((dSum + 3) * 682 / 4096)
                                            : Floor((dSum + 4) * 455 / 4096);
            Row<unsigned char>(cOut, y)[x] = static_cast<unsigned char>(nMean);
        }
    }
}

inline void SignedMean3x3ByDefinition(const ClImage& cIn, ClImage& cOut)
{
    cOut.New(cIn);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            const auto [dSum, nCount] = ClippedSum<signed char>(cIn, x, y, 1, 1);
            const int nMean = nCount == 4   ? Floor(dSum / 4)
                              : nCount == 6 ? Floor(dSum * 42 / 256)
                                            : Floor(dSum * 28 / 256);
            Row<signed char>(cOut, y)[x] = static_cast<signed char>(nMean);
        }
    }
}

/// Number of samples by which a pass in one direction divides at position i of a line of nSize.
inline long DivisorAt(int i, int nSize, long nWidth)
{
    const int nHalf = static_cast<int>(nWidth / 2);
    if (i <= nHalf)
    {
        return nHalf + 1 + i;
    }
    return i < nSize - nHalf ? nWidth : nSize - i + nHalf;
}

/// One direction, integers: rounded by nHalf after lifting by nOffset.
template <class T>
void PassByDefinition(const ClImage& cIn, bool bRows, long nWidth, long nOffset, bool bRound, ClImage& cOut)
{
    const int nHalf = static_cast<int>(nWidth / 2);
    const int nLines = bRows ? cIn.m_nHeight : cIn.m_nWidth;
    const int nSize = bRows ? cIn.m_nWidth : cIn.m_nHeight;
    cOut.New(cIn);
    std::vector<long> anUpTo(static_cast<std::size_t>(nSize) + 1); // sums of so many samples of the line
    for (int nLine = 0; nLine < nLines; ++nLine)
    {
        for (int i = 0; i < nSize; ++i)
        {
            const long nSample = bRows ? Sample<T>(cIn, i, nLine) : Sample<T>(cIn, nLine, i);
            anUpTo[static_cast<std::size_t>(i) + 1] = anUpTo[static_cast<std::size_t>(i)] + nSample + nOffset;
        }
        for (int i = 0; i < nSize; ++i)
        {
            const long nSum = anUpTo[static_cast<std::size_t>(std::min(i + nHalf + 1, nSize))] -
                              anUpTo[static_cast<std::size_t>(std::max(i - nHalf, 0))] + (bRound ? nHalf : 0);
            T& result = bRows ? Row<T>(cOut, nLine)[i] : Row<T>(cOut, i)[nLine];
            result = static_cast<T>(nSum / DivisorAt(i, nSize, nWidth) - nOffset);
        }
    }
}

/// One direction, floating point: the sum runs along the line, a sample enters before and one leaves after each mean.
template <class T> std::vector<T> RunningMeans(const std::vector<T>& aIn, long nWidth)
{
    const int nSize = static_cast<int>(aIn.size());
    const int nHalf = static_cast<int>(nWidth / 2);
    std::vector<T> aOut(aIn.size());
    double dSum = 0.0;
    for (int i = -nHalf; i < nSize; ++i)
    {
        if (i + nHalf < nSize)
        {
            dSum += static_cast<double>(aIn[static_cast<std::size_t>(i + nHalf)]);
        }
        if (i >= 0)
        {
            aOut[static_cast<std::size_t>(i)] = static_cast<T>(dSum / static_cast<double>(DivisorAt(i, nSize, nWidth)));
        }
        if (i >= nHalf)
        {
            dSum -= static_cast<double>(aIn[static_cast<std::size_t>(i - nHalf)]);
        }
    }
    return aOut;
}

template <class T> void FloatPassByDefinition(const ClImage& cIn, bool bRows, long nWidth, ClImage& cOut)
{
    cOut.New(cIn);
    const int nLines = bRows ? cIn.m_nHeight : cIn.m_nWidth;
    const int nSize = bRows ? cIn.m_nWidth : cIn.m_nHeight;
    for (int nLine = 0; nLine < nLines; ++nLine)
    {
        std::vector<T> aLine;
        for (int i = 0; i < nSize; ++i)
        {
            aLine.push_back(bRows ? Sample<T>(cIn, i, nLine) : Sample<T>(cIn, nLine, i));
        }
        const std::vector<T> aMeans = RunningMeans(aLine, nWidth);
        for (int i = 0; i < nSize; ++i)
        {
            (bRows ? Row<T>(cOut, nLine)[i] : Row<T>(cOut, i)[nLine]) = aMeans[static_cast<std::size_t>(i)];
        }
    }
}

/// A pass of the other types, with the width reduced to fit; returns the width in force.
template <class T> long TypedPassByDefinition(const ClImage& cIn, bool bRows, long nWidth, ClImage& cOut)
{
    const int nSize = bRows ? cIn.m_nWidth : cIn.m_nHeight;
    nWidth = nSize <= nWidth ? nSize - 1 : nWidth;
    if constexpr (std::is_floating_point_v<T>)
    {
        FloatPassByDefinition<T>(cIn, bRows, nWidth, cOut);
    }
    else
    {
        const long nOffset = -static_cast<long>(std::numeric_limits<T>::min());
        PassByDefinition<T>(cIn, bRows, nWidth, nOffset, true, cOut);
    }
    return nWidth;
}

template <class T> void FillFlat(ClImage& cImage, unsigned char eType, int nWidth, int nHeight, T value)
{
    cImage.NewWithType(eType, nWidth, nHeight, 1, 0, 0);
    for (int y = 0; y < nHeight; ++y)
    {
        std::fill_n(Row<T>(cImage, y), nWidth, value);
    }
}

class ClDirections
{
public:
    ClDirections(int nWidth, int nHeight, unsigned int nSeed)
    {
        FillRandom8(m_cDx, nWidth, nHeight, nSeed);
        FillRandom8(m_cDy, nWidth, nHeight, nSeed + 1);
    }
    void GiveTo(ClIpFilterMid& cFilter)
    {
        cFilter.m_pInDxImage = &m_cDx;
        cFilter.m_pInDyImage = &m_cDy;
    }

    ClImage m_cDx;
    ClImage m_cDy;
};

inline void DirectedByDefinition(const ClImage& cIn, const ClDirections& cDirections, int nWidth, bool bOrtho,
                                 ClImage& cOut)
{
    cOut.New(cIn);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            const int nDx = Sample<signed char>(cDirections.m_cDx, x, y);
            const int nDy = Sample<signed char>(cDirections.m_cDy, x, y);
            const double dStepX = (bOrtho ? nDy : nDx) * 2 / 256.0;
            const double dStepY = (bOrtho ? nDx : -nDy) * 2 / 256.0;
            const int nSteps = std::min({nWidth / 2, x, y, cIn.m_nWidth - 1 - x, cIn.m_nHeight - 1 - y});
            int nSum = 0;
            for (int i = -nSteps; i <= nSteps; ++i)
            {
                nSum += Sample<unsigned char>(cIn, Floor(x + 0.5 + i * dStepX), Floor(y + 0.5 + i * dStepY));
            }
            Row<unsigned char>(cOut, y)[x] = static_cast<unsigned char>(nSum / (2 * nSteps + 1));
        }
    }
}

const Size aSizes[] = {{3, 3}, {4, 3}, {3, 7}, {5, 5}, {5, 40}, {6, 9}, {21, 22}, {67, 6}, {64, 64}, {70, 33}};
} // namespace MidFilterDefinitions
