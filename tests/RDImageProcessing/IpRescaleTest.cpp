#include "RDImageProcessing/IpRescale.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
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

StForce ForceOfPels(const ClImage& cIn, int nPelsX, int nPelsY)
{
    return {static_cast<int>(double(cIn.m_nWidth) * nPelsX / cIn.m_nXRes + 0.9999),
            static_cast<int>(double(cIn.m_nHeight) * nPelsY / cIn.m_nYRes + 0.9999), nPelsX, nPelsY};
}

StForce ForceOfSize(const ClImage& cIn, int nWidth, int nHeight)
{
    return {nWidth, nHeight, nWidth * cIn.m_nXRes / cIn.m_nWidth, nHeight * cIn.m_nYRes / cIn.m_nHeight};
}

int At(const ClImage& cImage, int nX, int nY)
{
    return SampleAt<unsigned char>(cImage, nX, nY);
}

void Make(const ClImage& cIn, const StForce& c, ClImage& cOut)
{
    cOut.NewWithType((cIn.m_eDataType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, c.nWidth, c.nHeight, 1, c.nPelsX,
                     c.nPelsY);
}

/// Means of the spans of one line of samples, step by step.
std::vector<int> LineByDefinition(const std::vector<int>& aIn, long nSpan, int nOut)
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

void ShrinkXByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
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

void ShrinkYByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
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

long Between(long nPlace, long nFirst, long nSecond)
{
    return ((((nPlace >> 12) + 1) * 4096 - nPlace) * nFirst + nPlace % 4096 * nSecond) >> 12;
}

void GrowByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
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

void BiLinearByDefinition(const ClImage& cIn, const StForce& c, ClImage& cOut)
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

void FillPicture(ClImage& cImage, int nWidth, int nHeight, int nXRes, int nYRes, unsigned int nSeed)
{
    FillRandom8(cImage, nWidth, nHeight, nSeed);
    cImage.m_nXRes = nXRes;
    cImage.m_nYRes = nYRes;
}

void ExpectImage(const ClImage& cExpected, const ClImage& cOut)
{
    ASSERT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_TRUE(SameDescription(cExpected, cOut));
}
} // namespace

TEST(IpRescale, AResolutionGivesASizeThatIsRoundedUp)
{
    ClImage cIn;
    FillPicture(cIn, 1000, 1001, 19685, 19685, 1);
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(200, cOut.m_nWidth);
    EXPECT_EQ(201, cOut.m_nHeight);
    EXPECT_EQ(3937, cOut.m_nXRes);
    EXPECT_EQ(3937, cOut.m_nYRes);
    EXPECT_EQ(200, cRescale.m_nActWidth);
    EXPECT_EQ(201, cRescale.m_nActHeight);
    EXPECT_EQ(3937, cRescale.m_nActPelsX);
    EXPECT_EQ(3937, cRescale.m_nActPelsY);
}

TEST(IpRescale, AFifthIsTheMeanOfFiveSamplesAndWhatIsLeftOver)
{
    ClImage cIn;
    FillPicture(cIn, 1001, 7, 19685, 0, 2);
    cIn.m_nYRes = 3937;
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    ASSERT_EQ(201, cOut.m_nWidth);
    ASSERT_EQ(7, cOut.m_nHeight);
    for (int y = 0; y < 7; ++y)
    {
        for (int x = 0; x < 200; ++x)
        {
            int nSum = 0;
            for (int i = 0; i < 5; ++i)
            {
                nSum += At(cIn, 5 * x + i, y);
            }
            ASSERT_EQ(nSum / 5, At(cOut, x, y)) << x << " " << y;
        }
        EXPECT_EQ(At(cIn, 1000, y), At(cOut, 200, y));
    }
}

