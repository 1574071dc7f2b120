#include "RDTools/Bitmap.hpp"

#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "RDTools/BitmapChecks.hpp"
#include "RDTools/BmpFiles.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cstring>

namespace
{
using Bytes_t = ClGuardedVector;

constexpr char szUnexpectedEnd[] = "Unexpected end of file.\nUnexpected end of stream";

void LoadBytes(ClBitmap& cBitmap, const Bytes_t& aFile, bool bSeekable = true)
{
    ClMemoryStream cStream(aFile, bSeekable);
    cBitmap.Load(cStream);
}

Bytes_t StoredBytes(const ClBitmap& cBitmap)
{
    ClMemoryStream cStream;
    cBitmap.Store(cStream);
    return cStream.m_aBytes;
}

/// Runs fn(picture) for all depths, both table lengths and several widths.
template <class Fn> void AtAllForms(Fn&& fn)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const int nCompression : {0, 3})
        {
            for (const int nWidth : {1, 2, 3, 7, 8, 9, 13})
            {
                const unsigned int nClrUsed = nBitCount <= 8 && nWidth > 7 ? 2 : 0;
                SCOPED_TRACE(testing::Message() << nBitCount << " bits, width " << nWidth);
                fn(BitmapPicture(nWidth, 5, nBitCount, nCompression, nClrUsed));
            }
        }
    }
}

TEST(BitmapFile, StoreWritesHeadersTableAndRows)
{
    AtAllForms(
        [](ST_BitmapPicture cPicture)
        {
            const Bytes_t aExpected = BmpFile(cPicture);
            const ClBitmap cBitmap(cPicture.aBlock.data(), true);
            ClMemoryStream cStream;
            cBitmap.Store(cStream);
            EXPECT_EQ(aExpected, Bytes_t(cStream.m_aBytes));
            EXPECT_EQ(5u + 11u + (cPicture.nOffset > 40 ? 1u : 0u) + 1u, cStream.m_nWrites) << "the rows are one write";
        });
}

TEST(BitmapFile, StoreMendsTheHeaderOfTheBitmap)
{
    ClBitmap cBitmap(5, 3, 8, 0);
    cBitmap = 1;
    cBitmap.Header().biSizeImage = 0;
    cBitmap.Header().biClrImportant = 300;
    const Bytes_t aFile = StoredBytes(cBitmap);
    EXPECT_EQ(24u, cBitmap.Header().biSizeImage);
    EXPECT_EQ(256u, cBitmap.Header().biClrImportant);
    EXPECT_EQ(0, std::memcmp(aFile.data() + 14, cBitmap.m_pBIH.get(), 40));
    EXPECT_EQ(54u + 1024 + 24, aFile.size());

    const std::uint32_t aMost[][2] = {{1, 2}, {4, 16}, {16, 65536}, {24, 16777216}, {32, 1}};
    for (const auto& [nBitCount, nMost] : aMost)
    {
        ClBitmap cOther(5, 3, static_cast<long>(nBitCount), 0);
        cOther = 1;
        for (const std::uint32_t nImportant : {0u, nMost, nMost + 1, 0xffffffffu})
        {
            cOther.Header().biClrImportant = nImportant;
            StoredBytes(cOther);
            EXPECT_EQ(std::min(nImportant, nMost), +cOther.Header().biClrImportant) << nBitCount;
        }
    }
}

TEST(BitmapFile, StoreLimitsTheTableToWhatAPixelCanReach)
{
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 4, 0, 20);
    const ClBitmap cBitmap(cPicture.aBlock.data(), true);
    const Bytes_t aFile = StoredBytes(cBitmap);
    Bytes_t aExpected = BmpFile(cPicture); // the numbers in the file header count 20 entries, 16 are written
    aExpected.erase(aExpected.begin() + 54 + 64, aExpected.begin() + 54 + 80);
    PutLong(aExpected.data(), nAtClrUsed, 16);
    EXPECT_EQ(aExpected, aFile);
    EXPECT_EQ(16u, cBitmap.Header().biClrUsed);
}

