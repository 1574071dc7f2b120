#include "RDImageProcessing/Histogram.hpp"

#include "SampleAccess.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
using Counts_t = std::vector<unsigned int>;

Counts_t Bins(const ClHistogram& cHistogram)
{
    return Counts_t(cHistogram.m_anBins, cHistogram.m_anBins + 256);
}

TEST(Histogram, IsEmptyAtFirstAndAfterReset)
{
    ClHistogram cHistogram;
    EXPECT_EQ(Counts_t(256, 0), Bins(cHistogram));
    EXPECT_EQ(0, cHistogram.m_nOffset);
    ClImage cImage;
    FillRandom8(cImage, 9, 5, 1);
    cHistogram.Create(cImage);
    cHistogram.Reset();
    EXPECT_EQ(Counts_t(256, 0), Bins(cHistogram));
}

TEST(Histogram, CountsEverySampleOfARectangle)
{
    ClImage cImage;
    ClHistogram cHistogram;
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1), std::pair(5, 4), std::pair(67, 53)})
    {
        for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8})
        {
            cImage.NewWithType(eType, nWidth, nHeight, 1, 0, 0);
            FillRandom(cImage, 3);
            for (const auto& [nLeft, nTop, nRight, nBottom] :
                 {std::tuple(0, 0, nWidth, nHeight), std::tuple(2, 1, 4, 3), std::tuple(-5, -7, 1000, 2000),
                  std::tuple(1, -1, 3, 1), std::tuple(nWidth, 0, nWidth + 1, 1), std::tuple(-9, 0, 0, 1)})
            {
                Counts_t aExpected(256, 0);
                for (int y = 0; y < nHeight; ++y)
                {
                    for (int x = 0; x < nWidth; ++x)
                    {
                        if (x >= nLeft && x < nRight && y >= nTop && y < nBottom)
                        {
                            const int nValue = eType == ClImage::eSInt8 ? SampleAt<signed char>(cImage, x, y) + 128
                                                                        : SampleAt<unsigned char>(cImage, x, y);
                            ++aExpected[static_cast<std::size_t>(nValue)];
                        }
                    }
                }
                cHistogram.Create(cImage, nLeft, nTop, nRight, nBottom);
                EXPECT_EQ(aExpected, Bins(cHistogram)) << nWidth << " by " << nHeight << ", left " << nLeft;
                EXPECT_EQ(eType == ClImage::eSInt8 ? 128 : 0, cHistogram.m_nOffset);
                if (nLeft == 0)
                {
                    cHistogram.Create(cImage);
                    EXPECT_EQ(aExpected, Bins(cHistogram));
                }
            }
        }
    }
}

TEST(Histogram, CountsRowsOfEveryWidthAndPicturesOfFewValues)
{
    for (const int nValues : {1, 2, 256})
    {
        for (int nWidth = 1; nWidth <= 70; ++nWidth)
        {
            ClImage cImage;
            FillRandom8(cImage, nWidth, 5, static_cast<unsigned int>(nWidth));
            Counts_t aExpected(256, 0);
            for (int i = 0; i < 5 * nWidth; ++i)
            {
                const int nValue = SampleAt<unsigned char>(cImage, i % nWidth, i / nWidth) % nValues + (256 - nValues);
                SetSample(cImage, i % nWidth, i / nWidth, 0, static_cast<unsigned char>(nValue));
                ++aExpected[static_cast<std::size_t>(nValue)];
            }
            ClHistogram cHistogram;
            cHistogram.Create(cImage);
            EXPECT_EQ(aExpected, Bins(cHistogram)) << nValues << " values, width " << nWidth;
        }
    }
}

TEST(Histogram, SmallestSignedByteCountsInBinZero)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eSInt8, 2, 1, 1, 0, 0);
    SetSample<signed char>(cImage, 0, 0, 0, -128);
    SetSample<signed char>(cImage, 1, 0, 0, 127);
    ClHistogram cHistogram;
    cHistogram.Create(cImage);
    EXPECT_EQ(1u, cHistogram.m_anBins[0]);
    EXPECT_EQ(1u, cHistogram.m_anBins[255]);
}

