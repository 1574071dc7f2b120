#include "RDImageProcessing/IpBinarizeGlobal.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

namespace
{
constexpr double dNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double dInfinity = std::numeric_limits<double>::infinity();

/// Black for samples below the threshold. Comparing an integer with the threshold itself is the same as with the
/// threshold rounded up.
template <class T>
void BinarizeByDefinition(const ClImage& cIn, double dThreshold, double dBlack, double dWhite, ClImage& cOut)
{
    cOut = cIn;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            for (int i = 0; i < cIn.m_nPlanes; ++i)
            {
                const T tValue = SampleAt<T>(cIn, x, y, i);
                bool bBelow = static_cast<double>(tValue) < dThreshold;
                if constexpr (std::is_same_v<T, float>)
                {
                    bBelow = tValue < static_cast<float>(dThreshold);
                }
                SetSample(cOut, x, y, i, static_cast<T>(bBelow ? dBlack : dWhite));
            }
        }
    }
}

template <class T> T BinaryOf(unsigned char eType, T tValue, double dThreshold, double dBlack = dNaN)
{
    ClImage cImage;
    cImage.NewWithType(eType, 1, 1, 1, 0, 0);
    SetSample(cImage, 0, 0, 0, tValue);
    ClIpBinarizeGlobal cBinarize;
    cBinarize.m_dBlack = dBlack;
    EXPECT_EQ(0, cBinarize.ApplyParam(cImage, cImage, dThreshold));
    return SampleAt<T>(cImage, 0, 0);
}

long ResultFor(double dThreshold, double dBlack, double dWhite)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 2, 2, 1, 0, 0);
    FillRandom(cIn, 1);
    cIn.m_dBlack = 100.0;
    cIn.m_dWhite = 200.0;
    ClImage cOut;
    ClIpBinarizeGlobal cBinarize;
    cBinarize.m_dBlack = dBlack;
    cBinarize.m_dWhite = dWhite;
    return cBinarize.ApplyParam(cIn, cOut, dThreshold);
}
} // namespace

TEST(IpBinarizeGlobal, BinarizesEveryTypeAtAGivenThreshold)
{
    ClTestRandom cRandom(2);
    ForEachRandomImage(4,
                       [&](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           if (std::is_floating_point_v<T>)
                           {
                               cIn.m_dBlack = -1000.0;
                               cIn.m_dWhite = 1000.0;
                           }
                           const double dSpan = cIn.m_dWhite - cIn.m_dBlack;
                           const double dThreshold = cIn.m_dBlack + dSpan * cRandom.Unit();
                           ClImage cExpected;
                           BinarizeByDefinition<T>(cIn, dThreshold, cIn.m_dBlack, cIn.m_dWhite, cExpected);
                           ClImage cOut;
                           ASSERT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cOut, dThreshold));
                           EXPECT_TRUE(SamePixels(cExpected, cOut));
                           EXPECT_TRUE(SameDescription(cExpected, cOut));
                           // with values of its own, and in place
                           ClIpBinarizeGlobal cBinarize;
                           cBinarize.m_dBlack = cIn.m_dWhite - 0.3 * dSpan;
                           cBinarize.m_dWhite = cIn.m_dBlack + 0.6 * dSpan;
                           BinarizeByDefinition<T>(cIn, dThreshold, cBinarize.m_dBlack, cBinarize.m_dWhite, cExpected);
                           ClImage cInPlace;
                           cInPlace = cIn;
                           ASSERT_EQ(0, cBinarize.ApplyParam(cInPlace, cInPlace, dThreshold));
                           EXPECT_TRUE(SamePixels(cExpected, cInPlace));
                           EXPECT_TRUE(SameDescription(cIn, cInPlace));
                       });
}

