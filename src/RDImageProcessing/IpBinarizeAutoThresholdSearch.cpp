// The methods that search the histogram for a threshold by entropy or variance.

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int nGreys = ClIpBinarizeAutoThreshold::nGreys;

double flog(double x)
{
    return x > 0.0 ? std::log(x) : 0.0;
}

/// -x ln x, the entropy of a part x.
double Entropy(double x)
{
    return x > 0.0 ? -x * std::log(x) : 0.0;
}

/// Entropy of a grey value of probability p in a class of probability s.
double entropyKap(double p, double s)
{
    return p > 0.0 && s > 0.0 ? Entropy(p / s) : 0.0;
}

/// Probabilities of the grey values, and of the values up to each.
struct StProbabilities
{
    explicit StProbabilities(const ClImage* pImage)
    {
        double adHistogram[nGreys];
        ClIpBinarizeAutoThreshold::histogram(pImage, adHistogram);
        const double dPerPixel = 1.0 / (static_cast<double>(pImage->m_nWidth) * pImage->m_nHeight);
        double dSum = 0.0;
        for (int i = 0; i < nGreys; ++i)
        {
            p[i] = adHistogram[i] * dPerPixel;
            P[i] = dSum += p[i];
        }
    }
    double Q(int t) const { return 1.0 - P[t - 1]; } ///< probability of t and above, t from 1

    double p[nGreys];
    double P[nGreys];
};

/// First and last grey value that occurs; 256 and -1 if there is none.
struct StExtent
{
    explicit StExtent(const double* pdHistogram)
    {
        while (m_nFirst < nGreys && pdHistogram[m_nFirst] == 0.0)
        {
            ++m_nFirst;
        }
        while (m_nLast >= m_nFirst && pdHistogram[m_nLast] == 0.0)
        {
            --m_nLast;
        }
        m_nLast = m_nFirst < nGreys ? m_nLast : -1;
    }

    int m_nFirst = 0;
    int m_nLast = nGreys - 1;
};

/// The first t from nFrom to nTo with the largest value(t); nFrom if no later one is larger.
template <class Value> int FirstLargest(int nFrom, int nTo, Value&& value)
{
    int nBest = nFrom;
    double dBest = value(nFrom);
    for (int t = nFrom + 1; t <= nTo; ++t)
    {
        const double dValue = value(t);
        if (dValue > dBest)
        {
            dBest = dValue;
            nBest = t;
        }
    }
    return nBest;
}

/// Size, mean and variance of the grey values from nFrom to nTo; 0 for an empty class.
struct StClass
{
    StClass(const double* pdHistogram, int nFrom, int nTo)
    {
        double dSum = 0.0;
        for (int i = nFrom; i <= nTo; ++i)
        {
            m_dCount += pdHistogram[i];
            dSum += i * pdHistogram[i];
        }
        if (m_dCount == 0.0)
        {
            return;
        }
        const double dMean = dSum / m_dCount;
        double dSquares = 0.0;
        for (int i = nFrom; i <= nTo; ++i)
        {
            dSquares += (i - dMean) * (i - dMean) * pdHistogram[i];
        }
        m_dVariance = dSquares / m_dCount;
    }

    double m_dCount = 0.0;
    double m_dVariance = 0.0;
};

/// How badly two normal distributions, divided at t, describe the histogram.
double J(const double* pdHistogram, int t)
{
    const StClass cDark(pdHistogram, 0, t);
    const StClass cBright(pdHistogram, t + 1, nGreys - 1);
    const double P1 = cDark.m_dCount;
    const double P2 = cBright.m_dCount;
    return 1.0 + 2.0 * (P1 * flog(cDark.m_dVariance) + P2 * flog(cBright.m_dVariance)) -
           2.0 * (P1 * flog(P1) + P2 * flog(P2));
}
} // namespace

int ClIpBinarizeAutoThreshold::thr_joh(const ClImage* pImage)
{
    const StProbabilities c(pImage);
    const StExtent cExtent(c.p);
    int nBest = -1;
    double dBest = 0.0;
    for (int t = cExtent.m_nFirst + 1; t <= cExtent.m_nLast - 1; ++t)
    {
        if (!(c.p[t] > 0.0))
        {
            continue;
        }
        const double F = flog(c.P[t]) + (Entropy(c.p[t]) + Entropy(c.P[t - 1])) / c.P[t] + flog(c.Q(t)) +
                         (Entropy(c.p[t]) + Entropy(c.Q(t + 1))) / c.Q(t);
        if (nBest == -1 || F < dBest)
        {
            dBest = F;
            nBest = t;
        }
    }
    return nBest;
}

