#include "RDImageProcessing/IpConvertDataType.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <memory>
#include <type_traits>

namespace
{
/// The number in another type: floating point loses its fraction, integers what does not fit. Values below 2^63.
template <class TOut, class TIn> TOut ConvertedByDefinition(TIn value)
{
    if constexpr (std::is_floating_point_v<TIn> && std::is_integral_v<TOut>)
    {
        return static_cast<TOut>(static_cast<unsigned long>(static_cast<long>(value)));
    }
    else
    {
        return static_cast<TOut>(value);
    }
}
} // namespace

TEST(IpConvertDataType, ConvertsEveryTypeToEveryOther)
{
    ForEachRandomImage(3,
                       [](ClImage& cIn, auto cTagIn)
                       {
                           using TIn = typename decltype(cTagIn)::Type;
                           for (const unsigned char eOut : aEveryType)
                           {
                               SCOPED_TRACE("to type " + std::to_string(eOut));
                               DispatchSampleType(
                                   eOut, 0,
                                   [&](auto cTagOut)
                                   {
                                       using TOut = typename decltype(cTagOut)::Type;
                                       ClImage cExpected;
                                       cExpected.NewWithType(cIn, eOut);
                                       for (int y = 0; y < cIn.m_nHeight; ++y)
                                       {
                                           for (int x = 0; x < cIn.m_nWidth; ++x)
                                           {
                                               for (int i = 0; i < cIn.m_nPlanes; ++i)
                                               {
                                                   SetSample(cExpected, x, y, i,
                                                             ConvertedByDefinition<TOut>(SampleAt<TIn>(cIn, x, y, i)));
                                               }
                                           }
                                       }
                                       ClImage cOut;
                                       EXPECT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, eOut));
                                       EXPECT_TRUE(SamePixels(cExpected, cOut));
                                       EXPECT_TRUE(SameDescription(cExpected, cOut));
                                       ClImage cInPlace;
                                       cInPlace = cIn;
                                       EXPECT_EQ(0, ClIpConvertDataType().ApplyParam(cInPlace, eOut));
                                       EXPECT_TRUE(SamePixels(cExpected, cInPlace));
                                       return 0L;
                                   });
                           }
                       });
}

TEST(IpConvertDataType, NothingIsClampedRoundedOrScaled)
{
    const struct
    {
        double dValue;
        int nByte;
        int nSignedByte;
        int nInt;
    } aCases[] = {
        {300.7, 44, 44, 300}, {255.9, 255, -1, 255},  {0.9, 0, 0, 0},          {-0.9, 0, 0, 0},
        {-1.5, 255, -1, -1},  {200.5, 200, -56, 200}, {4294967297.0, 1, 1, 1}, {3000000000.0, 0, 0, -1294967296},
        {1e300, 0, 0, 0},     {-1e300, 0, 0, 0}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(cCase.dValue);
        ClImage cIn;
        cIn.NewWithType(ClImage::eDouble64, 1, 1, 1, 0, 0);
        SetSample(cIn, 0, 0, 0, cCase.dValue);
        ClImage cOut;
        ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eUInt8));
        EXPECT_EQ(cCase.nByte, SampleAt<unsigned char>(cOut, 0, 0));
        ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eSInt8));
        EXPECT_EQ(cCase.nSignedByte, SampleAt<signed char>(cOut, 0, 0));
        ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eSInt32));
        EXPECT_EQ(cCase.nInt, SampleAt<int>(cOut, 0, 0));
    }
    ClImage cFloat;
    cFloat.NewWithType(ClImage::eFloat32, 1, 1, 1, 0, 0);
    SetSample(cFloat, 0, 0, 0, 300.7f);
    ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cFloat, ClImage::eUInt8));
    EXPECT_EQ(44, SampleAt<unsigned char>(cFloat, 0, 0));
}

TEST(IpConvertDataType, TheSameTypeIsADeepCopyWithTheRangeOfTheInput)
{
    ForEachRandomImage(2,
                       [](ClImage& cIn, auto)
                       {
                           cIn.m_dBlack = 3.0;
                           cIn.m_dWhite = 9.0;
                           cIn.m_eContent = ClImage::eCIELab;
                           ClImage cOut;
                           ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, cIn.m_eDataType));
                           EXPECT_NE(cIn.Data(), cOut.Data());
                           EXPECT_TRUE(SamePixels(cIn, cOut));
                           EXPECT_TRUE(SameDescription(cIn, cOut));
                       });
}

TEST(IpConvertDataType, TheDefaultTypeKeepsTheSamplesAndTakesTheRangeOfTheirType)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 5, 3, 2, 0, 0);
    FillRandom(cIn, 4);
    cIn.m_dBlack = 10.0;
    cIn.m_dWhite = 20.0;
    ClImage cOut;
    ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, ClIp1to1Base::nTypeOfInput));
    EXPECT_TRUE(SamePixels(cIn, cOut));
    EXPECT_EQ(0.0, cOut.m_dBlack);
    EXPECT_EQ(65535.0, cOut.m_dWhite);
}

TEST(IpConvertDataType, TheOutputHasTheRangeOfItsType)
{
    ClImage cIn;
    FillRandom8(cIn, 3, 3, 1);
    ClImage cOut;
    ASSERT_EQ(0, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eUInt16));
    EXPECT_EQ(0.0, cOut.m_dBlack);
    EXPECT_EQ(65535.0, cOut.m_dWhite);
}

TEST(IpConvertDataType, ATypeThatIsNoneOfTheEightIsAnInternalError)
{
    ClImage cIn;
    FillRandom8(cIn, 3, 3, 1);
    ClImage cOut;
    EXPECT_EQ(FPC_ERROR_INTERNAL, ClIpConvertDataType().ApplyParam(cIn, cOut, 3));
    cIn.NewWithType(3, 3, 3, 1, 0, 0);
    EXPECT_EQ(FPC_ERROR_INTERNAL, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eUInt8));
}

TEST(IpConvertDataType, WithoutPixelsReportsTheMissingImage)
{
    ClImage cIn;
    ClImage cOut;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpConvertDataType().ApplyParam(cIn, cOut, ClImage::eUInt8));
}

TEST(IpConvertDataType, PublishesTheTypeOfTheOutput)
{
    ClIpConvertDataType cConvert;
    EXPECT_EQ(255, cConvert.m_eOutImageType);
    ClParameterContainer cContainer;
    cConvert.QueryParameters(cContainer);
    ASSERT_EQ(3u, cContainer.m_aChildren.Entries());
    EXPECT_STREQ("OutImageType", cContainer.m_aChildren[2]->GetName());
    cContainer.Find("OutImageType")->SetValue("unsigned short");
    EXPECT_EQ(ClImage::eUInt16, cConvert.m_eOutImageType);
}

TEST(IpConvertDataType, CreateMakesAnotherOfItsClass)
{
    ClIpConvertDataType cConvert;
    EXPECT_STREQ("ClIpConvertDataType", cConvert.Name());
    std::unique_ptr<ClProcessorBase> pOther(cConvert.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpConvertDataType*>(pOther.get()));
}
