#include "FourPrintTestTools.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

namespace
{
using Slots = std::vector<bool>;

constexpr int nWidth = 800; // four quarters of 200 columns
constexpr int nHeight = 1000;

Slots SlotsOf(const ClIpFourPrintSegmentation& c)
{
    return Slots(c.m_abFingerSlots, c.m_abFingerSlots + 4);
}

/// A finger whose box lies between two columns and ends in a row.
Box Finger(int nFrom, int nTo, int nTip = 500)
{
    return MakeBox(nFrom, nTo, nTip - 90, nTip);
}

/// One finger in the middle of a quarter.
Box InQuarter(int nQuarter, int nTip = 500)
{
    return Finger(200 * nQuarter + 20, 200 * nQuarter + 180, nTip);
}

Slots PlacedSlots(std::initializer_list<Box> acBox, int nRotationDelta = 0, int nPictureWidth = nWidth)
{
    ClBoxFixture c(nPictureWidth, nHeight, acBox);
    c.m_c.m_nRotationDelta = nRotationDelta;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    return SlotsOf(c.m_c);
}

int HandOfFour(int nTip0, int nTip1, int nTip2, int nTip3)
{
    ClBoxFixture c(nWidth, nHeight,
                   {InQuarter(0, nTip0), InQuarter(1, nTip1), InQuarter(2, nTip2), InQuarter(3, nTip3)});
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ((Slots{true, true, true, true}), SlotsOf(c.m_c));
    return c.m_c.m_nHand;
}

/// Three fingers in the given quarters, level unless tips are given, their cut boxes ending in the given rows.
struct ClThree
{
    ClThree(std::initializer_list<int> anQuarter, std::initializer_list<int> anTip, std::initializer_list<int> anCutTop,
            double dScale = 1.0)
        : m_cFixture(nWidth, nHeight, {})
    {
        ClIpFourPrintSegmentation& c = m_cFixture.m_c;
        c.m_dScale = dScale;
        for (unsigned long i = 0; i < 3; ++i)
        {
            c.m_aResultBoxes.Add(InQuarter(anQuarter.begin()[i], anTip.begin()[i]));
            c.m_aOriginBoxes.Add(MakeBox(0, 0, 0, anCutTop.begin()[i]));
        }
        c.m_nFingers = 3;
        EXPECT_EQ(0, c.SpecifyHand());
        m_nHand = c.m_nHand;
    }

    ClBoxFixture m_cFixture;
    int m_nHand = -1;
};

/// Images of the given sizes to be turned as flat thumbs, in a processor that says right hand, slot 3.
struct ClThumbs
{
    struct StThumb
    {
        int nWidth;
        int nHeight;
        bool bLeft;
    };

    explicit ClThumbs(std::initializer_list<StThumb> acThumb)
    {
        m_aLeftOfCenter.New(acThumb.size());
        m_c.m_aImages.New(acThumb.size());
        m_aBefore.New(acThumb.size());
        unsigned long i = 0;
        for (const StThumb& cThumb : acThumb)
        {
            FillRandom8(m_c.m_aImages[i], cThumb.nWidth, cThumb.nHeight, static_cast<unsigned int>(i + 1));
            m_aBefore[i] = m_c.m_aImages[i];
            m_aLeftOfCenter[i++] = cThumb.bLeft;
        }
        m_c.m_nHand = 1;
        m_c.m_abFingerSlots[3] = true;
    }

    bool Untouched() const
    {
        bool bSame = m_c.m_nHand == 1 && SlotsOf(m_c) == Slots{false, false, false, true};
        for (unsigned long i = 0; i < m_aBefore.Entries(); ++i)
        {
            bSame = bSame && SamePixels(m_aBefore[i], m_c.m_aImages[i]);
        }
        return bSame;
    }

    /// Whether an image has been turned by an angle, with interpolation, on a white ground.
    testing::AssertionResult Turned(unsigned long i, double dAngle)
    {
        ClImage cExpected;
        ClIpRotate cRotate;
        cRotate.m_nBackgroundColor = 255;
        cRotate.ApplyParam(m_aBefore[i], cExpected, ClVector(0, 0), dAngle, true, true);
        return SamePixels(cExpected, m_c.m_aImages[i]);
    }

