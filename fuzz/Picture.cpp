#include "Picture.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr int nGrain = 4096; // steps of a precomputed noise

/// Noise that is cheap to draw: the same bytes over and over, from another place in each row.
const unsigned char* Grain()
{
    static const unsigned char* const pGrain = []
    {
        static unsigned char anGrain[nGrain];
        std::uint32_t nState = 1;
        for (unsigned char& nByte : anGrain)
        {
            nState = nState * 1664525u + 1013904223u;
            nByte = static_cast<unsigned char>(nState >> 24);
        }
        return anGrain;
    }();
    return pGrain;
}

/// A place on a side: a fraction of it, or a little outside.
int Place(int nSide, ClByteSource& cBytes)
{
    return (cBytes.Byte() * (nSide + 40)) / 255 - 20;
}

void Ellipse(const StCanvas& cCanvas, ClByteSource& cBytes)
{
    const int nX = Place(cCanvas.m_nWidth, cBytes), nY = Place(cCanvas.m_nHeight, cBytes);
    const int nA = cBytes.Between(1, 90), nB = cBytes.Between(1, 140);
    const int nLean = cBytes.Between(-8, 8); // tenths of a pixel per row
    const int nGrey = cBytes.Byte(), nRidge = cBytes.Between(0, 60), nPeriod = cBytes.Between(2, 12);
    unsigned char anTexture[2 * 13];
    for (int i = 0; i < 2 * nPeriod; ++i)
        anTexture[i] = static_cast<unsigned char>(std::min(nGrey + (i / nPeriod != 0 ? nRidge : 0), 255));
    for (int y = std::max(0, nY - nB); y < std::min(cCanvas.m_nHeight, nY + nB); ++y)
    {
        const double dPart = 1.0 * (y - nY) / nB;
        const int nHalf = static_cast<int>(nA * std::sqrt(1.0 - dPart * dPart));
        const int nMid = nX + (y - nY) * nLean / 10;
        unsigned char* const pRow = cCanvas.Row(y);
        for (int x = std::max(0, nMid - nHalf); x < std::min(cCanvas.m_nWidth, nMid + nHalf + 1); ++x)
            pRow[x] = anTexture[(x + y) % (2 * nPeriod)];
    }
}

void Line(const StCanvas& cCanvas, ClByteSource& cBytes)
{
    const bool bRow = cBytes.Byte() % 2 != 0;
    const int nAt = Place(bRow ? cCanvas.m_nHeight : cCanvas.m_nWidth, cBytes);
    const int nThick = cBytes.Between(1, 6), nGrey = cBytes.Byte();
    const int nFirst = std::max(0, nAt - nThick + 1);
    const int nEnd = std::min(bRow ? cCanvas.m_nHeight : cCanvas.m_nWidth, nAt + nThick);
    if (nFirst >= nEnd) return;
    if (bRow)
        for (int y = nFirst; y < nEnd; ++y)
            std::memset(cCanvas.Row(y), nGrey, static_cast<std::size_t>(cCanvas.m_nWidth));
    else
        for (int y = 0; y < cCanvas.m_nHeight; ++y)
            std::memset(cCanvas.Row(y) + nFirst, nGrey, static_cast<std::size_t>(nEnd - nFirst));
}

void Noise(const StCanvas& cCanvas, ClByteSource& cBytes)
{
    unsigned nAt = static_cast<unsigned>(cBytes.Bits(2));
    const int nDepth = cBytes.Between(1, 60);
    unsigned char anDarker[256];
    for (int i = 0; i < 256; ++i) anDarker[i] = static_cast<unsigned char>(i % nDepth);
    for (int y = 0; y < cCanvas.m_nHeight; ++y, nAt = nAt * 31 + 7)
    {
        unsigned char* const pRow = cCanvas.Row(y);
        for (int x = 0; x < cCanvas.m_nWidth; ++x)
            pRow[x] = static_cast<unsigned char>(
                std::max(pRow[x] - anDarker[Grain()[(nAt + static_cast<unsigned>(x)) % nGrain]], 0));
    }
}
} // namespace

void DrawPicture(const StCanvas& cCanvas, ClByteSource& cBytes)
{
    const int nGround = 255 - cBytes.Byte() % 64;
    for (int y = 0; y < cCanvas.m_nHeight; ++y)
        std::memset(cCanvas.Row(y), nGround, static_cast<std::size_t>(cCanvas.m_nWidth));
    for (int i = 0; i < 24 && !cBytes.IsEmpty(); ++i)
    {
        switch (cBytes.Byte() % 6)
        {
        case 0: Line(cCanvas, cBytes); break;
        case 1: Noise(cCanvas, cBytes); break;
        default: Ellipse(cCanvas, cBytes); break;
        }
    }
}
