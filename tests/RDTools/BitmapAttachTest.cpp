#include "FailingHeap.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/BitmapChecks.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <memory>
#include <vector>

// Bitmaps over blocks that belong to others, and who keeps a block alive.

namespace
{
using Bytes_t = ClGuardedVector;

TEST(BitmapAttach, AttachWrapsThePartsOfABlock)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const int nCompression : {0, 3})
        {
            for (const unsigned int nClrUsed : {0u, 7u})
            {
                Bytes_t aBlock =
                    PackedBitmap(13, 5, nBitCount, nCompression, nBitCount > 8 && nCompression == 3 ? 0 : nClrUsed);
                unsigned int nEntries = nClrUsed;
                if (nBitCount > 8 && nCompression == 3)
                {
                    nEntries = 3;
                }
                else if (nBitCount <= 8 && nClrUsed == 0)
                {
                    nEntries = 1u << nBitCount;
                }
                ClBitmap cBitmap;
                cBitmap.Attach(aBlock.data(), aBlock.size());
                EXPECT_EQ(aBlock.data(), reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get()));
                EXPECT_EQ(nEntries == 0 ? nullptr : aBlock.data() + 40,
                          reinterpret_cast<unsigned char*>(cBitmap.m_pPalette));
                EXPECT_EQ(aBlock.data() + 40 + 4 * nEntries, cBitmap.m_pPixels.get());
                EXPECT_EQ(nEntries, cBitmap.PalSize(cBitmap.m_pBIH.get()));
                EXPECT_EQ(aBlock, Packed(cBitmap, aBlock.size()));
            }
        }
    }
}

TEST(BitmapAttach, AttachPassesExactSizesAndRefusesOneByteLess)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        const Bytes_t aBlock = PackedBitmap(13, 5, nBitCount);
        for (const Bytes_t& aPlaced : {aBlock, WithFileHeader(aBlock)})
        {
            ClGuardedBytes cBytes(aPlaced.data(), aPlaced.size());
            ClBitmap cBitmap;
            cBitmap.Attach(cBytes.Data(), cBytes.Size());
            cBitmap.Attach(cBytes.Data(), 0);
            EXPECT_EQ(cBytes.Data() + cBytes.Size() - 5 * cBitmap.Stride(), cBitmap.m_pPixels.get());
            EXPECT_RAISES(cBitmap.Attach(cBytes.Data(), cBytes.Size() - 1), ClExVelmarin, -21,
                          "The size of the finger template is not valid.");
            ExpectEmpty(cBitmap);
        }
    }
}

TEST(BitmapAttach, AttachTellsWhichPartIsMissing)
{
    const Bytes_t aPacked = PackedBitmap(13, 5, 8);
    const Bytes_t aFile = WithFileHeader(aPacked);
    ClBitmap cBitmap;
    for (unsigned long nSize = 1; nSize < aPacked.size(); ++nSize)
    {
        const ClGuardedBytes cBytes(aPacked.data(), nSize);
        if (nSize == 40 || nSize == 40 + 1024)
        {
            // A block that ends exactly behind header or table passes: the pixels are taken as unknown.
            cBitmap.Attach(cBytes.Data(), nSize);
            EXPECT_EQ(cBytes.Data() + 40 + 1024, cBitmap.m_pPixels.get());
            continue;
        }
        EXPECT_RAISES_CODE(cBitmap.Attach(cBytes.Data(), nSize), -21);
    }
    for (unsigned long nSize = 1; nSize < aFile.size(); ++nSize)
    {
        const ClGuardedBytes cBytes(aFile.data(), nSize);
        if (nSize != 14 + 40 && nSize != 14 + 40 + 1024)
        {
            EXPECT_RAISES_CODE(cBitmap.Attach(cBytes.Data(), nSize), nSize <= 14 ? -10 : -21);
        }
    }
    EXPECT_RAISES(cBitmap.Attach(nullptr, 100), ClException, -10, "The input image is not valid.\nNo Bitmap to Attach");
    Bytes_t aLetters = aFile;
    EXPECT_RAISES(cBitmap.Attach(aLetters.data(), 10), ClExVelmarin, -10, "The input image is not valid.");
    EXPECT_RAISES_CODE(cBitmap.Attach(aLetters.data(), 20), -21);
}

TEST(BitmapAttach, AttachOfOneByteReadsNoSecondOne)
{
    const ClGuardedBytes cFile("B", 1), cHeader("\x28", 1);
    ClBitmap cBitmap;
    EXPECT_RAISES_CODE(cBitmap.Attach(cFile.Data(), 1), -10); // what there is of a file header
    EXPECT_RAISES_CODE(cBitmap.Attach(cHeader.Data(), 1), -21);
}

