#include "RDTools/Bitmap.hpp"

#include "TestTools.hpp"

#include <cmath>
#include <cstring>

namespace
{
using Bytes_t = std::vector<unsigned char>;

TEST(BitmapPixels, LittleEndianValuesCountAsUnsigned)
{
    const ClBitmap cBitmap;
    unsigned char aBytes[5] = {0x81, 0x92, 0xa3, 0xb4, 0xc5};
    EXPECT_EQ(0x81, cBitmap.LongFromMem(aBytes, 1));
    EXPECT_EQ(0x9281, cBitmap.LongFromMem(aBytes, 2));
    EXPECT_EQ(0xa39281, cBitmap.LongFromMem(aBytes, 3));
    EXPECT_EQ(0xb4a39281, cBitmap.LongFromMem(aBytes, 4));
    cBitmap.LongToMem(aBytes, 0x1122334455, 3);
    EXPECT_EQ(0xb4334455, cBitmap.LongFromMem(aBytes, 4));
    cBitmap.LongToMem(aBytes, -2, 4);
    EXPECT_EQ(0xfffffffe, cBitmap.LongFromMem(aBytes, 4));
    EXPECT_EQ(0xc5, aBytes[4]);
}

TEST(BitmapPixels, MaskDataFindsTheLowestRunOfOnes)
{
    const ClBitmap cBitmap;
    const auto expect = [&cBitmap](long nMask, unsigned int nExpectedShift, unsigned int nExpectedBits)
    {
        unsigned int nShift = 99, nBits = 99;
        cBitmap.MaskData(nMask, nShift, nBits);
        EXPECT_EQ(nExpectedShift, nShift) << nMask;
        EXPECT_EQ(nExpectedBits, nBits) << nMask;
    };
    expect(0, 32, 0);
    expect(1, 0, 1);
    expect(0xff, 0, 8);
    expect(31744, 10, 5);
    expect(0x0f70, 4, 3);
    expect(0xff000000, 24, 8);
    expect(0xffffffff, 0, 32);
    expect(0x80000000, 31, 1);
}

void ExpectMask(const ClBitmap& cBitmap, unsigned int nChannel, unsigned int nExpectedMask, unsigned int nExpectedShift,
                unsigned int nBits)
{
    unsigned int nShift, nMask, nUp, nDown;
    cBitmap.GetMask(nChannel, nShift, nMask, nUp, nDown);
    const double dLargest = std::pow(2.0, nBits) - 1.0;
    EXPECT_EQ(nExpectedMask, nMask) << nChannel;
    EXPECT_EQ(nExpectedShift, nShift) << nChannel;
    EXPECT_EQ(static_cast<unsigned int>(16711680.0 / dLargest), nUp) << nChannel;
    EXPECT_EQ(static_cast<unsigned int>(dLargest * 257.00392156862745), nDown) << nChannel;
}

TEST(BitmapPixels, DefaultMasksHaveRedInTheHighBits)
{
    const ClBitmap cSixteen(1, 1, 16, 0), cThirtyTwo(1, 1, 32, 0);
    ExpectMask(cSixteen, 0, 31744, 10, 5);
    ExpectMask(cSixteen, 1, 992, 5, 5);
    ExpectMask(cSixteen, 2, 31, 0, 5);
    ExpectMask(cSixteen, 3, 32768, 15, 1);
    ExpectMask(cThirtyTwo, 0, 16711680, 16, 8);
    ExpectMask(cThirtyTwo, 1, 65280, 8, 8);
    ExpectMask(cThirtyTwo, 2, 255, 0, 8);
    ExpectMask(cThirtyTwo, 3, 4278190080, 24, 8);
}

TEST(BitmapPixels, MasksOfTheTableCountForBitFieldsOnly)
{
    const ClBitmap cCreated(1, 1, 16, 3);
    ExpectMask(cCreated, 0, 31, 0, 5);
    ExpectMask(cCreated, 2, 31744, 10, 5);

    Bytes_t aBlock = PackedBitmap(1, 1, 16, 3); // masks of 5, 6 and 5 bits
    const ClBitmap cAttached(aBlock.data(), true);
    ExpectMask(cAttached, 0, 63488, 11, 5);
    ExpectMask(cAttached, 1, 2016, 5, 6);
    ExpectMask(cAttached, 2, 31, 0, 5);
    ExpectMask(cAttached, 3, 32768, 15, 1); // the table has no fourth entry

    Bytes_t aPlain = PackedBitmap(1, 1, 32, 0, 3);
    ExpectMask(ClBitmap(aPlain.data(), true), 0, 16711680, 16, 8);
}

TEST(BitmapPixels, MaskWithoutOnesHasFactorsOfZero)
{
    Bytes_t aBlock = PackedBitmap(1, 1, 32, 3);
    PutLong(aBlock.data(), 40, 0);
    PutLong(aBlock.data(), 44, 0xffffffff);
    const ClBitmap cBitmap(aBlock.data(), true);
    unsigned int nShift, nMask, nUp, nDown;
    cBitmap.GetMask(0, nShift, nMask, nUp, nDown);
    EXPECT_EQ(0u, nMask);
    EXPECT_EQ(32u, nShift);
    EXPECT_EQ(0u, nUp);
    EXPECT_EQ(0u, nDown);
    EXPECT_EQ(0u, ClBitmap::ScaleUp(0xffffffff, nMask, nShift, nUp));
    cBitmap.GetMask(1, nShift, nMask, nUp, nDown);
    EXPECT_EQ(0xffffffffu, nMask);
    EXPECT_EQ(0u, nUp) << "a channel wider than the scale keeps none of it";
    // 4294967295 * 257.00392156862745 is 1103823437824 in double precision: its low 32 bits
    EXPECT_EQ(static_cast<unsigned int>(1103823437824 & 0xffffffff), nDown);
    cBitmap.GetMask(4, nShift, nMask, nUp, nDown);
    EXPECT_EQ(0u, nMask) << "there is no fifth channel";
}

TEST(BitmapPixels, ScaleUpReachesBothEndsOfTheScale)
{
    const ClBitmap cBitmap(1, 1, 16, 0);
    unsigned int nShift, nMask, nUp, nDown;
    cBitmap.GetMask(0, nShift, nMask, nUp, nDown);
    for (unsigned int nValue = 0; nValue < 32; ++nValue)
    {
        const unsigned int nScaled = ClBitmap::ScaleUp(nValue << 10 | 0x83ff, nMask, nShift, nUp);
        EXPECT_EQ((nValue * 539086 + 36863) / 65536, nScaled);
    }
    EXPECT_EQ(0u, ClBitmap::ScaleUp(0, nMask, nShift, nUp));
    EXPECT_EQ(255u, ClBitmap::ScaleUp(31744, nMask, nShift, nUp));
}

TEST(BitmapPixels, GreyTablesMayMoreoverBeTheIdentity)
{
    for (const int nBitCount : {1, 4, 8})
    {
        Bytes_t aBlock = PackedBitmap(9, 3, nBitCount);
        const ClBitmap cBitmap(aBlock.data(), true);
        EXPECT_TRUE(cBitmap.IsGray(false));
        EXPECT_EQ(nBitCount == 8, cBitmap.IsGray(true));
        const std::size_t nLast = 40 + (std::size_t(4) << nBitCount) - 4;
        for (std::size_t i = 0; i < 3; ++i)
        {
            Bytes_t aColour = aBlock;
            aColour[nLast + i] ^= 1;
            EXPECT_FALSE(ClBitmap(aColour.data(), true).IsGray(false)) << "sample " << i;
        }
        Bytes_t aReserved = aBlock;
        aReserved[nLast + 3] = 9;
        EXPECT_TRUE(ClBitmap(aReserved.data(), true).IsGray(false)) << "the fourth byte does not count";
        aBlock[40] = aBlock[41] = aBlock[42] = 1;
        EXPECT_TRUE(cBitmap.IsGray(false));
        EXPECT_FALSE(cBitmap.IsGray(true));
    }
}

TEST(BitmapPixels, GreyPixelsHaveEqualSamples)
{
    for (const int nBitCount : {24, 32})
    {
        const int nBytes = nBitCount / 8;
        ClBitmap cBitmap(5, 3, nBitCount, 0);
        cBitmap = 0xff; // padding included
        ClTestRandom cRandom(3);
        for (int y = 0; y < 3; ++y)
        {
            for (int x = 0; x < 5; ++x)
            {
                std::memset(cBitmap.Line(y) + nBytes * x, cRandom.Below(256), 3);
            }
        }
        EXPECT_TRUE(cBitmap.IsGray(false));
        EXPECT_TRUE(cBitmap.IsGray(true));
        if (nBitCount == 24)
        {
            cBitmap.Line(1)[15] = 0;
            EXPECT_TRUE(cBitmap.IsGray(false)) << "padding does not count";
        }
        for (int i = 0; i < 3; ++i)
        {
            unsigned char& nSample = cBitmap.Line(2)[nBytes * 4 + i];
            nSample ^= 1;
            EXPECT_FALSE(cBitmap.IsGray(false)) << "sample " << i;
            nSample ^= 1;
        }
    }
}

TEST(BitmapPixels, GreyOfSixteenBitsComparesScaledChannels)
{
    Bytes_t aBlock = PackedBitmap(3, 1, 16, 3); // 5, 6 and 5 bits
    const ClBitmap cBitmap(aBlock.data(), true);
    PutShort(cBitmap.Line(0), 0, 0xffff);
    PutShort(cBitmap.Line(0), 2, 0);
    PutShort(cBitmap.Line(0), 4, 0xffff);
    EXPECT_TRUE(cBitmap.IsGray(false));
    PutShort(cBitmap.Line(0), 4, 0xffdf); // green 62 of 63
    EXPECT_FALSE(cBitmap.IsGray(false));
}
} // namespace