    ClIpFourPrintSegmentation m_c;
    ClIpFourPrintSegmentation::Images_t m_aBefore;
    TpArrayStatic<bool> m_aLeftOfCenter;
};

/// Mean of the rows of the upper or lower tenth of an image.
double MeanOfRows(const ClImage& c, int nFrom, int nTo)
{
    double dSum = 0.0;
    for (int y = nFrom; y < nTo; ++y)
    {
        for (int x = 0; x < c.m_nWidth; ++x)
        {
            dSum += Row<unsigned char>(c, y)[x];
        }
    }
    return dSum / c.m_nWidth / (nTo - nFrom);
}
} // namespace

TEST(IpFourPrintHand, WithLevelOuterFingersTheInnerOnesDecide)
{
    EXPECT_EQ(1, HandOfFour(500, 560, 540, 495));
    EXPECT_EQ(2, HandOfFour(500, 540, 560, 495));
    EXPECT_EQ(1, HandOfFour(500, 550, 550, 495)) << "level inner fingers speak for the right hand";
}

TEST(IpFourPrintHand, OtherwiseTheOuterFingersDecide)
{
    EXPECT_EQ(1, HandOfFour(500, 520, 540, 480)); // though the first three rise
    EXPECT_EQ(2, HandOfFour(480, 560, 540, 500));
}

TEST(IpFourPrintHand, OuterFingersNineteenRowsApartAreLevelAndTwentyAreNot)
{
    EXPECT_EQ(2, HandOfFour(519, 520, 540, 500));
    EXPECT_EQ(1, HandOfFour(520, 520, 540, 500));
    EXPECT_EQ(1, HandOfFour(500, 560, 540, 519));
    EXPECT_EQ(2, HandOfFour(500, 560, 540, 520));
}

TEST(IpFourPrintHand, ATipRowIsScaledFromTheCutOutAndEndsAtTheLastRow)
{
    ClBoxFixture c(nWidth, nHeight, {InQuarter(0, 100), InQuarter(1, 350), InQuarter(2, 354), InQuarter(3, 100)});
    c.m_c.m_dScale = 2.5;
    c.m_c.m_aOriginBoxes[1].m_nMinY = 3; // 7.5 rows, taken as 7: 357 above 354
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ(1, c.m_c.m_nHand);
    c.m_c.m_aResultBoxes[2].m_nMaxY = 358;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ(2, c.m_c.m_nHand);
    // Beyond the last row all tips are level, and level inner fingers speak for the right hand.
    EXPECT_EQ(1, HandOfFour(1100, 1200, 1300, 1500));
}

TEST(IpFourPrintHand, ThreeRisingFingersAreALeftHandAndTakeTheLeftPlaces)
{
    const ClThree cRight({1, 2, 3}, {400, 450, 500}, {0, 0, 0});
    EXPECT_EQ(2, cRight.m_nHand);
    EXPECT_EQ((Slots{true, true, true, false}), SlotsOf(cRight.m_cFixture.m_c));
    EXPECT_FALSE(cRight.m_cFixture.m_c.m_bReverseOrder);
    const ClThree cLeft({0, 1, 2}, {400, 450, 500}, {0, 0, 0});
    EXPECT_EQ(2, cLeft.m_nHand);
    EXPECT_EQ((Slots{true, true, true, false}), SlotsOf(cLeft.m_cFixture.m_c));
    // With the outer places both taken nothing moves.
    const ClThree cWide({0, 1, 3}, {400, 450, 500}, {0, 0, 0});
    EXPECT_EQ(2, cWide.m_nHand);
    EXPECT_EQ((Slots{true, true, false, true}), SlotsOf(cWide.m_cFixture.m_c));
}

TEST(IpFourPrintHand, ThreeFallingFingersAreARightHandAndTakeTheRightPlaces)
{
    const ClThree cLeft({0, 1, 2}, {500, 450, 400}, {0, 0, 0});
    EXPECT_EQ(1, cLeft.m_nHand);
    EXPECT_EQ((Slots{false, true, true, true}), SlotsOf(cLeft.m_cFixture.m_c));
    const ClThree cWide({0, 2, 3}, {500, 450, 400}, {0, 0, 0});
    EXPECT_EQ(1, cWide.m_nHand);
    EXPECT_EQ((Slots{true, false, true, true}), SlotsOf(cWide.m_cFixture.m_c));
}

