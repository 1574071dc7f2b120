#include "RDImageProcessing/IpFilterMidRotating.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/RotatingFilterDefinitions.hpp"
#include "RDImageProcessing/SampleAccess.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

using namespace RotatingFilterDefinitions;

namespace
{
using Rotating = ClIpFilterMidRotating;

/// What a run makes of one plane of bytes.
template <class T> void RunByDefinition(const ClImage& cIn, int nWidth, int nMode, ClImage& cOut)
{
    const int m = nWidth - nWidth / 2;
    const ClField cField = FieldOf<T>(cIn);
    ClMeansAndDeviations cMeasure = nMode == 0   ? DistanceMeasure(cField, m)
                                    : nMode == 1 ? ByteMeasure(cField, m)
                                    : nMode == 2 ? FixPointMeasure(cField, m)
                                                 : FloatMeasure(cField, m);
    if (nMode == 2 && std::is_signed_v<T>) // compared as signed numbers
    {
        for (double& dDev : cMeasure.m_cDev.m_ad)
        {
            dDev = static_cast<double>(static_cast<int>(static_cast<std::uint32_t>(dDev)));
        }
    }
    ImageOf<T>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, m / 2).Run(), nMode == 2 ? 256.0 : 1.0, cOut);
}

/// Holds a run on an image of one to four planes to the definition.
template <class T> void ExpectRunByDefinition(ClImage& cIn, int nWidth, int nMode)
{
    SCOPED_TRACE("width " + std::to_string(nWidth) + ", mode " + std::to_string(nMode));
    ClImage cOut;
    const long nResult = Rotating().ApplyParam(cIn, cOut, nWidth, static_cast<Rotating::EVarianceMode>(nMode));
    const bool bRefusedWidth = nWidth % 2 == 0 || nWidth == 3;
    if (bRefusedWidth || nWidth > cIn.m_nWidth || nWidth > cIn.m_nHeight)
    {
        EXPECT_EQ(bRefusedWidth ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_ERROR_BITMAP_DIMENSION, nResult);
        EXPECT_EQ(nullptr, cOut.Data());
        return;
    }
    if (nWidth > 1 && ((nMode == 2 && nWidth > 30) || (std::is_signed_v<T> && nMode < 2)))
    {
        EXPECT_EQ(cIn.m_nPlanes == 1 ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_SUCCESS, nResult); // planes do not tell
        return;
    }
    ASSERT_EQ(FPC_SUCCESS, nResult);
    ASSERT_EQ(cIn.m_nPlanes, cOut.m_nPlanes);
    for (int i = 0; i < std::min(cIn.m_nPlanes, 3); ++i)
    {
        ClImage cPlane, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        cOut.GetPlane(i, cActual);
        nWidth == 1 ? void(cExpected = cPlane) : RunByDefinition<T>(cPlane, nWidth, nMode, cExpected);
        ASSERT_TRUE(SamePixels(cExpected, cActual)) << "plane " << i;
    }
}
} // namespace

TEST(IpFilterMidRotating, HasItsNameAndDefaults)
{
    ClIpFilterMidRotating cFilter;
    EXPECT_STREQ("ClIpFilterMidRotating", cFilter.Name());
    const std::unique_ptr<ClProcessorBase> pCopy(cFilter.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpFilterMidRotating*>(pCopy.get()));
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviation, cFilter.m_eVarMode);
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    cFilter.m_eVarMode = ClIpFilterMidRotating::ModeLocalMaskDeviationFloat;
    cFilter.m_nFilterWidth = 9;
    cFilter.m_nMode = 1;
    cFilter.SetParametersToDefault();
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviation, cFilter.m_eVarMode);
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    EXPECT_EQ(3, cFilter.m_nMode);
}

TEST(IpFilterMidRotating, PublishesTheVarianceModeBehindTheBase)
{
    ClIpFilterMidRotating cFilter;
    ClParameterContainer cTree;
    cFilter.QueryParameters(cTree);
    EXPECT_STREQ("ClIpFilterMidRotating", cTree.GetName());
    const char* const aszNames[] = {"pInImage",   "pOutImage",  "nFilterWidth", "nMode",
                                    "pInDxImage", "pInDyImage", "eVarMode"};
    ASSERT_EQ(std::size(aszNames), cTree.m_aChildren.Entries());
    for (unsigned long i = 0; i < std::size(aszNames); ++i)
    {
        EXPECT_STREQ(aszNames[i], cTree.m_aChildren[i]->GetName());
    }
    ClParameter* pMode = cTree.Find("eVarMode");
    EXPECT_STREQ("ClIpFilterMidRotating::m_eVarMode", pMode->GetDescription());
    EXPECT_EQ("ModeLocalMaskDeviation", pMode->GetDefaultValue());
    EXPECT_EQ("5", cTree.Find("nFilterWidth")->GetDefaultValue());
    const char* const aszModes[] = {"ModeLocalMinDistanceToAverage", "ModeLocalMaskDeviation",
                                    "ModeLocalMaskDeviationFixPoint", "ModeLocalMaskDeviationFloat"};
    ASSERT_EQ(std::size(aszModes), pMode->GetEnumInterface()->GetValueNameCount());
    for (unsigned long i = 0; i < std::size(aszModes); ++i)
    {
        char szName[40];
        pMode->GetEnumInterface()->GetValueName(i, szName, sizeof szName);
        EXPECT_STREQ(aszModes[i], szName);
        pMode->SetValue(aszModes[i]);
        EXPECT_EQ(static_cast<int>(i), cFilter.m_eVarMode);
    }
}

