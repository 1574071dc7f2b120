#include "FourPrintReference.hpp"
#include "FourPrintTestTools.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace
{
/// A picture drawn in pixels of the working resolution, nFiner times as fine, and its refinement. The light ground has
/// a little noise.
class ClDrawn
{
public:
    ClDrawn(int nWidth, int nHeight, int nFiner)
        : m_nFiner(nFiner), m_cInput(nWidth * nFiner, nHeight * nFiner, 1, 3937 * nFiner, 3937 * nFiner)
    {
        ClTestRandom cRandom(5);
        for (int y = 0; y < m_cInput.m_nHeight; ++y)
        {
            for (int x = 0; x < m_cInput.m_nWidth; ++x)
            {
                Row<unsigned char>(m_cInput, y)[x] = static_cast<unsigned char>(248 + cRandom.Below(5));
            }
        }
    }

    ClDrawn& Rectangle(int nX, int nY, int nWidth, int nHeight, unsigned char nGrey)
    {
        for (int y = nY * m_nFiner; y < (nY + nHeight) * m_nFiner; ++y)
        {
            Span(nX * m_nFiner, y, nWidth * m_nFiner, nGrey);
        }
        return *this;
    }

    ClDrawn& Ellipse(double dCenterX, double dCenterY, double dHalfWidth, double dHalfHeight, unsigned char nGrey)
    {
        for (int y = 0; y < m_cInput.m_nHeight; ++y)
        {
            const double dY = (y / static_cast<double>(m_nFiner) - dCenterY) / dHalfHeight;
            const double dHalf = dHalfWidth * std::sqrt(std::max(0.0, 1.0 - dY * dY));
            const int nFrom = static_cast<int>(std::ceil((dCenterX - dHalf) * m_nFiner));
            const int nTo = static_cast<int>(std::floor((dCenterX + dHalf) * m_nFiner));
            Span(nFrom, y, std::fabs(dY) > 1.0 ? 0 : nTo - nFrom + 1, nGrey);
        }
        return *this;
    }

    /// Pixels of the input, clipped to the picture.
    ClDrawn& Span(int nX, int nY, int nWidth, unsigned char nGrey)
    {
        const int nTo = std::min(nX + nWidth, m_cInput.m_nWidth);
        for (int x = std::max(nX, 0); x < nTo; ++x)
        {
            Row<unsigned char>(m_cInput, nY)[x] = nGrey;
        }
        return *this;
    }

    /// Runs the processor and compares it with the plain road.
    void Run()
    {
        m_c.m_pInImage = &m_cInput;
        EXPECT_EQ(0, m_c.Apply());
        const ClReferenceRun cReference(m_cInput);
        EXPECT_EQ("", cReference.Differences(m_c));
        m_aNotes = cReference.m_aNotes;
    }

    /// The same where exactly one finger is cut out; what happened to it.
    StRefinementNotes RunOne()
    {
        Run();
        EXPECT_EQ(1u, m_aNotes.size());
        m_aNotes.resize(1);
        return m_aNotes[0];
    }

    const int m_nFiner;
    ClImage m_cInput;
    ClIpFourPrintSegmentation m_c;
    std::vector<StRefinementNotes> m_aNotes;
};

/// A fingertip on a longer part of the finger, with a waist of straight sides that is narrowest in row nWaist of the
/// cut-out. At 3 times the working resolution; the tip ends at row 330 and the cut-out, 120 rows high and 18 past the
/// tip, begins at row 228 of the working image.
ClDrawn& DrawWaist(ClDrawn& cDrawn, int nWaist)
{
    const int nRow = 228 * 3 + nWaist;
    for (int y = 150 * 3; y < 330 * 3; ++y)
    {
        const int nHalf = std::min(30 + 2 * std::abs(y - nRow), 90);
        cDrawn.Span(130 * 3 - nHalf, y, 2 * nHalf, 80);
    }
    return cDrawn;
}
} // namespace

