#include "KormelinSegmentationHandle.hpp"

#include "KormelinSegmentHandle.hpp"
#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace
{
using Block = ClGuardedVector;

constexpr char szNoImage[] = "The input image is not valid.";
constexpr char szPlanes[] = "Number of image planes is invalid. (see documentation).";
constexpr char szTooSmall[] = "The size of the finger template is not valid.";
constexpr char szOutOfRange[] = "One of the parameters is out of range.";
constexpr char szNoHandle[] = "The handle parameter is set to NULL.";

const tagBITMAPINFOHEADER* Header(const unsigned char* pBlock)
{
    return reinterpret_cast<const tagBITMAPINFOHEADER*>(pBlock);
}

/// A white 8-bit picture with a dark rectangle of columns nX0 to nX1 and rows nY0 to nY1, no two of its pixels alike in
/// a row.
Block Rectangle(int nWidth, int nHeight, int nX0, int nX1, int nY0, int nY1)
{
    Block aBlock = PackedBitmap(nWidth, nHeight, 8);
    const int nStride = (nWidth + 3) / 4 * 4;
    for (int y = 0; y < nHeight; ++y)
    {
        unsigned char* pRow = aBlock.data() + 1064 + static_cast<std::ptrdiff_t>(y) * nStride;
        for (int x = 0; x < nWidth; ++x)
        {
            const bool bInside = x >= nX0 && x <= nX1 && y >= nY0 && y <= nY1;
            pRow[x] = static_cast<unsigned char>(bInside ? (x * 7 + y * 3) % 200 : 255);
        }
    }
    return aBlock;
}

/// One object of 20 by 30 pixels: the rectangle of mode 1 is 5, 39, 24, 10.
Block OneObject()
{
    return Rectangle(50, 60, 5, 24, 10, 39);
}

Block Uniform(int nWidth, int nHeight)
{
    Block aBlock = PackedBitmap(nWidth, nHeight, 8);
    std::memset(aBlock.data() + 1064, 200, aBlock.size() - 1064);
    return aBlock;
}

/// A copy at a guard page, which cannot be written and is gone afterwards; the same at an odd address before.
void Segment(ClKormelinSegmentationHandle& cHandle, const Block& aBlock)
{
    for (const EGuard eGuard : {EGuard::eOdd, EGuard::eBehind})
    {
        const ClReadOnlyBytes cBytes(aBlock, eGuard);
        cHandle.SegmentBitmap(Header(cBytes.Data()), cBytes.Size());
    }
}

Block BitmapOf(ClKormelinSegmentHandle& cSegment)
{
    unsigned long nSize = ULONG_MAX;
    cSegment.GetBitmap(nullptr, &nSize);
    Block aBlock(nSize);
    cSegment.GetBitmap(reinterpret_cast<tagBITMAPINFOHEADER*>(aBlock.data()), &nSize);
    return aBlock;
}

std::vector<int> RectangleOf(const ClKormelinSegmentHandle& cSegment)
{
    return {cSegment.m_nX, cSegment.m_nY, cSegment.m_nWidth, cSegment.m_nHeight};
}

/// Cuts the biggest object.
class ClBiggest : public ClKormelinSegmentationHandle
{
public:
    ClBiggest() { SetPropertyLong("SegmentationMode", 1); }
};
} // namespace

// ---- properties

TEST(KormelinSegmentationHandle, BeginsWithoutSegments)
{
    ClKormelinSegmentationHandle cHandle;
    for (const char* szName : {"Count", "CoordinateOrigin", "SegmentationMode"})
    {
        long nValue = -77;
        cHandle.GetPropertyLong(szName, &nValue);
        EXPECT_EQ(0, nValue) << szName;
    }
    ClKormelinSegmentHandle cSegment;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 0, &cSegment), ClExVelmarin, -35, szOutOfRange);
    EXPECT_EQ(0, std::memcmp("KS", ClKormelinSegmentationHandle::m_szSignature, 3));
}

