#include "RDImageProcessing/ObjectRuns.hpp"

#include "RDImageProcessing/ByteRuns.hpp"

#include <algorithm>
#include <limits>

namespace
{
constexpr unsigned char nObject = 0;
constexpr std::int64_t nUsualRuns = 8; // in a row; more of them on average are counted before they are stored
constexpr std::int64_t nMostRuns = std::numeric_limits<int>::max();

std::int64_t MostRunsInRow(const ClImage& cImage)
{
    return (std::int64_t{cImage.m_nWidth} + 1) / 2;
}

std::int64_t CountRuns(const ClImage& cImage, int nFromRow)
{
    std::int64_t nRuns = 0;
    for (int y = nFromRow; y < cImage.m_nHeight; ++y)
    {
        ForEachRun(Row<unsigned char>(cImage, y), cImage.m_nWidth, 0, cImage.m_nWidth, nObject,
                   [&nRuns](long, long) { ++nRuns; });
    }
    return nRuns;
}
} // namespace

void ClObjectRuns::Clear()
{
    m_nRows = 0;
    m_aRuns.Clear();
}

int ClObjectRuns::Find(const ClImage& cImage)
{
    Clear();
    const unsigned long nRowEntries = static_cast<unsigned long>(cImage.m_nHeight) + 1;
    if (m_anRow.m_pData == nullptr || m_anRow.Entries() < nRowEntries) // a count alone may be left of a failure
    {
        m_anRow.New(nRowEntries);
    }
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        MakeRoom(cImage, y);
        m_anRow[static_cast<unsigned long>(y)] = Runs();
        FindInRow(cImage, y);
    }
    m_nRows = cImage.m_nHeight;
    m_anRow[nRowEntries - 1] = Runs();
    return NumberRoots();
}

/// Room for all runs of row nY. At most two enlargements for an image: the usual number, then all that is still needed.
void ClObjectRuns::MakeRoom(const ClImage& cImage, int nY)
{
    const std::int64_t nMost = MostRunsInRow(cImage);
    const std::int64_t nRoom = static_cast<std::int64_t>(m_aRuns.m_nEntries);
    if (Runs() + nMost <= nRoom)
    {
        return;
    }
    std::int64_t nNeeded = 0;
    if (nY == 0)
    {
        nNeeded = std::min<std::int64_t>(nMost + std::min(nMost, nUsualRuns) * cImage.m_nHeight, nMostRuns);
    }
    else
    {
        nNeeded = Runs() + CountRuns(cImage, nY) + nMost;
        if (nNeeded > nMostRuns)
        {
            ThrowBadAlloc();
        }
    }
    m_aRuns.Enlarge(static_cast<unsigned long>(nNeeded - nRoom));
}

/// Adds the runs of a row, each with a run of the same object that is known so far.
void ClObjectRuns::FindInRow(const ClImage& cImage, int nY)
{
    StRun* const pRuns = m_aRuns.m_pData;
    int nAbove = nY == 0 ? 0 : m_anRow[static_cast<unsigned long>(nY) - 1];
    const int nAboveEnd = Runs();
    int nRun = nAboveEnd;
    ForEachRun(Row<unsigned char>(cImage, nY), cImage.m_nWidth, 0, cImage.m_nWidth, nObject,
               [&](long nFirst, long nEnd)
               {
                   int nRoot = nRun;
                   while (nAbove < nAboveEnd && pRuns[nAbove].nEnd <= nFirst)
                   {
                       ++nAbove;
                   }
                   for (int i = nAbove; i < nAboveEnd && pRuns[i].nFirst < nEnd; ++i)
                   {
                       const int nOther = Root(i);
                       if (nRoot != nRun)
                       {
                           pRuns[std::max(nRoot, nOther)].nLabel = std::min(nRoot, nOther);
                       }
                       nRoot = std::min(nRoot, nOther);
                   }
                   pRuns[nRun] = {static_cast<int>(nFirst), static_cast<int>(nEnd), nRoot};
                   ++nRun;
               });
    m_aRuns.m_nUsed = static_cast<unsigned long>(nRun);
}

/// The first run of the object as it is known, to which the way is halved for the next time.
int ClObjectRuns::Root(int nRun)
{
    StRun* const pRuns = m_aRuns.m_pData;
    while (pRuns[nRun].nLabel != nRun)
    {
        const int nNext = pRuns[pRuns[nRun].nLabel].nLabel;
        pRuns[nRun].nLabel = nNext;
        nRun = nNext;
    }
    return nRun;
}

/// Puts labels in place of the runs that stood for them. An earlier run always has its label already.
int ClObjectRuns::NumberRoots()
{
    StRun* const pRuns = m_aRuns.m_pData;
    int nLabels = 0;
    for (int i = 0; i < Runs(); ++i)
    {
        pRuns[i].nLabel = pRuns[i].nLabel == i ? ++nLabels : pRuns[pRuns[i].nLabel].nLabel;
    }
    return nLabels;
}

void ClObjectRuns::Paint(ClImage& cLabels) const
{
    const std::ptrdiff_t nRowInts = cLabels.Stride() / static_cast<std::ptrdiff_t>(sizeof(int));
    for (int y = 0; y < cLabels.m_nHeight; ++y)
    {
        int* const pRow = Row<int>(cLabels, y);
        int* pNext = pRow;
        if (y < m_nRows)
        {
            ForEach(y, y + 1,
                    [&](const StRun& cRun, int)
                    {
                        std::fill(pNext, pRow + cRun.nFirst, 0);
                        std::fill(pRow + cRun.nFirst, pRow + cRun.nEnd, cRun.nLabel);
                        pNext = pRow + cRun.nEnd;
                    });
        }
        std::fill(pNext, pRow + nRowInts, 0);
    }
}
