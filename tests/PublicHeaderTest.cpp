// The public header first and the catalogue behind it, so that the constants below are those of the public header.
#include "VelmarinKormelinSegmentation.h"

#include "RDTools/Bitmap.hpp"
#include "RDTools/ErrorCatalogue.hpp"
#include "RDTools/ProcessorBase.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

extern "C"
{
    unsigned long PublicHeaderInC_BitmapHeaderSize(void);
    unsigned long PublicHeaderInC_BitmapHeaderOffset(int nField);
    int PublicHeaderInC_DataIsNull(void);
}

namespace
{
struct ClRow
{
    const char* m_szName;
    long m_nInHeader;
    long m_nInCatalogue;
};

#define CATALOGUE_ROW(name, code, text) {#name, name, code},
const ClRow g_aRows[] = {FPC_ERROR_CATALOGUE(CATALOGUE_ROW)};
#undef CATALOGUE_ROW

std::string HeaderText()
{
    std::ifstream cFile(KORMELIN_SOURCE_FOLDER "/include/VelmarinKormelinSegmentation.h");
    std::stringstream cText;
    cText << cFile.rdbuf();
    return cText.str();
}

/// All matches of a POSIX extended regular expression, each as its whole text and its groups.
std::vector<std::vector<std::string>> Matches(const std::string& sText, const char* szPattern)
{
    std::vector<std::vector<std::string>> aFound;
    regex_t cPattern;
    EXPECT_EQ(0, regcomp(&cPattern, szPattern, REG_EXTENDED));
    regmatch_t acParts[3];
    for (const char* sz = sText.c_str(); regexec(&cPattern, sz, std::size(acParts), acParts, 0) == 0;
         sz += acParts[0].rm_eo)
    {
        std::vector<std::string> aParts;
        for (std::size_t i = 0; i < std::size(acParts) && acParts[i].rm_so >= 0; ++i)
        {
            aParts.emplace_back(sz + acParts[i].rm_so, sz + acParts[i].rm_eo);
        }
        aFound.push_back(aParts);
    }
    regfree(&cPattern);
    return aFound;
}
} // namespace

TEST(PublicHeader, EveryRowOfTheCatalogueIsAConstant)
{
    for (const ClRow& cRow : g_aRows)
    {
        EXPECT_EQ(cRow.m_nInCatalogue, cRow.m_nInHeader) << cRow.m_szName;
    }
}

TEST(PublicHeader, HasTheConstantsOfTheCatalogueAndNoOthersInItsOrder)
{
    const auto aFound = Matches(HeaderText(), "\n +(FPC_[A-Z0-9_]+) = (-?[0-9]+)");
    ASSERT_EQ(std::size(g_aRows), aFound.size());
    for (std::size_t i = 0; i < aFound.size(); ++i)
    {
        EXPECT_EQ(g_aRows[i].m_szName, aFound[i][1]);
        EXPECT_EQ(g_aRows[i].m_nInCatalogue, std::stol(aFound[i][2]));
    }
}

TEST(PublicHeader, NumbersInCommentsAreThoseOfTheirConstants)
{
    std::map<std::string, long> aNumbers;
    for (const ClRow& cRow : g_aRows)
    {
        aNumbers[cRow.m_szName] = cRow.m_nInCatalogue;
    }
    const auto aFound = Matches(HeaderText(), "(FPC_[A-Z0-9_]+) \\((-[0-9]+)\\)");
    EXPECT_GT(aFound.size(), 40u);
    for (const auto& aParts : aFound)
    {
        ASSERT_EQ(1u, aNumbers.count(aParts[1])) << aParts[1];
        EXPECT_EQ(aNumbers[aParts[1]], std::stol(aParts[2])) << aParts[1];
    }
}

TEST(PublicHeader, DeclaresTheSixteenFunctionsEachBehindAComment)
{
    std::vector<std::string> aNames;
    for (const auto& aParts : Matches(HeaderText(), "[*]/\nKS_API [a-z ]+[*]? ?(KS[A-Za-z]+)[(]"))
    {
        aNames.push_back(aParts[1]);
    }
    const std::vector<std::string> aExpected = {"KSInitialize",
                                                "KSUninitialize",
                                                "KSGetVersionA",
                                                "KSGetErrorDescriptionA",
                                                "KSCreateSegmentationHandle",
                                                "KSCreateSegmentHandle",
                                                "KSDestroyHandle",
                                                "KSGetPropertyA",
                                                "KSSetPropertyA",
                                                "KSGetPropertyLongA",
                                                "KSSetPropertyLongA",
                                                "KSGetPropertyDoubleA",
                                                "KSSetPropertyDoubleA",
                                                "KSSegmentBitmap",
                                                "KSGetSegment",
                                                "KSGetBitmap"};
    EXPECT_EQ(aExpected, aNames);
}

TEST(PublicHeader, BitmapHeaderTakesFortyBytesInCAndInCpp)
{
    EXPECT_EQ(40u, sizeof(tagBITMAPINFOHEADER));
    EXPECT_EQ(1u, alignof(tagBITMAPINFOHEADER));
    EXPECT_EQ(40u, PublicHeaderInC_BitmapHeaderSize());
    const unsigned long anOffsets[] = {0, 4, 8, 12, 14, 16, 20, 24, 28, 32, 36};
    for (int i = 0; i < 11; ++i)
    {
        EXPECT_EQ(anOffsets[i], PublicHeaderInC_BitmapHeaderOffset(i)) << "field " << i;
    }
}

TEST(PublicHeader, ExportedDataIsNullAtLoadTime)
{
    EXPECT_TRUE(PublicHeaderInC_DataIsNull());
}

TEST(PublicHeader, VersionMacrosAgree)
{
    const std::string sVersion = std::to_string(KS_VERSION_MAIN) + "." + std::to_string(KS_VERSION_INTERFACE) + "." +
                                 std::to_string(KS_VERSION_RELEASE) + "." + std::to_string(KS_VERSION_BUGFIX);
    EXPECT_EQ("1.1.1407.3", sVersion);
    EXPECT_EQ(sVersion, KS_VERSION_TEXT);
}
