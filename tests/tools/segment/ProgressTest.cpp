#include "Progress.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;

namespace
{
ClStanding Standing(std::uint64_t nDone, std::uint64_t nTotal, double dSeconds)
{
    ClStanding cStanding;
    cStanding.m_nDone = nDone;
    cStanding.m_nTotal = nTotal;
    cStanding.m_dSeconds = dSeconds;
    return cStanding;
}
} // namespace

TEST(Progress, TellsBarCountRateAndTimeLeft)
{
    EXPECT_EQ("[##########..............................]  50/200  25%  10.0/s  0:15 left",
              ProgressLine(Standing(50, 200, 5.0), 100));
    ClStanding cStanding = Standing(200, 200, 5.0);
    cStanding.m_nNotSegmented = 3;
    EXPECT_EQ("[########################################]  200/200  100%  40.0/s  0:00 left  3 not segmented",
              ProgressLine(cStanding, 100));
}

TEST(Progress, TheRateIsThatOfThisRun)
{
    ClStanding cStanding = Standing(1050, 2000, 10.0);
    cStanding.m_nEarlier = 1000;
    const std::string sLine = ProgressLine(cStanding, 100);
    EXPECT_NE(std::string::npos, sLine.find("5.0/s  3:10 left")) << sLine;
}

TEST(Progress, WithoutATotalThereIsNoBar)
{
    EXPECT_EQ("50  10.0/s", ProgressLine(Standing(50, 0, 5.0), 80));
    EXPECT_EQ("[........................................]  0/10  0%  0.0/s", ProgressLine(Standing(0, 10, 0.0), 80));
}

TEST(Progress, FitsIntoTheWidth)
{
    for (int nWidth = -1; nWidth < 120; ++nWidth)
    {
        EXPECT_LE(static_cast<int>(ProgressLine(Standing(50, 200, 5.0), nWidth).size()), std::max(0, nWidth));
    }
    EXPECT_EQ("50/200  25%  10.0/s  0:15 left", ProgressLine(Standing(50, 200, 5.0), 38)) << "no room for a bar";
}

TEST(Progress, MorePicturesThanCountedHarmNothing)
{
    EXPECT_EQ("[########################################]  12/10  120%  1.0/s  0:00 left",
              ProgressLine(Standing(12, 10, 12.0), 80));
}

TEST(Progress, SecondsAreShownAsAClock)
{
    EXPECT_EQ("0:00", ClockText(0.4));
    EXPECT_EQ("0:07", ClockText(7.9));
    EXPECT_EQ("12:34", ClockText(754));
    EXPECT_EQ("1:02:03", ClockText(3723));
    EXPECT_EQ("0:00", ClockText(-5));
    EXPECT_EQ("277777:46:40", ClockText(1e300));
}

TEST(Messages, GoToStandardErrorUnlessQuiet)
{
    testing::internal::CaptureStderr();
    {
        ClMessages cMessages(false);
        EXPECT_FALSE(cMessages.ShowsProgress()) << "that is no terminal";
        cMessages.Start(10, {});
        cMessages.Tell("a message");
        cMessages.Step({});
        ClMessages cQuiet(true);
        cQuiet.Tell("nothing");
        TellAlways("the end");
    }
    EXPECT_EQ("kormelin-segment: a message\nkormelin-segment: the end\n", testing::internal::GetCapturedStderr());
}
