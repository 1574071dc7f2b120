#include "RDTools/Bitmap.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ImageChecks.hpp"
#include "TestTools.hpp"

#include <memory>
#include <tuple>
#include <vector>

// Images over pixels that belong to others.

namespace
{
TEST(FpImageAttach, BorrowedBufferOfTheRightSizeIsWrittenInPlace)
{
    std::vector<unsigned char> aBuffer(8 * 3, 1);
    ClImage cImage;
    cImage.Attach(aBuffer.data(), 1, 5, 3, 1, 10, 20);
    EXPECT_EQ(aBuffer.data(), cImage.Data());
    EXPECT_EQ(10, cImage.m_nXRes);
    EXPECT_EQ(20, cImage.m_nYRes);
    EXPECT_EQ(ClImage::eGrayscale, cImage.m_eContent);
    EXPECT_EQ(255.0, cImage.m_dWhite);
    EXPECT_TRUE(cImage.IsValid());
    cImage.NewWithType(1, 8, 3, 1, 0, 0);
    EXPECT_EQ(aBuffer.data(), cImage.Data());
    cImage.NewWithType(1, 9, 3, 1, 0, 0);
    EXPECT_NE(aBuffer.data(), cImage.Data());
    EXPECT_EQ(std::vector<unsigned char>(24, 1), aBuffer);
}

TEST(FpImageAttach, AttachedImagesShareTheirPixels)
{
    auto pSource = std::make_unique<ClImage>(5, 3, 3, 10, 20);
    FillRandom(*pSource, 2);
    pSource->m_nAttribute = 3;
    ClImage cImage, cExpected;
    cExpected = *pSource;
    cImage.Attach(*pSource);
    EXPECT_TRUE(SameDescription(*pSource, cImage));
    EXPECT_EQ(pSource->Data(), cImage.Data());
    Row<unsigned char>(cImage, 2)[14] = 99;
    EXPECT_EQ(99, Row<unsigned char>(*pSource, 2)[14]);
    Row<unsigned char>(cExpected, 2)[14] = 99;
    pSource.reset();
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    cImage.Attach(cImage);
    ExpectEmpty(cImage);
}

TEST(FpImageAttach, AttachedMemoryIsDescribedAsItsModel)
{
    std::vector<short> aBuffer(6 * 2 * 3);
    ClImage cModel, cImage;
    cModel.NewWithType(ClImage::eSInt16, 5, 2, 3, 10, 20);
    cModel.m_dBlack = -7;
    cModel.m_nAttribute = 3;
    cImage.Attach(aBuffer.data(), cModel);
    EXPECT_TRUE(SameDescription(cModel, cImage));
    EXPECT_EQ(static_cast<void*>(aBuffer.data()), cImage.Data());
    cModel.Attach(aBuffer.data(), cModel); // the model is the image itself
    EXPECT_TRUE(SameDescription(cImage, cModel));
    EXPECT_EQ(static_cast<void*>(aBuffer.data()), cModel.Data());
}

TEST(FpImageAttach, BitmapsOfThreeDepthsCanBeAttached)
{
    for (const auto& [nBitCount, nPlanes, eContent] :
         {std::tuple(8, 1, ClImage::eGrayscale), std::tuple(24, 3, ClImage::eRGB), std::tuple(32, 4, ClImage::eRGBA)})
    {
        auto aBlock = PackedBitmap(13, 5, nBitCount);
        const ClBitmap cBitmap(aBlock.data(), true);
        ClImage cImage(2, 2, 1, 0, 0);
        cImage.m_nAttribute = 4;
        EXPECT_TRUE(cImage.Attach(cBitmap));
        EXPECT_EQ(ClImage::eUInt8, cImage.m_eDataType);
        EXPECT_EQ(13, cImage.m_nWidth);
        EXPECT_EQ(5, cImage.m_nHeight);
        EXPECT_EQ(nPlanes, cImage.m_nPlanes);
        EXPECT_EQ(eContent, cImage.m_eContent);
        EXPECT_EQ(19685, cImage.m_nXRes);
        EXPECT_EQ(19685, cImage.m_nYRes);
        EXPECT_EQ(0.0, cImage.m_dBlack);
        EXPECT_EQ(255.0, cImage.m_dWhite);
        EXPECT_EQ(0, cImage.m_nAttribute);
        EXPECT_EQ(cBitmap.m_pPixels.get(), cImage.Data());
        EXPECT_EQ(cBitmap.Stride(), cImage.Stride());
        EXPECT_EQ(2, cBitmap.m_pPixels.use_count());
    }
}

TEST(FpImageAttach, BitmapsThatAreNoRowsOfSamplesCannotBeAttached)
{
    ClImage cImage(2, 2, 1, 0, 0);
    for (const int nBitCount : {1, 4, 16})
    {
        auto aBlock = PackedBitmap(13, 5, nBitCount);
        const ClBitmap cBitmap(aBlock.data(), true);
        EXPECT_RAISES(cImage.Attach(cBitmap), ClException, -12,
                      "Pixel depth is invalid (see documentation).\nbitmap bit depth not supported\n");
        ExpectEmpty(cImage);
        cImage.NewWithType(1, 2, 2, 1, 0, 0);
        EXPECT_RAISES_CODE(cImage = cBitmap, -12);
        ExpectEmpty(cImage);
    }
    for (const int nCompression : {1, 2, 3})
    {
        auto aBlock = PackedBitmap(13, 5, 8, nCompression);
        const ClBitmap cBitmap(aBlock.data(), true);
        cImage.NewWithType(1, 2, 2, 1, 0, 0);
        EXPECT_FALSE(cImage.Attach(cBitmap));
        ExpectEmpty(cImage);
        cImage.NewWithType(1, 2, 2, 1, 0, 0);
        cImage = cBitmap;
        ExpectEmpty(cImage);
    }
    EXPECT_RAISES_CODE(cImage.Attach(ClBitmap()), -10);
}
} // namespace