TEST(IpFourPrintHand, EqualNeighboursNeitherRiseNorFall)
{
    EXPECT_EQ(0, ClThree({0, 1, 2}, {400, 400, 500}, {0, 0, 0}).m_nHand);
    EXPECT_EQ(0, ClThree({0, 1, 2}, {400, 500, 500}, {0, 0, 0}).m_nHand);
    EXPECT_EQ(0, ClThree({0, 1, 2}, {500, 500, 400}, {0, 0, 0}).m_nHand);
    EXPECT_EQ(0, ClThree({0, 1, 2}, {500, 400, 400}, {0, 0, 0}).m_nHand);
}

TEST(IpFourPrintHand, AFirstFingerFarFromTheSecondInHeightIsALeftHand)
{
    EXPECT_EQ(2, ClThree({0, 1, 2}, {500, 600, 500}, {100, 521, 521}).m_nHand);
    EXPECT_EQ(2, ClThree({0, 1, 2}, {500, 600, 500}, {521, 100, 521}).m_nHand);
    EXPECT_EQ(0, ClThree({0, 1, 2}, {500, 600, 500}, {100, 520, 520}).m_nHand) << "420 rows are not far";
    EXPECT_EQ(0, ClThree({1, 2, 3}, {500, 600, 500}, {100, 521, 521}).m_nHand) << "it must fill the first place";
    // The limit is rows of the input, the boxes stand at the working resolution: 210 there at a scale of 2.
    EXPECT_EQ(2, ClThree({0, 1, 2}, {500, 600, 500}, {100, 311, 311}, 2.0).m_nHand);
    EXPECT_EQ(0, ClThree({0, 1, 2}, {500, 600, 500}, {100, 310, 310}, 2.0).m_nHand);
}

TEST(IpFourPrintHand, AThirdFingerFarFromTheSecondInHeightIsARightHandUnlessTheFirstIsFarToo)
{
    EXPECT_EQ(1, ClThree({1, 2, 3}, {500, 600, 500}, {521, 521, 100}).m_nHand);
    EXPECT_EQ(0, ClThree({1, 2, 3}, {500, 600, 500}, {520, 520, 100}).m_nHand) << "420 rows are not far";
    EXPECT_EQ(0, ClThree({0, 1, 2}, {500, 600, 500}, {521, 521, 100}).m_nHand) << "it must fill the last place";
    // Both outer fingers are far: the higher tip decides, level ones leave it at the left hand.
    EXPECT_EQ(1, ClThree({0, 1, 3}, {501, 600, 500}, {100, 521, 100}).m_nHand);
    EXPECT_EQ(2, ClThree({0, 1, 3}, {500, 600, 500}, {100, 521, 100}).m_nHand);
    EXPECT_EQ(2, ClThree({0, 1, 3}, {499, 600, 500}, {100, 521, 100}).m_nHand);
    EXPECT_EQ(1, ClThree({0, 1, 3}, {499, 600, 500}, {521, 521, 100}).m_nHand) << "only the third is far";
}

TEST(IpFourPrintHand, ASecondBoxInTheFirstQuarterTakesTheNextPlace)
{
    EXPECT_EQ((Slots{true, true, false, false}), PlacedSlots({InQuarter(0), InQuarter(0)}));
    EXPECT_EQ((Slots{false, false, true, true}), PlacedSlots({InQuarter(3), InQuarter(3)}));
}

TEST(IpFourPrintHand, ASecondBoxInAnInnerQuarterGoesWhereItReachesFurther)
{
    EXPECT_EQ((Slots{false, true, true, false}), PlacedSlots({InQuarter(1), Finger(190, 430)}));
    EXPECT_EQ((Slots{true, true, false, false}), PlacedSlots({InQuarter(1), Finger(170, 410)}));
    EXPECT_EQ((Slots{true, true, false, false}), PlacedSlots({InQuarter(1), Finger(180, 420)})) << "a tie goes left";
    EXPECT_EQ((Slots{false, false, true, true}), PlacedSlots({InQuarter(2), Finger(390, 630)}));
    EXPECT_EQ((Slots{false, true, true, false}), PlacedSlots({InQuarter(2), Finger(370, 610)}));
    EXPECT_EQ((Slots{false, true, true, false}), PlacedSlots({InQuarter(2), Finger(380, 620)})) << "a tie goes left";
}

