// The road of a picture through the exported functions, as an application takes it, on drawn slaps whose fingers are
// known.

#include "GreyBitmapChecks.hpp"
#include "GuardedSlapRunner.hpp"
#include "ReadOnlySegment.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr int n500Ppi = 19685;     // pels per metre
constexpr int n200Ppi = 7874;      // where many runs are made
constexpr long nFingers = 0;       // values of "SegmentationMode"
constexpr long nBiggestObject = 1; //
constexpr long nLowerEdge = 0;     // values of "CoordinateOrigin"
constexpr long nUpperEdge = 1;     //
constexpr int nImageLimit = 500;   // pixels of a finger's image in either direction

// Whether the image of a segment is the picture from column nLeft and row nBottom on.
bool IsPictureFrom(const ClSlapPicture& cPicture, int nLeft, int nBottom, const ClBlockView& cView)
{
    if (nLeft < 0 || nBottom < 0 || nLeft + cView.Width() > cPicture.m_nWidth ||
        nBottom + cView.Height() > cPicture.m_nHeight)
    {
        return false;
    }
    for (int y = 0; y < cView.Height(); ++y)
    {
        const std::uint8_t* pExpected =
            cPicture.m_aPixels.data() + static_cast<std::ptrdiff_t>(nBottom + y) * cPicture.m_nWidth + nLeft;
        if (!std::equal(pExpected, pExpected + cView.Width(), cView.Row(y))) return false;
    }
    return true;
}

// The image of a segment is the picture inside the rectangle: of more than nLimit columns the middle ones, of more rows
// the upper ones. The segment counts y from the lower edge. nMostMoved: how far left of the rectangle the image may
// have been cut.
void ExpectPixelsOfThePicture(const ClSlapPicture& cPicture, const ClSlapRunResult::ClSegment& cSegment, int nLimit,
                              int nMostMoved = 0)
{
    const ClBlockView cView(cSegment.m_aBlock);
    const int nWidth = static_cast<int>(cSegment.m_nWidth);
    const int nHeight = static_cast<int>(cSegment.m_nHeight);
    ASSERT_EQ(std::min(nWidth, nLimit), cView.Width());
    ASSERT_EQ(std::min(nHeight, nLimit), cView.Height());
    const int nLeft = static_cast<int>(cSegment.m_nX) + (nWidth - cView.Width()) / 2;
    const int nBottom = static_cast<int>(cSegment.m_nY) + nHeight - cView.Height();
    int nMoved = 0;
    while (nMoved < nMostMoved && !IsPictureFrom(cPicture, nLeft - nMoved, nBottom, cView)) ++nMoved;
    EXPECT_TRUE(IsPictureFrom(cPicture, nLeft - nMoved, nBottom, cView));
}

// A cut that reaches the last column of the working picture, which may be less than a whole one, is moved to the left
// by up to a working pixel; its rectangle is not. 500 pixels per inch are five times the working resolution.
constexpr int nMostMovedAtTheRightEdge = 5;

// A segment that counts y from the lower edge holds a drawn finger and not much more.
void ExpectAround(const ClSlapRect& cFinger, const ClSlapRunResult::ClSegment& cSegment, int nPels)
{
    // The faint rim of a finger, half a millimetre, may be lost; the rules leave 20 pixels around what they see.
    const double dLost = nPels * 0.0005;
    const double dSpare = nPels * 0.0005 + 20.0;
    const auto expectEdge = [](const char* szEdge, double dOutward, double dMostLost, double dMostSpare)
    {
        EXPECT_GE(dOutward, -dMostLost) << szEdge;
        EXPECT_LE(dOutward, dMostSpare) << szEdge;
    };
    expectEdge("left", static_cast<double>(cFinger.left - cSegment.m_nX), dLost, dSpare);
    expectEdge("right", static_cast<double>(cSegment.m_nX + cSegment.m_nWidth - cFinger.right), dLost, dSpare);
    expectEdge("bottom", static_cast<double>(cFinger.bottom - cSegment.m_nY), dLost, dSpare);
    expectEdge("top", static_cast<double>(cSegment.m_nY + cSegment.m_nHeight - cFinger.top), dLost, dSpare);
}

