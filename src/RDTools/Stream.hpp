#pragma once

#include "RDTools/Exception.hpp"

#include <type_traits>

/// A stream of bytes, under all file formats: numbers in either byte order, arrays, texts, and access bit by bit.
///
/// Bytes    The host is little-endian. A new stream is big-endian, network order, in both directions.
/// Counts   Operations on bytes return how many bytes moved. A count too small is a failure only if m_bCheckShort is
///          set: ClExStreamUnexpectedEnd -201, for writing, too. Without it, what was not read keeps its old value.
/// Bits     Run from the most significant bit of a byte to the least. While a byte is partly used, operations on bytes
///          raise ClException -39: BitFlush after bit output or ReadBitFlush after bit input comes first.
/// Thread   A stream belongs to one thread.
class ClStream
{
public:
    ClStream() = default;
    ClStream(const ClStream&) = delete;
    ClStream& operator=(const ClStream&) = delete;
    virtual ~ClStream() = default; ///< flushes nothing: a derived class closes in its own destructor

    /// Runs Flush if bits were written. No bits are pending afterwards, whatever happens. Errors: those of Flush.
    virtual void Close();
    virtual long Pos() const;  ///< bytes from the start; 0 where a stream cannot tell
    virtual long Size() const; ///< bytes; 0 where a stream cannot tell
    virtual void Flush();      ///< BitFlush, and what a derived class holds back
    /// Moves to nOffset bytes from the start (nOrigin 0), the current position (1) or the end (2); 0 if that went well.
    virtual int Seek(long nOffset, int nOrigin);
    virtual const char* Name() const;
    virtual bool IsSeekable() const = 0;
    /// Moves up to nSize bytes as they are and returns how many moved. The only access of a derived class to its
    /// bytes: neither the byte order nor m_bCheckShort play a part.
    virtual unsigned long WriteRaw(const void* pData, unsigned long nSize) = 0;
    virtual unsigned long ReadRaw(void* pData, unsigned long nSize) = 0;

    /// Bytes from the current position to the end; the greatest number where the stream cannot tell. For readers, to
    /// refuse what a damaged file promises before they make room for it.
    unsigned long BytesAhead() const;
    /// What every operation on bytes does with its count. Errors: fewer than wanted ClExStreamUnexpectedEnd -201, if
    /// m_bCheckShort is set.
    void CheckMoved(unsigned long nMoved, unsigned long nWanted) const;
    /// Whether the host's byte order differs from network order: it is little-endian.
    static constexpr bool IsNotNetorder() { return true; }
    bool SetBigEndian4Read(bool bBigEndian);  ///< returns the previous state
    bool SetBigEndian4Write(bool bBigEndian); ///< returns the previous state
    void SetBigEndian(bool bBigEndian);
    bool GetBigEndian() const { return m_bSwapRead && m_bSwapWrite; }
    bool GetBigEndian4Read() const { return m_bSwapRead; }
    bool GetBigEndian4Write() const { return m_bSwapWrite; }

    /// One number of 1, 2, 4 or 8 bytes in the stream's byte order. Errors: -39; -201 if m_bCheckShort is set.
    template <class T> unsigned long ReadAutoSwap(T& value)
    {
        static_assert(IsNumber<T> && !std::is_same_v<T, bool>, "a byte of a file need not be a valid bool");
        return static_cast<unsigned long>(ReadNumericArray(&value, 1, sizeof(T)));
    }
    template <class T> unsigned long WriteAutoSwap(const T& value)
    {
        static_assert(IsNumber<T>);
        return static_cast<unsigned long>(WriteNumericArray(&value, 1, sizeof(T)));
    }

    /// nCount numbers of nSize bytes each; ends at the first short count. Returns the bytes moved, or -1, nothing
    /// moved, if nSize is none of 1, 2, 4 and 8. Errors: -39; -201 if m_bCheckShort is set.
    long WriteNumericArray(const void* pData, unsigned long nCount, unsigned long nSize);
    long ReadNumericArray(void* pData, unsigned long nCount, unsigned long nSize);

