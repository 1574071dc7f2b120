#pragma once

// What an operator tells of its parameters, written down as facts, and the checks that hold an operator to them.

#include "RDTools/Exception.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using Names_t = std::vector<std::pair<std::string, long>>; ///< of an enumeration, in the order of its table

/// One member of an operator: a published parameter, or a setting beside them that nothing but its owner changes.
struct StMemberFact
{
    enum EKind
    {
        eNumber,
        eChoice,
        eImage,
        eKeptImage, ///< published, but SetParametersToDefault leaves it alone
        eSetting    ///< not published
    };

    EKind eKind;
    std::string szName;
    int nFlags;
    std::string szDefault; ///< as text
    Names_t aNames;
    void* pMember;
    std::size_t nBytes;
    const std::type_info* pType;
    std::function<void(int)> fnDisturb; ///< sets a value that is not the default; of member i a number is 11 + i
    double dLower = 0.0;                ///< equal bounds: no range
    double dUpper = 0.0;

    bool IsPublished() const { return eKind != eSetting; }
    bool IsImage() const { return eKind == eImage || eKind == eKeptImage; }
    std::string Bytes() const { return std::string(static_cast<const char*>(pMember), nBytes); }
};

using Facts_t = std::vector<StMemberFact>;

/// Images that only serve to be pointed at.
inline ClImage* AnyImage(int nIndex)
{
    static ClImage acImages[32];
    return &acImages[nIndex];
}

template <class T> StMemberFact Number(const char* szName, T* pMember, const char* szDefault, int nFlags = 3)
{
    return {
        StMemberFact::eNumber, szName, nFlags, szDefault, {}, pMember, sizeof(T), &typeid(T), [pMember](int nIndex) {
            *pMember = static_cast<T>(11 + nIndex);
        }};
}

inline StMemberFact WithRange(StMemberFact cFact, double dLower, double dUpper)
{
    cFact.dLower = dLower;
    cFact.dUpper = dUpper;
    return cFact;
}

template <class T>
StMemberFact Choice(const char* szName, T* pMember, const char* szDefault, const Names_t& aNames, int nFlags = 3)
{
    const long nOther = aNames.back().first == szDefault ? aNames.front().second : aNames.back().second;
    return {StMemberFact::eChoice, szName, nFlags, szDefault, aNames, pMember, sizeof(T), &typeid(T), [=](int) {
                *pMember = static_cast<T>(nOther);
            }};
}

inline StMemberFact Image(const char* szName, ClImage** ppMember, int nFlags = 3)
{
    return {StMemberFact::eImage,
            szName,
            nFlags,
            "NULL",
            {},
            ppMember,
            sizeof *ppMember,
            &typeid(ClImage*),
            [ppMember](int nIndex) { *ppMember = AnyImage(nIndex); }};
}

inline StMemberFact KeptImage(const char* szName, ClImage** ppMember, int nFlags = 3)
{
    StMemberFact cFact = Image(szName, ppMember, nFlags);
    cFact.eKind = StMemberFact::eKeptImage;
    return cFact;
}

template <class T> StMemberFact Setting(T* pMember, T other)
{
    return {StMemberFact::eSetting, "", 0, "", {}, pMember, sizeof(T), &typeid(T), [=](int) { *pMember = other; }};
}

/// One operator.
struct StOperatorFacts
{
    std::string szName;
    bool bCanApply;            ///< answer of a fresh object
    std::string szSettings;    ///< settings text of a fresh object
    std::string szDisturbed;   ///< the same when every member is disturbed
    std::string szContainer;   ///< name that the parameters' container gets, empty: none
    std::string szDescription; ///< of the last parameter, empty: none
    std::function<std::unique_ptr<ClProcessorBase>()> fnMake;
    std::function<Facts_t(ClProcessorBase&)> fnFacts;

