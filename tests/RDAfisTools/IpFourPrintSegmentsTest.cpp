#include "FourPrintTestTools.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using Component = ClIpConnectedComponent2::ClComponent;
using Components = ClIpFourPrintSegmentation::Components_t;

/// A binary picture to draw on: black objects on white.
struct ClBinary
{
    ClBinary(int nWidth, int nHeight) : m_cImage(nWidth, nHeight, 1, 3937, 3937)
    {
        Rectangle(0, 0, nWidth, nHeight, 255);
    }

    ClBinary(const ClBinary& cOther) { m_cImage = cOther.m_cImage; }

    /// Columns nX to nX + nWidth - 1 and rows nY to nY + nHeight - 1.
    void Rectangle(int nX, int nY, int nWidth, int nHeight, unsigned char nValue = 0)
    {
        for (int y = nY; y < nY + nHeight; ++y)
        {
            std::fill_n(Row<unsigned char>(m_cImage, y) + nX, nWidth, nValue);
        }
    }

    /// An ellipse with one axis dLean radians off the upright, its upper end moved to the left.
    void Ellipse(double dCenterX, double dCenterY, double dHalfAcross, double dHalfAlong, double dLean)
    {
        for (int y = 0; y < m_cImage.m_nHeight; ++y)
        {
            for (int x = 0; x < m_cImage.m_nWidth; ++x)
            {
                const double dX = x - dCenterX;
                const double dY = y - dCenterY;
                const double dAcross = (dX * std::cos(dLean) + dY * std::sin(dLean)) / dHalfAcross;
                const double dAlong = (dY * std::cos(dLean) - dX * std::sin(dLean)) / dHalfAlong;
                if (dAcross * dAcross + dAlong * dAlong <= 1.0)
                {
                    Row<unsigned char>(m_cImage, y)[x] = 0;
                }
            }
        }
    }

    ClImage m_cImage;
};

Components& Measure(ClImage& cImage, Components& aComponents)
{
    ClIpConnectedComponent2 cObjects;
    cObjects.pInImage = &cImage;
    cObjects.m_pComponents = &aComponents;
    EXPECT_EQ(0, cObjects.Apply());
    return aComponents;
}

/// The first segments of a copy of a picture.
struct ClFound
{
    explicit ClFound(const ClBinary& cBinary, double dAngle = 0.0) : m_dAngle(dAngle)
    {
        m_cImage = cBinary.m_cImage;
        EXPECT_EQ(0, ClIpFourPrintSegmentation().FindInitialFingerSegments(m_cImage, m_aComponents, m_dAngle));
        // The components always belong to the picture as it is left.
        Components aExpected;
        Measure(m_cImage, aExpected);
        EXPECT_EQ(aExpected.Entries(), m_aComponents.Entries());
        for (unsigned long i = 0; i < aExpected.Entries(); ++i)
        {
            EXPECT_TRUE(aExpected[i] == m_aComponents[i]) << i;
        }
    }

    ClImage m_cImage;
    Components m_aComponents;
    double m_dAngle;
};

/// What the pictures drawn twice are for: the one that goes in and the one that is to come out.
bool ComesOutAs(const ClBinary& cIn, const ClBinary& cExpected)
{
    const ClFound cFound(cIn);
    const testing::AssertionResult cSame = SamePixels(cExpected.m_cImage, cFound.m_cImage);
    EXPECT_TRUE(cSame);
    return cSame;
}

bool StaysWhole(const ClBinary& cBinary)
{
    const ClFound cFound(cBinary);
    return static_cast<bool>(SamePixels(cBinary.m_cImage, cFound.m_cImage));
}

/// A U of two bars with a base of whole rows and some more pixels on it.
ClBinary U(int nWidth, int nHeight, int nBar, int nBaseRows, int nMorePixels)
{
    ClBinary c(nWidth + 20, nHeight + 20);
    c.Rectangle(10, 10, nBar, nHeight);
    c.Rectangle(10 + nWidth - nBar, 10, nBar, nHeight);
    c.Rectangle(10 + nBar, 10, nWidth - 2 * nBar, nBaseRows);
    c.Rectangle(10 + nBar, 10 + nBaseRows, nMorePixels, 1);
    return c;
}

/// Three fingers that lean alike.
ClBinary Leaning(double dLean, double dHalfAcross = 25.0, double dHalfAlong = 60.0)
{
    ClBinary c(520, 260);
    for (const double dX : {100.0, 260.0, 420.0})
    {
        c.Ellipse(dX, 130.0, dHalfAcross, dHalfAlong, dLean);
    }
    return c;
}