    /// A text: a 32-bit length that counts the terminator, then the characters with the terminator. A null text is
    /// written as an empty one. Errors: as above; a text of 4 GiB or more ClExRange -35.
    unsigned long WriteString(const char* sz);
    /// Array-deletes *psz and replaces it by an array-new text, null for a length of 0 or after a failure. The text
    /// always ends within its block. Where the stream can tell, a length beyond its end allocates only what is there.
    /// Errors: as above; ClExBadAlloc -102.
    unsigned long ReadString(char** psz);
    /// Reads into a buffer of nSize bytes. Errors: as above; a text longer than the buffer ClException -21, the buffer
    /// then holds the empty text and the stream stands behind the length.
    unsigned long ReadString(char* sz, unsigned long nSize);

    /// Appends the low nBits of nValue, 0 to 32, the most significant first. Errors: more bits ClExRange -35; a byte
    /// that cannot be written ClExStreamFailToWrite -202; after ReadBits without ReadBitFlush -39.
    void WriteBits(unsigned int nValue, unsigned long nBits);
    /// Gives the next nBits, 0 to 32, as a number. Errors: more bits ClExRange -35; a short read
    /// ClExStreamUnexpectedEnd -201 whatever m_bCheckShort says, no bits are pending then and nValue is unchanged;
    /// after WriteBits without BitFlush -39.
    void ReadBits(unsigned int& nValue, unsigned long nBits);
    /// Writes a partly filled byte. On a seekable stream its other bits stay as they are in the file, elsewhere they
    /// become 0. The stream stands behind that byte. After bit input nothing is written: the rest of the byte is
    /// dropped. Errors: ClExStreamFailToWrite -202, no bits are pending then.
    void BitFlush();
    void ReadBitFlush(); ///< drops the rest of a partly read byte
    /// The position in bits of the next one to be written or read, where Pos can tell.
    unsigned long BitPos() const;
    /// BitFlush, then moves to a position in bits, to read or to write from there. Within a byte, Pos() is that byte.
    /// Returns 0, 6 if the stream cannot seek, or what Seek returned.
    int BitPosSet(unsigned long nBit);
    /// BitPosSet relative to nOrigin as for Seek. From the current position the count starts at Pos() and the bits used
    /// of the buffered byte: within a byte that is being read, 8 bits more than BitPos. Returns 6 if the stream cannot
    /// seek, 22 for another origin or a place before the start, otherwise the result of BitPosSet.
    int BitSeek(long nOffset, int nOrigin);
    /// Bits that hold nValue: the place of its highest set bit plus one, 32 if a bit from 31 upward is set, 0 for 0.
    static unsigned long BitsNeedForWrite(long nValue);
    /// Every operation on bytes begins with it. Errors: a byte is partly used: ClException -39.
    void CheckBitPosByteAlignment() const;

    bool m_bBitWrite = false;       ///< bits were written: Close flushes
    bool m_bCheckShort = false;     ///< a short read or write is a failure
    unsigned long m_nBitPos = 0;    ///< bits used of the bit buffer, 0 to 7
    unsigned char m_cBitBuffer = 0; ///< the partly used byte
    bool m_bSwapRead = true;        ///< numbers are read with reversed bytes
    bool m_bSwapWrite = true;       ///< numbers are written with reversed bytes

private:
    template <class T>
    static constexpr bool IsNumber = (std::is_arithmetic_v<T> || std::is_enum_v<T>)&&(sizeof(T) == 1 ||
                                                                                      sizeof(T) == 2 ||
                                                                                      sizeof(T) == 4 || sizeof(T) == 8);

    /// What the used bits of the buffered byte mean; only while m_nBitPos is not 0.
    enum EBitUse : unsigned char
    {
        eWritten, ///< they wait to be written at Pos()
        eRead,    ///< they are taken from the byte before Pos()
        ePassed   ///< BitPosSet stands within the byte at Pos()
    };

    void WriteBitBuffer();

    EBitUse m_eBitUse = eWritten;
};