TEST(KormelinSegmentationHandle, PropertiesStandInTheirOrder)
{
    ClKormelinSegmentationHandle cHandle;
    std::vector<std::string> aNames;
    char szName[32];
    unsigned long nSize = sizeof szName;
    for (cHandle.PropertyEnumerateFirst(szName, &nSize); nSize != 0 && aNames.size() < 10;
         nSize = sizeof szName, cHandle.PropertyEnumerateNext(szName, &nSize))
    {
        aNames.push_back(szName);
    }
    EXPECT_EQ((std::vector<std::string>{"Version", "Count", "CoordinateOrigin", "SegmentationMode"}), aNames);
}

TEST(KormelinSegmentationHandle, AccessBytesAreThoseOfTheFamily)
{
    ClKormelinSegmentationHandle cHandle;
    cHandle.QueryPropertys();
    EXPECT_EQ(0x02, cHandle.m_pProperties->Find("Version")->m_nFlags);
    EXPECT_EQ(0x02, cHandle.m_pProperties->Find("Count")->m_nFlags);
    EXPECT_EQ(0x43, cHandle.m_pProperties->Find("CoordinateOrigin")->m_nFlags);
    EXPECT_EQ(0x43, cHandle.m_pProperties->Find("SegmentationMode")->m_nFlags);
    enumAccess_t eAccess = eAccessNone;
    cHandle.GetPropertyAccess("Version", &eAccess);
    EXPECT_EQ(eAccessRead, eAccess);
}

TEST(KormelinSegmentationHandle, CountIsAReadOnlyIntegerWithoutRange)
{
    ClKormelinSegmentationHandle cHandle;
    long nMin = 0;
    long nMax = 0;
    double dValue = 0.0;
    EXPECT_RAISES(cHandle.GetPropertyRangeLong("Count", &nMin, &nMax), ClExVelmarin, -103,
                  "The feature is currently not supported.");
    EXPECT_RAISES(cHandle.GetPropertyDouble("Count", &dValue), ClExVelmarin, -44,
                  "One(or more) parameter(s) is(are) invalid.");
    EXPECT_RAISES(cHandle.SetPropertyLong("Count", 1), ClExVelmarin, -47, "The requested parameter is read only.");
    EXPECT_EQ(0, cHandle.m_nCount);
}

TEST(KormelinSegmentationHandle, SwitchesAreZeroOrOne)
{
    ClKormelinSegmentationHandle cHandle;
    for (const auto& [szName, pnField] : {std::pair("SegmentationMode", &cHandle.m_nSegmentationMode),
                                          std::pair("CoordinateOrigin", &cHandle.m_nCoordinateOrigin)})
    {
        long nMin = -77;
        long nMax = -77;
        cHandle.GetPropertyRangeLong(szName, &nMin, &nMax);
        EXPECT_EQ(0, nMin);
        EXPECT_EQ(1, nMax);
        cHandle.SetPropertyLong(szName, 1);
        EXPECT_EQ(1, *pnField);
        const std::string sComment = std::string(szOutOfRange) + "\nValue out of range for parameter \"" + szName + '"';
        for (const long nBad : {2L, -1L, LONG_MAX, LONG_MIN})
        {
            EXPECT_RAISES(cHandle.SetPropertyLong(szName, nBad), ClExRange, -35, sComment.c_str());
            EXPECT_EQ(1, *pnField);
        }
        cHandle.SetProperty(szName, "0");
        EXPECT_EQ(0, *pnField);
        EXPECT_RAISES(cHandle.SetProperty(szName, "2"), ClExRange, -35, sComment.c_str());
        EXPECT_EQ(0, *pnField);
    }
}

TEST(KormelinSegmentationHandle, StoredDefaultIsTheValueWhenTheTreeWasBuilt)
{
    ClKormelinSegmentationHandle cHandle;
    cHandle.m_nSegmentationMode = 1;
    Segment(cHandle, OneObject()); // before the first property call
    cHandle.QueryPropertys();
    EXPECT_EQ("1", cHandle.m_pProperties->Find("Count")->GetDefaultValue());
    EXPECT_EQ("1", cHandle.m_pProperties->Find("SegmentationMode")->GetDefaultValue());
    EXPECT_EQ("0", cHandle.m_pProperties->Find("CoordinateOrigin")->GetDefaultValue());
}

// ---- what may come in

