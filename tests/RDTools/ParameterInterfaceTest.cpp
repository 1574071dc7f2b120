#include "RDTools/ParameterInterface.hpp"

#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "ParameterInterfaceKinds.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <thread>

namespace
{
constexpr double dNan = std::numeric_limits<double>::quiet_NaN();
constexpr double dInfinity = std::numeric_limits<double>::infinity();
} // namespace

TEST(ParameterInterface, IsEmptyAtFirst)
{
    const Interface c;
    EXPECT_EQ(0, c.Count());
    EXPECT_EQ(nullptr, c.FirstParam());
    EXPECT_EQ(nullptr, c.GetParameter(0));
}

TEST(ParameterInterface, AppendsAnEmptyParameter)
{
    Interface c;
    Parameter* pFirst = c.AddParameter();
    Parameter* pSecond = c.AddParameter();
    EXPECT_EQ(2, c.Count());
    EXPECT_EQ(pFirst, c.FirstParam());
    EXPECT_EQ(pSecond, pFirst->m_pNext);
    EXPECT_EQ(nullptr, pSecond->m_pNext);
    EXPECT_EQ(pFirst, c.GetParameter(0));
    EXPECT_EQ(pSecond, c.GetParameter(1));
    EXPECT_EQ(nullptr, c.GetParameter(2));
    EXPECT_EQ(nullptr, c.GetParameter(-1));

    EXPECT_EQ(Interface::eVoid, pFirst->m_eType);
    EXPECT_EQ(Interface::eInOut, pFirst->m_eDirection);
    EXPECT_EQ(0, pFirst->m_bNoRange);
    EXPECT_EQ(0.0, pFirst->m_dLower);
    EXPECT_EQ(0.0, pFirst->m_dUpper);
    EXPECT_EQ(0.0, pFirst->m_dDefault);
    EXPECT_EQ(nullptr, pFirst->m_pValue);
    EXPECT_EQ(nullptr, pFirst->GetEnumList());
    EXPECT_EQ(nullptr, pFirst->m_pnEnumValues);
    EXPECT_FALSE(pFirst->m_bFlag1);
    EXPECT_FALSE(pFirst->m_bIndirect);
    EXPECT_EQ(nullptr, pFirst->GetName());
    EXPECT_EQ(nullptr, pFirst->GetDescription());
}

TEST(ParameterInterface, IsEmptyAgainAfterClear)
{
    StAllKinds c;
    EXPECT_EQ(11, c.c.Count());
    c.c.Clear();
    EXPECT_EQ(0, c.c.Count());
    EXPECT_EQ(nullptr, c.c.FirstParam());
    c.c.Clear();
    EXPECT_NE(nullptr, c.c.AddParameter());
    EXPECT_EQ(1, c.c.Count());
}

TEST(ParameterInterface, TheGeneralFormSetsWhatItIsGiven)
{
    Interface c;
    long nValue = 3;
    Parameter* p = c.AddParameter(reinterpret_cast<void**>(&nValue), "Name", "Text", Interface::eOut, 3, 1);
    EXPECT_STREQ("Name", p->GetName());
    EXPECT_STREQ("Text", p->GetDescription());
    EXPECT_EQ(&nValue, p->m_pValue);
    EXPECT_EQ(Interface::eOut, p->m_eDirection);
    EXPECT_EQ(Interface::eLong, p->m_eType);
    EXPECT_EQ(1, p->m_bNoRange);
    EXPECT_EQ(0.0, p->m_dLower);
    EXPECT_EQ(0.0, p->m_dUpper);
    EXPECT_FALSE(p->m_bFlag1);
    EXPECT_STREQ("3", p->szValue());
}

TEST(ParameterInterface, ImagesAndGraphsCarryARange)
{
    Interface c;
    ClImage* pImage = nullptr;
    ClGraph* pGraph = nullptr;
    const Parameter* p = c.AddParameter(&pImage, "I", "image", Interface::eIn, 2.0, 3.0);
    EXPECT_EQ(Interface::eImage, p->m_eType);
    EXPECT_EQ(static_cast<void*>(&pImage), p->m_pValue);
    EXPECT_EQ(2.0, p->m_dLower);
    EXPECT_EQ(3.0, p->m_dUpper);
    EXPECT_EQ(0, p->m_bNoRange);
    EXPECT_FALSE(p->m_bFlag1);
    EXPECT_FALSE(p->m_bIndirect);
    p = c.AddParameter(&pGraph, "G", "graph", Interface::eOptional, 0.0, 0.0);
    EXPECT_EQ(Interface::eGraph, p->m_eType);
    EXPECT_EQ(static_cast<void*>(&pGraph), p->m_pValue);
    EXPECT_EQ(1, p->m_bNoRange);
    EXPECT_EQ(2, c.Count());
}

