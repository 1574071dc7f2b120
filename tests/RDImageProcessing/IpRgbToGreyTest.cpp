#include "RDImageProcessing/IpRgbToGrey.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>

namespace
{
using Mode = ClIpRgbToGrey::eProcessingMode;

/// The number's low bits in a T, by exact arithmetic.
template <class T> T LowBits(double dValue)
{
    if constexpr (std::is_integral_v<T>)
    {
        return static_cast<T>(static_cast<unsigned long>(static_cast<long>(dValue)));
    }
    else
    {
        return static_cast<T>(dValue);
    }
}

template <class T> T LuminanceByDefinition(T c0, T c1, T c2)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return static_cast<T>(c0 * 0.072169 + c1 * 0.71516 + c2 * 0.212671);
    }
    else
    {
        __extension__ using Wide = __int128; // more than enough for every sum
        const bool bWide = sizeof(T) == 4;
        const Wide nSum = bWide ? Wide(c0) * 309963494 + Wide(c1) * 3071588811 + Wide(c2) * 913414989
                                : Wide(c0) * 4729 + Wide(c1) * 46868 + Wide(c2) * 13937;
        const Wide nOne = bWide ? Wide(1) << 32 : Wide(1) << 16;
        Wide nResult = nSum / nOne;
        if (nSum % nOne < 0) // the shift of a negative sum rounds down
        {
            --nResult;
        }
        return static_cast<T>(nResult);
    }
}

template <class T> T LightnessByDefinition(T c0, T c1, T c2, const ClImage& cIn, const ClImage& cOut)
{
    double y = c0 * 0.072169 + c1 * 0.71516 + c2 * 0.212671 - cIn.m_dBlack;
    y = y / (cIn.m_dWhite - cIn.m_dBlack);
    const double l = y > 0.008856 ? 116 * std::pow(y, 0.3333333333333333) - 16 : 903.3 * y;
    const double d = l * (cOut.m_dWhite - cOut.m_dBlack) * 0.01 + cOut.m_dBlack;
    return LowBits<T>(d < cOut.m_dBlack ? cOut.m_dBlack : d);
}

template <class T> T GreyByDefinition(T c0, T c1, T c2, Mode eMode, const ClImage& cIn, const ClImage& cOut)
{
    if (eMode == ClIpRgbToGrey::MaxRgb)
    {
        const T tFirst = c0 > c1 ? c0 : c1;
        return tFirst > c2 ? tFirst : c2;
    }
    return eMode == ClIpRgbToGrey::Luminance ? LuminanceByDefinition(c0, c1, c2)
                                             : LightnessByDefinition(c0, c1, c2, cIn, cOut);
}

template <class T> void FoldByDefinition(const ClImage& cIn, Mode eMode, ClImage& cOut)
{
    cOut.NewWithType(cIn.m_eDataType, cIn.m_nWidth, cIn.m_nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
    cOut.m_nAttribute = cIn.m_nAttribute;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            SetSample(cOut, x, y, 0,
                      GreyByDefinition(SampleAt<T>(cIn, x, y, 0), SampleAt<T>(cIn, x, y, 1), SampleAt<T>(cIn, x, y, 2),
                                       eMode, cIn, cOut));
        }
    }
}

/// One pixel of three equal samples in a mode.
template <class T> T GreyOf(unsigned char eType, T tValue, Mode eMode)
{
    ClImage cIn;
    cIn.NewWithType(eType, 1, 1, 3, 0, 0);
    for (int i = 0; i < 3; ++i)
    {
        SetSample(cIn, 0, 0, i, tValue);
    }
    ClImage cOut;
    EXPECT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, eMode));
    return SampleAt<T>(cOut, 0, 0);
}
} // namespace

TEST(IpRgbToGrey, FoldsEveryTypeInEveryMode)
{
    ForEachRandomImage(
        4,
        [](ClImage& cIn, auto cTag)
        {
            using T = typename decltype(cTag)::Type;
            if (cIn.m_nPlanes < 3)
            {
                return;
            }
            for (const Mode eMode : {ClIpRgbToGrey::MaxRgb, ClIpRgbToGrey::Luminance, ClIpRgbToGrey::Lightness})
            {
                SCOPED_TRACE("mode " + std::to_string(eMode));
                ClImage cExpected;
                FoldByDefinition<T>(cIn, eMode, cExpected);
                ClImage cOut;
                ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, eMode));
                EXPECT_TRUE(SamePixels(cExpected, cOut));
                EXPECT_TRUE(SameDescription(cExpected, cOut));
                ClImage cInPlace;
                cInPlace = cIn;
                ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cInPlace, cInPlace, eMode));
                EXPECT_TRUE(SamePixels(cExpected, cInPlace));
                EXPECT_TRUE(SameDescription(cExpected, cInPlace));
            }
        });
}

