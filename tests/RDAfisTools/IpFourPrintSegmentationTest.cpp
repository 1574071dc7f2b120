#include "FailingHeap.hpp"
#include "FourPrintReference.hpp"
#include "FourPrintTestTools.hpp"
#include "RDImageProcessing/OperatorFacts.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace
{
/// A picture with its truth, segmented.
struct ClRun
{
    explicit ClRun(const ClSlapScene& cScene) : m_cPicture(cScene)
    {
        MakeImage(m_cPicture, m_cInput);
        m_c.m_pInImage = &m_cInput;
        m_c.m_pOutImage = &m_cBinary;
        m_nResult = m_c.Apply();
    }

    /// The share of a drawn fingertip that a result rectangle holds.
    double Share(const ClSlapRect& cFinger, const tagRECT& cRect) const
    {
        const double dX = std::min(cFinger.right, cRect.right + 1) - std::max(cFinger.left, cRect.left);
        const double dY = std::min(cFinger.top, cRect.top + 1) - std::max(cFinger.bottom, cRect.bottom);
        const double dArea = static_cast<double>(cFinger.right - cFinger.left) * (cFinger.top - cFinger.bottom);
        return dX > 0 && dY > 0 ? dX * dY / dArea : 0.0;
    }

    /// How much of each drawn fingertip the rectangle of the same index holds; the smallest one.
    double SmallestShare() const
    {
        double dShare = m_c.m_aRects.Entries() == m_cPicture.m_aFingers.size() ? 1.0 : -1.0;
        for (unsigned long i = 0; i < m_c.m_aRects.Entries() && dShare > 0.0; ++i)
        {
            dShare = std::min(dShare, Share(m_cPicture.m_aFingers[i], m_c.m_aRects[i]));
        }
        return dShare;
    }

    /// Whether every rectangle lies in the input and is bottom-up.
    bool RectanglesAreProper() const
    {
        bool bProper = m_c.m_aRects.Entries() == m_c.m_aImages.Entries();
        for (unsigned long i = 0; i < m_c.m_aRects.Entries(); ++i)
        {
            const tagRECT& c = m_c.m_aRects[i];
            bProper = bProper && 0 <= c.left && c.left < c.right && c.right < m_cInput.m_nWidth && 0 <= c.bottom &&
                      c.bottom < c.top && c.top < m_cInput.m_nHeight;
        }
        return bProper;
    }

    ClSlapPicture m_cPicture;
    ClImage m_cInput;
    ClImage m_cBinary;
    ClIpFourPrintSegmentation m_c;
    long m_nResult;
};

testing::AssertionResult AgreesWithTheReference(ClRun& cRun)
{
    ClReferenceRun cReference(cRun.m_cInput);
    const std::string sDifferences = cReference.Differences(cRun.m_c);
    if (cReference.m_nResult != cRun.m_nResult || !sDifferences.empty())
    {
        return testing::AssertionFailure() << cRun.m_nResult << ' ' << sDifferences;
    }
    return SamePixels(cReference.m_cBinary, cRun.m_cBinary);
}

std::vector<bool> SlotsOf(const ClIpFourPrintSegmentation& c)
{
    return std::vector<bool>(c.m_abFingerSlots, c.m_abFingerSlots + 4);
}

/// With a palm: slow to draw when fine.
bool IsLarge(const SlapScenes::ClNamedScene& cScene)
{
    return cScene.m_pMake(3937).m_nHeight > 100000;
}

const std::vector<bool> aAllSlots = {true, true, true, true};
} // namespace

