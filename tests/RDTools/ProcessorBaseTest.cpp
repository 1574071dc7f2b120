#include "RDTools/ProcessorBase.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{
/// A processor that writes down its phases and gives the results it is told to give.
class ClRecorder : public ClProcessorBase
{
public:
    using ClProcessorBase::FormatSettings;
    using ClProcessorBase::QueryParameters;
    ClProcessorBase* Create() override { return NewProcessor<ClRecorder>(); }
    const char* Name() const override { return "Recorder"; }
    void ParameterString(char* szBuffer, unsigned long nSize) override
    {
        FormatSettings(szBuffer, nSize, "W%d %s", m_nWidth, m_sMode.c_str());
    }
    void SetParametersToDefault() override { m_nWidth = 3; }
    void PublishParameters(ClParameterContainer& cContainer) override { cContainer.AddNumeric("Width", &m_nWidth); }
    long Initialize() override
    {
        m_sPhases += "I";
        return m_nInitialize;
    }
    long Process() override
    {
        m_sPhases += "P";
        if (m_bThrow)
        {
            throw std::runtime_error("in the middle");
        }
        return m_nProcess;
    }
    long Finalize(long nResult) override
    {
        m_sPhases += "F" + std::to_string(nResult);
        return m_nFinalize;
    }

    std::string m_sPhases;
    long m_nInitialize = 0;
    long m_nProcess = 0;
    long m_nFinalize = 0;
    bool m_bThrow = false;
    int m_nWidth = 7;
    std::string m_sMode = "XY";
};

class ClOther : public ClRecorder
{
};

/// The base with only what it leaves pure.
class ClPlain : public ClProcessorBase
{
public:
    using ClProcessorBase::QueryParameters;
    ClProcessorBase* Create() override { return NewProcessor<ClPlain>(); }
    const char* Name() const override { return ClProcessorBase::Name(); }
    long Process() override { return 12; }
};

class ClListeningTimer : public ClProfileTimer
{
public:
    void TimerStart(const char* szFormat, ...) override { m_sHeard += szFormat == nullptr ? "start;" : szFormat; }
    void TimerStop(const char* szFormat, ...) override
    {
        char szText[600];
        va_list args;
        va_start(args, szFormat);
        std::vsnprintf(szText, sizeof szText, szFormat, args);
        va_end(args);
        m_sHeard += "stop " + std::string(szText) + ";";
    }

    std::string m_sHeard;
};

/// Puts the two globals back to null, as they stand when the library is loaded.
class ProcessorBase : public testing::Test
{
protected:
    ~ProcessorBase() override
    {
        g_pClassCallProfile = nullptr;
        g_pProfileTimer = nullptr;
    }
};
} // namespace

TEST_F(ProcessorBase, TheGlobalsAreNullAtLoadTime)
{
    EXPECT_EQ(nullptr, g_pClassCallProfile);
    EXPECT_EQ(nullptr, g_pProfileTimer);
}

TEST_F(ProcessorBase, PhasesRunInOrder)
{
    ClRecorder cProcessor;
    EXPECT_EQ(0, cProcessor.Apply());
    EXPECT_EQ("IPF0", cProcessor.m_sPhases);
}

TEST_F(ProcessorBase, AFailedInitializeEndsTheRun)
{
    ClRecorder cProcessor;
    cProcessor.m_nInitialize = -5;
    EXPECT_EQ(-5, cProcessor.Apply());
    EXPECT_EQ("I", cProcessor.m_sPhases);
}

TEST_F(ProcessorBase, AnyValueButZeroOfInitializeIsAFailure)
{
    ClRecorder cProcessor;
    cProcessor.m_nInitialize = 1L << 33; // its low 32 bits are 0
    EXPECT_EQ(1L << 33, cProcessor.Apply());
    EXPECT_EQ("I", cProcessor.m_sPhases);
}

TEST_F(ProcessorBase, AFailedProcessIsFinalizedAndReturned)
{
    ClRecorder cProcessor;
    cProcessor.m_nProcess = -7;
    EXPECT_EQ(-7, cProcessor.Apply());
    EXPECT_EQ("IPF-7", cProcessor.m_sPhases);
}

