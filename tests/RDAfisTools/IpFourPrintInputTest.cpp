#include "FourPrintTestTools.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
/// Result of the check of an input of random pixels, or of equal ones.
long Validated(int nWidth, int nHeight, int nXRes, int nYRes, bool bUniform = false)
{
    ClImage cImage(nWidth, nHeight, 1, nXRes, nYRes);
    FillRandom(cImage, 1);
    for (int y = 0; bUniform && y < nHeight; ++y)
    {
        std::fill_n(Row<unsigned char>(cImage, y), nWidth, static_cast<unsigned char>(77));
    }
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cImage;
    return c.ValidateInput();
}

/// An input brought to the working resolution.
struct ClPrepared
{
    ClPrepared(int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes)
    {
        m_cInput.NewWithType(ClImage::eUInt8, nWidth, nHeight, nPlanes, nXRes, nYRes);
        FillRandom(m_cInput, 7);
        m_cBefore = m_cInput;
        m_c.m_pInImage = &m_cInput;
        m_nResult = m_c.PrepareInputImage(m_cGrey, m_cScaled);
        EXPECT_TRUE(SamePixels(m_cBefore, m_cInput));
    }

    bool IsAsItWas() const { return m_nResult == 0 && m_c.m_dScale == 1.0 && SamePixels(m_cInput, m_cScaled); }

    ClImage m_cInput;
    ClImage m_cBefore;
    ClImage m_cGrey;
    ClImage m_cScaled;
    ClIpFourPrintSegmentation m_c;
    long m_nResult;
};

/// The pictures and the threshold of the chain, operator by operator.
struct ClChain
{
    explicit ClChain(const ClImage& cIn)
    {
        ClImage cGamma;
        cGamma = cIn;
        EXPECT_EQ(0, ClIpGammaCorrection().ApplyParam(cGamma, 0.8));
        ClImage cSmooth;
        EXPECT_EQ(0, ClIpFilterMid().ApplyParam(cGamma, cSmooth, 5));
        EXPECT_EQ(0, ClIpFilterMidRotating().ApplyParam(cSmooth, m_cFiltered, 9));
        ClImage cSmoothAgain;
        EXPECT_EQ(0, ClIpFilterMid().ApplyParam(m_cFiltered, cSmoothAgain, 5));
        EXPECT_EQ(0, ClIpStretchRangeGlobalNoiseRemoving().ApplyParam(cSmoothAgain, m_cStretched, 0.02, 0.07));
        ClIpBinarizeAutoThreshold cBinarize;
        EXPECT_EQ(0, cBinarize.ApplyParam(m_cStretched, m_cBinary, ClIpBinarizeAutoThreshold::ModeFuzzyYager));
        m_nThreshold = cBinarize.m_nThreshold;
    }

    ClImage m_cFiltered;
    ClImage m_cStretched;
    ClImage m_cBinary;
    int m_nThreshold;
};

testing::AssertionResult BinarizesByTheChain(ClImage& cScaled)
{
    const ClChain cExpected(cScaled);
    ClImage cBinary;
    ClIpFourPrintSegmentation c;
    EXPECT_EQ(0, c.BinarizeImage(cScaled, cBinary));
    EXPECT_EQ(0, c.m_nDebugThreshold);
    const testing::AssertionResult cStretched = SamePixels(cExpected.m_cStretched, cScaled);
    return cStretched ? SamePixels(cExpected.m_cBinary, cBinary) : cStretched;
}
} // namespace

TEST(IpFourPrintInput, AMissingImageIsRefusedFirst)
{
    EXPECT_EQ(-10, ClIpFourPrintSegmentation().ValidateInput());
}

TEST(IpFourPrintInput, AResolutionBelow3900IsRefusedInEitherDirection)
{
    EXPECT_EQ(-13, Validated(200, 200, 3899, 3937));
    EXPECT_EQ(-13, Validated(200, 200, 3937, 3899));
    EXPECT_EQ(0, Validated(200, 200, 3900, 3900));
    EXPECT_EQ(-13, Validated(200, 200, 3899, 3899, true)) << "before any look at the pixels";
    EXPECT_EQ(-13, Validated(20, 20, 0, 0));
}

