// Bitmaps with one and with two faults. What each is answered is told by the tables, which follow the order in which
// the library looks: file header, header size, planes, compression, depth, colour table, pixels, planes of the image,
// resolution, uniform, dimensions.

#include "SegmentationModes.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include <climits>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace
{
using Block = ClGuardedVector;

constexpr int nWidth = 163; // a padding of one byte
constexpr int nHeight = 170;
constexpr int nStride = 164;
constexpr std::size_t nTable = 1024;
constexpr std::size_t nPixels = std::size_t(nStride) * nHeight;

constexpr std::size_t nAtSize = 0, nAtWidth = 4, nAtHeight = 8, nAtPlanes = 12, nAtBitCount = 14, nAtCompression = 16,
                      nAtSizeImage = 20, nAtXPels = 24, nAtYPels = 28, nAtClrUsed = 32, nAtClrImportant = 36;

constexpr long nSame = 1; // beside the codes of the catalogue: success with the segments of the good bitmap

/// One finger at 100 pixels per inch.
Block GoodBlock()
{
    constexpr int nPixel = 254; // micrometres
    ClSlapScene cScene;
    cScene.m_nPelsPerMetre = 3937;
    cScene.m_nWidth = nWidth * nPixel + nPixel / 2;
    cScene.m_nHeight = nHeight * nPixel + nPixel / 2;
    ClSlapPart cFinger;
    cFinger.m_nTipX = 20000;
    cFinger.m_nTipY = 36000;
    cFinger.m_nWidth = 16000;
    cFinger.m_nLength = 26000;
    cScene.m_aParts.push_back(cFinger);
    return ClSlapPicture(cScene).Block();
}

struct ClEdit
{
    std::size_t m_nOffset;
    std::uint32_t m_nValue;
};

void Put(Block& aBlock, const ClEdit& cEdit)
{
    if (cEdit.m_nOffset == nAtPlanes || cEdit.m_nOffset == nAtBitCount)
    {
        PutShort(aBlock.data(), cEdit.m_nOffset, static_cast<std::uint16_t>(cEdit.m_nValue));
    }
    else
    {
        PutLong(aBlock.data(), cEdit.m_nOffset, cEdit.m_nValue);
    }
}

constexpr std::uint32_t Negative(std::uint32_t nValue)
{
    return 0u - nValue;
}

/// A bitmap of the size that its header needs, one field of which is changed to each of the values.
struct ClFieldRow
{
    const char* m_szField;
    std::size_t m_nOffset;
    std::vector<std::uint32_t> m_aValues;
    long m_nInFingers; // code of mode 0
    long m_nInBiggest; // code of mode 1
};

const std::vector<ClFieldRow>& FieldRows()
{
    constexpr std::uint32_t nMax = INT_MAX;
    constexpr std::uint32_t nMin = 0x80000000;
    constexpr std::uint32_t nAll = 0xffffffff;
    constexpr std::uint32_t nRest = (nTable + nPixels) / 4; // entries that take all that is behind the header
    static const std::vector<ClFieldRow> aRows = {
        {"biSize",
         nAtSize,
         {104, 107, 108, 109, 124, 128, 255, 256, 296, 0x2800, 0x280000, 0x280028, 0x28000000, nMax, nMin, nAll},
         -32,
         -32},
        // "BM" is a file header: behind it stands the depth where a size should.
        {"biSize", nAtSize, {0x4d42, 0x284d42, 0x42424d42}, -32, -32},
        {"biPlanes", nAtPlanes, {0, 2, 3, 4, 8, 255, 256, 257, 0x7fff, 0x8000, 0xffff}, -11, -11},
        {"biCompression",
         nAtCompression,
         {4, 5, 6, 8, 11, 12, 13, 0x100, 0x10000, 0x20574152, nMax, nMin, nAll},
         -31,
         -31},
        {"biCompression", nAtCompression, {1, 2, 3}, -11, -11}, // is a bitmap, but no image
        {"biBitCount", nAtBitCount, {128, 255, 256, 257, 264, 0x7fff, 0x8000, 0x8008, 0xffff}, -12, -12},
        {"biBitCount", nAtBitCount, {1, 4}, -12, -12},       // is a bitmap, but no image
        {"biBitCount", nAtBitCount, {16, 24, 32}, -21, -21}, // needs more pixels than there are
        {"biWidth", nAtWidth, {0}, -15, -44},
        {"biWidth", nAtWidth, {nAll, Negative(2), Negative(3)}, -15, -101}, // rows of 0 bytes, of labels less than that
        {"biWidth", nAtWidth, {1}, -14, -35},
        {"biWidth", nAtWidth, {2, 3, 159}, -14, 0},
        {"biWidth", nAtWidth, {161, 162, 164}, nSame, 0}, // the same rows, with a column less or of padding
        {"biWidth", nAtWidth, {165, 166, 200, 326, 1000, 65535, 65536, 0x10000000, 0x7ffffff8, nMax}, -21, -21},
        // Rows, or all rows, that are as large as there are pixels, but only in 32 bits.
        {"biWidth", nAtWidth, {0x20000000, 0x20000001, 0x200000a3, 0x40000000, 0x400000a3, 0x600000a3}, -21, -21},
        {"biWidth",
         nAtWidth,
         {Negative(4), Negative(5), Negative(163), Negative(0x10000000), nMin, nMin + 1},
         -21,
         -21},
        {"biHeight", nAtHeight, {0}, -15, -44},
        {"biHeight", nAtHeight, {1}, -14, -35},
        {"biHeight", nAtHeight, {2, 159}, -14, 0},
        {"biHeight", nAtHeight, {160, 161, 169}, nSame, 0}, // without rows above the finger
        {"biHeight", nAtHeight, {171, 172, 340, 1000, 65536, 0x1000000, nMax}, -21, -21},
        // 164 bytes times these is 0, 4, 164 and 27880 in 32 bits.
        {"biHeight", nAtHeight, {0x40000000, 26188825, 0x40000001, 0x400000aa}, -21, -21},
        {"biHeight",
         nAtHeight,
         {nAll, Negative(2), Negative(160), Negative(170), Negative(0x40000000), nMin, nMin + 1},
         -21,
         -21},
        {"biSizeImage", nAtSizeImage, {0, 1, nPixels - 1, nPixels + 1, nMax, nMin, nAll}, nSame, nSame},
        {"biXPelsPerMeter",
         nAtXPels,
         {0, 1, 100, 1000, 3858, 3898, 3899, nAll, Negative(3937), nMin, nMin + 1},
         -13,
         0},
        // At the working resolution the picture is narrower than the 9 columns of the filter.
        {"biXPelsPerMeter", nAtXPels, {80300, 100000, 0x100000, 0x1000000, nMax - 1, nMax}, -14, 0},
        {"biYPelsPerMeter",
         nAtYPels,
         {0, 1, 100, 1000, 3858, 3898, 3899, nAll, Negative(3937), nMin, nMin + 1},
         -13,
         0},
        {"biClrUsed", nAtClrUsed, {256}, nSame, nSame},
        {"biClrUsed", nAtClrUsed, {257, 258, 300, 512, 1000, nRest - 1, nRest, nRest + 1}, -21, -21},
        // Tables of no byte, of 4 and of 1024, but only in 32 bits.
        {"biClrUsed",
         nAtClrUsed,
         {0x40000000, 0x40000001, 0x40000100, 0x80000100, 0xc0000100, 0x3fffffff, nMax, nMin, nAll},
         -21,
         -21},
        {"biClrImportant", nAtClrImportant, {1, 2, 255, 256, 257, nMax, nMin, nAll}, nSame, nSame},
    };
    return aRows;
}

/// A value of a field that makes another picture of the same bytes, and the rectangles of its fingers as x, y, width
/// and height. The good bitmap's is 49, 30, 58, 119.
struct ClOtherPicture
{
    const char* m_szField;
    ClEdit m_cEdit;
    std::vector<std::vector<long>> m_aFingers;
};

const std::vector<ClOtherPicture>& OtherPictures()
{
    static const std::vector<ClOtherPicture> aPictures = {
        // Each row is read from 4 bytes further on, so the finger lies in three bands across the picture. Two are
        // lines.
        {"biWidth", {nAtWidth, 160}, {{73, 25, 85, 58}}},
        // Only columns are reduced, but places are multiplied by it in both directions. By 1.02 and 1.04 that changes
        // little; by 2 the finger's rectangle ends at the upper edge; by 5 the finger is looked for above the picture.
        {"biXPelsPerMeter", {nAtXPels, 4016}, {{47, 30, 62, 121}}},
        {"biXPelsPerMeter", {nAtXPels, 4100}, {{46, 31, 64, 123}}},
        {"biXPelsPerMeter", {nAtXPels, 7874}, {{40, 82, 76, 87}}},
        {"biXPelsPerMeter", {nAtXPels, 19685}, {}},
        // Reduced by 10 and by 20 the finger is a line.
        {"biXPelsPerMeter", {nAtXPels, 39370}, {}},
        {"biXPelsPerMeter", {nAtXPels, 80000}, {}},
        // The rest of the table are the lowest pixels, 1020, 1016, 960, 512 and 4 of them, and move the finger: by 36
        // columns and 6 rows, 32 and 6, 24 to the left and 6, 20 and 3, and 4. The first one comes so near to the right
        // edge that it is cut out one column further left, which counts twice. Of the fourth the greys make the finger
        // as high as 102 pixels; then its rectangle hangs from its tip.
        {"biClrUsed", {nAtClrUsed, 1}, {{86, 36, 58, 119}}},
        {"biClrUsed", {nAtClrUsed, 2}, {{81, 36, 58, 119}}},
        {"biClrUsed", {nAtClrUsed, 16}, {{25, 36, 58, 119}}},
        {"biClrUsed", {nAtClrUsed, 128}, {{68, 42, 60, 119}}},
        {"biClrUsed", {nAtClrUsed, 255}, {{53, 30, 58, 119}}},
    };
    return aPictures;
}

/// One of two faults in a block that is long enough for every depth. The list is in the order in which they are seen.
struct ClFault
{
    const char* m_szName;
    ClEdit m_cEdit;
    long m_nInFingers; // 0: no fault in this mode
    long m_nInBiggest;
};

const ClFault g_aFaults[] = {
    {"header size", {nAtSize, 41}, -32, -32},
    {"three planes", {nAtPlanes, 3}, -11, -11},
    {"unknown compression", {nAtCompression, 4}, -31, -31},
    {"9 bits", {nAtBitCount, 9}, -12, -12},
    {"endless table", {nAtClrUsed, 0x40000000}, -21, -21},
    {"endless rows", {nAtWidth, 0x20000001}, -21, -21},
    {"endless height", {nAtHeight, 0x40000000}, -21, -21},
    {"upside down", {nAtHeight, Negative(170)}, -21, -21},
    {"run lengths", {nAtCompression, 1}, -11, -11},
    {"short run lengths", {nAtCompression, 2}, -11, -11},
    {"masks", {nAtCompression, 3}, -11, -11},
    {"1 bit", {nAtBitCount, 1}, -12, -12},
    {"4 bits", {nAtBitCount, 4}, -12, -12},
    {"16 bits", {nAtBitCount, 16}, -12, -12},
    {"24 bits", {nAtBitCount, 24}, -11, -11},
    {"32 bits", {nAtBitCount, 32}, -11, -11},
    {"coarse columns", {nAtXPels, 3899}, -13, 0},
    {"coarse rows", {nAtYPels, 0}, -13, 0},
    {"no columns", {nAtWidth, 0}, -15, -44},
    {"no rows", {nAtHeight, 0}, -15, -44},
    {"narrow", {nAtWidth, 159}, -14, 0},
    {"low", {nAtHeight, 159}, -14, 0},
};

/// Both faults in one header, or none where they need the same field or their sizes, one with 0, make a third.
bool CanMeet(const ClFault& cFirst, const ClFault& cSecond)
{
    const auto isSide = [](const ClFault& c)
    { return c.m_cEdit.m_nOffset == nAtWidth || c.m_cEdit.m_nOffset == nAtHeight; };
    return cFirst.m_cEdit.m_nOffset != cSecond.m_cEdit.m_nOffset && !(isSide(cFirst) && isSide(cSecond));
}

/// Runs faulty bitmaps in both modes. Each run follows one on a good bitmap and is followed by another.
class MalformedBitmap : public testing::Test
{
protected:
    MalformedBitmap() : m_aGood(GoodBlock())
    {
        EXPECT_EQ(40 + nTable + nPixels, m_aGood.size());
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            ClModeHandle& cHandle = Handle(nMode);
            EXPECT_EQ(FPC_SUCCESS, cHandle.SegmentCopy(m_aGood));
            m_aExpected[nMode] = cHandle.Segments();
            EXPECT_EQ(1u, m_aExpected[nMode].size());
        }
    }

    ClModeHandle& Handle(long nMode) { return nMode == ClModeHandle::nFingers ? m_cFingers : m_cBiggest; }

    /// fnRun gives the code.
    void Expect(const std::string& sName, long nInFingers, long nInBiggest,
                const std::function<long(ClModeHandle&)>& fnRun)
    {
        SCOPED_TRACE(sName);
        ++m_nInputs;
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            SCOPED_TRACE(nMode == ClModeHandle::nFingers ? "fingers" : "biggest object");
            ClModeHandle& cHandle = Handle(nMode);
            ExpectCode(cHandle, nMode, nMode == ClModeHandle::nFingers ? nInFingers : nInBiggest, fnRun(cHandle));
            ASSERT_EQ(FPC_SUCCESS, cHandle.SegmentCopy(m_aGood));
            ASSERT_EQ(1, cHandle.Count());
            ASSERT_TRUE(m_aExpected[nMode] == cHandle.Segments());
        }
    }
    void ExpectOfBlock(const std::string& sName, long nInFingers, long nInBiggest, const Block& aBlock)
    {
        Expect(sName, nInFingers, nInBiggest,
               [&aBlock](ClModeHandle& cHandle)
               {
                   const long nCode = cHandle.SegmentCopy(aBlock, EGuard::eBefore);
                   EXPECT_EQ(nCode, cHandle.SegmentCopy(aBlock, EGuard::eOdd));
                   EXPECT_EQ(nCode, cHandle.SegmentCopy(aBlock));
                   return nCode;
               });
    }
    void ExpectOfEdits(const std::string& sName, long nInFingers, long nInBiggest, const std::vector<ClEdit>& aEdits)
    {
        Block aBlock = m_aGood;
        for (const ClEdit& cEdit : aEdits)
        {
            Put(aBlock, cEdit);
        }
        ExpectOfBlock(sName, nInFingers, nInBiggest, aBlock);
    }

    const Block m_aGood;
    ClModeHandle::Segments_t m_aExpected[2]; ///< of the good bitmap in each mode
    int m_nInputs = 0;

