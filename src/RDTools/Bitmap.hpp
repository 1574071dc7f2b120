#pragma once

#include "RDTools/Exception.hpp"
#include "RDTools/SampleCast.hpp"

#include <boost/shared_ptr.hpp>

#include <cstdint>

class ClImage;
class ClStream;

#ifndef KS_BITMAPINFOHEADER_DEFINED
#define KS_BITMAPINFOHEADER_DEFINED
/// Header of a device-independent bitmap, 40 bytes, little-endian. Packed, because behind a 14-byte file header it
/// stands on an odd address.
#pragma pack(push, 1)
struct tagBITMAPINFOHEADER
{
    std::uint32_t biSize; ///< 40
    std::int32_t biWidth;
    std::int32_t biHeight;  ///< positive: the rows run bottom-up
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

/// ClExVelmarin -10: a bitmap without a header was asked for it.
[[noreturn]] void ThrowEmptyBitmap();

/// A device-independent bitmap in memory: header, colour table or bit-field masks, pixel rows. It is the form in which
/// images enter and leave the system, and it wraps a caller's packed block (these three one after another, a 14-byte
/// file header in front is skipped) without copying.
///
/// Accepts  Header size 40, one plane, 1, 4, 8, 16, 24 or 32 bits per pixel, compression 0 to 3. No limit on the size.
/// Rows     Each on a 4-byte boundary, RowBytes() apart; as in the block, bottom-up in the usual case.
/// Table    Entries of 4 bytes: blue, green, red, 0. It may stand on any address: read it through PaletteEntry().
/// Memory   The deleters of the two shared pointers tell who owns the block. Pixels in a block of the bitmap's own hold
///          the whole block, so an image attached to them outlives the bitmap. Of a caller's block nothing is freed,
///          and nothing may use it after the caller took it away.
/// Errors   Each operation but those of an empty bitmap: ClExVelmarin -10 without a header; ClExBadAlloc -102.
/// Thread   A bitmap belongs to one thread; only the reference counts are atomic.
class ClBitmap
{
public:
    /// Frees nothing: memory of the caller.
    struct void_deleter
    {
        void operator()(const void*) const noexcept {}
    };

    /// Of pixels in the header's block: keeps the header until the last reference to the pixels goes.
    struct BIH_deleter
    {
        void operator()(const void*) noexcept { m_pBIH.reset(); }
        boost::shared_ptr<tagBITMAPINFOHEADER> m_pBIH;
    };

    ClBitmap(); ///< an empty bitmap
    ClBitmap(long nWidth, long nHeight, long nBitCount, long nCompression);
    ClBitmap(long nWidth, long nHeight, long nBitCount, long nCompression, long nXRes, long nYRes);
    ClBitmap(ClImage& cImage, bool bCopy);
    ClBitmap(ClBitmap& cOther, bool bCopy);
    ClBitmap(unsigned char* pDIB, bool bAttach); ///< a packed block of unknown size; false copies it
    ClBitmap(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette, bool bAttach); ///< false copies
    ClBitmap(const ClBitmap&) = delete;
    virtual ~ClBitmap();

    // Clear, ClearFree, Free and Detach are one operation under four names: the bitmap becomes empty.
    void Clear();
    void ClearFree() { Clear(); }
    void Free() { Clear(); }
    void Detach() { Clear(); }

    /// A bitmap in a block of its own: resolutions 0, a grey ramp or masks as table, the pixels not initialised.
    /// Errors: those of MemToBitmapInfoHeader; -102 also for a negative size or a row beyond 32 bits.
    void Create(long nWidth, long nHeight, long nBitCount, long nCompression);
    void Create(ClBitmap& cModel); ///< size, depth and compression of cModel

