// The passes in one direction, of all sample types.

#include "RDImageProcessing/IpFilterMid.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/MidFilterDefinitions.hpp"
#include "RDImageProcessing/SampleAccess.hpp"
#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

using namespace MidFilterDefinitions;

namespace
{
/// One pass over bytes, with the width reduced to an odd one that fits; returns the width in force.
long BytePassByDefinition(const ClImage& cIn, bool bRows, long nWidth, ClImage& cOut)
{
    const int nSize = bRows ? cIn.m_nWidth : cIn.m_nHeight;
    nWidth = nSize > nWidth ? nWidth : nSize % 2 == 0 ? nSize - 1 : nSize - 2;
    if (nWidth > 1)
    {
        PassByDefinition<unsigned char>(cIn, bRows, nWidth, 0, true, cOut);
    }
    return nWidth;
}

/// What a run with a width above 1 makes of one plane; nWidth is the width before and after it. Returns its code.
template <class T> long RunByDefinition(const ClImage& cIn, long nMode, long& nWidth, ClImage& cOut)
{
    cOut = cIn;
    if constexpr (std::is_same_v<T, unsigned char>)
    {
        if (nMode != 3)
        {
            nWidth = BytePassByDefinition(cIn, nMode == 1, nWidth, cOut);
        }
        else if (cIn.m_nWidth >= nWidth && cIn.m_nHeight >= nWidth)
        {
            nWidth == 3 ? Mean3x3ByDefinition(cIn, cOut) : BoxMeanByDefinition<T>(cIn, int(nWidth / 2), cOut);
        }
        return FPC_SUCCESS;
    }
    else
    {
        for (const long nPass : {1L, 2L})
        {
            if ((nMode & nPass) != 0 && nWidth != 0)
            {
                ClImage cPassIn;
                cPassIn = cOut;
                nWidth = TypedPassByDefinition<T>(cPassIn, nPass == 1, nWidth, cOut);
            }
        }
        return nWidth == 0 ? FPC_ERROR_INTERNAL : FPC_SUCCESS;
    }
}

/// Holds one run on an image of one to four planes to the definition; planes are taken from the third to the first.
template <class T> void ExpectRunByDefinition(ClImage& cIn, long nWidth, long nMode)
{
    SCOPED_TRACE("width " + std::to_string(nWidth) + ", mode " + std::to_string(nMode));
    ClImage cOut, cBefore;
    cBefore = cIn;
    ClIpFilterMid cFilter;
    const long nResult = cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, nMode);
    EXPECT_TRUE(SamePixels(cBefore, cIn));
    long nExpectedWidth = nWidth | 1;
    if (nExpectedWidth == 1)
    {
        EXPECT_EQ(FPC_SUCCESS, nResult);
        EXPECT_TRUE(SamePixels(cIn, cOut));
        return;
    }
    long nFailure = FPC_SUCCESS;
    for (int i = std::min(cIn.m_nPlanes, 3) - 1; i >= 0; --i)
    {
        ClImage cPlane, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        const bool bCopied = nExpectedWidth <= 1; // a plane has reduced it so far
        const long nCode = bCopied ? long(FPC_SUCCESS) : RunByDefinition<T>(cPlane, nMode, nExpectedWidth, cExpected);
        nFailure = nFailure == FPC_SUCCESS ? nCode : nFailure;
        if (nFailure == FPC_SUCCESS)
        {
            ASSERT_EQ(cIn.m_nPlanes, cOut.m_nPlanes);
            cOut.GetPlane(i, cActual);
            ASSERT_TRUE(SamePixels(bCopied ? cPlane : cExpected, cActual)) << "plane " << i;
        }
    }
    EXPECT_EQ(cIn.m_nPlanes == 1 ? nFailure : long(FPC_SUCCESS), nResult);
    EXPECT_EQ(nExpectedWidth, cFilter.m_nFilterWidth);
}
} // namespace

TEST(IpFilterMidTypes, EveryTypeSizeAndWidthFollowsTheDefinition)
{
    ForEachRandomImage(4,
                       [](ClImage& cIn, auto cTag)
                       {
                           for (long nWidth = 1; nWidth <= 31; ++nWidth)
                           {
                               for (const long nMode : {1L, 2L, 3L})
                               {
                                   ExpectRunByDefinition<typename decltype(cTag)::Type>(cIn, nWidth, nMode);
                               }
                           }
                       });
}

TEST(IpFilterMidTypes, AnEvenWidthLeftByTheFirstPassDividesByOneSampleTooFew)
{
    ClImage cIn, cOut;
    FillFlat<unsigned short>(cIn, ClImage::eUInt16, 5, 9, 100);
    ClIpFilterMid cFilter;
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
    EXPECT_EQ(4, cFilter.m_nFilterWidth); // 5 columns leave a width of 4, whose window has 5 samples
    const int anExpected[] = {100, 100, 100, 125, 125, 125, 125, 100, 100}; // (5 * 100 + 2) / 4
    for (int y = 0; y < 9; ++y)
    {
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(anExpected[y], Row<unsigned short>(cOut, y)[x]) << x << ' ' << y;
        }
    }
}

