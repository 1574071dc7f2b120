#include "RDTools/Stream.hpp"

#include "MemoryStream.hpp"
#include "TestTools.hpp"

#include <cstdint>
#include <limits>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr char szMisaligned[] = "The input is corrupt; it can be a memoryblock or a file.\n"
                                "the last bit I/O was finish with out bitflush.";
constexpr char szEnd[] = "Unexpected end of file.\nUnexpected end of stream";
constexpr char szLost[] = "Failed to write the data.\nFail to write BitBuffer into stream";

unsigned int Read(ClStream& cStream, unsigned long nBits)
{
    unsigned int nValue = 0xDEAD;
    cStream.ReadBits(nValue, nBits);
    return nValue;
}

TEST(StreamBits, FlushFillsTheByteUpWithZeroes)
{
    for (const bool bSeekable : {true, false})
    {
        ClMemoryStream cStream({}, bSeekable);
        cStream.WriteBits(5, 3);
        EXPECT_TRUE(cStream.m_aBytes.empty());
        EXPECT_EQ(3u, cStream.m_nBitPos);
        cStream.BitFlush();
        EXPECT_EQ(Bytes{0xA0}, cStream.m_aBytes);
        EXPECT_EQ(0u, cStream.m_nBitPos);
        cStream.BitFlush();
        EXPECT_EQ(Bytes{0xA0}, cStream.m_aBytes) << "nothing is pending any more";
    }
}

TEST(StreamBits, ReadingTakesTheMostSignificantBitsFirst)
{
    ClMemoryStream cStream({0xA5});
    EXPECT_EQ(5u, Read(cStream, 3));
    EXPECT_EQ(3u, cStream.m_nBitPos);
    EXPECT_EQ(5u, Read(cStream, 5));
    EXPECT_EQ(0u, cStream.m_nBitPos);
}

TEST(StreamBits, OperationsOnBytesRefuseAPartlyUsedByte)
{
    ClMemoryStream cStream;
    cStream.WriteBits(0xFF, 4);
    unsigned char aBytes[8] = {};
    char* szText = nullptr;
    EXPECT_RAISES(cStream.WriteAutoSwap(aBytes[0]), ClException, -39, szMisaligned);
    EXPECT_RAISES_CODE(cStream.ReadAutoSwap(aBytes[0]), -39);
    EXPECT_RAISES_CODE(cStream.WriteNumericArray(aBytes, 1, 1), -39);
    EXPECT_RAISES_CODE(cStream.ReadNumericArray(aBytes, 1, 8), -39);
    EXPECT_RAISES_CODE(cStream.WriteNumericArray(aBytes, 1, 3), -39);
    EXPECT_RAISES_CODE(cStream.WriteString(""), -39);
    EXPECT_RAISES_CODE(cStream.ReadString(&szText), -39);
    EXPECT_RAISES_CODE(cStream.ReadString(nullptr, 0), -39);
    EXPECT_RAISES_CODE(cStream.CheckBitPosByteAlignment(), -39);
    EXPECT_EQ(0u, cStream.m_nReads + cStream.m_nWrites);
    cStream.BitFlush();
    EXPECT_EQ(1u, cStream.WriteAutoSwap(aBytes[0]));
    EXPECT_EQ((Bytes{0xF0, 0}), cStream.m_aBytes);
}

TEST(StreamBits, NoBitsDoNothing)
{
    ClMemoryStream cStream({0xA5});
    cStream.WriteBits(0xFF, 0);
    EXPECT_FALSE(cStream.m_bBitWrite);
    EXPECT_EQ(0u, Read(cStream, 0));
    EXPECT_EQ(0u, cStream.m_nBitPos);
    EXPECT_EQ(0u, cStream.m_nReads + cStream.m_nWrites);
}

