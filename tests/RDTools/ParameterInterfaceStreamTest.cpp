// What a parameter interface writes to a stream and reads from one.

#include "MemoryStream.hpp"
#include "ParameterInterfaceKinds.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

namespace
{
using Bytes_t = std::vector<unsigned char>;

/// The bytes of numbers in network order, then what stands in a text.
Bytes_t Join(std::initializer_list<Bytes_t> aParts)
{
    Bytes_t aAll;
    for (const Bytes_t& aPart : aParts)
    {
        aAll.insert(aAll.end(), aPart.begin(), aPart.end());
    }
    return aAll;
}

const Bytes_t aZero(8, 0);
const Bytes_t aOne = {0x3F, 0xF0, 0, 0, 0, 0, 0, 0};   // 1.0
const Bytes_t aMinusTwo = {0xC0, 0, 0, 0, 0, 0, 0, 0}; // -2.0
const Bytes_t aSeven = {0x40, 0x1C, 0, 0, 0, 0, 0, 0}; // 7.0
const Bytes_t aNameN = {0, 0, 0, 2, 'n', 0};           // of a parameter "n"
} // namespace

TEST(ParameterInterfaceStream, ARecordHasItsFieldsInOrder)
{
    Interface c;
    int nValue = -2;
    Parameter* p = c.AddParameter(&nValue, "n", "not kept", Interface::eOptional, -2.0, 7.0);
    p->m_bFlag1 = true;
    ClMemoryStream cStream;
    c.WriteToStream(cStream);
    EXPECT_EQ(Join({aNameN, {3, 0}, aMinusTwo, aSeven, aMinusTwo, {1, 0, 3}, {0xFF, 0xFF, 0xFF, 0xFE}}),
              cStream.m_aBytes);
}

TEST(ParameterInterfaceStream, EachTypeHasItsValueBytes)
{
    const std::pair<int, Bytes_t> aValues[] = {{0, {0x12}},
                                               {1, {0x34, 0x12}},
                                               {2, {0x34, 0x12}},
                                               {3, {0x78, 0x56, 0x34, 0x12}},
                                               {4, {0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12}},
                                               {5, {0x78, 0x56, 0x34, 0x12}},
                                               {6, {}},
                                               {7, {}},
                                               {8, {}},
                                               {9, {}},
                                               {11, {}},
                                               {12, {}},
                                               {13, {}}};
    for (const auto& [nType, aBytes] : aValues)
    {
        unsigned char anValue[8] = {0x12};
        std::copy(aBytes.begin(), aBytes.end(), anValue);
        Parameter c;
        c.m_eType = static_cast<Interface::EType>(nType);
        c.m_pValue = anValue;
        c.m_bNoRange = 0x101;
        c.m_bIndirect = true;
        c.m_dLower = 1.0;
        ClMemoryStream cStream;
        cStream.SetBigEndian(false);
        c.WriteToStream(cStream);
        const Bytes_t aLowerOne(aOne.rbegin(), aOne.rend());
        EXPECT_EQ(Join({{1, 0, 0, 0, 0}, // a missing name is written as an empty one
                        {2, 1},
                        aLowerOne,
                        aZero,
                        aZero,
                        {0, 1, static_cast<unsigned char>(nType)},
                        aBytes}),
                  cStream.m_aBytes)
            << nType;
        cStream.m_aBytes.clear();
        cStream.Rewind();
        c.m_pValue = nullptr;
        c.WriteToStream(cStream);
        EXPECT_EQ(34u + aBytes.size(), cStream.m_aBytes.size()) << "without variable a record is as long";
    }
}

