#include "FourPrintTestTools.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using Four = std::vector<int>;
using Place = std::vector<long>;

Box Corrected(const Box& cBox, unsigned long nImageWidth = 1000, unsigned long nImageHeight = 1000)
{
    Boxes aBoxes;
    Boxes aOrigins;
    aBoxes.Add(cBox);
    aOrigins.Add(Box());
    ClIpFourPrintSegmentation::BoundingBoxCorrection(aBoxes, aOrigins, 100, 120, 18, nImageWidth, nImageHeight);
    EXPECT_EQ(Limits(cBox), Limits(aBoxes[0]));
    return aOrigins[0];
}

Place PlaceOf(ClBoxFixture& c, const Box& cResult, const Box& cOrigin)
{
    long nLeft = 0;
    long nRight = 0;
    long nBottom = 0;
    long nTop = 0;
    c.m_c.CalculateBoxCoordinates(cResult, cOrigin, nLeft, nRight, nBottom, nTop);
    return {nLeft, nRight, nBottom, nTop};
}

/// Cuts a box of the working resolution out of a picture whose pixels tell their place.
struct ClCut
{
    ClCut(const Box& cBox, int nWidth, int nHeight, double dScale = 1.0)
    {
        ClImage cImage(nWidth, nHeight, 1, 3937, 3937);
        for (int y = 0; y < nHeight; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                Row<unsigned char>(cImage, y)[x] = static_cast<unsigned char>(x * 7 + y * 31);
            }
        }
        ClIpFourPrintSegmentation c;
        c.m_dScale = dScale;
        m_aCut.New(1);
        m_aLeftOfCenter.New(1);
        m_aLeftOfCenter[0] = true;
        Box cCopy = cBox;
        c.CutFingerFromImage(cCopy, cImage, m_aCut, 0, m_aLeftOfCenter, m_bAtImageEdge, m_bFarFromEdge,
                             static_cast<unsigned long>(nWidth), static_cast<unsigned long>(nHeight));
    }

    /// Whether the cut-out holds exactly the pixels of that rectangle.
    bool Holds(int nX, int nY, int nWidth, int nHeight) const
    {
        const ClImage& c = m_aCut[0];
        bool bSame = c.m_nWidth == nWidth && c.m_nHeight == nHeight && c.Data() != nullptr;
        for (int y = 0; bSame && y < nHeight; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                bSame =
                    bSame && Row<unsigned char>(c, y)[x] == static_cast<unsigned char>((x + nX) * 7 + (y + nY) * 31);
            }
        }
        return bSame;
    }

    ClIpFourPrintSegmentation::Images_t m_aCut;
    TpArrayStatic<bool> m_aLeftOfCenter;
    bool m_bAtImageEdge = false;
    bool m_bFarFromEdge = false;
};
} // namespace

TEST(IpFourPrintGeometry, BoxesAreSortedByTheirLeftEdgeWithAllTheirFields)
{
    Boxes aBoxes;
    for (const int nX : {30, 10, 20, 10})
    {
        Box cBox = MakeBox(nX, nX + 5, static_cast<int>(aBoxes.Entries()), 7);
        cBox.m_fRed = static_cast<float>(nX);
        cBox.m_bMarked = nX == 20;
        aBoxes.Add(cBox);
    }
    ClIpFourPrintSegmentation::SortBoundingboxesByXCoordinate(aBoxes);
    EXPECT_EQ((Four{10, 15, 1, 7}), Limits(aBoxes[0]));
    EXPECT_EQ((Four{10, 15, 3, 7}), Limits(aBoxes[1]));
    EXPECT_EQ((Four{20, 25, 2, 7}), Limits(aBoxes[2]));
    EXPECT_EQ((Four{30, 35, 0, 7}), Limits(aBoxes[3]));
    EXPECT_EQ(30.0f, aBoxes[3].m_fRed);
    EXPECT_TRUE(aBoxes[2].m_bMarked);
}

