#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdlib>
#include <utility>

// Each finger alone, in its cut-out at input resolution: found, trimmed to its extent, cut off below its narrowest
// place and narrowed. Rows are counted as stored, row 0 is the lower edge.

namespace
{
using Box = ClIpFourPrintSegmentation::cBoundingboxes;
using Component = ClIpConnectedComponent2::ClComponent;
using Components = ClIpConnectedComponent2::ComponentsArray_t;
using Object = ClIpFloodFill::StBoundingBox;
using Objects = TpArrayStatic<Object>;

constexpr int nSmoothWidth = 20; // pixels; the filter takes the next odd width
constexpr double dGamma = 0.8;
constexpr unsigned char nWhite = 255;

constexpr int nInset = 50;            // pixels by which the expected area is drawn in
constexpr double dRound = 0.1;        // eccentricity below which a part may touch two edges
constexpr int nLowestRepeatable = 50; // threshold
constexpr int nThresholdStep = 20;
constexpr int nBrightThreshold = 200;
constexpr int nPad = 20; // pixels kept around the part
constexpr int nPadBright = 10;
constexpr unsigned long nMostObjects = 11; // more than these are no picture of one finger
constexpr double dNoNeck = 999999.0;
constexpr long nNeckRows = 2; // pixels kept below the neck and beside the finger

/// The operators that serve all fingers of a run.
struct StOperators
{
    ClIpFilterMid cSmooth;
    ClIpBinarizeGlobal cBinarize;
    ClIpBinarizeAutoThreshold cAutoThreshold;
    ClIpFloodFillLabeling cLabel;
};

/// One finger in work.
struct StFinger
{
    const Box& cBox;    ///< tight box at the working resolution
    const Box& cOrigin; ///< box of the cut-out at the working resolution
    ClImage& cCut;      ///< the cut-out
    ClImage& cImage;    ///< the result
    Box& cResult;       ///< its box in the cut-out
    bool bAtImageEdge;  ///< the cut-out starts at the lower edge of the input
    double dScale;
    int nRetryThreshold; ///< 0 unless the finger is repeated
    int nThreshold;      ///< the one in force
};

/// The area of the cut-out where the finger is expected, pixels.
struct StArea
{
    int nX0;
    int nY0;
    int nX1;
    int nY1;
};

int ScaledDistance(int nFrom, int nTo, double dScale)
{
    return CastSample<int>(std::max(nTo - nFrom, 0) * dScale);
}

void OrderPair(int& nFrom, int& nTo)
{
    if (nFrom > nTo)
    {
        std::swap(nFrom, nTo);
    }
}

void OrderBox(Box& cBox)
{
    OrderPair(cBox.m_nMinX, cBox.m_nMaxX);
    OrderPair(cBox.m_nMinY, cBox.m_nMaxY);
}

StArea ExpectedArea(const StFinger& cFinger)
{
    const Box& cBox = cFinger.cBox;
    const Box& cOrigin = cFinger.cOrigin;
    StArea c{ScaledDistance(cOrigin.m_nMinX, cBox.m_nMinX, cFinger.dScale) + nInset,
             ScaledDistance(cOrigin.m_nMinY, cBox.m_nMinY, cFinger.dScale) + nInset,
             ScaledDistance(cOrigin.m_nMinX, cBox.m_nMaxX, cFinger.dScale) - nInset,
             ScaledDistance(cOrigin.m_nMinY, cBox.m_nMaxY, cFinger.dScale) - nInset};
    OrderPair(c.nX0, c.nX1);
    OrderPair(c.nY0, c.nY1);
    c.nX1 = c.nX1 == c.nX0 ? c.nX0 + nInset : c.nX1;
    c.nY1 = c.nY1 == c.nY0 ? c.nY0 + nInset : c.nY1;
    return c;
}

/// First part whose box strictly contains the middle of the expected area, or null.
const Component* PartAt(const Components& aParts, const StArea& cArea)
{
    const int nX = cArea.nX0 + (cArea.nX1 - cArea.nX0) / 2;
    const int nY = cArea.nY0 + (cArea.nY1 - cArea.nY0) / 2;
    for (unsigned long k = 0; k < aParts.Entries(); ++k)
    {
        const Component& c = aParts[k];
        if (c.m_cMin.m_dX < nX && nX < c.m_cMax.m_dX && c.m_cMin.m_dY < nY && nY < c.m_cMax.m_dY)
        {
            return &c;
        }
    }
    return nullptr;
}

int TouchedEdges(const Component& cPart, const StArea& cArea, const ClImage& cBinary)
{
    return (cPart.m_cMin.m_dX == 0.0 && cArea.nX0 > nInset ? 1 : 0) +
           (cPart.m_cMin.m_dY == 0.0 && cArea.nY0 > nInset ? 1 : 0) +
           (cPart.m_cMax.m_dX == cBinary.m_nWidth - 1 ? 1 : 0) + (cPart.m_cMax.m_dY == cBinary.m_nHeight - 1 ? 1 : 0);
}

/// The cut-out, smoothed, as a binary image; the threshold is found from it unless the finger is repeated.
void Threshold(StOperators& cOperators, StFinger& cFinger, ClImage& cBinary)
{
    ClImage cFiltered;
    cOperators.cSmooth.ApplyParam(cFinger.cCut, cFiltered, nSmoothWidth);
    ClIpGammaCorrection().ApplyParam(cFiltered, dGamma);
    if (cFinger.nRetryThreshold != 0)
    {
        cOperators.cBinarize.ApplyParam(cFiltered, cBinary, cFinger.nRetryThreshold);
        cFinger.nThreshold = cFinger.nRetryThreshold;
        return;
    }
    cOperators.cAutoThreshold.ApplyParam(cFiltered, cBinary, ClIpBinarizeAutoThreshold::ModeFuzzyEntropy);
    const int nFound = cOperators.cAutoThreshold.m_nThreshold;
    cFinger.nThreshold = nFound == 0 ? -1 : nFound;
}

/// The cut-out trimmed to the part, with room around it.
void CutToPart(StFinger& cFinger, const Component& cPart)
{
    const int nRoom = cFinger.nThreshold < nBrightThreshold ? nPad : nPadBright;
    Box& c = cFinger.cResult;
    c.m_nMinX = std::max(CastSample<int>(cPart.m_cMin.m_dX) - nRoom, 0);
    c.m_nMaxX = std::min(CastSample<int>(cPart.m_cMax.m_dX) + nRoom, cFinger.cCut.m_nWidth - 1);
    c.m_nMinY = std::max(CastSample<int>(cPart.m_cMin.m_dY) - nRoom, 0);
    c.m_nMaxY = std::min(CastSample<int>(cPart.m_cMax.m_dY) + nRoom, cFinger.cCut.m_nHeight - 1);
    OrderBox(c);
    ClIpCut().ApplyParam(cFinger.cCut, c.m_nMinX, c.m_nMinY, c.m_nMaxX - c.m_nMinX, c.m_nMaxY - c.m_nMinY,
                         cFinger.cImage);
}

bool HoldsCenter(const Object& cObject, const ClImage& cImage)
{
    const long nX = cImage.m_nWidth / 2;
    const long nY = cImage.m_nHeight / 2;
    return cObject.nMinX < nX && nX < cObject.nMaxX && cObject.nMinY < nY && nY < cObject.nMaxY;
}

/// Numbers the black objects of cBinary; the numbers go to cLabels, or into cBinary itself if there is none.
const Objects& LabelObjects(StOperators& cOperators, ClImage& cBinary, ClImage* pLabels)
{
    cOperators.cLabel.m_pInImage = &cBinary;
    cOperators.cLabel.m_pOutImage = pLabels;
    cOperators.cLabel.Apply();
    return cOperators.cLabel.m_aObjects;
}

/// Paints white whatever does not bear the label.
void KeepOnlyLabel(ClImage& cTest, const ClImage& cLabels, unsigned long nLabel)
{
    for (int y = 0; y < cTest.m_nHeight; ++y)
    {
        unsigned char* pTest = Row<unsigned char>(cTest, y);
        const unsigned char* pLabel = Row<unsigned char>(cLabels, y);
        for (int x = 0; x < cTest.m_nWidth; ++x)
        {
            pTest[x] = pLabel[x] == nLabel ? pTest[x] : nWhite;
        }
    }
}

bool IsFirstRowWhite(const ClImage& cTest)
{
    const unsigned char* pRow = Row<unsigned char>(cTest, 0);
    return std::all_of(pRow, pRow + cTest.m_nWidth, [](unsigned char n) { return n == nWhite; });
}

/// The narrowest place in the lower half of an object: the pair of a left and a right border pixel that stand nearest.
class ClNeckSearch
{
public:
    explicit ClNeckSearch(const ClImage& cTest) : m_cTest(cTest) {}

