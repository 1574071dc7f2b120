#include "Picture.hpp"

#include "Result.hpp"

#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace SegmentTool
{
namespace
{
// Programs that know no resolution write one of these.
constexpr double adGuesses[] = {72.0, 96.0}; // pixels per inch
constexpr double dGuessMargin = 1.0;         // whole pixels per centimetre are off by this much
constexpr double dMostPels = 1e6;            // per metre: nothing that scans fingers comes near

bool IsGuess(double dPels)
{
    const double dPpi = dPels * dMetresPerInch;
    return std::any_of(std::begin(adGuesses), std::end(adGuesses),
                       [dPpi](double dGuess) { return std::fabs(dPpi - dGuess) <= dGuessMargin; });
}

[[noreturn]] void RefuseResolution(const std::string& sWhy)
{
    throw ClPictureError(FPC_ERROR_BITMAP_PELS, sWhy + "; if you know the scanner's resolution, give it with --ppi N");
}
} // namespace

void ClPicture::CheckSize(std::int64_t nWidth, std::int64_t nHeight)
{
    if (nWidth < 1 || nHeight < 1)
    {
        throw ClPictureError(FPC_ERROR_BITMAP_DIMENSION, "the picture has no pixels");
    }
    if (nWidth > nMostSide || nHeight > nMostSide)
    {
        throw ClPictureError(FPC_ERROR_BITMAP_DIMENSION, "the picture is said to have " + std::to_string(nWidth) +
                                                             " by " + std::to_string(nHeight) +
                                                             " pixels; the limit is " + std::to_string(nMostSide) +
                                                             " by " + std::to_string(nMostSide));
    }
}

void ClPicture::Create(std::int64_t nWidth, std::int64_t nHeight)
{
    CheckSize(nWidth, nHeight);
    m_cImage.NewWithType(ClImage::eUInt8, static_cast<int>(nWidth), static_cast<int>(nHeight), 1, 0, 0);
    std::memset(m_cImage.Data(), 255, static_cast<std::size_t>(m_cImage.Stride()) * static_cast<std::size_t>(nHeight));
}

unsigned char* ClPicture::RowFromTop(int nRow)
{
    return Row<unsigned char>(m_cImage, Height() - 1 - nRow);
}

void ClPicture::PutColourRow(int nRow, const unsigned char* pBlueGreenRed)
{
    constexpr int nPlanes = 3;
    const auto nStride = static_cast<std::size_t>(ClImage::RowBytes(nPlanes, Width(), 1));
    m_aColourRow.resize(nStride);
    std::memcpy(m_aColourRow.data(), pBlueGreenRed, static_cast<std::size_t>(Width()) * nPlanes);
    ClImage cColour;
    cColour.Attach(m_aColourRow.data(), ClImage::eUInt8, Width(), 1, nPlanes, 0, 0);
    if (const long nError = ClIpRgbToGrey().ApplyParam(cColour, m_cGreyRow, ClIpRgbToGrey::Luminance))
    {
        throw ClPictureError(nError, GetErrorDescriptionIntern(nError));
    }
    std::memcpy(RowFromTop(nRow), m_cGreyRow.Data(), static_cast<std::size_t>(Width()));
}

void SetResolution(ClPicture& cPicture, double dPpi)
{
    double dX = cPicture.m_dXPels;
    double dY = cPicture.m_dYPels;
    if (dPpi > 0.0)
    {
        dX = dY = dPpi / dMetresPerInch;
    }
    else if (!(dX > 0.0 && dY > 0.0))
    {
        RefuseResolution("the file tells no resolution");
    }
    else if (IsGuess(dX) || IsGuess(dY))
    {
        RefuseResolution("the file tells " + std::to_string(std::lround((IsGuess(dX) ? dX : dY) * dMetresPerInch)) +
                         " pixels per inch, which programs write that know no resolution");
    }
    if (!(dX <= dMostPels && dY <= dMostPels))
    {
        RefuseResolution("the resolution is beyond that of any scanner");
    }
    cPicture.m_cImage.m_nXRes = static_cast<int>(std::lround(dX));
    cPicture.m_cImage.m_nYRes = static_cast<int>(std::lround(dY));
}
} // namespace SegmentTool