TEST(ParameterInterfaceStream, ARecordReadBackRestoresTheValues)
{
    for (const bool bBigEndian : {true, false})
    {
        StAllKinds cWritten;
        cWritten["Byte"].m_bFlag1 = true;
        cWritten["Int"].m_bIndirect = true;
        cWritten["Double"].SetRange(-7.0, 9.0);
        cWritten.nLong = -5;
        ClMemoryStream cStream;
        cStream.SetBigEndian(bBigEndian);
        cWritten.c.WriteToStream(cStream);
        StAllKinds c;
        c.nByte = 0;
        c.nAngle = 0;
        c.nInt = 0;
        c.nLong = 0;
        c.fFloat = 0.0f;
        c.dDouble = 0.0;
        c.bSwitch = false;
        c["Byte"].m_eDirection = Interface::eOut;
        c["Byte"].m_bNoRange = 1;
        c["Byte"].m_dDefault = 0.0;
        cStream.Rewind();
        c.c.ReadFromStream(cStream);
        EXPECT_EQ(cStream.m_aBytes.size(), cStream.m_nPos);
        EXPECT_EQ(200, c.nByte);
        EXPECT_EQ(16384, c.nAngle);
        EXPECT_EQ(-7, c.nInt);
        EXPECT_EQ(0x55555555, c.nBehindInt);
        EXPECT_EQ(-5, c.nLong);
        EXPECT_EQ(1.5f, c.fFloat);
        EXPECT_EQ(-0.1, c.dDouble);
        EXPECT_FALSE(c.bSwitch) << "truth values are not kept";
        EXPECT_TRUE(c["Byte"].m_bFlag1);
        EXPECT_TRUE(c["Int"].m_bIndirect);
        EXPECT_FALSE(c["Byte"].m_bIndirect);
        EXPECT_EQ(-7.0, c["Double"].m_dLower);
        EXPECT_EQ(9.0, c["Double"].m_dUpper);
        EXPECT_EQ(200.0, c["Byte"].m_dDefault);
        EXPECT_EQ(Interface::eOut, c["Byte"].m_eDirection) << "the record's direction is dropped";
        EXPECT_EQ(1, c["Byte"].m_bNoRange) << "so is its no-range";
    }
}

TEST(ParameterInterfaceStream, AShortIsWrittenWithTwoBytesAndReadWithFour)
{
    Interface c;
    short anShort[2] = {0x1234, 0x5555};
    int nNext = 9;
    c.AddParameter(&anShort[0], "s", "", Interface::eIn);
    ClMemoryStream cStream;
    cStream.SetBigEndian(false);
    c.WriteToStream(cStream);
    EXPECT_EQ(4u + 2 + 2 + 24 + 3 + 2, cStream.m_aBytes.size());
    c.AddParameter(&nNext, "n", "", Interface::eIn);
    cStream.m_aBytes.clear();
    cStream.Rewind();
    c.WriteToStream(cStream);
    anShort[0] = 0;
    cStream.Rewind();
    EXPECT_EQ(0, c.GetParameter(0)->ReadFromStream(cStream));
    EXPECT_EQ(39u, cStream.m_nPos) << "two bytes into the next record";
    EXPECT_EQ(0x1234, anShort[0]);
    EXPECT_EQ(0x5555, anShort[1]) << "no more than the variable is written";
    cStream.Rewind();
    EXPECT_RAISES_CODE(c.ReadFromStream(cStream), -33);
}

TEST(ParameterInterfaceStream, AnotherOrderOfNamesFailsAtTheFirstDifference)
{
    int anValue[3] = {1, 2, 3};
    Interface cWritten;
    Interface cRead;
    const char* aszWritten[] = {"a", "b", "c"};
    const char* aszRead[] = {"a", "c", "b"};
    for (int i = 0; i < 3; ++i)
    {
        cWritten.AddParameter(&anValue[i], aszWritten[i], "", Interface::eIn);
        cRead.AddParameter(&anValue[i], aszRead[i], "", Interface::eIn);
    }
    ClMemoryStream cStream;
    cWritten.WriteToStream(cStream);
    cStream.Rewind();
    anValue[0] = anValue[1] = anValue[2] = 9;
    EXPECT_RAISES(cRead.ReadFromStream(cStream), ClExVelmarin, -33, ClExVelmarin(-33, "", 0).What());
    EXPECT_EQ(1, anValue[0]);
    EXPECT_EQ(9, anValue[1]);
    EXPECT_EQ(cStream.m_aBytes.size() / 3 + 6, cStream.m_nPos) << "nothing is read behind the name";
}