// Whether a segment that counts y from the lower edge holds a finger, but for the half millimetre of its rim.
bool Holds(const ClSlapRunResult::ClSegment& cSegment, const ClSlapRect& cFinger)
{
    constexpr long nRim = 10; // pixels at 500 pixels per inch
    return cSegment.m_nX <= cFinger.left + nRim && cSegment.m_nY <= cFinger.bottom + nRim &&
           cSegment.m_nX + cSegment.m_nWidth >= cFinger.right - nRim &&
           cSegment.m_nY + cSegment.m_nHeight >= cFinger.top - nRim;
}

void ExpectFingers(const ClSlapPicture& cPicture, const ClSlapRunResult& cResult)
{
    ASSERT_EQ(FPC_SUCCESS, cResult.m_nCode);
    ASSERT_EQ(static_cast<long>(cPicture.m_aFingers.size()), cResult.m_nCount);
    ASSERT_EQ(cPicture.m_aFingers.size(), cResult.m_aSegments.size());
    for (std::size_t i = 0; i < cResult.m_aSegments.size(); ++i)
    {
        SCOPED_TRACE("finger " + std::to_string(i));
        ExpectAround(cPicture.m_aFingers[i], cResult.m_aSegments[i], cPicture.m_nPelsPerMetre);
        ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cResult.m_aSegments[i].m_aBlock, cPicture.m_nPelsPerMetre));
        const bool bLast = i + 1 == cResult.m_aSegments.size();
        ASSERT_NO_FATAL_FAILURE(ExpectPixelsOfThePicture(cPicture, cResult.m_aSegments[i], nImageLimit,
                                                         bLast ? nMostMovedAtTheRightEdge : 0));
    }
}

// White all over, with dark rectangles: what mode 1 cuts out of it can be said by hand.
std::vector<std::uint8_t> WhiteBlockWith(int nWidth, int nHeight, const std::vector<ClSlapRect>& aDark)
{
    std::vector<std::uint8_t> aBlock(
        nBeforePixels + static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight), 255);
    tagBITMAPINFOHEADER cHeader = {};
    cHeader.biSize = 40;
    cHeader.biWidth = nWidth; // a multiple of 4: no padding
    cHeader.biHeight = nHeight;
    cHeader.biPlanes = 1;
    cHeader.biBitCount = 8;
    cHeader.biXPelsPerMeter = n500Ppi;
    cHeader.biYPelsPerMeter = n500Ppi;
    std::memcpy(aBlock.data(), &cHeader, sizeof cHeader);
    for (std::size_t i = 0; i < 1024; ++i) aBlock[40 + i] = static_cast<std::uint8_t>(i % 4 == 3 ? 0 : i / 4);
    for (const ClSlapRect& cRect : aDark)
        for (int y = cRect.bottom; y < cRect.top; ++y)
            for (int x = cRect.left; x < cRect.right; ++x)
            {
                // Another grey in every place.
                aBlock[nBeforePixels + static_cast<std::size_t>(y * nWidth + x)] =
                    static_cast<std::uint8_t>((7 * x + 13 * y) % 200);
            }
    return aBlock;
}

ClSlapScene Scene(const char* szName, int nPels)
{
    return SlapScenes::Find(szName)->m_pMake(nPels);
}
} // namespace

