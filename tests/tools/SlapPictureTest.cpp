#include "SlapPicture.hpp"
#include "SmallSlap.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace SlapScenes
{
// What the test program prints for a parameter.
static void PrintTo(const ClNamedScene& cScene, std::ostream* pTo)
{
    *pTo << cScene.m_szName;
}
} // namespace SlapScenes

namespace
{
constexpr int n100Ppi = 3937;
constexpr int n200Ppi = 7874;
constexpr int n500Ppi = 19685;

bool IsInk(const ClSlapPicture& cPicture, int nX, int nY)
{
    return PixelAt(cPicture, nX, nY) < ClSlapPicture::m_nInkLimit;
}

int WidthOf(const ClSlapRect& cRect)
{
    return cRect.right - cRect.left;
}

int HeightOf(const ClSlapRect& cRect)
{
    return cRect.top - cRect.bottom;
}

// nMargin widens the rectangle on all sides.
bool Contains(const ClSlapRect& cRect, int nX, int nY, int nMargin = 0)
{
    return nX >= cRect.left - nMargin && nX < cRect.right + nMargin && nY >= cRect.bottom - nMargin &&
           nY < cRect.top + nMargin;
}

std::vector<ClSlapRect> AllRects(const ClSlapPicture& cPicture)
{
    std::vector<ClSlapRect> aRects = cPicture.m_aFingers;
    aRects.insert(aRects.end(), cPicture.m_aOthers.begin(), cPicture.m_aOthers.end());
    return aRects;
}

bool IsInAny(const std::vector<ClSlapRect>& aRects, int nX, int nY, int nMargin = 0)
{
    return std::any_of(aRects.begin(), aRects.end(),
                       [=](const ClSlapRect& cRect) { return Contains(cRect, nX, nY, nMargin); });
}

bool ColumnHasInk(const ClSlapPicture& cPicture, const ClSlapRect& cRect, int nX)
{
    for (int y = cRect.bottom; y < cRect.top; ++y)
        if (IsInk(cPicture, nX, y)) return true;
    return false;
}

bool RowHasInk(const ClSlapPicture& cPicture, const ClSlapRect& cRect, int nY)
{
    for (int x = cRect.left; x < cRect.right; ++x)
        if (IsInk(cPicture, x, nY)) return true;
    return false;
}

// Rows of ink from the lowest to the highest in one column of a rectangle.
int InkSpanOfColumn(const ClSlapPicture& cPicture, const ClSlapRect& cRect, int nX)
{
    int nLowest = cRect.top;
    int nHighest = cRect.bottom - 1;
    for (int y = cRect.bottom; y < cRect.top; ++y)
    {
        if (!IsInk(cPicture, nX, y)) continue;
        nLowest = std::min(nLowest, y);
        nHighest = std::max(nHighest, y);
    }
    return std::max(0, nHighest - nLowest + 1);
}

double MeanGrey(const ClSlapPicture& cPicture, const ClSlapRect& cRect)
{
    double dSum = 0.0;
    for (int y = cRect.bottom; y < cRect.top; ++y)
        for (int x = cRect.left; x < cRect.right; ++x) dSum += PixelAt(cPicture, x, y);
    return dSum / (static_cast<double>(WidthOf(cRect)) * HeightOf(cRect));
}

// The middle of a rectangle, half as wide and half as high.
ClSlapRect InnerHalf(const ClSlapRect& cRect)
{
    return {cRect.left + WidthOf(cRect) / 4, cRect.top - HeightOf(cRect) / 4, cRect.right - WidthOf(cRect) / 4,
            cRect.bottom + HeightOf(cRect) / 4};
}

// Product of the slopes in x and y, summed up: positive where ridges fall to the right, negative where they rise.
double SlopeProduct(const ClSlapPicture& cPicture, const ClSlapRect& cRect)
{
    double dSum = 0.0;
    for (int y = cRect.bottom; y < cRect.top; ++y)
        for (int x = cRect.left; x < cRect.right; ++x)
            dSum += (PixelAt(cPicture, x + 1, y) - PixelAt(cPicture, x - 1, y)) *
                    (PixelAt(cPicture, x, y + 1) - PixelAt(cPicture, x, y - 1));
    return dSum;
}

// Direction of the longer axis of all ink, from 0 to pi, by second moments.
double OrientationOfInk(const ClSlapPicture& cPicture)
{
    double dCount = 0, dX = 0, dY = 0, dXX = 0, dYY = 0, dXY = 0;
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        for (int x = 0; x < cPicture.m_nWidth; ++x)
        {
            if (!IsInk(cPicture, x, y)) continue;
            dCount += 1;
            dX += x;
            dY += y;
            dXX += static_cast<double>(x) * x;
            dYY += static_cast<double>(y) * y;
            dXY += static_cast<double>(x) * y;
        }
    }
    dXX = dXX / dCount - dX * dX / dCount / dCount;
    dYY = dYY / dCount - dY * dY / dCount / dCount;
    dXY = dXY / dCount - dX * dY / dCount / dCount;
    const double dAngle = 0.5 * std::atan2(2 * dXY, dXX - dYY);
    return dAngle < 0 ? dAngle + std::acos(-1.0) : dAngle;
}