TEST(ParameterInterface, NumbersAreDescribedByTheirType)
{
    StAllKinds c;
    EXPECT_EQ(Interface::eByte, c["Byte"].m_eType);
    EXPECT_EQ(Interface::eAngle, c["Angle"].m_eType);
    EXPECT_EQ(Interface::eLong, c["Int"].m_eType);
    EXPECT_EQ(Interface::eLong, c["Long"].m_eType);
    EXPECT_EQ(Interface::eFloat, c["Float"].m_eType);
    EXPECT_EQ(Interface::eDouble, c["Double"].m_eType);
    EXPECT_EQ(Interface::eBool, c["Switch"].m_eType);
    EXPECT_EQ(Interface::eEnum, c["Colour"].m_eType);
    short nShort = 0;
    EXPECT_EQ(Interface::eShort, c.c.AddParameter(&nShort, "Short", "", Interface::eIn)->m_eType);

    EXPECT_EQ(200.0, c["Byte"].m_dDefault);
    EXPECT_EQ(16384.0, c["Angle"].m_dDefault);
    EXPECT_EQ(-7.0, c["Int"].m_dDefault);
    EXPECT_EQ(-5e9, c["Long"].m_dDefault);
    EXPECT_EQ(1.5, c["Float"].m_dDefault);
    EXPECT_EQ(-0.1, c["Double"].m_dDefault);
    EXPECT_EQ(1.0, c["Switch"].m_dDefault);
    EXPECT_EQ(5.0, c["Colour"].m_dDefault);
    EXPECT_TRUE(c["Float"].IsFloat());
    EXPECT_TRUE(c["Double"].IsFloat());
    EXPECT_FALSE(c["Long"].IsFloat());
    EXPECT_FALSE(c["Int"].m_bIndirect);
}

TEST(ParameterInterface, ARangeThatIsNotGivenLiesAroundTheValue)
{
    Interface c;
    int nValue = 30;
    const Parameter* p = c.AddParameter<int>(&nValue, "n", "", Interface::eIn, 1.0, -1.0);
    EXPECT_DOUBLE_EQ(20.0, p->m_dLower);
    EXPECT_DOUBLE_EQ(40.0, p->m_dUpper);
    EXPECT_EQ(0, p->m_bNoRange);
    EXPECT_TRUE(p->RangeDefined());
    nValue = -30;
    p = c.AddParameter(&nValue, "n", "", Interface::eIn, 1.0, -1.0);
    EXPECT_DOUBLE_EQ(-40.0, p->m_dLower);
    EXPECT_DOUBLE_EQ(-20.0, p->m_dUpper);
    nValue = 0;
    p = c.AddParameter(&nValue, "n", "", Interface::eIn);
    EXPECT_EQ(1, p->m_bNoRange);
    EXPECT_FALSE(p->RangeDefined());
    double dValue = dNan;
    p = c.AddParameter(&dValue, "d", "", Interface::eIn);
    EXPECT_EQ(1, p->m_bNoRange);
    EXPECT_FALSE(p->RangeDefined());
    EXPECT_TRUE(std::isnan(p->m_dDefault));
}

TEST(ParameterInterface, OnlyTheExactPairMeansThatNoRangeIsGiven)
{
    for (const auto& [dLower, dUpper] : {std::pair(1.0, -1.0000001), std::pair(0.9999999, -1.0), std::pair(-1.0, 1.0)})
    {
        double dKeptLower = dLower;
        double dKeptUpper = dUpper;
        Interface::ProcessRanges(30.0, dKeptLower, dKeptUpper);
        EXPECT_EQ(dLower, dKeptLower);
        EXPECT_EQ(dUpper, dKeptUpper);
    }
    double dLower = 1.0;
    double dUpper = -1.0;
    Interface::ProcessRanges(3.0, dLower, dUpper);
    EXPECT_EQ(3.0 * 0.6666666666666666, dLower);
    EXPECT_EQ(3.0 * 1.3333333333333333, dUpper);
}

