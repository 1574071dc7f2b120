#pragma once

#include <boost/shared_ptr.hpp>

#include <cstdint>

#ifndef KS_BITMAPINFOHEADER_DEFINED
#define KS_BITMAPINFOHEADER_DEFINED
/// Header of a device-independent bitmap, 40 bytes, little-endian. Packed, because behind a 14-byte file header it
/// stands on an odd address.
#pragma pack(push, 1)
struct tagBITMAPINFOHEADER
{
    std::uint32_t biSize; ///< 40
    std::int32_t biWidth;
    std::int32_t biHeight; ///< positive: the rows run bottom-up
    std::uint16_t biPlanes; ///< 1
    std::uint16_t biBitCount;
    std::uint32_t biCompression; ///< 0 plain, 1 RLE8, 2 RLE4, 3 bit fields
    std::uint32_t biSizeImage;
    std::int32_t biXPelsPerMeter;
    std::int32_t biYPelsPerMeter;
    std::uint32_t biClrUsed; ///< colour-table entries, 0 meaning all
    std::uint32_t biClrImportant;
};
#pragma pack(pop)
#endif

/// A device-independent bitmap in memory.
class ClBitmap
{
public:
    virtual ~ClBitmap() = default;

    boost::shared_ptr<tagBITMAPINFOHEADER> m_pBIH; ///< the header, or null in an empty bitmap
    std::uint32_t* m_pPalette = nullptr;           ///< colour table or masks, or null
    boost::shared_ptr<unsigned char> m_pPixels;    ///< the first pixel row, or null
};