std::uint64_t Fnv1a(const std::vector<std::uint8_t>& aBytes)
{
    std::uint64_t nHash = 14695981039346656037ull;
    for (const std::uint8_t nByte : aBytes) nHash = (nHash ^ nByte) * 1099511628211ull;
    return nHash;
}

ClSlapScene SceneNamed(const char* szName, int nPelsPerMetre)
{
    const SlapScenes::ClNamedScene* pScene = SlapScenes::Find(szName);
    if (pScene == nullptr) throw std::invalid_argument(szName);
    return pScene->m_pMake(nPelsPerMetre);
}

// Drawn once for all tests of the program that only look at it.
const ClSlapPicture& Drawn(const SlapScenes::ClNamedScene& cScene, int nPelsPerMetre)
{
    static std::map<std::pair<std::string, int>, ClSlapPicture> aDrawn;
    const std::pair<std::string, int> cKey(cScene.m_szName, nPelsPerMetre);
    const auto pDrawn = aDrawn.find(cKey);
    if (pDrawn != aDrawn.end()) return pDrawn->second;
    return aDrawn.emplace(cKey, ClSlapPicture(cScene.m_pMake(nPelsPerMetre))).first->second;
}

class SlapPictureScenes : public testing::TestWithParam<SlapScenes::ClNamedScene>
{
};
} // namespace

TEST_P(SlapPictureScenes, SameSceneGivesTheSameBytesAndTruthTwice)
{
    const ClSlapPicture& cFirst = Drawn(GetParam(), n100Ppi);
    const ClSlapPicture cSecond(GetParam().m_pMake(n100Ppi));
    EXPECT_EQ(cFirst.m_aPixels, cSecond.m_aPixels);
    const std::vector<ClSlapRect> aFirst = AllRects(cFirst);
    const std::vector<ClSlapRect> aSecond = AllRects(cSecond);
    ASSERT_EQ(aFirst.size(), aSecond.size());
    for (std::size_t i = 0; i < aFirst.size(); ++i)
    {
        EXPECT_EQ(aFirst[i].left, aSecond[i].left);
        EXPECT_EQ(aFirst[i].top, aSecond[i].top);
        EXPECT_EQ(aFirst[i].right, aSecond[i].right);
        EXPECT_EQ(aFirst[i].bottom, aSecond[i].bottom);
    }
}