TEST(ParameterInterface, ARangeIsCutToTheLimitsOfTheType)
{
    Interface c;
    unsigned char nByte = 240;
    const Parameter* p = c.AddParameter(&nByte, "n", "", Interface::eIn);
    EXPECT_DOUBLE_EQ(160.0, p->m_dLower);
    EXPECT_EQ(255.0, p->m_dUpper);
    p = c.AddParameter(&nByte, "n", "", Interface::eIn, -3.0, 256.0);
    EXPECT_EQ(0.0, p->m_dLower);
    EXPECT_EQ(255.0, p->m_dUpper);
    p = c.AddParameter(&nByte, "n", "", Interface::eIn, 300.0, 400.0);
    EXPECT_EQ(255.0, p->m_dLower);
    EXPECT_EQ(1, p->m_bNoRange);
    int nInt = std::numeric_limits<int>::max();
    p = c.AddParameter(&nInt, "n", "", Interface::eIn, -dInfinity, dInfinity);
    EXPECT_EQ(-2147483648.0, p->m_dLower);
    EXPECT_EQ(2147483647.0, p->m_dUpper);
    p = c.AddParameter(&nInt, "n", "", Interface::eIn);
    EXPECT_EQ(2147483647.0, p->m_dUpper);
    double dDouble = 1.0;
    p = c.AddParameter(&dDouble, "d", "", Interface::eIn, -dInfinity, dInfinity);
    EXPECT_EQ(std::numeric_limits<double>::lowest(), p->m_dLower);
    EXPECT_EQ(std::numeric_limits<double>::max(), p->m_dUpper);
}

TEST(ParameterInterface, EqualBoundsMeanNoRange)
{
    Parameter c;
    c.SetRange(4.0, 5.0);
    EXPECT_EQ(0, c.m_bNoRange);
    EXPECT_TRUE(c.RangeDefined());
    c.SetRange(5.0, 5.0);
    EXPECT_EQ(1, c.m_bNoRange);
    EXPECT_FALSE(c.RangeDefined());
    EXPECT_EQ(5.0, c.m_dLower);
    c.SetRange(5.0, 4.0);
    EXPECT_TRUE(c.RangeDefined());
    EXPECT_EQ(1, c.m_bNoRange) << "only set, never cleared";
}

TEST(ParameterInterface, ACommentIsALineOfItsOwn)
{
    Interface c;
    const Parameter* p = c.AddComment("About this");
    EXPECT_EQ(13, p->m_eType);
    EXPECT_EQ(Interface::eOut, p->m_eDirection);
    EXPECT_EQ(1, p->m_bNoRange);
    EXPECT_STREQ("About this", p->GetName());
    EXPECT_EQ(nullptr, p->GetDescription());
    EXPECT_STREQ("Unknown", p->szType());
    EXPECT_STREQ("Unknown", p->szValue());
}

TEST(ParameterInterface, TypesAndDirectionsHaveWords)
{
    const std::pair<int, const char*> aTypes[] = {{0, "eByte"},    {1, "eShort"},   {2, "eAngle"},   {3, "eLong"},
                                                  {4, "eDouble"},  {5, "eFloat"},   {6, "eVoid"},    {7, "eImage"},
                                                  {8, "eBool"},    {9, "eEnum"},    {12, "eGraph"},  {10, "Unknown"},
                                                  {11, "Unknown"}, {13, "Unknown"}, {14, "Unknown"}, {-1, "Unknown"}};
    Parameter c;
    for (const auto& [nType, szType] : aTypes)
    {
        c.m_eType = static_cast<Interface::EType>(nType);
        EXPECT_STREQ(szType, c.szType()) << nType;
    }
    const std::pair<int, const char*> aDirections[] = {{0, "eIn"},       {1, "eOut"},    {2, "eInOut"},
                                                       {3, "eOptional"}, {7, "Unknown"}, {-1, "Unknown"}};
    for (const auto& [nDirection, szDirection] : aDirections)
    {
        c.m_eDirection = static_cast<Interface::EDirection>(nDirection);
        EXPECT_STREQ(szDirection, c.szDir()) << nDirection;
    }
}