TEST(KormelinSegmentationHandle, NullBitmapChangesNothing)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    EXPECT_RAISES(cHandle.SegmentBitmap(nullptr, 100), ClExVelmarin, -10, szNoImage);
    EXPECT_EQ(60, cHandle.m_cImage.m_nHeight);
    EXPECT_EQ(1u, cHandle.m_aRectangles.Entries());
    EXPECT_EQ(1, cHandle.m_nCount);
}

TEST(KormelinSegmentationHandle, BlockIsNeverReadBeyondItsSize)
{
    const Block aBlock = OneObject();
    for (std::size_t nSize = 1; nSize <= aBlock.size(); nSize += nSize < 1100 ? 1 : 97)
    {
        ClKormelinSegmentationHandle cHandle;
        cHandle.m_nSegmentationMode = 1;
        const ClReadOnlyBytes cShort(aBlock.data(), nSize);
        EXPECT_RAISES(cHandle.SegmentBitmap(Header(cShort.Data()), nSize), ClExVelmarin, -21, szTooSmall);
    }
    ClBiggest cHandle;
    const ClReadOnlyBytes cWhole(aBlock.data(), aBlock.size());
    cHandle.SegmentBitmap(Header(cWhole.Data()), aBlock.size());
    EXPECT_EQ(1, cHandle.m_nCount);
    const ClReadOnlyBytes cShort(aBlock.data(), aBlock.size() - 1);
    EXPECT_RAISES(cHandle.SegmentBitmap(Header(cShort.Data()), aBlock.size() - 1), ClExVelmarin, -21, szTooSmall);
}

TEST(KormelinSegmentationHandle, BlockThatEndsWithItsColourTableHasNoPixels)
{
    const Block aBlock = OneObject();
    const ClReadOnlyBytes cShort(aBlock.data(), 1064);
    for (const long nMode : {0L, 1L})
    {
        ClBiggest cHandle;
        Segment(cHandle, aBlock);
        cHandle.m_nSegmentationMode = nMode;
        EXPECT_RAISES(cHandle.SegmentBitmap(Header(cShort.Data()), 1064), ClExVelmarin, -21, szTooSmall);
        EXPECT_EQ(1u, cHandle.m_aRectangles.Entries()); // the old results
    }
}

TEST(KormelinSegmentationHandle, PlanesAreTestedBeforeMissingPixels)
{
    Block aBlock = PackedBitmap(10, 10, 24);
    aBlock.resize(40);
    ClBiggest cHandle;
    EXPECT_RAISES(Segment(cHandle, aBlock), ClExVelmarin, -11, szPlanes);
}

TEST(KormelinSegmentationHandle, SizesThatWrapAreNotBelieved)
{
    Block aBlock = OneObject();
    PutLong(aBlock.data(), 4, 65536); // 65536 rows of 65536 bytes are 0 in 32 bits
    PutLong(aBlock.data(), 8, 65536);
    for (const long nMode : {0L, 1L})
    {
        ClKormelinSegmentationHandle cHandle;
        cHandle.m_nSegmentationMode = nMode;
        EXPECT_RAISES(Segment(cHandle, aBlock), ClExVelmarin, -21, szTooSmall);
    }
}

TEST(KormelinSegmentationHandle, FaultsOfTheHeaderPassThroughInTheirOrder)
{
    struct ClFault
    {
        std::size_t m_nOffset;
        unsigned short m_nValue;
        long m_nCode;
        const char* m_szText;
    };
    const ClFault aFaults[] = {
        {14, 9, -12,
         "Pixel depth is invalid (see documentation).\n"
         "The Bitmap format does only support 1, 4, 8, 16, 24 and 32 bit counts!"},
        {16, 4, -31, "The compression FOCC is not supported.\nClBitmap::Attach, Not Supported FOCC."},
        {12, 2, -11, "Number of image planes is invalid. (see documentation).\nClBitmap::Attach, pBI->biPlanes != 1."},
        {0, 41, -32, "The header size of the Bitmap is unknown.\nClBitmap::Attach, Bitmap Header size is not known."},
    };
    Block aBlock = OneObject();
    ClBiggest cHandle;
    Segment(cHandle, aBlock);
    for (const ClFault& c : aFaults) // each on top of those before, which are tested later
    {
        PutShort(aBlock.data(), c.m_nOffset, c.m_nValue);
        EXPECT_RAISES(Segment(cHandle, aBlock), ClException, c.m_nCode, c.m_szText);
        EXPECT_EQ(60, cHandle.m_cImage.m_nHeight); // the image of the last run stands
        EXPECT_EQ(1u, cHandle.m_aRectangles.Entries());
    }
}