TEST_P(SlapPictureScenes, NoInkLiesOutsideTheRectanglesOfThePartsAndTheGroundIsLight)
{
    const ClSlapPicture& cPicture = Drawn(GetParam(), n200Ppi);
    const std::vector<ClSlapRect> aRects = AllRects(cPicture);
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        for (int x = 0; x < cPicture.m_nWidth; ++x)
        {
            const int nGrey = PixelAt(cPicture, x, y);
            ASSERT_TRUE(nGrey >= ClSlapPicture::m_nInkLimit || IsInAny(aRects, x, y)) << x << ", " << y;
            // The faint outermost samples of a part reach a little further than its ink.
            if (!IsInAny(aRects, x, y, 4))
            {
                ASSERT_GE(nGrey, 235) << x << ", " << y;
                ASSERT_LE(nGrey, 250) << x << ", " << y;
            }
        }
    }
}

TEST_P(SlapPictureScenes, EachRectangleIsTightAroundInkAndLiesInThePicture)
{
    const ClSlapPicture& cPicture = Drawn(GetParam(), n200Ppi);
    for (const ClSlapRect& cRect : AllRects(cPicture))
    {
        ASSERT_GE(cRect.left, 0);
        ASSERT_GE(cRect.bottom, 0);
        ASSERT_LE(cRect.right, cPicture.m_nWidth);
        ASSERT_LE(cRect.top, cPicture.m_nHeight);
        ASSERT_GT(WidthOf(cRect), 0);
        ASSERT_GT(HeightOf(cRect), 0);
        EXPECT_TRUE(ColumnHasInk(cPicture, cRect, cRect.left));
        EXPECT_TRUE(ColumnHasInk(cPicture, cRect, cRect.right - 1));
        EXPECT_TRUE(RowHasInk(cPicture, cRect, cRect.bottom));
        EXPECT_TRUE(RowHasInk(cPicture, cRect, cRect.top - 1));
    }
}

TEST_P(SlapPictureScenes, FingersStandFromLeftToRightAndKeepTheirDistance)
{
    const ClSlapPicture& cPicture = Drawn(GetParam(), n100Ppi);
    for (std::size_t i = 1; i < cPicture.m_aFingers.size(); ++i)
    {
        const ClSlapRect& cLeft = cPicture.m_aFingers[i - 1];
        const ClSlapRect& cRight = cPicture.m_aFingers[i];
        EXPECT_LT(cLeft.left, cRight.left);
        EXPECT_LT(cLeft.right, cRight.right);
        const double dX = 0.5 * (cRight.left + cRight.right - cLeft.left - cLeft.right);
        const double dY = 0.5 * (cRight.bottom + cRight.top - cLeft.bottom - cLeft.top);
        EXPECT_GT(std::hypot(dX, dY), 50.0) << "too near to be two fingers at 100 pixels per inch";
    }
}

TEST_P(SlapPictureScenes, FingertipsHaveTheSizeOfFingersAt100PixelsPerInch)
{
    const ClSlapPicture& cPicture = Drawn(GetParam(), n100Ppi);
    EXPECT_GE(cPicture.m_nWidth, 160);
    EXPECT_GE(cPicture.m_nHeight, 160);
    ASSERT_FALSE(cPicture.m_aFingers.empty());
    for (const ClSlapRect& cRect : cPicture.m_aFingers)
    {
        EXPECT_GT(WidthOf(cRect) * HeightOf(cRect) * 7 / 10, 2500);
        EXPECT_LT(WidthOf(cRect) * HeightOf(cRect), 8000);
        EXPECT_LT(std::max(WidthOf(cRect), HeightOf(cRect)), 110);
    }
}

TEST_P(SlapPictureScenes, PartsAreClearlyDarkerThanTheGround)
{
    const ClSlapPicture& cPicture = Drawn(GetParam(), n100Ppi);
    for (const ClSlapRect& cRect : AllRects(cPicture))
    {
        EXPECT_LT(MeanGrey(cPicture, InnerHalf(cRect)), 175.0);
        EXPECT_GT(MeanGrey(cPicture, InnerHalf(cRect)), 90.0);
    }
}

