#pragma once

#include <cstddef>
#include <vector>

/// The answer to a block as a bitmap, worked out anew from what the interface promises about headers and sizes.
struct StBitmapFate
{
    long m_nCode = 0;    ///< of the checks that every mode does; 0: the picture below is segmented
    long m_nHeight = -1; ///< of the picture that the handle has taken over; -1: it keeps its former
    const unsigned char* m_pPixels = nullptr; ///< the first row
    long m_nWidth = 0;
    long m_nStride = 0;
    long m_nXRes = 0;
    long m_nYRes = 0;
};

StBitmapFate FateOf(const unsigned char* pBlock, std::size_t nSize);

/// What mode 0 answers before it looks for fingers: -13, -15, -14, in this order; 0: it looks.
long CheckOfFingers(const StBitmapFate& cFate);

/// The extent of an object, inclusive.
struct StObject
{
    long m_nArea;
    long m_nMinX;
    long m_nMaxX;
    long m_nMinY;
    long m_nMaxY;
};

/// The four-connected objects of a picture, which are what is not 255.
std::vector<StObject> ObjectsOf(const StBitmapFate& cFate);