TEST(IpFourPrintInput, AUniformImageHasNoFinger)
{
    EXPECT_EQ(-15, Validated(200, 200, 3937, 3937, true));
    EXPECT_EQ(-15, Validated(100, 100, 3937, 3937, true)) << "before its size is looked at";
}

TEST(IpFourPrintInput, AnImageWithoutRowsHasNoFinger)
{
    EXPECT_EQ(-15, Validated(200, 0, 3937, 3937));
    EXPECT_EQ(-13, Validated(200, 0, 3000, 3937));
    EXPECT_EQ(-15, Validated(0, 200, 3937, 3937));
}

TEST(IpFourPrintInput, ASideBelow160PixelsIsRefused)
{
    EXPECT_EQ(0, Validated(161, 161, 3937, 3937));
    EXPECT_EQ(0, Validated(160, 160, 3937, 3937));
    EXPECT_EQ(-14, Validated(159, 400, 3937, 3937));
    EXPECT_EQ(-14, Validated(400, 159, 3937, 3937));
    EXPECT_EQ(-14, Validated(159, 400, 19685, 19685)) << "pixels of the input, whatever its resolution";
}

TEST(IpFourPrintInput, DebugCopiesNeedAllTheirImages)
{
    ClImage cImage(200, 200, 1, 3937, 3937);
    FillRandom(cImage, 3);
    ClImage acCopy[3];
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cImage;
    c.m_bDebugImages = true;
    EXPECT_EQ(-10, c.ValidateInput());
    c.m_pDebugScaled = &acCopy[0];
    c.m_pDebugFiltered = &acCopy[1];
    EXPECT_EQ(-10, c.ValidateInput());
    cImage.m_nXRes = 3000;
    EXPECT_EQ(-13, c.ValidateInput()) << "the resolution comes first";
    cImage.m_nXRes = 3937;
    c.m_pDebugStretched = &acCopy[2];
    EXPECT_EQ(0, c.ValidateInput());
}

TEST(IpFourPrintInput, OneByteThatDiffersMakesAnImageNotUniform)
{
    ClIpFourPrintSegmentation c;
    for (const int nWidth : {1, 3, 4, 5, 16, 33})
    {
        for (const int nPlanes : {1, 3})
        {
            ClImage cImage;
            cImage.NewWithType(ClImage::eUInt8, nWidth, 6, nPlanes, 0, 0);
            std::memset(cImage.Data(), 9, static_cast<std::size_t>(cImage.Stride()) * 6);
            EXPECT_TRUE(c.IsUni(cImage));
            for (int y = 0; y < 6; ++y)
            {
                for (const int i : {0, nWidth * nPlanes / 2, nWidth * nPlanes - 1})
                {
                    unsigned char& nByte = Row<unsigned char>(cImage, y)[i];
                    nByte = 8;
                    EXPECT_FALSE(c.IsUni(cImage)) << nWidth << ' ' << nPlanes << ' ' << y << ' ' << i;
                    nByte = 9;
                }
            }
        }
    }
}

TEST(IpFourPrintInput, ASingleRowMayDiffer)
{
    ClIpFourPrintSegmentation c;
    ClImage cImage(7, 1, 1, 0, 0);
    std::memset(cImage.Data(), 9, 7);
    EXPECT_TRUE(c.IsUni(cImage));
    cImage.Data()[4] = 8;
    EXPECT_FALSE(c.IsUni(cImage));
}

TEST(IpFourPrintInput, PaddingDoesNotCountInAUniformImage)
{
    ClImage cImage(5, 4, 1, 0, 0);
    FillRandom(cImage, 5);
    for (int y = 0; y < 4; ++y)
    {
        std::fill_n(Row<unsigned char>(cImage, y), 5, static_cast<unsigned char>(200));
    }
    EXPECT_TRUE(ClIpFourPrintSegmentation().IsUni(cImage));
}

TEST(IpFourPrintInput, OfWiderSamplesOnlyTheFirstBytesOfARowAreCompared)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eUInt16, 8, 2, 1, 0, 0);
    std::memset(cImage.Data(), 9, 32);
    cImage.Data()[16 + 8] = 1; // byte 8 of a row of 8 samples
    EXPECT_TRUE(ClIpFourPrintSegmentation().IsUni(cImage));
    cImage.Data()[16 + 7] = 1;
    EXPECT_FALSE(ClIpFourPrintSegmentation().IsUni(cImage));
}

