#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/FillTools.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
#include <tuple>

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

// A component goes by shifting the later ones down one place, and the place behind them keeps a copy of the last one. A
// second run of the processor finds these copies, as its candidates number on; so they are laid down here as well,
// though all that go are taken out in one pass.

/// Moves the components together that do not match.
template <class Match> void DropComponents(Components& aComponents, Match&& match)
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

/// Removes the components that match, from the first to the last.
template <class Match> void RemoveComponents(Components& aComponents, Match&& match)
{
    const unsigned long nEntries = aComponents.Entries();
    DropComponents(aComponents, match);
    for (unsigned long i = aComponents.Entries(); i + 1 < nEntries; ++i)
    {
        aComponents[i] = aComponents[nEntries - 1];
    }
}

bool Near(const Component& cFirst, const Component& cSecond)
{
    const double dX = cFirst.m_cCenter.m_dX - cSecond.m_cCenter.m_dX;
    const double dY = cFirst.m_cCenter.m_dY - cSecond.m_cCenter.m_dY;
    return CastSample<int>(std::sqrt(dX * dX + dY * dY)) < nFragmentDistance;
}

/// Finds near components without looking at all of them: centres are kept by the squares of a grid in which near ones
/// lie in the same square or in adjacent ones.
class ClFragmentGrid
{
public:
    explicit ClFragmentGrid(const Components& aComponents)
        : m_aComponents(aComponents), m_aPlaces(aComponents.Entries()), m_aGone(aComponents.Entries())
    {
        for (unsigned long i = 0; i < m_aPlaces.Entries(); ++i)
        {
            const ClVector& cCenter = aComponents[i].m_cCenter;
            m_aPlaces[i] = {Square(cCenter.m_dY), Square(cCenter.m_dX), i};
        }
        std::fill_n(m_aGone.m_pData, m_aGone.Entries(), false);
        std::sort(Begin(), End());
    }

    bool IsGone(unsigned long nEntry) const { return m_aGone[nEntry]; }
    void Remove(unsigned long nEntry) { m_aGone[nEntry] = true; }

    /// The first other entry that is near and not gone; the number of entries if there is none.
    unsigned long FirstNear(unsigned long nEntry) const
    {
        const ClVector& cCenter = m_aComponents[nEntry].m_cCenter;
        const long nRow = Square(cCenter.m_dY);
        const long nColumn = Square(cCenter.m_dX);
        unsigned long nFirst = m_aPlaces.Entries();
        for (long y = nRow - 1; y <= nRow + 1; ++y)
        {
            const StPlace* p = std::lower_bound(Begin(), End(), StPlace{y, nColumn - 1, 0});
            for (; p != End() && p->nRow == y && p->nColumn <= nColumn + 1; ++p)
            {
                if (p->nEntry < nFirst && p->nEntry != nEntry && !m_aGone[p->nEntry] &&
                    Near(m_aComponents[nEntry], m_aComponents[p->nEntry]))
                {
                    nFirst = p->nEntry;
                }
            }
        }
        return nFirst;
    }

private:
    struct StPlace
    {
        long nRow;
        long nColumn;
        unsigned long nEntry;

        bool operator<(const StPlace& cOther) const
        {
            return std::tie(nRow, nColumn, nEntry) < std::tie(cOther.nRow, cOther.nColumn, cOther.nEntry);
        }
    };

    static long Square(double dCoordinate) { return CastSample<int>(std::floor(dCoordinate / nFragmentDistance)); }
    const StPlace* Begin() const { return m_aPlaces.m_pData; }
    const StPlace* End() const { return m_aPlaces.m_pData + m_aPlaces.Entries(); }
    StPlace* Begin() { return m_aPlaces.m_pData; }
    StPlace* End() { return m_aPlaces.m_pData + m_aPlaces.Entries(); }

    const Components& m_aComponents;
    TpArrayStatic<StPlace> m_aPlaces;
    TpArrayStatic<bool> m_aGone;
};

