#pragma once

#include "RDTools/FpImage.hpp"

#include <gtest/gtest.h>

#include <cmath>

/// As a new image is: no field says anything, and there are no pixels.
inline void ExpectEmpty(const ClImage& cImage)
{
    EXPECT_EQ(0, cImage.m_eDataType);
    EXPECT_EQ(ClImage::eUnknown, cImage.m_eContent);
    EXPECT_EQ(0, cImage.m_nWidth);
    EXPECT_EQ(0, cImage.m_nHeight);
    EXPECT_EQ(0, cImage.m_nXRes);
    EXPECT_EQ(0, cImage.m_nYRes);
    EXPECT_EQ(0, cImage.m_nPlanes);
    EXPECT_EQ(0, cImage.m_nAttribute);
    EXPECT_TRUE(std::isnan(cImage.m_dBlack));
    EXPECT_TRUE(std::isnan(cImage.m_dWhite));
    EXPECT_EQ(nullptr, cImage.Data());
    EXPECT_EQ(1, cImage.m_pData.use_count());
}
