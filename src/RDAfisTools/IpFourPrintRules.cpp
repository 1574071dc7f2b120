#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDTools/SampleCast.hpp"

#include <cmath>

namespace
{
using Component = ClIpConnectedComponent2::ClComponent;
using Components = ClIpConnectedComponent2::ComponentsArray_t;

// All in pixels of the working image, 100 pixels per inch.
constexpr double dMinArea = 200.0;
constexpr double dMaxEccentricity = 0.95;
constexpr int nFragmentDistance = 44; // centres nearer than this belong to one object
constexpr double dColumn = 25.0;      // candidates nearer than this in x stand in one column
constexpr int nStrayRows = 150;       // a candidate more than this above all others is no finger
constexpr int nPalmRows = 260;        // and one more than this below the second-highest is palm or joint
constexpr int nSmallerThanMean = -2000;
constexpr int nTooMany = 5; // up to four fingers need no further rules

/// Removes the components that match, the others keep their order.
template <class Match> void RemoveComponents(Components& aComponents, Match&& match)
{
    unsigned long nKept = 0;
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        if (match(aComponents[i]))
        {
            continue;
        }
        if (nKept != i)
        {
            aComponents[nKept] = aComponents[i];
        }
        ++nKept;
    }
    aComponents.m_nUsed = nKept;
}

bool Near(const Component& cFirst, const Component& cSecond)
{
    const double dX = cFirst.m_cCenter.m_dX - cSecond.m_cCenter.m_dX;
    const double dY = cFirst.m_cCenter.m_dY - cSecond.m_cCenter.m_dY;
    return CastSample<int>(std::sqrt(dX * dX + dY * dY)) < nFragmentDistance;
}

/// Of two near components the smaller goes; on equal areas the outer one.
void RemoveFragments(Components& aComponents)
{
    unsigned long i = 0;
    while (i < aComponents.Entries())
    {
        unsigned long j = 0;
        while (j < aComponents.Entries() && (j == i || !Near(aComponents[i], aComponents[j])))
        {
            ++j;
        }
        if (j == aComponents.Entries())
        {
            ++i;
            continue;
        }
        // The scan goes on at the same index, whatever entry has moved there.
        aComponents.RemoveAt(aComponents[i].m_dArea > aComponents[j].m_dArea ? j : i);
    }
}

int HeightOf(const ClVector& cCenter)
{
    return CastSample<int>(cCenter.m_dY);
}

bool SameColumn(const ClVector& cOther, const ClVector& cOf)
{
    return cOther.m_dX < cOf.m_dX + dColumn && cOther.m_dX > cOf.m_dX - dColumn;
}
} // namespace

long ClIpFourPrintSegmentation::ApplyRulesToGetRightFingerSegments(Components_t& aComponents, ClImage&,
                                                                   Marks_t& aSelected)
{
    RemoveComponents(aComponents, [](const Component& c) { return c.m_dArea < dMinArea; });
    RemoveComponents(aComponents, [](const Component& c) { return c.m_dEccentricity > dMaxEccentricity; });
    RemoveFragments(aComponents);

    FillCandidates(aComponents, aSelected);
    const int nSecond = RemoveStrayAbove(aSelected);
    m_nFingers = 0;
    if (m_aCenters.Entries() < 1)
    {
        return FPC_SUCCESS;
    }
    KeepTopOfEachColumn(aSelected);
    ClearPalm(aSelected, nSecond);
    if (m_nFingers < nTooMany)
    {
        return FPC_SUCCESS;
    }
    ClearValidInColumns(aSelected);
    if (m_nFingers < nTooMany)
    {
        return FPC_SUCCESS;
    }
    ClearSmallExtra(aSelected);
    if (m_nFingers < nTooMany)
    {
        return FPC_SUCCESS;
    }
    ClearLoneCandidate(aSelected);
    return FPC_SUCCESS;
}

void ClIpFourPrintSegmentation::FillCandidates(const Components_t& aComponents, Marks_t& aSelected)
{
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        const Component& c = aComponents[i];
        m_aCenters.Add(ClVector(c.m_cCenter.m_dX, c.m_cCenter.m_dY));
        m_aShapes.Add(ClVector(c.m_dArea, c.m_dEccentricity));
    }
    const unsigned long nCandidates = m_aCenters.Entries();
    if (aSelected.m_nEntries < nCandidates)
    {
        aSelected.Enlarge(nCandidates - aSelected.m_nEntries);
    }
    aSelected.m_nUsed = nCandidates;
    for (unsigned long i = 0; i < nCandidates; ++i)
    {
        aSelected[i] = 1;
    }
}

