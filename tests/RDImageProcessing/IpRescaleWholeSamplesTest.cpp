// The modes of ClIpRescale that take samples whole: the nearest neighbour, and whole factors.

#include "RDImageProcessing/IpRescale.hpp"

#include "RescaleDefinitions.hpp"

#include <algorithm>
#include <cstdlib>

using namespace RescaleDefinitions;

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

TEST(IpRescale, NearestNeighbourRepeatsTheFirstSampleWhereTheResolutionsWrapToNothing)
{
    ClImage cIn;
    FillPicture(cIn, 4, 4, 1 << 20, 1 << 20, 9);
    ClImage cOut;
    ASSERT_EQ(0, ClIpRescale().ApplyParamPels(cIn, cOut, 1 << 19, 1 << 19, ClIpRescale::ModeNearestNeighbour));
    for (int y = 0; y < 2; ++y)
    {
        EXPECT_EQ(At(cIn, 0, 0), At(cOut, 0, y));
        EXPECT_EQ(At(cIn, 0, 0), At(cOut, 1, y));
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

TEST(IpRescale, WholeNumbersBeyondEveryImageAreBadAlloc)
{
    ClImage cIn(20, 20, 1, 1, 1), cOut;
    FillRandom(cIn, 18);
    ClIpRescale cRescale;
    cRescale.m_pInImage = &cIn;
    cRescale.m_pOutImage = &cOut;
    constexpr int nFactor = 1 << 27; // 20 times this is more than 32 bits hold
    EXPECT_RAISES_CODE(cRescale.ProcessXWholeNumberedResize(nFactor), -102);
    EXPECT_RAISES_CODE(cRescale.ProcessYWholeNumberedResize(nFactor), -102);
}