TEST(IpFourPrintInput, AnInputNearTheWorkingResolutionIsTakenAsItIs)
{
    for (const int nPels : {3900, 3937, 4000, 4015})
    {
        EXPECT_TRUE(ClPrepared(203, 170, 1, nPels, nPels).IsAsItWas()) << nPels;
    }
    EXPECT_FALSE(ClPrepared(203, 170, 1, 4016, 4016).IsAsItWas());
}

TEST(IpFourPrintInput, AFinerInputIsReduced)
{
    for (const int nPels : {4016, 4100, 8000, 19685})
    {
        ClPrepared c(403, 350, 1, nPels, nPels);
        EXPECT_EQ(0, c.m_nResult);
        EXPECT_EQ(nPels * 0.000254, c.m_c.m_dScale);
        ClImage cExpected;
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(c.m_cInput, cExpected, 3937, 3937, ClIpRescale::ModeBiLinear));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cScaled));
        EXPECT_EQ(3937, c.m_cScaled.m_nXRes);
        EXPECT_EQ(3937, c.m_cScaled.m_nYRes);
        EXPECT_TRUE(SamePixels(c.m_cInput, c.m_cGrey));
    }
    EXPECT_NEAR(1.0414, ClPrepared(403, 350, 1, 4100, 4100).m_c.m_dScale, 1e-12);
}

TEST(IpFourPrintInput, FiveTimesTheResolutionIsReducedToAFifthOfTheSize)
{
    const ClPrepared c(1000, 1001, 1, 19685, 19685);
    EXPECT_NEAR(5.0, c.m_c.m_dScale, 0.0001);
    EXPECT_EQ(200, c.m_cScaled.m_nWidth);
    EXPECT_EQ(201, c.m_cScaled.m_nHeight);
}

TEST(IpFourPrintInput, OnlyTheHorizontalResolutionDecides)
{
    EXPECT_TRUE(ClPrepared(203, 170, 1, 4000, 19685).IsAsItWas());
    const ClPrepared c(203, 170, 1, 19685, 4000);
    EXPECT_EQ(19685 * 0.000254, c.m_c.m_dScale);
    EXPECT_EQ(41, c.m_cScaled.m_nWidth);
    EXPECT_EQ(168, c.m_cScaled.m_nHeight); // 170 * 3937 / 4000, rounded up
}

TEST(IpFourPrintInput, ColourIsFoldedToItsLuminance)
{
    for (const int nPels : {3937, 8000})
    {
        ClPrepared c(203, 170, 3, nPels, nPels);
        EXPECT_EQ(0, c.m_nResult);
        ClImage cGrey;
        EXPECT_EQ(0, ClIpRgbToGrey().ApplyParam(c.m_cInput, cGrey, ClIpRgbToGrey::Luminance));
        EXPECT_EQ(1, c.m_cGrey.m_nPlanes);
        EXPECT_TRUE(SamePixels(cGrey, c.m_cGrey));
        ClImage cExpected;
        cExpected = cGrey;
        if (nPels != 3937)
        {
            EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cGrey, cExpected, 3937, 3937, ClIpRescale::ModeBiLinear));
        }
        EXPECT_TRUE(SamePixels(cExpected, c.m_cScaled));
    }
}

TEST(IpFourPrintInput, WorkOnTheScaledImageLeavesTheInputAlone)
{
    ClPrepared c(203, 170, 1, 3937, 3937);
    std::memset(c.m_cScaled.Data(), 0, static_cast<std::size_t>(c.m_cScaled.Stride()) * 170);
    EXPECT_TRUE(SamePixels(c.m_cBefore, c.m_cInput));
    EXPECT_TRUE(SamePixels(c.m_cBefore, c.m_cGrey));
}

TEST(IpFourPrintInput, AFailingReductionIsTheResult)
{
    EXPECT_EQ(-13, ClPrepared(203, 170, 1, 0, 0).m_nResult);
    EXPECT_EQ(-13, ClPrepared(203, 170, 3, 8000, 0).m_nResult);
}

