#include "RDTools/Stream.hpp"

#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "numbers are reversed to become big-endian");

namespace
{
constexpr char szHeader[] = "RDTools/Stream.hpp";
constexpr char szModule[] = "RDTools/Stream";

// What C calls ENXIO and EINVAL; the numbers are part of the interface.
constexpr int nNotSeekable = 6;
constexpr int nInvalid = 22;

constexpr unsigned long nMostBits = std::numeric_limits<unsigned int>::digits;

/// Numbers pass through a buffer of this many bytes where their bytes are reversed.
constexpr unsigned long nSwapBytes = 4096;
/// Where they are not, one access moves at most this many numbers, which keeps its byte count far below 64 bits.
constexpr unsigned long nNumbersAtOnce = 1UL << 28;

bool IsNumberSize(unsigned long nSize)
{
    return nSize == 1 || nSize == 2 || nSize == 4 || nSize == 8;
}

/// Copies numbers of nSize bytes with their bytes in reversed order. Of a last number that is not complete, the bytes
/// that are there go to its high addresses.
void CopyReversed(const unsigned char* pIn, unsigned long nBytes, unsigned long nSize, unsigned char* pOut)
{
    for (unsigned long i = 0; i < nBytes; ++i)
    {
        pOut[i ^ (nSize - 1)] = pIn[i]; // nSize is a power of 2: mirrors the place within the number
    }
}

unsigned long NumbersAtOnce(unsigned long nCount, unsigned long nSize, bool bSwap)
{
    return nSize == 1 ? nCount : bSwap ? nSwapBytes / nSize : nNumbersAtOnce;
}

[[noreturn]] void ThrowUnexpectedEnd()
{
    throw ClExStreamUnexpectedEnd("Unexpected end of stream", FPC_ERROR_UNEXPECTED_EOF, false, szHeader, __LINE__);
}

[[noreturn]] void ThrowBitBufferLost()
{
    throw ClExStreamFailToWrite("Fail to write BitBuffer into stream", FPC_ERROR_WRITE_FAIL, false, szModule, __LINE__);
}

void CheckBitCount(unsigned long nBits)
{
    if (nBits > nMostBits)
    {
        throw ClExRange("more bits than the number has.", FPC_ERROR_PARAM_OUT_OF_RANGE, true, szModule, __LINE__);
    }
}

/// The high nBits, 0 to 8, of a byte.
unsigned char HighBits(unsigned char cByte, unsigned long nBits)
{
    return static_cast<unsigned char>(cByte & (0xFF00u >> nBits));
}

/// Position in bits; positions beyond all files wrap.
unsigned long InBits(long nBytes)
{
    return static_cast<unsigned long>(nBytes) * 8;
}
} // namespace

void ClStream::Close()
{
    if (m_bBitWrite)
    {
        m_bBitWrite = false;
        Flush();
    }
    m_nBitPos = 0;
}

long ClStream::Pos() const
{
    return 0;
}

long ClStream::Size() const
{
    return 0;
}

void ClStream::Flush()
{
    BitFlush();
}

int ClStream::Seek(long /*nOffset*/, int /*nOrigin*/)
{
    return 0;
}

const char* ClStream::Name() const
{
    return "Unknown Stream";
}

unsigned long ClStream::BytesAhead() const
{
    const long nPos = IsSeekable() ? Pos() : -1;
    const long nSize = nPos >= 0 ? Size() : 0;
    // A size of 0 is what ClStream itself tells: not to be trusted.
    return nSize <= 0 || nSize < nPos ? std::numeric_limits<unsigned long>::max()
                                      : static_cast<unsigned long>(nSize - nPos);
}

bool ClStream::SetBigEndian4Read(bool bBigEndian)
{
    return std::exchange(m_bSwapRead, bBigEndian);
}

bool ClStream::SetBigEndian4Write(bool bBigEndian)
{
    return std::exchange(m_bSwapWrite, bBigEndian);
}

void ClStream::SetBigEndian(bool bBigEndian)
{
    m_bSwapRead = bBigEndian;
    m_bSwapWrite = bBigEndian;
}

void ClStream::CheckMoved(unsigned long nMoved, unsigned long nWanted) const
{
    if (m_bCheckShort && nMoved < nWanted)
    {
        ThrowUnexpectedEnd();
    }
}

long ClStream::WriteNumericArray(const void* pData, unsigned long nCount, unsigned long nSize)
{
    CheckBitPosByteAlignment();
    if (!IsNumberSize(nSize))
    {
        return -1;
    }
    const bool bSwap = m_bSwapWrite && nSize > 1;
    const unsigned long nAtOnce = NumbersAtOnce(nCount, nSize, bSwap);
    const auto* pBytes = static_cast<const unsigned char*>(pData);
    unsigned char aReversed[nSwapBytes];
    unsigned long nTotal = 0;
    for (unsigned long nNow = 0; nCount > 0; nCount -= nNow)
    {
        nNow = std::min(nCount, nAtOnce);
        const unsigned long nBytes = nNow * nSize;
        if (bSwap)
        {
            CopyReversed(pBytes, nBytes, nSize, aReversed);
        }
        const unsigned long nMoved = WriteRaw(bSwap ? aReversed : pBytes, nBytes);
        nTotal += nMoved;
        CheckMoved(nMoved, nBytes);
        if (nMoved < nBytes)
        {
            break;
        }
        pBytes += nBytes;
    }
    return static_cast<long>(nTotal);
}