TEST(StreamBits, MoreBitsThanANumberHasAreRefused)
{
    ClMemoryStream cStream(Bytes(16));
    unsigned int nValue = 7;
    for (const unsigned long nBits : {33ul, 64ul, ~0ul})
    {
        EXPECT_RAISES_CODE(cStream.WriteBits(1, nBits), -35);
        EXPECT_RAISES_CODE(cStream.ReadBits(nValue, nBits), -35);
    }
    EXPECT_EQ(7u, nValue);
    EXPECT_FALSE(cStream.m_bBitWrite);
    EXPECT_EQ(0u, cStream.m_nReads + cStream.m_nWrites);
}

/// Bits one after the other, the definition of the format.
class ClBitList
{
public:
    void Append(unsigned int nValue, unsigned long nBits)
    {
        for (unsigned long i = nBits; i-- > 0;)
        {
            m_aBits.push_back((nValue >> i & 1) != 0);
        }
    }
    Bytes Packed() const
    {
        Bytes aBytes((m_aBits.size() + 7) / 8);
        for (std::size_t i = 0; i < m_aBits.size(); ++i)
        {
            aBytes[i / 8] = static_cast<unsigned char>(aBytes[i / 8] | (m_aBits[i] ? 0x80u >> i % 8 : 0u));
        }
        return aBytes;
    }
    std::vector<bool> m_aBits;
};

TEST(StreamBits, FieldsOfEveryWidthComeThrough)
{
    for (unsigned int nSeed = 1; nSeed <= 20; ++nSeed)
    {
        struct ClField
        {
            unsigned int m_nValue;
            unsigned long m_nBits;
        };
        ClTestRandom cRandom(nSeed);
        std::vector<ClField> aFields;
        const bool bSeekable = nSeed % 2 == 0;
        ClMemoryStream cStream({}, bSeekable);
        ClBitList cBits;
        for (int i = 0; i < 200; ++i)
        {
            const ClField cField = {cRandom.Next(), static_cast<unsigned long>(cRandom.Below(33))};
            aFields.push_back(cField);
            cStream.WriteBits(cField.m_nValue, cField.m_nBits);
            cBits.Append(cField.m_nValue, cField.m_nBits);
            if (bSeekable)
            {
                ASSERT_EQ(cBits.m_aBits.size(), cStream.BitPos());
            }
        }
        EXPECT_TRUE(cStream.m_bBitWrite);
        cStream.BitFlush();
        ASSERT_EQ(cBits.Packed(), cStream.m_aBytes);

        cStream.Rewind();
        unsigned long nPos = 0;
        for (const ClField& cField : aFields)
        {
            const std::uint64_t nMask = (std::uint64_t(1) << cField.m_nBits) - 1;
            ASSERT_EQ(cField.m_nValue & nMask, Read(cStream, cField.m_nBits));
            nPos += cField.m_nBits;
            if (bSeekable)
            {
                ASSERT_EQ(nPos, cStream.BitPos());
            }
            ASSERT_EQ((nPos + 7) / 8, cStream.m_nPos) << "no byte is read before its time";
        }
    }
}

TEST(StreamBits, ShortReadIsAFailureWithoutTheFlag)
{
    for (const unsigned long nBits : {1ul, 8ul, 9ul, 17ul, 32ul})
    {
        for (unsigned long nThere = 0; nThere < (nBits + 7) / 8; ++nThere)
        {
            ClMemoryStream cStream(Bytes(nThere, 0xFF));
            unsigned int nValue = 7;
            EXPECT_RAISES(cStream.ReadBits(nValue, nBits), ClExStreamUnexpectedEnd, -201, szEnd);
            EXPECT_EQ(7u, nValue);
            EXPECT_EQ(0u, cStream.m_nBitPos);
        }
    }
    ClMemoryStream cStream({0xFF});
    Read(cStream, 3);
    unsigned int nValue = 7;
    EXPECT_RAISES(cStream.ReadBits(nValue, 6), ClExStreamUnexpectedEnd, -201, szEnd);
    EXPECT_EQ(0u, cStream.m_nBitPos);
}

