#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include <cmath>

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

void RemoveBox(ClIpFourPrintSegmentation::Images_t& aImages, ClIpFourPrintSegmentation::Boxes_t& aBoxes,
               ClIpFourPrintSegmentation::Boxes_t& aOrigins, int& nCount, int nBox)
{
    const unsigned long nIndex = static_cast<unsigned long>(nBox);
    aImages.RemoveAt(nIndex);
    aBoxes.RemoveAt(nIndex);
    aOrigins.RemoveAt(nIndex);
    --nCount;
}
} // namespace

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
    while (nCount > nMaxFingers)
    {
        TpArrayStatic<float> afSum(static_cast<unsigned long>(nCount));
        int nLowest = 0;
        for (int i = 0; i < nCount; ++i)
        {
            float& fSum = afSum[static_cast<unsigned long>(i)];
            fSum = 0.0f;
            const StPlace cPlace(*this, aBoxes, aOrigins, i);
            for (int j = 0; j < nCount; ++j)
            {
                if (j == i)
                {
                    continue;
                }
                const StPlace cOther(*this, aBoxes, aOrigins, j);
                const float fDx = std::fabs(cPlace.CenterX() - cOther.CenterX());
                const float fDy = cPlace.CenterY() - cOther.CenterY();
                const double dSlope = std::atan2(static_cast<double>(fDy), static_cast<double>(fDx));
                fSum += sinf(static_cast<float>(dSlope));
            }
            nLowest = fSum < afSum[static_cast<unsigned long>(nLowest)] ? i : nLowest;
        }
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