TEST_F(ProcessorBase, AFailedFinalizeRaisesItsValue)
{
    ClRecorder cProcessor;
    cProcessor.m_nFinalize = -9;
    EXPECT_RAISES(cProcessor.Apply(), ClException, -9, "Unknown error code.\nFinalization failed");
    EXPECT_EQ("IPF0", cProcessor.m_sPhases);
    cProcessor.m_nFinalize = FPC_ERROR_INTERNAL;
    EXPECT_RAISES(cProcessor.Apply(), ClException, FPC_ERROR_INTERNAL, "Internal error.\nFinalization failed");
}

TEST_F(ProcessorBase, AnExceptionOfProcessGoesStraightThrough)
{
    ClClassCallProfile cProfile;
    ClListeningTimer cTimer;
    g_pClassCallProfile = &cProfile;
    g_pProfileTimer = &cTimer;
    ClRecorder cProcessor;
    cProcessor.m_bThrow = true;
    EXPECT_THROW(cProcessor.Apply(), std::runtime_error);
    EXPECT_EQ("IP", cProcessor.m_sPhases);
    EXPECT_EQ("start;", cTimer.m_sHeard);
    EXPECT_EQ(0u, cProfile.m_aEntries.Entries());
}

TEST_F(ProcessorBase, TheProfileCountsRunsByClass)
{
    ClClassCallProfile cProfile;
    g_pClassCallProfile = &cProfile;
    ClRecorder cFirst;
    ClRecorder cSecond;
    ClOther cOther;
    cSecond.m_nProcess = -7; // a failed run is a run
    cFirst.Apply();
    cOther.Apply();
    cSecond.Apply();
    ASSERT_EQ(2u, cProfile.m_aEntries.Entries());
    EXPECT_EQ(&typeid(ClRecorder), cProfile.m_aEntries[0].m_pType);
    EXPECT_EQ(2, cProfile.m_aEntries[0].m_nCalls);
    EXPECT_EQ(&typeid(ClOther), cProfile.m_aEntries[1].m_pType);
    EXPECT_EQ(1, cProfile.m_aEntries[1].m_nCalls);
    EXPECT_GE(cProfile.m_aEntries[0].m_dSeconds, 0.0);
    cProfile.Clear();
    EXPECT_EQ(0u, cProfile.m_aEntries.Entries());
    EXPECT_EQ(nullptr, cProfile.m_aEntries.m_pData);
}

TEST_F(ProcessorBase, TheProfileLeavesOutRunsThatDidNotEnd)
{
    ClClassCallProfile cProfile;
    g_pClassCallProfile = &cProfile;
    ClRecorder cProcessor;
    cProcessor.m_nInitialize = -5;
    cProcessor.Apply();
    cProcessor.m_nInitialize = 0;
    cProcessor.m_nFinalize = -9;
    EXPECT_RAISES_CODE(cProcessor.Apply(), -9);
    EXPECT_EQ(0u, cProfile.m_aEntries.Entries());
}

TEST_F(ProcessorBase, TheProfileSumsUpSeconds)
{
    ClClassCallProfile cProfile;
    cProfile.AddRun(typeid(int), 1.25);
    cProfile.AddRun(typeid(long), 8.0);
    cProfile.AddRun(typeid(int), 0.5);
    cProfile.TraceTimes();
    ASSERT_EQ(2u, cProfile.m_aEntries.Entries());
    EXPECT_EQ(1.75, cProfile.m_aEntries[0].m_dSeconds);
    EXPECT_EQ(8.0, cProfile.m_aEntries[1].m_dSeconds);
}

TEST_F(ProcessorBase, TheStopWatchCountsFromItsMaking)
{
    Vlm::CXStopWatch cWatch;
    EXPECT_GE(cWatch.Seconds(), 0.0);
    // Two seconds and a quarter before now, with microseconds to borrow whatever the clock says.
    gettimeofday(&cWatch.m_cStart, nullptr);
    cWatch.m_cStart.tv_sec -= 3;
    cWatch.m_cStart.tv_usec += 750000;
    EXPECT_NEAR(2.25, cWatch.Seconds(), 0.2);
}

TEST_F(ProcessorBase, TheTimerHearsStartAndStopWithNameAndSettings)
{
    ClListeningTimer cTimer;
    g_pProfileTimer = &cTimer;
    ClRecorder cProcessor;
    EXPECT_TRUE(cProcessor.IsTimerEnabled());
    cProcessor.Apply();
    EXPECT_EQ("start;stop Recorder W7 XY;", cTimer.m_sHeard);
    cTimer.m_sHeard.clear();
    cProcessor.TimerStart("one;");
    cProcessor.TimerStop("two");
    EXPECT_EQ("one;stop two;", cTimer.m_sHeard);
}

