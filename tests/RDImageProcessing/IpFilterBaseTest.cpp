#include "RDImageProcessing/IpFilterBase.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "TestTools.hpp"

#include <string>
#include <vector>

namespace
{
/// A filter that says which operation ran. X and Y change the samples in a way that shows their order.
class ClTracingFilter : public ClIpFilterBase
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClTracingFilter>(); }
    const char* Name() const override { return "ClTracingFilter"; }

    long ProcessX() override { return Note("X", 1); }
    long ProcessY() override { return Note("Y", 2); }
    long ProcessSignedX() override { return Note("SignedX", 3); }
    long ProcessSignedY() override { return Note("SignedY", 4); }
    long ProcessDirected(bool bOrtho) override { return Note(bOrtho ? "Ortho" : "Directed", 5); }
    long ProcessSignedDirected(bool bOrtho) override { return Note(bOrtho ? "SignedOrtho" : "SignedDirected", 6); }

    std::string m_sTrace;
    std::vector<int> m_anFirstSamples; ///< of the inputs, in the order of the runs
    long m_nResult = FPC_SUCCESS;

private:
    long Note(const char* szName, int nDigit)
    {
        m_sTrace += szName;
        m_sTrace += ' ';
        m_anFirstSamples.push_back(m_pInImage->Data()[0]);
        if (m_nResult == FPC_SUCCESS)
        {
            m_pOutImage->New(*m_pInImage);
            m_pOutImage->Data()[0] = static_cast<unsigned char>(m_pInImage->Data()[0] * 10 + nDigit);
        }
        return m_nResult;
    }
};

/// A filter that offers nothing.
class ClEmptyFilter : public ClIpFilterBase
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClEmptyFilter>(); }
    const char* Name() const override { return "ClEmptyFilter"; }
};

std::string SettingsText(ClIpFilterBase& cFilter)
{
    char szText[100];
    cFilter.ParameterString(szText, sizeof szText);
    return szText;
}
} // namespace

TEST(IpFilterBase, HasItsDefaults)
{
    const ClEmptyFilter cFilter;
    EXPECT_EQ(nullptr, cFilter.m_pInImage);
    EXPECT_EQ(nullptr, cFilter.m_pOutImage);
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
    EXPECT_EQ(3, cFilter.m_nMode);
    EXPECT_EQ(nullptr, cFilter.m_pInDxImage);
    EXPECT_EQ(nullptr, cFilter.m_pInDyImage);
}

TEST(IpFilterBase, SetParametersToDefaultResetsEveryPublishedMember)
{
    ClEmptyFilter cFilter;
    ClImage cImage;
    cFilter.m_pInImage = cFilter.m_pOutImage = cFilter.m_pInDxImage = cFilter.m_pInDyImage = &cImage;
    cFilter.m_nFilterWidth = 9;
    cFilter.m_nMode = 1;
    cFilter.SetParametersToDefault();
    EXPECT_EQ(nullptr, cFilter.m_pInImage);
    EXPECT_EQ(nullptr, cFilter.m_pOutImage);
    EXPECT_EQ(nullptr, cFilter.m_pInDxImage);
    EXPECT_EQ(nullptr, cFilter.m_pInDyImage);
    EXPECT_EQ(3, cFilter.m_nFilterWidth);
    EXPECT_EQ(3, cFilter.m_nMode);
}

TEST(IpFilterBase, PublishesItsParametersInOrder)
{
    ClEmptyFilter cFilter;
    cFilter.m_nFilterWidth = 7;
    cFilter.m_nMode = 16;
    ClParameterContainer cTree;
    cFilter.QueryParameters(cTree);
    const char* const aszNames[] = {"pInImage", "pOutImage", "nFilterWidth", "nMode", "pInDxImage", "pInDyImage"};
    ASSERT_EQ(std::size(aszNames), cTree.m_aChildren.Entries());
    for (unsigned long i = 0; i < std::size(aszNames); ++i)
    {
        EXPECT_STREQ(aszNames[i], cTree.m_aChildren[i]->GetName());
        EXPECT_EQ(i != 2 && i != 3, cTree.m_aChildren[i]->IsPointer()) << aszNames[i];
    }
    EXPECT_EQ("7", cTree.m_aChildren[2]->GetValue());
    EXPECT_EQ("3", cTree.m_aChildren[2]->GetDefaultValue());
    EXPECT_EQ("MODE_DIRECTED_ORTHO", cTree.m_aChildren[3]->GetValue());
    EXPECT_EQ("Mode XY", cTree.m_aChildren[3]->GetDefaultValue());
    EXPECT_EQ("NULL", cTree.m_aChildren[4]->GetDefaultValue());
}