TEST(IpFourPrintRefinement, ASingleFingerIsTrimmedAndNarrowed)
{
    ClDrawn c(300, 400, 3);
    c.Ellipse(150, 200, 30, 45, 80);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_EQ(1, cNotes.nRounds);
    EXPECT_TRUE(cNotes.bFirstRowWhite);
    EXPECT_TRUE(cNotes.bNarrowed);
    ASSERT_EQ(1, c.m_c.m_nFingers);
    const Box& cBox = c.m_c.m_aResultBoxes[0];
    EXPECT_EQ(cBox.m_nMaxX - cBox.m_nMinX, c.m_c.m_aImages[0].m_nWidth);
    EXPECT_EQ(cBox.m_nMaxY - cBox.m_nMinY, c.m_c.m_aImages[0].m_nHeight);
    // The ellipse is 180 by 270 pixels; the smoothing moves its border by a few, above and below are 20 more.
    EXPECT_NEAR(180 + 4, c.m_c.m_aImages[0].m_nWidth, 8);
    EXPECT_NEAR(270 + 40, c.m_c.m_aImages[0].m_nHeight, 8);
    const tagRECT& cRect = c.m_c.m_aRects[0];
    EXPECT_NEAR(150 * 3, (cRect.left + cRect.right) / 2, 2);
    EXPECT_NEAR(200 * 3, (cRect.bottom + cRect.top) / 2, 2);
}

TEST(IpFourPrintRefinement, ADarkFingerHasTwentyPixelsOfRoomAndALightOneTen)
{
    const auto room = [](unsigned char nGrey, bool bLight)
    {
        ClDrawn c(300, 400, 3);
        c.Ellipse(150, 200, 30, 45, nGrey);
        const StRefinementNotes cNotes = c.RunOne();
        EXPECT_EQ(bLight, cNotes.nThreshold >= 200);
        return c.m_c.m_aImages[0].m_nHeight - 270;
    };
    EXPECT_NEAR(2 * 20, room(80, false), 8);
    EXPECT_NEAR(2 * 10, room(215, true), 8);
}

TEST(IpFourPrintRefinement, TheRoomEndsAtTheCutOut)
{
    ClDrawn c(300, 400, 1);
    c.Ellipse(150, 200, 38, 52, 80); // 104 of the 120 rows
    EXPECT_TRUE(c.RunOne().bPadClipped);
    EXPECT_EQ(0, c.m_c.m_aResultBoxes[0].m_nMinY);
    EXPECT_LE(c.m_c.m_aResultBoxes[0].m_nMaxY, c.m_c.m_aCutImages[0].m_nHeight - 1);
}

TEST(IpFourPrintRefinement, AFingerIsCutBelowItsNarrowestPlace)
{
    ClDrawn c(300, 400, 3);
    DrawWaist(c, 100);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_FALSE(cNotes.bFirstRowWhite);
    EXPECT_TRUE(cNotes.bNeckCut);
    EXPECT_NEAR(100, cNotes.nNeckRow, 2);
    EXPECT_EQ(cNotes.nNeckRow - 2, c.m_c.m_aResultBoxes[0].m_nMinY) << "two rows below the neck stay";
    EXPECT_EQ(c.m_c.m_aResultBoxes[0].m_nMaxY - c.m_c.m_aResultBoxes[0].m_nMinY, c.m_c.m_aImages[0].m_nHeight);
}

TEST(IpFourPrintRefinement, ANeckInTheLowestRowsCutsNothing)
{
    int nKept = 0;
    int nCut = 0;
    for (int nWaist = 0; nWaist <= 8; ++nWaist)
    {
        ClDrawn c(300, 400, 3);
        DrawWaist(c, nWaist);
        const StRefinementNotes cNotes = c.RunOne();
        EXPECT_EQ(cNotes.nNeckRow > 2, cNotes.bNeckCut) << nWaist;
        EXPECT_EQ(cNotes.bNeckCut ? cNotes.nNeckRow - 2 : 0, c.m_c.m_aResultBoxes[0].m_nMinY) << nWaist;
        ++(cNotes.bNeckCut ? nCut : nKept);
    }
    EXPECT_GE(nKept, 2);
    EXPECT_GE(nCut, 2);
}

