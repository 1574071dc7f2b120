#include "RDTools/Parameter.hpp"

#include "FailingHeap.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <memory>
#include <string>

namespace
{
using IntParameter_t = TpParameterNumeric<int, ClParameter>;
using ImageParameter_t = TpParameterEnumPointer<ClImage*, ClParameter>;

/// A parameter of its own kind whose accessors, one of them virtual in a derived class, stand between it and its value.
class ClAccessed : public IntParameter_t
{
public:
    ClAccessed()
    {
        m_pObject = this;
        m_pfnSet = static_cast<void (ClParameter::*)(const int&)>(&ClAccessed::Set);
        m_pfnGet = static_cast<int (ClParameter::*)()>(&ClAccessed::Get);
    }
    virtual void Set(const int& nValue) { m_nStored = nValue; }
    int Get()
    {
        ++m_nReads;
        return m_nStored;
    }

    int m_nStored = 0;
    int m_nReads = 0;
};

class ClDoubling : public ClAccessed
{
public:
    void Set(const int& nValue) override { m_nStored = 2 * nValue; }
};

/// The other way round: a plain setter and a getter that a derived class replaces.
class ClCounting : public IntParameter_t
{
public:
    ClCounting()
    {
        m_pObject = this;
        m_pfnSet = static_cast<void (ClParameter::*)(const int&)>(&ClCounting::Set);
        m_pfnGet = static_cast<int (ClParameter::*)()>(&ClCounting::Get);
    }
    void Set(const int& nValue) { m_nStored = nValue; }
    virtual int Get() { return m_nStored; }

    int m_nStored = 0;
};

class ClNegating : public ClCounting
{
public:
    int Get() override { return -m_nStored; }
};

/// The root of the class tree, with nothing added.
class ClBareNode : public ClParameterBase
{
public:
    ClParameterBase* Clone() override { return nullptr; }
    void CopyTo(ClParameterBase*) override {}
    void CopyDefaultFrom(ClParameterBase*) override {}
    void CopyDefaultFromValue(ClParameterBase*) override {}
    void CopyValuesFrom(ClParameterBase*, bool) override {}
    void SetToDefault() override {}
    void SetToDefaultFrom(ClParameterBase*) override {}
};

/// GetPathName into a buffer that is filled with '#' first; the text, or "#" where nothing was written.
std::string PathInto(const ClParameterBase& cParameter, unsigned long nSize, bool& bResult, unsigned long& nNeeded)
{
    char szBuffer[64];
    std::memset(szBuffer, '#', sizeof szBuffer);
    szBuffer[sizeof szBuffer - 1] = '\0';
    nNeeded = nSize;
    bResult = cParameter.GetPathName(szBuffer, nNeeded);
    return szBuffer[0] == '#' ? "#" : szBuffer;
}
} // namespace

TEST(Parameter, StartsAccessibleFromOutsideAndWithoutName)
{
    const IntParameter_t cParameter;
    EXPECT_EQ(3, cParameter.m_nFlags);
    EXPECT_EQ(nullptr, cParameter.GetName());
    EXPECT_EQ(nullptr, cParameter.GetDescription());
    EXPECT_EQ(nullptr, cParameter.m_szCache);
    EXPECT_EQ(nullptr, cParameter.m_pParent);
    EXPECT_EQ('D', cParameter.m_acTag[0]);
    EXPECT_EQ('P', cParameter.m_acTag[1]);
    EXPECT_EQ('I', cParameter.m_acTag[2]);
    EXPECT_TRUE(*cParameter.m_pTypeInfo == typeid(int));
}

TEST(Parameter, FlagsHaveTheirBits)
{
    EXPECT_EQ(1, ClParameter::eWritable);
    EXPECT_EQ(2, ClParameter::eReadable);
    EXPECT_EQ(8, ClParameter::eContainer);
    EXPECT_EQ(16, ClParameter::eAddedMark);
    EXPECT_EQ(32, ClParameter::eClamp);
    EXPECT_EQ(64, ClParameter::eRefuse);
}

