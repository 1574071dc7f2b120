// Eight threads, each with handles of its own, as far as the library serves several at once: results are those of one
// thread, whatever the others do.

#include "GuardedSlapRunner.hpp"
#include "KormelinSegmentation.hpp"
#include "ReadOnlySegment.hpp"
#include "SlapPicture.hpp"
#include "TempFolder.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
constexpr int nThreads = 8;

/// Runs fn(number of the thread) on eight threads at once.
void OnAllThreads(const std::function<void(int)>& fn)
{
    std::atomic<int> nMissing{nThreads};
    std::vector<std::thread> aThreads;
    for (int i = 0; i < nThreads; ++i)
    {
        aThreads.emplace_back(
            [&, i]
            {
                --nMissing;
                while (nMissing > 0)
                {
                    std::this_thread::yield();
                }
                fn(i);
            });
    }
    for (std::thread& cThread : aThreads)
    {
        cThread.join();
    }
}

using Inputs = std::deque<ClMovingInput>;

/// All threads read them where they are.
const Inputs& Pictures()
{
    static const Inputs aInputs = []
    {
        Inputs aMade;
        for (const auto& cScene : {SlapScenes::OneFinger(3937), SlapScenes::TwoFingers(3937),
                                   SlapScenes::ThreeFingers(3937), SlapScenes::LeaningPair(0.4, 3937)})
        {
            aMade.emplace_back(ClSlapPicture(cScene).Block());
        }
        return aMade;
    }();
    return aInputs;
}

/// Results of one thread, in both modes.
const std::vector<ClSlapRunResult>& Expected()
{
    static const std::vector<ClSlapRunResult> aExpected = []
    {
        std::vector<ClSlapRunResult> aMade;
        for (const long nMode : {0L, 1L})
        {
            for (const ClMovingInput& cInput : Pictures())
            {
                aMade.push_back(ClGuardedSlapRunner(nMode).Run(cInput.Place(0)));
            }
        }
        return aMade;
    }();
    return aExpected;
}

bool RunsAsExpected(std::size_t nRun, int nThread)
{
    const std::size_t nPictures = Pictures().size();
    ClGuardedSlapRunner cRunner(static_cast<long>(nRun / nPictures));
    return cRunner.Run(Pictures()[nRun % nPictures].Place(nThread / 2)) == Expected()[nRun];
}

/// What a child process printed, line by line, and its exit status.
struct StOutput
{
    std::vector<std::string> m_aLines;
    int m_nStatus = -1;
};

StOutput OutputOf(const std::string& sArgument, const std::string& sEnvironment)
{
    const std::string sCommand =
        "unset VELMARIN_SDK_LOG VELMARIN_SDK_LOG_LEVEL; " + sEnvironment + " '" KORMELIN_THREAD_CALLS "' " + sArgument;
    StOutput cOutput;
    std::FILE* pOutput = popen(sCommand.c_str(), "r");
    char szLine[2048];
    while (pOutput != nullptr && std::fgets(szLine, sizeof szLine, pOutput) != nullptr)
    {
        cOutput.m_aLines.push_back(szLine);
    }
    cOutput.m_nStatus = pOutput != nullptr ? pclose(pOutput) : -1;
    return cOutput;
}

// Lines with addresses and times of their own.
constexpr char szLogLine[] = "[0-9]{4}-[A-Z][a-z]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}(\\.[0-9]{6})? "
                             "\\[(Debug|Error)\\] - KS[A-Za-z]+\\([[:print:]]*\\) "
                             "(Enter|Leave|Error\\(-[0-9]+\\): [[:print:]]+)\n";
} // namespace

TEST(EightThreads, GiveTheBitsOfOneInBothModesAtOnce)
{
    const std::size_t nRuns = Expected().size();
    std::atomic<int> nWrong{0};
    OnAllThreads(
        [&](int nThread)
        {
            for (std::size_t i = 0; i < nRuns; ++i)
            {
                const std::size_t nRun = (i + static_cast<std::size_t>(nThread)) % nRuns; // no two in the same order
                nWrong += RunsAsExpected(nRun, nThread) ? 0 : 1;
            }
        });
    EXPECT_EQ(0, nWrong);
}

TEST(EightThreads, ReuseTheirHandlesForOneSharedPicture)
{
    std::atomic<int> nWrong{0};
    Expected();
    OnAllThreads(
        [&](int nThread)
        {
            const std::size_t nMode = static_cast<std::size_t>(nThread % 2);
            ClGuardedSlapRunner cRunner(static_cast<long>(nMode));
            for (int i = 0; i < 6; ++i)
            {
                nWrong += cRunner.Run(Pictures()[1].Place(i)) == Expected()[nMode * Pictures().size() + 1] ? 0 : 1;
            }
        });
    EXPECT_EQ(0, nWrong);
}