TEST(IpFilterMidRotating, ApplyParamStoresItsArguments)
{
    ClIpFilterMidRotating cFilter;
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 1);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 9, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat));
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
    EXPECT_EQ(9, cFilter.m_nFilterWidth);
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviationFloat, cFilter.m_eVarMode);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviationFloat, cFilter.m_eVarMode);
}

TEST(IpFilterMidRotating, ChecksImagesThenWidthThenSize)
{
    ClIpFilterMidRotating cFilter;
    EXPECT_EQ(FPC_ERROR_PARAM_IS_MISSING, cFilter.Apply());
    EXPECT_FALSE(cFilter.CanApply());
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    cFilter.m_pInImage = &cIn;
    EXPECT_EQ(FPC_ERROR_PARAM_IS_MISSING, cFilter.Apply());
    EXPECT_FALSE(cFilter.CanApply());
    cFilter.m_pOutImage = &cOut;
    const std::pair<long, long> aCases[] = {{1, FPC_SUCCESS},
                                            {3, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {4, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {5, FPC_SUCCESS},
                                            {6, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {7, FPC_SUCCESS},
                                            {9, FPC_ERROR_BITMAP_DIMENSION},
                                            {10, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {11, FPC_ERROR_BITMAP_DIMENSION},
                                            {0, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {-1, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {-5, FPC_ERROR_PARAM_OUT_OF_RANGE}};
    for (const auto& [nWidth, nCode] : aCases)
    {
        EXPECT_EQ(nCode, cFilter.ApplyParam(cIn, cOut, nWidth)) << nWidth;
        EXPECT_EQ(nCode == FPC_SUCCESS, cFilter.CanApply()) << nWidth;
    }
    FillRandom8(cIn, 8, 10, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ApplyParam(cIn, cOut, 9));
}

TEST(IpFilterMidRotating, WidthOneCopies)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 1));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpFilterMidRotating, RefusesToWorkInPlace)
{
    ClImage cImage;
    FillRandom8(cImage, 10, 8, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpFilterMidRotating().ApplyParam(cImage, cImage, 5));
}

TEST(IpFilterMidRotating, ServesModeXYOnly)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    for (const long nMode : {1L, 2L, 8L, 16L})
    {
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED,
                  ClIpFilterMidRotating().ClIpFilterBase::ApplyParam(cIn, cOut, 5, nMode));
    }
}

TEST(IpFilterMidRotating, RefusesUnknownVarianceModesAndOtherSampleTypes)
{
    ClImage cIn, cOut;
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8, ClImage::eUInt16, ClImage::eFloat32})
    {
        cIn.NewWithType(eType, 10, 8, 1, 0, 0);
        FillRandom(cIn, 2);
        for (const int nMode : {-1, 4, 99})
        {
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE,
                      ClIpFilterMidRotating().ApplyParam(cIn, cOut, 5,
                                                         static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
        }
        if (eType != ClImage::eUInt8 && eType != ClImage::eSInt8)
        {
            EXPECT_EQ(
                FPC_ERROR_FORMAT_NOTSUPPORTED,
                ClIpFilterMidRotating().ApplyParam(cIn, cOut, 5, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat));
        }
    }
}