TEST(IpFourPrintGeometry, ASmallBoxIsWidenedAroundItsMiddle)
{
    EXPECT_EQ((Four{175, 275, 270, 390}), Limits(Corrected(MakeBox(200, 250, 300, 360))));
}

TEST(IpFourPrintGeometry, AWideBoxKeepsItsWidthAndReachesPastTheTip)
{
    EXPECT_EQ((Four{200, 282, 258, 378}), Limits(Corrected(MakeBox(200, 282, 300, 360))));
    // One pixel narrower it is widened: 81 of 100 leave 19, of which the half is 9.
    EXPECT_EQ((Four{191, 291, 270, 390}), Limits(Corrected(MakeBox(200, 281, 300, 360))));
}

TEST(IpFourPrintGeometry, ATallBoxReachesPastTheTip)
{
    EXPECT_EQ((Four{175, 275, 300, 420}), Limits(Corrected(MakeBox(200, 250, 300, 402)))); // 102 is not below 120 - 18
    EXPECT_EQ((Four{175, 275, 290, 410}), Limits(Corrected(MakeBox(200, 250, 300, 401)))); // 101: 9 added at the tip
}

TEST(IpFourPrintGeometry, ABoxAtTheLowerLeftCornerIsClamped)
{
    EXPECT_EQ((Four{0, 80, 0, 80}), Limits(Corrected(MakeBox(5, 55, 0, 40))));
}

TEST(IpFourPrintGeometry, ABoxAtTheUpperRightCornerReachesOnePixelPastTheImage)
{
    EXPECT_EQ((Four{925, 1000, 909, 1000}), Limits(Corrected(MakeBox(950, 999, 940, 999))));
}

TEST(IpFourPrintGeometry, CorrectionKeepsTheOtherFieldsOfTheCutBox)
{
    Boxes aBoxes;
    Boxes aOrigins;
    aBoxes.Add(MakeBox(200, 250, 300, 360));
    ClIpFourPrintSegmentation::InitBoundingboxes(aOrigins, 1, 1.0f, 0.25f, 0.5f, 0.75f);
    ClIpFourPrintSegmentation::BoundingBoxCorrection(aBoxes, aOrigins, 100, 120, 18, 1000, 1000);
    EXPECT_EQ(1.0f, aOrigins[0].m_fRed);
    EXPECT_EQ(0.25f, aOrigins[0].m_fGreen);
    EXPECT_EQ(0.5f, aOrigins[0].m_fBlue);
    EXPECT_EQ(0.75f, aOrigins[0].m_fAlpha);
}

TEST(IpFourPrintGeometry, ACutTakesTheScaledBox)
{
    EXPECT_TRUE(ClCut(MakeBox(10, 30, 20, 50), 100, 200).Holds(10, 20, 20, 30));
    // 2.5 times 11, 31 - 11, 21, 51 - 21, each truncated.
    EXPECT_TRUE(ClCut(MakeBox(11, 31, 21, 51), 300, 400, 2.5).Holds(27, 52, 50, 75));
}

TEST(IpFourPrintGeometry, ACutThatWouldReachTheLastColumnIsMovedLeft)
{
    EXPECT_TRUE(ClCut(MakeBox(80, 100, 20, 50), 100, 200).Holds(79, 20, 20, 30));
    EXPECT_TRUE(ClCut(MakeBox(10, 30, 170, 200), 100, 200).Holds(10, 169, 20, 30));
}

TEST(IpFourPrintGeometry, ACutAsLargeAsThePictureIsShortened)
{
    EXPECT_TRUE(ClCut(MakeBox(0, 120, 0, 50), 100, 200).Holds(0, 0, 100, 50));
    EXPECT_TRUE(ClCut(MakeBox(0, 20, 0, 250), 100, 200).Holds(0, 0, 20, 200));
}

TEST(IpFourPrintGeometry, ACutWithoutAreaLeavesTheImageEmpty)
{
    const ClCut cCut(MakeBox(10, 10, 20, 50), 100, 200);
    EXPECT_EQ(nullptr, cCut.m_aCut[0].Data());
    EXPECT_EQ(0, cCut.m_aCut[0].m_nWidth);
}

