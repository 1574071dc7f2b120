#include "RDTools/Bitmap.hpp"

#include "RDTools/BitmapLayout.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <boost/checked_delete.hpp>

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{
constexpr char szModule[] = "RDTools/Bitmap";
constexpr char szBadBitCount[] = "The Bitmap format does only support 1, 4, 8, 16, 24 and 32 bit counts!";

[[noreturn]] void Raise(long nNumber, const char* szComment, long nLine)
{
    throw ClException(szComment, nNumber, true, szModule, nLine);
}

/// memmove, because a bitmap may be copied onto itself.
void CopyBytes(void* pDest, const void* pSource, std::size_t nBytes)
{
    if (pDest != nullptr && pSource != nullptr && nBytes != 0)
    {
        std::memmove(pDest, pSource, nBytes);
    }
}

bool SameBytes(const void* pFirst, const void* pSecond, std::size_t nBytes)
{
    if (nBytes == 0 || pFirst == pSecond)
    {
        return true;
    }
    return pFirst != nullptr && pSecond != nullptr && std::memcmp(pFirst, pSecond, nBytes) == 0;
}

/// Runs fn, which fills the bitmap; if it fails the bitmap becomes empty.
template <class Fn> auto FillOrClear(ClBitmap& cBitmap, Fn&& fn)
{
    try
    {
        return fn();
    }
    catch (...)
    {
        cBitmap.ClearFree();
        throw;
    }
}

void FillHeader(tagBITMAPINFOHEADER& cHeader, long nWidth, long nHeight, long nBitCount, long nCompression)
{
    cHeader.biSize = ClBitmapLayout::nHeaderSize;
    cHeader.biWidth = static_cast<std::int32_t>(nWidth);
    cHeader.biHeight = static_cast<std::int32_t>(nHeight);
    cHeader.biPlanes = 1;
    cHeader.biBitCount = static_cast<std::uint16_t>(nBitCount);
    cHeader.biCompression = static_cast<std::uint32_t>(nCompression);
    const int nRow = ClBitmap::RowBytes(cHeader.biBitCount, cHeader.biWidth);
    cHeader.biSizeImage = static_cast<std::uint32_t>(WrapMultiply(nRow, cHeader.biHeight));
    cHeader.biXPelsPerMeter = 0;
    cHeader.biYPelsPerMeter = 0;
    cHeader.biClrUsed = 0;
    cHeader.biClrImportant = 0;
}
} // namespace

void ThrowEmptyBitmap()
{
    throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, "RDTools/Bitmap.hpp", __LINE__);
}

ClBitmap::ClBitmap()
{
    Clear();
}

ClBitmap::ClBitmap(long nWidth, long nHeight, long nBitCount, long nCompression)
{
    Create(nWidth, nHeight, nBitCount, nCompression);
}

ClBitmap::ClBitmap(long nWidth, long nHeight, long nBitCount, long nCompression, long nXRes, long nYRes)
{
    Create(nWidth, nHeight, nBitCount, nCompression);
    m_pBIH->biXPelsPerMeter = static_cast<std::int32_t>(nXRes);
    m_pBIH->biYPelsPerMeter = static_cast<std::int32_t>(nYRes);
}

ClBitmap::ClBitmap(ClImage& cImage, bool bCopy)
{
    CopyFrom(cImage, bCopy);
}

ClBitmap::ClBitmap(ClBitmap& cOther, bool bCopy)
{
    CopyFrom(cOther, bCopy);
}

ClBitmap::ClBitmap(unsigned char* pDIB, bool bAttach)
{
    if (bAttach)
    {
        Attach(pDIB, 0);
    }
    else
    {
        CopyFrom(pDIB, true);
    }
}

ClBitmap::ClBitmap(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette, bool bAttach)
{
    if (bAttach)
    {
        Attach(pBIH, pPixels, pPalette);
    }
    else
    {
        CopyFrom(pBIH, pPixels, pPalette);
    }
}

// The references to the blocks drop with the members. Nothing is made anew, so a destructor never needs memory.
ClBitmap::~ClBitmap() = default;

