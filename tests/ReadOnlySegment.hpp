#pragma once

// How tests hand a bitmap to the library: between guard pages, where it cannot be written.

#include "GuardedBytes.hpp"
#include "VelmarinKormelinSegmentation.h"

/// KSSegmentBitmap on a block of which nSize bytes are told of.
inline long SegmentReadOnly(void* hSegmentation, const ClReadOnlyBytes& cInput, unsigned long nSize)
{
    return KSSegmentBitmap(hSegmentation, reinterpret_cast<const tagBITMAPINFOHEADER*>(cInput.Data()), nSize);
}

inline long SegmentReadOnly(void* hSegmentation, const ClReadOnlyBytes& cInput)
{
    return SegmentReadOnly(hSegmentation, cInput, cInput.Size());
}