TEST(Parameter, KeepsCopiesOfNameAndDescription)
{
    IntParameter_t cParameter;
    char szText[] = "Width";
    cParameter.SetName(szText);
    cParameter.SetDescription(szText);
    szText[0] = 'X';
    EXPECT_STREQ("Width", cParameter.GetName());
    EXPECT_STREQ("Width", cParameter.GetDescription());
    cParameter.SetName(cParameter.GetName()); // its own text, and a part of it
    cParameter.SetDescription(cParameter.GetDescription() + 2);
    EXPECT_STREQ("Width", cParameter.GetName());
    EXPECT_STREQ("dth", cParameter.GetDescription());
    cParameter.SetName(nullptr);
    cParameter.SetDescription(nullptr);
    EXPECT_EQ(nullptr, cParameter.GetName());
    EXPECT_EQ(nullptr, cParameter.GetDescription());
}

TEST(Parameter, SetStringTakesTheTextThatItReplaces)
{
    char* szText = nullptr;
    ClParameterBase::SetString(&szText, "Threshold");
    ClParameterBase::SetString(&szText, szText + 6);
    EXPECT_STREQ("old", szText);
    ClParameterBase::SetString(&szText, nullptr);
    EXPECT_EQ(nullptr, szText);
}

TEST(Parameter, ReadsAndWritesTheBoundVariable)
{
    int nValue = 5;
    IntParameter_t cParameter;
    cParameter.Bind(&nValue);
    EXPECT_EQ(&nValue, cParameter.GetParameterPtr());
    EXPECT_EQ(&nValue, cParameter.m_pValue);
    EXPECT_EQ(&cParameter.m_pValue, cParameter.m_ppValue);
    EXPECT_EQ(5, cParameter.m_Default);
    EXPECT_TRUE(cParameter.IsDefault());
    nValue = 6;
    EXPECT_EQ(6, cParameter.ReadValue());
    EXPECT_FALSE(cParameter.IsDefault());
    cParameter.WriteValue(-7);
    EXPECT_EQ(-7, nValue);
    cParameter.SetToDefault();
    EXPECT_EQ(5, nValue);
}

TEST(Parameter, AccessorsOfAnObjectComeBeforeTheVariable)
{
    int nVariable = 11;
    ClDoubling cParameter;
    cParameter.m_pValue = &nVariable;
    cParameter.m_ppValue = &cParameter.m_pValue;
    cParameter.WriteValue(21); // through the virtual setter
    EXPECT_EQ(42, cParameter.m_nStored);
    EXPECT_EQ(42, cParameter.ReadValue());
    EXPECT_EQ(1, cParameter.m_nReads);
    EXPECT_EQ(11, nVariable);
}

TEST(Parameter, EitherAccessorMayBeVirtual)
{
    ClNegating cParameter;
    cParameter.WriteValue(21);
    EXPECT_EQ(21, cParameter.m_nStored);
    EXPECT_EQ(-21, cParameter.ReadValue());
    EXPECT_EQ(nullptr, cParameter.GetParameterPtr()) << "no variable is bound";
}

TEST(Parameter, CopyValuesGoThroughTheAccessorsOfBothSides)
{
    ClAccessed cFrom;
    ClDoubling cTo;
    cFrom.m_nStored = 4;
    cTo.CopyValuesFrom(&cFrom, true);
    EXPECT_EQ(8, cTo.m_nStored);
}

TEST(Parameter, SwapDefaultAndValueTwiceChangesNothing)
{
    int nValue = 5;
    IntParameter_t cParameter;
    cParameter.Bind(&nValue);
    nValue = 9;
    cParameter.SwapDefaultAndValue();
    EXPECT_EQ(5, nValue);
    EXPECT_EQ(9, cParameter.m_Default);
    cParameter.SwapDefaultAndValue();
    EXPECT_EQ(9, nValue);
    EXPECT_EQ(5, cParameter.m_Default);
}

TEST(Parameter, TakesDefaultsAndValuesOfAnother)
{
    int nValue = 1;
    int nOther = 10;
    IntParameter_t cParameter;
    IntParameter_t cOther;
    cParameter.Bind(&nValue);
    cOther.Bind(&nOther);
    nOther = 20; // its default stays 10

    cParameter.CopyDefaultFrom(&cOther);
    EXPECT_EQ(10, cParameter.m_Default);
    cParameter.CopyDefaultFromValue(&cOther);
    EXPECT_EQ(20, cParameter.m_Default);
    EXPECT_EQ(1, nValue);
    cParameter.CopyValuesFrom(&cOther, false);
    EXPECT_EQ(20, nValue);
    cParameter.SetToDefaultFrom(&cOther);
    EXPECT_EQ(10, nValue);
    EXPECT_EQ(20, nOther);
}

