// The mean along a direction per pixel.

#include "RDImageProcessing/IpFilterMid.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/MidFilterDefinitions.hpp"
#include "RDImageProcessing/SampleAccess.hpp"
#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <string>

using namespace MidFilterDefinitions;

TEST(IpFilterMidDirected, DirectedAveragesAlongTheLineOfEachPixel)
{
    for (const auto& [nColumns, nRows] : {Size(23, 17), Size(40, 4), Size(9, 1), Size(6, 30)})
    {
        for (const int nWidth : {3, 5})
        {
            for (const bool bOrtho : {false, true})
            {
                ClImage cIn, cExpected, cOut;
                FillRandom8(cIn, nColumns, nRows, 22);
                ClDirections cDirections(nColumns, nRows, 23);
                ClIpFilterMid cFilter;
                cDirections.GiveTo(cFilter);
                ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, bOrtho ? 16 : 8));
                DirectedByDefinition(cIn, cDirections, nWidth, bOrtho, cExpected);
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << bOrtho;
            }
        }
    }
}

TEST(IpFilterMidDirected, DirectedWithoutADirectionReturnsTheInput)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 23, 17, 24);
    ClDirections cDirections(23, 17, 1);
    FillFlat<unsigned char>(cDirections.m_cDx, ClImage::eUInt8, 23, 17, 0);
    FillFlat<unsigned char>(cDirections.m_cDy, ClImage::eUInt8, 23, 17, 0);
    for (const long nMode : {8L, 16L})
    {
        ClIpFilterMid cFilter;
        cDirections.GiveTo(cFilter);
        ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 7, nMode));
        EXPECT_TRUE(SamePixels(cIn, cOut));
    }
}

TEST(IpFilterMidDirected, DirectedNeedsBothDirections)
{
    const std::string sDescription = std::string(ClException(FPC_ERROR_BAD_POINTER, false, "", 0).What()) + '\n';
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 24);
    ClDirections cDirections(9, 9, 1);
    ClIpFilterMid cFilter;
    cDirections.GiveTo(cFilter);
    cFilter.m_pInDyImage = nullptr;
    EXPECT_RAISES(cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8), ClException, FPC_ERROR_BAD_POINTER,
                  (sDescription + "m_pInDyImage is not set").c_str());
    cFilter.m_pInDxImage = nullptr;
    EXPECT_RAISES(cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 16), ClException, FPC_ERROR_BAD_POINTER,
                  (sDescription + "m_pInDxImage is not set").c_str());
}

TEST(IpFilterMidDirected, DirectedCopiesAnImageThatIsTooNarrowAndFails)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 4, 9, 24);
    ClDirections cDirections(4, 9, 1);
    ClIpFilterMid cFilter;
    cDirections.GiveTo(cFilter);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 5, 8));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpFilterMidDirected, DirectedRefusesDirectionsThatDoNotFit)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 24);
    ClDirections cDirections(9, 9, 1);
    ClIpFilterMid cFilter;
    cDirections.GiveTo(cFilter);
    FillRandom8(cDirections.m_cDy, 9, 8, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
    cDirections.m_cDy.NewWithType(ClImage::eUInt16, 9, 9, 1, 0, 0);
    EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
}

TEST(IpFilterMidDirected, DirectedTakesUnsignedBytesOnly)
{
    for (const unsigned char eType : {ClImage::eUInt16, ClImage::eUInt32, ClImage::eSInt8, ClImage::eSInt16,
                                      ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64})
    {
        ClImage cIn, cOut;
        cIn.NewWithType(eType, 9, 9, 1, 0, 0);
        FillRandom(cIn, 25);
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 16));
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, ClIpFilterMid().ProcessSignedDirected(false));
    }
}

