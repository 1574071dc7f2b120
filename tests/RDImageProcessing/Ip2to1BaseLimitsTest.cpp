// Images that ClIp2to1Base refuses, and the bounds of the others.

#include "RDImageProcessing/Ip2to1Base.hpp"

#include "MixOperator.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <climits>
#include <string>

namespace
{
constexpr char szNoMemory[] = "Memory allocation failed or given mem-block too small.\nMemory allocation failed";
} // namespace

TEST(Ip2to1Base, ImagesThatAreMissingOrHaveNoPixelsAreMissingParameters)
{
    ClImage cIn(3, 2, 1, 0, 0), cEmpty, cOut;
    FillRandom(cIn, 1);
    ClMix cMix;
    EXPECT_FALSE(cMix.CanApply());
    EXPECT_EQ(-37, cMix.Apply());
    cMix.m_pInImage1 = &cIn;
    cMix.m_pInImage2 = &cIn;
    EXPECT_FALSE(cMix.CanApply());
    cMix.m_pOutImage = &cOut;
    EXPECT_TRUE(cMix.CanApply());
    cMix.m_pInImage1 = nullptr;
    EXPECT_EQ(-37, cMix.Apply());
    cMix.m_pInImage1 = &cEmpty;
    EXPECT_FALSE(cMix.CanApply());
    EXPECT_EQ(-37, cMix.Apply());
    EXPECT_EQ(-37, ClMix().ApplyParam(cIn, cEmpty, cOut, 255));
    EXPECT_EQ(-37, ClMix().ApplyParam(cEmpty, cIn, cOut, 255));
}

