#include "RDImageProcessing/IpDelta.hpp"

#include "CanvasByDefinition.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace
{
/// |a - b| as the working type of input 1 holds it, within the range of the output's type.
long double DeltaByDefinition(long double a, long double b, unsigned char nType1, double dLow, double dHigh)
{
    long double d = 0;
    const int nSize = nType1 & 31;
    if ((nType1 & 64) != 0)
    {
        d = std::abs(static_cast<double>(a) - static_cast<double>(b));
    }
    else
    {
        const int nBits = 16 * nSize;
        const long double dDifference = static_cast<long double>(WrappedByDefinition(a, nBits)) -
                                        static_cast<long double>(WrappedByDefinition(b, nBits));
        d = static_cast<long double>(
            WrappedByDefinition(std::abs(static_cast<long double>(WrappedByDefinition(dDifference, nBits))), nBits));
    }
    return std::min<long double>(std::max<long double>(d, dLow), dHigh);
}

void ExpectDelta(ClImage& cIn1, ClImage& cIn2, ClTestShift cShift, unsigned char nOutType)
{
    ClImage cRange, cExpected, cOut;
    cRange.BlackWhiteFromType(nOutType);
    CanvasByDefinition(cIn1, cIn2, cShift, 33.0, nOutType, cExpected,
                       [&](long double a, long double b)
                       { return DeltaByDefinition(a, b, cIn1.m_eDataType, cRange.m_dBlack, cRange.m_dWhite); });
    ClIpDelta cDelta;
    cDelta.m_bSizeMustBeEqual = false;
    cDelta.m_dFillColor = 33.0;
    cDelta.m_nOffsetX = cShift.nX;
    cDelta.m_nOffsetY = cShift.nY;
    ASSERT_EQ(0, cDelta.ApplyParam(cIn1, cIn2, cOut, nOutType));
    ASSERT_TRUE(SamePixels(cExpected, cOut));
    ASSERT_TRUE(SameDescription(cExpected, cOut));
}

class ClCounting : public ClIpDelta
{
public:
    double GetValue(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, double dValue1, double dValue2) override
    {
        ++m_nCalls;
        return ClIpDelta::GetValue(cIn1, cIn2, cOut, dValue1, dValue2);
    }
    long m_nCalls = 0;
};

/// One sample of each type against each other.
template <class T1, class T2>
double DeltaOf(unsigned char nType1, T1 t1, unsigned char nType2, T2 t2, unsigned char nOut)
{
    ClImage cIn1, cIn2, cOut;
    cIn1.NewWithType(nType1, 1, 1, 1, 0, 0);
    cIn2.NewWithType(nType2, 1, 1, 1, 0, 0);
    SetSample(cIn1, 0, 0, 0, t1);
    SetSample(cIn2, 0, 0, 0, t2);
    EXPECT_EQ(0, ClIpDelta().ApplyParam(cIn1, cIn2, cOut, nOut));
    return static_cast<double>(NumberAt(cOut, 0, 0, 0));
}
} // namespace

TEST(IpDelta, EveryTripleOfTypesIsTheDistanceInTheWorkingType)
{
    unsigned int nSeed = 1;
    ForEachTypeTriple(
        [&](unsigned char nType1, unsigned char nType2, unsigned char nOutType)
        {
            ClImage cIn1, cIn2, cColour;
            MakeRandom(cIn1, nType1, 19, 3, 1, nSeed++);
            MakeRandom(cIn2, nType2, 19, 3, 1, nSeed++);
            ExpectDelta(cIn1, cIn2, {0, 0}, nOutType);
            MakeRandom(cColour, nType1, 6, 5, 3, nSeed++);
            ExpectDelta(cColour, cIn2, {-1, 1}, nOutType);
        });
}

TEST(IpDelta, EqualImagesGiveZero)
{
    for (const unsigned char nType : aEveryType)
    {
        ClImage cIn, cOut, cZero;
        MakeRandom(cIn, nType, 13, 7, 3, nType);
        cZero.NewWithType(ClImage::eUInt8, 13, 7, 3, 0, 0);
        std::fill_n(cZero.Data(), cZero.Stride() * 7, static_cast<unsigned char>(0));
        EXPECT_EQ(0, ClIpDelta().ApplyParam(cIn, cIn, cOut, ClImage::eUInt8));
        EXPECT_TRUE(SamePixels(cZero, cOut));
    }
}

