#include "RDTools/SDKHandleBaseFixture.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

using namespace HandleTests;

namespace
{
/// What handles tell about their properties.
class SDKHandleBaseDescriptions : public SDKHandleBase
{
};
} // namespace

TEST_F(SDKHandleBaseDescriptions, NoPropertyIsABlockOfBytes)
{
    char acBytes[4];
    unsigned long nSize = sizeof acBytes;
    EXPECT_RAISES(m_cRich.GetPropertyBlob("Count", acBytes, nullptr), ClExVelmarin, -24, szNoSize);
    EXPECT_RAISES(m_cRich.GetPropertyBlob("Count", acBytes, &nSize), ClExVelmarin, -44, szInvalidParameter);
    EXPECT_RAISES(m_cRich.SetPropertyBlob("Ranged", acBytes, 4), ClExVelmarin, -44, szInvalidParameter);
}

TEST_F(SDKHandleBaseDescriptions, TypeTellsIntegersFromFloatsFromTheRest)
{
    const std::pair<const char*, enumType_t> aTypes[] = {{"Count", eTypeInteger}, {"Ranged", eTypeInteger},
                                                         {"Real", eTypeFloat},    {"Colour", eTypeOther},
                                                         {"Version", eTypeOther}, {"Sub", eTypeOther}};
    for (const auto& [szName, eExpected] : aTypes)
    {
        auto eType = static_cast<enumType_t>(-1);
        m_cRich.GetPropertyType(szName, &eType);
        EXPECT_EQ(eExpected, eType) << szName;
        EXPECT_RAISES(m_cRich.GetPropertyType(szName, nullptr), ClExVelmarin, -23, szNoPointer);
    }
    EXPECT_EQ(0, eTypeInteger);
    EXPECT_EQ(1, eTypeFloat);
    EXPECT_EQ(2, eTypeOther);
}

TEST_F(SDKHandleBaseDescriptions, AccessIsTheTwoLowestBits)
{
    const std::pair<const char*, int> aAccess[] = {{"Version", 2}, {"Count", 2}, {"Ranged", 3},
                                                   {"Real", 3},    {"Sub", 0},   {"Sub.FixedColour", 2}};
    for (const auto& [szName, nExpected] : aAccess)
    {
        auto eAccess = static_cast<enumAccess_t>(-1);
        m_cRich.GetPropertyAccess(szName, &eAccess);
        EXPECT_EQ(nExpected, static_cast<int>(eAccess)) << szName;
        EXPECT_RAISES(m_cRich.GetPropertyAccess(szName, nullptr), ClExVelmarin, -23, szNoPointer);
    }
}

TEST_F(SDKHandleBaseDescriptions, RangesAreStrictAboutTheType)
{
    long nMin = 0;
    long nMax = 0;
    double dMin = 0.0;
    double dMax = 0.0;
    m_cRich.GetPropertyRangeLong("Ranged", &nMin, &nMax);
    EXPECT_EQ(-2, nMin);
    EXPECT_EQ(9, nMax);
    m_cRich.GetPropertyRangeDouble("Real", &dMin, &dMax);
    EXPECT_EQ(-0.5, dMin);
    EXPECT_EQ(2.25, dMax);
    nMin = nMax = 77;
    m_cRich.GetPropertyRangeLong("Ranged", nullptr, &nMax);
    EXPECT_EQ(9, nMax);
    m_cRich.GetPropertyRangeLong("Ranged", &nMin, nullptr);
    EXPECT_EQ(-2, nMin);
    EXPECT_RAISES(m_cRich.GetPropertyRangeLong("Ranged", nullptr, nullptr), ClExVelmarin, -23, szNoPointer);
    EXPECT_RAISES(m_cRich.GetPropertyRangeDouble("Real", nullptr, nullptr), ClExVelmarin, -23, szNoPointer);
    EXPECT_RAISES(m_cRich.GetPropertyRangeLong("Real", nullptr, nullptr), ClExVelmarin, -44, szInvalidParameter);
    EXPECT_RAISES(m_cRich.GetPropertyRangeDouble("Ranged", nullptr, nullptr), ClExVelmarin, -44, szInvalidParameter);
    for (const char* szName : {"Count", "RealFixed", "Colour", "Version"}) // no range, or no number
    {
        EXPECT_RAISES(m_cRich.GetPropertyRangeLong(szName, nullptr, nullptr), ClExVelmarin, -103, szUnsupported);
        EXPECT_RAISES(m_cRich.GetPropertyRangeDouble(szName, nullptr, nullptr), ClExVelmarin, -103, szUnsupported);
    }
}

// ---- enumerations

TEST_F(SDKHandleBaseDescriptions, EnumeratesAllPropertiesByPath)
{
    const std::vector<std::string> aExpected = {"Version",   "Count",  "Ranged",          "Real",
                                                "RealFixed", "Colour", "Sub.FixedColour", "Unnamed"};
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(aExpected, Enumerate([&](char* sz, unsigned long* pn) { m_cRich.PropertyEnumerateFirst(sz, pn); },
                                       [&](char* sz, unsigned long* pn) { m_cRich.PropertyEnumerateNext(sz, pn); }));
        EXPECT_EQ(i + 1, m_cRich.m_nQueried); // each beginning builds the tree anew
    }
}

TEST_F(SDKHandleBaseDescriptions, NextBeforeFirstNeedsATree)
{
    char szName[16];
    unsigned long nSize = sizeof szName;
    EXPECT_RAISES(m_cRich.PropertyEnumerateNext(szName, &nSize), ClException, -50, szNotBegun);
    EXPECT_EQ(4, Long("Count"));
    m_cRich.PropertyEnumerateNext(szName, &nSize); // begins with the first
    EXPECT_STREQ("Version", szName);
    m_cRich.ResetProperties();
    EXPECT_RAISES(m_cRich.PropertyEnumerateNext(szName, &nSize), ClException, -50, szNotBegun);
}

