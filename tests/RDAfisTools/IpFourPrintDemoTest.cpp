#include "FourPrintTestTools.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "TestTools.hpp"

#include <array>
#include <cmath>

namespace
{
using Place = std::array<long, 4>; // left, right, bottom, top
using Colour = std::array<unsigned char, 3>;

constexpr Colour anRed = {255, 0, 0};
constexpr Colour anMagenta = {255, 0, 255};

/// A processor as a run leaves it: fingers in cut-outs whose corners stand at working coordinates.
struct ClDemoFixture
{
    ClDemoFixture(int nWidth, int nHeight, int nPlanes = 1, unsigned char eType = ClImage::eUInt8)
    {
        m_cInput.NewWithType(eType, nWidth, nHeight, nPlanes, 19685, 19685);
        FillRandom(m_cInput, 5);
        m_c.m_pInImage = &m_cInput;
        m_c.m_dScale = 2.5;
    }

    void AddFinger(const Box& cResult, int nOriginX, int nOriginY)
    {
        m_c.m_aResultBoxes.Add(cResult);
        m_c.m_aOriginBoxes.Add(MakeBox(nOriginX, nOriginX + 10, nOriginY, nOriginY + 10));
        ++m_c.m_nFingers;
    }

    ClImage m_cInput;
    ClImage m_cPicture;
    ClIpFourPrintSegmentation m_c;
};

/// The picture that a one-plane image gives, three times the same sample.
void MakeColour(ClImage& cIn, ClImage& cOut)
{
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, &cIn, &cIn, &cIn, nullptr));
}

/// Pixel by pixel over the whole picture: what is on one of the four lines of the rectangle.
void DrawByDefinition(ClImage& cPicture, const Place& anPlace, const Colour& anColour)
{
    const auto [nLeft, nRight, nBottom, nTop] = anPlace;
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        for (int x = 0; x < cPicture.m_nWidth; ++x)
        {
            const bool bInColumns = x >= nLeft && x <= nRight;
            const bool bInRows = y >= nBottom && y <= nTop;
            if ((bInColumns && (y == nBottom || y == nTop)) || (bInRows && (x == nLeft || x == nRight)))
            {
                std::copy(anColour.begin(), anColour.end(), Row<unsigned char>(cPicture, y) + x * cPicture.m_nPlanes);
            }
        }
    }
}

Place ClampedPlace(const Place& anPlace, int nWidth, int nHeight)
{
    return {std::max(0L, anPlace[0]), std::min(nWidth - 1L, anPlace[1]), std::max(0L, anPlace[2]),
            std::min(nHeight - 1L, anPlace[3])};
}

/// The upright rectangle around a place of the picture that was turned by dAngle, in the unturned one.
Place TurnedBackByDefinition(const Place& anPlace, double dAngle, int nWidth, int nHeight)
{
    const double dCos = std::cos(dAngle);
    const double dSin = std::sin(dAngle);
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
    std::vector<double> adX;
    std::vector<double> adY;
    for (const int nX : {0, 1})
    {
        for (const int nY : {2, 3})
        {
            const double dX = static_cast<double>(anPlace[static_cast<std::size_t>(nX)]) - std::trunc(-dMinX);
            const double dY = static_cast<double>(anPlace[static_cast<std::size_t>(nY)]) - std::trunc(-dMinY);
            adX.push_back(dCos * dX + dSin * dY);
            adY.push_back(dCos * dY - dSin * dX);
        }
    }
    // Left, lower, right and upper sides are looked for among two corners each; with a lean below a quarter turn
    // these are the extreme ones.
    return ClampedPlace({static_cast<long>(*std::min_element(adX.begin(), adX.end())),
                         static_cast<long>(*std::max_element(adX.begin(), adX.end())),
                         static_cast<long>(*std::min_element(adY.begin(), adY.end())),
                         static_cast<long>(*std::max_element(adY.begin(), adY.end()))},
                        nWidth, nHeight);
}

bool HasColour(const ClImage& cPicture, int x, int y, const Colour& anColour)
{
    return std::equal(anColour.begin(), anColour.end(), Row<unsigned char>(cPicture, y) + x * cPicture.m_nPlanes);
}
} // namespace

TEST(IpFourPrintDemo, WithoutFingersThePictureIsAColourCopy)
{
    ClDemoFixture c(161, 90);
    ClImage cExpected;
    MakeColour(c.m_cInput, cExpected);
    EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
    EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture));
    EXPECT_EQ(ClImage::eRGB, c.m_cPicture.m_eContent);
    EXPECT_EQ(3, c.m_cPicture.m_nPlanes);
    EXPECT_EQ(19685, c.m_cPicture.m_nXRes);
}

