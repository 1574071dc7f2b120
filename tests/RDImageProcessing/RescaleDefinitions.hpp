#pragma once

#include "RDImageProcessing/IpRescale.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

/// Rescaling by definition, pixel by pixel.
namespace RescaleDefinitions
{
using Mode_t = ClIpRescale::eProcessingMode;
constexpr Mode_t aModes[] = {ClIpRescale::ModeWholeNumbered, ClIpRescale::ModeNearestNeighbour,
                             ClIpRescale::ModeBiLinear, ClIpRescale::ModeBiCubic, ClIpRescale::ModeBiLinearFantMar};

/// Size and resolutions in force.
struct StForce
{
    int nWidth;
    int nHeight;
    int nPelsX;
    int nPelsY;
};

inline StForce ForceOfPels(const ClImage& cIn, int nPelsX, int nPelsY)
{
    return {static_cast<int>(double(cIn.m_nWidth) * nPelsX / cIn.m_nXRes + 0.9999),
            static_cast<int>(double(cIn.m_nHeight) * nPelsY / cIn.m_nYRes + 0.9999), nPelsX, nPelsY};
}

inline StForce ForceOfSize(const ClImage& cIn, int nWidth, int nHeight)
{
    return {nWidth, nHeight, nWidth * cIn.m_nXRes / cIn.m_nWidth, nHeight * cIn.m_nYRes / cIn.m_nHeight};
}

inline int At(const ClImage& cImage, int nX, int nY)
{
    return SampleAt<unsigned char>(cImage, nX, nY);
}

inline void Make(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    cOut.NewWithType((cIn.m_eDataType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, c.nWidth, c.nHeight, 1, c.nPelsX,
                     c.nPelsY);
}

/// Means of the spans of one line of samples, step by step.
inline std::vector<int> LineByDefinition(const std::vector<int>& aIn, long nSpan, int nOut)
{
    std::vector<int> aOut;
    long nEnd = nSpan - 4096;
    long nSum = 0;
    long j = 0;
    for (; j < long(aIn.size()); ++j)
    {
        const long nSample = aIn[static_cast<std::size_t>(j)];
        if (nEnd < 4096 * j)
        {
            aOut.push_back(static_cast<int>((nSum + (nEnd - 4096 * (j - 1)) * nSample) / nSpan));
            nSum = (4096 * j - nEnd) * nSample;
            nEnd += nSpan;
        }
        else
        {
            nSum += 4096 * nSample;
        }
    }
    aOut.push_back(static_cast<int>(nSum / (nSpan + 4096 * (j - 1) - nEnd)));
    aOut.resize(static_cast<std::size_t>(nOut), aOut.back());
    return aOut;
}

inline void ShrinkXByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    Make(cIn, {c.nWidth, cIn.m_nHeight, c.nPelsX, cIn.m_nYRes}, cOut);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        std::vector<int> aLine;
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            aLine.push_back(At(cIn, x, y));
        }
        aLine = LineByDefinition(aLine, cIn.m_nXRes * 4096L / c.nPelsX, c.nWidth);
        for (int x = 0; x < c.nWidth; ++x)
        {
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(aLine[static_cast<std::size_t>(x)]));
        }
    }
}

inline void ShrinkYByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    Make(cIn, {cIn.m_nWidth, c.nHeight, cIn.m_nXRes, c.nPelsY}, cOut);
    const long nSpan = std::max(c.nPelsY == 0 ? 0 : cIn.m_nYRes * 4096L / c.nPelsY, cIn.m_nHeight * 4096L / c.nHeight);
    for (int x = 0; x < cIn.m_nWidth; ++x)
    {
        std::vector<int> aLine;
        for (int y = 0; y < cIn.m_nHeight; ++y)
        {
            aLine.push_back(At(cIn, x, y));
        }
        aLine = LineByDefinition(aLine, nSpan, c.nHeight);
        for (int y = 0; y < c.nHeight; ++y)
        {
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(aLine[static_cast<std::size_t>(y)]));
        }
    }
}

