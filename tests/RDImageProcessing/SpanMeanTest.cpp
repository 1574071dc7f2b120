#include "RDImageProcessing/SpanMean.hpp"

#include "TestTools.hpp"

#include <algorithm>
#include <vector>

namespace
{
using Bytes_t = std::vector<unsigned char>;

/// Step by step with real divisions: source sample j covers (j - 1) << 12 to j << 12, a sample that straddles the end
/// of a span is shared, the source's end takes the mean of what was there, and the rest repeats the last mean.
Bytes_t MeansByDefinition(const Bytes_t& aIn, long nSpan, int nOut)
{
    Bytes_t aOut;
    long nEnd = nSpan - 4096;
    long nSum = 0;
    long j = 0;
    for (; j < long(aIn.size()); ++j)
    {
        const long nSample = aIn[static_cast<std::size_t>(j)];
        if (nEnd < 4096 * j)
        {
            aOut.push_back(static_cast<unsigned char>((nSum + (nEnd - 4096 * (j - 1)) * nSample) / nSpan));
            nSum = (4096 * j - nEnd) * nSample;
            nEnd += nSpan;
        }
        else
        {
            nSum += 4096 * nSample;
        }
    }
    aOut.push_back(static_cast<unsigned char>(nSum / (nSpan + 4096 * (j - 1) - nEnd)));
    aOut.resize(static_cast<std::size_t>(nOut), aOut.back());
    return aOut;
}

Bytes_t RandomBytes(ClTestRandom& cRandom, int nCount)
{
    Bytes_t aBytes(static_cast<std::size_t>(nCount));
    for (unsigned char& n : aBytes)
    {
        n = static_cast<unsigned char>(cRandom.Below(256));
    }
    return aBytes;
}

/// The row's means, from a row that ends at memory's end, with the places behind the result watched.
Bytes_t Reduced(const ClSpanMean& cMean, const Bytes_t& aIn, int nOut)
{
    const ClGuardedBytes cIn(aIn.data(), aIn.size());
    const ClGuardedBytes cOut(static_cast<std::size_t>(nOut));
    cMean.Reduce(cIn.Data(), static_cast<int>(aIn.size()), cOut.Data(), nOut);
    return Bytes_t(cOut.Data(), cOut.Data() + nOut);
}

/// Spans of all kinds: whole numbers of samples, fractions, up to more than any row has.
const std::vector<long>& Spans()
{
    static const std::vector<long> aSpans = []
    {
        std::vector<long> a = {4096,  4097,    5000,    8191,    8193,    20479,      20481,   20495,
                               40961, 1048575, 1048576, 1048577, 3000000, 2147483647, 1L << 43};
        for (long n = 1; n <= 20; ++n)
        {
            a.push_back(4096 * n);
        }
        return a;
    }();
    return aSpans;
}
} // namespace

TEST(SpanMean, AgreesWithTheStepByStepDefinition)
{
    ClTestRandom cRandom(1);
    for (const long nSpan : Spans())
    {
        const ClSpanMean cMean(nSpan);
        for (const int nIn : {1, 2, 3, 5, 7, 8, 9, 16, 17, 39, 40, 41, 47, 64, 79, 80, 85, 160, 173, 333, 1001})
        {
            const Bytes_t aIn = RandomBytes(cRandom, nIn);
            const int nFull = static_cast<int>(4096L * nIn / nSpan);
            for (const int nOut : {1, nFull / 2, nFull, nFull + 1, nFull + 3}) // ends late, fits, ends early
            {
                if (nOut >= 1)
                {
                    ASSERT_EQ(MeansByDefinition(aIn, nSpan, nOut), Reduced(cMean, aIn, nOut))
                        << "span " << nSpan << ", " << nIn << " samples to " << nOut;
                }
            }
        }
    }
}

TEST(SpanMean, TheMeansMayGoToTheSameRow)
{
    ClTestRandom cRandom(7);
    for (const long nSpan : Spans())
    {
        const ClSpanMean cMean(nSpan);
        for (int nIn = 1; nIn < 200; ++nIn)
        {
            const Bytes_t aIn = RandomBytes(cRandom, nIn);
            const int nOut = std::min(static_cast<int>(4096L * nIn / nSpan) + 1, nIn);
            Bytes_t aRow = aIn;
            cMean.Reduce(aRow.data(), nIn, aRow.data(), nOut);
            aRow.resize(static_cast<std::size_t>(nOut));
            ASSERT_EQ(MeansByDefinition(aIn, nSpan, nOut), aRow) << "span " << nSpan << ", " << nIn << " samples";
        }
    }
}

TEST(SpanMean, ColumnsAreReducedLikeRows)
{
    ClTestRandom cRandom(2);
    constexpr int nWidth = 21;
    for (const long nSpan : Spans())
    {
        for (const int nIn : {1, 2, 3, 5, 7, 16, 40, 41, 173})
        {
            ClColumnSpanMean cMean(nSpan, nWidth);
            std::vector<Bytes_t> aColumns(nWidth);
            std::vector<Bytes_t> aMeans(nWidth);
            Bytes_t aOut(nWidth);
            const auto take = [&]
            {
                for (std::size_t x = 0; x < nWidth; ++x)
                {
                    aMeans[x].push_back(aOut[x]);
                }
            };
            for (int j = 0; j < nIn; ++j)
            {
                const Bytes_t aRow = RandomBytes(cRandom, nWidth);
                for (std::size_t x = 0; x < nWidth; ++x)
                {
                    aColumns[x].push_back(aRow[x]);
                }
                if (cMean.Add(aRow.data(), aOut.data()))
                {
                    take();
                }
            }
            if (cMean.Finish(aOut.data()))
            {
                take();
            }
            const auto nOut = static_cast<int>((4096L * nIn + nSpan - 1) / nSpan);
            for (std::size_t x = 0; x < nWidth; ++x)
            {
                ASSERT_EQ(MeansByDefinition(aColumns[x], nSpan, nOut), aMeans[x]) << "span " << nSpan << ", " << nIn;
            }
        }
    }
}

TEST(SpanMean, WholeQuotientsAreExactForEverySum)
{
    for (unsigned int n = 2; n <= ClSpanMean::nMostWhole; ++n)
    {
        const ClSpanMean cMean(4096 * long(n));
        ASSERT_EQ(int(n), cMean.m_nWhole);
        for (unsigned int nSum = 0; nSum <= 255 * n; ++nSum)
        {
            ASSERT_EQ(nSum / n, cMean.WholeQuotient(nSum)) << n << " samples";
        }
    }
    EXPECT_EQ(0, ClSpanMean(4096).m_nWhole);
    EXPECT_EQ(0, ClSpanMean(4096 * 17).m_nWhole);
    EXPECT_EQ(0, ClSpanMean(20481).m_nWhole);
}

TEST(SpanMean, QuotientsAreExactAroundEveryStep)
{
    ClTestRandom cRandom(3);
    std::vector<long> aSpans = Spans();
    for (int i = 0; i < 2000; ++i)
    {
        aSpans.push_back(4096 + cRandom.Next() % 1100000);
    }
    for (const long nSpan : aSpans)
    {
        const ClSpanMean cMean(nSpan);
        for (long nMean = 0; nMean <= 255; ++nMean)
        {
            ASSERT_EQ(nMean, cMean.Quotient(nMean * nSpan)) << nSpan;
            if (nMean < 255)
            {
                ASSERT_EQ(nMean, cMean.Quotient((nMean + 1) * nSpan - 1)) << nSpan;
            }
        }
    }
}
