#include "BitmapRules.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr std::size_t nFileHeader = 14, nHeader = 40;

bool BeginsWithBM(const unsigned char* p, std::size_t nSize)
{
    return nSize >= 2 && p[0] == 'B' && p[1] == 'M';
}

/// What the header alone says, in the order of the checks.
long CodeOfHeader(const tagBITMAPINFOHEADER& c)
{
    if ((c.biSize & 0xffff) == 0x4d42) return FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER;
    if (c.biSize != nHeader) return FPC_ERROR_BITMAP_HEADERSIZE;
    if (c.biPlanes != 1) return FPC_ERROR_BITMAP_PLANE;
    if (c.biCompression > 3) return FPC_ERROR_BITMAP_COMPRESSION;
    const bool bDepth = c.biBitCount == 1 || c.biBitCount == 4 || c.biBitCount == 8 || c.biBitCount == 16 ||
                        c.biBitCount == 24 || c.biBitCount == 32;
    return bDepth ? FPC_SUCCESS : FPC_ERROR_BITMAP_BITCOUNT;
}

std::uint64_t TableBytes(const tagBITMAPINFOHEADER& c)
{
    if (c.biBitCount <= 8)
        return 4 * (c.biClrUsed != 0 ? std::uint64_t{c.biClrUsed} : std::uint64_t{1} << c.biBitCount);
    return c.biCompression == 3 ? 12 : std::uint64_t{4} * c.biClrUsed;
}

/// Whether nLeft bytes hold the pixels, in numbers that do not wrap; a negative size is never held.
bool HoldsPixels(const tagBITMAPINFOHEADER& c, std::uint64_t nLeft)
{
    const std::int64_t nRow = ((std::int64_t{c.biBitCount} * c.biWidth + 31) >> 5) * 4, nRows = c.biHeight;
    if (nRow == 0 || nRows == 0) return true;
    return (nRow < 0) == (nRows < 0) &&
           static_cast<std::uint64_t>(std::abs(nRow)) <= nLeft / static_cast<std::uint64_t>(std::abs(nRows));
}
} // namespace

StBitmapFate FateOf(const unsigned char* pBlock, std::size_t nSize)
{
    StBitmapFate cFate;
    const auto refuse = [&cFate](long nCode)
    {
        cFate.m_nCode = nCode;
        return cFate;
    };
    if (BeginsWithBM(pBlock, nSize) || (nSize == 1 && *pBlock == 'B'))
    {
        if (nSize <= nFileHeader) return refuse(FPC_ERROR_BITMAP_PTR);
        pBlock += nFileHeader;
        nSize -= nFileHeader;
    }
    if (nSize < nHeader) return refuse(FPC_ERROR_TEMPLATE_SIZE);
    tagBITMAPINFOHEADER c;
    std::memcpy(&c, pBlock, nHeader);
    if (const long nCode = CodeOfHeader(c)) return refuse(nCode);
    const std::uint64_t nLeft = nSize - nHeader, nTable = TableBytes(c);
    // A block that is used up exactly counts as one of unknown size; only the picture that it should hold is missed.
    const bool bUnknown = nLeft == 0 || nLeft == nTable;
    if (!bUnknown && (nLeft < nTable || !HoldsPixels(c, nLeft - nTable))) return refuse(FPC_ERROR_TEMPLATE_SIZE);
    cFate.m_nHeight = 0; // the handle lets go of its former picture here
    if (c.biCompression == 0 && c.biBitCount != 8 && c.biBitCount != 24 && c.biBitCount != 32)
        return refuse(FPC_ERROR_BITMAP_BITCOUNT);
    if (c.biCompression == 0) cFate.m_nHeight = c.biHeight;
    if (c.biBitCount != 8 || c.biCompression != 0) return refuse(FPC_ERROR_BITMAP_PLANE);
    if (nLeft < nTable || !HoldsPixels(c, nLeft - nTable)) return refuse(FPC_ERROR_TEMPLATE_SIZE);
    cFate.m_pPixels = pBlock + nHeader + nTable;
    cFate.m_nWidth = c.biWidth;
    cFate.m_nStride = (c.biWidth + 3L) & ~3L;
    cFate.m_nXRes = c.biXPelsPerMeter;
    cFate.m_nYRes = c.biYPelsPerMeter;
    return cFate;
}

