#include "RDImageProcessing/Ip1to1Base.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

namespace
{
/// The value as a sample: truncated, the low bits of what remains; nothing saturates.
template <class T> T SampleOf(double dValue)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return static_cast<T>(dValue);
    }
    else
    {
        const double dModulus = std::ldexp(1.0, 8 * sizeof(T));
        double dLow = std::fmod(std::trunc(dValue), dModulus);
        dLow += dLow < 0.0 ? dModulus : 0.0;
        dLow -= std::is_signed_v<T> && dLow >= dModulus / 2 ? dModulus : 0.0;
        return static_cast<T>(dLow);
    }
}

/// A function that leaves the range of every integer type and has fractions.
double Ramp(double dValue)
{
    return dValue * 1.75 - 40.625;
}

/// The function as an operator of either frame; counts its calls and notes the images of the last one.
template <class Base> class TpRamp : public Base
{
public:
    ClProcessorBase* Create() override { return NewProcessor<TpRamp>(); }
    const char* Name() const override { return "Ramp"; }
    double GetValue(ClImage& cIn, ClImage& cOut, double dValue) override
    {
        ++m_nCalls;
        m_pSeenIn = &cIn;
        m_pSeenOut = &cOut;
        return Ramp(dValue);
    }

    int m_nCalls = 0;
    const ClImage* m_pSeenIn = nullptr;
    const ClImage* m_pSeenOut = nullptr;
};

class ClRamp : public TpRamp<NewIpBase::ClIp1to1Base>
{
public:
    ClRamp() { EnableAllDataTypes(); }
};

using OldRamp_t = TpRamp<ClIp1to1Base>;

/// The frames with nothing but what they leave pure.
class ClPlain : public NewIpBase::ClIp1to1Base
{
public:
    ClPlain() { EnableAllDataTypes(); }
    ClProcessorBase* Create() override { return NewProcessor<ClPlain>(); }
    const char* Name() const override { return "Plain"; }
};

class ClOldPlain : public ClIp1to1Base
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClOldPlain>(); }
    const char* Name() const override { return "OldPlain"; }
};

/// Writes down what DoProcess is given.
class ClWitness : public ClPlain
{
public:
    long DoProcess(ClImage& cIn, ClImage& cOut) override
    {
        m_pSeenIn = &cIn;
        m_pSeenOut = &cOut;
        return -77;
    }

    ClImage* m_pSeenIn = nullptr;
    ClImage* m_pSeenOut = nullptr;
};

/// Makes an output of half the width.
class ClHalving : public ClPlain
{
public:
    void AllocateOutImage(ClImage& cOut) override
    {
        cOut.NewWithType(m_pInImage->m_eDataType, m_pInImage->m_nWidth / 2, m_pInImage->m_nHeight, 1, 0, 0);
    }
    long DoProcess(ClImage&, ClImage& cOut) override { return cOut.m_nWidth; }
};

template <class TIn, class TOut> void RampByDefinition(const ClImage& cIn, unsigned char eOutType, ClImage& cOut)
{
    cOut.NewWithType(eOutType, cIn.m_nWidth, cIn.m_nHeight, cIn.m_nPlanes, cIn.m_nXRes, cIn.m_nYRes);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            for (int p = 0; p < cIn.m_nPlanes; ++p)
            {
                const double dValue = static_cast<double>(SampleAt<TIn>(cIn, x, y, p));
                SetSample(cOut, x, y, p, SampleOf<TOut>(Ramp(dValue)));
            }
        }
    }
}

constexpr char szBadPointer[] = "The pointer is bad or invalid.\n";
} // namespace

TEST(Ip1to1Base, MapsEverySampleOfEveryTypeThroughTheFunction)
{
    ForEachRandomImage(4,
                       [](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           ClImage cExpected;
                           RampByDefinition<T, T>(cIn, cIn.m_eDataType, cExpected);
                           const int nSamples = cIn.m_nWidth * cIn.m_nHeight * cIn.m_nPlanes;
                           for (const bool bUseLUT : {true, false})
                           {
                               ClRamp cRamp;
                               cRamp.m_bUseLUT = bUseLUT;
                               ClImage cOut;
                               ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut));
                               EXPECT_TRUE(SamePixels(cExpected, cOut));
                               const bool bTable = bUseLUT && cIn.m_eDataType == ClImage::eUInt8;
                               EXPECT_EQ(bTable ? 256 : nSamples, cRamp.m_nCalls);
                               EXPECT_EQ(&cIn, cRamp.m_pSeenIn);
                               EXPECT_EQ(&cOut, cRamp.m_pSeenOut);
                           }
                       });
}

