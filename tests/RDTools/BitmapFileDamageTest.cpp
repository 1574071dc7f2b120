#include "RDTools/Bitmap.hpp"

#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "RDTools/BmpFiles.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cstring>
#include <set>

// BMP files that are damaged, unusual or made to do harm.

namespace
{
using Bytes_t = ClGuardedVector;

/// Refuses greater requests than this, so that the tests need little memory themselves.
constexpr std::size_t nMostMemory = std::size_t(8) << 20;

std::uint32_t LongAt(const Bytes_t& aBytes, std::size_t nAt)
{
    std::uint32_t nValue = 0;
    std::memcpy(&nValue, aBytes.data() + nAt, std::min<std::size_t>(4, aBytes.size() - std::min(nAt, aBytes.size())));
    return nValue;
}

/// Bytes of header, table and pixels as a file's header says; without wrapping.
double HonestBytes(const Bytes_t& aFile)
{
    const std::size_t nHeader = aFile.size() > 1 && aFile[0] == 'B' ? 14 : 0;
    const std::uint32_t nBitCount = LongAt(aFile, nHeader + 14) & 0xffff, nUsed = LongAt(aFile, nHeader + 32);
    const double dEntries = nBitCount <= 8 ? 256.0 : std::max<double>(nUsed, 3.0);
    const double dWidth = static_cast<std::int32_t>(LongAt(aFile, nHeader + 4));
    const double dHeight = static_cast<std::int32_t>(LongAt(aFile, nHeader + 8));
    const double dRow = dWidth <= 0 ? 4 : dWidth * nBitCount / 8 + 4;
    return 40 + 4 * dEntries + dRow * (dHeight < 0 ? -dHeight : dHeight);
}

/// Reads all that a loaded bitmap says it has.
void Walk(const ClBitmap& cBitmap)
{
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    ASSERT_LE(0, +cHeader.biWidth);
    ASSERT_LE(0, +cHeader.biHeight);
    Bytes_t aPacked(40 + 4 * cBitmap.PalSize(&cHeader) +
                    static_cast<std::size_t>(cBitmap.Stride()) * static_cast<std::size_t>(cHeader.biHeight));
    cBitmap.CopyTo(aPacked.data());
    ClImage cImage;
    cBitmap.GetImage(cImage);
}

/// Loads a file with and without seeking: 0, or the code that was raised, which must be one that loading can raise.
long LoadAnyhow(const Bytes_t& aFile)
{
    static const std::set<long> aCodes = {-11, -12, -31, -32, -36, -38, -102, -201, -210};
    long aResult[2] = {0, 0};
    for (const bool bSeekable : {false, true})
    {
        ClMemoryStream cStream(aFile, bSeekable);
        ClBitmap cBitmap;
        const ClLimitedHeap cHeap(nMostMemory);
        try
        {
            cBitmap.Load(cStream);
            EXPECT_LE(static_cast<double>(ClLimitedHeap::Greatest()), 2 * HonestBytes(aFile));
            Walk(cBitmap);
        }
        catch (const ClException& cRaised)
        {
            aResult[bSeekable] = cRaised.Number();
            EXPECT_EQ(1u, aCodes.count(cRaised.Number())) << cRaised.What();
            EXPECT_EQ(nullptr, cBitmap.m_pBIH.get());
            EXPECT_EQ(nullptr, cBitmap.m_pPixels.get());
            if (ClLimitedHeap::Greatest() > 4096)
            {
                EXPECT_LE(static_cast<double>(ClLimitedHeap::Greatest()), 2 * HonestBytes(aFile));
            }
        }
    }
    return aResult[1];
}

Bytes_t RunLengthFile()
{
    return BmpFileOfCode(7, 3, {3, 1, 4, 2, 0, 0, 0, 2, 2, 0, 9, 3, 0, 1});
}

std::vector<Bytes_t> SmallFiles()
{
    std::vector<Bytes_t> aFiles;
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        aFiles.push_back(BmpFile(BitmapPicture(5, 3, nBitCount, 0, nBitCount == 8 ? 3 : 0)));
    }
    aFiles.push_back(BmpFile(BitmapPicture(5, 3, 16, 3)));
    aFiles.push_back(RunLengthFile());
    const std::size_t nWithHeader = aFiles.size();
    for (std::size_t i = 0; i < nWithHeader; ++i)
    {
        aFiles.push_back(WithoutFileHeader(aFiles[i]));
    }
    return aFiles;
}