TEST(IpFourPrintGeometry, ACutThatStartsInTheFirstThreeRowsIsAtTheImageEdge)
{
    EXPECT_TRUE(ClCut(MakeBox(10, 30, 0, 50), 100, 200).m_bAtImageEdge);
    EXPECT_TRUE(ClCut(MakeBox(10, 30, 2, 50), 100, 200).m_bAtImageEdge);
    EXPECT_FALSE(ClCut(MakeBox(10, 30, 3, 50), 100, 200).m_bAtImageEdge);
}

TEST(IpFourPrintGeometry, ACutAboveAnEighthOfTheHeightIsFarFromTheEdge)
{
    EXPECT_FALSE(ClCut(MakeBox(10, 30, 125, 200), 100, 1000).m_bFarFromEdge);
    EXPECT_TRUE(ClCut(MakeBox(10, 30, 126, 200), 100, 1000).m_bFarFromEdge);
}

TEST(IpFourPrintGeometry, ACutThatCoversOrLiesRightOfTheMiddleColumnIsNotLeftOfIt)
{
    const auto left = [](int nX, int nWidth)
    { return ClCut(MakeBox(nX, nX + nWidth, 5, 9), 1000, 20).m_aLeftOfCenter[0]; };
    EXPECT_TRUE(left(300, 200));  // ends at the middle column
    EXPECT_FALSE(left(300, 201)); // covers it
    EXPECT_TRUE(left(500, 50));   // begins on it
    EXPECT_FALSE(left(501, 50));
    EXPECT_TRUE(left(10, 50));
}

TEST(IpFourPrintGeometry, AnUprightBoxIsShiftedByItsCutOutAndClamped)
{
    ClBoxFixture c(1000, 800, {});
    c.m_c.m_dScale = 2.5;
    EXPECT_EQ((Place{10 + 27, 60 + 27, 20 + 77, 90 + 77}),
              PlaceOf(c, MakeBox(10, 60, 20, 90), MakeBox(11, 50, 31, 70)));
    EXPECT_EQ((Place{0, 999, 0, 799}), PlaceOf(c, MakeBox(-40, 2000, -100, 2000), MakeBox(1, 50, 1, 70)));
}

TEST(IpFourPrintGeometry, ARotatedBoxIsReportedAsTheRectangleAroundItsCorners)
{
    for (const double dHand : {1.0, 1.3, 1.9, 2.2})
    {
        ClBoxFixture c(1200, 900, {});
        c.m_c.m_dRotation = dHand;
        // A rectangle of the input, turned by hand into the rotated picture; that picture's origin is the smallest
        // corner, by whose whole part everything is shifted.
        const double dAngle = 1.57 - dHand;
        const auto turn = [&](double dX, double dY) {
            return std::pair(std::cos(dAngle) * dX - std::sin(dAngle) * dY,
                             std::cos(dAngle) * dY + std::sin(dAngle) * dX);
        };
        double dMinX = 0;
        double dMinY = 0;
        for (const auto& [dX, dY] : {turn(0, 899), turn(1200, 0), turn(1200, 899)})
        {
            dMinX = std::min(dMinX, dX);
            dMinY = std::min(dMinY, dY);
        }
        const auto [dCenterX, dCenterY] = turn(600, 450); // centre of a finger in the middle of the input
        const int nX = static_cast<int>(dCenterX + std::trunc(-dMinX));
        const int nY = static_cast<int>(dCenterY + std::trunc(-dMinY));
        const Place anPlace = PlaceOf(c, MakeBox(nX - 50, nX + 50, nY - 80, nY + 80), MakeBox(0, 0, 0, 0));
        // The half sides of the upright rectangle around a box of half sides 50 and 80.
        const double dHalfX = 50 * std::fabs(std::cos(dAngle)) + 80 * std::fabs(std::sin(dAngle));
        const double dHalfY = 50 * std::fabs(std::sin(dAngle)) + 80 * std::fabs(std::cos(dAngle));
        EXPECT_NEAR(600 - dHalfX, static_cast<double>(anPlace[0]), 2.5) << dHand;
        EXPECT_NEAR(600 + dHalfX, static_cast<double>(anPlace[1]), 2.5) << dHand;
        EXPECT_NEAR(450 - dHalfY, static_cast<double>(anPlace[2]), 2.5) << dHand;
        EXPECT_NEAR(450 + dHalfY, static_cast<double>(anPlace[3]), 2.5) << dHand;
    }
}