TEST(Ip1to1Base, ResultsAreTruncatedToTheirLowBitsAndDoNotSaturate)
{
    class ClConstant : public ClPlain
    {
    public:
        double GetValue(ClImage&, ClImage&, double) override { return m_dValue; }
        double m_dValue = 300.7;
    };
    for (const bool bUseLUT : {true, false})
    {
        ClConstant cConstant;
        cConstant.m_bUseLUT = bUseLUT;
        ClImage cImage(3, 2, 1, 0, 0);
        FillRandom(cImage, 1);
        ASSERT_EQ(0, cConstant.ApplyParam(cImage));
        EXPECT_EQ(44, SampleAt<unsigned char>(cImage, 2, 1));
        cConstant.m_dValue = -1.9;
        ASSERT_EQ(0, cConstant.ApplyParam(cImage));
        EXPECT_EQ(255, SampleAt<unsigned char>(cImage, 0, 0));
    }
    ClConstant cConstant;
    ClImage cImage;
    cImage.NewWithType(ClImage::eSInt8, 3, 2, 1, 0, 0);
    cConstant.m_dValue = 128.5;
    ASSERT_EQ(0, cConstant.ApplyParam(cImage));
    EXPECT_EQ(-128, SampleAt<signed char>(cImage, 2, 1));
    cConstant.m_dValue = std::nan("");
    EXPECT_EQ(0, cConstant.ApplyParam(cImage)); // some value, but no undefined conversion
}

TEST(Ip1to1Base, InPlaceWithoutTheAbilityGivesTheImageANewBlock)
{
    ClRamp cRamp;
    EXPECT_FALSE(cRamp.m_bInPlace);
    EXPECT_TRUE(cRamp.m_bUseLUT);
    ClImage cImage;
    cImage.NewWithType(ClImage::eSInt16, 5, 3, 3, 19685, 3937);
    FillRandom(cImage, 2);
    cImage.m_nAttribute = 9;
    cImage.m_dBlack = -100;
    ClImage cDescription;
    cDescription.New(cImage);
    ClImage cExpected;
    RampByDefinition<short, short>(cImage, ClImage::eSInt16, cExpected);
    const unsigned char* const pOld = cImage.Data();
    ASSERT_EQ(0, cRamp.ApplyParam(cImage));
    EXPECT_NE(pOld, cImage.Data());
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_TRUE(SameDescription(cDescription, cImage));
}

TEST(Ip1to1Base, InPlaceWithTheAbilityKeepsTheBlock)
{
    ClRamp cRamp;
    cRamp.m_bInPlace = true;
    ClImage cImage;
    FillRandom8(cImage, 7, 4, 3);
    ClImage cExpected;
    RampByDefinition<unsigned char, unsigned char>(cImage, ClImage::eUInt8, cExpected);
    const unsigned char* const pOld = cImage.Data();
    ASSERT_EQ(0, cRamp.ApplyParam(cImage));
    EXPECT_EQ(pOld, cImage.Data());
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(Ip1to1Base, AnotherOutputTakesTheGeometryOfTheInput)
{
    for (const bool bInPlace : {false, true})
    {
        ClImage cIn;
        cIn.NewWithType(ClImage::eFloat32, 5, 3, 2, 19685, 3937);
        FillRandom(cIn, 4);
        cIn.m_nAttribute = 9;
        cIn.m_dWhite = 50.0;
        ClImage cBefore;
        cBefore = cIn;
        ClImage cOut(100, 70, 3, 1, 2);
        ClRamp cRamp;
        cRamp.m_bInPlace = bInPlace;
        ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut));
        EXPECT_TRUE(SameDescription(cIn, cOut));
        EXPECT_TRUE(SamePixels(cBefore, cIn));
        ClImage cExpected;
        RampByDefinition<float, float>(cIn, ClImage::eFloat32, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        EXPECT_EQ(&cIn, cRamp.m_pInImage); // the pointers stay set
        EXPECT_EQ(&cOut, cRamp.m_pOutImage);
    }
}

