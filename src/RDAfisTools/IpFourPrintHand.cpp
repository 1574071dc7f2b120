#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpRotate.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdlib>

namespace
{
constexpr int nQuarters = 4;
constexpr int nRight = 1; // values of m_nHand
constexpr int nLeft = 2;
constexpr int nThumbs = 3;

constexpr long nLevelRows = 19;    // pixels of the input within which two tips stand level
constexpr long nThumbMaxRow = 399; // a flat thumb's lower edge
constexpr long nThumbMinWidth = 280;
constexpr double dJumpRows = 420.0; // pixels of the input between the heights of neighbouring cuts

constexpr unsigned char nBackground = 255;
constexpr double dTurnLeftThumb = 1.57; // radians: the thumbs lie with their tips towards each other
constexpr double dTurnRightThumb = 4.71;

int CountSet(bool* const* apSlot)
{
    return static_cast<int>(std::count_if(apSlot, apSlot + nQuarters, [](const bool* pSlot) { return *pSlot; }));
}

void SetSlots(bool* const* apSlot, bool b0, bool b1, bool b2, bool b3)
{
    *apSlot[0] = b0;
    *apSlot[1] = b1;
    *apSlot[2] = b2;
    *apSlot[3] = b3;
}

/// The slot for a box that lies best in quarter nBest, by what is free.
int SlotFor(int nBest, bool* const* apSlot, const long (&anOverlap)[nQuarters])
{
    const auto free = [apSlot](int nSlot) { return !*apSlot[nSlot]; };
    if (nBest == 0)
    {
        return free(0) ? 0 : 1;
    }
    if (nBest == nQuarters - 1)
    {
        return free(3) ? 3 : 2;
    }
    if (free(nBest))
    {
        return nBest;
    }
    if (!free(nBest - 1))
    {
        return nBest + 1;
    }
    return free(nBest + 1) && anOverlap[nBest - 1] < anOverlap[nBest + 1] ? nBest + 1 : nBest - 1;
}
} // namespace

/// Column and row of a cut-out's corner in the full-resolution image.
long ClIpFourPrintSegmentation::ScaledMinX(int nBox) const
{
    return CastSample<long>(m_aOriginBoxes[static_cast<unsigned long>(nBox)].m_nMinX * m_dScale);
}

long ClIpFourPrintSegmentation::ScaledMinY(int nBox) const
{
    return CastSample<long>(m_aOriginBoxes[static_cast<unsigned long>(nBox)].m_nMinY * m_dScale);
}

/// Row of a finger's tip in pixels of the input, not beyond its last row.
long ClIpFourPrintSegmentation::TipRow(int nBox) const
{
    return std::min(static_cast<long>(m_pInImage->m_nHeight) - 1,
                    m_aResultBoxes[static_cast<unsigned long>(nBox)].m_nMaxY + ScaledMinY(nBox));
}

/// Sets the slot of the quarter of the picture's width in which the box lies best. Half of what a rotation added to the
/// width is taken off again.
void ClIpFourPrintSegmentation::PlaceBox(int nBox, bool* const* apSlot) const
{
    const cBoundingboxes& cBox = m_aResultBoxes[static_cast<unsigned long>(nBox)];
    const long nWidth = m_pInImage->m_nWidth;
    const long nQuarter = nWidth / nQuarters;
    const long nShift = m_nRotationDelta / 2;
    const long nFrom = std::max(0L, cBox.m_nMinX + ScaledMinX(nBox)) - nShift;
    const long nTo = std::min(nWidth - 1, cBox.m_nMaxX + ScaledMinX(nBox)) - nShift;
    long anOverlap[nQuarters];
    int nBest = 0;
    for (int k = 0; k < nQuarters; ++k)
    {
        const long nQuarterFrom = k * nQuarter;
        const long nQuarterTo = (k + 1) * nQuarter;
        anOverlap[k] = nFrom > nQuarterTo || nTo < nQuarterFrom
                           ? 0
                           : nQuarter - (std::max(0L, nFrom - nQuarterFrom) + std::max(0L, nQuarterTo - nTo));
        nBest = anOverlap[k] > anOverlap[nBest] ? k : nBest;
    }
    *apSlot[SlotFor(nBest, apSlot, anOverlap)] = true;
}

/// Three rising tips are little, ring and middle finger of a left hand and take the left places; three falling ones
/// take the right places. Three of the four slots are set.
void ClIpFourPrintSegmentation::ShiftThreeSlots(bool* const* apSlot)
{
    const long anTip[] = {TipRow(0), TipRow(1), TipRow(2)};
    m_bReverseOrder = anTip[0] < anTip[1] && anTip[1] < anTip[2];
    if (m_bReverseOrder)
    {
        if (!*apSlot[0])
        {
            SetSlots(apSlot, true, true, true, false);
        }
    }
    else if (anTip[0] > anTip[1] && anTip[1] > anTip[2] && !*apSlot[3])
    {
        SetSlots(apSlot, false, true, true, true);
    }
}