// Every call by hand, in the order that the public header tells.
TEST(SegmentationRoad, EveryCallFromInitializeToUninitialize)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(n500Ppi));
    const ClReadOnlyBytes cBlock(cPicture.Block());
    void* hSegmentation = nullptr;
    void* ahSegments[2] = {};
    long nValue = -1;

    ASSERT_EQ(FPC_SUCCESS, KSInitialize(nullptr));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentationHandle(&hSegmentation));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&ahSegments[0]));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&ahSegments[1]));
    EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegmentation, "Count", &nValue));
    EXPECT_EQ(0, nValue);
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, KSGetSegment(hSegmentation, 0, ahSegments[0]));
    EXPECT_EQ(FPC_SUCCESS, KSSetPropertyLongA(hSegmentation, "SegmentationMode", nFingers));
    EXPECT_EQ(FPC_SUCCESS, KSSetPropertyLongA(hSegmentation, "CoordinateOrigin", nLowerEdge));

    ASSERT_EQ(FPC_SUCCESS, SegmentReadOnly(hSegmentation, cBlock));
    EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegmentation, "Count", &nValue));
    ASSERT_EQ(2, nValue);
    for (int i = 0; i < 2; ++i) ASSERT_EQ(FPC_SUCCESS, KSGetSegment(hSegmentation, i, ahSegments[i]));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, KSGetSegment(hSegmentation, 2, ahSegments[0]));

    // Filled segment handles need neither the segmentation handle nor the library's count.
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegmentation));
    EXPECT_EQ(nullptr, hSegmentation);
    EXPECT_EQ(FPC_SUCCESS, KSUninitialize());
    for (std::size_t i = 0; i < 2; ++i)
    {
        SCOPED_TRACE("finger " + std::to_string(i));
        ClSlapRunResult::ClSegment cSegment;
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(ahSegments[i], "x", &cSegment.m_nX));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(ahSegments[i], "y", &cSegment.m_nY));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(ahSegments[i], "Width", &cSegment.m_nWidth));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(ahSegments[i], "Height", &cSegment.m_nHeight));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(ahSegments[i], "FingerPosition", &nValue));
        EXPECT_EQ(0, nValue);
        ExpectAround(cPicture.m_aFingers[i], cSegment, n500Ppi);

        unsigned long nSize = 0;
        EXPECT_EQ(FPC_ERROR_TEMPLATE_SIZE, KSGetBitmap(ahSegments[i], nullptr, &nSize));
        ASSERT_GT(nSize, nBeforePixels);
        EXPECT_EQ(FPC_SUCCESS, KSGetBitmap(ahSegments[i], nullptr, &nSize));
        const ClGuardedBytes cBuffer(nSize); // one byte too many would be seen
        unsigned long nShort = nSize - 1;
        auto* pBuffer = reinterpret_cast<tagBITMAPINFOHEADER*>(cBuffer.Data());
        EXPECT_EQ(FPC_ERROR_TEMPLATE_SIZE, KSGetBitmap(ahSegments[i], pBuffer, &nShort));
        EXPECT_EQ(nSize, nShort);
        ASSERT_EQ(FPC_SUCCESS, KSGetBitmap(ahSegments[i], pBuffer, &nSize));
        cSegment.m_aBlock.assign(cBuffer.Data(), cBuffer.Data() + nSize);
        ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, n500Ppi));
        ASSERT_NO_FATAL_FAILURE(ExpectPixelsOfThePicture(cPicture, cSegment, nImageLimit, nMostMovedAtTheRightEdge));
        EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&ahSegments[i]));
    }
}

TEST(SegmentationRoad, FingersAreFoundWhereTheyWereDrawn)
{
    ClGuardedSlapRunner cRunner(nFingers);
    for (const char* szScene : {"one-finger", "two-fingers", "pair-with-palm"})
    {
        SCOPED_TRACE(szScene);
        const ClSlapPicture cPicture(Scene(szScene, n500Ppi));
        ExpectFingers(cPicture, cRunner.Run(cPicture.Block()));
    }
}

// With room on all sides no cut meets an edge, and each image is exactly what its rectangle says.
TEST(SegmentationRoad, ImagesAreThePictureInsideTheirRectangles)
{
    for (const int nPels : {n500Ppi, 2 * n500Ppi})
    {
        SCOPED_TRACE(nPels);
        ClSlapScene cScene = SlapScenes::TwoFingers(nPels);
        cScene.m_nWidth += 24000; // micrometres
        cScene.m_nHeight += 24000;
        for (ClSlapPart& cPart : cScene.m_aParts)
        {
            cPart.m_nTipX += 12000;
            cPart.m_nTipY += 12000;
        }
        const ClSlapPicture cPicture(cScene);
        const ClSlapRunResult cResult = ClGuardedSlapRunner(nFingers).Run(cPicture.Block());
        ASSERT_EQ(2u, cResult.m_aSegments.size());
        for (const ClSlapRunResult::ClSegment& cSegment : cResult.m_aSegments)
        {
            ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, nPels));
            ASSERT_NO_FATAL_FAILURE(ExpectPixelsOfThePicture(cPicture, cSegment, nImageLimit));
        }
    }
}