TEST(IpRescale, BiLinearAgreesWithTheDefinitionAtEveryResolution)
{
    ClTestRandom cRandom(3);
    for (const ClTestSize& cSize : {ClTestSize{67, 53}, {160, 41}, {333, 17}, {5, 90}, {1, 7}, {9, 1}})
    {
        ClImage cIn;
        FillPicture(cIn, cSize.nWidth, cSize.nHeight, 19685, 19685, cRandom.Next());
        for (int i = 0; i < 40; ++i)
        {
            static constexpr int anPels[] = {3937, 9843, 4000, 19684, 19686, 39370, 1969, 7874, 50000};
            const int nPelsX = i < 9 ? anPels[i] : 1500 + cRandom.Below(50000);
            const int nPelsY = i < 9 ? anPels[(i + i / 3) % 9] : 1500 + cRandom.Below(50000);
            const StForce c = ForceOfPels(cIn, nPelsX, nPelsY);
            ClImage cOut;
            ClIpRescale cRescale;
            ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, nPelsX, nPelsY, ClIpRescale::ModeBiLinear));
            ClImage cExpected;
            if (c.nWidth == cIn.m_nWidth && c.nHeight == cIn.m_nHeight)
            {
                cExpected = cIn;
            }
            else
            {
                BiLinearByDefinition(cIn, c, cExpected);
            }
            SCOPED_TRACE(std::to_string(cSize.nWidth) + " by " + std::to_string(cSize.nHeight) + " to " +
                         std::to_string(nPelsX) + ", " + std::to_string(nPelsY));
            ExpectImage(cExpected, cOut);
        }
    }
}

TEST(IpRescale, BiLinearAgreesWithTheDefinitionAtEverySize)
{
    ClTestRandom cRandom(4);
    for (int i = 0; i < 300; ++i)
    {
        ClImage cIn;
        // A low resolution makes the resolution in force so coarse that the source ends early.
        const int nRes = i % 3 == 0 ? 150 + cRandom.Below(100) : 19685;
        FillPicture(cIn, 1 + cRandom.Below(70), 1 + cRandom.Below(70), nRes, nRes + 7, cRandom.Next());
        const int nWidth = i % 4 == 0 ? cIn.m_nWidth : 1 + cRandom.Below(90);
        const int nHeight = i % 4 == 1 ? cIn.m_nHeight : 1 + cRandom.Below(90);
        const StForce c = ForceOfSize(cIn, nWidth, nHeight);
        if ((nWidth == cIn.m_nWidth && nHeight == cIn.m_nHeight) || c.nPelsX == 0)
        {
            continue;
        }
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, nWidth, nHeight, ClIpRescale::ModeBiLinear));
        ClImage cExpected;
        BiLinearByDefinition(cIn, c, cExpected);
        SCOPED_TRACE(std::to_string(cIn.m_nWidth) + " by " + std::to_string(cIn.m_nHeight) + " to " +
                     std::to_string(nWidth) + " by " + std::to_string(nHeight) + " at " + std::to_string(nRes));
        ExpectImage(cExpected, cOut);
    }
}

TEST(IpRescale, TwiceTheSizeHasOneMarginColumnOnEachSide)
{
    ClImage cIn;
    PaintText(cIn, {"19", "19"});
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 4, 4, ClIpRescale::ModeBiLinear));
    for (int y = 0; y < 4; ++y)
    {
        EXPECT_EQ(1, At(cOut, 0, y));
        EXPECT_EQ(9, At(cOut, 3, y));
    }
    // Pixel centres at a quarter and three quarters: 1 * 0.75 + 9 * 0.25. Each of the four terms truncates by itself.
    EXPECT_EQ(3, At(cOut, 1, 0));
    EXPECT_EQ(7, At(cOut, 2, 0));
}

TEST(IpRescale, SeparatePassesKeepTheOtherDirection)
{
    ClImage cIn;
    FillPicture(cIn, 40, 30, 19685, 3937, 5);
    ClImage cOut;
    ClIpRescale cRescale;
    cRescale.m_pInImage = &cIn;
    cRescale.m_pOutImage = &cOut;
    cRescale.m_nNewPelsX = 6000;
    cRescale.m_nNewPelsY = 1000;
    ASSERT_EQ(0, cRescale.Initialize());
    const StForce c = ForceOfPels(cIn, 6000, 1000);
    ClImage cExpected;
    cRescale.ProcessXBiLinearIntegrating();
    ShrinkXByDefinition(cIn, c, cExpected);
    ExpectImage(cExpected, cOut);
    cRescale.ProcessYBiLinearIntegrating();
    ShrinkYByDefinition(cIn, c, cExpected);
    ExpectImage(cExpected, cOut);
}