TEST(Parameter, CopyValuesLeavesImagePointersAloneUnlessAsked)
{
    ClImage cOne;
    ClImage cTwo;
    ClImage* pValue = &cOne;
    ClImage* pOther = &cTwo;
    ClParameterContainer cContainer;
    ImageParameter_t* pParameter = cContainer.AddPointer("One", &pValue);
    ImageParameter_t* pFrom = cContainer.AddPointer("Two", &pOther);
    ASSERT_TRUE(pParameter->IsPointer());
    pParameter->CopyValuesFrom(pFrom, false);
    EXPECT_EQ(&cOne, pValue);
    pParameter->CopyValuesFrom(pFrom, true);
    EXPECT_EQ(&cTwo, pValue);
}

TEST(Parameter, CloneWritesToTheSameVariable)
{
    int nValue = 5;
    IntParameter_t cParameter;
    cParameter.SetName("Width");
    cParameter.SetDescription("in pixels");
    cParameter.m_nFlags = 66;
    cParameter.Bind(&nValue);
    nValue = 6;
    const std::unique_ptr<ClParameterBase> pClone(cParameter.Clone());
    auto* pTyped = dynamic_cast<IntParameter_t*>(pClone.get());
    ASSERT_NE(nullptr, pTyped);
    EXPECT_TRUE(typeid(*pClone) == typeid(IntParameter_t));
    EXPECT_STREQ("Width", pTyped->GetName());
    EXPECT_NE(cParameter.GetName(), pTyped->GetName());
    EXPECT_STREQ("in pixels", pTyped->GetDescription());
    EXPECT_EQ(66, pTyped->m_nFlags);
    EXPECT_EQ(cParameter.m_pTypeInfo, pTyped->m_pTypeInfo);
    EXPECT_EQ(5, pTyped->m_Default);
    EXPECT_EQ(&pTyped->m_pValue, pTyped->m_ppValue); // its own link, not the source's
    pTyped->WriteValue(8);
    EXPECT_EQ(8, nValue);
}

TEST(Parameter, CloneKeepsALinkThatLiesElsewhere)
{
    int nFirst = 1;
    int nSecond = 2;
    int* pLink = &nFirst;
    IntParameter_t cParameter;
    cParameter.m_ppValue = &pLink;
    const std::unique_ptr<ClParameterBase> pClone(cParameter.Clone());
    auto* pTyped = dynamic_cast<IntParameter_t*>(pClone.get());
    ASSERT_NE(nullptr, pTyped);
    EXPECT_EQ(&pLink, pTyped->m_ppValue);
    pLink = &nSecond;
    pTyped->WriteValue(7);
    EXPECT_EQ(1, nFirst);
    EXPECT_EQ(7, nSecond);
}

TEST(Parameter, CloneCopiesTheAccessors)
{
    ClAccessed cParameter;
    const std::unique_ptr<ClParameterBase> pClone(cParameter.Clone());
    dynamic_cast<IntParameter_t&>(*pClone).WriteValue(3);
    EXPECT_EQ(3, cParameter.m_nStored);
}

TEST(Parameter, CloneWithoutMemoryIsNotMadeByHalves)
{
    int nValue = 5;
    IntParameter_t cParameter;
    cParameter.SetName("Threshold");
    cParameter.SetDescription("Grey value from which a pixel is white");
    cParameter.Bind(&nValue);
    // the object, its name, its description
    EXPECT_LE(3, ExpectBadAllocAtEveryAllocation([&] { delete cParameter.Clone(); }));
    EXPECT_STREQ("Threshold", cParameter.GetName());
}

TEST(Parameter, CloneIsOfTheSameClassAtEveryLevel)
{
    int nValue = 0;
    TpParameterBase<int, ClParameter> cBase;
    TpParameter<int, ClParameter> cPlain;
    cBase.Bind(&nValue);
    cPlain.Bind(&nValue);
    const std::unique_ptr<ClParameterBase> pBase(cBase.Clone());
    const std::unique_ptr<ClParameterBase> pPlain(cPlain.Clone());
    EXPECT_TRUE(typeid(*pBase) == typeid(cBase));
    EXPECT_TRUE(typeid(*pPlain) == typeid(cPlain));
}