TEST(IpFilterMidRotating, AFlatImageStaysFlat)
{
    for (const int nMode : {0, 1, 2, 3})
    {
        for (int nValue = 0; nValue < 256; nValue += 5)
        {
            for (const long nWidth : {5L, 9L, 17L})
            {
                ClImage cIn, cOut;
                cIn.NewWithType(ClImage::eUInt8, 19, 18, 1, 0, 0);
                std::fill_n(cIn.Data(), 20 * 18, static_cast<unsigned char>(nValue));
                ASSERT_EQ(FPC_SUCCESS,
                          ClIpFilterMidRotating().ApplyParam(cIn, cOut, nWidth,
                                                             static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
                EXPECT_TRUE(SamePixels(cIn, cOut)) << nMode << ' ' << nWidth;
            }
        }
    }
}

TEST(IpFilterMidRotating, AStepEdgeStaysSharp)
{
    for (const int nMode : {1, 2, 3})
    {
        for (const bool bTurned : {false, true})
        {
            ClImage cIn, cOut;
            FillRandom8(cIn, 24, 24, 1);
            for (int y = 0; y < 24; ++y)
            {
                for (int x = 0; x < 24; ++x)
                {
                    Row<unsigned char>(cIn, y)[x] = (bTurned ? y : x) < 11 ? 30 : 220;
                }
            }
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                       cIn, cOut, 9, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
            EXPECT_TRUE(SamePixels(cIn, cOut)) << nMode;
        }
    }
}

TEST(IpFilterMidRotating, EachModeTakesTheMeanOfTheMostUniformMask)
{
    for (const auto& [nColumns, nRows] : aSizes)
    {
        for (const int nWidth : {5, 7, 9})
        {
            for (const int nLevels : {2, 4, 255})
            {
                ClImage cIn, cOut, cExpected;
                FillLevels(cIn, nColumns, nRows, nLevels, 8);
                for (const int nMode : {0, 1, 2, 3})
                {
                    RunByDefinition<unsigned char>(cIn, nWidth, nMode, cExpected);
                    ASSERT_EQ(FPC_SUCCESS,
                              ClIpFilterMidRotating().ApplyParam(
                                  cIn, cOut, nWidth, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
                    EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << ' ' << nLevels << ' ' << nMode;
                }
            }
        }
    }
}

TEST(IpFilterMidRotating, SignedBytesHaveTheTwoVarianceModes)
{
    ClImage cIn, cOut, cExpected;
    cIn.NewWithType(ClImage::eSInt8, 21, 17, 1, 0, 0);
    FillRandom(cIn, 9);
    for (const int nWidth : {5, 9})
    {
        for (const int nMode : {2, 3})
        {
            RunByDefinition<signed char>(cIn, nWidth, nMode, cExpected);
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                       cIn, cOut, nWidth, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << ' ' << nMode;
        }
        for (const int nMode : {0, 1})
        {
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE,
                      ClIpFilterMidRotating().ApplyParam(cIn, cOut, nWidth,
                                                         static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
        }
    }
}

TEST(IpFilterMidRotating, ASignedImageThatIsTooSmallIsPassedOver)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eSInt8, 8, 10, 1, 0, 0);
    ClIpFilterMidRotating cFilter;
    cFilter.m_pInImage = &cIn;
    cFilter.m_pOutImage = &cOut;
    cFilter.m_nFilterWidth = 9;
    EXPECT_EQ(FPC_SUCCESS, cFilter.ProcessSignedXY());
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpFilterMidRotating, FixedPointEndsBelowMasksOfSixteen)
{
    ClImage cIn, cOut, cExpected;
    FillRandom8(cIn, 33, 32, 10);
    const auto eMode = ClIpFilterMidRotating::ModeLocalMaskDeviationFixPoint;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 31, eMode));
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 29, eMode));
    const ClMeansAndDeviations cMeasure = FixPointMeasure(FieldOf<unsigned char>(cIn), 15);
    ImageOf<unsigned char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, 7).Run(), 256.0, cExpected);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    ClImage cSigned;
    cSigned.NewWithType(ClImage::eSInt8, 33, 32, 1, 0, 0);
    FillRandom(cSigned, 10);
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpFilterMidRotating().ApplyParam(cSigned, cOut, 31, eMode));
    EXPECT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cSigned, cOut, 29, eMode));
}

TEST(IpFilterMidRotating, LargeMasksDoNotOverflow)
{
    ClImage cIn, cOut, cExpected;
    FillLevels(cIn, 70, 68, 2, 10); // black and white: the largest deviations
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 65));
    const ClMeansAndDeviations cMeasure = ByteMeasure(FieldOf<unsigned char>(cIn), 33);
    ImageOf<unsigned char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, 16).Run(), 1.0, cExpected);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpFilterMidRotating, DescribesTheOutputLikeTheInput)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 12, 11, 1, 3937, 3938);
    FillRandom(cIn, 3);
    cIn.m_nAttribute = 42;
    cIn.m_eContent = ClImage::eUnknown;
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9));
    EXPECT_TRUE(SameDescription(cIn, cOut));
    for (const auto eMode :
         {ClIpFilterMidRotating::ModeLocalMaskDeviationFixPoint, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat})
    {
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9, eMode));
        EXPECT_TRUE(SameDescription(cIn, cOut)); // the attribute stands from the first run
    }
}

