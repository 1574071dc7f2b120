#include "RDTools/SDKHandleBase.hpp"

#include "RDTools/SDKBase.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace
{
class ClTestLibrary : public TpSDKBase<ClTestLibrary>
{
public:
    void OnInitialize() override {}
    void OnUninitialize() override {}
    static const char m_szVersion[];
    static const char m_szLongVersion[];
};

const char ClTestLibrary::m_szVersion[] = "5.6";
const char ClTestLibrary::m_szLongVersion[] = "SDK: Test Version: 5.6 Owner";

class ClTestHandleBase : public TSDKHandleInterface<ClTestHandleBase, ClTestLibrary>
{
public:
    struct Signature_t
    {
        static const char* const m_szSignatures[2];
    };
};

enum EColour : int
{
    eRed = 3,
    eBlue = 5
};

/// A handle with a property of each type and access.
class ClRich : public TSDKHandleBase<ClRich, ClTestLibrary, ClTestHandleBase>
{
public:
    ~ClRich() override { ++m_nDestroyed; }

    void OnQueryPropertys(ClParameterContainer& cProperties) override
    {
        ++m_nQueried;
        cProperties.AddNumeric("Count", &m_nCount)->m_nFlags = ClParameter::eReadable;
        auto* pRanged = cProperties.AddNumeric("Ranged", &m_nRanged);
        pRanged->m_Lower = -2;
        pRanged->m_Upper = 9;
        pRanged->m_nFlags = ClParameter::eWritable | ClParameter::eReadable | ClParameter::eRefuse;
        auto* pReal = cProperties.AddNumeric("Real", &m_dReal);
        pReal->m_Lower = -0.5;
        pReal->m_Upper = 2.25;
        pReal->m_nFlags = ClParameter::eWritable | ClParameter::eReadable | ClParameter::eRefuse;
        cProperties.AddNumeric("RealFixed", &m_dFixed)->m_nFlags = ClParameter::eReadable;
        auto* pColour = cProperties.AddParam<TpParameterEnumPointer<EColour, ClParameter>>("Colour", &m_eColour);
        pColour->AddValue(eRed, "Red");
        pColour->AddValue(eBlue, "Navy blue");
        auto* pFixedColour = cProperties.AddContainer("Sub")->AddParam<TpParameterEnumPointer<EColour, ClParameter>>(
            "FixedColour", &m_eColour);
        pFixedColour->AddValue(eRed, "Red");
        pFixedColour->m_nFlags = ClParameter::eReadable;
        cProperties.AddParam<TpParameterEnumPointer<EColour, ClParameter>>("Unnamed", &m_eColour);
        if (m_bTwice)
        {
            cProperties.AddNumeric("COUNT", &m_nCount);
        }
    }
    void OnCreateHandle() override { ++m_nCreated; }
    void OnDestroyHandle() override { ++m_nDestroying; }

    static const char m_szSignature[8];
    static int m_nCreated;
    static int m_nDestroying;
    static int m_nDestroyed;

    int m_nCount = 4;
    long m_nRanged = 1;
    double m_dReal = 0.5;
    double m_dFixed = 8.0;
    EColour m_eColour = eBlue;
    int m_nQueried = 0;
    bool m_bTwice = false;
};

/// A handle without properties of its own.
class ClPlain : public TSDKHandleBase<ClPlain, ClTestLibrary, ClTestHandleBase>
{
public:
    static const char m_szSignature[8];
};

const char ClRich::m_szSignature[8] = "RICH";
const char ClPlain::m_szSignature[8] = "PLAINER";
int ClRich::m_nCreated = 0;
int ClRich::m_nDestroying = 0;
int ClRich::m_nDestroyed = 0;
const char* const ClTestHandleBase::Signature_t::m_szSignatures[2] = {ClRich::m_szSignature, ClPlain::m_szSignature};

constexpr char szInvalidParameter[] = "One(or more) parameter(s) is(are) invalid.";
constexpr char szInvalidHandle[] = "The handle parameter is not a valid handle for that function.";
constexpr char szNoHandle[] = "The handle parameter is set to NULL.";
constexpr char szUnknown[] = "A given parameter is unknown.";
constexpr char szReadOnly[] = "The requested parameter is read only.";
constexpr char szTooSmall[] = "The size of the finger template is not valid.";
constexpr char szNoSize[] = "Pointer to template-size is not valid.";
constexpr char szNoPointer[] = "The template-pointer is not valid.";
constexpr char szUnsupported[] = "The feature is currently not supported.";
constexpr char szNotBegun[] = "Function call is not possible in current state.\nThe Enumeration is not initialized.";

class SDKHandleBase : public testing::Test
{
protected:
    SDKHandleBase() { ClTestLibrary::Initialize(nullptr); }
    ~SDKHandleBase() override
    {
        while (ClTestLibrary::Uninitialize() == FPC_SUCCESS)
        {
        }
    }

    std::string Text(const char* szName)
    {
        char szBuffer[64];
        unsigned long nSize = sizeof szBuffer;
        m_cRich.GetProperty(szName, szBuffer, &nSize);
        EXPECT_LE(std::strlen(szBuffer) + 1, nSize); // the size counts the zeros that a fraction then loses
        return szBuffer;
    }

    long Long(const char* szName)
    {
        long nValue = -77;
        m_cRich.GetPropertyLong(szName, &nValue);
        return nValue;
    }

    /// Names that an enumeration gives, one call after the other.
    template <class First, class Next> static std::vector<std::string> Enumerate(First&& first, Next&& next)
    {
        std::vector<std::string> aNames;
        char szName[64];
        unsigned long nSize = sizeof szName;
        for (first(szName, &nSize); nSize != 0 && aNames.size() < 20; nSize = sizeof szName, next(szName, &nSize))
        {
            EXPECT_EQ(std::strlen(szName) + 1, nSize);
            aNames.push_back(szName);
        }
        EXPECT_STREQ("", szName);
        return aNames;
    }

    ClRich m_cRich;
};
} // namespace

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