TEST(BitmapFileDamage, WhatIsCutOffIsMissedAtEveryByte)
{
    for (Bytes_t aFile : SmallFiles())
    {
        ASSERT_EQ(0, LoadAnyhow(aFile));
        while (aFile.size() > 1)
        {
            aFile.pop_back();
            ASSERT_EQ(-201, LoadAnyhow(aFile)) << aFile.size();
        }
    }
}

TEST(BitmapFileDamage, EveryChangedByteIsRefusedOrLoaded)
{
    for (const Bytes_t& aFile : SmallFiles())
    {
        for (std::size_t i = 0; i < aFile.size(); ++i)
        {
            for (const int nFlip : {0xff, 0x80, 0x40, 0x20, 0x10, 8, 4, 2, 1})
            {
                Bytes_t aChanged = aFile;
                aChanged[i] = static_cast<unsigned char>(aChanged[i] ^ nFlip);
                SCOPED_TRACE(testing::Message() << "byte " << i << " ^ " << nFlip);
                LoadAnyhow(aChanged);
            }
        }
    }
}

TEST(BitmapFileDamage, EveryFieldOfTheHeaderMayBeAnything)
{
    const std::uint32_t aValues[] = {0,          1,          2,          0x7f,       0xff,       0x100,
                                     0x7fff,     0xffff,     0x10000,    0x1000000,  0x1fffffff, 0x20000000,
                                     0x20000001, 0x3fffffff, 0x40000000, 0x40000001, 0x7fffffff, 0x80000000,
                                     0x80000001, 0xfffffff0, 0xffffffff};
    for (const Bytes_t& aFile : SmallFiles())
    {
        const std::size_t nHeader = aFile[0] == 'B' ? 14 : 0;
        for (std::size_t i = 0; i < nHeader + 40; i += 2)
        {
            for (const std::uint32_t nValue : aValues)
            {
                for (const std::size_t nSecond : {nHeader + 4, nHeader + 8, nHeader + 32})
                {
                    Bytes_t aChanged = aFile;
                    PutLong(aChanged.data(), i, nValue);
                    if (i >= nHeader + 4 && nSecond != i)
                    {
                        PutLong(aChanged.data(), nSecond, nValue);
                    }
                    SCOPED_TRACE(testing::Message() << "field " << i << ", " << nValue);
                    LoadAnyhow(aChanged);
                }
            }
        }
    }
}

/// The code of a plain 8-bit file with another number at one or two places.
long CodeWith(std::size_t nAt, std::uint32_t nValue, std::size_t nSecond = 0, std::uint32_t nSecondValue = 0)
{
    Bytes_t aFile = BmpFile(BitmapPicture(4, 4, 8, 0, 4));
    PutLong(aFile.data(), nAt, nValue);
    if (nSecond != 0)
    {
        PutLong(aFile.data(), nSecond, nSecondValue);
    }
    return LoadAnyhow(aFile);
}