TEST(KormelinSegmentationHandle, OtherDepthsAreRefused)
{
    ClBiggest cHandle;
    for (const int nBits : {1, 4, 16})
    {
        EXPECT_RAISES(Segment(cHandle, PackedBitmap(20, 20, nBits)), ClException, -12,
                      "Pixel depth is invalid (see documentation).\nbitmap bit depth not supported\n");
    }
    for (const int nBits : {24, 32})
    {
        EXPECT_RAISES(Segment(cHandle, PackedBitmap(20, 20, nBits)), ClExVelmarin, -11, szPlanes);
    }
    EXPECT_RAISES(Segment(cHandle, PackedBitmap(20, 20, 32, 3)), ClExVelmarin, -11, szPlanes);
    Block aCompressed = PackedBitmap(20, 20, 8);
    PutLong(aCompressed.data(), 16, 1);
    EXPECT_RAISES(Segment(cHandle, aCompressed), ClExVelmarin, -11, szPlanes);
}

TEST(KormelinSegmentationHandle, RefusedColourImageLeavesTheSegmentsButReplacesTheHeight)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    ClKormelinSegmentHandle cBefore;
    cHandle.GetSegment(&cHandle, 0, &cBefore);
    EXPECT_RAISES(Segment(cHandle, PackedBitmap(20, 100, 24)), ClExVelmarin, -11, szPlanes);
    EXPECT_EQ(1, cHandle.m_nCount);
    ClKormelinSegmentHandle cAfter;
    cHandle.GetSegment(&cHandle, 0, &cAfter);
    EXPECT_EQ(BitmapOf(cBefore), BitmapOf(cAfter));
    EXPECT_EQ(RectangleOf(cBefore), RectangleOf(cAfter));
    cHandle.SetPropertyLong("CoordinateOrigin", 1);
    cHandle.GetSegment(&cHandle, 0, &cAfter);
    EXPECT_EQ(100 - 39, cAfter.m_nY);
}

TEST(KormelinSegmentationHandle, SizeZeroTrustsTheHeader)
{
    const ClReadOnlyBytes cBlock(OneObject());
    ClBiggest cHandle;
    cHandle.SegmentBitmap(Header(cBlock.Data()), 0);
    EXPECT_EQ(1, cHandle.m_nCount);
}

TEST(KormelinSegmentationHandle, BmpFileInMemoryDoesAsWell)
{
    ClBiggest cHandle;
    const Block aFile = WithFileHeader(OneObject());
    const ClReadOnlyBytes cFile(aFile.data(), aFile.size());
    cHandle.SegmentBitmap(Header(cFile.Data()), aFile.size());
    ASSERT_EQ(1u, cHandle.m_aRectangles.Entries());
    EXPECT_EQ(5, cHandle.m_aRectangles[0].left);
    EXPECT_RAISES(cHandle.SegmentBitmap(Header(cFile.Data()), 10), ClExVelmarin, -10, szNoImage);
    EXPECT_RAISES(cHandle.SegmentBitmap(Header(cFile.Data()), 20), ClExVelmarin, -21, szTooSmall);
    EXPECT_RAISES(cHandle.SegmentBitmap(Header(cFile.Data()), 14 + 1064), ClExVelmarin, -21, szTooSmall);
}

// ---- the biggest object

TEST(KormelinSegmentationHandle, BiggestObjectIsOneSegment)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    EXPECT_EQ(1, cHandle.m_nCount);
    ASSERT_EQ(1u, cHandle.m_aRectangles.Entries());
    ASSERT_EQ(1u, cHandle.m_aImages.Entries());
    EXPECT_EQ(5, cHandle.m_aRectangles[0].left);
    EXPECT_EQ(24, cHandle.m_aRectangles[0].right); // one column short of the object
    EXPECT_EQ(10, cHandle.m_aRectangles[0].bottom);
    EXPECT_EQ(39, cHandle.m_aRectangles[0].top); // and one row

    const ClImage& cImage = cHandle.m_aImages[0];
    ASSERT_EQ(19, cImage.m_nWidth);
    ASSERT_EQ(29, cImage.m_nHeight);
    for (int y = 0; y < 29; ++y)
    {
        for (int x = 0; x < 19; ++x)
        {
            ASSERT_EQ(((x + 5) * 7 + (y + 10) * 3) % 200, Row<unsigned char>(cImage, y)[x]) << x << ", " << y;
        }
    }
}

