#pragma once

#include <cstdint>

/// The rectangle of the exported interface's world. Rows are counted as stored, and bitmaps are bottom-up, so in a
/// rectangle of this system top is larger than bottom.
struct tagRECT
{
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};
