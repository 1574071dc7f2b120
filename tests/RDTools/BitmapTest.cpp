#include "RDTools/Bitmap.hpp"

#include "FailingHeap.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <memory>
#include <vector>

namespace
{
constexpr char szBadBitCount[] = "Pixel depth is invalid (see documentation).\n"
                                 "The Bitmap format does only support 1, 4, 8, 16, 24 and 32 bit counts!";

using Bytes_t = std::vector<unsigned char>;

void ExpectEmpty(const ClBitmap& cBitmap)
{
    EXPECT_EQ(nullptr, cBitmap.m_pBIH.get());
    EXPECT_EQ(nullptr, cBitmap.m_pPalette);
    EXPECT_EQ(nullptr, cBitmap.m_pPixels.get());
    EXPECT_EQ(1, cBitmap.m_pBIH.use_count());
    EXPECT_EQ(1, cBitmap.m_pPixels.use_count());
}

Bytes_t Packed(const ClBitmap& cBitmap, std::size_t nSize)
{
    Bytes_t aBytes(nSize);
    cBitmap.CopyTo(aBytes.data());
    return aBytes;
}

TEST(Bitmap, NewOneIsEmptyAndHoldsCounts)
{
    const ClBitmap cBitmap;
    ExpectEmpty(cBitmap);
    EXPECT_RAISES(cBitmap.Header(), ClExVelmarin, -10, "The input image is not valid.");
    EXPECT_RAISES_CODE(cBitmap.Stride(), -10);
    EXPECT_RAISES_CODE(cBitmap.CopyTo(nullptr), -10);
    EXPECT_RAISES_CODE(cBitmap.IsEqualSize(cBitmap), -10);
    EXPECT_RAISES_CODE(cBitmap.IsGray(false), -10);
    EXPECT_RAISES_CODE(cBitmap.PalSize(nullptr), -10);
    ClBitmap cOther;
    EXPECT_RAISES_CODE(cOther.Attach(cBitmap), -10);
    EXPECT_RAISES_CODE(cOther.DetachThis(), -10);
    EXPECT_RAISES_CODE(cOther.ResetPixel(), -10);
    EXPECT_RAISES_CODE(cOther = 5, -10);
}

TEST(Bitmap, RowsStandOnFourByteBoundaries)
{
    for (int nWidth = 0; nWidth < 70; ++nWidth)
    {
        for (const int nBitCount : {1, 4, 8, 16, 24, 32})
        {
            int nBytes = 0; // the smallest multiple of 4 that holds the bits
            while (nBytes * 8 < nBitCount * nWidth)
            {
                nBytes += 4;
            }
            EXPECT_EQ(nBytes, ClBitmap::RowBytes(nBitCount, nWidth)) << nBitCount << " bits, width " << nWidth;
        }
    }
    EXPECT_EQ(16, ClBitmap::RowBytes(8, 0x20000010)) << "32-bit arithmetic wraps";
    EXPECT_EQ(-8, ClBitmap::RowBytes(8, -10));
}

TEST(Bitmap, CreateMakesAGreyRampInStepsOfOne)
{
    const ClBitmap cBitmap(100, 10, 8, 0);
    const tagBITMAPINFOHEADER& cHeader = cBitmap.Header();
    EXPECT_EQ(40u, cHeader.biSize);
    EXPECT_EQ(100, cHeader.biWidth);
    EXPECT_EQ(10, cHeader.biHeight);
    EXPECT_EQ(1, cHeader.biPlanes);
    EXPECT_EQ(8, cHeader.biBitCount);
    EXPECT_EQ(0u, cHeader.biCompression);
    EXPECT_EQ(1000u, cHeader.biSizeImage);
    EXPECT_EQ(0, cHeader.biXPelsPerMeter);
    EXPECT_EQ(0, cHeader.biYPelsPerMeter);
    EXPECT_EQ(0u, cHeader.biClrUsed);
    EXPECT_EQ(0u, cHeader.biClrImportant);
    EXPECT_EQ(100, cBitmap.Stride());
    ASSERT_EQ(256u, cBitmap.PalSize(&cHeader));
    for (std::uint32_t i = 0; i < 256; ++i)
    {
        EXPECT_EQ(i * 0x010101u, cBitmap.PaletteEntry(i));
    }
    unsigned char* pBlock = reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get());
    EXPECT_EQ(pBlock + 40, reinterpret_cast<unsigned char*>(cBitmap.m_pPalette));
    EXPECT_EQ(pBlock + 40 + 1024, cBitmap.m_pPixels.get());
    EXPECT_EQ(cBitmap.m_pPixels.get() + 300, cBitmap.Line(3));
}