TEST(KormelinSegmentationHandle, ImageWithoutObjectFailsAndTheNextRunDoesNot)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    Block aWhite = PackedBitmap(20, 20, 8);
    std::memset(aWhite.data() + 1064, 255, aWhite.size() - 1064);
    EXPECT_RAISES(Segment(cHandle, aWhite), ClException, -44, "One(or more) parameter(s) is(are) invalid.");
    EXPECT_EQ(0u, cHandle.m_aRectangles.Entries());
    EXPECT_EQ(0u, cHandle.m_aImages.Entries());
    EXPECT_EQ(1, cHandle.m_nCount); // of the run before; nothing clears it
    Segment(cHandle, OneObject());
    EXPECT_EQ(1u, cHandle.m_aRectangles.Entries());
}

TEST(KormelinSegmentationHandle, ObjectOfOneRowOrColumnFails)
{
    for (const Block& aLine : {Rectangle(30, 30, 4, 20, 7, 7), Rectangle(30, 30, 4, 4, 7, 20)})
    {
        ClBiggest cHandle;
        EXPECT_RAISES_CODE(Segment(cHandle, aLine), -35);
        EXPECT_EQ(0u, cHandle.m_aRectangles.Entries());
    }
}

// ---- fingers

TEST(KormelinSegmentationHandle, UniformImageHasNoFinger)
{
    ClKormelinSegmentationHandle cHandle;
    EXPECT_RAISES(Segment(cHandle, Uniform(200, 200)), ClExVelmarin, -15, "No Finger found in the image.");
    EXPECT_EQ(0, cHandle.m_nCount);
}

TEST(KormelinSegmentationHandle, InputIsTestedInTheOrderResolutionContentsSize)
{
    ClKormelinSegmentationHandle cHandle;
    Block aBlock = Uniform(100, 100);
    PutLong(aBlock.data(), 28, 3899);
    EXPECT_RAISES(Segment(cHandle, aBlock), ClExVelmarin, -13, "Pels are not in a valid range (see documentation).");
    EXPECT_RAISES(Segment(cHandle, Uniform(100, 100)), ClExVelmarin, -15, "No Finger found in the image.");
    EXPECT_RAISES(Segment(cHandle, OneObject()), ClExVelmarin, -14, "The image is too small or too big.");
}

TEST(KormelinSegmentationHandle, ImageWithoutBoxIsASuccessWithoutSegments)
{
    ClKormelinSegmentationHandle cHandle;
    Block aBlock = Uniform(400, 400);
    PutLong(aBlock.data(), 24, 3937);
    PutLong(aBlock.data(), 28, 3937);
    aBlock[1064 + 200 * 400 + 200] = 199; // a speck
    Segment(cHandle, aBlock);
    EXPECT_EQ(0, cHandle.m_nCount);
    ClKormelinSegmentHandle cSegment;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 0, &cSegment), ClExVelmarin, -35, szOutOfRange);
}