TEST(BitmapFileDamage, SizesThatWrapOrAreNegativeHaveNoMemory)
{
    EXPECT_EQ(0, CodeWith(nAtHeight, 4));
    EXPECT_EQ(0, CodeWith(nAtHeight, static_cast<std::uint32_t>(-4)));
    EXPECT_EQ(-102, CodeWith(nAtWidth, static_cast<std::uint32_t>(-4)));
    EXPECT_EQ(-102, CodeWith(nAtWidth, static_cast<std::uint32_t>(-1)));
    EXPECT_EQ(-102, CodeWith(nAtWidth, 0x80000000));
    EXPECT_EQ(-102, CodeWith(nAtHeight, 0x80000000));
    EXPECT_EQ(-102, CodeWith(nAtWidth, 0x20000001));  // a row of 4 bytes after wrapping
    EXPECT_EQ(-201, CodeWith(nAtHeight, 0x40000000)); // a size of 0 after wrapping
    EXPECT_EQ(-201, CodeWith(nAtWidth, 0x10000, nAtHeight, 0x10000));
    EXPECT_EQ(-201, CodeWith(nAtHeight, 5));
    EXPECT_EQ(-201, CodeWith(nAtHeight, static_cast<std::uint32_t>(-5)));
}

TEST(BitmapFileDamage, EmptyPicturesLoadAtOnce)
{
    EXPECT_EQ(0, CodeWith(nAtWidth, 0));
    EXPECT_EQ(0, CodeWith(nAtHeight, 0));
    EXPECT_EQ(0, CodeWith(nAtWidth, 0, nAtHeight, 0x7fffffff));
    EXPECT_EQ(0, CodeWith(nAtWidth, 0x0fffffff, nAtHeight, 0));
}

TEST(BitmapFileDamage, APictureWithoutColumnsHasNoLineToMoveAlong)
{
    EXPECT_EQ(0, LoadAnyhow(BmpFileOfCode(0, 5, {0, 0, 0, 1})));
    EXPECT_EQ(-38, LoadAnyhow(BmpFileOfCode(0, 5, {0, 2, 1, 0, 0, 1})));
    EXPECT_EQ(-38, LoadAnyhow(BmpFileOfCode(0, -5, {0, 2, 1, 0, 0, 1})));
}

TEST(BitmapFileDamage, HeadersAreCheckedInOrder)
{
    Bytes_t aFile = BmpFile(BitmapPicture(4, 4, 8));
    PutShort(aFile.data(), nAtBitCount, 7);
    EXPECT_EQ(-12, LoadAnyhow(aFile));
    PutShort(aFile.data(), nAtPlanes, 0);
    EXPECT_EQ(-11, LoadAnyhow(aFile));
    for (const std::uint32_t nSize : {0u, 12u, 39u, 41u, 56u, 108u, 124u, 0xffffffffu})
    {
        PutLong(aFile.data(), nAtSize, nSize);
        EXPECT_EQ(-32, LoadAnyhow(aFile));
    }
    PutLong(aFile.data(), nAtSize, 19778);
    EXPECT_EQ(-36, LoadAnyhow(aFile));
    for (const std::uint32_t nCompression : {2u, 4u, 5u, 6u, 0xffffffffu})
    {
        PutLong(aFile.data(), nAtCompression, nCompression);
        ClMemoryStream cStream(aFile);
        ClBitmap cBitmap;
        EXPECT_RAISES(cBitmap.Load(cStream), ClException, -31,
                      "The compression FOCC is not supported.\nClBitmap::Load. Unsupported compressions mode");
    }
    aFile[1] = 'm';
    ClMemoryStream cStream(aFile);
    ClBitmap cBitmap;
    EXPECT_RAISES(cBitmap.Load(cStream), ClException, -210,
                  "No BMP signature found.\nClBitmap::Load. Fileheader Signature is Missing");
}

TEST(BitmapFileDamage, RunLengthCodeIsForEightBitsOnly)
{
    for (const int nBitCount : {1, 4, 16, 24, 32})
    {
        Bytes_t aFile = RunLengthFile();
        PutShort(aFile.data(), nAtBitCount, static_cast<std::uint16_t>(nBitCount));
        EXPECT_EQ(-31, LoadAnyhow(aFile));
    }
}

