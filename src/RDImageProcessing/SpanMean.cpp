#include "RDImageProcessing/SpanMean.hpp"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

ClSpanMean::ClSpanMean(std::int64_t nSpan) : m_nSpan(nSpan)
{
    if (nSpan % nOne == 0 && nSpan >= 2 * nOne && nSpan <= nMostWhole * nOne)
    {
        // n samples add up to s of at most 255 n. With m = ceil(2^16 / n), m n - 2^16 is below n, and
        // floor(s m / 2^16) = floor(s / n) as long as s times that excess is below 2^16: 255 * 16 * 15 = 61200.
        m_nWhole = static_cast<int>(nSpan / nOne);
        const auto n = static_cast<unsigned int>(m_nWhole);
        m_nWholeReciprocal = static_cast<std::uint16_t>((65536u + n - 1) / n);
    }
    // The same with s of at most 255 span and m = floor(2^48 / span) + 1, whose excess is at most the span: exact while
    // 255 span^2 is below 2^48, and s m stays below 2^57.
    if (nSpan >= nOne && nSpan < nOne << 8)
    {
        m_nReciprocal = (std::uint64_t(1) << nReciprocalBits) / static_cast<std::uint64_t>(nSpan) + 1;
    }
}

void ClSpanMean::Reduce(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const
{
    if (m_nWhole != 0)
    {
        ReduceWhole(pIn, nIn, pOut, nOut);
    }
    else
    {
        ReduceShared(pIn, nIn, pOut, nOut);
    }
}

void ClSpanMean::ReduceWhole(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const
{
    const int nFull = std::min(nOut, nIn / m_nWhole);
    int k = ReduceWholeByBlocks(pIn, nIn, pOut, nFull);
    const unsigned char* p = pIn + static_cast<std::ptrdiff_t>(k) * m_nWhole;
    for (; k < nFull; ++k)
    {
        unsigned int nSum = 0;
        for (int i = 0; i < m_nWhole; ++i)
        {
            nSum += *p++;
        }
        pOut[k] = WholeQuotient(nSum);
    }
    if (k == nOut)
    {
        return;
    }
    const int nRest = static_cast<int>(pIn + nIn - p);
    unsigned char nLast = k > 0 ? pOut[k - 1] : static_cast<unsigned char>(0);
    if (nRest > 0)
    {
        unsigned int nSum = 0;
        for (int i = 0; i < nRest; ++i)
        {
            nSum += p[i];
        }
        nLast = static_cast<unsigned char>(nSum / static_cast<unsigned int>(nRest));
    }
    std::memset(pOut + k, nLast, static_cast<std::size_t>(nOut - k));
}

#if defined(__SSE2__)
namespace
{
/// How a span of nWhole samples is read: from so many bytes off its start on, and which of the bytes count.
struct StLoad
{
    std::ptrdiff_t nOffset;
    __m128i cMask;
};

/// The lowest n of eight bytes.
constexpr std::uint64_t Bytes(int n)
{
    return n >= 8 ? ~std::uint64_t(0) : (std::uint64_t(1) << (8 * n)) - 1;
}

__m128i Mask(std::uint64_t nLow, std::uint64_t nHigh)
{
    return _mm_set_epi64x(static_cast<std::int64_t>(nHigh), static_cast<std::int64_t>(nLow));
}

/// Sums of the bytes under the mask, in the two halves.
__m128i SumHalves(__m128i cBytes, __m128i cMask)
{
    return _mm_sad_epu8(_mm_and_si128(cBytes, cMask), _mm_setzero_si128());
}

/// Four sums from twice two.
__m128i Gather(__m128i a, __m128i b)
{
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}

/// Spans of up to eight samples, one in each half.
struct ClNarrowSpans
{
    static constexpr std::ptrdiff_t Reach(int n) { return 7 * n + 8; } // of eight spans
    static StLoad FromStart(int n) { return {0, Mask(Bytes(n), Bytes(n))}; }
    static StLoad ToEnd(int n) { return {n - 8, Mask(~Bytes(8 - n), ~Bytes(8 - n))}; }
    static __m128i Four(const unsigned char* p, std::ptrdiff_t n, __m128i cMask)
    {
        const auto two = [cMask](const unsigned char* pLow, const unsigned char* pHigh)
        {
            const __m128i cLow = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pLow));
            const __m128i cHigh = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pHigh));
            return SumHalves(_mm_unpacklo_epi64(cLow, cHigh), cMask);
        };
        return Gather(two(p, p + n), two(p + 2 * n, p + 3 * n));
    }
};