TEST(Ip1to1Base, PaddingIsNotWritten)
{
    for (const bool bUseLUT : {true, false})
    {
        ClImage cIn;
        FillRandom8(cIn, 5, 3, 5);
        ClImage cOut(5, 3, 1, 0, 0); // the right size already, so its block stays
        std::memset(cOut.Data(), 0xA5, 24);
        ClRamp cRamp;
        cRamp.m_bUseLUT = bUseLUT;
        ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut));
        for (int y = 0; y < 3; ++y)
        {
            for (int i = 5; i < 8; ++i)
            {
                EXPECT_EQ(0xA5, cOut.Data()[y * 8 + i]);
            }
        }
    }
}

TEST(Ip1to1Base, DoProcessSeesTheImagesAndItsResultIsReturned)
{
    ClImage cIn(4, 4, 1, 0, 0);
    ClImage cOut;
    ClWitness cWitness;
    EXPECT_EQ(-77, cWitness.ApplyParam(cIn, cOut));
    EXPECT_EQ(&cIn, cWitness.m_pSeenIn);
    EXPECT_EQ(&cOut, cWitness.m_pSeenOut);
    EXPECT_EQ(-77, cWitness.ApplyParam(cIn));
    EXPECT_EQ(&cIn, cWitness.m_pSeenIn);
    EXPECT_NE(&cIn, cWitness.m_pSeenOut);
    cWitness.m_bInPlace = true;
    EXPECT_EQ(-77, cWitness.ApplyParam(cIn));
    EXPECT_EQ(&cIn, cWitness.m_pSeenIn);
    EXPECT_EQ(&cIn, cWitness.m_pSeenOut);
    EXPECT_EQ(-77, cWitness.ApplyParam(cIn, cOut));
    EXPECT_EQ(&cOut, cWitness.m_pSeenOut);
}

TEST(Ip1to1Base, ADerivedClassMakesTheOutput)
{
    ClImage cImage(8, 3, 1, 0, 0);
    ClHalving cHalving;
    EXPECT_EQ(4, cHalving.ApplyParam(cImage));
    EXPECT_EQ(4, cImage.m_nWidth);
    cHalving.m_bInPlace = true;
    ClImage cOut;
    EXPECT_EQ(2, cHalving.ApplyParam(cImage, cOut));
    EXPECT_EQ(2, cOut.m_nWidth);
    EXPECT_EQ(4, cHalving.ApplyParam(cImage)); // in place nothing is made
}

TEST(Ip1to1Base, ByItselfEverySampleBecomesZero)
{
    ClImage cImage;
    FillRandom8(cImage, 5, 2, 6);
    ASSERT_EQ(0, ClPlain().ApplyParam(cImage));
    ClImage cZero(5, 2, 1, 0, 0);
    std::memset(cZero.Data(), 0, 16);
    EXPECT_TRUE(SamePixels(cZero, cImage));
}

TEST(Ip1to1Base, ATypeThatIsNotEnabledIsRefused)
{
    class ClByteOnly : public NewIpBase::ClIp1to1Base
    {
    public:
        ClByteOnly() { EnableDataType(ClImage::eUInt8); }
        ClProcessorBase* Create() override { return NewProcessor<ClByteOnly>(); }
        const char* Name() const override { return "ByteOnly"; }
    };
    ClByteOnly cByteOnly;
    ClImage cImage;
    cImage.NewWithType(ClImage::eFloat32, 4, 4, 1, 0, 0);
    EXPECT_RAISES(cByteOnly.ApplyParam(cImage), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"float32\" not supported by processor.");
    EXPECT_FALSE(cByteOnly.CanApply());
    cImage.NewWithType(ClImage::eUInt8, 4, 4, 1, 0, 0);
    EXPECT_TRUE(cByteOnly.CanApply());
    EXPECT_EQ(0, cByteOnly.Initialize());
    cImage.Initialize();
    EXPECT_RAISES(cByteOnly.ApplyParam(cImage), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"unknown\" not supported by processor.");
}

TEST(Ip1to1Base, TheTypeOfTheOutputIsNotChecked)
{
    ClRamp cRamp;
    ClImage cIn(4, 4, 1, 0, 0);
    ClImage cOut;
    cOut.m_eDataType = static_cast<ClImage::EDataType>(77);
    EXPECT_EQ(0, cRamp.ApplyParam(cIn, cOut));
    EXPECT_EQ(ClImage::eUInt8, cOut.m_eDataType);
}

