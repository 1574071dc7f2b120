#include "RDTools/SDKHandleBase.hpp"

#include "RDTools/SDKHandleBaseFixture.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <limits>
#include <string>

using namespace HandleTests;

// ---- creation and destruction

TEST_F(SDKHandleBase, CreateGivesAHandleThatDestroyTakes)
{
    ClRich::m_nCreated = ClRich::m_nDestroying = ClRich::m_nDestroyed = 0;
    void* hRich = nullptr;
    ClRich::CreateHandle(&hRich);
    ASSERT_NE(nullptr, hRich);
    EXPECT_EQ(1, ClRich::m_nCreated);
    EXPECT_NE(nullptr, dynamic_cast<ClRich*>(ClTestHandleBase::GetClassBase(hRich)));
    ClTestHandleBase::DestroyHandle(&hRich);
    EXPECT_EQ(nullptr, hRich);
    EXPECT_EQ(1, ClRich::m_nDestroying);
    EXPECT_EQ(1, ClRich::m_nDestroyed);
    EXPECT_RAISES(ClTestHandleBase::DestroyHandle(&hRich), ClExVelmarin, -42, szNoHandle);
}

TEST_F(SDKHandleBase, CreateTestsTheLibraryBeforeThePointer)
{
    ClTestLibrary::Uninitialize();
    void* pBefore = this;
    constexpr char szComment[] = "Prior initialization is necessary.\nInitialization required prior to handle creation";
    EXPECT_RAISES(ClRich::CreateHandle(&pBefore), ClException, -2, szComment);
    EXPECT_RAISES(ClRich::CreateHandle(nullptr), ClException, -2, szComment);
    EXPECT_EQ(this, pBefore);
    ClTestLibrary::Initialize(nullptr);
    EXPECT_RAISES(ClRich::CreateHandle(nullptr), ClException, -701,
                  "The pointer is bad or invalid.\nhandle reference is NULL pointer");
}

TEST_F(SDKHandleBase, ClassBaseKnowsAllKindsAndNothingElse)
{
    void* hRich = nullptr;
    void* hPlain = nullptr;
    ClRich::CreateHandle(&hRich);
    ClPlain::CreateHandle(&hPlain);
    EXPECT_NE(nullptr, dynamic_cast<ClRich*>(ClTestHandleBase::GetClassBase(hRich)));
    EXPECT_NE(nullptr, dynamic_cast<ClPlain*>(ClTestHandleBase::GetClassBase(hPlain)));
    EXPECT_RAISES(ClTestHandleBase::GetClassBase(nullptr), ClExVelmarin, -42, szNoHandle);

    auto& cRecord = *static_cast<ClHandleRecord*>(hPlain);
    std::memcpy(cRecord.m_szSecond, "RICH\0\0\0", 8); // right first stamp, the second of the other kind
    EXPECT_RAISES(ClTestHandleBase::GetClassBase(hPlain), ClExVelmarin, -43, szInvalidHandle);
    void* hBefore = hPlain;
    EXPECT_RAISES(ClTestHandleBase::DestroyHandle(&hPlain), ClExVelmarin, -43, szInvalidHandle);
    EXPECT_EQ(hBefore, hPlain);
    std::memcpy(cRecord.m_szSecond, "PLAINER", 8);
    void* const pObject = cRecord.m_pObject;
    cRecord.m_pObject = nullptr;
    EXPECT_RAISES(ClTestHandleBase::GetClassBase(hPlain), ClExVelmarin, -43, szInvalidHandle);
    cRecord.m_pObject = pObject;

    ClTestHandleBase::DestroyHandle(&hRich);
    ClTestHandleBase::DestroyHandle(&hPlain);
}