/// One direction of the enlargement.
struct StGrow
{
    StGrow(int nSize, int nActSize) : nLast(nSize - 1)
    {
        const double dRatio = double(nActSize) / nSize;
        nStep = nSize * 4096L / nActSize;
        nFrom = static_cast<int>(dRatio * 0.5 + 0.5);
        nTo = nActSize - 1 - nFrom;
        nStart = static_cast<long>(double(nStep) * (nFrom + dRatio * -0.5 + 0.5));
    }
    bool Inside(int n) const { return n >= nFrom && n <= nTo; }
    long Place(int n) const { return nStart + (n - nFrom) * nStep; }
    int Edge(int n) const { return n < nFrom ? 0 : nLast; }

    int nLast;
    long nStep;
    int nFrom;
    int nTo;
    long nStart;
};

inline long Between(long nPlace, long nFirst, long nSecond)
{
    return ((((nPlace >> 12) + 1) * 4096 - nPlace) * nFirst + nPlace % 4096 * nSecond) >> 12;
}

inline void GrowByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    Make(cIn, c, cOut);
    const StGrow cX(cIn.m_nWidth, c.nWidth);
    const StGrow cY(cIn.m_nHeight, c.nHeight);
    for (int y = 0; y < c.nHeight; ++y)
    {
        for (int x = 0; x < c.nWidth; ++x)
        {
            const long fx = cX.Place(x);
            const long fy = cY.Place(y);
            const int ix = static_cast<int>(fx >> 12);
            const int iy = static_cast<int>(fy >> 12);
            long nValue = 0;
            if (cX.Inside(x) && cY.Inside(y))
            {
                const long wx = fx % 4096;
                const long wy = fy % 4096;
                const long vx = 4096 - wx;
                const long vy = 4096 - wy;
                nValue = ((((vy * vx) >> 12) * At(cIn, ix, iy)) >> 12) +
                         ((((vy * wx) >> 12) * At(cIn, ix + 1, iy)) >> 12) +
                         ((((wy * vx) >> 12) * At(cIn, ix, iy + 1)) >> 12) +
                         ((((wy * wx) >> 12) * At(cIn, ix + 1, iy + 1)) >> 12);
            }
            else if (cY.Inside(y))
            {
                nValue = Between(fy, At(cIn, cX.Edge(x), iy), At(cIn, cX.Edge(x), iy + 1));
            }
            else if (cX.Inside(x))
            {
                nValue = Between(fx, At(cIn, ix, cY.Edge(y)), At(cIn, ix + 1, cY.Edge(y)));
            }
            else
            {
                nValue = At(cIn, cX.Edge(x), cY.Edge(y));
            }
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(nValue));
        }
    }
}

inline void BiLinearByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    ClImage cStage;
    if (c.nWidth < cIn.m_nWidth)
    {
        ShrinkXByDefinition(cIn, c, cStage);
        c.nHeight < cIn.m_nHeight ? ShrinkYByDefinition(cStage, c, cOut) : GrowByDefinition(cStage, c, cOut);
    }
    else if (c.nHeight < cIn.m_nHeight)
    {
        ShrinkYByDefinition(cIn, c, cStage);
        GrowByDefinition(cStage, c, cOut);
    }
    else
    {
        GrowByDefinition(cIn, c, cOut);
    }
}

using Line_t = std::vector<int>;
using Lines_t = std::vector<Line_t>;

