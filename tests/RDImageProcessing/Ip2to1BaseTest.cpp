#include "RDImageProcessing/Ip2to1Base.hpp"

#include "MixOperator.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

namespace
{
/// The base's own bodies, with nothing replaced.
class ClPlain : public ClIp2to1Base
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClPlain>(); }
    const char* Name() const override { return "ClPlain"; }
};

constexpr ClTestShift aShifts[] = {{0, 0}, {2, 1}, {-2, 1}, {1, -3}, {-1, -2}};
} // namespace

TEST(Ip2to1Base, EveryTripleOfTypesIsCombinedAsTheDefinitionTells)
{
    unsigned int nSeed = 1;
    ForEachTypeTriple(
        [&](unsigned char nType1, unsigned char nType2, unsigned char nOutType)
        {
            ClImage cIn1, cIn2, cExpected, cOut;
            MakeRandom(cIn1, nType1, 5, 4, 1, nSeed++);
            MakeRandom(cIn2, nType2, 5, 4, 1, nSeed++);
            CanvasByDefinition(cIn1, cIn2, {0, 0}, 0.0, nOutType, cExpected, Mixed);
            ClMix cMix;
            ASSERT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, nOutType));
            ASSERT_TRUE(SamePixels(cExpected, cOut));
            ASSERT_TRUE(SameDescription(cExpected, cOut));
            EXPECT_EQ(20, cMix.m_nCalls);
            EXPECT_THAT(cMix.m_apSeen, testing::ElementsAre(&cIn1, &cIn2, &cOut));
        });
}

TEST(Ip2to1Base, ShiftsIntoAllFourQuadrantsMakeACanvasForBothInputs)
{
    unsigned int nSeed = 1;
    ForEachTypeTriple(
        [&](unsigned char nType1, unsigned char nType2, unsigned char nOutType)
        {
            ClImage cIn1, cIn2, cExpected, cOut;
            MakeRandom(cIn1, nType1, 4, 5, 3, nSeed++);
            MakeRandom(cIn2, nType2, 6, 3, 1 + 2 * static_cast<int>(nSeed % 2), nSeed + 1);
            const ClTestShift cShift = aShifts[nSeed % std::size(aShifts)];
            CanvasByDefinition(cIn1, cIn2, cShift, 77.9, nOutType, cExpected, Mixed);
            ASSERT_EQ(0, MixShifted(cShift, 77.9).ApplyParam(cIn1, cIn2, cOut, nOutType));
            ASSERT_TRUE(SamePixels(cExpected, cOut)) << cShift.nX << ", " << cShift.nY;
            ASSERT_TRUE(SameDescription(cExpected, cOut));
        });
}

TEST(Ip2to1Base, EverySizePlaneCountAndShiftFollowsTheDefinition)
{
    unsigned int nSeed = 1;
    for (const ClTestSize& cSize1 : {ClTestSize{1, 1}, ClTestSize{7, 3}, ClTestSize{10, 9}})
    {
        for (const ClTestSize& cSize2 : {ClTestSize{1, 1}, ClTestSize{3, 7}, ClTestSize{10, 9}})
        {
            for (int nPlanes = 0; nPlanes < 16; ++nPlanes)
            {
                ClImage cIn1, cIn2;
                MakeRandom(cIn1, ClImage::eUInt8, cSize1.nWidth, cSize1.nHeight, 1 + nPlanes % 4, nSeed++);
                MakeRandom(cIn2, ClImage::eSInt16, cSize2.nWidth, cSize2.nHeight, 1 + nPlanes / 4, nSeed++);
                for (const int nX : {-12, -4, -1, 0, 1, 2, 11})
                {
                    for (const int nY : {-13, -3, 0, 2, 10})
                    {
                        SCOPED_TRACE(std::to_string(cSize1.nWidth) + ", " + std::to_string(cSize2.nWidth) + " shift " +
                                     std::to_string(nX) + ", " + std::to_string(nY) + " planes " +
                                     std::to_string(cIn1.m_nPlanes) + ", " + std::to_string(cIn2.m_nPlanes));
                        ClImage cExpected, cOut;
                        CanvasByDefinition(cIn1, cIn2, {nX, nY}, 200.0, ClImage::eUInt8, cExpected, Mixed);
                        EXPECT_EQ(0, MixShifted({nX, nY}, 200.0).ApplyParam(cIn1, cIn2, cOut, 255));
                        ASSERT_TRUE(SamePixels(cExpected, cOut));
                    }
                }
            }
        }
    }
}

