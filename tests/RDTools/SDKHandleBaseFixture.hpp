#pragma once

// A library and two kinds of handles with properties of each type and access, for the tests of handles.

#include "RDTools/SDKBase.hpp"
#include "RDTools/SDKHandleBase.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <string>
#include <vector>

namespace HandleTests
{
class ClTestLibrary : public TpSDKBase<ClTestLibrary>
{
public:
    void OnInitialize() override {}
    void OnUninitialize() override {}
    static constexpr char m_szVersion[] = "5.6";
    static constexpr char m_szLongVersion[] = "SDK: Test Version: 5.6 Owner";
};

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

    static constexpr char m_szSignature[8] = "RICH";
    static inline int m_nCreated = 0;
    static inline int m_nDestroying = 0;
    static inline int m_nDestroyed = 0;

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
    static constexpr char m_szSignature[8] = "PLAINER";
};

inline const char* const ClTestHandleBase::Signature_t::m_szSignatures[2] = {ClRich::m_szSignature,
                                                                             ClPlain::m_szSignature};

inline constexpr char szInvalidParameter[] = "One(or more) parameter(s) is(are) invalid.";
inline constexpr char szInvalidHandle[] = "The handle parameter is not a valid handle for that function.";
inline constexpr char szNoHandle[] = "The handle parameter is set to NULL.";
inline constexpr char szUnknown[] = "A given parameter is unknown.";
inline constexpr char szReadOnly[] = "The requested parameter is read only.";
inline constexpr char szTooSmall[] = "The size of the finger template is not valid.";
inline constexpr char szNoSize[] = "Pointer to template-size is not valid.";
inline constexpr char szNoPointer[] = "The template-pointer is not valid.";
inline constexpr char szUnsupported[] = "The feature is currently not supported.";
inline constexpr char szNotBegun[] =
    "Function call is not possible in current state.\nThe Enumeration is not initialized.";

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
} // namespace HandleTests
