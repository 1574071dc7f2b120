#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace
{
constexpr long nEdgeRows = 2; // a cut that starts this low may hold a finger that runs off the picture

long Scaled(int nValue, double dScale)
{
    return CastSample<long>(nValue * dScale);
}
} // namespace

void ClIpFourPrintSegmentation::SortBoundingboxesByXCoordinate(Boxes_t& aBoxes)
{
    for (unsigned long i = 0; i + 1 < aBoxes.Entries(); ++i)
    {
        for (unsigned long j = i + 1; j < aBoxes.Entries(); ++j)
        {
            if (aBoxes[i].m_nMinX > aBoxes[j].m_nMinX)
            {
                std::swap(aBoxes[i], aBoxes[j]);
            }
        }
    }
}

void ClIpFourPrintSegmentation::BoundingBoxCorrection(Boxes_t& aBoxes, Boxes_t& aOrigins, int nWidth, int nHeight,
                                                      int nMargin, unsigned long nImageWidth,
                                                      unsigned long nImageHeight)
{
    for (unsigned long i = 0; i < aBoxes.Entries(); ++i)
    {
        const cBoundingboxes& cBox = aBoxes[i];
        const int nBoxWidth = cBox.m_nMaxX - cBox.m_nMinX;
        const int nBoxHeight = cBox.m_nMaxY - cBox.m_nMinY;
        int nLeft = cBox.m_nMinX;
        int nRight = cBox.m_nMaxX;
        int nTop = cBox.m_nMaxY + nMargin;
        if (nBoxWidth < nWidth - nMargin)
        {
            nLeft = cBox.m_nMinX - (nWidth - nBoxWidth) / 2;
            nRight = nLeft + nWidth;
            if (nBoxHeight < nHeight - nMargin)
            {
                nTop = cBox.m_nMaxY + (nHeight - nBoxHeight) / 2;
            }
        }
        int nBottom = nTop - nHeight;
        // One pixel beyond the last column and row is within reach, as a cut's far limits are exclusive.
        nRight = std::min(nRight, static_cast<int>(nImageWidth));
        nLeft = std::max(nLeft, 0);
        nTop = std::min(nTop, static_cast<int>(nImageHeight));
        nBottom = std::max(nBottom, 0);
        cBoundingboxes& cOrigin = aOrigins[i];
        cOrigin.m_nMinX = std::min(nLeft, nRight);
        cOrigin.m_nMaxX = std::max(nLeft, nRight);
        cOrigin.m_nMinY = std::min(nBottom, nTop);
        cOrigin.m_nMaxY = std::max(nBottom, nTop);
    }
}

void ClIpFourPrintSegmentation::CutFingerFromImage(cBoundingboxes& cBox, ClImage& cImage, Images_t& aCut, int nIndex,
                                                   TpArrayStatic<bool>& aLeftOfCenter, bool& bAtImageEdge,
                                                   bool& bFarFromEdge, unsigned long nWidth, unsigned long nHeight)
{
    const long nImageWidth = cImage.m_nWidth;
    const long nImageHeight = cImage.m_nHeight;
    long nCutWidth = Scaled(cBox.m_nMaxX - cBox.m_nMinX, m_dScale);
    long nCutHeight = Scaled(cBox.m_nMaxY - cBox.m_nMinY, m_dScale);
    const long nX = std::max(std::min(Scaled(cBox.m_nMinX, m_dScale), nImageWidth - nCutWidth - 1), 0L);
    const long nY = std::max(std::min(Scaled(cBox.m_nMinY, m_dScale), nImageHeight - nCutHeight - 1), 0L);
    nCutWidth = std::min(nCutWidth, nImageWidth - nX);
    nCutHeight = std::min(nCutHeight, nImageHeight - nY);

    ClImage& cCut = aCut[static_cast<unsigned long>(nIndex)];
    RunLeavingEmpty(cCut, [&] { ClIpCut().ApplyParam(cImage, nX, nY, nCutWidth, nCutHeight, cCut); });

    bAtImageEdge = nY <= nEdgeRows;
    bFarFromEdge = nY > static_cast<int>(nHeight) / 8;
    const long nCenter = static_cast<int>(nWidth >> 1);
    // A cut that begins exactly on the middle column counts as left of it.
    if (nCenter < nX || (nCenter > nX && nCenter < nX + nCutWidth))
    {
        aLeftOfCenter[static_cast<unsigned long>(nIndex)] = false;
    }
}