TEST(Ip2to1Base, TheOutputMayBeEitherInput)
{
    ClImage cIn1, cIn2, cExpected;
    MakeRandom(cIn1, ClImage::eUInt8, 9, 5, 1, 1);
    MakeRandom(cIn2, ClImage::eUInt16, 8, 6, 1, 2);
    CanvasByDefinition(cIn1, cIn2, {1, -2}, 3.0, ClImage::eFloat32, cExpected, Mixed);
    for (const bool bFirst : {true, false})
    {
        ClImage c1, c2;
        c1 = cIn1;
        c2 = cIn2;
        ClImage& cOut = bFirst ? c1 : c2;
        EXPECT_EQ(0, MixShifted({1, -2}, 3.0).ApplyParam(c1, c2, cOut, ClImage::eFloat32));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        EXPECT_TRUE(SamePixels(bFirst ? cIn2 : cIn1, bFirst ? c2 : c1));
    }
    ClImage cAll, cSame;
    cAll = cIn1;
    CanvasByDefinition(cIn1, cIn1, {0, 0}, 0.0, ClImage::eUInt8, cSame, Mixed);
    EXPECT_EQ(0, ClMix().ApplyParam(cAll, cAll, cAll, 255));
    EXPECT_TRUE(SamePixels(cSame, cAll));
}

TEST(Ip2to1Base, SizesThatMustBeEqualRefuseAnotherSizeAndAnyOffset)
{
    ClImage cIn1(5, 4, 1, 0, 0), cWider(6, 4, 1, 0, 0), cHigher(5, 5, 1, 0, 0), cOut;
    FillRandom(cIn1, 1);
    EXPECT_TRUE(ClMix().m_bSizeMustBeEqual);
    EXPECT_EQ(-44, ClMix().ApplyParam(cIn1, cWider, cOut, 255));
    EXPECT_EQ(-44, ClMix().ApplyParam(cIn1, cHigher, cOut, 255));
    for (const ClTestShift& cShift : {ClTestShift{1, 0}, ClTestShift{0, 1}, ClTestShift{-1, 0}, ClTestShift{0, -1}})
    {
        ClMix cMix = MixShifted(cShift);
        cMix.m_bSizeMustBeEqual = true;
        EXPECT_EQ(-44, cMix.ApplyParam(cIn1, cIn1, cOut, 255));
    }
    EXPECT_EQ(nullptr, cOut.Data());
    EXPECT_EQ(0, ClMix().ApplyParam(cIn1, cIn1, cOut, 255));
}

TEST(Ip2to1Base, WithoutOffsetTheCanvasIsTheLargerAndTheOverlapTheSmallerSize)
{
    ClImage cIn1, cIn2, cExpected, cOut;
    MakeRandom(cIn1, ClImage::eUInt8, 9, 3, 1, 1);
    MakeRandom(cIn2, ClImage::eUInt8, 4, 8, 1, 2);
    ClMix cMix = MixShifted({0, 0}, 5.0);
    EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, 255));
    EXPECT_EQ(9, cOut.m_nWidth);
    EXPECT_EQ(8, cOut.m_nHeight);
    EXPECT_EQ(4, cMix.m_nOverlapWidth);
    EXPECT_EQ(3, cMix.m_nOverlapHeight);
    EXPECT_EQ(12, cMix.m_nCalls);
    CanvasByDefinition(cIn1, cIn2, {0, 0}, 5.0, ClImage::eUInt8, cExpected, Mixed);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_EQ(SampleAt<unsigned char>(cIn1, 8, 2), SampleAt<unsigned char>(cOut, 8, 2));
    EXPECT_EQ(SampleAt<unsigned char>(cIn2, 3, 7), SampleAt<unsigned char>(cOut, 3, 7));
    EXPECT_EQ(5, SampleAt<unsigned char>(cOut, 8, 7));
}