TEST(IpFourPrintDemo, AnUprightHandHasOneFrameForEachFinger)
{
    for (const bool bReverse : {false, true})
    {
        ClDemoFixture c(320, 200);
        c.AddFinger(MakeBox(3, 60, 5, 90), 11, 21); // 2.5 times 11 and 21 are 27.5 and 52.5: truncated
        c.AddFinger(MakeBox(0, 70, 0, 80), 60, 8);
        c.AddFinger(MakeBox(50, 55, 60, 60), 60, 8); // a line
        c.m_c.m_bReverseOrder = bReverse;
        ClImage cExpected;
        MakeColour(c.m_cInput, cExpected);
        DrawByDefinition(cExpected, {30, 87, 57, 142}, anRed);
        DrawByDefinition(cExpected, {150, 220, 20, 100}, anRed);
        DrawByDefinition(cExpected, {200, 205, 80, 80}, anRed);
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture));
    }
}

TEST(IpFourPrintDemo, AColourInputKeepsItsColours)
{
    for (const int nPlanes : {3, 4})
    {
        ClDemoFixture c(100, 80, nPlanes);
        c.AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
        ClImage cExpected;
        cExpected = c.m_cInput;
        DrawByDefinition(cExpected, {25, 65, 10, 60}, anRed); // a fourth plane keeps its samples
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture)) << nPlanes;
    }
}

TEST(IpFourPrintDemo, PicturesThatCannotHoldTheColourHaveNoFrames)
{
    ClDemoFixture cTwoPlanes(100, 80, 2);
    cTwoPlanes.AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
    EXPECT_EQ(0, cTwoPlanes.m_c.CreateDemoPicture(&cTwoPlanes.m_cPicture, 0.0));
    EXPECT_TRUE(SamePixels(cTwoPlanes.m_cInput, cTwoPlanes.m_cPicture));

    ClDemoFixture cWide(100, 80, 1, ClImage::eUInt16);
    cWide.AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
    ClImage cExpected;
    MakeColour(cWide.m_cInput, cExpected);
    EXPECT_EQ(0, cWide.m_c.CreateDemoPicture(&cWide.m_cPicture, 0.0));
    EXPECT_TRUE(SamePixels(cExpected, cWide.m_cPicture));
}

TEST(IpFourPrintDemo, FramesNeverLeaveThePicture)
{
    constexpr int nFar = Box::nNothingSeen;
    const Box acBox[] = {
        MakeBox(-500, 30, -500, 20),       // over the lower left corner
        MakeBox(60, 5000, 50, 5000),       // over the upper right corner
        MakeBox(-9000, 9000, -9000, 9000), // around the picture
        MakeBox(500, 600, 10, 20),         // right of it
        MakeBox(-600, -500, 10, 20),       // left of it
        MakeBox(10, 20, 500, 600),         // above it
        MakeBox(10, 20, -600, -500),       // below it
        MakeBox(nFar, 0, nFar, 0),         // nothing seen
        MakeBox(50, 40, 10, 20),           // right limit left of the left one
        MakeBox(10, 20, 50, 40),           // upper limit below the lower one
        MakeBox(2147483647, 2147483647, -2147483647 - 1, 2147483647),
    };
    for (const Box& cBox : acBox)
    {
        ClDemoFixture c(101, 80); // rows with padding
        c.AddFinger(cBox, 0, 0);
        ClImage cExpected;
        MakeColour(c.m_cInput, cExpected);
        DrawByDefinition(cExpected, ClampedPlace({cBox.m_nMinX, cBox.m_nMaxX, cBox.m_nMinY, cBox.m_nMaxY}, 101, 80),
                         anRed);
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture)) << cBox.m_nMinX << " " << cBox.m_nMinY;
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 1.9)); // under the sanitizers
        EXPECT_EQ(101, c.m_cPicture.m_nWidth);
    }
}

