#include "KormelinSegmentHandle.hpp"

#include "TestTools.hpp"

#include <climits>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace
{
constexpr char szOutOfRange[] = "One of the parameters is out of range.";
constexpr char szTooSmall[] = "The size of the finger template is not valid.";
constexpr char szReadOnly[] = "The requested parameter is read only.";

long Long(ClKormelinSegmentHandle& cHandle, const char* szName)
{
    long nValue = -77;
    cHandle.GetPropertyLong(szName, &nValue);
    return nValue;
}

/// Gives a copy of a packed block to the handle.
void Fill(ClKormelinSegmentHandle& cHandle, ClGuardedVector aBlock)
{
    ClBitmap cBitmap;
    cBitmap.Attach(aBlock.data(), aBlock.size());
    cHandle.SetBitmap(cBitmap);
}

unsigned long NeededSize(ClKormelinSegmentHandle& cHandle)
{
    unsigned long nSize = 0;
    EXPECT_RAISES(cHandle.GetBitmap(nullptr, &nSize), ClExVelmarin, -21, szTooSmall);
    return nSize;
}
} // namespace

TEST(KormelinSegmentHandle, BeginsWithZeroes)
{
    ClKormelinSegmentHandle cHandle;
    for (const char* szName : {"x", "y", "Height", "Width", "FingerPosition"})
    {
        EXPECT_EQ(0, Long(cHandle, szName)) << szName;
    }
    char szVersion[11];
    unsigned long nSize = sizeof szVersion;
    cHandle.GetProperty("Version", szVersion, &nSize);
    EXPECT_STREQ("1.1.1407.3", szVersion);
    EXPECT_EQ(nullptr, cHandle.m_cBitmap.m_pBIH);
    EXPECT_EQ(0, std::memcmp("SEGMENT", ClKormelinSegmentHandle::m_szSignature, 8));
}

TEST(KormelinSegmentHandle, PropertiesStandInTheirOrder)
{
    ClKormelinSegmentHandle cHandle;
    std::vector<std::string> aNames;
    char szName[32];
    unsigned long nSize = sizeof szName;
    for (cHandle.PropertyEnumerateFirst(szName, &nSize); nSize != 0 && aNames.size() < 10;
         nSize = sizeof szName, cHandle.PropertyEnumerateNext(szName, &nSize))
    {
        aNames.push_back(szName);
    }
    EXPECT_EQ((std::vector<std::string>{"Version", "x", "y", "Height", "Width", "FingerPosition"}), aNames);
}

TEST(KormelinSegmentHandle, PropertiesAreReadOnlyIntegersWithoutRange)
{
    ClKormelinSegmentHandle cHandle;
    for (const char* szName : {"x", "y", "Height", "Width", "FingerPosition"})
    {
        enumType_t eType = eTypeOther;
        cHandle.GetPropertyType(szName, &eType);
        EXPECT_EQ(eTypeInteger, eType) << szName;
        enumAccess_t eAccess = eAccessNone;
        cHandle.GetPropertyAccess(szName, &eAccess);
        EXPECT_EQ(eAccessRead, eAccess) << szName;
        EXPECT_RAISES(cHandle.SetPropertyLong(szName, 1), ClExVelmarin, -47, szReadOnly);
        EXPECT_RAISES(cHandle.SetProperty(szName, "1"), ClExVelmarin, -47, szReadOnly);
        EXPECT_RAISES(cHandle.SetPropertyDouble(szName, 1.0), ClExVelmarin, -44,
                      "One(or more) parameter(s) is(are) invalid."); // the type is tested first
        long nMin = 0;
        EXPECT_RAISES(cHandle.GetPropertyRangeLong(szName, &nMin, nullptr), ClExVelmarin, -103,
                      "The feature is currently not supported.");
        EXPECT_EQ(0, Long(cHandle, szName));
    }
}

TEST(KormelinSegmentHandle, RectangleShowsInTheProperties)
{
    ClKormelinSegmentHandle cHandle;
    EXPECT_EQ(0, Long(cHandle, "x")); // the tree exists before the values come
    cHandle.SetRectangle(3, 14, 15, 92);
    EXPECT_EQ(3, Long(cHandle, "x"));
    EXPECT_EQ(14, Long(cHandle, "y"));
    EXPECT_EQ(15, Long(cHandle, "Width"));
    EXPECT_EQ(92, Long(cHandle, "Height"));
    EXPECT_EQ(0, Long(cHandle, "FingerPosition"));
    cHandle.SetRectangle(0, 0, 0, INT_MAX);
    EXPECT_EQ(INT_MAX, Long(cHandle, "Height"));
}

TEST(KormelinSegmentHandle, RectangleWithANegativeValueIsRefusedWhole)
{
    ClKormelinSegmentHandle cHandle;
    cHandle.SetRectangle(1, 2, 3, 4);
    for (const auto& [nX, nY, nWidth, nHeight] :
         {std::tuple(-1, 5, 5, 5), std::tuple(5, -1, 5, 5), std::tuple(5, 5, -1, 5), std::tuple(5, 5, 5, INT_MIN)})
    {
        EXPECT_RAISES(cHandle.SetRectangle(nX, nY, nWidth, nHeight), ClExVelmarin, -35, szOutOfRange);
        EXPECT_EQ(1, cHandle.m_nX);
        EXPECT_EQ(2, cHandle.m_nY);
        EXPECT_EQ(3, cHandle.m_nWidth);
        EXPECT_EQ(4, cHandle.m_nHeight);
    }
}