TEST(IpFourPrintHand, ABoxInAnInnerQuarterTakesTheSideThatIsFree)
{
    // Level tips, so that no place is moved afterwards.
    EXPECT_EQ((Slots{true, true, true, false}), PlacedSlots({InQuarter(0), InQuarter(1), Finger(170, 410)}));
    EXPECT_EQ((Slots{true, true, true, false}), PlacedSlots({InQuarter(2), InQuarter(1), Finger(190, 430)}));
    EXPECT_EQ((Slots{false, true, true, true}), PlacedSlots({InQuarter(1), InQuarter(2), Finger(370, 610)}));
    EXPECT_EQ((Slots{false, true, true, true}), PlacedSlots({InQuarter(3), InQuarter(2), Finger(390, 630)}));
}

TEST(IpFourPrintHand, ABoxInTwoQuartersAlikeBelongsToTheLeftOne)
{
    EXPECT_EQ((Slots{true, false, true, false}), PlacedSlots({InQuarter(0), Finger(500, 700)}));
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({InQuarter(0), Finger(501, 701)}));
    EXPECT_EQ((Slots{true, true, false, false}), PlacedSlots({InQuarter(0), Finger(300, 500)}));
    EXPECT_EQ((Slots{true, false, true, false}), PlacedSlots({InQuarter(0), Finger(301, 501)}));
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({InQuarter(3), Finger(0, 400)}));
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({InQuarter(3), Finger(-50, 400)}));
    EXPECT_EQ((Slots{false, true, false, true}), PlacedSlots({InQuarter(3), Finger(1, 400)}));
    // The last column is a column short of the end of the last quarter.
    EXPECT_EQ((Slots{true, false, true, false}), PlacedSlots({InQuarter(0), Finger(401, 799)}));
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({InQuarter(0), Finger(402, 799)}));
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({InQuarter(0), Finger(402, 900)}));
}

TEST(IpFourPrintHand, AQuarterOfAWidthIsTruncated)
{
    // 803 columns have quarters of 200: columns 301 to 501 lie 99 in the second and 101 in the third. With quarters of
    // 200.75 it would be 100.5 and 99.5.
    EXPECT_EQ((Slots{true, false, true, false}), PlacedSlots({InQuarter(0), Finger(301, 501)}, 0, 803));
}

TEST(IpFourPrintHand, HalfTheWidthThatARotationAddedIsTakenOff)
{
    const Box cFirst = Finger(630, 780);
    EXPECT_EQ((Slots{false, true, false, true}), PlacedSlots({cFirst, Finger(250, 340)}));
    // 100 columns to the left the second box lies at 150 to 240, and the first one at 530 to 680.
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({cFirst, Finger(250, 340)}, 200));
    // Half of -3 is -1: 99 to 298 becomes 100 to 299, one column more in the first quarter.
    EXPECT_EQ((Slots{true, false, false, true}), PlacedSlots({cFirst, Finger(99, 298)}, -3));
    EXPECT_EQ((Slots{false, true, false, true}), PlacedSlots({cFirst, Finger(99, 298)}, -4));
}

TEST(IpFourPrintHand, AScaledCutOutMovesABoxToItsQuarter)
{
    ClBoxFixture c(nWidth, nHeight, {InQuarter(0), Finger(20, 180)});
    c.m_c.m_dScale = 2.5;
    c.m_c.m_aOriginBoxes[1].m_nMinX = 80;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ((Slots{true, true, false, false}), SlotsOf(c.m_c));
    c.m_c.m_aOriginBoxes[1].m_nMinX = 160;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ((Slots{true, false, true, false}), SlotsOf(c.m_c));
}

TEST(IpFourPrintHand, AThirdBoxWithoutAPlaceFillsTheGapInTheMiddle)
{
    EXPECT_EQ((Slots{true, true, true, false}), PlacedSlots({InQuarter(0), InQuarter(0), InQuarter(0)}));
    EXPECT_EQ((Slots{false, true, true, true}), PlacedSlots({InQuarter(3), InQuarter(3), InQuarter(3)}));
}