void ClBitmap::Clear()
{
    m_pBIH.reset(); // first, so that a failure below leaves an empty bitmap
    m_pPalette = nullptr;
    m_pPixels.reset();
    ConvertBadAlloc(
        [this]
        {
            m_pBIH.reset(static_cast<tagBITMAPINFOHEADER*>(nullptr),
                         boost::checked_array_deleter<tagBITMAPINFOHEADER>());
            m_pPixels.reset(static_cast<unsigned char*>(nullptr), boost::checked_array_deleter<unsigned char>());
        });
}

void ClBitmap::Create(long nWidth, long nHeight, long nBitCount, long nCompression)
{
    ClearFree();
    tagBITMAPINFOHEADER cHeader;
    FillHeader(cHeader, nWidth, nHeight, nBitCount, nCompression);
    MemToBitmapInfoHeader(reinterpret_cast<const unsigned char*>(&cHeader)); // before a size is computed from it
    unsigned char* pBlock =
        BitmapAlloc(cHeader.biWidth, cHeader.biHeight, cHeader.biBitCount, cHeader.biCompression, true);
    FillBI(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock), nWidth, nHeight, nBitCount, nCompression);
    m_pPalette = CheckPtr(pBlock, 0);
    FillOrClear(*this, [this] { ResetPixel(); });
}

void ClBitmap::Create(ClBitmap& cModel)
{
    const tagBITMAPINFOHEADER& cHeader = cModel.Header();
    Create(cHeader.biWidth, cHeader.biHeight, cHeader.biBitCount, cHeader.biCompression);
}

unsigned char* ClBitmap::BitmapAlloc(int nWidth, int nHeight, int nBitCount, unsigned int nCompression,
                                     bool bWithPixels)
{
    unsigned long nEntries = 0;
    if (nBitCount < 9)
    {
        nEntries = nBitCount < 0 ? 0 : 1ul << nBitCount;
    }
    else if (nCompression == 3)
    {
        nEntries = 3;
    }
    return ClBitmapLayout::NewBlock(nWidth, nHeight, nBitCount, ClBitmapLayout::nEntrySize * nEntries, bWithPixels);
}

void ClBitmap::FillBI(tagBITMAPINFOHEADER* pBI, long nWidth, long nHeight, long nBitCount, long nCompression)
{
    FillHeader(*pBI, nWidth, nHeight, nBitCount, nCompression);
    unsigned char* pTable = reinterpret_cast<unsigned char*>(pBI) + ClBitmapLayout::nHeaderSize;
    const unsigned long nEntries = ClBitmapLayout::TableEntries(*pBI);
    if (pBI->biBitCount >= 1 && pBI->biBitCount < 9)
    {
        const unsigned int nStep = 255 / (static_cast<unsigned int>(nEntries) - 1);
        for (unsigned int i = 0; i < nEntries; ++i)
        {
            const auto nGrey = static_cast<unsigned char>(i * nStep);
            const unsigned char aEntry[ClBitmapLayout::nEntrySize] = {nGrey, nGrey, nGrey, 0};
            std::memcpy(pTable + ClBitmapLayout::nEntrySize * i, aEntry, ClBitmapLayout::nEntrySize);
        }
    }
    if (nCompression == 3)
    {
        // GetMask takes red from the high bits where there are no masks: the two have never agreed.
        static constexpr std::uint32_t aMasks16[] = {31, 992, 31744};
        static constexpr std::uint32_t aMasks32[] = {255, 65280, 16711680};
        const unsigned long nMasks = std::min(nEntries, 3ul); // the table of a 1-bit bitmap has room for two
        std::memcpy(pTable, pBI->biBitCount <= 16 ? aMasks16 : aMasks32, ClBitmapLayout::nEntrySize * nMasks);
    }
}

void ClBitmap::FillBIFromImage(tagBITMAPINFOHEADER* pBI, const ClImage& cImage)
{
    FillBI(pBI, cImage.m_nWidth, cImage.m_nHeight, static_cast<long>(cImage.m_nPlanes) * 8, 0);
    pBI->biXPelsPerMeter = cImage.m_nXRes;
    pBI->biYPelsPerMeter = cImage.m_nYRes;
}