TEST(IpFilterMidDirected, EverySizeAndWidthFollowsTheDefinition)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        for (long nWidth = 2; nWidth <= 31; ++nWidth)
        {
            for (const bool bOrtho : {false, true})
            {
                ClImage cIn, cExpected, cOut;
                FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 31);
                ClDirections cDirections(cSize.nWidth, cSize.nHeight, static_cast<unsigned int>(nWidth));
                ClIpFilterMid cFilter;
                cDirections.GiveTo(cFilter);
                const long nResult = cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, bOrtho ? 16 : 8);
                const bool bFits = cSize.nWidth > (nWidth | 1) - 1;
                EXPECT_EQ(bFits ? FPC_SUCCESS : FPC_ERROR_BITMAP_DIMENSION, nResult);
                DirectedByDefinition(cIn, cDirections, static_cast<int>(nWidth | 1), bOrtho, cExpected);
                ASSERT_TRUE(SamePixels(bFits ? cExpected : cIn, cOut))
                    << cSize.nWidth << ' ' << cSize.nHeight << ' ' << nWidth << bOrtho;
            }
        }
    }
}

TEST(IpFilterMidDirected, TheSteepestDirectionsStayInsideTheImage)
{
    const ClGuardedBytes cBlock(13 * 12);
    ClImage cIn, cExpected, cOut;
    cIn.Attach(cBlock.Data(), ClImage::eUInt8, 12, 13, 1, 0, 0);
    FillRandom(cIn, 32);
    ClDirections cDirections(12, 13, 1);
    for (const auto& [nDx, nDy] : {Size(-128, -128), Size(-128, 127), Size(127, -128), Size(127, 127), Size(-128, 0)})
    {
        FillFlat(cDirections.m_cDx, ClImage::eSInt8, 12, 13, static_cast<signed char>(nDx));
        FillFlat(cDirections.m_cDy, ClImage::eSInt8, 12, 13, static_cast<signed char>(nDy));
        for (const bool bOrtho : {false, true})
        {
            ClIpFilterMid cFilter;
            cDirections.GiveTo(cFilter);
            ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 11, bOrtho ? 16 : 8));
            DirectedByDefinition(cIn, cDirections, 11, bOrtho, cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nDx << ' ' << nDy;
        }
    }
}

TEST(IpFilterMidDirected, AVeryWideImageIsReachedToItsEnd)
{
    constexpr int nColumns = (1 << 23) + 9; // positions with eight fractional bits leave 32 bits here
    ClImage cIn, cOut;
    FillRandom8(cIn, nColumns, 1, 33);
    ClDirections cDirections(nColumns, 1, 34);
    ClIpFilterMid cFilter;
    cDirections.GiveTo(cFilter);
    ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
    EXPECT_TRUE(SamePixels(cIn, cOut)); // a single row has no room for a line
}

TEST(IpFilterMidDirected, RefusesDirectionsWithoutPixelsAndOfSeveralPlanes)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 24);
    ClDirections cDirections(9, 9, 1);
    ClIpFilterMid cFilter;
    cDirections.GiveTo(cFilter);
    cDirections.m_cDx.Attach(nullptr, ClImage::eSInt8, 9, 9, 1, 0, 0);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
    cDirections.m_cDx.NewWithType(ClImage::eSInt8, 9, 9, 3, 0, 0);
    EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
    cDirections.m_cDx.NewWithType(0, 9, 9, 1, 0, 0);
    EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8));
}

TEST(IpFilterMidDirected, AnImageWithoutPixelsIsTooNarrow)
{
    ClImage cEmpty, cNull, cOut;
    cEmpty.NewWithType(ClImage::eUInt8, 0, 0, 1, 0, 0);
    cNull.Attach(nullptr, ClImage::eUInt8, 9, 9, 1, 0, 0);
    ClDirections cDirections(9, 9, 1);
    for (ClImage* pIn : {&cEmpty, &cNull})
    {
        ClIpFilterMid cFilter;
        cDirections.GiveTo(cFilter);
        EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ClIpFilterBase::ApplyParam(*pIn, cOut, 3, 8));
    }
}

TEST(IpFilterMidDirected, TellsThatMemoryIsExhausted)
{
    ClImage cIn;
    FillRandom8(cIn, 9, 9, 24);
    ClDirections cDirections(9, 9, 1);
    const long nFailed = ExpectBadAllocAtEveryAllocation(
        [&]
        {
            ClImage cOut;
            ClIpFilterMid cFilter;
            cDirections.GiveTo(cFilter);
            cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 8);
        });
    EXPECT_LT(0, nFailed);
}