TEST(IpFourPrintSegmentation, MembersStartAsARunExpectsThem)
{
    const ClIpFourPrintSegmentation c;
    EXPECT_EQ(nullptr, c.m_pInImage);
    EXPECT_EQ(nullptr, c.m_pOutImage);
    EXPECT_EQ(0u, c.m_aRects.Entries() + c.m_aImages.Entries() + c.m_aCutImages.Entries());
    EXPECT_EQ(0u, c.m_aCenters.Entries() + c.m_aShapes.Entries());
    EXPECT_EQ(0u, c.m_aBoxes.Entries() + c.m_aResultBoxes.Entries() + c.m_aOriginBoxes.Entries());
    EXPECT_EQ(0, c.m_nFingers);
    EXPECT_FALSE(c.m_bReverseOrder);
    EXPECT_FALSE(c.m_bKeepOrder);
    EXPECT_TRUE(c.m_bSuccess);
    EXPECT_EQ(0.0, c.m_dScale);
    EXPECT_EQ(0.0, c.m_dRotation);
    EXPECT_FALSE(c.m_bDebugImages);
    EXPECT_EQ(0, c.m_nDebugThreshold);
    EXPECT_EQ(nullptr, c.m_pDebugFiltered);
    EXPECT_EQ(nullptr, c.m_pDebugScaled);
    EXPECT_EQ(nullptr, c.m_pDebugStretched);
    EXPECT_TRUE(c.m_bCutFingers);
    EXPECT_TRUE(c.m_bRefineFingers);
    EXPECT_EQ(0, c.m_nHand);
    EXPECT_EQ((std::vector<bool>{false, false, false, false}), SlotsOf(c));
    EXPECT_EQ(0, c.m_nRotationDelta);
}

TEST(IpFourPrintSegmentation, PublishesItsTwoImagesAndNothingElse)
{
    using Op = ClIpFourPrintSegmentation;
    CheckOperator(FactsOf<Op>("ClIpFourPrintSegmentation", true,
                              [](Op& c) -> Facts_t
                              {
                                  return {KeptImage("pInImage", &c.m_pInImage, 1),   // to be written only
                                          KeptImage("pOutImage", &c.m_pOutImage, 2), // to be read only
                                          Setting(&c.m_nFingers, 3),
                                          Setting(&c.m_bReverseOrder, true),
                                          Setting(&c.m_bKeepOrder, true),
                                          Setting(&c.m_bSuccess, false),
                                          Setting(&c.m_dScale, 5.0),
                                          Setting(&c.m_dRotation, 1.5),
                                          Setting(&c.m_bDebugImages, true),
                                          Setting(&c.m_bCutFingers, false),
                                          Setting(&c.m_bRefineFingers, false),
                                          Setting(&c.m_nHand, 1)};
                              }));
}

TEST(IpFourPrintSegmentation, CreatesAnotherOfItsKind)
{
    ClIpFourPrintSegmentation c;
    EXPECT_STREQ("ClIpFourPrintSegmentation", c.Name());
    c.m_nFingers = 3;
    const std::unique_ptr<ClProcessorBase> pOther(c.Create());
    auto* pSegmentation = dynamic_cast<ClIpFourPrintSegmentation*>(pOther.get());
    ASSERT_NE(nullptr, pSegmentation);
    EXPECT_EQ(0, pSegmentation->m_nFingers);
    EXPECT_STREQ("ClIpFourPrintSegmentation", pOther->Name());
}

TEST(IpFourPrintSegmentation, AnInputThatIsRefusedEndsTheRunWithItsCode)
{
    const auto result = [](ClImage* pInput)
    {
        ClImage cOut(3, 2, 1, 0, 0);
        ClIpFourPrintSegmentation c;
        c.m_pInImage = pInput;
        c.m_pOutImage = &cOut;
        const long nResult = c.Apply();
        EXPECT_FALSE(c.m_bSuccess);
        EXPECT_EQ(0, c.m_nFingers);
        EXPECT_EQ(3, cOut.m_nWidth) << "the output is left alone";
        return nResult;
    };
    EXPECT_EQ(-10, result(nullptr));
    ClImage cImage;
    FillRandom8(cImage, 200, 200, 1);
    EXPECT_EQ(-13, result(&cImage));
    cImage.m_nXRes = cImage.m_nYRes = 3937;
    cImage.m_nWidth = 150;
    EXPECT_EQ(-14, result(&cImage));
    std::fill_n(cImage.Data(), 200 * 200, static_cast<unsigned char>(9));
    EXPECT_EQ(-15, result(&cImage));
}

