// The bicubic mode of ClIpRescale and Fant's resampling.

#include "RDImageProcessing/IpRescale.hpp"

#include "RescaleDefinitions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace RescaleDefinitions;

namespace
{
/// A random picture with an edge, so that kernels overshoot.
void FillWithEdge(ClImage& cImage, int nWidth, int nHeight, unsigned int nSeed)
{
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 19685, 19685);
    FillRandom(cImage, nSeed);
    for (int y = 0; y < nHeight / 2; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            SetSample(cImage, x, y, 0, static_cast<unsigned char>(x < nWidth / 2 ? 0 : 255));
        }
    }
}

struct ClScaling
{
    int nWidth;
    int nHeight;
    int nNewWidth;
    int nNewHeight;
};
constexpr ClScaling aScalings[] = {{1, 1, 2, 2},  {1, 1, 1, 5},   {2, 2, 1, 1},   {7, 5, 14, 10},  {7, 5, 3, 2},
                                   {5, 7, 11, 3}, {9, 4, 4, 9},   {13, 1, 5, 3},  {1, 13, 3, 5},   {31, 29, 32, 30},
                                   {3, 3, 50, 1}, {40, 33, 7, 6}, {33, 18, 1, 1}, {16, 16, 15, 16}};

/// fn(input, expected output without samples, scaling) for all of them.
template <class Fn> void ForEachScaling(Fn&& fn)
{
    unsigned int nSeed = 1;
    for (const ClScaling& c : aScalings)
    {
        SCOPED_TRACE(std::to_string(c.nWidth) + " by " + std::to_string(c.nHeight) + " to " +
                     std::to_string(c.nNewWidth) + " by " + std::to_string(c.nNewHeight));
        ClImage cIn, cExpected;
        FillWithEdge(cIn, c.nWidth, c.nHeight, nSeed++);
        cExpected.NewWithType(ClImage::eUInt8, c.nNewWidth, c.nNewHeight, 1, c.nNewWidth * 19685 / c.nWidth,
                              c.nNewHeight * 19685 / c.nHeight);
        fn(cIn, cExpected, c);
    }
}

/// Keeps the labels that go to the timer.
class ClLabels : public ClProfileTimer
{
public:
    void TimerStart(const char* szFormat, ...) override { m_aStarts.push_back(szFormat != nullptr ? szFormat : ""); }
    void TimerStop(const char* szFormat, ...) override { m_aStops.push_back(szFormat); }

    std::vector<std::string> m_aStarts;
    std::vector<std::string> m_aStops;
};
} // namespace

TEST(IpRescaleModes, BiCubicWeighsFourByFourSamplesRadially)
{
    for (const double a : {-0.75, -0.5, 0.0, -3.0})
    {
        ForEachScaling(
            [a](ClImage& cIn, ClImage& cExpected, const ClScaling& c)
            {
                for (int y = 0; y < c.nNewHeight; ++y)
                {
                    for (int x = 0; x < c.nNewWidth; ++x)
                    {
                        const int n = BiCubicByDefinition(cIn, x, y, c.nNewWidth, c.nNewHeight, a);
                        SetSample(cExpected, x, y, 0, static_cast<unsigned char>(n));
                    }
                }
                ClIpRescale cRescale;
                cRescale.m_dConvParameter1 = a;
                ClImage cOut;
                EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, c.nNewWidth, c.nNewHeight, ClIpRescale::ModeBiCubic));
                EXPECT_TRUE(SamePixels(cExpected, cOut));
                EXPECT_TRUE(SameDescription(cExpected, cOut));
                EXPECT_EQ(a, cRescale.m_dConvParameter1);
                // The fast form weighs alike.
                cRescale.m_dConvParameter1 = -a;
                EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, c.nNewWidth, c.nNewHeight, ClIpRescale::ModeBiCubic));
                EXPECT_TRUE(SamePixels(cExpected, cOut));
            });
    }
}

TEST(IpRescaleModes, APositiveKernelParameterIsNegatedForGood)
{
    ClImage cIn, cFast, cExact;
    FillWithEdge(cIn, 20, 15, 1);
    ClIpRescale cRescale;
    cRescale.m_dConvParameter1 = 0.5;
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cFast, 33, 8, ClIpRescale::ModeBiCubic));
    EXPECT_EQ(-0.5, cRescale.m_dConvParameter1);
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cExact, 33, 8, ClIpRescale::ModeBiCubic));
    EXPECT_EQ(-0.5, cRescale.m_dConvParameter1);
    EXPECT_TRUE(SamePixels(cExact, cFast));
    EXPECT_EQ(-0.75, ClIpRescale().m_dConvParameter1);
}

