#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/WideVectors.hpp"

// The two costly steps of ClIpFilterMidRotating on 8-bit images for the one mask that runs use, many pixels at a time.
// Pixels and borders are as told there. Images are of one size, not narrower or lower than the mask.

constexpr int nFastMask = 5; ///< side of the mask

/// The mean absolute distance of the samples in each mask, clipped to the image, to the sample of cAvg in its middle,
/// truncated. cDev is not cIn.
/// Cost    25 minima per pixel: the distances |a - v| of n samples v to a add up to their sum + n a - 2 sum min(a, v).
/// Errors  ClExBadAlloc.
void FastMaskDeviations(const ClImage& cAvg, const ClImage& cIn, ClImage& cDev, bool bWideVectors = HasWideVectors());

/// For each pixel the sample of cAvg where cDev is smallest, at most half a mask away in each axis, by the rules of
/// ClIpFilterMidRotating::FindMinimum among equal ones. cOut is another image.
/// Cost    four comparisons down and four across per pixel.
/// Errors  ClExBadAlloc.
void FastMaskSearch(const ClImage& cDev, const ClImage& cAvg, ClImage& cOut, bool bWideVectors = HasWideVectors());
