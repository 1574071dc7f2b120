#include "Formats.hpp"

#include "BytesStream.hpp"
#include "Result.hpp"

#include "RDTools/Bitmap.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace SegmentTool
{
namespace
{
constexpr std::size_t nFileHeader = 14;
constexpr std::size_t nInfoHeader = 40; // the only one that the loader knows
constexpr std::uint32_t nBitFields = 3;

struct ClHeader
{
    std::uint32_t m_nOffset = 0; ///< of the pixels
    std::int32_t m_nWidth = 1;
    std::int32_t m_nHeight = 1; ///< negative: the first row is the uppermost
    std::uint32_t m_nSize = 0;  ///< of the header behind the file header
    std::uint32_t m_nBits = 0;
    std::uint32_t m_nCompression = 0;
    std::uint32_t m_nColours = 0; ///< entries of the table; 0: all

    explicit ClHeader(const Bytes_t& aFile)
    {
        const auto Number = [&aFile](std::size_t nFirst, int nBytes)
        {
            std::uint32_t n = 0;
            for (int i = nBytes - 1; i >= 0; --i) n = n << 8 | aFile[nFirst + static_cast<std::size_t>(i)];
            return n;
        };
        if (aFile.size() < nFileHeader + nInfoHeader) return;
        m_nOffset = Number(10, 4);
        m_nSize = Number(14, 4);
        m_nWidth = static_cast<std::int32_t>(Number(18, 4));
        m_nHeight = static_cast<std::int32_t>(Number(22, 4));
        m_nBits = Number(28, 2);
        m_nCompression = Number(30, 4);
        m_nColours = Number(46, 4);
    }

    std::size_t TableBytes() const
    {
        if (m_nBits > 8) return m_nCompression == nBitFields ? 12 : 4 * std::size_t{m_nColours};
        const std::uint32_t nAll = 1u << m_nBits;
        return 4 * std::size_t{m_nColours == 0 ? nAll : std::min(nAll, m_nColours)};
    }
};

// Other programs write longer headers, whose first 40 bytes are the same and which hold the masks of colours where a
// header of 40 bytes is followed by them, or leave a gap in front of the pixels. Makes the file that the loader knows:
// empty if it is one already, or cannot be made one.
Bytes_t AsShortHeader(const Bytes_t& aFile)
{
    const ClHeader cHeader(aFile);
    const bool bLonger =
        cHeader.m_nSize == 52 || cHeader.m_nSize == 56 || cHeader.m_nSize == 108 || cHeader.m_nSize == 124;
    if (!bLonger && cHeader.m_nSize != nInfoHeader) return {};
    const bool bMasks = cHeader.m_nBits > 8 && cHeader.m_nCompression == nBitFields;
    const std::size_t nTable = cHeader.TableBytes();
    const std::size_t nTableFirst = nFileHeader + (bMasks ? nInfoHeader : cHeader.m_nSize);
    const std::size_t nPixels = nFileHeader + nInfoHeader + nTable;
    const std::size_t nSource = cHeader.m_nOffset != 0 ? cHeader.m_nOffset : nFileHeader + cHeader.m_nSize + nTable;
    if (!bLonger && nSource <= nPixels) return {};
    if (nSource > aFile.size() || nTableFirst + nTable > nSource) return {};

    Bytes_t aShort(aFile.begin(), aFile.begin() + nFileHeader + nInfoHeader);
    const auto Put = [&aShort](std::size_t nFirst, std::size_t nValue)
    {
        for (std::size_t i = 0; i < 4; ++i) aShort[nFirst + i] = static_cast<unsigned char>(nValue >> (8 * i) & 255u);
    };
    Put(10, nPixels);
    Put(14, nInfoHeader);
    if (cHeader.m_nBits <= 8) Put(46, nTable / 4);
    const auto At = [&aFile](std::size_t n) { return aFile.begin() + static_cast<std::ptrdiff_t>(n); };
    aShort.insert(aShort.end(), At(nTableFirst), At(nTableFirst + nTable));
    aShort.insert(aShort.end(), At(nSource), aFile.end());
    return aShort;
}

// Row 0 of the image is the lowest one.
void TakeRows(const ClImage& cImage, ClPicture& cPicture)
{
    Bytes_t aColours(static_cast<std::size_t>(cPicture.Width()) * 3);
    for (int y = 0; y < cPicture.Height(); ++y)
    {
        const auto* pIn = Row<unsigned char>(cImage, cPicture.Height() - 1 - y);
        if (cImage.m_nPlanes == 1)
        {
            std::memcpy(cPicture.RowFromTop(y), pIn, static_cast<std::size_t>(cPicture.Width()));
            continue;
        }
        for (std::size_t x = 0; x < static_cast<std::size_t>(cPicture.Width());
             ++x) // alpha, if any, means nothing here
        {
            std::copy_n(pIn + x * static_cast<std::size_t>(cImage.m_nPlanes), 3, aColours.data() + 3 * x);
        }
        cPicture.PutColourRow(y, aColours.data());
    }
}
} // namespace

void ReadBmp(const Bytes_t& aFile, ClPicture& cPicture)
{
    const ClHeader cSize(aFile);
    ClPicture::CheckSize(cSize.m_nWidth, std::abs(std::int64_t{cSize.m_nHeight}));
    const Bytes_t aShort = AsShortHeader(aFile);
    ClBytesStream cStream(aShort.empty() ? aFile : aShort);
    ClImage cImage;
    try
    {
        ClBitmap cBitmap;
        cBitmap.Load(cStream);
        const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
        cPicture.Create(cHeader.biWidth, cHeader.biHeight);
        cPicture.m_dXPels = cHeader.biXPelsPerMeter;
        cPicture.m_dYPels = cHeader.biYPelsPerMeter;
        cBitmap.GetImage(cImage);
    }
    catch (const ClExBadAlloc&)
    {
        throw;
    }
    catch (const ClException& cError)
    {
        throw ClPictureError(cError.Number(),
                             std::string("the BMP file cannot be read: ") + GetErrorDescriptionIntern(cError.Number()));
    }
    TakeRows(cImage, cPicture);
}
} // namespace SegmentTool
