#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr long nLargerThanAnyBox = 99999; // pixels
constexpr int nMaxFingers = 4;

/// The place of a finished box in the input image, pixels; nTop is on the tip side.
struct StPlace
{
    StPlace(ClIpFourPrintSegmentation& cOwner, const ClIpFourPrintSegmentation::Boxes_t& aBoxes,
            const ClIpFourPrintSegmentation::Boxes_t& aOrigins, int nBox)
    {
        const unsigned long nIndex = static_cast<unsigned long>(nBox);
        cOwner.CalculateBoxCoordinates(aBoxes[nIndex], aOrigins[nIndex], m_nLeft, m_nRight, m_nBottom, m_nTop);
    }

    long Width() const { return m_nRight - m_nLeft; }
    long Height() const { return m_nTop - m_nBottom; }
    double Area() const { return static_cast<double>(Width() * Height()); }
    float CenterX() const { return Middle(m_nLeft, m_nRight); }
    float CenterY() const { return Middle(m_nBottom, m_nTop); }

    long m_nLeft = 0;
    long m_nRight = 0;
    long m_nBottom = 0;
    long m_nTop = 0;

private:
    static float Middle(long nFrom, long nTo)
    {
        const long nMiddle = nFrom + (nTo - nFrom) / 2;
        return static_cast<float>(nMiddle);
    }
};

double SharedArea(const StPlace& cFirst, const StPlace& cSecond)
{
    const auto overlap = [](long nFrom1, long nTo1, long nFrom2, long nTo2)
    {
        return ClIpFourPrintSegmentation::Overlapping1D(static_cast<double>(nFrom1), static_cast<double>(nTo1),
                                                        static_cast<double>(nFrom2), static_cast<double>(nTo2));
    };
    return overlap(cFirst.m_nLeft, cFirst.m_nRight, cSecond.m_nLeft, cSecond.m_nRight) *
           overlap(cFirst.m_nBottom, cFirst.m_nTop, cSecond.m_nBottom, cSecond.m_nTop);
}

/// How far each of the boxes stands above the others: the sum of the sines of the slopes from them up to it. The sums
/// are of single precision and run in the order of the boxes; which is the smallest depends on how they round. A sum is
/// worked out anew only if the estimates leave it open and a box of another height has gone since.
class ClRises
{
public:
    ClRises(ClIpFourPrintSegmentation& cOwner, const ClIpFourPrintSegmentation::Boxes_t& aBoxes,
            const ClIpFourPrintSegmentation::Boxes_t& aOrigins, int nCount)
        : m_nCount(static_cast<unsigned long>(nCount)), m_aBoxes(m_nCount)
    {
        for (int i = 0; i < nCount; ++i)
        {
            const StPlace cPlace(cOwner, aBoxes, aOrigins, i);
            m_aBoxes[static_cast<unsigned long>(i)] = {cPlace.CenterX(), cPlace.CenterY(), 0.0, 0.0, 0.0f, false};
        }
        Estimate();
    }

    /// The first of the boxes whose sum is the smallest.
    int Lowest()
    {
        double dLimit = m_aBoxes[0].dRise + m_aBoxes[0].dError;
        for (unsigned long i = 1; i < m_nCount; ++i)
        {
            dLimit = std::min(dLimit, m_aBoxes[i].dRise + m_aBoxes[i].dError);
        }
        bool bFound = false;
        unsigned long nLowest = 0;
        float fLowest = 0.0f;
        for (unsigned long i = 0; i < m_nCount; ++i)
        {
            if (m_aBoxes[i].dRise - m_aBoxes[i].dError > dLimit)
            {
                continue;
            }
            const float fSum = Sum(i);
            if (!bFound || fSum < fLowest)
            {
                bFound = true;
                nLowest = i;
                fLowest = fSum;
            }
        }
        return static_cast<int>(nLowest);
    }

