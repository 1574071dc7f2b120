#include "FourPrintReference.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <sstream>

namespace
{
using Box = ClIpFourPrintSegmentation::cBoundingboxes;
using Boxes = ClIpFourPrintSegmentation::Boxes_t;

unsigned char& Pixel(ClImage& cImage, int x, int y)
{
    return Row<unsigned char>(cImage, y)[x];
}

struct StObject
{
    int nMinX;
    int nMaxX;
    int nMinY;
    int nMaxY;
};

void Fill(ClImage& cImage, int nX, int nY, unsigned char nLabel)
{
    if (nLabel == 0)
    {
        return; // an object that already has the colour
    }
    std::vector<std::pair<int, int>> aOpen = {{nX, nY}};
    while (!aOpen.empty())
    {
        const auto [x, y] = aOpen.back();
        aOpen.pop_back();
        if (x < 0 || y < 0 || x >= cImage.m_nWidth || y >= cImage.m_nHeight || Pixel(cImage, x, y) != 0)
        {
            continue;
        }
        Pixel(cImage, x, y) = nLabel;
        aOpen.insert(aOpen.end(), {{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}});
    }
}

/// Numbers the black objects in the image itself. Only the first search looks at row 0.
std::vector<StObject> Label(ClImage& cImage)
{
    unsigned int nLabel = 1;
    int nFirstRow = 0;
    const auto next = [&]
    {
        for (int y = nFirstRow; y < cImage.m_nHeight; ++y)
        {
            for (int x = 0; x < cImage.m_nWidth; ++x)
            {
                if (Pixel(cImage, x, y) == 0)
                {
                    Fill(cImage, x, y, static_cast<unsigned char>(nLabel));
                    return true;
                }
            }
        }
        return false;
    };
    while (next())
    {
        ++nLabel;
        nFirstRow = 1;
    }
    std::vector<StObject> aObjects;
    for (unsigned int n = 1; n < (nLabel & 255u); ++n)
    {
        StObject c{cImage.m_nWidth - 1, 0, cImage.m_nHeight - 1, 0};
        for (int y = 0; y < cImage.m_nHeight; ++y)
        {
            for (int x = 0; x < cImage.m_nWidth; ++x)
            {
                if (Pixel(cImage, x, y) == n)
                {
                    c = {std::min(c.nMinX, x), std::max(c.nMaxX, x), std::min(c.nMinY, y), std::max(c.nMaxY, y)};
                }
            }
        }
        aObjects.push_back(c);
    }
    return aObjects;
}

bool HoldsMiddle(const StObject& c, const ClImage& cImage)
{
    const int x = cImage.m_nWidth / 2;
    const int y = cImage.m_nHeight / 2;
    return c.nMinX < x && x < c.nMaxX && c.nMinY < y && y < c.nMaxY;
}

/// Replaces an image by a rectangle of it.
void CutInPlace(ClImage& cImage, int nX, int nY, int nWidth, int nHeight)
{
    ClImage cCut;
    ClIpCut().ApplyParam(cImage, nX, nY, nWidth, nHeight, cCut);
    cImage = cCut;
}

void OrderBox(Box& c)
{
    if (c.m_nMinX > c.m_nMaxX)
    {
        std::swap(c.m_nMinX, c.m_nMaxX);
    }
    if (c.m_nMinY > c.m_nMaxY)
    {
        std::swap(c.m_nMinY, c.m_nMaxY);
    }
}

/// Row of the narrowest place between a left and a right border pixel, over every pair of rows.
int NeckRow(ClImage& cTest, const std::vector<StObject>& aObjects)
{
    double dBest = 999999.0;
    int nLeftRow = 0;
    int nRightRow = 0;
    for (const StObject& c : aObjects)
    {
        if (!HoldsMiddle(c, cTest))
        {
            continue;
        }
        const int nEnd = c.nMaxY - (c.nMaxY - c.nMinY) / 2;
        for (int r = c.nMinY; r < nEnd; ++r)
        {
            int nLeft = c.nMinX;
            while (nLeft < c.nMaxX && Pixel(cTest, nLeft, r) == 255)
            {
                ++nLeft;
            }
            for (int r2 = c.nMinY; nLeft != c.nMaxX && r2 < nEnd; ++r2)
            {
                int nRight = c.nMaxX;
                while (nRight > c.nMinX && Pixel(cTest, nRight, r2) == 255)
                {
                    --nRight;
                }
                const double d = (r2 - r) * (r2 - r) + (nRight - nLeft) * (nRight - nLeft);
                if (nRight != c.nMinX && d < dBest)
                {
                    dBest = d;
                    nLeftRow = r;
                    nRightRow = r2;
                }
            }
        }
    }
    return std::min(nLeftRow, nRightRow);
}

struct StArea
{
    int nX0;
    int nY0;
    int nX1;
    int nY1;
};

StArea Expected(const Box& cBox, const Box& cOrigin, double dScale)
{
    const auto scaled = [dScale](int nDifference)
    { return static_cast<int>((nDifference < 1 ? 0 : nDifference) * dScale); };
    StArea c;
    c.nX0 = scaled(cBox.m_nMinX - cOrigin.m_nMinX) + 50;
    c.nY0 = scaled(cBox.m_nMinY - cOrigin.m_nMinY) + 50;
    c.nX1 = scaled(cBox.m_nMaxX - cOrigin.m_nMinX) - 50;
    c.nY1 = scaled(cBox.m_nMaxY - cOrigin.m_nMinY) - 50;
    if (c.nX0 > c.nX1)
    {
        std::swap(c.nX0, c.nX1);
    }
    if (c.nY0 > c.nY1)
    {
        std::swap(c.nY0, c.nY1);
    }
    if (c.nX0 == c.nX1)
    {
        c.nX1 = c.nX0 + 50;
    }
    if (c.nY0 == c.nY1)
    {
        c.nY1 = c.nY0 + 50;
    }
    return c;
}

template <class T> void RemoveEntry(T& aEntries, unsigned long nIndex)
{
    for (unsigned long k = nIndex; k + 1 < aEntries.Entries(); ++k)
    {
        aEntries[k] = aEntries[k + 1];
    }
    --aEntries.m_nUsed;
}

bool SameBoxes(const Boxes& aFirst, const Boxes& aSecond)
{
    bool bSame = aFirst.Entries() == aSecond.Entries();
    for (unsigned long i = 0; bSame && i < aFirst.Entries(); ++i)
    {
        bSame = aFirst[i].m_nMinX == aSecond[i].m_nMinX && aFirst[i].m_nMaxX == aSecond[i].m_nMaxX &&
                aFirst[i].m_nMinY == aSecond[i].m_nMinY && aFirst[i].m_nMaxY == aSecond[i].m_nMaxY &&
                aFirst[i].m_fRed == aSecond[i].m_fRed && aFirst[i].m_fGreen == aSecond[i].m_fGreen &&
                aFirst[i].m_fBlue == aSecond[i].m_fBlue && aFirst[i].m_fAlpha == aSecond[i].m_fAlpha;
    }
    return bSame;
}

bool SameImages(const ClIpFourPrintSegmentation::Images_t& aFirst, const ClIpFourPrintSegmentation::Images_t& aSecond)
{
    bool bSame = aFirst.Entries() == aSecond.Entries();
    for (unsigned long i = 0; bSame && i < aFirst.Entries(); ++i)
    {
        bSame = SamePixels(aFirst[i], aSecond[i]) && SameDescription(aFirst[i], aSecond[i]);
    }
    return bSame;
}
} // namespace

