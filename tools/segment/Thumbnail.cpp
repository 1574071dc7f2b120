#include "Thumbnail.hpp"

#include "ImageFile.hpp"

#include "RDImageProcessing/IpRescale.hpp"
#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>

namespace SegmentTool
{
namespace
{
int Shrunk(int nSide, int nLonger)
{
    if (nLonger <= nThumbnailSide) return nSide;
    return std::max(1, static_cast<int>(static_cast<std::int64_t>(nSide) * nThumbnailSide / nLonger));
}
} // namespace

std::string ThumbnailUri(ClPicture& cPicture)
{
    const int nLonger = std::max(cPicture.Width(), cPicture.Height());
    ClImage cSmall;
    const long nError = ClIpRescale().ApplyParamSize(cPicture.m_cImage, cSmall, Shrunk(cPicture.Width(), nLonger),
                                                     Shrunk(cPicture.Height(), nLonger), ClIpRescale::ModeBiLinear);
    if (nError != 0) throw ClPictureError(nError, GetErrorDescriptionIntern(nError));
    const ClImageRows cRows = RowsOf(cSmall);
#if HAVE_JPEG
    return "data:image/jpeg;base64," + Base64(EncodeJpeg(cRows));
#elif HAVE_PNG
    return "data:image/png;base64," + Base64(EncodePng(cRows, 0));
#else
    return "data:image/bmp;base64," + Base64(EncodeBmp(cRows, 0));
#endif
}

std::string Base64(const Bytes_t& aBytes)
{
    constexpr char szDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string sText;
    sText.reserve((aBytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < aBytes.size(); i += 3)
    {
        const std::size_t nBytes = std::min<std::size_t>(3, aBytes.size() - i);
        unsigned int nGroup = 0;
        for (std::size_t k = 0; k < 3; ++k) nGroup = nGroup << 8 | (k < nBytes ? aBytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k) sText += k <= nBytes ? szDigits[nGroup >> (18 - 6 * k) & 63u] : '=';
    }
    return sText;
}
} // namespace SegmentTool