TEST(StreamBits, ByteThatCannotBeWrittenIsAFailure)
{
    ClMemoryStream cStream;
    cStream.ShortAt(1);
    cStream.WriteBits(0xABC, 12);
    EXPECT_RAISES(cStream.BitFlush(), ClExStreamFailToWrite, -202, szLost);
    EXPECT_EQ(0u, cStream.m_nBitPos);
    cStream.Close();
    EXPECT_EQ(Bytes{0xAB}, cStream.m_aBytes) << "the lost bits stay lost";

    EXPECT_RAISES(cStream.WriteBits(0xABC, 12), ClExStreamFailToWrite, -202, szLost);
    cStream.Close();
    EXPECT_EQ(0u, cStream.m_nBitPos);

    cStream.WriteBits(1, 1);
    EXPECT_RAISES(cStream.Close(), ClExStreamFailToWrite, -202, szLost);
    cStream.Close();
}

TEST(StreamBits, CloseWritesWhatIsPending)
{
    ClMemoryStream cStream;
    cStream.WriteBits(1, 1);
    cStream.Close();
    EXPECT_EQ(Bytes{0x80}, cStream.m_aBytes);
    EXPECT_FALSE(cStream.m_bBitWrite);
    cStream.Close();
    EXPECT_EQ(Bytes{0x80}, cStream.m_aBytes);
}

TEST(StreamBits, CloseAfterInputWritesNothing)
{
    ClMemoryStream cStream({0xA5, 0xA5});
    Read(cStream, 3);
    cStream.Close();
    EXPECT_EQ(0u, cStream.m_nWrites);
    EXPECT_EQ(0u, cStream.m_nBitPos);
}

TEST(StreamBits, PartialByteInAFileIsMergedWithWhatStandsThere)
{
    ClMemoryStream cStream({0xFF, 0xFF, 0x0F});
    cStream.WriteBits(0, 11);
    cStream.BitFlush();
    EXPECT_EQ((Bytes{0x00, 0x1F, 0x0F}), cStream.m_aBytes);
    EXPECT_EQ(2, cStream.Pos());

    ClMemoryStream cPipe({0xFF, 0xFF}, false);
    cPipe.WriteBits(0, 3);
    cPipe.BitFlush();
    EXPECT_EQ((Bytes{0x00, 0xFF}), cPipe.m_aBytes);
    EXPECT_EQ(0u, cPipe.m_nReads);
}

TEST(StreamBits, FlushAfterInputDropsTheRestOfTheByteAndWritesNothing)
{
    ClMemoryStream cStream({0xA5, 0x5A});
    Read(cStream, 3);
    cStream.BitFlush();
    EXPECT_EQ(0x5Au, Read(cStream, 8));
    cStream.Rewind();
    Read(cStream, 3);
    cStream.ReadBitFlush();
    EXPECT_EQ(0u, cStream.m_nBitPos);
    EXPECT_EQ(0x5Au, Read(cStream, 8));
    EXPECT_EQ(0u, cStream.m_nWrites);
    EXPECT_EQ((Bytes{0xA5, 0x5A}), cStream.m_aBytes);
}

TEST(StreamBits, InputAndOutputDoNotMixWithinAByte)
{
    ClMemoryStream cStream({0xA5, 0x5A});
    Read(cStream, 3);
    EXPECT_RAISES(cStream.WriteBits(1, 1), ClException, -39, szMisaligned);
    cStream.ReadBitFlush();
    cStream.WriteBits(1, 1);
    unsigned int nValue = 0;
    EXPECT_RAISES(cStream.ReadBits(nValue, 1), ClException, -39, szMisaligned);
    cStream.BitFlush();
    EXPECT_EQ((Bytes{0xA5, 0xDA}), cStream.m_aBytes);
}

TEST(StreamBits, PositionCountsTheBitsOfAPartlyUsedByteOnce)
{
    ClMemoryStream cStream(Bytes(4));
    EXPECT_EQ(0u, cStream.BitPos());
    Read(cStream, 11);
    EXPECT_EQ(11u, cStream.BitPos());
    Read(cStream, 5);
    EXPECT_EQ(16u, cStream.BitPos());
    cStream.WriteBits(0, 3);
    EXPECT_EQ(19u, cStream.BitPos());
    cStream.BitFlush();
    EXPECT_EQ(24u, cStream.BitPos());
}

