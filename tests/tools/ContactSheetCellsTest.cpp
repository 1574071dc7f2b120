#include "ContactSheetCells.hpp"

#include "SlapRun.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

namespace
{
const std::filesystem::path cOperators = KORMELIN_SOURCE_FOLDER "/src/RDImageProcessing";

std::vector<std::string> LinesOf(const std::filesystem::path& cPath)
{
    const std::vector<std::uint8_t> aBytes = ReadWholeFile(cPath.string());
    std::istringstream cText(std::string(aBytes.begin(), aBytes.end()));
    std::vector<std::string> asLines;
    for (std::string sLine; std::getline(cText, sLine);) asLines.push_back(sLine);
    return asLines;
}

/// The names that the operators' sources return from Name(): in the second line below its head.
std::set<std::string> NamesInTheSources()
{
    std::set<std::string> asNames;
    for (const auto& cEntry : std::filesystem::directory_iterator(cOperators))
    {
        const std::vector<std::string> asLines = LinesOf(cEntry.path());
        for (std::size_t i = 0; i + 2 < asLines.size(); ++i)
        {
            if (asLines[i].find("::Name() const") == std::string::npos) continue;
            const std::string& sReturn = asLines[i + 2];
            const std::size_t nFirst = sReturn.find('"') + 1;
            asNames.insert(sReturn.substr(nFirst, sReturn.rfind('"') - nFirst));
        }
    }
    return asNames;
}

/// The enumerators that the operators' headers declare, one a line with its value.
std::set<std::string> ModesInTheHeaders()
{
    std::set<std::string> asModes;
    for (const auto& cEntry : std::filesystem::directory_iterator(cOperators))
    {
        if (cEntry.path().extension() != ".hpp") continue;
        bool bInEnum = false;
        for (const std::string& sLine : LinesOf(cEntry.path()))
        {
            bInEnum = sLine.rfind("    enum ", 0) == 0 || (bInEnum && sLine != "    };");
            const std::size_t nEquals = sLine.find(" = ");
            if (!bInEnum || nEquals == std::string::npos) continue;
            const std::size_t nFirst = sLine.find_first_not_of(' ');
            asModes.insert(sLine.substr(nFirst, nEquals - nFirst));
        }
    }
    return asModes;
}

std::string CaptionOf(const ClSheetCell& cCell)
{
    return cCell.m_sOperator + " | " + cCell.m_sMode + " | " + cCell.m_sArguments;
}
} // namespace

TEST(ContactSheetCells, EveryOperatorAppearsInEachOfItsModes)
{
    const std::set<std::string> asNames = NamesInTheSources();
    const std::set<std::string> asModes = ModesInTheHeaders();
    ASSERT_LE(20u, asNames.size());
    ASSERT_LE(26u, asModes.size());
    std::set<std::string> asShownNames, asShownModes;
    for (const ClSheetCell& cCell : MakeSheetCells())
    {
        if (cCell.m_cPicture.m_nWidth == 0) continue;
        asShownNames.insert(cCell.m_sOperator);
        asShownModes.insert(cCell.m_sMode);
    }
    for (const std::string& sName : asNames) EXPECT_EQ(1u, asShownNames.count(sName)) << sName;
    for (const std::string& sMode : asModes) EXPECT_EQ(1u, asShownModes.count(sMode)) << sMode;
}

TEST(ContactSheetCells, EveryRunEndsWithTheCodeThatIsExpectedOfIt)
{
    for (const ClSheetCell& cCell : MakeSheetCells())
    {
        EXPECT_TRUE(cCell.IsAsExpected()) << CaptionOf(cCell) << ": " << cCell.m_sResult;
        EXPECT_EQ(cCell.m_nCode == 0, cCell.m_cPicture.m_nWidth != 0) << CaptionOf(cCell);
    }
}

TEST(ContactSheetCells, CellsFitTheirPlaceAndDifferInTheirCaptions)
{
    std::map<std::string, int> anCaptions;
    for (const ClSheetCell& cCell : MakeSheetCells())
    {
        SCOPED_TRACE(CaptionOf(cCell));
        EXPECT_EQ(1, ++anCaptions[CaptionOf(cCell)]);
        EXPECT_GE(nLongestSide, cCell.m_cPicture.m_nWidth);
        EXPECT_GE(nLongestSide, cCell.m_cPicture.m_nHeight);
        EXPECT_EQ(3u * static_cast<unsigned int>(cCell.m_cPicture.m_nWidth * cCell.m_cPicture.m_nHeight),
                  cCell.m_cPicture.m_aPixels.size());
        for (const std::string& sLine : {cCell.m_sOperator, cCell.m_sMode, cCell.m_sArguments, cCell.m_sResult})
        {
            EXPECT_GE(36u, sLine.size()) << sLine; // letters in the width of a cell
        }
    }
}

TEST(ContactSheetCells, AreTheSameEachTime)
{
    const std::vector<ClSheetCell> aFirst = MakeSheetCells();
    const std::vector<ClSheetCell> aSecond = MakeSheetCells();
    ASSERT_EQ(aFirst.size(), aSecond.size());
    for (std::size_t i = 0; i < aFirst.size(); ++i)
    {
        EXPECT_EQ(CaptionOf(aFirst[i]), CaptionOf(aSecond[i]));
        EXPECT_EQ(aFirst[i].m_sResult, aSecond[i].m_sResult) << CaptionOf(aFirst[i]);
        EXPECT_TRUE(aFirst[i].m_cPicture.m_aPixels == aSecond[i].m_cPicture.m_aPixels) << CaptionOf(aFirst[i]);
    }
}