ClReferenceRun::ClReferenceRun(ClImage& cInput)
{
    m_c.m_pInImage = &cInput;
    ClImage cGrey;
    m_nResult = Detect(cGrey);
    if (m_nResult != 0)
    {
        return;
    }
    Cut(cGrey);
    m_c.RemoveRelativelySmallFingerprintBoxes(m_c.m_aImages, m_c.m_aResultBoxes, m_c.m_aOriginBoxes, m_c.m_nFingers);
    m_c.RemoveOverlappingFingerprintBoxes(m_c.m_aImages, m_c.m_aResultBoxes, m_c.m_aOriginBoxes, m_c.m_nFingers, 0.6);
    m_c.ReduceFingerCountToMaxOfFourByRules(m_c.m_aImages, m_c.m_aResultBoxes, m_c.m_aOriginBoxes, m_c.m_nFingers);
    m_nResult = m_c.SpecifyHand();
    if (m_bFarFromEdge)
    {
        m_c.ProcessHorizontalThumbs(m_aLeftOfCenter);
    }
    Finish();
}

long ClReferenceRun::Detect(ClImage& cGrey)
{
    ClImage cScaled;
    ClIpFourPrintSegmentation::Components_t aComponents;
    ClIpFourPrintSegmentation::Marks_t aSelected;
    if (const long nResult = m_c.ValidateInput())
    {
        return nResult;
    }
    m_c.PrepareInputImage(cGrey, cScaled);
    m_c.BinarizeImage(cScaled, m_cBinary);
    m_c.FindInitialFingerSegments(m_cBinary, aComponents, m_dAngle);
    m_c.ApplyRulesToGetRightFingerSegments(aComponents, m_cBinary, aSelected);

    ClIpFourPrintSegmentation::InitBoundingboxes(m_c.m_aBoxes, m_c.m_nFingers, 0, 1, 0, 1);
    ClIpFourPrintSegmentation::InitBoundingboxes(m_c.m_aOriginBoxes, m_c.m_nFingers, 1, 0, 0, 1);
    unsigned long n = 0;
    for (unsigned long k = 0; k < aSelected.Entries(); ++k)
    {
        if (aSelected[k] != 0)
        {
            Box& c = m_c.m_aBoxes[n++];
            c.m_nMinX = static_cast<int>(aComponents[k].m_cMin.m_dX);
            c.m_nMaxX = static_cast<int>(aComponents[k].m_cMax.m_dX);
            c.m_nMinY = static_cast<int>(aComponents[k].m_cMin.m_dY);
            c.m_nMaxY = static_cast<int>(aComponents[k].m_cMax.m_dY);
        }
    }
    ClIpFourPrintSegmentation::SortBoundingboxesByXCoordinate(m_c.m_aBoxes);
    const bool bUpright = m_dAngle == 0.0;
    ClIpFourPrintSegmentation::BoundingBoxCorrection(
        m_c.m_aBoxes, m_c.m_aOriginBoxes, bUpright ? 100 : 110, bUpright ? 120 : 130, 18,
        static_cast<unsigned long>(m_cBinary.m_nWidth), static_cast<unsigned long>(m_cBinary.m_nHeight));
    if (bUpright)
    {
        ClIpFourPrintSegmentation::RemoveAmputatedFingerprints(m_c.m_aBoxes, m_c.m_aOriginBoxes, m_c.m_nFingers);
        return 0;
    }
    ClIpRotate cRotate;
    cRotate.m_nBackgroundColor = 255;
    ClImage cRotated;
    cRotate.ApplyParam(cGrey, cRotated, ClVector(0, 0), 1.57 - m_dAngle, true, false);
    m_c.m_nRotationDelta = cRotated.m_nWidth - cGrey.m_nWidth;
    m_c.m_dRotation = m_dAngle;
    cGrey.Swap(cRotated);
    return 0;
}