TEST(SegmentationRoad, UpperOriginCountsTheUpperEdgeFromTheTop)
{
    for (const char* szScene : {"one-finger", "two-fingers", "leaning-pair"})
    {
        SCOPED_TRACE(szScene);
        const ClSlapPicture cPicture(Scene(szScene, n500Ppi));
        for (const long nMode : {nFingers, nBiggestObject})
        {
            const ClSlapRunResult cLower = ClGuardedSlapRunner(nMode, nLowerEdge).Run(cPicture.Block());
            ClSlapRunResult cUpper = ClGuardedSlapRunner(nMode, nUpperEdge).Run(cPicture.Block());
            ASSERT_EQ(FPC_SUCCESS, cLower.m_nCode);
            ASSERT_FALSE(cLower.m_aSegments.empty());
            ASSERT_EQ(cLower.m_aSegments.size(), cUpper.m_aSegments.size());
            for (std::size_t i = 0; i < cUpper.m_aSegments.size(); ++i)
            {
                ClSlapRunResult::ClSegment& cSegment = cUpper.m_aSegments[i];
                cSegment.m_nY = cPicture.m_nHeight - cSegment.m_nY - cSegment.m_nHeight;
            }
            EXPECT_TRUE(cLower == cUpper) << "mode " << nMode;
        }
    }
}

TEST(SegmentationRoad, OriginIsThatOfTheMomentOfGetSegment)
{
    const ClSlapPicture cPicture(SlapScenes::OneFinger(n500Ppi));
    const ClReadOnlyBytes cBlock(cPicture.Block());
    void* hSegmentation = nullptr;
    void* hSegment = nullptr;
    ASSERT_EQ(FPC_SUCCESS, KSInitialize(nullptr));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentationHandle(&hSegmentation));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&hSegment));
    ASSERT_EQ(FPC_SUCCESS, SegmentReadOnly(hSegmentation, cBlock));
    long anY[2] = {};
    long nHeight = 0;
    for (const long nOrigin : {nUpperEdge, nLowerEdge})
    {
        EXPECT_EQ(FPC_SUCCESS, KSSetPropertyLongA(hSegmentation, "CoordinateOrigin", nOrigin));
        EXPECT_EQ(FPC_SUCCESS, KSGetSegment(hSegmentation, 0, hSegment));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegment, "y", &anY[nOrigin]));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegment, "Height", &nHeight));
    }
    EXPECT_GT(nHeight, 0);
    EXPECT_EQ(cPicture.m_nHeight, anY[nLowerEdge] + nHeight + anY[nUpperEdge]);
    EXPECT_NE(anY[nLowerEdge], anY[nUpperEdge]);
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegment));
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegmentation));
    EXPECT_EQ(FPC_SUCCESS, KSUninitialize());
}

// Two fingers alone are never turned; with their lower joints there are enough objects that lean, and the hand is.
TEST(SegmentationRoad, LeaningFingersLieInTheirRectangles)
{
    // The limits of a turned picture are those of the input, hence the room above the tips.
    ClSlapScene cWithJoints = SlapScenes::TwoFingers(n500Ppi);
    cWithJoints.m_nWidth += 30000; // micrometres
    cWithJoints.m_nHeight += 55000;
    cWithJoints.m_dLean = -0.3;
    for (std::size_t i = 0; i < 2; ++i)
    {
        cWithJoints.m_aParts[i].m_nTipX += 15000;
        cWithJoints.m_aParts[i].m_nTipY += 25000;
        ClSlapPart cJoint = cWithJoints.m_aParts[i];
        cJoint.m_eKind = ClSlapPart::eJoint;
        cJoint.m_nTipY -= cJoint.m_nLength + 3000;
        cJoint.m_nLength = 22000; // long enough to lean clearly
        cWithJoints.m_aParts.push_back(cJoint);
    }
    const struct
    {
        ClSlapScene m_cScene;
        bool m_bTurned;
    } aCases[] = {{SlapScenes::LeaningPair(0.2, n500Ppi), false}, {cWithJoints, true}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(cCase.m_bTurned ? "turned" : "not turned");
        const ClSlapPicture cPicture(cCase.m_cScene);
        const ClSlapRunResult cResult = ClGuardedSlapRunner(nFingers).Run(cPicture.Block());
        ASSERT_EQ(FPC_SUCCESS, cResult.m_nCode);
        ASSERT_EQ(2u, cResult.m_aSegments.size());
        for (std::size_t i = 0; i < 2; ++i)
        {
            SCOPED_TRACE("finger " + std::to_string(i));
            const ClSlapRunResult::ClSegment& cSegment = cResult.m_aSegments[i];
            EXPECT_TRUE(Holds(cSegment, cPicture.m_aFingers[i]));
            ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, n500Ppi));
            if (!cCase.m_bTurned)
            {
                ASSERT_NO_FATAL_FAILURE(ExpectPixelsOfThePicture(cPicture, cSegment, nImageLimit));
                continue;
            }
            // The image holds the finger upright: it is narrower than the rectangle around the leaning one.
            EXPECT_LT(ClBlockView(cSegment.m_aBlock).Width(), cSegment.m_nWidth * 9 / 10);
        }
    }
}

