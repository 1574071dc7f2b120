#include "Formats.hpp"

#if HAVE_TIFF

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include <tiffio.h>

namespace SegmentTool
{
namespace
{
constexpr tmsize_t nMostMemory = tmsize_t{1} << 31; // in one piece; a picture of nMostSide in colours needs less

struct ClSource
{
    const Bytes_t* m_pFile;
    std::size_t m_nNext = 0;
    char m_szFault[200] = "";
};

tmsize_t ReadBytes(thandle_t hSource, void* pTo, tmsize_t nSize)
{
    auto* pSource = static_cast<ClSource*>(hSource);
    const std::size_t nLeft = pSource->m_pFile->size() - std::min(pSource->m_nNext, pSource->m_pFile->size());
    const std::size_t nRead = std::min(nLeft, static_cast<std::size_t>(nSize));
    if (nRead != 0) std::memcpy(pTo, pSource->m_pFile->data() + pSource->m_nNext, nRead);
    pSource->m_nNext += nRead;
    return static_cast<tmsize_t>(nRead);
}

tmsize_t WriteNothing(thandle_t, void*, tmsize_t)
{
    return -1;
}

toff_t Seek(thandle_t hSource, toff_t nOffset, int nWhence)
{
    auto* pSource = static_cast<ClSource*>(hSource);
    const std::size_t nBase = nWhence == SEEK_SET   ? 0
                              : nWhence == SEEK_CUR ? pSource->m_nNext
                                                    : pSource->m_pFile->size();
    pSource->m_nNext = nBase + static_cast<std::size_t>(nOffset);
    return pSource->m_nNext;
}

int Close(thandle_t)
{
    return 0;
}

toff_t Size(thandle_t hSource)
{
    return static_cast<ClSource*>(hSource)->m_pFile->size();
}

// The file lies in memory already. libtiff 4.5 does not read tiles that it cannot have in this way.
int Map(thandle_t hSource, void** ppBase, toff_t* pnSize)
{
    const Bytes_t& aFile = *static_cast<ClSource*>(hSource)->m_pFile;
    *ppBase = const_cast<unsigned char*>(aFile.data()); // is only read
    *pnSize = aFile.size();
    return 1;
}

void Unmap(thandle_t, void*, toff_t) {}

// The first fault is the one that tells; those behind it follow from it.
int OnError(TIFF*, void* pUser, const char*, const char* szFormat, va_list aArguments)
{
    auto* pSource = static_cast<ClSource*>(pUser);
    if (pSource->m_szFault[0] == '\0')
    {
        std::vsnprintf(pSource->m_szFault, sizeof pSource->m_szFault, szFormat, aArguments);
    }
    return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1; // such as an unknown tag: the pixels are whole
}

class ClTiffReader
{
public:
    explicit ClTiffReader(const Bytes_t& aFile)
    {
        m_cSource.m_pFile = &aFile;
        const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> pOptions(TIFFOpenOptionsAlloc(),
                                                                                    TIFFOpenOptionsFree);
        if (pOptions == nullptr) throw std::bad_alloc();
        TIFFOpenOptionsSetMaxSingleMemAlloc(pOptions.get(), nMostMemory);
        TIFFOpenOptionsSetErrorHandlerExtR(pOptions.get(), OnError, &m_cSource);
        TIFFOpenOptionsSetWarningHandlerExtR(pOptions.get(), OnWarning, nullptr);
        m_pTiff = TIFFClientOpenExt("", "r", &m_cSource, ReadBytes, WriteNothing, Seek, Close, Size, Map, Unmap,
                                    pOptions.get());
    }
    ClTiffReader(const ClTiffReader&) = delete;
    ~ClTiffReader()
    {
        if (m_pTiff != nullptr) TIFFClose(m_pTiff);
    }

    /// The first picture of the file.
    void Read(ClPicture& cPicture)
    {
        Demand(m_pTiff != nullptr);
        std::uint32_t nWidth = 0;
        std::uint32_t nHeight = 0;
        TIFFGetField(m_pTiff, TIFFTAG_IMAGEWIDTH, &nWidth);
        TIFFGetField(m_pTiff, TIFFTAG_IMAGELENGTH, &nHeight);
        cPicture.Create(nWidth, nHeight);
        Resolution(cPicture);
        if (Field(TIFFTAG_ORIENTATION) >= ORIENTATION_LEFTTOP)
        {
            throw ClPictureError(FPC_ERROR_TIFF_FAILURE, "the TIFF file is to be shown turned by a quarter; turn it");
        }
        if (IsPlainGrey())
            ReadGrey(cPicture);
        else
            ReadColours(cPicture);
    }

private:
    int Field(ttag_t nTag) const
    {
        std::uint16_t nValue = 0;
        return TIFFGetFieldDefaulted(m_pTiff, nTag, &nValue) != 0 ? nValue : 0;
    }

    void Resolution(ClPicture& cPicture) const
    {
        float fX = 0.0f;
        float fY = 0.0f;
        TIFFGetField(m_pTiff, TIFFTAG_XRESOLUTION, &fX);
        TIFFGetField(m_pTiff, TIFFTAG_YRESOLUTION, &fY);
        const int nUnit = Field(TIFFTAG_RESOLUTIONUNIT); // inches, if the file does not say
        const double dScale = nUnit == RESUNIT_INCH ? 1.0 / dMetresPerInch : nUnit == RESUNIT_CENTIMETER ? 100.0 : 0.0;
        cPicture.m_dXPels = fX * dScale;
        cPicture.m_dYPels = fY * dScale;
    }

