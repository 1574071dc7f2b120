#include "RDImageProcessing/IpFloodFill.hpp"

#include "BinaryPictures.hpp"
#include "FailingHeap.hpp"
#include "RDTools/ErrorCatalogue.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>
#include <limits>
#include <memory>

namespace
{
/// fn(image, x, y): pictures of few values, each with several start points.
template <class Fn> void ForEachStart(Fn&& fn)
{
    unsigned int nSeed = 1;
    for (const ClTestSize& cSize : aTestSizes)
    {
        for (const int nValues : {1, 2, 3})
        {
            ClTestRandom cRandom(nSeed);
            ClImage cImage;
            FillRandom8(cImage, cSize.nWidth, cSize.nHeight, nSeed++);
            for (std::ptrdiff_t i = 0; i < cImage.Stride() * cSize.nHeight; ++i)
            {
                cImage.Data()[i] = static_cast<unsigned char>(cImage.Data()[i] % nValues + 40);
            }
            for (int i = 0; i < 6; ++i)
            {
                const int nX = cRandom.Below(cSize.nWidth);
                const int nY = cRandom.Below(cSize.nHeight);
                SCOPED_TRACE(std::to_string(cSize.nWidth) + " by " + std::to_string(cSize.nHeight) + ", " +
                             std::to_string(nValues) + " values, from " + std::to_string(nX) + ", " +
                             std::to_string(nY));
                fn(cImage, nX, nY);
            }
        }
    }
}

void FillByDefinition(ClImage& cImage, int nX, int nY, unsigned char nColor)
{
    for (const auto& [x, y] : RegionOf(cImage, nX, nY))
    {
        SetSample(cImage, x, y, 0, nColor);
    }
}

/// Every region of 255 becomes its size, or 254.
void CountByDefinition(ClImage& cImage, long nThresh)
{
    ClImage cOriginal;
    cOriginal = cImage;
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            if (SampleAt<unsigned char>(cImage, x, y) == 255)
            {
                const long nCount = static_cast<long>(RegionOf(cOriginal, x, y).size());
                FillByDefinition(cImage, x, y,
                                 nCount < std::min(nThresh, 254L) ? static_cast<unsigned char>(nCount) : 254);
            }
        }
    }
}
} // namespace

TEST(IpFloodFill, FillsTheRegionOfTheStartPoint)
{
    ForEachStart(
        [](ClImage& cImage, int nX, int nY)
        {
            ClImage cExpected;
            cExpected = cImage;
            FillByDefinition(cExpected, nX, nY, 7);
            ClIpFloodFill cFill;
            cFill.m_nFillColor = 7;
            cFill.m_nStartX = nX;
            cFill.m_nStartY = nY;
            ClImage cOut;
            cFill.m_pInImage = &cImage;
            cFill.m_pOutImage = &cOut;
            ASSERT_EQ(0, cFill.Apply());
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_TRUE(SameDescription(cExpected, cOut));
            EXPECT_NE(7, SampleAt<unsigned char>(cImage, nX, nY)); // the input is only read
            ClImage cInPlace;
            cInPlace = cImage;
            cFill.FloodFill(cInPlace);
            EXPECT_TRUE(SamePixels(cExpected, cInPlace));
        });
}

TEST(IpFloodFill, WithoutAnOutputOrWithTheInputAsOneItWorksInPlace)
{
    for (const bool bSame : {false, true})
    {
        ClImage cImage;
        PaintText(cImage, {"112", "122", "111"});
        ClIpFloodFill cFill;
        cFill.m_nFillColor = 9;
        cFill.m_pInImage = &cImage;
        cFill.m_pOutImage = bSame ? &cImage : nullptr;
        const unsigned char* pBlock = cImage.Data();
        ASSERT_EQ(0, cFill.Apply());
        EXPECT_EQ(pBlock, cImage.Data());
        ClImage cExpected;
        PaintText(cExpected, {"992", "922", "999"});
        EXPECT_TRUE(SamePixels(cExpected, cImage));
    }
}

