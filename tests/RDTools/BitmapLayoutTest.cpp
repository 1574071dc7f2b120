#include "RDTools/BitmapLayout.hpp"

#include "TestTools.hpp"

#include <cstring>

namespace
{
TEST(BitmapLayout, TableHasTheEntriesThatTheHeaderMeans)
{
    tagBITMAPINFOHEADER cHeader;
    std::memset(&cHeader, 0, sizeof cHeader);
    const auto entries = [&cHeader](int nBitCount, unsigned int nCompression, unsigned int nClrUsed)
    {
        cHeader.biBitCount = static_cast<std::uint16_t>(nBitCount);
        cHeader.biCompression = nCompression;
        cHeader.biClrUsed = nClrUsed;
        return ClBitmapLayout::TableEntries(cHeader);
    };
    EXPECT_EQ(2u, entries(1, 0, 0));
    EXPECT_EQ(16u, entries(4, 0, 0));
    EXPECT_EQ(256u, entries(8, 0, 0));
    EXPECT_EQ(256u, entries(8, 3, 0));
    EXPECT_EQ(300u, entries(8, 0, 300));
    EXPECT_EQ(0u, entries(16, 0, 0));
    EXPECT_EQ(5u, entries(24, 0, 5));
    EXPECT_EQ(3u, entries(16, 3, 0));
    EXPECT_EQ(3u, entries(32, 3, 5));
    EXPECT_EQ(0xffffffffu, entries(8, 0, 0xffffffff));
    EXPECT_EQ(0x3fffffffcu, ClBitmapLayout::TableBytes(cHeader));
}

TEST(BitmapLayout, BlockHoldsItsPixelsExactlyFromTheirLastByteOn)
{
    for (const int nBitCount : {1, 4, 8, 16, 24, 32})
    {
        for (const auto& aBlock : {PackedBitmap(13, 5, nBitCount), PackedBitmap(13, 5, nBitCount, 0, 3),
                                   WithFileHeader(PackedBitmap(13, 5, nBitCount))})
        {
            EXPECT_TRUE(ClBitmap::HoldsPixels(aBlock.data(), 0));
            EXPECT_TRUE(ClBitmap::HoldsPixels(aBlock.data(), aBlock.size() + 1));
            EXPECT_TRUE(ClBitmap::HoldsPixels(aBlock.data(), aBlock.size()));
            for (std::size_t nSize = 1; nSize < aBlock.size(); ++nSize)
            {
                const ClGuardedBytes cBytes(aBlock.data(), nSize);
                ASSERT_FALSE(ClBitmap::HoldsPixels(cBytes.Data(), nSize)) << nBitCount << " bits, " << nSize;
            }
        }
    }
    EXPECT_FALSE(ClBitmap::HoldsPixels(nullptr, 1000));
    EXPECT_TRUE(ClBitmap::HoldsPixels(nullptr, 0));
}

TEST(BitmapLayout, AHeaderAloneHoldsAPictureWithoutPixels)
{
    const auto aBlock = PackedBitmap(0, 0, 24);
    ASSERT_EQ(40u, aBlock.size());
    EXPECT_TRUE(ClBitmap::HoldsPixels(aBlock.data(), 40));
    EXPECT_FALSE(ClBitmap::HoldsPixels(aBlock.data(), 39));
}

TEST(BitmapLayout, BlockHoldsNoSizeThatWrapsOrIsNegative)
{
    const auto holds = [](std::size_t nOffset, std::uint32_t nValue)
    {
        auto aBlock = PackedBitmap(4, 4, 8);
        PutLong(aBlock.data(), nOffset, nValue);
        return ClBitmap::HoldsPixels(aBlock.data(), aBlock.size());
    };
    EXPECT_TRUE(holds(8, 4));
    EXPECT_FALSE(holds(8, 5));
    EXPECT_FALSE(holds(8, 0x40000000));
    EXPECT_FALSE(holds(8, 0x7fffffff));
    EXPECT_FALSE(holds(8, 0xffffffff));
    EXPECT_FALSE(holds(4, 0x20000001));
    EXPECT_FALSE(holds(4, 0xfffffff0));
    EXPECT_FALSE(holds(32, 0x40000000));
    EXPECT_TRUE(holds(8, 0));

    auto aLargest = PackedBitmap(4, 4, 32);
    PutLong(aLargest.data(), 4, 0x7fffffff);
    PutLong(aLargest.data(), 8, 0x7fffffff);
    EXPECT_FALSE(ClBitmap::HoldsPixels(aLargest.data(), aLargest.size()));
    PutLong(aLargest.data(), 4, 0x80000000);
    PutLong(aLargest.data(), 8, 0x80000000);
    EXPECT_FALSE(ClBitmap::HoldsPixels(aLargest.data(), aLargest.size()));
}

TEST(BitmapLayout, PixelBytesOfANegativeSizeAreNone)
{
    tagBITMAPINFOHEADER cHeader;
    std::memset(&cHeader, 0, sizeof cHeader);
    cHeader.biBitCount = 8;
    cHeader.biWidth = 60000;
    cHeader.biHeight = 100000;
    EXPECT_EQ(6000000000u, ClBitmapLayout::PixelBytes(cHeader));
    cHeader.biHeight = -4;
    EXPECT_EQ(0u, ClBitmapLayout::PixelBytes(cHeader));
    cHeader.biWidth = -8;
    EXPECT_EQ(0u, ClBitmapLayout::PixelBytes(cHeader));
}
} // namespace