TEST(Ip1to1Base, MissingImagesAreRefused)
{
    ClRamp cRamp;
    EXPECT_RAISES(cRamp.Apply(), ClException, FPC_ERROR_BAD_POINTER,
                  (std::string(szBadPointer) + "Input image not assigned").c_str());
    EXPECT_FALSE(cRamp.CanApply());
    EXPECT_RAISES(cRamp.Process(), ClException, FPC_ERROR_BAD_POINTER,
                  (std::string(szBadPointer) + "m_pInImage is not set").c_str());
    ClImage cImage(4, 4, 1, 0, 0);
    cRamp.m_pInImage = &cImage;
    EXPECT_TRUE(cRamp.CanApply());
    EXPECT_RAISES(cRamp.Apply(), ClException, FPC_ERROR_BAD_POINTER,
                  (std::string(szBadPointer) + "m_pOutImage is not set").c_str());
}

TEST(Ip1to1Base, TheOutputIsLookedForBeforeThePixelsAndTheTypeBeforeBoth)
{
    ClImage cNoRows(10, 0, 1, 0, 0), cEmpty;
    ClRamp cRamp;
    cRamp.m_pInImage = &cNoRows;
    EXPECT_RAISES(cRamp.Apply(), ClException, FPC_ERROR_BAD_POINTER,
                  (std::string(szBadPointer) + "m_pOutImage is not set").c_str());
    cRamp.m_pInImage = &cEmpty;
    EXPECT_RAISES_CODE(cRamp.Apply(), FPC_ERROR_FORMAT_NOTSUPPORTED);
}

TEST(Ip1to1Base, AnImageWithoutPixelsIsRefused)
{
    ClImage cImage(10, 0, 1, 0, 0);
    ClImage cOut;
    EXPECT_RAISES(ClRamp().ApplyParam(cImage, cOut), ClException, FPC_ERROR_BAD_POINTER,
                  (std::string(szBadPointer) + "m_pInImage->Data() is not set").c_str());
}

TEST(Ip1to1Base, ATypeThatIsNoneOfTheEightFails)
{
    const auto eStrange = static_cast<ClImage::EDataType>(3);
    ClImage cImage;
    cImage.NewWithType(eStrange, 4, 4, 1, 0, 0);
    ClRamp cRamp;
    cRamp.EnableDataType(eStrange);
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRamp.ApplyParam(cImage));
    EXPECT_EQ(0, cRamp.m_nCalls);
}

TEST(Ip1to1Base, PublishesItsImages)
{
    ClImage cImage;
    ClRamp cRamp;
    ClParameterContainer cTree;
    cRamp.m_pInImage = &cImage;
    cRamp.QueryParameters(cTree);
    ASSERT_EQ(2u, cTree.m_aChildren.Entries());
    EXPECT_STREQ("pInImage", cTree.m_aChildren[0]->GetName());
    EXPECT_STREQ("pOutImage", cTree.m_aChildren[1]->GetName());
    EXPECT_EQ(1, cTree.m_aChildren[0]->m_nFlags);
    EXPECT_EQ(2, cTree.m_aChildren[1]->m_nFlags);
    EXPECT_TRUE(cTree.m_aChildren[0]->IsPointer());
    EXPECT_EQ(&cImage, cRamp.m_pInImage);
    EXPECT_EQ(static_cast<void*>(&cRamp.m_pInImage), cTree.Find("pInImage")->GetParameterPtr());
    EXPECT_EQ(static_cast<void*>(&cRamp.m_pOutImage), cTree.Find("pOutImage")->GetParameterPtr());
}