TEST(BitmapAttach, AttachSkipsOneFileHeaderOnly)
{
    Bytes_t aTwice = WithFileHeader(WithFileHeader(PackedBitmap(3, 3, 8)));
    ClBitmap cBitmap;
    EXPECT_RAISES(cBitmap.Attach(aTwice.data(), aTwice.size()), ClException, -36,
                  "Fileheader found but expected bitmapinfoheader.\n"
                  "ClBitmap::Attach, Bitmapfileheader found Bitmapinfoheader expected.");
}

TEST(BitmapAttach, AttachRefusesASizeThatWraps)
{
    Bytes_t aBlock = PackedBitmap(4, 4, 8);
    const auto attachWith = [&aBlock](std::size_t nOffset, std::uint32_t nValue, unsigned long nSize)
    {
        Bytes_t aChanged = aBlock;
        PutLong(aChanged.data(), nOffset, nValue);
        ClBitmap cBitmap;
        cBitmap.Attach(aChanged.data(), nSize);
    };
    const unsigned long nSize = aBlock.size();
    EXPECT_RAISES_CODE(attachWith(8, 0x40000000, nSize), -21); // 4 bytes a row: the 32-bit product is 0
    EXPECT_RAISES_CODE(attachWith(8, 0x40000001, nSize), -21);
    EXPECT_RAISES_CODE(attachWith(4, 0x20000001, nSize), -21);  // 8 bits a pixel: the row wraps to 4 bytes
    EXPECT_RAISES_CODE(attachWith(32, 0x40000000, nSize), -21); // the table wraps to none
    EXPECT_RAISES_CODE(attachWith(32, 0x40000001, nSize), -21);
    EXPECT_RAISES_CODE(attachWith(8, 0xfffffffc, nSize), -21); // negative height
    EXPECT_RAISES_CODE(attachWith(4, 0xfffffff0, nSize), -21); // negative width
    EXPECT_NO_THROW(attachWith(8, 0xfffffffc, 0));
    EXPECT_NO_THROW(attachWith(8, 0x40000000, 0));
    EXPECT_NO_THROW(attachWith(8, 3, nSize)) << "a longer block than needed passes";
}

TEST(BitmapAttach, AttachKeepsANegativeHeightAsItIs)
{
    Bytes_t aBlock = PackedBitmap(4, 4, 8);
    PutLong(aBlock.data(), 8, static_cast<std::uint32_t>(-4));
    ClBitmap cBitmap;
    cBitmap.Attach(aBlock.data(), 0);
    ClImage cImage;
    EXPECT_TRUE(cImage.Attach(cBitmap));
    EXPECT_EQ(-4, cImage.m_nHeight);
    ClBitmap cCopy;
    EXPECT_RAISES_CODE(cCopy = cBitmap, -102);
    Bytes_t aOut(aBlock.size(), 0x5a);
    cBitmap.CopyTo(aOut.data());
    EXPECT_EQ(Bytes_t(16, 0x5a), Bytes_t(aOut.end() - 16, aOut.end())) << "there are no pixels to copy";
}

TEST(BitmapAttach, HeaderIsCheckedInOrder)
{
    Bytes_t aHeader = PackedBitmap(1, 1, 8);
    unsigned char* p = aHeader.data();
    EXPECT_EQ(p, reinterpret_cast<const unsigned char*>(ClBitmap::MemToBitmapInfoHeader(p)));
    EXPECT_RAISES(ClBitmap::MemToBitmapInfoHeader(nullptr), ClException, -10,
                  "The input image is not valid.\nClBitmap::Attach, Pointer is NULL.");
    PutShort(p, 14, 9);
    EXPECT_RAISES(ClBitmap::MemToBitmapInfoHeader(p), ClException, -12, szBadBitCount);
    PutLong(p, 16, 4);
    EXPECT_RAISES(ClBitmap::MemToBitmapInfoHeader(p), ClException, -31,
                  "The compression FOCC is not supported.\nClBitmap::Attach, Not Supported FOCC.");
    PutShort(p, 12, 0);
    EXPECT_RAISES(ClBitmap::MemToBitmapInfoHeader(p), ClException, -11,
                  "Number of image planes is invalid. (see documentation).\nClBitmap::Attach, pBI->biPlanes != 1.");
    PutLong(p, 0, 41);
    EXPECT_RAISES(ClBitmap::MemToBitmapInfoHeader(p), ClException, -32,
                  "The header size of the Bitmap is unknown.\nClBitmap::Attach, Bitmap Header size is not known.");
    p[0] = 'B';
    p[1] = 'M';
    EXPECT_RAISES_CODE(ClBitmap::MemToBitmapInfoHeader(p), -36);
    for (const int nCompression : {0, 1, 2, 3})
    {
        Bytes_t aGood = PackedBitmap(1, 1, 8, nCompression);
        EXPECT_NO_THROW(ClBitmap::MemToBitmapInfoHeader(aGood.data()));
    }
}