private:
    void ExpectCode(ClModeHandle& cHandle, long nMode, long nExpected, long nCode)
    {
        if (nExpected == nSame)
        {
            EXPECT_EQ(FPC_SUCCESS, nCode);
            EXPECT_TRUE(m_aExpected[nMode] == cHandle.Segments());
            return;
        }
        EXPECT_EQ(nExpected, nCode);
        if (nCode == FPC_SUCCESS)
        {
            EXPECT_EQ(ClModeHandle::nBiggestObject, nMode) << "a picture of fingers has its segments in a table";
            EXPECT_EQ(1, cHandle.Count());
            EXPECT_EQ(1u, cHandle.Segments().size());
            return;
        }
        EXPECT_EQ(1, cHandle.Count()) << "of the run before";
        // A block that is no image leaves the segments; an image is the end of them, whatever becomes of it.
        const bool bIsImage =
            nCode == -13 || nCode == -14 || nCode == -15 || nCode == -35 || nCode == -44 || nCode == -101;
        EXPECT_EQ(bIsImage ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_SUCCESS, cHandle.Fill(0));
    }

    ClModeHandle m_cFingers{ClModeHandle::nFingers};
    ClModeHandle m_cBiggest{ClModeHandle::nBiggestObject};
};

TEST_F(MalformedBitmap, EachFieldHasItsCodes)
{
    for (const ClFieldRow& cRow : FieldRows())
    {
        for (const std::uint32_t nValue : cRow.m_aValues)
        {
            ExpectOfEdits(cRow.m_szField + (" " + std::to_string(nValue)), cRow.m_nInFingers, cRow.m_nInBiggest,
                          {{cRow.m_nOffset, nValue}});
        }
    }
    for (std::uint32_t nValue = 0; nValue < 100; ++nValue)
    {
        const std::string sValue = std::to_string(nValue);
        if (nValue != 40)
        {
            ExpectOfEdits("biSize " + sValue, -32, -32, {{nAtSize, nValue}});
        }
        if (nValue != 1 && nValue != 4 && nValue != 8 && nValue != 16 && nValue != 24 && nValue != 32)
        {
            ExpectOfEdits("biBitCount " + sValue, -12, -12, {{nAtBitCount, nValue}});
        }
    }
    EXPECT_GE(m_nInputs, 300);
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, FieldsThatMakeAnotherPictureOfTheBytesHaveItsSegments)
{
    for (const ClOtherPicture& cPicture : OtherPictures())
    {
        SCOPED_TRACE(cPicture.m_szField + (" " + std::to_string(cPicture.m_cEdit.m_nValue)));
        const long nColumns = cPicture.m_cEdit.m_nOffset == nAtWidth ? long(cPicture.m_cEdit.m_nValue) : nWidth;
        const std::vector<std::vector<long>> aWhole = {{0, 0, nColumns - 1, nHeight - 1}}; // almost no pixel is white
        Block aBlock = m_aGood;
        Put(aBlock, cPicture.m_cEdit);
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            const auto& aExpected = nMode == ClModeHandle::nFingers ? cPicture.m_aFingers : aWhole;
            ClModeHandle& cHandle = Handle(nMode);
            EXPECT_EQ(FPC_SUCCESS, cHandle.SegmentCopy(aBlock, EGuard::eBefore));
            EXPECT_EQ(FPC_SUCCESS, cHandle.SegmentCopy(aBlock));
            EXPECT_EQ(static_cast<long>(aExpected.size()), cHandle.Count());
            std::vector<std::vector<long>> aRectangles;
            for (const auto& cSegment : cHandle.Segments())
            {
                aRectangles.push_back(cSegment.first);
            }
            EXPECT_EQ(aExpected, aRectangles);
        }
    }
}