TEST(ParameterInterface, NamesAndDescriptionsAreCopies)
{
    Parameter c;
    char szText[] = "first";
    c.SetName(szText);
    c.SetDescription(szText);
    szText[0] = 'F';
    EXPECT_STREQ("first", c.GetName());
    EXPECT_STREQ("first", c.GetDescription());
    c.SetName(c.GetName());
    c.SetDescription(c.GetDescription());
    EXPECT_STREQ("first", c.GetName());
    EXPECT_STREQ("first", c.GetDescription());
    c.SetName(c.GetName() + 2);
    c.SetDescription(c.GetDescription() + 3);
    EXPECT_STREQ("rst", c.GetName());
    EXPECT_STREQ("st", c.GetDescription());
    c.SetName(nullptr);
    c.SetDescription(nullptr);
    EXPECT_EQ(nullptr, c.GetName());
    EXPECT_EQ(nullptr, c.GetDescription());
}

TEST(ParameterInterface, NumbersAreStoredTruncated)
{
    StAllKinds c;
    c["Byte"].SetValue(17.9);
    EXPECT_EQ(17, c.nByte);
    c["Byte"].SetValue(300.7);
    EXPECT_EQ(44, c.nByte) << "the low byte";
    c["Angle"].SetValue(65535.9);
    EXPECT_EQ(65535, c.nAngle);
    c["Int"].SetValue(-3.9);
    EXPECT_EQ(-3, c.nInt);
    EXPECT_EQ(0x55555555, c.nBehindInt) << "an int is no long";
    c["Long"].SetValue(6000000000.9);
    EXPECT_EQ(6000000000, c.nLong);
    c["Float"].SetValue(2.25);
    EXPECT_EQ(2.25f, c.fFloat);
    c["Double"].SetValue(2.7);
    EXPECT_EQ(2.7, c.dDouble);
    c["Switch"].SetValue(0.0);
    EXPECT_FALSE(c.bSwitch);
    c["Switch"].SetValue(0.25);
    EXPECT_TRUE(c.bSwitch);
    c["Colour"].SetValue(3.0);
    EXPECT_EQ(eRed, c.eColour);
    short anShort[2] = {0, 7};
    c.c.AddParameter(&anShort[0], "Short", "", Interface::eIn)->SetValue(-40000.0);
    EXPECT_EQ(25536, anShort[0]);
    EXPECT_EQ(7, anShort[1]);
}

TEST(ParameterInterface, NumbersBeyondEveryIntegerAreStoredWithoutHarm)
{
    for (const double dValue : {dNan, dInfinity, -dInfinity, 1e300, -1e300, 9223372036854775808.0})
    {
        StAllKinds c;
        c["Byte"].SetValue(dValue);
        EXPECT_EQ(0, c.nByte) << dValue;
        c["Angle"].SetValue(dValue);
        EXPECT_EQ(0, c.nAngle) << dValue;
        c["Int"].SetValue(dValue);
        EXPECT_EQ(0, c.nInt) << dValue;
        c["Long"].SetValue(dValue);
        EXPECT_EQ(std::numeric_limits<long>::min(), c.nLong) << dValue;
        c["Switch"].SetValue(dValue);
        EXPECT_TRUE(c.bSwitch) << dValue;
        c["Double"].SetValue(dValue);
        EXPECT_EQ(0, std::memcmp(&dValue, &c.dDouble, sizeof dValue));
    }
}

TEST(ParameterInterface, AForeignVariableIsStoredToByTheType)
{
    StAllKinds c;
    long nTarget = 0x1111111111111111;
    c["Int"].SetValue(&nTarget, -2.0);
    EXPECT_EQ(-2, nTarget) << "a long, though the parameter's own variable is an int";
    EXPECT_EQ(-7, c.nInt);
    c["Colour"].SetValue(&nTarget, -3.0);
    EXPECT_EQ(-3, nTarget);
    EXPECT_STREQ("-3", c["Int"].GetszValue(&nTarget));
    unsigned char anTarget[2] = {0, 9};
    c["Byte"].SetValue(&anTarget[0], 5.0);
    EXPECT_EQ(5, anTarget[0]);
    EXPECT_EQ(9, anTarget[1]);
    EXPECT_STREQ("5", c["Byte"].GetszValue(&anTarget[0]));
}

