#include "RDImageProcessing/IpRescale.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RescaleDefinitions.hpp"

#include <memory>
#include <string>
#include <tuple>
#include <utility>

using namespace RescaleDefinitions;

TEST(IpRescale, AResolutionGivesASizeThatIsRoundedUp)
{
    ClImage cIn;
    FillPicture(cIn, 1000, 1001, 19685, 19685, 1);
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(200, cOut.m_nWidth);
    EXPECT_EQ(201, cOut.m_nHeight);
    EXPECT_EQ(3937, cOut.m_nXRes);
    EXPECT_EQ(3937, cOut.m_nYRes);
    EXPECT_EQ(200, cRescale.m_nActWidth);
    EXPECT_EQ(201, cRescale.m_nActHeight);
    EXPECT_EQ(3937, cRescale.m_nActPelsX);
    EXPECT_EQ(3937, cRescale.m_nActPelsY);
}

TEST(IpRescale, AnEqualSizeIsACopyInEveryMode)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 13, 11, 2, 19685, 3937); // of unknown content, which no mode could split
    FillRandom(cIn, 6);
    cIn.m_nAttribute = 5;
    for (const Mode_t eMode : aModes)
    {
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 19685, 3937, eMode));
        ExpectImage(cIn, cOut);
        EXPECT_NE(cIn.Data(), cOut.Data());
    }
    ClImage cOut;
    ClIpRescale cRescale;
    ASSERT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 13, 11, static_cast<Mode_t>(99)));
    ExpectImage(cIn, cOut);
    EXPECT_EQ(19685, cRescale.m_nActPelsX);
    EXPECT_EQ(3937, cRescale.m_nActPelsY);
    ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 19684, 3936, ClIpRescale::ModeBiLinear)); // rounded up to the same
    EXPECT_EQ(19685, cOut.m_nXRes);
}

TEST(IpRescale, WhatIsInForceFollowsFromResolutionsOrSize)
{
    ClImage cIn(100, 50, 1, 2000, 1000);
    ClImage cOut;
    ClIpRescale cRescale;
    cRescale.m_pInImage = &cIn;
    cRescale.m_pOutImage = &cOut;
    cRescale.m_nNewWidth = 33;
    cRescale.m_nNewHeight = 77;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    EXPECT_EQ(77, cRescale.m_nActHeight);
    EXPECT_EQ(660, cRescale.m_nActPelsX);
    EXPECT_EQ(1540, cRescale.m_nActPelsY);
    cRescale.m_nNewPelsY = 1001; // both resolutions come before the size
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    cRescale.m_nNewPelsX = 1000;
    cRescale.m_nNewPelsY = 0;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    cRescale.m_nNewPelsY = 1001;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(50, cRescale.m_nActWidth);
    EXPECT_EQ(51, cRescale.m_nActHeight); // 50.05
    EXPECT_EQ(1000, cRescale.m_nActPelsX);
    EXPECT_EQ(1001, cRescale.m_nActPelsY);
    cIn.m_nXRes = 0; // without a resolution the size counts
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    EXPECT_EQ(1540, cRescale.m_nActPelsY);
    cIn.m_nXRes = 2000;
    cIn.m_nYRes = 0;
    ASSERT_EQ(0, cRescale.Initialize());
    EXPECT_EQ(33, cRescale.m_nActWidth);
    EXPECT_EQ(660, cRescale.m_nActPelsX);
    EXPECT_EQ(0, cRescale.m_nActPelsY);
    cRescale.m_nNewHeight = 0;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Initialize());
    cRescale.m_nNewHeight = 1;
    cRescale.m_nNewWidth = -3;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Initialize());
}

TEST(IpRescale, AnImageWithoutAreaAndResolutionIsOutOfRange)
{
    for (const auto& [nXRes, nYRes] : {std::pair(0, 0), std::pair(9, 0), std::pair(0, 9)})
    {
        for (const auto& [nWidth, nHeight] : {std::pair(0, 6), std::pair(-5, 6), std::pair(5, 0), std::pair(5, -6)})
        {
            ClImage cIn(5, 6, 1, nXRes, nYRes);
            cIn.m_nWidth = nWidth;
            cIn.m_nHeight = nHeight;
            ClImage cOut;
            ClIpRescale cRescale;
            cRescale.m_pInImage = &cIn;
            cRescale.m_pOutImage = &cOut;
            cRescale.m_nActWidth = 4;
            cRescale.m_nActHeight = 3;
            EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Process()) << nWidth << " by " << nHeight;
        }
    }
}

