#include "RDTools/Stream.hpp"

#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "TestTools.hpp"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <type_traits>
#include <unistd.h>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr char szEnd[] = "Unexpected end of file.\nUnexpected end of stream";

/// A stream that overrides nothing it need not.
class ClBareStream : public ClStream
{
public:
    bool IsSeekable() const override { return false; }
    unsigned long WriteRaw(const void*, unsigned long) override { return 0; }
    unsigned long ReadRaw(void*, unsigned long) override { return 0; }
    void Flush() override
    {
        ++m_nFlushes;
        ClStream::Flush();
    }

    int m_nFlushes = 0;
};

template <class T> Bytes Written(const T& value, bool bBigEndian)
{
    ClMemoryStream cStream;
    cStream.SetBigEndian(bBigEndian);
    EXPECT_EQ(sizeof(T), cStream.WriteAutoSwap(value));
    return cStream.m_aBytes;
}

TEST(Stream, NewOneHasBigEndianSelectedAndReportsShortCountsOnly)
{
    const ClBareStream cStream;
    EXPECT_FALSE(cStream.m_bBitWrite);
    EXPECT_FALSE(cStream.m_bCheckShort);
    EXPECT_EQ(0u, cStream.m_nBitPos);
    EXPECT_EQ(0, cStream.m_cBitBuffer);
    EXPECT_TRUE(cStream.m_bSwapRead);
    EXPECT_TRUE(cStream.m_bSwapWrite);
    EXPECT_TRUE(ClStream::IsNotNetorder());
    static_assert(!std::is_copy_constructible_v<ClStream>);
    static_assert(std::has_virtual_destructor_v<ClStream>);
}

TEST(Stream, BareOneIsNamelessAndStandsNowhere)
{
    ClBareStream cStream;
    EXPECT_EQ(0, cStream.Pos());
    EXPECT_EQ(0, cStream.Size());
    EXPECT_EQ(0, cStream.Seek(7, 0));
    EXPECT_STREQ("Unknown Stream", cStream.Name());
}

TEST(Stream, SettersOfTheByteOrderReturnThePreviousState)
{
    ClBareStream cStream;
    EXPECT_TRUE(cStream.SetBigEndian4Read(false));
    EXPECT_FALSE(cStream.SetBigEndian4Read(false));
    EXPECT_FALSE(cStream.GetBigEndian4Read());
    EXPECT_TRUE(cStream.GetBigEndian4Write());
    EXPECT_FALSE(cStream.GetBigEndian());
    EXPECT_FALSE(cStream.SetBigEndian4Read(true));
    EXPECT_TRUE(cStream.GetBigEndian());
    EXPECT_TRUE(cStream.SetBigEndian4Write(false));
    EXPECT_FALSE(cStream.GetBigEndian4Write());
    EXPECT_FALSE(cStream.GetBigEndian());
    cStream.SetBigEndian(true);
    EXPECT_TRUE(cStream.m_bSwapRead && cStream.m_bSwapWrite);
    cStream.SetBigEndian(false);
    EXPECT_FALSE(cStream.m_bSwapRead || cStream.m_bSwapWrite);
}

TEST(Stream, WritesNumbersInEitherByteOrder)
{
    EXPECT_EQ((Bytes{0, 0, 0, 1}), Written<std::uint32_t>(1, true));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), Written<std::uint32_t>(1, false));
    EXPECT_EQ((Bytes{0xFE}), Written<signed char>(-2, true));
    EXPECT_EQ((Bytes{0xFE}), Written<signed char>(-2, false));
    EXPECT_EQ((Bytes{0x12, 0x34}), Written<std::uint16_t>(0x1234, true));
    EXPECT_EQ((Bytes{0x34, 0x12}), Written<std::uint16_t>(0x1234, false));
    EXPECT_EQ((Bytes{1, 2, 3, 4, 5, 6, 7, 8}), Written<std::int64_t>(0x0102030405060708, true));
    EXPECT_EQ((Bytes{8, 7, 6, 5, 4, 3, 2, 1}), Written<std::int64_t>(0x0102030405060708, false));
    EXPECT_EQ((Bytes{0xBF, 0x80, 0, 0}), Written(-1.0f, true));
    EXPECT_EQ((Bytes{0x3F, 0xE0, 0, 0, 0, 0, 0, 0}), Written(0.5, true));
    EXPECT_EQ((Bytes{0, 0, 0, 0, 0, 0, 0xE0, 0x3F}), Written(0.5, false));
}

