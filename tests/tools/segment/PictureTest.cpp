#include "Picture.hpp"

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <gtest/gtest.h>

#include <cstring>

using namespace SegmentTool;

namespace
{
std::string Refusal(double dXPels, double dYPels, double dPpi = 0.0)
{
    ClPicture cPicture;
    cPicture.m_dXPels = dXPels;
    cPicture.m_dYPels = dYPels;
    try
    {
        SetResolution(cPicture, dPpi);
    }
    catch (const ClPictureError& cError)
    {
        EXPECT_EQ(FPC_ERROR_BITMAP_PELS, cError.m_nCode);
        return cError.what();
    }
    return "";
}
} // namespace

TEST(Picture, RowsFromTheTopLieUpsideDownInMemory)
{
    ClPicture cPicture;
    cPicture.Create(3, 2);
    EXPECT_EQ(255, cPicture.RowFromTop(0)[0]) << "white at first";
    std::memcpy(cPicture.RowFromTop(0), "abc", 3);
    std::memcpy(cPicture.RowFromTop(1), "def", 3);
    EXPECT_EQ(0, std::memcmp(cPicture.m_cImage.Data(), "def", 3));
    EXPECT_EQ(0, std::memcmp(cPicture.m_cImage.Data() + 4, "abc", 3));
}

TEST(Picture, AColourRowIsFoldedByTheWeightsOfTheColours)
{
    ClPicture cPicture;
    cPicture.Create(2, 1);
    const unsigned char aRow[] = {10, 20, 30, 255, 255, 255};
    cPicture.PutColourRow(0, aRow);
    EXPECT_EQ((10 * 4729 + 20 * 46868 + 30 * 13937) >> 16, cPicture.RowFromTop(0)[0]);
    EXPECT_EQ(254, cPicture.RowFromTop(0)[1]);
}

TEST(Picture, SizesFromOneToTheLimitAreTaken)
{
    ClPicture cPicture;
    EXPECT_NO_THROW(cPicture.Create(1, 1));
    EXPECT_NO_THROW(cPicture.Create(nMostSide, 1));
    EXPECT_NO_THROW(cPicture.Create(1, nMostSide));
    for (const auto& [nWidth, nHeight] : {std::pair<std::int64_t, std::int64_t>{0, 5},
                                          {5, 0},
                                          {-1, 5},
                                          {nMostSide + 1, 1},
                                          {1, nMostSide + 1},
                                          {std::int64_t{1} << 40, 1}})
    {
        EXPECT_THROW(cPicture.Create(nWidth, nHeight), ClPictureError) << nWidth << " by " << nHeight;
    }
}

TEST(Picture, SamplesAreReducedToTheNearest)
{
    for (const unsigned int nMost : {1u, 3u, 15u, 255u, 1000u, 65535u})
    {
        for (unsigned int n = 0; n <= nMost; n += 1 + nMost / 997)
        {
            EXPECT_EQ(static_cast<int>(n * 255.0 / nMost + 0.5), ReduceSample(n, nMost)) << n << " of " << nMost;
        }
        EXPECT_EQ(255, ReduceSample(nMost, nMost));
    }
}

TEST(Resolution, OfTheFileIsRoundedToWholePels)
{
    ClPicture cPicture;
    cPicture.m_dXPels = 500 / 0.0254;
    cPicture.m_dYPels = 39370.4;
    SetResolution(cPicture, 0.0);
    EXPECT_EQ(19685, cPicture.m_cImage.m_nXRes);
    EXPECT_EQ(39370, cPicture.m_cImage.m_nYRes);
}

TEST(Resolution, GivenOneTakesThePlaceOfTheFiles)
{
    ClPicture cPicture;
    cPicture.m_dXPels = cPicture.m_dYPels = 2835;
    SetResolution(cPicture, 1000.0);
    EXPECT_EQ(39370, cPicture.m_cImage.m_nXRes);
    EXPECT_EQ(39370, cPicture.m_cImage.m_nYRes);
    EXPECT_EQ("", Refusal(0, 0, 500));
}

TEST(Resolution, MissingOrGuessedOnesAreRefusedWithTheWayOut)
{
    for (const double dPpi : {0.0, 72.0, 96.0})
    {
        const double dPels = dPpi / 0.0254;
        for (const std::string& sText : {Refusal(dPels, dPels), Refusal(dPels, 19685), Refusal(19685, dPels)})
        {
            EXPECT_NE(std::string::npos, sText.find("--ppi N")) << dPpi;
            EXPECT_NE(std::string::npos, sText.find(dPpi == 0.0    ? "no resolution"
                                                    : dPpi == 72.0 ? "72"
                                                                   : "96"))
                << sText;
        }
    }
    // Whole pels per metre, or per centimetre, of these.
    for (const double dPels : {2834.0, 2835.0, 2800.0, 3779.0, 3780.0, 3800.0}) EXPECT_NE("", Refusal(dPels, dPels));
    for (const double dPels : {2700.0, 3000.0, 3700.0, 3900.0}) EXPECT_EQ("", Refusal(dPels, dPels)) << dPels;
}

TEST(Resolution, BeyondEveryScannerIsRefused)
{
    EXPECT_NE("", Refusal(4e9, 19685));
    EXPECT_NE("", Refusal(19685, 1e300));
    EXPECT_NE("", Refusal(-5, 19685));
}
