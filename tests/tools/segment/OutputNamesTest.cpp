#include "OutputNames.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;

namespace
{
std::vector<std::string> Names(const ClOptions& cOptions, const std::string& sInput,
                               const std::vector<int>& anPositions, EOutcome eOutcome = EOutcome::eSegmented)
{
    ClResult cResult;
    cResult.m_sInput = sInput;
    cResult.m_eOutcome = eOutcome;
    for (const int nPosition : anPositions)
    {
        cResult.m_aFingers.emplace_back();
        cResult.m_aFingers.back().m_nPosition = nPosition;
    }
    NameFiles(cOptions, cResult);
    std::vector<std::string> aNames;
    for (const ClFinger& cFinger : cResult.m_aFingers) aNames.push_back(cFinger.m_sFile);
    if (!cResult.m_sOverlay.empty()) aNames.push_back(cResult.m_sOverlay);
    return aNames;
}

ClOptions Into(const std::string& sFolder)
{
    ClOptions cOptions;
    cOptions.m_sFolder = sFolder;
    cOptions.m_eImageFormat = EImageFormat::ePng;
    return cOptions;
}
} // namespace

TEST(OutputNames, AreInputAndCode)
{
    EXPECT_EQ((std::vector<std::string>{"out/scan_2.png", "out/scan_10.png"}),
              Names(Into("out"), "a/b/scan.bmp", {2, 10}));
    EXPECT_EQ(std::vector<std::string>{"out/scan.v2_2.png"}, Names(Into("out/"), "scan.v2.bmp", {2}));
    EXPECT_EQ(std::vector<std::string>{"/o/scan_2.png"}, Names(Into("/o"), "scan", {2}));
    EXPECT_EQ(std::vector<std::string>{"o/.bmp_2.png"}, Names(Into("o"), "a/.bmp", {2}));
    ClOptions cBmp = Into("o");
    cBmp.m_eImageFormat = EImageFormat::eBmp;
    EXPECT_EQ(std::vector<std::string>{"o/scan_2.bmp"}, Names(cBmp, "scan.png", {2}));
}

TEST(OutputNames, UndecidedFingersAreCountedOnlyWhereThereAreSeveral)
{
    EXPECT_EQ(std::vector<std::string>{"o/a_0.png"}, Names(Into("o"), "a.bmp", {0}));
    EXPECT_EQ((std::vector<std::string>{"o/a_0-1.png", "o/a_0-2.png"}), Names(Into("o"), "a.bmp", {0, 0}));
}

TEST(OutputNames, TheOverlayIsNamedWhereThereWasSomethingToSee)
{
    ClOptions cOptions = Into("o");
    cOptions.m_bOverlay = true;
    EXPECT_EQ((std::vector<std::string>{"o/a_2.png", "o/a_overlay.png"}), Names(cOptions, "a.bmp", {2}));
    EXPECT_EQ(std::vector<std::string>{"o/a_overlay.png"}, Names(cOptions, "a.bmp", {}, EOutcome::eNoFinger));
    EXPECT_TRUE(Names(cOptions, "a.bmp", {}, EOutcome::eUnreadable).empty());
    EXPECT_TRUE(Names(cOptions, "a.bmp", {}, EOutcome::eFailed).empty());
}

TEST(OutputNames, WithoutAFolderThereAreNone)
{
    EXPECT_EQ(std::vector<std::string>{""}, Names(ClOptions(), "a.bmp", {2}));
}

TEST(OutputNames, TheTreeIsRepeatedBelowTheFolderAndNeverLeavesIt)
{
    ClOptions cOptions = Into("o");
    cOptions.m_bTree = true;
    EXPECT_EQ("o/", FolderOfFingers(cOptions, "a.bmp"));
    EXPECT_EQ("o/x/y/", FolderOfFingers(cOptions, "x/y/a.bmp"));
    EXPECT_EQ("o/x/y/", FolderOfFingers(cOptions, "/x//y/a.bmp"));
    EXPECT_EQ("o/x/", FolderOfFingers(cOptions, "./../../x/a.bmp"));
    EXPECT_EQ("o/x/", FolderOfFingers(cOptions, "x/.././a.bmp"));
    EXPECT_EQ("o/", FolderOfFingers(Into("o"), "x/y/a.bmp")) << "only if it is asked for";
}
