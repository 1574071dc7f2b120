#include "SlapPicture.hpp"
#include "SlapRun.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
const std::string sFolder = KORMELIN_SOURCE_FOLDER "/samples/";
}

TEST(Sample, CommittedBytesAreThoseThatAreDrawn)
{
    const std::vector<std::uint8_t> aDrawn = ClSlapPicture(SlapScenes::TwoFingers(19685)).BmpFile();
    const std::vector<std::uint8_t> aCommitted = ReadWholeFile(sFolder + "two-fingers.bmp");
    EXPECT_TRUE(aDrawn == aCommitted) << aDrawn.size() << " bytes drawn, " << aCommitted.size() << " committed";
}

TEST(Sample, ReadMeTellsWhereTheFingersAre)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(19685));
    const std::vector<std::uint8_t> aText = ReadWholeFile(sFolder + "README.md");
    const std::string sText(aText.begin(), aText.end());
    const char* const aszNames[] = {"0, index", "1, middle"};
    ASSERT_EQ(2u, cPicture.m_aFingers.size());
    for (std::size_t i = 0; i < 2; ++i)
    {
        const ClSlapRect& cRect = cPicture.m_aFingers[i];
        std::string sRow = std::string("\n| ") + aszNames[i];
        for (const int nValue : {cRect.left, cRect.bottom, cRect.right - cRect.left, cRect.top - cRect.bottom})
        {
            sRow += " | " + std::to_string(nValue);
        }
        EXPECT_NE(std::string::npos, sText.find(sRow + " |\n")) << sRow;
    }
    const std::string sSize = std::to_string(cPicture.m_nWidth) + " by " + std::to_string(cPicture.m_nHeight);
    EXPECT_NE(std::string::npos, sText.find(sSize + " pixels at 19685 pels per metre"));
}