double MeanOrientation(const ClBinary& cBinary)
{
    ClImage cImage;
    cImage = cBinary.m_cImage;
    Components aComponents;
    Measure(cImage, aComponents);
    double dSum = 0.0;
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        dSum += aComponents[i].m_dOrientation;
    }
    return dSum / static_cast<double>(aComponents.Entries());
}

testing::AssertionResult IsRotatedBy(const ClBinary& cBefore, const ClFound& cFound, double dMean)
{
    if (cFound.m_dAngle != dMean)
    {
        return testing::AssertionFailure() << "the angle is " << cFound.m_dAngle << ", not " << dMean;
    }
    ClImage cIn;
    cIn = cBefore.m_cImage;
    ClImage cExpected;
    ClIpRotate cRotate;
    cRotate.m_nBackgroundColor = 255;
    cRotate.ApplyParam(cIn, cExpected, ClVector(0, 0), 1.57 - dMean, true, false);
    return SamePixels(cExpected, cFound.m_cImage);
}
} // namespace

TEST(IpFourPrintSegments, AnEmptyBoxHasSeenNothing)
{
    Box cBox;
    EXPECT_EQ((std::vector<int>{99999999, 0, 99999999, 0}), Limits(cBox));
    EXPECT_EQ(0.0f, cBox.m_fRed);
    EXPECT_EQ(0.0f, cBox.m_fGreen);
    EXPECT_EQ(0.0f, cBox.m_fBlue);
    EXPECT_EQ(255.0f, cBox.m_fAlpha);
    EXPECT_FALSE(cBox.m_bMarked);
}

TEST(IpFourPrintSegments, ResettingABoxKeepsColourAndMark)
{
    Box cBox = MakeBox(1, 2, 3, 4);
    cBox.m_fGreen = 0.5f;
    cBox.m_bMarked = true;
    ClIpFourPrintSegmentation::ClCustomGeometricObjects& cObject = cBox;
    cObject.Reset();
    EXPECT_EQ((std::vector<int>{99999999, 0, 99999999, 0}), Limits(cBox));
    EXPECT_EQ(0.5f, cBox.m_fGreen);
    EXPECT_TRUE(cBox.m_bMarked);
}

TEST(IpFourPrintSegments, BoxesAreMadeColouredAndEmpty)
{
    Boxes aBoxes;
    aBoxes.Add(MakeBox(1, 2, 3, 4));
    aBoxes[0].m_bMarked = true;
    ClIpFourPrintSegmentation::InitBoundingboxes(aBoxes, 3, 0.25f, 0.5f, 0.75f, 1.0f);
    ASSERT_EQ(3u, aBoxes.Entries());
    for (unsigned long i = 0; i < 3; ++i)
    {
        EXPECT_EQ((std::vector<int>{99999999, 0, 99999999, 0}), Limits(aBoxes[i]));
        EXPECT_EQ(0.25f, aBoxes[i].m_fRed);
        EXPECT_EQ(0.5f, aBoxes[i].m_fGreen);
        EXPECT_EQ(0.75f, aBoxes[i].m_fBlue);
        EXPECT_EQ(1.0f, aBoxes[i].m_fAlpha);
        EXPECT_FALSE(aBoxes[i].m_bMarked);
    }
    ClIpFourPrintSegmentation::InitBoundingboxes(aBoxes, 0, 0, 0, 0, 0);
    EXPECT_EQ(0u, aBoxes.Entries());
}

TEST(IpFourPrintSegments, TheOverlapOfTwoIntervals)
{
    const auto overlap = &ClIpFourPrintSegmentation::Overlapping1D;
    EXPECT_EQ(3.0, overlap(0, 10, 7, 15)) << "the second begins inside the first";
    EXPECT_EQ(4.0, overlap(0, 10, 3, 7)) << "the second lies inside the first";
    EXPECT_EQ(7.0, overlap(0, 10, 3, 10)) << "they end together";
    EXPECT_EQ(0.0, overlap(0, 10, 10, 15)) << "they touch";
    EXPECT_EQ(0.0, overlap(0, 10, 12, 15)) << "the second lies behind the first";
    EXPECT_EQ(3.0, overlap(7, 15, 0, 10)) << "the first begins inside the second";
    EXPECT_EQ(4.0, overlap(3, 7, 0, 10)) << "the first lies inside the second";
    EXPECT_EQ(7.0, overlap(3, 10, 0, 10));
    EXPECT_EQ(0.0, overlap(10, 15, 0, 10)) << "they touch";
    EXPECT_EQ(0.0, overlap(12, 15, 0, 10)) << "the first lies behind the second";
    EXPECT_EQ(10.0, overlap(0, 10, 0, 10)) << "equal intervals";
    EXPECT_EQ(6.0, overlap(0, 6, 0, 10));
    EXPECT_EQ(6.0, overlap(0, 10, 0, 6));
    EXPECT_EQ(2.5, overlap(0.25, 10, 7.5, 15));
    EXPECT_EQ(3.0, overlap(-10, -2, -5, 4));
}

