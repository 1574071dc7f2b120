#include "RDImageProcessing/Histogram.hpp"

#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <utility>
#include <vector>

namespace
{
using Pixels_t = std::vector<int>;

ClHistogram Of(std::initializer_list<std::pair<int, unsigned int>> aCounts)
{
    ClHistogram cHistogram;
    for (const auto& [nBin, nCount] : aCounts)
    {
        cHistogram.m_anBins[nBin] = nCount;
    }
    return cHistogram;
}

/// Every bin full: the sums need 40 and 48 bits.
ClHistogram Fullest()
{
    ClHistogram cHistogram;
    std::fill_n(cHistogram.m_anBins, 256, UINT_MAX);
    return cHistogram;
}

/// Random pixels, sorted, of a random part of the grey values, and their histogram.
Pixels_t RandomPixels(unsigned int nSeed, ClHistogram& cHistogram)
{
    ClTestRandom cRandom(nSeed);
    const int nLowest = cRandom.Below(200);
    const int nGreys = 1 + cRandom.Below(256 - nLowest);
    Pixels_t anPixels(static_cast<std::size_t>(1 + cRandom.Below(400)));
    cHistogram.Reset();
    for (int& nPixel : anPixels)
    {
        nPixel = nLowest + cRandom.Below(nGreys);
        ++cHistogram.m_anBins[nPixel];
    }
    std::sort(anPixels.begin(), anPixels.end());
    return anPixels;
}

double Mean(const Pixels_t& anPixels)
{
    double dSum = 0.0;
    for (const int nPixel : anPixels)
    {
        dSum += nPixel;
    }
    return dSum / static_cast<double>(anPixels.size());
}

Pixels_t Between(const Pixels_t& anPixels, int nFirst, int nLast)
{
    Pixels_t anSome;
    for (const int nPixel : anPixels)
    {
        if (nPixel >= nFirst && nPixel <= nLast)
        {
            anSome.push_back(nPixel);
        }
    }
    return anSome;
}

TEST(HistogramStatistics, AverageIsTheMeanOfThePixelsThatAreNotCut)
{
    const ClHistogram cHistogram = Of({{10, 2}, {20, 1}, {30, 94}, {240, 3}});
    EXPECT_DOUBLE_EQ(35.8, cHistogram.GetAverage(0.0, 0.0)); // 20 + 20 + 2820 + 720, by 100
    EXPECT_DOUBLE_EQ(35.8, cHistogram.GetAverage(1.0, 7.0)) << "a share of 1 or more cuts nothing";
    EXPECT_DOUBLE_EQ(35.8, cHistogram.GetAverage(std::nan(""), -1.0));
    EXPECT_DOUBLE_EQ(3560.0 / 98, cHistogram.GetAverage(0.02, 0.0));
    EXPECT_DOUBLE_EQ(2840.0 / 95, cHistogram.GetAverage(0.02, 0.03));
    EXPECT_DOUBLE_EQ(30.0, cHistogram.GetAverage(0.5, 0.5));
    EXPECT_EQ(0.0, cHistogram.GetAverage(0.98, 0.98)) << "nothing is left between the cuts";
}

TEST(HistogramStatistics, MeasuresOfASmallHistogramAreThoseOfPencilAndPaper)
{
    // Eight pixels with a mean of 5: deviations of 3 1 1 1 0 0 2 4, squares that sum to 32.
    const ClHistogram cHistogram = Of({{2, 1}, {4, 3}, {5, 2}, {7, 1}, {9, 1}});
    EXPECT_DOUBLE_EQ(5.0, cHistogram.GetAverage(0.0, 0.0));
    EXPECT_DOUBLE_EQ(5.5, cHistogram.GetGreyMid());
    EXPECT_EQ(5, cHistogram.GetColorCount());
    EXPECT_DOUBLE_EQ((1 + 9 + 4 + 1 + 1) / 64.0, cHistogram.GetUniformity());
    EXPECT_DOUBLE_EQ(1.5, cHistogram.GetAverageDeviation());
    EXPECT_DOUBLE_EQ(2.0, cHistogram.GetStdDeviation());
    EXPECT_DOUBLE_EQ(5.0, cHistogram.GetCentreOfMass(0, 255));
    EXPECT_DOUBLE_EQ(22.0 / 5, cHistogram.GetCentreOfMass(3, 6));
    EXPECT_EQ(4, cHistogram.GetMid(0, 255)) << "four of the eight lie at or below 4";
    EXPECT_EQ(5, cHistogram.GetMid(5, 9));
    EXPECT_EQ(7, cHistogram.GetMid(6, 9));
    EXPECT_DOUBLE_EQ(10.0 / 3, cHistogram.GetDarkestAvrg(3)); // 2, 4, 4
    EXPECT_DOUBLE_EQ(7.0, cHistogram.GetBrightestAvrg(3));    // 9, 7, 5
}

TEST(HistogramStatistics, EmptyHistogramHasNeitherMeanNorSpread)
{
    const ClHistogram cHistogram;
    EXPECT_EQ(0.0, cHistogram.GetAverage(0.0, 0.0));
    EXPECT_EQ(127.5, cHistogram.GetGreyMid());
    EXPECT_EQ(0, cHistogram.GetColorCount());
    EXPECT_EQ(0.0, cHistogram.GetUniformity());
    EXPECT_EQ(0.0, cHistogram.GetAverageDeviation());
    EXPECT_EQ(0.0, cHistogram.GetStdDeviation());
    EXPECT_EQ(15.5, cHistogram.GetCentreOfMass(11, 20));
    EXPECT_EQ(15, cHistogram.GetMid(11, 20));
    EXPECT_EQ(11, cHistogram.GetLocalMin(11, 20));
    EXPECT_EQ(11, cHistogram.GetLocalMax(11, 20));
    EXPECT_EQ(77, cHistogram.Climb(77));
    EXPECT_EQ(77, cHistogram.Descend(77));
    EXPECT_FALSE(cHistogram.IsUnimodal());
    EXPECT_EQ(0.0, cHistogram.GetDarkestAvrg(0));
    EXPECT_EQ(0.0, cHistogram.GetBrightestAvrg(0));
    double dDark = -1.0, dBright = -1.0;
    EXPECT_EQ(127, cHistogram.TwoMeansClustering());
    EXPECT_EQ(15, cHistogram.TwoMeansClustering(11, 20, dDark, dBright));
    EXPECT_EQ(15.0, dDark);
    EXPECT_EQ(15.0, dBright);
}

TEST(HistogramStatistics, OneColourIsItsOwnMeanAndHasNoSpread)
{
    for (const int nColour : {0, 100, 255})
    {
        const ClHistogram cHistogram = Of({{nColour, 4000000000u}});
        EXPECT_EQ(nColour, cHistogram.GetAverage(0.0, 0.0));
        EXPECT_EQ(nColour, cHistogram.GetGreyMid());
        EXPECT_EQ(1, cHistogram.GetColorCount());
        EXPECT_EQ(1.0, cHistogram.GetUniformity());
        EXPECT_EQ(0.0, cHistogram.GetAverageDeviation());
        EXPECT_EQ(0.0, cHistogram.GetStdDeviation());
        EXPECT_EQ(nColour, cHistogram.GetCentreOfMass(0, 255));
        EXPECT_EQ(nColour, cHistogram.GetMid(0, 255));
        EXPECT_EQ(nColour, cHistogram.GetLocalMax(0, 255));
        EXPECT_EQ(nColour, cHistogram.Climb(50));
        EXPECT_EQ(nColour == 0 ? 1 : nColour - 1, cHistogram.Descend(static_cast<unsigned char>(nColour)));
        EXPECT_TRUE(cHistogram.IsUnimodal());
        EXPECT_EQ(nColour, cHistogram.GetDarkestAvrg(4000000000u));
        EXPECT_EQ(nColour, cHistogram.GetBrightestAvrg(1));
        double dDark = -1.0, dBright = -1.0;
        EXPECT_EQ(nColour, cHistogram.TwoMeansClustering(dDark, dBright));
        EXPECT_EQ(nColour, dDark);
        EXPECT_EQ(nColour, dBright);
    }
}

TEST(HistogramStatistics, SumsAreTakenInMoreThan32Bits)
{
    const ClHistogram cHistogram = Fullest();
    EXPECT_DOUBLE_EQ(127.5, cHistogram.GetAverage(0.0, 0.0));
    EXPECT_EQ(256, cHistogram.GetColorCount());
    EXPECT_DOUBLE_EQ(1.0 / 256, cHistogram.GetUniformity());
    EXPECT_DOUBLE_EQ(64.0, cHistogram.GetAverageDeviation());
    EXPECT_NEAR(std::sqrt((256.0 * 256.0 - 1) / 12), cHistogram.GetStdDeviation(), 1e-9);
    EXPECT_DOUBLE_EQ(127.5, cHistogram.GetCentreOfMass(0, 255));
    EXPECT_EQ(127, cHistogram.GetMid(0, 255));
    EXPECT_TRUE(cHistogram.IsUnimodal());
    EXPECT_EQ(0.0, cHistogram.GetDarkestAvrg(UINT_MAX));
    EXPECT_EQ(255.0, cHistogram.GetBrightestAvrg(UINT_MAX));
    double dDark = -1.0, dBright = -1.0;
    EXPECT_EQ(128, cHistogram.TwoMeansClustering(dDark, dBright));
    EXPECT_DOUBLE_EQ(63.5, dDark);
    EXPECT_DOUBLE_EQ(191.5, dBright);
    for (const int nWidth : {3, 256, INT_MAX})
    {
        ClHistogram cSmooth = Fullest();
        cSmooth.LowPass(nWidth);
        EXPECT_EQ(UINT_MAX, cSmooth.MinCount());
    }
}

TEST(HistogramStatistics, MeasuresOfRandomPixelsAgreeWithPlainLoopsOverThem)
{
    ClHistogram cHistogram;
    for (unsigned int nSeed = 1; nSeed <= 50; ++nSeed)
    {
        SCOPED_TRACE(nSeed);
        const Pixels_t anPixels = RandomPixels(nSeed, cHistogram);
        const double dMean = Mean(anPixels);
        double dDistances = 0.0, dSquares = 0.0, dEqualPairs = 0.0;
        for (const int nPixel : anPixels)
        {
            dDistances += std::fabs(nPixel - dMean);
            dSquares += (nPixel - dMean) * (nPixel - dMean);
            dEqualPairs += static_cast<double>(std::count(anPixels.begin(), anPixels.end(), nPixel));
        }
        const auto nPixels = static_cast<double>(anPixels.size());
        Pixels_t anColours = anPixels;
        anColours.erase(std::unique(anColours.begin(), anColours.end()), anColours.end());
        EXPECT_NEAR(dMean, cHistogram.GetAverage(0.0, 0.0), 1e-9);
        EXPECT_EQ((anPixels.front() + anPixels.back()) * 0.5, cHistogram.GetGreyMid());
        EXPECT_EQ(static_cast<int>(anColours.size()), cHistogram.GetColorCount());
        EXPECT_NEAR(dEqualPairs / (nPixels * nPixels), cHistogram.GetUniformity(), 1e-9);
        EXPECT_NEAR(dDistances / nPixels, cHistogram.GetAverageDeviation(), 1e-9);
        EXPECT_NEAR(std::sqrt(dSquares / nPixels), cHistogram.GetStdDeviation(), 1e-9);
        const unsigned int nSome = 1 + nSeed % static_cast<unsigned int>(anPixels.size());
        EXPECT_NEAR(Mean(Pixels_t(anPixels.begin(), anPixels.begin() + nSome)), cHistogram.GetDarkestAvrg(nSome), 1e-9);
        EXPECT_NEAR(Mean(Pixels_t(anPixels.end() - nSome, anPixels.end())), cHistogram.GetBrightestAvrg(nSome), 1e-9);
    }
}

TEST(HistogramStatistics, PlacesOfRandomPixelsAgreeWithPlainLoopsOverThem)
{
    ClHistogram cHistogram;
    for (unsigned int nSeed = 1; nSeed <= 50; ++nSeed)
    {
        SCOPED_TRACE(nSeed);
        const Pixels_t anPixels = RandomPixels(nSeed, cHistogram);
        const int nPos1 = static_cast<int>(nSeed) * 3;
        const int nPos2 = std::min(255, nPos1 + 60);
        const auto n1 = static_cast<unsigned char>(nPos1), n2 = static_cast<unsigned char>(nPos2);
        const Pixels_t anSome = Between(anPixels, nPos1, nPos2);
        if (!anSome.empty())
        {
            EXPECT_NEAR(Mean(anSome), cHistogram.GetCentreOfMass(n1, n2), 1e-9);
            EXPECT_EQ(anSome[(anSome.size() - 1) / 2], cHistogram.GetMid(n1, n2));
        }
        int nMin = nPos1, nMax = nPos1;
        for (int n = nPos1; n <= nPos2; ++n)
        {
            nMin = cHistogram.m_anBins[n] < cHistogram.m_anBins[nMin] ? n : nMin;
            nMax = cHistogram.m_anBins[n] > cHistogram.m_anBins[nMax] ? n : nMax;
        }
        EXPECT_EQ(nMin, cHistogram.GetLocalMin(n1, n2));
        EXPECT_EQ(nMax, cHistogram.GetLocalMax(n1, n2));
    }
}

TEST(HistogramStatistics, PositionsOfOneBinAreAllowedAndBothEndsCount)
{
    const ClHistogram cHistogram = Of({{0, 7}, {254, 3}, {255, 1}});
    EXPECT_EQ(255.0, cHistogram.GetCentreOfMass(255, 255));
    EXPECT_EQ(0.0, cHistogram.GetCentreOfMass(0, 0));
    EXPECT_EQ(254.25, cHistogram.GetCentreOfMass(1, 255));
    EXPECT_EQ(255, cHistogram.GetMid(255, 255));
    EXPECT_EQ(254, cHistogram.GetLocalMax(1, 255));
    EXPECT_EQ(255, cHistogram.GetLocalMin(254, 255));
    EXPECT_EQ(1, cHistogram.GetLocalMin(0, 255)) << "the first of equal counts";
    double dDark = -1.0, dBright = -1.0;
    EXPECT_EQ(254, cHistogram.TwoMeansClustering(254, 254, dDark, dBright));
    EXPECT_EQ(255, cHistogram.TwoMeansClustering(1, 255, dDark, dBright));
    EXPECT_EQ(254.0, dDark);
    EXPECT_EQ(255.0, dBright);
}

TEST(HistogramStatistics, ReversedPositionsAndTooManyPixelsAreRefused)
{
    const ClHistogram cHistogram = Of({{3, 2}, {9, 5}});
    double dDark, dBright;
#define EXPECT_REVERSED(statement, name)                                                                               \
    EXPECT_RAISES(statement, ClException, -101,                                                                        \
                  "Internal error.\nClHistogram::" name "(BYTE nPos1, BYTE nPos2): nPos2 >= nPos1 must given.")
    EXPECT_REVERSED(cHistogram.GetCentreOfMass(4, 3), "GetCentreOfMass");
    EXPECT_REVERSED(cHistogram.GetMid(255, 0), "GetMid");
    EXPECT_REVERSED(cHistogram.GetLocalMin(9, 8), "GetLocalMin");
    EXPECT_REVERSED(cHistogram.GetLocalMax(1, 0), "GetLocalMax");
    EXPECT_REVERSED(cHistogram.TwoMeansClustering(1, 0, dDark, dBright), "TwoMeansClustering");
#undef EXPECT_REVERSED
    const char szTooMany[] = "Internal error.\nAmount of pixels too high.";
    EXPECT_EQ(51.0 / 7, cHistogram.GetDarkestAvrg(7));
    EXPECT_RAISES(cHistogram.GetDarkestAvrg(8), ClException, -101, szTooMany);
    EXPECT_RAISES(cHistogram.GetBrightestAvrg(UINT_MAX), ClException, -101, szTooMany);
    EXPECT_RAISES(ClHistogram().GetBrightestAvrg(1), ClException, -101, szTooMany);
    EXPECT_RAISES_CODE(cHistogram.CalcFirstDerivation(1, nullptr), -101);
}

TEST(HistogramStatistics, FailuresNameTheModuleThatRaisesThem)
{
    try
    {
        ClHistogram().GetMid(2, 1);
        FAIL();
    }
    catch (const ClException& cRaised)
    {
        EXPECT_STREQ("RDImageProcessing/Histogram", cRaised.m_szFile);
    }
}

TEST(HistogramStatistics, ClimbEndsOnTheHillAndDescendInTheValleyOfItsStart)
{
    // Hills at 12 and 20, a level step from 14 to 15, a valley at 17.
    const ClHistogram cHistogram = Of(
        {{10, 1}, {11, 4}, {12, 9}, {13, 7}, {14, 5}, {15, 5}, {16, 3}, {17, 2}, {18, 6}, {19, 8}, {20, 9}, {21, 1}});
    for (const int nStart : {0, 9, 10, 12, 13, 14, 15, 16})
    {
        EXPECT_EQ(12, cHistogram.Climb(static_cast<unsigned char>(nStart))) << nStart;
    }
    for (const int nStart : {17, 18, 20, 21, 22, 255})
    {
        EXPECT_EQ(20, cHistogram.Climb(static_cast<unsigned char>(nStart))) << nStart;
    }
    for (const int nStart : {13, 14, 15, 16, 17, 18, 19})
    {
        EXPECT_EQ(17, cHistogram.Descend(static_cast<unsigned char>(nStart))) << nStart;
    }
    EXPECT_EQ(9, cHistogram.Descend(11));
    EXPECT_EQ(22, cHistogram.Descend(20)) << "the deeper of both neighbours";
    EXPECT_EQ(9, cHistogram.Descend(9));
    EXPECT_EQ(2, Of({{2, 5}, {4, 5}}).Climb(3)) << "of equal neighbours the lower one";
    EXPECT_EQ(0, Of({{0, 5}, {1, 5}, {2, 4}}).Climb(0)) << "a flat top ends the walk where it is met";
    EXPECT_EQ(1, Of({{0, 5}, {1, 5}, {2, 4}}).Climb(2));
    EXPECT_EQ(255, Of({{254, 5}, {255, 6}}).Climb(200));
}

TEST(HistogramStatistics, WalksOfRandomHistogramsEndWhereNoNeighbourIsBetter)
{
    ClHistogram cHistogram;
    for (unsigned int nSeed = 1; nSeed <= 20; ++nSeed)
    {
        RandomPixels(nSeed, cHistogram);
        for (int nStart = 0; nStart < 256; ++nStart)
        {
            const int nTop = cHistogram.Climb(static_cast<unsigned char>(nStart));
            const int nBottom = cHistogram.Descend(static_cast<unsigned char>(nStart));
            EXPECT_GE(cHistogram.m_anBins[nTop], cHistogram.m_anBins[nStart]);
            EXPECT_LE(cHistogram.m_anBins[nBottom], cHistogram.m_anBins[nStart]);
            for (const int nStep : {-1, 1})
            {
                const int nBesideTop = std::clamp(nTop + nStep, 0, 255);
                const int nBesideBottom = std::clamp(nBottom + nStep, 0, 255);
                EXPECT_GE(cHistogram.m_anBins[nTop], cHistogram.m_anBins[nBesideTop]);
                EXPECT_LE(cHistogram.m_anBins[nBottom], cHistogram.m_anBins[nBesideBottom]);
            }
        }
    }
}

TEST(HistogramStatistics, UnimodalMeansOnePeakWhateverIsLevel)
{
    EXPECT_TRUE(Of({{10, 1}, {11, 4}, {12, 4}, {13, 9}, {14, 9}, {15, 2}, {16, 2}}).IsUnimodal());
    EXPECT_TRUE(Of({{0, 9}, {1, 3}}).IsUnimodal()) << "falling from the first bin";
    EXPECT_TRUE(Of({{254, 3}, {255, 9}}).IsUnimodal()) << "rising to the last";
    EXPECT_FALSE(Of({{10, 4}, {11, 3}, {12, 4}}).IsUnimodal());
    EXPECT_FALSE(Of({{10, 4}, {12, 4}}).IsUnimodal()) << "an empty bin parts two peaks";
    EXPECT_FALSE(Of({{0, 1}, {255, 1}}).IsUnimodal());
    EXPECT_FALSE(Of({{5, 9}, {6, 1}, {255, 1}}).IsUnimodal());
}

TEST(HistogramStatistics, LowPassWritesRoundedMeansOfTheBinsThatExist)
{
    ClHistogram cHistogram = Of({{0, 10}, {1, 1}, {5, 8}, {6, 0}, {255, 7}});
    cHistogram.LowPass();
    EXPECT_EQ(6u, cHistogram.m_anBins[0]); // 11 by 2, rounded up
    EXPECT_EQ(4u, cHistogram.m_anBins[1]); // 11 by 3
    EXPECT_EQ(0u, cHistogram.m_anBins[2]); // 1 by 3
    EXPECT_EQ(0u, cHistogram.m_anBins[3]);
    EXPECT_EQ(3u, cHistogram.m_anBins[4]); // 8 by 3
    EXPECT_EQ(3u, cHistogram.m_anBins[5]);
    EXPECT_EQ(3u, cHistogram.m_anBins[6]);
    EXPECT_EQ(2u, cHistogram.m_anBins[254]); // 7 by 3
    EXPECT_EQ(4u, cHistogram.m_anBins[255]); // 7 by 2
}

TEST(HistogramStatistics, LowPassOfAnyWidthAgreesWithThePlainMean)
{
    ClHistogram cHistogram;
    for (const int nWidth : {INT_MIN, -3, 0, 1, 2, 3, 4, 5, 16, 255, 256, 510, 511, 512, INT_MAX})
    {
        RandomPixels(4, cHistogram);
        const std::vector<unsigned int> anBefore(cHistogram.m_anBins, cHistogram.m_anBins + 256);
        cHistogram.LowPass(nWidth);
        for (int n = 0; n < 256; ++n)
        {
            double dSum = 0.0;
            int nSummed = 0;
            for (int i = 0; i < 256; ++i)
            {
                if (2 * std::abs(std::int64_t(i) - n) <= std::max(nWidth, 0))
                {
                    dSum += anBefore[static_cast<std::size_t>(i)];
                    ++nSummed;
                }
            }
            EXPECT_EQ(std::floor(dSum / nSummed + 0.5), cHistogram.m_anBins[n]) << "width " << nWidth << ", bin " << n;
        }
    }
}

TEST(HistogramStatistics, FirstDerivationIsTheSlopeOverTheGivenDistance)
{
    ClHistogram cRamp;
    for (unsigned int n = 0; n < 256; ++n)
    {
        cRamp.m_anBins[n] = 1000 - 3 * n;
    }
    for (const int nDistance : {INT_MIN, 0, 1, 2, 17, 255, 256, INT_MAX})
    {
        std::vector<double> adSlopes(256, 99.0);
        cRamp.CalcFirstDerivation(nDistance, adSlopes.data());
        EXPECT_EQ(std::vector<double>(256, -3.0), adSlopes) << nDistance;
    }
    const ClHistogram cHistogram = Of({{0, 4}, {2, 4000000000u}, {3, 6}, {255, 1}});
    std::vector<double> adSlopes(256, 99.0);
    cHistogram.CalcFirstDerivation(1, adSlopes.data());
    EXPECT_EQ(-4.0, adSlopes[0]);
    EXPECT_EQ(1999999998.0, adSlopes[1]);
    EXPECT_EQ(3.0, adSlopes[2]);
    EXPECT_EQ(-2000000000.0, adSlopes[3]);
    EXPECT_EQ(-3.0, adSlopes[4]);
    EXPECT_EQ(0.0, adSlopes[5]);
    EXPECT_EQ(0.5, adSlopes[254]);
    EXPECT_EQ(1.0, adSlopes[255]);
    cHistogram.CalcFirstDerivation(2, adSlopes.data());
    EXPECT_EQ((4000000000.0 - 4) / 2, adSlopes[0]);
    EXPECT_EQ(2.0 / 3, adSlopes[1]);
    EXPECT_EQ(-1.0, adSlopes[2]);
}

/// The clusters pixel by pixel, until no pixel changes sides.
void ClusterPixels(const Pixels_t& anPixels, double& dDark, double& dBright, int& nFirstBright)
{
    dDark = anPixels.front();
    dBright = anPixels.back();
    for (std::size_t nDark = 0, nBefore = anPixels.size() + 1; nDark != nBefore;)
    {
        nBefore = nDark;
        Pixels_t anDark, anBright;
        for (const int nPixel : anPixels)
        {
            (nPixel - dDark < dBright - nPixel ? anDark : anBright).push_back(nPixel);
        }
        nDark = anDark.size();
        dDark = Mean(anDark);
        dBright = Mean(anBright);
        nFirstBright = anBright.front();
    }
}

TEST(HistogramStatistics, TwoMeansPartPixelsLikeTheLoopOverThem)
{
    ClHistogram cHistogram;
    for (unsigned int nSeed = 1; nSeed <= 100; ++nSeed)
    {
        SCOPED_TRACE(nSeed);
        const Pixels_t anPixels = RandomPixels(nSeed, cHistogram);
        if (anPixels.front() == anPixels.back())
        {
            continue;
        }
        double dExpectedDark, dExpectedBright, dDark, dBright;
        int nFirstBright = 0;
        ClusterPixels(anPixels, dExpectedDark, dExpectedBright, nFirstBright);
        const int nThreshold = cHistogram.TwoMeansClustering(dDark, dBright);
        EXPECT_NEAR(dExpectedDark, dDark, 1e-9);
        EXPECT_NEAR(dExpectedBright, dBright, 1e-9);
        EXPECT_EQ(std::ceil((dDark + dBright) / 2), nThreshold);
        EXPECT_LE(nThreshold, nFirstBright);
        EXPECT_EQ(nThreshold, cHistogram.TwoMeansClustering());
        const Pixels_t anSome = Between(anPixels, 90, 160);
        if (!anSome.empty() && anSome.front() != anSome.back())
        {
            ClusterPixels(anSome, dExpectedDark, dExpectedBright, nFirstBright);
            cHistogram.TwoMeansClustering(90, 160, dDark, dBright);
            EXPECT_NEAR(dExpectedDark, dDark, 1e-9);
            EXPECT_NEAR(dExpectedBright, dBright, 1e-9);
        }
    }
}

TEST(HistogramStatistics, TwoMeansFindTheGapBetweenTwoHills)
{
    const ClHistogram cHistogram = Of({{40, 10}, {50, 20}, {60, 10}, {200, 1}, {210, 2}, {220, 1}});
    double dDark, dBright;
    EXPECT_EQ(130, cHistogram.TwoMeansClustering(dDark, dBright));
    EXPECT_EQ(50.0, dDark);
    EXPECT_EQ(210.0, dBright);
    EXPECT_EQ(55, cHistogram.TwoMeansClustering(45, 199, dDark, dBright)); // only 50 and 60 are left
    EXPECT_EQ(50.0, dDark);
    EXPECT_EQ(60.0, dBright);
}

TEST(HistogramStatistics, TwoMeansFollowASlopeStepByStepAndStop)
{
    // Nearly all pixels lie at the dark end: from 128, the middle of both ends, the threshold wanders down to them.
    ClHistogram cHistogram;
    for (int n = 0; n < 256; ++n)
    {
        cHistogram.m_anBins[n] = 1u << (31 - n / 8);
    }
    double dDark, dBright;
    const int nThreshold = cHistogram.TwoMeansClustering(dDark, dBright);
    EXPECT_EQ(std::ceil((dDark + dBright) / 2), nThreshold);
    EXPECT_GT(nThreshold, 8);
    EXPECT_LT(nThreshold, 24);
}

TEST(HistogramStatistics, ConstantHistogramsAreNotChangedByMeasuring)
{
    ClHistogram cHistogram = Of({{3, 2}, {9, 5}});
    const ClHistogram cBefore = cHistogram;
    double adSlopes[256];
    cHistogram.CalcFirstDerivation(3, adSlopes);
    cHistogram.TwoMeansClustering();
    cHistogram.GetAverage(0.1, 0.1);
    EXPECT_TRUE(std::equal(cBefore.m_anBins, cBefore.m_anBins + 256, cHistogram.m_anBins));
}
} // namespace