TEST(IpFilterBase, NamesItsModesInOrder)
{
    ClEmptyFilter cFilter;
    ClParameterContainer cTree;
    cFilter.QueryParameters(cTree);
    ClParameter* pMode = cTree.Find("nMode");
    ASSERT_NE(nullptr, pMode);
    const std::pair<const char*, long> aModes[] = {
        {"Mode X", 1}, {"Mode Y", 2}, {"Mode XY", 3}, {"MODE_DIRECTED", 8}, {"MODE_DIRECTED_ORTHO", 16}};
    ASSERT_EQ(std::size(aModes), pMode->GetEnumInterface()->GetValueNameCount());
    for (unsigned long i = 0; i < std::size(aModes); ++i)
    {
        char szName[40];
        pMode->GetEnumInterface()->GetValueName(i, szName, sizeof szName);
        EXPECT_STREQ(aModes[i].first, szName);
        pMode->SetValue(aModes[i].first);
        EXPECT_EQ(aModes[i].second, cFilter.m_nMode);
    }
}

TEST(IpFilterBase, ParameterStringTellsWidthModeAndSign)
{
    ClEmptyFilter cFilter;
    EXPECT_EQ("W[3] M[XY] S[Unknown]", SettingsText(cFilter));
    ClImage cImage;
    cFilter.m_pInImage = &cImage;
    cImage.NewWithType(ClImage::eUInt8, 1, 1, 1, 0, 0);
    cFilter.m_nMode = 1;
    EXPECT_EQ("W[3] M[X] S[Unsigned]", SettingsText(cFilter));
    cImage.NewWithType(ClImage::eFloat32, 1, 1, 1, 0, 0);
    cFilter.m_nMode = 2;
    cFilter.m_nFilterWidth = -21;
    EXPECT_EQ("W[-21] M[Y] S[Signed]", SettingsText(cFilter));
    cFilter.m_nMode = 8;
    EXPECT_EQ("W[-21] M[Directed] S[Signed]", SettingsText(cFilter));
    cFilter.m_nMode = 16;
    EXPECT_EQ("W[-21] M[DirectedOrtho] S[Signed]", SettingsText(cFilter));
    cFilter.m_nMode = 27;
    EXPECT_EQ("W[-21] M[XYDirectedDirectedOrtho] S[Signed]", SettingsText(cFilter));
    cFilter.m_nMode = 4;
    EXPECT_EQ("W[-21] M[] S[Signed]", SettingsText(cFilter));
}

TEST(IpFilterBase, ParameterStringRefusesASmallBuffer)
{
    ClEmptyFilter cFilter; // "W[3] M[XY] S[Unknown]" takes 21 characters
    char szText[22];
    cFilter.ParameterString(szText, 22);
    EXPECT_STREQ("W[3] M[XY] S[Unknown]", szText);
    const std::string sMessage =
        std::string(ClException(FPC_ERROR_INTERNAL, false, "", 0).What()) + "\nString-Length exceeded available size";
    EXPECT_RAISES(cFilter.ParameterString(szText, 21), ClException, FPC_ERROR_INTERNAL, sMessage.c_str());
}

TEST(IpFilterBase, ApplyParamStoresItsArguments)
{
    ClTracingFilter cFilter;
    ClImage cIn, cOut;
    FillRandom8(cIn, 4, 3, 1);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 6, 1));
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
    EXPECT_EQ(6, cFilter.m_nFilterWidth);
    EXPECT_EQ(1, cFilter.m_nMode);
    EXPECT_EQ("X ", cFilter.m_sTrace);
}

TEST(IpFilterBase, WidthsUpToOneCopyDeeplyEvenInPlace)
{
    for (const long nWidth : {1L, 0L, -1L, -100L})
    {
        ClTracingFilter cFilter;
        ClImage cIn, cOut;
        FillRandom8(cIn, 5, 4, 2);
        cIn.m_nAttribute = 77;
        ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, nWidth, 3));
        EXPECT_TRUE(SamePixels(cIn, cOut));
        EXPECT_TRUE(SameDescription(cIn, cOut));
        EXPECT_NE(cIn.Data(), cOut.Data());
        ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cIn, nWidth, 3));
        EXPECT_TRUE(SamePixels(cOut, cIn));
        EXPECT_EQ("", cFilter.m_sTrace);
    }
}

TEST(IpFilterBase, RefusesToWorkInPlace)
{
    ClTracingFilter cFilter;
    ClImage cImage;
    FillRandom8(cImage, 5, 4, 2);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cFilter.ApplyParam(cImage, cImage, 3, 3));
    EXPECT_EQ("", cFilter.m_sTrace);
}

TEST(IpFilterBase, RaisesWithoutImages)
{
    ClTracingFilter cFilter;
    EXPECT_RAISES_CODE(cFilter.DoProcess(), FPC_ERROR_BITMAP_PTR);
    EXPECT_RAISES_CODE(cFilter.Apply(), FPC_ERROR_BITMAP_PTR);
    ClImage cImage;
    FillRandom8(cImage, 5, 4, 2);
    cFilter.m_pInImage = &cImage;
    EXPECT_RAISES_CODE(cFilter.Apply(), FPC_ERROR_BITMAP_PTR);
    EXPECT_RAISES_CODE(cFilter.DoProcess(), FPC_ERROR_BITMAP_PTR);
}