TEST(IpFourPrintRefinement, TheNeckOfARaggedFingerIsItsNearestPairOfBorders)
{
    int nCut = 0;
    for (unsigned int nSeed = 1; nSeed <= 12; ++nSeed)
    {
        ClTestRandom cRandom(nSeed);
        ClDrawn c(300, 400, 3);
        int nLeft = 330;
        int nRight = 450;
        for (int y = 150 * 3; y < 330 * 3; ++y) // both borders wander, and there are notches and slanting necks
        {
            nLeft = std::min(std::max(nLeft + cRandom.Below(13) - 6, 290), 370);
            nRight = std::min(std::max(nRight + cRandom.Below(13) - 6, 410), 490);
            const int nNotch = cRandom.Below(40) == 0 ? 30 : 0;
            c.Span(nLeft + nNotch, y, nRight - nLeft - nNotch, 80);
        }
        SCOPED_TRACE(nSeed);
        nCut += c.RunOne().bNeckCut ? 1 : 0;
    }
    EXPECT_GT(nCut, 3);
}

TEST(IpFourPrintRefinement, AFingerWithoutANeckKeepsItsRows)
{
    ClDrawn c(300, 400, 3);
    c.Rectangle(100, 150, 60, 180, 80);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_FALSE(cNotes.bFirstRowWhite);
    EXPECT_EQ(0, cNotes.nNeckRow);
    EXPECT_EQ(0, c.m_c.m_aResultBoxes[0].m_nMinY);
}

TEST(IpFourPrintRefinement, AFingerAtTheLowerEdgeOfTheInputIsNeverCut)
{
    ClDrawn c(300, 400, 3);
    for (int y = 0; y < 100 * 3; ++y) // a waist at row 45
    {
        const int nHalf = std::min(30 + 2 * std::abs(y - 45 * 3), 90);
        c.Span(130 * 3 - nHalf, y, 2 * nHalf, 80);
    }
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_TRUE(cNotes.bKeptAtEdge);
    EXPECT_FALSE(cNotes.bNeckCut);
    EXPECT_EQ(0, c.m_c.m_aResultBoxes[0].m_nMinY);
}

TEST(IpFourPrintRefinement, APartThatRunsOffTwoEdgesIsThresholdedAgainLower)
{
    // A grey finger in the upper right corner with a dark middle: the lower threshold finds the middle alone.
    ClDrawn c(300, 400, 3);
    c.Rectangle(240, 300, 60, 100, 150).Ellipse(265, 345, 18, 38, 10);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_GT(cNotes.nRounds, 1);
    EXPECT_FALSE(cNotes.bRoundAtEdges);
    ASSERT_EQ(1, c.m_c.m_nFingers);
    EXPECT_NEAR(36 * 3 + 4, c.m_c.m_aImages[0].m_nWidth, 12);
    // Each round lowers the threshold by 20 from the one that was found.
    ClDrawn cLower(300, 400, 3);
    cLower.Rectangle(240, 300, 60, 100, 90).Ellipse(265, 345, 18, 38, 10);
    const StRefinementNotes cLowerNotes = cLower.RunOne();
    EXPECT_GT(cLowerNotes.nRounds, cNotes.nRounds);
    EXPECT_LT(cLowerNotes.nThreshold, cNotes.nThreshold);
}

TEST(IpFourPrintRefinement, AFingerThatVanishesAtALowerThresholdIsDropped)
{
    ClDrawn c(300, 400, 3);
    c.Rectangle(240, 300, 60, 100, 80);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_GT(cNotes.nRounds, 1);
    EXPECT_TRUE(cNotes.bNoPart);
    EXPECT_EQ(0, c.m_c.m_nFingers);
}

