#pragma once

// Running sums over windows that are clipped to the image.

#include "RDTools/FpImage.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>

/// A window of 2 nHalf + 1 samples slides over a line of nSize, clipped at its ends; sum is what stands in the window
/// before the first sample enters. load(x) is the sample at x; write(x, sum, samples) takes the window's sum at x. In
/// the middle the stated width counts as the number of samples.
template <class Sum, class Load, class Write>
inline void SlideWindow(int nSize, int nHalf, long nWidth, Sum sum, Load&& load, Write&& write)
{
    for (int x = 0; x < nHalf; ++x)
    {
        sum += load(x);
    }
    for (int x = 0; x <= nHalf; ++x)
    {
        sum += load(x + nHalf);
        write(x, sum, static_cast<long>(nHalf) + 1 + x);
    }
    sum -= load(0);
    for (int x = nHalf + 1; x < nSize - nHalf; ++x)
    {
        sum += load(x + nHalf);
        write(x, sum, nWidth);
        sum -= load(x - nHalf);
    }
    for (int x = nSize - nHalf; x < nSize; ++x)
    {
        write(x, sum, static_cast<long>(nSize) - x + nHalf);
        sum -= load(x - nHalf);
    }
}

/// The sum of the box around every pixel, clipped to the image, which is not narrower than the box. rowWriter(y) gives
/// the function of a row that takes column, sum and number of samples.
template <class T, class Sum, class RowWriter> void SumBoxes(const ClImage& cIn, long nWidth, RowWriter&& rowWriter)
{
    const int nHalf = static_cast<int>(nWidth / 2);
    const int nColumns = cIn.m_nWidth;
    TpArrayStatic<Sum> aColumnSums(static_cast<unsigned long>(nColumns));
    Sum* const pSums = aColumnSums.m_pData;
    std::fill_n(pSums, nColumns, Sum(0));
    const auto addRow = [&](int y)
    {
        const T* pRow = Row<T>(cIn, y);
        for (int x = 0; x < nColumns; ++x)
        {
            pSums[x] += static_cast<Sum>(pRow[x]);
        }
    };
    for (int y = 0; y < nHalf; ++y)
    {
        addRow(y);
    }
    int nRows = nHalf;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        if (y + nHalf < cIn.m_nHeight)
        {
            addRow(y + nHalf);
            ++nRows;
        }
        auto write = rowWriter(y);
        SlideWindow(
            nColumns, nHalf, nWidth, Sum(0), [pSums](int x) { return pSums[x]; },
            [&write, nRows](int x, Sum sum, long nSamples)
            { write(x, sum, static_cast<Sum>(nRows) * static_cast<Sum>(nSamples)); });
        if (y >= nHalf)
        {
            const T* pRow = Row<T>(cIn, y - nHalf);
            for (int x = 0; x < nColumns; ++x)
            {
                pSums[x] -= static_cast<Sum>(pRow[x]);
            }
            --nRows;
        }
    }
}