TEST(IpFloodFill, OneColourFillsTheWholeOfALabyrinth)
{
    ClImage cImage(201, 201, 1, 0, 0);
    std::memset(cImage.Data(), 1, 204 * 201);
    for (int y = 1; y < 201; y += 2) // walls with one gap, left and right in turn
    {
        for (int x = 0; x < 201; ++x)
        {
            if (x != (y % 4 == 1 ? 200 : 0))
            {
                SetSample<unsigned char>(cImage, x, y, 0, 2);
            }
        }
    }
    ClImage cExpected;
    cExpected = cImage;
    FillByDefinition(cExpected, 0, 0, 3);
    ClIpFloodFill cFill;
    cFill.m_nFillColor = 3;
    cFill.FloodFill(cImage);
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_EQ(3, SampleAt<unsigned char>(cImage, 200, 200));
}

TEST(IpFloodFill, AStartOfTheFillColourChangesNothing)
{
    ClImage cImage;
    PaintText(cImage, {"112", "122"});
    ClImage cExpected;
    cExpected = cImage;
    ClIpFloodFill cFill;
    cFill.m_nFillColor = 1;
    cFill.m_nStartX = 1;
    cFill.FloodFill(cImage);
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    ClIpFloodFill::StBoundingBox cBox = {};
    cFill.m_pBoundingBox = &cBox;
    cFill.BoundingBoxFill(cImage);
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_EQ(1, cBox.nCount);
    EXPECT_EQ(1, cBox.nMinX);
    EXPECT_EQ(1, cBox.nMaxX);
    EXPECT_EQ(0, cBox.nMinY);
    EXPECT_EQ(0, cBox.nMaxY);
}

TEST(IpFloodFill, AStartOutsideOfTheImageFillsNothing)
{
    const long nHuge = std::numeric_limits<long>::max();
    for (const auto& [nX, nY] : {std::pair(-1L, 0L), std::pair(3L, 0L), std::pair(0L, -1L), std::pair(0L, 2L),
                                 std::pair(nHuge, nHuge), std::pair(-nHuge, -nHuge)})
    {
        ClGuardedBytes cBytes(8);
        ClImage cImage;
        cImage.Attach(cBytes.Data(), ClImage::eUInt8, 3, 2, 1, 0, 0);
        ClIpFloodFill cFill;
        cFill.m_nFillColor = 5;
        cFill.m_nStartX = nX;
        cFill.m_nStartY = nY;
        cFill.FloodFill(cImage);
        ClIpFloodFill::StBoundingBox cBox = {};
        cFill.m_pBoundingBox = &cBox;
        cFill.BoundingBoxFill(cImage);
        EXPECT_EQ(1, cBox.nCount);
        for (int i = 0; i < 8; ++i)
        {
            EXPECT_EQ(0, cBytes.Data()[i]);
        }
    }
}

TEST(IpFloodFill, TheBoxHoldsTheRegionAndCountsItsStartTwice)
{
    ForEachStart(
        [](ClImage& cImage, int nX, int nY)
        {
            ClImage cExpected;
            cExpected = cImage;
            FillByDefinition(cExpected, nX, nY, 7);
            long nMinX = nX, nMaxX = nX, nMinY = nY, nMaxY = nY;
            const std::vector<Pixel> aRegion = RegionOf(cImage, nX, nY);
            for (const auto& [x, y] : aRegion)
            {
                nMinX = std::min<long>(nMinX, x);
                nMaxX = std::max<long>(nMaxX, x);
                nMinY = std::min<long>(nMinY, y);
                nMaxY = std::max<long>(nMaxY, y);
            }
            ClImage cOut;
            ClIpFloodFill::StBoundingBox cBox;
            ClIpFloodFill cFill;
            cFill.m_nFillColor = 7;
            cFill.m_nCountThresh = 10; // the box goes before
            cFill.m_nStartX = nX;
            cFill.m_nStartY = nY;
            cFill.m_pInImage = &cImage;
            cFill.m_pOutImage = &cOut;
            cFill.m_pBoundingBox = &cBox;
            ASSERT_EQ(0, cFill.Apply());
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_EQ(nMinX, cBox.nMinX);
            EXPECT_EQ(nMaxX, cBox.nMaxX);
            EXPECT_EQ(nMinY, cBox.nMinY);
            EXPECT_EQ(nMaxY, cBox.nMaxY);
            EXPECT_EQ(static_cast<long>(aRegion.size()) + 1, cBox.nCount);
        });
}