    void Search(const Object& cObject)
    {
        const long nEnd = cObject.nMaxY - (cObject.nMaxY - cObject.nMinY) / 2;
        const unsigned long nRows = static_cast<unsigned long>(std::max(nEnd - cObject.nMinY, 0L));
        TpArrayStatic<long> anLeft(nRows);
        TpArrayStatic<long> anRight(nRows);
        for (unsigned long k = 0; k < nRows; ++k)
        {
            const int y = static_cast<int>(cObject.nMinY) + static_cast<int>(k);
            anLeft[k] = LeftBorder(cObject, y);
            anRight[k] = RightBorder(cObject, y);
        }
        for (unsigned long k = 0; k < nRows; ++k)
        {
            for (unsigned long k2 = 0; anLeft[k] < cObject.nMaxX && k2 < nRows; ++k2)
            {
                if (anRight[k2] > cObject.nMinX)
                {
                    Compare(anLeft[k], cObject.nMinY + static_cast<long>(k), anRight[k2],
                            cObject.nMinY + static_cast<long>(k2));
                }
            }
        }
    }

    /// The lower of the two rows of the neck; 0 if there is none.
    long Row() const { return std::min(m_nLeftRow, m_nRightRow); }

private:
    /// The first column that is not white; the object's largest column if there is none before it.
    long LeftBorder(const Object& cObject, int y) const
    {
        const unsigned char* pRow = ::Row<unsigned char>(m_cTest, y);
        long x = cObject.nMinX;
        while (x < cObject.nMaxX && pRow[x] == nWhite)
        {
            ++x;
        }
        return x;
    }