/// Spans of four or five samples: of sixteen bytes the lower half holds the first span and the upper half the third.
struct ClSpansOfFive
{
    static constexpr std::ptrdiff_t Reach(int n) { return 5 * n + 16; }
    static StLoad FromStart(int n) { return {0, Mask(Bytes(n), Bytes(n) << (8 * (2 * n - 8)))}; }
    static StLoad ToEnd(int n) { return {3 * n - 16, Mask(Bytes(n) << (8 * (16 - 3 * n)), ~Bytes(8 - n))}; }
    static __m128i Four(const unsigned char* p, std::ptrdiff_t n, __m128i cMask)
    {
        const __m128i cEven = SumHalves(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), cMask);
        const __m128i cOdd = SumHalves(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n)), cMask);
        return _mm_or_si128(cEven, _mm_slli_epi64(cOdd, 32));
    }
};

/// Spans of nine to sixteen samples.
struct ClWideSpans
{
    static constexpr std::ptrdiff_t Reach(int n) { return 7 * n + 16; }
    static StLoad FromStart(int n) { return {0, Mask(Bytes(8), Bytes(n - 8))}; }
    static StLoad ToEnd(int n) { return {n - 16, Mask(~Bytes(16 - n), Bytes(8))}; }
    static __m128i Four(const unsigned char* p, std::ptrdiff_t n, __m128i cMask)
    {
        const auto two = [cMask](const unsigned char* pLow, const unsigned char* pHigh)
        {
            const __m128i cLow = SumHalves(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pLow)), cMask);
            const __m128i cHigh = SumHalves(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pHigh)), cMask);
            return _mm_add_epi64(_mm_unpacklo_epi64(cLow, cHigh), _mm_unpackhi_epi64(cLow, cHigh));
        };
        return Gather(two(p, p + n), two(p + 2 * n, p + 3 * n));
    }
};

/// The means of spans, eight at a time; returns how many. The first eight are read from their starts on, which stays
/// within the row, all others to their ends; the last eight overlap those before.
template <class Spans>
int MeansByBlocks(const unsigned char* pIn, int nIn, int nWhole, std::uint16_t nReciprocal, unsigned char* pOut,
                  int nOut)
{
    if (nOut < 8 || Spans::Reach(nWhole) > nIn)
    {
        return 0;
    }
    const std::ptrdiff_t n = nWhole;
    const __m128i cReciprocal = _mm_set1_epi16(static_cast<short>(nReciprocal));
    const auto block = [=](int k, const StLoad& cLoad)
    {
        const unsigned char* const p = pIn + k * n + cLoad.nOffset;
        const __m128i cSums = _mm_packs_epi32(Spans::Four(p, n, cLoad.cMask), Spans::Four(p + 4 * n, n, cLoad.cMask));
        const __m128i cMeans = _mm_mulhi_epu16(cSums, cReciprocal);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pOut + k), _mm_packus_epi16(cMeans, cMeans));
    };
    block(0, Spans::FromStart(nWhole));
    const StLoad cLoad = Spans::ToEnd(nWhole);
    int k = 8;
    for (; k + 8 <= nOut; k += 8)
    {
        block(k, cLoad);
    }
    if (k < nOut && (nOut - 8) * n >= k) // the last spans are still there where the means go to the same row
    {
        block(nOut - 8, cLoad);
        k = nOut;
    }
    return k;
}
} // namespace