TEST(SegmentationRoad, MoreThanTwoFingersAreRefusedAndTheHandleGoesOn)
{
    const ClSlapPicture cGood(SlapScenes::TwoFingers(n500Ppi));
    const struct
    {
        const char* m_szScene;
        long m_nCount;
    } aRefused[] = {
        {"three-fingers", 3}, {"four-fingers-left", 4}, {"four-fingers-right", 4}, {"leaning-hand-left", 4}};
    void* hSegmentation = nullptr;
    void* hSegment = nullptr;
    ASSERT_EQ(FPC_SUCCESS, KSInitialize(nullptr));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentationHandle(&hSegmentation));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&hSegment));
    const auto segment = [&](const std::vector<std::uint8_t>& aBlock)
    { return SegmentReadOnly(hSegmentation, ClReadOnlyBytes(aBlock)); };
    for (const auto& cRefused : aRefused)
    {
        SCOPED_TRACE(cRefused.m_szScene);
        long nCount = -1;
        EXPECT_EQ(FPC_SUCCESS, segment(cGood.Block()));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegmentation, "Count", &nCount));
        EXPECT_EQ(2, nCount);
        EXPECT_EQ(FPC_SUCCESS, KSGetSegment(hSegmentation, 1, hSegment));

        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, segment(ClSlapPicture(Scene(cRefused.m_szScene, n500Ppi)).Block()));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegmentation, "Count", &nCount));
        EXPECT_EQ(cRefused.m_nCount, nCount);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, KSGetSegment(hSegmentation, i, hSegment)) << i;
    }
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegment));
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegmentation));
    EXPECT_EQ(FPC_SUCCESS, KSUninitialize());
}

// What a handle did before leaves no trace in its next result.
TEST(SegmentationRoad, ResultDoesNotDependOnEarlierRuns)
{
    ClGuardedSlapRunner cUsed(nFingers);
    for (const char* szScene :
         {"two-fingers", "three-fingers", "one-finger", "leaning-pair", "two-fingers", "touching-fingers"})
    {
        const std::vector<std::uint8_t> aBlock = ClSlapPicture(Scene(szScene, n200Ppi)).Block();
        EXPECT_TRUE(ClGuardedSlapRunner(nFingers).Run(aBlock) == cUsed.Run(aBlock)) << szScene;
    }
}

TEST(SegmentationRoad, PictureWithoutAFingerGivesNoSegments)
{
    // A grid of dots: not uniform, and nothing in it has the size of a finger.
    std::vector<ClSlapRect> aDots;
    for (int x = 100; x < 700; x += 100) aDots.push_back({x, x + 3, x + 3, x});
    const ClSlapRunResult cResult = ClGuardedSlapRunner(nFingers).Run(WhiteBlockWith(800, 800, aDots));
    EXPECT_EQ(FPC_SUCCESS, cResult.m_nCode);
    EXPECT_EQ(0, cResult.m_nCount);

    EXPECT_EQ(FPC_ERROR_BITMAP_NO_FINGER, ClGuardedSlapRunner(nFingers).Run(WhiteBlockWith(800, 800, {})).m_nCode);
}