    /// A block for header, table (2 to the power of the depth entries below 9 bits, three masks for compression 3) and,
    /// if bWithPixels, pixels; nothing in it is initialised. CheckPtr takes it over. Errors as of Create.
    static unsigned char* BitmapAlloc(int nWidth, int nHeight, int nBitCount, unsigned int nCompression,
                                      bool bWithPixels);
    /// Fills header and table of such a block: a grey ramp from 0 to 255 below 9 bits; for compression 3 the masks of
    /// red, green and blue, red in the low bits.
    static void FillBI(tagBITMAPINFOHEADER* pBI, long nWidth, long nHeight, long nBitCount, long nCompression);
    static void FillBIFromImage(tagBITMAPINFOHEADER* pBI, const ClImage& cImage);

    /// Wraps a packed block of nSize bytes, 0 meaning unknown: then all checks of the size pass. The pixels may be
    /// missing altogether, if the block ends exactly behind header or table: HoldsPixels tells.
    /// Errors, which leave the bitmap empty: null -10; too short for a file header -10; too short for header, table or
    /// pixels -21; those of MemToBitmapInfoHeader.
    void Attach(unsigned char* pDIB, unsigned long nSize);
    /// Wraps three parts. A null pPalette means the table behind the header. Errors: a null part -10; as above.
    void Attach(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette);
    /// Shares everything of cOther. Errors: its depth -12.
    void Attach(const ClBitmap& cOther);
    /// A header of its own over the image's pixels: 8, 24 or 32 bits for 1, 3 or 4 planes. No effect for an image
    /// without area. Errors: other planes or another sample type than eUInt8 -33, the bitmap is unchanged.
    void Attach(const ClImage& cImage);

    /// As Attach(pDIB, nSize) for a block of BitmapAlloc, which the bitmap owns from here on, also when this fails. The
    /// pixels are left to the caller, and so is storing the returned table address, null if there is no table.
    std::uint32_t* CheckPtr(unsigned char* pDIB, unsigned long nSize);
    /// Lets the pixels begin behind the table, in the block of the header and with a share in it.
    void ResetPixel();

    /// Header and table of its own; the pixels are copied, or shared with the image. Neither sample type nor planes are
    /// checked: the bitmap has 8 bits for each plane and takes the rows as bytes of its own row length.
    void CopyFrom(const ClImage& cImage, bool bCopy);
    void CopyFrom(const ClBitmap& cOther, bool bCopy); ///< without bCopy as Attach; no effect on itself
    void CopyFrom(const unsigned char* pDIB, bool bCopy);
    void CopyFrom(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette);
    ClBitmap& operator=(const ClBitmap& cOther);
    ClBitmap& operator=(const ClImage& cImage);
    ClBitmap& operator=(unsigned char nValue); ///< every byte of the pixels becomes nValue

    /// Writes the packed form; the caller provides 40 bytes, 4 for each table entry and the pixels' bytes.
    void CopyTo(unsigned char* pDest) const;
    /// The packed form in a new block, which belongs to the caller (array-delete); the bitmap becomes empty.
    unsigned char* DetachThis();
    void Swap(ClBitmap& cOther);

    /// The header at p. Errors, tested in this order: null -10, a file header -36, biSize -32, biPlanes -11,
    /// biCompression -31, biBitCount -12.
    static const tagBITMAPINFOHEADER* MemToBitmapInfoHeader(const unsigned char* p);
    /// Whether a block of nSize bytes (0, unknown: always) holds header, table and all pixels, with or without a file
    /// header, told without wrapping. The header's fields are not checked otherwise.
    static bool HoldsPixels(const unsigned char* pDIB, unsigned long nSize);

    static bool IsValidBitCount(long nBitCount);
    /// Bytes from one row to the next, in 32-bit arithmetic that wraps: the one row formula of bitmaps.
    static int RowBytes(int nBitCount, int nWidth)
    {
        return ((WrapAdd(WrapMultiply(nBitCount, nWidth), 7) >> 3) + 3) & ~3;
    }
    int Stride() const { return RowBytes(Header().biBitCount, Header().biWidth); }