    /// The last column that is not white; the object's smallest column if there is none behind it.
    long RightBorder(const Object& cObject, int y) const
    {
        const unsigned char* pRow = ::Row<unsigned char>(m_cTest, y);
        long x = cObject.nMaxX;
        while (x > cObject.nMinX && pRow[x] == nWhite)
        {
            --x;
        }
        return x;
    }

    void Compare(long nLeft, long nLeftRow, long nRight, long nRightRow)
    {
        const long nRows = nRightRow - nLeftRow;
        const long nColumns = nRight - nLeft;
        const double dDistance = static_cast<double>(nRows * nRows + nColumns * nColumns);
        if (dDistance < m_dBest)
        {
            m_dBest = dDistance;
            m_nLeftRow = nLeftRow;
            m_nRightRow = nRightRow;
        }
    }

    const ClImage& m_cTest;
    double m_dBest = dNoNeck;
    long m_nLeftRow = 0;
    long m_nRightRow = 0;
};

void CutBelowNeck(StFinger& cFinger, const Objects& aObjects, const ClImage& cTest)
{
    ClNeckSearch cSearch(cTest);
    for (unsigned long k = 0; k < aObjects.Entries(); ++k)
    {
        if (HoldsCenter(aObjects[k], cTest))
        {
            cSearch.Search(aObjects[k]);
        }
    }
    ClImage& cImage = cFinger.cImage;
    const long nRow = cSearch.Row();
    if (nRow >= cImage.m_nHeight / 2 || nRow <= nNeckRows)
    {
        return;
    }
    const long nFrom = nRow - nNeckRows;
    ClImage cTemp;
    ClIpCut().ApplyParam(cImage, 0, nFrom, cImage.m_nWidth, cImage.m_nHeight - nFrom, cTemp);
    cImage.Swap(cTemp);
    cFinger.cResult.m_nMinY += static_cast<int>(nFrom);
    OrderBox(cFinger.cResult);
}

/// Leaves the object in the middle of the picture alone and cuts off what lies below its narrowest place. False if
/// there are too many objects: the picture then stays as it is.
bool IsolateAndTrim(StOperators& cOperators, StFinger& cFinger)
{
    ClImage cTest;
    ClImage cLabels;
    cOperators.cSmooth.ApplyParam(cFinger.cImage, cTest, nSmoothWidth);
    cOperators.cBinarize.ApplyParam(cTest, cTest, cFinger.nThreshold);
    const Objects& aObjects = LabelObjects(cOperators, cTest, &cLabels);
    if (aObjects.Entries() > nMostObjects)
    {
        return false;
    }
    for (unsigned long k = 0; k < aObjects.Entries(); ++k)
    {
        if (HoldsCenter(aObjects[k], cTest))
        {
            KeepOnlyLabel(cTest, cLabels, k + 1);
        }
    }
    // At the lower edge of the input the finger may run off the picture and has no neck to look for.
    if (!IsFirstRowWhite(cTest) && !cFinger.bAtImageEdge)
    {
        CutBelowNeck(cFinger, aObjects, cTest);
    }
    return true;
}

void NarrowToFinger(StOperators& cOperators, StFinger& cFinger)
{
    ClImage& cImage = cFinger.cImage;
    ClImage cSmoothed;
    ClImage cBinary;
    cOperators.cSmooth.ApplyParam(cImage, cSmoothed, nSmoothWidth);
    if (cOperators.cBinarize.ApplyParam(cSmoothed, cBinary, cFinger.nThreshold) != FPC_SUCCESS)
    {
        return;
    }
    const Objects& aObjects = LabelObjects(cOperators, cBinary, nullptr);
    for (unsigned long k = 0; k < aObjects.Entries(); ++k)
    {
        const Object& c = aObjects[k];
        if (!HoldsCenter(c, cImage))
        {
            continue;
        }
        const long nX = c.nMinX - nNeckRows < 1 ? 0 : c.nMinX - nNeckRows;
        const long nWidth = std::min(cImage.m_nWidth - nX, c.nMaxX - c.nMinX + 2 * nNeckRows);
        ClImage cTemp;
        ClIpCut().ApplyParam(cImage, nX, 0, nWidth, cImage.m_nHeight, cTemp);
        cImage.Swap(cTemp);
        Box& cResult = cFinger.cResult;
        cResult.m_nMinX += static_cast<int>(nX);
        cResult.m_nMaxX = cResult.m_nMinX + static_cast<int>(nWidth);
        OrderPair(cResult.m_nMinY, cResult.m_nMaxY);
        return;
    }
}

/// One round of one finger. True asks for another round with a lower threshold.
bool RefineRound(StOperators& cOperators, StFinger& cFinger)
{
    ClImage cBinary;
    Components aParts;
    Threshold(cOperators, cFinger, cBinary);
    ClIpConnectedComponent2 cObjects;
    cObjects.pInImage = &cBinary;
    cObjects.m_pComponents = &aParts;
    cObjects.Apply();

    const StArea cArea = ExpectedArea(cFinger);
    const Component* pPart = PartAt(aParts, cArea);
    if (pPart == nullptr)
    {
        return false;
    }
    // A part that runs off two edges holds more than the finger, unless it is nearly round.
    if (TouchedEdges(*pPart, cArea, cBinary) >= 2 && pPart->m_dEccentricity >= dRound)
    {
        if (cFinger.nThreshold < nLowestRepeatable)
        {
            return false;
        }
        cFinger.nRetryThreshold = cFinger.nThreshold - nThresholdStep;
        return true;
    }
    CutToPart(cFinger, *pPart);
    if (IsolateAndTrim(cOperators, cFinger))
    {
        NarrowToFinger(cOperators, cFinger);
    }
    return false;
}
} // namespace

void ClIpFourPrintSegmentation::RefineFingers(const TpArrayStatic<bool>& abAtImageEdge)
{
    StOperators cOperators;
    for (int i = 0; i < m_nFingers; ++i)
    {
        const unsigned long nBox = static_cast<unsigned long>(i);
        const unsigned long nFinger = static_cast<unsigned long>(FingerIndex(i));
        StFinger cFinger{m_aBoxes[nBox],
                         m_aOriginBoxes[nBox],
                         m_aCutImages[nFinger],
                         m_aImages[nFinger],
                         m_aResultBoxes[nFinger],
                         abAtImageEdge[nBox],
                         m_dScale,
                         0,
                         0};
        RunLeavingEmpty(cFinger.cImage,
                        [&]
                        {
                            while (RefineRound(cOperators, cFinger))
                            {
                            }
                        });
    }
}