TEST(BitmapAttach, AttachReadsHeaderAndTableOnOddAddresses)
{
    const Bytes_t aBlock = PackedBitmap(13, 5, 8);
    Bytes_t aOdd(1);
    aOdd.insert(aOdd.end(), aBlock.begin(), aBlock.end());
    ClBitmap cBitmap;
    cBitmap.Attach(aOdd.data() + 1, aBlock.size());
    EXPECT_EQ(0xffffffu, cBitmap.PaletteEntry(255));
    EXPECT_TRUE(cBitmap.IsGray(true));
    EXPECT_EQ(aBlock, Packed(cBitmap, aBlock.size()));
    ClBitmap cCopy;
    cCopy = cBitmap;
    EXPECT_TRUE(cCopy == cBitmap);
}

TEST(BitmapAttach, AttachOfThreePartsTakesThemFromAnywhere)
{
    Bytes_t aBlock = WithFileHeader(PackedBitmap(13, 5, 8));
    Bytes_t aPixels(16 * 5, 7), aTable(1024, 9);
    ClBitmap cBitmap(aBlock.data(), aPixels.data(), aTable.data(), true);
    EXPECT_EQ(aBlock.data() + 14, reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get()));
    EXPECT_EQ(aTable.data(), reinterpret_cast<unsigned char*>(cBitmap.m_pPalette));
    EXPECT_EQ(aPixels.data(), cBitmap.m_pPixels.get());

    cBitmap.Attach(aBlock.data() + 14, aPixels.data(), nullptr);
    EXPECT_EQ(aBlock.data() + 14 + 40, reinterpret_cast<unsigned char*>(cBitmap.m_pPalette));

    Bytes_t aColour = PackedBitmap(13, 5, 24);
    cBitmap.Attach(aColour.data(), aPixels.data(), nullptr);
    EXPECT_EQ(nullptr, cBitmap.m_pPalette);

    EXPECT_RAISES(cBitmap.Attach(aColour.data(), nullptr, aTable.data()), ClException, -10,
                  "The input image is not valid.\nNo Pixel data to Attach");
    ExpectEmpty(cBitmap);
    EXPECT_RAISES(cBitmap.Attach(nullptr, nullptr, aTable.data()), ClException, -10,
                  "The input image is not valid.\nNo Bitmap to Attach");
    PutShort(aColour.data(), 14, 5);
    EXPECT_RAISES_CODE(cBitmap.Attach(aColour.data(), aPixels.data(), nullptr), -12);
    ExpectEmpty(cBitmap);
}

TEST(BitmapAttach, AttachToABitmapSharesItsBlocks)
{
    auto pSource = std::make_unique<ClBitmap>(13l, 5l, 8l, 0l);
    *pSource = 9;
    ClBitmap cBitmap;
    cBitmap.Attach(*pSource);
    EXPECT_EQ(pSource->m_pBIH.get(), cBitmap.m_pBIH.get());
    EXPECT_EQ(pSource->m_pPalette, cBitmap.m_pPalette);
    EXPECT_EQ(pSource->m_pPixels.get(), cBitmap.m_pPixels.get());
    pSource.reset();
    EXPECT_EQ(9, cBitmap.m_pPixels.get()[79]);
    cBitmap.Attach(cBitmap);
    EXPECT_EQ(9, cBitmap.m_pPixels.get()[79]);
    ClBitmap cOther;
    cBitmap.Header().biBitCount = 2;
    EXPECT_RAISES(cOther.Attach(cBitmap), ClException, -12, szBadBitCount);
}

