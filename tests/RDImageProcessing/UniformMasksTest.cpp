#include "RDImageProcessing/UniformMasks.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/GreyClasses.hpp"
#include "RDImageProcessing/RotatingFilterDefinitions.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace RotatingFilterDefinitions;

namespace
{
/// The plain kernel: every distance in every mask.
void PlainDeviations(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev)
{
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            int nSum = 0;
            int nCount = 0;
            for (int j = std::max(y - 2, 0); j <= std::min(y + 2, cIn.m_nHeight - 1); ++j)
            {
                for (int i = std::max(x - 2, 0); i <= std::min(x + 2, cIn.m_nWidth - 1); ++i)
                {
                    nSum += std::abs(Row<unsigned char>(cAvg, y)[x] - Row<unsigned char>(cIn, j)[i]);
                    ++nCount;
                }
            }
            Row<unsigned char>(cDev, y)[x] = static_cast<unsigned char>(nSum / nCount);
        }
    }
}

/// Two classes that follow one another in the list, so that each stands in both places.
template <class Fn> void ForClassPairs(Fn&& fn)
{
    const std::vector<StGreyClass>& aClasses = GreyClasses();
    for (std::size_t i = 0; i < aClasses.size(); ++i)
    {
        SCOPED_TRACE(aClasses[i].sName);
        fn(aClasses[i], aClasses[(i + 1) % aClasses.size()]);
        fn(aClasses[i], aClasses[0]);
        fn(aClasses[i], aClasses[i]);
    }
}

void ExpectPlainDeviations(int nWidth, int nHeight)
{
    ForClassPairs(
        [=](const StGreyClass& cMeans, const StGreyClass& cSamples)
        {
            ClGuardedPicture cAvg(nWidth, nHeight, cMeans);
            ClGuardedPicture cIn(nWidth, nHeight, cSamples);
            ClGuardedPicture cExpected(nWidth, nHeight);
            PlainDeviations(cAvg.Image(), cIn.Image(), cExpected.Image());
            for (const bool bWide : VectorChoices(HasWideVectors()))
            {
                ClGuardedPicture cDev(nWidth, nHeight);
                FastMaskDeviations(cAvg.Image(), cIn.Image(), cDev.Image(), bWide);
                ASSERT_TRUE(SamePixels(cExpected.Image(), cDev.Image()))
                    << nWidth << " by " << nHeight << (bWide ? ", wide" : "");
            }
        });
}

void ExpectSearchByRules(int nWidth, int nHeight)
{
    ForClassPairs(
        [=](const StGreyClass& cDeviations, const StGreyClass& cMeans)
        {
            ClGuardedPicture cDev(nWidth, nHeight, cDeviations);
            ClGuardedPicture cAvg(nWidth, nHeight, cMeans);
            ClImage cExpected;
            ImageOf<unsigned char>(
                ClSearchByRules(FieldOf<unsigned char>(cDev.Image()), FieldOf<unsigned char>(cAvg.Image()), 2).Run(),
                1.0, cExpected);
            for (const bool bWide : VectorChoices(HasWideVectors()))
            {
                ClGuardedPicture cOut(nWidth, nHeight);
                FastMaskSearch(cDev.Image(), cAvg.Image(), cOut.Image(), bWide);
                ASSERT_TRUE(SamePixels(cExpected, cOut.Image()))
                    << nWidth << " by " << nHeight << (bWide ? ", wide" : "");
            }
        });
}
} // namespace

TEST(UniformMasks, DeviationsAgreeWithThePlainKernelAtEverySize)
{
    for (int nWidth = nFastMask; nWidth <= 70; ++nWidth)
    {
        ExpectPlainDeviations(nWidth, 6);
    }
    for (int nHeight = nFastMask; nHeight <= 14; ++nHeight)
    {
        ExpectPlainDeviations(nFastMask + 17, nHeight);
    }
    ExpectPlainDeviations(320, 9);
}

TEST(UniformMasks, TheSearchFollowsTheRulesAtEverySize)
{
    for (int nWidth = nFastMask; nWidth <= 70; ++nWidth)
    {
        ExpectSearchByRules(nWidth, 7);
    }
    for (int nHeight = nFastMask; nHeight <= 14; ++nHeight)
    {
        ExpectSearchByRules(nFastMask + 17, nHeight);
    }
    ExpectSearchByRules(320, 9);
}

TEST(UniformMasks, TellThatMemoryIsExhausted)
{
    ClImage cIn, cAvg, cOut;
    FillRandom8(cIn, 40, 30, 1);
    FillRandom8(cAvg, 40, 30, 2);
    cOut.New(cIn);
    for (long nGranted = 0; nGranted < 5; ++nGranted)
    {
        const ClFailingHeap cHeap(nGranted);
        EXPECT_THROW(FastMaskDeviations(cAvg, cIn, cOut), ClExBadAlloc) << nGranted;
    }
    for (long nGranted = 0; nGranted < 2; ++nGranted)
    {
        const ClFailingHeap cHeap(nGranted);
        EXPECT_THROW(FastMaskSearch(cIn, cAvg, cOut), ClExBadAlloc) << nGranted;
    }
}