/// Removes the highest of three or more candidates if it stands far above the second-highest. The component list is
/// not touched, on purpose: from there on a mark belongs to the component that follows. Returns the second height.
int ClIpFourPrintSegmentation::RemoveStrayAbove(Marks_t& aSelected)
{
    const unsigned long nCandidates = m_aCenters.Entries();
    if (nCandidates < 3)
    {
        return 0;
    }
    int nTop = 0;
    int nSecond = 0;
    unsigned long nTopIndex = 0;
    if (HeightOf(m_aCenters[0]) > 0)
    {
        nTop = HeightOf(m_aCenters[0]);
    }
    for (unsigned long k = 1; k < nCandidates; ++k)
    {
        const int nHeight = HeightOf(m_aCenters[k]);
        if (nHeight <= nSecond)
        {
            continue;
        }
        if (nHeight > nTop)
        {
            nSecond = nTop;
            nTop = nHeight;
            nTopIndex = k;
        }
        else
        {
            nSecond = nHeight;
        }
    }
    if (nTop - nSecond > nStrayRows)
    {
        m_aCenters.RemoveAt(nTopIndex);
        aSelected.RemoveAt(nTopIndex);
        m_aShapes.RemoveAt(nTopIndex);
    }
    return nSecond;
}

/// Within a column only the candidate nearest the tips stays; invalid ones silence others, too, and equals both stay.
void ClIpFourPrintSegmentation::KeepTopOfEachColumn(Marks_t& aSelected) const
{
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        for (unsigned long j = 0; j < m_aCenters.Entries(); ++j)
        {
            if (j != i && SameColumn(m_aCenters[j], m_aCenters[i]) && m_aCenters[j].m_dY < m_aCenters[i].m_dY)
            {
                aSelected[j] = 0;
            }
        }
    }
}

void ClIpFourPrintSegmentation::ClearPalm(Marks_t& aSelected, int nSecond)
{
    const double dLimit = nSecond - nPalmRows;
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        if (dLimit > m_aCenters[i].m_dY)
        {
            aSelected[i] = 0;
        }
        m_nFingers += aSelected[i] != 0 ? 1 : 0;
    }
}

/// The column rule once more, among valid candidates only.
void ClIpFourPrintSegmentation::ClearValidInColumns(Marks_t& aSelected)
{
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        if (aSelected[i] == 0)
        {
            continue;
        }
        for (unsigned long j = 0; j < m_aCenters.Entries(); ++j)
        {
            if (j != i && aSelected[j] != 0 && SameColumn(m_aCenters[i], m_aCenters[j]) &&
                m_aCenters[i].m_dY < m_aCenters[j].m_dY)
            {
                aSelected[i] = 0;
                --m_nFingers;
            }
        }
    }
}

void ClIpFourPrintSegmentation::ClearSmallExtra(Marks_t& aSelected)
{
    int nSum = 0;
    for (unsigned long i = 0; i < m_aShapes.Entries(); ++i)
    {
        nSum = WrapAdd(nSum, WrapMultiply(CastSample<int>(m_aShapes[i].m_dX), aSelected[i]));
    }
    const int nMean = nSum / m_nFingers;
    int nSmallest = 0;
    unsigned long nIndex = 0;
    for (unsigned long i = 0; i < m_aShapes.Entries(); ++i)
    {
        const int nDifference = CastSample<int>(m_aShapes[i].m_dX - nMean);
        if (aSelected[i] != 0 && nDifference < nSmallest)
        {
            nSmallest = nDifference;
            nIndex = i;
        }
    }
    if (nSmallest < nSmallerThanMean)
    {
        aSelected[nIndex] = 0;
        --m_nFingers;
    }
}

/// With five or more left, the only one on its side of the mean height goes: a thumb, or one stray candidate.
void ClIpFourPrintSegmentation::ClearLoneCandidate(Marks_t& aSelected)
{
    int nSum = 0;
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        nSum = WrapAdd(nSum, WrapMultiply(HeightOf(m_aCenters[i]), aSelected[i]));
    }
    const int nMean = nSum / m_nFingers;
    int nAbove = 0;
    int nBelow = 0;
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        nAbove += aSelected[i] != 0 && m_aCenters[i].m_dY > nMean ? 1 : 0;
        nBelow += aSelected[i] != 0 && m_aCenters[i].m_dY < nMean ? 1 : 0;
    }
    const bool bLoneAbove = nAbove == 1 && nBelow == 4;
    const bool bLoneBelow = nAbove == 4 && nBelow == 1;
    for (unsigned long i = 0; i < m_aCenters.Entries(); ++i)
    {
        if (aSelected[i] != 0 &&
            ((bLoneAbove && m_aCenters[i].m_dY > nMean) || (bLoneBelow && m_aCenters[i].m_dY < nMean)))
        {
            aSelected[i] = 0;
            --m_nFingers;
        }
    }
}
