#include "ImageFile.hpp"

#include "BytesStream.hpp"

#include "RDTools/Bitmap.hpp"
#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#if HAVE_PNG
#include <png.h>
#endif

namespace SegmentTool
{
namespace
{
constexpr char szTextPrefix[] = "kormelin:"; // in front of the fingerprint

std::string FingerprintText(std::uint64_t nFingerprint)
{
    char szNumber[20];
    std::snprintf(szNumber, sizeof szNumber, "%016llx", static_cast<unsigned long long>(nFingerprint));
    return std::string(szTextPrefix) + szNumber;
}

// Blue, green, red; none of them looks like ridges or like one another, in print or to the colour-blind.
constexpr unsigned char aanFrames[4][3] = {{0, 94, 213}, {178, 114, 0}, {115, 158, 0}, {167, 121, 204}};
constexpr double dFramesPerInch = 170.0; // 1 / thickness

struct ClFrame
{
    int m_nLeft;
    int m_nRight; // behind the last column
    int m_nTop;
    int m_nBottom; // below the last row
    const unsigned char* m_pColour;
};

// The frame's pixels in one row.
void DrawFrame(const ClFrame& cFrame, int nThickness, int nWidth, int nRow, unsigned char* pRow)
{
    if (nRow < cFrame.m_nTop || nRow >= cFrame.m_nBottom) return;
    const bool bWhole = nRow < cFrame.m_nTop + nThickness || nRow >= cFrame.m_nBottom - nThickness;
    const auto Draw = [&](int nFrom, int nTo)
    {
        nFrom = std::clamp(std::max(nFrom, cFrame.m_nLeft), 0, nWidth);
        nTo = std::clamp(std::min(nTo, cFrame.m_nRight), 0, nWidth);
        for (int x = nFrom; x < nTo; ++x) std::memcpy(pRow + 3 * static_cast<std::ptrdiff_t>(x), cFrame.m_pColour, 3);
    };
    Draw(cFrame.m_nLeft, bWhole ? cFrame.m_nRight : cFrame.m_nLeft + nThickness);
    Draw(cFrame.m_nRight - nThickness, cFrame.m_nRight);
}
} // namespace

ClImageRows RowsOf(const ClImage& cImage)
{
    ClImageRows cRows;
    cRows.m_nWidth = cImage.m_nWidth;
    cRows.m_nHeight = cImage.m_nHeight;
    cRows.m_nXPels = cImage.m_nXRes;
    cRows.m_nYPels = cImage.m_nYRes;
    cRows.m_Row = [&cImage](int nRow, unsigned char* pRow)
    {
        std::memcpy(pRow, Row<unsigned char>(cImage, cImage.m_nHeight - 1 - nRow),
                    static_cast<std::size_t>(cImage.m_nWidth));
    };
    return cRows;
}

ClImageRows RowsWithFrames(ClPicture& cPicture, const std::vector<ClFinger>& aFingers)
{
    ClImageRows cRows = RowsOf(cPicture.m_cImage);
    cRows.m_nChannels = 3;
    std::vector<ClFrame> aFrames;
    aFrames.reserve(aFingers.size());
    for (const ClFinger& c : aFingers)
    {
        aFrames.push_back(
            {c.m_nX, c.m_nX + c.m_nWidth, c.m_nSeenY, c.m_nSeenY + c.m_nHeight, aanFrames[aFrames.size() % 4]});
    }
    const int nThickness = std::max(2, static_cast<int>(cRows.m_nXPels * dMetresPerInch / dFramesPerInch));
    cRows.m_Row = [&cPicture, aFrames, nThickness](int nRow, unsigned char* pRow)
    {
        const unsigned char* pGrey = cPicture.RowFromTop(nRow);
        for (int x = 0; x < cPicture.Width(); ++x) std::memset(pRow + 3 * static_cast<std::ptrdiff_t>(x), pGrey[x], 3);
        for (const ClFrame& cFrame : aFrames) DrawFrame(cFrame, nThickness, cPicture.Width(), nRow, pRow);
    };
    return cRows;
}

Bytes_t EncodeImage(EImageFormat eFormat, const ClImageRows& cRows, std::uint64_t nFingerprint)
{
#if HAVE_PNG
    if (eFormat == EImageFormat::ePng) return EncodePng(cRows, nFingerprint);
#endif
    static_cast<void>(eFormat);
    return EncodeBmp(cRows, nFingerprint);
}

#if HAVE_PNG
namespace
{
constexpr int nFast = 3; // half the time of the usual level for one tenth more bytes

struct ClTarget
{
    Bytes_t m_aBytes;
    bool m_bNoMemory = false;
    char m_szFault[120] = "";
};

[[noreturn]] void OnError(png_structp pPng, png_const_charp szText)
{
    auto* pTarget = static_cast<ClTarget*>(png_get_error_ptr(pPng));
    std::strncpy(pTarget->m_szFault, szText, sizeof pTarget->m_szFault - 1);
    png_longjmp(pPng, 1);
}

void OnWarning(png_structp, png_const_charp) {}

void WriteBytes(png_structp pPng, png_bytep pBytes, std::size_t nSize)
{
    auto* pTarget = static_cast<ClTarget*>(png_get_io_ptr(pPng));
    try
    {
        pTarget->m_aBytes.insert(pTarget->m_aBytes.end(), pBytes, pBytes + nSize);
        return;
    }
    catch (const std::bad_alloc&) // must not pass through libpng
    {
        pTarget->m_bNoMemory = true;
    }
    png_error(pPng, "memory");
}

void FlushNothing(png_structp) {}

// Each call stands in a function of its own, whose only locals are numbers and pointers: one that fails leaves it by
// longjmp.
class ClPngWriter
{
public:
    ClPngWriter()
    {
        m_pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_cTarget, OnError, OnWarning);
        if (m_pPng != nullptr) m_pInfo = png_create_info_struct(m_pPng);
    }
    ClPngWriter(const ClPngWriter&) = delete;
    ~ClPngWriter() { png_destroy_write_struct(&m_pPng, &m_pInfo); }

