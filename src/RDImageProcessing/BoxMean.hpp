#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/WideVectors.hpp"

/// The odd widths of boxes that FastBoxMeans takes. The sums of smaller ones need no help, those of larger ones do not
/// fit twice 16 bits.
constexpr int nLeastFastBox = 5;
constexpr int nMostFastBox = 21;

/// The truncated mean of the 8-bit samples in the box of nWidth by nWidth around every pixel, clipped to the image,
/// which is not narrower or lower than the box. cOut has the size of cIn and is another image. What SumBoxes and a
/// division give, many pixels at a time.
/// Cost    per row, in vectors of 16-bit lanes: the sums of the columns slide down by a row, sums of neighbouring ones
///         double until they span half the box, and two multiplications divide.
/// Errors  ClExBadAlloc.
void FastBoxMeans(const ClImage& cIn, int nWidth, ClImage& cOut, bool bWideVectors = HasWideVectors());