TEST(Bitmap, CreateOfOneAndFourBitsSpreadsTheRampToWhite)
{
    const ClBitmap cTwo(5, 1, 1, 0);
    EXPECT_EQ(4, cTwo.Stride());
    ASSERT_EQ(2u, cTwo.PalSize(cTwo.m_pBIH.get()));
    EXPECT_EQ(0u, cTwo.PaletteEntry(0));
    EXPECT_EQ(0xffffffu, cTwo.PaletteEntry(1));

    const ClBitmap cSixteen(5, 1, 4, 0);
    ASSERT_EQ(16u, cSixteen.PalSize(cSixteen.m_pBIH.get()));
    EXPECT_EQ(0x111111u, cSixteen.PaletteEntry(1));
    EXPECT_EQ(0xffffffu, cSixteen.PaletteEntry(15));
}

TEST(Bitmap, CreateWithBitFieldsWritesMasksWithRedInTheLowBits)
{
    const ClBitmap cSixteen(5, 2, 16, 3);
    ASSERT_EQ(3u, cSixteen.PalSize(cSixteen.m_pBIH.get()));
    EXPECT_EQ(31u, cSixteen.PaletteEntry(0));
    EXPECT_EQ(992u, cSixteen.PaletteEntry(1));
    EXPECT_EQ(31744u, cSixteen.PaletteEntry(2));
    EXPECT_EQ(reinterpret_cast<unsigned char*>(cSixteen.m_pBIH.get()) + 52, cSixteen.m_pPixels.get());

    const ClBitmap cThirtyTwo(5, 2, 32, 3);
    EXPECT_EQ(255u, cThirtyTwo.PaletteEntry(0));
    EXPECT_EQ(65280u, cThirtyTwo.PaletteEntry(1));
    EXPECT_EQ(16711680u, cThirtyTwo.PaletteEntry(2));

    const ClBitmap cEight(5, 2, 8, 3); // the masks overwrite the beginning of the ramp
    EXPECT_EQ(31744u, cEight.PaletteEntry(2));
    EXPECT_EQ(0x030303u, cEight.PaletteEntry(3));

    const ClBitmap cPlain(5, 2, 24, 0);
    EXPECT_EQ(0u, cPlain.PalSize(cPlain.m_pBIH.get()));
    EXPECT_EQ(nullptr, cPlain.m_pPalette);
}

TEST(Bitmap, CreateTakesResolutionsOrAModel)
{
    ClBitmap cModel(7, 3, 24, 0, 19685, 3937);
    EXPECT_EQ(19685, cModel.Header().biXPelsPerMeter);
    EXPECT_EQ(3937, cModel.Header().biYPelsPerMeter);
    ClBitmap cBitmap;
    cBitmap.Create(cModel);
    EXPECT_TRUE(cBitmap.IsEqualSize(cModel));
    EXPECT_EQ(24, cBitmap.Header().biBitCount);
    EXPECT_EQ(0, cBitmap.Header().biXPelsPerMeter);
    ClBitmap cEmpty;
    EXPECT_RAISES_CODE(cBitmap.Create(cEmpty), -10);
}

TEST(Bitmap, CreateRefusesWhatNoHeaderMaySay)
{
    ClBitmap cBitmap(5, 5, 8, 0);
    for (const long nBitCount : {0l, 2l, 7l, 9l, 40l, -8l, 1000l})
    {
        EXPECT_RAISES(cBitmap.Create(10, 10, nBitCount, 0), ClException, -12, szBadBitCount);
        ExpectEmpty(cBitmap);
    }
    EXPECT_RAISES_CODE(cBitmap.Create(10, 10, 7, 4), -31);
    for (const auto& [nWidth, nHeight] : {std::pair(10, -10), std::pair(-10, 10), std::pair(0x20000010, 4)})
    {
        EXPECT_RAISES_CODE(cBitmap.Create(nWidth, nHeight, 8, 0), -102);
        ExpectEmpty(cBitmap);
    }
    cBitmap.Create(0, 10, 8, 0); // without area, but legal
    EXPECT_EQ(0u, cBitmap.Header().biSizeImage);
}