long ClStream::ReadNumericArray(void* pData, unsigned long nCount, unsigned long nSize)
{
    CheckBitPosByteAlignment();
    if (!IsNumberSize(nSize))
    {
        return -1;
    }
    const bool bSwap = m_bSwapRead && nSize > 1;
    const unsigned long nAtOnce = NumbersAtOnce(nCount, nSize, bSwap);
    auto* pBytes = static_cast<unsigned char*>(pData);
    unsigned char aReversed[nSwapBytes];
    unsigned long nTotal = 0;
    for (unsigned long nNow = 0; nCount > 0; nCount -= nNow)
    {
        nNow = std::min(nCount, nAtOnce);
        const unsigned long nBytes = nNow * nSize;
        const unsigned long nMoved = ReadRaw(bSwap ? aReversed : pBytes, nBytes);
        if (bSwap)
        {
            CopyReversed(aReversed, nMoved, nSize, pBytes);
        }
        nTotal += nMoved;
        CheckMoved(nMoved, nBytes);
        if (nMoved < nBytes)
        {
            break;
        }
        pBytes += nBytes;
    }
    return static_cast<long>(nTotal);
}

unsigned long ClStream::WriteString(const char* sz)
{
    const char* szText = sz == nullptr ? "" : sz;
    const unsigned long nSize = std::strlen(szText) + 1;
    if (nSize > std::numeric_limits<std::uint32_t>::max())
    {
        throw ClExRange("the text is too long for its length field.", FPC_ERROR_PARAM_OUT_OF_RANGE, true, szModule,
                        __LINE__);
    }
    const unsigned long nMoved = WriteAutoSwap(static_cast<std::uint32_t>(nSize));
    return nMoved + static_cast<unsigned long>(WriteNumericArray(szText, nSize, 1));
}

unsigned long ClStream::ReadString(char** psz)
{
    delete[] * psz;
    *psz = nullptr;
    std::uint32_t nLength = 0;
    const unsigned long nMoved = ReadAutoSwap(nLength);
    if (nMoved < sizeof nLength || nLength == 0)
    {
        return nMoved;
    }
    const unsigned long nAhead = BytesAhead();
    CheckMoved(nAhead, nLength);
    const unsigned long nSize = nAhead < nLength ? nAhead + 1 : nLength;
    std::unique_ptr<char[]> szText(NewArray<char>(nSize));
    const auto nText = static_cast<unsigned long>(ReadNumericArray(szText.get(), nSize, 1));
    szText[std::min(nText, nSize - 1)] = '\0'; // a damaged text may lack its terminator
    *psz = szText.release();
    return nMoved + nText;
}

unsigned long ClStream::ReadString(char* sz, unsigned long nSize)
{
    if (nSize > 0)
    {
        sz[0] = '\0';
    }
    std::uint32_t nLength = 0;
    const unsigned long nMoved = ReadAutoSwap(nLength);
    if (nMoved < sizeof nLength || nLength == 0)
    {
        return nMoved;
    }
    if (nLength > nSize)
    {
        throw ClException("the text does not fit into the buffer.", FPC_ERROR_TEMPLATE_SIZE, true, szModule, __LINE__);
    }
    const auto nText = static_cast<unsigned long>(ReadNumericArray(sz, nLength, 1));
    sz[std::min<unsigned long>(nText, nLength - 1)] = '\0';
    return nMoved + nText;
}

void ClStream::CheckBitPosByteAlignment() const
{
    if (m_nBitPos != 0)
    {
        throw ClException("the last bit I/O was finish with out bitflush.", FPC_ERROR_CORRUPT_DATA, true, szHeader,
                          __LINE__);
    }
}

/// Writes the bit buffer, which is given up first: a failure must not come again when the stream is closed.
void ClStream::WriteBitBuffer()
{
    m_nBitPos = 0;
    if (WriteRaw(&m_cBitBuffer, 1) != 1)
    {
        ThrowBitBufferLost();
    }
}

void ClStream::WriteBits(unsigned int nValue, unsigned long nBits)
{
    CheckBitCount(nBits);
    if (nBits == 0)
    {
        return;
    }
    if (m_eBitUse == eRead)
    {
        CheckBitPosByteAlignment();
    }
    m_bBitWrite = true;
    m_eBitUse = eWritten;
    while (nBits > 0)
    {
        const unsigned long nNow = std::min(8 - m_nBitPos, nBits);
        nBits -= nNow;
        const unsigned long nFree = 8 - m_nBitPos - nNow; // bits of the byte behind the new ones
        const unsigned int nPart = (nValue >> nBits) & (0xFFu >> (8 - nNow));
        m_cBitBuffer = static_cast<unsigned char>(HighBits(m_cBitBuffer, m_nBitPos) | nPart << nFree);
        m_nBitPos += nNow;
        if (m_nBitPos == 8)
        {
            WriteBitBuffer();
        }
    }
}