TEST(StreamBits, PositionWithinAByteServesReadingAndWriting)
{
    for (unsigned long nBit = 0; nBit <= 16; ++nBit)
    {
        ClMemoryStream cStream({0xA5, 0x3C, 0xFF});
        EXPECT_EQ(0, cStream.BitPosSet(nBit));
        EXPECT_EQ(nBit, cStream.BitPos());
        EXPECT_EQ(long(nBit / 8), cStream.Pos());
        EXPECT_EQ(nBit & 7, cStream.m_nBitPos);
        EXPECT_EQ(0xA53CFFu >> (16 - nBit) & 0xFF, Read(cStream, 8));
        EXPECT_EQ(nBit + 8, cStream.BitPos());

        EXPECT_EQ(0, cStream.BitPosSet(nBit));
        cStream.WriteBits(0x0, 2);
        cStream.WriteBits(0x7, 3);
        EXPECT_EQ(nBit + 5, cStream.BitPos());
        cStream.BitFlush();
        const unsigned int nExpected = (0xA53CFFu & ~(0x1Fu << (19 - nBit))) | 0x07u << (19 - nBit);
        const Bytes& aBytes = cStream.m_aBytes;
        EXPECT_EQ(nExpected, aBytes[0] * 0x10000u + aBytes[1] * 0x100u + aBytes[2]) << "from bit " << nBit;
    }
}

TEST(StreamBits, FlushFromAPositionWithinAByteStandsBehindItAndWritesNothing)
{
    ClMemoryStream cStream({0xA5, 0x3C});
    cStream.BitPosSet(3);
    cStream.BitFlush();
    EXPECT_EQ(8u, cStream.BitPos());
    cStream.BitPosSet(3);
    cStream.ReadBitFlush();
    EXPECT_EQ(8u, cStream.BitPos());
    cStream.BitPosSet(0);
    cStream.ReadBitFlush();
    EXPECT_EQ(0u, cStream.BitPos());
    EXPECT_EQ(0u, cStream.m_nWrites);
}

TEST(StreamBits, PositionMayStandBehindTheEnd)
{
    ClMemoryStream cStream({0xA5});
    EXPECT_EQ(0, cStream.BitPosSet(11));
    unsigned int nValue = 0;
    EXPECT_RAISES(cStream.ReadBits(nValue, 1), ClExStreamUnexpectedEnd, -201, szEnd);
    EXPECT_EQ(0, cStream.BitPosSet(11));
    cStream.WriteBits(3, 2);
    cStream.BitFlush();
    EXPECT_EQ((Bytes{0xA5, 0x18}), cStream.m_aBytes);
}

TEST(StreamBits, SettingThePositionWritesWhatIsPending)
{
    ClMemoryStream cStream;
    cStream.WriteBits(5, 3);
    EXPECT_EQ(0, cStream.BitPosSet(1));
    EXPECT_EQ(Bytes{0xA0}, cStream.m_aBytes);
    EXPECT_EQ(1u, Read(cStream, 2));
}

TEST(StreamBits, SeekCountsFromStartPositionAndEnd)
{
    ClMemoryStream cStream({0xA5, 0x3C, 0xFF});
    EXPECT_EQ(0, cStream.BitSeek(10, 0));
    EXPECT_EQ(10u, cStream.BitPos());
    EXPECT_EQ(0, cStream.BitSeek(-3, 1));
    EXPECT_EQ(7u, cStream.BitPos());
    EXPECT_EQ(0, cStream.BitSeek(6, 1));
    EXPECT_EQ(13u, cStream.BitPos());
    EXPECT_EQ(0, cStream.BitSeek(-10, 2));
    EXPECT_EQ(14u, cStream.BitPos());
    EXPECT_EQ(0, cStream.BitSeek(0, 2));
    EXPECT_EQ(24u, cStream.BitPos());
    cStream.BitSeek(8, 0);
    cStream.WriteBits(1, 1);
    EXPECT_EQ(0, cStream.BitSeek(0, 1));
    EXPECT_EQ(9u, cStream.BitPos());
    EXPECT_EQ((Bytes{0xA5, 0xBC, 0xFF}), cStream.m_aBytes);
}