TEST(BitmapFile, StoreDeclaresButDoesNotWriteTheTableOfADeepBitmap)
{
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 24, 0, 7);
    const ClBitmap cBitmap(cPicture.aBlock.data(), true);
    Bytes_t aExpected = BmpFile(cPicture);
    aExpected.erase(aExpected.begin() + 54, aExpected.begin() + 54 + 28);
    PutLong(aExpected.data(), nAtClrUsed, 0);
    const Bytes_t aFile = StoredBytes(cBitmap);
    EXPECT_EQ(aExpected, aFile);
    EXPECT_EQ(0u, cBitmap.Header().biClrUsed);
    ClBitmap cLoaded;
    EXPECT_RAISES_CODE(LoadBytes(cLoaded, aFile), -201); // the rows are taken for the table
    EXPECT_EQ(BmpFile(BitmapPicture(5, 3, 24)).size(), StoredBytes(cBitmap).size()) << "the second time it is right";
}

TEST(BitmapFile, StoreRefusesWhatItCannotWrite)
{
    ClMemoryStream cStream;
    ClBitmap cBitmap;
    EXPECT_RAISES_CODE(cBitmap.Store(cStream), -10);
    for (const int nBitCount : {8, 16})
    {
        cBitmap.Create(5, 3, nBitCount, 3);
        cBitmap.Header().biSizeImage = 0;
        EXPECT_RAISES(cBitmap.Store(cStream), ClException, -33,
                      "The required format is not supported.\nBitmap Store: Combination of biSizeImage not set and "
                      "compression set to other than plain not allowed");
        cBitmap.Header().biSizeImage = 1;
        EXPECT_NO_THROW(StoredBytes(cBitmap));
        EXPECT_EQ(1u, cBitmap.Header().biSizeImage);
        cBitmap.m_pPalette = nullptr;
        EXPECT_RAISES_CODE(cBitmap.Store(cStream), -10);
    }
    cBitmap.Create(5, 3, 8, 0);
    cBitmap.Header().biHeight = -3;
    EXPECT_RAISES_CODE(cBitmap.Store(cStream), -14);
    cBitmap.Header().biHeight = 3;
    cBitmap.Header().biWidth = 0x20000010;
    EXPECT_RAISES_CODE(cBitmap.Store(cStream), -14);
    cBitmap.Header().biWidth = 5;
    cBitmap.m_pPixels.reset();
    EXPECT_RAISES_CODE(cBitmap.Store(cStream), -10);
    EXPECT_TRUE(cStream.m_aBytes.empty()) << "nothing is written before all is checked";
    EXPECT_TRUE(cStream.GetBigEndian());
}

TEST(BitmapFile, StoreTellsAShortWriteAtEveryByte)
{
    const ClBitmap cBitmap(3, 2, 1, 0);
    const std::size_t nSize = StoredBytes(cBitmap).size();
    for (std::size_t nByte = 0; nByte < nSize; ++nByte)
    {
        for (const bool bBigEndian : {true, false})
        {
            ClMemoryStream cStream, cChecked;
            cStream.SetBigEndian(bBigEndian);
            cStream.ShortAt(nByte);
            EXPECT_RAISES(cBitmap.Store(cStream), ClExStreamFailToWrite, -202,
                          "Failed to write the data.\nFailed to write into stream");
            EXPECT_EQ(bBigEndian, cStream.GetBigEndian4Write());
            cChecked.ShortAt(nByte);
            cChecked.m_bCheckShort = true;
            EXPECT_RAISES(cBitmap.Store(cChecked), ClExStreamUnexpectedEnd, -201, szUnexpectedEnd);
        }
    }
}

TEST(BitmapFile, StoreChangesNothingOfTheStreamButItsBytes)
{
    const ClBitmap cBitmap(3, 2, 24, 0);
    for (const bool bWrite : {true, false})
    {
        ClMemoryStream cStream;
        cStream.SetBigEndian4Write(bWrite);
        cStream.SetBigEndian4Read(!bWrite);
        cBitmap.Store(cStream);
        EXPECT_EQ(bWrite, cStream.GetBigEndian4Write());
        EXPECT_EQ(!bWrite, cStream.GetBigEndian4Read());
        EXPECT_FALSE(cStream.m_bCheckShort);
        cStream.WriteBits(1, 1);
        EXPECT_RAISES_CODE(cBitmap.Store(cStream), -39);
        EXPECT_EQ(bWrite, cStream.GetBigEndian4Write());
    }
}