TEST_P(SlapPictureScenes, SizesGrowWithTheResolution)
{
    const ClSlapPicture& cCoarse = Drawn(GetParam(), n100Ppi);
    const ClSlapPicture& cFine = Drawn(GetParam(), n200Ppi);
    ASSERT_EQ(cCoarse.m_aFingers.size(), cFine.m_aFingers.size());
    for (std::size_t i = 0; i < cFine.m_aFingers.size(); ++i)
    {
        // Half a millimetre, two coarse pixels, is lost or won where an edge is faint.
        EXPECT_NEAR(cFine.m_aFingers[i].left, 2 * cCoarse.m_aFingers[i].left, 4);
        EXPECT_NEAR(cFine.m_aFingers[i].right, 2 * cCoarse.m_aFingers[i].right, 4);
        EXPECT_NEAR(cFine.m_aFingers[i].bottom, 2 * cCoarse.m_aFingers[i].bottom, 4);
        EXPECT_NEAR(cFine.m_aFingers[i].top, 2 * cCoarse.m_aFingers[i].top, 4);
    }
}

INSTANTIATE_TEST_SUITE_P(All, SlapPictureScenes, testing::ValuesIn(SlapScenes::All()),
                         [](const auto& cInfo)
                         {
                             std::string sName = cInfo.param.m_szName;
                             std::replace(sName.begin(), sName.end(), '-', '_');
                             return sName;
                         });

// The bytes as first drawn with g++ 12. Another compiler, level of optimisation or machine must draw the same.
TEST(SlapPicture, BytesAreTheSameOnEveryCompiler)
{
    EXPECT_EQ(15711374481091610110ull, Fnv1a(ClSlapPicture(SceneNamed("two-fingers", n500Ppi)).m_aPixels));
    EXPECT_EQ(17480725123743840305ull, Fnv1a(ClSlapPicture(SceneNamed("leaning-hand-left", n100Ppi)).m_aPixels));
    EXPECT_EQ(2414289810953119920ull, Fnv1a(ClSlapPicture(SceneNamed("pair-with-palm", 4016)).m_aPixels));
}

TEST(SlapPicture, AnotherSeedGivesOtherNoise)
{
    ClSlapScene cScene = SmallScene(n100Ppi);
    const ClSlapPicture cFirst(cScene);
    cScene.m_nSeed = 2;
    EXPECT_NE(cFirst.m_aPixels, ClSlapPicture(cScene).m_aPixels);
}

TEST(SlapPicture, ScenesHoldTheFingersAndPartsOfTheirNames)
{
    const struct
    {
        const char* m_szName;
        std::size_t m_nFingers;
        std::size_t m_nOthers;
    } aExpected[] = {{"one-finger", 1, 0},        {"two-fingers", 2, 0},        {"three-fingers", 3, 0},
                     {"four-fingers-left", 4, 0}, {"four-fingers-right", 4, 0}, {"two-flat-thumbs", 2, 0},
                     {"leaning-hand-left", 4, 0}, {"leaning-hand-right", 4, 0}, {"leaning-pair", 2, 0},
                     {"touching-fingers", 2, 0},  {"hand-with-palm", 4, 9},     {"pair-with-palm", 2, 5}};
    for (const auto& cExpected : aExpected)
    {
        const SlapScenes::ClNamedScene* pScene = SlapScenes::Find(cExpected.m_szName);
        ASSERT_NE(nullptr, pScene) << cExpected.m_szName;
        const ClSlapPicture& cPicture = Drawn(*pScene, n100Ppi);
        EXPECT_EQ(cExpected.m_nFingers, cPicture.m_aFingers.size()) << cExpected.m_szName;
        EXPECT_EQ(cExpected.m_nOthers, cPicture.m_aOthers.size()) << cExpected.m_szName;
    }
    EXPECT_EQ(std::size(aExpected), SlapScenes::All().size());
}