    StOperatorFacts SaysAboutItself(const char* szFresh, const char* szOther) const
    {
        StOperatorFacts cFacts = *this;
        cFacts.szSettings = szFresh;
        cFacts.szDisturbed = szOther;
        return cFacts;
    }
};

/// The facts of class Operator; fnFacts lists the members of one.
template <class Operator, class Facts> StOperatorFacts FactsOf(const char* szName, bool bCanApply, Facts fnFacts)
{
    return {szName,
            bCanApply,
            "",
            "",
            "",
            "",
            [] { return std::make_unique<Operator>(); },
            [fnFacts](ClProcessorBase& c) { return fnFacts(dynamic_cast<Operator&>(c)); }};
}

inline void PrintTo(const StOperatorFacts& cFacts, std::ostream* pOut)
{
    *pOut << cFacts.szName;
}

/// An object whose members are all at other values than their defaults.
struct StDisturbed
{
    explicit StDisturbed(const StOperatorFacts& cFacts)
        : pProcessor(cFacts.fnMake()), aFacts(cFacts.fnFacts(*pProcessor))
    {
        for (std::size_t i = 0; i < aFacts.size(); ++i)
        {
            aFacts[i].fnDisturb(static_cast<int>(i));
            aBytes.push_back(aFacts[i].Bytes());
        }
    }

    std::unique_ptr<ClProcessorBase> pProcessor;
    Facts_t aFacts;
    std::vector<std::string> aBytes; ///< of the members, as they were disturbed
};

inline Facts_t Published(const Facts_t& aFacts)
{
    Facts_t aPublished;
    for (const StMemberFact& cFact : aFacts)
    {
        if (cFact.IsPublished())
        {
            aPublished.push_back(cFact);
        }
    }
    return aPublished;
}

inline void CheckNames(ClParameter& cParameter, const StMemberFact& cFact)
{
    ClParameterEnumInterface* pEnum = cParameter.GetEnumInterface();
    ASSERT_NE(nullptr, pEnum);
    ASSERT_EQ(cFact.aNames.size(), pEnum->GetValueNameCount());
    const std::string szBefore = cFact.Bytes();
    for (std::size_t i = 0; i < cFact.aNames.size(); ++i)
    {
        char szText[64];
        pEnum->GetValueName(i, szText, sizeof szText);
        EXPECT_EQ(cFact.aNames[i].first, szText);
        cParameter.SetValue(szText);
        EXPECT_EQ(cFact.aNames[i].second, pEnum->GetValue()) << szText;
    }
    std::memcpy(cFact.pMember, szBefore.data(), szBefore.size());
}

inline void CheckParameter(ClParameter& cParameter, const StMemberFact& cFact)
{
    const bool bNumber = cFact.eKind == StMemberFact::eNumber;
    EXPECT_STREQ(cFact.szName.c_str(), cParameter.GetName());
    EXPECT_EQ(cFact.pMember, cParameter.GetParameterPtr());
    ASSERT_NE(nullptr, cParameter.m_pTypeInfo);
    EXPECT_TRUE(*cFact.pType == *cParameter.m_pTypeInfo) << cParameter.m_pTypeInfo->name();
    EXPECT_EQ(cFact.nFlags, cParameter.m_nFlags);
    EXPECT_EQ(bNumber, cParameter.IsNumeric());
    EXPECT_EQ(cFact.IsImage(), cParameter.IsPointer());
    EXPECT_EQ(cFact.eKind == StMemberFact::eChoice, cParameter.IsEnum());
    EXPECT_FALSE(cParameter.IsString());
    EXPECT_FALSE(cParameter.IsContainer());
    if (bNumber)
    {
        ASSERT_NE(nullptr, cParameter.GetNumericInterface());
        EXPECT_EQ(cFact.dLower, cParameter.GetNumericInterface()->GetLowerBoundary());
        EXPECT_EQ(cFact.dUpper, cParameter.GetNumericInterface()->GetUpperBoundary());
    }
    else
    {
        CheckNames(cParameter, cFact);
    }
}