TEST(IpDelta, MoreThan90000PixelsTakeTheTableWithTheSameResult)
{
    const struct
    {
        int nWidth;
        int nHeight;
        long nCalls;
    } aCases[] = {{300, 300, 0}, {301, 300, 65536}, {300, 301, 65536}, {90001, 1, 65536}, {1, 90000, 0}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(cCase.nWidth);
        ClImage cIn1, cIn2, cExpected, cOut;
        MakeRandom(cIn1, ClImage::eUInt8, cCase.nWidth, cCase.nHeight, 1, 1);
        MakeRandom(cIn2, ClImage::eUInt8, cCase.nWidth, cCase.nHeight, 1, 2);
        cExpected.NewWithType(cIn1, ClImage::eUInt8);
        for (int y = 0; y < cCase.nHeight; ++y)
        {
            for (int x = 0; x < cCase.nWidth; ++x)
            {
                const int nDistance =
                    std::abs(SampleAt<unsigned char>(cIn1, x, y) - SampleAt<unsigned char>(cIn2, x, y));
                SetSample(cExpected, x, y, 0, static_cast<unsigned char>(nDistance));
            }
        }
        ClCounting cDelta;
        EXPECT_EQ(0, cDelta.ApplyParam(cIn1, cIn2, cOut, 255));
        EXPECT_EQ(cCase.nCalls, cDelta.m_nCalls);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpDelta, WithAndWithoutATableTheBitsAreTheSameWhateverTheRanges)
{
    const struct
    {
        double dBlack;
        double dWhite;
    } aRanges[] = {{0, 255}, {0, 254}, {1, 255}, {10, 200}, {255, 0}, {-3, 252}, {0.5, 255.5}, {NAN, 255}, {0, NAN}};
    for (const auto& cRange1 : aRanges)
    {
        for (const auto& cRange2 : aRanges)
        {
            ClImage cIn1, cIn2;
            MakeRandom(cIn1, ClImage::eUInt8, 301, 300, 1, 1);
            MakeRandom(cIn2, ClImage::eUInt8, 301, 300, 1, 2);
            cIn1.m_dBlack = cRange1.dBlack;
            cIn1.m_dWhite = cRange1.dWhite;
            cIn2.m_dBlack = cRange2.dBlack;
            cIn2.m_dWhite = cRange2.dWhite;
            for (const unsigned char nOutType : {ClImage::eUInt8, ClImage::eSInt8, ClImage::eFloat32})
            {
                ClImage cTable, cOut;
                ClCounting cDelta; // a class of its own always takes the table
                EXPECT_EQ(0, cDelta.ApplyParam(cIn1, cIn2, cTable, nOutType));
                EXPECT_EQ(0, ClIpDelta().ApplyParam(cIn1, cIn2, cOut, nOutType));
                ASSERT_TRUE(SamePixels(cTable, cOut))
                    << cRange1.dBlack << ' ' << cRange1.dWhite << ' ' << cRange2.dBlack << ' ' << cRange2.dWhite;
            }
        }
    }
}

TEST(IpDelta, LargeImagesAreHeldToAnyRangeOfTheOutput)
{
    ClImage cIn1, cIn2;
    MakeRandom(cIn1, ClImage::eUInt8, 301, 300, 1, 1);
    MakeRandom(cIn2, ClImage::eUInt8, 301, 300, 1, 2);
    for (const auto& [dBlack, dWhite] : {std::pair(0.0, 255.0), std::pair(100.9, 200.9), std::pair(200.9, 100.9)})
    {
        ClImage cOut;
        cOut.NewWithType(cIn1, ClImage::eUInt8);
        cOut.m_dBlack = dBlack;
        cOut.m_dWhite = dWhite;
        ClIpDelta cDelta;
        cDelta.m_nOverlapWidth = 301;
        cDelta.m_nOverlapHeight = 300;
        EXPECT_EQ(0, cDelta.DoProcess(cIn1, cIn2, cOut, 301, 300, 1, 1, 0, cIn1.Stride(), 0, cIn2.Stride(), 0,
                                      cOut.Stride()));
        for (int y = 0; y < 300; ++y)
        {
            for (int x = 0; x < 301; ++x)
            {
                const double d = std::abs(SampleAt<unsigned char>(cIn1, x, y) - SampleAt<unsigned char>(cIn2, x, y));
                const double dHeld = std::max(std::min(dBlack, dWhite), std::min(std::max(dBlack, dWhite), d));
                ASSERT_EQ(std::trunc(dHeld), SampleAt<unsigned char>(cOut, x, y)) << dBlack << " to " << dWhite;
            }
        }
    }
}

TEST(IpDelta, TableAndDirectPathAgreeForEveryOutputTypeAndPlanes)
{
    for (const unsigned char nOutType : aEveryType)
    {
        for (const int nPlanes2 : {1, 3})
        {
            ClImage cIn1, cIn2, cTable, cDirect;
            MakeRandom(cIn1, ClImage::eUInt8, 310, 300, 3, 1);
            MakeRandom(cIn2, ClImage::eUInt8, 310, 300, nPlanes2, 2);
            ClCounting cDelta;
            EXPECT_EQ(0, cDelta.ApplyParam(cIn1, cIn2, cTable, nOutType));
            EXPECT_EQ(65536, cDelta.m_nCalls);
            cDirect.NewWithType(cIn1, nOutType);
            const long nOutRow = cDirect.Stride() / (nOutType & 31);
            cDelta.m_nOverlapWidth = 1; // the size of the overlap chooses the path
            EXPECT_EQ(0, cDelta.DoProcess(cIn1, cIn2, cDirect, 310, 300, 3, nPlanes2, 0, cIn1.Stride(), 0,
                                          cIn2.Stride(), 0, nOutRow));
            EXPECT_EQ(65536, cDelta.m_nCalls);
            EXPECT_TRUE(SamePixels(cTable, cDirect));
        }
    }
}

TEST(IpDelta, OnlyTwoUnsigned8BitInputsTakeTheTable)
{
    for (const unsigned char nType1 : {ClImage::eUInt8, ClImage::eSInt8, ClImage::eUInt16})
    {
        for (const unsigned char nType2 : {ClImage::eUInt8, ClImage::eSInt8, ClImage::eUInt16})
        {
            ClImage cIn1, cIn2, cOut;
            MakeRandom(cIn1, nType1, 301, 300, 1, 1);
            MakeRandom(cIn2, nType2, 301, 300, 1, 1);
            ClCounting cDelta;
            EXPECT_EQ(0, cDelta.ApplyParam(cIn1, cIn2, cOut, 255));
            EXPECT_EQ(nType1 == ClImage::eUInt8 && nType2 == ClImage::eUInt8 ? 65536 : 0, cDelta.m_nCalls);
        }
    }
}

TEST(IpDelta, TheDistanceIsClampedToTheRangeOfTheOutput)
{
    using I = ClImage;
    EXPECT_EQ(127.0, (DeltaOf<unsigned char, unsigned char>(I::eUInt8, 255, I::eUInt8, 0, I::eSInt8)));
    EXPECT_EQ(255.0, (DeltaOf<signed char, signed char>(I::eSInt8, -128, I::eSInt8, 127, I::eUInt8)));
    EXPECT_EQ(255.0, (DeltaOf<short, short>(I::eSInt16, -32768, I::eSInt16, 32767, I::eUInt8)));
    EXPECT_EQ(65535.0, (DeltaOf<short, short>(I::eSInt16, -32768, I::eSInt16, 32767, I::eSInt32)));
    EXPECT_EQ(4294967295.0, (DeltaOf<int, int>(I::eSInt32, INT32_MIN, I::eSInt32, INT32_MAX, I::eUInt32)));
    EXPECT_EQ(2147483647.0, (DeltaOf<int, int>(I::eSInt32, INT32_MIN, I::eSInt32, INT32_MAX, I::eSInt32)));
    EXPECT_EQ(4294967295.0, (DeltaOf<unsigned int, unsigned int>(I::eUInt32, 0, I::eUInt32, UINT32_MAX, I::eUInt32)));
    EXPECT_EQ(1.0, (DeltaOf<unsigned char, unsigned char>(I::eUInt8, 255, I::eUInt8, 0, I::eFloat32)));
    EXPECT_EQ(0.375, (DeltaOf<float, double>(I::eFloat32, 0.5f, I::eDouble64, 0.125, I::eDouble64)));
    EXPECT_EQ(1.0, (DeltaOf<double, double>(I::eDouble64, 1e300, I::eDouble64, -1e300, I::eFloat32)));
    EXPECT_EQ(255.0, (DeltaOf<double, double>(I::eDouble64, 1e300, I::eDouble64, -1e300, I::eUInt8)));
    EXPECT_EQ(2.0, (DeltaOf<double, double>(I::eDouble64, 0.1, I::eDouble64, 3.0, I::eUInt8)));
    EXPECT_EQ(3.0, (DeltaOf<unsigned char, double>(I::eUInt8, 0, I::eDouble64, 3.9, I::eUInt8)));
}

TEST(IpDelta, WhatTheWorkingTypeCannotHoldWrapsAround)
{
    using I = ClImage;
    EXPECT_EQ(32666.0, (DeltaOf<signed char, short>(I::eSInt8, -128, I::eSInt16, 32742, I::eUInt16)));
    EXPECT_EQ(0.0, (DeltaOf<unsigned char, short>(I::eUInt8, 0, I::eSInt16, -32768, I::eUInt16)));
    EXPECT_EQ(-32768.0, (DeltaOf<unsigned char, short>(I::eUInt8, 0, I::eSInt16, -32768, I::eSInt16)));
    EXPECT_EQ(0.0, (DeltaOf<unsigned short, int>(I::eUInt16, 0, I::eSInt32, INT32_MIN, I::eUInt32)));
    EXPECT_EQ(4464.0, (DeltaOf<unsigned char, int>(I::eUInt8, 0, I::eSInt32, 70000, I::eUInt16)));
    EXPECT_EQ(0.0, (DeltaOf<int, double>(I::eSInt32, 0, I::eDouble64, 1e300, I::eUInt32)));
}

TEST(IpDelta, ADistanceThatIsNotANumberStaysOneAndIsZeroInIntegers)
{
    using I = ClImage;
    const double dNaN = std::numeric_limits<double>::quiet_NaN();
    const double dInfinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(DeltaOf<double, double>(I::eDouble64, dNaN, I::eDouble64, 1.0, I::eDouble64)));
    EXPECT_TRUE(std::isnan(DeltaOf<double, double>(I::eDouble64, dInfinity, I::eDouble64, dInfinity, I::eFloat32)));
    EXPECT_EQ(0.0, (DeltaOf<double, unsigned char>(I::eDouble64, dNaN, I::eUInt8, 9, I::eUInt16)));
    EXPECT_EQ(0.0, (DeltaOf<float, float>(I::eFloat32, static_cast<float>(dNaN), I::eFloat32, 1.0f, I::eSInt32)));
    EXPECT_EQ(1.0, (DeltaOf<double, double>(I::eDouble64, dInfinity, I::eDouble64, -dInfinity, I::eDouble64)));
    EXPECT_EQ(9.0, (DeltaOf<unsigned char, double>(I::eUInt8, 9, I::eDouble64, dNaN, I::eUInt8))); // as 0
}