TEST(IpFourPrintRefinement, APartAtTwoEdgesIsDroppedWhereTheThresholdIsBelowFifty)
{
    ClDrawn c(300, 400, 3);
    c.Rectangle(240, 300, 60, 100, 10);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_TRUE(cNotes.bTooDark);
    EXPECT_LT(cNotes.nThreshold, 50);
    EXPECT_EQ(0, c.m_c.m_nFingers);
    EXPECT_EQ(0u, c.m_c.m_aImages.Entries());
    EXPECT_EQ(0u, c.m_c.m_aResultBoxes.Entries());
    EXPECT_EQ(0u, c.m_c.m_aOriginBoxes.Entries());
    EXPECT_EQ(0u, c.m_c.m_aRects.Entries());
    EXPECT_EQ(1u, c.m_c.m_aCutImages.Entries()) << "the raw cut-outs stay";
}

TEST(IpFourPrintRefinement, APartAtTwoEdgesIsNotTriedBelowThirty)
{
    // The dark middle would be found at a threshold of 15 to 25, but a threshold below 50 is not lowered any more.
    for (const int nRim : {16, 20, 24, 28})
    {
        ClDrawn c(300, 400, 3);
        c.Rectangle(240, 300, 60, 100, static_cast<unsigned char>(nRim)).Ellipse(265, 345, 18, 38, 0);
        const StRefinementNotes cNotes = c.RunOne();
        EXPECT_TRUE(cNotes.bTooDark);
        EXPECT_GE(cNotes.nThreshold, 30);
        EXPECT_LT(cNotes.nThreshold, 50);
        EXPECT_EQ(0, c.m_c.m_nFingers);
    }
}

TEST(IpFourPrintRefinement, ANearlyRoundPartAtTwoEdgesIsAccepted)
{
    ClDrawn c(300, 400, 3);
    c.Ellipse(265, 365, 40, 40, 80);
    const StRefinementNotes cNotes = c.RunOne();
    EXPECT_TRUE(cNotes.bRoundAtEdges);
    EXPECT_EQ(1, cNotes.nRounds);
    EXPECT_EQ(1, c.m_c.m_nFingers);
}

TEST(IpFourPrintRefinement, MoreThanElevenObjectsLeaveTheImageAsFirstCut)
{
    for (const int nSpecks : {4, 10, 11, 12, 15})
    {
        // A frame with specks inside.
        ClDrawn c(300, 300, 5);
        c.Rectangle(100, 100, 74, 100, 60).Rectangle(107, 107, 60, 86, 250);
        for (int i = 0; i < nSpecks; ++i)
        {
            c.Rectangle(113 + 17 * (i % 3), 112 + 15 * (i / 3), 8, 8, 60);
        }
        const StRefinementNotes cNotes = c.RunOne();
        EXPECT_EQ(static_cast<unsigned long>(nSpecks) + 1, cNotes.nObjects);
        EXPECT_EQ(nSpecks > 10, cNotes.bTooManyObjects) << nSpecks;
        ASSERT_EQ(1, c.m_c.m_nFingers);
        // The smoothing widens the frame to about 387; 10 columns of room are on both sides, or 2 after the narrowing.
        EXPECT_NEAR(nSpecks > 10 ? 407 : 391, c.m_c.m_aImages[0].m_nWidth, 6) << nSpecks;
    }
}

TEST(IpFourPrintRefinement, AnExpectedAreaWithoutWidthIsTakenToTheRight)
{
    // An object 100 wide: drawn in by 50 from both sides nothing is left of it, and the area from there 50 to the right
    // is taken. Its middle lies in the right one of the two dark parts that the cut-out shows.
    ClDrawn c(300, 260, 1);
    c.Rectangle(100, 80, 99, 91, 174).Rectangle(100, 80, 41, 91, 37).Rectangle(166, 80, 33, 91, 39);
    c.RunOne();
    ASSERT_EQ(1u, c.m_c.m_aBoxes.Entries());
    EXPECT_EQ(100, c.m_c.m_aBoxes[0].m_nMaxX - c.m_c.m_aBoxes[0].m_nMinX);
    ASSERT_EQ(1, c.m_c.m_nFingers);
    EXPECT_GT(c.m_c.m_aResultBoxes[0].m_nMinX, 50);
}