TEST(BitmapFileDamage, APictureThatTheFileCannotHoldAsksForNoMemory)
{
    for (const auto& [nWidth, nHeight] :
         {std::pair(1000u, 1000u), std::pair(60000u, 60000u), std::pair(65535u, 65535u)})
    {
        Bytes_t aFile = BmpFile(BitmapPicture(4, 4, 8, 0, 4));
        PutLong(aFile.data(), nAtWidth, nWidth);
        PutLong(aFile.data(), nAtHeight, nHeight);
        ClMemoryStream cStream(aFile);
        ClBitmap cBitmap;
        const ClLimitedHeap cHeap(nMostMemory);
        EXPECT_RAISES(cBitmap.Load(cStream), ClExStreamUnexpectedEnd, -201,
                      "Unexpected end of file.\nUnexpected end of stream");
        EXPECT_GT(2000u, ClLimitedHeap::Greatest());
    }
}

TEST(BitmapFileDamage, LongTablesAreLimited)
{
    const auto load = [](std::uint32_t nUsed, std::uint32_t nImportant, std::size_t nEntries, ClBitmap& cBitmap)
    {
        // Behind a space that is longer than the table the rows begin later.
        ST_BitmapPicture cPicture = BitmapPicture(4, 4, 4, 0, static_cast<unsigned int>(nEntries));
        Bytes_t aFile = BmpFile(cPicture);
        PutLong(aFile.data(), nAtClrUsed, nUsed);
        PutLong(aFile.data(), nAtClrImportant, nImportant);
        aFile.insert(aFile.end(), 200, 9);
        ClMemoryStream cStream(aFile);
        cBitmap.Load(cStream);
    };
    ClBitmap cBitmap;
    load(16, 99, 16, cBitmap);
    EXPECT_EQ(16u, cBitmap.Header().biClrUsed);
    EXPECT_EQ(99u, cBitmap.Header().biClrImportant) << "no table was limited";
    load(17, 99, 20, cBitmap);
    EXPECT_EQ(16u, cBitmap.Header().biClrUsed);
    EXPECT_EQ(16u, cBitmap.Header().biClrImportant);
    load(0xffffffff, 3, 7, cBitmap);
    EXPECT_EQ(7u, cBitmap.Header().biClrUsed);
    EXPECT_EQ(3u, cBitmap.Header().biClrImportant);
    load(5, 3, 7, cBitmap);
    EXPECT_EQ(5u, cBitmap.Header().biClrUsed);
    load(0, 3, 16, cBitmap);
    EXPECT_EQ(0u, cBitmap.Header().biClrUsed);
}

TEST(BitmapFileDamage, RowsBehindALongerSpaceStartAsMuchLater)
{
    const ST_BitmapPicture cPicture = BitmapPicture(5, 3, 8, 0, 4);
    for (const std::size_t nExcess : {1u, 6u, 5000u})
    {
        Bytes_t aFile = BmpFile(cPicture);
        PutLong(aFile.data(), nAtOffset, static_cast<std::uint32_t>(14 + cPicture.nOffset + nExcess));
        aFile.insert(aFile.begin() + 14 + static_cast<std::ptrdiff_t>(cPicture.nOffset), 2 * nExcess, 0xee);
        Bytes_t aLoaded(cPicture.aBlock.size());
        ClBitmap cBitmap;
        ClMemoryStream cStream(aFile);
        cBitmap.Load(cStream);
        cBitmap.CopyTo(aLoaded.data());
        EXPECT_EQ(cPicture.aBlock, aLoaded);
        EXPECT_EQ(aFile.size(), cStream.m_nPos);
        aFile.pop_back();
        EXPECT_EQ(-201, LoadAnyhow(aFile));
    }
}

