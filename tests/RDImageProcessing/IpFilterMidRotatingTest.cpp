#include "RDImageProcessing/IpFilterMidRotating.hpp"

#include "FailingHeap.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace
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
ClField SearchByDefinition(ClField cDev, ClField cAvg, int k)
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
ClField SearchUnique(ClField cDev, ClField cAvg, int k)
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
ClMeansAndDeviations ByteMeasure(ClField cIn, int m)
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
ClMeansAndDeviations DistanceMeasure(ClField cIn, int m)
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
ClMeansAndDeviations FixPointMeasure(ClField cIn, int m)
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

ClMeansAndDeviations FloatMeasure(ClField cIn, int m)
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
void FillLevels(ClImage& cImage, int nWidth, int nHeight, int nLevels, unsigned int nSeed)
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
} // namespace

TEST(IpFilterMidRotating, HasItsNameAndDefaults)
{
    ClIpFilterMidRotating cFilter;
    EXPECT_STREQ("ClIpFilterMidRotating", cFilter.Name());
    const std::unique_ptr<ClProcessorBase> pCopy(cFilter.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpFilterMidRotating*>(pCopy.get()));
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviation, cFilter.m_eVarMode);
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    cFilter.m_eVarMode = ClIpFilterMidRotating::ModeLocalMaskDeviationFloat;
    cFilter.m_nFilterWidth = 9;
    cFilter.m_nMode = 1;
    cFilter.SetParametersToDefault();
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviation, cFilter.m_eVarMode);
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    EXPECT_EQ(3, cFilter.m_nMode);
}

TEST(IpFilterMidRotating, PublishesTheVarianceModeBehindTheBase)
{
    ClIpFilterMidRotating cFilter;
    ClParameterContainer cTree;
    cFilter.QueryParameters(cTree);
    EXPECT_STREQ("ClIpFilterMidRotating", cTree.GetName());
    const char* const aszNames[] = {"pInImage",   "pOutImage",  "nFilterWidth", "nMode",
                                    "pInDxImage", "pInDyImage", "eVarMode"};
    ASSERT_EQ(std::size(aszNames), cTree.m_aChildren.Entries());
    for (unsigned long i = 0; i < std::size(aszNames); ++i)
    {
        EXPECT_STREQ(aszNames[i], cTree.m_aChildren[i]->GetName());
    }
    ClParameter* pMode = cTree.Find("eVarMode");
    EXPECT_STREQ("ClIpFilterMidRotating::m_eVarMode", pMode->GetDescription());
    EXPECT_EQ("ModeLocalMaskDeviation", pMode->GetDefaultValue());
    EXPECT_EQ("5", cTree.Find("nFilterWidth")->GetDefaultValue());
    const char* const aszModes[] = {"ModeLocalMinDistanceToAverage", "ModeLocalMaskDeviation",
                                    "ModeLocalMaskDeviationFixPoint", "ModeLocalMaskDeviationFloat"};
    ASSERT_EQ(std::size(aszModes), pMode->GetEnumInterface()->GetValueNameCount());
    for (unsigned long i = 0; i < std::size(aszModes); ++i)
    {
        char szName[40];
        pMode->GetEnumInterface()->GetValueName(i, szName, sizeof szName);
        EXPECT_STREQ(aszModes[i], szName);
        pMode->SetValue(aszModes[i]);
        EXPECT_EQ(static_cast<int>(i), cFilter.m_eVarMode);
    }
}

TEST(IpFilterMidRotating, ApplyParamStoresItsArguments)
{
    ClIpFilterMidRotating cFilter;
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 1);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 9, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat));
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
    EXPECT_EQ(9, cFilter.m_nFilterWidth);
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviationFloat, cFilter.m_eVarMode);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 5));
    EXPECT_EQ(5, cFilter.m_nFilterWidth);
    EXPECT_EQ(ClIpFilterMidRotating::ModeLocalMaskDeviationFloat, cFilter.m_eVarMode);
}