TEST(IpFourPrintSegmentation, APictureWithoutAnObjectIsARunThatWentWell)
{
    ClImage cInput(200, 180, 1, 3937, 3937);
    std::fill_n(cInput.Data(), 200 * 180, static_cast<unsigned char>(255));
    Row<unsigned char>(cInput, 90)[100] = 0; // not uniform, but nothing that outlasts the smoothing
    ClImage cBinary;
    ClIpFourPrintSegmentation c;
    EXPECT_EQ(0, c.ApplyParam(cInput, cBinary));
    EXPECT_TRUE(c.m_bSuccess);
    EXPECT_EQ(0, c.m_nFingers);
    EXPECT_EQ(0u, c.m_aCenters.Entries());
    EXPECT_EQ(0u, c.m_aImages.Entries());
    EXPECT_EQ(0u, c.m_aRects.Entries());
    EXPECT_EQ(0, c.m_nHand);
    EXPECT_EQ(200, cBinary.m_nWidth);
    EXPECT_EQ(180, cBinary.m_nHeight);
}

TEST(IpFourPrintSegmentation, ACandidateThatItsCutOutDoesNotShowIsDropped)
{
    // In a picture of bare ground the stretched noise has a candidate. No image is left of it, and as its cut-out lay
    // clear of the lower edge, the rule for flat thumbs, all of whose images are wide, says two thumbs.
    ClSlapScene cScene = SlapScenes::OneFinger(3937);
    cScene.m_aParts.clear();
    ClRun cRun(cScene);
    EXPECT_EQ(0, cRun.m_nResult);
    EXPECT_EQ(1u, cRun.m_c.m_aBoxes.Entries());
    EXPECT_EQ(0, cRun.m_c.m_nFingers);
    EXPECT_EQ(0u, cRun.m_c.m_aImages.Entries());
    EXPECT_EQ(0u, cRun.m_c.m_aRects.Entries());
    EXPECT_EQ(3, cRun.m_c.m_nHand);
    EXPECT_TRUE(AgreesWithTheReference(cRun));
}

TEST(IpFourPrintSegmentation, EveryStepAgreesWithThePlainRoad)
{
    for (const SlapScenes::ClNamedScene& cScene : SlapScenes::All())
    {
        for (const int nPels : {4016, 9843})
        {
            if (IsLarge(cScene) && nPels == 9843)
            {
                continue;
            }
            ClRun cRun(cScene.m_pMake(nPels));
            EXPECT_TRUE(AgreesWithTheReference(cRun)) << cScene.m_szName << " at " << nPels;
        }
    }
}

TEST(IpFourPrintSegmentation, RectanglesHoldTheFingertipsFromLeftToRight)
{
    for (const SlapScenes::ClNamedScene& cScene : SlapScenes::All())
    {
        for (const int nPels : {3937, 4015, 19685})
        {
            if (IsLarge(cScene) && nPels != 3937)
            {
                continue;
            }
            const ClRun cRun(cScene.m_pMake(nPels));
            EXPECT_EQ(0, cRun.m_nResult);
            EXPECT_TRUE(cRun.RectanglesAreProper()) << cScene.m_szName << " at " << nPels;
            // At the working resolution a ridge is hardly one pixel, and the narrowing takes a little off the sides.
            EXPECT_GT(cRun.SmallestShare(), nPels < 5000 ? 0.8 : 0.96) << cScene.m_szName << " at " << nPels;
            EXPECT_EQ(static_cast<int>(cRun.m_cPicture.m_aFingers.size()), cRun.m_c.m_nFingers);
        }
    }
}

TEST(IpFourPrintSegmentation, ImagesOfAFineInputAreLimitedAndTheirRectanglesAreNot)
{
    for (const ClSlapScene& cScene : {SlapScenes::OneFinger(39370), SlapScenes::TwoFingers(39370)})
    {
        const ClRun cRun(cScene);
        EXPECT_GT(cRun.SmallestShare(), 0.98);
        for (unsigned long i = 0; i < cRun.m_c.m_aImages.Entries(); ++i)
        {
            EXPECT_EQ(500, cRun.m_c.m_aImages[i].m_nWidth);
            EXPECT_EQ(500, cRun.m_c.m_aImages[i].m_nHeight);
            EXPECT_GT(cRun.m_c.m_aRects[i].right - cRun.m_c.m_aRects[i].left, 500) << "the rectangle is not limited";
        }
    }
}