TEST(BitmapFileDamage, OnAStreamThatCannotSeekRowsStartBehindTheSpace)
{
    const ST_BitmapPicture cPicture = BitmapPicture(5, 3, 8, 0, 4);
    Bytes_t aFile = BmpFile(cPicture);
    PutLong(aFile.data(), nAtOffset, static_cast<std::uint32_t>(14 + cPicture.nOffset + 6));
    aFile.insert(aFile.begin() + 14 + static_cast<std::ptrdiff_t>(cPicture.nOffset), 6, 0xee);
    Bytes_t aLoaded(cPicture.aBlock.size());
    ClBitmap cBitmap;
    ClMemoryStream cStream(aFile, false);
    cBitmap.Load(cStream);
    cBitmap.CopyTo(aLoaded.data());
    EXPECT_EQ(cPicture.aBlock, aLoaded);
}

TEST(BitmapFileDamage, RowsBehindAShorterSpaceStartAsMuchEarlier)
{
    const ST_BitmapPicture cPicture = BitmapPicture(5, 3, 8, 0, 4);
    Bytes_t aFile = BmpFile(cPicture);
    PutLong(aFile.data(), nAtClrUsed, 0); // 256 entries, of which 4 are there
    ClBitmap cBitmap;
    ClMemoryStream cStream(aFile);
    cBitmap.Load(cStream); // 1008 bytes earlier is before the file: the rows follow the table
    EXPECT_EQ(0, std::memcmp(cBitmap.m_pPixels.get(), cPicture.aBlock.data() + cPicture.nOffset, 24));
    EXPECT_EQ(0xffffffu, cBitmap.PaletteEntry(3));
    EXPECT_EQ(0u, cBitmap.PaletteEntry(4)) << "what is not there is black";
    EXPECT_EQ(0u, cBitmap.PaletteEntry(255));

    Bytes_t aBehind(2000);
    for (std::size_t i = 0; i < aBehind.size(); ++i)
    {
        aBehind[i] = static_cast<unsigned char>(i % 251);
    }
    aBehind.insert(aBehind.end(), aFile.begin(), aFile.end());
    ClMemoryStream cLater(aBehind);
    cLater.m_nPos = 2000;
    cBitmap.Load(cLater);
    EXPECT_EQ(0, std::memcmp(cBitmap.m_pPixels.get(), aBehind.data() + 2000 + 54 + 16 - 1008, 24));
}

TEST(BitmapFileDamage, RowsInFrontOfTheHeadersNeedNothingBehindThem)
{
    Bytes_t aFile = BmpFile(BitmapPicture(5, 3, 8, 0, 4));
    PutLong(aFile.data(), nAtOffset, 54); // no room for a table of 256 entries: the rows stand as much earlier
    aFile.resize(54);
    Bytes_t aBehind(2000);
    for (std::size_t i = 0; i < aBehind.size(); ++i)
    {
        aBehind[i] = static_cast<unsigned char>(i % 251);
    }
    aBehind.insert(aBehind.end(), aFile.begin(), aFile.end());
    ClMemoryStream cStream(aBehind);
    cStream.m_nPos = 2000;
    ClBitmap cBitmap;
    cBitmap.Load(cStream);
    EXPECT_EQ(0, std::memcmp(cBitmap.m_pPixels.get(), aBehind.data() + 2000 + 54 - 1024, 24));
}

TEST(BitmapFileDamage, ASpaceOfLessThanAnEntryMeansTheWholeTable)
{
    Bytes_t aFile = BmpFile(BitmapPicture(5, 3, 8, 0, 4));
    PutLong(aFile.data(), nAtOffset, 54 + 3);
    ClBitmap cBitmap;
    ClMemoryStream cStream(aFile);
    cBitmap.Load(cStream);
    EXPECT_EQ(0u, cBitmap.Header().biClrUsed);
    EXPECT_EQ(256u, cBitmap.PalSize(cBitmap.m_pBIH.get()));
    EXPECT_EQ(0, std::memcmp(cBitmap.m_pPixels.get(), aFile.data() + 57, 24));
}

