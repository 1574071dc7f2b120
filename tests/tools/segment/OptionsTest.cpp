#include "Options.hpp"

#include <gtest/gtest.h>

#include <sstream>

using namespace SegmentTool;

namespace
{
ClCommand Parse(std::vector<const char*> aszArguments)
{
    aszArguments.insert(aszArguments.begin(), "kormelin-segment");
    return ParseCommandLine(static_cast<int>(aszArguments.size()), aszArguments.data());
}

void ExpectUsageError(const std::vector<const char*>& aszArguments, const std::string& sNamed)
{
    const ClCommand cCommand = Parse(aszArguments);
    EXPECT_FALSE(cCommand.m_bRun) << sNamed;
    EXPECT_NE(std::string::npos, cCommand.m_sErrors.find(sNamed)) << cCommand.m_sErrors;
    EXPECT_NE(std::string::npos, cCommand.m_sErrors.find("--help")) << cCommand.m_sErrors;
    EXPECT_EQ("", cCommand.m_sOut);
}
} // namespace

TEST(Options, DefaultsAreThoseOfTheHelp)
{
    const ClCommand cCommand = Parse({"a.bmp"});
    ASSERT_TRUE(cCommand.m_bRun) << cCommand.m_sErrors;
    const ClOptions& c = cCommand.m_cOptions;
    EXPECT_EQ(std::vector<std::string>{"a.bmp"}, c.m_cList.m_aInputs);
    EXPECT_EQ(ERecords::eText, c.m_eRecords);
    EXPECT_EQ(0.0, c.m_cReading.m_dPpi);
    EXPECT_EQ(30.0, c.m_cReading.m_dDecoderSeconds);
    EXPECT_EQ(1u, c.m_cList.m_nShard);
    EXPECT_EQ(1u, c.m_cList.m_nShards);
    EXPECT_FALSE(c.m_bBiggest || c.m_bQuiet || c.m_cList.m_bRecursive || c.m_cList.m_bNullSeparated);
}

TEST(Options, EachOneIsTaken)
{
    const ClCommand cCommand = Parse({"-r",
                                      "--endings",
                                      ".BMP,Pgm",
                                      "--files-from",
                                      "list",
                                      "-0",
                                      "--shard",
                                      "2/3",
                                      "--ppi",
                                      "500",
                                      "--decoder",
                                      "cat \"$1\"",
                                      "--decoder-timeout",
                                      "2.5",
                                      "--format",
                                      "csv",
                                      "--output",
                                      "o.csv",
                                      "--expect",
                                      "4",
                                      "-q",
                                      "-o",
                                      "d",
                                      "--image-format",
                                      "bmp",
                                      "--overlay",
                                      "--tree",
                                      "--report",
                                      "r.html",
                                      "--resume",
                                      "-j",
                                      "7",
                                      "x"});
    ASSERT_TRUE(cCommand.m_bRun) << cCommand.m_sErrors;
    const ClOptions& c = cCommand.m_cOptions;
    EXPECT_TRUE(c.m_cList.m_bRecursive);
    EXPECT_EQ((std::vector<std::string>{"bmp", "pgm"}), c.m_cList.m_aEndings);
    EXPECT_EQ("list", c.m_cList.m_sListFile);
    EXPECT_TRUE(c.m_cList.m_bNullSeparated);
    EXPECT_EQ(2u, c.m_cList.m_nShard);
    EXPECT_EQ(3u, c.m_cList.m_nShards);
    EXPECT_EQ(500.0, c.m_cReading.m_dPpi);
    EXPECT_EQ("cat \"$1\"", c.m_cReading.m_sDecoder);
    EXPECT_EQ(2.5, c.m_cReading.m_dDecoderSeconds);
    EXPECT_EQ(ERecords::eCsv, c.m_eRecords);
    EXPECT_EQ("o.csv", c.m_sOutput);
    EXPECT_EQ(4, c.m_nExpect);
    EXPECT_TRUE(c.m_bQuiet);
    EXPECT_EQ("d", c.m_sFolder);
    EXPECT_EQ(EImageFormat::eBmp, c.m_eImageFormat);
    EXPECT_TRUE(c.m_bOverlay && c.m_bTree && c.m_bResume);
    EXPECT_EQ("r.html", c.m_sReport);
    EXPECT_EQ(7, c.m_nJobs);
}

