// The methods that decide pixel by pixel.

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"

#include "RDImageProcessing/FillTools.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace
{
constexpr unsigned char nBlack = 0;
constexpr unsigned char nWhite = 255;

/// A matrix of the size of an image.
class ClMatrix
{
public:
    explicit ClMatrix(const ClImage& cImage)
        : m_nWidth(cImage.m_nWidth),
          m_aValues(static_cast<unsigned long>(cImage.m_nWidth) * static_cast<unsigned long>(cImage.m_nHeight))
    {
    }
    double* operator[](int nRow) { return m_aValues.m_pData + static_cast<std::ptrdiff_t>(nRow) * m_nWidth; }

private:
    int m_nWidth;
    TpArrayStatic<double> m_aValues;
};

/// Mean, minimum and maximum of the neighbourhood of 10 rows and columns to each side, clipped to the image.
struct StNeighbourhood
{
    static constexpr int nReach = 10;

    /// nStart is the value of the image's first pixel: minimum and maximum start from it, wherever the neighbourhood
    /// lies, and this is meant.
    StNeighbourhood(const ClImage& cImage, int nX, int nY, int nStart)
    {
        const int nLeft = std::max(nX - nReach, 0);
        const int nRight = std::min(nX + nReach, cImage.m_nWidth - 1);
        const int nTop = std::max(nY - nReach, 0);
        const int nBottom = std::min(nY + nReach, cImage.m_nHeight - 1);
        long nSum = 0;
        int nMin = nStart;
        int nMax = nStart;
        for (int y = nTop; y <= nBottom; ++y)
        {
            const unsigned char* pRow = Row<unsigned char>(cImage, y);
            for (int x = nLeft; x <= nRight; ++x)
            {
                nSum += pRow[x];
                nMin = std::min<int>(nMin, pRow[x]);
                nMax = std::max<int>(nMax, pRow[x]);
            }
        }
        m_dMean = static_cast<double>(nSum) / static_cast<double>((nRight - nLeft + 1) * (nBottom - nTop + 1));
        m_dMin = nMin;
        m_dMax = nMax;
    }

    double m_dMean;
    double m_dMin;
    double m_dMax;
};

/// The relaxation of a picture: the probabilities of each pixel to be dark or bright support those of its neighbours
/// until they settle.
class ClRelaxation
{
public:
    explicit ClRelaxation(ClImage& cImage)
        : m_cImage(cImage), m_cDark(cImage), m_cBright(cImage), m_cNewDark(cImage), m_cNewBright(cImage)
    {
    }

    void Run()
    {
        constexpr int nMostPasses = 100;
        assign_class();
        thresh(); // all that follows reads the binarised image
        double dBest = 10000.0;
        int nSteady = 0;
        for (int i = 0; i < nMostPasses; ++i)
        {
            const double dChange = update();
            if (dBest > dChange)
            {
                nSteady = 1;
                dBest = dChange;
            }
            else if (std::fabs(dChange - dBest) < 0.0001)
            {
                if (nSteady > 2)
                {
                    break;
                }
                ++nSteady;
            }
            thresh();
            if (!(dChange > 1.0)) // not a number ends here, too
            {
                break;
            }
        }
        thresh();
    }

private:
    /// First probabilities, by the place of a pixel between the mean and the extremes around it. Where all are the same
    /// they are not a number, and stay so.
    void assign_class()
    {
        constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
        const int nStart = Row<unsigned char>(m_cImage, 0)[0];
        for (int y = 0; y < m_cImage.m_nHeight; ++y)
        {
            const unsigned char* pRow = Row<unsigned char>(m_cImage, y);
            for (int x = 0; x < m_cImage.m_nWidth; ++x)
            {
                const StNeighbourhood c(m_cImage, x, y, nStart);
                if (c.m_dMean >= pRow[x])
                {
                    const double dRange = 2.0 * (c.m_dMean - c.m_dMin);
                    m_cDark[y][x] = dRange > 0.0 ? (c.m_dMean - pRow[x]) / dRange + 0.5 : dNone;
                    m_cBright[y][x] = 1.0 - m_cDark[y][x];
                }
                else
                {
                    m_cBright[y][x] = (pRow[x] - c.m_dMean) / (2.0 * (c.m_dMax - c.m_dMean)) + 0.5;
                    m_cDark[y][x] = 1.0 - m_cBright[y][x];
                }
            }
        }
    }

    void thresh()
    {
        for (int y = 0; y < m_cImage.m_nHeight; ++y)
        {
            unsigned char* pRow = Row<unsigned char>(m_cImage, y);
            for (int x = 0; x < m_cImage.m_nWidth; ++x)
            {
                pRow[x] = m_cDark[y][x] > m_cBright[y][x] ? nBlack : nWhite;
            }
        }
    }

    /// How much a neighbour's probability of one class supports a pixel's of the same or of the other class.
    static double R(int nDifference, bool bSameClass)
    {
        const double v = 1.0 - nDifference * 0.00390625;
        return (bSameClass ? v : v - 1.0) * 0.9;
    }

    /// The mean support of the eight neighbours for a pixel to be dark and to be bright.
    void Q(int x, int y, double& dForDark, double& dForBright)
    {
        const int nGrey = Row<unsigned char>(m_cImage, y)[x];
        double dDark = 0.0;
        double dBright = 0.0;
        for (int k = y - 1; k <= y + 1; ++k)
        {
            const unsigned char* pRow = Row<unsigned char>(m_cImage, k);
            for (int l = x - 1; l <= x + 1; ++l)
            {
                if (k == y && l == x)
                {
                    continue;
                }
                const double dSame = R(nGrey - pRow[l], true);
                const double dOther = R(nGrey - pRow[l], false);
                dDark += dSame * m_cDark[k][l] + dOther * m_cBright[k][l];
                dBright += dOther * m_cDark[k][l] + dSame * m_cBright[k][l];
            }
        }
        dForDark = 0.125 * dDark;
        dForBright = 0.125 * dBright;
    }

    /// One step for all pixels that have eight neighbours, all at the same time; returns the sum of the changes.
    double update()
    {
        const int nWidth = m_cImage.m_nWidth;
        const int nHeight = m_cImage.m_nHeight;
        for (int y = 1; y < nHeight - 1; ++y)
        {
            for (int x = 1; x < nWidth - 1; ++x)
            {
                double a = 0.0;
                double b = 0.0;
                Q(x, y, a, b);
                const double vp = (a + 1.0) * m_cDark[y][x];
                const double vq = (b + 1.0) * m_cBright[y][x];
                const double s = vp + vq; // 0.1 or more, as a support is above -0.9; or not a number
                m_cNewDark[y][x] = vp / s;
                m_cNewBright[y][x] = vq / s;
            }
        }
        double dChange = 0.0;
        for (int y = 1; y < nHeight - 1; ++y)
        {
            for (int x = 1; x < nWidth - 1; ++x)
            {
                dChange +=
                    std::fabs(m_cDark[y][x] - m_cNewDark[y][x]) + std::fabs(m_cBright[y][x] - m_cNewBright[y][x]);
                m_cDark[y][x] = m_cNewDark[y][x];
                m_cBright[y][x] = m_cNewBright[y][x];
            }
        }
        return dChange;
    }

    ClImage& m_cImage;
    ClMatrix m_cDark;
    ClMatrix m_cBright;
    ClMatrix m_cNewDark;
    ClMatrix m_cNewBright;
};
} // namespace

