#include "RDImageProcessing/IpFilterMid.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/MidFilterDefinitions.hpp"
#include "RDImageProcessing/SampleAccess.hpp"
#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace MidFilterDefinitions;

TEST(IpFilterMid, KnowsItsNameAndMakesItsLike)
{
    ClIpFilterMid cFilter;
    EXPECT_STREQ("ClIpFilterMid", cFilter.Name());
    const std::unique_ptr<ClProcessorBase> pCopy(cFilter.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpFilterMid*>(pCopy.get()));
    EXPECT_EQ(nullptr, cFilter.m_pRemainder);
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
}

TEST(IpFilterMid, DefaultsLeaveTheRemainderAlone)
{
    ClIpFilterMid cFilter;
    ClImage cRemainder;
    cFilter.SetRemainder(&cRemainder);
    cFilter.m_nFilterWidth = 5;
    cFilter.SetParametersToDefault();
    EXPECT_EQ(&cRemainder, cFilter.m_pRemainder);
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
}

TEST(IpFilterMid, EightBitXYIsTheTruncatedMeanOfTheClippedBox)
{
    for (const long nWidth : {5L, 7L, 9L, 21L})
    {
        for (const auto& [nColumns, nRows] : aSizes)
        {
            ClImage cIn, cExpected, cOut;
            FillRandom8(cIn, nColumns, nRows, 7);
            if (nColumns < nWidth || nRows < nWidth)
            {
                cExpected = cIn;
            }
            else
            {
                BoxMeanByDefinition<unsigned char>(cIn, static_cast<int>(nWidth / 2), cExpected);
            }
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, nWidth));
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth;
        }
    }
}

TEST(IpFilterMid, ABoxAsLargeAsTheImageCoversItFromTheMiddleOnly)
{
    ClImage cIn, cExpected, cOut;
    FillRandom8(cIn, 9, 9, 8);
    BoxMeanByDefinition<unsigned char>(cIn, 4, cExpected);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 9));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpFilterMid, VeryWideBoxesDoNotOverflow)
{
    // The first odd widths at which the sum of the largest samples leaves 32 bits, unsigned and signed.
    ClImage cIn, cOut;
    FillFlat<unsigned char>(cIn, ClImage::eUInt8, 4105, 4105, 255);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 4105));
    EXPECT_TRUE(SamePixels(cIn, cOut));
    FillFlat<signed char>(cIn, ClImage::eSInt8, 4099, 4099, -128);
    ClIpFilterMid cFilter;
    cFilter.m_pInImage = &cIn;
    cFilter.m_pOutImage = &cOut;
    cFilter.m_nFilterWidth = 4099;
    ASSERT_EQ(FPC_SUCCESS, cFilter.ProcessSignedXY());
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpFilterMid, WidthThreeUsesItsFixedPointFactors)
{
    for (const auto& [nColumns, nRows] : aSizes)
    {
        ClImage cIn, cExpected, cOut;
        FillRandom8(cIn, nColumns, nRows, 9);
        Mean3x3ByDefinition(cIn, cExpected);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 3));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpFilterMid, WidthThreeDiffersFromExactDivisionWhereItsFactorsDo)
{
    // Sum 14 of nine samples: (14 + 4) / 9 is 2, but 18 * 455 >> 12 is 1.
    ClImage cIn, cOut;
    FillFlat<unsigned char>(cIn, ClImage::eUInt8, 3, 3, 1);
    Row<unsigned char>(cIn, 1)[1] = 6;
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 3));
    EXPECT_EQ(1, Sample<unsigned char>(cOut, 1, 1));
}

TEST(IpFilterMid, AFlatImageStaysFlatForEveryValueAndPath)
{
    for (int nValue = 0; nValue < 256; ++nValue)
    {
        ClImage cIn, cOut, cRemainder;
        FillFlat<unsigned char>(cIn, ClImage::eUInt8, 9, 8, static_cast<unsigned char>(nValue));
        ClDirections cDirections(9, 8, 3);
        for (const long nWidth : {3L, 5L, 7L})
        {
            for (const long nMode : {1L, 2L, 3L, 8L, 16L})
            {
                ClIpFilterMid cFilter;
                cDirections.GiveTo(cFilter);
                cFilter.m_nMode = nMode;
                ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth));
                EXPECT_TRUE(SamePixels(cIn, cOut)) << nWidth << ' ' << nMode;
            }
            ClIpFilterMid cFilter;
            cFilter.SetRemainder(&cRemainder);
            ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth));
            EXPECT_TRUE(SamePixels(cIn, cOut)) << nWidth;
        }
    }
}

