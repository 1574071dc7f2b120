#include "RDTools/BitmapColours.hpp"

namespace
{
/// The part of a mask that counts.
unsigned int UsedMask(const ClBitmap& cBitmap, unsigned int nMask)
{
    constexpr unsigned int nMostBits = 16;
    unsigned int nShift, nBits;
    cBitmap.MaskData(static_cast<long>(nMask), nShift, nBits);
    const unsigned int nUsed = std::min(nBits, nMostBits);
    return nBits == 0 ? 0 : ((1u << nUsed) - 1) << (nShift + nBits - nUsed);
}
} // namespace

long ClBitmapColours::Fault(const ClBitmap& cBitmap)
{
    if (cBitmap.m_pBIH.get() == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    const tagBITMAPINFOHEADER& cHeader = *cBitmap.m_pBIH;
    if (cHeader.biCompression != 0 && cHeader.biCompression != 3)
    {
        return FPC_ERROR_BITMAP_COMPRESSION;
    }
    if (cHeader.biBitCount != 2 && !ClBitmap::IsValidBitCount(cHeader.biBitCount))
    {
        return FPC_ERROR_BITMAP_BITCOUNT;
    }
    if (!ClBitmapLayout::IsHonest(cHeader))
    {
        return FPC_ERROR_BITMAP_DIMENSION;
    }
    const bool bArea = cHeader.biWidth != 0 && cHeader.biHeight != 0;
    return bArea && cBitmap.m_pPixels.get() == nullptr ? FPC_ERROR_BITMAP_PTR : FPC_SUCCESS;
}

ClBitmapColours::ClBitmapColours(const ClBitmap& cBitmap) : m_cBitmap(cBitmap), m_nBitCount(cBitmap.Header().biBitCount)
{
    if (HasTable())
    {
        const unsigned long nReach = 1ul << m_nBitCount;
        m_nEntries =
            cBitmap.m_pPalette == nullptr ? 0 : std::min(nReach, ClBitmapLayout::TableEntries(cBitmap.Header()));
        return;
    }
    if (m_nBitCount == 24)
    {
        for (unsigned int i = eRed; i <= eBlue; ++i)
        {
            SetChannel(i, 255u << ByteShift(i));
        }
        return;
    }
    unsigned int aMasks[eChannels];
    for (unsigned int i = eRed; i < eChannels; ++i)
    {
        unsigned int nShift, nUp, nDown;
        cBitmap.GetMask(i, nShift, aMasks[i], nUp, nDown);
        SetChannel(i, UsedMask(cBitmap, aMasks[i]));
    }
    // The usual alpha mask of the depth is not this bitmap's where colours use its bits, as in the 5, 6, 5 bits of
    // red, green and blue.
    if ((aMasks[eAlpha] & (aMasks[eRed] | aMasks[eGreen] | aMasks[eBlue])) != 0)
    {
        m_aChannels[eAlpha] = ST_Channel();
    }
}

void ClBitmapColours::SetChannel(unsigned int nChannel, unsigned int nMask)
{
    ST_Channel& c = m_aChannels[nChannel];
    c.nMask = nMask;
    m_cBitmap.MaskData(static_cast<long>(nMask), c.nShift, c.nBits);
    ClBitmap::MaskFactors(c.nBits, c.nUp, c.nDown);
}

long ClBitmapColours::IndexOf(std::uint32_t nEntry) const
{
    for (unsigned long i = 0; i < m_nEntries; ++i)
    {
        if (m_cBitmap.PaletteEntry(i) == nEntry)
        {
            return static_cast<long>(i);
        }
    }
    return -1;
}

unsigned int ClBitmapColours::WithColour(unsigned int nPixel, unsigned int nColour) const
{
    unsigned int nNarrowest = 8; // a colour has no more
    for (unsigned int i = eRed; i <= eBlue; ++i)
    {
        if (m_aChannels[i].nBits != 0)
        {
            nNarrowest = std::min(nNarrowest, m_aChannels[i].nBits);
        }
    }
    unsigned int nUp, nDown;
    ClBitmap::MaskFactors(nNarrowest, nUp, nDown);
    for (unsigned int i = eRed; i <= eBlue; ++i)
    {
        const unsigned int nStep = ScaleDown(nColour >> ByteShift(i) & 255, nDown);
        nPixel = WithChannel(nPixel, i, ClBitmap::ScaleUp(nStep, ~0u, 0, nUp));
    }
    return nPixel;
}