TEST(BitmapFileDamage, AbsurdTablesOfDeepPicturesHaveNoMemory)
{
    for (const int nBitCount : {16, 24, 32})
    {
        for (const bool bSeekable : {true, false})
        {
            const ST_BitmapPicture cPicture = BitmapPicture(4, 3, nBitCount);
            const auto load = [&](std::uint32_t nUsed)
            {
                Bytes_t aFile = BmpFile(cPicture);
                PutLong(aFile.data(), nAtClrUsed, nUsed);
                ClMemoryStream cStream(aFile, bSeekable);
                ClBitmap cBitmap;
                const ClLimitedHeap cHeap(nMostMemory);
                cBitmap.Load(cStream);
                EXPECT_GE(2 * (40 + 4 * nUsed + 4 * 3 * 4), ClLimitedHeap::Greatest());
                EXPECT_EQ(0, std::memcmp(cBitmap.m_pPixels.get(), cPicture.aBlock.data() + 40, 4));
                EXPECT_EQ(0u, cBitmap.PaletteEntry(nUsed - 1));
            };
            EXPECT_NO_THROW(load(1000000)); // as far as there is memory
            for (const std::uint32_t nUsed : {(1u << 24) + 1, 1u << 30, 0x3ffffff0u, 0x40000001u, 0xffffffffu})
            {
                EXPECT_RAISES_CODE(load(nUsed), -102);
            }
        }
    }
}

/// Gives a head, then a pattern without end.
class ClEndlessStream : public ClStream
{
public:
    ClEndlessStream(Bytes_t aHead, Bytes_t aPattern) : m_aHead(std::move(aHead)), m_aPattern(std::move(aPattern)) {}
    bool IsSeekable() const override { return false; }
    unsigned long WriteRaw(const void*, unsigned long) override { return 0; }
    unsigned long ReadRaw(void* pData, unsigned long nSize) override
    {
        for (unsigned long i = 0; i < nSize; ++i, ++m_nPos)
        {
            static_cast<unsigned char*>(pData)[i] =
                m_nPos < m_aHead.size() ? m_aHead[m_nPos] : m_aPattern[(m_nPos - m_aHead.size()) % m_aPattern.size()];
        }
        return nSize;
    }

private:
    Bytes_t m_aHead, m_aPattern;
    std::size_t m_nPos = 0;
};

TEST(BitmapFileDamage, ACodeWithoutEndEnds)
{
    const Bytes_t aHead = BmpFileOfCode(300, 200, {});
    for (const Bytes_t& aPattern :
         {Bytes_t{1, 5}, Bytes_t{255, 1}, Bytes_t{0, 2, 0, 0}, Bytes_t{0, 2, 1, 0}, Bytes_t{0, 2, 255, 0},
          Bytes_t{0, 2, 0, 1}, Bytes_t{0, 3}, Bytes_t{0, 255}, Bytes_t{3}})
    {
        ClEndlessStream cStream(aHead, aPattern);
        ClBitmap cBitmap;
        EXPECT_RAISES_CODE(cBitmap.Load(cStream), -38);
    }
    ClEndlessStream cLines(aHead, {0, 0});
    ClBitmap cBitmap;
    EXPECT_NO_THROW(cBitmap.Load(cLines));
    for (const auto& [nWidth, nHeight] : {std::pair(0, 200), std::pair(300, 0), std::pair(0, 0x7fffffff)})
    {
        ClEndlessStream cRuns(BmpFileOfCode(nWidth, nHeight, {}), {1, 5});
        EXPECT_RAISES_CODE(cBitmap.Load(cRuns), -38);
    }
}

TEST(BitmapFileDamage, AStreamThatFailsIsHeardAtEveryByte)
{
    for (const Bytes_t& aFile : SmallFiles())
    {
        for (std::size_t nByte = 0; nByte < aFile.size(); ++nByte)
        {
            ClMemoryStream cStream(aFile);
            cStream.FailAt(nByte);
            ClBitmap cBitmap;
            EXPECT_RAISES_CODE(cBitmap.Load(cStream), -203);
            EXPECT_EQ(nullptr, cBitmap.m_pBIH.get());
        }
    }
}
} // namespace