TEST(IpFourPrintInput, TheChainOfOperatorsMakesTheBinaryImage)
{
    for (const ClSlapScene& cScene : {SlapScenes::OneFinger(3937), SlapScenes::TouchingFingers(3937),
                                      SlapScenes::FourFingers(SlapScenes::eLeftHand, 3937)})
    {
        ClImage cScaled;
        MakeImage(ClSlapPicture(cScene), cScaled);
        EXPECT_TRUE(BinarizesByTheChain(cScaled));
    }
    ClImage cNoise;
    FillRandom8(cNoise, 181, 162, 4);
    EXPECT_TRUE(BinarizesByTheChain(cNoise));
    // All greys alike, so that the shares of noise at either end of the range are seen.
    ClImage cRamp(301, 165, 1, 3937, 3937);
    for (int y = 0; y < 165; ++y)
    {
        for (int x = 0; x < 301; ++x)
        {
            Row<unsigned char>(cRamp, y)[x] = static_cast<unsigned char>((x * 255 + y) / 301);
        }
    }
    EXPECT_TRUE(BinarizesByTheChain(cRamp));
}

TEST(IpFourPrintInput, ABinaryImageHoldsTheFingersInBlack)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(3937));
    ClImage cScaled;
    MakeImage(cPicture, cScaled);
    ClImage cBinary;
    EXPECT_EQ(0, ClIpFourPrintSegmentation().BinarizeImage(cScaled, cBinary));
    for (const ClSlapRect& cFinger : cPicture.m_aFingers)
    {
        EXPECT_EQ(0,
                  Row<unsigned char>(cBinary, (cFinger.top + cFinger.bottom) / 2)[(cFinger.left + cFinger.right) / 2]);
    }
    EXPECT_EQ(255, Row<unsigned char>(cBinary, 2)[2]);
    for (int y = 0; y < cBinary.m_nHeight; ++y)
    {
        const unsigned char* pRow = Row<unsigned char>(cBinary, y);
        EXPECT_TRUE(std::all_of(pRow, pRow + cBinary.m_nWidth, [](unsigned char n) { return n == 0 || n == 255; }));
    }
}

TEST(IpFourPrintInput, DebugCopiesAreMadeOnTheWay)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::OneFinger(8000)), cInput);
    ClImage cDebugScaled;
    ClImage cDebugFiltered;
    ClImage cDebugStretched;
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    c.m_bDebugImages = true;
    c.m_pDebugScaled = &cDebugScaled;
    c.m_pDebugFiltered = &cDebugFiltered;
    c.m_pDebugStretched = &cDebugStretched;
    ClImage cGrey;
    ClImage cScaled;
    ClImage cBinary;
    EXPECT_EQ(0, c.PrepareInputImage(cGrey, cScaled));
    EXPECT_TRUE(SamePixels(cScaled, cDebugScaled));
    const ClChain cExpected(cScaled);
    EXPECT_EQ(0, c.BinarizeImage(cScaled, cBinary));
    EXPECT_TRUE(SamePixels(cExpected.m_cFiltered, cDebugFiltered));
    EXPECT_TRUE(SamePixels(cExpected.m_cStretched, cDebugStretched));
    EXPECT_EQ(cExpected.m_nThreshold, c.m_nDebugThreshold);
    EXPECT_NE(0, c.m_nDebugThreshold);
}

TEST(IpFourPrintInput, ApplyingWithTwoImagesRunsTheProcessor)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::OneFinger(3937)), cInput);
    ClImage cScaled;
    cScaled = cInput;
    const ClChain cExpected(cScaled);
    ClImage cOut;
    ClIpFourPrintSegmentation c;
    EXPECT_EQ(0, c.ApplyParam(cInput, cOut));
    EXPECT_EQ(&cInput, c.m_pInImage);
    EXPECT_EQ(&cOut, c.m_pOutImage);
    EXPECT_TRUE(SamePixels(cExpected.m_cBinary, cOut));
    cInput.m_nXRes = 3000;
    EXPECT_EQ(-13, ClIpFourPrintSegmentation().ApplyParam(cInput, cOut));
}