    void Remove(int nBox)
    {
        const auto nGone = static_cast<unsigned long>(nBox);
        for (unsigned long i = 0; i < m_nCount; ++i)
        {
            const float fSine = i != nGone ? Sine(i, nGone) : 0.0f;
            m_aBoxes[i].dRise -= static_cast<double>(fSine);
            m_aBoxes[i].bSummed = m_aBoxes[i].bSummed && fSine == 0.0f; // zeros leave the sum as it is
        }
        std::copy(m_aBoxes.m_pData + nGone + 1, m_aBoxes.m_pData + m_nCount, m_aBoxes.m_pData + nGone);
        --m_nCount;
        if (m_nCount < m_nEstimated / 2)
        {
            Estimate(); // the errors have become too large for so few
        }
    }

private:
    struct StBox
    {
        float fX;
        float fY;
        double dRise;  // the sum without its rounding
        double dError; // at most this far from the rounded one
        float fSum;    // the rounded one
        bool bSummed;  // it is known
    };

    float Sine(unsigned long nBox, unsigned long nOther) const
    {
        const float fDx = std::fabs(m_aBoxes[nBox].fX - m_aBoxes[nOther].fX);
        const float fDy = m_aBoxes[nBox].fY - m_aBoxes[nOther].fY;
        return sinf(static_cast<float>(std::atan2(static_cast<double>(fDy), static_cast<double>(fDx))));
    }

    float Sum(unsigned long nBox)
    {
        StBox& cBox = m_aBoxes[nBox];
        if (!cBox.bSummed)
        {
            cBox.fSum = 0.0f;
            for (unsigned long i = 0; i < m_nCount; ++i)
            {
                cBox.fSum += i != nBox ? Sine(nBox, i) : 0.0f;
            }
            cBox.bSummed = true;
        }
        return cBox.fSum;
    }

    /// A sum of n terms in single precision is off by at most n * 2^-24 / (1 - n * 2^-24) times the sum of their
    /// absolute values. Up to 2^22 terms twice n * 2^-24 is more than that, by enough for the estimate's own rounding,
    /// and holds for what is left of the sum when terms are taken away.
    void Estimate()
    {
        constexpr unsigned long nMostTerms = 1ul << 22;
        const double dShare = m_nCount < nMostTerms ? std::ldexp(static_cast<double>(m_nCount), -23)
                                                    : std::numeric_limits<double>::infinity();
        for (unsigned long i = 0; i < m_nCount; ++i)
        {
            StBox& cBox = m_aBoxes[i];
            cBox.dRise = 0.0;
            cBox.fSum = 0.0f;
            double dAbsolute = 0.0;
            for (unsigned long j = 0; j < m_nCount; ++j)
            {
                const float fSine = i != j ? Sine(i, j) : 0.0f;
                cBox.fSum += fSine;
                cBox.dRise += static_cast<double>(fSine);
                dAbsolute += std::fabs(static_cast<double>(fSine));
            }
            cBox.bSummed = true;
            cBox.dError = dAbsolute > 0.0 ? dShare * dAbsolute : 0.0;
        }
        m_nEstimated = m_nCount;
    }

    unsigned long m_nCount;
    unsigned long m_nEstimated = 0; // boxes at the last estimate
    TpArrayStatic<StBox> m_aBoxes;
};
} // namespace

void ClIpFourPrintSegmentation::RemoveBox(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount, int nBox)
{
    const unsigned long nIndex = static_cast<unsigned long>(nBox);
    RemoveImage(aImages, nIndex);
    aBoxes.RemoveAt(nIndex);
    aOrigins.RemoveAt(nIndex);
    --nCount;
}

/// A finger that has lost its end stands shorter than both its neighbours.
void ClIpFourPrintSegmentation::RemoveAmputatedFingerprints(Boxes_t& aBoxes, Boxes_t& aOrigins, int& nCount)
{
    unsigned long i = 1;
    while (i + 1 < aOrigins.Entries())
    {
        if (aBoxes[i - 1].m_nMaxY > aBoxes[i].m_nMaxY && aBoxes[i].m_nMaxY < aBoxes[i + 1].m_nMaxY)
        {
            aOrigins.RemoveAt(i);
            aBoxes.RemoveAt(i);
            --nCount;
        }
        else
        {
            ++i;
        }
    }
}