TEST(ParameterInterfaceStream, NamesAreComparedExactly)
{
    const auto read = [](const char* szName, const Bytes_t& aRecord)
    {
        Parameter c;
        c.SetName(szName);
        ClMemoryStream cStream(aRecord);
        return c.ReadFromStream(cStream);
    };
    EXPECT_EQ(0, read("n", aNameN));
    EXPECT_EQ(-33, read("N", aNameN));
    EXPECT_EQ(-33, read("nn", aNameN));
    EXPECT_EQ(-33, read("", aNameN));
    EXPECT_EQ(-33, read(nullptr, aNameN));
    EXPECT_EQ(0, read(nullptr, {0, 0, 0, 1, 0}));
    EXPECT_EQ(0, read("", {0, 0, 0, 0}));
    EXPECT_EQ(-33, read("n", {0, 0, 0, 0}));
    EXPECT_EQ(0, read("n", {0, 0, 0, 2, 'n', '?'})) << "the last byte always ends the text";
    EXPECT_EQ(-33, read("n", {0, 0, 0, 1, 'n'}));
}

TEST(ParameterInterfaceStream, ADamagedLengthAllocatesOnlyWhatIsThere)
{
    Parameter c;
    c.SetName("n");
    ClMemoryStream cStream({0xFF, 0xFF, 0xFF, 0xFF, 'n', 0});
    EXPECT_EQ(0, c.ReadFromStream(cStream)) << "cut to the stream";
    cStream.Rewind();
    cStream.m_bCheckShort = true;
    EXPECT_RAISES_CODE(c.ReadFromStream(cStream), -201);
}

TEST(ParameterInterfaceStream, EveryShortRecordIsReportedOnDemand)
{
    StAllKinds cWritten;
    ClMemoryStream cWhole;
    cWritten.c.WriteToStream(cWhole);
    for (std::size_t nBytes = 0; nBytes < cWhole.m_aBytes.size(); ++nBytes)
    {
        StAllKinds c;
        ClMemoryStream cStream(Bytes_t(cWhole.m_aBytes.begin(), cWhole.m_aBytes.begin() + static_cast<long>(nBytes)));
        cStream.m_bCheckShort = true;
        EXPECT_RAISES_CODE(c.c.ReadFromStream(cStream), -201);
        cWhole.Rewind();
        cWhole.ShortAt(nBytes);
        cWhole.m_bCheckShort = true;
        EXPECT_RAISES_CODE(cWritten.c.WriteToStream(cWhole), -201);
    }
}

TEST(ParameterInterfaceStream, WithoutThatAShortRecordLeavesTheRestAlone)
{
    Interface c;
    long nValue = 0x123456789;
    Parameter* p = c.AddParameter(&nValue, "n", "", Interface::eIn, 1.0, 7.0);
    ClMemoryStream cWhole;
    c.WriteToStream(cWhole);
    nValue = 0x987654321;
    p->m_dLower = 2.0;
    p->m_dUpper = 3.0;
    p->m_bIndirect = true;
    // Cut within the upper bound: the lower one is read, what lies behind stays.
    ClMemoryStream cCut(Bytes_t(cWhole.m_aBytes.begin(), cWhole.m_aBytes.begin() + 6 + 2 + 8 + 3));
    EXPECT_EQ(0, p->ReadFromStream(cCut));
    EXPECT_EQ(1.0, p->m_dLower);
    EXPECT_EQ(3.0, p->m_dUpper);
    EXPECT_TRUE(p->m_bIndirect);
    ClMemoryStream cNoValue(Bytes_t(cWhole.m_aBytes.begin(), cWhole.m_aBytes.end() - 1));
    EXPECT_EQ(0, p->ReadFromStream(cNoValue));
    EXPECT_EQ(0x987654321, nValue);
    EXPECT_FALSE(p->m_bIndirect);
}

TEST(ParameterInterfaceStream, AParameterWithoutVariableIsReadOver)
{
    StAllKinds cWritten;
    ClMemoryStream cStream;
    cWritten.c.WriteToStream(cStream);
    StAllKinds c;
    for (Parameter* p = c.c.FirstParam(); p != nullptr; p = p->m_pNext)
    {
        p->m_pValue = nullptr;
    }
    cStream.Rewind();
    c.c.ReadFromStream(cStream);
    EXPECT_EQ(cStream.m_aBytes.size(), cStream.m_nPos);
}