TEST(Bitmap, AttachWrapsThePartsOfABlock)
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

TEST(Bitmap, AttachPassesExactSizesAndRefusesOneByteLess)
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

TEST(Bitmap, AttachTellsWhichPartIsMissing)
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

TEST(Bitmap, AttachOfOneByteReadsNoSecondOne)
{
    const ClGuardedBytes cFile("B", 1), cHeader("\x28", 1);
    ClBitmap cBitmap;
    EXPECT_RAISES_CODE(cBitmap.Attach(cFile.Data(), 1), -10); // what there is of a file header
    EXPECT_RAISES_CODE(cBitmap.Attach(cHeader.Data(), 1), -21);
}

TEST(Bitmap, AttachSkipsOneFileHeaderOnly)
{
    Bytes_t aTwice = WithFileHeader(WithFileHeader(PackedBitmap(3, 3, 8)));
    ClBitmap cBitmap;
    EXPECT_RAISES(cBitmap.Attach(aTwice.data(), aTwice.size()), ClException, -36,
                  "Fileheader found but expected bitmapinfoheader.\n"
                  "ClBitmap::Attach, Bitmapfileheader found Bitmapinfoheader expected.");
}

TEST(Bitmap, AttachRefusesASizeThatWraps)
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

TEST(Bitmap, AttachKeepsANegativeHeightAsItIs)
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

TEST(Bitmap, HeaderIsCheckedInOrder)
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

TEST(Bitmap, AttachReadsHeaderAndTableOnOddAddresses)
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

TEST(Bitmap, AttachOfThreePartsTakesThemFromAnywhere)
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

TEST(Bitmap, CopyOfThreePartsOwnsThem)
{
    Bytes_t aExpected = PackedBitmap(13, 5, 8), aBlock = WithFileHeader(aExpected);
    Bytes_t aPixels(aExpected.end() - 80, aExpected.end()), aTable(aExpected.begin() + 40, aExpected.end() - 80);
    aTable[1] = aExpected[41] = 77;
    ClBitmap cBitmap(aBlock.data(), aPixels.data(), aTable.data(), false);
    aBlock.assign(aBlock.size(), 0);
    aPixels.assign(aPixels.size(), 0);
    aTable.assign(aTable.size(), 0);
    EXPECT_EQ(aExpected, Packed(cBitmap, aExpected.size()));

    EXPECT_RAISES_CODE(cBitmap.CopyFrom(nullptr, aPixels.data(), nullptr), -10);
    EXPECT_RAISES(cBitmap.CopyFrom(aExpected.data(), nullptr, nullptr), ClException, -10,
                  "The input image is not valid.\nNo Pixel data to Attach");
    cBitmap.CopyFrom(aExpected.data(), aPixels.data(), nullptr);
    EXPECT_EQ(77u << 8, cBitmap.PaletteEntry(0)) << "the table behind the header";
}

TEST(Bitmap, AttachToABitmapSharesItsBlocks)
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

TEST(Bitmap, AttachToAnImageMakesAHeaderOverItsPixels)
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

TEST(Bitmap, AttachToAnImageWithoutAreaChangesNothing)
{
    ClBitmap cBitmap(3, 3, 8, 0);
    const auto* pHeader = cBitmap.m_pBIH.get();
    cBitmap.Attach(ClImage());
    ClImage cFlat(0, 5, 2, 0, 0);
    cBitmap.Attach(cFlat);
    EXPECT_EQ(pHeader, cBitmap.m_pBIH.get());
}

TEST(Bitmap, AttachRefusesImagesThatNoBitmapCanShow)
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

TEST(Bitmap, AnImageOutlivesTheBitmapWhoseOwnBlockItSees)
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

TEST(Bitmap, AnImageOutlivesTheBitmapThatWrapsACallersBlock)
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

TEST(Bitmap, ABitmapOutlivesTheImageWhosePixelsItShows)
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

TEST(Bitmap, ABitmapCanBeMadeAnewFromAnImageOfItself)
{
    ClBitmap cBitmap(13, 5, 8, 0);
    cBitmap = 33;
    ClImage cImage;
    cImage.Attach(cBitmap);
    cBitmap.Attach(cImage);
    EXPECT_EQ(33, cBitmap.Line(4)[12]);
    cBitmap.CopyFrom(cImage, true);
    EXPECT_NE(cImage.Data(), cBitmap.m_pPixels.get());
    EXPECT_EQ(33, cBitmap.Line(4)[12]);
}