TEST(IpFourPrintSegments, AnIntervalWithoutLengthOverlapsNothing)
{
    const auto overlap = &ClIpFourPrintSegmentation::Overlapping1D;
    EXPECT_EQ(0.0, overlap(5, 5, 5, 5));
    EXPECT_EQ(0.0, overlap(5, 5, 5, 9)) << "equal beginnings go on to the second test";
    EXPECT_EQ(0.0, overlap(5, 9, 5, 5));
    EXPECT_EQ(0.0, overlap(0, 9, 5, 5));
    EXPECT_EQ(0.0, overlap(5, 5, 0, 9));
}

TEST(IpFourPrintSegments, AnIntervalTurnedRoundGivesWhatTheTestsGive)
{
    const auto overlap = &ClIpFourPrintSegmentation::Overlapping1D;
    EXPECT_EQ(-4.0, overlap(0, 10, 6, 2)); // the second begins inside the first and ends before: 2 - 6
    EXPECT_EQ(0.0, overlap(10, 0, 12, 15));
    EXPECT_EQ(-10.0, overlap(10, 0, 10, 15)); // equal beginnings, the first ends earlier: 0 - 10
}

TEST(IpFourPrintSegments, TwoComponentsOverlapWhereTheirBoxesDoInBothDirections)
{
    const auto boxed = [](double dMinX, double dMaxX, double dMinY, double dMaxY)
    {
        Component c;
        c.m_cMin = ClVector(dMinX, dMinY);
        c.m_cMax = ClVector(dMaxX, dMaxY);
        return c;
    };
    double dX = -1.0;
    double dY = -1.0;
    Component cFirst = boxed(0, 10, 0, 20);
    Component cSecond = boxed(7, 30, 5, 9);
    EXPECT_TRUE(ClIpFourPrintSegmentation::OverlappingComponents(cFirst, cSecond, dX, dY));
    EXPECT_EQ(3.0, dX);
    EXPECT_EQ(4.0, dY);
    cSecond = boxed(7, 30, 20, 25);
    EXPECT_FALSE(ClIpFourPrintSegmentation::OverlappingComponents(cFirst, cSecond, dX, dY));
    EXPECT_EQ(3.0, dX);
    EXPECT_EQ(0.0, dY);
    cSecond = boxed(11, 30, 5, 9);
    EXPECT_FALSE(ClIpFourPrintSegmentation::OverlappingComponents(cFirst, cSecond, dX, dY));
    EXPECT_EQ(0.0, dX);
    EXPECT_EQ(4.0, dY);
}

TEST(IpFourPrintSegments, AWhitePictureHasNoSegments)
{
    const ClBinary cWhite(200, 180);
    const ClFound cFound(cWhite);
    EXPECT_EQ(0u, cFound.m_aComponents.Entries());
    EXPECT_EQ(0.0, cFound.m_dAngle);
    EXPECT_TRUE(SamePixels(cWhite.m_cImage, cFound.m_cImage));
}

TEST(IpFourPrintSegments, OldComponentsAreForgotten)
{
    ClBinary cBinary(200, 200);
    cBinary.Rectangle(50, 60, 30, 40);
    Components aComponents;
    for (int i = 0; i < 12; ++i)
    {
        Component cOld;
        cOld.m_dMomentXX = 1e9;
        cOld.m_cFirstPixel = ClVector(1, 1);
        aComponents.Add(cOld);
    }
    double dAngle = 0.0;
    EXPECT_EQ(0, ClIpFourPrintSegmentation().FindInitialFingerSegments(cBinary.m_cImage, aComponents, dAngle));
    ASSERT_EQ(1u, aComponents.Entries());
    EXPECT_EQ(1u, aComponents.m_nEntries) << "the old storage is released";
    EXPECT_EQ(1200.0, aComponents[0].m_dArea);
    EXPECT_EQ(50.0, aComponents[0].m_cFirstPixel.m_dX);
    EXPECT_NEAR(40 * (30.0 * 30 * 30 - 30) / 12, aComponents[0].m_dMomentXX, 1e-6);
}

