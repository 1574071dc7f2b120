#include "RDTools/FpImage.hpp"

#include "FailingHeap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ImageChecks.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace
{
struct ClTypeFacts
{
    unsigned char m_eType;
    int m_nSize;
    bool m_bSigned;
    bool m_bFloat;
    double m_dBlack;
    double m_dWhite;
};

constexpr ClTypeFacts aTypes[] = {
    {1, 1, false, false, 0, 255},          {2, 2, false, false, 0, 65535},
    {4, 4, false, false, 0, 4294967295.0}, {129, 1, true, false, -128, 127},
    {130, 2, true, false, -32768, 32767},  {132, 4, true, false, -2147483648.0, 2147483647},
    {196, 4, true, true, -1, 1},           {200, 8, true, true, -1, 1},
};

TEST(FpImage, NewOneIsEmptyAndNotValid)
{
    const ClImage cImage;
    ExpectEmpty(cImage);
    EXPECT_FALSE(cImage.IsValid());
    EXPECT_RAISES(cImage.CheckValid(), ClException, -101,
                  "Internal error.\nClImage::IsValid. Unsigned require data range >= 0");
    static_assert(!std::is_copy_constructible_v<ClImage>);
    static_assert(std::has_virtual_destructor_v<ClImage>);
    const std::uint64_t nQuietNaN = 0x7ff8000000000000;
    EXPECT_EQ(0, std::memcmp(&nQuietNaN, &cImage.m_dBlack, sizeof nQuietNaN));
    EXPECT_EQ(0, std::memcmp(&nQuietNaN, &cImage.m_dWhite, sizeof nQuietNaN));
}

TEST(FpImage, TypesCarrySizeSignAndRange)
{
    for (const ClTypeFacts& cFacts : aTypes)
    {
        EXPECT_EQ(cFacts.m_nSize, ClImage::SampleSize(cFacts.m_eType));
        EXPECT_EQ(cFacts.m_bSigned, ClImage::IsSignedType(cFacts.m_eType));
        EXPECT_EQ(cFacts.m_bFloat, ClImage::IsFloatType(cFacts.m_eType));
        ClImage cImage;
        cImage.BlackWhiteFromType(cFacts.m_eType);
        EXPECT_EQ(cFacts.m_dBlack, cImage.m_dBlack) << +cFacts.m_eType;
        EXPECT_EQ(cFacts.m_dWhite, cImage.m_dWhite) << +cFacts.m_eType;
        const long nDispatched = DispatchSampleType(cFacts.m_eType, -1,
                                                    [](auto cTag)
                                                    {
                                                        using T = typename decltype(cTag)::Type;
                                                        return static_cast<long>(sizeof(T)) * 4 +
                                                               std::is_signed_v<T> * 2 + std::is_floating_point_v<T>;
                                                    });
        EXPECT_EQ(cFacts.m_nSize * 4 + cFacts.m_bSigned * 2 + cFacts.m_bFloat, nDispatched);
    }
    for (const int nType : {0, 3, 8, 136, 192, 255})
    {
        const auto eType = static_cast<unsigned char>(nType);
        ClImage cImage(1, 1, 1, 0, 0);
        cImage.BlackWhiteFromType(eType);
        EXPECT_TRUE(std::isnan(cImage.m_dBlack)) << +eType;
        EXPECT_TRUE(std::isnan(cImage.m_dWhite)) << +eType;
        EXPECT_EQ(-7, DispatchSampleType(eType, -7, [](auto) { return 0L; }));
    }
}

TEST(FpImage, ContentFollowsThePlanes)
{
    ClImage cImage;
    for (const auto& [nPlanes, eContent] :
         {std::pair(0, ClImage::eUnknown), std::pair(1, ClImage::eGrayscale), std::pair(2, ClImage::eUnknown),
          std::pair(3, ClImage::eRGB), std::pair(4, ClImage::eRGBA), std::pair(5, ClImage::eUnknown)})
    {
        cImage.ContentFromPlanes(nPlanes);
        EXPECT_EQ(eContent, cImage.m_eContent) << nPlanes;
    }
}

TEST(FpImage, RowsBeginOnFourByteBoundaries)
{
    ClImage cImage(5, 1, 1, 0, 0);
    EXPECT_EQ(8, cImage.Stride());
    cImage.NewWithType(1, 5, 1, 3, 0, 0);
    EXPECT_EQ(16, cImage.Stride());
    cImage.NewWithType(2, 5, 1, 3, 0, 0);
    EXPECT_EQ(32, cImage.Stride());
    cImage.NewWithType(200, 3, 2, 1, 0, 0);
    EXPECT_EQ(24, cImage.Stride());
    EXPECT_EQ(cImage.Data() + 24, reinterpret_cast<unsigned char*>(Row<double>(cImage, 1)));
    const ClImage& cConstant = cImage;
    EXPECT_EQ(cImage.Data() + 24, reinterpret_cast<const unsigned char*>(Row<double>(cConstant, 1)));
    EXPECT_EQ(4, ClImage::RowBytes(1, 0x40000001, 4)) << "32-bit arithmetic wraps";
}

TEST(FpImage, ConstructorMakesUnsignedBytes)
{
    const ClImage cImage(13, 5, 3, 100, 200);
    EXPECT_EQ(ClImage::eUInt8, cImage.DataType());
    EXPECT_EQ(13, cImage.Width());
    EXPECT_EQ(5, cImage.Height());
    EXPECT_EQ(3, cImage.Planes());
    EXPECT_EQ(100, cImage.XRes());
    EXPECT_EQ(200, cImage.YRes());
    EXPECT_EQ(ClImage::eRGB, cImage.Content());
    EXPECT_EQ(0.0, cImage.Black());
    EXPECT_EQ(255.0, cImage.White());
    EXPECT_EQ(0, cImage.Attribute());
    EXPECT_TRUE(cImage.IsValid());
    EXPECT_TRUE(cImage.CheckValid());
}

TEST(FpImage, InitializeDeleteAndDetachEmptyIt)
{
    for (void (ClImage::*pEmpty)() : {&ClImage::Initialize, &ClImage::Delete, &ClImage::Detach})
    {
        ClImage cImage(3, 3, 1, 1, 1), cOther;
        cImage.m_nAttribute = 5;
        cOther.Attach(cImage);
        (cImage.*pEmpty)();
        ExpectEmpty(cImage);
        EXPECT_EQ(1, cOther.m_pData.use_count());
        EXPECT_NE(nullptr, cOther.Data());
    }
}

TEST(FpImage, ImageWithoutAreaIsLegal)
{
    ClImage cImage(3, 3, 1, 0, 0);
    for (const auto& [nWidth, nHeight] : {std::pair(0, 0), std::pair(0, 5), std::pair(5, 0)})
    {
        cImage.NewWithType(1, nWidth, nHeight, 1, 0, 0);
        EXPECT_EQ(nullptr, cImage.Data());
        EXPECT_TRUE(cImage.IsValid());
    }
}

TEST(FpImage, NegativeAreaIsRefusedWithTheNewFieldsStanding)
{
    ClImage cImage(3, 3, 1, 0, 0);
    const unsigned char* pBlock = cImage.Data();
    EXPECT_RAISES(cImage.NewWithType(1, 10, -1, 1, 0, 0), ClException, -101,
                  "Internal error.\nImage area must be positive");
    EXPECT_EQ(10, cImage.m_nWidth);
    EXPECT_EQ(-1, cImage.m_nHeight);
    EXPECT_EQ(pBlock, cImage.Data());
    EXPECT_RAISES_CODE(cImage.NewWithType(1, -10, 1, 1, 0, 0), -101);
    EXPECT_RAISES_CODE(ClImage(10, -1, 1, 0, 0), -101);
}

TEST(FpImage, SizesThatWereRefusedAreNotTakenForTheSizeOfTheBlock)
{
    ClImage cImage(3, 3, 1, 0, 0);
    EXPECT_RAISES_CODE(cImage.NewWithType(1, -1000, -1000, 1, 0, 0), -101);
    cImage.NewWithType(1, 1000, 1000, 1, 0, 0); // the same product
    std::memset(cImage.Data(), 7, 1000 * 1000);
    EXPECT_EQ(7, Row<unsigned char>(cImage, 999)[999]);

    cImage.NewWithType(1, 3, 3, 1, 0, 0);
    EXPECT_RAISES_CODE(cImage.NewWithType(1, 0x7fffffff, -1, 1, 0, 0), -101); // the stride wraps to a negative one
    EXPECT_RAISES_CODE(cImage.NewWithType(1, -1000, -1000, 1, 0, 0), -101);
    EXPECT_RAISES_CODE(cImage.NewWithType(1, -1000, -1000, 1, 0, 0), -101);
}

TEST(FpImage, WithoutRowsNoWidthIsTooLarge)
{
    for (const int nWidth : {0x40000000, 0x40000001, 0x7fffffff}) // 4 samples of each make a stride of 0, 4 and -4
    {
        ClImage cImage;
        cImage.NewWithType(4, nWidth, 0, 1, 0, 0);
        EXPECT_EQ(nWidth, cImage.m_nWidth);
        EXPECT_EQ(nullptr, cImage.Data());
        EXPECT_TRUE(cImage.IsValid());
    }
    ClImage cImage(3, 3, 1, 0, 0);
    cImage.NewWithType(4, 0x40000001, 0, 1, 0, 0);
    EXPECT_EQ(nullptr, cImage.Data());
    EXPECT_RAISES_CODE(ClImage(3, 3, 1, 0, 0).NewWithType(1, 0x7fffffff, 0, 1, 0, 0), -101); // a negative stride
}

TEST(FpImage, SizeThatNoRowCanHoldIsBadAlloc)
{
    ClImage cImage(3, 3, 1, 0, 0);
    // 4 * 0x40000001 wraps to 4, 2 to the power of 33 to 0.
    EXPECT_RAISES_CODE(cImage.NewWithType(4, 0x40000001, 1, 1, 0, 0), -102);
    ExpectEmpty(cImage);
    EXPECT_RAISES_CODE(cImage.NewWithType(200, 0x40000000, 1, 1, 0, 0), -102);
    EXPECT_RAISES_CODE(cImage.NewWithType(1, 65536, 1, 65536, 0, 0), -102);
    ExpectEmpty(cImage);
}

TEST(FpImage, EqualByteSizeKeepsTheBlock)
{
    ClImage cImage(16, 6, 1, 0, 0);
    const unsigned char* pBlock = cImage.Data();
    std::memset(cImage.Data(), 7, 96);
    cImage.NewWithType(1, 8, 12, 1, 0, 0);
    EXPECT_EQ(pBlock, cImage.Data());
    cImage.NewWithType(2, 6, 2, 4, 0, 0); // 48 bytes a row
    EXPECT_EQ(pBlock, cImage.Data());
    EXPECT_EQ(7, cImage.Data()[95]) << "the contents stay";
    cImage.NewWithType(1, 13, 6, 1, 0, 0); // rows of 16 bytes again
    EXPECT_EQ(pBlock, cImage.Data());
    cImage.NewWithType(1, 17, 6, 1, 0, 0);
    EXPECT_EQ(17, cImage.m_nWidth);

    ClImage cShared;
    cShared.Attach(cImage);
    cImage.NewWithType(1, 17, 6, 1, 0, 0); // not the only holder
    EXPECT_NE(cShared.Data(), cImage.Data());
    EXPECT_EQ(1, cShared.m_pData.use_count());
}

TEST(FpImage, NewWithTypeOfAModelTakesAllButTypeAndRange)
{
    ClImage cModel(5, 3, 3, 10, 20), cImage;
    cModel.m_eContent = ClImage::eHSV;
    cModel.m_nAttribute = 9;
    cModel.m_dBlack = 3;
    cImage.NewWithType(cModel, ClImage::eSInt16);
    EXPECT_EQ(ClImage::eSInt16, cImage.m_eDataType);
    EXPECT_EQ(ClImage::eHSV, cImage.m_eContent);
    EXPECT_EQ(9, cImage.m_nAttribute);
    EXPECT_EQ(-32768.0, cImage.m_dBlack);
    EXPECT_EQ(32767.0, cImage.m_dWhite);
    EXPECT_EQ(5, cImage.m_nWidth);
    EXPECT_EQ(3, cImage.m_nHeight);
    EXPECT_EQ(3, cImage.m_nPlanes);
    EXPECT_EQ(10, cImage.m_nXRes);
    EXPECT_EQ(20, cImage.m_nYRes);
    EXPECT_RAISES(cImage.NewWithType(cImage, 1), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nthis function dose not work on the same image.");
}

TEST(FpImage, ResizeTakesTheRangeButNoAttribute)
{
    ClImage cModel(5, 3, 3, 10, 20), cImage;
    cModel.m_eContent = ClImage::eHSV;
    cModel.m_nAttribute = 9;
    cModel.m_dBlack = 3;
    cModel.m_dWhite = 77;
    cImage.m_nAttribute = 4;
    cImage.Resize(cModel, ClImage::eUInt16);
    EXPECT_EQ(ClImage::eUInt16, cImage.m_eDataType);
    EXPECT_EQ(ClImage::eHSV, cImage.m_eContent);
    EXPECT_EQ(4, cImage.m_nAttribute);
    EXPECT_EQ(3.0, cImage.m_dBlack);
    EXPECT_EQ(77.0, cImage.m_dWhite);
    EXPECT_EQ(20, cImage.m_nYRes);
    EXPECT_RAISES(cImage.Resize(cImage, 1), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nResize image with im self is senseless.");
}

TEST(FpImage, NewTakesEverythingButPixels)
{
    ClImage cModel, cImage;
    cModel.NewWithType(ClImage::eFloat32, 5, 3, 2, 10, 20);
    cModel.m_nAttribute = 9;
    cModel.m_dBlack = 0.25;
    cImage.New(cModel);
    EXPECT_TRUE(SameDescription(cModel, cImage));
    EXPECT_NE(cModel.Data(), cImage.Data());
    const unsigned char* pBlock = cImage.Data();
    cImage.New(cImage);
    EXPECT_EQ(pBlock, cImage.Data());
    EXPECT_TRUE(SameDescription(cModel, cImage));
}

TEST(FpImage, AssignmentCopiesDeeply)
{
    for (const ClTypeFacts& cFacts : aTypes)
    {
        for (const int nPlanes : {1, 3})
        {
            ClImage cSource, cImage;
            cSource.NewWithType(cFacts.m_eType, 5, 3, nPlanes, 10, 20);
            FillRandom(cSource, 3);
            cSource.m_dBlack = 1;
            cSource.m_dWhite = 2;
            cSource.m_nAttribute = 9;
            cImage = cSource;
            EXPECT_TRUE(SameDescription(cSource, cImage));
            EXPECT_TRUE(SamePixels(cSource, cImage));
            EXPECT_NE(cSource.Data(), cImage.Data());
            EXPECT_EQ(0, std::memcmp(cSource.Data(), cImage.Data(), static_cast<std::size_t>(cSource.Stride() * 3)))
                << "padding included";
        }
    }
}

TEST(FpImage, AssignmentOfItselfOrOfAViewOfItselfChangesNothing)
{
    ClImage cImage, cExpected;
    FillRandom8(cImage, 5, 3, 1);
    cExpected = cImage;
    const ClImage& cSame = cImage;
    cImage = cSame;
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    ClImage cView;
    cView.Attach(cImage);
    cImage = cView;
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_NE(cView.Data(), cImage.Data());
    cView.Attach(cImage.Data(), cImage); // borrows without a share
    cImage = cView;
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    cImage = ClImage();
    ExpectEmpty(cImage);
}

TEST(FpImage, ValidityIsTestedInOrder)
{
    const auto expect = [](auto&& change, const char* szText)
    {
        ClImage cImage(2, 2, 1, 0, 0);
        change(cImage);
        EXPECT_FALSE(cImage.IsValid());
        const std::string sText = std::string("Internal error.\n") + szText;
        EXPECT_RAISES(cImage.CheckValid(), ClException, -101, sText.c_str());
    };
    const char szSize[] = "ClImage::IsValid. Wrong width, height or dpi";
    expect([](ClImage& c) { c.m_nWidth = -1; }, szSize);
    expect([](ClImage& c) { c.m_nHeight = -1; }, szSize);
    expect([](ClImage& c) { c.m_nXRes = -1; }, szSize);
    expect([](ClImage& c) { c.m_nYRes = -1, c.m_dBlack = 300; }, szSize);
    const char szOrder[] = "ClImage::IsValid. value of Black should be < than value of White";
    expect([](ClImage& c) { c.m_dBlack = 256; }, szOrder);
    expect([](ClImage& c) { c.m_dBlack = -1, c.m_dWhite = -2; }, szOrder);
    const char szUnsigned[] = "ClImage::IsValid. Unsigned require data range >= 0";
    expect([](ClImage& c) { c.m_dBlack = -1; }, szUnsigned);
    expect([](ClImage& c) { c.m_dBlack = std::nan(""); }, szUnsigned);
    expect([](ClImage& c) { c.m_eDataType = ClImage::eUInt32, c.m_dBlack = -1; }, szUnsigned);
    const char szChar[] = "ClImage::IsValid. Char require data range 0...255";
    expect([](ClImage& c) { c.m_dBlack = 1; }, szChar);
    expect([](ClImage& c) { c.m_dWhite = 254; }, szChar);
    const char szSigned[] = "ClImage::IsValid. Signed Char require data range -128...127";
    expect([](ClImage& c) { c.m_eDataType = ClImage::eSInt8; }, szSigned);
    expect([](ClImage& c) { c.m_eDataType = ClImage::eSInt8, c.m_dBlack = -128; }, szSigned);
    expect([](ClImage& c) { c.m_eDataType = ClImage::eSInt8, c.m_dBlack = c.m_dWhite = std::nan(""); }, szSigned);
    expect([](ClImage& c) { c.m_eDataType = ClImage::eSInt8, c.m_dBlack = -128, c.m_dWhite = 126; }, szSigned);
}

TEST(FpImage, OtherTypesMayHaveAnyOrderedRange)
{
    ClImage cImage;
    for (const auto& [eType, dBlack, dWhite] :
         {std::tuple(ClImage::eUInt16, 5.0, 5.0), std::tuple(ClImage::eSInt16, -5.0, 5.0),
          std::tuple(ClImage::eDouble64, -1e9, 1e9), std::tuple(ClImage::eFloat32, std::nan(""), std::nan(""))})
    {
        cImage.NewWithType(eType, 2, 2, 1, 0, 0);
        cImage.m_dBlack = dBlack;
        cImage.m_dWhite = dWhite;
        EXPECT_TRUE(cImage.IsValid()) << +eType;
        EXPECT_TRUE(cImage.CheckValid()) << +eType;
    }
}

TEST(FpImage, PlanesCountForAnImageWithAreaOnly)
{
    ClImage cImage(2, 2, 1, 0, 0);
    for (const int nPlanes : {-1, 0, 5})
    {
        cImage.m_nPlanes = nPlanes;
        EXPECT_FALSE(cImage.IsValid());
        EXPECT_TRUE(cImage.CheckValid()) << "looks at no planes";
    }
    cImage.m_nPlanes = 4;
    EXPECT_TRUE(cImage.IsValid());
    cImage.m_nWidth = 0;
    cImage.m_nPlanes = 7;
    EXPECT_TRUE(cImage.IsValid());
    cImage.m_nWidth = cImage.m_nHeight = 65536; // the 32-bit area is 0
    EXPECT_TRUE(cImage.IsValid());
}

TEST(FpImage, SwapExchangesEverythingAndMovesNoPixels)
{
    ClImage cFirst(5, 3, 1, 10, 20), cSecond;
    cFirst.m_nAttribute = 1;
    const unsigned char* pBlock = cFirst.Data();
    ClImage cDescription;
    cDescription.New(cFirst);
    cFirst.Swap(cSecond);
    ExpectEmpty(cFirst);
    EXPECT_EQ(pBlock, cSecond.Data());
    EXPECT_TRUE(SameDescription(cDescription, cSecond));
    cSecond.Swap(cSecond);
    EXPECT_EQ(pBlock, cSecond.Data());
    EXPECT_EQ(1, cSecond.m_pData.use_count());
}

template <class T> void ExpectPlanes(unsigned char eType)
{
    ClImage cImage;
    cImage.NewWithType(eType, 5, 4, 3, 10, 20);
    FillRandom(cImage, 6);
    cImage.m_dBlack = 1;
    for (int nPlane = 0; nPlane < 3; ++nPlane)
    {
        ClImage cOut;
        cOut.m_nAttribute = 6;
        cImage.GetPlane(nPlane, cOut);
        EXPECT_EQ(ClImage::eGrayscale, cOut.m_eContent);
        EXPECT_EQ(eType, cOut.m_eDataType);
        EXPECT_EQ((5 * static_cast<int>(sizeof(T)) + 3) / 4 * 4, cOut.Stride());
        EXPECT_EQ(20, cOut.m_nYRes);
        EXPECT_EQ(6, cOut.m_nAttribute);
        ClImage cRange;
        cRange.BlackWhiteFromType(eType);
        EXPECT_EQ(cRange.m_dBlack, cOut.m_dBlack) << "the type's range";
        for (int y = 0; y < 4; ++y)
        {
            for (int x = 0; x < 5; ++x)
            {
                T tExpected, tOut;
                std::memcpy(&tExpected, Row<T>(cImage, y) + x * 3 + nPlane, sizeof(T));
                std::memcpy(&tOut, cOut.Data() + y * cOut.Stride() + x * static_cast<int>(sizeof(T)), sizeof(T));
                ASSERT_EQ(tExpected, tOut) << x << " " << y << " plane " << nPlane;
            }
        }
    }
}

TEST(FpImage, GetPlaneGathersTheSamplesOfOnePlane)
{
#define RD_EXPECT_PLANES(eCode, T) ExpectPlanes<T>(ClImage::eCode);
    RD_SAMPLE_TYPES(RD_EXPECT_PLANES)
#undef RD_EXPECT_PLANES
    ClImage cUnknown, cOut(2, 2, 1, 0, 0);
    cUnknown.GetPlane(0, cOut);
    EXPECT_EQ(2, cOut.m_nWidth) << "no type, no plane";
}

TEST(FpImage, GetPlaneCanReplaceTheImageItself)
{
    for (const int nPlanes : {1, 3})
    {
        ClImage cImage(5, 4, nPlanes, 10, 20), cExpected;
        FillRandom(cImage, 6);
        cImage.GetPlane(nPlanes - 1, cExpected);
        cImage.GetPlane(nPlanes - 1, cImage);
        EXPECT_TRUE(SamePixels(cExpected, cImage));
    }
}

TEST(FpImage, AreaWithoutPixelsHasNoneToCopy)
{
    ClImage cNoPixels, cCopy, cPlane;
    cNoPixels.Attach(nullptr, ClImage::eUInt8, 5, 4, 3, 10, 20);
    cCopy = cNoPixels;
    EXPECT_TRUE(SameDescription(cNoPixels, cCopy));
    EXPECT_NE(nullptr, cCopy.Data());
    cNoPixels.GetPlane(1, cPlane);
    EXPECT_EQ(5, cPlane.m_nWidth);
    EXPECT_EQ(4, cPlane.m_nHeight);
    EXPECT_EQ(1, cPlane.m_nPlanes);
}

TEST(FpImage, FillAligmentCountsPixelsNotBytes)
{
    // Meant: of a one-plane 8-bit image it fills exactly the padding, of any other it overwrites pixels.
    for (const int nPlanes : {1, 3})
    {
        ClImage cImage(5, 3, nPlanes, 0, 0);
        const int nStride = cImage.Stride();
        std::memset(cImage.Data(), 1, static_cast<std::size_t>(nStride * 3));
        cImage.FillAligment(0x1ab);
        for (int i = 0; i < nStride * 3; ++i)
        {
            ASSERT_EQ(i % nStride < 5 ? 1 : 0xab, cImage.Data()[i]) << i;
        }
    }
    ClImage cFull(8, 3, 1, 0, 0), cEmpty;
    std::memset(cFull.Data(), 1, 24);
    cFull.FillAligment(2);
    EXPECT_EQ(std::vector<unsigned char>(24, 1), std::vector<unsigned char>(cFull.Data(), cFull.Data() + 24));
    cFull.m_nHeight = -3;
    cFull.m_nWidth = 5;
    cFull.FillAligment(2);
    EXPECT_EQ(1, cFull.Data()[7]);
    cFull.m_nHeight = 3;
    cFull.m_nWidth = -5;
    cFull.FillAligment(2);
    EXPECT_EQ(std::vector<unsigned char>(24, 1), std::vector<unsigned char>(cFull.Data(), cFull.Data() + 24));
    cEmpty.FillAligment(2);
}

TEST(FpImage, EveryExhaustedHeapIsBadAllocAndLeavesAnEmptyImage)
{
    std::vector<unsigned char> aBuffer(1000);
    ClImage cModel(5, 3, 1, 0, 0);
    const auto expectEmptyAfterFailure = [](auto&& fn)
    {
        ClImage cImage(2, 2, 1, 0, 0);
        const long nFailed = ExpectBadAllocAtEveryAllocation(
            [&]
            {
                try
                {
                    fn(cImage);
                }
                catch (const ClException&)
                {
                    EXPECT_EQ(nullptr, cImage.Data());
                    EXPECT_EQ(0, cImage.m_nWidth);
                    EXPECT_EQ(0, cImage.m_nHeight);
                    throw;
                }
            });
        EXPECT_LT(0, nFailed);
    };
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([] { ClImage cImage; }));
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([] { ClImage cImage(5, 3, 1, 0, 0); }));
    expectEmptyAfterFailure([](ClImage& c) { c.NewWithType(1, 50, 3, 1, 0, 0); });
    expectEmptyAfterFailure([](ClImage& c) { c.NewWithType(1, 0, 3, 1, 0, 0); });
    expectEmptyAfterFailure([&](ClImage& c) { c = cModel; });
    expectEmptyAfterFailure([&](ClImage& c) { c.Attach(cModel); });
    expectEmptyAfterFailure([&](ClImage& c) { c.Attach(aBuffer.data(), 1, 50, 3, 1, 0, 0); });
}
} // namespace