TEST(BitmapFile, LoadReadsHeaderTableAndRows)
{
    AtAllForms(
        [](const ST_BitmapPicture& cPicture)
        {
            Bytes_t aFile = BmpFile(cPicture);
            PutLong(aFile.data(), 2, 0x12345678); // neither of the sizes counts
            PutLong(aFile.data(), nAtSizeImage, 0x12345678);
            for (const bool bSeekable : {true, false})
            {
                ClBitmap cBitmap(1, 1, 8, 0);
                LoadBytes(cBitmap, aFile, bSeekable);
                EXPECT_EQ(cPicture.aBlock, Packed(cBitmap, cPicture.aBlock.size()));
                unsigned char* pBlock = reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get());
                EXPECT_EQ(pBlock + 40, reinterpret_cast<unsigned char*>(cBitmap.m_pPalette));
                EXPECT_EQ(pBlock + cPicture.nOffset, cBitmap.m_pPixels.get());
            }
        });
}

TEST(BitmapFile, WhatIsStoredComesBack)
{
    AtAllForms(
        [](ST_BitmapPicture cPicture)
        {
            const ClBitmap cBitmap(cPicture.aBlock.data(), true);
            ClBitmap cLoaded;
            LoadBytes(cLoaded, StoredBytes(cBitmap));
            EXPECT_TRUE(cBitmap == cLoaded);
            EXPECT_EQ(StoredBytes(cBitmap), StoredBytes(cLoaded));
        });
}

TEST(BitmapFile, AFileWithoutFileHeaderLoads)
{
    AtAllForms(
        [](const ST_BitmapPicture& cPicture)
        {
            ClBitmap cBitmap;
            LoadBytes(cBitmap, cPicture.aBlock);
            EXPECT_EQ(cPicture.aBlock, Packed(cBitmap, cPicture.aBlock.size()));
        });
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 24);
    Bytes_t aBlock = cPicture.aBlock;
    PutShort(aBlock.data(), 2, 0xffff); // the upper half of the header's size is not looked at
    ClBitmap cBitmap;
    LoadBytes(cBitmap, aBlock);
    EXPECT_EQ(cPicture.aBlock, Packed(cBitmap, aBlock.size()));
}

TEST(BitmapFile, AnOffsetWithinTheHeadersIsTheirEnd)
{
    const ST_BitmapPicture cPicture = BitmapPicture(5, 3, 24);
    for (const std::uint32_t nOffset : {0u, 1u, 53u})
    {
        Bytes_t aFile = BmpFile(cPicture);
        PutLong(aFile.data(), nAtOffset, nOffset);
        ClBitmap cBitmap;
        LoadBytes(cBitmap, aFile);
        EXPECT_EQ(cPicture.aBlock, Packed(cBitmap, cPicture.aBlock.size()));
    }
}

TEST(BitmapFile, RowsFromTopToBottomAreTurnedAround)
{
    AtAllForms(
        [](const ST_BitmapPicture& cPicture)
        {
            Bytes_t aFile = BmpFile(cPicture);
            PutLong(aFile.data(), nAtHeight, static_cast<std::uint32_t>(-cPicture.nHeight));
            ClBitmap cBitmap;
            LoadBytes(cBitmap, aFile);
            EXPECT_EQ(cPicture.nHeight, +cBitmap.Header().biHeight);
            EXPECT_EQ(cPicture.RowBytes() * 5, cBitmap.Header().biSizeImage);
            for (int y = 0; y < cPicture.nHeight; ++y)
            {
                const unsigned char* pRow =
                    cPicture.aBlock.data() + cPicture.nOffset + static_cast<std::size_t>(4 - y) * cPicture.RowBytes();
                EXPECT_EQ(0, std::memcmp(pRow, cBitmap.Line(y), cPicture.RowBytes()));
            }
        });
}