inline int BiCubicByDefinition(const ClImage& cIn, int x, int y, int nNewWidth, int nNewHeight, double a)
{
    const double px = double(x) * cIn.m_nWidth / nNewWidth;
    const double py = double(y) * cIn.m_nHeight / nNewHeight;
    double dSum = 0.0;
    double dWeights = 0.0;
    for (int v = int(std::floor(py)) - 1; v <= int(std::floor(py)) + 2; ++v)
    {
        for (int u = int(std::floor(px)) - 1; u <= int(std::floor(px)) + 2; ++u)
        {
            const int n = v * cIn.m_nWidth + u;
            if (n < 0 || n > cIn.m_nWidth * cIn.m_nHeight - 1)
            {
                continue;
            }
            const double s = (px - u) * (px - u) + (py - v) * (py - v);
            double w = 0.0;
            if (s < 2.0)
            {
                w = ((a + 2) * std::sqrt(s) - (a + 3)) * s + 1;
            }
            else if (s < 4.0)
            {
                w = (std::sqrt(s) * (s + 8) - 5 * s) * a - 4 * a;
            }
            dSum += w * At(cIn, n % cIn.m_nWidth, n / cIn.m_nWidth);
            dWeights += w;
        }
    }
    if (dWeights != 0.0)
    {
        dSum /= dWeights;
    }
    return int(std::min(std::max(dSum, 0.0), 255.0));
}

/// One line by pieces: each ends at the next whole source place, in 4096 parts, or at the end of the pixel.
inline Line_t FantByDefinition(const Line_t& aIn, int nOut)
{
    const long nStep = std::max<long>(long(aIn.size()) * 4096 / nOut, 1);
    const auto sample = [&aIn](long i) { return long(aIn[std::min<std::size_t>(std::size_t(i), aIn.size() - 1)]); };
    Line_t aOut;
    for (long k = 0; k < nOut; ++k)
    {
        std::vector<long> aCuts = {k * nStep};
        for (long n = (k * nStep / 4096 + 1) * 4096; n < (k + 1) * nStep; n += 4096)
        {
            aCuts.push_back(n);
        }
        aCuts.push_back((k + 1) * nStep);
        long nSum = 0;
        for (std::size_t i = 0; i + 1 < aCuts.size(); ++i)
        {
            const long nFraction = aCuts[i] % 4096;
            const long nValue = sample(aCuts[i] / 4096) * (4096 - nFraction) + sample(aCuts[i] / 4096 + 1) * nFraction;
            nSum += nValue * (aCuts[i + 1] - aCuts[i]);
        }
        aOut.push_back(int(nSum / (nStep * 4096)));
    }
    return aOut;
}

inline void FantByDefinition(const ClImage& cIn, int nNewWidth, int nNewHeight, ClImage& cOut)
{
    Lines_t aRows;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        Line_t aRow;
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            aRow.push_back(At(cIn, x, y));
        }
        aRows.push_back(FantByDefinition(aRow, nNewWidth));
    }
    for (int x = 0; x < nNewWidth; ++x)
    {
        Line_t aColumn;
        for (const Line_t& aRow : aRows)
        {
            aColumn.push_back(aRow[std::size_t(x)]);
        }
        aColumn = FantByDefinition(aColumn, nNewHeight);
        for (int y = 0; y < nNewHeight; ++y)
        {
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(aColumn[std::size_t(y)]));
        }
    }
}

inline void NearestByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    const bool bPels = c.nPelsX > 0 && c.nPelsY > 0;
    const long nStepX = bPels ? cIn.m_nXRes * 4096L / c.nPelsX : cIn.m_nWidth * 4096L / c.nWidth;
    const long nStepY = bPels ? cIn.m_nYRes * 4096L / c.nPelsY : cIn.m_nHeight * 4096L / c.nHeight;
    Make(cIn, c, cOut);
    for (int y = 0; y < c.nHeight; ++y)
    {
        for (int x = 0; x < c.nWidth; ++x)
        {
            SetSample(cOut, x, y, 0,
                      static_cast<unsigned char>(At(cIn, int(x * nStepX / 4096), int(y * nStepY / 4096))));
        }
    }
}