TEST(IpFloodFill, ABoxFillWithoutABoxOnlyFills)
{
    ClImage cImage;
    PaintText(cImage, {"112"});
    ClIpFloodFill cFill;
    cFill.m_nFillColor = 9;
    cFill.BoundingBoxFill(cImage);
    ClImage cExpected;
    PaintText(cExpected, {"992"});
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(IpFloodFill, CountingTagsWhiteRegionsByTheirSize)
{
    ForEachBinaryPicture(
        [](ClImage& cImage)
        {
            ClTestRandom cRandom(8);
            for (int y = 0; y < cImage.m_nHeight; ++y)
            {
                for (int x = 0; x < cImage.m_nWidth; ++x)
                {
                    if (cRandom.Below(10) == 0)
                    {
                        SetSample<unsigned char>(cImage, x, y, 0, x % 2 == 0 ? 254 : 3); // other values stay
                    }
                }
            }
            for (const long nThresh : {1L, 2L, 7L, 100L, 253L, 254L, 255L, 300L, -4L, 1L << 40})
            {
                SCOPED_TRACE(nThresh);
                ClImage cExpected;
                cExpected = cImage;
                CountByDefinition(cExpected, nThresh);
                ClImage cOut;
                ClIpFloodFill cFill;
                cFill.m_nCountThresh = nThresh;
                cFill.m_pInImage = &cImage;
                cFill.m_pOutImage = &cOut;
                ASSERT_EQ(0, cFill.Apply());
                EXPECT_TRUE(SamePixels(cExpected, cOut));
            }
        });
}

TEST(IpFloodFill, WithThreshold100AnIslandOf7Becomes7AndOneOf100Becomes254)
{
    ClImage cImage(30, 12, 1, 0, 0);
    std::memset(cImage.Data(), 0, 32 * 12);
    for (int i = 0; i < 7; ++i)
    {
        SetSample<unsigned char>(cImage, 1 + i, 1, 0, 255);
    }
    for (int i = 0; i < 100; ++i)
    {
        SetSample<unsigned char>(cImage, 15 + i % 10, 1 + i / 10, 0, 255);
    }
    ClIpFloodFill cFill;
    cFill.m_nCountThresh = 100;
    cFill.CountFill(cImage);
    for (int y = 0; y < 12; ++y)
    {
        for (int x = 0; x < 30; ++x)
        {
            const bool bSmall = y == 1 && x >= 1 && x < 8;
            const bool bLarge = y >= 1 && y < 11 && x >= 15 && x < 25;
            EXPECT_EQ(bSmall ? 7 : bLarge ? 254 : 0, SampleAt<unsigned char>(cImage, x, y));
        }
    }
}

TEST(IpFloodFill, CountingALargeRegionTakesNoMoreMemoryThanASmallOne)
{
    const auto greatest = [](int nRows)
    {
        ClImage cImage(4, nRows, 1, 0, 0);
        std::memset(cImage.Data(), 255, static_cast<std::size_t>(4 * nRows));
        ClIpFloodFill cFill;
        cFill.m_nCountThresh = 100;
        const ClLimitedHeap cHeap(std::size_t(1) << 24);
        cFill.CountFill(cImage);
        EXPECT_EQ(nRows < 25 ? 4 * nRows : 254, SampleAt<unsigned char>(cImage, 3, nRows - 1));
        return ClLimitedHeap::Greatest();
    };
    EXPECT_EQ(greatest(2), greatest(5000));
}

TEST(IpFloodFill, AThresholdAbove254ActsAs254)
{
    for (const int nPixels : {252, 253, 254, 255, 299})
    {
        ClImage cImage(300, 1, 1, 0, 0);
        std::memset(cImage.Data(), 0, 300);
        std::memset(cImage.Data(), 255, static_cast<std::size_t>(nPixels));
        ClIpFloodFill cFill;
        cFill.m_nCountThresh = 300;
        cFill.CountFill(cImage);
        EXPECT_EQ(nPixels < 254 ? nPixels : 254, SampleAt<unsigned char>(cImage, 0, 0));
        EXPECT_EQ(nPixels < 254 ? nPixels : 254, SampleAt<unsigned char>(cImage, nPixels - 1, 0));
        EXPECT_EQ(0, SampleAt<unsigned char>(cImage, nPixels, 0));
    }
}

TEST(IpFloodFill, OtherImagesAreFilledOneBytePerColumn)
{
    ClGuardedBytes cBytes(16 * 3);
    ClImage cImage;
    cImage.Attach(cBytes.Data(), ClImage::eUInt8, 5, 3, 3, 0, 0);
    ClIpFloodFill cFill;
    cFill.m_nFillColor = 4;
    cFill.FloodFill(cImage);
    for (int i = 0; i < 48; ++i)
    {
        EXPECT_EQ(i % 16 < 5 ? 4 : 0, cBytes.Data()[i]);
    }
    cFill.m_nCountThresh = 30;
    std::memset(cBytes.Data(), 255, 48);
    cFill.CountFill(cImage);
    for (int i = 0; i < 48; ++i)
    {
        EXPECT_EQ(i % 16 < 5 ? 15 : 255, cBytes.Data()[i]);
    }
}

TEST(IpFloodFill, AnImageWithoutPixelsIsNoTrap)
{
    ClImage cImage;
    ClIpFloodFill cFill;
    cFill.m_pInImage = &cImage;
    cFill.m_nFillColor = 1;
    EXPECT_EQ(0, cFill.Apply());
    cFill.m_nCountThresh = 1;
    EXPECT_EQ(0, cFill.Apply());
    cImage.NewWithType(ClImage::eUInt8, 5, 4, 0, 0, 0); // no planes
    EXPECT_EQ(0, cFill.Apply());
}

TEST(IpFloodFill, WithoutInputReportsTheMissingImage)
{
    ClImage cOut;
    ClIpFloodFill cFill;
    cFill.m_pOutImage = &cOut;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cFill.Apply());
}