TEST(Stream, ReadsNumbersInEitherByteOrder)
{
    ClMemoryStream cStream({1, 2, 3, 4, 1, 2, 3, 4, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF});
    std::uint32_t n32 = 0;
    EXPECT_EQ(4u, cStream.ReadAutoSwap(n32));
    EXPECT_EQ(0x01020304u, n32);
    cStream.SetBigEndian4Read(false);
    EXPECT_EQ(4u, cStream.ReadAutoSwap(n32));
    EXPECT_EQ(0x04030201u, n32);
    cStream.SetBigEndian4Read(true);
    double dHalf = 0;
    EXPECT_EQ(8u, cStream.ReadAutoSwap(dHalf));
    EXPECT_EQ(0.5, dHalf);
    signed char nSmall = 0;
    EXPECT_EQ(1u, cStream.ReadAutoSwap(nSmall));
    EXPECT_EQ(-128, nSmall);
    std::uint16_t n16 = 0x2211;
    EXPECT_EQ(1u, cStream.ReadAutoSwap(n16));
    EXPECT_EQ(0xFF11, n16) << "the byte that is there is the highest, the other keeps its value";
}

TEST(Stream, ShortNumberIsAFailureOnlyIfTheFlagIsSet)
{
    for (const bool bBigEndian : {true, false})
    {
        ClMemoryStream cStream({1, 2, 3});
        cStream.SetBigEndian(bBigEndian);
        std::uint32_t n = 0;
        EXPECT_EQ(3u, cStream.ReadAutoSwap(n));
        EXPECT_EQ(bBigEndian ? 0x01020300u : 0x00030201u, n);
        EXPECT_EQ(0u, cStream.ReadAutoSwap(n));
        cStream.ShortAt(5);
        EXPECT_EQ(2u, cStream.WriteAutoSwap(n));
        EXPECT_EQ(5u, cStream.m_aBytes.size());

        cStream.m_bCheckShort = true;
        cStream.Rewind();
        EXPECT_EQ(4u, cStream.ReadAutoSwap(n));
        EXPECT_RAISES(cStream.ReadAutoSwap(n), ClExStreamUnexpectedEnd, -201, szEnd);
        EXPECT_RAISES(cStream.WriteAutoSwap(n), ClExStreamUnexpectedEnd, -201, szEnd);
    }
}

TEST(Stream, FailuresOfTheStreamItselfComeThrough)
{
    ClMemoryStream cStream;
    cStream.FailAt(2);
    std::uint32_t n = 0;
    EXPECT_RAISES_CODE(cStream.WriteAutoSwap(n), -202);
    cStream.Rewind();
    EXPECT_RAISES_CODE(cStream.ReadAutoSwap(n), -203);
}

/// Numbers 1, 2, 3... of nSize bytes as they stand in a file.
Bytes CountingNumbers(unsigned long nCount, unsigned long nSize, bool bBigEndian)
{
    Bytes aBytes;
    for (std::uint64_t n = 1; n <= nCount; ++n)
    {
        for (unsigned long i = 0; i < nSize; ++i)
        {
            aBytes.push_back(static_cast<unsigned char>(n >> 8 * (bBigEndian ? nSize - 1 - i : i)));
        }
    }
    return aBytes;
}