TEST(SegmentationRoad, BiggestObjectIsCutOutWithoutItsLastColumnAndRow)
{
    const ClSlapRect cBig = {40, 700, 621, 100}; // larger than the limit for images of fingers
    const std::vector<std::uint8_t> aBlock = WhiteBlockWith(800, 800, {{650, 700, 700, 100}, cBig, {5, 50, 60, 5}});
    for (const long nOrigin : {nLowerEdge, nUpperEdge})
    {
        const ClSlapRunResult cResult = ClGuardedSlapRunner(nBiggestObject, nOrigin).Run(aBlock);
        ASSERT_EQ(FPC_SUCCESS, cResult.m_nCode);
        ASSERT_EQ(1, cResult.m_nCount);
        const ClSlapRunResult::ClSegment& cSegment = cResult.m_aSegments.at(0);
        EXPECT_EQ(40, cSegment.m_nX);
        EXPECT_EQ(580, cSegment.m_nWidth);
        EXPECT_EQ(599, cSegment.m_nHeight);
        EXPECT_EQ(nOrigin == nLowerEdge ? 100 : 800 - 699, cSegment.m_nY);
        ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, n500Ppi));
        const ClBlockView cView(cSegment.m_aBlock);
        ASSERT_EQ(580, cView.Width());
        ASSERT_EQ(599, cView.Height());
        for (int y = 0; y < 599; ++y)
        {
            const std::uint8_t* pExpected = aBlock.data() + nBeforePixels + (100 + y) * 800 + 40;
            ASSERT_TRUE(std::equal(pExpected, pExpected + 580, cView.Row(y))) << "row " << y;
        }
    }
}

// The ground of a scan is darker than white everywhere, so that the whole picture is one object.
TEST(SegmentationRoad, BiggestObjectOfADrawnSlapIsThePicture)
{
    for (const char* szScene : {"two-fingers", "four-fingers-right"})
    {
        SCOPED_TRACE(szScene);
        const ClSlapPicture cPicture(Scene(szScene, n200Ppi));
        const ClSlapRunResult cResult = ClGuardedSlapRunner(nBiggestObject).Run(cPicture.Block());
        ASSERT_EQ(FPC_SUCCESS, cResult.m_nCode);
        ASSERT_EQ(1, cResult.m_nCount);
        const ClSlapRunResult::ClSegment& cSegment = cResult.m_aSegments.at(0);
        EXPECT_EQ(0, cSegment.m_nX);
        EXPECT_EQ(0, cSegment.m_nY);
        EXPECT_EQ(cPicture.m_nWidth - 1, cSegment.m_nWidth);
        EXPECT_EQ(cPicture.m_nHeight - 1, cSegment.m_nHeight);
        ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, n200Ppi));
        ASSERT_NO_FATAL_FAILURE(ExpectPixelsOfThePicture(cPicture, cSegment, 100000));
    }
}

TEST(SegmentationRoad, BareBlockAndWholeFileGiveTheSame)
{
    for (const char* szScene : {"two-fingers", "three-fingers"})
    {
        SCOPED_TRACE(szScene);
        const ClSlapPicture cPicture(Scene(szScene, n200Ppi));
        for (const long nMode : {nFingers, nBiggestObject})
        {
            ClGuardedSlapRunner cRunner(nMode);
            const ClSlapRunResult cOfBlock = cRunner.Run(cPicture.Block());
            EXPECT_TRUE(cOfBlock == cRunner.Run(cPicture.BmpFile())) << "mode " << nMode;
            EXPECT_TRUE(cOfBlock == cRunner.RunWithoutSize(ClReadOnlyBytes(cPicture.Block())))
                << "unknown size, mode " << nMode;
            EXPECT_TRUE(cOfBlock == cRunner.RunWithoutSize(ClReadOnlyBytes(cPicture.BmpFile())))
                << "unknown size, mode " << nMode;
        }
    }
}

TEST(SegmentationRoad, InputIsNeitherChangedNorReadBeyondItsEnd)
{
    for (const char* szScene : {"one-finger", "leaning-pair", "four-fingers-right"})
    {
        SCOPED_TRACE(szScene);
        const ClSlapPicture cPicture(Scene(szScene, n200Ppi));
        for (const std::vector<std::uint8_t>& aBytes : {cPicture.Block(), cPicture.BmpFile()})
        {
            for (const long nMode : {nFingers, nBiggestObject})
            {
                ClGuardedSlapRunner cRunner(nMode);
                const ClSlapRunResult cExpected = cRunner.Run(aBytes);
                for (const EGuard eGuard : {EGuard::eBehind, EGuard::eBefore, EGuard::eOdd})
                {
                    const ClReadOnlyBytes cInput(aBytes, eGuard); // a byte beyond it, or one written, ends the test
                    EXPECT_TRUE(cExpected == cRunner.Run(cInput)) << "mode " << nMode;
                }
            }
        }
    }
}