TEST_F(MalformedBitmap, ResolutionsNearTheWorkingOneAndThatOfRowsOnlyGoIntoTheSegments)
{
    constexpr std::uint32_t nMax = INT_MAX;
    const auto expect = [this](std::size_t nOffset, std::uint32_t nPels)
    {
        SCOPED_TRACE(std::to_string(nPels) + (nOffset == nAtXPels ? " columns per metre" : " rows per metre"));
        Block aBlock = m_aGood;
        Put(aBlock, {nOffset, nPels});
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            ClModeHandle::Segments_t aExpected = m_aExpected[nMode];
            Put(aExpected[0].second, {nOffset, nPels});
            ClModeHandle& cHandle = Handle(nMode);
            EXPECT_EQ(FPC_SUCCESS, cHandle.SegmentCopy(aBlock));
            EXPECT_EQ(1, cHandle.Count());
            EXPECT_TRUE(aExpected == cHandle.Segments());
        }
    };
    for (const std::uint32_t nPels : {3900u, 3936u, 3938u, 4000u, 4015u})
    {
        expect(nAtXPels, nPels);
    }
    for (const std::uint32_t nPels : {3900u, 3936u, 3938u, 19685u, 0x100000u, nMax - 1, nMax})
    {
        expect(nAtYPels, nPels);
    }
}