void ClStream::ReadBits(unsigned int& nValue, unsigned long nBits)
{
    CheckBitCount(nBits);
    if (m_eBitUse == eWritten)
    {
        CheckBitPosByteAlignment();
    }
    if (nBits == 0)
    {
        nValue = 0;
        return;
    }
    unsigned long nUsed = m_nBitPos;
    m_nBitPos = 0; // so it stays if the stream ends
    if (nUsed == 0 || m_eBitUse == ePassed)
    {
        if (ReadRaw(&m_cBitBuffer, 1) != 1)
        {
            ThrowUnexpectedEnd();
        }
    }
    m_eBitUse = eRead;
    const unsigned long nFirst = std::min(8 - nUsed, nBits);
    std::uint64_t nBuffer = m_cBitBuffer & (0xFFu >> nUsed); // the bits from the buffered byte on, ending with a byte
    nUsed += nFirst;
    const unsigned long nRest = nBits - nFirst;
    if (nRest > 0)
    {
        unsigned char aBytes[nMostBits / 8];
        const unsigned long nBytes = (nRest + 7) / 8;
        if (ReadRaw(aBytes, nBytes) != nBytes)
        {
            ThrowUnexpectedEnd();
        }
        for (unsigned long i = 0; i < nBytes; ++i)
        {
            nBuffer = nBuffer << 8 | aBytes[i];
        }
        m_cBitBuffer = aBytes[nBytes - 1];
        nUsed = nRest - (nBytes - 1) * 8;
    }
    nValue = static_cast<unsigned int>(nBuffer >> (8 - nUsed));
    m_nBitPos = nUsed & 7;
}

void ClStream::BitFlush()
{
    const unsigned long nUsed = m_nBitPos;
    m_nBitPos = 0;
    if (nUsed == 0)
    {
        return;
    }
    if (m_eBitUse == ePassed)
    {
        Seek(1, SEEK_CUR);
    }
    if (m_eBitUse != eWritten)
    {
        return;
    }
    m_cBitBuffer = HighBits(m_cBitBuffer, nUsed);
    unsigned char cInFile = 0;
    if (IsSeekable() && ReadRaw(&cInFile, 1) == 1)
    {
        if (Seek(-1, SEEK_CUR) != 0)
        {
            ThrowBitBufferLost(); // never over the byte behind
        }
        m_cBitBuffer = static_cast<unsigned char>(m_cBitBuffer | (cInFile & (0xFFu >> nUsed)));
    }
    WriteBitBuffer();
}

void ClStream::ReadBitFlush()
{
    if (m_nBitPos != 0 && m_eBitUse == ePassed)
    {
        Seek(1, SEEK_CUR);
    }
    m_nBitPos = 0;
}

unsigned long ClStream::BitPos() const
{
    const unsigned long nBit = InBits(Pos()) + m_nBitPos;
    return m_nBitPos != 0 && m_eBitUse == eRead ? nBit - 8 : nBit;
}

int ClStream::BitPosSet(unsigned long nBit)
{
    if (!IsSeekable())
    {
        return nNotSeekable;
    }
    BitFlush();
    const int nResult = Seek(static_cast<long>(nBit / 8), SEEK_SET);
    if (nResult != 0 || (nBit & 7) == 0)
    {
        return nResult;
    }
    m_cBitBuffer = 0;
    if (ReadRaw(&m_cBitBuffer, 1) == 1)
    {
        Seek(-1, SEEK_CUR);
    }
    m_eBitUse = ePassed;
    m_nBitPos = nBit & 7;
    return 0;
}

int ClStream::BitSeek(long nOffset, int nOrigin)
{
    if (!IsSeekable())
    {
        return nNotSeekable;
    }
    unsigned long nFrom = 0;
    switch (nOrigin)
    {
    case SEEK_SET: break;
    case SEEK_CUR: nFrom = InBits(Pos()) + m_nBitPos; break;
    case SEEK_END: nFrom = InBits(Size()); break;
    default: return nInvalid;
    }
    const unsigned long nBit = nFrom + static_cast<unsigned long>(nOffset);
    const bool bWrapped = nOffset < 0 ? nBit > nFrom : nBit < nFrom;
    return bWrapped ? nInvalid : BitPosSet(nBit);
}

unsigned long ClStream::BitsNeedForWrite(long nValue)
{
    constexpr unsigned long nMostUsed = 31;
    const auto nBits = static_cast<unsigned long>(nValue);
    if (nBits >> nMostUsed != 0)
    {
        return nMostBits;
    }
    unsigned long nPlace = 0;
    while (nBits >> nPlace != 0)
    {
        ++nPlace;
    }
    return nPlace;
}