TEST(BitmapAttach, AttachToAnImageMakesAHeaderOverItsPixels)
{
    for (const int nPlanes : {1, 3, 4})
    {
        ClImage cImage(13, 5, nPlanes, 19685, 3937);
        FillRandom(cImage, 4);
        ClBitmap cBitmap;
        cBitmap.Attach(cImage);
        EXPECT_EQ(8 * nPlanes, cBitmap.Header().biBitCount);
        EXPECT_EQ(13, cBitmap.Header().biWidth);
        EXPECT_EQ(5, cBitmap.Header().biHeight);
        EXPECT_EQ(0u, cBitmap.Header().biCompression);
        EXPECT_EQ(19685, cBitmap.Header().biXPelsPerMeter);
        EXPECT_EQ(3937, cBitmap.Header().biYPelsPerMeter);
        EXPECT_EQ(static_cast<std::uint32_t>(cImage.Stride() * 5), cBitmap.Header().biSizeImage);
        EXPECT_EQ(cImage.Data(), cBitmap.m_pPixels.get());
        EXPECT_EQ(2, cImage.m_pData.use_count());
        EXPECT_EQ(nPlanes == 1, cBitmap.m_pPalette != nullptr);
        if (nPlanes == 1)
        {
            EXPECT_EQ(0x808080u, cBitmap.PaletteEntry(128));
        }
    }
}

TEST(BitmapAttach, AttachToAnImageWithoutAreaChangesNothing)
{
    ClBitmap cBitmap(3, 3, 8, 0);
    const auto* pHeader = cBitmap.m_pBIH.get();
    cBitmap.Attach(ClImage());
    ClImage cFlat(0, 5, 2, 0, 0), cLow(5, 0, 2, 0, 0);
    cBitmap.Attach(cFlat);
    cBitmap.Attach(cLow);
    EXPECT_EQ(pHeader, cBitmap.m_pBIH.get());
}

TEST(BitmapAttach, AttachRefusesImagesThatNoBitmapCanShow)
{
    ClBitmap cBitmap(3, 3, 8, 0);
    ClImage cTwo(3, 3, 2, 0, 0), cWide;
    cWide.NewWithType(ClImage::eUInt16, 3, 3, 1, 0, 0);
    EXPECT_RAISES(cBitmap.Attach(cTwo), ClException, -33,
                  "The required format is not supported.\nOnly grey scale, RGB and RGBA images supported");
    EXPECT_RAISES(cBitmap.Attach(cWide), ClException, -33,
                  "The required format is not supported.\nOnly unsigned 8 bit images supported");
    cWide.NewWithType(ClImage::eUInt16, 3, 3, 2, 0, 0);
    EXPECT_RAISES(cBitmap.Attach(cWide), ClException, -33,
                  "The required format is not supported.\nOnly grey scale, RGB and RGBA images supported");
    EXPECT_EQ(3, cBitmap.Header().biWidth) << "the bitmap is unchanged";
}

TEST(BitmapAttach, AnImageOutlivesTheBitmapWhoseOwnBlockItSees)
{
    ClImage cImage;
    {
        ClBitmap cBitmap(13, 5, 8, 0);
        cBitmap = 42;
        EXPECT_EQ(2, cBitmap.m_pBIH.use_count()) << "the pixels hold the header's block";
        cImage.Attach(cBitmap);
    }
    for (int i = 0; i < 16 * 5; ++i)
    {
        ASSERT_EQ(42, cImage.Data()[i]);
    }
}

TEST(BitmapAttach, AnImageOutlivesTheBitmapThatWrapsACallersBlock)
{
    Bytes_t aBlock = PackedBitmap(13, 5, 8);
    ClImage cImage;
    {
        ClBitmap cBitmap(aBlock.data(), true);
        cImage.Attach(cBitmap);
    }
    EXPECT_EQ(aBlock.data() + 40 + 1024, cImage.Data());
    aBlock.back() = 99;
    EXPECT_EQ(99, cImage.Data()[79]);
}

TEST(BitmapAttach, ABitmapOutlivesTheImageWhosePixelsItShows)
{
    ClBitmap cBitmap;
    {
        ClImage cImage;
        FillRandom8(cImage, 13, 5, 3);
        Row<unsigned char>(cImage, 4)[12] = 17;
        cBitmap.Attach(cImage);
    }
    EXPECT_EQ(17, cBitmap.Line(4)[12]);
}

/// A block for 13 by 5 pixels of 8 bits as CheckPtr takes it over.
unsigned char* NewBlock()
{
    unsigned char* pBlock = ClBitmap::BitmapAlloc(13, 5, 8, 0, true);
    ClBitmap::FillBI(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock), 13, 5, 8, 0);
    return pBlock;
}