TEST(IpRescaleModes, BiCubicTakesASampleOffTheEndOfARowFromTheNextRow)
{
    ClImage cIn(4, 2, 1, 19685, 19685), cPlain, cOut;
    for (int i = 0; i < 8; ++i)
    {
        SetSample<unsigned char>(cIn, i % 4, i / 4, 0, 100);
    }
    ClIpRescale cRescale;
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cPlain, 8, 2, ClIpRescale::ModeBiCubic));
    SetSample<unsigned char>(cIn, 0, 1, 0, 255); // three columns away from the last column of row 0
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 8, 2, ClIpRescale::ModeBiCubic));
    EXPECT_GT(At(cOut, 7, 0), At(cPlain, 7, 0) + 10);
    EXPECT_EQ(At(cOut, 4, 0), At(cPlain, 4, 0));
}

TEST(IpRescaleModes, AKernelParameterThatIsNotANumberGivesBlack)
{
    ClImage cIn, cOut;
    FillWithEdge(cIn, 8, 8, 1);
    for (const double a : {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()})
    {
        ClIpRescale cRescale;
        cRescale.m_dConvParameter1 = a;
        EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 5, 3, ClIpRescale::ModeBiCubic));
        EXPECT_EQ(0, At(cOut, 4, 2));
    }
}

TEST(IpRescaleModes, FantTakesTheMeanOfInterpolatedPieces)
{
    ForEachScaling(
        [](ClImage& cIn, ClImage& cExpected, const ClScaling& c)
        {
            FantByDefinition(cIn, c.nNewWidth, c.nNewHeight, cExpected);
            ClImage cOut;
            EXPECT_EQ(0, ClIpRescale().ApplyParamSize(cIn, cOut, c.nNewWidth, c.nNewHeight,
                                                      ClIpRescale::ModeBiLinearFantMar));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_TRUE(SameDescription(cExpected, cOut));
        });
}

TEST(IpRescaleModes, FantByHand)
{
    const struct
    {
        std::vector<unsigned char> aIn;
        std::vector<unsigned char> aOut;
    } aCases[] = {
        {{0, 100}, {0, 50, 100, 100}}, // enlarged: interpolated at the beginning of each pixel
        {{10, 20, 30, 40}, {15, 35}},  // whole samples
        {{0, 60, 120}, {20, 110}},     // (0 + 60 / 2) / 1.5; half a piece of 90, one of 120, over 1.5
        {{9}, {9, 9, 9}},
        {{200, 0, 0, 0, 1}, {40}}, // 201 / 5, truncated
    };
    for (const auto& cCase : aCases)
    {
        const int nIn = int(cCase.aIn.size());
        const int nOut = int(cCase.aOut.size());
        TpArrayStatic<unsigned char> aIn(2 * cCase.aIn.size()), aOut;
        std::copy(cCase.aIn.begin(), cCase.aIn.end(), aIn.m_pData);
        std::copy(cCase.aIn.rbegin(), cCase.aIn.rend(), aIn.m_pData + nIn);
        ClIpRescale cRescale;
        cRescale.BilinearResample(aIn, nIn, 2, nOut, aOut);
        ASSERT_EQ(2 * cCase.aOut.size(), aOut.Entries());
        EXPECT_TRUE(std::equal(cCase.aOut.begin(), cCase.aOut.end(), aOut.m_pData));
    }
}

TEST(IpRescaleModes, FantEnlargesBeyondItsFixedPoint)
{
    ClImage cIn(1, 1, 1, 1, 1), cOut;
    SetSample<unsigned char>(cIn, 0, 0, 0, 77);
    EXPECT_EQ(0, ClIpRescale().ApplyParamSize(cIn, cOut, 5000, 2, ClIpRescale::ModeBiLinearFantMar));
    EXPECT_EQ(5000, cOut.m_nWidth);
    for (int x = 0; x < 5000; ++x)
    {
        ASSERT_EQ(77, At(cOut, x, 1));
    }
}

