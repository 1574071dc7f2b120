// usage: bmp-pixels load FILE.bmp
//        bmp-pixels store DEPTH COMPRESSION WIDTH HEIGHT FILE.bmp
// The bitmap class at the command line, for comparisons with other programs. load reads a file; store makes a bitmap of
// random pixels, with a table of random colours up to 8 bits, and writes it. Both print the colours as a portable
// pixmap of 8 bits, the top row first. Ends with 1 if that fails, 2 for wrong usage.

#include "RDTools/Bitmap.hpp"
#include "RDTools/FpImage.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace
{
void Print(const ClBitmap& cBitmap)
{
    ClImage aChannels[3];
    cBitmap.SplitChannels(aChannels[0], aChannels[1], aChannels[2]);
    const int nWidth = aChannels[0].m_nWidth;
    std::printf("P6\n%d %d\n255\n", nWidth, aChannels[0].m_nHeight);
    std::vector<unsigned char> aRow(3 * static_cast<std::size_t>(nWidth));
    for (int y = aChannels[0].m_nHeight - 1; y >= 0; --y)
    {
        unsigned char* p = aRow.data();
        for (int x = 0; x < nWidth; ++x)
        {
            for (const ClImage& cChannel : aChannels)
            {
                *p++ = Row<unsigned char>(cChannel, y)[x];
            }
        }
        std::fwrite(aRow.data(), 1, aRow.size(), stdout);
    }
}

void MakeRandom(ClBitmap& cBitmap)
{
    std::mt19937 cRandom(1); // its numbers are the same everywhere
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    for (std::uint32_t i = 0; cHeader.biBitCount <= 8 && i < cBitmap.PalSize(&cHeader); ++i)
    {
        const std::uint32_t nColour = cRandom() & 0xffffff;
        std::memcpy(reinterpret_cast<unsigned char*>(cBitmap.m_pPalette) + 4 * std::size_t(i), &nColour, 4);
    }
    for (std::uint32_t i = 0; i < cHeader.biSizeImage; ++i)
    {
        cBitmap.m_pPixels.get()[i] = static_cast<unsigned char>(cRandom());
    }
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    const bool bLoad = nArguments == 3 && std::strcmp(aszArguments[1], "load") == 0;
    const bool bStore = nArguments == 7 && std::strcmp(aszArguments[1], "store") == 0;
    if (!bLoad && !bStore)
    {
        std::fputs("usage: bmp-pixels load FILE.bmp\n"
                   "       bmp-pixels store DEPTH COMPRESSION WIDTH HEIGHT FILE.bmp\n",
                   stderr);
        return 2;
    }
    try
    {
        ClBitmap cBitmap;
        if (bLoad)
        {
            cBitmap.Load(aszArguments[2]);
        }
        else
        {
            const auto number = [&](int i) { return std::strtol(aszArguments[i], nullptr, 10); };
            cBitmap.Create(number(4), number(5), number(2), number(3));
            MakeRandom(cBitmap);
            cBitmap.Store(aszArguments[6]);
        }
        Print(cBitmap);
    }
    catch (const ClException& cRaised)
    {
        std::fprintf(stderr, "%ld: %s\n", cRaised.Number(), cRaised.What());
        return 1;
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