TEST(IpFilterBase, ModeAndSignChooseTheOperation)
{
    struct ClCase
    {
        long m_nMode;
        unsigned char m_eType;
        const char* m_szTrace;
    };
    const ClCase aCases[] = {
        {1, ClImage::eUInt8, "X "},        {1, ClImage::eSInt8, "SignedX "},
        {2, ClImage::eUInt8, "Y "},        {2, ClImage::eSInt8, "SignedY "},
        {3, ClImage::eUInt8, "X Y "},      {3, ClImage::eSInt8, "SignedX SignedY "},
        {8, ClImage::eUInt8, "Directed "}, {8, ClImage::eSInt8, "SignedDirected "},
        {16, ClImage::eUInt8, "Ortho "},   {16, ClImage::eSInt8, "SignedOrtho "},
        {1, ClImage::eUInt16, "X "},       {1, ClImage::eFloat32, "SignedX "},
    };
    for (const ClCase& cCase : aCases)
    {
        ClTracingFilter cFilter;
        ClImage cIn, cOut;
        cIn.NewWithType(cCase.m_eType, 4, 4, 1, 0, 0);
        FillRandom(cIn, 3);
        EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 3, cCase.m_nMode));
        EXPECT_EQ(cCase.m_szTrace, cFilter.m_sTrace);
    }
}

TEST(IpFilterBase, RaisesForAnUnknownMode)
{
    for (const long nMode : {0L, 4L, 5L, 24L, -1L})
    {
        ClTracingFilter cFilter;
        ClImage cIn, cOut;
        FillRandom8(cIn, 4, 4, 2);
        EXPECT_RAISES_CODE(cFilter.ApplyParam(cIn, cOut, 3, nMode), FPC_ERROR_PARAM_OUT_OF_RANGE);
    }
}

TEST(IpFilterBase, OffersNoPassOfItsOwn)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt8})
    {
        for (const long nMode : {1L, 2L, 3L, 8L, 16L})
        {
            ClEmptyFilter cFilter;
            ClImage cIn, cOut;
            cIn.NewWithType(eType, 4, 4, 1, 0, 0);
            EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, cFilter.ApplyParam(cIn, cOut, 3, nMode)) << nMode;
        }
    }
}

TEST(IpFilterBase, BothDirectionsRunOneAfterTheOther)
{
    ClTracingFilter cFilter;
    ClImage cIn, cOut;
    FillRandom8(cIn, 4, 4, 2);
    cIn.Data()[0] = 1;
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 3, 3));
    EXPECT_EQ(112, cOut.Data()[0]);
    EXPECT_EQ(1, cIn.Data()[0]);
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);

    ClImage cSigned;
    cSigned.NewWithType(ClImage::eSInt8, 4, 4, 1, 0, 0);
    cSigned.Data()[0] = 1;
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cSigned, cOut, 3, 3));
    EXPECT_EQ(134, cOut.Data()[0]);
}

TEST(IpFilterBase, AFailingFirstPassEndsTheRun)
{
    ClTracingFilter cFilter;
    cFilter.m_nResult = -7;
    ClImage cIn, cOut;
    FillRandom8(cIn, 4, 4, 2);
    EXPECT_EQ(-7, cFilter.ApplyParam(cIn, cOut, 3, 3));
    EXPECT_EQ("X ", cFilter.m_sTrace);
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
}

TEST(IpFilterBase, PlanesRunFromTheThirdToTheFirst)
{
    ClTracingFilter cFilter;
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 3, 2, 3, 500, 600);
    FillRandom(cIn, 4);
    cIn.m_nAttribute = 9;
    cIn.m_eContent = ClImage::eHSV;
    for (int i = 0; i < 3; ++i)
    {
        cIn.Data()[i] = static_cast<unsigned char>(i + 1);
    }
    ASSERT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 3, 1));
    EXPECT_EQ("X X X ", cFilter.m_sTrace);
    EXPECT_EQ((std::vector<int>{3, 2, 1}), cFilter.m_anFirstSamples);
    EXPECT_TRUE(SameDescription(cIn, cOut));
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ((i + 1) * 10 + 1, cOut.Data()[i]);
        EXPECT_EQ(i + 1, cIn.Data()[i]);
    }
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
}

TEST(IpFilterBase, AFailingPlaneDoesNotFailTheRun)
{
    ClTracingFilter cFilter;
    cFilter.m_nResult = -7;
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 3, 2, 3, 0, 0);
    EXPECT_EQ(FPC_SUCCESS, cFilter.ApplyParam(cIn, cOut, 3, 1));
    EXPECT_EQ("X X X ", cFilter.m_sTrace);
}

TEST(IpFilterBase, RefusesMoreThanFourPlanes)
{
    ClTracingFilter cFilter;
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 3, 2, 5, 0, 0);
    EXPECT_RAISES_CODE(cFilter.ApplyParam(cIn, cOut, 3, 1), FPC_ERROR_PARAM_OUT_OF_RANGE);
    EXPECT_EQ(&cIn, cFilter.m_pInImage);
    EXPECT_EQ(&cOut, cFilter.m_pOutImage);
}