TEST(IpFourPrintDemo, ALeaningHandHasASecondFrameInInputCoordinates)
{
    for (const double dHand : {1.2, 1.5, 1.8, 2.1})
    {
        ClDemoFixture c(300, 240);
        c.AddFinger(MakeBox(5, 60, 5, 70), 40, 40);
        c.AddFinger(MakeBox(0, 50, 0, 60), 70, 60);
        const Place anPlaces[] = {{105, 160, 105, 170}, {175, 225, 150, 210}};
        // The picture is turned with the first frames in it, and back, by the operators.
        ClImage cTurned, cExpected, cBack;
        ASSERT_EQ(0, ClIpRotate().ApplyParam(c.m_cInput, cTurned, ClVector(0, 0), 1.57 - dHand, true, true));
        MakeColour(cTurned, cExpected);
        for (const Place& anPlace : anPlaces)
        {
            DrawByDefinition(cExpected, ClampedPlace(anPlace, cTurned.m_nWidth, cTurned.m_nHeight), anRed);
        }
        ASSERT_EQ(0, ClIpRotate().ApplyParam(cExpected, cBack, ClVector(0, 0), dHand + 4.71, true, true));
        ASSERT_EQ(0, ClIpCut().ApplyParam(cBack, (cBack.m_nWidth - 300) / 2, (cBack.m_nHeight - 240) / 2, 300, 240,
                                          cExpected));
        for (const Place& anPlace : anPlaces)
        {
            DrawByDefinition(cExpected, TurnedBackByDefinition(anPlace, 1.57 - dHand, 300, 240), anMagenta);
        }
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, dHand));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture)) << dHand;
    }
}

TEST(IpFourPrintDemo, TheFramesOfALeaningFingerStandAroundIt)
{
    constexpr double dHand = 1.9;
    ClDemoFixture c(400, 300);
    std::fill_n(c.m_cInput.Data(), 400 * 300, static_cast<unsigned char>(255));
    for (int y = 130; y < 170; ++y)
    {
        std::fill_n(Row<unsigned char>(c.m_cInput, y) + 190, 20, static_cast<unsigned char>(0));
    }
    // Where the finger lies in the turned picture, with some room around it.
    ClImage cTurned;
    ASSERT_EQ(0, ClIpRotate().ApplyParam(c.m_cInput, cTurned, ClVector(0, 0), 1.57 - dHand, true, false));
    Box cBox;
    for (int y = 0; y < cTurned.m_nHeight; ++y)
    {
        for (int x = 0; x < cTurned.m_nWidth; ++x)
        {
            if (Row<unsigned char>(cTurned, y)[x] == 0)
            {
                cBox = MakeBox(std::min(cBox.m_nMinX, x), std::max(cBox.m_nMaxX, x), std::min(cBox.m_nMinY, y),
                               std::max(cBox.m_nMaxY, y));
            }
        }
    }
    c.AddFinger(MakeBox(cBox.m_nMinX - 5, cBox.m_nMaxX + 5, cBox.m_nMinY - 5, cBox.m_nMaxY + 5), 0, 0);
    ASSERT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, dHand));
    Box cFrame;
    int nDark = 0;
    for (int y = 0; y < 300; ++y)
    {
        for (int x = 0; x < 400; ++x)
        {
            if (HasColour(c.m_cPicture, x, y, anMagenta))
            {
                cFrame = MakeBox(std::min(cFrame.m_nMinX, x), std::max(cFrame.m_nMaxX, x), std::min(cFrame.m_nMinY, y),
                                 std::max(cFrame.m_nMaxY, y));
            }
            nDark += HasColour(c.m_cPicture, x, y, {0, 0, 0});
            // The turn and the turn back leave the finger where it was, up to the pixels at its rim.
            const bool bInside = x >= 194 && x < 206 && y >= 134 && y < 166;
            EXPECT_TRUE(!bInside || HasColour(c.m_cPicture, x, y, {0, 0, 0})) << x << " " << y;
        }
    }
    EXPECT_LE(nDark, 20 * 40);
    EXPECT_GE(nDark, 16 * 36);
    EXPECT_LT(cFrame.m_nMinX, 190);
    EXPECT_GT(cFrame.m_nMaxX, 209);
    EXPECT_LT(cFrame.m_nMinY, 130);
    EXPECT_GT(cFrame.m_nMaxY, 169);
    EXPECT_GT(cFrame.m_nMinX, 150);
    EXPECT_LT(cFrame.m_nMaxX, 250);
}

TEST(IpFourPrintDemo, FramesOfARunAreItsRectangles)
{
    ClImage cInput, cBinary, cPicture;
    MakeImage(ClSlapPicture(SlapScenes::TwoFingers(3937)), cInput);
    ClIpFourPrintSegmentation c;
    ASSERT_EQ(0, c.ApplyParam(cInput, cBinary));
    ASSERT_EQ(2u, c.m_aRects.Entries());
    ASSERT_EQ(0, c.CreateDemoPicture(&cPicture, c.m_dRotation));
    ClImage cExpected;
    MakeColour(cInput, cExpected);
    for (unsigned long i = 0; i < 2; ++i)
    {
        const tagRECT& r = c.m_aRects[i];
        DrawByDefinition(cExpected, {r.left, r.right, r.bottom, r.top}, anRed);
    }
    EXPECT_TRUE(SamePixels(cExpected, cPicture));
}

