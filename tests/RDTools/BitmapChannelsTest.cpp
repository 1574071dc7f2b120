#include "RDTools/BitmapPictures.hpp"

#include "FailingHeap.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <functional>

// Whole pictures and channels, in and out of a bitmap. The expected samples come from the numbers of the picture.

namespace
{
using Bytes_t = ClGuardedVector;

/// 0xAARRGGBB of a pixel, by the plain form of the rules.
std::uint32_t Colour(const ST_BitmapPicture& cPicture, bool bMasks, std::uint32_t nPixel)
{
    const auto under = [nPixel](int nShift, int nBits)
    { return ScaledChannel(nPixel >> nShift & ((1u << nBits) - 1), nBits); };
    switch (cPicture.nBitCount)
    {
    case 16:
        return bMasks ? 0xff000000 | under(11, 5) << 16 | under(5, 6) << 8 | under(0, 5)
                      : under(15, 1) << 24 | under(10, 5) << 16 | under(5, 5) << 8 | under(0, 5);
    case 24: return 0xff000000 | nPixel;
    case 32: return nPixel;
    default: return 0xff000000 | TableColour(cPicture, nPixel);
    }
}

/// Samples of the expected image: fn(x, y, plane).
ClImage& Expect(ClImage& cImage, const ST_BitmapPicture& cPicture, int nPlanes,
                const std::function<std::uint32_t(int, int, int)>& fn)
{
    cImage.NewWithType(ClImage::eUInt8, cPicture.nWidth, cPicture.nHeight, nPlanes, 19685, 19685);
    for (int y = 0; y < cPicture.nHeight; ++y)
    {
        for (int x = 0; x < cPicture.nWidth; ++x)
        {
            for (int i = 0; i < nPlanes; ++i)
            {
                Row<unsigned char>(cImage, y)[nPlanes * x + i] = static_cast<unsigned char>(fn(x, y, i));
            }
        }
    }
    return cImage;
}

/// Runs fn(picture, bitmap, masks) on pictures of all depths; they end where readable memory ends.
template <class Fn> void AtAllDepths(Fn&& fn)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const int nCompression : {0, 3})
        {
            for (const int nWidth : {1, 2, 3, 7, 8, 9, 13})
            {
                ST_BitmapPicture cPicture = BitmapPicture(nWidth, 5, nBitCount, nBitCount == 16 ? nCompression : 0);
                if (nBitCount <= 8)
                {
                    ColourTable(cPicture);
                }
                ClGuardedBytes cBytes(cPicture.aBlock.data(), cPicture.aBlock.size());
                ClBitmap cBitmap;
                cBitmap.Attach(cBytes.Data(), cBytes.Size());
                SCOPED_TRACE(testing::Message() << nBitCount << " bits, width " << nWidth);
                fn(cPicture, cBitmap, nCompression == 3);
            }
        }
    }
}

TEST(BitmapChannels, AColourPictureBecomesAnImageOfBlueGreenRed)
{
    AtAllDepths(
        [](const ST_BitmapPicture& cPicture, const ClBitmap& cBitmap, bool bMasks)
        {
            const int nPlanes = cPicture.nBitCount == 32 ? 4 : 3;
            ClImage cImage, cExpected;
            cBitmap.GetImage(cImage);
            Expect(cExpected, cPicture, nPlanes,
                   [&](int x, int y, int i) { return Colour(cPicture, bMasks, cPicture.At(x, y)) >> (8 * i) & 255; });
            EXPECT_TRUE(SamePixels(cExpected, cImage));
            EXPECT_TRUE(SameDescription(cExpected, cImage));
            EXPECT_EQ(nPlanes == 4 ? ClImage::eRGBA : ClImage::eRGB, cImage.m_eContent);
            EXPECT_NE(cBitmap.m_pPixels.get(), cImage.Data());
        });
}

TEST(BitmapChannels, AGreyTableGivesOnePlaneOfItsRedBytes)
{
    for (const int nBitCount : {1, 4, 8})
    {
        ST_BitmapPicture cPicture = BitmapPicture(13, 4, nBitCount);
        PutLong(cPicture.aBlock.data(), 40, 0xee3c3c3c); // not the ramp, and the fourth byte does not count
        const ClBitmap cBitmap(cPicture.aBlock.data(), true);
        ClImage cImage, cExpected;
        cBitmap.GetImage(cImage);
        Expect(cExpected, cPicture, 1,
               [&](int x, int y, int) { return TableColour(cPicture, cPicture.At(x, y)) >> 16 & 255; });
        EXPECT_TRUE(SamePixels(cExpected, cImage));
        EXPECT_TRUE(SameDescription(cExpected, cImage));
        EXPECT_EQ(ClImage::eGrayscale, cImage.m_eContent);
    }
}