TEST(IpFourPrintGeometry, ARotatedBoxIsMappedBackToTheLastDigit)
{
    for (int i = 0; i < 400; ++i)
    {
        const int nWidth = 600 + i;
        const int nHeight = 500 + 3 * i;
        ClBoxFixture c(nWidth, nHeight, {});
        c.m_c.m_dScale = 1.25;
        c.m_c.m_dRotation = 1.0 + 0.003 * i;
        const double dAngle = 1.57 - c.m_c.m_dRotation;
        const double dCos = std::cos(dAngle);
        const double dSin = std::sin(dAngle);
        // The shift: the right corners of the input stand at its width, the upper ones at its last row.
        double dMinX = 0;
        double dMinY = 0;
        for (const double dX : {0.0, static_cast<double>(nWidth)})
        {
            for (const double dY : {0.0, nHeight - 1.0})
            {
                dMinX = std::min(dMinX, dCos * dX - dSin * dY);
                dMinY = std::min(dMinY, dCos * dY + dSin * dX);
            }
        }
        const double dLeft = 40 + 251 - std::trunc(-dMinX); // 201 times 1.25 is 251.25
        const double dRight = 90 + 251 - std::trunc(-dMinX);
        const double dBottom = 30 + 166 - std::trunc(-dMinY); // 133 times 1.25 is 166.25
        const double dTop = 130 + 166 - std::trunc(-dMinY);
        const auto backX = [&](double dX, double dY) { return dCos * dX + dSin * dY; };
        const auto backY = [&](double dX, double dY) { return std::sin(-dAngle) * dX + dCos * dY; };
        const Place anExpected = {
            std::max(0L, static_cast<long>(std::min(backX(dLeft, dBottom), backX(dLeft, dTop)))),
            std::min(nWidth - 1L, static_cast<long>(std::max(backX(dRight, dTop), backX(dRight, dBottom)))),
            std::max(0L, static_cast<long>(std::min(backY(dLeft, dBottom), backY(dRight, dBottom)))),
            std::min(nHeight - 1L, static_cast<long>(std::max(backY(dRight, dTop), backY(dLeft, dTop))))};
        EXPECT_EQ(anExpected, PlaceOf(c, MakeBox(40, 90, 30, 130), MakeBox(201, 300, 133, 280))) << i;
    }
}

TEST(IpFourPrintGeometry, ARotatedBoxAboveTheInputsRowsHasItsTopBelowItsBottom)
{
    // The turned picture is higher than the input, whose last row limits the top alone, before the box is turned back.
    ClBoxFixture c(560, 560, {});
    c.m_c.m_dRotation = 1.371807;
    EXPECT_EQ((Place{476, 553, 502, 474}), PlaceOf(c, MakeBox(0, 70, 41, 97), MakeBox(484, 594, 561, 659)));
}

TEST(IpFourPrintGeometry, ARotatedRectangleNeverLeavesTheInput)
{
    ClBoxFixture c(1200, 900, {});
    c.m_c.m_dRotation = 1.2;
    const Place anPlace = PlaceOf(c, MakeBox(0, 5000, 0, 5000), MakeBox(0, 0, 0, 0));
    EXPECT_GE(anPlace[0], 0);
    EXPECT_LE(anPlace[1], 1199);
    EXPECT_GE(anPlace[2], 0);
    EXPECT_LE(anPlace[3], 899);
}