TEST(IpFourPrintSegmentation, FourFingersTellTheHand)
{
    for (const int nPels : {3937, 9843})
    {
        const ClRun cRight(SlapScenes::FourFingers(SlapScenes::eRightHand, nPels));
        EXPECT_EQ(1, cRight.m_c.m_nHand);
        EXPECT_EQ(aAllSlots, SlotsOf(cRight.m_c));
        const ClRun cLeft(SlapScenes::FourFingers(SlapScenes::eLeftHand, nPels));
        EXPECT_EQ(2, cLeft.m_c.m_nHand);
        EXPECT_EQ(aAllSlots, SlotsOf(cLeft.m_c));
    }
}

TEST(IpFourPrintSegmentation, ALeaningHandIsTurnedUpright)
{
    for (const double dLean : {0.1, 0.2, 0.3, 0.4, 0.5, -0.1, -0.2, -0.3, -0.4, -0.5})
    {
        SCOPED_TRACE(dLean);
        ClRun cRun(SlapScenes::LeaningHand(dLean, 6000));
        EXPECT_TRUE(AgreesWithTheReference(cRun));
        EXPECT_TRUE(cRun.RectanglesAreProper());
        EXPECT_EQ(4, cRun.m_c.m_nFingers);
        if (std::fabs(dLean) < 0.15)
        {
            // A lean of 0.1 lies in the range of upright hands.
            EXPECT_EQ(0.0, cRun.m_c.m_dRotation);
            EXPECT_EQ(0, cRun.m_c.m_nRotationDelta);
            EXPECT_GT(cRun.SmallestShare(), 0.9);
            continue;
        }
        EXPECT_NEAR(1.57 + dLean, cRun.m_c.m_dRotation, 0.02);
        EXPECT_GT(cRun.m_c.m_nRotationDelta, 0);
        EXPECT_GT(cRun.SmallestShare(), 0.99);
        // A rotated hand is cut out 110 by 130 pixels of the working image large, an upright one 100 by 120.
        const Box& cBox = cRun.m_c.m_aOriginBoxes[1];
        EXPECT_EQ(110, cBox.m_nMaxX - cBox.m_nMinX);
        EXPECT_EQ(130, cBox.m_nMaxY - cBox.m_nMinY);
    }
}

TEST(IpFourPrintSegmentation, AnUprightHandIsCutOutSmaller)
{
    const ClRun cRun(SlapScenes::FourFingers(SlapScenes::eRightHand, 6000));
    ASSERT_EQ(4u, cRun.m_c.m_aOriginBoxes.Entries());
    const Box& cBox = cRun.m_c.m_aOriginBoxes[1];
    EXPECT_EQ(100, cBox.m_nMaxX - cBox.m_nMinX);
    EXPECT_EQ(120, cBox.m_nMaxY - cBox.m_nMinY);
    EXPECT_EQ(0.0f, cRun.m_c.m_aBoxes[0].m_fRed);
    EXPECT_EQ(1.0f, cRun.m_c.m_aBoxes[0].m_fGreen);
    EXPECT_EQ(1.0f, cBox.m_fRed);
    EXPECT_EQ(0.0f, cBox.m_fGreen);
    EXPECT_EQ(1.0f, cBox.m_fAlpha);
}