TEST(KormelinSegmentationHandle, TwoFingersAreTakenOverFromTheProcessor)
{
    Block aBlock = ClSlapPicture(SlapScenes::TwoFingers(19685)).Block();
    ClKormelinSegmentationHandle cHandle;
    Segment(cHandle, aBlock);
    ASSERT_EQ(2, cHandle.m_nCount);
    ASSERT_EQ(2u, cHandle.m_aRectangles.Entries());
    ASSERT_EQ(2u, cHandle.m_aImages.Entries());

    ClBitmap cBitmap;
    cBitmap.Attach(aBlock.data(), aBlock.size());
    ClImage cImage;
    cImage.Attach(cBitmap);
    ClIpFourPrintSegmentation cProcessor;
    cProcessor.m_pInImage = &cImage;
    ASSERT_EQ(0, cProcessor.Apply());
    for (unsigned long i = 0; i < 2; ++i)
    {
        EXPECT_EQ(0, std::memcmp(&cProcessor.m_aRects[i], &cHandle.m_aRectangles[i], sizeof(tagRECT)));
        EXPECT_TRUE(SamePixels(cProcessor.m_aImages[i], cHandle.m_aImages[i]));
        ClKormelinSegmentHandle cSegment;
        cHandle.GetSegment(&cHandle, static_cast<int>(i), &cSegment);
        EXPECT_EQ(cProcessor.m_aRects[i].left, cSegment.m_nX);
        EXPECT_EQ(0, cSegment.m_nFingerPosition);
    }
    ClKormelinSegmentHandle cSegment;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 2, &cSegment), ClExVelmarin, -35, szOutOfRange);
}

TEST(KormelinSegmentationHandle, MoreThanTwoFingersFailWithTheirNumber)
{
    ClKormelinSegmentationHandle cHandle;
    Segment(cHandle, ClSlapPicture(SlapScenes::OneFinger(19685)).Block());
    EXPECT_EQ(1, cHandle.m_nCount);
    EXPECT_RAISES(Segment(cHandle, ClSlapPicture(SlapScenes::ThreeFingers(19685)).Block()), ClExVelmarin, -35,
                  szOutOfRange);
    EXPECT_EQ(3, cHandle.m_nCount);
    EXPECT_EQ(0u, cHandle.m_aRectangles.Entries());
    ClKormelinSegmentHandle cSegment;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 0, &cSegment), ClExVelmarin, -35, szOutOfRange);
    Segment(cHandle, ClSlapPicture(SlapScenes::OneFinger(19685)).Block());
    EXPECT_EQ(1, cHandle.m_nCount);
    EXPECT_EQ(1u, cHandle.m_aRectangles.Entries());
}

// ---- giving out segments

TEST(KormelinSegmentationHandle, GetSegmentTestsItsArgumentsInOrder)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    ClKormelinSegmentHandle cSegment;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 5, nullptr), ClExVelmarin, -42, szNoHandle);
    EXPECT_RAISES(cHandle.GetSegment(nullptr, 5, &cSegment), ClExVelmarin, -42, szNoHandle);
    for (const int nIndex : {1, 2, -1, INT_MAX, INT_MIN})
    {
        EXPECT_RAISES(cHandle.GetSegment(&cHandle, nIndex, &cSegment), ClExVelmarin, -35, szOutOfRange);
    }
    EXPECT_EQ(nullptr, cSegment.m_cBitmap.m_pBIH);
}

TEST(KormelinSegmentationHandle, IndexLimitHoldsWhateverTheArraysHold)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    for (int i = 0; i < 3; ++i)
    {
        const ClImage& cImage = cHandle.m_aImages[0];
        ClImage cCopy;
        cCopy = cImage;
        cHandle.m_aImages.Add(cCopy);
        cHandle.m_aRectangles.Add(tagRECT(cHandle.m_aRectangles[0]));
    }
    ClKormelinSegmentHandle cSegment;
    EXPECT_NO_THROW(cHandle.GetSegment(&cHandle, 1, &cSegment));
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 2, &cSegment), ClExVelmarin, -35, szOutOfRange);
}

TEST(KormelinSegmentationHandle, CoordinateOriginIsReadWhenTheSegmentIs)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    ClKormelinSegmentHandle cSegment;
    cHandle.GetSegment(&cHandle, 0, &cSegment);
    EXPECT_EQ((std::vector<int>{5, 10, 19, 29}), RectangleOf(cSegment));
    cHandle.SetPropertyLong("CoordinateOrigin", 1);
    cHandle.GetSegment(&cHandle, 0, &cSegment);
    EXPECT_EQ((std::vector<int>{5, 60 - 39, 19, 29}), RectangleOf(cSegment));
    cHandle.SetPropertyLong("CoordinateOrigin", 0);
    cHandle.GetSegment(&cHandle, 0, &cSegment);
    EXPECT_EQ((std::vector<int>{5, 10, 19, 29}), RectangleOf(cSegment));
}