/// Names, order, kinds, types, addresses, access marks, ranges, tables of names and defaults of a fresh object.
inline void CheckPublishing(const StOperatorFacts& cOperator)
{
    const std::unique_ptr<ClProcessorBase> pProcessor = cOperator.fnMake();
    const Facts_t aFacts = Published(cOperator.fnFacts(*pProcessor));
    EXPECT_EQ(cOperator.szName, pProcessor->Name());
    ClParameterContainer cTree;
    pProcessor->QueryParameters(cTree);
    EXPECT_STREQ(cOperator.szContainer.empty() ? nullptr : cOperator.szContainer.c_str(), cTree.GetName());
    ASSERT_EQ(aFacts.size(), cTree.m_aChildren.Entries());
    for (std::size_t i = 0; i < aFacts.size(); ++i)
    {
        SCOPED_TRACE(aFacts[i].szName);
        ClParameter& cParameter = *cTree.m_aChildren[i];
        CheckParameter(cParameter, aFacts[i]);
        EXPECT_EQ(aFacts[i].szDefault, cParameter.GetDefaultValue());
        EXPECT_EQ(aFacts[i].szDefault, cParameter.GetValue());
        EXPECT_TRUE(cParameter.IsDefault());
        const bool bDescribed = i + 1 == aFacts.size() && !cOperator.szDescription.empty();
        EXPECT_STREQ(bDescribed ? cOperator.szDescription.c_str() : nullptr, cParameter.GetDescription());
    }
}

/// Asking for the parameters tells values and defaults apart, and changes no member.
inline void CheckAskingChangesNothing(const StOperatorFacts& cOperator)
{
    const StDisturbed cDisturbed(cOperator);
    ClParameterContainer cTree;
    cDisturbed.pProcessor->QueryParameters(cTree);
    unsigned long nChild = 0;
    for (std::size_t i = 0; i < cDisturbed.aFacts.size(); ++i)
    {
        const StMemberFact& cFact = cDisturbed.aFacts[i];
        SCOPED_TRACE(cFact.szName);
        EXPECT_EQ(cDisturbed.aBytes[i], cFact.Bytes());
        if (cFact.IsPublished())
        {
            ASSERT_LT(nChild, cTree.m_aChildren.Entries());
            ClParameter& cParameter = *cTree.m_aChildren[nChild++];
            const bool bKept = cFact.eKind == StMemberFact::eKeptImage;
            EXPECT_EQ(bKept ? cParameter.GetValue() : cFact.szDefault, cParameter.GetDefaultValue());
            EXPECT_EQ(bKept, cParameter.IsDefault());
        }
    }
}

/// What is published goes to its default, whatever is not published stays.
inline void CheckSettingToDefault(const StOperatorFacts& cOperator)
{
    const StDisturbed cDisturbed(cOperator);
    ClParameterContainer cTree;
    cDisturbed.pProcessor->PublishParameters(cTree);
    cDisturbed.pProcessor->SetParametersToDefault();
    unsigned long nChild = 0;
    for (std::size_t i = 0; i < cDisturbed.aFacts.size(); ++i)
    {
        const StMemberFact& cFact = cDisturbed.aFacts[i];
        SCOPED_TRACE(cFact.szName);
        if (cFact.IsPublished() && cFact.eKind != StMemberFact::eKeptImage)
        {
            EXPECT_EQ(cFact.szDefault, cTree.m_aChildren[nChild]->GetValue());
        }
        else
        {
            EXPECT_EQ(cDisturbed.aBytes[i], cFact.Bytes());
        }
        nChild += cFact.IsPublished() ? 1 : 0;
    }
}