void ClReferenceRun::Cut(ClImage& cGrey)
{
    const unsigned long nFingers = static_cast<unsigned long>(m_c.m_nFingers);
    m_aLeftOfCenter.New(nFingers);
    m_c.m_aImages.New(nFingers);
    m_c.m_aCutImages.New(nFingers);
    m_c.m_aResultBoxes.New(nFingers);
    m_aNotes.resize(nFingers);
    std::vector<char> abAtImageEdge;
    for (unsigned long i = 0; i < nFingers; ++i)
    {
        m_aLeftOfCenter[i] = true;
        bool bAtImageEdge = false;
        m_c.CutFingerFromImage(m_c.m_aOriginBoxes[i], cGrey, m_c.m_aCutImages, static_cast<int>(i), m_aLeftOfCenter,
                               bAtImageEdge, m_bFarFromEdge, static_cast<unsigned long>(m_c.m_pInImage->m_nWidth),
                               static_cast<unsigned long>(m_c.m_pInImage->m_nHeight));
        abAtImageEdge.push_back(bAtImageEdge);
    }
    for (unsigned long i = 0; i < nFingers; ++i)
    {
        Refine(i, abAtImageEdge[i] != 0);
    }
    for (unsigned long i = 0; i < m_c.m_aImages.Entries();)
    {
        if (m_c.m_aImages[i].Data() != nullptr)
        {
            ++i;
            continue;
        }
        RemoveEntry(m_c.m_aImages, i);
        RemoveEntry(m_c.m_aResultBoxes, i);
        RemoveEntry(m_c.m_aOriginBoxes, i);
        --m_c.m_nFingers;
    }
}

