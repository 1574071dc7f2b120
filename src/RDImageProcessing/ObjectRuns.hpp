#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/TpArrayDynamic.hpp"

/// The four-connected objects of an image as runs of pixels within rows, which are far fewer than the pixels.
/// Input   one byte per column, see HasBytePerColumn; object pixels are 0.
/// Labels  from 1 in the order of the objects' first pixels, row 0 upwards, column 0 upwards.
/// Errors  ClExBadAlloc, also for more runs than an int can count.
/// Cost    linear in the bytes, 64 at a time, and in the runs. Runs that touch are joined in a forest of disjoint sets
///         (R. E. Tarjan, Efficiency of a good but not linear set union algorithm, Journal of the ACM 22, 1975), in
///         which the first run of a set is its root, so that numbering the roots gives the labels their order.
class ClObjectRuns
{
public:
    struct StRun
    {
        int nFirst; ///< column
        int nEnd;   ///< column behind the last
        int nLabel;
    };

    /// Replaces what was there. Returns the number of labels.
    int Find(const ClImage& cImage);
    void Clear(); ///< no runs, of no rows; the storage stays

    int Rows() const { return m_nRows; }
    /// The runs of row nY, from left to right, are FirstOfRow(nY) up to, but not including, FirstOfRow(nY + 1).
    const StRun* FirstOfRow(int nY) const { return m_aRuns.m_pData + m_anRow.m_pData[nY]; }

    /// fn(run, row) for every run, row by row.
    template <class Fn> void ForEach(Fn&& fn) const { ForEach(0, m_nRows, fn); }
    /// The same of the rows nFrom to nEnd - 1.
    template <class Fn> void ForEach(int nFrom, int nEnd, Fn&& fn) const
    {
        for (int y = nFrom; y < nEnd; ++y)
        {
            const StRun* const pEnd = FirstOfRow(y + 1);
            for (const StRun* p = FirstOfRow(y); p != pEnd; ++p)
            {
                fn(*p, y);
            }
        }
    }

    /// Writes the labels into an image of one int per column, and 0 into all other bytes of its rows.
    void Paint(ClImage& cLabels) const;

private:
    int Runs() const { return static_cast<int>(m_aRuns.m_nUsed); }
    void MakeRoom(const ClImage& cImage, int nY);
    void FindInRow(const ClImage& cImage, int nY);
    int Root(int nRun);
    int NumberRoots();

    TpArrayDynamic<StRun, 1> m_aRuns; ///< while Find runs, nLabel is an earlier run of the object, or the run itself
    TpArrayStatic<int> m_anRow;       ///< index of the first run of each row, and behind them the number of runs
    int m_nRows = 0;
};