TEST(IpFilterMidTypes, AFloatMeanBeyondTheRangeIsInfinite)
{
    ClImage cIn, cOut;
    FillFlat<float>(cIn, ClImage::eFloat32, 5, 9, std::numeric_limits<float>::max());
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ApplyParam(cIn, cOut, 5));
    EXPECT_EQ(std::numeric_limits<float>::max(), Row<float>(cOut, 0)[2]);
    EXPECT_EQ(std::numeric_limits<float>::infinity(), Row<float>(cOut, 4)[2]); // divides by one sample too few
}

TEST(IpFilterMidTypes, NotANumberSpoilsTheRestOfItsLineOnly)
{
    for (const unsigned char eType : {ClImage::eFloat32, ClImage::eDouble64})
    {
        for (const long nMode : {1L, 2L})
        {
            ClImage cIn, cOut;
            cIn.NewWithType(eType, 7, 7, 1, 0, 0);
            FillRandom(cIn, 30);
            const int x = nMode == 1 ? 3 : 2;
            const int y = nMode == 1 ? 2 : 3;
            constexpr double dNaN = std::numeric_limits<double>::quiet_NaN();
            eType == ClImage::eFloat32 ? SetSample(cIn, x, y, 0, static_cast<float>(dNaN))
                                       : SetSample(cIn, x, y, 0, dNaN);
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, nMode));
            for (int n = 0; n < 49; ++n)
            {
                const int nLine = nMode == 1 ? n / 7 : n % 7;
                const int nPlace = nMode == 1 ? n % 7 : n / 7;
                const double dMean = eType == ClImage::eFloat32
                                         ? static_cast<double>(SampleAt<float>(cOut, n % 7, n / 7))
                                         : SampleAt<double>(cOut, n % 7, n / 7);
                EXPECT_EQ(nLine == 2 && nPlace >= 2, std::isnan(dMean)) << n;
            }
        }
    }
}

TEST(IpFilterMidTypes, NoTypeReadsBehindTheLastRow)
{
    for (const unsigned char eType : aEveryType)
    {
        for (const long nMode : {1L, 2L, 3L})
        {
            for (const long nWidth : {3L, 8L, 99L})
            {
                const ClGuardedBytes cBlock(13 * 12 * ClImage::SampleSize(eType));
                ClImage cIn, cOut;
                cIn.Attach(cBlock.Data(), eType, 12, 13, 1, 0, 0);
                FillRandom(cIn, 3);
                EXPECT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, nMode));
            }
        }
    }
}

TEST(IpFilterMidTypes, SignedPassesTellThatMemoryIsExhausted)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt8, 9, 8, 1, 0, 0);
    FillRandom(cIn, 28);
    for (const auto pfnPass :
         {&ClIpFilterMid::ProcessSignedX, &ClIpFilterMid::ProcessSignedY, &ClIpFilterMid::ProcessSignedXY})
    {
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&cIn, pfnPass]
            {
                ClImage cOut;
                ClIpFilterMid cFilter;
                cFilter.m_pInImage = &cIn;
                cFilter.m_pOutImage = &cOut;
                cFilter.m_nFilterWidth = 5;
                (cFilter.*pfnPass)();
            });
        EXPECT_LT(0, nFailed);
    }
}

TEST(IpFilterMidTypes, AFlatImageOfAnyOtherTypeStaysFlat)
{
    const auto check = [](auto eType, auto value)
    {
        for (const long nMode : {1L, 2L, 3L})
        {
            ClImage cIn, cOut;
            FillFlat(cIn, eType, 9, 8, value);
            ClIpFilterMid cFilter;
            cFilter.m_nMode = nMode;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
            EXPECT_TRUE(SamePixels(cIn, cOut)) << nMode;
        }
    };
    for (int nValue = -128; nValue < 128; ++nValue)
    {
        check(ClImage::eSInt8, static_cast<signed char>(nValue));
        check(ClImage::eSInt16, static_cast<short>(nValue * 256 + nValue));
        check(ClImage::eSInt32, static_cast<int>(nValue * 16777216L + 128 + nValue));
        check(ClImage::eUInt16, static_cast<unsigned short>((nValue + 128) * 257));
        check(ClImage::eUInt32, static_cast<unsigned int>(nValue + 128) * 16843009u);
        check(ClImage::eFloat32, static_cast<float>(nValue) * 0.25f);
        check(ClImage::eDouble64, nValue * 0.25);
    }
}