    /// The header. Errors: -10 in an empty bitmap.
    tagBITMAPINFOHEADER& Header() const
    {
        if (m_pBIH.get() == nullptr)
        {
            ThrowEmptyBitmap();
        }
        return *m_pBIH;
    }
    bool IsEqualSize(const ClBitmap& cOther) const; ///< equal width and height
    /// The same object, or equal bytes in headers, tables and the rows without their padding. Without a header:
    /// unequal.
    bool operator==(const ClBitmap& cOther) const;
    bool operator!=(const ClBitmap& cOther) const { return !(*this == cOther); }
    unsigned char* Line(long nY) const; ///< row nY, counted in memory order; not checked
    /// Entries of the colour table, masks included. Errors: null -10.
    unsigned long PalSize(const tagBITMAPINFOHEADER* pBI) const;
    /// Entry nIndex of the table, below PalSize (not checked), as 0x00RRGGBB or as mask.
    std::uint32_t PaletteEntry(unsigned long nIndex) const;

    /// Little-endian access to 1 to 4 bytes; the value counts as unsigned.
    long LongFromMem(const unsigned char* p, int nBytes) const;
    void LongToMem(unsigned char* p, long nValue, long nBytes) const;
    /// nShift: position of the lowest set bit, 32 if there is none; nBits: length of the run of ones from there.
    void MaskData(long nMask, unsigned int& nShift, unsigned int& nBits) const;
    /// Mask of a channel, 0 red, 1 green, 2 blue, 3 alpha: of the table for compression 3 as far as it goes, else the
    /// usual one of the depth, red in the high bits. nUp: see ScaleUp; nDown: the factor for the way back, 16.16 bits.
    void GetMask(unsigned int nChannel, unsigned int& nShift, unsigned int& nMask, unsigned int& nUp,
                 unsigned int& nDown) const;
    /// nUp and nDown of a mask of nBits ones.
    static void MaskFactors(unsigned int nBits, unsigned int& nUp, unsigned int& nDown);
    /// A channel of a 16 or 32-bit pixel on a scale of 0 to 255.
    static unsigned int ScaleUp(unsigned int nPixel, unsigned int nMask, unsigned int nShift, unsigned int nUp)
    {
        return nShift > 31 ? 0 : (((nPixel & nMask) >> nShift) * nUp + 36863u) >> 16;
    }
    /// Whether all colours are grey: of the table up to 8 bits, else of the pixels. With bIdentity a table must
    /// moreover map each index to itself.
    bool IsGray(bool bIdentity) const;

    /// The colour of a pixel, nY counted in memory order: its table entry up to 8 bits, else 0x00RRGGBB, under the
    /// masks for 16 and 32 bits. An index behind the table is black, 0. Outside the bitmap, of another depth (2 bits
    /// are read, too) and of a compressed bitmap: 0xffffffff. Errors: -10.
    unsigned int GetPixel(long nX, long nY) const;
    /// Gives a pixel the index of exactly this entry, or leaves it as it is if the table has none; packs 0x00RRGGBB
    /// above 8 bits, for 16 and 32 bits in as few steps as the narrowest mask has, the other bits stay. No effect where
    /// GetPixel gives 0xffffffff. Errors: -10.
    void SetPixel(long nX, long nY, unsigned int nColour);

    // Conversion to and from images of eUInt8. How an index, a mask or a missing alpha channel counts: ClBitmapColours.
    // Errors of all: no header, or an area without pixels -10; compressed -31; a depth that is none of those -12; a
    // negative size, or a row beyond 32 bits -14; -102.

