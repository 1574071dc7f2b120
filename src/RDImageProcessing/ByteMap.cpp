#include "RDImageProcessing/ByteMap.hpp"

#include "RDTools/WideVectors.hpp"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace
{
void ThroughTable(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes, const unsigned char* pTable)
{
    constexpr int nBlock = 8; // read before any of them is written, so that the reads need not wait for the writes
    std::ptrdiff_t x = 0;
    for (; x + nBlock <= nBytes; x += nBlock)
    {
        unsigned char anOut[nBlock];
        for (int i = 0; i < nBlock; ++i)
        {
            anOut[i] = pTable[pIn[x + i]];
        }
        for (int i = 0; i < nBlock; ++i)
        {
            pOut[x + i] = anOut[i];
        }
    }
    for (; x < nBytes; ++x)
    {
        pOut[x] = pTable[pIn[x]];
    }
}

RD_KERNEL void Step(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes, unsigned char nLastLow,
                    unsigned char nLow, unsigned char nHigh)
{
    const unsigned char nFlip = nLow ^ nHigh;
    for (std::ptrdiff_t x = 0; x < nBytes; ++x)
    {
        pOut[x] = static_cast<unsigned char>(nHigh ^ (pIn[x] <= nLastLow ? nFlip : 0));
    }
}

void StepNarrow(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes, unsigned char nLastLow,
                unsigned char nLow, unsigned char nHigh)
{
    Step(pIn, pOut, nBytes, nLastLow, nLow, nHigh);
}

RD_FOR_WIDE_VECTORS void StepWide(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes,
                                  unsigned char nLastLow, unsigned char nLow, unsigned char nHigh)
{
    Step(pIn, pOut, nBytes, nLastLow, nLow, nHigh);
}

#if defined(__x86_64__)
/// Two instructions look 64 bytes up, one in each half of the table; the highest bit of a byte chooses between them.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) void
ThroughTableVbmi(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes, const unsigned char* pTable)
{
    const __m512i c0 = _mm512_loadu_si512(pTable);
    const __m512i c1 = _mm512_loadu_si512(pTable + 64);
    const __m512i c2 = _mm512_loadu_si512(pTable + 128);
    const __m512i c3 = _mm512_loadu_si512(pTable + 192);
    for (std::ptrdiff_t x = 0; x < nBytes; x += 64)
    {
        const __mmask64 nMask = nBytes - x >= 64 ? ~__mmask64(0) : (__mmask64(1) << (nBytes - x)) - 1;
        const __m512i cIn = _mm512_maskz_loadu_epi8(nMask, pIn + x);
        const __m512i cLow = _mm512_permutex2var_epi8(c0, cIn, c1);
        const __m512i cHigh = _mm512_permutex2var_epi8(c2, cIn, c3);
        _mm512_mask_storeu_epi8(pOut + x, nMask, _mm512_mask_blend_epi8(_mm512_movepi8_mask(cIn), cLow, cHigh));
    }
}

bool HasVbmi()
{
    return HasWideVectors() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vbmi");
}
#endif

StByteMaps Fastest()
{
    StByteMaps cMaps = g_cByteMapsAnywhere;
#if defined(__x86_64__)
    if (HasVbmi())
    {
        cMaps.pThroughTable = ThroughTableVbmi;
    }
#endif
    if (HasWideVectors())
    {
        cMaps.pStep = StepWide;
    }
    return cMaps;
}
} // namespace

const StByteMaps g_cByteMapsAnywhere = {ThroughTable, StepNarrow};

const StByteMaps& ByteMaps()
{
    static const StByteMaps cMaps = Fastest();
    return cMaps;
}