TEST(Ip2to1Base, ATypeThatIsNoneOfTheEightIsAnInternalError)
{
    ClImage cIn(3, 2, 1, 0, 0), cOther(3, 2, 1, 0, 0), cOut;
    FillRandom(cIn, 1);
    EXPECT_EQ(-101, ClMix().ApplyParam(cIn, cIn, cOut, 3));
    EXPECT_EQ(-101, ClMix().ApplyParam(cIn, cIn, cOut, 0));
    EXPECT_EQ(-101, ClMix().ApplyParam(cIn, cIn, cOut, 254));
    for (const int nType : {0, 3, 255})
    {
        cOther.m_eDataType = static_cast<ClImage::EDataType>(nType);
        EXPECT_EQ(-101, ClMix().ApplyParam(cIn, cOther, cOut, 255));
        EXPECT_EQ(-101, ClMix().ApplyParam(cOther, cIn, cOut, ClImage::eUInt8));
        EXPECT_EQ(-101, ClMix().DoProcess(cOther, cIn, cOut, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
        EXPECT_EQ(-101, ClMix().DoProcess(cIn, cOther, cOut, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
    }
    ClImage cNone;
    EXPECT_EQ(-101, ClMix().DoProcess(cIn, cIn, cNone, 1, 1, 1, 1, 0, 1, 0, 1, 0, 1));
}

TEST(Ip2to1Base, OffsetsThatNoCanvasHoldsAreRefused)
{
    ClImage cIn1(3, 2, 1, 0, 0), cIn2(4, 4, 1, 0, 0);
    FillRandom(cIn1, 1);
    FillRandom(cIn2, 2);
    for (const int nOffset : {INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1})
    {
        SCOPED_TRACE(nOffset);
        ClImage cOut;
        EXPECT_RAISES(MixShifted({nOffset, 0}).ApplyParam(cIn1, cIn2, cOut, 255), ClExBadAlloc, -102, szNoMemory);
        EXPECT_EQ(nullptr, cOut.Data());
        EXPECT_RAISES(MixShifted({0, nOffset}).ApplyParam(cIn1, cIn2, cOut, 255), ClExBadAlloc, -102, szNoMemory);
        EXPECT_RAISES_CODE(MixShifted({nOffset, nOffset}).ApplyParam(cIn1, cIn1, cIn1, 255), -102);
        EXPECT_NE(nullptr, cIn1.Data());
    }
    ClImage cOut;
    // 32 bits hold the width, but not the bytes of a row.
    EXPECT_RAISES_CODE(MixShifted({1 << 30, 0}).ApplyParam(cIn1, cIn2, cOut, ClImage::eDouble64), -102);
}

TEST(Ip2to1Base, InconsistentGeometryReadsNothing)
{
    const ClGuardedBytes cBytes(4);
    const auto attach = [&](ClImage& cImage, unsigned char nType, int nWidth, int nHeight, int nPlanes)
    { cImage.Attach(cBytes.Data() + cBytes.Size(), nType, nWidth, nHeight, nPlanes, 0, 0); };
    ClImage cIn, cBad, cOut;
    MakeRandom(cIn, ClImage::eUInt8, 3, 2, 1, 1);
    const struct
    {
        int nWidth;
        int nHeight;
        int nPlanes;
    } aSizes[] = {{0, 2, 1},  {3, 0, 1},  {3, 2, 0},   {-3, 2, 1},
                  {3, -2, 1}, {3, 2, -1}, {-3, 2, -1}, {INT_MIN, INT_MIN, INT_MIN}};
    for (const auto& c : aSizes)
    {
        SCOPED_TRACE(std::to_string(c.nWidth) + ", " + std::to_string(c.nHeight) + ", " + std::to_string(c.nPlanes));
        attach(cBad, ClImage::eUInt8, c.nWidth, c.nHeight, c.nPlanes);
        EXPECT_EQ(0, MixShifted({0, 0}).ApplyParam(cIn, cBad, cOut, 255));
        EXPECT_TRUE(SamePixels(cIn, cOut));
        ClMix cMix = MixShifted({0, 0});
        try
        {
            cMix.ApplyParam(cBad, cIn, cOut, 255);
        }
        catch (const ClException& cRaised)
        {
            EXPECT_TRUE(cRaised.Number() == -101 || cRaised.Number() == -102) << cRaised.Number();
        }
        EXPECT_EQ(0, cMix.m_nCalls);
        try
        {
            cMix.ApplyParam(cBad, cBad, cOut, 255);
        }
        catch (const ClException& cRaised)
        {
            EXPECT_TRUE(cRaised.Number() == -101 || cRaised.Number() == -102) << cRaised.Number();
        }
        EXPECT_EQ(0, cMix.m_nCalls);
    }
    // Rows whose length only wraps into 32 bits.
    attach(cBad, ClImage::eDouble64, 1 << 29, 2, 1);
    EXPECT_RAISES_CODE(MixShifted({0, 0}).ApplyParam(cIn, cBad, cOut, 255), -102);
    EXPECT_RAISES_CODE(MixShifted({0, 0}).ApplyParam(cBad, cIn, cOut, 255), -102);
    attach(cBad, ClImage::eUInt8, 1 << 20, 2, 1 << 20);
    EXPECT_RAISES_CODE(MixShifted({0, 0}).ApplyParam(cIn, cBad, cOut, 255), -102);
    attach(cBad, ClImage::eUInt8, -5, 2, 1);
    EXPECT_RAISES(MixShifted({0, 0}).ApplyParam(cBad, cIn, cOut, 255), ClException, -101,
                  "Internal error.\nImage area must be positive");
}

TEST(Ip2to1Base, PaddingIsNeitherReadNorWritten)
{
    unsigned char anIn[16], anOut[16];
    std::fill(std::begin(anIn), std::end(anIn), static_cast<unsigned char>(7));
    std::fill(std::begin(anOut), std::end(anOut), static_cast<unsigned char>(99));
    const ClGuardedBytes cBytes(anIn, 15); // the last row without its padding
    ClImage cIn, cOut;
    cIn.Attach(cBytes.Data(), ClImage::eUInt8, 3, 4, 1, 0, 0);
    cOut.Attach(anOut, ClImage::eUInt8, 3, 4, 1, 0, 0);
    ClMix cMix;
    EXPECT_EQ(0, cMix.ApplyParam(cIn, cIn, cOut, 255));
    EXPECT_EQ(anOut, cOut.Data());
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(i % 4 == 3 ? 99 : static_cast<int>(static_cast<unsigned char>(static_cast<int>(-14.5))), anOut[i]);
    }
}
