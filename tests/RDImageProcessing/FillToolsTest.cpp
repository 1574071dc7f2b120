#include "RDImageProcessing/FillTools.hpp"

#include <gtest/gtest.h>

TEST(FillTools, TheStackGivesBackInReverseOrder)
{
    TpArrayDynamic<int, 100> aStack;
    for (int i = 0; i < 5000; ++i)
    {
        PushEntry(aStack, i);
    }
    for (int i = 4999; i >= 0; --i)
    {
        ASSERT_EQ(i, PopEntry(aStack));
    }
    EXPECT_EQ(0u, aStack.Entries());
}

TEST(FillTools, TheStackGrowsByItsStepFirstAndByHalfLater)
{
    TpArrayDynamic<int, 100> aStack;
    unsigned long nCapacity = 0;
    unsigned long nGrowths = 0;
    for (int i = 0; i < 100000; ++i)
    {
        PushEntry(aStack, i);
        if (aStack.m_nEntries != nCapacity)
        {
            if (nCapacity <= 200)
            {
                EXPECT_EQ(nCapacity + 100, aStack.m_nEntries);
            }
            nCapacity = aStack.m_nEntries;
            ++nGrowths;
        }
    }
    EXPECT_LE(nGrowths, 20u);
    EXPECT_LE(nCapacity, 150000u);
}

TEST(FillTools, KnowsImagesWithoutAByteForEachColumn)
{
    ClImage cImage;
    EXPECT_FALSE(HasBytePerColumn(cImage));
    for (const int nPlanes : {1, 3})
    {
        cImage.NewWithType(ClImage::eUInt8, 5, 2, nPlanes, 0, 0);
        EXPECT_TRUE(HasBytePerColumn(cImage));
    }
    cImage.NewWithType(ClImage::eDouble64, 5, 2, 1, 0, 0);
    EXPECT_TRUE(HasBytePerColumn(cImage));
    unsigned char acBytes[4] = {};
    cImage.Attach(acBytes, ClImage::eUInt8, 5, 2, 0, 0, 0);
    EXPECT_FALSE(HasBytePerColumn(cImage));
}
