#include "RDTools/ParameterContainer.hpp"

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <memory>
#include <string>
#include <vector>

namespace
{
constexpr char szDuplicate[] = "The given parameter is a duplicate of a previously given parameter.";
constexpr char szNoContainer[] = "The pointer is bad or invalid.\npCast is not set";
constexpr char szTooLong[] = "Internal error.\nParameter path part was to long max len is 255";

/// Root, unnamed: A, Sub { B, Empty {}, Deep { C } }, Empty {}, D, all bound to variables of their own.
class ParameterContainer : public testing::Test
{
protected:
    ParameterContainer()
    {
        m_pA = m_cRoot.AddNumeric("A", &m_nA);
        m_pSub = m_cRoot.AddContainer("Sub");
        m_pB = m_pSub->AddNumeric("B", &m_dB);
        m_pSub->AddContainer("Empty");
        m_pDeep = m_pSub->AddContainer("Deep");
        m_pC = m_pDeep->AddNumeric("C", &m_nC);
        m_cRoot.AddContainer("Empty");
        m_pD = m_cRoot.AddNumeric("D", &m_nD);
    }

    int m_nA = 1;
    double m_dB = 2.0;
    long m_nC = 3;
    unsigned char m_nD = 4;
    ClParameterContainer m_cRoot;
    ClParameterContainer* m_pSub;
    ClParameterContainer* m_pDeep;
    ClParameter* m_pA;
    ClParameter* m_pB;
    ClParameter* m_pC;
    ClParameter* m_pD;
};

std::string Long(std::size_t nLength)
{
    return std::string(nLength, 'n');
}

/// Writes its number into a list when it is deleted.
class ClMourned : public TpParameterNumeric<int, ClParameter>
{
public:
    ClMourned(std::vector<int>& aDeleted, int nNumber) : m_aDeleted(aDeleted), m_nNumber(nNumber) {}
    ~ClMourned() override { m_aDeleted.push_back(m_nNumber); }

    std::vector<int>& m_aDeleted;
    int m_nNumber;
};
} // namespace

TEST_F(ParameterContainer, IsAContainerOfItsKind)
{
    EXPECT_EQ(8, m_cRoot.m_nFlags);
    EXPECT_EQ(8, m_pSub->m_nFlags);
    EXPECT_TRUE(*m_cRoot.m_pTypeInfo == typeid(ClParameterContainer));
    EXPECT_EQ(nullptr, m_cRoot.GetName());
    EXPECT_STREQ("Root", ClParameterContainer("Root").GetName());
    EXPECT_EQ(8, ClParameterContainer("Root").m_nFlags);
    EXPECT_TRUE(m_cRoot.IsContainer());
    EXPECT_EQ(&m_cRoot, m_cRoot.GetParameterPtr());
    EXPECT_EQ(&m_cRoot, m_cRoot.GetParameterInterface());
    EXPECT_EQ(&m_cRoot, m_pSub->m_pParent);
    EXPECT_EQ(m_pDeep, m_pC->m_pParent);
}

TEST_F(ParameterContainer, ItsOwnValueIsAnEmptyText)
{
    char szBuffer[4] = "#";
    unsigned long nSize = 0;
    m_cRoot.SetValue("5");
    EXPECT_EQ(1, m_nA);
    EXPECT_FALSE(m_cRoot.GetValue(szBuffer, nSize));
    EXPECT_EQ(1u, nSize);
    EXPECT_STREQ("#", szBuffer);
    nSize = sizeof szBuffer;
    EXPECT_TRUE(m_cRoot.GetValue(szBuffer, nSize));
    EXPECT_EQ(1u, nSize);
    EXPECT_STREQ("", szBuffer);
    szBuffer[0] = '#';
    EXPECT_TRUE(m_cRoot.GetDefaultValue(szBuffer, nSize));
    EXPECT_EQ(1u, nSize);
    EXPECT_STREQ("", szBuffer);
}

TEST_F(ParameterContainer, AddingBindsToTheVariable)
{
    EXPECT_EQ("1", m_pA->GetDefaultValue());
    m_pA->SetValue("17");
    EXPECT_EQ(17, m_nA);
    m_pB->SetValue("0.5");
    EXPECT_EQ(0.5, m_dB);
    m_pC->SetValue("-5");
    EXPECT_EQ(-5, m_nC);
    m_pD->SetValue("255");
    EXPECT_EQ(255, m_nD);
    EXPECT_EQ(3, m_pA->m_nFlags);
}

