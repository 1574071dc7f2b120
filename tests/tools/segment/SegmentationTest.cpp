#include "Segmentation.hpp"

#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include "RDTools/Exception.hpp"

#include <cstring>

using namespace SegmentTool;

namespace
{
void Fill(ClPicture& cPicture, const ClSlapPicture& cSlap)
{
    cPicture.Create(cSlap.m_nWidth, cSlap.m_nHeight);
    for (int y = 0; y < cSlap.m_nHeight; ++y)
    {
        std::memcpy(cPicture.RowFromTop(cSlap.m_nHeight - 1 - y),
                    cSlap.m_aPixels.data() + static_cast<std::ptrdiff_t>(y) * cSlap.m_nWidth,
                    static_cast<std::size_t>(cSlap.m_nWidth));
    }
    cPicture.m_dXPels = cPicture.m_dYPels = cSlap.m_nPelsPerMetre;
    SetResolution(cPicture, 0.0);
}

ClResult SegmentScene(const ClSlapScene& cScene, int nExpect, FingerImages_t& aImages)
{
    ClPicture cPicture;
    const ClSlapPicture cSlap(cScene);
    Fill(cPicture, cSlap);
    ClResult cResult;
    Segment(cPicture, false, nExpect, cResult, aImages);
    // Each drawn fingertip's middle lies in the finger of the same place from the left.
    EXPECT_EQ(cSlap.m_aFingers.size(), cResult.m_aFingers.size());
    for (std::size_t i = 0; i < std::min(cSlap.m_aFingers.size(), cResult.m_aFingers.size()); ++i)
    {
        const ClSlapRect& cDrawn = cSlap.m_aFingers[i];
        const ClFinger& cFound = cResult.m_aFingers[i];
        const int nX = (cDrawn.left + cDrawn.right) / 2;
        const int nY = (cDrawn.bottom + cDrawn.top) / 2;
        EXPECT_TRUE(nX >= cFound.m_nX && nX < cFound.m_nX + cFound.m_nWidth) << i;
        EXPECT_TRUE(nY >= cFound.m_nStoredY && nY < cFound.m_nStoredY + cFound.m_nHeight) << i;
        EXPECT_EQ(cSlap.m_nHeight, cFound.m_nStoredY + cFound.m_nHeight + cFound.m_nSeenY) << i;
        EXPECT_EQ(aImages[i].m_nWidth, cFound.m_nCutWidth);
        EXPECT_EQ(aImages[i].m_nHeight, cFound.m_nCutHeight);
        EXPECT_EQ(cSlap.m_nPelsPerMetre, aImages[i].m_nXRes);
    }
    return cResult;
}

std::vector<int> Positions(const ClResult& cResult)
{
    std::vector<int> anPositions;
    for (const ClFinger& cFinger : cResult.m_aFingers) anPositions.push_back(cFinger.m_nPosition);
    return anPositions;
}

std::pair<long, std::string> Refusal(ClPicture& cPicture, bool bBiggest)
{
    ClResult cResult;
    FingerImages_t aImages;
    try
    {
        Segment(cPicture, bBiggest, 0, cResult, aImages);
    }
    catch (const ClPictureError& cError)
    {
        EXPECT_EQ(cPicture.Width(), cResult.m_nWidth) << "told in spite of the failure";
        return {cError.m_nCode, cError.what()};
    }
    return {0, ""};
}
} // namespace

TEST(Segmentation, FourFingersOfEachHandGetTheirPositions)
{
    FingerImages_t aImages;
    const ClResult cRight = SegmentScene(SlapScenes::FourFingers(SlapScenes::eRightHand, 19685), 4, aImages);
    EXPECT_EQ(EHand::eRight, cRight.m_eHand);
    EXPECT_EQ((std::vector<int>{2, 3, 4, 5}), Positions(cRight));
    EXPECT_EQ(EOutcome::eSegmented, cRight.m_eOutcome);
    EXPECT_EQ(19685, cRight.m_nXPels);

    FingerImages_t aOthers;
    const ClResult cLeft = SegmentScene(SlapScenes::FourFingers(SlapScenes::eLeftHand, 19685), 0, aOthers);
    EXPECT_EQ(EHand::eLeft, cLeft.m_eHand);
    EXPECT_EQ((std::vector<int>{10, 9, 8, 7}), Positions(cLeft));
}

TEST(Segmentation, FewerFingersThanExpectedAreTooFew)
{
    FingerImages_t aImages;
    const ClResult cResult = SegmentScene(SlapScenes::ThreeFingers(19685), 4, aImages);
    EXPECT_EQ(EOutcome::eTooFew, cResult.m_eOutcome);
    EXPECT_EQ("3 fingers found, 4 expected", cResult.m_sMessage);
    EXPECT_EQ(0, cResult.m_nCode);
    EXPECT_EQ(3u, aImages.Entries()) << "they are there all the same";
}

