// The road of real slaps through the exported functions, where a folder of them is named.

#include "GreyBitmapChecks.hpp"
#include "GuardedSlapRunner.hpp"
#include "TestTools.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace
{
constexpr long nFingers = 0;            // value of "SegmentationMode"
constexpr std::size_t nFileHeader = 14; // bytes in front of the bitmap in a BMP file

// A real picture with the code of KSSegmentBitmap and "Count" after it; worked out by a second, plain realisation of
// the same definitions.
struct ClRealSlap
{
    const char* m_szName;
    long m_nCode;
    long m_nCount;
};

void PrintTo(const ClRealSlap& cSlap, std::ostream* pTo)
{
    *pTo << cSlap.m_szName;
}

const ClRealSlap aRealSlaps[] = {{"left-four-1", FPC_ERROR_PARAM_OUT_OF_RANGE, 3},
                                 {"left-four-1-pair-left", FPC_SUCCESS, 2},
                                 {"left-four-1-pair-right", FPC_SUCCESS, 2},
                                 {"left-four-2", FPC_ERROR_PARAM_OUT_OF_RANGE, 4},
                                 {"left-four-2-jpeg", FPC_ERROR_PARAM_OUT_OF_RANGE, 4},
                                 {"left-four-2-pair-left", FPC_SUCCESS, 2},
                                 {"left-four-2-pair-right", FPC_SUCCESS, 2},
                                 {"right-four-1", FPC_ERROR_PARAM_OUT_OF_RANGE, 3},
                                 {"right-four-1-pair-left", FPC_SUCCESS, 1},
                                 {"right-four-1-pair-right", FPC_SUCCESS, 1},
                                 {"right-four-2", FPC_ERROR_PARAM_OUT_OF_RANGE, 4},
                                 {"right-four-2-pair-left", FPC_SUCCESS, 2},
                                 {"right-four-2-pair-right", FPC_SUCCESS, 2},
                                 {"left-thumb-1", FPC_SUCCESS, 0},
                                 {"right-thumb-1", FPC_SUCCESS, 1},
                                 {"right-thumb-2", FPC_SUCCESS, 1},
                                 {"right-thumb-3", FPC_SUCCESS, 1},
                                 {"two-thumbs-2", FPC_ERROR_PARAM_OUT_OF_RANGE, 3},
                                 {"hand-100ppi", FPC_ERROR_PARAM_OUT_OF_RANGE, 4},
                                 {"palm-part", FPC_ERROR_BITMAP_PELS, 0},
                                 {"palm-synthetic-1", FPC_SUCCESS, 0},
                                 {"palm-synthetic-2", FPC_SUCCESS, 1}};

class SegmentationRoadRealSlap : public testing::TestWithParam<ClRealSlap>
{
protected:
    // Null if the environment names no folder of real slaps.
    static const char* Folder() { return std::getenv("KORMELIN_SLAPS"); }

    static std::vector<std::uint8_t> Bytes()
    {
        return ReadWholeFile(std::string(Folder()) + "/nist-" + GetParam().m_szName + ".bmp");
    }
};
} // namespace

TEST_P(SegmentationRoadRealSlap, HasItsCodeAndItsNumberOfFingers)
{
    if (Folder() == nullptr) GTEST_SKIP() << "KORMELIN_SLAPS names no folder of real slap pictures";
    const std::vector<std::uint8_t> aFile = Bytes();
    ClGuardedSlapRunner cRunner(nFingers);
    const ClSlapRunResult cResult = cRunner.Run(aFile);
    EXPECT_EQ(GetParam().m_nCode, cResult.m_nCode);
    EXPECT_EQ(GetParam().m_nCount, cResult.m_nCount);
    tagBITMAPINFOHEADER cHeader;
    std::memcpy(&cHeader, aFile.data() + nFileHeader, sizeof cHeader);
    for (const ClSlapRunResult::ClSegment& cSegment : cResult.m_aSegments)
    {
        ASSERT_NO_FATAL_FAILURE(ExpectWholeBitmap(cSegment.m_aBlock, cHeader.biXPelsPerMeter));
        EXPECT_GE(cSegment.m_nX, 0);
        EXPECT_GE(cSegment.m_nY, 0);
        EXPECT_LE(cSegment.m_nX + cSegment.m_nWidth, cHeader.biWidth);
        EXPECT_LE(cSegment.m_nY + cSegment.m_nHeight, cHeader.biHeight);
    }
    EXPECT_TRUE(cResult == cRunner.Run(aFile)) << "a second run on the same handle";
}

INSTANTIATE_TEST_SUITE_P(All, SegmentationRoadRealSlap, testing::ValuesIn(aRealSlaps),
                         [](const auto& cInfo)
                         {
                             std::string sName = cInfo.param.m_szName;
                             std::replace(sName.begin(), sName.end(), '-', '_');
                             return sName;
                         });