TEST(IpFourPrintSegmentation, APairIsTurnedByNoLean)
{
    // Two fingers are too few voters for the angle.
    const ClRun cRun(SlapScenes::LeaningPair(0.4, 6000));
    EXPECT_EQ(0.0, cRun.m_c.m_dRotation);
    EXPECT_EQ(2, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintSegmentation, AShortFingerBetweenLongOnesCountsAsAmputatedInAnUprightHandOnly)
{
    for (const double dLean : {0.0, 0.35})
    {
        ClSlapScene cScene = SlapScenes::LeaningHand(dLean, 4000);
        cScene.m_aParts[1].m_nTipY -= 12000; // the middle finger ends below the index and the ring finger
        ClRun cRun(cScene);
        EXPECT_EQ(dLean == 0.0 ? 3 : 4, cRun.m_c.m_nFingers);
        EXPECT_TRUE(AgreesWithTheReference(cRun));
    }
}

TEST(IpFourPrintSegmentation, FlatThumbsAreTurnedUpright)
{
    const ClRun cRun(SlapScenes::TwoFlatThumbs(9843));
    EXPECT_EQ(3, cRun.m_c.m_nHand);
    EXPECT_EQ((std::vector<bool>{true, true, false, false}), SlotsOf(cRun.m_c));
    ASSERT_EQ(2, cRun.m_c.m_nFingers);
    for (const unsigned long i : {0ul, 1ul})
    {
        const tagRECT& cRect = cRun.m_c.m_aRects[i];
        EXPECT_GT(cRect.right - cRect.left, cRect.top - cRect.bottom) << "the rectangle keeps the place in the input";
        EXPECT_LT(cRun.m_c.m_aImages[i].m_nWidth, cRun.m_c.m_aImages[i].m_nHeight);
    }
}

TEST(IpFourPrintSegmentation, FlatThumbsAtTheWorkingResolutionKeepTheirDirection)
{
    // 20 rows of room on both sides make the image of a thumb 73 pixels thick taller than it is wide.
    const ClRun cRun(SlapScenes::TwoFlatThumbs(3937));
    EXPECT_EQ(0, cRun.m_c.m_nHand);
    ASSERT_EQ(2, cRun.m_c.m_nFingers);
    EXPECT_LE(cRun.m_c.m_aImages[0].m_nWidth, cRun.m_c.m_aImages[0].m_nHeight);
}

TEST(IpFourPrintSegmentation, TwoLowFingersOfAFineInputCountAsThumbs)
{
    // The limits for a thumb laid flat are pixels of the input: at 500 pixels per inch a fingertip is wider than 280,
    // so any pair whose second finger begins in the lowest 400 rows is told as two thumbs. They stand, and are not
    // turned.
    const ClRun cRun(SlapScenes::TwoFingers(19685));
    EXPECT_EQ(3, cRun.m_c.m_nHand);
    EXPECT_EQ((std::vector<bool>{true, true, false, false}), SlotsOf(cRun.m_c));
    EXPECT_LT(cRun.m_c.m_aImages[1].m_nWidth, cRun.m_c.m_aImages[1].m_nHeight);
}

TEST(IpFourPrintSegmentation, BoxesFollowTheMarksByIndexWhereAStrayCandidateWasRemoved)
{
    // Three fingers A, B, C and a disc far above them, whose tail makes it the first object of the picture. The disc
    // goes as a candidate but stays as a component, so the boxes are those of the disc, A and B.
    ClImage cInput(420, 520, 1, 3937, 3937);
    ClTestRandom cRandom(3);
    const auto inside = [](int x, int y, int nX, int nY, double dHalfX, double dHalfY)
    { return (x - nX) / dHalfX * ((x - nX) / dHalfX) + (y - nY) / dHalfY * ((y - nY) / dHalfY) <= 1.0; };
    for (int y = 0; y < 520; ++y)
    {
        for (int x = 0; x < 420; ++x)
        {
            const bool bTail = x >= 55 && x < 65 && y >= 155 && y < 400;
            const bool bInk = bTail || inside(x, y, 60, 420, 41, 41) || inside(x, y, 160, 215, 30, 52) ||
                              inside(x, y, 260, 214, 30, 48) || inside(x, y, 360, 213, 30, 44);
            Row<unsigned char>(cInput, y)[x] = static_cast<unsigned char>((bInk ? 60 : 245) + cRandom.Below(5));
        }
    }
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    EXPECT_EQ(0, c.Apply());
    EXPECT_EQ("", ClReferenceRun(cInput).Differences(c));
    ASSERT_EQ(3u, c.m_aCenters.Entries());
    EXPECT_NEAR(160, c.m_aCenters[0].m_dX, 2);
    EXPECT_NEAR(360, c.m_aCenters[2].m_dX, 2);
    ASSERT_EQ(3u, c.m_aBoxes.Entries());
    EXPECT_NEAR(20, c.m_aBoxes[0].m_nMinX, 3);
    EXPECT_NEAR(130, c.m_aBoxes[1].m_nMinX, 3);
    EXPECT_NEAR(230, c.m_aBoxes[2].m_nMinX, 3);
}

namespace
{
/// What the last step makes of an image of the given size. Cutting is off, so that the image put in stays.
struct ClLimited
{
    ClLimited(int nWidth, int nHeight)
    {
        ClImage cInput;
        MakeImage(ClSlapPicture(SlapScenes::OneFinger(3937)), cInput);
        ClIpFourPrintSegmentation c;
        c.m_bCutFingers = false;
        c.m_aImages.New(1);
        c.m_aResultBoxes.New(1);
        FillRandom8(c.m_aImages[0], nWidth, nHeight, 9);
        m_cBefore = c.m_aImages[0];
        EXPECT_EQ(0, c.ApplyParam(cInput, cInput));
        m_cAfter = c.m_aImages[0];
    }

    /// Whether what is left is the rectangle that begins at a place of the image before.
    bool IsFrom(int nX, int nY, int nWidth, int nHeight) const
    {
        bool bSame = m_cAfter.m_nWidth == nWidth && m_cAfter.m_nHeight == nHeight;
        for (int y = 0; bSame && y < nHeight; ++y)
        {
            const unsigned char* pBefore = Row<unsigned char>(m_cBefore, nY + y) + nX;
            bSame = std::equal(pBefore, pBefore + nWidth, Row<unsigned char>(m_cAfter, y));
        }
        return bSame;
    }

    ClImage m_cBefore;
    ClImage m_cAfter;
};
} // namespace

TEST(IpFourPrintSegmentation, AWideImageIsLimitedInItsMiddle)
{
    EXPECT_TRUE(ClLimited(600, 400).IsFrom(50, 0, 500, 400));
    EXPECT_TRUE(ClLimited(501, 30).IsFrom(0, 0, 500, 30));
    EXPECT_TRUE(ClLimited(503, 500).IsFrom(1, 0, 500, 500));
}

TEST(IpFourPrintSegmentation, ATallImageKeepsItsTip)
{
    EXPECT_TRUE(ClLimited(400, 600).IsFrom(0, 100, 400, 500));
    EXPECT_TRUE(ClLimited(500, 501).IsFrom(0, 1, 500, 500));
    EXPECT_TRUE(ClLimited(777, 650).IsFrom(138, 150, 500, 500));
}

TEST(IpFourPrintSegmentation, AnImageWithinTheLimitIsNotTouched)
{
    EXPECT_TRUE(ClLimited(500, 500).IsFrom(0, 0, 500, 500));
    EXPECT_TRUE(ClLimited(1, 1).IsFrom(0, 0, 1, 1));
}

TEST(IpFourPrintSegmentation, WithoutCuttingTheBoxesAreFoundAllTheSame)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::FourFingers(SlapScenes::eLeftHand, 3937)), cInput);
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    c.m_bCutFingers = false;
    EXPECT_EQ(0, c.Apply());
    EXPECT_EQ(4u, c.m_aBoxes.Entries());
    EXPECT_EQ(4u, c.m_aOriginBoxes.Entries());
    EXPECT_EQ(0u, c.m_aImages.Entries());
}

