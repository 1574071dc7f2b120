#include "RDImageProcessing/ObjectRuns.hpp"

#include "BinaryPictures.hpp"
#include "FailingHeap.hpp"

namespace
{
/// The label image that the runs mean, pixel by pixel.
void PaintByRuns(const ClObjectRuns& cRuns, const ClImage& cIn, ClImage& cLabels)
{
    cLabels.NewWithType(ClImage::eSInt32, cIn.m_nWidth, cIn.m_nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            SetSample(cLabels, x, y, 0, 0);
        }
    }
    cRuns.ForEach(
        [&](const ClObjectRuns::StRun& cRun, int y)
        {
            for (int x = cRun.nFirst; x < cRun.nEnd; ++x)
            {
                SetSample(cLabels, x, y, 0, cRun.nLabel);
            }
        });
}
} // namespace

TEST(ObjectRuns, HoldTheObjectsWithTheirLabels)
{
    ClObjectRuns cRuns; // one for all, so that its storage is used again
    ForEachBinaryPicture(
        [&](ClImage& cIn)
        {
            ClImage cExpected;
            const int nLabels = LabelByDefinition(cIn, cExpected);
            EXPECT_EQ(nLabels, cRuns.Find(cIn));
            EXPECT_EQ(cIn.m_nHeight, cRuns.Rows());
            ClImage cLabels;
            PaintByRuns(cRuns, cIn, cLabels);
            EXPECT_TRUE(SamePixels(cExpected, cLabels));
        });
}

TEST(ObjectRuns, AreWholeRunsFromLeftToRight)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClObjectRuns cRuns;
            cRuns.Find(cIn);
            for (int y = 0; y < cIn.m_nHeight; ++y)
            {
                int nBehind = -1; // of the run before
                cRuns.ForEach(y, y + 1,
                              [&](const ClObjectRuns::StRun& cRun, int nRow)
                              {
                                  EXPECT_EQ(y, nRow);
                                  EXPECT_LT(nBehind, cRun.nFirst);
                                  EXPECT_LT(cRun.nFirst, cRun.nEnd);
                                  EXPECT_LE(cRun.nEnd, cIn.m_nWidth);
                                  nBehind = cRun.nEnd;
                              });
            }
        });
}

TEST(ObjectRuns, ThePictureOfTheLabelsHasZeroesElsewhere)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClImage cExpected;
            LabelByDefinition(cIn, cExpected);
            ClObjectRuns cRuns;
            cRuns.Find(cIn);
            ClImage cLabels;
            cLabels.NewWithType(ClImage::eSInt32, cIn.m_nWidth, cIn.m_nHeight, 1, 0, 0);
            FillRandom(cLabels, 1);
            cRuns.Paint(cLabels);
            EXPECT_TRUE(SamePixels(cExpected, cLabels));
        });
}

TEST(ObjectRuns, ManyRunsBehindFewOnesFindRoom)
{
    // Rows of one run first, then of as many as there can be: more than one row in eight columns has on average.
    for (const int nFineRow : {0, 1, 2, 50, 99})
    {
        ClImage cIn;
        FillPattern(cIn, 401, 100, [&](int x, int y) { return y < nFineRow ? x < 300 : (x + y) % 2 == 0; });
        ClImage cExpected;
        const int nLabels = LabelByDefinition(cIn, cExpected);
        ClObjectRuns cRuns;
        EXPECT_EQ(nLabels, cRuns.Find(cIn));
        ClImage cLabels;
        PaintByRuns(cRuns, cIn, cLabels);
        EXPECT_TRUE(SamePixels(cExpected, cLabels));
    }
}

TEST(ObjectRuns, AnExhaustedHeapIsToldAndLeavesNoRuns)
{
    ClImage cIn;
    FillPattern(cIn, 401, 100, [](int x, int y) { return (x + y) % 2 == 0; });
    const long nFailures = ExpectBadAllocAtEveryAllocation(
        [&]
        {
            ClObjectRuns cRuns;
            try
            {
                cRuns.Find(cIn);
            }
            catch (...)
            {
                EXPECT_EQ(0, cRuns.Rows());
                throw;
            }
        });
    EXPECT_EQ(3, nFailures); // the rows, the usual room, the rest
}

TEST(ObjectRuns, ASmallImageAfterALargerOneForWhichThereWasNoMemory)
{
    const auto chequers = [](int x, int y) { return (x + y) % 2 == 0; };
    ClImage cSmall, cLarge, cExpected;
    FillPattern(cSmall, 7, 5, chequers);
    FillPattern(cLarge, 401, 100, chequers);
    for (const long nPassing : {0L, 1L, 2L})
    {
        ClObjectRuns cRuns;
        ASSERT_EQ(18, cRuns.Find(cSmall));
        PaintByRuns(cRuns, cSmall, cExpected);
        {
            const ClFailingHeap cHeap(nPassing);
            EXPECT_RAISES_CODE(cRuns.Find(cLarge), FPC_ERROR_OUT_OF_MEMORY);
        }
        ASSERT_EQ(18, cRuns.Find(cSmall)) << nPassing;
        ClImage cLabels;
        PaintByRuns(cRuns, cSmall, cLabels);
        EXPECT_TRUE(SamePixels(cExpected, cLabels)) << nPassing;
    }
}