TEST(IpFourPrintHand, AWideSecondBoxThatLiesLowIsAFlatThumb)
{
    const auto hand = [](const Box& cSecond)
    {
        ClBoxFixture c(nWidth, nHeight, {InQuarter(0), cSecond});
        c.m_c.m_nHand = 2;
        EXPECT_EQ(0, c.m_c.SpecifyHand());
        const bool bSecondSlot = SlotsOf(c.m_c) == Slots{true, true, false, false};
        EXPECT_EQ(c.m_c.m_nHand == 3, bSecondSlot);
        return c.m_c.m_nHand;
    };
    EXPECT_EQ(3, hand(MakeBox(400, 681, 399, 600)));
    EXPECT_EQ(0, hand(MakeBox(400, 680, 399, 600)));
    EXPECT_EQ(0, hand(MakeBox(400, 681, 400, 600)));
    EXPECT_EQ(3, hand(MakeBox(400, 681, -50, 600))) << "a lower edge below the picture is row 0";
    EXPECT_EQ(3, hand(MakeBox(410, 900, 399, 600))) << "the width ends at the last column";
    EXPECT_EQ(0, hand(MakeBox(519, 900, 399, 600)));
}

TEST(IpFourPrintHand, OnlyTheSecondBoxTellsAFlatThumb)
{
    ClBoxFixture c(nWidth, nHeight, {MakeBox(0, 399, 0, 200), InQuarter(3)});
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_EQ(0, c.m_c.m_nHand);
}

TEST(IpFourPrintHand, OneFingerTakesTheFirstPlaceWhereverItLies)
{
    for (const int nQuarter : {0, 1, 2, 3})
    {
        ClBoxFixture c(nWidth, nHeight, {InQuarter(nQuarter)});
        c.m_c.m_nHand = 2;
        EXPECT_EQ(0, c.m_c.SpecifyHand());
        EXPECT_EQ((Slots{true, false, false, false}), SlotsOf(c.m_c));
        EXPECT_EQ(0, c.m_c.m_nHand);
    }
}

TEST(IpFourPrintHand, NoFingerAndMoreThanFourGiveNoHand)
{
    for (const int nFingers : {0, 5})
    {
        ClBoxFixture c(nWidth, nHeight, {});
        c.m_c.m_nFingers = nFingers;
        c.m_c.m_nHand = 2;
        c.m_c.m_abFingerSlots[2] = true;
        c.m_c.m_bReverseOrder = true;
        EXPECT_EQ(0, c.m_c.SpecifyHand());
        EXPECT_EQ(0, c.m_c.m_nHand);
        EXPECT_EQ((Slots{false, false, false, false}), SlotsOf(c.m_c));
        EXPECT_FALSE(c.m_c.m_bReverseOrder);
    }
}

TEST(IpFourPrintHand, KeepingTheOrderLeavesTheFlagOfRisingTips)
{
    ClBoxFixture c(nWidth, nHeight, {InQuarter(0, 400), InQuarter(1, 450), InQuarter(2, 500)});
    c.m_c.m_bKeepOrder = true;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_TRUE(c.m_c.m_bReverseOrder);
    c.m_c.m_aResultBoxes[2].m_nMaxY = 450;
    EXPECT_EQ(0, c.m_c.SpecifyHand());
    EXPECT_FALSE(c.m_c.m_bReverseOrder) << "the flag follows the tips, not the run before";
}

TEST(IpFourPrintHand, AnotherCountOfPlacesThanOfFingersIsRefused)
{
    ClBoxFixture c(nWidth, nHeight, {InQuarter(3)});
    bool abSlot[] = {true, true, false, false}; // taken before: the finger takes a third
    EXPECT_EQ(-35, c.m_c.CalculateFingerPositions(abSlot[0], abSlot[1], abSlot[2], abSlot[3]));
    EXPECT_TRUE(abSlot[3]);
}

TEST(IpFourPrintHand, TwoFlatThumbsAreTurnedInOppositeDirections)
{
    ClThumbs c({{40, 30, true}, {50, 20, false}});
    EXPECT_EQ(0, c.m_c.ProcessHorizontalThumbs(c.m_aLeftOfCenter));
    EXPECT_TRUE(c.Turned(0, 1.57));
    EXPECT_TRUE(c.Turned(1, 4.71));
    EXPECT_EQ(3, c.m_c.m_nHand);
    EXPECT_EQ((Slots{true, true, false, false}), SlotsOf(c.m_c));
}