TEST(KormelinSegmentHandle, BitmapOfAnEmptyHandleIsAnErrorThatLeavesTheSizeAlone)
{
    ClKormelinSegmentHandle cHandle;
    unsigned long nSize = 77;
    EXPECT_RAISES(cHandle.GetBitmap(nullptr, nullptr), ClExVelmarin, -37, "One of the required parameter is missing.");
    EXPECT_RAISES(cHandle.GetBitmap(nullptr, &nSize), ClExVelmarin, -51, "The handle holds no data yet.");
    EXPECT_EQ(77u, nSize);
}

TEST(KormelinSegmentHandle, BitmapComesBackAsOneBlock)
{
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1), std::pair(3, 2), std::pair(4, 5), std::pair(101, 7)})
    {
        const ClGuardedVector aBlock = PackedBitmap(nWidth, nHeight, 8);
        ClKormelinSegmentHandle cHandle;
        Fill(cHandle, aBlock);
        ASSERT_EQ(40ul + 1024ul + static_cast<unsigned long>((nWidth + 3) / 4 * 4 * nHeight), NeededSize(cHandle));

        const ClGuardedBytes cTarget(aBlock.size());
        auto* pTarget = reinterpret_cast<tagBITMAPINFOHEADER*>(cTarget.Data());
        unsigned long nSize = cTarget.Size();
        cHandle.GetBitmap(nullptr, &nSize); // measures without an error
        EXPECT_EQ(aBlock.size(), nSize);
        cHandle.GetBitmap(pTarget, &nSize);
        EXPECT_EQ(aBlock.size(), nSize);
        EXPECT_EQ(0, std::memcmp(aBlock.data(), cTarget.Data(), aBlock.size()));
    }
}

TEST(KormelinSegmentHandle, SizeOneByteTooSmallLeavesTheBufferAlone)
{
    ClKormelinSegmentHandle cHandle;
    const ClGuardedVector aBlock = PackedBitmap(5, 3, 8);
    Fill(cHandle, aBlock);
    ClGuardedVector aTarget(aBlock.size(), 0x5A);
    const ClGuardedVector aBefore = aTarget;
    unsigned long nSize = aBlock.size() - 1;
    EXPECT_RAISES(cHandle.GetBitmap(reinterpret_cast<tagBITMAPINFOHEADER*>(aTarget.data()), &nSize), ClExVelmarin, -21,
                  szTooSmall);
    EXPECT_EQ(aBlock.size(), nSize);
    EXPECT_EQ(aBefore, aTarget);
    nSize = ULONG_MAX;
    cHandle.GetBitmap(reinterpret_cast<tagBITMAPINFOHEADER*>(aTarget.data()), &nSize);
    EXPECT_EQ(aBlock.size(), nSize);
    EXPECT_EQ(aBlock, aTarget);
}

TEST(KormelinSegmentHandle, SizeCountsTheTableOfEveryDepth)
{
    struct ClCase
    {
        int m_nBits;
        int m_nCompression;
        unsigned int m_nClrUsed;
        unsigned long m_nTable; // bytes
    };
    const ClCase aCases[] = {{1, 0, 0, 8},      {4, 0, 0, 64}, {4, 0, 5, 20},  {8, 0, 0, 1024},
                             {8, 0, 256, 1024}, {8, 0, 3, 12}, {16, 0, 0, 0},  {16, 3, 0, 12},
                             {24, 0, 0, 0},     {24, 0, 2, 8}, {32, 3, 0, 12}, {32, 0, 1, 4}};
    for (const ClCase& c : aCases)
    {
        ClKormelinSegmentHandle cHandle;
        const ClGuardedVector aBlock = PackedBitmap(7, 3, c.m_nBits, c.m_nCompression, c.m_nClrUsed);
        Fill(cHandle, aBlock);
        const auto nRow = static_cast<unsigned long>((c.m_nBits * 7 + 31) / 32 * 4);
        EXPECT_EQ(40ul + c.m_nTable + 3 * nRow, NeededSize(cHandle)) << c.m_nBits << " bits";
        EXPECT_EQ(aBlock.size(), NeededSize(cHandle));
    }
}

TEST(KormelinSegmentHandle, BitmapIsACopyThatASecondOneReplaces)
{
    ClKormelinSegmentHandle cHandle;
    ClGuardedVector aFirst = PackedBitmap(9, 9, 8, 0, 0, 1);
    const ClGuardedVector aUntouched = aFirst;
    ClBitmap cBitmap;
    cBitmap.Attach(aFirst.data(), aFirst.size());
    cHandle.SetBitmap(cBitmap);
    aFirst.assign(aFirst.size(), 0); // the source goes, the copy stays
    ClGuardedVector aTarget(aUntouched.size());
    unsigned long nSize = aTarget.size();
    cHandle.GetBitmap(reinterpret_cast<tagBITMAPINFOHEADER*>(aTarget.data()), &nSize);
    EXPECT_EQ(aUntouched, aTarget);

    const ClGuardedVector aSecond = PackedBitmap(2, 3, 8, 0, 0, 2);
    Fill(cHandle, aSecond);
    EXPECT_EQ(aSecond.size(), NeededSize(cHandle));
    aTarget.assign(aSecond.size(), 0);
    nSize = aTarget.size();
    cHandle.GetBitmap(reinterpret_cast<tagBITMAPINFOHEADER*>(aTarget.data()), &nSize);
    EXPECT_EQ(aSecond, aTarget);
}