TEST(IpFourPrintRefinement, AnExpectedAreaWithoutHeightIsTakenUpwards)
{
    ClDrawn c(300, 260, 1);
    c.Rectangle(100, 80, 84, 101, 154).Rectangle(100, 80, 84, 30, 146).Rectangle(100, 143, 84, 38, 27);
    EXPECT_FALSE(c.RunOne().bNoPart);
    EXPECT_EQ(100, c.m_c.m_aBoxes[0].m_nMaxY - c.m_c.m_aBoxes[0].m_nMinY);
    EXPECT_EQ(1, c.m_c.m_nFingers);
}

TEST(IpFourPrintRefinement, OfTwoFingersThatShareMoreThanSixTenthsOneGoes)
{
    // Two fingers pressed together, a hundred pixels per inch: each cut-out shows a part of the other finger, and the
    // boxes, 72 and 76 columns wide, share 44 columns.
    ClDrawn c(300, 260, 1);
    c.Rectangle(80, 60, 43, 120, 107).Rectangle(124, 63, 64, 117, 104);
    c.Run();
    EXPECT_EQ(2u, c.m_c.m_aBoxes.Entries());
    EXPECT_EQ(1, c.m_c.m_nFingers);
}

TEST(IpFourPrintRefinement, AFingerThatItsCutOutDoesNotShowDisappearsBetweenItsNeighbours)
{
    // The first object of the detection is light and does not reach the threshold of its cut-out.
    ClDrawn c(300, 400, 3);
    c.Rectangle(60, 170, 200, 60, 190).Ellipse(150, 200, 30, 50, 60);
    c.Run();
    ASSERT_EQ(2u, c.m_aNotes.size());
    EXPECT_TRUE(c.m_aNotes[0].bNoPart);
    EXPECT_FALSE(c.m_aNotes[1].bNoPart);
    EXPECT_EQ(1, c.m_c.m_nFingers);
    EXPECT_EQ(1u, c.m_c.m_aImages.Entries());
    EXPECT_EQ(1u, c.m_c.m_aResultBoxes.Entries());
    ASSERT_EQ(1u, c.m_c.m_aOriginBoxes.Entries());
    EXPECT_GT(c.m_c.m_aOriginBoxes[0].m_nMaxX, 200) << "the second box stays";
}

TEST(IpFourPrintRefinement, RandomPicturesAreRefinedAsTheRulesSay)
{
    ClTestRandom cRandom(11);
    int nWithNeck = 0;
    int nRepeated = 0;
    int nFingers = 0;
    for (int nPicture = 0; nPicture < 60; ++nPicture)
    {
        const auto between = [&cRandom](int nFrom, int nTo) { return nFrom + cRandom.Below(nTo - nFrom + 1); };
        ClDrawn c(300, 260, between(1, 3));
        const int nObjects = between(2, 7);
        for (int i = 0; i < nObjects; ++i)
        {
            const auto nGrey = static_cast<unsigned char>(between(10, 220));
            if (cRandom.Below(3) == 0)
            {
                c.Rectangle(between(0, 280), between(0, 200), between(10, 80), between(10, 60), nGrey);
            }
            else
            {
                c.Ellipse(between(0, 300), between(0, 260), between(8, 40), between(12, 80), nGrey);
            }
        }
        SCOPED_TRACE(nPicture);
        c.Run();
        nFingers += c.m_c.m_nFingers;
        for (const StRefinementNotes& cNotes : c.m_aNotes)
        {
            nWithNeck += cNotes.bNeckCut ? 1 : 0;
            nRepeated += cNotes.nRounds > 1 ? 1 : 0;
        }
    }
    EXPECT_GT(nFingers, 60);
    EXPECT_GT(nWithNeck, 3);
    EXPECT_GT(nRepeated, 10);
}