TEST(IpFilterMid, AnEvenWidthRunsAsTheNextOddOneAndKeepsIt)
{
    ClImage cIn, cFour, cFive;
    FillRandom8(cIn, 30, 25, 4);
    ClIpFilterMid cFilter;
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cFour, 4));
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cFive, 5));
    EXPECT_TRUE(SamePixels(cFive, cFour));
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cFour, 20));
    EXPECT_EQ(21, cFilter.m_nFilterWidth);
    BoxMeanByDefinition<unsigned char>(cIn, 10, cFive);
    EXPECT_TRUE(SamePixels(cFive, cFour));
}

TEST(IpFilterMid, WidthZeroRunsAsOneAndCopies)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt16, ClImage::eDouble64})
    {
        for (const long nMode : {1L, 2L, 3L})
        {
            ClImage cIn, cOut;
            cIn.NewWithType(eType, 7, 6, 1, 0, 0);
            FillRandom(cIn, 5);
            ClIpFilterMid cFilter;
            cFilter.m_nMode = nMode;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 0));
            EXPECT_EQ(1, cFilter.m_nFilterWidth);
            EXPECT_TRUE(SamePixels(cIn, cOut));
        }
    }
}

TEST(IpFilterMid, XYCopiesAnImageThatIsNarrowerOrLowerThanTheBox)
{
    for (const auto& [nColumns, nRows] : {Size(1, 1), Size(4, 9), Size(9, 4), Size(4, 4)})
    {
        for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8})
        {
            ClImage cIn, cOut;
            cIn.NewWithType(eType, nColumns, nRows, 1, 0, 0);
            FillRandom(cIn, 6);
            ClIpFilterMid cFilter;
            cFilter.m_pInImage = &cIn;
            cFilter.m_pOutImage = &cOut;
            cFilter.m_nFilterWidth = 5;
            ASSERT_EQ(FPC_SUCCESS, eType == ClImage::eUInt8 ? cFilter.ProcessXY() : cFilter.ProcessSignedXY());
            EXPECT_TRUE(SamePixels(cIn, cOut));
            EXPECT_EQ(5, cFilter.m_nFilterWidth);
        }
    }
}

TEST(IpFilterMid, XYCopiesASinglePixelAtWidthThree)
{
    ClImage cIn, cOut;
    FillFlat<unsigned char>(cIn, ClImage::eUInt8, 1, 1, 93);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 3));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpFilterMid, GivesTheOutputTheDescriptionOfTheInput)
{
    for (const long nMode : {1L, 2L, 3L})
    {
        for (const unsigned char eType : {ClImage::eUInt8, ClImage::eUInt16, ClImage::eFloat32})
        {
            ClImage cIn, cOut(3, 3, 1, 0, 0);
            cIn.NewWithType(eType, 12, 11, 1, 3937, 3938);
            FillRandom(cIn, 3);
            cIn.m_nAttribute = 42;
            cIn.m_eContent = ClImage::eUnknown;
            cIn.m_dWhite = eType == ClImage::eUInt8 ? 255.0 : 0.5;
            ClIpFilterMid cFilter;
            cFilter.m_nMode = nMode;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
            EXPECT_TRUE(SameDescription(cIn, cOut));
        }
    }
}

TEST(IpFilterMid, TakesImagesWithoutPixels)
{
    for (const auto& [nColumns, nRows] : {Size(0, 0), Size(0, 9), Size(9, 0)})
    {
        for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt16})
        {
            for (const long nMode : {1L, 2L, 3L})
            {
                ClImage cIn, cOut(3, 3, 1, 0, 0);
                cIn.NewWithType(eType, nColumns, nRows, 1, 0, 0);
                ClIpFilterMid cFilter;
                cFilter.m_nMode = nMode;
                EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
                EXPECT_TRUE(SamePixels(cIn, cOut));
            }
        }
    }
}

TEST(IpFilterMid, NeverReadsBehindTheLastRow)
{
    for (const long nMode : {1L, 2L, 3L, 8L})
    {
        for (const long nWidth : {3L, 5L})
        {
            const ClGuardedBytes cBlock(13 * 12);
            ClImage cIn, cOut;
            cIn.Attach(cBlock.Data(), ClImage::eUInt8, 12, 13, 1, 0, 0);
            FillRandom(cIn, 3);
            ClDirections cDirections(12, 13, 4);
            ClIpFilterMid cFilter;
            cDirections.GiveTo(cFilter);
            cFilter.m_nMode = nMode;
            EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth));
        }
    }
}