void ClBitmap::Attach(unsigned char* pDIB, unsigned long nSize)
{
    FillOrClear(*this,
                [&]
                {
                    ClBitmapLayout cLayout(nSize);
                    auto* pBI = const_cast<tagBITMAPINFOHEADER*>(MemToBitmapInfoHeader(cLayout.TakeHeader(pDIB)));
                    ConvertBadAlloc([&] { m_pBIH.reset(pBI, void_deleter()); });
                    m_pPalette = cLayout.TakeTable(pBI);
                    ResetPixel();
                    cLayout.CheckPixels(*pBI);
                });
}

void ClBitmap::Attach(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette)
{
    FillOrClear(*this,
                [&]
                {
                    if (pBIH == nullptr)
                    {
                        Raise(FPC_ERROR_BITMAP_PTR, "No Bitmap to Attach", __LINE__);
                    }
                    if (pPixels == nullptr)
                    {
                        Raise(FPC_ERROR_BITMAP_PTR, "No Pixel data to Attach", __LINE__);
                    }
                    if (ClBitmapLayout::BeginsWithFileHeader(pBIH))
                    {
                        pBIH += ClBitmapLayout::nFileHeaderSize;
                    }
                    auto* pBI = const_cast<tagBITMAPINFOHEADER*>(MemToBitmapInfoHeader(pBIH));
                    ConvertBadAlloc([&] { m_pBIH.reset(pBI, void_deleter()); });
                    m_pPalette = pPalette != nullptr ? reinterpret_cast<std::uint32_t*>(pPalette)
                                                     : ClBitmapLayout::TableBehind(pBI);
                    ConvertBadAlloc([&] { m_pPixels.reset(pPixels, void_deleter()); });
                });
}

void ClBitmap::Attach(const ClBitmap& cOther)
{
    if (!IsValidBitCount(cOther.Header().biBitCount))
    {
        Raise(FPC_ERROR_BITMAP_BITCOUNT, szBadBitCount, __LINE__);
    }
    m_pBIH = cOther.m_pBIH;
    m_pPalette = cOther.m_pPalette;
    m_pPixels = cOther.m_pPixels;
}

void ClBitmap::Attach(const ClImage& cImage)
{
    if (cImage.m_nWidth == 0 || cImage.m_nHeight == 0)
    {
        return;
    }
    if (cImage.m_nPlanes != 1 && cImage.m_nPlanes != 3 && cImage.m_nPlanes != 4)
    {
        Raise(FPC_ERROR_FORMAT_NOTSUPPORTED, "Only grey scale, RGB and RGBA images supported", __LINE__);
    }
    if (cImage.m_eDataType != ClImage::eUInt8)
    {
        Raise(FPC_ERROR_FORMAT_NOTSUPPORTED, "Only unsigned 8 bit images supported", __LINE__);
    }
    CopyFrom(cImage, false);
}

std::uint32_t* ClBitmap::CheckPtr(unsigned char* pDIB, unsigned long nSize)
{
    auto* pBlock = reinterpret_cast<tagBITMAPINFOHEADER*>(pDIB);
    boost::shared_ptr<tagBITMAPINFOHEADER> pOwner = m_pBIH;
    if (pBlock != m_pBIH.get())
    {
        // Owned before it is checked: whatever is raised below, the block is freed.
        ConvertBadAlloc([&] { pOwner.reset(pBlock, boost::checked_array_deleter<tagBITMAPINFOHEADER>()); });
        ClearFree();
    }
    return FillOrClear(
        *this,
        [&]
        {
            ClBitmapLayout cLayout(nSize);
            auto* pBI = const_cast<tagBITMAPINFOHEADER*>(MemToBitmapInfoHeader(cLayout.TakeHeader(pDIB)));
            m_pBIH = boost::shared_ptr<tagBITMAPINFOHEADER>(pOwner, pBI); // behind a file header, if there is one
            std::uint32_t* pTable = cLayout.TakeTable(pBI);
            cLayout.CheckPixels(*pBI);
            return pTable;
        });
}

void ClBitmap::ResetPixel()
{
    unsigned char* pPixels = reinterpret_cast<unsigned char*>(&Header()) + ClBitmapLayout::nHeaderSize +
                             ClBitmapLayout::TableBytes(Header());
    ConvertBadAlloc([&] { m_pPixels.reset(pPixels, BIH_deleter{m_pBIH}); });
}

