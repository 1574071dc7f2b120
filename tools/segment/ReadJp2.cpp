#include "Formats.hpp"

#if HAVE_OPENJPEG

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include <openjpeg.h>

namespace SegmentTool
{
namespace
{
struct ClSource
{
    const Bytes_t* m_pFile;
    std::size_t m_nNext = 0;
    std::string m_sFault;
};

OPJ_SIZE_T ReadBytes(void* pTo, OPJ_SIZE_T nSize, void* pUser)
{
    auto* pSource = static_cast<ClSource*>(pUser);
    const std::size_t nRead = std::min<std::size_t>(pSource->m_pFile->size() - pSource->m_nNext, nSize);
    if (nRead == 0) return static_cast<OPJ_SIZE_T>(-1); // the end
    std::memcpy(pTo, pSource->m_pFile->data() + pSource->m_nNext, nRead);
    pSource->m_nNext += nRead;
    return nRead;
}

OPJ_BOOL SeekTo(OPJ_OFF_T nOffset, void* pUser)
{
    auto* pSource = static_cast<ClSource*>(pUser);
    if (nOffset < 0 || static_cast<std::size_t>(nOffset) > pSource->m_pFile->size()) return OPJ_FALSE;
    pSource->m_nNext = static_cast<std::size_t>(nOffset);
    return OPJ_TRUE;
}

OPJ_OFF_T SkipBytes(OPJ_OFF_T nBytes, void* pUser)
{
    auto* pSource = static_cast<ClSource*>(pUser);
    const auto nNext = static_cast<OPJ_OFF_T>(pSource->m_nNext);
    const auto nSize = static_cast<OPJ_OFF_T>(pSource->m_pFile->size());
    if (nBytes < 0 || nNext >= nSize) return -1;
    const OPJ_OFF_T nSkipped = std::min(nBytes, nSize - nNext);
    pSource->m_nNext += static_cast<std::size_t>(nSkipped);
    return nSkipped;
}

void OnError(const char* szText, void* pUser)
{
    auto* pSource = static_cast<ClSource*>(pUser);
    if (!pSource->m_sFault.empty()) return; // what follows comes from the first
    try
    {
        pSource->m_sFault = szText;
        while (!pSource->m_sFault.empty() && std::strchr("\r\n ", pSource->m_sFault.back()) != nullptr)
        {
            pSource->m_sFault.pop_back();
        }
    }
    catch (const std::bad_alloc&) // must not pass through a library in C; the code says enough
    {
    }
}

std::uint64_t Number(const unsigned char* p, std::size_t nBytes)
{
    std::uint64_t nValue = 0;
    for (std::size_t i = 0; i < nBytes; ++i) nValue = nValue << 8 | p[i];
    return nValue;
}

// A box of the file format: length, four letters, content. Boxes may hold boxes.
struct ClBox
{
    const unsigned char* m_pContent = nullptr;
    std::size_t m_nSize = 0;
};

// The first box of that name in the range.
bool FindBox(const unsigned char* p, std::size_t nSize, const char* szName, ClBox& cBox)
{
    while (nSize >= 8)
    {
        std::uint64_t nLength = Number(p, 4);
        std::size_t nHeader = 8;
        if (nLength == 1 && nSize >= 16)
        {
            nLength = Number(p + 8, 8);
            nHeader = 16;
        }
        else if (nLength == 0) // to the end
        {
            nLength = nSize;
        }
        if (nLength < nHeader || nLength > nSize) return false;
        if (std::memcmp(p + 4, szName, 4) == 0)
        {
            cBox.m_pContent = p + nHeader;
            cBox.m_nSize = static_cast<std::size_t>(nLength) - nHeader;
            return true;
        }
        p += nLength;
        nSize -= static_cast<std::size_t>(nLength);
    }
    return false;
}

// The library does not read the resolution. It stands in a box of the header as two fractions with an exponent of ten,
// the vertical one first: that of the scan, or else that for showing.
void Resolution(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClBox cHeader;
    ClBox cBoth;
    ClBox cOne;
    if (!FindBox(aFile.data(), aFile.size(), "jp2h", cHeader)) return;
    if (!FindBox(cHeader.m_pContent, cHeader.m_nSize, "res ", cBoth)) return;
    if (!FindBox(cBoth.m_pContent, cBoth.m_nSize, "resc", cOne) &&
        !FindBox(cBoth.m_pContent, cBoth.m_nSize, "resd", cOne))
    {
        return;
    }
    if (cOne.m_nSize < 10) return;
    const auto Fraction = [&cOne](std::size_t nFirst, std::size_t nExponent)
    {
        const auto dOver = static_cast<double>(Number(cOne.m_pContent + nFirst + 2, 2));
        const double dTens = static_cast<signed char>(cOne.m_pContent[nExponent]);
        return dOver > 0.0 ? static_cast<double>(Number(cOne.m_pContent + nFirst, 2)) / dOver * std::pow(10.0, dTens)
                           : 0.0;
    };
    cPicture.m_dYPels = Fraction(0, 8);
    cPicture.m_dXPels = Fraction(4, 9);
}

using Stream_t = std::unique_ptr<opj_stream_t, void (*)(opj_stream_t*)>;
using Codec_t = std::unique_ptr<opj_codec_t, void (*)(opj_codec_t*)>;
using Image_t = std::unique_ptr<opj_image_t, void (*)(opj_image_t*)>;

class ClJp2Reader
{
public:
    explicit ClJp2Reader(const Bytes_t& aFile)
        : m_pStream(opj_stream_default_create(OPJ_TRUE), opj_stream_destroy),
          m_pCodec(opj_create_decompress(aFile[0] == 0xff ? OPJ_CODEC_J2K : OPJ_CODEC_JP2), opj_destroy_codec),
          m_pImage(nullptr, opj_image_destroy)
    {
        if (m_pStream == nullptr || m_pCodec == nullptr) throw std::bad_alloc();
        m_cSource.m_pFile = &aFile;
        opj_stream_set_user_data(m_pStream.get(), &m_cSource, nullptr);
        opj_stream_set_user_data_length(m_pStream.get(), aFile.size());
        opj_stream_set_read_function(m_pStream.get(), ReadBytes);
        opj_stream_set_seek_function(m_pStream.get(), SeekTo);
        opj_stream_set_skip_function(m_pStream.get(), SkipBytes);
        opj_set_error_handler(m_pCodec.get(), OnError, &m_cSource);
    }

