// The bilinear mode of ClIpRescale.

#include "RDImageProcessing/IpRescale.hpp"

#include "RescaleDefinitions.hpp"

#include <string>

using namespace RescaleDefinitions;

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

TEST(IpRescale, WhereTheResolutionsPromiseLessTheLastRowStandsForTheRest)
{
    // 10 rows to 5, of 3 rows per metre: the new resolution of 1.5 is cut to 1, so that 3 rows make one.
    ClImage cIn(1, 10, 1, 3, 3), cOut;
    const unsigned char anRows[] = {3, 6, 9, 30, 60, 90, 100, 110, 123, 200};
    for (int y = 0; y < 10; ++y)
    {
        SetSample(cIn, 0, y, 0, anRows[y]);
    }
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 1, 5, ClIpRescale::ModeBiLinear));
    ASSERT_EQ(5, cOut.m_nHeight);
    EXPECT_EQ(1, cOut.m_nYRes);
    const int anExpected[] = {6, 60, 111, 200, 200};
    for (int y = 0; y < 5; ++y)
    {
        EXPECT_EQ(anExpected[y], At(cOut, 0, y)) << y;
    }
}
