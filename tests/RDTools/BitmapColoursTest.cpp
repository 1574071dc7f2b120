#include "RDTools/BitmapColours.hpp"

#include "RDTools/BitmapPictures.hpp"
#include "TestTools.hpp"

#include <cstring>

namespace
{
using Bytes_t = ClGuardedVector;

/// A 16 or 32-bit bitmap of one pixel under these masks.
Bytes_t Masked(int nBitCount, std::uint32_t nRed, std::uint32_t nGreen, std::uint32_t nBlue)
{
    Bytes_t aBlock = PackedBitmap(1, 1, nBitCount, 3);
    PutLong(aBlock.data(), 40, nRed);
    PutLong(aBlock.data(), 44, nGreen);
    PutLong(aBlock.data(), 48, nBlue);
    return aBlock;
}

TEST(BitmapColours, FaultTellsWhyPixelsCannotBeWalked)
{
    ClBitmap cBitmap;
    EXPECT_EQ(-10, ClBitmapColours::Fault(cBitmap));
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const int nCompression : {0, 3})
        {
            cBitmap.Create(3, 2, nBitCount, nCompression);
            EXPECT_EQ(0, ClBitmapColours::Fault(cBitmap));
        }
    }
    cBitmap.Header().biBitCount = 2;
    EXPECT_EQ(0, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biBitCount = 12;
    EXPECT_EQ(-12, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biCompression = 1;
    EXPECT_EQ(-31, ClBitmapColours::Fault(cBitmap));
    cBitmap.Create(3, 2, 8, 0);
    cBitmap.Header().biWidth = -3;
    EXPECT_EQ(-14, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biWidth = 0x20000001;
    EXPECT_EQ(-14, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biWidth = 3;
    cBitmap.Header().biHeight = -2;
    EXPECT_EQ(-14, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biHeight = 2;
    cBitmap.m_pPixels.reset();
    EXPECT_EQ(-10, ClBitmapColours::Fault(cBitmap));
    cBitmap.Header().biHeight = 0;
    EXPECT_EQ(0, ClBitmapColours::Fault(cBitmap)) << "there are no pixels to miss";
}

TEST(BitmapColours, PixelsAreReadAndWrittenAtAnyWidth)
{
    for (const int nBitCount : {1, 2, 4, 8, 16, 24, 32})
    {
        for (int nWidth = 1; nWidth < 20; ++nWidth)
        {
            ST_BitmapPicture cPicture = BitmapPicture(nWidth, 2, nBitCount);
            ClBitmap cBitmap(1, 1, 24, 0);
            cBitmap.Header().biBitCount = static_cast<std::uint16_t>(nBitCount);
            const ClBitmapColours cColours(cBitmap);
            const std::size_t nUsed = (static_cast<std::size_t>(nBitCount * nWidth) + 7) / 8;
            const unsigned char* pPixels = cPicture.aBlock.data() + cPicture.nOffset;
            const ClGuardedBytes cRow(pPixels, nUsed); // without padding: nothing behind the last pixel is touched
            for (int x = 0; x < nWidth; ++x)
            {
                ASSERT_EQ(cPicture.At(x, 0), cColours.Read(cRow.Data(), x)) << nBitCount << " bits, " << x;
                cPicture.Put(x, 0, cPicture.At(x, 1));
                cColours.Write(cRow.Data(), x, cPicture.At(x, 1));
                ASSERT_EQ(0, std::memcmp(cRow.Data(), pPixels, nUsed)) << nBitCount << " bits, " << x;
            }
        }
    }
}

TEST(BitmapColours, EntriesBehindTheTableAreBlackAndNeverFound)
{
    Bytes_t aBlock = PackedBitmap(1, 1, 8, 0, 3); // entries 0, 0x7f7f7f and 0xffffff
    const ClBitmap cBitmap(aBlock.data(), true);
    const ClBitmapColours cColours(cBitmap);
    EXPECT_EQ(0xffffffu, cColours.Entry(2));
    EXPECT_EQ(0u, cColours.Entry(3));
    EXPECT_EQ(0u, cColours.Entry(255));
    EXPECT_EQ(1, cColours.IndexOf(0x7f7f7f));
    EXPECT_EQ(-1, cColours.IndexOf(0x7f7f7f7f));
    EXPECT_EQ(0, cColours.Channel(200, ClBitmapColours::eRed));
    EXPECT_EQ(255, cColours.Channel(200, ClBitmapColours::eAlpha)) << "a table has no alpha";
}

TEST(BitmapColours, ChannelsOfATableAreItsBytes)
{
    Bytes_t aBlock = PackedBitmap(1, 1, 8);
    PutLong(aBlock.data(), 40 + 4 * 77, 0x99332211);
    const ClBitmap cBitmap(aBlock.data(), true);
    const ClBitmapColours cColours(cBitmap);
    EXPECT_EQ(0x33, cColours.Channel(77, ClBitmapColours::eRed));
    EXPECT_EQ(0x22, cColours.Channel(77, ClBitmapColours::eGreen));
    EXPECT_EQ(0x11, cColours.Channel(77, ClBitmapColours::eBlue));
}

TEST(BitmapColours, EveryValueUnderAMaskComesBackFromItsChannel)
{
    for (int nBits = 1; nBits <= 8; ++nBits)
    {
        for (int nShift = 0; nShift + nBits <= 32; nShift += 3)
        {
            const std::uint32_t nMask = ((1u << nBits) - 1) << nShift;
            Bytes_t aBlock = Masked(32, nMask, 0, 0);
            const ClBitmap cBitmap(aBlock.data(), true);
            const ClBitmapColours cColours(cBitmap);
            for (std::uint32_t nValue = 0; nValue < 1u << nBits; ++nValue)
            {
                const std::uint32_t nPixel = nValue << nShift | (0xa5a5a5a5 & ~nMask);
                const unsigned char nChannel = cColours.Channel(nPixel, ClBitmapColours::eRed);
                ASSERT_EQ(ScaledChannel(nValue, nBits), nChannel) << nBits << " bits, " << nValue;
                ASSERT_EQ(nPixel, cColours.WithChannel(0xa5a5a5a5, ClBitmapColours::eRed, nChannel))
                    << nBits << " bits, " << nValue;
            }
        }
    }
}

TEST(BitmapColours, EveryChannelValueComesBackFromAWideMask)
{
    for (const int nBits : {8, 9, 10, 12, 16, 17, 24, 32})
    {
        const auto nMask = static_cast<std::uint32_t>((std::uint64_t(1) << nBits) - 1) << (32 - nBits);
        Bytes_t aBlock = Masked(32, nMask, 0, 0);
        const ClBitmap cBitmap(aBlock.data(), true);
        const ClBitmapColours cColours(cBitmap);
        for (unsigned int nValue = 0; nValue < 256; ++nValue)
        {
            const unsigned int nPixel = cColours.WithChannel(0, ClBitmapColours::eRed, nValue);
            ASSERT_EQ(0u, nPixel & ~nMask);
            ASSERT_NEAR(nValue / 255.0, nPixel / static_cast<double>(nMask), 0.001) << nBits << " bits";
            ASSERT_EQ(nValue, cColours.Channel(nPixel, ClBitmapColours::eRed)) << nBits << " bits";
        }
        EXPECT_EQ(255, cColours.Channel(0xffffffff, ClBitmapColours::eRed));
        EXPECT_EQ(0, cColours.Channel(0, ClBitmapColours::eRed));
    }
}

TEST(BitmapColours, WhiteSetsEveryBitOfAMaskOfUpTo16Bits)
{
    for (int nBits = 1; nBits <= 16; ++nBits)
    {
        const std::uint32_t nMask = ((1u << nBits) - 1) << 7;
        Bytes_t aBlock = Masked(32, nMask, 0, 0);
        const ClBitmap cBitmap(aBlock.data(), true);
        EXPECT_EQ(nMask, ClBitmapColours(cBitmap).WithChannel(0, ClBitmapColours::eRed, 255)) << nBits << " bits";
    }
}

TEST(BitmapColours, OfAMaskWithGapsTheLowestRunCounts)
{
    Bytes_t aBlock = Masked(32, 0xff00f0f0, 0, 0xff);
    const ClBitmap cBitmap(aBlock.data(), true);
    const ClBitmapColours cColours(cBitmap);
    EXPECT_EQ(255, cColours.Channel(0xf0, ClBitmapColours::eRed));
    EXPECT_EQ(0, cColours.Channel(0xffffff0f, ClBitmapColours::eRed));
    EXPECT_EQ(0x700f, cColours.WithChannel(0x700f, ClBitmapColours::eRed, 0));
    EXPECT_EQ(0x70f0, cColours.WithChannel(0x7000, ClBitmapColours::eRed, 255));
}

TEST(BitmapColours, AColourWithoutAMaskIsBlackAndCannotBeSet)
{
    Bytes_t aBlock = Masked(16, 0, 0xff0000, 0xf);
    const ClBitmap cBitmap(aBlock.data(), true);
    const ClBitmapColours cColours(cBitmap);
    EXPECT_EQ(0, cColours.Channel(0xffff, ClBitmapColours::eRed));
    EXPECT_EQ(0x1234u, cColours.WithChannel(0x1234, ClBitmapColours::eRed, 255));
    EXPECT_EQ(0, cColours.Channel(0xffff, ClBitmapColours::eGreen)) << "a mask beyond the pixel";
    EXPECT_EQ(0x123fu, cColours.WithColour(0x1234, 0xff00ff));
}

TEST(BitmapColours, AlphaStandsUnderAMaskOfItsOwnOnly)
{
    const ClBitmap cFive(1, 1, 16, 0), cEight(1, 1, 32, 0), cThree(1, 1, 24, 0);
    EXPECT_EQ(255, ClBitmapColours(cFive).Channel(0x8000, ClBitmapColours::eAlpha));
    EXPECT_EQ(0, ClBitmapColours(cFive).Channel(0x7fff, ClBitmapColours::eAlpha));
    EXPECT_EQ(0x8000u, ClBitmapColours(cFive).WithChannel(0, ClBitmapColours::eAlpha, 128));
    EXPECT_EQ(0x7fffu, ClBitmapColours(cFive).WithChannel(0xffff, ClBitmapColours::eAlpha, 127));
    EXPECT_EQ(0x7b, ClBitmapColours(cEight).Channel(0x7b000000, ClBitmapColours::eAlpha));
    EXPECT_EQ(255, ClBitmapColours(cThree).Channel(0, ClBitmapColours::eAlpha));
    EXPECT_EQ(0x123456u, ClBitmapColours(cThree).WithChannel(0x123456, ClBitmapColours::eAlpha, 7));

    Bytes_t aBlock = PackedBitmap(1, 1, 16, 3); // red takes the bit that alpha usually has
    const ClBitmap cSixGreen(aBlock.data(), true);
    EXPECT_EQ(255, ClBitmapColours(cSixGreen).Channel(0, ClBitmapColours::eAlpha));
    EXPECT_EQ(0xffffu, ClBitmapColours(cSixGreen).WithChannel(0xffff, ClBitmapColours::eAlpha, 0));
}
} // namespace
