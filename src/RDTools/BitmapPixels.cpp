#include "RDTools/Bitmap.hpp"

#include "RDTools/BitmapColours.hpp"
#include "RDTools/BitmapLayout.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstring>

// The operations of ClBitmap that look at colours: table entries, masks, pixels.

namespace
{
bool IsGrayTable(const unsigned char* pTable, unsigned long nEntries, bool bIdentity)
{
    for (unsigned long i = 0; i < nEntries && pTable != nullptr; ++i, pTable += ClBitmapLayout::nEntrySize)
    {
        if (pTable[0] != pTable[1] || pTable[1] != pTable[2] || (bIdentity && pTable[0] != i))
        {
            return false;
        }
    }
    return true;
}

/// Of 24-bit pixels.
bool AreSamplesGray(const ClBitmap& cBitmap)
{
    for (int y = 0; y < cBitmap.m_pBIH->biHeight; ++y)
    {
        const unsigned char* p = cBitmap.Line(y);
        for (int x = 0; x < cBitmap.m_pBIH->biWidth; ++x, p += 3)
        {
            if (p[0] != p[1] || p[1] != p[2])
            {
                return false;
            }
        }
    }
    return true;
}

/// Of 16 and 32-bit pixels, compared on the scale of 0 to 255, since the masks may differ in width.
bool AreMaskedChannelsGray(const ClBitmap& cBitmap)
{
    const ClBitmapColours cColours(cBitmap);
    for (int y = 0; y < cBitmap.m_pBIH->biHeight; ++y)
    {
        const unsigned char* p = cBitmap.Line(y);
        for (int x = 0; x < cBitmap.m_pBIH->biWidth; ++x)
        {
            const unsigned int nPixel = cColours.Read(p, x);
            const unsigned char nRed = cColours.Channel(nPixel, ClBitmapColours::eRed);
            if (nRed != cColours.Channel(nPixel, ClBitmapColours::eGreen) ||
                nRed != cColours.Channel(nPixel, ClBitmapColours::eBlue))
            {
                return false;
            }
        }
    }
    return true;
}

/// Whether there is such a pixel, and a way to read it.
bool IsPixel(const ClBitmap& cBitmap, long nX, long nY)
{
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    return nX >= 0 && nY >= 0 && nX < cHeader.biWidth && nY < cHeader.biHeight && ClBitmapColours::Fault(cBitmap) == 0;
}
} // namespace

std::uint32_t ClBitmap::PaletteEntry(unsigned long nIndex) const
{
    std::uint32_t nEntry;
    std::memcpy(&nEntry, reinterpret_cast<const unsigned char*>(m_pPalette) + ClBitmapLayout::nEntrySize * nIndex,
                ClBitmapLayout::nEntrySize);
    return nEntry;
}

long ClBitmap::LongFromMem(const unsigned char* p, int nBytes) const
{
    long nValue = 0;
    for (int i = 0; i < std::min(nBytes, 4); ++i)
    {
        nValue |= static_cast<long>(p[i]) << (8 * i);
    }
    return nValue;
}

void ClBitmap::LongToMem(unsigned char* p, long nValue, long nBytes) const
{
    for (int i = 0; i < std::min(nBytes, 4l); ++i)
    {
        p[i] = static_cast<unsigned char>(nValue >> (8 * i));
    }
}

void ClBitmap::MaskData(long nMask, unsigned int& nShift, unsigned int& nBits) const
{
    const auto nMask32 = static_cast<std::uint32_t>(nMask);
    nShift = 0;
    while (nShift < 32 && (nMask32 >> nShift & 1u) == 0)
    {
        ++nShift;
    }
    nBits = 0;
    while (nShift + nBits < 32 && (nMask32 >> (nShift + nBits) & 1u) != 0)
    {
        ++nBits;
    }
}

void ClBitmap::GetMask(unsigned int nChannel, unsigned int& nShift, unsigned int& nMask, unsigned int& nUp,
                       unsigned int& nDown) const
{
    static constexpr std::uint32_t aMasks16[] = {31744, 992, 31, 32768};
    static constexpr std::uint32_t aMasks32[] = {16711680, 65280, 255, 4278190080};
    const tagBITMAPINFOHEADER& cHeader = Header();
    if (cHeader.biCompression == 3 && m_pPalette != nullptr && nChannel < ClBitmapLayout::TableEntries(cHeader))
    {
        nMask = PaletteEntry(nChannel);
    }
    else
    {
        nMask = nChannel > 3 ? 0 : cHeader.biBitCount <= 16 ? aMasks16[nChannel] : aMasks32[nChannel];
    }
    unsigned int nBits;
    MaskData(static_cast<long>(nMask), nShift, nBits);
    MaskFactors(nBits, nUp, nDown);
}

void ClBitmap::MaskFactors(unsigned int nBits, unsigned int& nUp, unsigned int& nDown)
{
    const double dLargest = static_cast<double>((std::uint64_t(1) << nBits) - 1);
    nUp = CastSample<unsigned int>(nBits == 0 ? 0.0 : 16711680.0 / dLargest);
    nDown = CastSample<unsigned int>(dLargest * 257.00392156862745);
}

bool ClBitmap::IsGray(bool bIdentity) const
{
    const tagBITMAPINFOHEADER& cHeader = Header();
    if (cHeader.biBitCount <= 8)
    {
        return IsGrayTable(reinterpret_cast<const unsigned char*>(m_pPalette), ClBitmapLayout::TableEntries(cHeader),
                           bIdentity);
    }
    if (cHeader.biWidth == 0 || cHeader.biHeight == 0 || ClBitmapColours::Fault(*this) != 0)
    {
        return true; // no pixel tells otherwise
    }
    return cHeader.biBitCount == 24 ? AreSamplesGray(*this) : AreMaskedChannelsGray(*this);
}

unsigned int ClBitmap::GetPixel(long nX, long nY) const
{
    if (!IsPixel(*this, nX, nY))
    {
        return 0xffffffff;
    }
    const ClBitmapColours cColours(*this);
    const unsigned int nPixel = cColours.Read(Line(nY), static_cast<int>(nX));
    if (cColours.HasTable())
    {
        return cColours.Entry(nPixel);
    }
    unsigned int nColour = 0;
    for (unsigned int i = ClBitmapColours::eRed; i <= ClBitmapColours::eBlue; ++i)
    {
        nColour |= static_cast<unsigned int>(cColours.Channel(nPixel, i)) << ClBitmapColours::ByteShift(i);
    }
    return nColour;
}

void ClBitmap::SetPixel(long nX, long nY, unsigned int nColour)
{
    if (!IsPixel(*this, nX, nY))
    {
        return;
    }
    const ClBitmapColours cColours(*this);
    unsigned char* pRow = Line(nY);
    const int x = static_cast<int>(nX);
    if (!cColours.HasTable())
    {
        cColours.Write(pRow, x, cColours.WithColour(cColours.Read(pRow, x), nColour));
        return;
    }
    const long nIndex = cColours.IndexOf(nColour);
    if (nIndex >= 0)
    {
        cColours.Write(pRow, x, static_cast<unsigned int>(nIndex));
    }
}