TEST(IpRescale, AnEqualSizeIsACopyInEveryMode)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 13, 11, 2, 19685, 3937); // of unknown content, which no mode could split
    FillRandom(cIn, 6);
    cIn.m_nAttribute = 5;
    for (const Mode_t eMode : aModes)
    {
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 19685, 3937, eMode));
        ExpectImage(cIn, cOut);
        EXPECT_NE(cIn.Data(), cOut.Data());
    }
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 13, 11, static_cast<Mode_t>(99)));
    ExpectImage(cIn, cOut);
    EXPECT_EQ(19685, cRescale.m_nActPelsX);
    EXPECT_EQ(3937, cRescale.m_nActPelsY);
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 19684, 3936, ClIpRescale::ModeBiLinear)); // rounded up to the same
    EXPECT_EQ(19685, cOut.m_nXRes);
}

TEST(IpRescale, WhatIsInForceFollowsFromResolutionsOrSize)
{
    ClImage cIn(100, 50, 1, 2000, 1000);
    ClImage cOut;
    ClIpRescale cRescale;
    cRescale.m_pInImage = &cIn;
    cRescale.m_pOutImage = &cOut;
    cRescale.m_nNewWidth = 33;
    cRescale.m_nNewHeight = 77;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    EXPECT_EQ(77, cRescale.m_nActHeight);
    EXPECT_EQ(660, cRescale.m_nActPelsX);
    EXPECT_EQ(1540, cRescale.m_nActPelsY);
    cRescale.m_nNewPelsX = 1000; // both resolutions come before the size
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    cRescale.m_nNewPelsY = 1001;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(50, cRescale.m_nActWidth);
    EXPECT_EQ(51, cRescale.m_nActHeight); // 50.05
    EXPECT_EQ(1000, cRescale.m_nActPelsX);
    EXPECT_EQ(1001, cRescale.m_nActPelsY);
    cIn.m_nYRes = 0; // without a resolution the size counts
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    EXPECT_EQ(660, cRescale.m_nActPelsX);
    EXPECT_EQ(0, cRescale.m_nActPelsY);
    cRescale.m_nNewHeight = 0;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Initialize());
    cRescale.m_nNewHeight = 1;
    cRescale.m_nNewWidth = -3;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Initialize());
}

TEST(IpRescale, NothingAskedForIsAnInternalError)
{
    ClImage cIn(10, 10, 1, 0, 19685);
    ClImage cOut;
    ClIpRescale cRescale;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeNearestNeighbour));
    EXPECT_EQ(nullptr, cRescale.m_pInImage); // nothing was stored
    EXPECT_EQ(ClIpRescale::ModeBiLinear, cRescale.m_eMode);
    cRescale.m_nNewWidth = 5;
    cRescale.m_nNewPelsY = 5;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamSize(cIn, cOut, 5, 5, ClIpRescale::ModeWholeNumbered));
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamSize(cIn, cOut, 5, 0, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.ApplyParamSize(cIn, cOut, 5, -1, ClIpRescale::ModeBiLinear));
}

TEST(IpRescale, PelsNeedAnInputWithAResolution)
{
    ClImage cIn(10, 10, 1, 0, 19685);
    ClImage cOut;
    ClIpRescale cRescale;
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    cIn.m_nXRes = 19685;
    cIn.m_nYRes = 0;
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    cIn.m_nYRes = 19685;
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 7, 7, ClIpRescale::ModeBiLinear)); // forgets the pels
    EXPECT_EQ(7, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.m_nNewPelsX);
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear)); // forgets the size
    EXPECT_EQ(2, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.m_nNewWidth);
}

TEST(IpRescale, MissingImagesAndPixelsAreReturned)
{
    ClImage cImage(10, 10, 1, 19685, 19685);
    ClImage cEmpty;
    ClImage cNoRows(10, 0, 1, 19685, 19685);
    ClIpRescale cRescale;
    cRescale.m_nNewWidth = 5;
    cRescale.m_nNewHeight = 5;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.Apply());
    cRescale.m_pInImage = &cImage;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.Apply());
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamSize(cEmpty, cImage, 5, 5, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamSize(cNoRows, cImage, 5, 5, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamPels(cNoRows, cImage, 3937, 3937, ClIpRescale::ModeBiLinear));
    cRescale.m_pInImage = &cEmpty;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Process());
}

