#pragma once

#include "RDTools/Bitmap.hpp"
#include "RDTools/BitmapLayout.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// How the pixels of a bitmap are read and written as colours, the one way for single pixels, channels and images.
///
/// Pixel    What stands in the row: an index up to 8 bits, the bytes little-endian above. Indexes fill a byte from its
///          high bits on.
/// Colours  Of the table (an index behind its end, or without a table, is black), or the channels under the masks.
/// Masks    Of a mask with gaps the lowest run of ones counts, of a run beyond 16 bits its upper 16: more would not
///          change a value from 0 to 255. A colour without a mask is 0.
/// Alpha    Of 16 and 32 bits only, and only under a mask of its own; anything else is opaque, 255, and stays so.
///
/// It looks at the bitmap, which must outlive it and keep header and table.
class ClBitmapColours
{
public:
    enum EChannel : unsigned int
    {
        eRed,
        eGreen,
        eBlue,
        eAlpha,
        eChannels
    };

    /// Why the pixels cannot be walked, 0 if they can: -10 no header, or an area without pixels; -31 compressed; -12
    /// another depth than 1, 2, 4, 8, 16, 24, 32; -14 a negative size, or a row beyond 32 bits.
    static long Fault(const ClBitmap& cBitmap);

    explicit ClBitmapColours(const ClBitmap& cBitmap); ///< of a bitmap without fault

    bool HasTable() const { return m_nBitCount <= 8; }
    inline unsigned int Read(const unsigned char* pRow, int nX) const;
    inline void Write(unsigned char* pRow, int nX, unsigned int nPixel) const;

    /// Colour of an index, as it stands in the table.
    std::uint32_t Entry(unsigned int nIndex) const { return nIndex < m_nEntries ? m_cBitmap.PaletteEntry(nIndex) : 0; }
    /// The first index of exactly this entry that a pixel can hold, or -1.
    long IndexOf(std::uint32_t nEntry) const;
    inline unsigned char Channel(unsigned int nPixel, unsigned int nChannel) const;
    /// A pixel of more than 8 bits with this value, 0 to 255, in a channel; the other bits stay.
    inline unsigned int WithChannel(unsigned int nPixel, unsigned int nChannel, unsigned int nValue) const;
    /// The same for the three colours of 0x00RRGGBB, all reduced to as few steps as the narrowest mask has.
    unsigned int WithColour(unsigned int nPixel, unsigned int nColour) const;

    /// Position of a colour's byte in 0x00RRGGBB.
    static constexpr unsigned int ByteShift(unsigned int nChannel) { return 8 * (2 - nChannel); }

private:
    struct ST_Channel
    {
        unsigned int nMask = 0;
        unsigned int nShift = 32;
        unsigned int nBits = 0;
        unsigned int nUp = 0;
        unsigned int nDown = 0;
    };

    void SetChannel(unsigned int nChannel, unsigned int nMask);
    static unsigned int ScaleDown(unsigned int nValue, unsigned int nDown) { return (nValue * nDown + 32768u) >> 16; }

    const ClBitmap& m_cBitmap;
    unsigned int m_nBitCount;
    unsigned long m_nEntries = 0; ///< of the table that a pixel can reach
    ST_Channel m_aChannels[eChannels];
};

inline unsigned int ClBitmapColours::Read(const unsigned char* pRow, int nX) const
{
    const auto x = static_cast<std::size_t>(nX);
    switch (m_nBitCount)
    {
    case 8: return pRow[x];
    case 16: return pRow[2 * x] | static_cast<unsigned int>(pRow[2 * x + 1]) << 8;
    case 24:
        return pRow[3 * x] | static_cast<unsigned int>(pRow[3 * x + 1]) << 8 |
               static_cast<unsigned int>(pRow[3 * x + 2]) << 16;
    case 32:
        return pRow[4 * x] | static_cast<unsigned int>(pRow[4 * x + 1]) << 8 |
               static_cast<unsigned int>(pRow[4 * x + 2]) << 16 | static_cast<unsigned int>(pRow[4 * x + 3]) << 24;
    default:
    {
        const std::size_t nBit = x * m_nBitCount;
        return (pRow[nBit / 8] >> (8 - m_nBitCount - nBit % 8)) & ((1u << m_nBitCount) - 1);
    }
    }
}

inline void ClBitmapColours::Write(unsigned char* pRow, int nX, unsigned int nPixel) const
{
    const auto x = static_cast<std::size_t>(nX);
    if (m_nBitCount >= 8)
    {
        const std::size_t nBytes = m_nBitCount / 8;
        for (std::size_t i = 0; i < nBytes; ++i)
        {
            pRow[nBytes * x + i] = static_cast<unsigned char>(nPixel >> (8 * i));
        }
        return;
    }
    const std::size_t nBit = x * m_nBitCount;
    const std::size_t nShift = 8 - m_nBitCount - nBit % 8;
    const unsigned int nMask = ((1u << m_nBitCount) - 1) << nShift;
    unsigned char& nByte = pRow[nBit / 8];
    nByte = static_cast<unsigned char>((nByte & ~nMask) | (nPixel << nShift & nMask));
}

inline unsigned char ClBitmapColours::Channel(unsigned int nPixel, unsigned int nChannel) const
{
    if (nChannel == eAlpha && m_aChannels[eAlpha].nMask == 0)
    {
        return 255;
    }
    if (HasTable())
    {
        return static_cast<unsigned char>(Entry(nPixel) >> ByteShift(nChannel));
    }
    const ST_Channel& c = m_aChannels[nChannel];
    return static_cast<unsigned char>(ClBitmap::ScaleUp(nPixel, c.nMask, c.nShift, c.nUp));
}

inline unsigned int ClBitmapColours::WithChannel(unsigned int nPixel, unsigned int nChannel, unsigned int nValue) const
{
    const ST_Channel& c = m_aChannels[nChannel];
    return c.nMask == 0 ? nPixel : (nPixel & ~c.nMask) | ScaleDown(nValue, c.nDown) << c.nShift;
}
