// The methods that search the histogram by entropy or variance.

#include "RDImageProcessing/GreyPictures.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/SampleAccess.hpp"

namespace
{
using Auto = ClIpBinarizeAutoThreshold;
using Reals_t = std::vector<double>;

std::size_t At(int i)
{
    return static_cast<std::size_t>(i);
}

Reals_t Normalised(const ClImage& cImage)
{
    Reals_t p;
    for (const long nCount : HistogramOf(cImage))
    {
        p.push_back(static_cast<double>(nCount) * (1.0 / (cImage.m_nWidth * cImage.m_nHeight)));
    }
    return p;
}

/// p[0] + p[1] + ... + p[t], added in this order.
double UpTo(const Reals_t& p, int t)
{
    double dSum = 0;
    for (int i = 0; i <= t; ++i)
    {
        dSum += p[At(i)];
    }
    return dSum;
}

double Ln(double x)
{
    return x > 0 ? std::log(x) : 0;
}

double MinusXLnX(double x)
{
    return x > 0 ? -(x * std::log(x)) : 0;
}

int JohannsenByDefinition(const ClImage& cImage)
{
    const Reals_t p = Normalised(cImage);
    const auto used = [](double d) { return d != 0; };
    const auto nStart = static_cast<int>(std::find_if(p.begin(), p.end(), used) - p.begin()) + 1;
    const auto nEnd = 255 - static_cast<int>(std::find_if(p.rbegin(), p.rend(), used) - p.rbegin()) - 1;
    int nBest = -1;
    double dBest = 0;
    for (int t = nStart; t <= nEnd; ++t)
    {
        const double dHere = p[At(t)];
        const double P = UpTo(p, t);
        const double dBefore = UpTo(p, t - 1);
        const double Q = 1 - dBefore;
        const double dBehind = 1 - P;
        if (dHere > 0)
        {
            double F = Ln(P);
            F += (MinusXLnX(dHere) + MinusXLnX(dBefore)) / P;
            F += Ln(Q);
            F += (MinusXLnX(dHere) + MinusXLnX(dBehind)) / Q;
            if (nBest < 0 || F < dBest)
            {
                nBest = t;
                dBest = F;
            }
        }
    }
    return nBest;
}

/// The first index of the largest of the values.
int IndexOfLargest(const Reals_t& adValues)
{
    return static_cast<int>(std::max_element(adValues.begin(), adValues.end()) - adValues.begin());
}

int KapurByDefinition(const ClImage& cImage)
{
    const Reals_t p = Normalised(cImage);
    Reals_t H;
    for (int t = 0; t < 256; ++t)
    {
        const double P = UpTo(p, t);
        double dDark = 0;
        double dBright = 0;
        for (int i = 0; i < 256; ++i)
        {
            const double s = i <= t ? P : 1 - P;
            const double dTerm = p[At(i)] > 0 && s > 0 ? -(p[At(i)] / s) * std::log(p[At(i)] / s) : 0;
            (i <= t ? dDark : dBright) += dTerm;
        }
        H.push_back(dDark + dBright);
    }
    return IndexOfLargest(H);
}

int PunByDefinition(const ClImage& cImage)
{
    const Reals_t p = Normalised(cImage);
    Reals_t e;
    for (const double d : p)
    {
        e.push_back(MinusXLnX(d));
    }
    const double Ht = UpTo(e, 255);
    Reals_t f;
    for (int t = 0; t < 256; ++t)
    {
        const double m = *std::min_element(p.begin(), p.begin() + t + 1);
        const double n = t == 255 ? 0 : *std::max_element(p.begin() + t + 1, p.end());
        const double a = Ht > 0 ? UpTo(e, t) / Ht : 0;
        const double P = UpTo(p, t);
        f.push_back(m > 0 && n > 0 ? a * Ln(P) / Ln(m) + (1 - a) * Ln(1 - P) / Ln(n) : 0);
    }
    return IndexOfLargest(f);
}

int MinimumErrorByDefinition(const ClImage& cImage)
{
    const std::vector<long> h = HistogramOf(cImage);
    const auto measure = [&h](int nFrom, int nTo, double& dCount, double& dVariance)
    {
        long nCount = 0;
        long nSum = 0;
        for (int i = nFrom; i <= nTo; ++i)
        {
            nCount += h[At(i)];
            nSum += i * h[At(i)];
        }
        dCount = static_cast<double>(nCount);
        dVariance = 0;
        if (nCount != 0)
        {
            const double dMean = static_cast<double>(nSum) / dCount;
            for (int i = nFrom; i <= nTo; ++i)
            {
                dVariance += (i - dMean) * (i - dMean) * static_cast<double>(h[At(i)]);
            }
            dVariance /= dCount;
        }
    };
    Reals_t adNegative;
    for (int t = 1; t <= 255; ++t)
    {
        double P1, P2, s1, s2;
        measure(0, t, P1, s1);
        measure(t + 1, 255, P2, s2);
        adNegative.push_back(-(1 + 2 * (P1 * Ln(s1) + P2 * Ln(s2)) - 2 * (P1 * Ln(P1) + P2 * Ln(P2))));
    }
    return 1 + IndexOfLargest(adNegative);
}

int OtsuByDefinition(const ClImage& cImage)
{
    const Reals_t p = Normalised(cImage);
    int nFirst = 255;
    int nLast = 0;
    int nUsed = 0;
    for (int i = 0; i < 256; ++i)
    {
        if (p[At(i)] > 0)
        {
            nFirst = std::min(nFirst, i);
            nLast = i;
            ++nUsed;
        }
    }
    if (nUsed == 1)
    {
        return nLast == 0 ? 0 : nLast - 1;
    }
    if (nUsed == 2)
    {
        return (nFirst + nLast) / 2 + 1;
    }
    const auto moment = [&p, nFirst](int nTo, int nPower)
    {
        double dSum = 0;
        for (int i = nFirst; i <= nTo; ++i)
        {
            dSum += (nPower == 0 ? 1 : nPower == 1 ? i : i * i) * p[At(i)];
        }
        return dSum;
    };
    Reals_t adScores;
    for (int t = nFirst; t < nLast; ++t)
    {
        const double w0 = moment(t, 0);
        const double m0 = moment(t, 1);
        const double q0 = moment(t, 2);
        const double w1 = moment(nLast, 0) - w0;
        const double m1 = moment(nLast, 1) - m0;
        const double q1 = moment(nLast, 2) - q0;
        const double dVar0 = q0 / w0 - (m0 * m0) / (w0 * w0);
        const double dVar1 = q1 / w1 - (m1 * m1) / (w1 * w1);
        adScores.push_back(-(dVar0 * w0 + dVar1 * w1));
    }
    return nFirst + IndexOfLargest(adScores);
}

struct ClMethod
{
    const char* m_szName;
    Auto::eProcessingMode m_eMode;
    int (*m_pfnDefinition)(const ClImage&);
};

const ClMethod aMethods[] = {{"Johannsen", Auto::ModeJohannsen, JohannsenByDefinition},
                             {"Kapur", Auto::ModeKapur, KapurByDefinition},
                             {"Pun", Auto::ModePun, PunByDefinition},
                             {"minimum error", Auto::ModeMinimumError, MinimumErrorByDefinition},
                             {"Otsu", Auto::ModeOtsu, OtsuByDefinition}};

void ExpectThresholds(ClImage& cIn)
{
    for (const ClMethod& cMethod : aMethods)
    {
        ClImage cOut, cExpected;
        Auto cBinarize;
        const int nExpected = cMethod.m_pfnDefinition(cIn);
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, cMethod.m_eMode));
        EXPECT_EQ(nExpected, cBinarize.m_nThreshold) << cMethod.m_szName;
        BinarizeByDefinition(cIn, nExpected == -1 ? 255 : nExpected, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut)) << cMethod.m_szName;
    }
}