TEST(OldIp1to1Base, MapsAll64PairsOfTypes)
{
    int nPairs = 0;
    ForEachRandomImage(3,
                       [&](ClImage& cIn, auto cTagIn)
                       {
                           for (const unsigned char eOutType : aEveryType)
                           {
                               ++nPairs;
                               ClImage cExpected;
                               DispatchSampleType(eOutType, 0,
                                                  [&](auto cTagOut)
                                                  {
                                                      using TIn = typename decltype(cTagIn)::Type;
                                                      using TOut = typename decltype(cTagOut)::Type;
                                                      RampByDefinition<TIn, TOut>(cIn, eOutType, cExpected);
                                                      return 0L;
                                                  });
                               const int nSamples = cIn.m_nWidth * cIn.m_nHeight * cIn.m_nPlanes;
                               for (const bool bUseLUT : {true, false})
                               {
                                   OldRamp_t cRamp;
                                   cRamp.m_bUseLUT = bUseLUT;
                                   ClImage cOut;
                                   ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut, eOutType));
                                   ASSERT_TRUE(SamePixels(cExpected, cOut)) << "to type " << +eOutType;
                                   const bool bTable = bUseLUT && cIn.m_eDataType == ClImage::eUInt8;
                                   EXPECT_EQ(bTable ? 256 : nSamples, cRamp.m_nCalls);
                                   EXPECT_EQ(&cIn, cRamp.m_pSeenIn);
                                   EXPECT_EQ(&cOut, cRamp.m_pSeenOut);
                               }
                           }
                       });
    EXPECT_EQ(64 * 8 * 3, nPairs);
}

TEST(OldIp1to1Base, TheTypeOfTheOutputMayBeAskedFor)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt16, 5, 3, 1, 19685, 3937);
    FillRandom(cIn, 7);
    cIn.m_nAttribute = 4;
    cIn.m_eContent = ClImage::eHSV;
    ClImage cOut;
    OldRamp_t cRamp;
    ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut, 200));
    ClImage cExpected;
    cExpected.NewWithType(cIn, ClImage::eDouble64);
    EXPECT_TRUE(SameDescription(cExpected, cOut)); // with the range of its type
    ASSERT_EQ(0, cRamp.ApplyParam(cIn, cOut, 255));
    EXPECT_EQ(ClImage::eSInt16, cOut.m_eDataType);
    EXPECT_EQ(255, cRamp.m_eOutImageType);
}

TEST(OldIp1to1Base, InPlaceKeepsTheTypeAndForgetsTheOneAskedForBefore)
{
    ClImage cImage;
    FillRandom8(cImage, 5, 3, 8);
    ClImage cExpected;
    RampByDefinition<unsigned char, unsigned char>(cImage, ClImage::eUInt8, cExpected);
    OldRamp_t cRamp;
    cRamp.m_eOutImageType = ClImage::eFloat32;
    const unsigned char* const pOld = cImage.Data();
    ASSERT_EQ(0, cRamp.ApplyParam(cImage));
    EXPECT_EQ(255, cRamp.m_eOutImageType);
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_NE(pOld, cImage.Data());
}

TEST(OldIp1to1Base, TheSameImageMayChangeItsType)
{
    for (const bool bInPlace : {false, true}) // the ability helps only if the type stays
    {
        ClImage cImage;
        FillRandom8(cImage, 5, 3, 9);
        ClImage cExpected;
        RampByDefinition<unsigned char, int>(cImage, ClImage::eSInt32, cExpected);
        OldRamp_t cRamp;
        cRamp.m_bInPlace = bInPlace;
        ASSERT_EQ(0, cRamp.ApplyParam(cImage, cImage, ClImage::eSInt32));
        EXPECT_TRUE(SamePixels(cExpected, cImage));
    }
}

TEST(OldIp1to1Base, InPlaceWithTheAbilityKeepsTheBlock)
{
    ClImage cImage;
    FillRandom8(cImage, 5, 3, 10);
    ClImage cExpected;
    RampByDefinition<unsigned char, unsigned char>(cImage, ClImage::eUInt8, cExpected);
    OldRamp_t cRamp;
    cRamp.m_bInPlace = true;
    const unsigned char* const pOld = cImage.Data();
    ClImage cOther;
    ASSERT_EQ(0, cRamp.ApplyParam(cImage, cOther, 255));
    EXPECT_TRUE(SamePixels(cExpected, cOther));
    ASSERT_EQ(0, cRamp.ApplyParam(cImage));
    EXPECT_EQ(pOld, cImage.Data());
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(OldIp1to1Base, MissingImagesAndPixelsAreReturned)
{
    OldRamp_t cRamp;
    ClImage cImage(4, 4, 1, 0, 0);
    ClImage cEmpty;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRamp.Apply());
    cRamp.m_pInImage = &cImage;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRamp.Apply());
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRamp.ApplyParam(cEmpty, cImage, 255));
    EXPECT_EQ(0, cRamp.ApplyParam(cImage, cEmpty, 255));
}

