#pragma once

// BMP files made byte by byte, independent of the code that reads and writes them.

#include "RDTools/BitmapPictures.hpp"
#include "TestTools.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

// Places in a file with a file header.
constexpr std::size_t nAtOffset = 10, nAtSize = 14, nAtWidth = 18, nAtHeight = 22, nAtPlanes = 26, nAtBitCount = 28,
                      nAtCompression = 30, nAtSizeImage = 34, nAtClrUsed = 46, nAtClrImportant = 50, nAtTable = 54;

/// The file of a packed bitmap whose pixels begin at nPixels of the block.
inline ClGuardedVector BmpFile(const ClGuardedVector& aPacked, std::size_t nPixels)
{
    ClGuardedVector aFile = WithFileHeader(aPacked);
    PutLong(aFile.data(), nAtOffset, static_cast<std::uint32_t>(14 + nPixels));
    return aFile;
}

inline ClGuardedVector BmpFile(const ST_BitmapPicture& cPicture)
{
    return BmpFile(cPicture.aBlock, cPicture.nOffset);
}

/// A file with other rows, or with a code in their place.
inline ClGuardedVector BmpFileOfCode(int nWidth, int nHeight, const ClGuardedVector& aCode, unsigned int nClrUsed = 4)
{
    ClGuardedVector aFile = BmpFile(PackedBitmap(nWidth, 0, 8, 1, nClrUsed), 40 + 4 * nClrUsed);
    PutLong(aFile.data(), nAtHeight, static_cast<std::uint32_t>(nHeight));
    PutLong(aFile.data(), nAtSizeImage, static_cast<std::uint32_t>(aCode.size()));
    aFile.insert(aFile.end(), aCode.begin(), aCode.end());
    return aFile;
}

/// The same file without its file header.
inline ClGuardedVector WithoutFileHeader(const ClGuardedVector& aFile)
{
    return {aFile.begin() + 14, aFile.end()};
}

/// Run-length code of an 8-bit picture: runs of equal pixels, each line with its mark, the last one with the end of the
/// bitmap.
inline ClGuardedVector RunLengthCode(const ST_BitmapPicture& cPicture)
{
    ClGuardedVector aCode;
    for (int y = 0; y < cPicture.nHeight; ++y)
    {
        for (int x = 0; x < cPicture.nWidth;)
        {
            int nRun = 1;
            while (nRun < 255 && x + nRun < cPicture.nWidth && cPicture.At(x + nRun, y) == cPicture.At(x, y))
            {
                ++nRun;
            }
            aCode.push_back(static_cast<unsigned char>(nRun));
            aCode.push_back(static_cast<unsigned char>(cPicture.At(x, y)));
            x += nRun;
        }
        aCode.push_back(0);
        aCode.push_back(y + 1 < cPicture.nHeight ? 0 : 1);
    }
    return aCode;
}