TEST(IpFourPrintSegments, AHandIsRotatedExactlyWhereItsMeanOrientationLeavesTheUprightRange)
{
    int nRotated = 0;
    int nUpright = 0;
    for (int i = -30; i <= 30; ++i)
    {
        const ClBinary cHand = Leaning(i * 0.01);
        const double dMean = MeanOrientation(cHand);
        const ClFound cFound(cHand);
        if (dMean < 1.4 || dMean > 1.75)
        {
            ++nRotated;
            EXPECT_TRUE(IsRotatedBy(cHand, cFound, dMean)) << i;
        }
        else
        {
            ++nUpright;
            EXPECT_EQ(0.0, cFound.m_dAngle) << i;
            EXPECT_TRUE(SamePixels(cHand.m_cImage, cFound.m_cImage)) << i;
        }
    }
    EXPECT_GT(nRotated, 20);
    EXPECT_GT(nUpright, 30);
    EXPECT_LT(MeanOrientation(Leaning(-0.2)), 1.4) << "an end moved to the right lowers the orientation";
}

TEST(IpFourPrintSegments, AHandIsRotatedOnlyOnce)
{
    // Flat ellipses at a strong lean: after the rotation their orientation is not that of upright fingers to the last
    // bit, and the angle stays the one of the first pass.
    const ClBinary cHand = Leaning(0.6);
    const ClFound cFound(cHand);
    EXPECT_TRUE(IsRotatedBy(cHand, cFound, MeanOrientation(cHand)));
    EXPECT_NEAR(1.57 + 0.6, cFound.m_dAngle, 0.1);
}

