// The log of a whole application: the environment is read when the shared library is loaded.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{
/// Standard output of the program with variables of the environment, as "NAME='value'" in front of its command.
std::vector<std::string> LinesWith(const std::string& sEnvironment)
{
    const std::string sCommand =
        "unset VELMARIN_SDK_LOG VELMARIN_SDK_LOG_LEVEL; " + sEnvironment + " '" KORMELIN_LOG_CALLS "'";
    std::vector<std::string> aLines;
    std::FILE* pOutput = popen(sCommand.c_str(), "r");
    char szLine[2048];
    while (pOutput != nullptr && std::fgets(szLine, sizeof szLine, pOutput) != nullptr)
    {
        aLines.push_back(szLine);
    }
    EXPECT_EQ(0, pOutput != nullptr ? pclose(pOutput) : -1);
    return aLines;
}

// "%p" shows an address, which differs from run to run.
constexpr char szTime[] = "[0-9]{4}-[A-Z][a-z]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}(\\.[0-9]{6})? ";

testing::Matcher<const std::string&> Line(const std::string& sPattern)
{
    return testing::MatchesRegex(szTime + sPattern + "\n");
}

const std::string sUninitializeError =
    "\\[Error\\] - KSUninitialize\\(void\\) Error\\(-2\\): Prior initialization is necessary\\.";
const std::string sPropertyHead = "KSGetPropertyLongA\\(\\(nil\\), 0x[0-9a-f]+, 0x[0-9a-f]+\\)";
const std::string sPropertyError =
    "\\[Error\\] - " + sPropertyHead + " Error\\(-42\\): The handle parameter is set to NULL\\.";
} // namespace

TEST(LogOfProcess, IsOffByDefault)
{
    EXPECT_THAT(LinesWith(""), testing::IsEmpty());
    EXPECT_THAT(LinesWith("VELMARIN_SDK_LOG_LEVEL=7"), testing::IsEmpty());
}

TEST(LogOfProcess, IsOffForAnythingButTheTextOne)
{
    for (const char* szValue : {"'1 '", "true", "''", "0", "01"})
    {
        EXPECT_THAT(LinesWith(std::string("VELMARIN_SDK_LOG=") + szValue), testing::IsEmpty()) << szValue;
    }
}

TEST(LogOfProcess, ShowsEveryCallAtTheDefaultLevel)
{
    const std::string sVersion = "\\[Debug\\] - KSGetVersionA\\(0x[0-9a-f]+, 0x[0-9a-f]+\\)";
    for (const char* szLevel :
         {"", "VELMARIN_SDK_LOG_LEVEL=7", "VELMARIN_SDK_LOG_LEVEL=8", "VELMARIN_SDK_LOG_LEVEL=-1"})
    {
        EXPECT_THAT(LinesWith(std::string("VELMARIN_SDK_LOG=1 ") + szLevel),
                    testing::ElementsAre(Line(sVersion + " Enter"), Line(sVersion + " Leave"),
                                         Line("\\[Debug\\] - KSUninitialize\\(void\\) Enter"), Line(sUninitializeError),
                                         Line("\\[Debug\\] - " + sPropertyHead + " Enter"), Line(sPropertyError)))
            << szLevel;
    }
}

TEST(LogOfProcess, ShowsErrorsOnlyAtLevelThree)
{
    for (const char* szLevel : {"3", "4", "6"})
    {
        EXPECT_THAT(LinesWith(std::string("VELMARIN_SDK_LOG=1 VELMARIN_SDK_LOG_LEVEL=") + szLevel),
                    testing::ElementsAre(Line(sUninitializeError), Line(sPropertyError)))
            << szLevel;
    }
    EXPECT_THAT(LinesWith("VELMARIN_SDK_LOG=1 VELMARIN_SDK_LOG_LEVEL=2"), testing::IsEmpty());
}