TEST(Bitmap, CopyOfAnImageOwnsItsPixels)
{
    for (const int nPlanes : {1, 2, 3, 4})
    {
        ClImage cImage(13, 5, nPlanes, 100, 200);
        FillRandom(cImage, 5);
        ClBitmap cBitmap(cImage, true);
        EXPECT_EQ(8 * nPlanes, cBitmap.Header().biBitCount);
        EXPECT_EQ(200, cBitmap.Header().biYPelsPerMeter);
        EXPECT_NE(cImage.Data(), cBitmap.m_pPixels.get());
        EXPECT_EQ(0, std::memcmp(cImage.Data(), cBitmap.m_pPixels.get(),
                                 static_cast<std::size_t>(cImage.Stride() * cImage.m_nHeight)));
        const ClBitmap cShared(cImage, false);
        EXPECT_EQ(cImage.Data(), cShared.m_pPixels.get());
        EXPECT_EQ(2, cImage.m_pData.use_count());
    }
}

TEST(Bitmap, CopyOfWideSamplesTakesBytesOnly)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eUInt16, 6, 2, 1, 0, 0); // rows of 12 bytes; the bitmap's rows have 8
    FillRandom(cImage, 6);
    ClBitmap cBitmap;
    cBitmap = cImage;
    EXPECT_EQ(8, cBitmap.Stride());
    EXPECT_EQ(0, std::memcmp(cImage.Data(), cBitmap.m_pPixels.get(), 16));

    EXPECT_RAISES_CODE(cBitmap.CopyFrom(ClImage(), true), -12);
    ExpectEmpty(cBitmap);
}

TEST(Bitmap, CopyOfABitmapOwnsAllParts)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        const Bytes_t aOriginal = PackedBitmap(13, 5, nBitCount, nBitCount == 16 ? 3 : 0);
        Bytes_t aBlock = aOriginal;
        ClBitmap cSource(aBlock.data(), true);
        ClBitmap cCopy(cSource, true);
        ClBitmap cAssigned;
        cAssigned = cSource;
        ClBitmap cFromBlock(aBlock.data(), false);
        aBlock.assign(aBlock.size(), 0);
        for (const ClBitmap* pCopy : {&cCopy, &cAssigned, &cFromBlock})
        {
            EXPECT_EQ(aOriginal, Packed(*pCopy, aOriginal.size())) << nBitCount;
        }
    }
}

TEST(Bitmap, CopyWithoutCopyingShares)
{
    Bytes_t aBlock = PackedBitmap(13, 5, 8);
    ClBitmap cSource(aBlock.data(), true), cShared(cSource, false), cPacked;
    EXPECT_EQ(cSource.m_pPixels.get(), cShared.m_pPixels.get());
    cPacked.CopyFrom(aBlock.data(), false);
    EXPECT_EQ(cSource.m_pPixels.get(), cPacked.m_pPixels.get());
    ClBitmap cEmpty;
    cShared.CopyFrom(cEmpty, true);
    ExpectEmpty(cShared);
    cPacked.CopyFrom(cEmpty, false);
    ExpectEmpty(cPacked);
}

TEST(Bitmap, CopyOfItselfChangesNothing)
{
    ClBitmap cBitmap(13, 5, 8, 0);
    cBitmap = 8;
    const ClBitmap& cSame = cBitmap;
    cBitmap = cSame;
    EXPECT_EQ(8, cBitmap.Line(4)[12]);

    // A second bitmap without a share in the block that it sees.
    ClBitmap cView(reinterpret_cast<unsigned char*>(cBitmap.m_pBIH.get()), true);
    cBitmap = cView;
    EXPECT_EQ(8, cBitmap.Line(4)[12]);
}

TEST(Bitmap, AByteFillsAllPixels)
{
    ClBitmap cBitmap(13, 5, 8, 0);
    EXPECT_EQ(&cBitmap, &(cBitmap = 0xc3));
    EXPECT_EQ(Bytes_t(80, 0xc3), Bytes_t(cBitmap.m_pPixels.get(), cBitmap.m_pPixels.get() + 80));
    EXPECT_EQ(0xffffffu, cBitmap.PaletteEntry(255));
}