TEST(Ip2to1Base, ThePreparationTellsOverlapAndOffsetsInSamples)
{
    ClImage cIn1, cIn2, cOut;
    MakeRandom(cIn1, ClImage::eUInt16, 10, 9, 3, 1); // rows of 30 samples
    MakeRandom(cIn2, ClImage::eUInt8, 7, 8, 1, 2);   // rows of 8 samples
    ClMix cMix = MixShifted({2, -3});
    EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, ClImage::eUInt8)); // canvas 10 by 12, rows of 32 samples
    EXPECT_EQ(5, cMix.m_nOverlapWidth);                               // though 7 columns lie on each other
    EXPECT_EQ(5, cMix.m_nOverlapHeight);
    EXPECT_EQ(2 * 3 + 3 * 32, cMix.m_nOutOffset);
    EXPECT_EQ(2 * 3, cMix.m_nIn1Offset);
    EXPECT_EQ(3 * 8, cMix.m_nIn2Offset);
    cMix.m_nOffsetX = -2;
    cMix.m_nOffsetY = 3;
    EXPECT_EQ(0, cMix.Apply()); // canvas 12 by 11, rows of 36 samples
    EXPECT_EQ(2 * 3 + 3 * 36, cMix.m_nOutOffset);
    EXPECT_EQ(3 * 30, cMix.m_nIn1Offset);
    EXPECT_EQ(2, cMix.m_nIn2Offset);
}

TEST(Ip2to1Base, ImagesThatDoNotTouchStandOnTheFilledCanvas)
{
    ClImage cIn1, cIn2, cExpected, cOut;
    MakeRandom(cIn1, ClImage::eUInt8, 3, 3, 1, 1);
    MakeRandom(cIn2, ClImage::eUInt8, 2, 2, 1, 2);
    ClMix cMix = MixShifted({-7, 5}, 9.0);
    EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, 255));
    EXPECT_EQ(-5, cMix.m_nOverlapWidth);
    EXPECT_EQ(-3, cMix.m_nOverlapHeight);
    EXPECT_EQ(0, cMix.m_nCalls);
    CanvasByDefinition(cIn1, cIn2, {-7, 5}, 9.0, ClImage::eUInt8, cExpected, Mixed);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(Ip2to1Base, TheFillColourIsTruncatedToTheOutputsType)
{
    ClImage cIn1(1, 1, 2, 0, 0), cOut;
    FillRandom(cIn1, 1);
    const struct
    {
        double dFill;
        unsigned char nByte;
        float fFloat;
    } aCases[] = {{300.7, 44, 300.7f}, {255.9, 255, 255.9f}, {-1.5, 255, -1.5f}};
    for (const auto& cCase : aCases)
    {
        EXPECT_EQ(0, MixShifted({3, 0}, cCase.dFill).ApplyParam(cIn1, cIn1, cOut, ClImage::eUInt8));
        EXPECT_EQ(cCase.nByte, SampleAt<unsigned char>(cOut, 1, 0, 0));
        EXPECT_EQ(cCase.nByte, SampleAt<unsigned char>(cOut, 2, 0, 1));
        EXPECT_EQ(0, MixShifted({3, 0}, cCase.dFill).ApplyParam(cIn1, cIn1, cOut, ClImage::eFloat32));
        EXPECT_EQ(cCase.fFloat, SampleAt<float>(cOut, 2, 0, 1));
    }
}