// ---- descriptions

TEST_F(SDKHandleBase, NoPropertyIsABlockOfBytes)
{
    char acBytes[4];
    unsigned long nSize = sizeof acBytes;
    EXPECT_RAISES(m_cRich.GetPropertyBlob("Count", acBytes, nullptr), ClExVelmarin, -24, szNoSize);
    EXPECT_RAISES(m_cRich.GetPropertyBlob("Count", acBytes, &nSize), ClExVelmarin, -44, szInvalidParameter);
    EXPECT_RAISES(m_cRich.SetPropertyBlob("Ranged", acBytes, 4), ClExVelmarin, -44, szInvalidParameter);
}

TEST_F(SDKHandleBase, TypeTellsIntegersFromFloatsFromTheRest)
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

TEST_F(SDKHandleBase, AccessIsTheTwoLowestBits)
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

TEST_F(SDKHandleBase, RangesAreStrictAboutTheType)
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

TEST_F(SDKHandleBase, EnumeratesAllPropertiesByPath)
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

TEST_F(SDKHandleBase, NextBeforeFirstNeedsATree)
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

TEST_F(SDKHandleBase, EnumerationStaysWhereTheSizeWasTooSmall)
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

TEST_F(SDKHandleBase, EndOfAnEnumerationWritesOnlyWhereThereIsRoom)
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

TEST_F(SDKHandleBase, EnumeratesTheValuesOfAnEnumeration)
{
    const std::vector<std::string> aExpected = {"Red", "Navy blue"};
    EXPECT_EQ(aExpected,
              Enumerate([&](char* sz, unsigned long* pn) { m_cRich.GetPropertyValueEnumerateFirst("Colour", sz, pn); },
                        [&](char* sz, unsigned long* pn) { m_cRich.GetPropertyValueEnumerateNext(sz, pn); }));
    EXPECT_EQ(2u, m_cRich.m_nEnumerateIndex);
}

TEST_F(SDKHandleBase, ValuesAreEnumeratedOfEnumerationsWithEntriesOnly)
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

TEST_F(SDKHandleBase, AHandleIsNoList)
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