TEST_F(ProcessorBase, AFailedInitializeDoesNotStopTheTimer)
{
    ClListeningTimer cTimer;
    g_pProfileTimer = &cTimer;
    ClRecorder cProcessor;
    cProcessor.m_nInitialize = -5;
    cProcessor.Apply();
    EXPECT_EQ("start;", cTimer.m_sHeard);
}

TEST_F(ProcessorBase, TheTimerIsTakenAtConstructionAndCanBeSwitched)
{
    ClListeningTimer cFirst;
    ClListeningTimer cSecond;
    ClRecorder cEarly;
    EXPECT_EQ(nullptr, cEarly.m_pTimer);
    g_pProfileTimer = &cFirst;
    EXPECT_FALSE(cEarly.IsTimerEnabled());
    ClRecorder cProcessor;
    g_pProfileTimer = &cSecond;
    cProcessor.Apply();
    EXPECT_FALSE(cFirst.m_sHeard.empty());
    EXPECT_EQ("", cSecond.m_sHeard);

    cFirst.m_sHeard.clear();
    cProcessor.Timer(false);
    EXPECT_FALSE(cProcessor.IsTimerEnabled());
    cProcessor.Apply();
    EXPECT_EQ("", cFirst.m_sHeard + cSecond.m_sHeard);
    cProcessor.Timer(true); // the global of now
    cProcessor.Apply();
    EXPECT_EQ("", cFirst.m_sHeard);
    EXPECT_EQ("start;stop Recorder W7 XY;", cSecond.m_sHeard);
}

TEST_F(ProcessorBase, ThePlainTimerAndProfileDoNothing)
{
    ClProfileTimer cTimer;
    g_pProfileTimer = &cTimer;
    ClRecorder cProcessor;
    EXPECT_EQ(0, cProcessor.Apply());
}

TEST_F(ProcessorBase, TheBaseHasAnswersOfItsOwn)
{
    ClPlain cPlain;
    char szBuffer[4] = "#";
    EXPECT_STREQ("ProcessorBase", cPlain.Name());
    EXPECT_TRUE(cPlain.CanApply());
    EXPECT_EQ(0, cPlain.Initialize());
    EXPECT_EQ(0, cPlain.Finalize(-3));
    EXPECT_EQ(12, cPlain.Apply());
    cPlain.ParameterString(szBuffer, 1);
    EXPECT_STREQ("", szBuffer);
    EXPECT_RAISES(cPlain.ParameterString(szBuffer, 0), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nUnexpected zero-length string");
    ClParameterContainer cTree;
    cPlain.QueryParameters(cTree);
    EXPECT_EQ(0u, cTree.m_aChildren.Entries());
    const std::unique_ptr<ClProcessorBase> pNew(cPlain.Create());
    EXPECT_TRUE(typeid(*pNew) == typeid(ClPlain));
}

TEST_F(ProcessorBase, QueryingFindsTrueDefaults)
{
    ClRecorder cProcessor;
    ClParameterContainer cTree;
    cProcessor.QueryParameters(cTree);
    EXPECT_EQ(7, cProcessor.m_nWidth);
    EXPECT_EQ("3", cTree.Find("Width")->GetDefaultValue());
}

TEST_F(ProcessorBase, SettingsThatDoNotFitAreRefused)
{
    ClRecorder cProcessor;
    char szBuffer[6];
    cProcessor.ParameterString(szBuffer, 6);
    EXPECT_STREQ("W7 XY", szBuffer);
    EXPECT_RAISES(cProcessor.ParameterString(szBuffer, 5), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nString-Length exceeded available size");
    EXPECT_RAISES(cProcessor.ParameterString(szBuffer, 0), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nString-Length exceeded available size");
}

TEST_F(ProcessorBase, SettingsThatCannotBeWrittenAreRefused)
{
    const std::string sLocale = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C");
    const wchar_t wszBeyond[] = {wchar_t(0x20AC), 0}; // has no byte in the locale "C"
    char szBuffer[16];
    EXPECT_RAISES(ClRecorder::FormatSettings(szBuffer, sizeof szBuffer, "%ls", wszBeyond), ClException,
                  FPC_ERROR_INTERNAL, "Internal error.\nString-Length exceeded available size");
    std::setlocale(LC_ALL, sLocale.c_str());
}