TEST(Ip2to1Base, ResultsAreTruncatedAndNotSaturated)
{
    ClImage cIn1, cIn2, cOut;
    MakeRandom(cIn1, ClImage::eDouble64, 1, 1, 1, 1);
    MakeRandom(cIn2, ClImage::eDouble64, 1, 1, 1, 1);
    SetSample(cIn1, 0, 0, 0, 400.0); // 0.75 * 400 + 1.25 = 301.25
    SetSample(cIn2, 0, 0, 0, 0.0);
    EXPECT_EQ(0, ClMix().ApplyParam(cIn1, cIn2, cOut, ClImage::eUInt8));
    EXPECT_EQ(45, SampleAt<unsigned char>(cOut, 0, 0));
    EXPECT_EQ(0, ClMix().ApplyParam(cIn1, cIn2, cOut, ClImage::eSInt16));
    EXPECT_EQ(301, SampleAt<short>(cOut, 0, 0));
    EXPECT_EQ(0, ClMix().ApplyParam(cIn1, cIn2, cOut, ClImage::eFloat32));
    EXPECT_EQ(301.25f, SampleAt<float>(cOut, 0, 0));
    SetSample(cIn1, 0, 0, 0, 1e300);
    EXPECT_EQ(0, ClMix().ApplyParam(cIn1, cIn2, cOut, ClImage::eSInt32));
    EXPECT_EQ(0, SampleAt<int>(cOut, 0, 0));
}

TEST(Ip2to1Base, NumbersThatNoIntegerHoldsKeepTheLowBitsOfTheSmallest)
{
    constexpr double dInfinity = std::numeric_limits<double>::infinity();
    for (const double dNumber : {std::numeric_limits<double>::quiet_NaN(), dInfinity, -dInfinity, 1e300, -1e19})
    {
        SCOPED_TRACE(dNumber);
        ClImage cIn, cOut;
        cIn.NewWithType(ClImage::eDouble64, 1, 1, 1, 0, 0);
        SetSample(cIn, 0, 0, 0, dNumber);
        for (const unsigned char nType : aEveryType)
        {
            // The sample itself on the canvas, the fill colour behind it, and the result of the two.
            EXPECT_EQ(0, MixShifted({2, 0}, dNumber).ApplyParam(cIn, cIn, cOut, nType));
            if (!ClImage::IsFloatType(nType))
            {
                EXPECT_EQ(0, NumberAt(cOut, 0, 0, 0));
                EXPECT_EQ(0, NumberAt(cOut, 1, 0, 0));
            }
            EXPECT_EQ(0, ClMix().ApplyParam(cIn, cIn, cOut, nType));
            if (!ClImage::IsFloatType(nType))
            {
                EXPECT_EQ(0, NumberAt(cOut, 0, 0, 0));
            }
        }
        EXPECT_EQ(0, MixShifted({2, 0}, dNumber).ApplyParam(cIn, cIn, cOut, ClImage::eDouble64));
        EXPECT_EQ(0, std::memcmp(&dNumber, SampleAddress(cOut, 0, 0), sizeof dNumber));
        EXPECT_EQ(0, std::memcmp(&dNumber, SampleAddress(cOut, 1, 0), sizeof dNumber));
    }
}

TEST(Ip2to1Base, PlanesThatDoNotFitLeaveTheOverlapAsTheInputsStandThere)
{
    for (const int nWidth2 : {5, 4}) // of the same size, too
    {
        ClImage cIn1, cIn2, cExpected, cOut;
        MakeRandom(cIn1, ClImage::eUInt8, 5, 4, 2, 1);
        MakeRandom(cIn2, ClImage::eUInt8, nWidth2, 4, 3, 2);
        ClMix cMix = MixShifted({0, 0}, 99.0);
        EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, 255));
        EXPECT_EQ(0, cMix.m_nCalls);
        EXPECT_TRUE(SamePixels(cIn1, cOut));
        EXPECT_EQ(0, cMix.ApplyParam(cIn2, cIn1, cOut, 255));
        CanvasByDefinition(cIn2, cIn1, {0, 0}, 99.0, ClImage::eUInt8, cExpected, Mixed);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        EXPECT_EQ(0, cMix.m_nCalls);
    }
}