void ClIpBinarizeAutoThreshold::thrdd(ClImage* pImage)
{
    if (!HasBytePerColumn(*pImage))
    {
        return;
    }
    const int nWidth = pImage->m_nWidth;
    long nLeft = static_cast<long>(nWidth) * pImage->m_nHeight - 1; // the last pixel of the walk stays as it is
    const int N = static_cast<int>(nWidth * 0.125);
    const double k = N != 0 ? 1.0 / N : std::numeric_limits<double>::infinity();
    double dSum = N * 127.0;
    double dMean = k * dSum;
    for (int y = 0; nLeft > 0; ++y)
    {
        unsigned char* pRow = Row<unsigned char>(*pImage, y);
        const bool bBackward = y % 2 != 0;
        for (int i = 0; i < nWidth && nLeft > 0; ++i, --nLeft)
        {
            unsigned char& nPixel = pRow[bBackward ? nWidth - 1 - i : i];
            dSum = dSum - dMean + nPixel;
            dMean = k * dSum;
            nPixel = nPixel >= dMean * 0.85 ? nWhite : nBlack;
        }
    }
}

void ClIpBinarizeAutoThreshold::thr_relax(ClImage* pImage)
{
    if (HasBytePerColumn(*pImage) && pImage->m_nWidth > 0 && pImage->m_nHeight > 0)
    {
        ClRelaxation(*pImage).Run();
    }
}