TEST(Stream, ArraysOfEverySizeComeThroughInBothByteOrders)
{
    constexpr unsigned long nCount = 5000; // more than passes at once
    for (const unsigned long nSize : {1ul, 2ul, 4ul, 8ul})
    {
        const Bytes aLittle = CountingNumbers(nCount, nSize, false);
        for (const bool bBigEndian : {true, false})
        {
            ClMemoryStream cStream;
            cStream.SetBigEndian(bBigEndian);
            cStream.m_bCheckShort = true;
            EXPECT_EQ(long(nCount * nSize), cStream.WriteNumericArray(aLittle.data(), nCount, nSize));
            EXPECT_EQ(CountingNumbers(nCount, nSize, bBigEndian), cStream.m_aBytes);

            cStream.Rewind();
            const ClGuardedBytes cRead(nCount * nSize); // on no alignment of their own
            EXPECT_EQ(long(nCount * nSize), cStream.ReadNumericArray(cRead.Data(), nCount, nSize));
            EXPECT_EQ(0, std::memcmp(aLittle.data(), cRead.Data(), cRead.Size()));
            EXPECT_EQ(0, cStream.ReadNumericArray(nullptr, 0, nSize));
            EXPECT_EQ(0, cStream.WriteNumericArray(nullptr, 0, nSize));
        }
    }
}

TEST(Stream, ArraysOfBytesMoveInOneAccess)
{
    Bytes aBytes(100000, 7);
    ClMemoryStream cStream;
    cStream.WriteNumericArray(aBytes.data(), aBytes.size(), 1);
    cStream.Rewind();
    cStream.ReadNumericArray(aBytes.data(), aBytes.size(), 1);
    EXPECT_EQ(1u, cStream.m_nWrites);
    EXPECT_EQ(1u, cStream.m_nReads);
}

TEST(Stream, ArraysOfOtherSizesAreRefusedAndMoveNothing)
{
    ClMemoryStream cStream({1, 2, 3, 4});
    unsigned char aBytes[32] = {};
    for (const unsigned long nSize : {0ul, 3ul, 5ul, 6ul, 7ul, 9ul, 16ul})
    {
        EXPECT_EQ(-1, cStream.WriteNumericArray(aBytes, 1, nSize));
        EXPECT_EQ(-1, cStream.ReadNumericArray(aBytes, 1, nSize));
    }
    EXPECT_EQ(0u, cStream.m_nReads + cStream.m_nWrites);
}

TEST(Stream, ShortArraysEndAtTheFirstByteThatIsMissing)
{
    for (const unsigned long nSize : {1ul, 2ul, 4ul, 8ul})
    {
        for (const bool bBigEndian : {true, false})
        {
            for (std::size_t nThere = 0; nThere < 3 * nSize; ++nThere)
            {
                const Bytes aWhole = CountingNumbers(3, nSize, bBigEndian);
                ClMemoryStream cStream(aWhole);
                cStream.SetBigEndian(bBigEndian);
                cStream.ShortAt(nThere);
                Bytes aRead(3 * nSize, 0xEE);
                EXPECT_EQ(long(nThere), cStream.ReadNumericArray(aRead.data(), 3, nSize));
                Bytes aExpected = CountingNumbers(3, nSize, false);
                for (std::size_t i = nThere; i < aWhole.size(); ++i)
                {
                    aExpected[bBigEndian ? i ^ (nSize - 1) : i] = 0xEE;
                }
                EXPECT_EQ(aExpected, aRead) << nSize << " bytes each, " << nThere << " there";

                cStream.m_bCheckShort = true;
                cStream.Rewind();
                EXPECT_RAISES(cStream.ReadNumericArray(aRead.data(), 3, nSize), ClExStreamUnexpectedEnd, -201, szEnd);
                cStream.Rewind();
                EXPECT_RAISES(cStream.WriteNumericArray(aRead.data(), 3, nSize), ClExStreamUnexpectedEnd, -201, szEnd);
                cStream.m_bCheckShort = false;
                cStream.Rewind();
                EXPECT_EQ(long(nThere), cStream.WriteNumericArray(aRead.data(), 3, nSize));
            }
        }
    }
}

TEST(Stream, ArrayThatAnEmptyStreamCannotGiveIsGivenUpAtOnce)
{
    ClMemoryStream cStream({}, false);
    unsigned char aBytes[8];
    cStream.SetBigEndian(false);
    EXPECT_EQ(0, cStream.ReadNumericArray(aBytes, ~0ul, 8));
    EXPECT_EQ(1u, cStream.m_nReads);
}