TEST(IpFourPrintDemo, TheProcessorStaysAsItIs)
{
    ClDemoFixture c(300, 240);
    c.AddFinger(MakeBox(5, 60, 5, 70), 40, 40);
    ClImage cBefore;
    cBefore = c.m_cInput;
    for (const double dHand : {0.0, 1.2})
    {
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, dHand));
        EXPECT_TRUE(SamePixels(cBefore, c.m_cInput));
        EXPECT_EQ(0.0, c.m_c.m_dRotation);
        EXPECT_EQ(&c.m_cInput, c.m_c.m_pInImage);
        EXPECT_EQ(1, c.m_c.m_nFingers);
        EXPECT_EQ((std::vector<int>{5, 60, 5, 70}), Limits(c.m_c.m_aResultBoxes[0]));
    }
}

TEST(IpFourPrintDemo, RefusesMissingImagesAndToDrawOnTheInput)
{
    ClDemoFixture c(100, 80);
    ClImage cBefore;
    cBefore = c.m_cInput;
    EXPECT_EQ(-10, c.m_c.CreateDemoPicture(nullptr, 0.0));
    EXPECT_EQ(-10, c.m_c.CreateDemoPicture(&c.m_cInput, 1.2));
    EXPECT_TRUE(SamePixels(cBefore, c.m_cInput));
    c.m_c.m_pInImage = nullptr;
    EXPECT_EQ(-10, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
}

TEST(IpFourPrintDemo, AnInputThatCannotBeTurnedLeavesThePictureEmpty)
{
    ClImage cEmpty;
    ClDemoFixture cWide(100, 80, 1, ClImage::eUInt16);
    ClDemoFixture cNone(100, 80);
    cNone.m_c.m_pInImage = &cEmpty;
    for (ClDemoFixture* p : {&cWide, &cNone})
    {
        p->AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
        p->m_cPicture.NewWithType(ClImage::eUInt8, 10, 10, 3, 0, 0);
        EXPECT_EQ(0, p->m_c.CreateDemoPicture(&p->m_cPicture, 1.2));
        EXPECT_EQ(nullptr, p->m_cPicture.Data());
    }
    EXPECT_EQ(0, cNone.m_c.CreateDemoPicture(&cNone.m_cPicture, 0.0));
    EXPECT_EQ(nullptr, cNone.m_cPicture.Data());
}

TEST(IpFourPrintDemo, AnglesWithoutMeaningDoNoHarm)
{
    for (const double dAngle : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, 1e-300, 1.57, -4.71})
    {
        ClDemoFixture c(100, 80);
        c.AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, dAngle)) << dAngle;
    }
}

TEST(IpFourPrintDemo, FingersWithoutBoxesHaveNoFrames)
{
    ClDemoFixture c(100, 80);
    c.AddFinger(MakeBox(0, 40, 0, 50), 10, 4);
    c.m_c.m_nFingers = 7;
    c.m_c.m_aResultBoxes.Add(MakeBox(0, 10, 0, 10)); // without an origin
    ClImage cExpected;
    MakeColour(c.m_cInput, cExpected);
    DrawByDefinition(cExpected, {25, 65, 10, 60}, anRed);
    for (const bool bReverse : {false, true})
    {
        c.m_c.m_bReverseOrder = bReverse;
        EXPECT_EQ(0, c.m_c.CreateDemoPicture(&c.m_cPicture, 0.0));
        EXPECT_TRUE(SamePixels(cExpected, c.m_cPicture));
    }
}

TEST(IpFourPrintDemo, CentresAreCopiedWithTheirCapacity)
{
    ClIpFourPrintSegmentation c;
    for (int i = 0; i < 3; ++i)
    {
        c.m_aCenters.Add(ClVector(i + 0.5, -i));
    }
    ASSERT_EQ(10u, c.m_aCenters.m_nEntries);
    TpArrayDynamic<ClVector, 10> aCenters;
    for (int i = 0; i < 25; ++i)
    {
        aCenters.Add(ClVector(7, 7)); // room for more than is copied
    }
    c.SaveKoords(aCenters);
    EXPECT_EQ(10u, aCenters.m_nEntries);
    ASSERT_EQ(3u, aCenters.Entries());
    for (unsigned long i = 0; i < 3; ++i)
    {
        EXPECT_EQ(static_cast<double>(i) + 0.5, aCenters[i].m_dX);
        EXPECT_EQ(-static_cast<double>(i), aCenters[i].m_dY);
    }
    c.SaveKoords(c.m_aCenters);
    EXPECT_EQ(3u, c.m_aCenters.Entries());
    EXPECT_EQ(2.5, c.m_aCenters[2].m_dX);
}

