#include "RDTools/Bitmap.hpp"

#include "RDTools/BitmapLayout.hpp"
#include "RDTools/BitmapRle.hpp"
#include "RDTools/FileStream.hpp"

#include <boost/checked_delete.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

// The BMP file: file header, bitmap header, table, rows; all numbers little-endian.

namespace
{
constexpr char szModule[] = "RDTools/Bitmap";
constexpr std::uint16_t nSignature = 19778; // the letters B and M

/// More colours than a pixel can tell apart: a table with more entries is believed only if it is there.
constexpr std::uint64_t nMostMissingTable = std::uint64_t(4) << 24;

[[noreturn]] void Raise(long nNumber, const char* szComment, long nLine)
{
    throw ClException(szComment, nNumber, true, szModule, nLine);
}

/// Lets numbers be written little-endian, until it ends.
class ClLittleEndianWriting
{
public:
    explicit ClLittleEndianWriting(ClStream& cStream) : m_cStream(cStream), m_bOld(cStream.SetBigEndian4Write(false)) {}
    ClLittleEndianWriting(const ClLittleEndianWriting&) = delete;
    ClLittleEndianWriting& operator=(const ClLittleEndianWriting&) = delete;
    ~ClLittleEndianWriting() { m_cStream.SetBigEndian4Write(m_bOld); }

private:
    ClStream& m_cStream;
    bool m_bOld;
};

void CheckWritten(std::uint64_t nWritten, std::uint64_t nWanted)
{
    if (nWritten != nWanted)
    {
        throw ClExStreamFailToWrite("Failed to write into stream", FPC_ERROR_WRITE_FAIL, true, szModule, __LINE__);
    }
}

template <class T> void Write(ClStream& cStream, T value)
{
    CheckWritten(cStream.WriteAutoSwap(value), sizeof(T));
}

void WriteBytes(ClStream& cStream, const void* pBytes, std::size_t nBytes)
{
    CheckWritten(static_cast<std::uint64_t>(cStream.WriteNumericArray(pBytes, nBytes, 1)), nBytes);
}

template <class T> T Read(ClStream& cStream)
{
    T value = 0;
    cStream.ReadAutoSwap(value);
    return value;
}

template <class Field> void LimitTo(Field& nField, Field nMost)
{
    if (nField > nMost)
    {
        nField = nMost;
    }
}

void CheckStorable(const ClBitmap& cBitmap)
{
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    if (!ClBitmapLayout::IsHonest(cHeader))
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_DIMENSION, szModule, __LINE__);
    }
    const bool bTable = cHeader.biBitCount < 9 || cHeader.biCompression == 3;
    if ((ClBitmapLayout::PixelBytes(cHeader) != 0 && cBitmap.m_pPixels.get() == nullptr) ||
        (bTable && cBitmap.m_pPalette == nullptr))
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    if (cHeader.biSizeImage == 0 && cHeader.biCompression != 0)
    {
        Raise(FPC_ERROR_FORMAT_NOTSUPPORTED,
              "Bitmap Store: Combination of biSizeImage not set and compression set to other than plain not allowed",
              __LINE__);
    }
}

std::uint32_t WrappedPixelBytes(const tagBITMAPINFOHEADER& cHeader)
{
    return static_cast<std::uint32_t>(
        WrapMultiply(ClBitmap::RowBytes(cHeader.biBitCount, cHeader.biWidth), cHeader.biHeight));
}

/// The header is not written to where it is right: it may be a caller's, and constant.
void MendHeader(tagBITMAPINFOHEADER& cHeader)
{
    if (cHeader.biSizeImage == 0 && WrappedPixelBytes(cHeader) != 0)
    {
        cHeader.biSizeImage = WrappedPixelBytes(cHeader);
    }
    const std::uint32_t nColours = std::uint32_t(1) << (cHeader.biBitCount & 31);
    std::uint32_t nUsed = cHeader.biClrUsed, nImportant = cHeader.biClrImportant;
    LimitTo(nUsed, cHeader.biBitCount < 9 ? nColours : 0);
    LimitTo(nImportant, nColours);
    if (nUsed != cHeader.biClrUsed)
    {
        cHeader.biClrUsed = nUsed;
    }
    if (nImportant != cHeader.biClrImportant)
    {
        cHeader.biClrImportant = nImportant;
    }
}