TEST(IpFilterMidRotating, ChecksImagesThenWidthThenSize)
{
    ClIpFilterMidRotating cFilter;
    EXPECT_EQ(FPC_ERROR_PARAM_IS_MISSING, cFilter.Apply());
    EXPECT_FALSE(cFilter.CanApply());
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    cFilter.m_pInImage = &cIn;
    EXPECT_EQ(FPC_ERROR_PARAM_IS_MISSING, cFilter.Apply());
    EXPECT_FALSE(cFilter.CanApply());
    cFilter.m_pOutImage = &cOut;
    const std::pair<long, long> aCases[] = {{1, FPC_SUCCESS},
                                            {3, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {4, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {5, FPC_SUCCESS},
                                            {6, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {7, FPC_SUCCESS},
                                            {9, FPC_ERROR_BITMAP_DIMENSION},
                                            {10, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {11, FPC_ERROR_BITMAP_DIMENSION},
                                            {0, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {-1, FPC_ERROR_PARAM_OUT_OF_RANGE},
                                            {-5, FPC_ERROR_PARAM_OUT_OF_RANGE}};
    for (const auto& [nWidth, nCode] : aCases)
    {
        EXPECT_EQ(nCode, cFilter.ApplyParam(cIn, cOut, nWidth)) << nWidth;
        EXPECT_EQ(nCode == FPC_SUCCESS, cFilter.CanApply()) << nWidth;
    }
    FillRandom8(cIn, 8, 10, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, cFilter.ApplyParam(cIn, cOut, 9));
}

TEST(IpFilterMidRotating, WidthOneCopies)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 1));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpFilterMidRotating, RefusesToWorkInPlace)
{
    ClImage cImage;
    FillRandom8(cImage, 10, 8, 1);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpFilterMidRotating().ApplyParam(cImage, cImage, 5));
}

TEST(IpFilterMidRotating, ServesModeXYOnly)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 10, 8, 1);
    for (const long nMode : {1L, 2L, 8L, 16L})
    {
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED,
                  ClIpFilterMidRotating().ClIpFilterBase::ApplyParam(cIn, cOut, 5, nMode));
    }
}

TEST(IpFilterMidRotating, RefusesUnknownVarianceModesAndOtherSampleTypes)
{
    ClImage cIn, cOut;
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8, ClImage::eUInt16, ClImage::eFloat32})
    {
        cIn.NewWithType(eType, 10, 8, 1, 0, 0);
        FillRandom(cIn, 2);
        for (const int nMode : {-1, 4, 99})
        {
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE,
                      ClIpFilterMidRotating().ApplyParam(cIn, cOut, 5,
                                                         static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
        }
        if (eType != ClImage::eUInt8 && eType != ClImage::eSInt8)
        {
            EXPECT_EQ(
                FPC_ERROR_FORMAT_NOTSUPPORTED,
                ClIpFilterMidRotating().ApplyParam(cIn, cOut, 5, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat));
        }
    }
}