TEST_F(MalformedBitmap, OfTwoFaultsTheOneSeenFirstGivesTheCode)
{
    for (const ClFault* pFirst = std::begin(g_aFaults); pFirst != std::end(g_aFaults); ++pFirst)
    {
        for (const ClFault* pSecond = pFirst + 1; pSecond != std::end(g_aFaults); ++pSecond)
        {
            if (!CanMeet(*pFirst, *pSecond))
            {
                continue;
            }
            Block aBlock(40 + nTable + 4 * nPixels, 99);
            std::copy(m_aGood.begin(), m_aGood.end(), aBlock.begin());
            Put(aBlock, pFirst->m_cEdit);
            Put(aBlock, pSecond->m_cEdit);
            const auto first = [](long nOne, long nOther) { return nOne != 0 ? nOne : nOther; };
            ExpectOfBlock(std::string(pFirst->m_szName) + ", " + pSecond->m_szName,
                          first(pFirst->m_nInFingers, pSecond->m_nInFingers),
                          first(pFirst->m_nInBiggest, pSecond->m_nInBiggest), aBlock);
        }
    }
    EXPECT_GE(m_nInputs, 150);
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, SidesThatMakeNoAreaTogether)
{
    constexpr std::uint32_t nMax = INT_MAX;
    const auto expect = [this](std::uint32_t nColumns, std::uint32_t nRows, long nInFingers, long nInBiggest)
    {
        ExpectOfEdits(std::to_string(nColumns) + " by " + std::to_string(nRows), nInFingers, nInBiggest,
                      {{nAtWidth, nColumns}, {nAtHeight, nRows}});
    };
    for (const std::uint32_t nSide : {0u, 1u, 170u, 65536u, 0x40000000u, nMax})
    {
        expect(0, nSide, -15, -44);
        expect(nSide, 0, -15, -44);
        expect(0, Negative(nSide), -15, -44);
    }
    // No rows of no pixel need no bytes, whatever the sign; of labels they are negative, and so is an area.
    expect(Negative(1), nMax, -15, -101);
    expect(Negative(3), 1, -15, -101);
    expect(Negative(1), 0, -15, -44);
    expect(Negative(163), 0, -15, -44);
    // Rows of -160 bytes: two signs make an area, of which there is enough or not.
    expect(Negative(163), Negative(170), -15, -101);
    expect(Negative(163), Negative(174), -15, -101);
    expect(Negative(163), Negative(175), -21, -21);
    expect(Negative(4), Negative(1), -15, -101);
    expect(Negative(163), 170, -21, -21);
    expect(65536, 65536, -21, -21); // 0 bytes in 32 bits
    expect(32768, 131072, -21, -21);
    expect(nMax, nMax, -21, -21);
    expect(0x80000000, 0x80000000, -21, -21);
    expect(0x80000000, nMax, -21, -21);
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, ColourTableIsNotLookedAt)
{
    const auto expect = [this](const char* szName, const std::function<std::uint32_t(std::uint32_t)>& fnEntry)
    {
        Block aBlock = m_aGood;
        for (std::uint32_t i = 0; i < 256; ++i)
        {
            PutLong(aBlock.data(), 40 + 4 * i, fnEntry(i));
        }
        ExpectOfBlock(szName, nSame, nSame, aBlock);
    };
    ClTestRandom cRandom(1);
    expect("black", [](std::uint32_t) { return 0u; });
    expect("white", [](std::uint32_t) { return 0xffffffu; });
    expect("inverted", [](std::uint32_t i) { return 0x010101 * (255 - i); });
    expect("red", [](std::uint32_t i) { return i << 16; });
    expect("fourth byte", [](std::uint32_t i) { return 0x01010101 * i; });
    expect("all bits", [](std::uint32_t) { return 0xffffffffu; });
    expect("random", [&cRandom](std::uint32_t) { return cRandom.Next(); });
    expect("letters of a file", [](std::uint32_t) { return 0x4d424d42u; });
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, NullHasOneCodeForEverySize)
{
    for (const unsigned long nSize : {0ul, 1ul, 14ul, 39ul, 40ul, 1064ul, 28944ul, 1ul << 31, 1ul << 63, ULONG_MAX})
    {
        Expect("null of " + std::to_string(nSize), -10, -10,
               [nSize](ClModeHandle& cHandle) { return cHandle.SegmentAddress(nullptr, nSize); });
    }
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, SizesThatAreUnknownOrTooLargeLeaveItToTheHeader)
{
    const auto expect = [this](unsigned long nSize, const std::vector<ClEdit>& aEdits, long nInFingers, long nInBiggest)
    {
        Block aBlock = m_aGood;
        for (const ClEdit& cEdit : aEdits)
        {
            Put(aBlock, cEdit);
        }
        const ClReadOnlyBytes cBytes(aBlock);
        Expect("size " + std::to_string(nSize), nInFingers, nInBiggest,
               [&](ClModeHandle& cHandle) { return cHandle.Segment(cBytes, nSize); });
    };
    for (const unsigned long nSize : {0ul, 1ul << 31, 1ul << 32, 1ul << 63, ULONG_MAX - 1024, ULONG_MAX})
    {
        expect(nSize, {}, nSame, nSame);
        expect(nSize, {{nAtSize, 41}}, -32, -32);
        expect(nSize, {{nAtPlanes, 0}}, -11, -11);
        expect(nSize, {{nAtCompression, 4}}, -31, -31);
        expect(nSize, {{nAtCompression, 1}}, -11, -11);
        expect(nSize, {{nAtBitCount, 2}}, -12, -12);
        expect(nSize, {{nAtBitCount, 16}}, -12, -12);
        expect(nSize, {{nAtBitCount, 32}}, -11, -11);
        expect(nSize, {{nAtXPels, 0}}, -13, 0);
        expect(nSize, {{nAtHeight, 0}}, -15, -44);
        expect(nSize, {{nAtWidth, 0}}, -15, -44);
    }
    expect(0, {{nAtHeight, Negative(170)}}, -15, -101); // rows from the top down
    expect(0, {{nAtHeight, 0x80000000}}, -15, -101);
    expect(0, {{nAtWidth, Negative(163)}}, -15, -101);
    expect(0, {{nAtWidth, 0x80000000}}, -15, -101);
    expect(ULONG_MAX, {{nAtHeight, Negative(170)}}, -21, -21);
    expect(ULONG_MAX, {{nAtWidth, Negative(163)}}, -21, -21);
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, FileHeaderIsSkippedOnceAndNotRead)
{
    Block aFile = WithFileHeader(m_aGood);
    ExpectOfBlock("file", nSame, nSame, aFile);
    ExpectOfBlock("two file headers", -36, -36, WithFileHeader(aFile));
    ExpectOfBlock("three file headers", -36, -36, WithFileHeader(WithFileHeader(aFile)));
    for (std::size_t i = 2; i < 14; ++i) // size, reserved words and place of the pixels
    {
        for (const int nByte : {0, 0x7f, 0xff})
        {
            Block aChanged = aFile;
            aChanged[i] = static_cast<unsigned char>(nByte);
            ExpectOfBlock("byte " + std::to_string(i), nSame, nSame, aChanged);
        }
    }
    for (const char cLetter : {'\0', 'A', 'b', 'C', '\xff'}) // then it is a header of an unknown size
    {
        Block aChanged = aFile;
        aChanged[0] = static_cast<unsigned char>(cLetter);
        ExpectOfBlock("first letter", -32, -32, aChanged);
        aChanged[0] = 'B';
        aChanged[1] = static_cast<unsigned char>(cLetter);
        ExpectOfBlock("second letter", -32, -32, aChanged);
    }
    for (const ClFault& cFault : g_aFaults)
    {
        if (cFault.m_cEdit.m_nOffset != nAtBitCount) // the pixels do not do for all depths
        {
            Block aChanged = m_aGood;
            Put(aChanged, cFault.m_cEdit);
            ExpectOfBlock(std::string("file, ") + cFault.m_szName, cFault.m_nInFingers, cFault.m_nInBiggest,
                          WithFileHeader(aChanged));
        }
    }
    RecordProperty("inputs", m_nInputs);
}

TEST_F(MalformedBitmap, BytesBehindThePixelsAreNotLookedAtAndMoveTheBlockOffItsAlignment)
{
    for (const std::size_t nMore : {1u, 2u, 3u, 5u, 4096u, 100001u})
    {
        Block aLonger(m_aGood.size() + nMore, 0);
        std::copy(m_aGood.begin(), m_aGood.end(), aLonger.begin());
        ExpectOfBlock(std::to_string(nMore) + " more", nSame, nSame, aLonger);
    }
    RecordProperty("inputs", m_nInputs);
}
} // namespace