TEST(IpFilterMid, RefusesToWorkInPlace)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eFloat32})
    {
        ClImage cImage;
        cImage.NewWithType(eType, 9, 9, 1, 0, 0);
        FillRandom(cImage, 5);
        EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpFilterMid().ApplyParam(cImage, cImage, 3));
    }
}

TEST(IpFilterMid, RaisesForUnknownTypesAndModesAndWithoutInput)
{
    ClIpFilterMid cFilter;
    EXPECT_RAISES_CODE(cFilter.DoProcess(), FPC_ERROR_BITMAP_PTR);
    ClImage cEmpty, cOut;
    cFilter.m_pInImage = &cOut;
    EXPECT_RAISES_CODE(cFilter.DoProcess(), FPC_ERROR_BITMAP_PTR);
    EXPECT_RAISES_CODE(cFilter.ApplyParam(cEmpty, cOut, 3), FPC_ERROR_PARAM_OUT_OF_RANGE);
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eUInt32, ClImage::eDouble64})
    {
        ClImage cIn;
        cIn.NewWithType(eType, 4, 4, 1, 0, 0);
        EXPECT_RAISES_CODE(cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 4), FPC_ERROR_PARAM_OUT_OF_RANGE);
    }
}

TEST(IpFilterMid, TheRemainderHoldsTheFractionOfEachMean)
{
    for (const long nWidth : {3L, 5L, 7L})
    {
        ClImage cIn, cOut, cRemainder;
        FillRandom8(cIn, 23, 17, 20);
        ClIpFilterMid cFilter;
        cFilter.SetRemainder(&cRemainder);
        ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth));
        EXPECT_TRUE(SameDescription(cIn, cRemainder));
        const int nHalf = static_cast<int>(nWidth / 2);
        for (int y = 0; y < cIn.m_nHeight; ++y)
        {
            for (int x = 0; x < cIn.m_nWidth; ++x)
            {
                const auto [dSum, nCount] = ClippedSum<unsigned char>(cIn, x, y, nHalf, nHalf);
                const double dFactor = nCount == 4 ? 0.25 : nCount == 6 ? 0.16666666666666666 : 0.1111111111111111;
                const double dMean = nWidth == 3 ? dSum * dFactor : dSum / nCount;
                const int nParts = static_cast<int>(dMean * 256.0);
                ASSERT_EQ(nParts >> 8, Sample<unsigned char>(cOut, x, y)) << x << ' ' << y;
                ASSERT_EQ(nParts & 255, Sample<unsigned char>(cRemainder, x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST(IpFilterMid, TheRemainderOfACopyIsLeftAlone)
{
    ClImage cIn, cOut, cRemainder, cBefore;
    FillRandom8(cIn, 4, 9, 20);
    FillRandom8(cRemainder, 4, 9, 21);
    cBefore = cRemainder;
    ClIpFilterMid cFilter;
    cFilter.SetRemainder(&cRemainder);
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
    EXPECT_TRUE(SamePixels(cIn, cOut));
    EXPECT_TRUE(SamePixels(cBefore, cRemainder));
}

TEST(IpFilterMid, TheRemainderIsNeitherInputNorOutput)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 20);
    ClIpFilterMid cFilter;
    cFilter.SetRemainder(&cIn);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cFilter.ApplyParam(cIn, cOut, 5));
    cFilter.SetRemainder(&cOut);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cFilter.ApplyParam(cIn, cOut, 5));
}

TEST(IpFilterMid, ColourPlanesAreFilteredOneByOne)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt16, ClImage::eFloat32})
    {
        for (const bool bInPlace : {false, true})
        {
            ClImage cIn, cCopy, cOut;
            cIn.NewWithType(eType, 13, 11, 3, 0, 0);
            FillRandom(cIn, 26);
            cCopy = cIn;
            ClImage& cTarget = bInPlace ? cIn : cOut;
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cTarget, 5));
            EXPECT_EQ(ClImage::eRGB, cTarget.m_eContent);
            for (int i = 0; i < 3; ++i)
            {
                ClImage cPlane, cExpected, cActual;
                cCopy.GetPlane(i, cPlane);
                cTarget.GetPlane(i, cActual);
                ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cPlane, cExpected, 5));
                EXPECT_TRUE(SamePixels(cExpected, cActual)) << i;
            }
        }
    }
}