TEST(IpFourPrintDemo, NoCentresLeaveAnEmptyList)
{
    const ClIpFourPrintSegmentation c;
    TpArrayDynamic<ClVector, 10> aCenters;
    aCenters.Add(ClVector(7, 7));
    c.SaveKoords(aCenters);
    EXPECT_EQ(0u, aCenters.Entries());
    EXPECT_EQ(0u, aCenters.m_nEntries);
}

TEST(IpFourPrintDemo, TheFirstFourBoxesOfEachListAreCopiedWithAllFields)
{
    ClIpFourPrintSegmentation c;
    Boxes* const apList[] = {&c.m_aBoxes, &c.m_aResultBoxes, &c.m_aOriginBoxes};
    for (int n = 0; n < 3; ++n)
    {
        for (int i = 0; i < 5; ++i)
        {
            Box cBox = MakeBox(100 * n + i, 20, 30, 40);
            cBox.m_fRed = 0.25f;
            cBox.m_fAlpha = 0.5f;
            cBox.m_bMarked = true;
            cBox.m_bFlag1 = true;
            apList[n]->Add(cBox);
        }
    }
    Box acBox[3][4];
    c.SaveBoxes(acBox[0][0], acBox[0][1], acBox[0][2], acBox[0][3]);
    c.SaveResultBoxes(acBox[1][0], acBox[1][1], acBox[1][2], acBox[1][3]);
    c.SaveAfisBoxes(acBox[2][0], acBox[2][1], acBox[2][2], acBox[2][3]);
    for (int n = 0; n < 3; ++n)
    {
        for (int i = 0; i < 4; ++i)
        {
            EXPECT_EQ((std::vector<int>{100 * n + i, 20, 30, 40}), Limits(acBox[n][i]));
            EXPECT_EQ(0.25f, acBox[n][i].m_fRed);
            EXPECT_EQ(0.5f, acBox[n][i].m_fAlpha);
            EXPECT_TRUE(acBox[n][i].m_bMarked);
            EXPECT_TRUE(acBox[n][i].m_bFlag1);
        }
    }
}

TEST(IpFourPrintDemo, MissingBoxesAreCopiedAsBoxesThatHaveSeenNothing)
{
    ClIpFourPrintSegmentation c;
    for (int i = 0; i < 4; ++i)
    {
        c.m_aBoxes.Add(MakeBox(i, 20, 30, 40));
    }
    c.m_aBoxes.RemoveAt(3); // its storage stays
    c.m_aBoxes.RemoveAt(2);
    Box acBox[4];
    for (Box& cBox : acBox)
    {
        cBox = MakeBox(7, 7, 7, 7);
        cBox.m_bMarked = true;
    }
    c.SaveBoxes(acBox[0], acBox[1], acBox[2], acBox[3]);
    EXPECT_EQ((std::vector<int>{0, 20, 30, 40}), Limits(acBox[0]));
    EXPECT_EQ((std::vector<int>{1, 20, 30, 40}), Limits(acBox[1]));
    EXPECT_EQ(Limits(Box()), Limits(acBox[2]));
    EXPECT_EQ(Limits(Box()), Limits(acBox[3]));
    EXPECT_FALSE(acBox[3].m_bMarked);
    c.SaveResultBoxes(acBox[0], acBox[1], acBox[2], acBox[3]); // an empty list without storage
    EXPECT_EQ(Limits(Box()), Limits(acBox[0]));
}

TEST(IpFourPrintDemo, AnExhaustedHeapComesOutAsBadAlloc)
{
    for (const double dHand : {0.0, 1.2})
    {
        ClDemoFixture c(60, 50);
        c.AddFinger(MakeBox(0, 20, 0, 20), 4, 4);
        EXPECT_GE(ExpectBadAllocAtEveryAllocation(
                      [&]
                      {
                          ClImage cPicture;
                          c.m_c.CreateDemoPicture(&cPicture, dHand);
                          EXPECT_EQ(60, cPicture.m_nWidth);
                      }),
                  dHand == 0.0 ? 3 : 10);
    }
    ClIpFourPrintSegmentation c;
    c.m_aCenters.Add(ClVector(1, 2));
    TpArrayDynamic<ClVector, 10> aCenters;
    EXPECT_EQ(1, ExpectBadAllocAtEveryAllocation([&] { c.SaveKoords(aCenters); }));
}