TEST(IpBinarizeGlobal, BinarizesRowsOfEveryWidthWithAndWithoutPadding)
{
    for (const unsigned char eType : aEveryType)
    {
        for (int nWidth = 1; nWidth <= 70; ++nWidth)
        {
            SCOPED_TRACE("type " + std::to_string(eType) + ", " + std::to_string(nWidth) + " columns");
            DispatchSampleType(eType, 0,
                               [&](auto cTag)
                               {
                                   using T = typename decltype(cTag)::Type;
                                   ClImage cIn;
                                   cIn.NewWithType(eType, nWidth, 3, 1, 0, 0);
                                   FillRandom(cIn, static_cast<unsigned int>(nWidth));
                                   const double dThreshold = cIn.m_dBlack + (cIn.m_dWhite - cIn.m_dBlack) * 0.4;
                                   ClImage cExpected;
                                   BinarizeByDefinition<T>(cIn, dThreshold, cIn.m_dBlack, cIn.m_dWhite, cExpected);
                                   ClImage cOut;
                                   EXPECT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cOut, dThreshold));
                                   EXPECT_TRUE(SamePixels(cExpected, cOut));
                                   EXPECT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cIn, dThreshold));
                                   EXPECT_TRUE(SamePixels(cExpected, cIn));
                                   return 0L;
                               });
        }
    }
}

TEST(IpBinarizeGlobal, PaddingIsLeftAlone)
{
    ClImage cImage(5, 3, 1, 0, 0);
    std::memset(cImage.Data(), 77, 8 * 3);
    ASSERT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cImage, cImage, 50.0));
    for (int i = 0; i < 8 * 3; ++i)
    {
        EXPECT_EQ(i % 8 < 5 ? 255 : 77, cImage.Data()[i]);
    }
}

TEST(IpBinarizeGlobal, EveryThresholdOfAnEightBitImageDividesAllItsValues)
{
    ClImage cIn(256, 1, 1, 0, 0);
    for (int x = 0; x < 256; ++x)
    {
        SetSample(cIn, x, 0, 0, static_cast<unsigned char>(x));
    }
    for (int nTwice = 0; nTwice <= 510; ++nTwice)
    {
        for (const double dWhite : {255.0, 30.0, 7.0})
        {
            ClImage cExpected;
            BinarizeByDefinition<unsigned char>(cIn, nTwice / 2.0, 30.0, dWhite, cExpected);
            ClImage cOut;
            ClIpBinarizeGlobal cBinarize;
            cBinarize.m_dBlack = 30.0;
            cBinarize.m_dWhite = dWhite;
            ASSERT_EQ(0, cBinarize.ApplyParam(cIn, cOut, nTwice / 2.0));
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nTwice / 2.0;
        }
    }
}

TEST(IpBinarizeGlobal, WithoutAThresholdTheMiddleOfTheRangeCounts)
{
    ForEachRandomImage(2,
                       [](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           ClImage cExpected;
                           BinarizeByDefinition<T>(cIn, (cIn.m_dBlack + cIn.m_dWhite) / 2, cIn.m_dBlack, cIn.m_dWhite,
                                                   cExpected);
                           ClImage cOut;
                           ASSERT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cOut));
                           EXPECT_TRUE(SamePixels(cExpected, cOut));
                       });
}

TEST(IpBinarizeGlobal, AnEightBitImageIsDividedAt127AndAHalf)
{
    for (int i = 0; i < 256; ++i)
    {
        EXPECT_EQ(i <= 127 ? 0 : 255, BinaryOf<unsigned char>(ClImage::eUInt8, static_cast<unsigned char>(i), dNaN));
    }
}

TEST(IpBinarizeGlobal, Threshold255LeavesOnlyPureWhite)
{
    for (int i = 0; i < 256; ++i)
    {
        EXPECT_EQ(i < 255 ? 0 : 255, BinaryOf<unsigned char>(ClImage::eUInt8, static_cast<unsigned char>(i), 255.0));
    }
}

TEST(IpBinarizeGlobal, TheThresholdOfIntegersIsRoundedUp)
{
    EXPECT_EQ(-128, BinaryOf<signed char>(ClImage::eSInt8, 3, 3.2));
    EXPECT_EQ(127, BinaryOf<signed char>(ClImage::eSInt8, 4, 3.2));
    EXPECT_EQ(127, BinaryOf<signed char>(ClImage::eSInt8, 3, 3.0));
    EXPECT_EQ(-128, BinaryOf<signed char>(ClImage::eSInt8, -4, -3.2));
    EXPECT_EQ(127, BinaryOf<signed char>(ClImage::eSInt8, -3, -3.2));
    EXPECT_EQ(0, BinaryOf<unsigned short>(ClImage::eUInt16, 3, 3.2));
    EXPECT_EQ(65535, BinaryOf<unsigned short>(ClImage::eUInt16, 4, 3.2));
}