TEST_F(SDKHandleBase, DestroyRefusesANullReference)
{
    EXPECT_RAISES(ClTestHandleBase::DestroyHandle(nullptr), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nhandle reference is NULL pointer");
}

TEST_F(SDKHandleBase, DeleteTakesHandlesOfItsOwnKindOnly)
{
    void* hPlain = nullptr;
    ClPlain::CreateHandle(&hPlain);
    void* const hBefore = hPlain;
    EXPECT_RAISES(m_cRich.Delete(nullptr), ClExVelmarin, -44, szInvalidParameter);
    EXPECT_RAISES(m_cRich.Delete(&hPlain), ClExVelmarin, -43, szInvalidHandle);
    EXPECT_EQ(hBefore, hPlain);
    void* hNull = nullptr;
    EXPECT_RAISES(m_cRich.Delete(&hNull), ClExVelmarin, -42, szNoHandle);
    ClTestHandleBase::GetClassBase(hPlain)->Delete(&hPlain);
    EXPECT_EQ(nullptr, hPlain);
}

TEST_F(SDKHandleBase, AHandleOutlivesTheLibrary)
{
    void* hRich = nullptr;
    ClRich::CreateHandle(&hRich);
    ClTestLibrary::Uninitialize();
    long nValue = 0;
    ClTestHandleBase::GetClassBase(hRich)->GetPropertyLong("Count", &nValue);
    EXPECT_EQ(4, nValue);
    ClTestHandleBase::DestroyHandle(&hRich);
}

// ---- the tree of properties

TEST_F(SDKHandleBase, TreeIsBuiltOnceAndOnDemand)
{
    EXPECT_EQ(nullptr, m_cRich.m_pProperties);
    EXPECT_EQ(4, Long("Count"));
    m_cRich.m_nCount = 6; // the tree is bound to the member
    EXPECT_EQ(6, Long("Count"));
    EXPECT_EQ(1, m_cRich.m_nQueried);
    const auto* pCount = m_cRich.m_pProperties->Find("Count");
    EXPECT_EQ("4", const_cast<ClParameter*>(pCount)->GetDefaultValue()); // the value when the tree was built
    m_cRich.ResetProperties();
    EXPECT_EQ(nullptr, m_cRich.m_pProperties);
    EXPECT_EQ(6, Long("Count"));
    EXPECT_EQ(2, m_cRich.m_nQueried);
    EXPECT_EQ("6", m_cRich.m_pProperties->Find("Count")->GetDefaultValue());
}

TEST_F(SDKHandleBase, APropertyFoundTwiceIsAnErrorEachTime)
{
    m_cRich.m_bTwice = true;
    long nValue = 0;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_RAISES(m_cRich.GetPropertyLong("Count", &nValue), ClExVelmarin, -46,
                      "The given parameter is a duplicate of a previously given parameter.");
        EXPECT_EQ(nullptr, m_cRich.m_pProperties);
    }
    m_cRich.m_bTwice = false;
    EXPECT_EQ(4, Long("Count"));
}

TEST_F(SDKHandleBase, AHandleWithoutPropertiesOfItsOwnHasItsVersion)
{
    ClPlain cPlain;
    char szVersion[4];
    unsigned long nSize = sizeof szVersion;
    cPlain.GetProperty("Version", szVersion, &nSize);
    EXPECT_STREQ("5.6", szVersion);
    EXPECT_EQ(4u, nSize);
    EXPECT_RAISES(cPlain.SetProperty("Version", "1"), ClExVelmarin, -47, szReadOnly);
    EXPECT_EQ(ClTestLibrary::m_szVersion, ClTestHandleBase::m_szpVersion);
}

TEST_F(SDKHandleBase, EveryOperationTestsTheName)
{
    char szText[8];
    unsigned long nSize = sizeof szText;
    long nValue = 0;
    double dValue = 0.0;
    enumType_t eType = eTypeOther;
    enumAccess_t eAccess = eAccessNone;
    const struct
    {
        const char* m_szName;
        long m_nCode;
        const char* m_szText;
    } aCases[] = {{nullptr, -44, szInvalidParameter},
                  {"Nothing", -206, szUnknown},
                  {"", -206, szUnknown},
                  {"Sub.Nothing", -206, szUnknown}};
    for (const auto& c : aCases)
    {
        EXPECT_RAISES(m_cRich.GetProperty(c.m_szName, szText, &nSize), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetProperty(c.m_szName, szText, nullptr), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.SetProperty(c.m_szName, "1"), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyLong(c.m_szName, &nValue), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.SetPropertyLong(c.m_szName, 1), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyDouble(c.m_szName, &dValue), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.SetPropertyDouble(c.m_szName, 1.0), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyBlob(c.m_szName, szText, nullptr), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.SetPropertyBlob(c.m_szName, szText, 1), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyType(c.m_szName, &eType), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyType(c.m_szName, nullptr), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyAccess(c.m_szName, &eAccess), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyAccess(c.m_szName, nullptr), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyRangeLong(c.m_szName, nullptr, nullptr), ClExVelmarin, c.m_nCode, c.m_szText);
        EXPECT_RAISES(m_cRich.GetPropertyRangeDouble(c.m_szName, nullptr, nullptr), ClExVelmarin, c.m_nCode,
                      c.m_szText);
    }
    // The one operation without a test of the name itself.
    EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateFirst(nullptr, szText, &nSize), ClExVelmarin, -206, szUnknown);
    EXPECT_RAISES(m_cRich.GetPropertyValueEnumerateFirst("Nothing", szText, &nSize), ClExVelmarin, -206, szUnknown);
}

