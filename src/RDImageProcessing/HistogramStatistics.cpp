#include "RDImageProcessing/Histogram.hpp"

#include "RDTools/Exception.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>

namespace
{
constexpr char szModule[] = "RDImageProcessing/Histogram";

/// szOperation: the name of the member function that was called with two positions.
void CheckOrder(const char* szOperation, int nPos1, int nPos2)
{
    if (nPos2 < nPos1)
    {
        char szComment[128];
        std::snprintf(szComment, sizeof(szComment),
                      "ClHistogram::%s(BYTE nPos1, BYTE nPos2): nPos2 >= nPos1 must given.", szOperation);
        throw ClException(szComment, FPC_ERROR_INTERNAL, false, szModule, __LINE__);
    }
}
} // namespace

/// Of some bins: how many pixels, and the sum of their grey values. 256 counts of 32 bits need 40 bits, times 255 it
/// is 48: doubles hold both exactly, too.
struct ClHistogram::StSums
{
    std::int64_t m_nPixels = 0;
    std::int64_t m_nGreys = 0;

    double MeanOr(double dNone) const
    {
        return m_nPixels == 0 ? dNone : static_cast<double>(m_nGreys) / static_cast<double>(m_nPixels);
    }
};

/// Both bins included; no bin at all if nLast is below nFirst.
ClHistogram::StSums ClHistogram::SumsOf(int nFirst, int nLast) const
{
    StSums cSums;
    for (int n = nFirst; n <= nLast; ++n)
    {
        cSums.m_nPixels += m_anBins[n];
        cSums.m_nGreys += std::int64_t(n) * m_anBins[n];
    }
    return cSums;
}

double ClHistogram::GetAverage(double dLow, double dHigh) const
{
    unsigned char nLow, nHigh;
    GetNoiseFreeRange(dLow, dHigh, nLow, nHigh);
    return SumsOf(nLow, nHigh).MeanOr(0.0);
}

double ClHistogram::GetGreyMid() const
{
    return (FirstValue() + LastValue()) / 2.0;
}

int ClHistogram::GetColorCount() const
{
    return nBins - static_cast<int>(std::count(m_anBins, m_anBins + nBins, 0u));
}

double ClHistogram::GetUniformity() const
{
    const std::int64_t nTotal = SumsOf(0, nBins - 1).m_nPixels;
    if (nTotal == 0)
    {
        return 0.0;
    }
    double dSum = 0.0; // the squares of the counts alone could exceed 64 bits
    for (const unsigned int nCount : m_anBins)
    {
        const double dShare = nCount / static_cast<double>(nTotal);
        dSum += dShare * dShare;
    }
    return dSum;
}

double ClHistogram::GetAverageDeviation() const
{
    const StSums cSums = SumsOf(0, nBins - 1);
    if (cSums.m_nPixels == 0)
    {
        return 0.0;
    }
    const double dMean = cSums.MeanOr(0.0);
    double dSum = 0.0;
    for (int n = 0; n < nBins; ++n)
    {
        dSum += std::fabs(n - dMean) * m_anBins[n];
    }
    return dSum / static_cast<double>(cSums.m_nPixels);
}

double ClHistogram::GetStdDeviation() const
{
    const StSums cSums = SumsOf(0, nBins - 1);
    if (cSums.m_nPixels == 0)
    {
        return 0.0;
    }
    const double dMean = cSums.MeanOr(0.0);
    double dSum = 0.0;
    for (int n = 0; n < nBins; ++n)
    {
        dSum += (n - dMean) * (n - dMean) * m_anBins[n];
    }
    return std::sqrt(dSum / static_cast<double>(cSums.m_nPixels));
}

double ClHistogram::GetCentreOfMass(unsigned char nPos1, unsigned char nPos2) const
{
    CheckOrder("GetCentreOfMass", nPos1, nPos2);
    return SumsOf(nPos1, nPos2).MeanOr((nPos1 + nPos2) / 2.0);
}

unsigned char ClHistogram::GetMid(unsigned char nPos1, unsigned char nPos2) const
{
    CheckOrder("GetMid", nPos1, nPos2);
    const std::int64_t nTotal = SumsOf(nPos1, nPos2).m_nPixels;
    if (nTotal == 0)
    {
        return static_cast<unsigned char>((nPos1 + nPos2) / 2);
    }
    int n = nPos1;
    for (std::int64_t nSum = m_anBins[n]; 2 * nSum < nTotal; nSum += m_anBins[n])
    {
        ++n;
    }
    return static_cast<unsigned char>(n);
}

unsigned char ClHistogram::GetLocalMin(unsigned char nPos1, unsigned char nPos2) const
{
    CheckOrder("GetLocalMin", nPos1, nPos2);
    return static_cast<unsigned char>(std::min_element(m_anBins + nPos1, m_anBins + nPos2 + 1) - m_anBins);
}

unsigned char ClHistogram::GetLocalMax(unsigned char nPos1, unsigned char nPos2) const
{
    CheckOrder("GetLocalMax", nPos1, nPos2);
    return static_cast<unsigned char>(std::max_element(m_anBins + nPos1, m_anBins + nPos2 + 1) - m_anBins);
}

/// The nearest bin in the direction of nStep whose count differs; nBin itself if there is none.
int ClHistogram::NextOtherCount(int nBin, int nStep) const
{
    int n = nBin;
    while (n >= 0 && n < nBins && m_anBins[n] == m_anBins[nBin])
    {
        n += nStep;
    }
    return n >= 0 && n < nBins ? n : nBin;
}