TEST(BitmapChannels, IndexesBehindAShortTableAreBlack)
{
    for (const bool bGrey : {true, false})
    {
        ST_BitmapPicture cPicture = BitmapPicture(13, 4, 8, 0, 100);
        if (!bGrey)
        {
            ColourTable(cPicture);
        }
        PutLong(cPicture.aBlock.data(), 40 + 4 * 7, 0xffffff);
        const ClBitmap cBitmap(cPicture.aBlock.data(), true);
        ClImage cImage, cExpected;
        cBitmap.GetImage(cImage);
        Expect(cExpected, cPicture, bGrey ? 1 : 3,
               [&](int x, int y, int i)
               { return cPicture.At(x, y) < 100 ? TableColour(cPicture, cPicture.At(x, y)) >> (8 * i) & 255 : 0; });
        EXPECT_TRUE(SamePixels(cExpected, cImage));
    }
}

TEST(BitmapChannels, BitFieldsOf32BitsAreTakenByTheirMasks)
{
    ST_BitmapPicture cPicture = BitmapPicture(5, 3, 32, 3);
    PutLong(cPicture.aBlock.data(), 40, 0x000000ff);
    PutLong(cPicture.aBlock.data(), 44, 0x0000ff00);
    PutLong(cPicture.aBlock.data(), 48, 0x00ff0000);
    const ClBitmap cBitmap(cPicture.aBlock.data(), true);
    ClImage cImage, cExpected;
    cBitmap.GetImage(cImage);
    Expect(cExpected, cPicture, 4,
           [&](int x, int y, int i) { return cPicture.At(x, y) >> (i == 3 ? 24 : 16 - 8 * i) & 255; });
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(BitmapChannels, APictureWithoutAreaBecomesAnImageWithoutArea)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const auto& [nWidth, nHeight] : {std::pair(0, 3), std::pair(3, 0), std::pair(0, 0)})
        {
            ClBitmap cBitmap(nWidth, nHeight, nBitCount, 0);
            ClImage cImage(2, 2, 1, 0, 0), cRed, cGreen, cBlue;
            cBitmap.GetImage(cImage);
            EXPECT_EQ(nWidth, cImage.m_nWidth);
            EXPECT_EQ(nHeight, cImage.m_nHeight);
            EXPECT_EQ(nullptr, cImage.Data());
            cBitmap.SplitChannels(cRed, cGreen, cBlue);
            EXPECT_EQ(nullptr, cRed.Data());
            EXPECT_NO_THROW(cBitmap.JoinChannels(cRed, cGreen, cBlue));
        }
    }
}

TEST(BitmapChannels, EveryChannelComesOutByItself)
{
    AtAllDepths(
        [](const ST_BitmapPicture& cPicture, const ClBitmap& cBitmap, bool bMasks)
        {
            using Get_t = void (ClBitmap::*)(ClImage&) const;
            static constexpr Get_t aNamed[] = {&ClBitmap::GetRedChannel, &ClBitmap::GetGreenChannel,
                                               &ClBitmap::GetBlueChannel, &ClBitmap::GetAlphaChannel};
            for (int i = 0; i < 4; ++i)
            {
                const int nShift = i == 3 ? 24 : 16 - 8 * i;
                ClImage cChannel, cByName, cExpected;
                Expect(cExpected, cPicture, 1,
                       [&](int x, int y, int) { return Colour(cPicture, bMasks, cPicture.At(x, y)) >> nShift; });
                cBitmap.GetChannel(i, cChannel);
                const Get_t pGet = aNamed[i]; // in one step the sanitizer of GCC 12 sees another index
                (cBitmap.*pGet)(cByName);
                EXPECT_TRUE(SamePixels(cExpected, cChannel)) << "channel " << i;
                EXPECT_TRUE(SameDescription(cExpected, cChannel));
                EXPECT_TRUE(SamePixels(cExpected, cByName)) << "channel " << i;
            }
        });
}

TEST(BitmapChannels, SplitGivesThreeChannelsWithoutResolution)
{
    AtAllDepths(
        [](const ST_BitmapPicture& cPicture, const ClBitmap& cBitmap, bool bMasks)
        {
            ClImage aChannels[3];
            cBitmap.SplitChannels(aChannels[0], aChannels[1], aChannels[2]);
            for (int i = 0; i < 3; ++i)
            {
                ClImage cExpected;
                Expect(cExpected, cPicture, 1,
                       [&](int x, int y, int) { return Colour(cPicture, bMasks, cPicture.At(x, y)) >> (16 - 8 * i); });
                cExpected.m_nXRes = cExpected.m_nYRes = 0;
                EXPECT_TRUE(SamePixels(cExpected, aChannels[i])) << "channel " << i;
                EXPECT_TRUE(SameDescription(cExpected, aChannels[i])) << "channel " << i;
            }
        });
}