long CheckOfFingers(const StBitmapFate& c)
{
    if (c.m_nXRes < 3900 || c.m_nYRes < 3900) return FPC_ERROR_BITMAP_PELS;
    bool bUniform = true;
    for (long y = 0; y < c.m_nHeight && c.m_nWidth > 0 && bUniform; ++y)
    {
        const unsigned char* const pRow = c.m_pPixels + y * c.m_nStride;
        bUniform = std::all_of(pRow, pRow + c.m_nWidth, [&c](unsigned char n) { return n == c.m_pPixels[0]; });
    }
    if (bUniform) return FPC_ERROR_BITMAP_NO_FINGER;
    return c.m_nWidth < 160 || c.m_nHeight < 160 ? FPC_ERROR_BITMAP_DIMENSION : FPC_SUCCESS;
}

namespace
{
/// Pieces of rows, joined to objects by the one that each of them hangs on.
class ClPieces
{
public:
    void Add(long nFirst, long nEnd, long y)
    {
        m_acPiece.push_back({nFirst, nEnd, m_acPiece.size()});
        m_acObject.push_back({nEnd - nFirst, nFirst, nEnd - 1, y, y});
        while (m_nAbove < m_nRow && m_acPiece[m_nAbove].nEnd <= nFirst) ++m_nAbove;
        for (std::size_t i = m_nAbove; i < m_nRow && m_acPiece[i].nFirst < nEnd; ++i) Join(i, m_acPiece.size() - 1);
    }

    void EndRow()
    {
        m_nAbove = m_nRow;
        m_nRow = m_acPiece.size();
    }

    std::vector<StObject> Objects() const
    {
        std::vector<StObject> acObject;
        for (std::size_t i = 0; i < m_acPiece.size(); ++i)
            if (m_acPiece[i].nOn == i) acObject.push_back(m_acObject[i]);
        return acObject;
    }

private:
    struct StPiece
    {
        long nFirst;
        long nEnd;
        std::size_t nOn;
    };

    std::size_t Root(std::size_t i)
    {
        while (m_acPiece[i].nOn != i) i = m_acPiece[i].nOn = m_acPiece[m_acPiece[i].nOn].nOn;
        return i;
    }

    void Join(std::size_t nFirst, std::size_t nSecond)
    {
        const std::size_t nTo = Root(nFirst), nFrom = Root(nSecond);
        if (nTo == nFrom) return;
        m_acPiece[nFrom].nOn = nTo;
        StObject& cTo = m_acObject[nTo];
        const StObject& cFrom = m_acObject[nFrom];
        cTo = {cTo.m_nArea + cFrom.m_nArea, std::min(cTo.m_nMinX, cFrom.m_nMinX), std::max(cTo.m_nMaxX, cFrom.m_nMaxX),
               std::min(cTo.m_nMinY, cFrom.m_nMinY), std::max(cTo.m_nMaxY, cFrom.m_nMaxY)};
    }

    std::vector<StPiece> m_acPiece;
    std::vector<StObject> m_acObject;
    std::size_t m_nAbove = 0; ///< the first piece of the row above that can still touch
    std::size_t m_nRow = 0;   ///< the first piece of this row
};
} // namespace

std::vector<StObject> ObjectsOf(const StBitmapFate& c)
{
    ClPieces cPieces;
    for (long y = 0; y < c.m_nHeight && c.m_nWidth > 0; ++y)
    {
        const unsigned char* const pRow = c.m_pPixels + y * c.m_nStride;
        const unsigned char* const pEnd = pRow + c.m_nWidth;
        const auto isObject = [](unsigned char n) { return n != 255; };
        for (const unsigned char* p = std::find_if(pRow, pEnd, isObject); p != pEnd;
             p = std::find_if(p, pEnd, isObject))
        {
            const auto* const pFirst = p;
            p = std::find(p, pEnd, static_cast<unsigned char>(255));
            cPieces.Add(pFirst - pRow, p - pRow, y);
        }
        cPieces.EndRow();
    }
    return cPieces.Objects();
}