    void Read(ClPicture& cPicture)
    {
        opj_dparameters_t cParameters;
        opj_set_default_decoder_parameters(&cParameters);
        Demand(opj_setup_decoder(m_pCodec.get(), &cParameters));
        Demand(opj_decoder_set_strict_mode(m_pCodec.get(), OPJ_TRUE));
        opj_image_t* pImage = nullptr;
        const OPJ_BOOL bHeader = opj_read_header(m_pStream.get(), m_pCodec.get(), &pImage);
        m_pImage.reset(pImage);
        Demand(bHeader);
        cPicture.Create(std::int64_t{pImage->x1} - pImage->x0, std::int64_t{pImage->y1} - pImage->y0);
        Demand(opj_decode(m_pCodec.get(), m_pStream.get(), pImage));
        CheckPlanes(cPicture);
        TakeRows(cPicture);
        Resolution(*m_cSource.m_pFile, cPicture);
    }

private:
    void CheckPlanes(const ClPicture& cPicture) const
    {
        const bool bColour = m_pImage->numcomps == 3 && m_pImage->color_space != OPJ_CLRSPC_SYCC &&
                             m_pImage->color_space != OPJ_CLRSPC_EYCC;
        if (m_pImage->numcomps != 1 && !bColour)
        {
            throw ClPictureError(FPC_ERROR_JPEG2000_WRONG_COLORSPACE,
                                 "the JPEG 2000 file is neither grey nor red, green and blue; convert it to grey");
        }
        for (OPJ_UINT32 i = 0; i < m_pImage->numcomps; ++i)
        {
            const opj_image_comp_t& cPlane = m_pImage->comps[i];
            if (cPlane.data == nullptr || cPlane.w != static_cast<OPJ_UINT32>(cPicture.Width()) ||
                cPlane.h != static_cast<OPJ_UINT32>(cPicture.Height()) || cPlane.prec < 1 || cPlane.prec > 16)
            {
                throw ClPictureError(FPC_ERROR_JPEG2000_UNSUPORTED,
                                     "the JPEG 2000 file has planes of several sizes, or samples of more than 16 bits");
            }
        }
    }

    void TakeRows(ClPicture& cPicture) const
    {
        const auto nWidth = static_cast<std::size_t>(cPicture.Width());
        const std::size_t nPlanes = m_pImage->numcomps;
        Bytes_t aRow(nWidth * 3);
        for (int y = 0; y < cPicture.Height(); ++y)
        {
            unsigned char* pOut = nPlanes == 1 ? cPicture.RowFromTop(y) : aRow.data();
            for (std::size_t i = 0; i < nPlanes; ++i)
            {
                const opj_image_comp_t& cPlane = m_pImage->comps[i];
                const int nMost = (1 << cPlane.prec) - 1;
                const int nShift = cPlane.sgnd != 0 ? 1 << (cPlane.prec - 1) : 0;
                const OPJ_INT32* pIn = cPlane.data + static_cast<std::size_t>(y) * nWidth;
                for (std::size_t x = 0; x < nWidth; ++x)
                {
                    const std::int64_t nSample = std::clamp<std::int64_t>(std::int64_t{pIn[x]} + nShift, 0, nMost);
                    pOut[x * nPlanes + (nPlanes - 1 - i)] = // red is the first plane
                        ReduceSample(static_cast<unsigned int>(nSample), static_cast<unsigned int>(nMost));
                }
            }
            if (nPlanes == 3) cPicture.PutColourRow(y, pOut);
        }
    }

    void Demand(OPJ_BOOL bDone) const
    {
        if (bDone == OPJ_TRUE) return;
        throw ClPictureError(FPC_ERROR_JPEG2000_FAILURE, "the JPEG 2000 file is damaged: " + m_cSource.m_sFault);
    }

    ClSource m_cSource{};
    Stream_t m_pStream;
    Codec_t m_pCodec;
    Image_t m_pImage;
};
} // namespace

void ReadJp2(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClJp2Reader(aFile).Read(cPicture);
}
} // namespace SegmentTool

#endif