TEST(ParameterInterface, AnIndirectParameterKeepsItsValue)
{
    StAllKinds c;
    c["Int"].m_bIndirect = true;
    c["Int"].SetValue(5.0);
    EXPECT_EQ(-7, c.nInt);
    c["Int"].SetValue(&c.nInt, 5.0);
    EXPECT_EQ(5, c.nInt);
}

TEST(ParameterInterface, WhatIsNoNumberTakesNone)
{
    StAllKinds c;
    ClImage cImage;
    c.pImage = &cImage;
    c["Image"].SetValue(5.0);
    EXPECT_EQ(&cImage, c.pImage);
    c["everything"].SetValue(5.0);
    Parameter().SetValue(5.0);
    Parameter cLong;
    cLong.m_eType = Interface::eLong;
    EXPECT_RAISES_CODE(cLong.SetValue(5.0), -701);
    for (const int nType : {0, 1, 2, 3, 4, 5, 8, 9})
    {
        cLong.m_eType = static_cast<Interface::EType>(nType);
        EXPECT_RAISES_CODE(cLong.SetValue(nullptr, 5.0), -701);
        EXPECT_STREQ("Unknown", cLong.szValue());
    }
}

TEST(ParameterInterface, PointersToImagesAndGraphsAreSetAndGot)
{
    StAllKinds c;
    ClImage cImage;
    EXPECT_EQ(nullptr, c["Image"].GetImage());
    c["Image"].SetValue(cImage);
    EXPECT_EQ(&cImage, c.pImage);
    EXPECT_EQ(&cImage, c["Image"].GetImage());
    c["Image"].SetValue(static_cast<ClImage*>(nullptr));
    EXPECT_EQ(nullptr, c.pImage);
    c["Image"].SetValue(&cImage);
    EXPECT_EQ(&cImage, c.pImage);
    ClGraph* pGraph = reinterpret_cast<ClGraph*>(&cImage); // never looked at
    c["Graph"].SetValue(pGraph);
    EXPECT_EQ(pGraph, c.pGraph);
    EXPECT_EQ(pGraph, c["Graph"].GetGraph());

    EXPECT_EQ(nullptr, c["Image"].GetGraph());
    EXPECT_EQ(nullptr, c["Graph"].GetImage());
    EXPECT_EQ(nullptr, c["Int"].GetImage());
    EXPECT_RAISES_CODE(c["Int"].SetValue(&cImage), -44);
    EXPECT_RAISES_CODE(c["Image"].SetValue(pGraph), -44);
    EXPECT_EQ(-7, c.nInt);
    c["Image"].m_pValue = nullptr;
    EXPECT_EQ(nullptr, c["Image"].GetImage());
    EXPECT_RAISES_CODE(c["Image"].SetValue(cImage), -701);
}

TEST(ParameterInterface, ShowsItsValueAsText)
{
    StAllKinds c;
    EXPECT_STREQ("200", c["Byte"].szValue());
    EXPECT_STREQ("16384=90.000\xB0", c["Angle"].szValue());
    EXPECT_STREQ("-7", c["Int"].szValue());
    EXPECT_STREQ("1.50000", c["Float"].szValue());
    EXPECT_STREQ("-0.10000", c["Double"].szValue());
    EXPECT_STREQ("Image", c["Image"].szValue());
    EXPECT_STREQ("Graph", c["Graph"].szValue());
    EXPECT_STREQ("Unknown", c["everything"].szValue());
    c.nAngle = 32768;
    EXPECT_STREQ("32768=180.000\xB0", c["Angle"].szValue());
    c.nLong = 12;
    EXPECT_STREQ("12", c["Long"].szValue());
    c.nLong = 0x100000005;
    EXPECT_STREQ("5", c["Long"].szValue()) << "the low half";
    c.dDouble = dNan;
    EXPECT_STREQ("nan", c["Double"].szValue());
    const short nShort = -3;
    Parameter cShort;
    cShort.m_eType = Interface::eShort;
    EXPECT_STREQ("-3", cShort.GetszValue(&nShort));
    Parameter cText;
    cText.m_eType = Interface::eText;
    EXPECT_STREQ("some words", cText.GetszValue("some words"));
}