TEST(IpFilterMidRotating, ColourPlanesAreFilteredOneByOne)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 13, 11, 3, 0, 0);
    FillRandom(cIn, 26);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9));
    for (int i = 0; i < 3; ++i)
    {
        ClImage cPlane, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        cOut.GetPlane(i, cActual);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cPlane, cExpected, 9));
        EXPECT_TRUE(SamePixels(cExpected, cActual)) << i;
    }
}

TEST(IpFilterMidRotating, NeverReadsBehindTheLastRow)
{
    for (const int nMode : {0, 1, 2, 3})
    {
        const ClGuardedBytes cBlock(13 * 12);
        ClImage cIn, cOut;
        cIn.Attach(cBlock.Data(), ClImage::eUInt8, 12, 13, 1, 0, 0);
        FillRandom(cIn, 3);
        EXPECT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                   cIn, cOut, 9, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
    }
}

TEST(IpFilterMidRotating, EveryModeTellsThatMemoryIsExhausted)
{
    for (const int nMode : {0, 1, 2, 3})
    {
        ClImage cIn;
        FillRandom8(cIn, 12, 13, 1);
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&cIn, nMode]
            {
                ClImage cOut;
                ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9,
                                                   static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode));
            });
        EXPECT_LT(5, nFailed); // three images and the arrays of the search
    }
}

TEST(IpFilterMidRotating, EverySizeAndWidthFollowsTheDefinition)
{
    ForEachRandomImage(4,
                       [](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           if constexpr (sizeof(T) == 1)
                           {
                               for (int nWidth = 1; nWidth <= 31; ++nWidth)
                               {
                                   for (const int nMode : {0, 1, 2, 3})
                                   {
                                       // Large masks on one plane only, for they cost much by definition.
                                       if (nWidth <= 9 || cIn.m_nPlanes == 1)
                                       {
                                           ExpectRunByDefinition<T>(cIn, nWidth, nMode);
                                       }
                                   }
                               }
                           }
                       });
}

TEST(IpFilterMidRotating, WidthsFarAboveTheImageAndBelowZero)
{
    constexpr long nMost = std::numeric_limits<long>::max();
    constexpr long nLeast = std::numeric_limits<long>::min();
    ClImage cIn, cOut;
    FillRandom8(cIn, 20, 20, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, Rotating().ApplyParam(cIn, cOut, nMost));
    for (const long nWidth : {nMost - 1, nLeast, nLeast + 1})
    {
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, Rotating().ApplyParam(cIn, cOut, nWidth));
    }
}

TEST(IpFilterMidRotating, TheOperationsThemselvesRefuseWidthsBelowOne)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8})
    {
        ClImage cIn, cOut;
        cIn.NewWithType(eType, 10, 10, 1, 0, 0);
        FillRandom(cIn, 1);
        Rotating cFilter;
        cFilter.m_pInImage = &cIn;
        cFilter.m_pOutImage = &cOut;
        for (const int nMode : {0, 1, 2, 3})
        {
            cFilter.m_eVarMode = static_cast<Rotating::EVarianceMode>(nMode);
            for (const long nWidth : {0L, -1L, -2L, -3L, -101L})
            {
                cFilter.m_nFilterWidth = nWidth;
                EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE,
                          eType == ClImage::eUInt8 ? cFilter.ProcessXY() : cFilter.ProcessSignedXY())
                    << nWidth;
            }
        }
    }
}

TEST(IpFilterMidRotating, RefusesImagesWithoutPixels)
{
    unsigned char anUnread[4] = {};
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8})
    {
        ClImage cEmpty, cNull, cNoPlane, cOut;
        cEmpty.NewWithType(eType, 0, 0, 1, 0, 0);
        cNull.Attach(nullptr, eType, 20, 14, 1, 0, 0);
        cNoPlane.Attach(anUnread, eType, 20, 14, 0, 0, 0);
        const auto eMode = Rotating::ModeLocalMaskDeviationFloat;
        EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, Rotating().ApplyParam(cEmpty, cOut, 5, eMode));
        EXPECT_EQ(FPC_ERROR_BITMAP_PTR, Rotating().ApplyParam(cNull, cOut, 5, eMode));
        EXPECT_EQ(FPC_ERROR_BITMAP_PTR, Rotating().ApplyParam(cNoPlane, cOut, 5, eMode));
    }
}

TEST(IpFilterMidRotating, SignedModesTellThatMemoryIsExhausted)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt8, 12, 13, 1, 0, 0);
    FillRandom(cIn, 1);
    for (const auto eMode : {Rotating::ModeLocalMaskDeviationFixPoint, Rotating::ModeLocalMaskDeviationFloat})
    {
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&cIn, eMode]
            {
                ClImage cOut;
                Rotating().ApplyParam(cIn, cOut, 9, eMode);
            });
        EXPECT_LT(5, nFailed);
    }
}
