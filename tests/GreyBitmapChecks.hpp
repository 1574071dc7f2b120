#pragma once

#include "TestTools.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

constexpr std::size_t nBeforePixels = 40 + 4 * 256; // bytes of header and colour table

// A bitmap in memory taken apart.
class ClBlockView
{
public:
    explicit ClBlockView(const std::vector<std::uint8_t>& aBlock) : m_aBlock(aBlock)
    {
        std::memcpy(&m_cHeader, aBlock.data(), sizeof m_cHeader);
    }
    int Width() const { return m_cHeader.biWidth; }
    int Height() const { return m_cHeader.biHeight; }
    std::size_t Stride() const { return (static_cast<std::size_t>(m_cHeader.biWidth) + 3) / 4 * 4; }
    const std::uint8_t* Row(int nY) const
    {
        return m_aBlock.data() + nBeforePixels + static_cast<std::size_t>(nY) * Stride();
    }

    tagBITMAPINFOHEADER m_cHeader;

private:
    const std::vector<std::uint8_t>& m_aBlock;
};

// Header, colour table and size of a grey bitmap of the given resolution.
inline void ExpectWholeBitmap(const std::vector<std::uint8_t>& aBlock, int nPels)
{
    ASSERT_GT(aBlock.size(), nBeforePixels);
    const ClBlockView cView(aBlock);
    const tagBITMAPINFOHEADER& cHeader = cView.m_cHeader;
    EXPECT_EQ(40u, cHeader.biSize);
    EXPECT_EQ(1, cHeader.biPlanes);
    EXPECT_EQ(8, cHeader.biBitCount);
    EXPECT_EQ(0u, cHeader.biCompression);
    EXPECT_EQ(nPels, cHeader.biXPelsPerMeter);
    EXPECT_EQ(nPels, cHeader.biYPelsPerMeter);
    EXPECT_EQ(0u, cHeader.biClrUsed);
    ASSERT_GT(cHeader.biWidth, 0);
    ASSERT_GT(cHeader.biHeight, 0);
    const std::size_t nPixels = cView.Stride() * static_cast<std::size_t>(cHeader.biHeight);
    EXPECT_EQ(nPixels, cHeader.biSizeImage);
    ASSERT_EQ(nBeforePixels + nPixels, aBlock.size());
    for (std::size_t i = 0; i < 256; ++i)
    {
        const std::uint8_t* pEntry = aBlock.data() + 40 + 4 * i;
        ASSERT_TRUE(pEntry[0] == i && pEntry[1] == i && pEntry[2] == i && pEntry[3] == 0) << "colour " << i;
    }
}
