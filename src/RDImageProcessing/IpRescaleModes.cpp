// The modes of ClIpRescale that smooth: bicubic, and Fant's resampling.

#include "RDImageProcessing/IpRescale.hpp"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int nTaps = 4; // along each axis
constexpr int nFractionBits = 12;
constexpr int nOne = 1 << nFractionBits;

unsigned long Count(int nWidth, int nHeight)
{
    return static_cast<unsigned long>(nWidth) * static_cast<unsigned long>(nHeight);
}

/// The weight of a sample by its squared distance s. Radial, and the inner branch ends at 2.0 and not at 1.0: both
/// meant.
double KernelWeight(double a, double s)
{
    const double dDistance = std::sqrt(s);
    if (s < 2.0)
    {
        return ((a + 2.0) * dDistance - (a + 3.0)) * s + 1.0;
    }
    return s < 4.0 ? (dDistance * (s + 8.0) - 5.0 * s) * a - 4.0 * a : 0.0;
}

/// The weighted mean of the samples around one place.
class ClKernelSum
{
public:
    ClKernelSum(const double* pSamples, long nSamples, double a) : m_pSamples(pSamples), m_nSamples(nSamples), m_a(a) {}

    /// A sample outside the picture is skipped. Only its index tells: one off the end of a row is the next row's first.
    void Add(long nIndex, double dSquare)
    {
        if (nIndex >= 0 && nIndex < m_nSamples)
        {
            const double dWeight = KernelWeight(m_a, dSquare);
            m_dSum += dWeight * m_pSamples[nIndex];
            m_dWeights += dWeight;
        }
    }

    unsigned char Value() const
    {
        const double dValue = m_dWeights != 0.0 ? m_dSum / m_dWeights : m_dSum;
        if (!(dValue > 0.0)) // a kernel parameter that is not a number, too
        {
            return 0;
        }
        return static_cast<unsigned char>(std::min(dValue, 255.0));
    }

private:
    const double* m_pSamples;
    long m_nSamples;
    double m_a;
    double m_dSum = 0.0;
    double m_dWeights = 0.0;
};

/// The source samples of one axis around an output place.
struct StTaps
{
    StTaps() = default;
    StTaps(int nPlace, int nIn, int nOut)
    {
        const double dPlace = static_cast<double>(nPlace) * nIn / nOut;
        const long nFirst = static_cast<long>(dPlace) - 1;
        for (int i = 0; i < nTaps; ++i)
        {
            const double dDistance = dPlace - static_cast<double>(nFirst + i);
            m_anIndex[i] = nFirst + i;
            m_adSquare[i] = dDistance * dDistance;
        }
    }

    long m_anIndex[nTaps];
    double m_adSquare[nTaps];
};

template <class T> void CopySamples(const ClImage& cIn, T* pOut)
{
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const unsigned char* pIn = Row<unsigned char>(cIn, y);
        pOut = std::copy(pIn, pIn + cIn.m_nWidth, pOut);
    }
}

/// One row by Fant's method. The source is walked in pieces that end at each source sample and at each end of an output
/// pixel; a piece counts with the value interpolated at its beginning, and a pixel is the mean over its pieces. nStep:
/// source samples per output pixel, 12 fractional bits.
void FantRow(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut, long nStep)
{
    const long nLast = nIn - 1;
    long nPlace = 0;
    for (int x = 0; x < nOut; ++x)
    {
        const long nEnd = nPlace + nStep;
        long nSum = 0;
        while (nPlace < nEnd)
        {
            const long i = std::min(nPlace >> nFractionBits, nLast);
            const long nFraction = nPlace & (nOne - 1);
            const long nPiece = std::min(nEnd - nPlace, nOne - nFraction);
            nSum += (pIn[i] * (nOne - nFraction) + pIn[std::min(i + 1, nLast)] * nFraction) * nPiece;
            nPlace += nPiece;
        }
        pOut[x] = static_cast<unsigned char>(nSum / (nStep << nFractionBits));
    }
}

/// The same in floating point, with the places where the output pixels begin.
void FantRow(const double* pIn, int nIn, double* pOut, int nOut, const double* pPlaces)
{
    const long nLast = nIn - 1;
    for (int x = 0; x < nOut; ++x)
    {
        const double dEnd = pPlaces[x + 1];
        double dPlace = pPlaces[x];
        double dSum = 0.0;
        while (dPlace < dEnd)
        {
            const long i = std::min(static_cast<long>(dPlace), nLast);
            const double dFraction = dPlace - static_cast<double>(i);
            const double dNext = std::min(dEnd, static_cast<double>(i + 1));
            dSum += (pIn[i] * (1.0 - dFraction) + pIn[std::min(i + 1, nLast)] * dFraction) * (dNext - dPlace);
            dPlace = dNext;
        }
        pOut[x] = dSum / (dEnd - pPlaces[x]);
    }
}
} // namespace

void ClIpRescale::ProcessBiCubic()
{
    if (m_dConvParameter1 > 0.0)
    {
        m_dConvParameter1 = -m_dConvParameter1; // for good: the next run takes the exact form
        ProcessBiCubicFast();
    }
    else
    {
        ProcessBiCubicExact();
    }
}