namespace
{
/// Takes references and gives them back, now and then one more than it took: then another thread finds one missing.
/// Returns the references that are left of its own, which may be below 0.
long TakeAndGiveReferences(const std::atomic<int>& nWorking, std::atomic<int>& nWrong)
{
    long nReferences = 0;
    for (int i = 0; nWorking > 0; ++i)
    {
        nReferences += KSInitialize(nullptr) == 0 ? 1 : 0;
        void* hSegment = nullptr;
        const long nCreated = KSCreateSegmentHandle(&hSegment);
        nWrong += nCreated == 0 || nCreated == -2 ? 0 : 1;
        nWrong += KSDestroyHandle(&hSegment) == (nCreated == 0 ? 0 : -42) ? 0 : 1;
        for (int n = 0; n < (i % 4 == 0 ? 2 : 1); ++n)
        {
            const long nResult = KSUninitialize();
            nReferences -= nResult == 0 ? 1 : 0;
            nWrong += nResult == 0 || nResult == -2 ? 0 : 1;
        }
    }
    return nReferences;
}

/// Asks for handles until some were granted, uses each, whatever becomes of the library meanwhile, and destroys it.
void UseHandlesThatAreGranted(int nWanted, std::atomic<int>& nWrong)
{
    for (int nGranted = 0; nGranted < nWanted;)
    {
        void* hSegmentation = nullptr;
        const long nResult = KSCreateSegmentationHandle(&hSegmentation);
        nWrong += nResult == (hSegmentation != nullptr ? 0 : -2) ? 0 : 1;
        if (nResult == 0)
        {
            long nCount = -1;
            nWrong += KSSetPropertyLongA(hSegmentation, "SegmentationMode", nGranted % 2) == 0 ? 0 : 1;
            nWrong += SegmentReadOnly(hSegmentation, Pictures()[0].Place(nGranted)) == 0 ? 0 : 1;
            nWrong += KSGetPropertyLongA(hSegmentation, "Count", &nCount) == 0 && nCount == 1 ? 0 : 1;
            nWrong += KSDestroyHandle(&hSegmentation) == 0 ? 0 : 1;
            ++nGranted;
        }
    }
}
} // namespace

// What is not granted is refused, and what was granted works to its end.
TEST(EightThreads, InitialiseCreateSegmentDestroyAndUninitialiseAtOnce)
{
    Expected();
    ASSERT_EQ(-2, KSUninitialize());
    std::atomic<int> nWrong{0};
    std::atomic<int> nWorking{nThreads / 2};
    std::atomic<long> nReferences{0};
    OnAllThreads(
        [&](int nThread)
        {
            if (nThread % 2 == 0)
            {
                nReferences += TakeAndGiveReferences(nWorking, nWrong);
            }
            else
            {
                UseHandlesThatAreGranted(6, nWrong);
                --nWorking;
            }
        });
    EXPECT_EQ(0, nWrong);
    EXPECT_LE(0, nReferences);
    for (; nReferences > 0; --nReferences)
    {
        EXPECT_EQ(0, KSUninitialize());
    }
    EXPECT_EQ(-2, KSUninitialize());
    EXPECT_EQ(0, KSInitialize(nullptr));
    EXPECT_TRUE(RunsAsExpected(0, 0));
    EXPECT_EQ(0, KSUninitialize());
}