TEST(Bitmap, CopyToWritesExactlyThePackedForm)
{
    ClImage cImage(13, 5, 1, 19685, 19685);
    FillRandom(cImage, 8);
    ClBitmap cBitmap;
    cBitmap.Attach(cImage);
    ClGuardedBytes cBytes(40 + 1024 + 80);
    cBitmap.CopyTo(cBytes.Data());
    EXPECT_EQ(0, std::memcmp(cBytes.Data(), cBitmap.m_pBIH.get(), 40));
    EXPECT_EQ(0, std::memcmp(cBytes.Data() + 40, cBitmap.m_pPalette, 1024));
    EXPECT_EQ(0, std::memcmp(cBytes.Data() + 40 + 1024, cImage.Data(), 80));
    ClBitmap cSame(13, 5, 8, 0);
    cSame = 3;
    cSame.CopyTo(reinterpret_cast<unsigned char*>(cSame.m_pBIH.get())); // onto itself
    EXPECT_EQ(3, cSame.Line(4)[12]);
}

TEST(Bitmap, DetachThisHandsOutThePackedForm)
{
    const Bytes_t aOriginal = PackedBitmap(13, 5, 24);
    Bytes_t aBlock = aOriginal;
    ClBitmap cBitmap(aBlock.data(), false);
    const std::unique_ptr<unsigned char[]> pDetached(cBitmap.DetachThis());
    ExpectEmpty(cBitmap);
    EXPECT_EQ(aOriginal, Bytes_t(pDetached.get(), pDetached.get() + aOriginal.size()));
}

TEST(Bitmap, CheckPtrTakesABlockOver)
{
    ClBitmap cBitmap(3, 3, 24, 0);
    unsigned char* pBlock = ClBitmap::BitmapAlloc(13, 5, 8, 0, true);
    ClBitmap::FillBI(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock), 13, 5, 8, 0);
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
        pBlock = ClBitmap::BitmapAlloc(13, 5, 8, 0, true);
        ClBitmap::FillBI(reinterpret_cast<tagBITMAPINFOHEADER*>(pBlock), 13, 5, 8, 0);
        EXPECT_RAISES_CODE(cBitmap.CheckPtr(pBlock, nSize), nCode);
    }
}

TEST(Bitmap, CheckPtrOwnsABlockWithAFileHeaderFromItsBeginning)
{
    const Bytes_t aFile = WithFileHeader(PackedBitmap(13, 5, 8));
    unsigned char* pBlock = ClBitmap::BitmapAlloc(13, 6, 8, 0, true);
    std::memcpy(pBlock, aFile.data(), aFile.size());
    ClBitmap cBitmap;
    EXPECT_EQ(pBlock + 54, reinterpret_cast<unsigned char*>(cBitmap.CheckPtr(pBlock, aFile.size())));
    EXPECT_EQ(13, +cBitmap.Header().biWidth); // by value: the header stands on an odd address
    pBlock = ClBitmap::BitmapAlloc(13, 6, 8, 0, true);
    std::memcpy(pBlock, aFile.data(), aFile.size());
    EXPECT_RAISES_CODE(cBitmap.CheckPtr(pBlock, 14), -10);
}

TEST(Bitmap, SwapExchangesEverything)
{
    ClBitmap cFirst(13, 5, 8, 0), cSecond;
    const auto* pHeader = cFirst.m_pBIH.get();
    const auto* pTable = cFirst.m_pPalette;
    const auto* pPixels = cFirst.m_pPixels.get();
    cFirst.Swap(cSecond);
    ExpectEmpty(cFirst);
    EXPECT_EQ(pHeader, cSecond.m_pBIH.get());
    EXPECT_EQ(pTable, cSecond.m_pPalette);
    EXPECT_EQ(pPixels, cSecond.m_pPixels.get());
}

TEST(Bitmap, ClearHasFourNames)
{
    for (void (ClBitmap::*pClear)() : {&ClBitmap::Clear, &ClBitmap::ClearFree, &ClBitmap::Free, &ClBitmap::Detach})
    {
        ClBitmap cBitmap(13, 5, 8, 0);
        (cBitmap.*pClear)();
        ExpectEmpty(cBitmap);
    }
}