    /// A copy of the pixels: one plane if a table (up to 8 bits) is grey, the samples being the table's red bytes; four
    /// planes, blue, green, red, alpha for 32 bits; blue, green, red otherwise. The bitmap's resolution.
    void GetImage(ClImage& cOut) const;
    /// One channel, 0 red, 1 green, 2 blue, 3 alpha, as a one-plane image with the bitmap's resolution. Errors
    /// moreover: another channel -44.
    void GetChannel(int nChannel, ClImage& cOut) const;
    void GetRedChannel(ClImage& cOut) const { GetChannel(0, cOut); }
    void GetGreenChannel(ClImage& cOut) const { GetChannel(1, cOut); }
    void GetBlueChannel(ClImage& cOut) const { GetChannel(2, cOut); }
    void GetAlphaChannel(ClImage& cOut) const { GetChannel(3, cOut); }
    /// Writes an image of the bitmap's size into one channel, the others stay. Of a bitmap with a table each pixel gets
    /// the index of exactly its new colour, or stays if the table has none. No effect on a channel that the bitmap has
    /// not. Errors moreover: another channel -44; not one plane of eUInt8 -33; another size -14.
    void SetChannel(int nChannel, const ClImage& cIn);
    void SetRedChannel(const ClImage& cIn) { SetChannel(0, cIn); }
    void SetGreenChannel(const ClImage& cIn) { SetChannel(1, cIn); }
    void SetBlueChannel(const ClImage& cIn) { SetChannel(2, cIn); }
    void SetAlphaChannel(const ClImage& cIn) { SetChannel(3, cIn); }
    /// The three colours as by GetChannel, but with resolution 0.
    void SplitChannels(ClImage& cRed, ClImage& cGreen, ClImage& cBlue) const;
    /// Writes the three colours as by SetChannel, at once.
    void JoinChannels(const ClImage& cRed, const ClImage& cGreen, const ClImage& cBlue);

    /// Reads a BMP file, plain, RLE8 or with bit fields, from the stream's position on; a file may lack its file
    /// header. In memory it is always decoded, its height positive, its rows bottom-up. What lies between header and
    /// pixels fills the table and must be as long as the table: behind a longer one the rows are sought as far behind
    /// it as it is too long, behind a shorter one as far before. The stream stands behind the last byte used, its byte
    /// order and m_bCheckShort as before. Where the stream can tell its size, a picture that it cannot hold is refused
    /// before memory is asked for. Errors, which leave the bitmap empty and the stream little-endian with m_bCheckShort
    /// set: no BMP file -210; RLE4, RLE8 of other than 8 bits, an unknown compression -31; damaged RLE8 data, or an
    /// absolute run in it -38; a file that ends early ClExStreamUnexpectedEnd -201; those of MemToBitmapInfoHeader; a
    /// size, table included, that is negative or beyond 32 bits, and a table that is not there with more entries than
    /// there are colours -102.
    void Load(ClStream& cStream);
    void Load(const char* szName); ///< Errors moreover: those of ClFileStream::Open
    /// Writes a BMP file. On the way the header is mended: a biSizeImage of 0 becomes the size of the pixels; biClrUsed
    /// is limited to what a pixel up to 8 bits can reach, and 0 above; biClrImportant to the colours of the depth, 1
    /// for 32 bits. A table above 8 bits is not written, though the offset of the pixels counts it. Errors: an area
    /// without pixels, or a table that is missing -10; a negative size, or a row beyond 32 bits -14; compressed without
    /// biSizeImage -33: nothing is written then. A short count ClExStreamFailToWrite -202, with m_bCheckShort
    /// ClExStreamUnexpectedEnd -201.
    void Store(ClStream& cStream) const;
    void Store(const char* szName) const; ///< Errors moreover: those of ClFileStream::Open and Close

    boost::shared_ptr<tagBITMAPINFOHEADER> m_pBIH; ///< the header, or null in an empty bitmap; always holds a count
    std::uint32_t* m_pPalette = nullptr;           ///< colour table or masks, or null; may be misaligned
    boost::shared_ptr<unsigned char> m_pPixels;    ///< the first pixel row, or null; always holds a count
};
