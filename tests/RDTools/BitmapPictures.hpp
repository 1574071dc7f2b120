#pragma once

// Bitmaps whose pixels the tests know, packed bit by bit: the plain form of what the library does with whole bytes.

#include "TestTools.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A packed bitmap of random pixels, kept beside the block as numbers.
struct ST_BitmapPicture
{
    int nWidth;
    int nHeight;
    int nBitCount;
    std::size_t nOffset;    ///< of the pixels in the block
    ClGuardedVector aBlock; ///< as PackedBitmap makes it
    std::vector<std::uint32_t> aPixels;

    std::uint32_t At(int nX, int nY) const
    {
        return aPixels[static_cast<std::size_t>(nY) * static_cast<std::size_t>(nWidth) + static_cast<std::size_t>(nX)];
    }
    std::size_t RowBytes() const { return (static_cast<std::size_t>(nBitCount * nWidth) + 31) / 32 * 4; }

    /// Writes a pixel: bit by bit from the high bit on, up to 8 bits; byte by byte from the low byte on, above.
    void Put(int nX, int nY, std::uint32_t nPixel)
    {
        aPixels[static_cast<std::size_t>(nY) * static_cast<std::size_t>(nWidth) + static_cast<std::size_t>(nX)] =
            nPixel;
        unsigned char* pRow = aBlock.data() + nOffset + static_cast<std::size_t>(nY) * RowBytes();
        for (int i = 0; i < nBitCount; ++i)
        {
            const int nBit = nX * nBitCount + i; // in the order of the row's bytes
            const bool bSet = nBitCount <= 8 ? (nPixel >> (nBitCount - 1 - i) & 1) != 0
                                             : (nPixel >> (i / 8 * 8 + 7 - i % 8) & 1) != 0;
            const auto nMask = static_cast<unsigned char>(0x80 >> nBit % 8);
            unsigned char& nByte = pRow[nBit / 8];
            nByte = static_cast<unsigned char>(bSet ? nByte | nMask : nByte & ~nMask);
        }
    }
};

/// nIndexes bounds the random pixels; 0: they use all bits.
inline ST_BitmapPicture BitmapPicture(int nWidth, int nHeight, int nBitCount, int nCompression = 0,
                                      unsigned int nClrUsed = 0, std::uint32_t nIndexes = 0, unsigned int nSeed = 1)
{
    ST_BitmapPicture cPicture{nWidth, nHeight, nBitCount, 0, {}, {}};
    cPicture.aBlock = PackedBitmap(nWidth, nHeight, nBitCount, nCompression, nClrUsed, nSeed);
    cPicture.aPixels.resize(static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight));
    cPicture.nOffset = cPicture.aBlock.size() - cPicture.RowBytes() * static_cast<std::size_t>(nHeight);
    ClTestRandom cRandom(nSeed + 100);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const std::uint32_t nPixel = cRandom.Next() >> (32 - nBitCount);
            cPicture.Put(x, y, nIndexes == 0 ? nPixel : nPixel % nIndexes);
        }
    }
    return cPicture;
}

/// Makes the table of a picture random colours, no two alike, with 0 in the fourth byte.
inline void ColourTable(ST_BitmapPicture& cPicture, unsigned int nSeed = 5)
{
    ClTestRandom cRandom(nSeed);
    for (std::size_t i = 40; i + 4 <= cPicture.nOffset; i += 4)
    {
        const auto nEntry = static_cast<std::uint32_t>((i - 40) / 4); // the low byte keeps them apart
        PutLong(cPicture.aBlock.data(), i, (cRandom.Next() & 0xffff00) | nEntry);
    }
}

/// Entry of a picture's table; 0 behind its end.
inline std::uint32_t TableColour(const ST_BitmapPicture& cPicture, std::uint32_t nIndex)
{
    const std::size_t nAt = 40 + 4 * std::size_t(nIndex);
    if (nAt + 4 > cPicture.nOffset)
    {
        return 0;
    }
    const unsigned char* p = cPicture.aBlock.data() + nAt;
    return p[0] | static_cast<std::uint32_t>(p[1]) << 8 | static_cast<std::uint32_t>(p[2]) << 16 |
           static_cast<std::uint32_t>(p[3]) << 24;
}

/// A channel's value of 0 to 255 from its value of nBits bits, in floating point.
inline unsigned int ScaledChannel(std::uint32_t nValue, int nBits)
{
    const double dLargest = static_cast<double>((1u << nBits) - 1);
    const double dFactor = static_cast<double>(static_cast<std::uint32_t>(16711680.0 / dLargest));
    return static_cast<unsigned int>((nValue * dFactor + 36863.0) / 65536.0);
}