TEST_F(SDKHandleBaseDescriptions, EnumerationStaysWhereTheSizeWasTooSmall)
{
    char szName[16];
    unsigned long nSize = 7;
    EXPECT_RAISES(m_cRich.PropertyEnumerateFirst(szName, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(8u, nSize);
    nSize = 5;
    EXPECT_RAISES(m_cRich.PropertyEnumerateNext(szName, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(6u, nSize);
    m_cRich.PropertyEnumerateNext(szName, &nSize);
    EXPECT_STREQ("Count", szName);
    EXPECT_RAISES(m_cRich.PropertyEnumerateNext(szName, nullptr), ClExVelmarin, -24, szNoSize);
}

TEST_F(SDKHandleBaseDescriptions, EndOfAnEnumerationWritesOnlyWhereThereIsRoom)
{
    ClPlain cPlain;
    char szName[8];
    unsigned long nSize = sizeof szName;
    cPlain.PropertyEnumerateFirst(szName, &nSize);
    szName[0] = 'a';
    nSize = 0;
    cPlain.PropertyEnumerateNext(szName, &nSize);
    EXPECT_EQ('a', szName[0]);
    EXPECT_EQ(0u, nSize);
    nSize = 1;
    cPlain.PropertyEnumerateNext(szName, &nSize); // again and again
    EXPECT_EQ('\0', szName[0]);
    EXPECT_EQ(0u, nSize);
    nSize = 1;
    cPlain.PropertyEnumerateNext(nullptr, &nSize);
    EXPECT_EQ(0u, nSize);
    EXPECT_RAISES(cPlain.PropertyEnumerateNext(szName, nullptr), ClExVelmarin, -24, szNoSize);
}

TEST_F(SDKHandleBaseDescriptions, EnumeratesTheValuesOfAnEnumeration)
{
    const std::vector<std::string> aExpected = {"Red", "Navy blue"};
    EXPECT_EQ(aExpected,
              Enumerate([&](char* sz, unsigned long* pn) { m_cRich.GetPropertyValueEnumerateFirst("Colour", sz, pn); },
                        [&](char* sz, unsigned long* pn) { m_cRich.GetPropertyValueEnumerateNext(sz, pn); }));
    EXPECT_EQ(2u, m_cRich.m_nEnumerateIndex);
}

TEST_F(SDKHandleBaseDescriptions, ValuesAreEnumeratedOfEnumerationsWithEntriesOnly)
{
    char szName[16];
    unsigned long nSize = sizeof szName;
    EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateNext(szName, &nSize), ClException, -50, szNotBegun);
    for (const char* szOther : {"Count", "Version", "Sub", "Unnamed"})
    {
        EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateFirst(szOther, szName, &nSize), ClExVelmarin, -103,
                      szUnsupported);
    }
    nSize = 3;
    EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateFirst("Colour", szName, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(4u, nSize);
    m_cRich.GetPropertyValueEnumerateNext(szName, &nSize); // not passed over
    EXPECT_STREQ("Red", szName);
    m_cRich.ResetProperties();
    EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateNext(szName, &nSize), ClException, -50, szNotBegun);
}

// ---- the rest

TEST_F(SDKHandleBaseDescriptions, AHandleIsNoList)
{
    constexpr char szWrong[] = "The value for the parameter is out of range.";
    EXPECT_RAISES(m_cRich.GetAt(0, nullptr), ClExVelmarin, -209, szWrong);
    EXPECT_RAISES(m_cRich.SetAt(0, nullptr), ClExVelmarin, -209, szWrong);
    EXPECT_RAISES(m_cRich.Clear(), ClExVelmarin, -209, szWrong);
    EXPECT_RAISES(m_cRich.Insert(0, nullptr), ClExVelmarin, -209, szWrong);
    EXPECT_RAISES(m_cRich.Remove(0), ClExVelmarin, -209, szWrong);
    EXPECT_NO_THROW(m_cRich.Reset());
    EXPECT_EQ(4, m_cRich.m_nCount);
}

TEST(SDKHandleProperties, BlocksOfBytesFollowTheSizeProtocol)
{
    /// A number that can be had as its bytes, too.
    class ClBytes : public TpParameterNumeric<int, ClParameter>, public ClParameterBlobInterface
    {
    public:
        ClParameterBlobInterface* GetBlobnterface() override { return this; }
        bool GetBlob(void* pValue, unsigned long& nSize) override
        {
            const bool bFits = nSize >= sizeof *m_pValue;
            nSize = sizeof *m_pValue;
            if (bFits)
            {
                std::memcpy(pValue, m_pValue, sizeof *m_pValue);
            }
            return bFits;
        }
        void SetBlob(const void* pValue, unsigned long nSize) override { std::memcpy(m_pValue, pValue, nSize); }
        unsigned long GetBlobSize() const override { return sizeof *m_pValue; }
        void ClearBlob() override { *m_pValue = 0; }
    };

    int nNumber = 0x04030201;
    ClParameterContainer cProperties;
    cProperties.AddParam<ClBytes>("Number", &nNumber);
    int nRead = 0;
    unsigned long nSize = 3;
    EXPECT_RAISES(SDKHandleProperties::GetBlob(cProperties, "number", &nRead, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(4u, nSize);
    EXPECT_EQ(0, nRead);
    SDKHandleProperties::GetBlob(cProperties, "number", &nRead, &nSize);
    EXPECT_EQ(0x04030201, nRead);
    nRead = 7;
    SDKHandleProperties::SetBlob(cProperties, "number", &nRead, 4);
    EXPECT_EQ(7, nNumber);
}
