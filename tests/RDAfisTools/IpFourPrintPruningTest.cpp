#include "FourPrintTestTools.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

namespace
{
using Fingers = std::vector<int>;

/// A box of a size, its lower left corner at x, y.
Box Sized(int nX, int nY, int nWidth, int nHeight)
{
    return MakeBox(nX, nX + nWidth, nY, nY + nHeight);
}

Fingers AfterSmall(std::initializer_list<Box> acBox)
{
    ClBoxFixture c(2000, 2000, acBox);
    c.m_c.RemoveRelativelySmallFingerprintBoxes(c.m_c.m_aImages, c.m_c.m_aResultBoxes, c.m_c.m_aOriginBoxes,
                                                c.m_c.m_nFingers);
    return c.Left();
}

Fingers AfterOverlap(std::initializer_list<Box> acBox, double dLimit = 0.6)
{
    ClBoxFixture c(2000, 2000, acBox);
    c.m_c.RemoveOverlappingFingerprintBoxes(c.m_c.m_aImages, c.m_c.m_aResultBoxes, c.m_c.m_aOriginBoxes,
                                            c.m_c.m_nFingers, dLimit);
    return c.Left();
}

Fingers AfterReduction(const std::vector<Box>& acBox, int nPictureWidth = 2000)
{
    ClBoxFixture c(nPictureWidth, 2000, acBox);
    c.m_c.ReduceFingerCountToMaxOfFourByRules(c.m_c.m_aImages, c.m_c.m_aResultBoxes, c.m_c.m_aOriginBoxes,
                                              c.m_c.m_nFingers);
    return c.Left();
}

/// Tips of the boxes that stay after the amputation test; the two lists and the count must agree.
std::vector<int> AfterAmputation(std::initializer_list<int> anTip)
{
    Boxes aBoxes;
    Boxes aOrigins;
    int nCount = static_cast<int>(anTip.size());
    for (const int nTip : anTip)
    {
        aBoxes.Add(MakeBox(0, 10, 0, nTip));
        aOrigins.Add(MakeBox(0, 10, 0, nTip + 1000));
    }
    ClIpFourPrintSegmentation::RemoveAmputatedFingerprints(aBoxes, aOrigins, nCount);
    std::vector<int> anLeft;
    for (unsigned long i = 0; i < aBoxes.Entries(); ++i)
    {
        EXPECT_EQ(aBoxes[i].m_nMaxY + 1000, aOrigins[i].m_nMaxY);
        anLeft.push_back(aBoxes[i].m_nMaxY);
    }
    EXPECT_EQ(static_cast<unsigned long>(nCount), aOrigins.Entries());
    EXPECT_EQ(static_cast<unsigned long>(nCount), aBoxes.Entries());
    return anLeft;
}
} // namespace

TEST(IpFourPrintPruning, FewerThanThreeBoxesHaveNoAmputatedFinger)
{
    EXPECT_EQ((std::vector<int>{500, 300}), AfterAmputation({500, 300}));
    EXPECT_EQ((std::vector<int>{500}), AfterAmputation({500}));
    EXPECT_EQ((std::vector<int>{}), AfterAmputation({}));
}

TEST(IpFourPrintPruning, AFingerShorterThanBothNeighboursIsAmputated)
{
    // 300 goes; then 480 between 500 and 310 stays; then 310 between 480 and 470 goes.
    EXPECT_EQ((std::vector<int>{500, 480, 470}), AfterAmputation({500, 300, 480, 310, 470}));
}

TEST(IpFourPrintPruning, OuterFingersAndEqualTipsAreNeverAmputated)
{
    EXPECT_EQ((std::vector<int>{100, 500, 480, 90}), AfterAmputation({100, 500, 480, 90}));
    EXPECT_EQ((std::vector<int>{300, 300, 400}), AfterAmputation({300, 300, 400}));
    EXPECT_EQ((std::vector<int>{400, 300, 300}), AfterAmputation({400, 300, 300}));
}

TEST(IpFourPrintPruning, ABoxLessThanHalfAsHighAsTheOtherGoes)
{
    EXPECT_EQ((Fingers{0}), AfterSmall({Sized(0, 0, 50, 100), Sized(100, 0, 50, 45)}));
    EXPECT_EQ((Fingers{0, 1}), AfterSmall({Sized(0, 0, 50, 100), Sized(100, 0, 50, 50)}));
    EXPECT_EQ((Fingers{1}), AfterSmall({Sized(0, 0, 50, 45), Sized(100, 0, 50, 100)}));
}