int ThresholdOf(const Counts_t& aCounts, Auto::eProcessingMode eMode)
{
    ClImage cIn, cOut;
    FillCounts(cIn, aCounts);
    Auto cBinarize;
    EXPECT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, eMode));
    return cBinarize.m_nThreshold;
}
} // namespace

TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfAnyHistogram)
{
    ClTestRandom cRandom(10);
    for (int i = 0; i < 60; ++i)
    {
        ClImage cIn;
        FillCounts(cIn, RandomCounts(cRandom, 1 + i * 4));
        ExpectThresholds(cIn);
    }
}

/// Two thresholds are as good as each other, but for the last bits of their criterion: those decide.
TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfMirroredHistograms)
{
    ClTestRandom cRandom(11);
    for (int i = 0; i < 100; ++i)
    {
        Counts_t aCounts;
        for (int n = 0; n < 2 + i % 30; ++n)
        {
            const int nGrey = cRandom.Below(128);
            const int nCount = 1 + cRandom.Below(9);
            aCounts.emplace_back(nGrey, nCount);
            aCounts.emplace_back(255 - nGrey, nCount);
        }
        ClImage cIn;
        FillCounts(cIn, aCounts);
        ExpectThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfManyDarkValuesAndFewBrightOnes)
{
    ClTestRandom cRandom(12);
    for (int i = 0; i < 30; ++i)
    {
        Counts_t aCounts;
        for (int nGrey = 0; nGrey < 3 + i % 8; ++nGrey)
        {
            aCounts.emplace_back(nGrey, 1 + cRandom.Below(20));
        }
        for (int n = 0; n < 3; ++n)
        {
            aCounts.emplace_back(20 + cRandom.Below(236), 1 + cRandom.Below(20));
        }
        ClImage cIn;
        FillCounts(cIn, aCounts);
        ExpectThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfAPictureWithAllGreyValues)
{
    for (unsigned int nSeed = 0; nSeed < 6; ++nSeed)
    {
        ClImage cIn;
        FillRandom8(cIn, 71, 60, nSeed); // Pun's method needs every value to occur
        ExpectThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfFewGreyValues)
{
    for (const Counts_t& aCounts :
         {Counts_t{{0, 5}}, Counts_t{{100, 49}}, Counts_t{{255, 3}}, Counts_t{{0, 2}, {1, 3}},
          Counts_t{{0, 2}, {255, 3}}, Counts_t{{10, 2}, {11, 9}, {12, 4}}, Counts_t{{0, 4}, {128, 4}, {255, 4}},
          Counts_t{{1, 18}, {60, 1}, {250, 11}}, Counts_t{{100, 16}, {130, 2}, {250, 7}}})
    {
        ClImage cIn;
        FillCounts(cIn, aCounts);
        ExpectThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThresholdSearch, JohannsenFindsNothingInOneOrTwoValues)
{
    EXPECT_EQ(-1, ThresholdOf({{77, 30}}, Auto::ModeJohannsen));
    EXPECT_EQ(-1, ThresholdOf({{77, 30}, {200, 4}}, Auto::ModeJohannsen)); // nothing stands between them
    EXPECT_EQ(78, ThresholdOf({{77, 30}, {78, 1}, {200, 4}}, Auto::ModeJohannsen));
}

TEST(IpBinarizeAutoThresholdSearch, JohannsenTakesTheFirstOfEqualMinima)
{
    EXPECT_EQ(60, ThresholdOf({{50, 1}, {60, 3}, {70, 3}, {80, 1}}, Auto::ModeJohannsen)); // 70 mirrors 60
}

TEST(IpBinarizeAutoThresholdSearch, NoThresholdBinarizesAt255)
{
    ClImage cIn, cOut, cExpected;
    FillCounts(cIn, {{254, 3}, {255, 4}});
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeJohannsen));
    FillCounts(cExpected, {{0, 3}, {255, 4}});
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpBinarizeAutoThresholdSearch, OtsuOfTwoValuesIsTheirMiddlePlusOne)
{
    EXPECT_EQ(16, ThresholdOf({{10, 7}, {20, 3}}, Auto::ModeOtsu));
    EXPECT_EQ(16, ThresholdOf({{10, 7}, {21, 3}}, Auto::ModeOtsu));
}

TEST(IpBinarizeAutoThresholdSearch, OtsuOfOneValueIsTheOneBelow)
{
    EXPECT_EQ(76, ThresholdOf({{77, 7}}, Auto::ModeOtsu));
    EXPECT_EQ(0, ThresholdOf({{0, 7}}, Auto::ModeOtsu));
}

TEST(IpBinarizeAutoThresholdSearch, OtsuSeparatesThreeValuesWhereTheGapIs)
{
    // The dark class of 10 and 20 has the variance 25 times 2/3 of the pixels, that of 20 and 200 far more.
    EXPECT_EQ(20, ThresholdOf({{10, 5}, {20, 5}, {200, 5}}, Auto::ModeOtsu));
}

TEST(IpBinarizeAutoThresholdSearch, ThresholdsOfEverySize)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        for (const int nStep : {1, 16, 85})
        {
            ClImage cIn;
            FillRandom8(cIn, cSize.nWidth, cSize.nHeight, static_cast<unsigned int>(nStep));
            const int nBytes = cIn.Stride() * cIn.m_nHeight;
            std::transform(cIn.Data(), cIn.Data() + nBytes, cIn.Data(),
                           [nStep](int n) { return static_cast<unsigned char>(n - n % nStep); });
            ExpectThresholds(cIn);
        }
    }
}

TEST(IpBinarizeAutoThresholdSearch, OneGreyValueHasNoThresholdOfJohannsen)
{
    ClImage cIn, cOut, cExpected;
    for (const int nGrey : {0, 77, 254, 255})
    {
        FillCounts(cIn, {{nGrey, 20}});
        Auto cBinarize;
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeJohannsen));
        EXPECT_EQ(-1, cBinarize.m_nThreshold);
        FillCounts(cExpected, {{nGrey == 255 ? 255 : 0, 20}}); // binarised at 255
        EXPECT_TRUE(SamePixels(cExpected, cOut)) << nGrey;
    }
}

TEST(IpBinarizeAutoThresholdSearch, OtsuOfNoPixelsIsNoThreshold)
{
    ClImage cNoPixels;
    cNoPixels.Attach(nullptr, ClImage::eUInt8, 9, 8, 1, 0, 0);
    EXPECT_EQ(-1, Auto().thr_otsu(&cNoPixels));
}