TEST(IpFilterMidTypes, EightBitPassesAreRoundedMeansOfTheClippedLine)
{
    for (const long nWidth : {3L, 5L, 9L})
    {
        for (const auto& [nColumns, nRows] : {Size(10, 10), Size(11, 40), Size(67, 13)})
        {
            for (const long nMode : {1L, 2L})
            {
                ClImage cIn, cExpected, cOut;
                FillRandom8(cIn, nColumns, nRows, 11);
                PassByDefinition<unsigned char>(cIn, nMode == 1, nWidth, 0, true, cExpected);
                ClIpFilterMid cFilter;
                ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, nWidth, nMode));
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << ' ' << nMode;
                EXPECT_EQ(nWidth, cFilter.m_nFilterWidth);
            }
        }
    }
}

TEST(IpFilterMidTypes, AnEightBitPassShrinksTheWidthToAnOddOneForGood)
{
    for (const long nMode : {1L, 2L})
    {
        ClIpFilterMid cFilter;
        ClImage cIn, cExpected, cOut;
        FillRandom8(cIn, nMode == 1 ? 5 : 8, nMode == 1 ? 8 : 5, 12);
        ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 5, nMode));
        EXPECT_EQ(3, cFilter.m_nFilterWidth); // 5 - 1 is even
        PassByDefinition<unsigned char>(cIn, nMode == 1, 3, 0, true, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));

        FillRandom8(cIn, 20, 20, 13);
        ASSERT_EQ(FPC_SUCCESS, cFilter.Apply());
        PassByDefinition<unsigned char>(cIn, nMode == 1, 3, 0, true, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));

        FillRandom8(cIn, 6, 6, 12);
        ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 99, nMode));
        EXPECT_EQ(5, cFilter.m_nFilterWidth);
    }
}

TEST(IpFilterMidTypes, AnEightBitPassCopiesLinesOfOneAndTwoSamples)
{
    for (const long nMode : {1L, 2L})
    {
        for (const int nSize : {1, 2, 3})
        {
            ClImage cIn, cOut;
            FillRandom8(cIn, nMode == 1 ? nSize : 9, nMode == 1 ? 9 : nSize, 14);
            ClIpFilterMid cFilter;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, nMode));
            EXPECT_TRUE(SamePixels(cIn, cOut)) << nSize;
            EXPECT_EQ(nSize == 1 ? -1 : 1, cFilter.m_nFilterWidth);
        }
    }
}

TEST(IpFilterMidTypes, APassWithoutAWidthFails)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 15);
    ClIpFilterMid cFilter;
    cFilter.m_pInImage = &cIn;
    cFilter.m_pOutImage = &cOut;
    cFilter.m_nFilterWidth = 0;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cFilter.ProcessX());
    EXPECT_EQ(FPC_ERROR_INTERNAL, cFilter.ProcessY());
    EXPECT_EQ(FPC_ERROR_INTERNAL, cFilter.ProcessSignedX());
    EXPECT_EQ(FPC_ERROR_INTERNAL, cFilter.ProcessSignedY());
}

TEST(IpFilterMidTypes, AllOtherTypesRunBothDirectionsOneAfterTheOther)
{
    for (const unsigned char eType : {ClImage::eUInt16, ClImage::eUInt32, ClImage::eSInt8, ClImage::eSInt16,
                                      ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64})
    {
        for (const auto& [nColumns, nRows] : {Size(10, 10), Size(11, 40), Size(67, 13), Size(4, 9), Size(9, 3)})
        {
            for (const long nMode : {1L, 2L, 3L})
            {
                ClImage cIn, cBetween, cExpected, cOut;
                cIn.NewWithType(eType, nColumns, nRows, 1, 0, 0);
                FillRandom(cIn, 16);
                long nWidth = 5;
                DispatchSampleType(eType, 0,
                                   [&, nFlags = nMode](auto cTag)
                                   {
                                       using T = typename decltype(cTag)::Type;
                                       cBetween = cIn;
                                       if ((nFlags & 1) != 0)
                                       {
                                           nWidth = TypedPassByDefinition<T>(cIn, true, nWidth, cBetween);
                                       }
                                       cExpected = cBetween;
                                       if ((nFlags & 2) != 0)
                                       {
                                           nWidth = TypedPassByDefinition<T>(cBetween, false, nWidth, cExpected);
                                       }
                                       return 0L;
                                   });
                ClIpFilterMid cFilter;
                ASSERT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 5, nMode));
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << nMode;
                EXPECT_EQ(nWidth, cFilter.m_nFilterWidth);
            }
        }
    }
}

