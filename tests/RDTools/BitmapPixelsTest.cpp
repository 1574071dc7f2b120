#include "RDTools/Bitmap.hpp"

#include "RDTools/BitmapPictures.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace
{
using Bytes_t = ClGuardedVector;

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

TEST(BitmapPixels, GreyOfNegativeSizesAndEmptyPicturesReadsNoPixel)
{
    for (const auto& [nOffset, nValue] : {std::pair(4, 0u), std::pair(8, 0u), std::pair(8, 0xfffffffeu),
                                          std::pair(4, 0xfffffff0u), std::pair(4, 0x55555556u)})
    {
        for (const int nBitCount : {16, 24, 32})
        {
            Bytes_t aBlock = PackedBitmap(3, 2, nBitCount);
            PutLong(aBlock.data(), static_cast<std::size_t>(nOffset), nValue);
            const ClGuardedBytes cBytes(aBlock.data(), 40);
            const ClBitmap cBitmap(cBytes.Data(), true); // the pixels would stand behind the block
            EXPECT_TRUE(cBitmap.IsGray(false));
        }
    }
}

TEST(BitmapPixels, GetPixelGivesTheEntryOfATableAtAnyWidth)
{
    for (const int nBitCount : {1, 2, 4, 8})
    {
        for (int nWidth = 1; nWidth < 20; ++nWidth)
        {
            ST_BitmapPicture cPicture = BitmapPicture(nWidth, 3, nBitCount);
            ColourTable(cPicture);
            PutLong(cPicture.aBlock.data(), 40, 0x7f123456); // the fourth byte belongs to the entry
            const ClGuardedBytes cBytes(cPicture.aBlock.data(), cPicture.aBlock.size());
            PutShort(cBytes.Data(), 14, 8); // 2 bits cannot be attached, but a header can come to say so
            ClBitmap cBitmap(cBytes.Data(), cBytes.Data() + cPicture.nOffset, cBytes.Data() + 40, true);
            PutShort(cBytes.Data(), 14, static_cast<std::uint16_t>(nBitCount));
            for (int y = 0; y < 3; ++y)
            {
                for (int x = 0; x < nWidth; ++x)
                {
                    ASSERT_EQ(TableColour(cPicture, cPicture.At(x, y)), cBitmap.GetPixel(x, y))
                        << nBitCount << " bits, width " << nWidth << ", " << x << ", " << y;
                }
            }
        }
    }
}

TEST(BitmapPixels, GetPixelOf24BitsIsTheThreeBytes)
{
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 24);
    const ClGuardedBytes cBytes(cPicture.aBlock.data(), cPicture.aBlock.size());
    ClBitmap cBitmap(cBytes.Data(), true);
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(cPicture.At(x, y), cBitmap.GetPixel(x, y));
        }
    }
    unsigned char* p = cBitmap.Line(1) + 6;
    p[0] = 0x11;
    p[1] = 0x22;
    p[2] = 0x33;
    EXPECT_EQ(0x332211u, cBitmap.GetPixel(2, 1)) << "blue, green, red";
}

TEST(BitmapPixels, GetPixelScalesWhatStandsUnderTheMasks)
{
    const auto expected = [](std::uint32_t nPixel, const int(&aShift)[3], const int(&aBits)[3])
    {
        std::uint32_t nColour = 0;
        for (int i = 0; i < 3; ++i)
        {
            const std::uint32_t nValue = nPixel >> aShift[i] & ((1u << aBits[i]) - 1);
            nColour |= ScaledChannel(nValue, aBits[i]) << (16 - 8 * i);
        }
        return nColour;
    };
    for (const auto& [nBitCount, nCompression] : {std::pair(16, 0), std::pair(16, 3), std::pair(32, 0)})
    {
        ST_BitmapPicture cPicture = BitmapPicture(31, 33, nBitCount, nCompression);
        const ClBitmap cBitmap(cPicture.aBlock.data(), true);
        for (int y = 0; y < 33; ++y)
        {
            for (int x = 0; x < 31; ++x)
            {
                const std::uint32_t nPixel = cPicture.At(x, y);
                const std::uint32_t nColour = nBitCount == 32     ? nPixel & 0xffffff
                                              : nCompression == 3 ? expected(nPixel, {11, 5, 0}, {5, 6, 5})
                                                                  : expected(nPixel, {10, 5, 0}, {5, 5, 5});
                ASSERT_EQ(nColour, cBitmap.GetPixel(x, y)) << nBitCount << " bits, pixel " << nPixel;
            }
        }
    }
    const ClBitmap cLowRed(1, 1, 32, 3); // FillBI writes the masks with red in the low bits
    PutLong(cLowRed.Line(0), 0, 0x99332211);
    EXPECT_EQ(0x112233u, cLowRed.GetPixel(0, 0));
}

