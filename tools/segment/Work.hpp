#pragma once

#include "InputList.hpp"
#include "Options.hpp"
#include "Result.hpp"

namespace SegmentTool
{
/// The road of one picture, apart from all others: reading, segmentation, and what comes of it in memory. For any
/// thread; touches nothing but the file that it reads.
/// No exception: whatever goes wrong with a picture is told in its result.
ClResult WorkOn(const ClInput& cInput, const ClOptions& cOptions);
} // namespace SegmentTool
