#include "RDImageProcessing/ByteRuns.hpp"

#include "TestTools.hpp"

#include <cstring>
#include <utility>
#include <vector>

namespace
{
using Columns = std::pair<long, long>; ///< first, behind the last
constexpr unsigned char aValues[] = {7, 8, 9};

/// fn(row, width) for rows of few values, each of which ends where readable memory ends.
template <class Fn> void ForEachRow(Fn&& fn)
{
    for (int nWidth = 1; nWidth <= 200; ++nWidth)
    {
        for (const int nChange : {1, 2, 8, 64, 100}) // a byte changes its value with a chance of one in so many
        {
            ClTestRandom cRandom(static_cast<unsigned int>(nWidth * 1000 + nChange));
            ClGuardedBytes cRow(static_cast<std::size_t>(nWidth));
            unsigned char nValue = 7;
            for (int x = 0; x < nWidth; ++x)
            {
                nValue = cRandom.Below(nChange) == 0 ? static_cast<unsigned char>(7 + cRandom.Below(2)) : nValue;
                cRow.Data()[x] = nValue;
            }
            fn(cRow.Data(), nWidth);
        }
    }
}

std::vector<Columns> RunsByDefinition(const unsigned char* pRow, long nFrom, long nEnd, unsigned char nValue)
{
    std::vector<Columns> aRuns;
    for (long x = nFrom; x < nEnd; ++x)
    {
        if (pRow[x] != nValue)
        {
            continue;
        }
        if (aRuns.empty() || aRuns.back().second != x)
        {
            aRuns.emplace_back(x, x);
        }
        aRuns.back().second = x + 1;
    }
    return aRuns;
}
} // namespace

TEST(ByteRuns, ABlockTellsWhichOfItsBytesAreEqual)
{
    ForEachRow(
        [](const unsigned char* pRow, int nWidth)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                const std::uint64_t nMask = EqualBytesFrom(pRow, x, nWidth, 7);
                for (int i = 0; i < 64; ++i)
                {
                    ASSERT_EQ(x + i < nWidth && pRow[x + i] == 7, (nMask >> i & 1) != 0) << nWidth << ", " << x;
                }
            }
        });
}

TEST(ByteRuns, BehindTheRowNoByteIsEqual)
{
    for (const int nWidth : {1, 63, 64, 65, 200})
    {
        const std::vector<unsigned char> aRow(static_cast<std::size_t>(nWidth), 7);
        const ClReadOnlyBytes cRow(aRow);
        for (const int nBehind : {0, 1, 64})
        {
            EXPECT_EQ(0u, EqualBytesFrom(cRow.Data(), nWidth + nBehind, nWidth, 7)) << nWidth << ", " << nBehind;
        }
    }
}

TEST(ByteRuns, ABlockOfAnyBytesIsWhatItsBytesAreOneByOne)
{
    ClTestRandom cRandom(1);
    unsigned char aBytes[64];
    for (int i = 0; i < 256; ++i)
    {
        for (unsigned char& n : aBytes)
        {
            n = static_cast<unsigned char>(cRandom.Below(3) == 0 ? i : cRandom.Below(256));
        }
        const unsigned char nValue = static_cast<unsigned char>(i);
        EXPECT_EQ(EqualBytesOneByOne(aBytes, 64, nValue), EqualBytes64(aBytes, nValue));
    }
}

TEST(ByteRuns, RunsEndAtAnotherByteAndAtTheEndsOfTheRow)
{
    ForEachRow(
        [](const unsigned char* pRow, int nWidth)
        {
            for (long x = 0; x <= nWidth; ++x)
            {
                for (const unsigned char nValue : aValues)
                {
                    long nEnd = x;
                    while (nEnd < nWidth && pRow[nEnd] == nValue)
                    {
                        ++nEnd;
                    }
                    long nFirst = x;
                    while (nFirst > 0 && pRow[nFirst - 1] == nValue)
                    {
                        --nFirst;
                    }
                    long nFound = x;
                    while (nFound < nWidth && pRow[nFound] != nValue)
                    {
                        ++nFound;
                    }
                    ASSERT_EQ(nEnd, EndOfRun(pRow, x, nWidth, nValue)) << nWidth << ", " << x;
                    ASSERT_EQ(nFirst, StartOfRun(pRow, x, nWidth, nValue)) << nWidth << ", " << x;
                    ASSERT_EQ(nFound, FindByte(pRow, static_cast<int>(x), nWidth, nValue)) << nWidth << ", " << x;
                }
            }
        });
}

TEST(ByteRuns, EveryRunOfAPartOfARowComesOnce)
{
    ForEachRow(
        [](const unsigned char* pRow, int nWidth)
        {
            for (long nFrom = 0; nFrom <= nWidth; nFrom += 1 + nWidth / 9)
            {
                for (long nEnd = nFrom; nEnd <= nWidth; nEnd += nEnd + 1 < nWidth - 2 ? 1 + nWidth / 9 : 1)
                {
                    for (const unsigned char nValue : aValues)
                    {
                        std::vector<Columns> aRuns;
                        ForEachRun(pRow, nWidth, nFrom, nEnd, nValue,
                                   [&](long nFirst, long nBehind) { aRuns.emplace_back(nFirst, nBehind); });
                        ASSERT_EQ(RunsByDefinition(pRow, nFrom, nEnd, nValue), aRuns) << nWidth << ", " << nFrom;
                    }
                }
            }
        });
}