TEST(SlapPicture, SceneNamesAreUniqueAndAnUnknownOneIsNotFound)
{
    std::set<std::string> aNames;
    for (const SlapScenes::ClNamedScene& cScene : SlapScenes::All())
    {
        EXPECT_TRUE(aNames.insert(cScene.m_szName).second) << cScene.m_szName;
        ASSERT_NE(nullptr, SlapScenes::Find(cScene.m_szName));
        EXPECT_STREQ(cScene.m_szDescription, SlapScenes::Find(cScene.m_szName)->m_szDescription);
    }
    EXPECT_EQ(nullptr, SlapScenes::Find("six-fingers"));
    EXPECT_EQ(nullptr, SlapScenes::Find(""));
}

TEST(SlapPicture, SizeInPixelsIsTheTruncatedProductOfLengthAndResolution)
{
    const struct
    {
        int m_nPels;
        int m_nWidth;
        int m_nHeight;
    } aExpected[] = {{3937, 161, 161}, {4015, 164, 164}, {4025, 165, 165}, {19685, 807, 807}, {39370, 1614, 1614}};
    for (const auto& cExpected : aExpected)
    {
        const ClSlapPicture cPicture(SlapScenes::TwoFingers(cExpected.m_nPels));
        EXPECT_EQ(cExpected.m_nWidth, cPicture.m_nWidth);
        EXPECT_EQ(cExpected.m_nHeight, cPicture.m_nHeight);
        EXPECT_EQ(cExpected.m_nPels, cPicture.m_nPelsPerMetre);
        EXPECT_EQ(static_cast<std::size_t>(cExpected.m_nWidth) * static_cast<std::size_t>(cExpected.m_nHeight),
                  cPicture.m_aPixels.size());
    }
}

TEST(SlapPicture, FingertipLiesWhereTheScenePutsIt)
{
    const ClSlapScene cScene = SlapScenes::OneFinger(n500Ppi);
    const ClSlapPart& cPart = cScene.m_aParts.at(0);
    const ClSlapRect cRect = ClSlapPicture(cScene).m_aFingers.at(0);
    const double dPixels = n500Ppi / 1e6; // for one micrometre
    const double dEdge = 700 * dPixels;   // the edge is rough by 0.5 mm, and a valley may lie there
    EXPECT_NEAR(cRect.left, (cPart.m_nTipX - cPart.m_nWidth / 2) * dPixels, dEdge);
    EXPECT_NEAR(cRect.right, (cPart.m_nTipX + cPart.m_nWidth / 2) * dPixels, dEdge);
    EXPECT_NEAR(cRect.top, cPart.m_nTipY * dPixels, dEdge);
    EXPECT_NEAR(cRect.bottom, (cPart.m_nTipY - cPart.m_nLength) * dPixels, dEdge);
}

TEST(SlapPicture, LeftHandIsTheRightHandInTheMirror)
{
    const ClSlapPicture cRight(SlapScenes::FourFingers(SlapScenes::eRightHand, n500Ppi));
    const ClSlapPicture cLeft(SlapScenes::FourFingers(SlapScenes::eLeftHand, n500Ppi));
    const auto& aRight = cRight.m_aFingers;
    const auto& aLeft = cLeft.m_aFingers;
    EXPECT_GT(aRight[0].top, aRight[3].top) << "the tips of a right hand fall towards the little finger at the right";
    EXPECT_LT(aLeft[0].top, aLeft[3].top);
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_NEAR(aRight[i].left, cLeft.m_nWidth - aLeft[3 - i].right, 20);
        EXPECT_NEAR(aRight[i].top, aLeft[3 - i].top, 10);
    }
}

