#include "Decoder.hpp"

#include "PictureFiles.hpp"
#include "Result.hpp"
#include "Stop.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
constexpr double dLong = 60.0; // seconds; none of the tests waits for it

std::string TextOf(const Bytes_t& aBytes)
{
    return std::string(aBytes.begin(), aBytes.end());
}

std::pair<long, std::string> Refusal(const std::string& sCommand, const std::string& sFile = "x",
                                     double dSeconds = dLong)
{
    try
    {
        Decode(sCommand, sFile, dSeconds);
    }
    catch (const ClPictureError& cError)
    {
        return {cError.m_nCode, cError.what()};
    }
    return {0, ""};
}

// Whether the process whose number the file holds is gone, or only waits to be collected.
bool IsGone(const std::string& sFile)
{
    pid_t nProcess = 0;
    std::ifstream(sFile) >> nProcess;
    EXPECT_GT(nProcess, 0) << sFile;
    for (int i = 0; i < 500; ++i)
    {
        std::ifstream cStatus("/proc/" + std::to_string(nProcess) + "/stat");
        std::string sNumber;
        std::string sName;
        std::string sState;
        if (!(cStatus >> sNumber >> sName >> sState) || sState == "Z" || sState == "X") return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}
} // namespace

TEST(Decoder, WhatTheCommandWritesComesBack)
{
    EXPECT_EQ("hello", TextOf(Decode("printf hello", "x", dLong)));
    EXPECT_EQ(3000000u, Decode("head -c 3000000 /dev/zero", "x", dLong).size());
}

TEST(Decoder, TheFileNameIsAnArgumentAndNeverAPartOfTheCommand)
{
    for (const char* szName :
         {"plain", "with space", "$(echo bad)", "`echo bad`", "a;echo bad", "'\"", "-n", "*", "a\nb"})
    {
        EXPECT_EQ(szName, TextOf(Decode("printf %s \"$1\"", szName, dLong)));
    }
}

TEST(Decoder, NothingStandsOnItsStandardInput)
{
    EXPECT_EQ("0\n", TextOf(Decode("wc -c", "x", dLong)));
}

TEST(Decoder, FailuresTellStatusAndComplaint)
{
    const auto [nCode, sText] = Refusal("echo 'bad file' >&2; exit 7");
    EXPECT_EQ(FPC_ERROR_UNKNOWN_CODEC, nCode);
    EXPECT_NE(std::string::npos, sText.find("status 7: bad file")) << sText;
    EXPECT_NE(std::string::npos, Refusal("no-such-program-anywhere").second.find("status 127"));
    EXPECT_NE(std::string::npos, Refusal("kill -9 $$").second.find("signal 9"));
    EXPECT_NE(std::string::npos, Refusal("true").second.find("nothing"));
    EXPECT_NE(std::string::npos, Refusal("printf half; exit 1").second.find("status 1"));
}

TEST(Decoder, OnlyTheEndOfALongComplaintIsKept)
{
    const std::string sText = Refusal("head -c 1000000 /dev/zero | tr '\\0' x >&2; echo the end >&2; exit 1").second;
    EXPECT_LT(sText.size(), 500u);
    EXPECT_NE(std::string::npos, sText.find("the end")) << sText;
}

TEST(Decoder, IsKilledWithAllItStartedWhenItTakesTooLong)
{
    const ClTempFolder cFolder;
    const std::string sNumber = cFolder.Path("number");
    const auto cBegin = std::chrono::steady_clock::now();
    const auto [nCode, sText] = Refusal("sleep 1000 & echo $! > \"$1\"; wait", sNumber, 0.3);
    EXPECT_EQ(FPC_ERROR_READ_FAIL, nCode);
    EXPECT_NE(std::string::npos, sText.find("0.3 s")) << sText;
    EXPECT_LT(std::chrono::steady_clock::now() - cBegin, std::chrono::seconds(50));
    EXPECT_TRUE(IsGone(sNumber));
}

TEST(Decoder, WhatItLeavesRunningIsKilledAndDoesNotDelayIt)
{
    const ClTempFolder cFolder;
    const std::string sNumber = cFolder.Path("number");
    EXPECT_EQ("done", TextOf(Decode("sleep 1000 & echo $! > \"$1\"; printf done", sNumber, dLong)));
    EXPECT_TRUE(IsGone(sNumber));
}

TEST(Decoder, ACommandThatClosesItsOutputIsWaitedFor)
{
    const auto [nCode, sText] = Refusal("printf half; exec >&-; sleep 0.2; exit 5");
    EXPECT_NE(std::string::npos, sText.find("status 5")) << sText;
}

TEST(Decoder, EndsWhenTheRunIsToStop)
{
    ClStop::Install();
    ASSERT_EQ(0, raise(SIGTERM));
    const ClTempFolder cFolder;
    const std::string sNumber = cFolder.Path("number");
    EXPECT_EQ("the run was stopped", Refusal("sleep 1000", "x").second);
    ClStop::Reset();
    signal(SIGTERM, SIG_DFL);
    EXPECT_EQ("hello", TextOf(Decode("printf hello", "x", dLong)));
}