TEST(IpRescale, WithoutUsableResolutionsTheSizesDecide)
{
    ClImage cIn;
    FillPicture(cIn, 40, 30, 0, 0, 7);
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 8, 10, ClIpRescale::ModeBiLinear));
    int nSum = 0;
    for (int y = 0; y < 3; ++y)
    {
        int nRow = 0;
        for (int x = 0; x < 5; ++x)
        {
            nRow += At(cIn, 5 + x, 3 + y);
        }
        nSum += nRow / 5;
    }
    EXPECT_EQ(nSum / 3, At(cOut, 1, 1));
    EXPECT_EQ(0, cOut.m_nXRes);

    cIn.m_nXRes = 1; // 8 * 1 / 40 is no resolution, either
    cIn.m_nYRes = 1;
    ClImage cSame;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cSame, 8, 10, ClIpRescale::ModeBiLinear));
    EXPECT_TRUE(SamePixels(cOut, cSame));
}

TEST(IpRescale, HugeResolutionsDoNoHarm)
{
    constexpr int nHuge = 2147483647;
    ClImage cIn;
    FillPicture(cIn, 40, 30, nHuge, nHuge, 8);
    for (const int nPels : {1, 3937, 1 << 20, nHuge / 2, nHuge - 1})
    {
        ClImage cOut;
        ClIpRescale cRescale;
        for (const Mode_t eMode : {ClIpRescale::ModeBiLinear, ClIpRescale::ModeNearestNeighbour})
        {
            const long nResult = cRescale.ApplyParamPels(cIn, cOut, nPels, nPels, eMode);
            EXPECT_TRUE(nResult == 0 || (nPels <= 3937 && nResult == FPC_ERROR_PARAM_OUT_OF_RANGE)) << nPels;
        }
    }
    cIn.m_nXRes = 600000; // in 32 bits 600000 << 12 is negative: the ratio of the widths is the one that shrinks
    cIn.m_nYRes = 300000;
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 150000, 300000, ClIpRescale::ModeBiLinear));
    ASSERT_EQ(10, cOut.m_nWidth);
    EXPECT_EQ((At(cIn, 4, 2) + At(cIn, 5, 2) + At(cIn, 6, 2) + At(cIn, 7, 2)) / 4, At(cOut, 1, 2));
    cIn.m_nXRes = (1 << 20) + 16384; // wraps to 16384 << 12
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 8192, 300000, ClIpRescale::ModeBiLinear));
    ASSERT_EQ(1, cOut.m_nWidth);
    EXPECT_EQ((At(cIn, 0, 2) + At(cIn, 1, 2)) / 2, At(cOut, 0, 2));
}

TEST(IpRescale, NothingBeyondTheSourceIsRead)
{
    const ClGuardedBytes cBlock(64 * 37);
    ClTestRandom cRandom(9);
    for (std::size_t i = 0; i < cBlock.Size(); ++i)
    {
        cBlock.Data()[i] = static_cast<unsigned char>(cRandom.Below(256));
    }
    ClImage cIn;
    cIn.Attach(cBlock.Data(), ClImage::eUInt8, 64, 37, 1, 19685, 19685);
    ClImage cCopy;
    cCopy = cIn;
    for (const Mode_t eMode :
         {ClIpRescale::ModeBiLinear, ClIpRescale::ModeNearestNeighbour, ClIpRescale::ModeWholeNumbered})
    {
        for (const int nPels : {3937, 5000, 7874, 19000, 20000, 39370, 100000})
        {
            ClImage cOut;
            ClImage cExpected;
            ClIpRescale cRescale;
            ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, nPels, nPels + 100, eMode));
            ASSERT_EQ(0, cRescale.ApplyParamPels(cCopy, cExpected, nPels, nPels + 100, eMode));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
        }
    }
}

TEST(IpRescale, SignedSamplesKeepTheirTypeAndAreReadAsBytes)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt8, 30, 20, 1, 19685, 19685);
    FillRandom(cIn, 10);
    for (const int nPels : {7874, 25000})
    {
        ClImage cOut;
        ClImage cExpected;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, nPels, nPels, ClIpRescale::ModeBiLinear));
        BiLinearByDefinition(cIn, ForceOfPels(cIn, nPels, nPels), cExpected);
        ExpectImage(cExpected, cOut);
        EXPECT_EQ(ClImage::eSInt8, cOut.m_eDataType);
    }
}