TEST(IpRescale, NothingAskedForIsAnInternalError)
{
    ClImage cIn(10, 10, 1, 0, 19685);
    ClImage cOut;
    ClIpRescale cRescale;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeNearestNeighbour));
    EXPECT_EQ(nullptr, cRescale.m_pInImage); // nothing was stored
    EXPECT_EQ(ClIpRescale::ModeBiLinear, cRescale.m_eMode);
    cRescale.m_nNewWidth = 5;
    cRescale.m_nNewPelsY = 5;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamSize(cIn, cOut, 5, 5, ClIpRescale::ModeWholeNumbered));
    EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamSize(cIn, cOut, 5, 0, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.ApplyParamSize(cIn, cOut, 5, -1, ClIpRescale::ModeBiLinear));
}

TEST(IpRescale, PelsNeedAnInputWithAResolution)
{
    ClImage cIn(10, 10, 1, 0, 19685);
    ClImage cOut;
    ClIpRescale cRescale;
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    cIn.m_nXRes = 19685;
    cIn.m_nYRes = 0;
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    cIn.m_nYRes = 19685;
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(0, cRescale.ApplyParamSize(cIn, cOut, 7, 7, ClIpRescale::ModeBiLinear)); // forgets the pels
    EXPECT_EQ(7, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.m_nNewPelsX);
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, ClIpRescale::ModeBiLinear)); // forgets the size
    EXPECT_EQ(2, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.m_nNewWidth);
}

TEST(IpRescale, MissingImagesAndPixelsAreReturned)
{
    ClImage cImage(10, 10, 1, 19685, 19685);
    ClImage cEmpty;
    ClImage cNoRows(10, 0, 1, 19685, 19685);
    ClIpRescale cRescale;
    cRescale.m_nNewWidth = 5;
    cRescale.m_nNewHeight = 5;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.Apply());
    cRescale.m_pInImage = &cImage;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.Apply());
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamSize(cEmpty, cImage, 5, 5, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamSize(cNoRows, cImage, 5, 5, ClIpRescale::ModeBiLinear));
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRescale.ApplyParamPels(cNoRows, cImage, 3937, 3937, ClIpRescale::ModeBiLinear));
    cRescale.m_pInImage = &cEmpty;
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cRescale.Process());
}

TEST(IpRescale, NothingBeyondTheSourceIsRead)
{
    const ClGuardedBytes cBlock(64 * 37);
    ClTestRandom cRandom(9);
    for (std::size_t i = 0; i < cBlock.Size(); ++i)
    {
        cBlock.Data()[i] = static_cast<unsigned char>(cRandom.Below(256));
    }
    ClImage cIn;
    cIn.Attach(cBlock.Data(), ClImage::eUInt8, 64, 37, 1, 19685, 19685);
    ClImage cCopy;
    cCopy = cIn;
    for (const Mode_t eMode :
         {ClIpRescale::ModeBiLinear, ClIpRescale::ModeNearestNeighbour, ClIpRescale::ModeWholeNumbered})
    {
        for (const int nPels : {3937, 5000, 7874, 19000, 20000, 39370, 100000})
        {
            ClImage cOut;
            ClImage cExpected;
            ClIpRescale cRescale;
            ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, nPels, nPels + 100, eMode));
            ASSERT_EQ(0, cRescale.ApplyParamPels(cCopy, cExpected, nPels, nPels + 100, eMode));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
        }
    }
}