TEST(IpFilterMidTypes, OtherTypesFailOnALineOfOneSampleAndCopyTwo)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt16, 1, 9, 1, 0, 0);
    FillRandom(cIn, 17);
    EXPECT_EQ(FPC_ERROR_INTERNAL, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 1));
    EXPECT_EQ(FPC_ERROR_INTERNAL, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 3));
    EXPECT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 2));

    cIn.NewWithType(ClImage::eUInt16, 2, 9, 1, 0, 0);
    FillRandom(cIn, 17);
    ClIpFilterMid cFilter;
    EXPECT_EQ(FPC_SUCCESS, cFilter.ClIpFilterBase::ApplyParam(cIn, cOut, 3, 3));
    EXPECT_TRUE(SamePixels(cIn, cOut)); // the width is 1 in the second pass, too
    EXPECT_EQ(1, cFilter.m_nFilterWidth);
}

TEST(IpFilterMidTypes, AGreyImageThatLeavesNoWidthLeavesTheOutputsPixels)
{
    for (const long nMode : {1L, 2L})
    {
        const int nWidth = nMode == 1 ? 1 : 6;
        const int nHeight = nMode == 1 ? 6 : 1;
        ClImage cIn, cOut, cBefore;
        cIn.NewWithType(ClImage::eUInt16, nWidth, nHeight, 1, 3937, 3937);
        FillRandom(cIn, 31);
        cOut.NewWithType(ClImage::eUInt16, nWidth, nHeight, 1, 3937, 3937);
        FillRandom(cOut, 32);
        cBefore = cOut;
        EXPECT_EQ(-101, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, nMode));
        EXPECT_TRUE(SamePixels(cBefore, cOut));
    }
}

TEST(IpFilterMidTypes, SizesBelowNothingAreRefusedAgainAndAgain)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt16, 1, 5, 1, 3937, 3937);
    cOut.NewWithType(ClImage::eUInt16, 1, 5, 1, 3937, 3937);
    cIn.m_nHeight = -5;
    EXPECT_RAISES_CODE(ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 1), -101);
    EXPECT_EQ(-101, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, 1)) << "the sizes are the same by now";
}

TEST(IpFilterMidTypes, FloatingPointSumsAreRunningSums)
{
    // 1e17 swallows the ones that stand in the window with it, and they are gone when it leaves.
    const double adIn[] = {1e17, 1, 1, 1, 1, 1, 1};
    const double adExpected[] = {1e17 / 2, 1e17 / 3, 1.0 / 3, 1.0 / 3, 1.0 / 3, 1.0 / 3, 0};
    ClImage cIn, cOut;
    for (const long nMode : {1L, 2L})
    {
        cIn.NewWithType(ClImage::eDouble64, nMode == 1 ? 7 : 1, nMode == 1 ? 1 : 7, 1, 0, 0);
        std::copy_n(adIn, 7, Row<double>(cIn, 0));
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMid().ClIpFilterBase::ApplyParam(cIn, cOut, 3, nMode));
        for (int i = 0; i < 7; ++i)
        {
            EXPECT_EQ(adExpected[i], Row<double>(cOut, 0)[i]) << i;
        }
    }
}

TEST(IpFilterMidTypes, SignedBytesTruncateTowardZeroWithoutRounding)
{
    for (const auto& [nColumns, nRows] : {Size(10, 10), Size(11, 40), Size(67, 13)})
    {
        ClImage cIn, cExpected, cOut;
        cIn.NewWithType(ClImage::eSInt8, nColumns, nRows, 1, 0, 0);
        FillRandom(cIn, 18);
        ClIpFilterMid cFilter;
        cFilter.m_pInImage = &cIn;
        cFilter.m_pOutImage = &cOut;
        for (const long nWidth : {3L, 5L, 9L})
        {
            cFilter.m_nFilterWidth = nWidth;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ProcessSignedX());
            PassByDefinition<signed char>(cIn, true, nWidth, 0, false, cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ProcessSignedY());
            PassByDefinition<signed char>(cIn, false, nWidth, 0, false, cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth;
            ASSERT_EQ(FPC_SUCCESS, cFilter.ProcessSignedXY());
            nWidth == 3 ? SignedMean3x3ByDefinition(cIn, cExpected)
                        : BoxMeanByDefinition<signed char>(cIn, static_cast<int>(nWidth / 2), cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth;
        }
    }
}

TEST(IpFilterMidTypes, SignedPassesShrinkToAnOddWidth)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eSInt8, 5, 5, 1, 0, 0);
    FillRandom(cIn, 19);
    ClIpFilterMid cFilter;
    cFilter.m_pInImage = &cIn;
    cFilter.m_pOutImage = &cOut;
    cFilter.m_nFilterWidth = 5;
    EXPECT_EQ(FPC_SUCCESS, cFilter.ProcessSignedX());
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
    cFilter.m_nFilterWidth = 5;
    EXPECT_EQ(FPC_SUCCESS, cFilter.ProcessSignedY());
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
}