void ClIpFourPrintSegmentation::CalculateBoxCoordinates(cBoundingboxes cResult, cBoundingboxes cOrigin, long& nLeft,
                                                        long& nRight, long& nBottom, long& nTop)
{
    const long nWidth = m_pInImage->m_nWidth;
    const long nHeight = m_pInImage->m_nHeight;
    // The limits are those of the input, also where the box stands in the larger rotated image.
    StRectangle cPlace = Clamped(PlaceOfBox(cResult, cOrigin), nWidth, nHeight);
    if (m_dRotation != 0.0)
    {
        cPlace = TurnedBack(cPlace, m_dRotation, nWidth, nHeight);
    }
    nLeft = cPlace.nLeft;
    nRight = cPlace.nRight;
    nBottom = cPlace.nBottom;
    nTop = cPlace.nTop;
}

/// A box inside a cut-out as a place in the full-resolution image that the cut-out was taken from.
ClIpFourPrintSegmentation::StRectangle ClIpFourPrintSegmentation::PlaceOfBox(const cBoundingboxes& cResult,
                                                                             const cBoundingboxes& cOrigin) const
{
    const long nCutX = CastSample<int>(cOrigin.m_nMinX * m_dScale);
    const long nCutY = CastSample<int>(cOrigin.m_nMinY * m_dScale);
    return {cResult.m_nMinX + nCutX, cResult.m_nMaxX + nCutX, cResult.m_nMinY + nCutY, cResult.m_nMaxY + nCutY};
}

/// Each limit held to the side of a picture that it can leave; a box beyond the picture stays beyond it.
ClIpFourPrintSegmentation::StRectangle ClIpFourPrintSegmentation::Clamped(const StRectangle& cPlace, long nWidth,
                                                                          long nHeight)
{
    return {std::max(0L, cPlace.nLeft), std::min(nWidth - 1, cPlace.nRight), std::max(0L, cPlace.nBottom),
            std::min(nHeight - 1, cPlace.nTop)};
}

/// A place in the rotated picture of a hand at the angle dHand as the upright rectangle around its corners in the
/// unrotated one, of nWidth by nHeight pixels, clamped to that.
ClIpFourPrintSegmentation::StRectangle ClIpFourPrintSegmentation::TurnedBack(const StRectangle& cPlace, double dHand,
                                                                             long nWidth, long nHeight)
{
    ClIpRotate cRotate; // no image is rotated: only the mapping of points is used
    cRotate.m_cCenter = ClVector(0, 0);
    cRotate.m_dRotation = dUpright - dHand;

    // The shift that the rotation of the image added. The right corners lie at the width, not at the last column.
    const double dWidth = static_cast<double>(nWidth);
    const double dLastRow = static_cast<double>(nHeight - 1);
    const ClVector acCorner[] = {cRotate.Transform(ClVector(0, 0)), cRotate.Transform(ClVector(0, dLastRow)),
                                 cRotate.Transform(ClVector(dWidth, 0)), cRotate.Transform(ClVector(dWidth, dLastRow))};
    double dMinX = acCorner[0].m_dX;
    double dMinY = acCorner[0].m_dY;
    for (const ClVector& cCorner : acCorner)
    {
        dMinX = std::min(dMinX, cCorner.m_dX);
        dMinY = std::min(dMinY, cCorner.m_dY);
    }
    const long nShiftX = std::labs(CastSample<int>(dMinX));
    const long nShiftY = std::labs(CastSample<int>(dMinY));

    const double dLeft = static_cast<double>(cPlace.nLeft - nShiftX);
    const double dRight = static_cast<double>(cPlace.nRight - nShiftX);
    const double dBottom = static_cast<double>(cPlace.nBottom - nShiftY);
    const double dTop = static_cast<double>(cPlace.nTop - nShiftY);
    const ClVector cLowerLeft = cRotate.TransformInverse(ClVector(dLeft, dBottom));
    const ClVector cUpperRight = cRotate.TransformInverse(ClVector(dRight, dTop));
    const ClVector cUpperLeft = cRotate.TransformInverse(ClVector(dLeft, dTop));
    const ClVector cLowerRight = cRotate.TransformInverse(ClVector(dRight, dBottom));
    return {std::max(0, CastSample<int>(std::min(cLowerLeft.m_dX, cUpperLeft.m_dX))),
            std::min(nWidth - 1, CastSample<long>(std::max(cUpperRight.m_dX, cLowerRight.m_dX))),
            std::max(0, CastSample<int>(std::min(cLowerLeft.m_dY, cLowerRight.m_dY))),
            std::min(nHeight - 1, CastSample<long>(std::max(cUpperRight.m_dY, cUpperLeft.m_dY)))};
}