TEST(Parameter, TextOfAnUntypedValueIsRefused)
{
    int nValue = 3;
    TpParameter<int, ClParameter> cParameter;
    cParameter.Bind(&nValue);
    char szBuffer[8];
    unsigned long nSize = sizeof szBuffer;
    EXPECT_RAISES(cParameter.SetValue("1"), ClException, FPC_ERROR_INTERNAL, "Internal error.\nAbstract function");
    EXPECT_RAISES(cParameter.GetValue(szBuffer, nSize), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nAbstract function");
    EXPECT_RAISES(cParameter.GetDefaultValue(szBuffer, nSize), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nAbstract function");
    EXPECT_EQ(3, nValue);
    EXPECT_EQ(3, *static_cast<int*>(cParameter.GetParameterPtr()));
}

TEST(Parameter, AnswersWhatItIs)
{
    IntParameter_t cNumber;
    ImageParameter_t cImage;
    TpParameterString<char*, ClParameter, 0> cText;
    ClParameterContainer cContainer;
    ClBareNode cBare;

    EXPECT_TRUE(cNumber.IsParameter());
    EXPECT_TRUE(cNumber.IsNumeric());
    EXPECT_FALSE(cNumber.IsEnum() || cNumber.IsPointer() || cNumber.IsString() || cNumber.IsContainer());
    EXPECT_FALSE(cImage.IsNumeric() || cImage.IsEnum() || cImage.IsPointer() || cImage.IsString());
    EXPECT_TRUE(cText.IsString());
    EXPECT_FALSE(cText.IsNumeric() || cText.IsEnum() || cText.IsPointer());
    EXPECT_TRUE(cContainer.IsContainer());
    EXPECT_TRUE(cContainer.IsParameter());
    EXPECT_FALSE(cBare.IsParameter() || cBare.IsNumeric() || cBare.IsEnum() || cBare.IsPointer() || cBare.IsString());

    EXPECT_EQ(&cNumber, cNumber.GetParameterInterface());
    EXPECT_EQ(static_cast<ClParameterNumericInterface*>(&cNumber), cNumber.GetNumericInterface());
    EXPECT_EQ(nullptr, cNumber.GetEnumInterface());
    EXPECT_EQ(nullptr, cNumber.GetContainerInterface());
    EXPECT_EQ(nullptr, cNumber.GetBlobnterface());
    EXPECT_EQ(static_cast<ClParameterEnumInterface*>(&cImage), cImage.GetEnumInterface());
    EXPECT_EQ(nullptr, cImage.GetNumericInterface());
    EXPECT_EQ(&cContainer, cContainer.GetContainerInterface());
    EXPECT_EQ(nullptr, cContainer.GetNumericInterface());
    EXPECT_EQ(nullptr, cBare.GetParameterInterface());
    EXPECT_EQ(nullptr, cBare.GetContainerInterface());
    EXPECT_EQ(nullptr, cBare.GetNumericInterface());
    EXPECT_EQ(nullptr, cBare.GetEnumInterface());
    EXPECT_EQ(nullptr, cBare.GetBlobnterface());
}

TEST(Parameter, APlainParameterIsNotMovedBySettingItsContainer)
{
    ClParameterContainer cContainer;
    IntParameter_t cNumber;
    cNumber.SetContainer(&cContainer);
    EXPECT_EQ(nullptr, cNumber.m_pParent);
    EXPECT_EQ(0u, cContainer.m_aChildren.Entries());
}

TEST(Parameter, TheBareNodeHasNoTexts)
{
    ClBareNode cBare;
    cBare.SetName("X");
    cBare.SetDescription("X");
    cBare.SwapDefaultAndValue();
    EXPECT_EQ(nullptr, cBare.GetName());
    EXPECT_EQ(nullptr, cBare.GetDescription());
}

TEST(Parameter, RootIsTheTopOfTheTree)
{
    int nValue = 0;
    ClParameterContainer cRoot;
    ClParameterContainer* pInner = cRoot.AddContainer("A")->AddContainer("B");
    EXPECT_EQ(&cRoot, pInner->AddNumeric("X", &nValue)->GetRoot());
    EXPECT_EQ(&cRoot, pInner->GetRoot());
    EXPECT_EQ(&cRoot, cRoot.GetRoot());
    IntParameter_t cLoose; // no container at its top
    EXPECT_EQ(nullptr, cLoose.GetRoot());
}

TEST(Parameter, PathNameJoinsTheNamesFromTheRootDown)
{
    int nValue = 0;
    ClParameterContainer cRoot;
    ClParameter* pX = cRoot.AddContainer("B")->AddNumeric("X", &nValue);
    bool bResult = false;
    unsigned long nNeeded = 0;

    EXPECT_EQ("B.X", PathInto(*pX, 64, bResult, nNeeded));
    EXPECT_TRUE(bResult);
    EXPECT_EQ(4u, nNeeded);
    EXPECT_EQ("B.X", PathInto(*pX, 4, bResult, nNeeded));
    EXPECT_TRUE(bResult);
    EXPECT_EQ("#", PathInto(*pX, 3, bResult, nNeeded));
    EXPECT_FALSE(bResult);
    EXPECT_EQ("#", PathInto(*pX, 2, bResult, nNeeded));
    EXPECT_FALSE(bResult);
    EXPECT_EQ(4u, nNeeded);

    cRoot.SetName("Root");
    EXPECT_EQ("Root.B.X", PathInto(*pX, 64, bResult, nNeeded));
    EXPECT_EQ(9u, nNeeded);
    EXPECT_EQ("Root.B.X", pX->GetPathName());
}

TEST(Parameter, PathNameMeasuresWithoutABuffer)
{
    ClParameterContainer cRoot;
    ClParameterContainer* pInner = cRoot.AddContainer("Inner");
    unsigned long nSize = 6;
    EXPECT_TRUE(pInner->GetPathName(nullptr, nSize));
    EXPECT_EQ(6u, nSize);
    nSize = 5;
    EXPECT_FALSE(pInner->GetPathName(nullptr, nSize));
    EXPECT_EQ(6u, nSize);
}

TEST(Parameter, PathNameOfNodesWithoutOrWithEmptyNames)
{
    int nValue = 0;
    ClParameterContainer cRoot;
    EXPECT_EQ("", cRoot.GetPathName());
    unsigned long nSize = 1;
    char cEnd = '#';
    EXPECT_TRUE(cRoot.GetPathName(&cEnd, nSize));
    EXPECT_EQ('\0', cEnd);
    EXPECT_EQ(1u, nSize);

    ClParameterContainer* pUnnamed = cRoot.AddContainer("A");
    ClParameter* pX = pUnnamed->AddContainer("B")->AddNumeric("X", &nValue);
    pUnnamed->SetName(nullptr);
    EXPECT_EQ("B.X", pX->GetPathName());
    pUnnamed->SetName("");
    EXPECT_EQ(".B.X", pX->GetPathName());
    pX->SetName("");
    EXPECT_EQ(".B.", pX->GetPathName());
    pX->SetName(nullptr);
    EXPECT_EQ(".B", pX->GetPathName());
}

TEST(Parameter, PathNamesLongerThanTheFirstBufferAreWhole)
{
    const std::string sLong(300, 'n');
    for (const int nLength : {254, 255, 256, 300})
    {
        ClParameterContainer cRoot(sLong.substr(0, static_cast<std::size_t>(nLength)).c_str());
        EXPECT_EQ(cRoot.GetName(), cRoot.GetPathName());
    }
    ClParameterContainer cRoot(sLong.c_str());
    EXPECT_EQ(sLong + "." + sLong, cRoot.AddContainer(sLong.c_str())->GetPathName());
}

TEST(Parameter, ValueTextsLongerThanTheFirstBufferAreWhole)
{
    std::string sBuffer(400, '\0');
    std::string sText(300, 'v');
    char* szBuffer = sBuffer.data();
    TpParameterString<char*, ClParameter, 0> cText;
    cText.Bind(&szBuffer);
    cText.m_nCapacity = sBuffer.size();
    cText.SetValue(sText.c_str());
    EXPECT_EQ(sText, static_cast<ClParameter&>(cText).GetValue());
    EXPECT_EQ(sText, static_cast<ClParameter&>(cText).GetDefaultValue());
}

TEST(Parameter, GiveTextFollowsTheTextConvention)
{
    char szBuffer[4] = {'#', '#', '#', '#'};
    unsigned long nSize = 3;
    EXPECT_FALSE(GiveText("abc", szBuffer, nSize));
    EXPECT_EQ(4u, nSize);
    EXPECT_EQ('#', szBuffer[0]);
    EXPECT_TRUE(GiveText("abc", szBuffer, nSize));
    EXPECT_STREQ("abc", szBuffer);
    nSize = 9;
    EXPECT_TRUE(GiveText("abc", nullptr, nSize));
    EXPECT_EQ(4u, nSize);
    nSize = 3;
    EXPECT_FALSE(GiveText("abc", nullptr, nSize));
    EXPECT_EQ(4u, nSize);
}