TEST(Bitmap, EqualityComparesHeaderTableAndPixelsButNoPadding)
{
    for (const int nBitCount : {1, 8, 24})
    {
        const Bytes_t aBlock = PackedBitmap(13, 5, nBitCount);
        const int nStride = ClBitmap::RowBytes(nBitCount, 13);
        const int nUsed = (13 * nBitCount + 7) / 8;
        const auto nPixels = aBlock.size() - static_cast<std::size_t>(5 * nStride);
        Bytes_t aFirst = aBlock;
        const ClBitmap cFirst(aFirst.data(), true);
        for (std::size_t i = 24; i < aBlock.size(); ++i)
        {
            Bytes_t aSecond = aBlock;
            aSecond[i] = static_cast<unsigned char>(~aSecond[i]);
            const bool bPadding = i >= nPixels && static_cast<int>(i - nPixels) % nStride >= nUsed;
            if (i >= 32 && i < 36)
            {
                continue; // the number of table entries
            }
            const ClBitmap cSecond(aSecond.data(), true);
            EXPECT_EQ(bPadding, cFirst == cSecond) << "byte " << i << " of " << nBitCount << " bits";
        }
    }
    const ClBitmap cEmpty, cOther, cFilled(1, 1, 8, 0);
    EXPECT_TRUE(cEmpty == cEmpty);
    EXPECT_FALSE(cEmpty == cOther);
    EXPECT_FALSE(cEmpty == cFilled);
    EXPECT_TRUE(cEmpty != cFilled);
}

TEST(Bitmap, ImageAssignmentCopiesTheBitmap)
{
    Bytes_t aBlock = PackedBitmap(13, 5, 24);
    ClImage cImage;
    {
        const ClBitmap cBitmap(aBlock.data(), true);
        cImage = cBitmap;
    }
    EXPECT_EQ(3, cImage.m_nPlanes);
    EXPECT_EQ(ClImage::eRGB, cImage.m_eContent);
    EXPECT_NE(aBlock.data() + 40, cImage.Data());
    EXPECT_EQ(0, std::memcmp(aBlock.data() + 40, cImage.Data(), 40 * 5));
}

TEST(Bitmap, EveryExhaustedHeapIsBadAllocAndLeavesAnEmptyBitmap)
{
    Bytes_t aBlock = PackedBitmap(13, 5, 8);
    ClImage cImage;
    FillRandom8(cImage, 13, 5, 2);
    ClBitmap cSource(13, 5, 24, 0), cBitmap;
    cSource = 1;
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([] { ClBitmap cNew; }));
    const auto expectEmptyAfterFailure = [&cBitmap](auto&& fn)
    {
        const long nFailed = ExpectBadAllocAtEveryAllocation([&] { fn(cBitmap); });
        for (long i = 0; i < nFailed; ++i)
        {
            bool bRaised = false;
            {
                const ClFailingHeap cHeap(i);
                try
                {
                    fn(cBitmap);
                }
                catch (const ClExBadAlloc&)
                {
                    bRaised = true;
                }
            }
            EXPECT_TRUE(bRaised);
            EXPECT_EQ(nullptr, cBitmap.m_pBIH.get()) << "at allocation " << i;
            EXPECT_EQ(nullptr, cBitmap.m_pPixels.get()) << "at allocation " << i;
            EXPECT_EQ(nullptr, cBitmap.m_pPalette) << "at allocation " << i;
        }
        return nFailed;
    };
    EXPECT_LT(0, expectEmptyAfterFailure([](ClBitmap& c) { c.Create(13, 5, 8, 0); }));
    EXPECT_LT(0, expectEmptyAfterFailure([&](ClBitmap& c) { c.Attach(aBlock.data(), aBlock.size()); }));
    EXPECT_LT(0, expectEmptyAfterFailure([&](ClBitmap& c) { c.Attach(aBlock.data(), aBlock.data(), nullptr); }));
    EXPECT_LT(0, expectEmptyAfterFailure([&](ClBitmap& c) { c = cImage; }));
    EXPECT_LT(0, expectEmptyAfterFailure([&](ClBitmap& c) { c.Attach(cImage); }));
    cBitmap.Attach(cImage);
    EXPECT_EQ(cImage.Data(), cBitmap.m_pPixels.get());
    // The temporary that keeps the old block comes first: without memory for it the old bitmap still stands.
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { cBitmap = cSource; }));
    EXPECT_TRUE(cBitmap == cSource);
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { cBitmap.CopyFrom(aBlock.data(), true); }));
    Bytes_t aOut(aBlock.size());
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { cBitmap.CopyTo(aOut.data()); }));
    EXPECT_EQ(aBlock, aOut);
}
} // namespace