TEST(IpFourPrintPruning, ABoxLessThanHalfAsWideAsTheOtherGoes)
{
    EXPECT_EQ((Fingers{0}), AfterSmall({Sized(0, 0, 100, 80), Sized(200, 0, 49, 80)}));
    EXPECT_EQ((Fingers{0, 1}), AfterSmall({Sized(0, 0, 100, 80), Sized(200, 0, 50, 80)}));
}

TEST(IpFourPrintPruning, SmallBoxesGoUntilNoneIsLeft)
{
    EXPECT_EQ((Fingers{0, 3}), AfterSmall({Sized(0, 0, 100, 200), Sized(200, 0, 100, 60), Sized(400, 0, 100, 30),
                                           Sized(600, 0, 100, 200)}));
}

TEST(IpFourPrintPruning, ANarrowBoxScannedAfterALowOneTakesOverAsTheSmallOne)
{
    // Box 1 is low (height 40), box 2 narrow (width 20) but high: it takes over, and box 1 joins the sums: the mean
    // width (100 + 100) / 2 = 100 has a half of 50 above 20, so box 2 goes. Next round box 1: mean height 100, half 50
    // above 40.
    EXPECT_EQ((Fingers{0}), AfterSmall({Sized(0, 0, 100, 100), Sized(200, 0, 100, 40), Sized(400, 0, 20, 100)}));
    // With a width of 60 the narrow box takes over all the same and shields the low one: nothing goes, as the mean
    // height is (100 + 40) / 2 = 70 against its own 100.
    EXPECT_EQ((Fingers{0, 1, 2}), AfterSmall({Sized(0, 0, 100, 100), Sized(200, 0, 100, 40), Sized(400, 0, 60, 100)}));
}

TEST(IpFourPrintPruning, OneBoxIsNeverSmall)
{
    EXPECT_EQ((Fingers{0}), AfterSmall({Sized(0, 0, 1, 1)}));
    EXPECT_EQ((Fingers{}), AfterSmall({}));
}

TEST(IpFourPrintPruning, ABoxInsideABiggerOneGoes)
{
    EXPECT_EQ((Fingers{0}), AfterOverlap({Sized(0, 0, 200, 200), Sized(50, 50, 20, 20)}));
    EXPECT_EQ((Fingers{1}), AfterOverlap({Sized(50, 50, 20, 20), Sized(0, 0, 200, 200)}));
}

TEST(IpFourPrintPruning, OfTwoEqualBoxesTheFirstGoes)
{
    EXPECT_EQ((Fingers{1}), AfterOverlap({Sized(0, 0, 100, 100), Sized(0, 0, 100, 100)}));
}

TEST(IpFourPrintPruning, ExactlyTheLimitOfOverlapIsNoHit)
{
    EXPECT_EQ((Fingers{0, 1}), AfterOverlap({Sized(0, 0, 100, 100), Sized(40, 0, 100, 100)}));
    EXPECT_EQ((Fingers{1}), AfterOverlap({Sized(0, 0, 100, 100), Sized(39, 0, 100, 100)}));
}

TEST(IpFourPrintPruning, AFlatSecondBoxIsAHitAndAFlatFirstBoxIsNot)
{
    EXPECT_EQ((Fingers{0}), AfterOverlap({Sized(0, 0, 100, 100), Sized(500, 0, 0, 100)}));
    EXPECT_EQ((Fingers{0, 1}), AfterOverlap({Sized(500, 0, 0, 100), Sized(0, 0, 100, 100)}));
}

TEST(IpFourPrintPruning, AHitBeforeTheFirstRowBeginsTheScanAgain)
{
    // The first row loses its box 1 by overlap with 0; the scan resumes at row 0 and finds the other pair.
    EXPECT_EQ((Fingers{0, 3}), AfterOverlap({Sized(0, 0, 200, 200), Sized(10, 10, 100, 100), Sized(500, 0, 100, 100),
                                             Sized(490, 0, 200, 200)}));
}