    Bytes_t Write(const ClImageRows& cRows, std::string sSource)
    {
        if (m_pPng == nullptr || m_pInfo == nullptr) throw std::bad_alloc();
        Demand(WriteHeader(cRows, sSource.data()));
        Bytes_t aRow(static_cast<std::size_t>(cRows.m_nWidth) * static_cast<std::size_t>(cRows.m_nChannels));
        for (int y = 0; y < cRows.m_nHeight; ++y)
        {
            cRows.m_Row(y, aRow.data());
            Demand(WriteRow(aRow.data()));
        }
        Demand(WriteEnd());
        return std::move(m_cTarget.m_aBytes);
    }

private:
    bool WriteHeader(const ClImageRows& cRows, char* szSource)
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_set_write_fn(m_pPng, &m_cTarget, WriteBytes, FlushNothing);
        png_set_compression_level(m_pPng, nFast);
        png_set_IHDR(m_pPng, m_pInfo, static_cast<png_uint_32>(cRows.m_nWidth),
                     static_cast<png_uint_32>(cRows.m_nHeight), 8,
                     cRows.m_nChannels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_pHYs(m_pPng, m_pInfo, static_cast<png_uint_32>(cRows.m_nXPels),
                     static_cast<png_uint_32>(cRows.m_nYPels), PNG_RESOLUTION_METER);
        char szKey[] = "Source";
        png_text cText{};
        cText.compression = PNG_TEXT_COMPRESSION_NONE;
        cText.key = szKey;
        cText.text = szSource;
        png_set_text(m_pPng, m_pInfo, &cText, 1);
        png_write_info(m_pPng, m_pInfo);
        png_set_bgr(m_pPng);
        return true;
    }

    bool WriteRow(const unsigned char* pRow)
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_write_row(m_pPng, pRow);
        return true;
    }

    bool WriteEnd()
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_write_end(m_pPng, nullptr);
        return true;
    }

    void Demand(bool bDone) const
    {
        if (bDone) return;
        if (m_cTarget.m_bNoMemory) throw std::bad_alloc();
        throw ClPictureError(FPC_ERROR_PNG_FAILURE, std::string("the PNG file cannot be made: ") + m_cTarget.m_szFault);
    }

    ClTarget m_cTarget;
    png_structp m_pPng = nullptr;
    png_infop m_pInfo = nullptr;
};
} // namespace

Bytes_t EncodePng(const ClImageRows& cRows, std::uint64_t nFingerprint)
{
    return ClPngWriter().Write(cRows, FingerprintText(nFingerprint));
}
#endif

Bytes_t EncodeBmp(const ClImageRows& cRows, std::uint64_t nFingerprint)
{
    ClImage cImage(cRows.m_nWidth, cRows.m_nHeight, cRows.m_nChannels, cRows.m_nXPels, cRows.m_nYPels);
    const int nBytes = cImage.SamplesPerRow();
    for (int y = 0; y < cRows.m_nHeight; ++y)
    {
        auto* pRow = Row<unsigned char>(cImage, cRows.m_nHeight - 1 - y);
        cRows.m_Row(y, pRow);
        std::memset(pRow + nBytes, 0, static_cast<std::size_t>(cImage.Stride() - nBytes));
    }
    ClBitmap cBitmap;
    cBitmap.Attach(cImage);
    ClBytesStream cStream;
    cBitmap.Store(cStream);
    const std::string sText = FingerprintText(nFingerprint);
    cStream.m_aWritten.insert(cStream.m_aWritten.end(), sText.begin(), sText.end());
    return std::move(cStream.m_aWritten);
}

const char* EndingOf(EImageFormat eFormat)
{
    return eFormat == EImageFormat::ePng ? "png" : "bmp";
}

bool HasFingerprint(const std::string& sPath, std::uint64_t nFingerprint)
{
    std::ifstream cFile(sPath, std::ios::binary);
    char aBegin[256] = {};
    cFile.read(aBegin, sizeof aBegin);
    const std::string sBegin(aBegin, static_cast<std::size_t>(cFile.gcount()));
    const std::string sText = FingerprintText(nFingerprint);
    if (sBegin.compare(0, 2, "BM") != 0)
    {
        return sBegin.find(std::string("tEXtSource") + '\0' + sText) != std::string::npos;
    }
    cFile.clear();
    std::string sEnd(sText.size(), '\0');
    cFile.seekg(-static_cast<std::streamoff>(sText.size()), std::ios::end);
    return cFile.read(sEnd.data(), static_cast<std::streamsize>(sEnd.size())) && sEnd == sText;
}
} // namespace SegmentTool