TEST(BitmapPixels, GetPixelBehindTheTableIsBlack)
{
    for (const int nBitCount : {4, 8})
    {
        ST_BitmapPicture cPicture = BitmapPicture(16, 2, nBitCount, 0, 3);
        ColourTable(cPicture);
        ClBitmap cBitmap(cPicture.aBlock.data(), true);
        int nBehind = 0;
        for (int x = 0; x < 16; ++x)
        {
            const std::uint32_t nIndex = cPicture.At(x, 1);
            EXPECT_EQ(nIndex < 3 ? TableColour(cPicture, nIndex) : 0u, cBitmap.GetPixel(x, 1));
            nBehind += nIndex >= 3 ? 1 : 0;
        }
        EXPECT_LT(0, nBehind);
        cBitmap.m_pPalette = nullptr;
        EXPECT_EQ(0u, cBitmap.GetPixel(0, 0));
    }
}

TEST(BitmapPixels, NothingStandsOutsideABitmap)
{
    const std::pair<long, long> aOutside[] = {{-1, 0}, {0, -1},       {5, 0},        {0, 3},
                                              {5, 3},  {1l << 32, 0}, {0, 1l << 32}, {-(1l << 62), -(1l << 62)}};
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        Bytes_t aBlock = PackedBitmap(5, 3, nBitCount);
        const Bytes_t aBefore = aBlock;
        ClBitmap cBitmap(aBlock.data(), true);
        for (const auto& [x, y] : aOutside)
        {
            EXPECT_EQ(0xffffffffu, cBitmap.GetPixel(x, y));
            cBitmap.SetPixel(x, y, 0);
        }
        EXPECT_EQ(aBefore, aBlock);
        EXPECT_NE(0xffffffffu, cBitmap.GetPixel(4, 2));
    }
}

TEST(BitmapPixels, NoPixelsAreReadOfFormsThatAreNotHandled)
{
    Bytes_t aBlock = PackedBitmap(5, 3, 8);
    ClBitmap cBitmap(aBlock.data(), true);
    const auto expectNone = [&](const char* szWhat)
    {
        const Bytes_t aBefore = aBlock;
        EXPECT_EQ(0xffffffffu, cBitmap.GetPixel(1, 1)) << szWhat;
        cBitmap.SetPixel(1, 1, 0x010101);
        EXPECT_EQ(aBefore, aBlock) << szWhat;
    };
    for (const int nBitCount : {0, 3, 7, 9, 40, 64, 65535})
    {
        cBitmap.Header().biBitCount = static_cast<std::uint16_t>(nBitCount);
        expectNone("depth");
    }
    cBitmap.Header().biBitCount = 8;
    for (const std::uint32_t nCompression : {1u, 2u, 4u})
    {
        cBitmap.Header().biCompression = nCompression;
        expectNone("compression");
    }
    cBitmap.Header().biCompression = 0;
    cBitmap.Header().biHeight = -3;
    expectNone("negative height");
    cBitmap.Header().biHeight = 3;
    cBitmap.Header().biWidth = 0x20000010; // the row wraps to 16 bytes
    expectNone("row beyond 32 bits");
    cBitmap.Header().biWidth = 5;
    EXPECT_NE(0xffffffffu, cBitmap.GetPixel(1, 1));
    cBitmap.m_pPixels.reset();
    expectNone("no pixels");
    ClBitmap cEmpty;
    EXPECT_RAISES_CODE(cEmpty.GetPixel(0, 0), -10);
    EXPECT_RAISES_CODE(cEmpty.SetPixel(0, 0, 0), -10);
}

TEST(BitmapPixels, SetPixelWritesTheIndexOfAnExactMatch)
{
    for (const int nBitCount : {1, 2, 4, 8})
    {
        ST_BitmapPicture cPicture = BitmapPicture(13, 3, nBitCount);
        ColourTable(cPicture);
        ST_BitmapPicture cExpected = cPicture;
        PutShort(cPicture.aBlock.data(), 14, 8);
        ClBitmap cBitmap(cPicture.aBlock.data(), cPicture.aBlock.data() + cPicture.nOffset, cPicture.aBlock.data() + 40,
                         true);
        PutShort(cPicture.aBlock.data(), 14, static_cast<std::uint16_t>(nBitCount));
        ClTestRandom cRandom(8);
        for (int i = 0; i < 200; ++i)
        {
            const int x = cRandom.Below(13), y = cRandom.Below(3);
            const auto nIndex = static_cast<std::uint32_t>(cRandom.Below(1 << nBitCount));
            cExpected.Put(x, y, nIndex);
            cBitmap.SetPixel(x, y, TableColour(cPicture, nIndex));
            cBitmap.SetPixel(x, y, TableColour(cPicture, nIndex) ^ 0x80000000); // no entry: the pixel stays
            ASSERT_EQ(cExpected.aBlock, cPicture.aBlock) << nBitCount << " bits, " << x << ", " << y;
        }
    }
}