/// columns(x): the taps of output column x.
template <class Columns> void ClIpRescale::BiCubic(Columns&& columns)
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(m_nActWidth, m_nActHeight, m_nActPelsX, m_nActPelsY);
    const long nWidth = cIn.m_nWidth;
    const long nSamples = nWidth * cIn.m_nHeight;
    TpArrayStatic<double> adSamples(static_cast<unsigned long>(nSamples));
    CopySamples(cIn, adSamples.m_pData);
    for (int y = 0; y < m_nActHeight; ++y)
    {
        unsigned char* pOut = Row<unsigned char>(*m_pOutImage, y);
        const StTaps cRows(y, cIn.m_nHeight, m_nActHeight);
        for (int x = 0; x < m_nActWidth; ++x)
        {
            const StTaps& cColumns = columns(x);
            ClKernelSum cSum(adSamples.m_pData, nSamples, m_dConvParameter1);
            for (int j = 0; j < nTaps; ++j)
            {
                for (int i = 0; i < nTaps; ++i)
                {
                    cSum.Add(cRows.m_anIndex[j] * nWidth + cColumns.m_anIndex[i],
                             cColumns.m_adSquare[i] + cRows.m_adSquare[j]);
                }
            }
            pOut[x] = cSum.Value();
        }
    }
}

void ClIpRescale::ProcessBiCubicExact()
{
    BiCubic([this](int x) { return StTaps(x, m_pInImage->m_nWidth, m_nActWidth); });
}

void ClIpRescale::ProcessBiCubicFast()
{
    const TpArrayStatic<StTaps> aTaps(static_cast<unsigned long>(m_nActWidth));
    for (int x = 0; x < m_nActWidth; ++x)
    {
        aTaps.m_pData[x] = StTaps(x, m_pInImage->m_nWidth, m_nActWidth);
    }
    if (aTaps.m_pData != nullptr)
    {
        BiCubic([pTaps = aTaps.m_pData](int x) { return pTaps[x]; });
    }
}

void ClIpRescale::ProcessBiLinearFant()
{
    const int nWidth = m_pInImage->m_nWidth;
    const int nHeight = m_pInImage->m_nHeight;
    TpArrayStatic<unsigned char> aSource;
    TpArrayStatic<unsigned char> aResult;
    ConvertImageToPlain(aSource);
    BilinearResample(aSource, nWidth, nHeight, m_nActWidth, aResult);
    FlipXY(aResult, m_nActWidth, nHeight, aSource);
    BilinearResample(aSource, nHeight, m_nActWidth, m_nActHeight, aResult);
    FlipXY(aResult, m_nActHeight, m_nActWidth, aSource);
    ConvertPlainToImage(aSource);
}

void ClIpRescale::ConvertImageToPlain(TpArrayStatic<unsigned char>& aOut) const
{
    const ClImage& cIn = *m_pInImage;
    aOut.New(Count(cIn.m_nWidth, cIn.m_nHeight));
    CopySamples(cIn, aOut.m_pData);
}

void ClIpRescale::ConvertPlainToImage(const TpArrayStatic<unsigned char>& aIn)
{
    MakeOutput(m_nActWidth, m_nActHeight, m_nActPelsX, m_nActPelsY);
    const unsigned char* pIn = aIn.m_pData;
    for (int y = 0; y < m_nActHeight; ++y)
    {
        std::copy_n(pIn, m_nActWidth, Row<unsigned char>(*m_pOutImage, y));
        pIn += m_nActWidth;
    }
}

void ClIpRescale::BilinearResample(const TpArrayStatic<unsigned char>& aIn, int nWidth, int nRows, int nNewWidth,
                                   TpArrayStatic<unsigned char>& aOut)
{
    TimerStart("Resample");
    aOut.New(Count(nNewWidth, nRows));
    const long nStep = std::max((static_cast<long>(nWidth) << nFractionBits) / nNewWidth, 1L);
    for (long y = 0; y < nRows; ++y)
    {
        FantRow(aIn.m_pData + y * nWidth, nWidth, aOut.m_pData + y * nNewWidth, nNewWidth, nStep);
    }
    TimerStop("Resample");
}

void ClIpRescale::BilinearResample2(const TpArrayStatic<double>& aIn, int nWidth, int nRows, int nNewWidth,
                                    TpArrayStatic<double>& aOut)
{
    TimerStart("Resample 2");
    aOut.New(Count(nNewWidth, nRows));
    TpArrayStatic<double> adPlaces(static_cast<unsigned long>(nNewWidth) + 1);
    for (long x = 0; x <= nNewWidth; ++x)
    {
        adPlaces.m_pData[x] = std::min<double>(static_cast<double>(x) * nWidth / nNewWidth, nWidth);
    }
    for (long y = 0; y < nRows; ++y)
    {
        FantRow(aIn.m_pData + y * nWidth, nWidth, aOut.m_pData + y * nNewWidth, nNewWidth, adPlaces.m_pData);
    }
    TimerStop("Resample 2");
}

void ClIpRescale::FlipXY(const TpArrayStatic<unsigned char>& aIn, int nWidth, int nHeight,
                         TpArrayStatic<unsigned char>& aOut) const
{
    aOut.New(Count(nWidth, nHeight));
    // By squares, so that the columns that are read stay in the cache.
    constexpr long nSide = 32;
    for (long nTop = 0; nTop < nHeight; nTop += nSide)
    {
        const long nBottom = std::min<long>(nTop + nSide, nHeight);
        for (long x = 0; x < nWidth; ++x)
        {
            for (long y = nTop; y < nBottom; ++y)
            {
                aOut.m_pData[x * nHeight + y] = aIn.m_pData[y * nWidth + x];
            }
        }
    }
}