/// The count gets better with every step, so that no bin is met twice.
template <class Better> unsigned char ClHistogram::Walk(int nBin, Better better) const
{
    for (;;)
    {
        int nBest = nBin;
        for (const int nStep : {-1, 1})
        {
            const int nNext = NextOtherCount(nBin, nStep);
            if (better(m_anBins[nNext], m_anBins[nBest]))
            {
                nBest = nNext;
            }
        }
        if (nBest == nBin)
        {
            return static_cast<unsigned char>(nBin);
        }
        nBin = nBest;
    }
}

unsigned char ClHistogram::Climb(unsigned char nStart) const
{
    return Walk(nStart, std::greater<>());
}

unsigned char ClHistogram::Descend(unsigned char nStart) const
{
    return Walk(nStart, std::less<>());
}

bool ClHistogram::IsUnimodal() const
{
    const unsigned int* const pEnd = m_anBins + nBins;
    const unsigned int* const pPeak = std::is_sorted_until(m_anBins, pEnd) - 1;
    return MaxCount() != 0 && std::is_sorted(pPeak, pEnd, std::greater<>());
}

void ClHistogram::LowPass(int nWidth)
{
    const int nReach = std::clamp(nWidth / 2, 0, nBins - 1);
    std::int64_t anSums[nBins + 1] = {}; // anSums[n]: of the bins below n
    for (int n = 0; n < nBins; ++n)
    {
        anSums[n + 1] = anSums[n] + m_anBins[n];
    }
    for (int n = 0; n < nBins; ++n)
    {
        const int nFirst = std::max(n - nReach, 0);
        const int nEnd = std::min(n + nReach + 1, nBins);
        const std::int64_t nSum = anSums[nEnd] - anSums[nFirst];
        m_anBins[n] = static_cast<unsigned int>((nSum + (nEnd - nFirst) / 2) / (nEnd - nFirst));
    }
}

void ClHistogram::LowPass()
{
    LowPass(3);
}

void ClHistogram::CalcFirstDerivation(int nDistance, double* pdDerivation) const
{
    if (pdDerivation == nullptr)
    {
        throw ClException("ClHistogram::CalcFirstDerivation: no array for the derivation given.", FPC_ERROR_INTERNAL,
                          false, szModule, __LINE__);
    }
    nDistance = std::clamp(nDistance, 1, nBins - 1);
    for (int n = 0; n < nBins; ++n)
    {
        const int nBefore = std::max(n - nDistance, 0);
        const int nBehind = std::min(n + nDistance, nBins - 1);
        const std::int64_t nRise = std::int64_t(m_anBins[nBehind]) - m_anBins[nBefore];
        pdDerivation[n] = static_cast<double>(nRise) / (nBehind - nBefore);
    }
}

/// The mean of the first nPixels that are met from nBin in the direction of nStep.
double ClHistogram::AverageFrom(int nBin, int nStep, unsigned int nPixels) const
{
    if (nPixels > SumsOf(0, nBins - 1).m_nPixels)
    {
        throw ClException("Amount of pixels too high.", FPC_ERROR_INTERNAL, false, szModule, __LINE__);
    }
    std::int64_t nGreys = 0;
    for (unsigned int nLeft = nPixels; nLeft != 0; nBin += nStep)
    {
        const unsigned int nTaken = std::min(nLeft, m_anBins[nBin]);
        nGreys += std::int64_t(nBin) * nTaken;
        nLeft -= nTaken;
    }
    return nPixels == 0 ? 0.0 : static_cast<double>(nGreys) / nPixels;
}

double ClHistogram::GetDarkestAvrg(unsigned int nPixels) const
{
    return AverageFrom(0, 1, nPixels);
}

double ClHistogram::GetBrightestAvrg(unsigned int nPixels) const
{
    return AverageFrom(nBins - 1, -1, nPixels);
}

unsigned char ClHistogram::TwoMeansClustering() const
{
    double dDark, dBright;
    return TwoMeansClustering(dDark, dBright);
}

unsigned char ClHistogram::TwoMeansClustering(double& dDark, double& dBright) const
{
    return TwoMeansClustering(0, nBins - 1, dDark, dBright);
}

unsigned char ClHistogram::TwoMeansClustering(unsigned char nPos1, unsigned char nPos2, double& dDark,
                                              double& dBright) const
{
    CheckOrder("TwoMeansClustering", nPos1, nPos2);
    int nFirst = nPos1;
    int nLast = nPos2;
    while (nFirst < nLast && m_anBins[nFirst] == 0)
    {
        ++nFirst;
    }
    while (nLast > nFirst && m_anBins[nLast] == 0)
    {
        --nLast;
    }
    if (m_anBins[nFirst] == 0) // not a pixel
    {
        nFirst = nLast = (nPos1 + nPos2) / 2;
    }
    dDark = nFirst;
    dBright = nLast;
    // Of two values or more no cluster ever gets empty: the middle of the means lies above the first and not above the
    // last. A higher threshold raises both means, so that the threshold moves in one direction only and stands after
    // 255 steps at the latest.
    int nThreshold = nFirst;
    for (int nSteps = 0; nFirst < nLast && nSteps < nBins; ++nSteps)
    {
        const int nNext = static_cast<int>(std::ceil((dDark + dBright) / 2.0));
        if (nNext == nThreshold)
        {
            break;
        }
        nThreshold = nNext;
        dDark = SumsOf(nFirst, nThreshold - 1).MeanOr(nFirst);
        dBright = SumsOf(nThreshold, nLast).MeanOr(nLast);
    }
    return static_cast<unsigned char>(nThreshold);
}