TEST(BitmapChannels, WhatWasSplitAndIsJoinedAgainIsThePicture)
{
    AtAllDepths(
        [](const ST_BitmapPicture& cPicture, ClBitmap& cBitmap, bool)
        {
            ClImage aChannels[4];
            for (int i = 0; i < 4; ++i)
            {
                cBitmap.GetChannel(i, aChannels[i]);
            }
            ClBitmap cOther(cBitmap, true);
            // Another picture of the same form. Up to 8 bits it cannot hold the colours if its pixels are read by them.
            for (int y = 0; y < cPicture.nHeight; ++y)
            {
                for (int x = 0; x < cPicture.nWidth; ++x)
                {
                    cOther.SetPixel(x, y, cPicture.nBitCount <= 8 ? TableColour(cPicture, 1) : 0x00c0ffee);
                }
            }
            EXPECT_TRUE(cPicture.nWidth < 3 || cBitmap != cOther);
            cOther.JoinChannels(aChannels[0], aChannels[1], aChannels[2]);
            cOther.SetAlphaChannel(aChannels[3]);
            EXPECT_TRUE(cBitmap == cOther);
        });
}

TEST(BitmapChannels, OneChannelIsSetAndTheOthersStay)
{
    for (const int nBitCount : {24, 32})
    {
        for (int i = 0; i < 4; ++i)
        {
            using Set_t = void (ClBitmap::*)(const ClImage&);
            static constexpr Set_t aNamed[] = {&ClBitmap::SetRedChannel, &ClBitmap::SetGreenChannel,
                                               &ClBitmap::SetBlueChannel, &ClBitmap::SetAlphaChannel};
            ST_BitmapPicture cPicture = BitmapPicture(7, 3, nBitCount), cExpected = cPicture;
            ClBitmap cBitmap(cPicture.aBlock.data(), true);
            ClImage cNew;
            FillRandom8(cNew, 7, 3, 6);
            for (int y = 0; y < 3; ++y)
            {
                for (int x = 0; x < 7; ++x)
                {
                    const int nShift = i == 3 ? 24 : 16 - 8 * i;
                    const std::uint32_t nValue = Row<unsigned char>(cNew, y)[x];
                    const std::uint32_t nOld = cExpected.At(x, y);
                    const bool bHas = i < 3 || nBitCount == 32;
                    cExpected.Put(x, y, bHas ? (nOld & ~(255u << nShift)) | nValue << nShift : nOld);
                }
            }
            Bytes_t aBefore = cPicture.aBlock;
            cBitmap.SetChannel(i, cNew);
            EXPECT_EQ(cExpected.aBlock, cPicture.aBlock) << nBitCount << " bits, channel " << i;
            cPicture.aBlock = aBefore;
            const auto pSet = aNamed[i];
            (ClBitmap(cPicture.aBlock.data(), true).*pSet)(cNew);
            EXPECT_EQ(cExpected.aBlock, cPicture.aBlock) << nBitCount << " bits, channel " << i;
        }
    }
}

TEST(BitmapChannels, OneChannelOf16BitsIsRoundedToItsMask)
{
    ST_BitmapPicture cPicture = BitmapPicture(256, 1, 16, 3); // 5, 6 and 5 bits
    ST_BitmapPicture cExpected = cPicture;
    ClBitmap cBitmap(cPicture.aBlock.data(), true);
    ClImage cGreen(256, 1, 1, 0, 0);
    for (int x = 0; x < 256; ++x)
    {
        Row<unsigned char>(cGreen, 0)[x] = static_cast<unsigned char>(x);
        const auto nStep = static_cast<std::uint32_t>(x * 63 / 255.0 + 0.5);
        cExpected.Put(x, 0, (cExpected.At(x, 0) & 0xf81f) | nStep << 5);
    }
    cBitmap.SetGreenChannel(cGreen);
    EXPECT_EQ(cExpected.aBlock, cPicture.aBlock);
}

