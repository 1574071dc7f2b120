#include "RDTools/RDLogging.hpp"

#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <gmock/gmock.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <locale>
#include <string>
#include <sys/time.h>

namespace
{
using Console = TpLoggingConsole<ClLoggingNone>;
using Configurator = TpLoggingConfigurator<TpLoggingDebugOut<Console>>;

Configurator& Switch()
{
    return ClSystemLogging::m_oFallbackLogger;
}

Console& ConsoleOfSystem()
{
    return TpLogging<Console>::m_oFallbackLogger;
}

/// Sets or, given null, removes a variable of the environment, and puts back what was there.
class ClVariable
{
public:
    ClVariable(const char* szName, const char* szValue) : m_szName(szName)
    {
        const char* szOld = std::getenv(szName);
        m_bSet = szOld != nullptr;
        m_sOld = m_bSet ? szOld : "";
        Put(szValue);
    }
    ~ClVariable() { Put(m_bSet ? m_sOld.c_str() : nullptr); }

private:
    void Put(const char* szValue)
    {
        if (szValue != nullptr)
        {
            setenv(m_szName, szValue, 1);
        }
        else
        {
            unsetenv(m_szName);
        }
    }
    const char* m_szName;
    bool m_bSet;
    std::string m_sOld;
};

bool EnabledBy(const char* szValue)
{
    const ClVariable cVariable("VELMARIN_SDK_LOG", szValue);
    return Configurator().m_bEnabled;
}

int LevelBy(const char* szValue)
{
    const ClVariable cVariable("VELMARIN_SDK_LOG_LEVEL", szValue);
    return Console().m_nLevel;
}

/// Switches the system's logger for one test.
class RDLogging : public testing::Test
{
protected:
    RDLogging() : m_bEnabled(Switch().m_bEnabled), m_nLevel(ConsoleOfSystem().m_nLevel) {}
    ~RDLogging() override
    {
        Switch().m_bEnabled = m_bEnabled;
        ConsoleOfSystem().m_nLevel = m_nLevel;
    }

    template <class Call> static std::string Written(Call&& call)
    {
        testing::internal::CaptureStdout();
        call();
        return testing::internal::GetCapturedStdout();
    }

    bool m_bEnabled;
    int m_nLevel;
};

std::string Text(std::size_t nLength)
{
    return std::string(nLength, 'x');
}
} // namespace

TEST_F(RDLogging, IsOnExactlyForTheTextOne)
{
    EXPECT_TRUE(EnabledBy("1"));
    for (const char* szOther : {"", "0", "1 ", " 1", "01", "11", "true", "yes"})
    {
        EXPECT_FALSE(EnabledBy(szOther)) << '"' << szOther << '"';
    }
    EXPECT_FALSE(EnabledBy(nullptr));
}

TEST_F(RDLogging, LevelIsANumberFromZeroToSevenOrElseSeven)
{
    for (int i = 0; i <= 7; ++i)
    {
        EXPECT_EQ(i, LevelBy(std::to_string(i).c_str()));
    }
    EXPECT_EQ(3, LevelBy(" 3 of 7")); // as atoi reads it
    EXPECT_EQ(0, LevelBy(""));        // no digits are a 0
    EXPECT_EQ(0, LevelBy("debug"));
    for (const char* szOther : {"8", "-1", "-8", "100", "2147483647"})
    {
        EXPECT_EQ(7, LevelBy(szOther)) << szOther;
    }
    EXPECT_EQ(7, LevelBy(nullptr));
}