TEST(IpFourPrintPruning, TheScanGoesOnDiagonallyAfterAHit)
{
    // Row 1 hits column 2 (box 2 lies in box 1); the scan goes on at row 0 with column 3, which is box 4 by now. Then
    // the rows are scanned again, so in the end no overlapping pair is left.
    EXPECT_EQ((Fingers{0, 1, 4}), AfterOverlap({Sized(0, 0, 100, 100), Sized(300, 0, 100, 100), Sized(310, 10, 50, 50),
                                                Sized(10, 10, 50, 50), Sized(600, 0, 100, 100)}));
}

TEST(IpFourPrintPruning, FourBoxesAreNotReduced)
{
    EXPECT_EQ((Fingers{0, 1, 2, 3}), AfterReduction({Sized(0, 900, 100, 100), Sized(200, 900, 100, 100),
                                                     Sized(400, 900, 100, 100), Sized(600, 0, 100, 100)}));
}

TEST(IpFourPrintPruning, TheLowestOfFiveBoxesGoes)
{
    EXPECT_EQ((Fingers{0, 1, 3, 4}),
              AfterReduction({Sized(0, 900, 100, 100), Sized(200, 950, 100, 100), Sized(400, 300, 100, 100),
                              Sized(600, 940, 100, 100), Sized(800, 850, 100, 100)}));
}

TEST(IpFourPrintPruning, TheMiddleOfAnOddHeightIsTruncatedDownwards)
{
    EXPECT_EQ((Fingers{0, 1, 3, 4}),
              AfterReduction({Sized(0, 900, 100, 100), Sized(200, 900, 100, 100), Sized(400, 899, 100, 101),
                              Sized(600, 900, 100, 100), Sized(800, 900, 100, 100)}));
    EXPECT_EQ((Fingers{1, 2, 3, 4}),
              AfterReduction({Sized(0, 900, 100, 101), Sized(200, 900, 100, 100), Sized(400, 900, 100, 100),
                              Sized(600, 900, 100, 100), Sized(800, 900, 100, 100)}));
}

TEST(IpFourPrintPruning, OfSixBoxesTwoGoWithTheSumsTakenAnew)
{
    EXPECT_EQ((Fingers{0, 1, 3, 5}),
              AfterReduction({Sized(0, 900, 100, 100), Sized(200, 950, 100, 100), Sized(400, 300, 100, 100),
                              Sized(600, 940, 100, 100), Sized(700, 200, 100, 100), Sized(800, 850, 100, 100)}));
}

TEST(IpFourPrintPruning, OfFiveLevelBoxesTheFirstGoes)
{
    EXPECT_EQ((Fingers{1, 2, 3, 4}),
              AfterReduction({Sized(0, 900, 100, 100), Sized(200, 900, 100, 100), Sized(400, 900, 100, 100),
                              Sized(600, 900, 100, 100), Sized(800, 900, 100, 100)}));
}

TEST(IpFourPrintPruning, BoxesBelowAnAbsoluteAreaGo)
{
    ClBoxFixture c(2000, 2000,
                   {Sized(0, 0, 100, 99), Sized(200, 0, 100, 100), Sized(400, 0, 99, 100), Sized(600, 0, 50, 200)});
    c.m_c.RemoveToSmallFingerprintBoxes(c.m_c.m_aImages, c.m_c.m_aResultBoxes, c.m_c.m_aOriginBoxes, c.m_c.m_nFingers,
                                        100.0);
    EXPECT_EQ((Fingers{1, 3}), c.Left());
}

namespace
{
/// The rule as it is told: all sums anew for each box that goes.
Fingers ReducedByAllSums(std::vector<Box> acBox)
{
    Fingers anLeft;
    for (int i = 0; i < static_cast<int>(acBox.size()); ++i)
    {
        anLeft.push_back(i);
    }
    while (acBox.size() > 4)
    {
        const auto middle = [](int nFrom, int nTo) { return static_cast<float>(nFrom + (nTo - nFrom) / 2); };
        std::ptrdiff_t nLowest = 0;
        float fLowest = 0.0f;
        for (std::size_t i = 0; i < acBox.size(); ++i)
        {
            float fSum = 0.0f;
            for (std::size_t j = 0; j < acBox.size(); ++j)
            {
                const float fDx =
                    std::fabs(middle(acBox[i].m_nMinX, acBox[i].m_nMaxX) - middle(acBox[j].m_nMinX, acBox[j].m_nMaxX));
                const float fDy =
                    middle(acBox[i].m_nMinY, acBox[i].m_nMaxY) - middle(acBox[j].m_nMinY, acBox[j].m_nMaxY);
                fSum += i == j ? 0.0f : sinf(static_cast<float>(std::atan2(double{fDy}, double{fDx})));
            }
            if (i == 0 || fSum < fLowest)
            {
                nLowest = static_cast<std::ptrdiff_t>(i);
                fLowest = fSum;
            }
        }
        acBox.erase(acBox.begin() + nLowest);
        anLeft.erase(anLeft.begin() + nLowest);
    }
    return anLeft;
}
} // namespace