/// A second box that lies low and is wide is a thumb laid flat.
void ClIpFourPrintSegmentation::DetectFlatThumbs(bool* const* apSlot)
{
    m_nHand = 0;
    const cBoundingboxes& cBox = m_aResultBoxes[1];
    const long nBottom = std::max(0L, cBox.m_nMinY + ScaledMinY(1));
    const long nFrom = std::max(0L, cBox.m_nMinX + ScaledMinX(1));
    const long nTo = std::min(static_cast<long>(m_pInImage->m_nWidth) - 1, cBox.m_nMaxX + ScaledMinX(1));
    if (nBottom <= nThumbMaxRow && std::labs(nTo - nFrom) > nThumbMinWidth)
    {
        SetSlots(apSlot, true, true, false, false);
        m_nHand = nThumbs;
    }
}

long ClIpFourPrintSegmentation::CalculateFingerPositions(bool& bSlot0, bool& bSlot1, bool& bSlot2, bool& bSlot3)
{
    bool* const apSlot[nQuarters] = {&bSlot0, &bSlot1, &bSlot2, &bSlot3};
    if (m_nFingers == nQuarters)
    {
        SetSlots(apSlot, true, true, true, true);
        return FPC_SUCCESS;
    }
    for (int i = 0; i < m_nFingers; ++i)
    {
        PlaceBox(i, apSlot);
    }
    int nSet = CountSet(apSlot);
    if (m_nFingers == 3 && nSet == 2)
    {
        *apSlot[bSlot1 ? 2 : 1] = true; // a gap in the middle of three fingers is closed
        nSet = CountSet(apSlot);
    }
    if (nSet != m_nFingers)
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (nSet == 3)
    {
        ShiftThreeSlots(apSlot);
        return FPC_SUCCESS;
    }
    if (nSet == 2)
    {
        DetectFlatThumbs(apSlot);
    }
    if (m_nFingers == 1)
    {
        SetSlots(apSlot, true, false, false, false);
        m_nHand = 0;
    }
    return FPC_SUCCESS;
}

/// Falling tips are a right hand, rising ones a left hand; otherwise an outer finger that stands far from the middle
/// one in height decides.
void ClIpFourPrintSegmentation::HandOfThree()
{
    if (m_bReverseOrder)
    {
        m_nHand = nLeft;
        return;
    }
    const long anTip[] = {TipRow(0), TipRow(1), TipRow(2)};
    if (anTip[0] > anTip[1] && anTip[1] > anTip[2])
    {
        m_nHand = nRight;
        return;
    }
    const double dLimit = dJumpRows / m_dScale;
    const auto jump = [this](unsigned long nBox)
    { return std::labs(static_cast<long>(m_aOriginBoxes[nBox].m_nMaxY) - m_aOriginBoxes[1].m_nMaxY); };
    const bool bFirstJumps = m_abFingerSlots[0] && static_cast<double>(jump(0)) > dLimit;
    if (bFirstJumps)
    {
        m_nHand = nLeft;
    }
    if (!m_abFingerSlots[3] || !(static_cast<double>(jump(2)) > dLimit))
    {
        return;
    }
    m_nHand = anTip[0] > anTip[2] || !bFirstJumps ? nRight : nLeft;
}

/// Where the outer tips are level the inner ones decide, otherwise the outer ones do.
void ClIpFourPrintSegmentation::HandOfFour()
{
    const long nDifference = TipRow(0) - TipRow(3);
    const bool bRising = std::labs(nDifference) <= nLevelRows ? TipRow(1) < TipRow(2) : nDifference < 0;
    m_nHand = bRising ? nLeft : nRight;
}

long ClIpFourPrintSegmentation::SpecifyHand()
{
    std::fill_n(m_abFingerSlots, nQuarters, false);
    if (m_nFingers < 1 || m_nFingers > nQuarters)
    {
        m_nHand = 0;
    }
    else
    {
        if (m_nFingers == 3)
        {
            m_nHand = 0;
        }
        if (const long nResult = CalculateFingerPositions(m_abFingerSlots[0], m_abFingerSlots[1], m_abFingerSlots[2],
                                                          m_abFingerSlots[3]))
        {
            m_nHand = 0;
            return nResult;
        }
        if (m_nFingers == 3)
        {
            HandOfThree();
        }
        else if (m_nFingers == nQuarters)
        {
            HandOfFour();
        }
    }
    if (!m_bKeepOrder)
    {
        m_bReverseOrder = false;
    }
    return FPC_SUCCESS;
}

long ClIpFourPrintSegmentation::ProcessHorizontalThumbs(TpArrayStatic<bool>& aLeftOfCenter)
{
    const unsigned long nImages = m_aImages.Entries();
    if (nImages > 2)
    {
        return FPC_SUCCESS;
    }
    for (unsigned long i = 0; i < nImages; ++i)
    {
        if (m_aImages[i].m_nWidth <= m_aImages[i].m_nHeight)
        {
            return FPC_SUCCESS; // a thumb laid flat is wider than tall
        }
    }
    std::fill_n(m_abFingerSlots, nQuarters, false);
    for (unsigned long i = 0; i < nImages; ++i)
    {
        ClImage cTurned;
        ClIpRotate cRotate;
        cRotate.m_nBackgroundColor = nBackground;
        const bool bLeft = aLeftOfCenter[i];
        cRotate.ApplyParam(m_aImages[i], cTurned, ClVector(0, 0), bLeft ? dTurnLeftThumb : dTurnRightThumb, true, true);
        m_abFingerSlots[bLeft ? 0 : 1] = true;
        m_aImages[i].Swap(cTurned);
    }
    m_nHand = nThumbs;
    return FPC_SUCCESS;
}