TEST(IpBinarizeGlobal, AFloatIsComparedWithTheThresholdAsAFloat)
{
    // 0.1 as a float is larger than the double 0.1, but not below the float 0.1.
    EXPECT_EQ(1.0f, BinaryOf<float>(ClImage::eFloat32, 0.1f, 0.1));
    // The double next below the float 0.1 rounds to it.
    EXPECT_EQ(1.0f, BinaryOf<float>(ClImage::eFloat32, 0.1f, std::nextafter(static_cast<double>(0.1f), 1.0)));
    EXPECT_EQ(-1.0, BinaryOf<double>(ClImage::eDouble64, 0.1, std::nextafter(0.1, 1.0)));
    EXPECT_EQ(1.0, BinaryOf<double>(ClImage::eDouble64, 0.1, 0.1));
    EXPECT_EQ(1.0, BinaryOf<double>(ClImage::eDouble64, dNaN, 0.1)); // not below
}

TEST(IpBinarizeGlobal, BlackAndWhiteAreTruncatedToTheType)
{
    EXPECT_EQ(17, BinaryOf<unsigned char>(ClImage::eUInt8, 5, 100.0, 17.9));
    EXPECT_EQ(-17, BinaryOf<short>(ClImage::eSInt16, 5, 100.0, -17.9));
    EXPECT_EQ(0.3f, BinaryOf<float>(ClImage::eFloat32, 0.0f, 0.5, 0.3));
}

TEST(IpBinarizeGlobal, AThresholdBeyondTheTypeIsSaturated)
{
    const struct
    {
        unsigned char eType;
        double dLowest;
        double dHighest;
    } aTypes[] = {{ClImage::eUInt16, 0.0, 65535.0},
                  {ClImage::eSInt16, -32768.0, 32767.0},
                  {ClImage::eUInt32, 0.0, 4294967295.0},
                  {ClImage::eSInt32, -2147483648.0, 2147483647.0}};
    for (const auto& cType : aTypes)
    {
        SCOPED_TRACE(int(cType.eType));
        DispatchSampleType(cType.eType, 0,
                           [&](auto cTag)
                           {
                               using T = typename decltype(cTag)::Type;
                               const T aSamples[] = {static_cast<T>(cType.dLowest),
                                                     static_cast<T>(cType.dHighest - 1.0),
                                                     static_cast<T>(cType.dHighest)};
                               for (const double dThreshold : {-1e12, 1e12})
                               {
                                   ClImage cIn;
                                   cIn.NewWithType(cType.eType, 3, 1, 1, 0, 0);
                                   for (int x = 0; x < 3; ++x)
                                   {
                                       SetSample(cIn, x, 0, 0, aSamples[x]);
                                   }
                                   cIn.m_dBlack = -1e13; // wider than the type
                                   cIn.m_dWhite = 1e13;
                                   ClImage cOut;
                                   ClIpBinarizeGlobal cBinarize;
                                   cBinarize.m_dBlack = 1.0;
                                   cBinarize.m_dWhite = 2.0;
                                   EXPECT_EQ(0, cBinarize.ApplyParam(cIn, cOut, dThreshold));
                                   EXPECT_EQ(dThreshold < 0.0 ? T(2) : T(1), SampleAt<T>(cOut, 0, 0));
                                   EXPECT_EQ(dThreshold < 0.0 ? T(2) : T(1), SampleAt<T>(cOut, 1, 0));
                                   EXPECT_EQ(T(2), SampleAt<T>(cOut, 2, 0)); // never below the highest value
                               }
                               return 0L;
                           });
    }
}

TEST(IpBinarizeGlobal, ValuesOutOfRangeAreRefused)
{
    EXPECT_EQ(0, ResultFor(150.0, dNaN, dNaN));
    EXPECT_EQ(0, ResultFor(100.0, 100.0, 200.0));
    EXPECT_EQ(0, ResultFor(200.0, 200.0, 100.0));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(200.1, dNaN, dNaN));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(99.9, dNaN, dNaN));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(dInfinity, dNaN, dNaN));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(150.0, 99.0, dNaN));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(150.0, 201.0, dNaN));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(150.0, dNaN, 99.0));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ResultFor(150.0, dNaN, 201.0));
}