TEST(IpFloodFill, PublishesItsParametersWithTheirDefaults)
{
    ClIpFloodFill cFill;
    EXPECT_EQ(nullptr, cFill.m_pBoundingBox);
    cFill.m_nCountThresh = 5;
    cFill.m_nFillColor = 6;
    cFill.m_nStartX = 7;
    cFill.m_nStartY = 8;
    ClParameterContainer cContainer;
    cFill.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutImage", "CountThresh", "FillColor", "StartX", "StartY"};
    ASSERT_EQ(6u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 6; ++i)
    {
        ClParameter* pParameter = cContainer.m_aChildren[i];
        EXPECT_STREQ(aszNames[i], pParameter->GetName());
        EXPECT_EQ(3, pParameter->m_nFlags);
        if (i >= 2)
        {
            EXPECT_EQ(static_cast<double>(i + 3), pParameter->GetNumericInterface()->GetNumber());
            EXPECT_EQ(0.0, pParameter->GetNumericInterface()->GetDefault());
        }
    }
    EXPECT_EQ(8, cFill.m_nStartY);
}

TEST(IpFloodFill, CreateMakesAnotherOfItsClass)
{
    ClIpFloodFill cFill;
    EXPECT_STREQ("ClIpFloodFill", cFill.Name());
    std::unique_ptr<ClProcessorBase> pOther(cFill.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpFloodFill*>(pOther.get()));
}