TEST(IpFourPrintHand, TipsThatPointToTheMiddlePointUpAfterTheTurn)
{
    ClThumbs c({{100, 40, true}, {100, 40, false}});
    for (const unsigned long i : {0ul, 1ul})
    {
        for (int y = 0; y < 40; ++y)
        {
            for (int x = 0; x < 100; ++x)
            {
                // Dark at the right end of the left thumb, at the left end of the right one.
                Row<unsigned char>(c.m_c.m_aImages[i], y)[x] = (i == 0 ? x >= 80 : x < 20) ? 0 : 255;
            }
        }
    }
    c.m_c.ProcessHorizontalThumbs(c.m_aLeftOfCenter);
    for (const unsigned long i : {0ul, 1ul})
    {
        const ClImage& cImage = c.m_c.m_aImages[i];
        EXPECT_NEAR(40, cImage.m_nWidth, 1);
        EXPECT_NEAR(100, cImage.m_nHeight, 1);
        EXPECT_LT(MeanOfRows(cImage, cImage.m_nHeight - 16, cImage.m_nHeight - 4), 30.0);
        EXPECT_GT(MeanOfRows(cImage, 4, 16), 225.0);
    }
}

TEST(IpFourPrintHand, OneWideImageIsTurnedAndFillsOnePlace)
{
    ClThumbs cLeft({{40, 39, true}});
    EXPECT_EQ(0, cLeft.m_c.ProcessHorizontalThumbs(cLeft.m_aLeftOfCenter));
    EXPECT_TRUE(cLeft.Turned(0, 1.57));
    EXPECT_EQ((Slots{true, false, false, false}), SlotsOf(cLeft.m_c));
    EXPECT_EQ(3, cLeft.m_c.m_nHand);
    ClThumbs cRight({{40, 39, false}});
    EXPECT_EQ(0, cRight.m_c.ProcessHorizontalThumbs(cRight.m_aLeftOfCenter));
    EXPECT_TRUE(cRight.Turned(0, 4.71));
    EXPECT_EQ((Slots{false, true, false, false}), SlotsOf(cRight.m_c));
}

TEST(IpFourPrintHand, AnImageThatIsNotWiderThanTallStopsTheTurningOfThumbs)
{
    for (const ClThumbs::StThumb& cSecond : {ClThumbs::StThumb{30, 40, true}, ClThumbs::StThumb{40, 40, true}})
    {
        ClThumbs cBoth({{40, 30, true}, cSecond});
        EXPECT_EQ(0, cBoth.m_c.ProcessHorizontalThumbs(cBoth.m_aLeftOfCenter));
        EXPECT_TRUE(cBoth.Untouched());
        ClThumbs cOne({cSecond});
        EXPECT_EQ(0, cOne.m_c.ProcessHorizontalThumbs(cOne.m_aLeftOfCenter));
        EXPECT_TRUE(cOne.Untouched());
    }
}

TEST(IpFourPrintHand, ThreeWideImagesAreNoThumbs)
{
    ClThumbs c({{40, 30, true}, {40, 30, true}, {40, 30, false}});
    EXPECT_EQ(0, c.m_c.ProcessHorizontalThumbs(c.m_aLeftOfCenter));
    EXPECT_TRUE(c.Untouched());
}

TEST(IpFourPrintHand, WithoutAnImageTheThumbsStillTakeTheHand)
{
    ClThumbs c({});
    EXPECT_EQ(0, c.m_c.ProcessHorizontalThumbs(c.m_aLeftOfCenter));
    EXPECT_EQ(3, c.m_c.m_nHand);
    EXPECT_EQ((Slots{false, false, false, false}), SlotsOf(c.m_c));
}

TEST(IpFourPrintHand, AThumbIsJudgedByItsPresentIndex)
{
    // The image that was cut second is now the first; the entry of the first cut speaks for it all the same.
    ClThumbs c({{40, 30, true}, {50, 20, false}});
    c.m_c.m_aImages.RemoveAt(0);
    c.m_aBefore.RemoveAt(0);
    EXPECT_EQ(0, c.m_c.ProcessHorizontalThumbs(c.m_aLeftOfCenter));
    EXPECT_TRUE(c.Turned(0, 1.57));
    EXPECT_EQ((Slots{true, false, false, false}), SlotsOf(c.m_c));
}