/// Drops a box that is less than half of the others in one direction, until nothing is dropped. The small box is the
/// last one that beats the one before in either direction; its width and height stand together.
void ClIpFourPrintSegmentation::RemoveRelativelySmallFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes,
                                                                      Boxes_t& aOrigins, int& nCount)
{
    while (nCount >= 2)
    {
        long nMinWidth = nLargerThanAnyBox;
        long nMinHeight = nLargerThanAnyBox;
        int nSmall = -1;
        long nSumWidth = 0;
        long nSumHeight = 0;
        for (int i = 0; i < nCount; ++i)
        {
            const StPlace cPlace(*this, aBoxes, aOrigins, i);
            const bool bSmaller = cPlace.Width() < nMinWidth || cPlace.Height() < nMinHeight;
            if (!bSmaller || i != 0)
            {
                nSumWidth += bSmaller ? nMinWidth : cPlace.Width();
                nSumHeight += bSmaller ? nMinHeight : cPlace.Height();
            }
            if (bSmaller)
            {
                nMinWidth = cPlace.Width();
                nMinHeight = cPlace.Height();
                nSmall = i;
            }
        }
        const long nMeanWidth = nSumWidth / (nCount - 1);
        const long nMeanHeight = nSumHeight / (nCount - 1);
        if (nSmall < 0 || !(nMeanHeight / 2 > nMinHeight || nMeanWidth / 2 > nMinWidth))
        {
            return;
        }
        RemoveBox(aImages, aBoxes, aOrigins, nCount, nSmall);
    }
}

/// Of two boxes that share more than dLimit of either one's area the smaller goes; on equal areas the first.
void ClIpFourPrintSegmentation::RemoveOverlappingFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins,
                                                                  int& nCount, double dLimit)
{
    for (int i = 0; i < nCount; ++i)
    {
        int j = i + 1;
        while (i >= 0 && j < nCount)
        {
            const StPlace cFirst(*this, aBoxes, aOrigins, i);
            const StPlace cSecond(*this, aBoxes, aOrigins, j);
            const double dShared = SharedArea(cFirst, cSecond);
            // Not mirror images: 0 / 0 is no hit in the first test and a hit in the second.
            if (dShared / cFirst.Area() > dLimit || !(dLimit >= dShared / cSecond.Area()))
            {
                RemoveBox(aImages, aBoxes, aOrigins, nCount, cFirst.Area() > cSecond.Area() ? j : i);
                --i; // the scan goes on diagonally; before the first row it ends, and begins again there
            }
            ++j;
        }
    }
}

/// With five or more boxes the one that stands lowest in relation to all others goes, until four are left: the sum of
/// the sines of the slopes from all others up to it is the smallest.
void ClIpFourPrintSegmentation::ReduceFingerCountToMaxOfFourByRules(Images_t& aImages, Boxes_t& aBoxes,
                                                                    Boxes_t& aOrigins, int& nCount)
{
    if (nCount <= nMaxFingers)
    {
        return;
    }
    ClRises cRises(*this, aBoxes, aOrigins, nCount);
    while (nCount > nMaxFingers)
    {
        const int nLowest = cRises.Lowest();
        cRises.Remove(nLowest);
        RemoveBox(aImages, aBoxes, aOrigins, nCount, nLowest);
    }
}

void ClIpFourPrintSegmentation::RemoveToSmallFingerprintBoxes(Images_t& aImages, Boxes_t& aBoxes, Boxes_t& aOrigins,
                                                              int& nCount, double dMinSize)
{
    int i = 0;
    while (i < nCount)
    {
        if (StPlace(*this, aBoxes, aOrigins, i).Area() >= dMinSize * dMinSize)
        {
            ++i;
        }
        else
        {
            RemoveBox(aImages, aBoxes, aOrigins, nCount, i);
        }
    }
}
