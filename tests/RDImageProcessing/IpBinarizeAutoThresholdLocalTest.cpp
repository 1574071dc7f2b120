// The methods that decide pixel by pixel.

#include "FailingHeap.hpp"
#include "RDImageProcessing/GreyPictures.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/SampleAccess.hpp"

#include <limits>

namespace
{
using Auto = ClIpBinarizeAutoThreshold;

/// Pixel n of the walk that runs to and fro over the rows.
unsigned char* OnTheWalk(ClImage& cImage, int n)
{
    const int y = n / cImage.m_nWidth;
    const int i = n % cImage.m_nWidth;
    return Row<unsigned char>(cImage, y) + (y % 2 == 0 ? i : cImage.m_nWidth - 1 - i);
}

void MovingAveragesByDefinition(const ClImage& cIn, ClImage& cOut)
{
    cOut = cIn;
    const int N = cIn.m_nWidth / 8;
    const double k = 1.0 / N;
    double dSum = N * 127.0;
    double dMean = k * dSum;
    for (int n = 0; n < cIn.m_nWidth * cIn.m_nHeight - 1; ++n)
    {
        const int g = *OnTheWalk(cOut, n);
        dSum = dSum - dMean + g;
        dMean = k * dSum;
        *OnTheWalk(cOut, n) = g >= dMean * 0.85 ? 255 : 0;
    }
}

/// The relaxation, with all its functions spelled out.
class ClRelaxationByDefinition
{
public:
    explicit ClRelaxationByDefinition(const ClImage& cIn) : W(cIn.m_nWidth), H(cIn.m_nHeight)
    {
        g = p = q = pp = qq = Matrix_t(At(H), std::vector<double>(At(W)));
        for (int i = 0; i < H; ++i)
        {
            for (int j = 0; j < W; ++j)
            {
                g[At(i)][At(j)] = Row<unsigned char>(cIn, i)[j];
            }
        }
    }

    void Run(ClImage& cOut)
    {
        AssignClass();
        Thresh();
        double dBest = 10000;
        int nCounter = 0;
        for (m_nPasses = 1; m_nPasses <= 100; ++m_nPasses)
        {
            const double dChange = Update();
            if (dBest > dChange)
            {
                nCounter = 1;
                dBest = dChange;
            }
            else if (std::fabs(dChange - dBest) < 0.0001)
            {
                if (nCounter > 2)
                {
                    break;
                }
                nCounter++;
            }
            Thresh();
            if (!(dChange > 1.0))
            {
                break;
            }
        }
        Thresh();
        for (int i = 0; i < H; ++i)
        {
            for (int j = 0; j < W; ++j)
            {
                Row<unsigned char>(cOut, i)[j] = static_cast<unsigned char>(g[At(i)][At(j)]);
            }
        }
    }

    int m_nPasses = 0;

private:
    using Matrix_t = std::vector<std::vector<double>>;
    static std::size_t At(int i) { return static_cast<std::size_t>(i); }

    void AssignClass()
    {
        for (int i = 0; i < H; ++i)
        {
            for (int j = 0; j < W; ++j)
            {
                double dSum = 0;
                double dMin = g[0][0];
                double dMax = g[0][0];
                int nCount = 0;
                for (int k = std::max(i - 10, 0); k <= std::min(i + 10, H - 1); ++k)
                {
                    for (int l = std::max(j - 10, 0); l <= std::min(j + 10, W - 1); ++l)
                    {
                        dSum += g[At(k)][At(l)];
                        dMin = std::min(dMin, g[At(k)][At(l)]);
                        dMax = std::max(dMax, g[At(k)][At(l)]);
                        ++nCount;
                    }
                }
                const double dMean = dSum / nCount;
                const double dGrey = g[At(i)][At(j)];
                if (dMean == dGrey && dMean == dMin)
                {
                    p[At(i)][At(j)] = q[At(i)][At(j)] = std::numeric_limits<double>::quiet_NaN();
                }
                else if (dMean >= dGrey)
                {
                    p[At(i)][At(j)] = (dMean - dGrey) / (2 * (dMean - dMin)) + 0.5;
                    q[At(i)][At(j)] = 1 - p[At(i)][At(j)];
                }
                else
                {
                    q[At(i)][At(j)] = (dGrey - dMean) / (2 * (dMax - dMean)) + 0.5;
                    p[At(i)][At(j)] = 1 - q[At(i)][At(j)];
                }
            }
        }
    }

    void Thresh()
    {
        for (int i = 0; i < H; ++i)
        {
            for (int j = 0; j < W; ++j)
            {
                g[At(i)][At(j)] = p[At(i)][At(j)] > q[At(i)][At(j)] ? 0 : 255;
            }
        }
    }

    double R(int i, int j, int k, int l, int c, int d)
    {
        const double v = 1 - (g[At(i)][At(j)] - g[At(k)][At(l)]) * 0.00390625;
        return c == d ? v * 0.9 : (v - 1) * 0.9;
    }