TEST(Options, NamesBehindTwoDashesAreNoOptions)
{
    const ClCommand cCommand = Parse({"--biggest", "--", "-r", "--help"});
    ASSERT_TRUE(cCommand.m_bRun) << cCommand.m_sErrors;
    EXPECT_EQ((std::vector<std::string>{"-r", "--help"}), cCommand.m_cOptions.m_cList.m_aInputs);
}

TEST(Options, HelpAndVersionGoToStandardOutput)
{
    const ClCommand cHelp = Parse({"--help"});
    EXPECT_FALSE(cHelp.m_bRun);
    EXPECT_EQ("", cHelp.m_sErrors);
    for (const char* szPart : {"Usage: kormelin-segment", "--ppi N", "Exit codes", "ANSI/NIST-ITL"})
    {
        EXPECT_NE(std::string::npos, cHelp.m_sOut.find(szPart)) << szPart;
    }
    std::istringstream cLines(cHelp.m_sOut);
    for (std::string sLine; std::getline(cLines, sLine);) EXPECT_LE(sLine.size(), 80u) << sLine;
    const ClCommand cVersion = Parse({"--version"});
    EXPECT_FALSE(cVersion.m_bRun);
    EXPECT_EQ(0u, cVersion.m_sOut.find("kormelin-segment 1.1.1407.3\n")) << cVersion.m_sOut;
    EXPECT_NE(std::string::npos, cVersion.m_sOut.find("BMP"));
}

TEST(Options, WrongOnesAreNamed)
{
    ExpectUsageError({}, "--files-from");
    ExpectUsageError({""}, "empty name");
    ExpectUsageError({"--nonsense", "a"}, "--nonsense");
    ExpectUsageError({"a", "--ppi"}, "--ppi");
    for (const char* szPpi : {"0", "-500", "many", "1e9", "nan", "inf"})
        ExpectUsageError({"a", "--ppi", szPpi}, "--ppi");
    for (const char* szShard : {"0/3", "4/3", "1", "1/", "/1", "a/b", "1/0", "1/2/3", "-1/3", "1/99999999999"})
    {
        ExpectUsageError({"a", "--shard", szShard}, "--shard");
    }
    for (const char* szExpect : {"0", "5", "x"}) ExpectUsageError({"a", "--expect", szExpect}, "--expect");
    ExpectUsageError({"a", "--format", "xml"}, "--format");
    ExpectUsageError({"a", "--decoder-timeout", "0"}, "--decoder-timeout");
    ExpectUsageError({"a", "--endings", ","}, "--endings");
    ExpectUsageError({"a", "--expect", "2", "--biggest"}, "--biggest");
    ExpectUsageError({"a", "-0"}, "--null");
    ExpectUsageError({"a", "--overlay"}, "-o DIR");
    ExpectUsageError({"a", "--tree"}, "-o DIR");
    ExpectUsageError({"a", "--resume"}, "--output");
    ExpectUsageError({"a", "--resume", "--output", "b"}, "--format");
    ExpectUsageError({"a", "--report", "b", "--output", "b"}, "same file");
    for (const char* szJobs : {"0", "-1", "x", "1025"}) ExpectUsageError({"a", "-j", szJobs}, "--jobs");
    ExpectUsageError({"a", "-o", "d", "--image-format", "gif"}, "--image-format");
}

TEST(Options, FoldersAreSearchedForWhatCanBeRead)
{
    const auto Has = [](const ClCommand& cCommand, const char* szEnding)
    {
        const auto& a = cCommand.m_cOptions.m_cList.m_aEndings;
        return std::find(a.begin(), a.end(), szEnding) != a.end();
    };
    const ClCommand cPlain = Parse({"a"});
    EXPECT_TRUE(Has(cPlain, "bmp"));
    EXPECT_TRUE(Has(cPlain, "pgm"));
    EXPECT_EQ(HAVE_TIFF != 0, Has(cPlain, "tif"));
    EXPECT_FALSE(Has(cPlain, "wsq"));
    EXPECT_TRUE(Has(Parse({"a", "--decoder", "x"}), "wsq"));
}
