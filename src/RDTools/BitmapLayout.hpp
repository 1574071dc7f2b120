#pragma once

#include "RDTools/Bitmap.hpp"

#include <cstddef>
#include <cstdint>

/// How the parts of a packed bitmap follow one another, and whether they fit into their block: an object walks one
/// block from front to back and counts what is left of it. Of a block of unknown size everything can be taken. So it
/// can of a block that is used up exactly: a remainder of 0 has always meant that nothing is known.
/// Errors  ClExVelmarin and ClException as at ClBitmap::Attach.
class ClBitmapLayout
{
public:
    static constexpr unsigned long nFileHeaderSize = 14; ///< bytes, beginning with the letters B and M
    static constexpr unsigned long nHeaderSize = 40;
    static constexpr unsigned long nEntrySize = 4; ///< bytes of a table entry

    static bool BeginsWithFileHeader(const unsigned char* p) { return p[0] == 'B' && p[1] == 'M'; }
    static unsigned long TableEntries(const tagBITMAPINFOHEADER& cHeader);
    static unsigned long TableBytes(const tagBITMAPINFOHEADER& cHeader) { return nEntrySize * TableEntries(cHeader); }
    /// Address of the table behind a header, null if there is none.
    static std::uint32_t* TableBehind(tagBITMAPINFOHEADER* pBI);
    /// Bytes from row to row without wrapping.
    static std::int64_t HonestRowBytes(std::int64_t nBitCount, std::int64_t nWidth);
    /// Whether neither size is negative and a row fits 32 bits.
    static bool IsHonest(const tagBITMAPINFOHEADER& cHeader);
    /// Bytes of the pixels that there are to copy, fill or compare; none if the size is negative.
    static std::size_t PixelBytes(const tagBITMAPINFOHEADER& cHeader);
    static bool HoldsPixels(const unsigned char* pDIB, unsigned long nSize); ///< see ClBitmap
    /// A block for a header, a table of nTableBytes and, if bWithPixels, the pixels; nothing in it is initialised. It
    /// is an array of headers, by which type it is deleted. Errors: -102, also for a size that is not honest.
    static unsigned char* NewBlock(int nWidth, int nHeight, int nBitCount, unsigned long nTableBytes, bool bWithPixels);

    explicit ClBitmapLayout(unsigned long nSize) : m_nSize(nSize), m_nRemainder(nSize), m_bKnown(nSize != 0) {}

    /// The header's place in the block, which may begin with a file header; the header itself is not checked.
    const unsigned char* TakeHeader(const unsigned char* pDIB);
    std::uint32_t* TakeTable(tagBITMAPINFOHEADER* pBI); ///< null if there is none
    void CheckPixels(const tagBITMAPINFOHEADER& cHeader) const;

private:
    bool IsKnown() const { return m_bKnown && m_nRemainder != 0; }
    bool Holds(unsigned long nBytes) const { return !IsKnown() || m_nRemainder >= nBytes; }
    void Take(unsigned long nBytes);
    static bool Fits(const tagBITMAPINFOHEADER& cHeader, unsigned long nAvailable);

    unsigned long m_nSize;
    unsigned long m_nRemainder;
    bool m_bKnown;
};
