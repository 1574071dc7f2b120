// The public header first and the catalogue behind it, so that the constants below are those of the public header.
#include "VelmarinKormelinSegmentation.h"

#include "RDTools/Bitmap.hpp"
#include "RDTools/ErrorCatalogue.hpp"
#include "RDTools/ProcessorBase.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
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
    const auto cFolder = std::filesystem::path(__FILE__).parent_path().parent_path() / "include";
    std::ifstream cFile(cFolder / "VelmarinKormelinSegmentation.h");
    std::stringstream cText;
    cText << cFile.rdbuf();
    return cText.str();
}

std::vector<std::string> Matches(const std::string& sText, const char* szPattern)
{
    std::vector<std::string> aFound;
    const std::regex cPattern(szPattern);
    for (std::sregex_iterator i(sText.begin(), sText.end(), cPattern), end; i != end; ++i)
    {
        aFound.push_back((*i)[1]);
    }
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
    const std::vector<std::string> aNames = Matches(HeaderText(), R"(\n\s+(FPC_\w+) = -?\d+,?)");
    ASSERT_EQ(std::size(g_aRows), aNames.size());
    for (std::size_t i = 0; i < aNames.size(); ++i)
    {
        EXPECT_EQ(g_aRows[i].m_szName, aNames[i]);
    }
}

TEST(PublicHeader, NumbersInCommentsAreThoseOfTheirConstants)
{
    std::map<std::string, long> aNumbers;
    for (const ClRow& cRow : g_aRows)
    {
        aNumbers[cRow.m_szName] = cRow.m_nInCatalogue;
    }
    const std::string sText = HeaderText();
    const std::regex cPattern(R"((FPC_\w+) \((-\d+)\))");
    int nFound = 0;
    for (std::sregex_iterator i(sText.begin(), sText.end(), cPattern), end; i != end; ++i, ++nFound)
    {
        ASSERT_EQ(1u, aNumbers.count((*i)[1])) << (*i)[1];
        EXPECT_EQ(aNumbers[(*i)[1]], std::stol((*i)[2])) << (*i)[1];
    }
    EXPECT_GT(nFound, 40);
}

TEST(PublicHeader, DeclaresTheSixteenFunctionsEachBehindAComment)
{
    const std::vector<std::string> aNames = Matches(HeaderText(), R"(\*/\nKS_API [a-z ]+\*? ?(KS\w+)\()");
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
