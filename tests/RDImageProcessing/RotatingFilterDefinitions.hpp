#pragma once

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

/// The filter of the most uniform mask by definition: measures of masks and the search, slow on purpose, sharing no
/// line with the filter.
namespace RotatingFilterDefinitions
{
using Size = std::pair<int, int>;

/// A plain field of numbers; doubles hold all sample types exactly.
struct ClField
{
    ClField(int nWidth, int nHeight)
        : m_nWidth(nWidth), m_nHeight(nHeight),
          m_ad(static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight))
    {
    }
    double& At(int x, int y)
    {
        return m_ad[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_nWidth) + static_cast<std::size_t>(x)];
    }
    bool Has(int x, int y) const { return x >= 0 && y >= 0 && x < m_nWidth && y < m_nHeight; }

    int m_nWidth;
    int m_nHeight;
    std::vector<double> m_ad;
};

template <class T> ClField FieldOf(const ClImage& cImage)
{
    ClField cField(cImage.m_nWidth, cImage.m_nHeight);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            cField.At(x, y) = static_cast<double>(Row<T>(cImage, y)[x]);
        }
    }
    return cField;
}

/// Rows of the output by the rules of the search, one decision after the other.
class ClSearchByRules
{
public:
    ClSearchByRules(ClField cDev, ClField cAvg, int nHalf)
        : m_cDev(std::move(cDev)), m_cAvg(std::move(cAvg)), m_cOut(m_cDev.m_nWidth, m_cDev.m_nHeight), k(nHalf),
          W(m_cDev.m_nWidth), H(m_cDev.m_nHeight)
    {
    }

    ClField Run()
    {
        for (int x = 0; x < W; ++x)
        {
            m_aEntries.push_back({m_cDev.At(x, 0), m_cAvg.At(x, 0), 0});
        }
        for (int y = 1; y <= k - 1; ++y)
        {
            MergeRow(y);
        }
        for (int y = 0; y < k; ++y) // top
        {
            MergeRow(y + k);
            Across(y);
        }
        for (int y = k; y < H - k; ++y) // middle
        {
            for (int x = 0; x < W; ++x)
            {
                Entry(x).nRow < y - k ? Rebuild(x, y - k, y + k) : Merge(x, y + k);
            }
            Across(y);
        }
        for (int y = H - k; y < H; ++y) // bottom
        {
            for (int x = 0; x < W; ++x)
            {
                if (Entry(x).nRow < y - k)
                {
                    Rebuild(x, y - k, H - 1);
                }
            }
            Across(y);
        }
        return m_cOut;
    }

private:
    struct ClEntry
    {
        double dDev;
        double dMean;
        int nRow;
    };

    ClEntry& Entry(int x) { return m_aEntries[static_cast<std::size_t>(x)]; }

    void Merge(int x, int y)
    {
        if (m_cDev.At(x, y) < Entry(x).dDev)
        {
            Entry(x) = {m_cDev.At(x, y), m_cAvg.At(x, y), y};
        }
    }

    void MergeRow(int y)
    {
        for (int x = 0; x < W; ++x)
        {
            Merge(x, y);
        }
    }

    void Rebuild(int x, int nFirst, int nLast)
    {
        Entry(x) = {m_cDev.At(x, nFirst), m_cAvg.At(x, nFirst), nFirst};
        for (int y = nFirst + 1; y <= nLast; ++y)
        {
            Merge(x, y);
        }
    }

    void ScanAgain(int& nCurrent, int nFirst, int nLast)
    {
        nCurrent = nFirst;
        for (int x = nFirst; x <= nLast; ++x)
        {
            if (Entry(x).dDev < Entry(nCurrent).dDev)
            {
                nCurrent = x;
            }
        }
    }

    void Across(int y)
    {
        int nCurrent = 0;
        for (int x = 1; x <= k - 1; ++x)
        {
            if (Entry(x).dDev <= Entry(nCurrent).dDev)
            {
                nCurrent = x;
            }
        }
        for (int x = 0; x < k; ++x)
        {
            if (Entry(x + k).dDev < Entry(nCurrent).dDev)
            {
                nCurrent = x + k;
            }
            m_cOut.At(x, y) = Entry(nCurrent).dMean;
        }
        for (int x = k; x < W - k; ++x)
        {
            if (nCurrent >= x - k)
            {
                if (Entry(x + k).dDev < Entry(nCurrent).dDev)
                {
                    nCurrent = x + k;
                }
            }
            else
            {
                ScanAgain(nCurrent, x - k, x + k);
            }
            m_cOut.At(x, y) = Entry(nCurrent).dMean;
        }
        for (int x = W - k; x < W; ++x)
        {
            if (nCurrent < x - k)
            {
                ScanAgain(nCurrent, x - k, W - 1);
            }
            m_cOut.At(x, y) = Entry(nCurrent).dMean;
        }
    }