TEST_F(SDKHandleBase, NamesIgnoreCaseAndGoDownTheTree)
{
    EXPECT_EQ(4, Long("cOuNt"));
    EXPECT_EQ(5, Long("sub.fixedcolour"));
    EXPECT_EQ(5, Long(".Sub.FixedColour"));
    const std::string sLong(255, 'n');
    EXPECT_RAISES(Long(sLong.c_str()), ClException, -101,
                  "Internal error.\nParameter path part was to long max len is 255");
}

// ---- text

TEST_F(SDKHandleBase, TextFitsEveryType)
{
    EXPECT_EQ("5.6", Text("Version"));
    EXPECT_EQ("4", Text("Count"));
    EXPECT_EQ("0.5", Text("Real"));
    EXPECT_EQ("Navy blue", Text("Colour"));
    m_cRich.SetProperty("Ranged", "0x7");
    EXPECT_EQ(7, m_cRich.m_nRanged);
    m_cRich.SetProperty("Real", "1.25");
    EXPECT_EQ(1.25, m_cRich.m_dReal);
    m_cRich.SetProperty("Colour", "red");
    EXPECT_EQ(eRed, m_cRich.m_eColour);
}

TEST_F(SDKHandleBase, TextTestsTheSize)
{
    char acText[4] = {'a', 'b', 'c', 'd'};
    EXPECT_RAISES(m_cRich.GetProperty("Count", acText, nullptr), ClExVelmarin, -24, szNoSize);
    unsigned long nSize = 0;
    EXPECT_RAISES(m_cRich.GetProperty("Version", nullptr, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(4u, nSize);
    EXPECT_RAISES(m_cRich.GetProperty("Version", nullptr, &nSize), ClException, -701,
                  "The pointer is bad or invalid.\nPoint is Null"); // texts do not measure without an error
    nSize = 100;
    m_cRich.GetProperty("Count", nullptr, &nSize);
    EXPECT_EQ(2u, nSize);
}

TEST_F(SDKHandleBase, BufferOfOneByteIsNotWritten)
{
    char acText[2] = {'a', 'b'};
    unsigned long nSize = 1;
    EXPECT_RAISES(m_cRich.GetProperty("Count", acText, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(2u, nSize);
    EXPECT_EQ('a', acText[0]);
    nSize = 1;
    EXPECT_RAISES(m_cRich.GetProperty("Nothing", acText, &nSize), ClExVelmarin, -206, szUnknown);
    EXPECT_EQ('a', acText[0]);
}

TEST_F(SDKHandleBase, BufferOfTwoBytesIsEmptyAfterAFailure)
{
    char acText[3] = {'a', 'b', 'c'};
    unsigned long nSize = 2;
    EXPECT_RAISES(m_cRich.GetProperty("Version", acText, &nSize), ClExVelmarin, -21, szTooSmall);
    EXPECT_EQ(4u, nSize);
    EXPECT_EQ(0, std::memcmp("\0bc", acText, 3));
    acText[0] = 'a';
    nSize = 2;
    EXPECT_RAISES(m_cRich.GetProperty(nullptr, acText, &nSize), ClExVelmarin, -44, szInvalidParameter);
    EXPECT_EQ(0, std::memcmp("\0bc", acText, 3));
    EXPECT_EQ(2u, nSize);
}

TEST_F(SDKHandleBase, TextIsRefusedByReadOnlyPropertiesBeforeItIsRead)
{
    for (const char* szName : {"Version", "Count", "RealFixed", "Sub.FixedColour"})
    {
        EXPECT_RAISES(m_cRich.SetProperty(szName, nullptr), ClExVelmarin, -47, szReadOnly);
    }
    EXPECT_RAISES(m_cRich.SetProperty("Ranged", "ten"), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nFailed to set parameter \"Ranged\" to value \"ten\"");
    EXPECT_RAISES(m_cRich.SetProperty("Ranged", "10"), ClExRange, -35,
                  "One of the parameters is out of range.\nValue out of range for parameter \"Ranged\"");
    EXPECT_EQ(1, m_cRich.m_nRanged);
}

// ---- numbers

TEST_F(SDKHandleBase, LongTakesIntegersAndEnumerationsOnly)
{
    EXPECT_EQ(4, Long("Count"));
    EXPECT_EQ(1, Long("Ranged"));
    EXPECT_EQ(5, Long("Colour"));
    EXPECT_EQ(5, Long("Unnamed"));
    for (const char* szOther : {"Real", "RealFixed", "Version", "Sub", "."})
    {
        long nValue = 3;
        EXPECT_RAISES(m_cRich.GetPropertyLong(szOther, &nValue), ClExVelmarin, -44, szInvalidParameter);
        EXPECT_EQ(3, nValue);
        EXPECT_RAISES(m_cRich.SetPropertyLong(szOther, 1), ClExVelmarin, -44, szInvalidParameter);
    }
}

TEST_F(SDKHandleBase, LongIsWrittenWithinItsRange)
{
    m_cRich.SetPropertyLong("Ranged", 9);
    EXPECT_EQ(9, m_cRich.m_nRanged);
    for (const long nBad : {10L, -3L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
    {
        EXPECT_RAISES(m_cRich.SetPropertyLong("Ranged", nBad), ClExRange, -35,
                      "One of the parameters is out of range.\nValue out of range for parameter \"Ranged\"");
        EXPECT_EQ(9, m_cRich.m_nRanged);
    }
    m_cRich.SetPropertyLong("Colour", 3);
    EXPECT_EQ(eRed, m_cRich.m_eColour);
    EXPECT_RAISES(m_cRich.SetPropertyLong("Colour", 4), ClExRange, -35,
                  "One of the parameters is out of range.\nValue \"4\" out of range for parameter \"Colour\"");
    EXPECT_RAISES(m_cRich.SetPropertyLong("Count", 5), ClExVelmarin, -47, szReadOnly);
    EXPECT_RAISES(m_cRich.SetPropertyLong("Sub.FixedColour", 3), ClExVelmarin, -47, szReadOnly);
    EXPECT_EQ(4, m_cRich.m_nCount);
}

TEST_F(SDKHandleBase, DoubleTakesFloatingPointOnly)
{
    double dValue = 3.0;
    m_cRich.GetPropertyDouble("Real", &dValue);
    EXPECT_EQ(0.5, dValue);
    m_cRich.SetPropertyDouble("Real", 2.25);
    EXPECT_EQ(2.25, m_cRich.m_dReal);
    EXPECT_RAISES(m_cRich.SetPropertyDouble("Real", 2.5), ClExRange, -35,
                  "One of the parameters is out of range.\nValue out of range for parameter \"Real\"");
    EXPECT_EQ(2.25, m_cRich.m_dReal);
    EXPECT_RAISES(m_cRich.SetPropertyDouble("RealFixed", 1.0), ClExVelmarin, -47, szReadOnly);
    for (const char* szOther : {"Count", "Ranged", "Colour", "Version", "Sub"})
    {
        dValue = 3.0;
        EXPECT_RAISES(m_cRich.GetPropertyDouble(szOther, &dValue), ClExVelmarin, -44, szInvalidParameter);
        EXPECT_EQ(3.0, dValue);
        EXPECT_RAISES(m_cRich.SetPropertyDouble(szOther, 1.0), ClExVelmarin, -44, szInvalidParameter);
    }
}