TEST(IpBinarizeGlobal, ARangeMayRunDownwards)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 2, 1, 1, 0, 0);
    SetSample<unsigned short>(cIn, 0, 0, 0, 149);
    SetSample<unsigned short>(cIn, 1, 0, 0, 150);
    cIn.m_dBlack = 200.0;
    cIn.m_dWhite = 100.0;
    ClImage cOut;
    ASSERT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cOut, 150.0));
    EXPECT_EQ(200, SampleAt<unsigned short>(cOut, 0, 0));
    EXPECT_EQ(100, SampleAt<unsigned short>(cOut, 1, 0));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpBinarizeGlobal().ApplyParam(cIn, cOut, 201.0));
}

TEST(IpBinarizeGlobal, AnImageWithoutRangeIsNoTrap)
{
    for (const unsigned char eType : aEveryType)
    {
        ClImage cIn;
        cIn.NewWithType(eType, 3, 2, 1, 0, 0);
        FillRandom(cIn, 1);
        cIn.m_dBlack = dNaN;
        cIn.m_dWhite = dNaN;
        ClImage cOut;
        EXPECT_EQ(0, ClIpBinarizeGlobal().ApplyParam(cIn, cOut));
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpBinarizeGlobal().ApplyParam(cIn, cOut, 1.0));
    }
}

TEST(IpBinarizeGlobal, AnUnknownTypeIsAnInternalErrorBehindTheFrame)
{
    ClImage cImage;
    cImage.NewWithType(3, 3, 2, 1, 0, 0);
    ClIpBinarizeGlobal cBinarize;
    cBinarize.m_pInImage = &cImage;
    cBinarize.m_pOutImage = &cImage;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cBinarize.DoProcess(cImage, cImage));
}

TEST(IpBinarizeGlobal, AnImageWithoutPixelsIsRefusedByTheFrame)
{
    ClImage cNoRows(10, 0, 1, 0, 0), cEmpty, cOut;
    EXPECT_RAISES(ClIpBinarizeGlobal().ApplyParam(cNoRows, cOut), ClException, FPC_ERROR_BAD_POINTER,
                  "The pointer is bad or invalid.\nm_pInImage->Data() is not set");
    EXPECT_RAISES(ClIpBinarizeGlobal().ApplyParam(cEmpty, cOut), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"unknown\" not supported by processor.");
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpBinarizeGlobal, AHeightBelowOneIsNoWork)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eUInt8, 3, 0, 1, 0, 0);
    ClIpBinarizeGlobal cBinarize;
    cBinarize.m_pInImage = &cImage;
    cBinarize.m_pOutImage = &cImage;
    EXPECT_EQ(0, cBinarize.DoProcess(cImage, cImage));
    cImage.m_eDataType = ClImage::eSInt16;
    EXPECT_EQ(0, cBinarize.DoProcess(cImage, cImage));
}

TEST(IpBinarizeGlobal, EightBitGoesThroughTheVirtualValue)
{
    class ClInverse : public ClIpBinarizeGlobal
    {
    public:
        double GetValue(ClImage& cIn, ClImage& cOut, double dValue) override
        {
            EXPECT_EQ(m_pInImage, &cIn);
            EXPECT_EQ(m_pOutImage, &cOut);
            return 555.9 - dValue;
        }
    };
    ClImage cIn;
    FillRandom8(cIn, 7, 5, 1);
    ClImage cOut;
    ASSERT_EQ(0, ClInverse().ApplyParam(cIn, cOut, 1.0));
    for (int x = 0; x < 7; ++x)
    {
        EXPECT_EQ((555 - SampleAt<unsigned char>(cIn, x, 4)) % 256, SampleAt<unsigned char>(cOut, x, 4));
    }
}

TEST(IpBinarizeGlobal, ADerivedClassMayHaveMoreThanTwoValues)
{
    class ClBand : public ClIpBinarizeGlobal
    {
    public:
        double GetValue(ClImage&, ClImage&, double dValue) override { return dValue >= 90.0 && dValue < 91.0 ? 5 : 9; }
    };
    ClImage cIn;
    FillRandom8(cIn, 67, 53, 1);
    ClImage cOut;
    ASSERT_EQ(0, ClBand().ApplyParam(cIn, cOut, 1.0));
    for (int y = 0; y < 53; ++y)
    {
        for (int x = 0; x < 67; ++x)
        {
            EXPECT_EQ(SampleAt<unsigned char>(cIn, x, y) == 90 ? 5 : 9, SampleAt<unsigned char>(cOut, x, y));
        }
    }
}