TEST(StreamBits, SeekFromWithinAByteThatIsBeingReadCountsThatByteAsPassed)
{
    ClMemoryStream cStream(Bytes(4));
    Read(cStream, 3);
    EXPECT_EQ(0, cStream.BitSeek(0, 1));
    EXPECT_EQ(11u, cStream.BitPos()) << "meant: the count starts at Pos(), which is behind the byte";
}

TEST(StreamBits, SeekRefusesOtherOriginsAndPlacesBeforeTheStart)
{
    ClMemoryStream cStream(Bytes(4));
    Read(cStream, 3);
    EXPECT_EQ(22, cStream.BitSeek(0, 7));
    EXPECT_EQ(22, cStream.BitSeek(0, -1));
    EXPECT_EQ(22, cStream.BitSeek(-1, 0));
    EXPECT_EQ(22, cStream.BitSeek(-33, 2));
    EXPECT_EQ(22, cStream.BitSeek(-12, 1));
    EXPECT_EQ(22, cStream.BitSeek(std::numeric_limits<long>::min(), 0));
    EXPECT_EQ(3u, cStream.BitPos()) << "a refused seek changes nothing";
}

TEST(StreamBits, SeekWithoutSeekingIsRefusedFirst)
{
    ClMemoryStream cPipe(Bytes(4), false);
    cPipe.WriteBits(5, 3);
    EXPECT_EQ(6, cPipe.BitSeek(0, 0));
    EXPECT_EQ(6, cPipe.BitSeek(0, 7));
    EXPECT_EQ(6, cPipe.BitPosSet(0));
    EXPECT_EQ(3u, cPipe.m_nBitPos);
}

TEST(StreamBits, SeekThatTheStreamRefusesTellsSo)
{
    class ClStuckStream : public ClMemoryStream
    {
    public:
        using ClMemoryStream::ClMemoryStream;
        int Seek(long, int) override { return 29; }
    };
    ClStuckStream cStream({0xFF, 0xFF});
    EXPECT_EQ(29, cStream.BitPosSet(11));
    EXPECT_EQ(29, cStream.BitSeek(11, 0));
    EXPECT_EQ(0u, cStream.m_nBitPos);
    cStream.WriteBits(0, 3);
    EXPECT_RAISES(cStream.BitFlush(), ClExStreamFailToWrite, -202, szLost);
    EXPECT_EQ((Bytes{0xFF, 0xFF}), cStream.m_aBytes) << "never over the byte behind";
}

TEST(StreamBits, BitsNeededForANumber)
{
    EXPECT_EQ(0u, ClStream::BitsNeedForWrite(0));
    EXPECT_EQ(1u, ClStream::BitsNeedForWrite(1));
    EXPECT_EQ(2u, ClStream::BitsNeedForWrite(2));
    EXPECT_EQ(2u, ClStream::BitsNeedForWrite(3));
    EXPECT_EQ(8u, ClStream::BitsNeedForWrite(255));
    EXPECT_EQ(9u, ClStream::BitsNeedForWrite(256));
    EXPECT_EQ(31u, ClStream::BitsNeedForWrite(0x7FFFFFFF));
    EXPECT_EQ(32u, ClStream::BitsNeedForWrite(0x80000000));
    EXPECT_EQ(32u, ClStream::BitsNeedForWrite(0x100000000));
    EXPECT_EQ(32u, ClStream::BitsNeedForWrite(-1));
    EXPECT_EQ(32u, ClStream::BitsNeedForWrite(std::numeric_limits<long>::min()));
}
} // namespace