TEST(IpFilterMid, AFourthPlaneIsNotTaken)
{
    ClImage cIn, cOut, cFirst, cFourth, cExpected;
    cIn.NewWithType(ClImage::eUInt8, 13, 11, 4, 0, 0);
    FillRandom(cIn, 26);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 5));
    EXPECT_EQ(ClImage::eRGBA, cOut.m_eContent);
    ASSERT_EQ(4, cOut.m_nPlanes);
    cOut.GetPlane(3, cFourth);
    FillFlat<unsigned char>(cExpected, ClImage::eUInt8, 13, 11, 0);
    EXPECT_TRUE(SamePixels(cExpected, cFourth));
    cIn.GetPlane(0, cFirst);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cFirst, cExpected, 5));
    cOut.GetPlane(0, cFirst);
    EXPECT_TRUE(SamePixels(cExpected, cFirst));
}

TEST(IpFilterMid, TwoPlanesOfUnknownContentAreBothFiltered)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 13, 11, 2, 0, 0);
    FillRandom(cIn, 26);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 5));
    ASSERT_EQ(2, cOut.m_nPlanes);
    for (int i = 0; i < 2; ++i)
    {
        ClImage cPlane, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        cOut.GetPlane(i, cActual);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cPlane, cExpected, 5));
        EXPECT_TRUE(SamePixels(cExpected, cActual)) << i;
    }
}

TEST(IpFilterMid, AWidthThatShrinksOnTheThirdPlaneIsSmallForTheOthers)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eSInt16, 20, 3, 3, 0, 0);
    FillRandom(cIn, 27);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 5));
    for (int i = 2; i >= 0; --i)
    {
        ClImage cPlane, cBetween, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        cOut.GetPlane(i, cActual);
        TypedPassByDefinition<short>(cPlane, true, i == 2 ? 5 : 2, cBetween); // 3 rows leave a width of 2
        TypedPassByDefinition<short>(cBetween, false, i == 2 ? 5 : 2, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cActual)) << i;
    }
}

TEST(IpFilterMid, APlaneThatLeavesNoWidthIsZeroAndNotWhatTheMemoryHolds)
{
    const struct
    {
        unsigned char eType;
        int nWidth, nHeight, nPlanes;
        long nMode;
    } aCases[] = {{ClImage::eSInt8, 1, 1, 2, 3},
                  {ClImage::eSInt32, 1, 5, 3, 1},
                  {ClImage::eDouble64, 16, 1, 2, 3},
                  {ClImage::eFloat32, 1, 1, 3, 3}};
    for (const auto& c : aCases)
    {
        ClImage cIn, cOut, cFirst, cCopied, cLast;
        cIn.NewWithType(c.eType, c.nWidth, c.nHeight, c.nPlanes, 3937, 3937);
        FillRandom(cIn, 26);
        cOut.NewWithType(c.eType, c.nWidth, c.nHeight, c.nPlanes, 3937, 3937); // its block is used again
        FillRandom(cOut, 29);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, c.nMode));
        cIn.GetPlane(0, cFirst);
        cOut.GetPlane(0, cCopied);
        EXPECT_TRUE(SamePixels(cFirst, cCopied)) << "the width is 0 by now";
        cOut.GetPlane(c.nPlanes - 1, cLast);
        const auto* const pBytes = Row<unsigned char>(cLast, 0);
        const auto nBytes = static_cast<std::size_t>(c.nWidth * ClImage::SampleSize(c.eType));
        EXPECT_TRUE(std::all_of(pBytes, pBytes + nBytes, [](unsigned char n) { return n == 0; })) << int(c.eType);
    }
}

TEST(IpFilterMid, EveryPassTellsThatMemoryIsExhausted)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt16, ClImage::eDouble64})
    {
        for (const int nPlanes : {1, 3})
        {
            for (const long nMode : {1L, 2L, 3L})
            {
                ClImage cIn;
                cIn.NewWithType(eType, 9, 8, nPlanes, 0, 0);
                FillRandom(cIn, 28);
                const long nFailed = ExpectBadAllocAtEveryAllocation(
                    [&cIn, nMode]
                    {
                        ClImage cOut;
                        ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 5, nMode);
                    });
                EXPECT_LT(1, nFailed);
            }
        }
    }
}