TEST(IpRescale, WholeFactorsNeedResolutionsOnBothSides)
{
    // Half of one pel per metre is none.
    for (const auto& [nXRes, nYRes] : {std::pair(1, 4000), std::pair(4000, 1), std::pair(0, 4000), std::pair(4000, 0)})
    {
        ClImage cIn(100, 100, 1, nXRes, nYRes);
        ClImage cOut;
        ClIpRescale cRescale;
        cRescale.m_nNewWidth = 50;
        cRescale.m_nNewHeight = 50;
        EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParam(cIn, cOut, ClIpRescale::ModeWholeNumbered));
    }
    // One is enough.
    for (const auto& [nFrom, nTo, nSide] : {std::tuple(1, 2, 20), std::tuple(2, 1, 5)})
    {
        ClImage cIn(10, 10, 1, nFrom, nFrom);
        ClImage cOut;
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cIn, cOut, nTo, nTo, ClIpRescale::ModeWholeNumbered));
        EXPECT_EQ(nSide, cOut.m_nWidth);
        EXPECT_EQ(nSide, cOut.m_nHeight);
    }
}

TEST(IpRescale, SignedSamplesKeepTheirTypeAndAreReadAsBytes)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt8, 30, 20, 1, 19685, 19685);
    FillRandom(cIn, 10);
    for (const int nPels : {7874, 25000})
    {
        ClImage cOut;
        ClImage cExpected;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, nPels, nPels, ClIpRescale::ModeBiLinear));
        BiLinearByDefinition(cIn, ForceOfPels(cIn, nPels, nPels), cExpected);
        ExpectImage(cExpected, cOut);
        EXPECT_EQ(ClImage::eSInt8, cOut.m_eDataType);
    }
}

TEST(IpRescale, TheOutputMayBeTheInput)
{
    for (const Mode_t eMode :
         {ClIpRescale::ModeBiLinear, ClIpRescale::ModeNearestNeighbour, ClIpRescale::ModeWholeNumbered})
    {
        for (const auto& [nPelsX, nPelsY] :
             {std::pair(7874, 7874), std::pair(7874, 39370), std::pair(39370, 7874), std::pair(39370, 39370)})
        {
            ClImage cImage;
            FillPicture(cImage, 40, 30, 19685, 19685, 11);
            ClImage cExpected;
            ClIpRescale cRescale;
            ASSERT_EQ(0, cRescale.ApplyParamPels(cImage, cExpected, nPelsX, nPelsY, eMode));
            ASSERT_EQ(0, cRescale.ApplyParamPels(cImage, cImage, nPelsX, nPelsY, eMode));
            ExpectImage(cExpected, cImage);
            EXPECT_EQ(&cImage, cRescale.m_pInImage);
            EXPECT_EQ(&cImage, cRescale.m_pOutImage);
        }
    }
}

TEST(IpRescale, UpToThreePlanesAreScaledOneByOne)
{
    for (const int nPlanes : {3, 4})
    {
        ClImage cIn;
        cIn.NewWithType(ClImage::eUInt8, 31, 22, nPlanes, 19685, 19685);
        FillRandom(cIn, 12);
        cIn.m_nAttribute = 6;
        ClImage cBefore;
        cBefore = cIn;
        ClImage cOut;
        ClIpRescale cRescale;
        ASSERT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 7874, 39370, ClIpRescale::ModeBiLinear));
        EXPECT_TRUE(SamePixels(cBefore, cIn));
        EXPECT_EQ(&cIn, cRescale.m_pInImage);
        EXPECT_EQ(&cOut, cRescale.m_pOutImage);
        ASSERT_EQ(nPlanes, cOut.m_nPlanes);
        EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
        EXPECT_EQ(6, cOut.m_nAttribute);
        for (int p = 0; p < 3; ++p)
        {
            ClImage cPlane;
            ClImage cExpected;
            ClImage cActual;
            cIn.GetPlane(p, cPlane);
            BiLinearByDefinition(cPlane, ForceOfPels(cIn, 7874, 39370), cExpected);
            cOut.GetPlane(p, cActual);
            ExpectImage(cExpected, cActual);
        }
    }
}

