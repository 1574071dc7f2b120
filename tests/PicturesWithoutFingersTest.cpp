// Pictures without fingers through both modes. The rules know size, shape and place, not ridges, so they take some of
// these for fingers; whatever they say, the code and what the handle then holds tell the same.

#include "FingerlessPictures.hpp"
#include "SegmentationModes.hpp"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <map>
#include <sstream>

namespace
{
constexpr int nImageLimit = 500; // pixels of a finger's image in either direction
constexpr long nMostSegments = 2;

std::uint32_t LongAt(const ClGuardedVector& aBlock, std::size_t nOffset)
{
    std::uint32_t nValue = 0;
    std::memcpy(&nValue, aBlock.data() + nOffset, sizeof nValue);
    return nValue;
}

bool IsUniform(const ClFingerlessPicture& cPicture)
{
    const auto& aPixels = cPicture.m_aPixels;
    return std::all_of(aPixels.begin(), aPixels.end(), [&](std::uint8_t n) { return n == aPixels[0]; });
}

/// A picture inside the input, as a bitmap of its own.
void ExpectSegment(ClModeHandle& cHandle, const ClFingerlessPicture& cPicture, int nLimit)
{
    const std::vector<long> anPlace = cHandle.Rectangle();
    EXPECT_GE(anPlace[0], 0);
    EXPECT_GE(anPlace[1], 0);
    EXPECT_GT(anPlace[2], 0);
    EXPECT_GT(anPlace[3], 0);
    EXPECT_LE(anPlace[0] + anPlace[2], cPicture.m_nWidth);
    EXPECT_LE(anPlace[1] + anPlace[3], cPicture.m_nHeight);
    const ClGuardedVector aBitmap = cHandle.Bitmap();
    ASSERT_GT(aBitmap.size(), 1064u);
    const std::uint32_t nWidth = LongAt(aBitmap, 4);
    const std::uint32_t nHeight = LongAt(aBitmap, 8);
    EXPECT_TRUE(nWidth >= 1 && nWidth <= static_cast<std::uint32_t>(nLimit));
    EXPECT_TRUE(nHeight >= 1 && nHeight <= static_cast<std::uint32_t>(nLimit));
    EXPECT_EQ(1064u + (nWidth + 3) / 4 * 4 * nHeight, aBitmap.size());
    EXPECT_EQ(static_cast<std::uint32_t>(cPicture.m_nPelsPerMetre), LongAt(aBitmap, 24));
}

/// The code of a new handle, which must agree with what it holds; fingers as "0" to "4" in place of a code that tells
/// of success or of too many.
std::string RunForFingers(const ClFingerlessPicture& cPicture)
{
    ClModeHandle cHandle(ClModeHandle::nFingers);
    const long nCode = cHandle.SegmentCopy(cPicture.Block());
    const long nCount = cHandle.Count();
    if (IsUniform(cPicture))
    {
        EXPECT_EQ(FPC_ERROR_BITMAP_NO_FINGER, nCode);
        EXPECT_EQ(0, nCount);
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cHandle.Fill(0));
        return std::to_string(nCode);
    }
    EXPECT_TRUE(nCount >= 0 && nCount <= 4) << nCount;
    EXPECT_EQ(nCount > nMostSegments ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_SUCCESS, nCode);
    const long nSegments = nCount > nMostSegments ? 0 : nCount;
    for (int i = 0; i < nSegments; ++i)
    {
        EXPECT_EQ(FPC_SUCCESS, cHandle.Fill(i));
        ExpectSegment(cHandle, cPicture, nImageLimit);
    }
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cHandle.Fill(static_cast<int>(nSegments)));
    return std::to_string(nCount) + " fingers";
}

std::string RunForBiggestObject(const ClFingerlessPicture& cPicture)
{
    const auto& aPixels = cPicture.m_aPixels;
    const auto isObject = [](std::uint8_t n) { return n != 255; };
    ClModeHandle cHandle(ClModeHandle::nBiggestObject);
    const long nCode = cHandle.SegmentCopy(cPicture.Block());
    EXPECT_EQ(nCode == FPC_SUCCESS ? 1 : 0, cHandle.Count());
    EXPECT_EQ(nCode == FPC_SUCCESS ? FPC_SUCCESS : FPC_ERROR_PARAM_OUT_OF_RANGE, cHandle.Fill(0));
    if (std::none_of(aPixels.begin(), aPixels.end(), isObject))
    {
        EXPECT_EQ(FPC_ERROR_PARAM_INVALID, nCode);
    }
    else if (std::all_of(aPixels.begin(), aPixels.end(), isObject))
    {
        EXPECT_EQ(FPC_SUCCESS, nCode);
        EXPECT_EQ((std::vector<long>{0, 0, cPicture.m_nWidth - 1, cPicture.m_nHeight - 1}), cHandle.Rectangle());
    }
    else
    {
        EXPECT_TRUE(nCode == FPC_SUCCESS || nCode == FPC_ERROR_PARAM_OUT_OF_RANGE) << nCode; // a line has no area
    }
    if (nCode == FPC_SUCCESS)
    {
        ExpectSegment(cHandle, cPicture, std::max(cPicture.m_nWidth, cPicture.m_nHeight));
    }
    return std::to_string(nCode);
}

class PicturesWithoutFingers : public testing::TestWithParam<int>
{
};

TEST_P(PicturesWithoutFingers, HaveCodesThatAgreeWithTheResults)
{
    const ClFingerlessKind& cKind = FingerlessKinds()[static_cast<std::size_t>(GetParam())];
    std::map<std::string, int> anOfFingers;
    std::map<std::string, int> anOfBiggest;
    for (int i = 0; i < cKind.m_nPictures; ++i)
    {
        const ClFingerlessPicture cPicture = FingerlessPicture(cKind, i);
        SCOPED_TRACE(cPicture.m_sName);
        ++anOfFingers[RunForFingers(cPicture)];
        ++anOfBiggest[RunForBiggestObject(cPicture)];
    }
    std::ostringstream cRow;
    for (const auto& [sCode, nPictures] : anOfFingers)
    {
        cRow << "  " << sCode << ": " << nPictures;
    }
    cRow << "; biggest object";
    for (const auto& [sCode, nPictures] : anOfBiggest)
    {
        cRow << "  " << sCode << ": " << nPictures;
    }
    std::cout << "           " << cKind.m_szName << cRow.str() << std::endl;
}

INSTANTIATE_TEST_SUITE_P(Kinds, PicturesWithoutFingers, testing::Range(0, static_cast<int>(FingerlessKinds().size())),
                         [](const auto& cInfo)
                         {
                             std::string sName = FingerlessKinds()[static_cast<std::size_t>(cInfo.param)].m_szName;
                             std::replace(sName.begin(), sName.end(), ' ', '_');
                             return sName;
                         });

TEST(PicturesWithoutFingersOfAllKinds, AreAThousand)
{
    int nPictures = 0;
    for (const ClFingerlessKind& cKind : FingerlessKinds())
    {
        nPictures += cKind.m_nPictures;
    }
    EXPECT_EQ(1000, nPictures);
}
} // namespace