    ClField m_cDev;
    ClField m_cAvg;
    ClField m_cOut;
    std::vector<ClEntry> m_aEntries;
    const int k;
    const int W;
    const int H;
};

/// The same told at once: of each column the lowest row of the smallest deviation, of the columns in reach the leftmost
/// of the smallest, unless the rightmost of the best among the first k columns is among the smallest.
inline ClField SearchByDefinition(ClField cDev, ClField cAvg, int k)
{
    ClField cOut(cDev.m_nWidth, cDev.m_nHeight);
    for (int y = 0; y < cDev.m_nHeight; ++y)
    {
        const auto bestRow = [&](int x)
        {
            int nBest = std::max(y - k, 0);
            for (int j = nBest; j <= std::min(y + k, cDev.m_nHeight - 1); ++j)
            {
                nBest = cDev.At(x, j) < cDev.At(x, nBest) ? j : nBest;
            }
            return nBest;
        };
        const auto best = [&](int x) { return cDev.At(x, bestRow(x)); };
        int nFavourite = 0;
        for (int x = 0; x < k; ++x)
        {
            nFavourite = best(x) <= best(nFavourite) ? x : nFavourite;
        }
        for (int x = 0; x < cDev.m_nWidth; ++x)
        {
            int nColumn = std::max(x - k, 0);
            const bool bFavourite = nFavourite >= x - k;
            for (int i = nColumn; i <= std::min(x + k, cDev.m_nWidth - 1); ++i)
            {
                nColumn = best(i) < best(nColumn) ? i : nColumn;
            }
            if (bFavourite && best(nFavourite) == best(nColumn))
            {
                nColumn = nFavourite;
            }
            cOut.At(x, y) = cAvg.At(nColumn, bestRow(nColumn));
        }
    }
    return cOut;
}

/// The search as it is meant, where no two deviations in reach are equal.
inline ClField SearchUnique(ClField cDev, ClField cAvg, int k)
{
    ClField cOut(cDev.m_nWidth, cDev.m_nHeight);
    for (int y = 0; y < cDev.m_nHeight; ++y)
    {
        for (int x = 0; x < cDev.m_nWidth; ++x)
        {
            int nBestX = x;
            int nBestY = y;
            for (int j = y - k; j <= y + k; ++j)
            {
                for (int i = x - k; i <= x + k; ++i)
                {
                    if (cDev.Has(i, j) && cDev.At(i, j) < cDev.At(nBestX, nBestY))
                    {
                        nBestX = i;
                        nBestY = j;
                    }
                }
            }
            cOut.At(x, y) = cAvg.At(nBestX, nBestY);
        }
    }
    return cOut;
}

/// Calls fn for each pixel of the mask of half side k around (x, y), row by row, and returns their number; for a whole
/// mask the square of m, also where m is even and the mask wider.
template <class Fn> int ForMask(const ClField& cIn, int x, int y, int m, Fn&& fn)
{
    const int k = m / 2;
    int nCount = 0;
    for (int j = y - k; j <= y + k; ++j)
    {
        for (int i = x - k; i <= x + k; ++i)
        {
            if (cIn.Has(i, j))
            {
                fn(i, j);
                ++nCount;
            }
        }
    }
    return nCount == (2 * k + 1) * (2 * k + 1) ? m * m : nCount;
}

struct ClMeansAndDeviations
{
    ClMeansAndDeviations(int nWidth, int nHeight) : m_cAvg(nWidth, nHeight), m_cDev(nWidth, nHeight) {}
    ClField m_cAvg;
    ClField m_cDev;
};

/// Mean, and mean absolute distance to it, of bytes.
inline ClMeansAndDeviations ByteMeasure(ClField cIn, int m)
{
    ClMeansAndDeviations cResult(cIn.m_nWidth, cIn.m_nHeight);
    const int nMeanMask = m | 1; // the mean filter takes odd widths only
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            int nSum = 0;
            int nCount = ForMask(cIn, x, y, nMeanMask, [&](int i, int j) { nSum += static_cast<int>(cIn.At(i, j)); });
            int nMean = nSum / nCount;
            if (nMeanMask == 3)
            {
                nMean = nCount == 4   ? (nSum + 2) >> 2
                        : nCount == 6 ? ((nSum + 3) * 682) >> 12
                                      : ((nSum + 4) * 455) >> 12;
            }
            nSum = 0;
            nCount =
                ForMask(cIn, x, y, m, [&](int i, int j) { nSum += std::abs(nMean - static_cast<int>(cIn.At(i, j))); });
            cResult.m_cAvg.At(x, y) = nMean;
            cResult.m_cDev.At(x, y) = (nSum / nCount) & 255;
        }
    }
    return cResult;
}

