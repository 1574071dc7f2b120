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
