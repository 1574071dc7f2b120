#include "RDImageProcessing/IpLookUpTableBase.hpp"

#include "SampleAccess.hpp"

#include <algorithm>

namespace
{
/// A table that no formula could guess, given from outside.
class ClRandomTable : public ClIpLookUpTableBase
{
public:
    void CalculateLuT() override
    {
        ++m_nCalculated;
        ClTestRandom cRandom(77);
        for (unsigned char& nEntry : m_aLuT)
        {
            nEntry = static_cast<unsigned char>(cRandom.Below(256));
        }
    }
    ClProcessorBase* Create() override { return NewProcessor<ClRandomTable>(); }
    const char* Name() const override { return "RandomTable"; }

    int m_nCalculated = 0;
};

/// Only the base's own operations.
class ClPlainTable : public ClIpLookUpTableBase
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClPlainTable>(); }
    const char* Name() const override { return "PlainTable"; }
};

ClImage& Mapped(const ClImage& cIn, const unsigned char* pTable, ClImage& cExpected)
{
    cExpected.New(cIn);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            for (int n = 0; n < cIn.m_nPlanes; ++n)
            {
                SetSample(cExpected, x, y, n, pTable[SampleAt<unsigned char>(cIn, x, y, n)]);
            }
        }
    }
    return cExpected;
}

TEST(IpLookUpTableBase, MapsEverySampleOfUpToFourPlanes)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        for (const int nPlanes : {1, 2, 3, 4})
        {
            ClRandomTable cTable;
            ClImage cIn(cSize.nWidth, cSize.nHeight, nPlanes, 100, 200), cOut, cExpected;
            FillRandom(cIn, 5);
            ASSERT_EQ(0, cTable.ApplyParam(cIn, cOut));
            Mapped(cIn, cTable.m_aLuT, cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
            EXPECT_EQ(200, cOut.m_nYRes);
            EXPECT_TRUE(cTable.m_bLuTValid);
            EXPECT_EQ(1, cTable.m_nCalculated) << "one table for all planes";
            EXPECT_EQ(&cIn, cTable.m_pInImage);
            EXPECT_EQ(&cOut, cTable.m_pOutImage);
            ASSERT_EQ(0, cTable.ApplyParam(cIn));
            EXPECT_TRUE(SamePixels(cExpected, cIn));
        }
    }
}

TEST(IpLookUpTableBase, InPlaceKeepsTheImageAndItsBuffer)
{
    ClImage cImage;
    FillRandom8(cImage, 13, 5, 2);
    cImage.m_nAttribute = 6;
    const unsigned char* pBuffer = cImage.Data();
    ClRandomTable cTable;
    ASSERT_EQ(0, cTable.ApplyParam(cImage));
    EXPECT_EQ(pBuffer, cImage.Data());
    EXPECT_EQ(6, cImage.m_nAttribute);
}

TEST(IpLookUpTableBase, OutputOfTheRightSizeKeepsItsBuffer)
{
    ClImage cIn, cOut(13, 5, 1, 0, 0);
    FillRandom8(cIn, 13, 5, 2);
    cIn.m_nAttribute = 6;
    const unsigned char* pBuffer = cOut.Data();
    ClRandomTable cTable;
    ASSERT_EQ(0, cTable.ApplyParam(cIn, cOut));
    EXPECT_EQ(pBuffer, cOut.Data());
    EXPECT_TRUE(SameDescription(cIn, cOut));
}

TEST(IpLookUpTableBase, SignedBytesGoThroughTheTableAsBytes)
{
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eSInt8, 13, 5, 1, 0, 0);
    FillRandom(cIn, 2);
    ClRandomTable cTable;
    ASSERT_EQ(0, cTable.ApplyParam(cIn, cOut));
    EXPECT_EQ(ClImage::eSInt8, cOut.m_eDataType);
    for (int x = 0; x < 13; ++x)
    {
        EXPECT_EQ(cTable.m_aLuT[SampleAt<unsigned char>(cIn, x, 4)], SampleAt<unsigned char>(cOut, x, 4));
    }
}

TEST(IpLookUpTableBase, BaseHasAnEmptyTableAndCalculatesNone)
{
    ClPlainTable cTable;
    EXPECT_FALSE(cTable.m_bLuTValid);
    EXPECT_TRUE(std::all_of(cTable.m_aLuT, cTable.m_aLuT + 256, [](unsigned char n) { return n == 0; }));
    cTable.m_aLuT[9] = 4;
    EXPECT_EQ(0, cTable.Initialize());
    cTable.SetParametersToDefault();
    EXPECT_EQ(4, cTable.m_aLuT[9]);
    EXPECT_FALSE(cTable.m_bLuTValid);
    ClImage cImage(1, 1, 1, 0, 0);
    SetSample<unsigned char>(cImage, 0, 0, 0, 9);
    ASSERT_EQ(0, cTable.ApplyParam(cImage));
    EXPECT_EQ(4, SampleAt<unsigned char>(cImage, 0, 0));
    EXPECT_TRUE(cTable.m_bLuTValid);
}

TEST(IpLookUpTableBase, RefusesMissingImagesLargerSamplesAndFivePlanes)
{
    ClRandomTable cTable;
    EXPECT_RAISES(cTable.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nm_pInImage is not set.");
    ClImage cIn(3, 3, 1, 0, 0), cOut;
    cTable.m_pInImage = &cIn;
    EXPECT_RAISES_CODE(cTable.Apply(), -37);
    cIn.NewWithType(ClImage::eUInt16, 3, 3, 1, 0, 0);
    EXPECT_EQ(-33, cTable.ApplyParam(cIn, cOut));
    ClImage cNoType;
    cNoType.NewWithType(0, 5, 4, 1, 0, 0);
    EXPECT_EQ(-33, cTable.ApplyParam(cNoType));
    for (const auto& [nWidth, nHeight] : {std::pair(5, 4), std::pair(5, 1), std::pair(1, 4)})
    {
        ClImage cNoPixels;
        cNoPixels.Attach(nullptr, ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
        EXPECT_EQ(-10, cTable.ApplyParam(cNoPixels));
    }
    ClImage cNotJoined(3, 3, 3, 0, 0);
    cNotJoined.m_eContent = ClImage::eCIELab;
    EXPECT_EQ(-35, cTable.ApplyParam(cNotJoined, cOut)) << "contents that cannot be joined";
    cIn.NewWithType(ClImage::eUInt8, 3, 3, 5, 0, 0);
    EXPECT_RAISES_CODE(cTable.ApplyParam(cIn, cOut), -35);
    EXPECT_EQ(&cIn, cTable.m_pInImage) << "the pointers are as before";
    EXPECT_EQ(&cOut, cTable.m_pOutImage);
}
} // namespace
