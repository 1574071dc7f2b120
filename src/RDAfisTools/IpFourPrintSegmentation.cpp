#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/Ip1to1Base.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpRotate.hpp"

#include <algorithm>

namespace
{
constexpr int nMaxImageSide = 500; // pixels of a finger image that leaves the processor

/// Size of a cut box at the working resolution; a rotated hand needs more room.
constexpr int nCutWidth = 100;
constexpr int nCutHeight = 120;
constexpr int nRotatedCutWidth = 110;
constexpr int nRotatedCutHeight = 130;
constexpr int nCutMargin = 18;

constexpr double dOverlapLimit = 0.6; // share of a box that another one may cover

constexpr unsigned char nBackground = 255;
} // namespace

ClIpFourPrintSegmentation::ClCustomGeometricObjects::~ClCustomGeometricObjects() = default;

void ClIpFourPrintSegmentation::cBoundingboxes::Reset()
{
    m_nMinX = nNothingSeen;
    m_nMaxX = 0;
    m_nMinY = nNothingSeen;
    m_nMaxY = 0;
}

ClIpFourPrintSegmentation::ClIpFourPrintSegmentation()
{
    ClIpFourPrintSegmentation::SetParametersToDefault();
}

void ClIpFourPrintSegmentation::SetParametersToDefault() {}

void ClIpFourPrintSegmentation::PublishParameters(ClParameterContainer& cContainer)
{
    PublishInOutImages(cContainer, &m_pInImage, &m_pOutImage);
}

ClProcessorBase* ClIpFourPrintSegmentation::Create()
{
    return NewProcessor<ClIpFourPrintSegmentation>();
}

const char* ClIpFourPrintSegmentation::Name() const
{
    return "ClIpFourPrintSegmentation";
}

long ClIpFourPrintSegmentation::ApplyParam(ClImage& in, ClImage& out)
{
    m_pInImage = &in;
    m_pOutImage = &out;
    return Apply();
}

long ClIpFourPrintSegmentation::Process()
{
    m_bSuccess = true;
    ClImage cGrey;
    ClImage cBinary;
    Components_t aComponents;
    Marks_t aSelected;
    double dAngle = 0.0;
    long nResult = Detect(cGrey, cBinary, aComponents, dAngle, aSelected);
    if (nResult == FPC_SUCCESS)
    {
        MakeBoxes(cBinary, aComponents, aSelected, dAngle);
        nResult = CutAndJudge(cGrey, dAngle);
    }
    if (nResult != FPC_SUCCESS)
    {
        m_bSuccess = false;
        return nResult;
    }
    if (m_pOutImage != nullptr)
    {
        *m_pOutImage = cBinary;
    }
    CollectRectangles();
    LimitImages();
    return FPC_SUCCESS;
}

/// From the input picture to the marked candidates. The first stage that fails ends the run with its code.
long ClIpFourPrintSegmentation::Detect(ClImage& cGrey, ClImage& cBinary, Components_t& aComponents, double& dAngle,
                                       Marks_t& aSelected)
{
    ClImage cScaled;
    long nResult = ValidateInput();
    if (nResult == FPC_SUCCESS)
    {
        nResult = PrepareInputImage(cGrey, cScaled);
    }
    if (nResult == FPC_SUCCESS)
    {
        nResult = BinarizeImage(cScaled, cBinary);
    }
    if (nResult == FPC_SUCCESS)
    {
        nResult = FindInitialFingerSegments(cBinary, aComponents, dAngle);
    }
    if (nResult == FPC_SUCCESS)
    {
        nResult = ApplyRulesToGetRightFingerSegments(aComponents, cBinary, aSelected);
    }
    return nResult;
}

/// The tight boxes of the fingers from left to right, and the generous boxes in which they are cut out.
void ClIpFourPrintSegmentation::MakeBoxes(const ClImage& cBinary, Components_t& aComponents, const Marks_t& aSelected,
                                          double dAngle)
{
    InitBoundingboxes(m_aBoxes, m_nFingers, 0.0f, 1.0f, 0.0f, 1.0f);
    InitBoundingboxes(m_aOriginBoxes, m_nFingers, 1.0f, 0.0f, 0.0f, 1.0f);
    unsigned long n = 0;
    for (unsigned long k = 0; k < m_aCenters.Entries(); ++k)
    {
        if (aSelected[k] == 0 || k >= aComponents.m_nEntries || n >= static_cast<unsigned long>(m_nFingers))
        {
            continue;
        }
        const auto [nFromX, nToX] =
            std::minmax({static_cast<int>(aComponents[k].m_cMin.m_dX), static_cast<int>(aComponents[k].m_cMax.m_dX)});
        const auto [nFromY, nToY] =
            std::minmax({static_cast<int>(aComponents[k].m_cMin.m_dY), static_cast<int>(aComponents[k].m_cMax.m_dY)});
        cBoundingboxes& cBox = m_aBoxes[n++];
        cBox.m_nMinX = nFromX;
        cBox.m_nMaxX = nToX;
        cBox.m_nMinY = nFromY;
        cBox.m_nMaxY = nToY;
    }
    SortBoundingboxesByXCoordinate(m_aBoxes);
    const bool bRotated = dAngle != 0.0;
    BoundingBoxCorrection(m_aBoxes, m_aOriginBoxes, bRotated ? nRotatedCutWidth : nCutWidth,
                          bRotated ? nRotatedCutHeight : nCutHeight, nCutMargin,
                          static_cast<unsigned long>(cBinary.m_nWidth), static_cast<unsigned long>(cBinary.m_nHeight));
    if (!bRotated)
    {
        RemoveAmputatedFingerprints(m_aBoxes, m_aOriginBoxes, m_nFingers);
    }
}