TEST(OldIp1to1Base, TypesThatAreNoneOfTheEightFail)
{
    OldRamp_t cRamp;
    ClImage cImage(4, 4, 1, 0, 0);
    ClImage cOut;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRamp.ApplyParam(cImage, cOut, 3));
    cImage.NewWithType(3, 4, 4, 1, 0, 0);
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRamp.ApplyParam(cImage, cOut, ClImage::eUInt8));
    EXPECT_EQ(0, cRamp.m_nCalls);
}

TEST(OldIp1to1Base, ByItselfEverySampleBecomesZero)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eDouble64, 1, 1, 1, 0, 0);
    SetSample(cImage, 0, 0, 0, 3.5);
    ASSERT_EQ(0, ClOldPlain().ApplyParam(cImage));
    EXPECT_EQ(0.0, SampleAt<double>(cImage, 0, 0));
}

TEST(OldIp1to1Base, PublishesItsImagesAndTheTypeOfTheOutput)
{
    OldRamp_t cRamp;
    ClParameterContainer cTree;
    cRamp.QueryParameters(cTree);
    ASSERT_EQ(3u, cTree.m_aChildren.Entries());
    EXPECT_STREQ("pInImage", cTree.m_aChildren[0]->GetName());
    EXPECT_STREQ("pOutImage", cTree.m_aChildren[1]->GetName());
    EXPECT_STREQ("OutImageType", cTree.m_aChildren[2]->GetName());
    EXPECT_EQ(1, cTree.m_aChildren[0]->m_nFlags);
    EXPECT_EQ(2, cTree.m_aChildren[1]->m_nFlags);
    EXPECT_EQ(1, cTree.m_aChildren[2]->m_nFlags);
    EXPECT_EQ("default", cTree.m_aChildren[2]->GetValue());

    const std::pair<const char*, int> aNames[] = {{"unsigned char", 1},  {"signed char", 129}, {"unsigned short", 2},
                                                  {"signed short", 130}, {"unsigned int", 4},  {"signed int", 132},
                                                  {"float", 196},        {"double", 200},      {"default", 255}};
    ASSERT_EQ(9u, cTree.Find("OutImageType")->GetEnumInterface()->GetValueNameCount());
    unsigned long nIndex = 0;
    for (const auto& [szName, nType] : aNames)
    {
        char szText[20];
        cTree.Find("OutImageType")->GetEnumInterface()->GetValueName(nIndex++, szText, sizeof szText);
        EXPECT_STREQ(szName, szText);
        cTree.Find("OutImageType")->SetValue(szName);
        EXPECT_EQ(nType, cRamp.m_eOutImageType);
    }
}

TEST(Ip1to1Base, RowsAreGivenAtOnceOnlyIfNeitherImageHasPadding)
{
    using Call_t = std::pair<std::ptrdiff_t, int>; // samples, calls
    const auto calls = [](unsigned char eIn, unsigned char eOut, int nWidth)
    {
        ClImage cIn, cOut;
        cIn.NewWithType(eIn, nWidth, 3, 1, 0, 0);
        cOut.NewWithType(eOut, nWidth, 3, 1, 0, 0);
        Call_t cCall(0, 0);
        const auto count = [&cCall](const auto*, auto*, std::ptrdiff_t nSamples)
        { cCall = Call_t(nSamples, cCall.second + 1); };
        eIn == ClImage::eUInt8 ? ForEachRowPair<unsigned char, unsigned short>(cIn, cOut, count)
                               : ForEachRowPair<unsigned short, unsigned char>(cIn, cOut, count);
        return cCall;
    };
    EXPECT_EQ(Call_t(12, 1), calls(ClImage::eUInt8, ClImage::eUInt16, 4));
    EXPECT_EQ(Call_t(2, 3), calls(ClImage::eUInt8, ClImage::eUInt16, 2)) << "padding in the input";
    EXPECT_EQ(Call_t(2, 3), calls(ClImage::eUInt16, ClImage::eUInt8, 2)) << "padding in the output";
    EXPECT_EQ(Call_t(0, 0), calls(ClImage::eUInt8, ClImage::eUInt16, 0));
}