TEST_F(ParameterContainer, AddedPointersAreMarkedAsPointers)
{
    ClImage cImage;
    ClImage* pImage = nullptr;
    auto* pParameter = m_cRoot.AddPointer("pImage", &pImage);
    EXPECT_TRUE(pParameter->IsPointer());
    pParameter->WriteValue(&cImage);
    EXPECT_EQ(&cImage, pImage);
    long nMode = 2;
    auto* pMode = m_cRoot.AddParam<TpParameterEnumPointer<long, ClParameter>>("Mode", &nMode);
    EXPECT_FALSE(pMode->IsPointer());
    EXPECT_EQ(2, pMode->m_Default);
}

TEST_F(ParameterContainer, AddingAParameterNamesItAndClearsItsMark)
{
    auto* pParameter = new TpParameterNumeric<int, ClParameter>;
    pParameter->Bind(&m_nA);
    pParameter->SetName("Old");
    pParameter->m_nFlags = 16 | 2;
    m_cRoot.AddParameter("New", pParameter);
    EXPECT_STREQ("New", pParameter->GetName());
    EXPECT_EQ(2, pParameter->m_nFlags);
    EXPECT_EQ(&m_cRoot, pParameter->m_pParent);
    EXPECT_EQ(pParameter, m_cRoot.FindLocal("New"));
}

TEST_F(ParameterContainer, FindLocalIgnoresCaseAndLooksAtChildrenOnly)
{
    int nThreshold = 0;
    ClParameter* pThreshold = m_cRoot.AddNumeric("Threshold", &nThreshold);
    EXPECT_EQ(pThreshold, m_cRoot.FindLocal("threshold"));
    EXPECT_EQ(m_pSub, m_cRoot.FindLocal("SUB"));
    EXPECT_EQ(nullptr, m_cRoot.FindLocal("B"));
    EXPECT_EQ(nullptr, m_cRoot.FindLocal("Sub.B"));
    EXPECT_EQ(nullptr, m_cRoot.FindLocal("Thresh"));
    EXPECT_EQ(nullptr, m_cRoot.FindLocal(nullptr));
    m_pA->SetName(nullptr);
    EXPECT_EQ(nullptr, m_cRoot.FindLocal("A")) << "a child without a name is passed by";
    EXPECT_EQ(m_pD, m_cRoot.FindLocal("d"));
}

TEST_F(ParameterContainer, DuplicateNamesAreRefusedAndChangeNothing)
{
    const unsigned long nChildren = m_cRoot.m_aChildren.Entries();
    int nThreshold = 0;
    m_cRoot.AddNumeric("Threshold", &nThreshold);
    EXPECT_RAISES(m_cRoot.AddNumeric("THRESHOLD", &nThreshold), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE,
                  szDuplicate);
    EXPECT_RAISES(m_cRoot.AddContainer("sub"), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE, szDuplicate);
    std::vector<int> aDeleted;
    EXPECT_RAISES(m_cRoot.AddParameter("a", new ClMourned(aDeleted, 6)), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE,
                  szDuplicate);
    EXPECT_EQ(std::vector<int>{6}, aDeleted);
    EXPECT_EQ(nChildren + 1, m_cRoot.m_aChildren.Entries());
    m_pSub->AddNumeric("Threshold", &nThreshold); // the same name in another container
    EXPECT_NE(m_cRoot.Find("Threshold"), m_cRoot.Find("Sub.Threshold"));
}

TEST_F(ParameterContainer, DeletesItsChildrenFromTheLastToTheFirst)
{
    std::vector<int> aDeleted;
    {
        ClParameterContainer cContainer;
        for (int i = 0; i < 12; ++i)
        {
            cContainer.AddParameter(std::to_string(i).c_str(), new ClMourned(aDeleted, i));
        }
        ClParameterContainer* pInner = cContainer.AddContainer("Inner");
        pInner->AddParameter("x", new ClMourned(aDeleted, 100));
    }
    EXPECT_EQ((std::vector<int>{100, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0}), aDeleted);

    m_cRoot.Clear();
    EXPECT_EQ(0u, m_cRoot.m_aChildren.Entries());
    EXPECT_EQ(nullptr, m_cRoot.m_aChildren.m_pData);
    EXPECT_EQ(nullptr, m_cRoot.FindLocal("A"));
}