TEST(IpRescaleModes, TheVariantInFloatingPointAgreesButForTheSteps)
{
    for (const ClScaling& c : aScalings)
    {
        SCOPED_TRACE(std::to_string(c.nWidth) + " to " + std::to_string(c.nNewWidth));
        ClImage cIn;
        FillRandom8(cIn, c.nWidth, c.nHeight, 3);
        ClIpRescale cRescale;
        cRescale.m_pInImage = &cIn;
        TpArrayStatic<unsigned char> aPlain, aFixed;
        cRescale.ConvertImageToPlain(aPlain);
        cRescale.BilinearResample(aPlain, c.nWidth, c.nHeight, c.nNewWidth, aFixed);
        TpArrayStatic<double> adIn(aPlain.Entries()), adOut;
        std::copy_n(aPlain.m_pData, aPlain.Entries(), adIn.m_pData);
        cRescale.BilinearResample2(adIn, c.nWidth, c.nHeight, c.nNewWidth, adOut);
        ASSERT_EQ(aFixed.Entries(), adOut.Entries());
        // Places in 4096 parts lag behind by less than one part for each pixel.
        const double dTolerance = 1.0 + 255.0 * c.nNewWidth / 4096.0;
        for (unsigned long i = 0; i < adOut.Entries(); ++i)
        {
            ASSERT_NEAR(adOut[i], aFixed[i] + 0.5, dTolerance);
        }
    }
    // Where the steps are exact: (0 + 60 / 2) / 1.5 and (90 / 2 + 121) / 1.5.
    TpArrayStatic<double> adIn(3), adOut;
    adIn[0] = 0.0;
    adIn[1] = 60.0;
    adIn[2] = 120.0;
    ClIpRescale().BilinearResample2(adIn, 3, 1, 2, adOut);
    EXPECT_DOUBLE_EQ(20.0, adOut[0]);
    EXPECT_DOUBLE_EQ(110.0, adOut[1]);
}

TEST(IpRescaleModes, PlainPicturesHaveNoGapsAndFlipIntoColumns)
{
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1), std::pair(5, 3), std::pair(67, 35), std::pair(2, 100)})
    {
        ClImage cIn, cOut;
        FillRandom8(cIn, nWidth, nHeight, 5);
        ClIpRescale cRescale;
        cRescale.m_pInImage = &cIn;
        cRescale.m_pOutImage = &cOut;
        cRescale.m_nActWidth = nHeight;
        cRescale.m_nActHeight = nWidth;
        cRescale.m_nActPelsX = 11;
        cRescale.m_nActPelsY = 12;
        TpArrayStatic<unsigned char> aPlain, aFlipped;
        cRescale.ConvertImageToPlain(aPlain);
        ASSERT_EQ(unsigned(nWidth * nHeight), aPlain.Entries());
        cRescale.FlipXY(aPlain, nWidth, nHeight, aFlipped);
        ASSERT_EQ(unsigned(nWidth * nHeight), aFlipped.Entries());
        cRescale.ConvertPlainToImage(aFlipped);
        EXPECT_EQ(11, cOut.m_nXRes);
        EXPECT_EQ(12, cOut.m_nYRes);
        for (int i = 0; i < nWidth * nHeight; ++i)
        {
            ASSERT_EQ(At(cIn, i % nWidth, i / nWidth), aPlain[unsigned(i)]);
            ASSERT_EQ(At(cIn, i % nWidth, i / nWidth), At(cOut, i / nWidth, i % nWidth));
        }
    }
}

TEST(IpRescaleModes, TheTimerIsToldOfEachResampling)
{
    ClLabels cLabels;
    ClImage cIn, cOut;
    FillWithEdge(cIn, 9, 7, 1);
    ClIpRescale cRescale;
    cRescale.m_pTimer = &cLabels;
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 5, 5, ClIpRescale::ModeBiLinearFantMar));
    EXPECT_EQ((std::vector<std::string>{"", "Resample", "Resample"}), cLabels.m_aStarts);
    EXPECT_EQ((std::vector<std::string>{"Resample", "Resample", "%s %s"}), cLabels.m_aStops);
    TpArrayStatic<double> adIn(1), adOut;
    adIn[0] = 1.0;
    cRescale.BilinearResample2(adIn, 1, 1, 2, adOut);
    EXPECT_EQ("Resample 2", cLabels.m_aStarts.back());
    EXPECT_EQ("Resample 2", cLabels.m_aStops.back());
}

