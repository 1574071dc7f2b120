#include "SlapPicture.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace SlapScenes
{
namespace
{
constexpr int nSmallSide = 41000; // of a picture for one or two fingers
constexpr int nHandWidth = 81300; // of a picture for four fingers
constexpr int nHandHeight = 76300;
constexpr int nPalmPictureHeight = 122000;

// A right hand, from the index finger to the little finger.
struct ClFingerShape
{
    int m_nCentreX;
    int m_nBelowMiddle; // how far the tip lies below that of the middle finger
    int m_nWidth;
    int m_nLength;
    ClSlapPart::EPattern m_ePattern;
};
constexpr ClFingerShape aRightHand[] = {{10200, 7800, 15600, 24500, ClSlapPart::eWhorl},
                                        {30500, 0, 16200, 26000, ClSlapPart::eLoopRight},
                                        {51000, 3600, 15400, 25000, ClSlapPart::eArch},
                                        {70600, 15500, 13400, 21500, ClSlapPart::eLoopRight}};

ClSlapScene EmptyScene(int nWidth, int nHeight, int nPelsPerMetre, unsigned nSeed)
{
    ClSlapScene cScene;
    cScene.m_nPelsPerMetre = nPelsPerMetre;
    cScene.m_nWidth = nWidth;
    cScene.m_nHeight = nHeight;
    cScene.m_nSeed = nSeed;
    return cScene;
}

ClSlapPart Part(ClSlapPart::EKind eKind, int nTipX, int nTipY, int nWidth, int nLength)
{
    ClSlapPart cPart;
    cPart.m_eKind = eKind;
    cPart.m_nTipX = nTipX;
    cPart.m_nTipY = nTipY;
    cPart.m_nWidth = nWidth;
    cPart.m_nLength = nLength;
    return cPart;
}

// The first fingers of the right hand, from the index finger on; nMiddleTip is the row of the middle finger's tip.
void AddFingers(ClSlapScene& cScene, int nFingers, int nMiddleTip)
{
    for (int i = 0; i < nFingers; ++i)
    {
        const ClFingerShape& cShape = aRightHand[i];
        cScene.m_aParts.push_back(Part(ClSlapPart::eFingertip, cShape.m_nCentreX, nMiddleTip - cShape.m_nBelowMiddle,
                                       cShape.m_nWidth, cShape.m_nLength));
        cScene.m_aParts.back().m_ePattern = cShape.m_ePattern;
    }
}

// Two joints below each fingertip of the scene, with gaps of 3 mm where the finger bends.
void AddJoints(ClSlapScene& cScene)
{
    const std::vector<ClSlapPart> aTips = cScene.m_aParts;
    for (const ClSlapPart& cTip : aTips)
    {
        const int nMiddleJoint = cTip.m_nTipY - cTip.m_nLength - 3000;
        const int nLength = cTip.m_nLength * 3 / 4;
        const int nWidth = cTip.m_nWidth * 9 / 10;
        cScene.m_aParts.push_back(Part(ClSlapPart::eJoint, cTip.m_nTipX, nMiddleJoint, nWidth, nLength));
        cScene.m_aParts.push_back(
            Part(ClSlapPart::eJoint, cTip.m_nTipX, nMiddleJoint - nLength - 3000, nWidth, nLength));
    }
}

ClSlapScene HandWithPalm(int nFingers, int nWidth, int nPelsPerMetre, unsigned nSeed)
{
    ClSlapScene cScene = EmptyScene(nWidth, nPalmPictureHeight, nPelsPerMetre, nSeed);
    AddFingers(cScene, nFingers, nPalmPictureHeight - 4000);
    AddJoints(cScene);
    cScene.m_aParts.push_back(Part(ClSlapPart::ePalm, nWidth / 2, 38500, nWidth - 4000, 37000));
    return cScene;
}

// Enlarges the picture so that the leaning scene still fits, and moves the parts to its middle.
ClSlapScene Leaning(ClSlapScene cScene, double dLean)
{
    const ClSlapTurn cTurn(dLean);
    const std::int64_t nSine = cTurn.m_nSine < 0 ? -cTurn.m_nSine : cTurn.m_nSine;
    const std::int64_t nWidth = (cScene.m_nWidth * cTurn.m_nCosine + cScene.m_nHeight * nSine) / ClSlapTurn::m_nOne;
    const std::int64_t nHeight = (cScene.m_nHeight * cTurn.m_nCosine + cScene.m_nWidth * nSine) / ClSlapTurn::m_nOne;
    for (ClSlapPart& cPart : cScene.m_aParts)
    {
        cPart.m_nTipX += static_cast<int>(nWidth - cScene.m_nWidth) / 2;
        cPart.m_nTipY += static_cast<int>(nHeight - cScene.m_nHeight) / 2;
    }
    cScene.m_nWidth = static_cast<int>(nWidth);
    cScene.m_nHeight = static_cast<int>(nHeight);
    cScene.m_dLean = dLean;
    return cScene;
}
} // namespace

ClSlapScene OneFinger(int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(nSmallSide, nSmallSide, nPelsPerMetre, 11);
    cScene.m_aParts.push_back(Part(ClSlapPart::eFingertip, nSmallSide / 2, 34500, 16500, 26000));
    cScene.m_aParts.back().m_ePattern = ClSlapPart::eLoopLeft;
    return cScene;
}

ClSlapScene TwoFingers(int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(nSmallSide, nSmallSide, nPelsPerMetre, 12);
    AddFingers(cScene, 2, 37500);
    return cScene;
}

ClSlapScene ThreeFingers(int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(61200, 50800, nPelsPerMetre, 13);
    AddFingers(cScene, 3, 46500);
    return cScene;
}

ClSlapScene FourFingers(EHand eHand, int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(nHandWidth, nHandHeight, nPelsPerMetre, eHand == eRightHand ? 14 : 15);
    AddFingers(cScene, 4, 66500);
    if (eHand == eRightHand) return cScene;
    for (ClSlapPart& cPart : cScene.m_aParts)
    {
        cPart.m_nTipX = nHandWidth - cPart.m_nTipX;
        if (cPart.m_ePattern == ClSlapPart::eLoopRight) cPart.m_ePattern = ClSlapPart::eLoopLeft;
    }
    return cScene;
}

ClSlapScene TwoFlatThumbs(int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(76200, 61000, nPelsPerMetre, 16);
    for (const bool bLeft : {true, false})
    {
        // The tips lie 7 mm to either side of the middle.
        ClSlapPart cThumb = Part(ClSlapPart::eFingertip, bLeft ? 31100 : 45100, bLeft ? 27500 : 28300, 18500, 27000);
        cThumb.m_ePointing = bLeft ? ClSlapPart::eRight : ClSlapPart::eLeft;
        cThumb.m_ePattern = bLeft ? ClSlapPart::eLoopRight : ClSlapPart::eWhorl;
        cScene.m_aParts.push_back(cThumb);
    }
    return cScene;
}

ClSlapScene LeaningHand(double dLean, int nPelsPerMetre)
{
    return Leaning(FourFingers(eRightHand, nPelsPerMetre), dLean);
}

ClSlapScene LeaningPair(double dLean, int nPelsPerMetre)
{
    return Leaning(TwoFingers(nPelsPerMetre), dLean);
}

ClSlapScene TouchingFingers(int nPelsPerMetre)
{
    ClSlapScene cScene = EmptyScene(nSmallSide, nSmallSide, nPelsPerMetre, 17);
    AddFingers(cScene, 2, 37500);
    cScene.m_aParts[0].m_nTipX = 12800;
    cScene.m_aParts[0].m_nTipY = 34500;
    cScene.m_aParts[1].m_nTipX = 28100;
    return cScene;
}

ClSlapScene FingersWithJointsAndPalm(int nPelsPerMetre)
{
    return HandWithPalm(4, nHandWidth, nPelsPerMetre, 18);
}

ClSlapScene TwoFingersWithJointsAndPalm(int nPelsPerMetre)
{
    return HandWithPalm(2, nSmallSide, nPelsPerMetre, 19);
}

const std::vector<ClNamedScene>& All()
{
    static const std::vector<ClNamedScene> aScenes = {
        {"one-finger", "one upright finger", OneFinger},
        {"two-fingers", "index and middle finger of a right hand", TwoFingers},
        {"three-fingers", "index, middle and ring finger of a right hand", ThreeFingers},
        {"four-fingers-left", "four fingers of a left hand", [](int n) { return FourFingers(eLeftHand, n); }},
        {"four-fingers-right", "four fingers of a right hand", [](int n) { return FourFingers(eRightHand, n); }},
        {"two-flat-thumbs", "two thumbs across the picture, tips towards each other", TwoFlatThumbs},
        {"leaning-hand-left", "four fingers, tips 0.35 radians to the left",
         [](int n) { return LeaningHand(0.35, n); }},
        {"leaning-hand-right", "four fingers, tips 0.35 radians to the right",
         [](int n) { return LeaningHand(-0.35, n); }},
        {"leaning-pair", "two fingers, tips 0.2 radians to the left", [](int n) { return LeaningPair(0.2, n); }},
        {"touching-fingers", "two fingers pressed side by side", TouchingFingers},
        {"hand-with-palm", "four fingers, their lower joints and a palm", FingersWithJointsAndPalm},
        {"pair-with-palm", "two fingers, their lower joints and a palm", TwoFingersWithJointsAndPalm},
    };
    return aScenes;
}

const ClNamedScene* Find(const std::string& sName)
{
    for (const ClNamedScene& cScene : All())
        if (sName == cScene.m_szName) return &cScene;
    return nullptr;
}
} // namespace SlapScenes