TEST(IpRescale, PlanesOfUnknownContentAreRefused)
{
    ClImage cIn(31, 22, 2, 19685, 19685);
    FillRandom(cIn, 13);
    ClImage cOut;
    ClIpRescale cRescale;
    for (const Mode_t eMode : aModes)
    {
        EXPECT_EQ(FPC_ERROR_INTERNAL, cRescale.ApplyParamPels(cIn, cOut, 7874, 7874, eMode));
    }
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpRescale, AModeThatIsNoneDoesNothing)
{
    ClImage cIn;
    FillPicture(cIn, 20, 20, 19685, 19685, 19);
    ClImage cOut(3, 2, 1, 0, 0);
    ClIpRescale cRescale;
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cOut, 3937, 3937, static_cast<Mode_t>(9)));
    EXPECT_EQ(3, cOut.m_nWidth);
    EXPECT_EQ(0, cRescale.ApplyParamPels(cIn, cIn, 3937, 3937, static_cast<Mode_t>(-1)));
    EXPECT_EQ(20, cIn.m_nWidth);
}

TEST(IpRescale, SettingsAsAText)
{
    ClIpRescale cRescale;
    char szText[40];
    cRescale.m_nNewPelsX = 3937;
    cRescale.m_nNewPelsY = -1;
    cRescale.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("X3937 Y-1 BiLinear", szText);
    cRescale.m_nNewWidth = 20;
    cRescale.m_nNewHeight = 10;
    const char* const aszModes[] = {"WholeNumbered", "NearestNeighbour", "BiLinear", "BiCubic", "BiLinearFantMar"};
    for (const Mode_t eMode : aModes)
    {
        cRescale.m_eMode = eMode;
        cRescale.ParameterString(szText, sizeof szText);
        EXPECT_EQ(std::string("W20 H10 ") + aszModes[eMode], szText);
    }
    for (const int nMode : {-1, 5})
    {
        cRescale.m_eMode = static_cast<Mode_t>(nMode);
        cRescale.ParameterString(szText, sizeof szText);
        EXPECT_STREQ("W20 H10 InvalidMode", szText);
    }
    EXPECT_RAISES(cRescale.ParameterString(szText, 19), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nString-Length exceeded available size");
    cRescale.ParameterString(szText, 20);
}

TEST(IpRescale, PublishesItsParametersWithTheirDefaults)
{
    ClIpRescale cRescale;
    cRescale.m_nNewWidth = 7;
    cRescale.m_eMode = ClIpRescale::ModeBiCubic;
    cRescale.m_dConvParameter1 = 0.5;
    ClParameterContainer cTree;
    cRescale.QueryParameters(cTree);
    const std::pair<const char*, const char*> aDefaults[] = {
        {"pInImage", "NULL"}, {"pOutImage", "NULL"}, {"NewHeight", "0"},        {"NewWidth", "0"},
        {"NewPelsX", "0"},    {"NewPelsY", "0"},     {"eMode", "ModeBiLinear"}, {"dConvParameter1", "-0.75"}};
    ASSERT_EQ(8u, cTree.m_aChildren.Entries());
    unsigned long nIndex = 0;
    for (const auto& [szName, szDefault] : aDefaults)
    {
        EXPECT_STREQ(szName, cTree.m_aChildren[nIndex]->GetName());
        EXPECT_EQ(szDefault, cTree.m_aChildren[nIndex++]->GetDefaultValue());
    }
    EXPECT_EQ("7", cTree.Find("NewWidth")->GetValue());
    EXPECT_EQ("0.5", cTree.Find("dConvParameter1")->GetValue());
    for (const Mode_t eMode : aModes)
    {
        cTree.Find("eMode")->GetEnumInterface()->SetValue(eMode);
        EXPECT_EQ(eMode, cRescale.m_eMode);
    }
    EXPECT_RAISES_CODE(cTree.Find("eMode")->GetEnumInterface()->SetValue(5), -35);
    cTree.Find("NewHeight")->SetValue("12");
    EXPECT_EQ(12, cRescale.m_nNewHeight);
}

TEST(IpRescale, MakesNewObjectsOfItsClass)
{
    ClIpRescale cRescale;
    EXPECT_STREQ("ClIpRescale", cRescale.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cRescale.Create());
    EXPECT_TRUE(typeid(*pNew) == typeid(ClIpRescale));
}