TEST(IpRescaleModes, TheOutputMayBeTheInputAndKeepsItsSign)
{
    for (const auto eMode : {ClIpRescale::ModeBiCubic, ClIpRescale::ModeBiLinearFantMar})
    {
        ClImage cIn, cOut, cInPlace, cSigned;
        FillWithEdge(cIn, 21, 17, 4);
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cIn, cOut, 9842, 30000, eMode));
        EXPECT_EQ(11, cOut.m_nWidth); // 21 * 9842 / 19685 is 10.4995
        EXPECT_EQ(26, cOut.m_nHeight);
        EXPECT_EQ(9842, cOut.m_nXRes);
        EXPECT_EQ(30000, cOut.m_nYRes);
        cInPlace = cIn;
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cInPlace, cInPlace, 9842, 30000, eMode));
        EXPECT_TRUE(SamePixels(cOut, cInPlace));
        cSigned = cIn; // the same bytes
        cSigned.m_eDataType = ClImage::eSInt8;
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cSigned, cSigned, 9842, 30000, eMode));
        EXPECT_EQ(ClImage::eSInt8, cSigned.m_eDataType);
        cSigned.m_eDataType = ClImage::eUInt8;
        EXPECT_TRUE(SamePixels(cOut, cSigned));
    }
}

TEST(IpRescaleModes, PlanesAreResizedOneByOne)
{
    for (const auto eMode : {ClIpRescale::ModeBiCubic, ClIpRescale::ModeBiLinearFantMar})
    {
        for (const double a : {-0.75, 0.6})
        {
            ClImage cIn(9, 8, 3, 19685, 19685), cOut;
            FillRandom(cIn, 6);
            ClIpRescale cRescale;
            cRescale.m_dConvParameter1 = a;
            EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 13, 5, eMode));
            ASSERT_EQ(3, cOut.m_nPlanes);
            for (int i = 0; i < 3; ++i)
            {
                ClImage cPlane, cExpected, cActual;
                cIn.GetPlane(i, cPlane);
                cOut.GetPlane(i, cActual);
                ClIpRescale cOne;
                cOne.m_dConvParameter1 = a;
                EXPECT_EQ(0, cOne.ApplyParamSize(cPlane, cExpected, 13, 5, eMode));
                EXPECT_TRUE(SamePixels(cExpected, cActual));
            }
        }
    }
}

TEST(IpRescaleModes, NothingIsReadBeyondTheLastRow)
{
    for (const ClScaling& c : aScalings)
    {
        ClImage cWhole, cIn, cExpected, cOut;
        FillRandom8(cWhole, c.nWidth, c.nHeight, 9);
        const ClGuardedBytes cBytes(cWhole.Data(), std::size_t(cWhole.Stride() * (c.nHeight - 1) + c.nWidth));
        cIn.Attach(cBytes.Data(), cWhole);
        for (const auto eMode : {ClIpRescale::ModeBiCubic, ClIpRescale::ModeBiLinearFantMar})
        {
            EXPECT_EQ(0, ClIpRescale().ApplyParamSize(cWhole, cExpected, c.nNewWidth, c.nNewHeight, eMode));
            EXPECT_EQ(0, ClIpRescale().ApplyParamSize(cIn, cOut, c.nNewWidth, c.nNewHeight, eMode));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
        }
    }
}

TEST(IpRescaleModes, RowsThatCannotBeToldAreNoPixels)
{
    unsigned char anBytes[16] = {};
    ClImage cIn, cOut;
    for (int nMode = 0; nMode < 5; ++nMode)
    {
        const auto eMode = static_cast<ClIpRescale::eProcessingMode>(nMode);
        cIn.Attach(anBytes, ClImage::eUInt8, 4, 4, 0, 19685, 19685); // no plane
        EXPECT_EQ(-10, ClIpRescale().ApplyParamPels(cIn, cOut, 3937, 3937, eMode));
        cIn.Attach(anBytes, ClImage::eUInt8, std::numeric_limits<int>::max(), 4, 1, 19685, 19685);
        EXPECT_EQ(-10, ClIpRescale().ApplyParamPels(cIn, cOut, 3937, 3937, eMode));
    }
}