TEST(SlapPicture, RidgesLieAboutNinePixelsApartAt500PixelsPerInch)
{
    const ClSlapPicture cPicture(SlapScenes::OneFinger(n500Ppi));
    const ClSlapRect& cRect = cPicture.m_aFingers.at(0);
    const int nX = (cRect.left + cRect.right) / 2;
    // Above the core a column of pixels crosses the arcs at a right angle. A ridge begins where a mean of three gets
    // dark.
    const int nFrom = cRect.top - HeightOf(cRect) * 2 / 5;
    const int nTo = cRect.top - HeightOf(cRect) / 20;
    int nRidges = 0;
    bool bOnRidge = false;
    for (int y = nFrom; y < nTo; ++y)
    {
        const int nSum = PixelAt(cPicture, nX, y - 1) + PixelAt(cPicture, nX, y) + PixelAt(cPicture, nX, y + 1);
        if (!bOnRidge && nSum < 3 * 125) ++nRidges;
        if (nSum < 3 * 125) bOnRidge = true;
        if (nSum > 3 * 160) bOnRidge = false;
    }
    EXPECT_NEAR(static_cast<double>(nTo - nFrom) / nRidges, 9.0, 1.0);
}

TEST(SlapPicture, RidgesOfAFingertipHaveNoConstantDirection)
{
    const ClSlapPicture cPicture(SlapScenes::ThreeFingers(n500Ppi));
    for (const ClSlapRect& cRect : cPicture.m_aFingers)
    {
        // Between tip and core the arcs rise at the left and fall at the right.
        const int nMiddle = (cRect.left + cRect.right) / 2;
        const int nThird = cRect.top - HeightOf(cRect) * 2 / 5;
        const int nTip = cRect.top - HeightOf(cRect) / 8;
        EXPECT_LT(SlopeProduct(cPicture, {cRect.left + WidthOf(cRect) / 8, nTip, nMiddle, nThird}), 0.0);
        EXPECT_GT(SlopeProduct(cPicture, {nMiddle, nTip, cRect.right - WidthOf(cRect) / 8, nThird}), 0.0);
    }
}

TEST(SlapPicture, LeanTurnsTheFingerByItsAngleAndAPositiveOneMovesTheTipLeft)
{
    for (const double dLean : {-0.5, -0.1, 0.0, 0.1, 0.3, 0.5})
    {
        ClSlapScene cScene = SlapScenes::OneFinger(n100Ppi);
        cScene.m_dLean = dLean;
        EXPECT_NEAR(OrientationOfInk(ClSlapPicture(cScene)), std::acos(0.0) + dLean, 0.04) << dLean;
    }
}

TEST(SlapPicture, LeaningHandIsCompleteOnItsPicture)
{
    for (const double dLean : {-0.5, -0.1, 0.1, 0.5})
    {
        const ClSlapPicture cPicture(SlapScenes::LeaningHand(dLean, n100Ppi));
        ASSERT_EQ(4u, cPicture.m_aFingers.size());
        for (const ClSlapRect& cRect : cPicture.m_aFingers)
        {
            EXPECT_GT(cRect.left, 0);
            EXPECT_GT(cRect.bottom, 0);
            EXPECT_LT(cRect.right, cPicture.m_nWidth);
            EXPECT_LT(cRect.top, cPicture.m_nHeight);
        }
    }
}

TEST(SlapPicture, FlatThumbsLieAcrossThePictureWithTheirRoundTipsInTheMiddle)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFlatThumbs(n500Ppi));
    ASSERT_EQ(2u, cPicture.m_aFingers.size());
    const ClSlapRect& cLeft = cPicture.m_aFingers[0];
    const ClSlapRect& cRight = cPicture.m_aFingers[1];
    EXPECT_GT(WidthOf(cLeft), HeightOf(cLeft));
    EXPECT_GT(WidthOf(cRight), HeightOf(cRight));
    EXPECT_LT(cLeft.right, cPicture.m_nWidth / 2);
    EXPECT_GT(cRight.left, cPicture.m_nWidth / 2);
    const auto Span = [&](const ClSlapRect& cRect, int nX) { return InkSpanOfColumn(cPicture, cRect, nX); };
    EXPECT_LT(Span(cLeft, cLeft.right - 25), Span(cLeft, cLeft.left + 25) * 9 / 10);
    EXPECT_LT(Span(cRight, cRight.left + 25), Span(cRight, cRight.right - 25) * 9 / 10);
}

