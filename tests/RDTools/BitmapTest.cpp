#include "RDTools/Bitmap.hpp"

#include "FailingHeap.hpp"
#include "RDTools/BitmapChecks.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace
{
using Bytes_t = ClGuardedVector;

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

TEST(Bitmap, CopyOfAnImageAsksForItsRowsAtOnce)
{
    // In one direction the rows are padded fourfold.
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1000), std::pair(1000, 1)})
    {
        ClImage cImage(nWidth, nHeight, 1, 0, 0);
        const ClLimitedHeap cHeap(std::size_t(1) << 20);
        const ClBitmap cBitmap(cImage, true);
        const std::size_t nPixels = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(nHeight);
        EXPECT_LE(40 + 1024 + nPixels, ClLimitedHeap::Greatest());
        EXPECT_GT(40 + 1024 + nPixels + 40, ClLimitedHeap::Greatest()); // whole headers
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
    for (const bool bCopy : {true, false})
    {
        cBitmap.CopyFrom(cSame, bCopy);
        EXPECT_EQ(8, cBitmap.Line(4)[12]);
    }

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

TEST(Bitmap, AByteFillsNothingWhereThereAreNoPixels)
{
    const Bytes_t aOriginal = PackedBitmap(13, 5, 8);
    for (const auto& [nWidth, nHeight] : {std::pair(0, 5), std::pair(13, 0), std::pair(-13, 5), std::pair(13, -5)})
    {
        Bytes_t aBlock = aOriginal;
        ClBitmap cBitmap(aBlock.data(), true);
        cBitmap.Header().biWidth = nWidth;
        cBitmap.Header().biHeight = nHeight;
        cBitmap = 0xc3;
        EXPECT_TRUE(std::equal(aBlock.begin() + 40, aBlock.end(), aOriginal.begin() + 40)) << nWidth << " " << nHeight;
    }
    ClImage cNoPixels;
    cNoPixels.Attach(nullptr, 1, 13, 5, 1, 0, 0);
    ClBitmap cBitmap(cNoPixels, false);
    cBitmap = 0xc3;
    EXPECT_EQ(nullptr, cBitmap.m_pPixels.get());
}

TEST(Bitmap, BlocksOfImpossibleDepthsHaveNoTable)
{
    // Nothing in the block is initialised; below, its first bytes are written, and no more than 40 of them are there.
    const std::unique_ptr<tagBITMAPINFOHEADER[]> pBlock(
        reinterpret_cast<tagBITMAPINFOHEADER*>(ClBitmap::BitmapAlloc(4, 4, -8, 0, false)));
    ClBitmap::FillBI(pBlock.get(), 4, 4, -8, 0);
    EXPECT_EQ(65528, pBlock[0].biBitCount);
    EXPECT_EQ(0u, pBlock[0].biClrUsed);
    EXPECT_EQ(4, pBlock[0].biHeight);

    // One entry, which is left as it is: there is no ramp over a single one.
    ClGuardedBytes cZero(44);
    std::memset(cZero.Data(), 0x5a, 44);
    ClBitmap::FillBI(reinterpret_cast<tagBITMAPINFOHEADER*>(cZero.Data()), 4, 4, 0, 0);
    EXPECT_EQ(40, cZero.Data()[0]);
    EXPECT_EQ(0, cZero.Data()[14]);
    EXPECT_EQ(Bytes_t(4, 0x5a), Bytes_t(cZero.Data() + 40, cZero.Data() + 44));
}

TEST(Bitmap, SizesAreEqualIfBothSidesAre)
{
    const ClBitmap cBitmap(13, 5, 8, 0);
    EXPECT_TRUE(cBitmap.IsEqualSize(ClBitmap(13, 5, 24, 0)));
    EXPECT_FALSE(cBitmap.IsEqualSize(ClBitmap(12, 5, 8, 0)));
    EXPECT_FALSE(cBitmap.IsEqualSize(ClBitmap(13, 6, 8, 0)));
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
    EXPECT_FALSE(cFilled == cEmpty);
    EXPECT_TRUE(cEmpty != cFilled);
}

TEST(Bitmap, SharedAndMissingPartsAreComparedWithoutReadingThem)
{
    Bytes_t aBlock = PackedBitmap(13, 5, 8), aOther = aBlock;
    const ClBitmap cFirst(aBlock.data(), true), cSameBlock(aBlock.data(), true), cSecond(aOther.data(), true);
    EXPECT_TRUE(cFirst == cSameBlock);
    EXPECT_TRUE(cFirst == cSecond);
    for (const std::size_t nSide : {4, 8}) // width and height
    {
        PutLong(aBlock.data(), nSide, 0);
        PutLong(aOther.data(), nSide, 0);
        EXPECT_TRUE(cFirst == cSecond) << "no pixels that could differ";
        PutLong(aBlock.data(), nSide, nSide == 4 ? 13 : 5);
        PutLong(aOther.data(), nSide, nSide == 4 ? 13 : 5);
    }

    ClImage cNoPixels;
    cNoPixels.Attach(nullptr, 1, 13, 5, 1, 19685, 19685);
    ClBitmap cBare(cNoPixels, false), cBareToo(cNoPixels, false), cFull(13, 5, 8, 0, 19685, 19685);
    EXPECT_EQ(nullptr, cBare.m_pPixels.get());
    EXPECT_TRUE(cBare == cBareToo);
    EXPECT_FALSE(cBare == cFull);
    EXPECT_FALSE(cFull == cBare);

    ClBitmap cWithout(13, 5, 8, 0), cWith(13, 5, 8, 0);
    cWithout = 1;
    cWith = 1;
    EXPECT_TRUE(cWith == cWithout);
    cWithout.m_pPalette = nullptr;
    EXPECT_FALSE(cWith == cWithout);
    EXPECT_FALSE(cWithout == cWith);
    ClGuardedBytes cPacked(40 + 1024 + 80);
    cWithout.CopyTo(cPacked.Data());
    EXPECT_EQ(1, cPacked.Data()[40 + 1024]);
    EXPECT_EQ(0, cPacked.Data()[40 + 1023]) << "there was no table to copy";
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
