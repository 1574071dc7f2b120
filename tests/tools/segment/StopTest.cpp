#include "Stop.hpp"

#include <gtest/gtest.h>

#include <csignal>

#include <poll.h>
#include <unistd.h>

using namespace SegmentTool;

namespace
{
bool IsReadable()
{
    pollfd cWait = {ClStop::Descriptor(), POLLIN, 0};
    return poll(&cWait, 1, 0) == 1;
}
} // namespace

TEST(Stop, EachSignalAsksOnceAndKillsTheSecondTime)
{
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP})
    {
        signal(nSignal, SIG_DFL);
        ClStop::Reset();
        ClStop::Install();
        EXPECT_FALSE(ClStop::IsAsked());
        EXPECT_EQ(0, ClStop::Signal());
        EXPECT_FALSE(IsReadable());
        ASSERT_EQ(0, raise(nSignal));
        EXPECT_TRUE(ClStop::IsAsked());
        EXPECT_EQ(nSignal, ClStop::Signal());
        EXPECT_TRUE(IsReadable());
        struct sigaction cNow = {};
        sigaction(nSignal, nullptr, &cNow);
        EXPECT_EQ(SIG_DFL, cNow.sa_handler);
    }
    ClStop::Reset();
    EXPECT_FALSE(ClStop::IsAsked());
    EXPECT_FALSE(IsReadable());
}

TEST(Stop, AnIgnoredSignalStaysIgnored)
{
    signal(SIGHUP, SIG_IGN); // as under nohup
    ClStop::Install();
    ASSERT_EQ(0, raise(SIGHUP));
    EXPECT_FALSE(ClStop::IsAsked());
    signal(SIGHUP, SIG_DFL);
}

TEST(Stop, CanBeAskedForWithoutASignal)
{
    ClStop::Install();
    ClStop::Ask();
    EXPECT_TRUE(ClStop::IsAsked());
    EXPECT_EQ(0, ClStop::Signal());
    EXPECT_TRUE(IsReadable());
    ClStop::Reset();
}

TEST(Stop, AClosedPipeIsAnErrorOfWriting)
{
    ClStop::Install();
    int anEnds[2];
    ASSERT_EQ(0, pipe(anEnds));
    close(anEnds[0]);
    EXPECT_EQ(-1, write(anEnds[1], "x", 1));
    EXPECT_EQ(EPIPE, errno);
    close(anEnds[1]);
}