TEST(BitmapFile, FilesOneBehindTheOtherAreReadOneByOne)
{
    const ST_BitmapPicture cFirst = BitmapPicture(5, 3, 8), cSecond = BitmapPicture(7, 2, 1);
    Bytes_t aFile = BmpFile(cFirst);
    const Bytes_t aCode = BmpFileOfCode(7, 2, {0, 0, 7, 1, 0, 1}), aLast = BmpFile(cSecond);
    aFile.insert(aFile.end(), aCode.begin(), aCode.end());
    aFile.insert(aFile.end(), aLast.begin(), aLast.end());
    ClMemoryStream cStream(aFile);
    ClBitmap cBitmap;
    cBitmap.Load(cStream);
    EXPECT_EQ(cFirst.aBlock, Packed(cBitmap, cFirst.aBlock.size()));
    cBitmap.Load(cStream);
    EXPECT_EQ(1, cBitmap.Line(1)[6]);
    cBitmap.Load(cStream);
    EXPECT_EQ(cSecond.aBlock, Packed(cBitmap, cSecond.aBlock.size()));
    EXPECT_EQ(aFile.size(), cStream.m_nPos);
    EXPECT_RAISES(cBitmap.Load(cStream), ClExStreamUnexpectedEnd, -201, szUnexpectedEnd);
}

TEST(BitmapFile, LoadRestoresTheStreamOnlyIfItSucceeds)
{
    const Bytes_t aGood = BmpFile(BitmapPicture(5, 3, 8));
    Bytes_t aBad = aGood;
    PutLong(aBad.data(), nAtCompression, 2);
    for (const bool bFirst : {true, false})
    {
        for (const bool bCheckShort : {true, false})
        {
            ClBitmap cBitmap;
            ClMemoryStream cGood(aGood), cBad(aBad);
            for (ClMemoryStream* pStream : {&cGood, &cBad})
            {
                pStream->SetBigEndian4Read(bFirst);
                pStream->SetBigEndian4Write(!bFirst);
                pStream->m_bCheckShort = bCheckShort;
            }
            cBitmap.Load(cGood);
            EXPECT_EQ(bFirst, cGood.GetBigEndian4Read());
            EXPECT_EQ(!bFirst, cGood.GetBigEndian4Write());
            EXPECT_EQ(bCheckShort, cGood.m_bCheckShort);
            EXPECT_RAISES_CODE(cBitmap.Load(cBad), -31);
            EXPECT_FALSE(cBad.GetBigEndian4Read());
            EXPECT_EQ(!bFirst, cBad.GetBigEndian4Write());
            EXPECT_TRUE(cBad.m_bCheckShort);
        }
    }
}

TEST(BitmapFile, ARunLengthCodedPictureIsDecoded)
{
    for (const int nWidth : {1, 3, 4, 300})
    {
        const ST_BitmapPicture cPicture = BitmapPicture(nWidth, 6, 8, 0, 4, 3);
        ClBitmap cBitmap;
        LoadBytes(cBitmap, BmpFileOfCode(nWidth, 6, RunLengthCode(cPicture)));
        EXPECT_EQ(0u, cBitmap.Header().biCompression);
        EXPECT_EQ(6 * cPicture.RowBytes(), cBitmap.Header().biSizeImage);
        for (int y = 0; y < 6; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                ASSERT_EQ(cPicture.At(x, y), cBitmap.Line(y)[x]) << x << ", " << y;
            }
        }
    }
}