/// Mean, and mean of the distances of the pixels to their own means, of bytes.
inline ClMeansAndDeviations DistanceMeasure(ClField cIn, int m)
{
    ClMeansAndDeviations cResult(cIn.m_nWidth, cIn.m_nHeight);
    cResult.m_cAvg = ByteMeasure(cIn, m).m_cAvg;
    ClField cDistance(cIn.m_nWidth, cIn.m_nHeight);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            cDistance.At(x, y) = std::fabs(cResult.m_cAvg.At(x, y) - cIn.At(x, y));
        }
    }
    cResult.m_cDev = ByteMeasure(cDistance, m).m_cAvg;
    return cResult;
}

/// Mean and variance with eight fractional bits; the mean is an unsigned quotient for signed samples, too.
inline ClMeansAndDeviations FixPointMeasure(ClField cIn, int m)
{
    ClMeansAndDeviations cResult(cIn.m_nWidth, cIn.m_nHeight);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            long nSum = 0;
            int nCount = ForMask(cIn, x, y, m, [&](int i, int j) { nSum += static_cast<long>(cIn.At(i, j)); });
            const long nMean = static_cast<long>(static_cast<std::uint32_t>(nSum * 256)) / nCount;
            long nSquares = 0;
            nCount = ForMask(cIn, x, y, m,
                             [&](int i, int j)
                             {
                                 const long nDistance = static_cast<long>(cIn.At(i, j)) * 256 - nMean;
                                 nSquares += nDistance * nDistance;
                             });
            cResult.m_cAvg.At(x, y) = static_cast<double>(nMean);
            cResult.m_cDev.At(x, y) = static_cast<double>(static_cast<std::uint32_t>(nSquares / nCount / 256));
        }
    }
    return cResult;
}

inline ClMeansAndDeviations FloatMeasure(ClField cIn, int m)
{
    ClMeansAndDeviations cResult(cIn.m_nWidth, cIn.m_nHeight);
    const int k = m / 2;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            int nSum = 0;
            const int nCount = ForMask(cIn, x, y, m, [&](int i, int j) { nSum += static_cast<int>(cIn.At(i, j)); });
            const float fMean = static_cast<float>(nSum) / static_cast<float>(nCount);
            float fSquares = 0;
            ForMask(cIn, x, y, m,
                    [&](int i, int j)
                    {
                        const float fDistance = static_cast<float>(cIn.At(i, j)) - fMean;
                        fSquares = fSquares + fDistance * fDistance;
                    });
            const bool bWhole = x >= k && y >= k && x < cIn.m_nWidth - k && y < cIn.m_nHeight - k;
            const float fDev =
                bWhole ? fSquares * (1.0f / static_cast<float>(m * m)) : fSquares / static_cast<float>(nCount);
            cResult.m_cAvg.At(x, y) = static_cast<double>(fMean);
            cResult.m_cDev.At(x, y) = static_cast<double>(fDev);
        }
    }
    return cResult;
}

/// Makes an image of samples from a field of means that are scaled by dScale and truncated.
template <class T> void ImageOf(ClField cField, double dScale, ClImage& cOut)
{
    cOut.NewWithType(ClImage::eUInt8, cField.m_nWidth, cField.m_nHeight, 1, 0, 0);
    for (int y = 0; y < cField.m_nHeight; ++y)
    {
        for (int x = 0; x < cField.m_nWidth; ++x)
        {
            Row<T>(cOut, y)[x] = static_cast<T>(static_cast<long>(cField.At(x, y) / dScale));
        }
    }
}

/// Random 8-bit image with nLevels values, so that equal deviations are frequent if there are few.
inline void FillLevels(ClImage& cImage, int nWidth, int nHeight, int nLevels, unsigned int nSeed)
{
    FillRandom8(cImage, nWidth, nHeight, nSeed);
    for (int y = 0; y < nHeight; ++y)
    {
        unsigned char* pRow = Row<unsigned char>(cImage, y);
        std::transform(pRow, pRow + nWidth, pRow,
                       [nLevels](int n) { return static_cast<unsigned char>(n % nLevels * (255 / nLevels)); });
    }
}

const Size aSizes[] = {{9, 9}, {10, 9}, {9, 14}, {13, 30}, {40, 11}, {33, 31}};
} // namespace RotatingFilterDefinitions