TEST(IpFourPrintSegmentation, WithoutRefinementNoFingerHasAnImage)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::TwoFingers(3937)), cInput);
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    c.m_bRefineFingers = false;
    EXPECT_EQ(0, c.Apply());
    EXPECT_EQ(2u, c.m_aCutImages.Entries());
    EXPECT_EQ(0, c.m_nFingers);
    EXPECT_EQ(0u, c.m_aImages.Entries());
}

TEST(IpFourPrintSegmentation, TheInputIsNotWrittenTo)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::LeaningHand(0.3, 4000)), cInput);
    ClImage cBefore;
    cBefore = cInput;
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    EXPECT_EQ(0, c.Apply());
    EXPECT_TRUE(SamePixels(cBefore, cInput));
    EXPECT_TRUE(SameDescription(cBefore, cInput));
}

TEST(IpFourPrintSegmentation, ColourInputGivesTheFingersOfItsGreyImage)
{
    ClImage cGrey;
    MakeImage(ClSlapPicture(SlapScenes::TwoFingers(4000)), cGrey);
    ClImage cColour;
    cColour.NewWithType(ClImage::eUInt8, cGrey.m_nWidth, cGrey.m_nHeight, 3, 4000, 4000);
    for (int y = 0; y < cGrey.m_nHeight; ++y)
    {
        for (int x = 0; x < cGrey.m_nWidth; ++x)
        {
            std::fill_n(Row<unsigned char>(cColour, y) + 3 * x, 3, Row<unsigned char>(cGrey, y)[x]);
        }
    }
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cColour;
    EXPECT_EQ(0, c.Apply());
    EXPECT_EQ("", ClReferenceRun(cColour).Differences(c));
    ASSERT_EQ(2, c.m_nFingers);
    EXPECT_EQ(1, c.m_aImages[0].m_nPlanes);
}

