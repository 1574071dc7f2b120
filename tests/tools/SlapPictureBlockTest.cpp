// A drawn slap as a bitmap in memory and as a BMP file.

#include "SlapPicture.hpp"
#include "SmallSlap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace
{
std::uint32_t Read(const std::vector<std::uint8_t>& aBytes, std::size_t nAt, int nBytes)
{
    std::uint32_t nValue = 0;
    for (int i = nBytes - 1; i >= 0; --i) nValue = nValue << 8 | aBytes[nAt + static_cast<std::size_t>(i)];
    return nValue;
}
} // namespace

TEST(SlapPicture, BlockIsAPackedBitmapWithPaddedRowsInStoredOrder)
{
    const ClSlapPicture cPicture(SmallScene(4015));
    ASSERT_EQ(122, cPicture.m_nWidth);
    ASSERT_EQ(83, cPicture.m_nHeight);
    const std::vector<std::uint8_t> aBlock = cPicture.Block();
    ASSERT_EQ(40u + 1024u + 124u * 83u, aBlock.size());
    EXPECT_EQ(40u, Read(aBlock, 0, 4));
    EXPECT_EQ(122u, Read(aBlock, 4, 4));
    EXPECT_EQ(83u, Read(aBlock, 8, 4));
    EXPECT_EQ(1u, Read(aBlock, 12, 2));
    EXPECT_EQ(8u, Read(aBlock, 14, 2));
    EXPECT_EQ(0u, Read(aBlock, 16, 4));
    EXPECT_EQ(124u * 83u, Read(aBlock, 20, 4));
    EXPECT_EQ(4015u, Read(aBlock, 24, 4));
    EXPECT_EQ(4015u, Read(aBlock, 28, 4));
    EXPECT_EQ(256u, Read(aBlock, 32, 4));
    EXPECT_EQ(256u, Read(aBlock, 36, 4));
    for (std::size_t i = 0; i < 256; ++i)
    {
        const std::uint8_t nGrey = static_cast<std::uint8_t>(i);
        EXPECT_EQ((std::vector<std::uint8_t>{nGrey, nGrey, nGrey, 0}),
                  std::vector<std::uint8_t>(aBlock.begin() + 40 + static_cast<std::ptrdiff_t>(4 * i),
                                            aBlock.begin() + 44 + static_cast<std::ptrdiff_t>(4 * i)));
    }
    for (std::size_t y = 0; y < 83; ++y)
    {
        const std::size_t nRow = 1064 + 124 * y;
        for (std::size_t x = 0; x < 122; ++x)
            ASSERT_EQ(PixelAt(cPicture, static_cast<int>(x), static_cast<int>(y)), aBlock[nRow + x]);
        EXPECT_EQ(0, aBlock[nRow + 122]);
        EXPECT_EQ(0, aBlock[nRow + 123]);
    }
}

TEST(SlapPicture, WidthThatIsAMultipleOfFourHasNoPadding)
{
    const ClSlapPicture cPicture(SlapScenes::FourFingers(SlapScenes::eLeftHand, 3937));
    ASSERT_EQ(320, cPicture.m_nWidth);
    EXPECT_EQ(1064u + 320u * 300u, cPicture.Block().size());
}

TEST(SlapPicture, BmpFileIsTheBlockBehindAFileHeader)
{
    const ClSlapPicture cPicture(SmallScene(4015));
    const std::vector<std::uint8_t> aFile = cPicture.BmpFile();
    const std::vector<std::uint8_t> aBlock = cPicture.Block();
    ASSERT_EQ(14u + aBlock.size(), aFile.size());
    EXPECT_EQ('B', aFile[0]);
    EXPECT_EQ('M', aFile[1]);
    EXPECT_EQ(aFile.size(), Read(aFile, 2, 4));
    EXPECT_EQ(0u, Read(aFile, 6, 4));
    EXPECT_EQ(1078u, Read(aFile, 10, 4)) << "14 + 40 + 1024: where the pixels begin";
    EXPECT_TRUE(std::equal(aBlock.begin(), aBlock.end(), aFile.begin() + 14));
}