    double Q(int i, int j, int c)
    {
        double dSum = 0;
        for (int k = i - 1; k <= i + 1; ++k)
        {
            for (int l = j - 1; l <= j + 1; ++l)
            {
                if (k != i || l != j)
                {
                    dSum += R(i, j, k, l, c, 0) * p[At(k)][At(l)] + R(i, j, k, l, c, 1) * q[At(k)][At(l)];
                }
            }
        }
        return 0.125 * dSum;
    }

    double Update()
    {
        for (int i = 1; i <= H - 2; ++i)
        {
            for (int j = 1; j <= W - 2; ++j)
            {
                const double vp = (Q(i, j, 0) + 1) * p[At(i)][At(j)];
                const double vq = (Q(i, j, 1) + 1) * q[At(i)][At(j)];
                const double s = vp + vq;
                pp[At(i)][At(j)] = s == 0 ? 0 : vp / s;
                qq[At(i)][At(j)] = s == 0 ? 0 : vq / s;
            }
        }
        double dChange = 0;
        for (int i = 1; i <= H - 2; ++i)
        {
            for (int j = 1; j <= W - 2; ++j)
            {
                dChange +=
                    std::fabs(p[At(i)][At(j)] - pp[At(i)][At(j)]) + std::fabs(q[At(i)][At(j)] - qq[At(i)][At(j)]);
                p[At(i)][At(j)] = pp[At(i)][At(j)];
                q[At(i)][At(j)] = qq[At(i)][At(j)];
            }
        }
        return dChange;
    }

    const int W;
    const int H;
    Matrix_t g, p, q, pp, qq;
};

/// Noise around a dark disc on a bright ground.
void FillDisc(ClImage& cImage, int nWidth, int nHeight, int nNoise, unsigned int nSeed)
{
    ClTestRandom cRandom(nSeed);
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const int dx = x - nWidth / 2;
            const int dy = y - nHeight / 2;
            const int nGrey = (dx * dx + dy * dy < nWidth * nHeight / 10 ? 80 : 150) + cRandom.Below(nNoise);
            Row<unsigned char>(cImage, y)[x] = static_cast<unsigned char>(nGrey);
        }
    }
}
} // namespace

TEST(IpBinarizeAutoThresholdLocal, MovingAveragesFollowTheSerpentineWalk)
{
    for (const auto& [nWidth, nHeight] : {std::pair(8, 1), std::pair(9, 2), std::pair(31, 6), std::pair(67, 53)})
    {
        ClImage cIn, cOut, cExpected;
        FillRandom8(cIn, nWidth, nHeight, 11);
        MovingAveragesByDefinition(cIn, cExpected);
        Auto cBinarize;
        cBinarize.m_nThreshold = 5;
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        EXPECT_EQ(-1, cBinarize.m_nThreshold);
    }
}

TEST(IpBinarizeAutoThresholdLocal, MovingAveragesOfAFlatRowByHand)
{
    // Width 8: N and k are 1, so the mean is the pixel itself and each is at least 85 per cent of it.
    ClImage cIn, cOut, cExpected;
    FillCounts(cIn, {{0, 4}, {9, 4}});
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
    FillCounts(cExpected, {{255, 7}, {9, 1}});
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpBinarizeAutoThresholdLocal, MovingAveragesLeaveTheLastPixelOfTheWalk)
{
    ClImage cIn, cOut;
    FillCounts(cIn, {{100, 16}});
    cIn.NewWithType(ClImage::eUInt8, 8, 2, 1, 0, 0); // the same block as two rows
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(i == 8 ? 100 : 255, cOut.Data()[i]) << i; // column 0 of the second row
    }
    cIn.NewWithType(ClImage::eUInt8, 8, 3, 1, 0, 0);
    FillRandom(cIn, 3);
    Row<unsigned char>(cIn, 2)[7] = 42;
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
    EXPECT_EQ(42, Row<unsigned char>(cOut, 2)[7]);
}

TEST(IpBinarizeAutoThresholdLocal, MovingAveragesOfOnePixelDoNothing)
{
    ClImage cIn, cOut;
    FillCounts(cIn, {{100, 1}});
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpBinarizeAutoThresholdLocal, MovingAveragesOfANarrowImageAreBlackWithoutAMean)
{
    ClImage cIn, cOut;
    FillCounts(cIn, {{200, 7}});
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
    for (int i = 0; i < 7; ++i)
    {
        EXPECT_EQ(i == 6 ? 200 : 0, cOut.Data()[i]);
    }
}