TEST(Histogram, OfLargerSamplesTheFirstBytesOfEachRowCount)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eUInt16, 3, 2, 1, 0, 0); // rows of 8 bytes
    FillRandom(cImage, 5);
    Counts_t aExpected(256, 0);
    for (const int i : {0, 1, 2, 8, 9, 10})
    {
        ++aExpected[cImage.Data()[i]];
    }
    ClHistogram cHistogram;
    cHistogram.Create(cImage);
    EXPECT_EQ(aExpected, Bins(cHistogram));
}

TEST(Histogram, AreaWithoutPixelsHasNoCounts)
{
    ClImage cNoPixels;
    cNoPixels.Attach(nullptr, ClImage::eSInt8, 9, 8, 1, 0, 0);
    ClHistogram cHistogram;
    cHistogram.Create(cNoPixels);
    EXPECT_EQ(Counts_t(256, 0), Bins(cHistogram));
    EXPECT_EQ(128, cHistogram.m_nOffset) << "the type tells it";
}

TEST(Histogram, RefusesSeveralPlanesAndEmptyRectangles)
{
    ClImage cImage, cColour(4, 4, 3, 0, 0);
    FillRandom8(cImage, 4, 4, 1);
    ClHistogram cHistogram;
    cHistogram.Create(cImage);
    EXPECT_RAISES(cHistogram.Create(cColour), ClException, -101,
                  "Internal error.\nColor-image not supported in ClHistogram::Create.");
    EXPECT_EQ(Counts_t(256, 0), Bins(cHistogram)) << "cleared first";
    const char szRange[] = "Internal error.\ninvalid Range in ClHistogram::Create.";
    EXPECT_RAISES(cHistogram.Create(cImage, 2, 0, 2, 4), ClException, -101, szRange);
    EXPECT_RAISES(cHistogram.Create(cImage, 3, 0, 2, 4), ClException, -101, szRange);
    EXPECT_RAISES(cHistogram.Create(cImage, 0, 4, 4, 4), ClException, -101, szRange);
    EXPECT_RAISES(cHistogram.Create(cColour, 2, 0, 2, 4), ClException, -101,
                  "Internal error.\nColor-image not supported in ClHistogram::Create.");
    cImage.NewWithType(1, 0, 4, 1, 0, 0);
    EXPECT_RAISES(cHistogram.Create(cImage), ClException, -101, szRange);
}

TEST(Histogram, FirstAndLastValueAreTheOccupiedEnds)
{
    ClHistogram cHistogram;
    EXPECT_EQ(255, cHistogram.FirstValue());
    EXPECT_EQ(0, cHistogram.LastValue());
    cHistogram.m_anBins[17] = 3;
    EXPECT_EQ(17, cHistogram.FirstValue());
    EXPECT_EQ(17, cHistogram.LastValue());
    cHistogram.m_anBins[200] = 1;
    EXPECT_EQ(17, cHistogram.FirstValue());
    EXPECT_EQ(200, cHistogram.LastValue());
    cHistogram.m_anBins[0] = cHistogram.m_anBins[255] = 1;
    EXPECT_EQ(0, cHistogram.FirstValue());
    EXPECT_EQ(255, cHistogram.LastValue());
}

TEST(Histogram, SmallestAndGreatestCountAreOverAllBins)
{
    ClHistogram cHistogram;
    EXPECT_EQ(0u, cHistogram.MinCount());
    EXPECT_EQ(0u, cHistogram.MaxCount());
    std::fill_n(cHistogram.m_anBins, 256, 9u);
    cHistogram.m_anBins[255] = 4;
    cHistogram.m_anBins[0] = 4000000000u;
    EXPECT_EQ(4u, cHistogram.MinCount());
    EXPECT_EQ(4000000000u, cHistogram.MaxCount());
}