TEST(IpFilterMid, TheRemainderTellsThatMemoryIsExhausted)
{
    ClImage cIn;
    FillRandom8(cIn, 9, 8, 28);
    for (const long nWidth : {3L, 5L})
    {
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&cIn, nWidth]
            {
                ClImage cOut, cRemainder;
                ClIpFilterMid cFilter;
                cFilter.SetRemainder(&cRemainder);
                cFilter.ApplyParam(cIn, cOut, nWidth);
            });
        EXPECT_LT(2, nFailed);
    }
}

TEST(IpFilterMid, TheSameObjectsServeAgainAfterMemoryWasExhausted)
{
    for (const int nPlanes : {1, 3})
    {
        ClImage cIn, cOut, cExpected;
        cIn.NewWithType(ClImage::eSInt16, 9, 8, nPlanes, 0, 0);
        FillRandom(cIn, 29);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cExpected, 5));
        ClIpFilterMid cFilter;
        for (long nPassing = 0; nPassing < 5; ++nPassing)
        {
            const ClFailingHeap cHeap(nPassing);
            EXPECT_RAISES_CODE(cFilter.ApplyParam(cIn, cOut, 5), FPC_ERROR_OUT_OF_MEMORY);
            EXPECT_EQ(&cIn, cFilter.m_pInImage);
            EXPECT_EQ(&cOut, cFilter.m_pOutImage);
        }
        ASSERT_EQ(FPC_SUCCESS, cFilter.Apply());
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpFilterMid, TheRemainderOfEverySizeAndWidth)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        ClImage cIn;
        FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 35);
        for (long nWidth = 5; nWidth <= 31; nWidth += 2)
        {
            ClImage cOut, cRemainder;
            ClIpFilterMid cFilter;
            cFilter.SetRemainder(&cRemainder);
            ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth));
            if (nWidth > cSize.nWidth || nWidth > cSize.nHeight)
            {
                EXPECT_EQ(nullptr, cRemainder.Data());
                continue;
            }
            ClSumTable cSums(cIn, static_cast<unsigned char>(0));
            for (int y = 0; y < cSize.nHeight; ++y)
            {
                for (int x = 0; x < cSize.nWidth; ++x)
                {
                    const auto [nSum, nCount] = cSums.Clipped(x, y, static_cast<int>(nWidth / 2));
                    ASSERT_EQ(nSum / nCount, Sample<unsigned char>(cOut, x, y)) << nWidth << ' ' << x << ' ' << y;
                    // nSum / nCount in doubles, of which the part behind the point counts 1/256, truncated
                    ASSERT_EQ(nSum * 256 / nCount % 256, Sample<unsigned char>(cRemainder, x, y))
                        << nWidth << ' ' << x << ' ' << y;
                }
            }
        }
    }
}

TEST(IpFilterMid, WidthsFarAboveTheImageAndBelowZero)
{
    constexpr long nMost = std::numeric_limits<long>::max();
    constexpr long nLeast = std::numeric_limits<long>::min();
    for (const unsigned char eType : aEveryType)
    {
        ClImage cIn, cOut, cExpected;
        cIn.NewWithType(eType, 20, 14, 1, 0, 0);
        FillRandom(cIn, 36);
        for (const long nWidth : {nLeast, nLeast + 1, -2L, -1L})
        {
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, nWidth));
            EXPECT_TRUE(SamePixels(cIn, cOut));
        }
        for (const long nMode : {1L, 2L, 3L})
        {
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cExpected, 33, nMode));
            for (const long nWidth : {nMost, nMost - 1, 1L << 32})
            {
                ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, nMode));
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth;
            }
        }
    }
}

TEST(IpFilterMid, CopiesImagesThatHaveASizeButNoPixels)
{
    unsigned char anUnread[4] = {};
    for (const unsigned char eType : aEveryType)
    {
        for (const long nMode : {1L, 2L, 3L})
        {
            ClImage cNull, cNoPlane, cOut;
            cNull.Attach(nullptr, eType, 20, 14, 1, 0, 0);
            cNoPlane.Attach(anUnread, eType, 20, 14, 0, 0, 0);
            for (ClImage* pIn : {&cNull, &cNoPlane})
            {
                EXPECT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(*pIn, cOut, 5, nMode));
                EXPECT_EQ(20, cOut.m_nWidth);
                EXPECT_EQ(14, cOut.m_nHeight);
            }
        }
    }
}