TEST(BitmapAttach, CheckPtrTakesABlockOver)
{
    ClBitmap cBitmap(3, 3, 24, 0);
    unsigned char* pBlock = NewBlock();
    std::uint32_t* pTable = cBitmap.CheckPtr(pBlock, 0);
    EXPECT_EQ(pBlock + 40, reinterpret_cast<unsigned char*>(pTable));
    EXPECT_EQ(pBlock, reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get()));
    EXPECT_EQ(nullptr, cBitmap.m_pPalette) << "left to the caller";
    EXPECT_EQ(nullptr, cBitmap.m_pPixels.get()) << "left to the caller";
    EXPECT_EQ(pTable, cBitmap.CheckPtr(pBlock, 40 + 1024 + 80)) << "again, with the size this time";
    EXPECT_EQ(1, cBitmap.m_pBIH.use_count());

    EXPECT_RAISES_CODE(cBitmap.CheckPtr(pBlock, 40 + 1024 + 79), -21); // the bitmap frees the block
    ExpectEmpty(cBitmap);
    EXPECT_RAISES(cBitmap.CheckPtr(nullptr, 0), ClException, -10, "The input image is not valid.\nNo Bitmap to Attach");
    for (const auto& [nSize, nCode] : {std::pair(39ul, -21), std::pair(40ul + 1023, -21), std::pair(40ul + 1025, -21)})
    {
        EXPECT_RAISES_CODE(cBitmap.CheckPtr(NewBlock(), nSize), nCode);
    }
}

TEST(BitmapAttach, CheckPtrOwnsABlockWithAFileHeaderFromItsBeginning)
{
    const Bytes_t aFile = WithFileHeader(PackedBitmap(13, 5, 8));
    unsigned char* pBlock = ClBitmap::BitmapAlloc(13, 6, 8, 0, true);
    std::memcpy(pBlock, aFile.data(), aFile.size());
    ClBitmap cBitmap;
    EXPECT_EQ(pBlock + 54, reinterpret_cast<unsigned char*>(cBitmap.CheckPtr(pBlock, aFile.size())));
    EXPECT_EQ(1, cBitmap.m_pBIH.use_count());
    EXPECT_EQ(13, +cBitmap.Header().biWidth); // by value: the header stands on an odd address
    pBlock = ClBitmap::BitmapAlloc(13, 6, 8, 0, true);
    std::memcpy(pBlock, aFile.data(), aFile.size());
    EXPECT_RAISES_CODE(cBitmap.CheckPtr(pBlock, 14), -10);
}

TEST(BitmapAttach, ABlockThatIsTakenOverGoesWithTheBitmapOrWithTheNextBlock)
{
    const long nNone = ClFailingHeap::LiveBlocks();
    {
        ClBitmap cBitmap;
        const long nEmpty = ClFailingHeap::LiveBlocks();
        cBitmap.m_pPalette = cBitmap.CheckPtr(NewBlock(), 0);
        cBitmap.ResetPixel();
        const long nWithBlock = ClFailingHeap::LiveBlocks();
        EXPECT_LT(nEmpty, nWithBlock);
        cBitmap.m_pPalette = cBitmap.CheckPtr(NewBlock(), 40 + 1024 + 80);
        cBitmap.ResetPixel();
        EXPECT_EQ(nWithBlock, ClFailingHeap::LiveBlocks());
    }
    EXPECT_EQ(nNone, ClFailingHeap::LiveBlocks());
}

TEST(BitmapAttach, ABlockThatIsRefusedGoesAtOnce)
{
    ClBitmap cBitmap;
    EXPECT_RAISES_CODE(cBitmap.CheckPtr(NewBlock(), 39), -21); // what the text of an error needs once is there now
    const long nEmpty = ClFailingHeap::LiveBlocks();
    for (const unsigned long nSize : {1ul, 39ul, 40ul + 1023, 40ul + 1024 + 79})
    {
        EXPECT_RAISES_CODE(cBitmap.CheckPtr(NewBlock(), nSize), -21);
        EXPECT_EQ(nEmpty, ClFailingHeap::LiveBlocks()) << nSize;
    }
}

TEST(BitmapAttach, WhatABitmapMakesForItselfGoesWithIt)
{
    ClImage cImage;
    FillRandom8(cImage, 13, 5, 3);
    const Bytes_t aBlock = PackedBitmap(13, 5, 8);
    const long nNone = ClFailingHeap::LiveBlocks();
    {
        ClBitmap cMade(13, 5, 8, 0);
        ClBitmap cOfImage(cImage, true);
        ClBitmap cOfBitmap(cMade, true);
        ClBitmap cOfBlock;
        cOfBlock.CopyFrom(aBlock.data(), true);
        cMade = cOfBlock;
        cOfBitmap.Create(7, 9, 24, 0);
        EXPECT_LT(nNone, ClFailingHeap::LiveBlocks());
    }
    EXPECT_EQ(nNone, ClFailingHeap::LiveBlocks());
}
} // namespace
