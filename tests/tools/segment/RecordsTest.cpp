#include "Records.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>

using namespace SegmentTool;

namespace
{
ClFinger Finger(int nPosition, const std::string& sFile)
{
    ClFinger cFinger;
    cFinger.m_nPosition = nPosition;
    cFinger.m_nX = 100 * nPosition;
    cFinger.m_nStoredY = 7;
    cFinger.m_nSeenY = 8;
    cFinger.m_nWidth = 300;
    cFinger.m_nHeight = 400;
    cFinger.m_nCutWidth = 299;
    cFinger.m_nCutHeight = 399;
    cFinger.m_sFile = sFile;
    return cFinger;
}

ClResult TwoFingers()
{
    ClResult cResult;
    cResult.m_nIndex = 17;
    cResult.m_sInput = "scans/a, \"b\".bmp";
    cResult.m_eOutcome = EOutcome::eSegmented;
    cResult.m_nWidth = 1600;
    cResult.m_nHeight = 1500;
    cResult.m_nXPels = 19685;
    cResult.m_nYPels = 19686;
    cResult.m_eHand = EHand::eRight;
    cResult.m_aFingers = {Finger(2, "out/a_2.png"), Finger(3, "")};
    return cResult;
}

ClResult Unreadable()
{
    ClResult cResult;
    cResult.m_nIndex = 1;
    cResult.m_sInput = "bad";
    cResult.m_eOutcome = EOutcome::eUnreadable;
    cResult.m_nCode = -13;
    cResult.m_sMessage = "no resolution";
    return cResult;
}
} // namespace

TEST(Records, JsonIsOneLineWithEverythingInIt)
{
    const std::string sLine = ClJsonRecords().Record(TwoFingers());
    EXPECT_EQ(1, std::count(sLine.begin(), sLine.end(), '\n'));
    EXPECT_EQ('\n', sLine.back());
    EXPECT_EQ(0u, sLine.find("{\"schema_version\":1,\"index\":17,\"input\":")) << sLine;
    const auto cJson = nlohmann::json::parse(sLine);
    EXPECT_EQ("scans/a, \"b\".bmp", cJson["input"]);
    EXPECT_EQ("segmented", cJson["outcome"]);
    EXPECT_EQ(0, cJson["code"]);
    EXPECT_EQ("", cJson["message"]);
    EXPECT_EQ("fingers", cJson["mode"]);
    EXPECT_EQ(nlohmann::json::parse(R"({"width":1600,"height":1500,"pels_per_metre":{"x":19685,"y":19686}})"),
              cJson["picture"]);
    EXPECT_EQ("right", cJson["hand"]);
    ASSERT_EQ(2u, cJson["fingers"].size());
    EXPECT_EQ(nlohmann::json::parse(R"({"position":2,"name":"right index",
                  "stored":{"x":200,"y":7,"width":300,"height":400},"seen":{"x":200,"y":8,"width":300,"height":400},
                  "cutout":{"width":299,"height":399},"file":"out/a_2.png"})"),
              cJson["fingers"][0]);
    EXPECT_TRUE(cJson["fingers"][1]["file"].is_null());
    EXPECT_TRUE(cJson["overlay"].is_null());
}

TEST(Records, JsonOfAPictureThatCannotBeReadHasNoPicture)
{
    const auto cJson = nlohmann::json::parse(ClJsonRecords().Record(Unreadable()));
    EXPECT_TRUE(cJson["picture"].is_null());
    EXPECT_EQ(-13, cJson["code"]);
    EXPECT_EQ("no resolution", cJson["message"]);
    EXPECT_TRUE(cJson["fingers"].empty());
    EXPECT_EQ("undecided", cJson["hand"]);
}

TEST(Records, JsonIsValidWhateverBytesANameHas)
{
    ClResult cResult = Unreadable();
    cResult.m_sInput = "a\xff\n\x01";
    const std::string sLine = ClJsonRecords().Record(cResult);
    EXPECT_EQ(1, std::count(sLine.begin(), sLine.end(), '\n'));
    EXPECT_EQ("a\xef\xbf\xbd\n\x01", nlohmann::json::parse(sLine)["input"]);
}

TEST(Records, CsvHasARowForEachFingerAndOneForNone)
{
    const ClCsvRecords cCsv;
    EXPECT_EQ(
        "index,input,outcome,code,message,mode,width,height,x_pels_per_metre,y_pels_per_metre,hand,finger,fingers,"
        "position,name,x,stored_y,seen_y,finger_width,finger_height,cutout_width,cutout_height,file,overlay\r\n",
        cCsv.Header());
    EXPECT_EQ("17,\"scans/a, \"\"b\"\".bmp\",segmented,0,,fingers,1600,1500,19685,19686,right,"
              "1,2,2,right index,200,7,8,300,400,299,399,out/a_2.png,\r\n"
              "17,\"scans/a, \"\"b\"\".bmp\",segmented,0,,fingers,1600,1500,19685,19686,right,"
              "2,2,3,right middle,300,7,8,300,400,299,399,,\r\n",
              cCsv.Record(TwoFingers()));
    EXPECT_EQ("1,bad,unreadable,-13,no resolution,fingers,,,,,undecided,,0,,,,,,,,,,,\r\n", cCsv.Record(Unreadable()));
}

TEST(Records, EveryCsvRowHasAsManyFieldsAsTheHeader)
{
    const ClCsvRecords cCsv;
    for (const std::string& sRow : {cCsv.Header(), cCsv.Record(Unreadable())})
    {
        EXPECT_EQ(ClCsvRecords::eColumns - 1, std::count(sRow.begin(), sRow.end(), ',')) << sRow;
    }
}

TEST(Records, TextTellsHandFingersAndErrors)
{
    const std::string sText = ClTextRecords().Record(TwoFingers());
    EXPECT_EQ(0u, sText.find("scans/a, \"b\".bmp: right hand, 2 fingers\n")) << sText;
    EXPECT_NE(std::string::npos, sText.find(" 2 right index ")) << sText;
    EXPECT_NE(std::string::npos, sText.find("out/a_2.png\n")) << sText;
    EXPECT_EQ("bad: unreadable (error -13): no resolution\n", ClTextRecords().Record(Unreadable()));
    ClResult cResult = Unreadable();
    cResult.m_sInput = "a\nb";
    EXPECT_EQ(0u, ClTextRecords().Record(cResult).find("a\\x0ab: "));
}

TEST(Records, AreMadeByKind)
{
    EXPECT_EQ("", ClRecordWriter::Create(ERecords::eText)->Header());
    EXPECT_EQ("", ClRecordWriter::Create(ERecords::eJson)->Header());
    EXPECT_EQ(ClCsvRecords().Header(), ClRecordWriter::Create(ERecords::eCsv)->Header());
}
