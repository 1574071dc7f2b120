#include "RDTools/Bitmap.hpp"

#include "RDTools/BitmapColours.hpp"
#include "RDTools/FpImage.hpp"

#include <cstring>

// The operations of ClBitmap that convert to and from images: whole pictures and single channels.

namespace
{
constexpr char szModule[] = "RDTools/Bitmap";

using EChannel = ClBitmapColours::EChannel;

[[noreturn]] void Raise(long nNumber, long nLine)
{
    throw ClExVelmarin(nNumber, szModule, nLine);
}

ClBitmapColours ColoursOf(const ClBitmap& cBitmap)
{
    if (const long nFault = ClBitmapColours::Fault(cBitmap))
    {
        Raise(nFault, __LINE__);
    }
    return ClBitmapColours(cBitmap);
}

void CheckChannel(int nChannel)
{
    if (nChannel < 0 || nChannel >= static_cast<int>(ClBitmapColours::eChannels))
    {
        Raise(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
}

/// Makes cOut an image of the bitmap's size; false if there is nothing to write into it.
bool MakeImage(const ClBitmap& cBitmap, int nPlanes, ClImage& cOut)
{
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    cOut.NewWithType(ClImage::eUInt8, cHeader.biWidth, cHeader.biHeight, nPlanes, cHeader.biXPelsPerMeter,
                     cHeader.biYPelsPerMeter);
    return cOut.Data() != nullptr;
}

/// Writes channels of all pixels side by side, nPlanes of them, aChannels telling which.
void Gather(const ClBitmap& cBitmap, const ClBitmapColours& cColours, const unsigned int* aChannels, int nPlanes,
            ClImage& cOut)
{
    unsigned char aOfIndex[4][256];
    if (cColours.HasTable())
    {
        for (int i = 0; i < nPlanes; ++i)
        {
            for (unsigned int nIndex = 0; nIndex < 256; ++nIndex)
            {
                aOfIndex[i][nIndex] = cColours.Channel(nIndex, aChannels[i]);
            }
        }
    }
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        const unsigned char* pIn = cBitmap.Line(y);
        unsigned char* pOut = Row<unsigned char>(cOut, y);
        for (int x = 0; x < cOut.m_nWidth; ++x)
        {
            const unsigned int nPixel = cColours.Read(pIn, x);
            for (int i = 0; i < nPlanes; ++i)
            {
                *pOut++ = cColours.HasTable() ? aOfIndex[i][nPixel] : cColours.Channel(nPixel, aChannels[i]);
            }
        }
    }
}

void CopyRows(const ClBitmap& cBitmap, ClImage& cOut)
{
    const auto nBytes = static_cast<std::size_t>(cOut.SamplesPerRow());
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        std::memmove(Row<unsigned char>(cOut, y), cBitmap.Line(y), nBytes);
    }
}

void GatherChannel(const ClBitmap& cBitmap, unsigned int nChannel, ClImage& cOut)
{
    const ClBitmapColours cColours = ColoursOf(cBitmap);
    if (MakeImage(cBitmap, 1, cOut))
    {
        Gather(cBitmap, cColours, &nChannel, 1, cOut);
    }
}

void CheckSource(const ClBitmap& cBitmap, const ClImage& cIn)
{
    if (cIn.m_eDataType != ClImage::eUInt8 || cIn.m_nPlanes != 1)
    {
        Raise(FPC_ERROR_FORMAT_NOTSUPPORTED, __LINE__);
    }
    if (cIn.m_nWidth != cBitmap.Header().biWidth || cIn.m_nHeight != cBitmap.Header().biHeight)
    {
        Raise(FPC_ERROR_BITMAP_DIMENSION, __LINE__);
    }
    if (cIn.Data() == nullptr && cIn.m_nWidth != 0 && cIn.m_nHeight != 0)
    {
        Raise(FPC_ERROR_BITMAP_PTR, __LINE__);
    }
}

/// The pixel with new values, one for each source, in some of its channels. For an index: that of exactly the new
/// colour, or itself if the table has none.
class ClScatter
{
public:
    ClScatter(const ClBitmapColours& cColours, const ClImage* const* aSources) : m_cColours(cColours)
    {
        for (unsigned int i = 0; i < ClBitmapColours::eChannels; ++i)
        {
            m_aSources[i] = aSources[i];
        }
    }