TEST(EightThreads, ReadAndWritePropertiesOfTheirHandles)
{
    std::atomic<int> nWrong{0};
    ASSERT_EQ(0, KSInitialize(nullptr));
    OnAllThreads(
        [&](int nThread)
        {
            void* ahHandle[2] = {};
            nWrong += KSCreateSegmentationHandle(&ahHandle[0]) == 0 && KSCreateSegmentHandle(&ahHandle[1]) == 0 ? 0 : 1;
            for (int i = 0; i < 200; ++i)
            {
                const long nSet = (i + nThread) % 2;
                long nGot = -1;
                double dGot = 0.0;
                char szGot[32] = "";
                unsigned long nSize = sizeof szGot;
                nWrong += KSSetPropertyLongA(ahHandle[0], "CoordinateOrigin", nSet) == 0 ? 0 : 1;
                nWrong += KSSetPropertyA(ahHandle[0], "SegmentationMode", nSet != 0 ? "0" : "1") == 0 ? 0 : 1;
                nWrong += KSGetPropertyLongA(ahHandle[0], "coordinateorigin", &nGot) == 0 && nGot == nSet ? 0 : 1;
                nWrong += KSGetPropertyLongA(ahHandle[0], "SegmentationMode", &nGot) == 0 && nGot == 1 - nSet ? 0 : 1;
                nWrong += KSGetPropertyA(ahHandle[1], "Version", szGot, &nSize) == 0 ? 0 : 1;
                nWrong += std::strcmp(szGot, KS_VERSION_TEXT) == 0 ? 0 : 1;
                nWrong += KSSetPropertyLongA(ahHandle[0], "SegmentationMode", 2) == -35 ? 0 : 1;
                nWrong += KSSetPropertyDoubleA(ahHandle[0], "SegmentationMode", 1.0) == -44 ? 0 : 1;
                nWrong += KSGetPropertyDoubleA(ahHandle[1], "x", &dGot) == -44 ? 0 : 1;
                nWrong += KSGetPropertyLongA(ahHandle[1], "Colour", &nGot) == -206 ? 0 : 1;
            }
            nWrong += KSDestroyHandle(&ahHandle[0]) == 0 && KSDestroyHandle(&ahHandle[1]) == 0 ? 0 : 1;
        });
    EXPECT_EQ(0, nWrong);
    EXPECT_EQ(0, KSUninitialize());
}

TEST(EightThreads, AskForDescriptionsAndTheVersion)
{
    std::atomic<int> nWrong{0};
    OnAllThreads(
        [&](int)
        {
            for (long nCode = -830; nCode < 100; ++nCode)
            {
                nWrong += KSGetErrorDescriptionA(nCode) == KSGetErrorDescriptionA(nCode) ? 0 : 1;
            }
            nWrong += std::strcmp("The handle parameter is set to NULL.", KSGetErrorDescriptionA(-42)) == 0 ? 0 : 1;
            for (int i = 0; i < 100; ++i)
            {
                char szVersion[11];
                unsigned long nSize = sizeof szVersion;
                nWrong += KSGetVersionA(szVersion, &nSize) == 0 && std::strcmp(szVersion, KS_VERSION_TEXT) == 0 ? 0 : 1;
            }
        });
    EXPECT_EQ(0, nWrong);
}

// Every table and counter of the library is met for the first time by eight threads, in one new process after another.
TEST(ProcessOfEightThreads, SeesTheSameFromItsFirstCallsOn)
{
    std::map<std::string, int> aSums;
    for (int i = 0; i < 15; ++i)
    {
        const StOutput cOutput = OutputOf("first", "");
        EXPECT_EQ(0, cOutput.m_nStatus);
        ASSERT_EQ(1u, cOutput.m_aLines.size());
        ++aSums[cOutput.m_aLines[0]];
    }
    EXPECT_EQ(1u, aSums.size()) << testing::PrintToString(aSums);
}

TEST(ProcessOfEightThreads, WritesWholeLinesIntoOneLog)
{
    const StOutput cSilent = OutputOf("first", "");
    const StOutput cLogged = OutputOf("first", "VELMARIN_SDK_LOG=1");
    EXPECT_EQ(0, cLogged.m_nStatus);
    ASSERT_LT(8u * 20, cLogged.m_aLines.size());
    std::map<std::string, long> anLines;
    for (const std::string& sLine : cLogged.m_aLines)
    {
        if (sLine.compare(0, 4, "sum ") == 0)
        {
            EXPECT_EQ(cSilent.m_aLines.at(0), sLine);
            continue;
        }
        ASSERT_THAT(sLine, testing::MatchesRegex(szLogLine));
        for (const char* szTail : {" Enter\n", " Leave\n", " Error("})
        {
            anLines[szTail] += sLine.find(szTail) != std::string::npos ? 1 : 0;
        }
    }
    EXPECT_EQ(anLines[" Enter\n"], anLines[" Leave\n"] + anLines[" Error("]);
    EXPECT_LT(8 * 3, anLines[" Error("]);
    EXPECT_EQ(1, anLines[" Error("] % 8) << "eight times the same, and one at the end";
    EXPECT_EQ(0, anLines[" Leave\n"] % 8);
}

TEST(ProcessOfEightThreads, EndsWhileItsThreadsSegment)
{
    for (const char* szEnvironment : {"", "VELMARIN_SDK_LOG=1"})
    {
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_EQ(0, OutputOf("exit", szEnvironment).m_nStatus) << szEnvironment;
        }
    }
}