TEST(SegmentationRoad, InputMayGoRightAfterTheRun)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(n500Ppi));
    const ClSlapRunResult cExpected = ClGuardedSlapRunner(nFingers, nUpperEdge).Run(cPicture.Block());
    auto pInput = std::make_unique<ClReadOnlyBytes>(cPicture.Block());
    void* hSegmentation = nullptr;
    void* hSegment = nullptr;
    ASSERT_EQ(FPC_SUCCESS, KSInitialize(nullptr));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentationHandle(&hSegmentation));
    ASSERT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&hSegment));
    EXPECT_EQ(FPC_SUCCESS, KSSetPropertyLongA(hSegmentation, "CoordinateOrigin", nUpperEdge));
    ASSERT_EQ(FPC_SUCCESS, SegmentReadOnly(hSegmentation, *pInput));
    pInput.reset(); // touching it from here on kills the test
    for (int i = 0; i < 2; ++i)
    {
        const ClSlapRunResult::ClSegment& cSegment = cExpected.m_aSegments.at(static_cast<std::size_t>(i));
        long nY = 0;
        EXPECT_EQ(FPC_SUCCESS, KSGetSegment(hSegmentation, i, hSegment));
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(hSegment, "y", &nY));
        EXPECT_EQ(cSegment.m_nY, nY);
        std::vector<std::uint8_t> aBlock(cSegment.m_aBlock.size());
        unsigned long nSize = aBlock.size();
        EXPECT_EQ(FPC_SUCCESS, KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBlock.data()), &nSize));
        EXPECT_TRUE(cSegment.m_aBlock == aBlock);
    }
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegment));
    EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&hSegmentation));
    EXPECT_EQ(FPC_SUCCESS, KSUninitialize());
}

// One byte less than the pixels need is refused before anything is read.
TEST(SegmentationRoad, BlockThatIsCutOffIsRefused)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(n200Ppi));
    for (const std::vector<std::uint8_t>& aBytes : {cPicture.Block(), cPicture.BmpFile()})
    {
        for (const std::size_t nMissing : {std::size_t{1}, aBytes.size() / 2})
        {
            const ClReadOnlyBytes cInput(aBytes.data(), aBytes.size() - nMissing);
            const ClSlapRunResult cResult = ClGuardedSlapRunner(nFingers).Run(cInput);
            EXPECT_EQ(FPC_ERROR_TEMPLATE_SIZE, cResult.m_nCode);
        }
    }
}

// Each thread with handles of its own; the counts of references of the library go up and down on both.
TEST(SegmentationRoad, ThreadsWithHandlesOfTheirOwnGiveTheBitsOfOne)
{
    constexpr int nRounds = 2;
    std::deque<ClReadOnlyBytes> aBlocks;
    for (const char* szScene : {"one-finger", "two-fingers", "three-fingers", "leaning-pair"})
        aBlocks.emplace_back(ClSlapPicture(Scene(szScene, n200Ppi)).Block());
    std::vector<ClSlapRunResult> aExpected;
    for (const long nMode : {nFingers, nBiggestObject})
        for (const auto& cBlock : aBlocks) aExpected.push_back(ClGuardedSlapRunner(nMode).Run(cBlock));

    // Both read the same input: in one round in the same order, so that the same stages meet, in the other backwards.
    const auto work = [&](bool bBackwards, std::vector<ClSlapRunResult>& aResults)
    {
        for (int nRound = 0; nRound < nRounds; ++nRound)
        {
            for (std::size_t n = 0; n < aResults.size(); ++n)
            {
                const std::size_t i = bBackwards && nRound == 1 ? aResults.size() - 1 - n : n;
                const long nMode = i < aBlocks.size() ? nFingers : nBiggestObject;
                aResults[i] = ClGuardedSlapRunner(nMode).Run(aBlocks[i % aBlocks.size()]);
            }
        }
    };
    std::vector<ClSlapRunResult> aForwards(aExpected.size());
    std::vector<ClSlapRunResult> aBackwards(aExpected.size());
    std::thread cForwards(work, false, std::ref(aForwards));
    std::thread cBackwards(work, true, std::ref(aBackwards));
    cForwards.join();
    cBackwards.join();
    for (std::size_t i = 0; i < aExpected.size(); ++i)
    {
        EXPECT_TRUE(aExpected[i] == aForwards[i]) << i;
        EXPECT_TRUE(aExpected[i] == aBackwards[i]) << i;
    }
    EXPECT_EQ(FPC_SUCCESS, aExpected[0].m_nCode);
    EXPECT_EQ(1, aExpected[0].m_nCount);
}