TEST(IpFourPrintSegments, OnlyTheObjectsBeforeTheFirstCutVote)
{
    ClBinary cIn(560, 260);
    cIn.Ellipse(100, 130, 25, 60, 0.6);
    cIn.Ellipse(260, 130, 25, 60, 0.6);
    cIn.Rectangle(400, 80, 102, 101); // round enough to have no vote; its halves would have one each
    ClBinary cExpected = cIn;
    cExpected.Rectangle(400 + 50, 80, 1, 101, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
    EXPECT_EQ(0.0, ClFound(cIn).m_dAngle);
    EXPECT_NE(0.0, ClFound(cExpected).m_dAngle);
}

TEST(IpFourPrintSegments, TwoVotersNeverRotate)
{
    ClBinary cHand(520, 260);
    cHand.Ellipse(100, 130, 25, 60, 0.5);
    cHand.Ellipse(260, 130, 25, 60, 0.5);
    const ClFound cFound(cHand);
    EXPECT_EQ(0.0, cFound.m_dAngle);
    EXPECT_TRUE(SamePixels(cHand.m_cImage, cFound.m_cImage));
}

TEST(IpFourPrintSegments, SmallRoundAndLyingObjectsHaveNoVote)
{
    const auto withThird = [](double dHalfAcross, double dHalfAlong, double dLean)
    {
        ClBinary c(520, 260);
        c.Ellipse(100, 130, 25, 60, 0.5);
        c.Ellipse(260, 130, 25, 60, 0.5);
        c.Ellipse(420, 130, dHalfAcross, dHalfAlong, dLean);
        return ClFound(c).m_dAngle;
    };
    EXPECT_NE(0.0, withThird(25, 60, 0.5));
    EXPECT_EQ(0.0, withThird(16, 30, 0.5)) << "small: an area of about 1510";
    EXPECT_NE(0.0, withThird(17, 32, 0.5)) << "large enough: about 1710";
    EXPECT_EQ(0.0, withThird(40, 45, 0.5)) << "round: an eccentricity of about 0.014";
    EXPECT_NE(0.0, withThird(40, 52, 0.5)) << "long enough: about 0.066";
    EXPECT_EQ(0.0, withThird(60, 25, 0.0)) << "lying: an orientation of about 0";
}

TEST(IpFourPrintSegments, AVoterHasExactlyMoreThan1600Pixels)
{
    const auto withThird = [](int nMore)
    {
        ClBinary c(520, 260);
        c.Ellipse(100, 130, 25, 60, 0.5);
        c.Ellipse(260, 130, 25, 60, 0.5);
        c.Rectangle(420, 100, 20, 80);
        c.Rectangle(440, 140, 1, nMore);
        return ClFound(c).m_dAngle;
    };
    EXPECT_EQ(0.0, withThird(0));
    EXPECT_NE(0.0, withThird(1));
}

TEST(IpFourPrintSegments, OnlyVotersMakeTheMean)
{
    ClBinary cHand = Leaning(0.5);
    const double dMean = MeanOrientation(cHand);
    cHand.Rectangle(5, 5, 300, 8); // lies across, and its orientation would pull the mean down
    const ClFound cFound(cHand);
    EXPECT_EQ(dMean, cFound.m_dAngle);
}

TEST(IpFourPrintSegments, AnAngleGivenOnEntrySkipsTheRotation)
{
    const ClBinary cHand = Leaning(0.5);
    const ClFound cFound(cHand, 1.0);
    EXPECT_EQ(1.0, cFound.m_dAngle);
    EXPECT_TRUE(SamePixels(cHand.m_cImage, cFound.m_cImage));
}

TEST(IpFourPrintSegments, AVeryTallObjectIsCutAThirdOfTheWayUp)
{
    ClBinary cIn(120, 260);
    cIn.Rectangle(30, 21, 45, 202); // 201 rows from the first to the last, area 9090
    ClBinary cExpected = cIn;
    cExpected.Rectangle(30, 21 + 67, 45, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
    EXPECT_EQ(2u, ClFound(cIn).m_aComponents.Entries());
}

TEST(IpFourPrintSegments, AnObjectOf200RowsStaysWhole)
{
    ClBinary cIn(120, 260);
    cIn.Rectangle(30, 21, 45, 201);
    EXPECT_TRUE(StaysWhole(cIn));
}

TEST(IpFourPrintSegments, AnObjectOfExactly8000PixelsStaysWhole)
{
    ClBinary cIn(120, 260);
    cIn.Rectangle(30, 21, 39, 205);
    cIn.Rectangle(69, 120, 1, 5);
    EXPECT_TRUE(StaysWhole(cIn));
    cIn.Rectangle(69, 125, 1, 1);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(30, 21 + 204 / 3, 39, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}

TEST(IpFourPrintSegments, ATallObjectThatFillsLessThanHalfOfItsBoxIsCut)
{
    // 100 by 164 from pixel to pixel, 16400; an area of 8200 is exactly the half.
    EXPECT_TRUE(StaysWhole(U(101, 165, 22, 16, 28)));
    const ClBinary cIn = U(101, 165, 22, 16, 27);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(10, 10 + 164 / 3, 101, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}

TEST(IpFourPrintSegments, AThinObjectOf150RowsIsNotCutAcross)
{
    // 110 by 150 from pixel to pixel, 16500, with an area of 8150: less than half, but too low for a cut across. It is
    // wide, and 16500 is more than 1.5 times its area, so it is cut upright.
    const ClBinary cIn = U(111, 151, 24, 14, 20);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(10 + 55, 10, 1, 151, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
    // One row more, and it is cut both ways in the same pass; what is left is too small for another cut.
    const ClBinary cTaller = U(111, 152, 24, 14, 20);
    ClBinary cBoth = cTaller;
    cBoth.Rectangle(10 + 55, 10, 1, 152, 255);
    cBoth.Rectangle(10, 10 + 50, 111, 1, 255);
    EXPECT_TRUE(ComesOutAs(cTaller, cBoth));
}

TEST(IpFourPrintSegments, AnObjectAsWideAsTallIsCutInItsMiddle)
{
    ClBinary cIn(160, 160);
    cIn.Rectangle(31, 20, 102, 101);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(31 + 50, 20, 1, 101, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}

TEST(IpFourPrintSegments, AnObjectOfExactly100ColumnsIsNeverCutUpright)
{
    ClBinary cIn(160, 160);
    cIn.Rectangle(31, 20, 101, 101);
    EXPECT_TRUE(StaysWhole(cIn));
}

TEST(IpFourPrintSegments, AWideObjectIsCutOnlyAboveFourFifthsOfItsHeight)
{
    ClBinary cLevel(160, 160);
    cLevel.Rectangle(20, 10, 105, 131); // 104 and 130
    EXPECT_TRUE(StaysWhole(cLevel));
    ClBinary cWider(160, 160);
    cWider.Rectangle(20, 10, 105, 130); // 104 and 129
    ClBinary cExpected = cWider;
    cExpected.Rectangle(20 + 52, 10, 1, 130, 255);
    EXPECT_TRUE(ComesOutAs(cWider, cExpected));
}

TEST(IpFourPrintSegments, CutsGoOnUntilNoObjectIsTooLarge)
{
    // First pass: a row at 259 / 3 and a column at 229 / 2. The upper quarters, 113 and 114 by 172, are left; the lower
    // ones, 85 rows high, are cut upright once more.
    ClBinary cIn(260, 300);
    cIn.Rectangle(12, 15, 230, 260);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(12, 15 + 86, 230, 1, 255);
    cExpected.Rectangle(12 + 114, 15, 1, 260, 255);
    cExpected.Rectangle(12 + 56, 15, 1, 86, 255);
    cExpected.Rectangle(12 + 115 + 57, 15, 1, 86, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
    EXPECT_EQ(6u, ClFound(cIn).m_aComponents.Entries());
}

TEST(IpFourPrintSegments, ACutPaintsOnlyItsOwnObject)
{
    ClBinary cIn(300, 260);
    cIn.Rectangle(30, 21, 45, 202);
    cIn.Rectangle(150, 60, 20, 60); // crosses the row of the cut
    cIn.Rectangle(10, 21 + 67, 5, 1);
    ClBinary cExpected = cIn;
    cExpected.Rectangle(30, 21 + 67, 45, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}

TEST(IpFourPrintSegments, ACutOfARotatedHandLiesInTheRotatedPicture)
{
    // Four fingers lean, one of them too long: it is cut once it stands upright.
    ClBinary cHand(700, 400);
    for (const double dX : {100.0, 250.0, 400.0})
    {
        cHand.Ellipse(dX, 200, 25, 60, 0.4);
    }
    cHand.Ellipse(570, 200, 32, 130, 0.4);
    const ClFound cFound(cHand);
    EXPECT_NEAR(1.57 + 0.4, cFound.m_dAngle, 0.05);
    EXPECT_EQ(5u, cFound.m_aComponents.Entries());
}

TEST(IpFourPrintSegments, ALargeObjectBehind255OthersIsNeverCutAndTheSearchEnds)
{
    ClBinary cIn(300, 320);
    for (int i = 0; i < 255; ++i)
    {
        cIn.Rectangle(2 + 2 * (i % 140), 2 + 2 * (i / 140), 1, 1);
    }
    cIn.Rectangle(30, 61, 45, 202); // label 256, which no byte holds
    EXPECT_TRUE(StaysWhole(cIn));
    // One dot less makes it label 255, the last one that is found.
    ClBinary cNext = cIn;
    cNext.Rectangle(2, 2, 1, 1, 255);
    ClBinary cExpected = cNext;
    cExpected.Rectangle(30, 61 + 67, 45, 1, 255);
    EXPECT_TRUE(ComesOutAs(cNext, cExpected));
}

TEST(IpFourPrintSegments, AnObjectBehind255OthersDoesNotKeepTheOthersFromBeingCut)
{
    ClBinary cIn(300, 600);
    cIn.Rectangle(100, 5, 45, 202); // label 1
    for (int i = 0; i < 255; ++i)
    {
        cIn.Rectangle(2 + 2 * (i % 40), 220 + 2 * (i / 40), 1, 1);
    }
    cIn.Rectangle(30, 261, 45, 202); // label 257
    ClBinary cExpected = cIn;
    cExpected.Rectangle(100, 5 + 67, 45, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}

TEST(IpFourPrintSegments, ALabelThatIsTheSameInItsLowByteIsPaintedToo)
{
    // Labels are compared as bytes: the object of label 257 has the byte of label 1 and loses its pixels on that row.
    ClBinary cIn(400, 260);
    cIn.Rectangle(10, 0, 45, 202);
    for (int i = 0; i < 255; ++i)
    {
        cIn.Rectangle(70 + 2 * (i % 140), 2 + 2 * (i / 140), 1, 1);
    }
    cIn.Rectangle(70, 67, 1, 1); // label 257, on the row of the cut
    cIn.Rectangle(72, 67, 1, 1); // label 258
    ClBinary cExpected = cIn;
    cExpected.Rectangle(10, 67, 45, 1, 255);
    cExpected.Rectangle(70, 67, 1, 1, 255);
    EXPECT_TRUE(ComesOutAs(cIn, cExpected));
}