void ClBitmap::CopyFrom(const ClImage& cImage, bool bCopy)
{
    const boost::shared_ptr<unsigned char> pImage = cImage.m_pData;
    ClearFree();
    tagBITMAPINFOHEADER cHeader;
    FillHeader(cHeader, cImage.m_nWidth, cImage.m_nHeight, static_cast<long>(cImage.m_nPlanes) * 8, 0);
    MemToBitmapInfoHeader(reinterpret_cast<const unsigned char*>(&cHeader)); // before a size is computed from it
    unsigned char* pBlock = BitmapAlloc(cHeader.biWidth, cHeader.biHeight, cHeader.biBitCount, 0, bCopy);
    FillBIFromImage(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock), cImage);
    m_pPalette = CheckPtr(pBlock, 0);
    if (!bCopy)
    {
        m_pPixels = pImage;
        return;
    }
    FillOrClear(*this, [this] { ResetPixel(); });
    // An image of samples without a size has less than the bitmap.
    const std::int64_t nImageBytes = static_cast<std::int64_t>(cImage.Stride()) * cImage.m_nHeight;
    const std::size_t nImage = nImageBytes > 0 ? static_cast<std::size_t>(nImageBytes) : 0;
    CopyBytes(m_pPixels.get(), pImage.get(), std::min(ClBitmapLayout::PixelBytes(*m_pBIH), nImage));
}

void ClBitmap::CopyFrom(const ClBitmap& cOther, bool bCopy)
{
    if (&cOther == this)
    {
        return;
    }
    ClBitmap cOld; // the source may be attached to the block that this bitmap has held so far
    Swap(cOld);
    if (cOther.m_pBIH.get() == nullptr)
    {
        return;
    }
    if (!bCopy)
    {
        Attach(cOther);
        return;
    }
    const tagBITMAPINFOHEADER& cHeader = cOther.Header();
    unsigned char* pBlock = ClBitmapLayout::NewBlock(cHeader.biWidth, cHeader.biHeight, cHeader.biBitCount,
                                                     ClBitmapLayout::TableBytes(cHeader), true);
    CopyBytes(pBlock, &cHeader, ClBitmapLayout::nHeaderSize);
    m_pPalette = CheckPtr(pBlock, 0);
    CopyBytes(m_pPalette, cOther.m_pPalette, ClBitmapLayout::TableBytes(cHeader));
    FillOrClear(*this, [this] { ResetPixel(); });
    CopyBytes(m_pPixels.get(), cOther.m_pPixels.get(), ClBitmapLayout::PixelBytes(cHeader));
}

void ClBitmap::CopyFrom(const unsigned char* pDIB, bool bCopy)
{
    ClBitmap cSource(const_cast<unsigned char*>(pDIB), true);
    CopyFrom(cSource, bCopy);
}

void ClBitmap::CopyFrom(unsigned char* pBIH, unsigned char* pPixels, unsigned char* pPalette)
{
    ClBitmap cSource(pBIH, pPixels, pPalette, true);
    CopyFrom(cSource, true);
}

ClBitmap& ClBitmap::operator=(const ClBitmap& cOther)
{
    if (this != &cOther)
    {
        CopyFrom(cOther, true);
    }
    return *this;
}

ClBitmap& ClBitmap::operator=(const ClImage& cImage)
{
    CopyFrom(cImage, true);
    return *this;
}

ClBitmap& ClBitmap::operator=(unsigned char nValue)
{
    const std::size_t nBytes = ClBitmapLayout::PixelBytes(Header());
    if (nBytes != 0 && m_pPixels.get() != nullptr)
    {
        std::memset(m_pPixels.get(), nValue, nBytes);
    }
    return *this;
}

void ClBitmap::CopyTo(unsigned char* pDest) const
{
    const tagBITMAPINFOHEADER& cHeader = Header();
    CopyBytes(pDest, &cHeader, ClBitmapLayout::nHeaderSize);
    const ClBitmap cDest(pDest, true); // knows where in the block table and pixels stand
    CopyBytes(cDest.m_pPalette, m_pPalette, ClBitmapLayout::TableBytes(cHeader));
    CopyBytes(cDest.m_pPixels.get(), m_pPixels.get(), ClBitmapLayout::PixelBytes(cHeader));
}