TEST(IpRescale, TheOutputMayBeTheInput)
{
    for (const Mode_t eMode :
         {ClIpRescale::ModeBiLinear, ClIpRescale::ModeNearestNeighbour, ClIpRescale::ModeWholeNumbered})
    {
        for (const auto& [nPelsX, nPelsY] :
             {std::pair(7874, 7874), std::pair(7874, 39370), std::pair(39370, 7874), std::pair(39370, 39370)})
        {
            ClImage cImage;
            FillPicture(cImage, 40, 30, 19685, 19685, 11);
            ClImage cExpected;
            ClIpRescale cRescale;
            ASSERT_EQ(0, cRescale.ApplyParamPels(cImage, cExpected, nPelsX, nPelsY, eMode));
            ASSERT_EQ(0, cRescale.ApplyParamPels(cImage, cImage, nPelsX, nPelsY, eMode));
            ExpectImage(cExpected, cImage);
            EXPECT_EQ(&cImage, cRescale.m_pInImage);
            EXPECT_EQ(&cImage, cRescale.m_pOutImage);
        }
    }
}

TEST(IpRescale, UpToThreePlanesAreScaledOneByOne)
{
    for (const int nPlanes : {3, 4})
    {
        ClImage cIn;
        cIn.NewWithType(ClImage::eUInt8, 31, 22, nPlanes, 19685, 19685);
        FillRandom(cIn, 12);
        cIn.m_nAttribute = 6;
        ClImage cBefore;
        cBefore = cIn;
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 7874, 39370, ClIpRescale::ModeBiLinear));
        EXPECT_TRUE(SamePixels(cBefore, cIn));
        EXPECT_EQ(&cIn, cRescale.m_pInImage);
        EXPECT_EQ(&cOut, cRescale.m_pOutImage);
        ASSERT_EQ(nPlanes, cOut.m_nPlanes);
        EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
        EXPECT_EQ(6, cOut.m_nAttribute);
        for (int p = 0; p < 3; ++p)
        {
            ClImage cPlane;
            ClImage cExpected;
            ClImage cActual;
            cIn.GetPlane(p, cPlane);
            BiLinearByDefinition(cPlane, ForceOfPels(cIn, 7874, 39370), cExpected);
            cOut.GetPlane(p, cActual);
            ExpectImage(cExpected, cActual);
        }
    }
}

TEST(IpRescale, PlanesOfUnknownContentAreRefused)
{
    ClImage cIn(31, 22, 2, 19685, 19685);
    FillRandom(cIn, 13);
    ClImage cOut;
    ClIpRescale cRescale;
    for (const Mode_t eMode : aModes)
    {
        EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamPels(cIn, cOut, 7874, 7874, eMode));
    }
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpRescale, NearestNeighbourTakesTheSampleAtOrBefore)
{
    ClTestRandom cRandom(14);
    for (int i = 0; i < 60; ++i)
    {
        ClImage cIn;
        FillPicture(cIn, 1 + cRandom.Below(60), 1 + cRandom.Below(60), 19685, 9000, cRandom.Next());
        const bool bSize = i % 2 == 0;
        cIn.m_nXRes = bSize ? 0 : cIn.m_nXRes; // then the sizes give the steps
        const int nNewX = bSize ? 1 + cRandom.Below(90) : 2000 + cRandom.Below(40000);
        const int nNewY = bSize ? 1 + cRandom.Below(90) : 2000 + cRandom.Below(40000);
        const StForce c = bSize ? ForceOfSize(cIn, nNewX, nNewY) : ForceOfPels(cIn, nNewX, nNewY);
        const long nStepX = bSize ? cIn.m_nWidth * 4096L / c.nWidth : cIn.m_nXRes * 4096L / c.nPelsX;
        const long nStepY = bSize ? cIn.m_nHeight * 4096L / c.nHeight : cIn.m_nYRes * 4096L / c.nPelsY;
        if (c.nWidth == cIn.m_nWidth && c.nHeight == cIn.m_nHeight)
        {
            continue;
        }
        ClImage cExpected;
        Make(cIn, c, cExpected);
        for (int y = 0; y < c.nHeight; ++y)
        {
            for (int x = 0; x < c.nWidth; ++x)
            {
                SetSample(cExpected, x, y, 0,
                          SampleAt<unsigned char>(cIn, int(x * nStepX / 4096), int(y * nStepY / 4096)));
            }
        }
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, bSize ? cRescale.ApplyParamSize(cIn, cOut, nNewX, nNewY, ClIpRescale::ModeNearestNeighbour)
                           : cRescale.ApplyParamPels(cIn, cOut, nNewX, nNewY, ClIpRescale::ModeNearestNeighbour));
        ExpectImage(cExpected, cOut);
    }
}

