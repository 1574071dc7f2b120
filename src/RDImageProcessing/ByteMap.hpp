#pragma once

#include <cstddef>

/// Functions of one byte, applied to nBytes of them. Input and output are the same memory, or apart.
struct StByteMaps
{
    /// pOut[i] = pTable[pIn[i]], with a table of 256.
    void (*pThroughTable)(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes,
                          const unsigned char* pTable);
    /// pOut[i] = nLow where pIn[i] is at most nLastLow, else nHigh.
    void (*pStep)(const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nBytes, unsigned char nLastLow,
                  unsigned char nLow, unsigned char nHigh);
};

extern const StByteMaps g_cByteMapsAnywhere; ///< for any processor
/// The fastest on this processor, with the same results: AVX2 takes 32 bytes at a time, AVX-512 VBMI looks 64 up at
/// once.
const StByteMaps& ByteMaps();