void ExpectRange(const ClHistogram& cHistogram, double dLow, double dHigh, int nExpectedLow, int nExpectedHigh)
{
    unsigned char nLow = 111, nHigh = 111;
    cHistogram.GetNoiseFreeRange(dLow, dHigh, nLow, nHigh);
    EXPECT_EQ(nExpectedLow, nLow) << dLow << " " << dHigh;
    EXPECT_EQ(nExpectedHigh, nHigh) << dLow << " " << dHigh;
}

TEST(Histogram, NoiseFreeRangeOfAnEmptyHistogramIsReversed)
{
    const ClHistogram cHistogram;
    ExpectRange(cHistogram, 0.0, 0.0, 255, 0);
    ExpectRange(cHistogram, 1.0, 2.0, 255, 0);
}

TEST(Histogram, NoiseFreeRangeOfOneValueIsThatValue)
{
    ClHistogram cHistogram;
    cHistogram.m_anBins[100] = 50;
    for (const double dShare : {0.0, 0.02, 0.5, 0.999999})
    {
        ExpectRange(cHistogram, dShare, dShare, 100, 100);
    }
    ExpectRange(cHistogram, 1.0, 0.0, 0, 100);
    ExpectRange(cHistogram, 0.0, 1.0, 100, 255);
    ExpectRange(cHistogram, 1.5, std::nan(""), 0, 255);
}

TEST(Histogram, NoiseFreeRangeCutsAShareFromEachEnd)
{
    ClHistogram cHistogram;
    cHistogram.m_anBins[10] = 2;
    cHistogram.m_anBins[20] = 1;
    cHistogram.m_anBins[30] = 94;
    cHistogram.m_anBins[240] = 3;
    ExpectRange(cHistogram, 0.0, 0.0, 10, 240);
    ExpectRange(cHistogram, 0.019, 0.029, 10, 240); // 1.9 and 2.9 pixels truncate to 1 and 2
    ExpectRange(cHistogram, 0.02, 0.03, 20, 30);    // exactly as many as the bins hold
    ExpectRange(cHistogram, 0.03, 0.5, 30, 30);
    ExpectRange(cHistogram, 0.98, 0.98, 240, 10);
}

TEST(Histogram, NoiseFreeRangeReachesTheOutermostBins)
{
    ClHistogram cHistogram;
    cHistogram.m_anBins[0] = 1;
    cHistogram.m_anBins[255] = 1;
    ExpectRange(cHistogram, 0.0, 0.0, 0, 255);
    ExpectRange(cHistogram, 0.5, 0.5, 255, 0);
}

TEST(Histogram, NoiseFreeRangeOfRandomImagesAgreesWithSorting)
{
    ClHistogram cHistogram;
    for (unsigned int nSeed = 1; nSeed < 20; ++nSeed)
    {
        ClImage cImage;
        FillRandom8(cImage, 31, 17, nSeed);
        std::vector<int> anSorted;
        for (int i = 0; i < 31 * 17; ++i)
        {
            anSorted.push_back(SampleAt<unsigned char>(cImage, i % 31, i / 31));
        }
        std::sort(anSorted.begin(), anSorted.end());
        const double dLow = nSeed * 0.017, dHigh = nSeed * 0.013;
        unsigned char nLow, nHigh;
        cHistogram.GetRange(cImage, dLow, dHigh, nLow, nHigh);
        const auto nCount = static_cast<double>(anSorted.size());
        EXPECT_EQ(anSorted[static_cast<std::size_t>(nCount * dLow)], nLow);
        EXPECT_EQ(*(anSorted.rbegin() + static_cast<long>(nCount * dHigh)), nHigh);
    }
    ClImage cColour(2, 2, 3, 0, 0);
    unsigned char nLow, nHigh;
    EXPECT_RAISES_CODE(cHistogram.GetRange(cColour, 0, 0, nLow, nHigh), -101);
}
} // namespace