void ClReferenceRun::Refine(unsigned long i, bool bAtImageEdge)
{
    int nRetryThreshold = 0;
    while (RefineRound(i, bAtImageEdge, nRetryThreshold))
    {
    }
}

/// Finds the finger in its cut-out and trims it; true asks for another round.
bool ClReferenceRun::RefineRound(unsigned long i, bool bAtImageEdge, int& nRetryThreshold)
{
    StRefinementNotes& cNotes = m_aNotes[i];
    ++cNotes.nRounds;
    ClImage& cCut = m_c.m_aCutImages[i];
    ClImage cFiltered;
    ClImage cBinary;
    ClIpFilterMid().ApplyParam(cCut, cFiltered, 20);
    ClIpGammaCorrection().ApplyParam(cFiltered, 0.8);
    int t = nRetryThreshold;
    if (t != 0)
    {
        ClIpBinarizeGlobal().ApplyParam(cFiltered, cBinary, t);
    }
    else
    {
        ClIpBinarizeAutoThreshold cAuto;
        cAuto.ApplyParam(cFiltered, cBinary, ClIpBinarizeAutoThreshold::ModeFuzzyEntropy);
        t = cAuto.m_nThreshold == 0 ? -1 : cAuto.m_nThreshold;
    }
    cNotes.nThreshold = t;
    ClIpFourPrintSegmentation::Components_t aParts;
    ClIpConnectedComponent2 cObjects;
    cObjects.pInImage = &cBinary;
    cObjects.m_pComponents = &aParts;
    cObjects.Apply();

    const StArea c = Expected(m_c.m_aBoxes[i], m_c.m_aOriginBoxes[i], m_c.m_dScale);
    const int nX = c.nX0 + (c.nX1 - c.nX0) / 2;
    const int nY = c.nY0 + (c.nY1 - c.nY0) / 2;
    unsigned long k = 0;
    while (k < aParts.Entries() && !(aParts[k].m_cMin.m_dX < nX && nX < aParts[k].m_cMax.m_dX &&
                                     aParts[k].m_cMin.m_dY < nY && nY < aParts[k].m_cMax.m_dY))
    {
        ++k;
    }
    if (k == aParts.Entries())
    {
        cNotes.bNoPart = true;
        return false;
    }
    const int nMinX = static_cast<int>(aParts[k].m_cMin.m_dX);
    const int nMaxX = static_cast<int>(aParts[k].m_cMax.m_dX);
    const int nMinY = static_cast<int>(aParts[k].m_cMin.m_dY);
    const int nMaxY = static_cast<int>(aParts[k].m_cMax.m_dY);
    int nEdges = 0;
    nEdges += nMinX == 0 && c.nX0 > 50;
    nEdges += nMinY == 0 && c.nY0 >= 51;
    nEdges += nMaxX == cBinary.m_nWidth - 1;
    nEdges += nMaxY == cBinary.m_nHeight - 1;
    if (nEdges >= 2 && aParts[k].m_dEccentricity >= 0.1)
    {
        cNotes.bTooDark = t < 50;
        nRetryThreshold = t - 20;
        return t >= 50;
    }
    cNotes.bRoundAtEdges = nEdges >= 2;

    const int nPad = t < 200 ? 20 : 10;
    Box& cBox = m_c.m_aResultBoxes[i];
    cBox.m_nMinX = std::max(nMinX - nPad, 0);
    cBox.m_nMaxX = std::min(nMaxX + nPad, cCut.m_nWidth - 1);
    cBox.m_nMinY = std::max(nMinY - nPad, 0);
    cBox.m_nMaxY = std::min(nMaxY + nPad, cCut.m_nHeight - 1);
    cNotes.bPadClipped = nMinX < nPad || nMinY < nPad;
    OrderBox(cBox);
    ClIpCut().ApplyParam(cCut, cBox.m_nMinX, cBox.m_nMinY, cBox.m_nMaxX - cBox.m_nMinX, cBox.m_nMaxY - cBox.m_nMinY,
                         m_c.m_aImages[i]);
    Trim(i, bAtImageEdge, t);
    return false;
}

