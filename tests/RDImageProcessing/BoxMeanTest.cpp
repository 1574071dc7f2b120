#include "RDImageProcessing/BoxMean.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/BoxSums.hpp"
#include "RDImageProcessing/GreyClasses.hpp"
#include "TestTools.hpp"

#include <cstdint>

namespace
{
/// The plain kernel: running sums and a division for each pixel.
void PlainMeans(const ClImage& cIn, long nWidth, ClImage& cOut)
{
    SumBoxes<unsigned char, std::uint32_t>(cIn, nWidth,
                                           [&cOut](int y)
                                           {
                                               return [pOut = Row<unsigned char>(cOut, y)](int x, std::uint32_t nSum,
                                                                                           std::uint32_t nSamples)
                                               { pOut[x] = static_cast<unsigned char>(nSum / nSamples); };
                                           });
}

void ExpectPlainMeans(int nColumns, int nRows, int nWidth)
{
    for (const StGreyClass& cClass : GreyClasses())
    {
        ClGuardedPicture cIn(nColumns, nRows, cClass);
        ClImage cExpected;
        cExpected.New(cIn.Image());
        PlainMeans(cIn.Image(), nWidth, cExpected);
        for (const bool bWide : VectorChoices(HasWideVectors()))
        {
            ClGuardedPicture cOut(nColumns, nRows);
            FastBoxMeans(cIn.Image(), nWidth, cOut.Image(), bWide);
            ASSERT_TRUE(SamePixels(cExpected, cOut.Image())) << cClass.sName << ", " << nColumns << " by " << nRows
                                                             << ", width " << nWidth << (bWide ? ", wide" : "");
        }
    }
}
} // namespace

TEST(BoxMean, AgreesWithThePlainKernelAtEveryWidthOfBoxAndImage)
{
    for (int nWidth = nLeastFastBox; nWidth <= nMostFastBox; nWidth += 2)
    {
        const int nStep = nWidth == nLeastFastBox || nWidth == nMostFastBox ? 1 : 5;
        for (int nColumns = nWidth; nColumns <= 70; nColumns += nStep)
        {
            ExpectPlainMeans(nColumns, nWidth + nColumns % 4, nWidth);
        }
    }
}

TEST(BoxMean, AgreesWithThePlainKernelAtEveryHeight)
{
    for (const int nWidth : {nLeastFastBox, 7, 9, nMostFastBox})
    {
        for (int nRows = nWidth; nRows <= 2 * nWidth + 5; ++nRows)
        {
            ExpectPlainMeans(nWidth + 20, nRows, nWidth);
        }
    }
    ExpectPlainMeans(320, 30, 5);
    ExpectPlainMeans(500, 50, 21);
}

TEST(BoxMean, TellsThatMemoryIsExhausted)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 40, 30, 1);
    cOut.New(cIn);
    for (const int nWidth : {5, 21})
    {
        for (long nGranted = 0; nGranted < 4; ++nGranted)
        {
            const ClFailingHeap cHeap(nGranted);
            EXPECT_THROW(FastBoxMeans(cIn, nWidth, cOut), ClExBadAlloc) << nGranted;
        }
    }
}
