#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/ByteRuns.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
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

/// First part whose box strictly contains the middle of the expected area; the number of parts if there is none.
unsigned long PartAt(const Components& aParts, const StArea& cArea)
{
    const int nX = cArea.nX0 + (cArea.nX1 - cArea.nX0) / 2;
    const int nY = cArea.nY0 + (cArea.nY1 - cArea.nY0) / 2;
    unsigned long k = 0;
    for (; k < aParts.Entries(); ++k)
    {
        const Component& c = aParts[k];
        if (c.m_cMin.m_dX < nX && nX < c.m_cMax.m_dX && c.m_cMin.m_dY < nY && nY < c.m_cMax.m_dY)
        {
            break;
        }
    }
    return k;
}

int TouchedEdges(const Component& cPart, const StArea& cArea, const ClImage& cBinary)
{
    return (cPart.m_cMin.m_dX == 0.0 && cArea.nX0 > nInset ? 1 : 0) +
           (cPart.m_cMin.m_dY == 0.0 && cArea.nY0 > nInset ? 1 : 0) +
           (cPart.m_cMax.m_dX == cBinary.m_nWidth - 1 ? 1 : 0) + (cPart.m_cMax.m_dY == cBinary.m_nHeight - 1 ? 1 : 0);
}

/// The smoothed cut-out as a binary image; the threshold is found from it unless the finger is repeated.
void Threshold(StOperators& cOperators, StFinger& cFinger, ClImage& cFiltered, ClImage& cBinary)
{
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

/// The part of the cut-out that is the finger. False if there is none. A part that runs off two edges holds more than
/// the finger, unless it is nearly round: then the same smoothed cut-out is divided again, at a lower threshold.
bool FindPart(StOperators& cOperators, StFinger& cFinger, Component& cPart)
{
    ClImage cFiltered;
    cOperators.cSmooth.ApplyParam(cFinger.cCut, cFiltered, nSmoothWidth);
    ClIpGammaCorrection().ApplyParam(cFiltered, dGamma);
    const StArea cArea = ExpectedArea(cFinger);
    for (;;)
    {
        ClImage cBinary;
        Components aParts;
        Threshold(cOperators, cFinger, cFiltered, cBinary);
        ClIpConnectedComponent2 cObjects;
        cObjects.pInImage = &cBinary;
        cObjects.m_pComponents = &aParts;
        cObjects.m_bMomentsOnDemand = true;
        cObjects.Apply();
        const unsigned long nPart = PartAt(aParts, cArea);
        if (nPart == aParts.Entries())
        {
            return false;
        }
        if (TouchedEdges(aParts[nPart], cArea, cBinary) >= 2)
        {
            cObjects.MeasureMoments(nPart);
            if (aParts[nPart].m_dEccentricity >= dRound)
            {
                if (cFinger.nThreshold < nLowestRepeatable)
                {
                    return false;
                }
                cFinger.nRetryThreshold = cFinger.nThreshold - nThresholdStep;
                continue;
            }
        }
        cPart = aParts[nPart];
        return true;
    }
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

/// The finger's image, smoothed and divided at the threshold in force.
long BinarizeSmoothed(StOperators& cOperators, const StFinger& cFinger, ClImage& cBinary)
{
    cOperators.cSmooth.ApplyParam(cFinger.cImage, cBinary, nSmoothWidth);
    return cOperators.cBinarize.ApplyParam(cBinary, cBinary, cFinger.nThreshold);
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
void KeepOnlyLabel(ClImage& cTest, const ClImage& cLabels, unsigned char nLabel)
{
    for (int y = 0; y < cTest.m_nHeight; ++y)
    {
        unsigned char* pTest = Row<unsigned char>(cTest, y);
        std::transform(pTest, pTest + cTest.m_nWidth, Row<unsigned char>(cLabels, y), pTest,
                       [nLabel](unsigned char nTest, unsigned char n) { return n == nLabel ? nTest : nWhite; });
    }
}

bool IsFirstRowWhite(const ClImage& cTest)
{
    const unsigned char* pRow = Row<unsigned char>(cTest, 0);
    return std::all_of(pRow, pRow + cTest.m_nWidth, [](unsigned char n) { return n == nWhite; });
}

/// The narrowest place in the lower half of an object: the pair of a left and a right border pixel that stand nearest.
/// Of equal pairs the one with the lowest left pixel, then with the lowest right one.
class ClNeckSearch
{
public:
    explicit ClNeckSearch(const ClImage& cTest) : m_cTest(cTest) {}

    void Search(const Object& cObject)
    {
        const long nEnd = cObject.nMaxY - (cObject.nMaxY - cObject.nMinY) / 2;
        const long nRows = std::max(nEnd - cObject.nMinY, 0L);
        TpArrayStatic<long> anLeft(static_cast<unsigned long>(nRows));
        TpArrayStatic<long> anRight(static_cast<unsigned long>(nRows));
        long nRightFrom = cObject.nMaxX; // between these two lie all right borders
        long nRightTo = cObject.nMinX;
        for (long k = 0; k < nRows; ++k)
        {
            const unsigned char* pRow = ::Row<unsigned char>(m_cTest, static_cast<int>(cObject.nMinY + k));
            anLeft.m_pData[k] = LeftBorder(cObject, pRow);
            anRight.m_pData[k] = RightBorder(cObject, pRow);
            if (anRight.m_pData[k] > cObject.nMinX)
            {
                nRightFrom = std::min(nRightFrom, anRight.m_pData[k]);
                nRightTo = std::max(nRightTo, anRight.m_pData[k]);
            }
        }
        for (long k = 0; k < nRows; ++k)
        {
            const long nLeft = anLeft.m_pData[k];
            if (nLeft >= cObject.nMaxX)
            {
                continue;
            }
            const long nReach = Reach(std::max({nRightFrom - nLeft, nLeft - nRightTo, 0L}));
            const long nLast = std::min(k + nReach, nRows - 1);
            for (long k2 = std::max(k - nReach, 0L); k2 <= nLast; ++k2)
            {
                if (anRight.m_pData[k2] > cObject.nMinX)
                {
                    Compare(nLeft, cObject.nMinY + k, anRight.m_pData[k2], cObject.nMinY + k2);
                }
            }
        }
    }

    /// The lower of the two rows of the neck; 0 if there is none.
    long Row() const { return std::min(m_nLeftRow, m_nRightRow); }

private:
    /// The first column that is not white; the object's largest column if there is none before it.
    static long LeftBorder(const Object& cObject, const unsigned char* pRow)
    {
        return EndOfRun(pRow, cObject.nMinX, cObject.nMaxX, nWhite);
    }

    /// The last column that is not white; the object's smallest column if there is none behind it.
    static long RightBorder(const Object& cObject, const unsigned char* pRow)
    {
        return std::max(StartOfRun(pRow, cObject.nMaxX + 1, cObject.nMaxX + 1, nWhite) - 1, cObject.nMinX);
    }

    /// Rows farther away than this hold no nearer pixel than the nearest so far, if it stands at least nColumns away;
    /// -1 if no row does.
    long Reach(long nColumns) const
    {
        const double dRest = m_dBest - static_cast<double>(nColumns) * static_cast<double>(nColumns);
        return dRest > 0.0 ? static_cast<long>(std::sqrt(dRest)) : -1;
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

/// Whether anything was cut off.
bool CutBelowNeck(StFinger& cFinger, const Objects& aObjects, const ClImage& cTest)
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
        return false;
    }
    const long nFrom = nRow - nNeckRows;
    ClImage cTemp;
    ClIpCut().ApplyParam(cImage, 0, nFrom, cImage.m_nWidth, cImage.m_nHeight - nFrom, cTemp);
    cImage.Swap(cTemp);
    cFinger.cResult.m_nMinY += static_cast<int>(nFrom);
    OrderBox(cFinger.cResult);
    return true;
}

/// Leaves the object in the middle of the picture alone and cuts off what lies below its narrowest place. Whether
/// anything was cut off.
bool Trim(StFinger& cFinger, const Objects& aObjects, ClImage& cTest, const ClImage& cLabels)
{
    if (cFinger.bAtImageEdge)
    {
        return false; // the finger may run off the picture there and has no neck to look for
    }
    for (unsigned long k = 0; k < aObjects.Entries(); ++k)
    {
        if (HoldsCenter(aObjects[k], cTest))
        {
            KeepOnlyLabel(cTest, cLabels, static_cast<unsigned char>(k + 1));
        }
    }
    return !IsFirstRowWhite(cTest) && CutBelowNeck(cFinger, aObjects, cTest);
}

void NarrowToFinger(StFinger& cFinger, const Objects& aObjects)
{
    ClImage& cImage = cFinger.cImage;
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

void RefineFinger(StOperators& cOperators, StFinger& cFinger)
{
    Component cPart;
    if (!FindPart(cOperators, cFinger, cPart))
    {
        return;
    }
    CutToPart(cFinger, cPart);
    ClImage cTest;
    ClImage cLabels;
    const long nResult = BinarizeSmoothed(cOperators, cFinger, cTest);
    const Objects& aObjects = LabelObjects(cOperators, cTest, &cLabels);
    if (aObjects.Entries() > nMostObjects)
    {
        return;
    }
    if (Trim(cFinger, aObjects, cTest, cLabels))
    {
        ClImage cRest;
        if (BinarizeSmoothed(cOperators, cFinger, cRest) == FPC_SUCCESS)
        {
            NarrowToFinger(cFinger, LabelObjects(cOperators, cRest, nullptr));
        }
    }
    else if (nResult == FPC_SUCCESS)
    {
        NarrowToFinger(cFinger, aObjects); // nothing was cut off: the picture has the objects it had
    }
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
        RunLeavingEmpty(cFinger.cImage, [&] { RefineFinger(cOperators, cFinger); });
    }
}