TEST(IpRgbToGrey, LightnessMapsTheRangeOfTheInputToThatOfTheType)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 16, 9, 3, 0, 0);
    FillRandom(cIn, 9);
    cIn.m_dBlack = 1000.0; // samples below it come out as black
    cIn.m_dWhite = 70000.0;
    ClImage cExpected;
    FoldByDefinition<unsigned short>(cIn, ClIpRgbToGrey::Lightness, cExpected);
    ClImage cOut;
    ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Lightness));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_EQ(65535.0, cOut.m_dWhite);
}

TEST(IpRgbToGrey, WhiteInLuminanceIsTwoPartsShort)
{
    EXPECT_EQ(254, GreyOf<unsigned char>(ClImage::eUInt8, 255, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(65533, GreyOf<unsigned short>(ClImage::eUInt16, 65535, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(4294967293u, GreyOf<unsigned int>(ClImage::eUInt32, 4294967295u, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(126, GreyOf<signed char>(ClImage::eSInt8, 127, ClIpRgbToGrey::Luminance));
}

TEST(IpRgbToGrey, TheExtremesOfSignedTypesStayInsideTheSum)
{
    EXPECT_EQ(-128, GreyOf<signed char>(ClImage::eSInt8, -128, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(-32767, GreyOf<short>(ClImage::eSInt16, -32768, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(32766, GreyOf<short>(ClImage::eSInt16, 32767, ClIpRgbToGrey::Luminance));
    EXPECT_EQ(-2147483647, GreyOf<int>(ClImage::eSInt32, std::numeric_limits<int>::min(), ClIpRgbToGrey::Luminance));
    EXPECT_EQ(2147483646, GreyOf<int>(ClImage::eSInt32, std::numeric_limits<int>::max(), ClIpRgbToGrey::Luminance));
}

TEST(IpRgbToGrey, LightnessHasALinearFoot)
{
    // y = 2 / 255 lies below 0.008856: l = 903.3 y, scaled to 255 and truncated: 18.066
    EXPECT_EQ(18, GreyOf<unsigned char>(ClImage::eUInt8, 2, ClIpRgbToGrey::Lightness));
    // y = 3 / 255 lies above: 116 * 0.22742 - 16 = 10.3805 percent of 255
    EXPECT_EQ(26, GreyOf<unsigned char>(ClImage::eUInt8, 3, ClIpRgbToGrey::Lightness));
    EXPECT_EQ(0, GreyOf<unsigned char>(ClImage::eUInt8, 0, ClIpRgbToGrey::Lightness));
}

TEST(IpRgbToGrey, LightnessChangesItsFormulaAtItsThreshold)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eDouble64, 200, 1, 3, 0, 0);
    for (int x = 0; x < 200; ++x)
    {
        const double dY = 0.008856 + (x - 100) * 1e-6;
        for (int i = 0; i < 3; ++i)
        {
            SetSample(cIn, x, 0, i, 2.0 * dY - 1.0); // the range is -1 to 1
        }
    }
    ClImage cExpected;
    FoldByDefinition<double>(cIn, ClIpRgbToGrey::Lightness, cExpected);
    ClImage cOut;
    ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Lightness));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpRgbToGrey, LightnessIsNotBelowBlack)
{
    EXPECT_EQ(-1.0f, GreyOf<float>(ClImage::eFloat32, -5.0f, ClIpRgbToGrey::Lightness));
    EXPECT_EQ(-1.0, GreyOf<double>(ClImage::eDouble64, -1.5, ClIpRgbToGrey::Lightness));
}

TEST(IpRgbToGrey, LightnessOfEveryTypeHasAFootAndDoesNotPassBelowBlack)
{
    ForEachRandomImage(5,
                       [](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           if (cIn.m_nPlanes < 3)
                           {
                               return;
                           }
                           // The range begins in the middle of the samples; where it is wide, the others lie in the
                           // linear foot.
                           constexpr bool bFloat = std::is_floating_point_v<T>;
                           const double dLargest = bFloat ? 1000.0 : static_cast<double>(std::numeric_limits<T>::max());
                           for (const double dSpan : {1.0, 1000.0})
                           {
                               cIn.m_dBlack = bFloat ? 0.0 : dLargest / 2.0;
                               cIn.m_dWhite = cIn.m_dBlack + dSpan * dLargest;
                               ClImage cExpected, cOut;
                               FoldByDefinition<T>(cIn, ClIpRgbToGrey::Lightness, cExpected);
                               ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Lightness));
                               EXPECT_TRUE(SamePixels(cExpected, cOut));
                           }
                       });
}

TEST(IpRgbToGrey, LightnessBeyondTheRangeKeepsTheLowBits)
{
    ClImage cIn(1, 1, 3, 0, 0);
    std::memset(cIn.Data(), 255, 3);
    cIn.m_dWhite = 64.0; // y is near 4, and the result near 430
    ClImage cExpected;
    FoldByDefinition<unsigned char>(cIn, ClIpRgbToGrey::Lightness, cExpected);
    ClImage cOut;
    ASSERT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Lightness));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    cIn.m_dWhite = 0.0; // no range: y is infinite, and nothing may break
    EXPECT_EQ(0, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Lightness));
}

TEST(IpRgbToGrey, RefusesAnUnknownMode)
{
    for (const unsigned char eType : aEveryType)
    {
        ClImage cIn;
        cIn.NewWithType(eType, 2, 2, 3, 0, 0);
        FillRandom(cIn, 1);
        ClImage cOut;
        EXPECT_RAISES(ClIpRgbToGrey().ApplyParam(cIn, cOut, static_cast<Mode>(3)), ClException, -35,
                      "One of the parameters is out of range.\nUnsupported conversions mode");
    }
}

TEST(IpRgbToGrey, AnImageWithoutPixelsIsRefusedByTheFrame)
{
    ClImage cNoRows(10, 0, 1, 0, 0), cEmpty, cOut;
    EXPECT_RAISES(ClIpRgbToGrey().ApplyParam(cNoRows, cOut), ClException, FPC_ERROR_BAD_POINTER,
                  "The pointer is bad or invalid.\nm_pInImage->Data() is not set");
    EXPECT_RAISES(ClIpRgbToGrey().ApplyParam(cEmpty, cOut), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"unknown\" not supported by processor.");
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpRgbToGrey, RefusesLessThanThreePlanes)
{
    for (const int nPlanes : {1, 2})
    {
        ClImage cIn(4, 2, nPlanes, 0, 0);
        FillRandom(cIn, 1);
        ClImage cOut;
        EXPECT_EQ(FPC_ERROR_BITMAP_PLANE, ClIpRgbToGrey().ApplyParam(cIn, cOut, ClIpRgbToGrey::Luminance));
    }
}

TEST(IpRgbToGrey, ParameterStringNamesTheMode)
{
    ClIpRgbToGrey cGrey;
    char szText[64];
    const char* aszTexts[] = {"ClIpRgbToGrey [MaxRgb]", "ClIpRgbToGrey [Luminance]", "ClIpRgbToGrey [Lightness]",
                              "ClIpRgbToGrey [Unsupported]"};
    for (int i = 0; i < 4; ++i)
    {
        cGrey.m_eMode = static_cast<Mode>(i);
        cGrey.ParameterString(szText, sizeof szText);
        EXPECT_STREQ(aszTexts[i], szText);
    }
}

TEST(IpRgbToGrey, CanApplyAsksOnlyForAnOutput)
{
    ClIpRgbToGrey cGrey;
    EXPECT_FALSE(cGrey.CanApply());
    ClImage cImage;
    cGrey.m_pOutImage = &cImage;
    EXPECT_TRUE(cGrey.CanApply());
    cGrey.m_pOutImage = nullptr;
    cGrey.m_pInImage = &cImage;
    EXPECT_FALSE(cGrey.CanApply());
}

TEST(IpRgbToGrey, WorksInPlaceAndFoldsByLuminanceUnlessTold)
{
    ClIpRgbToGrey cGrey;
    EXPECT_TRUE(cGrey.m_bInPlace);
    EXPECT_EQ(ClIpRgbToGrey::Luminance, cGrey.m_eMode);
    for (const unsigned char eType : aEveryType)
    {
        EXPECT_TRUE(cGrey.CheckIfTypeAllowed(static_cast<ClImage::EDataType>(eType)));
    }
}

TEST(IpRgbToGrey, PublishesTheImagesOnly)
{
    ClIpRgbToGrey cGrey;
    ClParameterContainer cContainer;
    cGrey.QueryParameters(cContainer);
    EXPECT_EQ(2u, cContainer.m_aChildren.Entries());
}

TEST(IpRgbToGrey, CreateMakesAnotherOfItsClass)
{
    ClIpRgbToGrey cGrey;
    EXPECT_STREQ("ClIpRgbToGrey", cGrey.Name());
    std::unique_ptr<ClProcessorBase> pOther(cGrey.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpRgbToGrey*>(pOther.get()));
}
