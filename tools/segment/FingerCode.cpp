#include "FingerCode.hpp"

#include <algorithm>
#include <cstddef>

namespace SegmentTool
{
namespace
{
constexpr const char* aszPositions[nMostPosition + 1] = {"undecided",   "right thumb",  "right index", "right middle",
                                                         "right ring",  "right little", "left thumb",  "left index",
                                                         "left middle", "left ring",    "left little"};

// Codes of the four places from left to right, by hand: undecided, right, left, thumbs.
constexpr int anCodes[4][4] = {{0, 0, 0, 0}, {2, 3, 4, 5}, {10, 9, 8, 7}, {6, 1, 0, 0}};
} // namespace

const char* PositionName(int nPosition)
{
    return aszPositions[nPosition >= 0 && nPosition <= nMostPosition ? nPosition : 0];
}

EHand HandFromNumber(int nHand)
{
    switch (nHand)
    {
    case 1: return EHand::eRight;
    case 2: return EHand::eLeft;
    case 3: return EHand::eThumbs;
    default: return EHand::eUndecided;
    }
}

std::vector<int> PositionCodes(EHand eHand, const bool (&abSlots)[4], int nFingers)
{
    std::vector<int> anPositions;
    for (std::size_t i = 0; i < 4; ++i)
    {
        if (abSlots[i]) anPositions.push_back(anCodes[static_cast<std::size_t>(eHand)][i]);
    }
    const auto nCount = static_cast<std::size_t>(std::max(0, nFingers));
    if (anPositions.size() != nCount) anPositions.assign(nCount, 0);
    return anPositions;
}
} // namespace SegmentTool