TEST(IpFourPrintPruning, BoxesThatStandAlikeAreToldApartByTheRoundingOfTheirSums)
{
    // The lowest two stand as mirror images, so that their sums are equal. In single precision, in the order of the
    // boxes, that of the later one comes out smaller; with more digits the first of the two would go.
    const auto sized = [](int nCenter, int nY) { return Sized(nCenter - 5, nY, 10, 100); };
    EXPECT_EQ((Fingers{0, 1, 3, 4}),
              AfterReduction({sized(1800, 50), sized(420, 150), sized(200, 50), sized(1000, 300), sized(1580, 150)}));
    const std::vector<std::vector<Box>> aacBox = {
        {sized(600, 100), sized(180, 150), sized(1400, 100), sized(400, 300), sized(1600, 300), sized(1820, 150)},
        {sized(640, 50), sized(400, 0), sized(360, 100), sized(1640, 100), sized(1600, 0), sized(1360, 50)},
        {sized(280, 150), sized(1000, 150), sized(440, 0), sized(380, 250), sized(1620, 250), sized(1720, 150),
         sized(1560, 0)},
        {sized(900, 250), sized(1380, 100), sized(620, 100), sized(1000, 300), sized(260, 200), sized(1740, 200),
         sized(1100, 250)}};
    for (const std::vector<Box>& acBox : aacBox)
    {
        EXPECT_EQ(ReducedByAllSums(acBox), AfterReduction(acBox));
    }
}

TEST(IpFourPrintPruning, PairsOfMirrorImagesAreReducedAsIfAllSumsWereWorkedOut)
{
    ClTestRandom cRandom(5);
    for (int i = 0; i < 100; ++i)
    {
        std::vector<Box> acBox;
        while (static_cast<int>(acBox.size()) < 5 + i % 9)
        {
            const int nAside = 20 + 20 * cRandom.Below(40);
            const int nY = 50 * cRandom.Below(3);
            for (const int nX : {1000 - nAside, 1000 + nAside})
            {
                const auto nPlace = static_cast<std::ptrdiff_t>(cRandom.Below(static_cast<int>(acBox.size()) + 1));
                acBox.insert(acBox.begin() + nPlace, Sized(nX, nY, 10, 100));
            }
        }
        EXPECT_EQ(ReducedByAllSums(acBox), AfterReduction(acBox, 2000)) << i;
    }
}

TEST(IpFourPrintPruning, AnyNumberOfBoxesIsReducedAsIfAllSumsWereWorkedOutEachTime)
{
    ClTestRandom cRandom(3);
    for (const int nBoxes : {5, 6, 9, 17, 40, 130})
    {
        for (const int nPattern : {0, 1, 2, 3, 4, 5, 6})
        {
            std::vector<Box> acBox;
            for (int i = 0; i < nBoxes; ++i)
            {
                // Equal heights, two levels, three levels, a slope, a mirrored slope, any heights, any places.
                const int anHeight[] = {500,
                                        500 + 150 * (i % 2),
                                        400 + 70 * (i % 3),
                                        300 + i * 1200 / nBoxes,
                                        300 + std::abs(2 * i - nBoxes) * 1200 / nBoxes,
                                        300 + cRandom.Below(1200),
                                        300 + cRandom.Below(1200)};
                const int nX = nPattern == 6 ? cRandom.Below(45 * nBoxes) : 45 * i;
                acBox.push_back(Sized(nX, anHeight[nPattern], 40, 100));
            }
            EXPECT_EQ(ReducedByAllSums(acBox), AfterReduction(acBox, 45 * nBoxes + 100))
                << nBoxes << " boxes, pattern " << nPattern;
        }
    }
}
