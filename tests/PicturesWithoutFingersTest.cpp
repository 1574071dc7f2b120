// Pictures without fingers through both modes. The rules know size, shape and place, not ridges, so they take some of
// these for fingers, always the same ones; and the code and what the handle then holds tell the same.

#include "FingerlessPictures.hpp"
#include "SegmentationModes.hpp"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>

namespace
{
constexpr int nImageLimit = 500; // pixels of a finger's image in either direction
constexpr long nMostSegments = 2;

using Counts_t = std::map<long, int>; // pictures of each result

/// What the pictures of a kind give: results as RunForFingers and RunForBiggestObject have them.
struct ClKindCounts
{
    const char* m_szKind;
    Counts_t m_anFingers;
    Counts_t m_anBiggest;
};

const std::vector<ClKindCounts>& ExpectedCounts()
{
    static const std::vector<ClKindCounts> aCounts = {
        {"blank", {{-15, 60}}, {{0, 59}, {-44, 1}}},
        {"uniform noise", {{0, 20}, {1, 26}, {2, 30}, {3, 17}, {4, 7}}, {{0, 100}}},
        {"salt and pepper", {{0, 16}, {1, 26}, {2, 29}, {3, 19}, {4, 10}}, {{0, 92}, {-35, 8}}},
        {"gradient", {{0, 46}, {1, 19}, {2, 28}, {3, 4}, {4, 3}}, {{0, 100}}},
        {"stripes", {{0, 84}, {1, 62}, {2, 53}, {3, 1}}, {{0, 200}}},
        {"checkerboard", {{0, 13}, {1, 7}, {2, 13}, {3, 17}, {4, 10}}, {{0, 60}}},
        {"text", {{0, 2}, {1, 11}, {2, 41}, {3, 46}, {4, 20}}, {{0, 120}}},
        {"strokes", {{1, 26}, {2, 50}, {3, 19}, {4, 5}}, {{0, 100}}},
        {"halos", {{0, 9}, {1, 54}, {2, 32}, {3, 3}, {4, 2}}, {{0, 100}}},
        {"dots", {{0, 18}, {1, 10}, {2, 17}, {3, 10}, {4, 5}}, {{0, 60}}},
    };
    return aCounts;
}

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

/// How many fingers a new handle finds, 0 to 4, or the code of a picture in which it looks for none; that and the code
/// must agree with what it holds.
long RunForFingers(const ClFingerlessPicture& cPicture)
{
    ClModeHandle cHandle(ClModeHandle::nFingers);
    const long nCode = cHandle.SegmentCopy(cPicture.Block());
    const long nCount = cHandle.Count();
    if (IsUniform(cPicture))
    {
        EXPECT_EQ(FPC_ERROR_BITMAP_NO_FINGER, nCode);
        EXPECT_EQ(0, nCount);
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cHandle.Fill(0));
        return nCode;
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
    return nCount;
}

/// The code of a new handle.
long RunForBiggestObject(const ClFingerlessPicture& cPicture)
{
    const auto& aPixels = cPicture.m_aPixels;
    const auto isObject = [](std::uint8_t n) { return n != 255; };
    ClModeHandle cHandle(ClModeHandle::nBiggestObject);
    const long nCode = cHandle.SegmentCopy(cPicture.Block(), EGuard::eOdd);
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
    return nCode;
}

class PicturesWithoutFingers : public testing::TestWithParam<int>
{
};

TEST_P(PicturesWithoutFingers, HaveTheirCountsAndCodesThatAgreeWithTheResults)
{
    const ClFingerlessKind& cKind = FingerlessKinds()[static_cast<std::size_t>(GetParam())];
    const ClKindCounts& cExpected = ExpectedCounts().at(static_cast<std::size_t>(GetParam()));
    ASSERT_STREQ(cExpected.m_szKind, cKind.m_szName);
    Counts_t anFingers;
    Counts_t anBiggest;
    for (int i = 0; i < cKind.m_nPictures; ++i)
    {
        const ClFingerlessPicture cPicture = FingerlessPicture(cKind, i);
        SCOPED_TRACE(cPicture.m_sName);
        ++anFingers[RunForFingers(cPicture)];
        ++anBiggest[RunForBiggestObject(cPicture)];
    }
    EXPECT_EQ(cExpected.m_anFingers, anFingers);
    EXPECT_EQ(cExpected.m_anBiggest, anBiggest);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PicturesWithoutFingers, testing::Range(0, static_cast<int>(FingerlessKinds().size())),
                         [](const auto& cInfo)
                         {
                             std::string sName = FingerlessKinds()[static_cast<std::size_t>(cInfo.param)].m_szName;
                             std::replace(sName.begin(), sName.end(), ' ', '_');
                             return sName;
                         });

int PicturesOf(const Counts_t& anPictures)
{
    return std::accumulate(anPictures.begin(), anPictures.end(), 0,
                           [](int nSum, const auto& cEntry) { return nSum + cEntry.second; });
}

TEST(PicturesWithoutFingersOfAllKinds, AreAThousand)
{
    int nPictures = 0;
    for (const ClFingerlessKind& cKind : FingerlessKinds())
    {
        nPictures += cKind.m_nPictures;
    }
    EXPECT_EQ(1000, nPictures);
}

TEST(PicturesWithoutFingersOfAllKinds, HaveTheirCountsInTheDocument)
{
    std::ifstream cFile(KORMELIN_SOURCE_FOLDER "/docs/limits.md");
    std::string sDocument((std::istreambuf_iterator<char>(cFile)), std::istreambuf_iterator<char>());
    Counts_t anBiggest;
    for (const ClKindCounts& cKind : ExpectedCounts())
    {
        const auto of = [&cKind](long nResult)
        {
            const auto it = cKind.m_anFingers.find(nResult);
            return it == cKind.m_anFingers.end() ? 0 : it->second;
        };
        std::string sRow =
            std::string("| ") + cKind.m_szKind + " | " + std::to_string(PicturesOf(cKind.m_anFingers)) + " |";
        for (const int nPictures : {of(0), of(1), of(2), of(3) + of(4), of(FPC_ERROR_BITMAP_NO_FINGER)})
        {
            sRow += nPictures == 0 ? " |" : " " + std::to_string(nPictures) + " |";
        }
        EXPECT_NE(std::string::npos, sDocument.find("\n" + sRow + "\n")) << sRow;
        for (const auto& [nCode, nPictures] : cKind.m_anBiggest)
        {
            anBiggest[nCode] += nPictures;
        }
    }
    EXPECT_EQ((Counts_t{{-44, 1}, {-35, 8}, {0, 991}}), anBiggest);
    std::replace(sDocument.begin(), sDocument.end(), '\n', ' ');
    EXPECT_NE(std::string::npos, sDocument.find("991 times; eight pictures of lone grains give -35, a white one -44"));
}
} // namespace
