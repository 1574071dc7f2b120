#pragma once

#include "Picture.hpp"
#include "Result.hpp"

#include "RDTools/TpArrayDynamic.hpp"

namespace SegmentTool
{
/// The pictures of the fingers, in the order of the result's fingers.
using FingerImages_t = TpArrayDynamic<ClImage, 10>;

/// Runs the processor on a picture: the one that finds fingers, up to four of them and not only the two that the
/// library's handle hands out; or, for bBiggest, the one that cuts out the biggest object. Fills size, resolution,
/// hand, fingers and, if nothing is wrong, the outcome: too few if there are fewer than nExpect, none if there are
/// none. Errors: ClPictureError, with FailureOutcome's idea of the outcome; ClExBadAlloc. cResult keeps size and
/// resolution.
void Segment(ClPicture& cPicture, bool bBiggest, int nExpect, ClResult& cResult, FingerImages_t& aImages);

/// What became of a picture whose reading or segmentation ended with this number of the catalogue.
EOutcome FailureOutcome(long nCode, bool bWhileReading, bool bBiggest);
} // namespace SegmentTool