    bool IsGrey() const
    {
        std::uint16_t nPhotometric = 0;
        return TIFFGetField(m_pTiff, TIFFTAG_PHOTOMETRIC, &nPhotometric) != 0 && nPhotometric <= PHOTOMETRIC_MINISBLACK;
    }

    bool IsPlainGrey() const
    {
        const int nBits = Field(TIFFTAG_BITSPERSAMPLE);
        return IsGrey() && Field(TIFFTAG_SAMPLESPERPIXEL) == 1 && TIFFIsTiled(m_pTiff) == 0 &&
               Field(TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_IEEEFP && Field(TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_INT &&
               (nBits == 1 || nBits == 2 || nBits == 4 || nBits == 8 || nBits == 16);
    }

    // Row and column as they are seen, from the upper left.
    int SeenRow(const ClPicture& cPicture, int nRow) const
    {
        const int nOrientation = Field(TIFFTAG_ORIENTATION);
        const bool bFromBelow = nOrientation == ORIENTATION_BOTLEFT || nOrientation == ORIENTATION_BOTRIGHT;
        return bFromBelow ? cPicture.Height() - 1 - nRow : nRow;
    }

    bool IsMirrored() const
    {
        const int nOrientation = Field(TIFFTAG_ORIENTATION);
        return nOrientation == ORIENTATION_TOPRIGHT || nOrientation == ORIENTATION_BOTRIGHT;
    }

    void ReadGrey(ClPicture& cPicture)
    {
        const int nBits = Field(TIFFTAG_BITSPERSAMPLE);
        const unsigned int nMost = (1u << nBits) - 1u;
        const bool bWhiteIsZero = Field(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_MINISWHITE;
        const bool bMirrored = IsMirrored();
        const int nWidth = cPicture.Width();
        // At least as long as the samples need, whatever the file's tags make of the length.
        Bytes_t aRow(std::max(static_cast<std::size_t>(std::max<tmsize_t>(0, TIFFScanlineSize(m_pTiff))),
                              static_cast<std::size_t>(nWidth) * 2));
        for (int y = 0; y < cPicture.Height(); ++y)
        {
            Demand(TIFFReadScanline(m_pTiff, aRow.data(), static_cast<std::uint32_t>(y), 0) == 1);
            unsigned char* pOut = cPicture.RowFromTop(SeenRow(cPicture, y));
            for (int x = 0; x < nWidth; ++x)
            {
                const unsigned int nSample = SampleAt(aRow.data(), nBits, x);
                pOut[bMirrored ? nWidth - 1 - x : x] = ReduceSample(bWhiteIsZero ? nMost - nSample : nSample, nMost);
            }
        }
    }

    static unsigned int SampleAt(const unsigned char* pRow, int nBits, int x)
    {
        if (nBits == 8) return pRow[x];
        if (nBits == 16)
        {
            std::uint16_t nSample = 0;
            std::memcpy(&nSample, pRow + 2 * static_cast<std::ptrdiff_t>(x), sizeof nSample);
            return nSample;
        }
        const int nPerByte = 8 / nBits;
        const int nShift = 8 - nBits * (x % nPerByte + 1);
        return (static_cast<unsigned int>(pRow[x / nPerByte]) >> nShift) & ((1u << nBits) - 1u);
    }

    // Everything else through libtiff's own conversion to red, green, blue and opacity.
    void ReadColours(ClPicture& cPicture)
    {
        char szWhy[1024] = "";
        if (TIFFRGBAImageOK(m_pTiff, szWhy) == 0)
        {
            throw ClPictureError(FPC_ERROR_TIFF_WRONG_COLORSPACE,
                                 std::string("the kind of TIFF file is not supported: ") + szWhy);
        }
        const auto nWidth = static_cast<std::size_t>(cPicture.Width());
        const auto nHeight = static_cast<std::size_t>(cPicture.Height());
        std::vector<std::uint32_t> aRaster(nWidth * nHeight);
        Demand(TIFFReadRGBAImageOriented(m_pTiff, static_cast<std::uint32_t>(nWidth),
                                         static_cast<std::uint32_t>(nHeight), aRaster.data(), ORIENTATION_TOPLEFT,
                                         1) != 0);
        const bool bGrey = IsGrey();
        Bytes_t aRow(nWidth * 3);
        for (std::size_t y = 0; y < nHeight; ++y)
        {
            const std::uint32_t* pIn = aRaster.data() + y * nWidth;
            unsigned char* pGrey = cPicture.RowFromTop(static_cast<int>(y));
            for (std::size_t x = 0; x < nWidth; ++x)
            {
                // The colours are multiplied with the opacity: what is missing is white.
                const unsigned int nWhite = 255u - TIFFGetA(pIn[x]);
                const auto Over = [nWhite](unsigned int n)
                { return static_cast<unsigned char>(std::min(255u, n + nWhite)); };
                if (bGrey) pGrey[x] = Over(TIFFGetR(pIn[x]));
                aRow[3 * x] = Over(TIFFGetB(pIn[x]));
                aRow[3 * x + 1] = Over(TIFFGetG(pIn[x]));
                aRow[3 * x + 2] = Over(TIFFGetR(pIn[x]));
            }
            if (!bGrey) cPicture.PutColourRow(static_cast<int>(y), aRow.data());
        }
    }

    void Demand(bool bDone) const
    {
        if (bDone) return;
        throw ClPictureError(FPC_ERROR_TIFF_FAILURE, std::string("the TIFF file is damaged: ") + m_cSource.m_szFault);
    }

    ClSource m_cSource;
    TIFF* m_pTiff = nullptr;
};
} // namespace

void ReadTiff(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClTiffReader(aFile).Read(cPicture);
}
} // namespace SegmentTool

#endif