void WriteHeader(ClStream& cStream, const tagBITMAPINFOHEADER& cHeader)
{
    Write<std::uint32_t>(cStream, cHeader.biSize);
    Write<std::int32_t>(cStream, cHeader.biWidth);
    Write<std::int32_t>(cStream, cHeader.biHeight);
    Write<std::uint16_t>(cStream, cHeader.biPlanes);
    Write<std::uint16_t>(cStream, cHeader.biBitCount);
    Write<std::uint32_t>(cStream, cHeader.biCompression);
    Write<std::uint32_t>(cStream, cHeader.biSizeImage);
    Write<std::int32_t>(cStream, cHeader.biXPelsPerMeter);
    Write<std::int32_t>(cStream, cHeader.biYPelsPerMeter);
    Write<std::uint32_t>(cStream, cHeader.biClrUsed);
    Write<std::uint32_t>(cStream, cHeader.biClrImportant);
}

/// The reading of one file, up to the rows.
class ClBmpReader
{
public:
    explicit ClBmpReader(ClStream& cStream) : m_cStream(cStream) {}

    void ReadHeaders();
    /// The bitmap's header, decoded and with a positive height, and the table's bytes in a new block.
    unsigned char* NewBlock() const;
    void ReadTable(unsigned char* pTable) const;
    void ReadRows(unsigned char* pPixels) const;

private:
    void ReadInfoHeader();
    void CheckHeader() const;
    void LimitTable();
    void CheckAhead(std::uint64_t nPixels) const;
    void Skip(std::uint64_t nBytes) const;
    bool IsRle() const { return m_nCompression == 1; }
    std::uint64_t TableBytes() const { return ClBitmapLayout::TableBytes(m_cHeader); }
    std::uint64_t TableBytesInFile() const { return std::min(TableBytes(), m_nSpace); }
    std::int64_t SeekBehindSpace() const
    {
        return static_cast<std::int64_t>(m_nSpace) - static_cast<std::int64_t>(TableBytes());
    }

    ClStream& m_cStream;
    tagBITMAPINFOHEADER m_cHeader = {};
    std::uint32_t m_nCompression = 0; ///< of the file
    std::uint64_t m_nOffset = 0;      ///< of the pixels, from the file header on; 0: not known
    std::uint64_t m_nSpace = 0;       ///< bytes between header and pixels
    bool m_bTopDown = false;
};

void ClBmpReader::ReadHeaders()
{
    switch (Read<std::uint16_t>(m_cStream))
    {
    case ClBitmapLayout::nHeaderSize: // no file header; this is the first half of biSize
        Read<std::uint16_t>(m_cStream);
        m_cHeader.biSize = ClBitmapLayout::nHeaderSize;
        break;
    case nSignature:
        Read<std::uint32_t>(m_cStream); // the file's size, which nobody needs
        Read<std::uint16_t>(m_cStream);
        Read<std::uint16_t>(m_cStream);
        m_nOffset = std::max<std::uint64_t>(Read<std::uint32_t>(m_cStream),
                                            ClBitmapLayout::nFileHeaderSize + ClBitmapLayout::nHeaderSize);
        m_cHeader.biSize = Read<std::uint32_t>(m_cStream);
        break;
    default: Raise(FPC_ERROR_BMP_NO_SIGNATURE, "ClBitmap::Load. Fileheader Signature is Missing", __LINE__);
    }
    ReadInfoHeader();
    CheckHeader();
    m_bTopDown = m_cHeader.biHeight < 0;
    if (m_bTopDown)
    {
        m_cHeader.biHeight = WrapSubtract(0, m_cHeader.biHeight); // the smallest number stays negative
    }
    m_cHeader.biSizeImage = WrappedPixelBytes(m_cHeader);
    constexpr std::uint64_t nHeaders = ClBitmapLayout::nFileHeaderSize + ClBitmapLayout::nHeaderSize;
    if (m_nOffset == 0)
    {
        m_nOffset = nHeaders + TableBytes();
    }
    m_nSpace = m_nOffset - nHeaders;
    LimitTable();
}