TEST(IpRescale, NearestNeighbourLeavesRowsWithoutASourceAsTheyAre)
{
    ClImage cIn;
    FillPicture(cIn, 10, 10, 10, 10, 15);
    // 13 * 10 / 10 is 13, and 7 * 10 / 10 is 7; of 3 pels in force for 3.9 the steps run past the end.
    cIn.m_nXRes = 3;
    cIn.m_nYRes = 3;
    ClImage cOut(13, 13, 1, 0, 0);
    std::fill_n(cOut.Data(), 16 * 13, static_cast<unsigned char>(0xA5));
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 13, 13, ClIpRescale::ModeNearestNeighbour));
    EXPECT_EQ(3, cOut.m_nYRes); // a step of one: rows 10 to 12 have no source, columns 10 to 12 take the last one
    for (int y = 0; y < 13; ++y)
    {
        for (int x = 0; x < 13; ++x)
        {
            EXPECT_EQ(y < 10 ? At(cIn, std::min(x, 9), y) : 0xA5, At(cOut, x, y)) << x << " " << y;
        }
    }
    ClImage cNew;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cNew, 13, 13, ClIpRescale::ModeNearestNeighbour));
    EXPECT_EQ(0, At(cNew, 5, 12)); // nothing that the heap held before
}

TEST(IpRescale, WholeNumbersRepeatSamplesOrTakeTheirMeans)
{
    ClImage cIn;
    FillPicture(cIn, 11, 13, 5000, 5000, 16);
    struct StCase
    {
        int nPels;
        int nFactor; // below 0: of that many samples the mean
    };
    for (const StCase& c : {StCase{10000, 2},
                            {12500, 2},
                            {12501, 3},
                            {7500, 1},
                            {7501, 2},
                            {2500, -2},
                            {2000, -2},
                            {1999, -3},
                            {1000, -5},
                            {3400, -1},
                            {3300, -2},
                            {5001, 1},
                            {4999, -1},
                            {100, -50}})
    {
        ClIpRescale cRescale;
        ClImage cOut;
        cIn.m_nYRes = 4000;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, c.nPels, 4001, ClIpRescale::ModeWholeNumbered));
        if (cRescale.m_nActWidth == 11 && cRescale.m_nActHeight == 13)
        {
            continue; // a copy
        }
        SCOPED_TRACE(c.nPels);
        const int n = std::abs(c.nFactor);
        const int nWidth = c.nFactor > 0 ? 11 * n : std::max(11 / n, 1);
        ASSERT_EQ(nWidth, cOut.m_nWidth);
        ASSERT_EQ(13, cOut.m_nHeight);
        EXPECT_EQ(c.nFactor > 0 ? 5000 * n : 5000 / n, cOut.m_nXRes);
        EXPECT_EQ(4000, cOut.m_nYRes);
        for (int y = 0; y < 13; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                int nSum = 0;
                int nCount = 0;
                for (int i = 0; c.nFactor < 0 && i < n && x * n + i < 11; ++i, ++nCount)
                {
                    nSum += At(cIn, x * n + i, y);
                }
                EXPECT_EQ(c.nFactor > 0 ? At(cIn, x / n, y) : nSum / nCount, At(cOut, x, y)) << x << " " << y;
            }
        }
    }
}

TEST(IpRescale, WholeNumbersOfTheTwoDirectionsAreIndependent)
{
    ClImage cIn;
    FillPicture(cIn, 6, 9, 4000, 6000, 17);
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 12000, 2000, ClIpRescale::ModeWholeNumbered));
    ASSERT_EQ(18, cOut.m_nWidth);
    ASSERT_EQ(3, cOut.m_nHeight);
    EXPECT_EQ(12000, cOut.m_nXRes);
    EXPECT_EQ(2000, cOut.m_nYRes);
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 18; ++x)
        {
            const int nSum = At(cIn, x / 3, 3 * y) + At(cIn, x / 3, 3 * y + 1) + At(cIn, x / 3, 3 * y + 2);
            EXPECT_EQ(nSum / 3, At(cOut, x, y));
        }
    }
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 2000, 12000, ClIpRescale::ModeWholeNumbered));
    ASSERT_EQ(3, cOut.m_nWidth);
    ASSERT_EQ(18, cOut.m_nHeight);
    EXPECT_EQ((At(cIn, 2, 4) + At(cIn, 3, 4)) / 2, At(cOut, 1, 9));
}

