#include "Report.hpp"

#include "PictureFiles.hpp"

#include <gtest/gtest.h>

#include <algorithm>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
ClResult ResultOf(std::uint64_t nIndex, const std::string& sInput = "a.bmp")
{
    ClResult cResult;
    cResult.m_nIndex = nIndex;
    cResult.m_sInput = sInput;
    cResult.m_eOutcome = EOutcome::eSegmented;
    cResult.m_nWidth = 800;
    cResult.m_nHeight = 700;
    cResult.m_eHand = EHand::eRight;
    cResult.m_aFingers.resize(1);
    cResult.m_aFingers[0].m_nPosition = 2;
    cResult.m_aFingers[0].m_nX = 10;
    cResult.m_aFingers[0].m_nSeenY = 20;
    cResult.m_aFingers[0].m_nStoredY = 99;
    cResult.m_aFingers[0].m_nWidth = 300;
    cResult.m_aFingers[0].m_nHeight = 400;
    return cResult;
}

bool Has(const std::string& sText, const std::string& sPart)
{
    return sText.find(sPart) != std::string::npos;
}

std::string WholePage(std::uint64_t nCards)
{
    std::string sPage = ReportHead();
    for (std::uint64_t i = 1; i <= nCards; ++i) sPage += ReportCard(ResultOf(i), "data:x");
    return sPage + ReportFoot({});
}

int ExitOf(const std::string& sPath, std::uint64_t nKept)
{
    try
    {
        ClReport cReport;
        cReport.Open(sPath, nKept);
        cReport.Abandon(true);
    }
    catch (const ClRunError& cError)
    {
        return cError.m_nExit;
    }
    return 0;
}
} // namespace

TEST(Report, ACardIsALineWithThumbnailFramesAndOutcome)
{
    const std::string sCard = ReportCard(ResultOf(7), "data:image/jpeg;base64,AAAA");
    EXPECT_EQ(1, std::count(sCard.begin(), sCard.end(), '\n'));
    EXPECT_EQ('\n', sCard.back());
    for (const char* szPart :
         {"data-index=\"7\"", "data-outcome=\"segmented\"", "data-fingers=\"1\"", "viewBox=\"0 0 800 700\"",
          "href=\"data:image/jpeg;base64,AAAA\"", "<rect x=\"10\" y=\"20\" width=\"300\" height=\"400\"",
          ">2<title>right index</title>", "<h2>a.bmp</h2>", "hand right, 1 finger"})
    {
        EXPECT_TRUE(Has(sCard, szPart)) << szPart << " in " << sCard;
    }
}

TEST(Report, ACardWithoutAPictureSaysWhy)
{
    ClResult cResult;
    cResult.m_sInput = "b";
    cResult.m_eOutcome = EOutcome::eUnreadable;
    cResult.m_nCode = -201;
    cResult.m_sMessage = "the file is empty";
    const std::string sCard = ReportCard(cResult, "");
    EXPECT_FALSE(Has(sCard, "<svg")) << sCard;
    EXPECT_TRUE(Has(sCard, "<b>unreadable</b>: the file is empty (-201)")) << sCard;
}

TEST(Report, NamesCannotBecomeMarkup)
{
    const std::string sCard = ReportCard(ResultOf(1, "</article>\n<script>\"'\xff&"), "data:x");
    EXPECT_EQ(1, std::count(sCard.begin(), sCard.end(), '\n'));
    EXPECT_FALSE(Has(sCard, "<script>"));
    EXPECT_TRUE(Has(sCard, "&lt;script&gt;&quot;&#39;\xef\xbf\xbd&amp;")) << sCard;
}

TEST(Report, ThePageAsksForNothingFromOutside)
{
    const std::string sPage = WholePage(2);
    EXPECT_TRUE(Has(sPage, "default-src 'none'; img-src data:;"));
    for (const char* szOutside : {"http:", "https:", "src=\"", "@import", "url("})
        EXPECT_FALSE(Has(sPage, szOutside)) << szOutside;
}