void ClBmpReader::ReadInfoHeader()
{
    m_cHeader.biWidth = Read<std::int32_t>(m_cStream);
    m_cHeader.biHeight = Read<std::int32_t>(m_cStream);
    m_cHeader.biPlanes = Read<std::uint16_t>(m_cStream);
    m_cHeader.biBitCount = Read<std::uint16_t>(m_cStream);
    m_nCompression = Read<std::uint32_t>(m_cStream);
    m_cHeader.biCompression = m_nCompression;
    Read<std::uint32_t>(m_cStream); // biSizeImage, which follows from the rest
    m_cHeader.biXPelsPerMeter = Read<std::int32_t>(m_cStream);
    m_cHeader.biYPelsPerMeter = Read<std::int32_t>(m_cStream);
    m_cHeader.biClrUsed = Read<std::uint32_t>(m_cStream);
    m_cHeader.biClrImportant = Read<std::uint32_t>(m_cStream);
}

void ClBmpReader::CheckHeader() const
{
    constexpr char szCompression[] = "ClBitmap::Load. Unsupported compressions mode";
    if (m_nCompression > 1 && m_nCompression != 3)
    {
        Raise(FPC_ERROR_BITMAP_COMPRESSION, szCompression, __LINE__);
    }
    ClBitmap::MemToBitmapInfoHeader(reinterpret_cast<const unsigned char*>(&m_cHeader));
    if (IsRle() && m_cHeader.biBitCount != 8)
    {
        Raise(FPC_ERROR_BITMAP_COMPRESSION, szCompression, __LINE__); // its bytes are no pixels of that depth
    }
}

void ClBmpReader::LimitTable()
{
    if (m_cHeader.biBitCount > 8)
    {
        return;
    }
    const auto nMost = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(m_nSpace / ClBitmapLayout::nEntrySize, std::uint64_t(1) << m_cHeader.biBitCount));
    if (m_cHeader.biClrUsed > nMost)
    {
        m_cHeader.biClrUsed = nMost; // 0 means a whole table after all
        m_cHeader.biClrImportant = std::min<std::uint32_t>(m_cHeader.biClrImportant, nMost);
    }
}

unsigned char* ClBmpReader::NewBlock() const
{
    if (!ClBitmapLayout::IsHonest(m_cHeader))
    {
        ThrowBadAlloc();
    }
    const std::uint64_t nPixels = ClBitmapLayout::PixelBytes(m_cHeader);
    CheckAhead(nPixels);
    constexpr std::uint64_t nMost = std::numeric_limits<std::uint32_t>::max();
    if (ClBitmapLayout::nHeaderSize + TableBytes() + nPixels > nMost || m_nSpace > nMost ||
        TableBytes() - TableBytesInFile() > nMostMissingTable)
    {
        ThrowBadAlloc();
    }
    unsigned char* pBlock =
        ClBitmapLayout::NewBlock(m_cHeader.biWidth, m_cHeader.biHeight, m_cHeader.biBitCount, TableBytes(), true);
    std::memcpy(pBlock, &m_cHeader, sizeof m_cHeader);
    if (IsRle())
    {
        reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock)->biCompression = 0;
    }
    return pBlock;
}

/// Fails as the reading would fail later, if the stream can tell that it is too short. Of RLE8 only the two bytes are
/// sure that every picture has.
void ClBmpReader::CheckAhead(std::uint64_t nPixels) const
{
    const std::uint64_t nAhead = m_cStream.BytesAhead();
    if (nAhead == std::numeric_limits<unsigned long>::max())
    {
        return;
    }
    // Where a seek would end before the start of the stream, it stays.
    const std::int64_t nSeek = SeekBehindSpace();
    const std::int64_t nRows = m_cStream.Pos() + static_cast<std::int64_t>(m_nSpace) + nSeek;
    const std::int64_t nToRows = static_cast<std::int64_t>(m_nSpace) + (nRows < 0 ? 0 : nSeek);
    const auto nNeeded = static_cast<std::int64_t>(IsRle() ? 2 : nPixels);
    const std::int64_t nToEnd = nNeeded == 0 ? 0 : std::max<std::int64_t>(nToRows + nNeeded, 0);
    m_cStream.CheckMoved(nAhead, std::max(m_nSpace, static_cast<std::uint64_t>(nToEnd)));
}