TEST(IpFilterMidRotating, AFlatImageStaysFlat)
{
    for (const int nMode : {1, 2, 3})
    {
        for (int nValue = 0; nValue < 256; nValue += 5)
        {
            for (const long nWidth : {5L, 9L, 17L})
            {
                ClImage cIn, cOut;
                cIn.NewWithType(ClImage::eUInt8, 19, 18, 1, 0, 0);
                std::fill_n(cIn.Data(), 20 * 18, static_cast<unsigned char>(nValue));
                ASSERT_EQ(FPC_SUCCESS,
                          ClIpFilterMidRotating().ApplyParam(cIn, cOut, nWidth,
                                                             static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
                EXPECT_TRUE(SamePixels(cIn, cOut)) << nMode << ' ' << nWidth;
            }
        }
    }
}

TEST(IpFilterMidRotating, AStepEdgeStaysSharp)
{
    for (const int nMode : {1, 2, 3})
    {
        for (const bool bTurned : {false, true})
        {
            ClImage cIn, cOut;
            FillRandom8(cIn, 24, 24, 1);
            for (int y = 0; y < 24; ++y)
            {
                for (int x = 0; x < 24; ++x)
                {
                    Row<unsigned char>(cIn, y)[x] = (bTurned ? y : x) < 11 ? 30 : 220;
                }
            }
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                       cIn, cOut, 9, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
            EXPECT_TRUE(SamePixels(cIn, cOut)) << nMode;
        }
    }
}

TEST(IpFilterMidRotating, TheSearchFollowsItsRulesAmongEqualDeviations)
{
    for (const auto& [nColumns, nRows] : {Size(7, 7), Size(7, 20), Size(30, 7), Size(25, 21)})
    {
        for (int m = 1; m <= 7; ++m)
        {
            for (const int nLevels : {1, 2, 3, 5, 200})
            {
                ClImage cDev, cAvg, cOut, cExpected;
                FillLevels(cDev, nColumns, nRows, nLevels, static_cast<unsigned int>(m * 1000 + nLevels));
                FillRandom8(cAvg, nColumns, nRows, 3);
                cOut.New(cDev);
                ClIpFilterMidRotating().FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, m, cOut);
                const ClField cDevField = FieldOf<unsigned char>(cDev);
                const ClField cAvgField = FieldOf<unsigned char>(cAvg);
                ImageOf<unsigned char>(ClSearchByRules(cDevField, cAvgField, m / 2).Run(), 1.0, cExpected);
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << "rules, " << m << ' ' << nLevels;
                ImageOf<unsigned char>(SearchByDefinition(cDevField, cAvgField, m / 2), 1.0, cExpected);
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << "definition, " << m << ' ' << nLevels;
            }
        }
    }
}

TEST(IpFilterMidRotating, TheSearchFindsUniqueMinima)
{
    for (const int m : {1, 3, 5, 6, 9})
    {
        ClImage cDev, cAvg, cOut, cExpected;
        constexpr int nColumns = 29, nRows = 27;
        FillRandom8(cOut, nColumns, nRows, 5);
        cDev.NewWithType(ClImage::eUInt32, nColumns, nRows, 1, 0, 0);
        cAvg.NewWithType(ClImage::eUInt32, nColumns, nRows, 1, 0, 0);
        ClTestRandom cRandom(static_cast<unsigned int>(m));
        for (int y = 0; y < nRows; ++y)
        {
            for (int x = 0; x < nColumns; ++x)
            {
                // The low bits tell the position, so that no two are equal.
                Row<unsigned int>(cDev, y)[x] = (cRandom.Next() & 0xFFF00000u) + static_cast<unsigned int>(y * 32 + x);
                Row<unsigned int>(cAvg, y)[x] = cRandom.Next() >> 16;
            }
        }
        ClIpFilterMidRotating().FindMinimum<unsigned int, unsigned char, ClConvertFixPoint>(cDev, cAvg, m, cOut);
        ImageOf<unsigned char>(SearchUnique(FieldOf<unsigned int>(cDev), FieldOf<unsigned int>(cAvg), m / 2), 256.0,
                               cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut)) << m;
    }
}