TEST(ParameterInterface, LongTextsAreCutToTheBuffer)
{
    Parameter c;
    const std::string szLong(1000, 'x');
    c.m_eType = Interface::eText;
    EXPECT_EQ(std::string(255, 'x'), c.GetszValue(szLong.c_str()));
    const double dHuge = -1e308; // 309 digits
    c.m_eType = Interface::eDouble;
    EXPECT_EQ(255u, std::strlen(c.GetszValue(&dHuge)));
    const long nOne = 1;
    c.m_eType = Interface::eEnum;
    c.SetEnumList((std::string("a") + '\0' + szLong + '\0').c_str(), nullptr);
    EXPECT_EQ(std::string(255, 'x'), c.GetszValue(&nOne));
}

TEST(ParameterInterface, TextsOfOneThreadDoNotDisturbThoseOfAnother)
{
    StAllKinds c;
    const char* szMine = c["Int"].szValue();
    std::thread(
        []
        {
            StAllKinds cOther;
            EXPECT_STREQ("200", cOther["Byte"].szValue());
        })
        .join();
    EXPECT_STREQ("-7", szMine);
}

TEST(ParameterInterface, EnumeratedValuesAreShownByName)
{
    StAllKinds c;
    const long anValues[] = {3, 5};
    c["Colour"].SetEnumList("Red\0Green\0", anValues);
    EXPECT_STREQ("Green", c["Colour"].szValue());
    c.eColour = eRed;
    EXPECT_STREQ("Red", c["Colour"].szValue());
    c.eColour = static_cast<EColour>(1);
    EXPECT_STREQ("Unknown", c["Colour"].szValue());
    c["Switch"].SetEnumList("Off\0On\0", nullptr);
    EXPECT_STREQ("On", c["Switch"].szValue());
    c.bSwitch = false;
    EXPECT_STREQ("Off", c["Switch"].szValue());
}

