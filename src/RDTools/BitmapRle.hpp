#pragma once

#include "RDTools/Stream.hpp"

#include <cstddef>

/// The run-length code of 8-bit BMP files: pairs of a count and a value.
///
/// Runs       A count above 0: the value that many times. At the end of a line a run goes on at the next.
/// Marks      A count of 0 and the value 0: end of line; 1: end of bitmap; 2: a delta, two more bytes to the right and
///            downward in the order of the file.
/// Absolute   A count of 0 and a value from 3: bytes are taken one by one until the rows are full. Their number has
///            never ended them, so a file with them does not load.
/// End        The end-of-bitmap mark, or an end of line behind the last.
/// Errors     A run, delta or absolute byte behind the last line: ClException -38, as for more than 65536 deltas that
///            move nothing, which an endless stream could bring forever. The stream's own: -201 if its m_bCheckShort is
///            set, as it must be.
class ClBitmapRle
{
public:
    /// pFirst: the line that comes first; nStep: bytes from there to the next one; nWidth: bytes of a line; nLines: how
    /// many of them may be written.
    ClBitmapRle(unsigned char* pFirst, std::ptrdiff_t nStep, int nWidth, int nLines)
        : m_pLine(pFirst), m_nStep(nStep), m_nWidth(nWidth), m_nLines(nLines)
    {
    }

    /// Writes what the code says; other bytes of the lines stay.
    void Decode(ClStream& cStream);

private:
    void Put(unsigned char nValue);
    void TakeDelta(ClStream& cStream);
    bool StepLines(int nLines);

    unsigned char* m_pLine;
    std::ptrdiff_t m_nStep;
    int m_nWidth;
    int m_nLines;
    int m_nLine = 0;
    int m_nX = 0;
    int m_nIdleDeltas = 0;
};