TEST(BitmapFile, BytesThatNoRunReachesAreZero)
{
    ClBitmap cBitmap;
    LoadBytes(cBitmap, BmpFileOfCode(5, 4, {3, 7, 0, 0, 9, 8, 0, 1}));
    const unsigned char aExpected[] = {7, 7, 7, 0, 0, 0, 0, 0, 8, 8, 8, 8, 8, 0, 0, 0,
                                       8, 8, 8, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(0, std::memcmp(aExpected, cBitmap.m_pPixels.get(), sizeof aExpected));
}

TEST(BitmapFile, AnAbsoluteRunDoesNotLoad)
{
    ClBitmap cBitmap(1, 1, 8, 0);
    EXPECT_RAISES_CODE(LoadBytes(cBitmap, BmpFileOfCode(5, 4, {0, 3, 1, 2, 3, 0, 0, 1})), -201);
    ExpectEmpty(cBitmap);
    EXPECT_RAISES(LoadBytes(cBitmap, BmpFileOfCode(2, 2, {0, 3, 1, 2, 3, 0, 0, 1})), ClException, -38,
                  "The input is corrupt can be a memoryblock or a file.\nClBitmap::Load. RLE Encoding corrupt");
    ExpectEmpty(cBitmap);
}

TEST(BitmapFile, OfARunLengthCodeFromTopToBottomOnlyTheFirstLineIsRead)
{
    ClBitmap cBitmap;
    LoadBytes(cBitmap, BmpFileOfCode(3, -3, {2, 7, 0, 0, 3, 9, 0, 1}));
    EXPECT_EQ(3, +cBitmap.Header().biHeight);
    const unsigned char aExpected[] = {0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 0, 0};
    EXPECT_EQ(0, std::memcmp(aExpected, cBitmap.m_pPixels.get(), sizeof aExpected));
    EXPECT_RAISES_CODE(LoadBytes(cBitmap, BmpFileOfCode(3, -3, {4, 7, 0, 1})), -38);
    EXPECT_RAISES_CODE(LoadBytes(cBitmap, BmpFileOfCode(3, -3, {0, 2, 0, 1, 0, 1})), -38);
}

TEST(BitmapFile, FilesByName)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("picture.bmp");
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 8);
    ClBitmap cBitmap(cPicture.aBlock.data(), true), cLoaded, cEmpty;
    const long nOpen = OpenFiles();
    cBitmap.Store(sName.c_str());
    EXPECT_EQ(BmpFile(cPicture), Bytes_t(FileBytes(sName)));
    cLoaded.Load(sName.c_str());
    EXPECT_TRUE(cBitmap == cLoaded);

    EXPECT_RAISES_CODE(cEmpty.Store(sName.c_str()), -10);
    EXPECT_EQ(BmpFile(cPicture), Bytes_t(FileBytes(sName))) << "a file stays when there is nothing to put in its place";
    EXPECT_RAISES_CODE(cBitmap.Store(cFolder.File("no/folder").c_str()), -200);
    EXPECT_RAISES_CODE(cBitmap.Store(static_cast<const char*>(nullptr)), -44);
    EXPECT_RAISES_CODE(cLoaded.Load(cFolder.File("missing").c_str()), -200);
    ExpectEmpty(cLoaded);
    EXPECT_RAISES_CODE(cLoaded.Load(static_cast<const char*>(nullptr)), -44);
    EXPECT_RAISES_CODE(cLoaded.Load(cFolder.Path().c_str()), -201); // a folder opens, but has no bytes
    WriteFileBytes(sName, Bytes_t(100, 1));
    EXPECT_RAISES_CODE(cLoaded.Load(sName.c_str()), -210);
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(BitmapFile, AFullDiskIsToldAndLeavesNoOpenFile)
{
    if (!std::filesystem::exists("/dev/full"))
    {
        GTEST_SKIP() << "this system has no file that is always full";
    }
    const long nOpen = OpenFiles();
    for (const int nWidth : {5, 5000}) // less and more than the C library holds back
    {
        ClBitmap cBitmap(nWidth, 10, 24, 0);
        cBitmap = 1;
        try
        {
            cBitmap.Store("/dev/full");
            ADD_FAILURE() << "it was stored";
        }
        catch (const ClExStream& cRaised)
        {
            EXPECT_TRUE(cRaised.Number() == -202 || cRaised.Number() == -204) << cRaised.What();
        }
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(BitmapFile, AnExhaustedHeapIsBadAllocAndLeavesAnEmptyBitmap)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("picture.bmp");
    const ClBitmap cStored(5, 3, 8, 0);
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { cStored.Store(sName.c_str()); }));
    ClBitmap cBitmap;
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation(
                     [&]
                     {
                         try
                         {
                             cBitmap.Load(sName.c_str());
                         }
                         catch (const ClExBadAlloc&)
                         {
                             EXPECT_EQ(nullptr, cBitmap.m_pBIH.get());
                             EXPECT_EQ(nullptr, cBitmap.m_pPixels.get());
                             throw;
                         }
                     }));
    EXPECT_EQ(5, +cBitmap.Header().biWidth);
}
} // namespace