TEST(ParameterInterface, EnumToStrStaysWithinTheList)
{
    Parameter c;
    char szText[8];
    const ClGuardedBytes cList("one\0two\0", 9); // ends where memory does
    const char* szList = reinterpret_cast<const char*>(cList.Data());
    EXPECT_STREQ("one", c.EnumToStr(0, szList, szText, sizeof szText));
    EXPECT_EQ(szText, c.EnumToStr(1, szList, szText, sizeof szText));
    EXPECT_STREQ("two", szText);
    for (const long nOutside : {2L, 3L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
    {
        EXPECT_STREQ("Unknown", c.EnumToStr(nOutside, szList, szText, sizeof szText)) << nOutside;
    }
    EXPECT_STREQ("Unknown", c.EnumToStr(0, nullptr, szText, sizeof szText));
    EXPECT_STREQ("Unknown", c.EnumToStr(0, "", szText, sizeof szText));
    EXPECT_STREQ("tw", c.EnumToStr(1, szList, szText, 3));
    szText[0] = '#';
    c.EnumToStr(1, szList, szText, 0);
    EXPECT_EQ('#', szText[0]);
    EXPECT_EQ(nullptr, c.EnumToStr(1, szList, nullptr, 5));
}

TEST(ParameterInterface, EnumToStrWithValuesTakesTheNameAtTheirPlace)
{
    Parameter c;
    char szText[16];
    const long anValues[] = {8, -1, 8};
    c.SetEnumList("eight\0minus\0again\0", anValues);
    EXPECT_STREQ("eight", c.EnumToStr(8, c.GetEnumList(), szText, sizeof szText));
    EXPECT_STREQ("minus", c.EnumToStr(-1, c.GetEnumList(), szText, sizeof szText));
    EXPECT_STREQ("Unknown", c.EnumToStr(0, c.GetEnumList(), szText, sizeof szText));
    EXPECT_STREQ("b", c.EnumToStr(-1, "a\0b\0c\0d\0", szText, sizeof szText)) << "another list, the same values";
    EXPECT_STREQ("Unknown", c.EnumToStr(-1, "a\0", szText, sizeof szText)) << "a shorter list";
    EXPECT_STREQ("Unknown", c.EnumToStr(7, "a\0b\0c\0d\0e\0", szText, sizeof szText)) << "no fourth value is read";
}

TEST(ParameterInterface, EnumListsAreCopies)
{
    Parameter c;
    char szList[] = "a\0bc\0";
    long anValues[] = {4, 6};
    c.SetEnumList(szList, anValues);
    szList[0] = 'A';
    anValues[1] = 7;
    EXPECT_EQ(std::string("a\0bc\0", 6), std::string(c.GetEnumList(), 6));
    EXPECT_EQ(4, c.m_pnEnumValues[0]);
    EXPECT_EQ(6, c.m_pnEnumValues[1]);
    c.SetEnumList(c.GetEnumList(), c.m_pnEnumValues);
    EXPECT_EQ(std::string("a\0bc\0", 6), std::string(c.GetEnumList(), 6));
    EXPECT_EQ(6, c.m_pnEnumValues[1]);
    c.SetEnumList("x\0", nullptr);
    EXPECT_STREQ("x", c.GetEnumList());
    EXPECT_EQ(nullptr, c.m_pnEnumValues);
    c.SetEnumList("", anValues);
    EXPECT_STREQ("", c.GetEnumList());
    c.SetEnumList(nullptr, anValues);
    EXPECT_EQ(nullptr, c.GetEnumList());
    EXPECT_EQ(nullptr, c.m_pnEnumValues);

    static constexpr StEnumName aNames[] = {{255, "default"}, {-1, "none"}};
    c.SetEnumList(aNames);
    EXPECT_EQ(std::string("default\0none\0", 14), std::string(c.GetEnumList(), 14));
    EXPECT_EQ(255, c.m_pnEnumValues[0]);
    EXPECT_EQ(-1, c.m_pnEnumValues[1]);
}

TEST(ParameterInterface, ANumberNeedsAVariable)
{
    Interface c;
    int* pNone = nullptr;
    static constexpr StEnumName aNames[] = {{0, "none"}};
    EXPECT_RAISES_CODE(c.AddParameter(pNone, "n", "", Interface::eIn), -701);
    EXPECT_RAISES_CODE(c.AddChoice(pNone, "n", "", Interface::eIn, aNames), -701);
    EXPECT_EQ(0, c.Count());
}

TEST(ParameterInterface, WithoutMemoryAChoiceIsNotAddedByHalves)
{
    static constexpr StEnumName aNames[] = {{3, "Red"}, {5, "Green"}};
    Interface c;
    EColour eColour = eGreen;
    const auto add = [&] { c.AddChoice(&eColour, "Colour", "a colour", Interface::eIn, aNames); };
    EXPECT_EQ(7, ExpectBadAllocAtEveryAllocation(add)) << "the parameter, its texts, the list twice";
    ASSERT_EQ(1, c.Count());
    EXPECT_STREQ("Green", c.FirstParam()->szValue());
    EXPECT_EQ(1, c.FirstParam()->m_bNoRange);
}

TEST(ParameterInterface, WithoutMemoryTheListIsAsBefore)
{
    StAllKinds c;
    long nFailed = ExpectBadAllocAtEveryAllocation(
        [&c]
        {
            struct ClCountCheck // also on the way out of a failure
            {
                ~ClCountCheck() { EXPECT_TRUE(c.c.Count() == 11 || bAdded); }
                StAllKinds& c;
                bool bAdded = false;
            } cCheck{c};
            c.c.AddParameter(&c.nInt, "one", "more", Interface::eIn);
            cCheck.bAdded = true;
        });
    EXPECT_EQ(3, nFailed) << "the parameter and its texts";
    EXPECT_EQ(12, c.c.Count());

    const long anValues[] = {1, 2};
    c["Int"].SetEnumList("old\0", nullptr);
    nFailed = ExpectBadAllocAtEveryAllocation(
        [&]
        {
            EXPECT_STREQ("old", c["Int"].GetEnumList());
            EXPECT_EQ(nullptr, c["Int"].m_pnEnumValues);
            c["Int"].SetEnumList("a\0b\0", anValues);
        });
    EXPECT_EQ(2, nFailed);
    EXPECT_STREQ("a", c["Int"].GetEnumList());

    ClMemoryStream cStream;
    c.c.WriteToStream(cStream);
    ExpectBadAllocAtEveryAllocation(
        [&]
        {
            cStream.Rewind();
            c.c.ReadFromStream(cStream);
        });
}
