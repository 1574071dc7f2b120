#include "RDTools/ParameterProvider.hpp"

#include "RDTools/FpImage.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <string>

namespace
{
/// A provider of a number with the true default 20, a factor with 0.5 and an image pointer.
class ClFilter : public ClParameterProvider
{
public:
    using ClParameterProvider::QueryParameters;
    void SetParametersToDefault() override
    {
        ++m_nDefaultCalls;
        m_nWidth = 20;
        m_dFactor = 0.5;
    }
    void PublishParameters(ClParameterContainer& cContainer) override
    {
        cContainer.AddNumeric("Width", &m_nWidth);
        cContainer.AddNumeric("Factor", &m_dFactor);
        cContainer.AddPointer("pImage", &m_pImage);
    }

    int m_nWidth = 7;
    double m_dFactor = 0.5;
    ClImage* m_pImage = nullptr;
    int m_nDefaultCalls = 0;
};

/// Publishes one parameter with a default of its own.
class ClStubborn : public ClFilter
{
public:
    void PublishParameters(ClParameterContainer& cContainer) override
    {
        cContainer.AddNumeric("Width", &m_nWidth)->SetDefault(99);
    }
    void SetParametersToDefault() override { m_nSeen = m_nWidth; } // leaves the member alone

    int m_nSeen = 0;
};

class ClIdle : public ClParameterProvider
{
};
} // namespace

TEST(ParameterProvider, QueryingFindsTheTrueDefaultsAndKeepsTheValues)
{
    ClFilter cFilter;
    ClParameterContainer cTree;
    cFilter.QueryParameters(cTree);
    EXPECT_EQ(7, cFilter.m_nWidth);
    EXPECT_EQ(0.5, cFilter.m_dFactor);
    EXPECT_EQ(1, cFilter.m_nDefaultCalls);
    EXPECT_EQ("7", cTree.Find("Width")->GetValue());
    EXPECT_EQ("20", cTree.Find("Width")->GetDefaultValue());
    EXPECT_FALSE(cTree.Find("Width")->IsDefault());
    EXPECT_TRUE(cTree.Find("Factor")->IsDefault());
    EXPECT_FALSE(cTree.IsDefault());
    cTree.Find("Width")->SetValue("20");
    EXPECT_EQ(20, cFilter.m_nWidth);
    EXPECT_TRUE(cTree.IsDefault());
}

TEST(ParameterProvider, PublishingAloneTakesThePresentValuesAsDefaults)
{
    ClFilter cFilter;
    ClParameterContainer cTree;
    cFilter.PublishParameters(cTree);
    EXPECT_EQ("7", cTree.Find("Width")->GetDefaultValue());
    EXPECT_EQ(0, cFilter.m_nDefaultCalls);
}

TEST(ParameterProvider, APublishedDefaultStandsInTheMemberWhileDefaultsAreSet)
{
    ClStubborn cStubborn;
    ClParameterContainer cTree;
    cStubborn.QueryParameters(cTree);
    EXPECT_EQ(99, cStubborn.m_nSeen);
    EXPECT_EQ(7, cStubborn.m_nWidth);
    EXPECT_EQ("99", cTree.Find("Width")->GetDefaultValue());
}

TEST(ParameterProvider, PublishesIntoASubContainer)
{
    ClFilter cFilter;
    ClParameterContainer cTree;
    cFilter.PublishParamSubContainer(cTree, "Filter");
    EXPECT_EQ(1u, cTree.m_aChildren.Entries());
    EXPECT_EQ("7", cTree.Find("Filter.Width")->GetValue());
    cFilter.PublishParamSubContainer(cTree, nullptr);
    EXPECT_EQ(4u, cTree.m_aChildren.Entries());
    EXPECT_EQ("7", cTree.Find("Width")->GetValue());
    EXPECT_RAISES_CODE(cFilter.PublishParamSubContainer(cTree, "FILTER"), -46);
}

TEST(ParameterProvider, CopiesAllValuesButPointers)
{
    ClImage cImage;
    ClFilter cFrom;
    ClFilter cTo;
    cFrom.m_nWidth = 31;
    cFrom.m_dFactor = 0.75;
    cFrom.m_pImage = &cImage;
    cFrom.CopyParametersTo(cTo);
    EXPECT_EQ(31, cTo.m_nWidth);
    EXPECT_EQ(0.75, cTo.m_dFactor);
    EXPECT_EQ(nullptr, cTo.m_pImage);
    EXPECT_EQ(31, cFrom.m_nWidth);
    EXPECT_EQ(&cImage, cFrom.m_pImage);
}

TEST(ParameterProvider, ByDefaultNothingIsPublished)
{
    ClIdle cIdle;
    ClParameterContainer cTree;
    static_cast<ClParameterProvider&>(cIdle).QueryParameters(cTree);
    EXPECT_EQ(0u, cTree.m_aChildren.Entries());
    EXPECT_TRUE(cTree.IsDefault());
}
