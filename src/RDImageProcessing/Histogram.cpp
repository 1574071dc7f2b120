#include "RDImageProcessing/Histogram.hpp"

#include "RDImageProcessing/FillTools.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace
{
constexpr int nSignedOffset = 128;
constexpr int nCounters = 8; // for each value

/// Neighbouring bytes go to counters of their own. With one counter for a value, where a picture is flat each addition
/// would wait for the one before.
void CountBytes(const unsigned char* p, int nBytes, unsigned int (&anCount)[ClHistogram::nBins][nCounters])
{
    int x = 0;
    for (; x + nCounters <= nBytes; x += nCounters)
    {
        for (int i = 0; i < nCounters; ++i)
        {
            ++anCount[p[x + i]][i];
        }
    }
    for (; x < nBytes; ++x)
    {
        ++anCount[p[x]][0];
    }
}
} // namespace

ClHistogram::ClHistogram() : m_nOffset(0)
{
    Reset();
}

ClHistogram::~ClHistogram() = default;

void ClHistogram::Reset()
{
    std::fill_n(m_anBins, nBins, 0u);
}

void ClHistogram::Create(const ClImage& cImage)
{
    Create(cImage, 0, 0, cImage.m_nWidth, cImage.m_nHeight);
}

void ClHistogram::Create(const ClImage& cImage, int nLeft, int nTop, int nRight, int nBottom)
{
    Reset();
    if (cImage.m_nPlanes != 1)
    {
        throw ClException("Color-image not supported in ClHistogram::Create.", FPC_ERROR_INTERNAL, false, "Unknown",
                          -1);
    }
    if (nLeft >= nRight || nTop >= nBottom)
    {
        throw ClException("invalid Range in ClHistogram::Create.", FPC_ERROR_INTERNAL, false, "Unknown", -1);
    }
    nLeft = std::max(nLeft, 0);
    nTop = std::max(nTop, 0);
    nRight = std::min(nRight, cImage.m_nWidth);
    nBottom = std::min(nBottom, cImage.m_nHeight);
    m_nOffset = ClImage::IsSignedType(cImage.m_eDataType) ? nSignedOffset : 0;
    if (!HasBytePerColumn(cImage))
    {
        return;
    }
    unsigned int anCount[nBins][nCounters] = {};
    for (int y = nTop; y < nBottom; ++y)
    {
        CountBytes(Row<unsigned char>(cImage, y) + nLeft, nRight - nLeft, anCount);
    }
    // Adding 128 to a signed byte is flipping the highest bit of the byte.
    for (int i = 0; i < nBins; ++i)
    {
        m_anBins[i ^ m_nOffset] = std::accumulate(anCount[i], anCount[i] + nCounters, 0u);
    }
}

int ClHistogram::FirstValue() const
{
    int n = 0;
    while (n < nBins - 1 && m_anBins[n] == 0)
    {
        ++n;
    }
    return n;
}

int ClHistogram::LastValue() const
{
    int n = nBins - 1;
    while (n > 0 && m_anBins[n] == 0)
    {
        --n;
    }
    return n;
}

unsigned int ClHistogram::MinCount() const
{
    return *std::min_element(m_anBins, m_anBins + nBins);
}

unsigned int ClHistogram::MaxCount() const
{
    return *std::max_element(m_anBins, m_anBins + nBins);
}

void ClHistogram::GetNoiseFreeRange(double dLow, double dHigh, unsigned char& nLow, unsigned char& nHigh) const
{
    nLow = 0;
    nHigh = nBins - 1;
    const std::int64_t nTotal = std::accumulate(m_anBins, m_anBins + nBins, std::int64_t(0));
    if (nTotal == 0)
    {
        nLow = nBins - 1;
        nHigh = 0;
        return;
    }
    // Steps through the bins until their sum exceeds the share that is cut.
    const auto cut = [this, nTotal](double dShare, int nBin, int nStep)
    {
        const std::int64_t nLimit = CastSample<std::int64_t>(static_cast<double>(nTotal) * dShare);
        std::int64_t nSum = m_anBins[nBin];
        while (nSum <= nLimit && nBin + nStep >= 0 && nBin + nStep < nBins)
        {
            nBin += nStep;
            nSum += m_anBins[nBin];
        }
        return static_cast<unsigned char>(nBin);
    };
    if (dLow < 1.0)
    {
        nLow = cut(dLow, 0, 1);
    }
    if (dHigh < 1.0)
    {
        nHigh = cut(dHigh, nBins - 1, -1);
    }
}

void ClHistogram::GetRange(ClImage& cImage, double dLow, double dHigh, unsigned char& nLow, unsigned char& nHigh)
{
    Create(cImage);
    GetNoiseFreeRange(dLow, dHigh, nLow, nHigh);
}