int ClSpanMean::ReduceWholeByBlocks(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const
{
    const auto blocks = m_nWhole > 8                     ? MeansByBlocks<ClWideSpans>
                        : m_nWhole == 4 || m_nWhole == 5 ? MeansByBlocks<ClSpansOfFive>
                                                         : MeansByBlocks<ClNarrowSpans>;
    return blocks(pIn, nIn, m_nWhole, m_nWholeReciprocal, pOut, nOut);
}
#else
int ClSpanMean::ReduceWholeByBlocks(const unsigned char*, int, unsigned char*, int) const
{
    return 0;
}
#endif

void ClSpanMean::ReduceShared(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const
{
    // Source sample j covers (j - 1) << 12 to j << 12.
    std::int64_t nEnd = m_nSpan - nOne;
    std::int64_t nSum = 0;
    int k = 0;
    std::int64_t j = 0;
    for (; j < nIn && k < nOut; ++j)
    {
        const std::int64_t nPlace = j * nOne;
        if (nEnd >= nPlace)
        {
            nSum += pIn[j] * nOne;
            continue;
        }
        // The sample straddles the end of the span: it is shared between two places.
        pOut[k++] = Quotient(nSum + (nEnd - nPlace + nOne) * pIn[j]);
        nSum = (nPlace - nEnd) * pIn[j];
        nEnd += m_nSpan;
    }
    if (k < nOut)
    {
        const std::int64_t nPart = m_nSpan + (j - 1) * nOne - nEnd;
        std::memset(pOut + k, static_cast<unsigned char>(nSum / nPart), static_cast<std::size_t>(nOut - k));
    }
}

namespace
{
void AddRow(const unsigned char* __restrict pIn, std::uint16_t* __restrict pSum, std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pSum[x] = static_cast<std::uint16_t>(pSum[x] + pIn[x]);
    }
}

/// The means of whole spans; their sums begin anew.
void TakeMeans(std::uint16_t* __restrict pSum, std::uint16_t nReciprocal, unsigned char* __restrict pOut,
               std::ptrdiff_t nCount)
{
    for (std::ptrdiff_t x = 0; x < nCount; ++x)
    {
        pOut[x] = ClSpanMean::WholeQuotient(pSum[x], nReciprocal);
        pSum[x] = 0;
    }
}
} // namespace

ClColumnSpanMean::ClColumnSpanMean(std::int64_t nSpan, int nWidth) : m_cMean(nSpan), m_nWidth(nWidth)
{
    const auto nColumns = static_cast<unsigned long>(nWidth);
    if (m_cMean.m_nWhole != 0)
    {
        m_anWholeSum.New(nColumns);
        std::fill_n(m_anWholeSum.m_pData, nColumns, std::uint16_t(0));
    }
    else
    {
        m_anSum.New(nColumns);
        std::fill_n(m_anSum.m_pData, nColumns, 0);
    }
}

bool ClColumnSpanMean::Add(const unsigned char* pIn, unsigned char* pOut)
{
    return m_cMean.m_nWhole != 0 ? AddWhole(pIn, pOut) : AddShared(pIn, pOut);
}

bool ClColumnSpanMean::AddWhole(const unsigned char* pIn, unsigned char* pOut)
{
    std::uint16_t* const pSum = m_anWholeSum.m_pData;
    AddRow(pIn, pSum, m_nWidth);
    if (++m_nFilled < m_cMean.m_nWhole)
    {
        return false;
    }
    TakeMeans(pSum, m_cMean.m_nWholeReciprocal, pOut, m_nWidth);
    m_nFilled = 0;
    return true;
}

bool ClColumnSpanMean::AddShared(const unsigned char* pIn, unsigned char* pOut)
{
    constexpr std::int64_t nOne = ClSpanMean::nOne;
    std::int64_t* const pSum = m_anSum.m_pData;
    if (m_nFilled + nOne <= m_cMean.m_nSpan)
    {
        for (int x = 0; x < m_nWidth; ++x)
        {
            pSum[x] += pIn[x] * nOne;
        }
        m_nFilled += nOne;
        return false;
    }
    const std::int64_t nHere = m_cMean.m_nSpan - m_nFilled; // the part of the row that ends the span
    const std::int64_t nNext = nOne - nHere;
    for (int x = 0; x < m_nWidth; ++x)
    {
        pOut[x] = m_cMean.Quotient(pSum[x] + nHere * pIn[x]);
        pSum[x] = nNext * pIn[x];
    }
    m_nFilled = nNext;
    return true;
}

bool ClColumnSpanMean::Finish(unsigned char* pOut) const
{
    if (m_nFilled == 0)
    {
        return false;
    }
    for (int x = 0; x < m_nWidth; ++x)
    {
        pOut[x] = m_cMean.m_nWhole != 0
                      ? static_cast<unsigned char>(m_anWholeSum[static_cast<unsigned long>(x)] / m_nFilled)
                      : static_cast<unsigned char>(m_anSum[static_cast<unsigned long>(x)] / m_nFilled);
    }
    return true;
}
