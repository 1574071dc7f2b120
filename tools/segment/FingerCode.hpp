#pragma once

#include "Result.hpp"

#include <vector>

namespace SegmentTool
{
/// Friction ridge position codes of ANSI/NIST-ITL: 1 right thumb, 2 right index, 3 right middle, 4 right ring, 5 right
/// little, 6 left thumb, 7 left index to 10 left little; 0 unknown.
constexpr int nMostPosition = 10;

/// "right index" and so on; "undecided" for 0 and for numbers that are no code.
const char* PositionName(int nPosition);

/// The hand behind a number of the processor: 1 right, 2 left, 3 two thumbs, anything else undecided.
EHand HandFromNumber(int nHand);

/// Codes of nFingers fingers from left to right, from the four places that the processor filled. On a right hand the
/// places are index, middle, ring and little finger from left to right, on a left hand the reverse; of two thumbs the
/// first place is that of the left hand's, because the hands lie side by side with their backs up. The k-th finger
/// stands in the k-th place that is filled. All codes are 0 without a hand, and where places and fingers do not agree
/// in number.
std::vector<int> PositionCodes(EHand eHand, const bool (&abSlots)[4], int nFingers);
} // namespace SegmentTool