TEST(SlapPicture, TouchingFingersShareColumnsAndSeparateOnesDoNot)
{
    const ClSlapPicture cTouching(SlapScenes::TouchingFingers(n500Ppi));
    const ClSlapPicture cSeparate(SlapScenes::TwoFingers(n500Ppi));
    EXPECT_GT(cTouching.m_aFingers.at(0).right, cTouching.m_aFingers.at(1).left);
    EXPECT_LT(cSeparate.m_aFingers.at(0).right + 60, cSeparate.m_aFingers.at(1).left);
}

TEST(SlapPicture, JointsAndPalmLieBelowTheFingertipsWithAGap)
{
    const ClSlapPicture cPicture(SlapScenes::FingersWithJointsAndPalm(n500Ppi));
    for (std::size_t i = 0; i < 4; ++i)
    {
        const ClSlapRect& cTip = cPicture.m_aFingers[i];
        const ClSlapRect& cMiddle = cPicture.m_aOthers[2 * i];
        const ClSlapRect& cLower = cPicture.m_aOthers[2 * i + 1];
        EXPECT_GT(cTip.bottom, cMiddle.top + 30);
        EXPECT_GT(cMiddle.bottom, cLower.top + 30);
        EXPECT_GT(cLower.bottom, cPicture.m_aOthers[8].top + 30);
    }
    EXPECT_GT(WidthOf(cPicture.m_aOthers[8]), cPicture.m_nWidth * 9 / 10);
}

TEST(SlapPicture, PartBeyondTheEdgeIsCutOffThere)
{
    ClSlapScene cScene = SmallScene(n500Ppi);
    cScene.m_aParts[0].m_nTipX = 0;
    cScene.m_aParts[0].m_nTipY = 5000;
    const ClSlapPicture cPicture(cScene);
    const ClSlapRect& cRect = cPicture.m_aFingers.at(0);
    EXPECT_EQ(0, cRect.left);
    EXPECT_EQ(0, cRect.bottom);
    EXPECT_NEAR(cRect.right, 5000 * n500Ppi / 1e6, 14);
    EXPECT_NEAR(cRect.top, 5000 * n500Ppi / 1e6, 14);
}

TEST(SlapPicture, PartOutsideThePictureHasAnEmptyRectangle)
{
    ClSlapScene cScene = SmallScene(n100Ppi);
    cScene.m_aParts[0].m_nTipX = -20000;
    const ClSlapPicture cPicture(cScene);
    ASSERT_EQ(1u, cPicture.m_aFingers.size());
    EXPECT_EQ(0, WidthOf(cPicture.m_aFingers[0]));
    EXPECT_EQ(0, HeightOf(cPicture.m_aFingers[0]));
    EXPECT_GE(*std::min_element(cPicture.m_aPixels.begin(), cPicture.m_aPixels.end()), 235);
}

TEST(SlapPicture, SceneOutsideTheRangesIsRefused)
{
    const auto Refused = [](void (*pSpoil)(ClSlapScene&))
    {
        ClSlapScene cScene = SmallScene(n100Ppi);
        pSpoil(cScene);
        try
        {
            const ClSlapPicture cPicture(cScene);
        }
        catch (const std::invalid_argument&)
        {
            return true;
        }
        return false;
    };
    EXPECT_FALSE(Refused([](ClSlapScene&) {}));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_nPelsPerMetre = 999; }));
    EXPECT_FALSE(Refused([](ClSlapScene& cScene) { cScene.m_nPelsPerMetre = 1000; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_nPelsPerMetre = 80001; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_nWidth = 0; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_nHeight = 500001; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_dLean = 0.81; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_dLean = std::nan(""); }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_aParts[0].m_nWidth = 0; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_aParts[0].m_nLength = 0; }));
    EXPECT_TRUE(Refused([](ClSlapScene& cScene) { cScene.m_aParts[0].m_nTipX = 2000000000; }));
}