TEST(Stream, StringsCarryTheirLengthWithTheTerminator)
{
    ClMemoryStream cStream;
    EXPECT_EQ(7u, cStream.WriteString("ab"));
    EXPECT_EQ(5u, cStream.WriteString(nullptr));
    EXPECT_EQ(5u, cStream.WriteString(""));
    EXPECT_EQ((Bytes{0, 0, 0, 3, 'a', 'b', 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}), cStream.m_aBytes);
    cStream.SetBigEndian(false);
    cStream.Rewind();
    EXPECT_EQ(6u, cStream.WriteString("x"));
    EXPECT_EQ((Bytes{2, 0, 0, 0, 'x', 0}), Bytes(cStream.m_aBytes.begin(), cStream.m_aBytes.begin() + 6));
}

TEST(Stream, StringIsReadIntoABlockOfItsOwn)
{
    ClMemoryStream cStream;
    cStream.WriteString("hand");
    cStream.WriteString(nullptr);
    cStream.Rewind();
    char* szText = new char[2]; // the old text goes
    EXPECT_EQ(9u, cStream.ReadString(&szText));
    EXPECT_STREQ("hand", szText);
    EXPECT_EQ(5u, cStream.ReadString(&szText));
    EXPECT_STREQ("", szText);
    EXPECT_EQ(0u, cStream.ReadString(&szText)) << "the stream is at its end";
    EXPECT_EQ(nullptr, szText);
}

TEST(Stream, StringOfLengthZeroIsANullPointer)
{
    ClMemoryStream cStream({0, 0, 0, 0, 'a'});
    cStream.m_bCheckShort = true;
    char* szText = new char[1];
    EXPECT_EQ(4u, cStream.ReadString(&szText));
    EXPECT_EQ(nullptr, szText);
    EXPECT_EQ(4, cStream.Pos());
}

TEST(Stream, StringWithoutTerminatorEndsWithinItsBlock)
{
    ClMemoryStream cStream({0, 0, 0, 3, 'a', 'b', 'c', 'd'});
    char* szText = nullptr;
    EXPECT_EQ(7u, cStream.ReadString(&szText));
    EXPECT_STREQ("ab", szText);
    delete[] szText;
    cStream.Rewind();
    char szBuffer[4] = "zzz";
    EXPECT_EQ(7u, cStream.ReadString(szBuffer, 3));
    EXPECT_STREQ("ab", szBuffer);
}

TEST(Stream, StringCutAtAnyByteIsAFailureOrWhatIsThere)
{
    ClMemoryStream cWhole;
    cWhole.WriteString("finger");
    for (const bool bSeekable : {true, false})
    {
        for (std::size_t nThere = 0; nThere < cWhole.m_aBytes.size(); ++nThere)
        {
            ClMemoryStream cStream(Bytes(cWhole.m_aBytes.begin(), cWhole.m_aBytes.begin() + long(nThere)), bSeekable);
            cStream.m_bCheckShort = true;
            char* szText = new char[1];
            EXPECT_RAISES(cStream.ReadString(&szText), ClExStreamUnexpectedEnd, -201, szEnd);
            EXPECT_EQ(nullptr, szText);
            char szBuffer[7] = "";
            cStream.Rewind();
            EXPECT_RAISES(cStream.ReadString(szBuffer, sizeof szBuffer), ClExStreamUnexpectedEnd, -201, szEnd);

            cStream.m_bCheckShort = false;
            const std::string szExpected = std::string("finger").substr(0, nThere < 4 ? 0 : nThere - 4);
            cStream.Rewind();
            EXPECT_EQ(nThere, cStream.ReadString(&szText));
            EXPECT_EQ(nThere < 4, szText == nullptr);
            EXPECT_EQ(szExpected, szText == nullptr ? "" : szText);
            delete[] szText;
            cStream.Rewind();
            EXPECT_EQ(nThere, cStream.ReadString(szBuffer, sizeof szBuffer));
            EXPECT_EQ(szExpected, szBuffer);
        }
    }
}