/// Create() gives another object of the class with default settings, whatever those of its maker are.
inline void CheckCreation(const StOperatorFacts& cOperator)
{
    const StDisturbed cDisturbed(cOperator);
    const std::unique_ptr<ClProcessorBase> pCreated(cDisturbed.pProcessor->Create());
    const std::unique_ptr<ClProcessorBase> pFresh = cOperator.fnMake();
    ASSERT_NE(nullptr, pCreated);
    const ClProcessorBase& cCreated = *pCreated;
    const ClProcessorBase& cFresh = *pFresh;
    EXPECT_TRUE(typeid(cFresh) == typeid(cCreated));
    EXPECT_EQ(cOperator.szName, pCreated->Name());
    const Facts_t aCreated = cOperator.fnFacts(*pCreated);
    const Facts_t aFresh = cOperator.fnFacts(*pFresh);
    for (std::size_t i = 0; i < aFresh.size(); ++i)
    {
        EXPECT_EQ(aFresh[i].Bytes(), aCreated[i].Bytes()) << i << " " << aFresh[i].szName;
        EXPECT_NE(aFresh[i].Bytes(), cDisturbed.aBytes[i]) << "not disturbed";
    }
}

/// Values go from object to object, pointers and what is not published do not.
inline void CheckCopying(const StOperatorFacts& cOperator)
{
    const StDisturbed cDisturbed(cOperator);
    const std::unique_ptr<ClProcessorBase> pOther = cOperator.fnMake();
    const Facts_t aOther = cOperator.fnFacts(*pOther);
    std::vector<std::string> aBefore;
    for (const StMemberFact& cFact : aOther)
    {
        aBefore.push_back(cFact.Bytes());
    }
    cDisturbed.pProcessor->CopyParametersTo(*pOther);
    for (std::size_t i = 0; i < aOther.size(); ++i)
    {
        const bool bCopied = aOther[i].eKind == StMemberFact::eNumber || aOther[i].eKind == StMemberFact::eChoice;
        EXPECT_EQ(bCopied ? cDisturbed.aBytes[i] : aBefore[i], aOther[i].Bytes()) << aOther[i].szName;
        EXPECT_EQ(cDisturbed.aBytes[i], cDisturbed.aFacts[i].Bytes()) << aOther[i].szName;
    }
}

/// The text fits a buffer of its length and a terminator; one byte less is refused, and so is no room at all.
inline void CheckSettingsText(ClProcessorBase& cProcessor, const std::string& szExpected)
{
    std::vector<char> aText(szExpected.size() + 1, '#');
    cProcessor.ParameterString(aText.data(), aText.size());
    EXPECT_STREQ(szExpected.c_str(), aText.data());
    if (szExpected.empty())
    {
        EXPECT_RAISES(cProcessor.ParameterString(aText.data(), 0), ClException, -101,
                      "Internal error.\nUnexpected zero-length string");
        return;
    }
    const char* szTooLong = "Internal error.\nString-Length exceeded available size";
    EXPECT_RAISES(cProcessor.ParameterString(aText.data(), aText.size() - 1), ClException, -101, szTooLong);
    EXPECT_RAISES(cProcessor.ParameterString(aText.data(), 0), ClException, -101, szTooLong);
}

inline void CheckSettingsTexts(const StOperatorFacts& cOperator)
{
    const std::unique_ptr<ClProcessorBase> pFresh = cOperator.fnMake();
    EXPECT_EQ(cOperator.bCanApply, pFresh->CanApply());
    CheckSettingsText(*pFresh, cOperator.szSettings);
    const StDisturbed cDisturbed(cOperator);
    CheckSettingsText(*cDisturbed.pProcessor, cOperator.szDisturbed);
}

inline void CheckOperator(const StOperatorFacts& cOperator)
{
    CheckPublishing(cOperator);
    CheckAskingChangesNothing(cOperator);
    CheckSettingToDefault(cOperator);
    CheckCreation(cOperator);
    CheckCopying(cOperator);
    CheckSettingsTexts(cOperator);
}