/// Leaves the object in the middle alone and cuts off what lies below its narrowest place.
void ClReferenceRun::Trim(unsigned long i, bool bAtImageEdge, int nThreshold)
{
    StRefinementNotes& cNotes = m_aNotes[i];
    ClImage& cImage = m_c.m_aImages[i];
    ClImage cSmooth;
    ClImage cTest;
    ClIpFilterMid().ApplyParam(cImage, cSmooth, 20);
    ClIpBinarizeGlobal().ApplyParam(cSmooth, cTest, nThreshold);
    ClImage cLabels;
    cLabels = cTest;
    const std::vector<StObject> aObjects = Label(cLabels);
    cNotes.nObjects = aObjects.size();
    cNotes.bTooManyObjects = aObjects.size() > 11;
    if (cNotes.bTooManyObjects)
    {
        return;
    }
    for (std::size_t k = 0; k < aObjects.size(); ++k)
    {
        for (int y = 0; HoldsMiddle(aObjects[k], cTest) && y < cTest.m_nHeight; ++y)
        {
            for (int x = 0; x < cTest.m_nWidth; ++x)
            {
                if (Pixel(cLabels, x, y) != k + 1)
                {
                    Pixel(cTest, x, y) = 255;
                }
            }
        }
    }
    cNotes.bFirstRowWhite = true;
    for (int x = 0; x < cTest.m_nWidth; ++x)
    {
        cNotes.bFirstRowWhite = cNotes.bFirstRowWhite && Pixel(cTest, x, 0) == 255;
    }
    cNotes.bKeptAtEdge = !cNotes.bFirstRowWhite && bAtImageEdge;
    if (!cNotes.bFirstRowWhite && !bAtImageEdge)
    {
        const int y = NeckRow(cTest, aObjects);
        cNotes.nNeckRow = y;
        if (y < cImage.m_nHeight / 2 && y > 2)
        {
            cNotes.bNeckCut = true;
            CutInPlace(cImage, 0, y - 2, cImage.m_nWidth, cImage.m_nHeight - y + 2);
            m_c.m_aResultBoxes[i].m_nMinY += y - 2;
            OrderBox(m_c.m_aResultBoxes[i]);
        }
    }
    Narrow(i, nThreshold);
}

