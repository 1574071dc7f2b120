#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpRotate.hpp"

#include <algorithm>
#include <initializer_list>

namespace
{
constexpr double dFromUpright = 4.71; // radians; with dUpright about a whole turn
constexpr int nColourPlanes = 3;
constexpr unsigned char anBoxColour[nColourPlanes] = {255, 0, 0};
constexpr unsigned char anInputColour[nColourPlanes] = {255, 0, 255};

/// The first four entries; a missing one is a box that has seen nothing.
void CopyFour(const ClIpFourPrintSegmentation::Boxes_t& aBoxes,
              std::initializer_list<ClIpFourPrintSegmentation::cBoundingboxes*> apBox)
{
    unsigned long k = 0;
    for (ClIpFourPrintSegmentation::cBoundingboxes* pBox : apBox)
    {
        *pBox = k < aBoxes.Entries() ? aBoxes[k] : ClIpFourPrintSegmentation::cBoundingboxes();
        ++k;
    }
}
} // namespace

long ClIpFourPrintSegmentation::CreateDemoPicture(ClImage* pPicture, double dAngle) const
{
    if (pPicture == nullptr || m_pInImage == nullptr || pPicture == m_pInImage)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    const int nWidth = m_pInImage->m_nWidth;
    const int nHeight = m_pInImage->m_nHeight;
    ClImage cWork;
    const auto rotate = [&cWork](ClImage& cIn, double dRotation)
    { RunLeavingEmpty(cWork, [&] { ClIpRotate().ApplyParam(cIn, cWork, ClVector(0, 0), dRotation, true, true); }); };
    if (dAngle != 0.0)
    {
        rotate(*m_pInImage, dUpright - dAngle);
    }
    else
    {
        cWork = *m_pInImage;
    }
    if (cWork.m_nPlanes == 1)
    {
        ClIpJoinPlanes cJoin;
        cJoin.m_eOutContent = ClImage::eRGB;
        cJoin.m_nOutPlanes = nColourPlanes;
        RunLeavingEmpty(*pPicture, [&] { cJoin.ApplyParam(*pPicture, &cWork, &cWork, &cWork, nullptr); });
    }
    else
    {
        pPicture->Swap(cWork);
    }
    ForEachFinger([&](const StRectangle& cPlace)
                  { DrawFrame(*pPicture, Clamped(cPlace, pPicture->m_nWidth, pPicture->m_nHeight), anBoxColour); });
    if (dAngle == 0.0)
    {
        return FPC_SUCCESS;
    }
    rotate(*pPicture, dAngle + dFromUpright);
    const int nBorderX = (cWork.m_nWidth - nWidth) / 2;
    const int nBorderY = (cWork.m_nHeight - nHeight) / 2;
    RunLeavingEmpty(*pPicture, [&] { ClIpCut().ApplyParam(cWork, nBorderX, nBorderY, nWidth, nHeight, *pPicture); });
    ForEachFinger(
        [&](const StRectangle& cPlace)
        { DrawFrame(*pPicture, TurnedBack(cPlace, dAngle, pPicture->m_nWidth, pPicture->m_nHeight), anInputColour); });
    return FPC_SUCCESS;
}

/// Calls fn with the place of each finished box in the full-resolution image, which was rotated for a leaning hand.
template <class Fn> void ClIpFourPrintSegmentation::ForEachFinger(Fn&& fn) const
{
    const unsigned long nFingers = static_cast<unsigned long>(std::max(m_nFingers, 0));
    const unsigned long nBoxes = std::min({nFingers, m_aResultBoxes.Entries(), m_aOriginBoxes.Entries()});
    for (unsigned long i = 0; i < nBoxes; ++i)
    {
        fn(PlaceOfBox(m_aResultBoxes[i], m_aOriginBoxes[i]));
    }
}

/// A frame of one pixel, of which only what lies in the picture is drawn. Its lines are independent: of a place whose
/// right limit lies left of the left one, the two columns are drawn all the same.
void ClIpFourPrintSegmentation::DrawFrame(ClImage& cPicture, const StRectangle& cPlace,
                                          const unsigned char (&anColour)[nColourPlanes])
{
    if (cPicture.Data() == nullptr || cPicture.m_nPlanes < nColourPlanes ||
        ClImage::SampleSize(cPicture.m_eDataType) != 1)
    {
        return;
    }
    const long nWidth = cPicture.m_nWidth;
    const long nHeight = cPicture.m_nHeight;
    const auto set = [&](long nX, long nY)
    {
        if (nX >= 0 && nX < nWidth && nY >= 0 && nY < nHeight)
        {
            unsigned char* pRow = Row<unsigned char>(cPicture, static_cast<int>(nY));
            std::copy_n(anColour, nColourPlanes, pRow + nX * cPicture.m_nPlanes);
        }
    };
    const long nLastX = std::min(cPlace.nRight, nWidth - 1);
    for (long nX = std::max(cPlace.nLeft, 0L); nX <= nLastX; ++nX)
    {
        set(nX, cPlace.nBottom);
        set(nX, cPlace.nTop);
    }
    const long nLastY = std::min(cPlace.nTop, nHeight - 1);
    for (long nY = std::max(cPlace.nBottom, 0L); nY <= nLastY; ++nY)
    {
        set(cPlace.nLeft, nY);
        set(cPlace.nRight, nY);
    }
}

void ClIpFourPrintSegmentation::SaveKoords(TpArrayDynamic<ClVector, 10>& aCenters) const
{
    if (&aCenters == &m_aCenters)
    {
        return;
    }
    aCenters.New(m_aCenters.m_nEntries);
    for (unsigned long i = 0; i < m_aCenters.m_nEntries; ++i)
    {
        aCenters[i] = m_aCenters[i];
    }
    aCenters.m_nUsed = m_aCenters.m_nUsed;
}

void ClIpFourPrintSegmentation::SaveBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2,
                                          cBoundingboxes& cBox3) const
{
    CopyFour(m_aBoxes, {&cBox0, &cBox1, &cBox2, &cBox3});
}

void ClIpFourPrintSegmentation::SaveResultBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2,
                                                cBoundingboxes& cBox3) const
{
    CopyFour(m_aResultBoxes, {&cBox0, &cBox1, &cBox2, &cBox3});
}

void ClIpFourPrintSegmentation::SaveAfisBoxes(cBoundingboxes& cBox0, cBoundingboxes& cBox1, cBoundingboxes& cBox2,
                                              cBoundingboxes& cBox3) const
{
    CopyFour(m_aOriginBoxes, {&cBox0, &cBox1, &cBox2, &cBox3});
}