/// A locale that groups digits in threes.
struct ClGrouping : std::numpunct<char>
{
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(RDLogging, TimeIsWrittenTheSameInEveryLocale)
{
    Switch().m_bEnabled = true;
    ConsoleOfSystem().m_nLevel = 7;
    const std::locale cBefore = std::locale::global(std::locale(std::locale::classic(), new ClGrouping));
    const std::string sLine = Written([] { ClSystemLogging::LogF(eLogDebug, "x"); });
    std::locale::global(cBefore);
    EXPECT_EQ(std::string::npos, sLine.find(',')) << sLine;
}

TEST_F(RDLogging, LineIsTimeLevelAndMessage)
{
    Switch().m_bEnabled = true;
    ConsoleOfSystem().m_nLevel = 7;
    const std::string sLine = Written([] { ClSystemLogging::LogF(eLogDebug, "f(%d, %s) Enter", 42, "x"); });
    EXPECT_THAT(sLine, testing::MatchesRegex(
                           "[0-9]{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-[0-3][0-9] "
                           "[0-2][0-9]:[0-5][0-9]:[0-6][0-9](\\.[0-9]{6})? \\[Debug\\] - f\\(42, x\\) Enter\n"));
}

TEST_F(RDLogging, TimeIsTheLocalTimeOfTheCall)
{
    const ClVariable cZone("TZ", "XYZ-05:30"); // east of Greenwich by five and a half hours
    tzset();
    Switch().m_bEnabled = true;
    ConsoleOfSystem().m_nLevel = 7;
    const std::time_t nBefore = std::time(nullptr);
    const std::string sLine = Written([] { ClSystemLogging::LogF(eLogInfo, "x"); });
    const std::time_t nAfter = std::time(nullptr);
    bool bFound = false;
    for (std::time_t nNow = nBefore; nNow <= nAfter; ++nNow)
    {
        const std::time_t nShifted = nNow + 5 * 3600 + 30 * 60;
        std::tm cUtc = {};
        gmtime_r(&nShifted, &cUtc);
        char szExpected[32];
        std::strftime(szExpected, sizeof szExpected, "%Y-%b-%d %H:%M:%S", &cUtc);
        bFound = bFound || sLine.rfind(szExpected, 0) == 0;
    }
    EXPECT_TRUE(bFound) << sLine;
}

TEST_F(RDLogging, NamesTheEightLevels)
{
    const char* const aszNames[] = {"Emergency", "Alert", "Critical", "Error", "Warning", "Notice", "Info", "Debug"};
    for (int i = 0; i < 8; ++i)
    {
        EXPECT_STREQ(aszNames[i], LogLevelName(static_cast<VlmLogLevels>(i)));
    }
    EXPECT_STREQ("Unknown", LogLevelName(static_cast<VlmLogLevels>(8)));
    EXPECT_STREQ("Unknown", LogLevelName(static_cast<VlmLogLevels>(-1)));
}

TEST_F(RDLogging, WritesLevelsUpToItsOwn)
{
    Switch().m_bEnabled = true;
    for (int nLimit = 0; nLimit <= 7; ++nLimit)
    {
        ConsoleOfSystem().m_nLevel = nLimit;
        for (int nLevel = 0; nLevel <= 9; ++nLevel)
        {
            const std::string sLine =
                Written([nLevel] { ClSystemLogging::LogF(static_cast<VlmLogLevels>(nLevel), "message"); });
            EXPECT_EQ(nLevel <= nLimit, !sLine.empty()) << nLevel << " at " << nLimit;
        }
    }
    ConsoleOfSystem().m_nLevel = 9; // no setting of the environment comes here
    EXPECT_THAT(Written([] { ClSystemLogging::LogF(static_cast<VlmLogLevels>(9), "message"); }),
                testing::HasSubstr(" [Unknown] - message\n"));
}

TEST_F(RDLogging, WritesNothingWhileItIsOff)
{
    Switch().m_bEnabled = false;
    ConsoleOfSystem().m_nLevel = 7;
    EXPECT_EQ("", Written([] { ClSystemLogging::LogF(eLogEmergency, "message"); }));
}

TEST_F(RDLogging, RefusesANullFormatEvenWhenOff)
{
    for (const bool bEnabled : {false, true})
    {
        Switch().m_bEnabled = bEnabled;
        EXPECT_RAISES(ClSystemLogging::LogF(eLogDebug, nullptr), ClException, -49,
                      "An error occurred in the log function, maybe log full.\nszFormat == NULL");
    }
}

TEST_F(RDLogging, RefusesExactly1024CharactersEvenWhenOff)
{
    for (const bool bEnabled : {false, true})
    {
        Switch().m_bEnabled = bEnabled;
        ConsoleOfSystem().m_nLevel = 3;
        EXPECT_RAISES(ClSystemLogging::LogF(eLogDebug, "%s", Text(1024).c_str()), ClException, -49,
                      "An error occurred in the log function, maybe log full.\n"
                      "Logging Message bigger than 1024 bytes.");
        for (const std::size_t nLength : {1023u, 1025u, 2000u})
        {
            EXPECT_NO_THROW(ClSystemLogging::LogF(eLogDebug, "%s", Text(nLength).c_str())) << nLength;
        }
    }
}

TEST_F(RDLogging, CutsALongMessageTo1023Characters)
{
    Switch().m_bEnabled = true;
    ConsoleOfSystem().m_nLevel = 7;
    for (const std::size_t nLength : {1022u, 1023u, 1025u, 2000u})
    {
        const std::string sLine = Written([&] { ClSystemLogging::LogF(eLogInfo, "%s", Text(nLength).c_str()); });
        const std::string sMessage = sLine.substr(sLine.find(" - ") + 3);
        EXPECT_EQ(Text(std::min<std::size_t>(nLength, 1023)) + "\n", sMessage) << nLength;
    }
}

TEST_F(RDLogging, TellsWhyFormattingFailed)
{
    const std::string sLocale = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C");
    const wchar_t wszBeyond[] = {wchar_t(0x20AC), 0}; // has no byte in the locale "C"
    EXPECT_RAISES(ClSystemLogging::LogF(eLogDebug, "%ls", wszBeyond), ClException, -49,
                  "An error occurred in the log function, maybe log full.\n"
                  "Invalid or incomplete multibyte or wide character");
    std::setlocale(LC_ALL, sLocale.c_str());
}