TEST(IpFilterMidRotating, TheSearchTakesImagesSmallerThanItsReach)
{
    for (const auto& [nColumns, nRows] : {Size(1, 1), Size(2, 5), Size(5, 2), Size(3, 3)})
    {
        ClImage cDev, cAvg, cOut, cExpected;
        FillRandom8(cDev, nColumns, nRows, 1);
        FillRandom8(cAvg, nColumns, nRows, 2);
        cOut.New(cDev);
        ClIpFilterMidRotating().FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, 9, cOut);
        ImageOf<unsigned char>(SearchUnique(FieldOf<unsigned char>(cDev), FieldOf<unsigned char>(cAvg), 4), 1.0,
                               cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpFilterMidRotating, MaskDeviationsAreMeanDistancesToTheMean)
{
    for (const auto& [nColumns, nRows] : {Size(3, 3), Size(5, 2), Size(11, 9), Size(40, 23)})
    {
        for (const int m : {1, 2, 3, 4, 5, 6, 9, 15, 16, 17})
        {
            ClImage cAvg, cIn, cDev;
            FillRandom8(cIn, nColumns, nRows, 6);
            FillRandom8(cAvg, nColumns, nRows, 7); // any numbers do for the mean
            ClIpFilterMidRotating().CalculateDeviationByte(cAvg, cIn, m, cDev);
            ASSERT_TRUE(SameDescription(cAvg, cDev));
            const ClField cField = FieldOf<unsigned char>(cIn);
            for (int y = 0; y < nRows; ++y)
            {
                for (int x = 0; x < nColumns; ++x)
                {
                    int nSum = 0;
                    const int nCount = ForMask(cField, x, y, m,
                                               [&, a = int(Row<unsigned char>(cAvg, y)[x])](int i, int j)
                                               { nSum += std::abs(a - int(Row<unsigned char>(cIn, j)[i])); });
                    ASSERT_EQ((nSum / nCount) & 255, Row<unsigned char>(cDev, y)[x]) << m << ' ' << x << ' ' << y;
                }
            }
        }
    }
}

TEST(IpFilterMidRotating, EachModeTakesTheMeanOfTheMostUniformMask)
{
    for (const auto& [nColumns, nRows] : aSizes)
    {
        for (const int nWidth : {5, 7, 9})
        {
            for (const int nLevels : {2, 4, 255})
            {
                const int m = nWidth - nWidth / 2;
                ClImage cIn, cOut, cExpected;
                FillLevels(cIn, nColumns, nRows, nLevels, 8);
                const ClField cField = FieldOf<unsigned char>(cIn);
                for (const int nMode : {0, 1, 2, 3})
                {
                    const ClMeansAndDeviations cMeasure = nMode == 0   ? DistanceMeasure(cField, m)
                                                          : nMode == 1 ? ByteMeasure(cField, m)
                                                          : nMode == 2 ? FixPointMeasure(cField, m)
                                                                       : FloatMeasure(cField, m);
                    ImageOf<unsigned char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, m / 2).Run(),
                                           nMode == 2 ? 256.0 : 1.0, cExpected);
                    ASSERT_EQ(FPC_SUCCESS,
                              ClIpFilterMidRotating().ApplyParam(
                                  cIn, cOut, nWidth, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
                    EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << ' ' << nLevels << ' ' << nMode;
                }
            }
        }
    }
}

TEST(IpFilterMidRotating, SignedBytesHaveTheTwoVarianceModes)
{
    ClImage cIn, cOut, cExpected;
    cIn.NewWithType(ClImage::eSInt8, 21, 17, 1, 0, 0);
    FillRandom(cIn, 9);
    const ClField cField = FieldOf<signed char>(cIn);
    for (const int nWidth : {5, 9})
    {
        const int m = nWidth - nWidth / 2;
        for (const int nMode : {2, 3})
        {
            ClMeansAndDeviations cMeasure = nMode == 2 ? FixPointMeasure(cField, m) : FloatMeasure(cField, m);
            if (nMode == 2) // compared as signed numbers
            {
                for (double& dDev : cMeasure.m_cDev.m_ad)
                {
                    dDev = static_cast<double>(static_cast<int>(static_cast<std::uint32_t>(dDev)));
                }
            }
            ImageOf<signed char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, m / 2).Run(),
                                 nMode == 2 ? 256.0 : 1.0, cExpected);
            ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                       cIn, cOut, nWidth, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nWidth << ' ' << nMode;
        }
        for (const int nMode : {0, 1})
        {
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE,
                      ClIpFilterMidRotating().ApplyParam(cIn, cOut, nWidth,
                                                         static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
        }
    }
}

