#pragma once

#include "GuardedBytes.hpp"
#include "RDTools/Bitmap.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

/// The text of -12.
inline constexpr char szBadBitCount[] = "Pixel depth is invalid (see documentation).\n"
                                        "The Bitmap format does only support 1, 4, 8, 16, 24 and 32 bit counts!";

/// As a new bitmap is: nothing, and a count on either block.
inline void ExpectEmpty(const ClBitmap& cBitmap)
{
    EXPECT_EQ(nullptr, cBitmap.m_pBIH.get());
    EXPECT_EQ(nullptr, cBitmap.m_pPalette);
    EXPECT_EQ(nullptr, cBitmap.m_pPixels.get());
    EXPECT_EQ(1, cBitmap.m_pBIH.use_count());
    EXPECT_EQ(1, cBitmap.m_pPixels.use_count());
}

/// What CopyTo writes; nSize as the caller knows it.
inline ClGuardedVector Packed(const ClBitmap& cBitmap, std::size_t nSize)
{
    ClGuardedVector aBytes(nSize);
    cBitmap.CopyTo(aBytes.data());
    return aBytes;
}