TEST_F(ParameterContainer, PathsDescendAndMayStartAtTheRoot)
{
    EXPECT_EQ(m_pA, m_cRoot.Find("A"));
    EXPECT_EQ(m_pB, m_cRoot.Find("Sub.B"));
    EXPECT_EQ(m_pC, m_cRoot.Find("SUB.deep.c"));
    EXPECT_EQ(m_pC, m_pSub->Find("Deep.C"));
    EXPECT_EQ(nullptr, m_pSub->Find("Sub.B"));
    EXPECT_EQ(m_pB, m_pDeep->Find(".Sub.B"));
    EXPECT_EQ(m_pB, m_cRoot.Find(".Sub.B"));
    EXPECT_EQ(&m_cRoot, m_pDeep->Find("."));
    EXPECT_EQ(&m_cRoot, m_cRoot.Find("."));
    EXPECT_EQ(m_pDeep, m_cRoot.Find("Sub.Deep"));
    EXPECT_EQ(nullptr, m_cRoot.Find("Nothing"));
    EXPECT_EQ(nullptr, m_cRoot.Find("Nothing.B"));
    EXPECT_EQ(nullptr, m_cRoot.Find("Sub.Nothing"));
    EXPECT_EQ(nullptr, m_cRoot.Find(""));
    EXPECT_EQ(nullptr, m_cRoot.Find(nullptr));
}

TEST_F(ParameterContainer, WhatFollowsAPlainParameterIsIgnored)
{
    EXPECT_EQ(m_pA, m_cRoot.Find("A.Rest"));
    EXPECT_EQ(m_pA, m_cRoot.Find("A.Rest.More"));
    EXPECT_EQ(m_pB, m_cRoot.Find("Sub.B.Rest"));
    EXPECT_EQ(m_pA, m_cRoot.FindNamePart(m_pA, ".Rest"));
    EXPECT_EQ(m_pSub, m_cRoot.FindNamePart(m_pSub, "Rest")); // no point in front
    EXPECT_EQ(m_pSub, m_cRoot.FindNamePart(m_pSub, ""));
    EXPECT_EQ(m_pB, m_cRoot.FindNamePart(m_pSub, ".B"));
    EXPECT_EQ(nullptr, m_cRoot.FindNamePart(nullptr, ".B"));
}

TEST_F(ParameterContainer, APathMayStartWithTheNameOfTheRootWhereCaseCounts)
{
    m_cRoot.SetName("Root");
    EXPECT_EQ(m_pA, m_cRoot.Find("Root.A"));
    EXPECT_EQ(m_pB, m_cRoot.Find("Root.Sub.B"));
    EXPECT_EQ(m_pA, m_cRoot.Find(".Root.A"));
    EXPECT_EQ(nullptr, m_cRoot.Find("root.A"));
    EXPECT_EQ(nullptr, m_cRoot.Find("Root")) << "alone it would have to be a child";
    EXPECT_EQ(nullptr, m_pSub->Find("Sub.B")); // it is no root
    ClParameterContainer* pChild = m_cRoot.AddContainer("root");
    ClParameter* pOther = pChild->AddNumeric("A", &m_nA);
    EXPECT_EQ(pChild, m_cRoot.Find("root"));
    EXPECT_EQ(pOther, m_cRoot.Find("root.A"));
}

TEST_F(ParameterContainer, PathPartsUpTo254CharactersPass)
{
    int nValue = 0;
    ClParameter* pShort = m_cRoot.AddNumeric(Long(254).c_str(), &nValue);
    EXPECT_EQ(pShort, m_cRoot.Find(Long(254).c_str()));
    ClParameterContainer* pContainer = m_cRoot.AddContainer(("c" + Long(253)).c_str());
    ClParameter* pInner = pContainer->AddNumeric("X", &nValue);
    EXPECT_EQ(pInner, m_cRoot.Find(("c" + Long(253) + ".X").c_str()));
}

TEST_F(ParameterContainer, APathPartOf255CharactersIsRefused)
{
    EXPECT_RAISES(m_cRoot.Find(Long(255).c_str()), ClException, FPC_ERROR_INTERNAL, szTooLong);
    EXPECT_RAISES(m_cRoot.Find((Long(255) + ".X").c_str()), ClException, FPC_ERROR_INTERNAL, szTooLong);
    EXPECT_RAISES(m_cRoot.Find(("Sub." + Long(255)).c_str()), ClException, FPC_ERROR_INTERNAL, szTooLong);
}

TEST_F(ParameterContainer, ALongerPathPartIsCutTo255Characters)
{
    int nValue = 0;
    ClParameterContainer* pCut = m_cRoot.AddContainer(Long(255).c_str());
    pCut->AddNumeric("X", &nValue);
    EXPECT_EQ(pCut, m_cRoot.Find(Long(256).c_str()));
    EXPECT_EQ(pCut, m_cRoot.Find(Long(300).c_str()));
    EXPECT_EQ(pCut, m_cRoot.Find((Long(300) + ".X").c_str())); // the rest does not begin with a point
}