void ClReferenceRun::Narrow(unsigned long i, int nThreshold)
{
    ClImage& cImage = m_c.m_aImages[i];
    ClImage cSmooth;
    ClImage cTest;
    ClIpFilterMid().ApplyParam(cImage, cSmooth, 20);
    ClIpBinarizeGlobal().ApplyParam(cSmooth, cTest, nThreshold);
    for (const StObject& c : Label(cTest))
    {
        if (HoldsMiddle(c, cImage))
        {
            m_aNotes[i].bNarrowed = true;
            const int x = std::max(c.nMinX - 2, 0);
            const int nWidth = std::min(cImage.m_nWidth - x, c.nMaxX - c.nMinX + 4);
            CutInPlace(cImage, x, 0, nWidth, cImage.m_nHeight);
            m_c.m_aResultBoxes[i].m_nMinX += x;
            m_c.m_aResultBoxes[i].m_nMaxX = m_c.m_aResultBoxes[i].m_nMinX + nWidth;
            return;
        }
    }
}

/// The rectangles in the input, and the limit on the images.
void ClReferenceRun::Finish()
{
    for (unsigned long i = 0; i < m_c.m_aImages.Entries(); ++i)
    {
        long nLeft = 0;
        long nRight = 0;
        long nBottom = 0;
        long nTop = 0;
        m_c.CalculateBoxCoordinates(m_c.m_aResultBoxes[i], m_c.m_aOriginBoxes[i], nLeft, nRight, nBottom, nTop);
        m_c.m_aRects.Add(
            {static_cast<int>(nLeft), static_cast<int>(nTop), static_cast<int>(nRight), static_cast<int>(nBottom)});
        ClImage& cImage = m_c.m_aImages[i];
        if (cImage.m_nWidth > 500)
        {
            CutInPlace(cImage, (cImage.m_nWidth - 500) / 2, 0, 500, cImage.m_nHeight);
        }
        if (cImage.m_nHeight > 500)
        {
            CutInPlace(cImage, 0, cImage.m_nHeight - 500, cImage.m_nWidth, 500);
        }
    }
}

std::string ClReferenceRun::Differences(const ClIpFourPrintSegmentation& cRun) const
{
    std::ostringstream cText;
    const auto compare = [&cText](const char* szMember, bool bSame)
    {
        if (!bSame)
        {
            cText << szMember << " differs; ";
        }
    };
    compare("m_nFingers", m_c.m_nFingers == cRun.m_nFingers);
    compare("m_bReverseOrder", m_c.m_bReverseOrder == cRun.m_bReverseOrder);
    compare("m_dScale", m_c.m_dScale == cRun.m_dScale);
    compare("m_dRotation", m_c.m_dRotation == cRun.m_dRotation);
    compare("m_nRotationDelta", m_c.m_nRotationDelta == cRun.m_nRotationDelta);
    compare("m_nHand", m_c.m_nHand == cRun.m_nHand);
    compare("m_abFingerSlots", std::equal(m_c.m_abFingerSlots, m_c.m_abFingerSlots + 4, cRun.m_abFingerSlots));
    compare("m_aBoxes", SameBoxes(m_c.m_aBoxes, cRun.m_aBoxes));
    compare("m_aResultBoxes", SameBoxes(m_c.m_aResultBoxes, cRun.m_aResultBoxes));
    compare("m_aOriginBoxes", SameBoxes(m_c.m_aOriginBoxes, cRun.m_aOriginBoxes));
    compare("m_aCutImages", SameImages(m_c.m_aCutImages, cRun.m_aCutImages));
    compare("m_aImages", SameImages(m_c.m_aImages, cRun.m_aImages));
    compare("m_aCenters", m_c.m_aCenters.Entries() == cRun.m_aCenters.Entries());
    bool bSameRects = m_c.m_aRects.Entries() == cRun.m_aRects.Entries();
    for (unsigned long i = 0; bSameRects && i < m_c.m_aRects.Entries(); ++i)
    {
        const tagRECT& cFirst = m_c.m_aRects[i];
        const tagRECT& cSecond = cRun.m_aRects[i];
        bSameRects = cFirst.left == cSecond.left && cFirst.top == cSecond.top && cFirst.right == cSecond.right &&
                     cFirst.bottom == cSecond.bottom;
    }
    compare("m_aRects", bSameRects);
    return cText.str();
}
