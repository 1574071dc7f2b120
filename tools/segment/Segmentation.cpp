#include "Segmentation.hpp"

#include "FingerCode.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cmath>

namespace SegmentTool
{
namespace
{
// What the number means for this picture, and what to do; the catalogue's text where there is no more to say.
std::string Explain(long nCode, bool bBiggest, const ClImage& cImage)
{
    const auto Ppi = [](int nPels) { return std::to_string(std::lround(nPels * dMetresPerInch)); };
    switch (nCode)
    {
    case FPC_ERROR_BITMAP_PELS:
        return "the resolution is " + Ppi(std::min(cImage.m_nXRes, cImage.m_nYRes)) +
               " pixels per inch; at least 100 are needed. If the file tells a wrong one, give the right one with "
               "--ppi N";
    case FPC_ERROR_BITMAP_DIMENSION:
        return "the picture has " + std::to_string(cImage.m_nWidth) + " by " + std::to_string(cImage.m_nHeight) +
               " pixels; at least 160 by 160 are needed";
    case FPC_ERROR_BITMAP_NO_FINGER: return "all pixels are alike: there is no finger";
    case FPC_ERROR_PARAM_INVALID:
        if (bBiggest) return "the picture is white all over: there is no object";
        break;
    case FPC_ERROR_PARAM_OUT_OF_RANGE:
        if (bBiggest) return "the biggest object is a single row or column of pixels";
        break;
    default: break;
    }
    return GetErrorDescriptionIntern(nCode);
}

[[noreturn]] void Fail(long nCode, bool bBiggest, const ClImage& cImage)
{
    throw ClPictureError(nCode, Explain(nCode, bBiggest, cImage));
}

// left and right are columns, bottom and top rows as stored, top being above the finger.
ClFinger FingerOf(int nPosition, const tagRECT& cRectangle, int nPictureHeight, const ClImage& cCut)
{
    ClFinger cFinger;
    cFinger.m_nPosition = nPosition;
    cFinger.m_nX = cRectangle.left;
    cFinger.m_nStoredY = cRectangle.bottom;
    cFinger.m_nSeenY = nPictureHeight - cRectangle.top;
    cFinger.m_nWidth = cRectangle.right - cRectangle.left;
    cFinger.m_nHeight = cRectangle.top - cRectangle.bottom;
    cFinger.m_nCutWidth = cCut.m_nWidth;
    cFinger.m_nCutHeight = cCut.m_nHeight;
    return cFinger;
}

void CutFingers(ClImage& cImage, ClResult& cResult, FingerImages_t& aImages)
{
    ClIpFourPrintSegmentation cProcessor;
    cProcessor.m_pInImage = &cImage;
    if (const long nError = cProcessor.Apply()) Fail(nError, false, cImage);
    cResult.m_eHand = HandFromNumber(cProcessor.m_nHand);
    const unsigned long nFingers = std::min(cProcessor.m_aRects.Entries(), cProcessor.m_aImages.Entries());
    const std::vector<int> anCodes =
        PositionCodes(cResult.m_eHand, cProcessor.m_abFingerSlots, static_cast<int>(nFingers));
    if (nFingers == 0) cResult.m_eHand = EHand::eUndecided;
    for (unsigned long i = 0; i < nFingers; ++i)
    {
        cResult.m_aFingers.push_back(
            FingerOf(anCodes[i], cProcessor.m_aRects[i], cImage.m_nHeight, cProcessor.m_aImages[i]));
        aImages.Add(cProcessor.m_aImages[i]);
    }
}

void CutBiggest(ClImage& cImage, ClResult& cResult, FingerImages_t& aImages)
{
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    if (const long nError = cCut.ApplyParam(cImage, cOut)) Fail(nError, true, cImage);
    tagRECT cRectangle;
    cRectangle.left = static_cast<int>(cCut.m_nCutX0);
    cRectangle.bottom = static_cast<int>(cCut.m_nCutY0);
    cRectangle.right = static_cast<int>(cCut.m_nCutX0 + cCut.m_nCutWidth);
    cRectangle.top = static_cast<int>(cCut.m_nCutY0 + cCut.m_nCutHeight);
    cResult.m_aFingers.push_back(FingerOf(0, cRectangle, cImage.m_nHeight, cOut));
    aImages.Add(cOut);
}
} // namespace

void Segment(ClPicture& cPicture, bool bBiggest, int nExpect, ClResult& cResult, FingerImages_t& aImages)
{
    ClImage& cImage = cPicture.m_cImage;
    cResult.m_bBiggest = bBiggest;
    cResult.m_nWidth = cImage.m_nWidth;
    cResult.m_nHeight = cImage.m_nHeight;
    cResult.m_nXPels = cImage.m_nXRes;
    cResult.m_nYPels = cImage.m_nYRes;
    try
    {
        if (bBiggest)
            CutBiggest(cImage, cResult, aImages);
        else
            CutFingers(cImage, cResult, aImages);
    }
    catch (const ClExBadAlloc&)
    {
        throw;
    }
    catch (const ClException& cError)
    {
        Fail(cError.Number(), bBiggest, cImage);
    }
    const auto nFingers = static_cast<int>(cResult.m_aFingers.size());
    cResult.m_eOutcome = nFingers == 0        ? EOutcome::eNoFinger
                         : nFingers < nExpect ? EOutcome::eTooFew
                                              : EOutcome::eSegmented;
    if (cResult.m_eOutcome == EOutcome::eNoFinger) cResult.m_sMessage = "no finger found";
    if (cResult.m_eOutcome == EOutcome::eTooFew)
    {
        cResult.m_sMessage = std::to_string(nFingers) + (nFingers == 1 ? " finger" : " fingers") + " found, " +
                             std::to_string(nExpect) + " expected";
    }
}

EOutcome FailureOutcome(long nCode, bool bWhileReading, bool bBiggest)
{
    if (nCode == FPC_ERROR_OUT_OF_MEMORY) return EOutcome::eFailed;
    if (bWhileReading) return EOutcome::eUnreadable;
    switch (nCode)
    {
    case FPC_ERROR_BITMAP_PELS:
    case FPC_ERROR_BITMAP_DIMENSION: return EOutcome::eUnreadable;
    case FPC_ERROR_BITMAP_NO_FINGER: return EOutcome::eNoFinger;
    case FPC_ERROR_PARAM_INVALID:
    case FPC_ERROR_PARAM_OUT_OF_RANGE: return bBiggest ? EOutcome::eNoFinger : EOutcome::eFailed;
    default: return EOutcome::eFailed;
    }
}
} // namespace SegmentTool
