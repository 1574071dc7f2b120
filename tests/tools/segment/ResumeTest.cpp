#include "Resume.hpp"

#include "PictureFiles.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
// Three pictures, the first with two fingers, and names that need care.
std::vector<ClResult> Results()
{
    std::vector<ClResult> aResults(3);
    const char* aszInputs[] = {"a, \"b\"\r\n.bmp", "\"", "plain\xff.bmp"};
    for (std::size_t i = 0; i < 3; ++i)
    {
        aResults[i].m_nIndex = 2 * i + 1;
        aResults[i].m_sInput = aszInputs[i];
        aResults[i].m_eOutcome = EOutcome::eUnreadable;
        aResults[i].m_sMessage = "\"quoted\", and, so on";
    }
    aResults[0].m_eOutcome = EOutcome::eSegmented;
    aResults[0].m_nWidth = 10;
    aResults[0].m_aFingers.resize(2);
    return aResults;
}

struct ClRead
{
    ClDone m_cDone;
    std::vector<std::pair<std::uint64_t, std::string>> m_aPictures;
    int m_nExit = 0;
};

ClRead Read(const std::string& sPath, ERecords eRecords)
{
    ClRead cRead;
    try
    {
        cRead.m_cDone = ReadResults(sPath, eRecords,
                                    [&](std::uint64_t nIndex, const std::string& sInput)
                                    { cRead.m_aPictures.emplace_back(nIndex, sInput); });
    }
    catch (const ClRunError& cError)
    {
        cRead.m_nExit = cError.m_nExit;
    }
    return cRead;
}
} // namespace

TEST(Resume, WhateverTheEndOfTheFileWholePicturesAreFound)
{
    const ClTempFolder cFolder;
    for (const ERecords eRecords : {ERecords::eJson, ERecords::eCsv})
    {
        const auto pWriter = ClRecordWriter::Create(eRecords);
        const std::vector<ClResult> aResults = Results();
        std::string sAll = pWriter->Header();
        std::vector<std::size_t> anEnds = {sAll.size()};
        for (const ClResult& cResult : aResults)
        {
            sAll += pWriter->Record(cResult);
            anEnds.push_back(sAll.size());
        }
        for (std::size_t nSize = 0; nSize <= sAll.size(); ++nSize)
        {
            const ClRead cRead = Read(cFolder.Write("results", sAll.substr(0, nSize)), eRecords);
            ASSERT_EQ(0, cRead.m_nExit) << nSize;
            std::size_t nWhole = 0;
            while (nWhole < 3 && anEnds[nWhole + 1] <= nSize) ++nWhole;
            ASSERT_EQ(nWhole, cRead.m_aPictures.size()) << nSize;
            ASSERT_EQ(nWhole, cRead.m_cDone.m_nPictures);
            ASSERT_EQ(nSize < anEnds[0] ? 0 : anEnds[nWhole], cRead.m_cDone.m_nBytes) << nSize;
            ASSERT_EQ(nWhole, cRead.m_cDone.m_cTally.Total());
            for (std::size_t i = 0; i < nWhole; ++i)
            {
                EXPECT_EQ(2 * i + 1, cRead.m_aPictures[i].first);
                EXPECT_EQ(InputAsWritten(eRecords, aResults[i].m_sInput), cRead.m_aPictures[i].second);
            }
        }
    }
}

TEST(Resume, OutcomesAreCountedAgain)
{
    const ClTempFolder cFolder;
    const ClJsonRecords cJson;
    std::string sAll;
    for (const ClResult& cResult : Results()) sAll += cJson.Record(cResult);
    const ClTally cTally = Read(cFolder.Write("results", sAll), ERecords::eJson).m_cDone.m_cTally;
    EXPECT_EQ(1u, cTally.Of(EOutcome::eSegmented));
    EXPECT_EQ(2u, cTally.Of(EOutcome::eUnreadable));
}

TEST(Resume, NoFileHoldsNothing)
{
    const ClTempFolder cFolder;
    for (const ERecords eRecords : {ERecords::eJson, ERecords::eCsv})
    {
        EXPECT_EQ(0u, Read(cFolder.Path("missing"), eRecords).m_cDone.m_nBytes);
        EXPECT_EQ(0u, Read(cFolder.Write("empty", std::string()), eRecords).m_cDone.m_nBytes);
    }
}

TEST(Resume, WhatAreNoResultsIsRefused)
{
    const ClTempFolder cFolder;
    const std::string sCsv = ClCsvRecords().Header() + ClCsvRecords().Record(Results()[1]);
    const std::string sJson = ClJsonRecords().Record(Results()[1]);
    const auto Exit = [&](const std::string& sText, ERecords eRecords)
    { return Read(cFolder.Write("results", sText), eRecords).m_nExit; };
    EXPECT_EQ(eExitUsage, Exit("some text\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage, Exit("{}\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage, Exit("[]\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage, Exit("\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage, Exit(sCsv, ERecords::eJson));
    EXPECT_EQ(eExitUsage,
              Exit("{\"schema_version\":2,\"index\":1,\"input\":\"a\",\"outcome\":\"failed\"}\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage,
              Exit("{\"schema_version\":1,\"index\":-1,\"input\":\"a\",\"outcome\":\"failed\"}\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage,
              Exit("{\"schema_version\":1,\"index\":1,\"input\":\"a\",\"outcome\":\"fine\"}\n", ERecords::eJson));
    EXPECT_EQ(0, Exit("{\"schema_version\":1,\"index\":1,\"input\":\"a\",\"outcome\":\"failed\"}\n", ERecords::eJson));
    EXPECT_EQ(eExitUsage, Exit("a,b\r\n", ERecords::eCsv));
    for (const char* szNoEnd : {"precious text", "{\"a\":", "indexes"})
    {
        EXPECT_EQ(eExitUsage, Exit(szNoEnd, ERecords::eCsv)) << szNoEnd;
        EXPECT_EQ(eExitUsage, Exit(szNoEnd, ERecords::eJson)) << szNoEnd;
        EXPECT_EQ(eExitUsage, Exit(sJson + szNoEnd, ERecords::eJson)) << szNoEnd;
    }
    EXPECT_EQ(eExitUsage, Exit(sJson, ERecords::eCsv));
    EXPECT_EQ(eExitUsage, Exit(ClCsvRecords().Header() + "1,2\r\n", ERecords::eCsv));
    EXPECT_EQ(eExitUsage, Exit(sCsv + std::string(23, ',') + "\r\n", ERecords::eCsv));
    EXPECT_EQ(eExitUsage, Exit(std::string(17 << 20, 'x'), ERecords::eJson)) << "no line is that long";
    EXPECT_EQ(eExitUsage, Exit(sJson, ERecords::eText));
    EXPECT_EQ(eExitInternal, Read(cFolder.Path(""), ERecords::eJson).m_nExit) << "a folder";
}

TEST(Resume, NamesAreComparedAsTheyAreWritten)
{
    EXPECT_EQ("a\xff", InputAsWritten(ERecords::eCsv, "a\xff"));
    EXPECT_EQ("a\xef\xbf\xbd", InputAsWritten(ERecords::eJson, "a\xff"));
    EXPECT_EQ("a\n\"", InputAsWritten(ERecords::eJson, "a\n\""));
}