/// One direction by a whole factor: each sample nOld / nNew or nNew / nOld times, the nearest of the numbers.
inline Line_t WholeByDefinition(const Line_t& aIn, int nOld, int nNew)
{
    Line_t aOut;
    const long nIn = long(aIn.size());
    if (nNew >= nOld)
    {
        const int n = nNew / nOld + (nNew % nOld * 2 > nOld ? 1 : 0);
        for (long i = 0; i < nIn * n; ++i)
        {
            aOut.push_back(aIn[std::size_t(i / n)]);
        }
        return aOut;
    }
    const long n = nOld / nNew + (nOld % nNew * 2 > nNew ? 1 : 0);
    for (long i = 0; i < std::max(nIn / n, 1L); ++i)
    {
        const long nCount = std::min(n, nIn);
        long nSum = 0;
        for (long k = 0; k < nCount; ++k)
        {
            nSum += aIn[std::size_t(i * n + k)];
        }
        aOut.push_back(int(nSum / nCount));
    }
    return aOut;
}

inline int WholeResolution(int nOld, int nNew)
{
    return nNew >= nOld ? nOld * (nNew / nOld + (nNew % nOld * 2 > nOld ? 1 : 0))
                        : nOld / (nOld / nNew + (nOld % nNew * 2 > nNew ? 1 : 0));
}

inline void WholeByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    Lines_t aColumns; // of the result of the first direction
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        Line_t aRow;
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            aRow.push_back(At(cIn, x, y));
        }
        aRow = WholeByDefinition(aRow, cIn.m_nXRes, c.nPelsX);
        aColumns.resize(aRow.size());
        for (std::size_t x = 0; x < aRow.size(); ++x)
        {
            aColumns[x].push_back(aRow[x]);
        }
    }
    for (Line_t& aColumn : aColumns)
    {
        aColumn = WholeByDefinition(aColumn, cIn.m_nYRes, c.nPelsY);
    }
    Make(cIn,
         {int(aColumns.size()), int(aColumns[0].size()), WholeResolution(cIn.m_nXRes, c.nPelsX),
          WholeResolution(cIn.m_nYRes, c.nPelsY)},
         cOut);
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        for (int x = 0; x < cOut.m_nWidth; ++x)
        {
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(aColumns[std::size_t(x)][std::size_t(y)]));
        }
    }
}

/// One plane of bytes in any mode. a: the kernel parameter in force.
inline void ScaleByDefinition(const ClImage& cIn, const StForce& c, Mode_t eMode, double a, ClImage& cOut)
{
    switch (eMode)
    {
    case ClIpRescale::ModeWholeNumbered: WholeByDefinition(cIn, c, cOut); return;
    case ClIpRescale::ModeNearestNeighbour: NearestByDefinition(cIn, c, cOut); return;
    case ClIpRescale::ModeBiLinear: BiLinearByDefinition(cIn, c, cOut); return;
    case ClIpRescale::ModeBiLinearFantMar:
        Make(cIn, c, cOut);
        FantByDefinition(cIn, c.nWidth, c.nHeight, cOut);
        return;
    case ClIpRescale::ModeBiCubic: break;
    }
    Make(cIn, c, cOut);
    for (int y = 0; y < c.nHeight; ++y)
    {
        for (int x = 0; x < c.nWidth; ++x)
        {
            const int nValue = BiCubicByDefinition(cIn, x, y, c.nWidth, c.nHeight, a);
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(nValue));
        }
    }
}

inline void FillPicture(ClImage& cImage, int nWidth, int nHeight, int nXRes, int nYRes, unsigned int nSeed)
{
    FillRandom8(cImage, nWidth, nHeight, nSeed);
    cImage.m_nXRes = nXRes;
    cImage.m_nYRes = nYRes;
}

inline void ExpectImage(const ClImage& cExpected, const ClImage& cOut)
{
    ASSERT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_TRUE(SameDescription(cExpected, cOut));
}
} // namespace RescaleDefinitions
