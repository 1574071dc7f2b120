#include "RDTools/BitmapLayout.hpp"

#include "RDTools/TpArrayStatic.hpp"

#include <cstdlib>

namespace
{
constexpr char szModule[] = "RDTools/Bitmap";
}

static_assert(sizeof(tagBITMAPINFOHEADER) == ClBitmapLayout::nHeaderSize, "the header is packed");

unsigned long ClBitmapLayout::TableEntries(const tagBITMAPINFOHEADER& cHeader)
{
    if (cHeader.biBitCount < 9)
    {
        return cHeader.biClrUsed != 0 ? cHeader.biClrUsed : 1ul << cHeader.biBitCount;
    }
    return cHeader.biCompression == 3 ? 3 : cHeader.biClrUsed;
}

std::uint32_t* ClBitmapLayout::TableBehind(tagBITMAPINFOHEADER* pBI)
{
    if (TableEntries(*pBI) == 0)
    {
        return nullptr;
    }
    return reinterpret_cast<std::uint32_t*>(reinterpret_cast<unsigned char*>(pBI) + nHeaderSize);
}

std::int64_t ClBitmapLayout::HonestRowBytes(std::int64_t nBitCount, std::int64_t nWidth)
{
    return (((nBitCount * nWidth + 7) >> 3) + 3) & ~std::int64_t(3);
}

bool ClBitmapLayout::IsHonest(const tagBITMAPINFOHEADER& cHeader)
{
    return cHeader.biWidth >= 0 && cHeader.biHeight >= 0 &&
           HonestRowBytes(cHeader.biBitCount, cHeader.biWidth) ==
               ClBitmap::RowBytes(cHeader.biBitCount, cHeader.biWidth);
}

std::size_t ClBitmapLayout::PixelBytes(const tagBITMAPINFOHEADER& cHeader)
{
    const std::int64_t nRow = ClBitmap::RowBytes(cHeader.biBitCount, cHeader.biWidth);
    return nRow > 0 && cHeader.biHeight > 0 ? static_cast<std::size_t>(nRow * cHeader.biHeight) : 0;
}

/// Told without wrapping. A negative size is held by no block.
bool ClBitmapLayout::Fits(const tagBITMAPINFOHEADER& cHeader, unsigned long nAvailable)
{
    const std::int64_t nRow = HonestRowBytes(cHeader.biBitCount, cHeader.biWidth);
    const std::int64_t nRows = cHeader.biHeight;
    if (nRow == 0 || nRows == 0)
    {
        return true;
    }
    const auto nRowSize = static_cast<std::uint64_t>(std::abs(nRow));
    return (nRow < 0) == (nRows < 0) && nRowSize <= nAvailable / static_cast<std::uint64_t>(std::abs(nRows));
}

bool ClBitmapLayout::HoldsPixels(const unsigned char* pDIB, unsigned long nSize)
{
    if (nSize == 0)
    {
        return true;
    }
    if (pDIB != nullptr && nSize >= nFileHeaderSize && BeginsWithFileHeader(pDIB))
    {
        pDIB += nFileHeaderSize;
        nSize -= nFileHeaderSize;
    }
    if (pDIB == nullptr || nSize < nHeaderSize)
    {
        return false;
    }
    const auto& cHeader = *reinterpret_cast<const tagBITMAPINFOHEADER*>(pDIB);
    const unsigned long nTable = TableBytes(cHeader);
    return nSize - nHeaderSize >= nTable && Fits(cHeader, nSize - nHeaderSize - nTable);
}

unsigned char* ClBitmapLayout::NewBlock(int nWidth, int nHeight, int nBitCount, unsigned long nTableBytes,
                                        bool bWithPixels)
{
    std::uint64_t nBytes = nHeaderSize + nTableBytes;
    if (bWithPixels)
    {
        const int nRow = ClBitmap::RowBytes(nBitCount, nWidth);
        if (nRow < 0 || nHeight < 0 || HonestRowBytes(nBitCount, nWidth) != nRow)
        {
            ThrowBadAlloc();
        }
        nBytes += static_cast<std::uint64_t>(nRow) * static_cast<std::uint64_t>(nHeight);
    }
    return reinterpret_cast<unsigned char*>(NewArray<tagBITMAPINFOHEADER>((nBytes + nHeaderSize - 1) / nHeaderSize));
}

const unsigned char* ClBitmapLayout::TakeHeader(const unsigned char* pDIB)
{
    if (pDIB == nullptr)
    {
        throw ClException("No Bitmap to Attach", FPC_ERROR_BITMAP_PTR, true, szModule, __LINE__);
    }
    // Of a single byte there is no second letter to look at; a header without file header does not begin with a B.
    if (m_nSize == 1 ? *pDIB == 'B' : BeginsWithFileHeader(pDIB))
    {
        if (m_nSize >= 1 && m_nSize <= nFileHeaderSize)
        {
            throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
        }
        Take(nFileHeaderSize);
        pDIB += nFileHeaderSize;
    }
    if (!Holds(nHeaderSize))
    {
        throw ClExVelmarin(FPC_ERROR_TEMPLATE_SIZE, szModule, __LINE__);
    }
    Take(nHeaderSize);
    return pDIB;
}

std::uint32_t* ClBitmapLayout::TakeTable(tagBITMAPINFOHEADER* pBI)
{
    const unsigned long nBytes = TableBytes(*pBI);
    if (!Holds(nBytes))
    {
        throw ClExVelmarin(FPC_ERROR_TEMPLATE_SIZE, szModule, __LINE__);
    }
    Take(nBytes);
    return TableBehind(pBI);
}

void ClBitmapLayout::CheckPixels(const tagBITMAPINFOHEADER& cHeader) const
{
    if (!IsKnown())
    {
        return;
    }
    const int nRow = ClBitmap::RowBytes(cHeader.biBitCount, cHeader.biWidth);
    const auto nWrapped = static_cast<std::uint32_t>(WrapMultiply(nRow, cHeader.biHeight));
    // A negative size wraps to a large one and fails the first test; a large one that wraps to a small one the second.
    if (m_nRemainder < nWrapped || !Fits(cHeader, m_nRemainder))
    {
        throw ClExVelmarin(FPC_ERROR_TEMPLATE_SIZE, szModule, __LINE__);
    }
}

void ClBitmapLayout::Take(unsigned long nBytes)
{
    m_bKnown = m_bKnown && m_nRemainder >= nBytes;
    m_nRemainder -= nBytes;
}