TEST(Segmentation, ALoneFingerIsOfNoHand)
{
    FingerImages_t aImages;
    const ClResult cResult = SegmentScene(SlapScenes::OneFinger(19685), 1, aImages);
    EXPECT_EQ(EHand::eUndecided, cResult.m_eHand);
    EXPECT_EQ(std::vector<int>{0}, Positions(cResult));
}

TEST(Segmentation, WithoutAnObjectNoFingerIsFound)
{
    ClPicture cPicture;
    cPicture.Create(600, 600);
    cPicture.m_dXPels = cPicture.m_dYPels = 19685;
    SetResolution(cPicture, 0.0);
    cPicture.RowFromTop(0)[0] = 0; // not all pixels are alike
    ClResult cResult;
    FingerImages_t aImages;
    Segment(cPicture, false, 0, cResult, aImages);
    EXPECT_EQ(EOutcome::eNoFinger, cResult.m_eOutcome);
    EXPECT_EQ("no finger found", cResult.m_sMessage);
    EXPECT_TRUE(cResult.m_aFingers.empty());
}

TEST(Segmentation, RefusalsTellThePictureApart)
{
    ClPicture cPicture;
    cPicture.Create(100, 80);
    cPicture.m_cImage.m_nXRes = cPicture.m_cImage.m_nYRes = 3000;
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, Refusal(cPicture, false).first);
    EXPECT_NE(std::string::npos, Refusal(cPicture, false).second.find("76 pixels per inch"));
    cPicture.m_cImage.m_nXRes = cPicture.m_cImage.m_nYRes = 19685;
    EXPECT_EQ(FPC_ERROR_BITMAP_NO_FINGER, Refusal(cPicture, false).first);
    EXPECT_EQ(FPC_ERROR_PARAM_INVALID, Refusal(cPicture, true).first) << "white all over";
    cPicture.RowFromTop(5)[5] = 0;
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, Refusal(cPicture, false).first);
    EXPECT_NE(std::string::npos, Refusal(cPicture, false).second.find("100 by 80"));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, Refusal(cPicture, true).first) << "a single pixel";
}

TEST(Segmentation, TheBiggestObjectIsCutOut)
{
    ClPicture cPicture;
    cPicture.Create(60, 50);
    for (int y = 10; y < 30; ++y) std::memset(cPicture.RowFromTop(y) + 5, 90, 40); // rows 20 to 39 as stored
    cPicture.m_cImage.m_nXRes = cPicture.m_cImage.m_nYRes = 19685;
    ClResult cResult;
    FingerImages_t aImages;
    Segment(cPicture, true, 0, cResult, aImages);
    ASSERT_EQ(1u, cResult.m_aFingers.size());
    const ClFinger& c = cResult.m_aFingers[0];
    EXPECT_TRUE(cResult.m_bBiggest);
    EXPECT_EQ(EOutcome::eSegmented, cResult.m_eOutcome);
    // One column and one row less than the object, by the operator's design.
    EXPECT_EQ((std::vector<int>{0, 5, 20, 11, 39, 19, 39, 19}),
              (std::vector<int>{c.m_nPosition, c.m_nX, c.m_nStoredY, c.m_nSeenY, c.m_nWidth, c.m_nHeight, c.m_nCutWidth,
                                c.m_nCutHeight}));
}

TEST(Segmentation, OutcomesOfFailures)
{
    EXPECT_EQ(EOutcome::eUnreadable, FailureOutcome(FPC_ERROR_FILE_OPEN_FAIL, true, false));
    EXPECT_EQ(EOutcome::eUnreadable, FailureOutcome(FPC_ERROR_BITMAP_NO_FINGER, true, false));
    EXPECT_EQ(EOutcome::eFailed, FailureOutcome(FPC_ERROR_OUT_OF_MEMORY, true, false));
    EXPECT_EQ(EOutcome::eFailed, FailureOutcome(FPC_ERROR_OUT_OF_MEMORY, false, false));
    EXPECT_EQ(EOutcome::eUnreadable, FailureOutcome(FPC_ERROR_BITMAP_PELS, false, false));
    EXPECT_EQ(EOutcome::eUnreadable, FailureOutcome(FPC_ERROR_BITMAP_DIMENSION, false, false));
    EXPECT_EQ(EOutcome::eNoFinger, FailureOutcome(FPC_ERROR_BITMAP_NO_FINGER, false, false));
    EXPECT_EQ(EOutcome::eNoFinger, FailureOutcome(FPC_ERROR_PARAM_INVALID, false, true));
    EXPECT_EQ(EOutcome::eFailed, FailureOutcome(FPC_ERROR_PARAM_INVALID, false, false));
    EXPECT_EQ(EOutcome::eFailed, FailureOutcome(FPC_ERROR_INTERNAL, false, false));
}