/// The full-resolution image is turned so that the hand stands upright; new corners are background.
void ClIpFourPrintSegmentation::RotateGrey(ClImage& cGrey, double dAngle)
{
    ClIpRotate cRotate;
    cRotate.m_nBackgroundColor = nBackground;
    ClImage cRotated;
    RunLeavingEmpty(cRotated,
                    [&] { cRotate.ApplyParam(cGrey, cRotated, ClVector(0, 0), dUpright - dAngle, true, false); });
    m_nRotationDelta = cRotated.m_nWidth - cGrey.m_nWidth;
    cGrey.Swap(cRotated);
    m_dRotation = dAngle;
}

/// Fingers are cut out of the full-resolution image, refined and pruned, and the hand is decided. The image is given
/// back: it may share the input's pixels, and these may be the output's.
long ClIpFourPrintSegmentation::CutAndJudge(ClImage& cGrey, double dAngle)
{
    if (!m_bCutFingers)
    {
        cGrey.Delete();
        return FPC_SUCCESS; // the boxes alone: without images there is nothing to judge
    }
    const unsigned long nFingers = static_cast<unsigned long>(m_nFingers);
    TpArrayStatic<bool> aLeftOfCenter(nFingers);
    TpArrayStatic<bool> abAtImageEdge(nFingers);
    std::fill_n(aLeftOfCenter.m_pData, nFingers, true);
    std::fill_n(abAtImageEdge.m_pData, nFingers, false);
    bool bFarFromEdge = false;
    m_aImages.New(nFingers);
    m_aCutImages.New(nFingers);
    m_aResultBoxes.New(nFingers);
    if (dAngle != 0.0)
    {
        RotateGrey(cGrey, dAngle);
    }
    for (int i = 0; i < m_nFingers; ++i)
    {
        const unsigned long nBox = static_cast<unsigned long>(i);
        CutFingerFromImage(m_aOriginBoxes[nBox], cGrey, m_aCutImages, FingerIndex(i), aLeftOfCenter,
                           abAtImageEdge[nBox], bFarFromEdge, static_cast<unsigned long>(m_pInImage->m_nWidth),
                           static_cast<unsigned long>(m_pInImage->m_nHeight));
    }
    cGrey.Delete(); // the cut-outs serve from here on: the refinement gets the room of a turned picture
    if (m_bRefineFingers)
    {
        RefineFingers(abAtImageEdge);
    }
    DropFingersWithoutImage();
    RemoveRelativelySmallFingerprintBoxes(m_aImages, m_aResultBoxes, m_aOriginBoxes, m_nFingers);
    RemoveOverlappingFingerprintBoxes(m_aImages, m_aResultBoxes, m_aOriginBoxes, m_nFingers, dOverlapLimit);
    ReduceFingerCountToMaxOfFourByRules(m_aImages, m_aResultBoxes, m_aOriginBoxes, m_nFingers);
    long nResult = SpecifyHand();
    if (nResult == FPC_SUCCESS && bFarFromEdge)
    {
        nResult = ProcessHorizontalThumbs(aLeftOfCenter);
    }
    return nResult;
}

void ClIpFourPrintSegmentation::DropFingersWithoutImage()
{
    unsigned long m = 0;
    while (m < m_aImages.Entries())
    {
        if (m_aImages[m].Data() != nullptr)
        {
            ++m;
            continue;
        }
        RemoveImage(m_aImages, m);
        m_aResultBoxes.RemoveAt(m);
        m_aOriginBoxes.RemoveAt(m);
        --m_nFingers;
    }
}

/// The later images move down one place as they are; assigning them would copy the pixels of all. No effect for an
/// index beyond the end.
void ClIpFourPrintSegmentation::RemoveImage(Images_t& aImages, unsigned long nIndex)
{
    if (nIndex >= aImages.Entries())
    {
        return;
    }
    for (unsigned long i = nIndex + 1; i < aImages.Entries(); ++i)
    {
        aImages[i - 1].Swap(aImages[i]);
    }
    aImages.RemoveAt(aImages.Entries() - 1);
}

void ClIpFourPrintSegmentation::CollectRectangles()
{
    for (unsigned long i = 0; i < m_aImages.Entries(); ++i)
    {
        long nLeft = 0;
        long nRight = 0;
        long nBottom = 0;
        long nTop = 0;
        CalculateBoxCoordinates(m_aResultBoxes[i], m_aOriginBoxes[i], nLeft, nRight, nBottom, nTop);
        m_aRects.Add(tagRECT{static_cast<int>(nLeft), static_cast<int>(nTop), static_cast<int>(nRight),
                             static_cast<int>(nBottom)});
    }
}

/// A wide finger is centred in x, a tall one keeps its last rows, the side of the tip. The rectangles stay as they are.
void ClIpFourPrintSegmentation::LimitImages()
{
    for (unsigned long i = 0; i < m_aImages.Entries(); ++i)
    {
        ClImage& cImage = m_aImages[i];
        const int nWidth = std::min(cImage.m_nWidth, nMaxImageSide);
        const int nHeight = std::min(cImage.m_nHeight, nMaxImageSide);
        if (nWidth == cImage.m_nWidth && nHeight == cImage.m_nHeight)
        {
            continue;
        }
        ClImage cTemp;
        ClIpCut().ApplyParam(cImage, (cImage.m_nWidth - nWidth) / 2, cImage.m_nHeight - nHeight, nWidth, nHeight,
                             cTemp);
        cImage.Swap(cTemp);
    }
}