unsigned char* ClBitmap::DetachThis()
{
    TpArrayStatic<unsigned char> aBlock(ClBitmapLayout::nHeaderSize + ClBitmapLayout::PixelBytes(Header()) +
                                        ClBitmapLayout::TableBytes(Header()));
    CopyTo(aBlock.m_pData);
    Clear();
    aBlock.m_nEntries = 0;
    return std::exchange(aBlock.m_pData, nullptr);
}

void ClBitmap::Swap(ClBitmap& cOther)
{
    m_pBIH.swap(cOther.m_pBIH);
    std::swap(m_pPalette, cOther.m_pPalette);
    m_pPixels.swap(cOther.m_pPixels);
}

const tagBITMAPINFOHEADER* ClBitmap::MemToBitmapInfoHeader(const unsigned char* p)
{
    if (p == nullptr)
    {
        Raise(FPC_ERROR_BITMAP_PTR, "ClBitmap::Attach, Pointer is NULL.", __LINE__);
    }
    if (ClBitmapLayout::BeginsWithFileHeader(p))
    {
        Raise(FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER,
              "ClBitmap::Attach, Bitmapfileheader found Bitmapinfoheader expected.", __LINE__);
    }
    const auto* pBI = reinterpret_cast<const tagBITMAPINFOHEADER*>(p);
    if (pBI->biSize != ClBitmapLayout::nHeaderSize)
    {
        Raise(FPC_ERROR_BITMAP_HEADERSIZE, "ClBitmap::Attach, Bitmap Header size is not known.", __LINE__);
    }
    if (pBI->biPlanes != 1)
    {
        Raise(FPC_ERROR_BITMAP_PLANE, "ClBitmap::Attach, pBI->biPlanes != 1.", __LINE__);
    }
    if (pBI->biCompression > 3)
    {
        Raise(FPC_ERROR_BITMAP_COMPRESSION, "ClBitmap::Attach, Not Supported FOCC.", __LINE__);
    }
    if (!IsValidBitCount(pBI->biBitCount))
    {
        Raise(FPC_ERROR_BITMAP_BITCOUNT, szBadBitCount, __LINE__);
    }
    return pBI;
}

bool ClBitmap::HoldsPixels(const unsigned char* pDIB, unsigned long nSize)
{
    return ClBitmapLayout::HoldsPixels(pDIB, nSize);
}

bool ClBitmap::IsValidBitCount(long nBitCount)
{
    switch (nBitCount)
    {
    case 1:
    case 4:
    case 8:
    case 16:
    case 24:
    case 32: return true;
    default: return false;
    }
}

bool ClBitmap::IsEqualSize(const ClBitmap& cOther) const
{
    return Header().biWidth == cOther.Header().biWidth && Header().biHeight == cOther.Header().biHeight;
}

bool ClBitmap::operator==(const ClBitmap& cOther) const
{
    if (&cOther == this)
    {
        return true;
    }
    if (m_pBIH.get() == nullptr || cOther.m_pBIH.get() == nullptr ||
        !SameBytes(m_pBIH.get(), cOther.m_pBIH.get(), ClBitmapLayout::nHeaderSize) ||
        !SameBytes(m_pPalette, cOther.m_pPalette, ClBitmapLayout::TableBytes(*m_pBIH)))
    {
        return false;
    }
    if (ClBitmapLayout::PixelBytes(*m_pBIH) == 0 || m_pPixels.get() == cOther.m_pPixels.get())
    {
        return true;
    }
    const auto nUsed = static_cast<std::size_t>(
        std::min((std::int64_t(m_pBIH->biBitCount) * m_pBIH->biWidth + 7) >> 3, std::int64_t(Stride())));
    for (long y = 0; y < m_pBIH->biHeight; ++y)
    {
        if (!SameBytes(Line(y), cOther.Line(y), nUsed))
        {
            return false;
        }
    }
    return true;
}

unsigned char* ClBitmap::Line(long nY) const
{
    return m_pPixels.get() + nY * Stride();
}

unsigned long ClBitmap::PalSize(const tagBITMAPINFOHEADER* pBI) const
{
    if (pBI == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    return ClBitmapLayout::TableEntries(*pBI);
}
