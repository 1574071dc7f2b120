// The table of all pairs of values that ClIp2to1Base uses for two 8-bit inputs.

#include "RDImageProcessing/Ip2to1Base.hpp"

#include "MixOperator.hpp"
#include "TestTools.hpp"

#include <gmock/gmock.h>

#include <limits>

TEST(Ip2to1Base, TheTableGivesTheSameAsTheDirectPathForEveryOutputType)
{
    for (const unsigned char nOutType : aEveryType)
    {
        for (const int nPlanes2 : {1, 3})
        {
            ClImage cIn1, cIn2, cExpected, cOut;
            MakeRandom(cIn1, ClImage::eUInt8, 23, 31, 3, 1);
            MakeRandom(cIn2, ClImage::eUInt8, 25, 30, nPlanes2, 2);
            ClMix cMix = MixShifted({2, -3});
            CanvasByDefinition(cIn1, cIn2, {2, -3}, 0.0, nOutType, cExpected, Mixed);
            cMix.m_bUseLUT = true;
            EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, nOutType));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_EQ(65536, cMix.m_nCalls);
            EXPECT_THAT(cMix.m_apSeen, testing::ElementsAre(&cIn1, &cIn2, &cOut));
        }
    }
}

TEST(Ip2to1Base, TheTableIsForTwoUnsigned8BitInputsOnly)
{
    for (const unsigned char nType1 : aEveryType)
    {
        for (const unsigned char nType2 : aEveryType)
        {
            ClImage cIn1, cIn2, cOut;
            MakeRandom(cIn1, nType1, 3, 2, 1, 1);
            MakeRandom(cIn2, nType2, 3, 2, 1, 2);
            ClMix cMix;
            cMix.m_bUseLUT = true;
            EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, 255));
            EXPECT_EQ(nType1 == ClImage::eUInt8 && nType2 == ClImage::eUInt8 ? 65536 : 6, cMix.m_nCalls);
        }
    }
}

TEST(Ip2to1Base, TheTableStartsAtBlackAndIsReadFromZero)
{
    ClImage cIn1(4, 1, 1, 0, 0), cIn2(4, 1, 1, 0, 0), cOut;
    const unsigned char anIn1[] = {0, 5, 6, 90};
    const unsigned char anIn2[] = {0, 1, 2, 0};
    for (int x = 0; x < 4; ++x)
    {
        SetSample(cIn1, x, 0, 0, anIn1[x]);
        SetSample(cIn2, x, 0, 0, anIn2[x]);
    }
    cIn1.m_dBlack = 10.0;
    cIn1.m_dWhite = 15.0;
    cIn2.m_dBlack = 20.0;
    cIn2.m_dWhite = 21.0;
    ClMix cMix;
    cMix.m_bUseLUT = true;
    EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, ClImage::eDouble64));
    EXPECT_EQ(12, cMix.m_nCalls);
    EXPECT_EQ(ClMix::Value(10.0, 20.0), SampleAt<double>(cOut, 0, 0));
    EXPECT_EQ(ClMix::Value(15.0, 21.0), SampleAt<double>(cOut, 1, 0));
    EXPECT_EQ(0.0, SampleAt<double>(cOut, 2, 0));
    EXPECT_EQ(0.0, SampleAt<double>(cOut, 3, 0));
}

TEST(Ip2to1Base, RangesThatNoTableHoldsEndWithIt)
{
    constexpr double dInfinity = std::numeric_limits<double>::infinity();
    constexpr double dNaN = std::numeric_limits<double>::quiet_NaN();
    const struct
    {
        double dBlack;
        double dWhite;
        long nCalls; // with the range as that of both inputs
    } aCases[] = {{-1e9, 1e9, 65536L * 256 - 256L * (256 * 255 / 2)},
                  {255.0, 0.0, 0},
                  {dNaN, dNaN, 0},
                  {1e300, dInfinity, 1},
                  {-dInfinity, dInfinity, 0},
                  {0.5, 2.0, 4}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(cCase.dBlack);
        ClImage cIn1(4, 1, 1, 0, 0), cIn2(4, 1, 1, 0, 0), cOut;
        FillRandom(cIn1, 1);
        FillRandom(cIn2, 2);
        cIn1.m_dBlack = cIn2.m_dBlack = cCase.dBlack;
        cIn1.m_dWhite = cIn2.m_dWhite = cCase.dWhite;
        ClMix cMix;
        cMix.m_bUseLUT = true;
        EXPECT_EQ(0, cMix.ApplyParam(cIn1, cIn2, cOut, 255));
        EXPECT_EQ(cCase.nCalls, cMix.m_nCalls);
    }
}

TEST(Ip2to1Base, AnExceptionOfAValuePassesThrough)
{
    class ClFailing : public ClMix
    {
    public:
        double GetValue(ClImage&, ClImage&, ClImage&, double dValue1, double) override
        {
            if (dValue1 > 100.0)
            {
                throw ClExVelmarin(FPC_ERROR_PARAM_OUT_OF_RANGE, "Ip2to1BaseTest", __LINE__);
            }
            return 1.0;
        }
    };
    ClImage cIn(4, 1, 1, 0, 0), cOut;
    FillRandom(cIn, 1);
    SetSample<unsigned char>(cIn, 1, 0, 0, 200);
    for (const bool bUseLUT : {false, true})
    {
        ClFailing cFailing;
        cFailing.m_bUseLUT = bUseLUT;
        EXPECT_RAISES_CODE(cFailing.ApplyParam(cIn, cIn, cOut, 255), -35);
    }
}