TEST(IpDelta, TheBoundsMayStandInEitherOrderAndAreTruncated)
{
    ClImage cIn1(4, 1, 1, 0, 0), cIn2(4, 1, 1, 0, 0), cOut(4, 1, 1, 0, 0);
    const unsigned char anIn1[] = {10, 120, 250, 200};
    const unsigned char anExpected[] = {100, 120, 200, 200};
    for (int x = 0; x < 4; ++x)
    {
        SetSample(cIn1, x, 0, 0, anIn1[x]);
        SetSample<unsigned char>(cIn2, x, 0, 0, 0);
    }
    for (const bool bSwapped : {false, true})
    {
        cOut.m_dBlack = bSwapped ? 200.9 : 100.9;
        cOut.m_dWhite = bSwapped ? 100.9 : 200.9;
        EXPECT_EQ(0, ClIpDelta().DoProcess(cIn1, cIn2, cOut, 4, 1, 1, 1, 0, 4, 0, 4, 0, 4));
        for (int x = 0; x < 4; ++x)
        {
            EXPECT_EQ(anExpected[x], SampleAt<unsigned char>(cOut, x, 0));
        }
        EXPECT_EQ(100.9, ClIpDelta().GetValue(cIn1, cIn2, cOut, 7.0, 107.0));
        EXPECT_EQ(150.5, ClIpDelta().GetValue(cIn1, cIn2, cOut, 150.5, 0.0));
        EXPECT_EQ(200.9, ClIpDelta().GetValue(cIn1, cIn2, cOut, 0.0, 250.0));
    }
}

TEST(IpDelta, ATypeThatIsNoneOfTheEightIsAnInternalError)
{
    ClImage cIn(3, 2, 1, 0, 0), cOther(3, 2, 1, 0, 0), cNone;
    FillRandom(cIn, 1);
    cOther.m_eDataType = static_cast<ClImage::EDataType>(3);
    EXPECT_EQ(-101, ClIpDelta().DoProcess(cOther, cIn, cIn, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
    EXPECT_EQ(-101, ClIpDelta().DoProcess(cIn, cOther, cIn, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
    EXPECT_EQ(-101, ClIpDelta().DoProcess(cIn, cIn, cNone, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
}

TEST(IpDelta, CreateMakesAnotherOfItsClass)
{
    ClIpDelta cDelta;
    EXPECT_STREQ("ClIpDelta", cDelta.Name());
    std::unique_ptr<ClProcessorBase> pOther(cDelta.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpDelta*>(pOther.get()));
}
