#include "ResultFile.hpp"

#include "PictureFiles.hpp"
#include "Result.hpp"
#include "Stop.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
template <class Fn> std::pair<int, std::string> Fault(Fn&& fn)
{
    try
    {
        fn();
    }
    catch (const ClRunError& cError)
    {
        return {cError.m_nExit, cError.what()};
    }
    return {0, ""};
}
} // namespace

TEST(ResultFile, WhatIsWrittenIsThereAtOnce)
{
    const ClTempFolder cFolder;
    ClResultFile cFile;
    cFile.Open(cFolder.Path("a"), false);
    cFile.Write("one");
    EXPECT_EQ("one", cFolder.Read("a"));
    cFile.Write("");
    cFile.Write(" two");
    EXPECT_EQ("one two", cFolder.Read("a"));
    cFile.Truncate(2);
    cFile.Write("!");
    cFile.Close();
    cFile.Close();
    EXPECT_EQ("on!", cFolder.Read("a"));
}

TEST(ResultFile, AnOldFileIsEmptiedOrKept)
{
    const ClTempFolder cFolder;
    cFolder.Write("a", std::string("old"));
    {
        ClResultFile cKept;
        cKept.Open(cFolder.Path("a"), true);
        EXPECT_EQ("old", cFolder.Read("a"));
    }
    ClResultFile cFile;
    cFile.Open(cFolder.Path("a"), false);
    EXPECT_EQ("", cFolder.Read("a"));
}

TEST(ResultFile, ASecondRunDoesNotGetIt)
{
    const ClTempFolder cFolder;
    ClResultFile cFirst;
    cFirst.Open(cFolder.Path("a"), false);
    cFirst.Write("first");
    ClResultFile cSecond;
    const auto [nExit, sText] = Fault([&] { cSecond.Open(cFolder.Path("a"), false); });
    EXPECT_EQ(eExitInternal, nExit);
    EXPECT_NE(std::string::npos, sText.find("another run")) << sText;
    EXPECT_EQ("first", cFolder.Read("a"));
}

TEST(ResultFile, FaultsNameTheFileAndTheReason)
{
    const ClTempFolder cFolder;
    ClResultFile cFile;
    const auto [nExit, sText] = Fault([&] { cFile.Open(cFolder.Path("no/a"), false); });
    EXPECT_EQ(eExitInternal, nExit);
    EXPECT_NE(std::string::npos, sText.find("no/a: No such file")) << sText;
    EXPECT_EQ(eExitInternal, Fault([&] { cFile.Open(cFolder.Path(""), false); }).first);
    ClResultFile cFull;
    cFull.Open("/dev/full", false);
    EXPECT_NE(std::string::npos, Fault([&] { cFull.Write("x"); }).second.find("No space left"));
}

TEST(ResultFile, ASleepingReaderDoesNotKeepARunFromStopping)
{
    const ClTempFolder cFolder;
    ClStop::Install();
    const std::string sPipe = cFolder.Path("pipe");
    ASSERT_EQ(0, mkfifo(sPipe.c_str(), 0600));
    const int nReader = open(sPipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(nReader, 0);
    ClResultFile cFile;
    cFile.Open(sPipe, false);
    const pthread_t hWriter = pthread_self();
    std::thread cSignal(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            pthread_kill(hWriter, SIGTERM);
        });
    EXPECT_EQ(128 + SIGTERM, Fault([&] { cFile.Write(std::string(1 << 20, 'x')); }).first);
    cSignal.join();
    close(nReader);
    ClStop::Reset();
}