int ClIpBinarizeAutoThreshold::thr_kapur(const ClImage* pImage)
{
    const StProbabilities c(pImage);
    return FirstLargest(0, nGreys - 1,
                        [&c](int t)
                        {
                            double dDark = 0.0;
                            for (int i = 0; i <= t; ++i)
                            {
                                dDark += entropyKap(c.p[i], c.P[t]);
                            }
                            double dBright = 0.0;
                            for (int i = t + 1; i < nGreys; ++i)
                            {
                                dBright += entropyKap(c.p[i], 1.0 - c.P[t]);
                            }
                            return dDark + dBright;
                        });
}

int ClIpBinarizeAutoThreshold::thr_pun(const ClImage* pImage)
{
    const StProbabilities c(pImage);
    double adEntropy[nGreys];
    double dTotal = 0.0;
    for (int i = 0; i < nGreys; ++i)
    {
        adEntropy[i] = dTotal += Entropy(c.p[i]);
    }
    return FirstLargest(0, nGreys - 1,
                        [&](int t)
                        {
                            if (t == nGreys - 1)
                            {
                                return 0.0; // nothing is brighter
                            }
                            // The smallest probability of the dark class, not its largest: this is what the measure
                            // is meant to use.
                            const double m = *std::min_element(c.p, c.p + t + 1);
                            const double n = *std::max_element(c.p + t + 1, c.p + nGreys);
                            if (!(m > 0.0) || !(n > 0.0))
                            {
                                return 0.0;
                            }
                            const double a = adEntropy[t] / dTotal;
                            return a * flog(c.P[t]) / flog(m) + (1.0 - a) * flog(1.0 - c.P[t]) / flog(n);
                        });
}

int ClIpBinarizeAutoThreshold::thr_me(const ClImage* pImage)
{
    double adHistogram[nGreys];
    histogram(pImage, adHistogram);
    return FirstLargest(1, nGreys - 1, [&adHistogram](int t) { return -J(adHistogram, t); });
}

int ClIpBinarizeAutoThreshold::thr_otsu(const ClImage* pImage)
{
    double adHistogram[nGreys];
    histogram(pImage, adHistogram);
    double dTotal = 0.0;
    for (const double dCount : adHistogram)
    {
        dTotal += dCount;
    }
    const double dPerPixel = 1.0 / std::max(dTotal, 1.0);
    const StExtent cExtent(adHistogram);
    const int nFirst = cExtent.m_nFirst;
    const int nLast = cExtent.m_nLast;
    if (nFirst > nLast)
    {
        return -1;
    }
    if (nFirst == nLast)
    {
        return std::max(nLast - 1, 0);
    }
    double p[nGreys];
    double S0 = 0.0;
    double S1 = 0.0;
    double S2 = 0.0;
    int nUsed = 0;
    for (int i = nFirst; i <= nLast; ++i)
    {
        p[i] = adHistogram[i] * dPerPixel;
        S0 += p[i];
        S1 += i * p[i];
        S2 += i * i * p[i];
        nUsed += p[i] != 0.0 ? 1 : 0;
    }
    if (nUsed == 2)
    {
        return (nFirst + nLast) / 2 + 1;
    }
    double w0 = 0.0;
    double m0 = 0.0;
    double q0 = 0.0;
    return FirstLargest(nFirst, nLast - 1,
                        [&](int t)
                        {
                            w0 += p[t];
                            m0 += t * p[t];
                            q0 += t * t * p[t];
                            const double w1 = S0 - w0;
                            const double m1 = S1 - m0;
                            const double q1 = S2 - q0;
                            const double dVar0 = q0 / w0 - m0 * m0 / (w0 * w0);
                            const double dVar1 = q1 / w1 - m1 * m1 / (w1 * w1);
                            return -(dVar0 * w0 + dVar1 * w1);
                        });
}