void ClBmpReader::ReadTable(unsigned char* pTable) const
{
    const std::uint64_t nInFile = TableBytesInFile();
    m_cStream.ReadNumericArray(pTable, nInFile, 1);
    std::memset(pTable + nInFile, 0, TableBytes() - nInFile);
    Skip(m_nSpace - nInFile);
    if (SeekBehindSpace() != 0)
    {
        // What the space has beyond the table, once more; so far that this is how these files are read.
        m_cStream.Seek(SeekBehindSpace(), SEEK_CUR);
    }
}

/// By reading, so that an end is seen.
void ClBmpReader::Skip(std::uint64_t nBytes) const
{
    unsigned char aSkipped[4096];
    while (nBytes > 0)
    {
        const std::uint64_t nNow = std::min<std::uint64_t>(nBytes, sizeof aSkipped);
        m_cStream.ReadNumericArray(aSkipped, nNow, 1);
        nBytes -= nNow;
    }
}

void ClBmpReader::ReadRows(unsigned char* pPixels) const
{
    const std::ptrdiff_t nRow = ClBitmap::RowBytes(m_cHeader.biBitCount, m_cHeader.biWidth);
    const int nLines = nRow == 0 ? 0 : m_cHeader.biHeight;
    unsigned char* pFirst = m_bTopDown && nLines > 0 ? pPixels + nRow * (nLines - 1) : pPixels;
    const std::ptrdiff_t nStep = m_bTopDown ? -nRow : nRow;
    if (IsRle())
    {
        std::memset(pPixels, 0, ClBitmapLayout::PixelBytes(m_cHeader));
        // The lines are counted upward from the first one, so of a top-down picture there is only that one.
        ClBitmapRle cRle(pFirst, nStep, m_cHeader.biWidth, m_bTopDown ? std::min(nLines, 1) : nLines);
        cRle.Decode(m_cStream);
        return;
    }
    for (int i = 0; i < nLines; ++i)
    {
        m_cStream.ReadNumericArray(pFirst + i * nStep, static_cast<unsigned long>(nRow), 1);
    }
}
} // namespace

void ClBitmap::Load(ClStream& cStream)
{
    ClearFree();
    const bool bBigEndian = cStream.SetBigEndian4Read(false);
    const bool bCheckShort = std::exchange(cStream.m_bCheckShort, true);
    try
    {
        ClBmpReader cReader(cStream);
        cReader.ReadHeaders();
        unsigned char* pBlock = cReader.NewBlock();
        ConvertBadAlloc(
            [&] {
                m_pBIH.reset(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock),
                             boost::checked_array_deleter<tagBITMAPINFOHEADER>());
            });
        ResetPixel();
        m_pPalette = reinterpret_cast<std::uint32_t*>(pBlock + ClBitmapLayout::nHeaderSize);
        cReader.ReadTable(pBlock + ClBitmapLayout::nHeaderSize);
        cReader.ReadRows(m_pPixels.get());
    }
    catch (...)
    {
        ClearFree();
        throw;
    }
    cStream.m_bCheckShort = bCheckShort;
    cStream.SetBigEndian4Read(bBigEndian);
}

void ClBitmap::Load(const char* szName)
{
    ClearFree();
    ClFileStream cStream(szName, "rb");
    Load(cStream);
}

void ClBitmap::Store(ClStream& cStream) const
{
    CheckStorable(*this);
    tagBITMAPINFOHEADER& cHeader = Header();
    const ClLittleEndianWriting cLittleEndian(cStream);
    const auto nOffset = static_cast<std::uint32_t>(cHeader.biSize + ClBitmapLayout::TableBytes(cHeader) +
                                                    ClBitmapLayout::nFileHeaderSize);
    Write<std::uint16_t>(cStream, nSignature);
    Write<std::uint32_t>(cStream, WrappedPixelBytes(cHeader) + nOffset);
    Write<std::uint16_t>(cStream, 0);
    Write<std::uint16_t>(cStream, 0);
    Write<std::uint32_t>(cStream, nOffset);
    MendHeader(cHeader); // only now: the numbers above have always counted the table as it was
    WriteHeader(cStream, cHeader);
    WriteBytes(cStream, m_pPalette, ClBitmapLayout::TableBytes(cHeader));
    WriteBytes(cStream, m_pPixels.get(), ClBitmapLayout::PixelBytes(cHeader));
}

void ClBitmap::Store(const char* szName) const
{
    CheckStorable(*this); // before the file of that name loses what it holds
    ClFileStream cStream(szName, "wb");
    Store(cStream);
    cStream.Close();
}