TEST_F(ParameterContainer, CopyNamePathPartEndsAtAPointOrTheLimit)
{
    char szPart[8];
    const char* const szPath = "Sub.B";
    EXPECT_EQ(szPath + 3, ClParameterContainer::CopyNamePathPart(szPath, szPart, 7));
    EXPECT_STREQ("Sub", szPart);
    EXPECT_EQ(szPath + 5, ClParameterContainer::CopyNamePathPart(szPath + 4, szPart, 7));
    EXPECT_STREQ("B", szPart);
    EXPECT_EQ(szPath + 2, ClParameterContainer::CopyNamePathPart(szPath, szPart, 2));
    EXPECT_STREQ("Su", szPart);
    EXPECT_RAISES(ClParameterContainer::CopyNamePathPart(szPath, szPart, 3), ClException, FPC_ERROR_INTERNAL,
                  szTooLong);
}

TEST_F(ParameterContainer, IterationVisitsThePlainParametersDepthFirst)
{
    std::vector<ClParameter*> aVisited;
    for (ClParameter* p = m_cRoot.GetFirstParameter(); p != nullptr; p = m_cRoot.GetNextParameter(p))
    {
        aVisited.push_back(p);
    }
    EXPECT_EQ((std::vector<ClParameter*>{m_pA, m_pB, m_pC, m_pD}), aVisited);
    EXPECT_EQ(m_pA, m_cRoot.GetNextParameter(static_cast<ClParameter*>(nullptr)));
    EXPECT_EQ(m_pD, m_pDeep->GetNextParameter(m_pC)); // climbs out of the container that is asked
    EXPECT_EQ(nullptr, m_pSub->GetNextParameter(m_pD));
    EXPECT_EQ(m_pB, m_cRoot.GetNextParameter(1UL));
    EXPECT_EQ(m_pD, m_cRoot.GetNextParameter(2UL)); // past the empty container
    EXPECT_EQ(nullptr, m_cRoot.GetNextParameter(4UL));
}

TEST_F(ParameterContainer, IterationWithNothingToVisitIsNull)
{
    ClParameterContainer cEmpty;
    EXPECT_EQ(nullptr, cEmpty.GetFirstParameter());
    cEmpty.AddContainer("A")->AddContainer("B");
    cEmpty.AddContainer("C");
    EXPECT_EQ(nullptr, cEmpty.GetFirstParameter());
    EXPECT_EQ(nullptr, cEmpty.GetNextParameter(static_cast<ClParameter*>(nullptr)));
}

TEST_F(ParameterContainer, IterationFailures)
{
    TpParameterNumeric<int, ClParameter> cLoose;
    EXPECT_RAISES(m_cRoot.GetNextParameter(&cLoose), ClException, FPC_ERROR_BAD_POINTER,
                  "The pointer is bad or invalid.\npParent is not set");
    ClParameterContainer cDamaged;
    cDamaged.m_aChildren.Add(nullptr);
    EXPECT_RAISES(cDamaged.GetFirstParameter(), ClExBadAlloc, FPC_ERROR_OUT_OF_MEMORY,
                  "Memory allocation failed or given mem-block too small.\nMemory allocation failed");
}

TEST_F(ParameterContainer, IsDefaultWhenAllChildrenAre)
{
    EXPECT_TRUE(m_cRoot.IsDefault());
    EXPECT_TRUE(ClParameterContainer().IsDefault());
    m_nC = 30; // deep inside
    EXPECT_FALSE(m_cRoot.IsDefault());
    m_cRoot.SetToDefault();
    EXPECT_EQ(3, m_nC);
    EXPECT_TRUE(m_cRoot.IsDefault());
}

TEST_F(ParameterContainer, SwapsDefaultsAndValuesOfTheWholeTree)
{
    m_nA = 10;
    m_nC = 30;
    m_cRoot.SwapDefaultAndValue();
    EXPECT_EQ(1, m_nA);
    EXPECT_EQ(3, m_nC);
    EXPECT_EQ(2.0, m_dB);
    m_cRoot.SwapDefaultAndValue();
    EXPECT_EQ(10, m_nA);
    EXPECT_EQ(30, m_nC);
}