TEST(Ip2to1Base, TheResultOfDoProcessIsReturnedAndTheCanvasStands)
{
    class ClRefusing : public ClMix
    {
    public:
        long DoProcess(ClImage&, ClImage&, ClImage&, long nWidth, long nHeight, long nPlanes1, long nPlanes2,
                       long nIn1Offset, long nIn1Row, long nIn2Offset, long nIn2Row, long nOutOffset,
                       long nOutRow) override
        {
            const long anArguments[] = {nWidth,  nHeight,    nPlanes1, nPlanes2,   nIn1Offset,
                                        nIn1Row, nIn2Offset, nIn2Row,  nOutOffset, nOutRow};
            std::copy(std::begin(anArguments), std::end(anArguments), m_anArguments);
            return -7;
        }
        long m_anArguments[10] = {};
    };
    ClImage cIn1, cIn2, cOut;
    MakeRandom(cIn1, ClImage::eUInt16, 5, 4, 3, 1);
    MakeRandom(cIn2, ClImage::eUInt8, 5, 4, 1, 2);
    ClRefusing cRefusing;
    cRefusing.m_bSizeMustBeEqual = false;
    cRefusing.m_nOffsetX = 1;
    cRefusing.m_nOffsetY = -1;
    EXPECT_EQ(-7, cRefusing.ApplyParam(cIn1, cIn2, cIn1, ClImage::eSInt8));
    EXPECT_EQ(6, cIn1.m_nWidth);
    EXPECT_EQ(5, cIn1.m_nHeight);
    EXPECT_EQ(ClImage::eSInt8, cIn1.m_eDataType);
    const long anExpected[] = {4, 3, 3, 1, 3, 16, 8, 8, 3 + 20, 20};
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(anExpected[i], cRefusing.m_anArguments[i]) << i;
    }
}

TEST(Ip2to1Base, ItsOwnValueIsZero)
{
    ClImage cIn(3, 2, 1, 0, 0), cOut;
    FillRandom(cIn, 1);
    EXPECT_EQ(0.0, ClPlain().GetValue(cIn, cIn, cOut, 3.0, 4.0));
    EXPECT_EQ(0, ClPlain().ApplyParam(cIn, cIn, cOut, ClImage::eFloat32));
    for (int x = 0; x < 6; ++x)
    {
        EXPECT_EQ(0.0f, SampleAt<float>(cOut, x % 3, x / 3));
    }
}