TEST(IpFilterMidRotating, ASignedImageThatIsTooSmallIsPassedOver)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eSInt8, 8, 10, 1, 0, 0);
    ClIpFilterMidRotating cFilter;
    cFilter.m_pInImage = &cIn;
    cFilter.m_pOutImage = &cOut;
    cFilter.m_nFilterWidth = 9;
    EXPECT_EQ(FPC_SUCCESS, cFilter.ProcessSignedXY());
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpFilterMidRotating, FixedPointEndsBelowMasksOfSixteen)
{
    ClImage cIn, cOut, cExpected;
    FillRandom8(cIn, 33, 32, 10);
    const auto eMode = ClIpFilterMidRotating::ModeLocalMaskDeviationFixPoint;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 31, eMode));
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 29, eMode));
    const ClMeansAndDeviations cMeasure = FixPointMeasure(FieldOf<unsigned char>(cIn), 15);
    ImageOf<unsigned char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, 7).Run(), 256.0, cExpected);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    ClImage cSigned;
    cSigned.NewWithType(ClImage::eSInt8, 33, 32, 1, 0, 0);
    FillRandom(cSigned, 10);
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, ClIpFilterMidRotating().ApplyParam(cSigned, cOut, 31, eMode));
    EXPECT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cSigned, cOut, 29, eMode));
}

TEST(IpFilterMidRotating, LargeMasksDoNotOverflow)
{
    ClImage cIn, cOut, cExpected;
    FillLevels(cIn, 70, 68, 2, 10); // black and white: the largest deviations
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 65));
    const ClMeansAndDeviations cMeasure = ByteMeasure(FieldOf<unsigned char>(cIn), 33);
    ImageOf<unsigned char>(ClSearchByRules(cMeasure.m_cDev, cMeasure.m_cAvg, 16).Run(), 1.0, cExpected);
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpFilterMidRotating, DescribesTheOutputLikeTheInput)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 12, 11, 1, 3937, 3938);
    FillRandom(cIn, 3);
    cIn.m_nAttribute = 42;
    cIn.m_eContent = ClImage::eUnknown;
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9));
    EXPECT_TRUE(SameDescription(cIn, cOut));
    for (const auto eMode :
         {ClIpFilterMidRotating::ModeLocalMaskDeviationFixPoint, ClIpFilterMidRotating::ModeLocalMaskDeviationFloat})
    {
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9, eMode));
        EXPECT_TRUE(SameDescription(cIn, cOut)); // the attribute stands from the first run
    }
}

TEST(IpFilterMidRotating, LocalDeviationRefusesItsOwnImage)
{
    ClImage cImage;
    FillRandom8(cImage, 9, 9, 1);
    const std::string sMessage = std::string(ClException(FPC_ERROR_INVALID_PARAMETER, false, "", 0).What()) +
                                 "\nResize image with im self is senseless.";
    EXPECT_RAISES((ClIpFilterMidRotating().LocalDeviation<unsigned char, unsigned char, float, ClConvertFloat>(
                      cImage, 3, cImage)),
                  ClException, FPC_ERROR_INVALID_PARAMETER, sMessage.c_str());
}

TEST(IpFilterMidRotating, ColourPlanesAreFilteredOneByOne)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 13, 11, 3, 0, 0);
    FillRandom(cIn, 26);
    ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9));
    for (int i = 0; i < 3; ++i)
    {
        ClImage cPlane, cExpected, cActual;
        cIn.GetPlane(i, cPlane);
        cOut.GetPlane(i, cActual);
        ASSERT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(cPlane, cExpected, 9));
        EXPECT_TRUE(SamePixels(cExpected, cActual)) << i;
    }
}

TEST(IpFilterMidRotating, NeverReadsBehindTheLastRow)
{
    for (const int nMode : {0, 1, 2, 3})
    {
        const ClGuardedBytes cBlock(13 * 12);
        ClImage cIn, cOut;
        cIn.Attach(cBlock.Data(), ClImage::eUInt8, 12, 13, 1, 0, 0);
        FillRandom(cIn, 3);
        EXPECT_EQ(FPC_SUCCESS, ClIpFilterMidRotating().ApplyParam(
                                   cIn, cOut, 9, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode)));
    }
}

TEST(IpFilterMidRotating, EveryModeTellsThatMemoryIsExhausted)
{
    for (const int nMode : {0, 1, 2, 3})
    {
        ClImage cIn;
        FillRandom8(cIn, 12, 13, 1);
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&cIn, nMode]
            {
                ClImage cOut;
                ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9,
                                                   static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode));
            });
        EXPECT_LT(5, nFailed); // three images and the arrays of the search
    }
}