TEST(BitmapChannels, AChannelOfATableNeedsTheExactColour)
{
    ST_BitmapPicture cPicture = BitmapPicture(3, 1, 4);
    for (std::size_t i = 0; i < 16; ++i)
    {
        PutLong(cPicture.aBlock.data(), 40 + 4 * i, i == 5 ? 0x302010 : i == 9 ? 0x992010 : 0x010203);
    }
    cPicture.Put(0, 0, 5);
    cPicture.Put(1, 0, 5);
    cPicture.Put(2, 0, 9);
    ST_BitmapPicture cExpected = cPicture;
    cExpected.Put(0, 0, 9); // 1, 0 stays: there is no 0x982010
    cExpected.Put(2, 0, 5);
    ClBitmap cBitmap(cPicture.aBlock.data(), true);
    ClImage cRed(3, 1, 1, 0, 0);
    Row<unsigned char>(cRed, 0)[0] = 0x99;
    Row<unsigned char>(cRed, 0)[1] = 0x98;
    Row<unsigned char>(cRed, 0)[2] = 0x30;
    cBitmap.SetRedChannel(cRed);
    EXPECT_EQ(cExpected.aBlock, cPicture.aBlock);
    cBitmap.SetAlphaChannel(cRed);
    EXPECT_EQ(cExpected.aBlock, cPicture.aBlock) << "a table has no alpha";
}

TEST(BitmapChannels, WhatDoesNotFitIsRefused)
{
    ClBitmap cBitmap(5, 3, 24, 0);
    cBitmap = 7;
    ClImage cImage, cFits(5, 3, 1, 0, 0), cWide(6, 3, 1, 0, 0), cHigh(5, 4, 1, 0, 0), cTwo(5, 3, 2, 0, 0), cShort;
    cShort.NewWithType(ClImage::eUInt16, 5, 3, 1, 0, 0);
    FillRandom(cFits, 1);
    for (const int nChannel : {-1, 4, 2147483647})
    {
        EXPECT_RAISES_CODE(cBitmap.GetChannel(nChannel, cImage), -44);
        EXPECT_RAISES_CODE(cBitmap.SetChannel(nChannel, cFits), -44);
    }
    EXPECT_RAISES_CODE(cBitmap.SetRedChannel(cWide), -14);
    EXPECT_RAISES_CODE(cBitmap.SetRedChannel(cHigh), -14);
    EXPECT_RAISES_CODE(cBitmap.SetRedChannel(cTwo), -33);
    EXPECT_RAISES_CODE(cBitmap.SetRedChannel(cShort), -33);
    EXPECT_RAISES_CODE(cBitmap.SetRedChannel(ClImage()), -33);
    EXPECT_RAISES_CODE(cBitmap.JoinChannels(cFits, cFits, cWide), -14);
    ClImage cNoPixels;
    cNoPixels.Attach(nullptr, cFits);
    EXPECT_RAISES_CODE(cBitmap.JoinChannels(cFits, cNoPixels, cFits), -10);
    EXPECT_EQ(0x070707u, cBitmap.GetPixel(0, 0)) << "all are looked at before anything is written";
}

TEST(BitmapChannels, FormsThatAreNotHandledAreRefused)
{
    const auto expectAll = [](ClBitmap& cBitmap, long nCode)
    {
        ClImage cImage, aChannels[3];
        EXPECT_RAISES_CODE(cBitmap.GetImage(cImage), nCode);
        EXPECT_RAISES_CODE(cBitmap.GetChannel(0, cImage), nCode);
        EXPECT_RAISES_CODE(cBitmap.SetChannel(0, cImage), nCode);
        EXPECT_RAISES_CODE(cBitmap.SplitChannels(aChannels[0], aChannels[1], aChannels[2]), nCode);
        EXPECT_RAISES_CODE(cBitmap.JoinChannels(cImage, cImage, cImage), nCode);
    };
    ClBitmap cBitmap;
    expectAll(cBitmap, -10);
    cBitmap.Create(5, 3, 8, 0);
    cBitmap.Header().biCompression = 1;
    expectAll(cBitmap, -31);
    cBitmap.Header().biCompression = 0;
    cBitmap.Header().biHeight = -3;
    expectAll(cBitmap, -14);
    cBitmap.Header().biHeight = 3;
    cBitmap.Header().biWidth = 0x40000000;
    expectAll(cBitmap, -14);
    cBitmap.Header().biWidth = 5;
    cBitmap.Header().biBitCount = 7;
    expectAll(cBitmap, -12);
}

TEST(BitmapChannels, AnExhaustedHeapIsBadAlloc)
{
    const ClBitmap cBitmap(5, 3, 8, 0);
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation(
                     [&]
                     {
                         ClImage cImage;
                         cBitmap.GetImage(cImage);
                     }));
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation(
                     [&]
                     {
                         ClImage cImage;
                         cBitmap.GetChannel(2, cImage);
                     }));
}
} // namespace