TEST(IpFourPrintSegmentation, EveryAllocationThatFailsIsTold)
{
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation(
                     []
                     {
                         ClIpFourPrintSegmentation c;
                         const std::unique_ptr<ClProcessorBase> pOther(c.Create());
                     }));
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::OneFinger(3937)), cInput);
    ClImage cBinary;
    EXPECT_LT(20, ExpectBadAllocAtEveryAllocation([&] { ClIpFourPrintSegmentation().ApplyParam(cInput, cBinary); }));
}

namespace
{
/// Reads an uncompressed 8-bit BMP file from the folder of real slaps; false where the folder is not given.
bool ReadSlap(const std::string& sName, ClImage& cImage)
{
    const char* szFolder = std::getenv("KORMELIN_SLAPS");
    std::ifstream cFile(std::string(szFolder == nullptr ? "" : szFolder) + "/" + sName, std::ios::binary);
    const std::vector<char> aFile((std::istreambuf_iterator<char>(cFile)), std::istreambuf_iterator<char>());
    if (szFolder == nullptr || aFile.size() < 54)
    {
        return false;
    }
    const auto number = [&aFile](std::size_t nOffset)
    {
        std::int32_t n = 0;
        std::memcpy(&n, aFile.data() + nOffset, 4);
        return n;
    };
    cImage.NewWithType(ClImage::eUInt8, number(18), number(22), 1, number(38), number(42));
    const std::size_t nPixels = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(cImage.m_nHeight);
    std::copy_n(aFile.begin() + number(10), nPixels, cImage.Data());
    return true;
}

struct StSlap
{
    const char* szName;
    int nFingers;
    int nHand;
};
} // namespace

TEST(IpFourPrintSegmentation, RealSlapsOfFourFingersAreCutIntoFour)
{
    for (const StSlap& cSlap : {StSlap{"nist-left-four-2.bmp", 4, 2}, StSlap{"nist-left-four-2-jpeg.bmp", 4, 2},
                                StSlap{"nist-right-four-2.bmp", 4, 1}, StSlap{"nist-hand-100ppi.bmp", 4, 1},
                                StSlap{"nist-right-four-2-pair-left.bmp", 2, 0}})
    {
        ClImage cInput;
        if (!ReadSlap(cSlap.szName, cInput))
        {
            GTEST_SKIP() << "KORMELIN_SLAPS names no folder with " << cSlap.szName;
        }
        ClIpFourPrintSegmentation c;
        c.m_pInImage = &cInput;
        EXPECT_EQ(0, c.Apply());
        EXPECT_EQ(cSlap.nFingers, c.m_nFingers) << cSlap.szName;
        EXPECT_EQ(cSlap.nHand, c.m_nHand) << cSlap.szName;
        EXPECT_EQ("", ClReferenceRun(cInput).Differences(c)) << cSlap.szName;
    }
}

TEST(IpFourPrintSegmentation, ARealPictureWithoutAResolutionIsRefused)
{
    ClImage cInput;
    if (!ReadSlap("nist-palm-part.bmp", cInput))
    {
        GTEST_SKIP() << "KORMELIN_SLAPS names no folder with nist-palm-part.bmp";
    }
    ClIpFourPrintSegmentation c;
    c.m_pInImage = &cInput;
    EXPECT_EQ(-13, c.Apply());
}