TEST(IpBinarizeGlobal, CanApplyTakesTheChecksOrTheFrame)
{
    ClIpBinarizeGlobal cBinarize;
    EXPECT_FALSE(cBinarize.CanApply()); // no input
    EXPECT_FALSE(cBinarize.CheckThreshold());
    EXPECT_FALSE(cBinarize.CheckBlackWhite());
    ClImage cImage(2, 2, 1, 0, 0);
    cBinarize.m_pInImage = &cImage;
    EXPECT_TRUE(cBinarize.CheckThreshold());
    EXPECT_TRUE(cBinarize.CanApply()); // no output, but the type is accepted
    cBinarize.m_dThreshold = 300.0;
    EXPECT_FALSE(cBinarize.CheckThreshold());
    EXPECT_TRUE(cBinarize.CanApply());
    cImage.NewWithType(3, 2, 2, 1, 0, 0); // a type of no kind
    EXPECT_FALSE(cBinarize.CanApply());
    cBinarize.m_pOutImage = &cImage;
    cBinarize.m_dThreshold = dNaN;
    EXPECT_TRUE(cBinarize.CanApply()); // the checks do not look at the type
}

TEST(IpBinarizeGlobal, ParameterStringHasFourDigitsForFloatingPointOnly)
{
    ClIpBinarizeGlobal cBinarize;
    cBinarize.m_dThreshold = 12.34567;
    cBinarize.m_dWhite = 255.0;
    char szText[64];
    cBinarize.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("Thr12 [nan;255]", szText);
    ClImage cImage;
    cImage.NewWithType(ClImage::eFloat32, 2, 2, 1, 0, 0);
    cBinarize.m_pInImage = &cImage;
    cBinarize.m_dBlack = -0.5;
    cBinarize.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("Thr12.3457 [-0.5000;255.0000]", szText);
    cImage.NewWithType(ClImage::eSInt32, 2, 2, 1, 0, 0);
    cBinarize.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("Thr12 [-0;255]", szText);
    cBinarize.ParameterString(szText, 15);
    EXPECT_RAISES(cBinarize.ParameterString(szText, 14), ClException, -101,
                  "Internal error.\nString-Length exceeded available size");
    EXPECT_RAISES_CODE(cBinarize.ParameterString(szText, 0), -101);
}

TEST(IpBinarizeGlobal, PublishesItsValuesBehindTheImages)
{
    ClIpBinarizeGlobal cBinarize;
    EXPECT_TRUE(std::isnan(cBinarize.m_dThreshold) && std::isnan(cBinarize.m_dBlack) && std::isnan(cBinarize.m_dWhite));
    EXPECT_TRUE(cBinarize.m_bInPlace);
    EXPECT_TRUE(cBinarize.m_bUseLUT);
    cBinarize.m_dThreshold = 7.0;
    ClParameterContainer cContainer;
    cBinarize.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutImage", "Black", "White", "Threshold"};
    ASSERT_EQ(5u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 5; ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
        EXPECT_EQ(i == 0 ? 1 : i == 1 ? 2 : 3, cContainer.m_aChildren[i]->m_nFlags);
    }
    for (unsigned long i = 2; i < 5; ++i)
    {
        EXPECT_TRUE(std::isnan(cContainer.m_aChildren[i]->GetNumericInterface()->GetDefault()));
        EXPECT_EQ(i != 4, cContainer.m_aChildren[i]->IsDefault());
    }
    EXPECT_EQ(7.0, cBinarize.m_dThreshold);
}

TEST(IpBinarizeGlobal, CreateMakesAnotherOfItsClass)
{
    ClIpBinarizeGlobal cBinarize;
    EXPECT_STREQ("ClIpBinarizeGlobal", cBinarize.Name());
    std::unique_ptr<ClProcessorBase> pOther(cBinarize.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpBinarizeGlobal*>(pOther.get()));
}