TEST(Ip2to1Base, PublishesItsParametersInOrder)
{
    ClPlain cPlain;
    ClImage cIn;
    cPlain.m_pInImage1 = &cIn;
    cPlain.m_nOutImageType = ClImage::eFloat32;
    cPlain.m_bSizeMustBeEqual = false;
    cPlain.m_dFillColor = 12.5;
    cPlain.m_nOffsetX = -3;
    cPlain.m_nOffsetY = 4;
    ClParameterContainer cContainer;
    cPlain.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage1",       "pInImage2", "pOutImage", "OutImageType",
                              "SizeMustBeEqual", "FillColor", "OffsetX",   "OffsetY"};
    ASSERT_EQ(std::size(aszNames), cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < std::size(aszNames); ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
        EXPECT_EQ(ClParameter::eWritable | ClParameter::eReadable, int(cContainer.m_aChildren[i]->m_nFlags));
    }
    EXPECT_TRUE(cContainer.Find("pInImage1")->IsPointer());
    const char* aszDefaults[] = {"default", "true", "0", "0", "0"};
    const char* aszValues[] = {"float", "false", "12.5", "-3", "4"};
    for (unsigned long i = 0; i < 5; ++i)
    {
        ClParameter* pParameter = cContainer.m_aChildren[3 + i];
        EXPECT_FALSE(pParameter->IsDefault()) << aszNames[3 + i];
        if (i != 2)
        {
            EXPECT_EQ(aszDefaults[i], pParameter->GetDefaultValue());
            EXPECT_EQ(aszValues[i], pParameter->GetValue());
        }
    }
    EXPECT_EQ(0.0, cContainer.Find("FillColor")->GetNumericInterface()->GetDefault());
    EXPECT_EQ(12.5, cPlain.m_dFillColor);
    EXPECT_EQ(&cIn, cPlain.m_pInImage1);
    const struct
    {
        const char* szName;
        int nValue;
    } aTypes[] = {{"unsigned char", 1},  {"signed char", 129}, {"unsigned short", 2},
                  {"signed short", 130}, {"unsigned int", 4},  {"signed int", 132},
                  {"float", 196},        {"double", 200},      {"default", 255}};
    ClParameterEnumInterface* pTypes = cContainer.Find("OutImageType")->GetEnumInterface();
    ASSERT_EQ(std::size(aTypes), pTypes->GetValueNameCount());
    for (unsigned long i = 0; i < std::size(aTypes); ++i)
    {
        char szName[32];
        pTypes->GetValueName(i, szName, sizeof szName);
        EXPECT_STREQ(aTypes[i].szName, szName);
        cContainer.Find("OutImageType")->SetValue(aTypes[i].szName);
        EXPECT_EQ(aTypes[i].nValue, cPlain.m_nOutImageType);
    }
    ClParameterEnumInterface* pEqual = cContainer.Find("SizeMustBeEqual")->GetEnumInterface();
    ASSERT_EQ(2u, pEqual->GetValueNameCount());
    char szName[32];
    pEqual->GetValueName(0, szName, sizeof szName);
    EXPECT_STREQ("true", szName);
    pEqual->GetValueName(1, szName, sizeof szName);
    EXPECT_STREQ("false", szName);
    cContainer.Find("SizeMustBeEqual")->SetValue("true");
    EXPECT_TRUE(cPlain.m_bSizeMustBeEqual);
}

TEST(Ip2to1Base, DefaultsAreSetForTheFiveValuesOnly)
{
    ClImage cImage;
    ClPlain cPlain;
    EXPECT_EQ(255, cPlain.m_nOutImageType);
    EXPECT_FALSE(cPlain.m_bUseLUT);
    cPlain.m_pInImage1 = cPlain.m_pInImage2 = cPlain.m_pOutImage = &cImage;
    cPlain.m_nOutImageType = 1;
    cPlain.m_bSizeMustBeEqual = false;
    cPlain.m_dFillColor = 1.0;
    cPlain.m_nOffsetX = 2;
    cPlain.m_nOffsetY = 3;
    cPlain.m_nOverlapWidth = 4;
    cPlain.m_bUseLUT = true;
    cPlain.SetParametersToDefault();
    EXPECT_EQ(255, cPlain.m_nOutImageType);
    EXPECT_TRUE(cPlain.m_bSizeMustBeEqual);
    EXPECT_EQ(0.0, cPlain.m_dFillColor);
    EXPECT_EQ(0, cPlain.m_nOffsetX);
    EXPECT_EQ(0, cPlain.m_nOffsetY);
    EXPECT_EQ(&cImage, cPlain.m_pInImage1);
    EXPECT_EQ(&cImage, cPlain.m_pOutImage);
    EXPECT_EQ(4, cPlain.m_nOverlapWidth);
    EXPECT_TRUE(cPlain.m_bUseLUT);
}