    void ToRow(unsigned char* pRow, int nY, int nWidth)
    {
        const unsigned char* aRows[ClBitmapColours::eChannels];
        for (unsigned int i = 0; i < ClBitmapColours::eChannels; ++i)
        {
            aRows[i] = m_aSources[i] == nullptr ? nullptr : Row<unsigned char>(*m_aSources[i], nY);
        }
        for (int x = 0; x < nWidth; ++x)
        {
            const unsigned int nPixel = m_cColours.Read(pRow, x);
            m_cColours.Write(pRow, x, m_cColours.HasTable() ? NewIndex(nPixel, aRows, x) : NewPixel(nPixel, aRows, x));
        }
    }

private:
    unsigned int NewPixel(unsigned int nPixel, const unsigned char* const* aRows, int nX) const
    {
        for (unsigned int i = 0; i < ClBitmapColours::eChannels; ++i)
        {
            if (aRows[i] != nullptr)
            {
                nPixel = m_cColours.WithChannel(nPixel, i, aRows[i][nX]);
            }
        }
        return nPixel;
    }

    unsigned int NewIndex(unsigned int nIndex, const unsigned char* const* aRows, int nX)
    {
        std::uint32_t nEntry = m_cColours.Entry(nIndex);
        for (unsigned int i = ClBitmapColours::eRed; i <= ClBitmapColours::eBlue; ++i)
        {
            if (aRows[i] != nullptr)
            {
                const unsigned int nShift = ClBitmapColours::ByteShift(i);
                nEntry = (nEntry & ~(255u << nShift)) | static_cast<std::uint32_t>(aRows[i][nX]) << nShift;
            }
        }
        if (!m_bSought || nEntry != m_nSought)
        {
            m_nFound = m_cColours.IndexOf(nEntry);
            m_nSought = nEntry;
            m_bSought = true;
        }
        return m_nFound < 0 ? nIndex : static_cast<unsigned int>(m_nFound);
    }

    const ClBitmapColours& m_cColours;
    const ClImage* m_aSources[ClBitmapColours::eChannels];
    bool m_bSought = false; ///< neighbours often have the same colour: the last search is kept
    std::uint32_t m_nSought = 0;
    long m_nFound = -1;
};

void Scatter(const ClBitmap& cBitmap, const ClImage* const* aSources)
{
    const ClBitmapColours cColours = ColoursOf(cBitmap);
    for (unsigned int i = 0; i < ClBitmapColours::eChannels; ++i)
    {
        if (aSources[i] != nullptr)
        {
            CheckSource(cBitmap, *aSources[i]);
        }
    }
    ClScatter cScatter(cColours, aSources);
    const int nWidth = cBitmap.Header().biWidth;
    const int nHeight = nWidth == 0 ? 0 : cBitmap.Header().biHeight;
    for (int y = 0; y < nHeight; ++y)
    {
        cScatter.ToRow(cBitmap.Line(y), y, nWidth);
    }
}
} // namespace

void ClBitmap::GetImage(ClImage& cOut) const
{
    static constexpr unsigned int aChannels[] = {EChannel::eBlue, EChannel::eGreen, EChannel::eRed, EChannel::eAlpha};
    const ClBitmapColours cColours = ColoursOf(*this);
    const tagBITMAPINFOHEADER& cHeader = Header();
    const bool bGrey = cHeader.biBitCount <= 8 && IsGray(false);
    const int nPlanes = bGrey ? 1 : cHeader.biBitCount == 32 ? 4 : 3;
    if (!MakeImage(*this, nPlanes, cOut))
    {
        return;
    }
    if (cHeader.biBitCount == 24 || (cHeader.biBitCount == 32 && cHeader.biCompression == 0))
    {
        CopyRows(*this, cOut);
    }
    else
    {
        Gather(*this, cColours, bGrey ? aChannels + 2 : aChannels, nPlanes, cOut);
    }
}

void ClBitmap::GetChannel(int nChannel, ClImage& cOut) const
{
    CheckChannel(nChannel);
    GatherChannel(*this, static_cast<unsigned int>(nChannel), cOut);
}

void ClBitmap::SetChannel(int nChannel, const ClImage& cIn)
{
    CheckChannel(nChannel);
    const ClImage* aSources[ClBitmapColours::eChannels] = {};
    aSources[nChannel] = &cIn;
    Scatter(*this, aSources);
}

void ClBitmap::SplitChannels(ClImage& cRed, ClImage& cGreen, ClImage& cBlue) const
{
    ClImage* aOut[] = {&cRed, &cGreen, &cBlue};
    for (unsigned int i = 0; i < 3; ++i)
    {
        GatherChannel(*this, i, *aOut[i]);
        aOut[i]->m_nXRes = 0;
        aOut[i]->m_nYRes = 0;
    }
}

void ClBitmap::JoinChannels(const ClImage& cRed, const ClImage& cGreen, const ClImage& cBlue)
{
    const ClImage* aSources[ClBitmapColours::eChannels] = {&cRed, &cGreen, &cBlue, nullptr};
    Scatter(*this, aSources);
}
