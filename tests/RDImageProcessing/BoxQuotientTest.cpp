#include "RDImageProcessing/BoxQuotient.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>

namespace
{
/// The numbers of pixels in boxes of all widths from nFrom to nTo, clipped or whole.
std::set<int> BoxCounts(int nFrom, int nTo)
{
    std::set<int> aCounts;
    for (int nWidth = nFrom; nWidth <= nTo; nWidth += 2)
    {
        for (int i = nWidth / 2 + 1; i <= nWidth; ++i)
        {
            for (int j = i; j <= nWidth; ++j)
            {
                aCounts.insert(i * j);
            }
        }
    }
    return aCounts;
}
} // namespace

TEST(BoxQuotient, ShortQuotientsAreExactForEverySumAndCount)
{
    const std::set<int> aCounts = BoxCounts(5, 7);
    EXPECT_EQ(ClShortQuotient::nLeast, *aCounts.begin());
    EXPECT_EQ(ClShortQuotient::nMost, *aCounts.rbegin());
    for (const int n : aCounts)
    {
        const std::uint16_t nReciprocal = ClShortQuotient::Reciprocal(static_cast<std::uint32_t>(n));
        for (int nSum = 0; nSum <= 255 * n; ++nSum)
        {
            ASSERT_EQ(nSum / n, ClShortQuotient::Of(static_cast<std::uint16_t>(nSum), nReciprocal))
                << nSum << " of " << n;
        }
    }
}

TEST(BoxQuotient, LongQuotientsAreExactForEverySumAndCount)
{
    std::set<int> aCounts = BoxCounts(9, 21);
    EXPECT_LE(ClLongQuotient::nLeast, *aCounts.begin());
    aCounts.insert(ClLongQuotient::nLeast);
    EXPECT_EQ(ClLongQuotient::nMost, *aCounts.rbegin());
    for (const int n : aCounts)
    {
        const auto nCount = static_cast<std::uint16_t>(n);
        const std::uint16_t nReciprocal = ClLongQuotient::Reciprocal(nCount);
        int nWrong = 0;
        for (int nSum = 0; nSum <= 255 * n; ++nSum)
        {
            // Parts of 16 bits: as unequal as they can be, and almost equal ones.
            for (const int nPart : {std::min(nSum, 65535), nSum - std::min(nSum, 65535), nSum / 2, nSum * 10 / 21})
            {
                const unsigned char nMean = ClLongQuotient::Of(
                    static_cast<std::uint16_t>(nPart), static_cast<std::uint16_t>(nSum - nPart), nReciprocal, nCount);
                nWrong += nMean != nSum / n ? 1 : 0;
            }
        }
        ASSERT_EQ(0, nWrong) << n;
    }
}

TEST(BoxQuotient, CountsAreThePixelsOfTheClippedBox)
{
    for (const int nHalf : {2, 3, 10})
    {
        for (const int nWidth : {2 * nHalf + 1, 2 * nHalf + 2, 2 * nHalf + 7, 70})
        {
            ClBoxCounts cCounts(nWidth, nHalf, [](std::uint32_t n) { return static_cast<std::uint16_t>(60000 - n); });
            for (const int nRows : {nHalf + 1, nHalf + 2, nHalf + 2, 2 * nHalf + 1, nHalf + 1})
            {
                cCounts.SetRows(nRows);
                for (int x = 0; x < nWidth; ++x)
                {
                    int nCount = 0;
                    for (int i = x - nHalf; i <= x + nHalf; ++i)
                    {
                        nCount += i >= 0 && i < nWidth ? nRows : 0;
                    }
                    ASSERT_EQ(nCount, cCounts.Counts()[x]) << nWidth << ' ' << nHalf << ' ' << x;
                    ASSERT_EQ(60000 - nCount, cCounts.Reciprocals()[x]);
                }
            }
        }
    }
}
