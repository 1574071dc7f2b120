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
        m_nWholeReciprocal = (65536u + static_cast<unsigned int>(m_nWhole) - 1) / static_cast<unsigned int>(m_nWhole);
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
/// Sums of the eight bytes at pLow and at pHigh under the mask, in the two halves.
inline __m128i TwoSums(const unsigned char* pLow, const unsigned char* pHigh, __m128i cMask)
{
    const __m128i cLow = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pLow));
    const __m128i cHigh = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pHigh));
    return _mm_sad_epu8(_mm_and_si128(_mm_unpacklo_epi64(cLow, cHigh), cMask), _mm_setzero_si128());
}

/// The same where a sum takes more than eight bytes.
inline __m128i TwoWideSums(const unsigned char* pLow, const unsigned char* pHigh, __m128i cMask)
{
    const auto halves = [cMask](const unsigned char* p)
    {
        const __m128i cBytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        return _mm_sad_epu8(_mm_and_si128(cBytes, cMask), _mm_setzero_si128());
    };
    const __m128i cLow = halves(pLow);
    const __m128i cHigh = halves(pHigh);
    return _mm_add_epi64(_mm_unpacklo_epi64(cLow, cHigh), _mm_unpackhi_epi64(cLow, cHigh));
}

/// Four sums from twice two.
inline __m128i Gather(__m128i a, __m128i b)
{
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}
} // namespace

int ClSpanMean::ReduceWholeByBlocks(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut) const
{
    // A load takes 8 or 16 bytes from the start of a span; the last one must end within the row.
    const bool bWide = m_nWhole > 8;
    const int nLoad = bWide ? 16 : 8;
    const int nSafe = nIn < nLoad ? 0 : std::min(nOut, (nIn - nLoad) / m_nWhole + 1);
    alignas(16) unsigned char aMask[16];
    for (int i = 0; i < 16; ++i)
    {
        aMask[i] = i % nLoad < m_nWhole ? 255 : 0;
    }
    const __m128i cMask = _mm_load_si128(reinterpret_cast<const __m128i*>(aMask));
    const __m128i cReciprocal = _mm_set1_epi16(static_cast<short>(m_nWholeReciprocal));
    const std::ptrdiff_t n = m_nWhole;
    int k = 0;
    for (; k + 8 <= nSafe; k += 8)
    {
        const unsigned char* p = pIn + k * n;
        __m128i a;
        __m128i b;
        if (bWide)
        {
            a = Gather(TwoWideSums(p, p + n, cMask), TwoWideSums(p + 2 * n, p + 3 * n, cMask));
            b = Gather(TwoWideSums(p + 4 * n, p + 5 * n, cMask), TwoWideSums(p + 6 * n, p + 7 * n, cMask));
        }
        else
        {
            a = Gather(TwoSums(p, p + n, cMask), TwoSums(p + 2 * n, p + 3 * n, cMask));
            b = Gather(TwoSums(p + 4 * n, p + 5 * n, cMask), TwoSums(p + 6 * n, p + 7 * n, cMask));
        }
        const __m128i cMeans = _mm_mulhi_epu16(_mm_packs_epi32(a, b), cReciprocal);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pOut + k), _mm_packus_epi16(cMeans, cMeans));
    }
    return k;
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
    for (int x = 0; x < m_nWidth; ++x)
    {
        pSum[x] = static_cast<std::uint16_t>(pSum[x] + pIn[x]);
    }
    if (++m_nFilled < m_cMean.m_nWhole)
    {
        return false;
    }
    for (int x = 0; x < m_nWidth; ++x)
    {
        pOut[x] = m_cMean.WholeQuotient(pSum[x]);
        pSum[x] = 0;
    }
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