TEST(BitmapPixels, SetPixelTakesTheFirstOfEqualEntriesThatAPixelCanHold)
{
    ST_BitmapPicture cPicture = BitmapPicture(3, 1, 4, 0, 20);
    for (std::size_t i = 0; i < 20; ++i)
    {
        PutLong(cPicture.aBlock.data(), 40 + 4 * i, i < 5 ? 1 : i < 16 ? 2 : 3);
    }
    cPicture.Put(1, 0, 15);
    ClBitmap cBitmap(cPicture.aBlock.data(), true);
    cBitmap.SetPixel(1, 0, 3); // entries 16 to 19 are beyond 4 bits
    EXPECT_EQ(2u, cBitmap.GetPixel(1, 0));
    cBitmap.SetPixel(1, 0, 2);
    cPicture.Put(1, 0, 5);
    EXPECT_EQ(5, cBitmap.Line(0)[0] & 15);
}

TEST(BitmapPixels, SetPixelOf24BitsWritesThreeBytes)
{
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 24);
    ST_BitmapPicture cExpected = cPicture;
    ClBitmap cBitmap(cPicture.aBlock.data(), true);
    cBitmap.SetPixel(4, 2, 0xff102030);
    cExpected.Put(4, 2, 0x102030);
    EXPECT_EQ(cExpected.aBlock, cPicture.aBlock);
}

TEST(BitmapPixels, SetPixelKeepsTheBitsOutsideTheColours)
{
    ClBitmap cThirtyTwo(2, 1, 32, 0), cSixteen(2, 1, 16, 0);
    cThirtyTwo = 0xee;
    cThirtyTwo.SetPixel(1, 0, 0x00102030);
    EXPECT_EQ(0xee102030, cThirtyTwo.LongFromMem(cThirtyTwo.Line(0) + 4, 4));
    EXPECT_EQ(0xeeeeeeee, cThirtyTwo.LongFromMem(cThirtyTwo.Line(0), 4));
    cSixteen = 0xff;
    cSixteen.SetPixel(0, 0, 0);
    EXPECT_EQ(0x8000, cSixteen.LongFromMem(cSixteen.Line(0), 2));
    EXPECT_EQ(0xffff, cSixteen.LongFromMem(cSixteen.Line(0) + 2, 2));
}

TEST(BitmapPixels, SetPixelReducesAllChannelsToTheNarrowestMask)
{
    Bytes_t aBlock = PackedBitmap(1, 1, 16, 3); // 5, 6 and 5 bits
    ClBitmap cBitmap(aBlock.data(), true);
    for (unsigned int nGrey = 0; nGrey < 256; ++nGrey)
    {
        cBitmap.SetPixel(0, 0, nGrey * 0x010101);
        const long nPixel = cBitmap.LongFromMem(cBitmap.Line(0), 2);
        const auto nStep = static_cast<long>(nGrey * 31 / 255.0 + 0.5); // of 32, also for green
        EXPECT_EQ(nStep, nPixel >> 11) << nGrey;
        EXPECT_EQ(nStep, nPixel & 31) << nGrey;
        EXPECT_NEAR(static_cast<double>(nStep) / 31, static_cast<double>(nPixel >> 5 & 63) / 63, 0.5 / 63 + 0.002);
    }
    std::vector<bool> aGreens(64);
    for (unsigned int nGreen = 0; nGreen < 256; ++nGreen)
    {
        cBitmap.SetPixel(0, 0, nGreen << 8);
        aGreens[static_cast<std::size_t>(cBitmap.LongFromMem(cBitmap.Line(0), 2) >> 5 & 63)] = true;
    }
    EXPECT_EQ(32, std::count(aGreens.begin(), aGreens.end(), true));
    EXPECT_TRUE(aGreens[0]);
    EXPECT_TRUE(aGreens[63]);
}

TEST(BitmapPixels, SetPixelSkipsAColourWithoutAMask)
{
    Bytes_t aBlock = PackedBitmap(1, 1, 32, 3);
    PutLong(aBlock.data(), 40, 0xff0000);
    PutLong(aBlock.data(), 44, 0);
    PutLong(aBlock.data(), 48, 0xff);
    ClBitmap cBitmap(aBlock.data(), true);
    cBitmap = 0;
    cBitmap.SetPixel(0, 0, 0x12ff34);
    EXPECT_EQ(0x120034, cBitmap.LongFromMem(cBitmap.Line(0), 4)) << "8 bits, though green has none";
    EXPECT_EQ(0x120034u, cBitmap.GetPixel(0, 0));
    for (const std::size_t i : {0u, 1u, 2u})
    {
        PutLong(aBlock.data(), 40 + 4 * i, 0);
    }
    cBitmap.SetPixel(0, 0, 0xffffff);
    EXPECT_EQ(0u, cBitmap.GetPixel(0, 0));
    EXPECT_EQ(0x120034, cBitmap.LongFromMem(cBitmap.Line(0), 4));
}

TEST(BitmapPixels, WithoutItsTableABitmapHasTheUsualMasksAndIsGrey)
{
    ClBitmap cMasks(1, 1, 16, 3), cTable(1, 1, 8, 0);
    ExpectMask(cMasks, 0, 31, 0, 5);
    cMasks.m_pPalette = nullptr;
    ExpectMask(cMasks, 0, 31744, 10, 5);
    cTable.m_pPalette = nullptr;
    EXPECT_TRUE(cTable.IsGray(true));
}
} // namespace