TEST(IpBinarizeAutoThresholdLocal, RelaxationLetsNeighboursDecide)
{
    int nMostPasses = 0;
    for (const auto& [nWidth, nHeight] : {std::pair(31, 26), std::pair(45, 40), std::pair(24, 7), std::pair(12, 50)})
    {
        for (const int nNoise : {1, 30, 100})
        {
            ClImage cIn, cOut, cExpected;
            FillDisc(cIn, nWidth, nHeight, nNoise, 12);
            cExpected.New(cIn);
            ClRelaxationByDefinition cRelaxation(cIn);
            cRelaxation.Run(cExpected);
            nMostPasses = std::max(nMostPasses, cRelaxation.m_nPasses);
            Auto cBinarize;
            cBinarize.m_nThreshold = 5;
            ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeRelaxation));
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nNoise;
            EXPECT_EQ(-1, cBinarize.m_nThreshold);
        }
    }
    EXPECT_LT(2, nMostPasses); // or the loop was not tested
}

TEST(IpBinarizeAutoThresholdLocal, RelaxationOfTinyImages)
{
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1), std::pair(2, 5), std::pair(5, 2), std::pair(3, 3)})
    {
        ClImage cIn, cOut, cExpected;
        FillRandom8(cIn, nWidth, nHeight, 13);
        cExpected.New(cIn);
        ClRelaxationByDefinition(cIn).Run(cExpected);
        ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeRelaxation));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpBinarizeAutoThresholdLocal, RelaxationTouchesNothingOutsideOfThePixels)
{
    for (const EGuard eGuard : {EGuard::eBehind, EGuard::eBefore})
    {
        ClImage cIn, cExpected;
        FillRandom8(cIn, 32, 9, 14);
        cExpected.New(cIn);
        ClRelaxationByDefinition(cIn).Run(cExpected);
        const ClGuardedBytes cPixels(cIn.Data(), 32 * 9, eGuard);
        ClImage cGuarded;
        cGuarded.Attach(cPixels.Data(), cIn);
        Auto().thr_relax(&cGuarded);
        EXPECT_TRUE(SamePixels(cExpected, cGuarded));
    }
}

TEST(IpBinarizeAutoThresholdLocal, RelaxationOfAFlatImageIsWhite)
{
    ClImage cIn, cOut, cExpected;
    FillCounts(cIn, {{9, 12}});
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeRelaxation));
    FillCounts(cExpected, {{255, 12}});
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpBinarizeAutoThresholdLocal, RelaxationStartsItsExtremesAtTheFirstPixel)
{
    ClImage acOut[2];
    for (const bool bBright : {false, true})
    {
        ClImage cIn, cExpected;
        FillDisc(cIn, 40, 34, 40, 12);
        cIn.Data()[0] = bBright ? 255 : 0;
        cExpected.New(cIn);
        ClRelaxationByDefinition(cIn).Run(cExpected);
        ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, acOut[bBright], Auto::ModeRelaxation));
        EXPECT_TRUE(SamePixels(cExpected, acOut[bBright]));
    }
    // One pixel in the corner tells on pixels far beyond the 21 by 21 around it.
    int nFarDifferences = 0;
    for (int y = 22; y < 34; ++y)
    {
        for (int x = 22; x < 40; ++x)
        {
            nFarDifferences += Row<unsigned char>(acOut[0], y)[x] != Row<unsigned char>(acOut[1], y)[x] ? 1 : 0;
        }
    }
    EXPECT_LT(0, nFarDifferences);
}

TEST(IpBinarizeAutoThresholdLocal, EveryModeTellsThatMemoryIsExhausted)
{
    for (int nMode = 0; nMode <= 8; ++nMode)
    {
        ClImage cIn;
        FillDisc(cIn, 20, 20, 30, 14);
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&]
            {
                ClImage cOut;
                Auto().ApplyParam(cIn, cOut, static_cast<Auto::eProcessingMode>(nMode));
            });
        EXPECT_LT(0, nFailed) << nMode;
    }
}

TEST(IpBinarizeAutoThresholdLocal, EverySizeFollowsTheDefinitions)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        ClImage cIn, cOut, cExpected;
        FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 17);
        SCOPED_TRACE(cSize.nWidth);
        MovingAveragesByDefinition(cIn, cExpected); // narrow images: without a mean all is black
        ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeMovingAverages));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        ClRelaxationByDefinition(cIn).Run(cExpected);
        ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeRelaxation));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpBinarizeAutoThresholdLocal, TheMethodsThemselvesLeaveImagesWithoutPixels)
{
    unsigned char anUntouched[4] = {1, 2, 3, 4};
    ClImage cEmpty, cNull, cNoPlane;
    cNull.Attach(nullptr, ClImage::eUInt8, 9, 8, 1, 0, 0);
    cNoPlane.Attach(anUntouched, ClImage::eUInt8, 9, 8, 0, 0, 0);
    for (ClImage* pImage : {&cEmpty, &cNull, &cNoPlane})
    {
        Auto().thrdd(pImage);
        Auto().thr_relax(pImage);
    }
    EXPECT_EQ(1, anUntouched[0]);
    EXPECT_EQ(4, anUntouched[3]);
}