TEST_F(ParameterContainer, CloneIsATreeOverTheSameVariables)
{
    m_cRoot.SetName("Root");
    m_nA = 10;
    const std::unique_ptr<ClParameterBase> pClone(m_cRoot.Clone());
    ClParameterContainer* pCopy = pClone->GetContainerInterface();
    ASSERT_NE(nullptr, pCopy);
    EXPECT_STREQ("Root", pCopy->GetName());
    EXPECT_EQ(8, pCopy->m_nFlags);
    EXPECT_EQ(nullptr, pCopy->m_pParent);
    EXPECT_EQ(4u, pCopy->m_aChildren.Entries());
    ClParameter* pC = pCopy->Find("Sub.Deep.C");
    ASSERT_NE(nullptr, pC);
    EXPECT_NE(m_pC, pC);
    EXPECT_EQ("Root.Sub.Deep.C", pC->GetPathName());
    pC->SetValue("33");
    EXPECT_EQ(33, m_nC);
    EXPECT_EQ("1", pCopy->Find("A")->GetDefaultValue());
}

TEST_F(ParameterContainer, CopyToAddsToWhatIsThere)
{
    int nOther = 0;
    ClParameterContainer cDest("Other");
    cDest.AddNumeric("X", &nOther);
    m_cRoot.SetName("Root");
    m_cRoot.CopyTo(&cDest);
    EXPECT_STREQ("Root", cDest.GetName());
    EXPECT_EQ(5u, cDest.m_aChildren.Entries());
    EXPECT_RAISES(m_cRoot.CopyTo(&cDest), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE, szDuplicate);
}

TEST_F(ParameterContainer, CopyingPairsChildrenByPosition)
{
    int nFirst = 100;
    double dSecond = 200.0;
    ClImage cOne;
    ClImage* pOwnImage = nullptr;
    ClImage* pOtherImage = &cOne;
    ClParameterContainer cOwn;
    int nA = 1;
    double dB = 2.0;
    cOwn.AddNumeric("A", &nA);
    cOwn.AddContainer("Sub")->AddNumeric("B", &dB);
    cOwn.AddPointer("Image", &pOwnImage);
    ClParameterContainer cOther;
    cOther.AddNumeric("Another", &nFirst);
    cOther.AddContainer("Names")->AddNumeric("Differ", &dSecond);
    cOther.AddPointer("Here", &pOtherImage);
    nFirst = 101; // the defaults stay 100 and 200
    dSecond = 201.0;

    cOwn.CopyDefaultFrom(&cOther);
    EXPECT_EQ("100", cOwn.Find("A")->GetDefaultValue());
    EXPECT_EQ("200.0", cOwn.Find("Sub.B")->GetDefaultValue());
    cOwn.CopyDefaultFromValue(&cOther);
    EXPECT_EQ("101", cOwn.Find("A")->GetDefaultValue());
    EXPECT_EQ("201.0", cOwn.Find("Sub.B")->GetDefaultValue());
    EXPECT_EQ(1, nA);
    cOwn.CopyValuesFrom(&cOther, false);
    EXPECT_EQ(101, nA);
    EXPECT_EQ(201.0, dB);
    EXPECT_EQ(nullptr, pOwnImage);
    cOwn.CopyValuesFrom(&cOther, true);
    EXPECT_EQ(&cOne, pOwnImage);
    cOwn.SetToDefaultFrom(&cOther);
    EXPECT_EQ(100, nA);
    EXPECT_EQ(200.0, dB);
}

TEST_F(ParameterContainer, CopyingWithAPlainParameterIsRefused)
{
    TpParameterNumeric<int, ClParameter> cPlain;
    EXPECT_RAISES(m_cRoot.CopyDefaultFromValue(&cPlain), ClException, FPC_ERROR_BAD_POINTER, szNoContainer);
    EXPECT_RAISES(m_cRoot.SetToDefaultFrom(&cPlain), ClException, FPC_ERROR_BAD_POINTER, szNoContainer);
    EXPECT_RAISES(m_cRoot.CloneDataTo(&cPlain), ClException, FPC_ERROR_BAD_POINTER, szNoContainer);
    EXPECT_RAISES(m_cRoot.CopyTo(&cPlain), ClException, FPC_ERROR_BAD_POINTER, szNoContainer);
    EXPECT_RAISES_CODE(m_cRoot.CopyDefaultFrom(&cPlain), FPC_ERROR_BAD_POINTER);
    EXPECT_RAISES_CODE(m_cRoot.CopyValuesFrom(&cPlain, true), FPC_ERROR_BAD_POINTER);
    EXPECT_RAISES(m_cRoot.CopyDefaultFrom(nullptr), ClException, FPC_ERROR_BAD_POINTER, szNoContainer);
}