TEST(ReportFile, GetsItsNameWhenItIsWhole)
{
    const ClTempFolder cFolder;
    cFolder.Write("page.html", std::string("an older page"));
    ClReport cReport;
    EXPECT_FALSE(cReport.IsOpen());
    cReport.Open(cFolder.Path("page.html"), 0);
    EXPECT_TRUE(cReport.IsOpen());
    cReport.Add(ReportCard(ResultOf(1), "data:x"));
    EXPECT_EQ("an older page", cFolder.Read("page.html"));
    EXPECT_EQ(ReportHead() + ReportCard(ResultOf(1), "data:x"), cFolder.Read("page.html.part"))
        << "nothing is held back";
    cReport.Finish({});
    EXPECT_EQ(WholePage(1), cFolder.Read("page.html"));
    EXPECT_EQ(std::vector<std::string>{"page.html"}, cFolder.Names());
    cReport.Abandon(false);
    EXPECT_EQ(std::vector<std::string>{"page.html"}, cFolder.Names());
}

TEST(ReportFile, AnAbandonedOneStaysOrGoes)
{
    const ClTempFolder cFolder;
    for (const bool bKeep : {true, false})
    {
        ClReport cReport;
        cReport.Open(cFolder.Path("page.html"), 0);
        cReport.Abandon(bKeep);
        EXPECT_EQ(bKeep ? std::vector<std::string>{"page.html.part"} : std::vector<std::string>{}, cFolder.Names());
    }
}

TEST(ReportFile, WhereverItWasCutOffItGoesOnBehindTheCardsThatCount)
{
    const ClTempFolder cFolder;
    const std::string sPage = WholePage(4);
    const std::string sTwo = ReportHead() + ReportCard(ResultOf(1), "data:x") + ReportCard(ResultOf(2), "data:x");
    for (std::size_t nSize = sTwo.size(); nSize < sPage.size() - ReportFoot({}).size(); nSize += 311)
    {
        cFolder.Write("page.html.part", sPage.substr(0, nSize));
        ClReport cReport;
        cReport.Open(cFolder.Path("page.html"), 2);
        EXPECT_EQ(sTwo, cFolder.Read("page.html.part")) << nSize;
        for (std::uint64_t i = 3; i <= 4; ++i) cReport.Add(ReportCard(ResultOf(i), "data:x"));
        cReport.Finish({});
        ASSERT_EQ(sPage, cFolder.Read("page.html")) << nSize;
        std::filesystem::remove(cFolder.m_cPath / "page.html");
    }
}

TEST(ReportFile, AWholeOneCanGrow)
{
    const ClTempFolder cFolder;
    cFolder.Write("page.html", WholePage(2));
    ClReport cReport;
    cReport.Open(cFolder.Path("page.html"), 2);
    EXPECT_EQ(WholePage(2), cFolder.Read("page.html")) << "until the new one is whole";
    cReport.Add(ReportCard(ResultOf(3), "data:x"));
    cReport.Finish({});
    EXPECT_EQ(WholePage(3), cFolder.Read("page.html"));
}

TEST(ReportFile, ACopyOfAWholeOneMayHaveBeenInterrupted)
{
    const ClTempFolder cFolder;
    cFolder.Write("page.html", WholePage(3));
    for (const std::size_t nSize : {ReportHead().size() / 2, ReportHead().size() + 10, WholePage(2).size() / 2})
    {
        cFolder.Write("page.html.part", WholePage(3).substr(0, nSize));
        ClReport cReport;
        cReport.Open(cFolder.Path("page.html"), 3);
        cReport.Finish({});
        EXPECT_EQ(WholePage(3), cFolder.Read("page.html")) << nSize;
    }
}

TEST(ReportFile, WithTooFewCardsItCannotGoOn)
{
    const ClTempFolder cFolder;
    const std::string sPart = ReportHead() + ReportCard(ResultOf(1), "data:x") + "<article torn";
    cFolder.Write("page.html.part", sPart);
    EXPECT_EQ(eExitUsage, ExitOf(cFolder.Path("page.html"), 2));
    EXPECT_EQ(sPart, cFolder.Read("page.html.part")) << "it stays as it was";
    EXPECT_EQ(eExitUsage, ExitOf(cFolder.Path("none.html"), 1));
    EXPECT_EQ(std::vector<std::string>{"page.html.part"}, cFolder.Names());
    EXPECT_EQ(eExitInternal, ExitOf(cFolder.Path("no/page.html"), 0));
}