TEST(Stream, StringLongerThanTheStreamIsNotAllocated)
{
    ClMemoryStream cStream({0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b'});
    cStream.m_bCheckShort = true;
    char* szText = nullptr;
    EXPECT_RAISES(cStream.ReadString(&szText), ClExStreamUnexpectedEnd, -201, szEnd);
    EXPECT_EQ(1u, cStream.m_nReads) << "only the length was read";
    cStream.m_bCheckShort = false;
    cStream.Rewind();
    EXPECT_EQ(6u, cStream.ReadString(&szText));
    EXPECT_STREQ("ab", szText);
    delete[] szText;
}

TEST(Stream, StringThatDoesNotFitIntoTheBufferIsRefused)
{
    ClMemoryStream cStream;
    cStream.WriteString("hand");
    char szBuffer[6] = "zzzzz";
    cStream.Rewind();
    EXPECT_RAISES_CODE(cStream.ReadString(szBuffer, 4), -21);
    EXPECT_STREQ("", szBuffer);
    EXPECT_EQ(4, cStream.Pos());
    cStream.Rewind();
    EXPECT_RAISES_CODE(cStream.ReadString(nullptr, 0), -21);
    cStream.Rewind();
    EXPECT_EQ(9u, cStream.ReadString(szBuffer, 5));
    EXPECT_STREQ("hand", szBuffer);
    ClMemoryStream cEmpty({0, 0, 0, 0});
    EXPECT_EQ(4u, cEmpty.ReadString(szBuffer, 5));
    EXPECT_STREQ("", szBuffer);
    cEmpty.Rewind();
    EXPECT_EQ(4u, cEmpty.ReadString(nullptr, 0));
}

TEST(Stream, StringLongerThanItsLengthFieldIsRefused)
{
    // 2 to the power of 32 characters, which are the same 2 MB again and again, and the terminator.
    constexpr std::size_t nPart = std::size_t(1) << 21, nText = std::size_t(1) << 32;
    const int nFile = memfd_create("text", MFD_CLOEXEC);
    ASSERT_EQ(0, ftruncate(nFile, static_cast<off_t>(nPart)));
    void* pMap =
        mmap(nullptr, nText + nPart, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, pMap);
    char* szText = static_cast<char*>(pMap);
    for (std::size_t nAt = 0; nAt < nText; nAt += nPart)
    {
        ASSERT_EQ(szText + nAt, mmap(szText + nAt, nPart, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, nFile, 0));
    }
    std::memset(szText, 'a', nPart);
    ClMemoryStream cStream;
    EXPECT_RAISES(cStream.WriteString(szText), ClExRange, -35,
                  "One of the parameters is out of range.\nthe text is too long for its length field.");
    EXPECT_TRUE(cStream.m_aBytes.empty());
    munmap(pMap, nText + nPart);
    close(nFile);
}

TEST(Stream, StringWithoutMemoryIsABadAllocation)
{
    ClMemoryStream cStream;
    cStream.WriteString("hand");
    EXPECT_EQ(1, ExpectBadAllocAtEveryAllocation(
                     [&]
                     {
                         cStream.Rewind();
                         char* szText = nullptr;
                         cStream.ReadString(&szText);
                         delete[] szText;
                     }));
}

TEST(Stream, TellsWhatIsAheadOnlyWhereItCanSeek)
{
    ClMemoryStream cStream({1, 2, 3});
    EXPECT_EQ(3u, cStream.BytesAhead());
    cStream.Seek(2, 0);
    EXPECT_EQ(1u, cStream.BytesAhead());
    cStream.Seek(0, 2);
    EXPECT_EQ(0u, cStream.BytesAhead());
    EXPECT_EQ(~0ul, ClMemoryStream({1, 2, 3}, false).BytesAhead());
    EXPECT_EQ(~0ul, ClBareStream().BytesAhead());
    EXPECT_EQ(~0ul, ClMemoryStream().BytesAhead()) << "a size of 0 is what a stream tells that knows none";
    cStream.Seek(4, 0);
    EXPECT_EQ(~0ul, cStream.BytesAhead());
}
} // namespace