TEST(KormelinSegmentationHandle, RefusedRectangleComesAfterTheBitmap)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    ClKormelinSegmentHandle cSegment;
    cSegment.SetRectangle(1, 2, 3, 4);
    cHandle.m_aRectangles[0].left = -1;
    EXPECT_RAISES(cHandle.GetSegment(&cHandle, 0, &cSegment), ClExVelmarin, -35, szOutOfRange);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), RectangleOf(cSegment));
    EXPECT_NE(nullptr, cSegment.m_cBitmap.m_pBIH);
}

TEST(KormelinSegmentationHandle, SegmentBitmapIsTheImageWithAGreyRamp)
{
    ClBiggest cHandle;
    Segment(cHandle, OneObject());
    ClKormelinSegmentHandle cSegment;
    cHandle.GetSegment(&cHandle, 0, &cSegment);
    const Block aBitmap = BitmapOf(cSegment);
    ASSERT_EQ(40u + 1024u + 20u * 29u, aBitmap.size());
    const tagBITMAPINFOHEADER& cHeader = *Header(aBitmap.data());
    EXPECT_EQ(40u, cHeader.biSize);
    EXPECT_EQ(19, cHeader.biWidth);
    EXPECT_EQ(29, cHeader.biHeight);
    EXPECT_EQ(1, cHeader.biPlanes);
    EXPECT_EQ(8, cHeader.biBitCount);
    EXPECT_EQ(0u, cHeader.biCompression);
    EXPECT_EQ(20u * 29u, cHeader.biSizeImage);
    EXPECT_EQ(19685, cHeader.biXPelsPerMeter);
    EXPECT_EQ(19685, cHeader.biYPelsPerMeter);
    EXPECT_EQ(0u, cHeader.biClrUsed);
    EXPECT_EQ(0u, cHeader.biClrImportant);
    for (std::size_t i = 0; i < 256; ++i)
    {
        const unsigned char anEntry[] = {static_cast<unsigned char>(i), static_cast<unsigned char>(i),
                                         static_cast<unsigned char>(i), 0};
        ASSERT_EQ(0, std::memcmp(anEntry, aBitmap.data() + 40 + 4 * i, 4)) << i;
    }
    for (int y = 0; y < 29; ++y)
    {
        for (int x = 0; x < 19; ++x)
        {
            const std::size_t nOffset = 1064 + static_cast<std::size_t>(20 * y + x);
            ASSERT_EQ(((x + 5) * 7 + (y + 10) * 3) % 200, aBitmap[nOffset]) << x << ", " << y;
        }
        EXPECT_EQ(0, aBitmap[1064 + static_cast<std::size_t>(20 * y + 19)]); // the padding tells nothing
    }
}

TEST(KormelinSegmentationHandle, SegmentsDoNotNeedTheCallersBlock)
{
    ClBiggest cHandle;
    ClKormelinSegmentHandle cBefore;
    ClKormelinSegmentHandle cAfter;
    {
        Block aBlock = OneObject();
        Segment(cHandle, aBlock);
        cHandle.GetSegment(&cHandle, 0, &cBefore);
        aBlock.assign(aBlock.size(), 0);
    }
    cHandle.SetPropertyLong("CoordinateOrigin", 1);
    cHandle.GetSegment(&cHandle, 0, &cAfter);
    EXPECT_EQ(BitmapOf(cBefore), BitmapOf(cAfter));
    EXPECT_EQ(60 - 39, cAfter.m_nY);
    Segment(cHandle, Rectangle(40, 40, 2, 9, 3, 8)); // and a run behind it touches the old block no more
    cHandle.GetSegment(&cHandle, 0, &cAfter);
    EXPECT_EQ((std::vector<int>{2, 40 - 8, 7, 5}), RectangleOf(cAfter));
}

TEST(KormelinSegmentationHandle, InputIsNotWritten)
{
    for (const long nMode : {0L, 1L})
    {
        ClKormelinSegmentationHandle cHandle;
        cHandle.m_nSegmentationMode = nMode;
        const Block aBlock = ClSlapPicture(SlapScenes::OneFinger(3937)).Block();
        const Block aBefore = aBlock;
        Segment(cHandle, aBlock);
        EXPECT_EQ(aBefore, aBlock);
    }
}