/// Of two near components the smaller goes; on equal areas the outer one.
void RemoveFragments(Components& aComponents)
{
    const unsigned long nEntries = aComponents.Entries();
    ClFragmentGrid cGrid(aComponents);
    TpArrayDynamic<unsigned long, 100> anLast; // of those that are left before a removal, one for each
    unsigned long nLast = nEntries;
    for (unsigned long i = 0; i < nEntries; ++i)
    {
        // An entry that stays is looked at again until nothing is near it: so no later one finds it near.
        while (!cGrid.IsGone(i))
        {
            const unsigned long nNear = cGrid.FirstNear(i);
            if (nNear == nEntries)
            {
                break;
            }
            while (cGrid.IsGone(nLast - 1))
            {
                --nLast;
            }
            PushEntry(anLast, nLast - 1);
            cGrid.Remove(aComponents[i].m_dArea > aComponents[nNear].m_dArea ? nNear : i);
        }
    }
    unsigned long nEntry = 0;
    DropComponents(aComponents, [&](const Component&) { return cGrid.IsGone(nEntry++); });
    for (unsigned long n = anLast.Entries(); n > 0; --n)
    {
        aComponents[nEntries - n] = aComponents[anLast[n - 1]]; // which is no earlier entry, and not yet overwritten
    }
}

int HeightOf(const ClVector& cCenter)
{
    return CastSample<int>(cCenter.m_dY);
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
    KeepTopOfEachColumn(aSelected); // need not be repeated for five or more: nothing would be left to find
    ClearPalm(aSelected, nSecond);
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
    if (aSelected.m_pData == nullptr) // a count alone may be left of a failure
    {
        aSelected.New(nCandidates);
    }
    else if (aSelected.m_nEntries < nCandidates)
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
/// The column of a candidate is a span of the candidates in the order of x. It moves on with them, and with it goes a
/// list of those that are higher than all behind them, the first of them the highest.
void ClIpFourPrintSegmentation::KeepTopOfEachColumn(Marks_t& aSelected) const
{
    const unsigned long nCandidates = m_aCenters.Entries();
    TpArrayStatic<unsigned long> anByX(nCandidates);
    unsigned long nPlaced = 0;
    for (unsigned long i = 0; i < nCandidates; ++i)
    {
        if (!std::isnan(m_aCenters[i].m_dX) && !std::isnan(m_aCenters[i].m_dY)) // else it stands in no column
        {
            anByX[nPlaced++] = i;
        }
    }
    std::sort(anByX.m_pData, anByX.m_pData + nPlaced,
              [this](unsigned long i, unsigned long j) { return m_aCenters[i].m_dX < m_aCenters[j].m_dX; });
    TpArrayStatic<unsigned long> anTop(nCandidates);
    unsigned long nTop = 0;    // the list is anTop from here
    unsigned long nTopEnd = 0; // to here
    unsigned long nNext = 0;   // the first candidate beyond the span
    for (unsigned long i = 0; i < nPlaced; ++i)
    {
        const ClVector& cCenter = m_aCenters[anByX[i]];
        for (; nNext < nPlaced && cCenter.m_dX > m_aCenters[anByX[nNext]].m_dX - dColumn; ++nNext)
        {
            while (nTopEnd > nTop && m_aCenters[anTop[nTopEnd - 1]].m_dY <= m_aCenters[anByX[nNext]].m_dY)
            {
                --nTopEnd;
            }
            anTop[nTopEnd++] = anByX[nNext];
        }
        while (nTop < nTopEnd && !(cCenter.m_dX < m_aCenters[anTop[nTop]].m_dX + dColumn))
        {
            ++nTop;
        }
        if (nTop < nTopEnd && cCenter.m_dY < m_aCenters[anTop[nTop]].m_dY)
        {
            aSelected[anByX[i]] = 0;
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
