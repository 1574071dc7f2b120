#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/TpArrayDynamic.hpp"

#include <algorithm>

// What the operators share that walk over regions of 8-bit images.

/// Whether each row holds a byte for each column, so that an image of any type can be walked as an 8-bit one.
inline bool HasBytePerColumn(const ClImage& cImage)
{
    return cImage.Data() != nullptr && cImage.Stride() >= cImage.m_nWidth;
}

/// Puts an entry on a growing array that serves as a stack. It grows by the array's own step while it is small, later
/// by half its size: a fixed step alone would copy the stack of a finely hatched picture thousands of times.
template <class T, unsigned long N> inline void PushEntry(TpArrayDynamic<T, N>& aStack, const T& cEntry)
{
    if (aStack.m_nUsed == aStack.m_nEntries)
    {
        aStack.Enlarge(std::max(N, aStack.m_nUsed / 2));
    }
    aStack.m_pData[aStack.m_nUsed++] = cEntry;
}

/// Takes the last entry from a stack that is not empty.
template <class T, unsigned long N> inline T PopEntry(TpArrayDynamic<T, N>& aStack)
{
    return aStack.m_pData[--aStack.m_nUsed];
}