TEST(IpRescale, WholeNumbersNeedResolutions)
{
    ClImage cIn(20, 20, 1, 0, 0);
    FillRandom(cIn, 18);
    ClImage cOut;
    ClIpRescale cRescale;
    cRescale.m_nNewWidth = 10;
    cRescale.m_nNewHeight = 10;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeWholeNumbered));
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cIn, ClIpRescale::ModeWholeNumbered));
    EXPECT_EQ(20, cIn.m_nWidth); // unchanged
    ClImage cColour(20, 20, 3, 0, 0);
    FillRandom(cColour, 18);
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cColour, cOut, ClIpRescale::ModeWholeNumbered));
}

TEST(IpRescale, AModeThatIsNoneDoesNothing)
{
    ClImage cIn;
    FillPicture(cIn, 20, 20, 19685, 19685, 19);
    ClImage cOut(3, 2, 1, 0, 0);
    ClIpRescale cRescale;
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, static_cast<Mode_t>(9)));
    EXPECT_EQ(3, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cIn, 3937, 3937, static_cast<Mode_t>(-1)));
    EXPECT_EQ(20, cIn.m_nWidth);
}

TEST(IpRescale, SettingsAsAText)
{
    ClIpRescale cRescale;
    char szText[40];
    cRescale.m_nNewPelsX = 3937;
    cRescale.m_nNewPelsY = -1;
    cRescale.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("X3937 Y-1 BiLinear", szText);
    cRescale.m_nNewWidth = 20;
    cRescale.m_nNewHeight = 10;
    const char* const aszModes[] = {"WholeNumbered", "NearestNeighbour", "BiLinear", "BiCubic", "BiLinearFantMar"};
    for (const Mode_t eMode : aModes)
    {
        cRescale.m_eMode = eMode;
        cRescale.ParameterString(szText, sizeof szText);
        EXPECT_EQ(std::string("W20 H10 ") + aszModes[eMode], szText);
    }
    for (const int nMode : {-1, 5})
    {
        cRescale.m_eMode = static_cast<Mode_t>(nMode);
        cRescale.ParameterString(szText, sizeof szText);
        EXPECT_STREQ("W20 H10 InvalidMode", szText);
    }
    EXPECT_RAISES(cRescale.ParameterString(szText, 19), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nString-Length exceeded available size");
    cRescale.ParameterString(szText, 20);
}

TEST(IpRescale, PublishesItsParametersWithTheirDefaults)
{
    ClIpRescale cRescale;
    cRescale.m_nNewWidth = 7;
    cRescale.m_eMode = ClIpRescale::ModeBiCubic;
    cRescale.m_dConvParameter1 = 0.5;
    ClParameterContainer cTree;
    cRescale.QueryParameters(cTree);
    const std::pair<const char*, const char*> aDefaults[] = {
        {"pInImage", "NULL"}, {"pOutImage", "NULL"}, {"NewHeight", "0"},        {"NewWidth", "0"},
        {"NewPelsX", "0"},    {"NewPelsY", "0"},     {"eMode", "ModeBiLinear"}, {"dConvParameter1", "-0.75"}};
    ASSERT_EQ(8u, cTree.m_aChildren.Entries());
    unsigned long nIndex = 0;
    for (const auto& [szName, szDefault] : aDefaults)
    {
        EXPECT_STREQ(szName, cTree.m_aChildren[nIndex]->GetName());
        EXPECT_EQ(szDefault, cTree.m_aChildren[nIndex++]->GetDefaultValue());
    }
    EXPECT_EQ("7", cTree.Find("NewWidth")->GetValue());
    EXPECT_EQ("0.5", cTree.Find("dConvParameter1")->GetValue());
    for (const Mode_t eMode : aModes)
    {
        cTree.Find("eMode")->GetEnumInterface()->SetValue(eMode);
        EXPECT_EQ(eMode, cRescale.m_eMode);
    }
    EXPECT_RAISES_CODE(cTree.Find("eMode")->GetEnumInterface()->SetValue(5), -35);
    cTree.Find("NewHeight")->SetValue("12");
    EXPECT_EQ(12, cRescale.m_nNewHeight);
}

TEST(IpRescale, MakesNewObjectsOfItsClass)
{
    ClIpRescale cRescale;
    EXPECT_STREQ("ClIpRescale", cRescale.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cRescale.Create());
    EXPECT_TRUE(typeid(*pNew) == typeid(ClIpRescale));
}
