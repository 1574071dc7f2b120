#pragma once

// Pictures with given grey values, for the tests of thresholds.

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using Counts_t = std::vector<std::pair<int, int>>; ///< grey value and its number of pixels

/// A one-plane 8-bit image of one row with exactly these grey values.
inline void FillCounts(ClImage& cImage, const Counts_t& aCounts)
{
    int nTotal = 0;
    for (const auto& [nGrey, nCount] : aCounts)
    {
        nTotal += nCount;
    }
    cImage.NewWithType(ClImage::eUInt8, nTotal, 1, 1, 0, 0);
    unsigned char* pOut = cImage.Data();
    for (const auto& [nGrey, nCount] : aCounts)
    {
        pOut = std::fill_n(pOut, nCount, static_cast<unsigned char>(nGrey));
    }
}

/// Random counts of some grey values: nUsed draws from a range, so that there are gaps and peaks.
inline Counts_t RandomCounts(ClTestRandom& cRandom, int nUsed)
{
    Counts_t aCounts;
    const int nFirst = cRandom.Below(200);
    const int nRange = 1 + cRandom.Below(256 - nFirst);
    for (int i = 0; i < nUsed; ++i)
    {
        aCounts.emplace_back(nFirst + cRandom.Below(nRange), 1 + cRandom.Below(i % 5 == 0 ? 400 : 30));
    }
    return aCounts;
}

/// Number of pixels of each grey value, counted pixel by pixel.
inline std::vector<long> HistogramOf(const ClImage& cImage)
{
    std::vector<long> anCounts(256);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            ++anCounts[Row<unsigned char>(cImage, y)[x]];
        }
    }
    return anCounts;
}

/// What a threshold makes of an image.
inline void BinarizeByDefinition(const ClImage& cIn, int nThreshold, ClImage& cOut)
{
    cOut.New(cIn);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            Row<unsigned char>(cOut, y)[x] = Row<unsigned char>(cIn, y)[x] < nThreshold ? 0 : 255;
        }
    }
}
