// Pictures that look like slaps, drawn as the bytes say at the working resolution, through the whole road: twice with
// the same result, and with results that lie inside the picture.

#include "ByteSource.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDTools/Exception.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr int nPels = 3937;

void Ellipse(ClImage& cImage, ClByteSource& cBytes)
{
    const int nX = cBytes.Between(-20, 420), nY = cBytes.Between(-20, 420);
    const int nA = cBytes.Between(1, 90), nB = cBytes.Between(1, 140);
    const int nLean = cBytes.Between(-8, 8); // tenths of a pixel per row
    const int nGrey = cBytes.Byte(), nRidge = cBytes.Between(0, 60), nPeriod = cBytes.Between(2, 12);
    for (int y = std::max(0, nY - nB); y < std::min(cImage.m_nHeight, nY + nB); ++y)
    {
        unsigned char* const pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            const long nDx = x - nX - (y - nY) * nLean / 10, nDy = y - nY;
            if (nDx * nDx * nB * nB + nDy * nDy * nA * nA > 1L * nA * nA * nB * nB) continue;
            const int nValue = nGrey + ((x + y) / nPeriod % 2 != 0 ? nRidge : 0);
            pRow[x] = static_cast<unsigned char>(std::min(nValue, 255));
        }
    }
}

void Line(ClImage& cImage, ClByteSource& cBytes)
{
    const bool bRow = cBytes.Byte() % 2 != 0;
    const int nAt = cBytes.Between(0, 400), nThick = cBytes.Between(1, 6), nGrey = cBytes.Byte();
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        unsigned char* const pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; x < cImage.m_nWidth; ++x)
            if (std::abs((bRow ? y : x) - nAt) < nThick) pRow[x] = static_cast<unsigned char>(nGrey);
    }
}

void Noise(ClImage& cImage, ClByteSource& cBytes)
{
    std::uint32_t nState = static_cast<std::uint32_t>(cBytes.Bits(4)) | 1;
    const int nDepth = cBytes.Between(1, 60);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        unsigned char* const pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            nState = nState * 1664525u + 1013904223u;
            const int nValue = pRow[x] - static_cast<int>(nState >> 24) % nDepth;
            pRow[x] = static_cast<unsigned char>(std::max(nValue, 0));
        }
    }
}

void Draw(ClImage& cImage, ClByteSource& cBytes)
{
    const int nWidth = cBytes.Between(160, 420), nHeight = cBytes.Between(160, 420);
    const int nRes = cBytes.Byte() % 4 == 0 ? cBytes.Between(3900, 9000) : nPels;
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, nRes, nRes);
    const int nGround = 255 - cBytes.Byte() % 64;
    for (int y = 0; y < nHeight; ++y)
        std::memset(Row<unsigned char>(cImage, y), nGround, static_cast<std::size_t>(nWidth));
    for (int i = 0; i < 24 && !cBytes.IsEmpty(); ++i)
    {
        switch (cBytes.Byte() % 6)
        {
        case 0: Line(cImage, cBytes); break;
        case 1: Noise(cImage, cBytes); break;
        default: Ellipse(cImage, cBytes); break;
        }
    }
}

/// Code or number of fingers, and everything that tells them apart.
std::vector<long> Results(ClImage& cImage)
{
    ClIpFourPrintSegmentation cProcessor;
    cProcessor.m_pInImage = &cImage;
    std::vector<long> aResults;
    try
    {
        aResults.push_back(cProcessor.Apply());
    }
    catch (const ClException& e)
    {
        return {e.Number()};
    }
    if (aResults.front() != FPC_SUCCESS) return aResults;
    Promise(cProcessor.m_nFingers >= 0 && cProcessor.m_nFingers <= 4, "at most four fingers");
    aResults.push_back(cProcessor.m_nFingers);
    aResults.push_back(cProcessor.m_nHand);
    for (int i = 0; i < cProcessor.m_nFingers; ++i)
    {
        const tagRECT& cRect = cProcessor.m_aRects[static_cast<unsigned long>(i)];
        const ClImage& cFinger = cProcessor.m_aImages[static_cast<unsigned long>(i)];
        Promise(cFinger.m_nWidth <= 500 && cFinger.m_nHeight <= 500, "images of at most 500 by 500");
        aResults.insert(aResults.end(), {cRect.left, cRect.right, cRect.bottom, cRect.top});
        long nSum = 0;
        for (int y = 0; y < cFinger.m_nHeight; ++y)
            for (int x = 0; x < cFinger.m_nWidth; ++x) nSum = (nSum * 31 + Row<unsigned char>(cFinger, y)[x]) % 1000003;
        aResults.push_back(nSum);
    }
    return aResults;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    ClImage cImage;
    Draw(cImage, cBytes);
    ClImage cBefore;
    cBefore = cImage;
    const auto aFirst = Results(cImage);
    Promise(std::memcmp(cBefore.Data(), cImage.Data(),
                        static_cast<std::size_t>(cImage.m_nHeight) * static_cast<std::size_t>(cImage.Stride())) == 0,
            "the input is never written to");
    Promise(aFirst == Results(cImage), "the same input gives the same result");
    return 0;
}
