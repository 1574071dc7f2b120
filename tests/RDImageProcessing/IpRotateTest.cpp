#include "RDImageProcessing/IpRotate.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RotateDefinitions.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

using namespace RotateDefinitions;

TEST(IpRotate, AgreesWithThePixelByPixelDefinition)
{
    ClTestRandom cRandom(1);
    for (const ClTestSize& cSize : aTestSizes)
    {
        ClImage cIn;
        FillRandom8(cIn, cSize.nWidth, cSize.nHeight, cRandom.Next());
        cIn.m_nXRes = 19685;
        cIn.m_nYRes = 3937;
        for (int i = 0; i < 60; ++i)
        {
            StTurn c;
            c.dAngle = (cRandom.Unit() - 0.5) * 14.0;
            c.bResize = (i & 1) != 0;
            c.bInterpolate = (i & 2) != 0;
            c.nBackground = static_cast<unsigned char>(cRandom.Below(256));
            switch (i % 5)
            {
            case 0: break; // the corner
            case 1: c.cPivot = ClVector(cSize.nWidth / 2, cSize.nHeight / 2); break;
            case 2: c.cPivot = ClVector(cRandom.Unit() * cSize.nWidth, cRandom.Unit() * cSize.nHeight); break;
            case 3: c.cPivot = ClVector(cRandom.Below(400) - 200, cRandom.Below(400) - 200); break;
            default: c.cPivot = ClVector(cSize.nWidth - 0.5, -0.25); break;
            }
            ExpectAsDefined(cIn, c);
        }
    }
}

TEST(IpRotate, AgreesWithTheDefinitionAtAnglesWithASmallOrNoStep)
{
    const double dPi = std::acos(-1.0);
    ClImage cIn;
    FillRandom8(cIn, 67, 53, 2);
    for (const double dAngle : {1e-9, 1e-4, 2.5e-4, -2.5e-4, 0.001, dQuarterTurn, -dQuarterTurn, dPi / 2, -dPi / 2, dPi,
                                -dPi, 2 * dPi, dPi / 4, 3.14, 4.71, 1.5706, 1.571})
    {
        for (int i = 0; i < 8; ++i)
        {
            ExpectAsDefined(cIn, {i < 4 ? ClVector(0, 0) : ClVector(33, 26), dAngle, (i & 1) != 0, (i & 2) != 0, 77});
        }
    }
}

TEST(IpRotate, AgreesWithTheDefinitionWhereOneStepPassesManyPixels)
{
    ClImage cWide;
    FillRandom8(cWide, 40000, 3, 3); // source positions beyond 2^27
    for (const double dAngle : {2e-5, -2e-5, 3e-4, -3e-4})
    {
        ExpectAsDefined(cWide, {ClVector(0, 0), dAngle, true, false, 255});
        ExpectAsDefined(cWide, {ClVector(39999, 2), dAngle, false, true, 255});
    }
}

TEST(IpRotate, ASideOfOnePixelHasNoSource)
{
    for (const auto& [nWidth, nHeight] : {std::pair(1, 1), std::pair(1, 9), std::pair(9, 1)})
    {
        ClImage cIn;
        FillRandom8(cIn, nWidth, nHeight, 4);
        ClImage cOut;
        ClIpRotate cRotate;
        ASSERT_EQ(0, Turn(cRotate, cIn, cOut, {ClVector(0, 0), 0.1, true, true, 9}));
        for (int y = 0; y < cOut.m_nHeight; ++y)
        {
            for (int x = 0; x < cOut.m_nWidth; ++x)
            {
                EXPECT_EQ(9, SampleAt<unsigned char>(cOut, x, y));
            }
        }
    }
}

TEST(IpRotate, EveryByteThatHasNoSourceIsBackgroundPaddingIncluded)
{
    ClImage cIn;
    FillRandom8(cIn, 5, 5, 9);
    for (const unsigned char nBackground : {static_cast<unsigned char>(0), static_cast<unsigned char>(200)})
    {
        ClImage cOut;
        ClIpRotate cRotate;
        ASSERT_EQ(0, Turn(cRotate, cIn, cOut, {ClVector(2, 2), 1.0, false, false, nBackground}));
        for (int y = 0; y < 5; ++y)
        {
            for (int i = 5; i < 8; ++i)
            {
                EXPECT_EQ(nBackground, cOut.Data()[8 * y + i]);
            }
        }
    }
}

TEST(IpRotate, SignedSamplesStaySigned)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eSInt8, 31, 16, 1, 0, 0);
    FillRandom(cIn, 10);
    ExpectAsDefined(cIn, {ClVector(3, 4), 0.7, true, false, 128});
}

TEST(IpRotate, WiderSamplesAreReadAsBytesAndNeedABlackBackground)
{
    for (const unsigned char eType : {ClImage::eUInt16, ClImage::eSInt16, ClImage::eFloat32, ClImage::eDouble64})
    {
        ClImage cIn;
        cIn.NewWithType(eType, 21, 16, 1, 0, 0);
        FillRandom(cIn, 11);
        ClImage cOut(1, 1, 1, 0, 0);
        ClIpRotate cRotate;
        EXPECT_RAISES(cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), 0.7, true, false), ClException, FPC_ERROR_INTERNAL,
                      "Internal error.\nImage Type is not the assigned type");
        cRotate.m_nBackgroundColor = 0;
        ASSERT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), 0.7, true, false));
        EXPECT_EQ((eType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, cOut.m_eDataType);

        // The same bytes as an 8-bit image: the columns are bytes of the row.
        ClImage cBytes;
        cBytes.NewWithType(cOut.m_eDataType, 21, 16, 1, 0, 0);
        for (int y = 0; y < 16; ++y)
        {
            for (int x = 0; x < 21; ++x)
            {
                SetSample(cBytes, x, y, 0, SampleAddress(cIn, 0, y)[x]);
            }
        }
        ClImage cExpected;
        ClVector cIgnored;
        TurnByDefinition(cBytes, {ClVector(0, 0), 0.7, true, false, 0}, cExpected, cIgnored);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpRotate, TheOutputMayBeTheInput)
{
    ClImage cImage;
    FillRandom8(cImage, 31, 22, 12);
    ClImage cExpected;
    ClVector cIgnored;
    const StTurn c{ClVector(5, 6), -0.4, true, true, 3};
    TurnByDefinition(cImage, c, cExpected, cIgnored);
    ClIpRotate cRotate;
    ASSERT_EQ(0, Turn(cRotate, cImage, cImage, c));
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(IpRotate, PlanesAreTurnedOneByOne)
{
    for (const int nPlanes : {2, 3, 4})
    {
        for (const bool bPlaneBackground : {false, true})
        {
            ClImage cIn;
            cIn.NewWithType(ClImage::eUInt8, 17, 12, nPlanes, 19685, 3937);
            FillRandom(cIn, 13);
            ClImage cBefore;
            cBefore = cIn;
            ClIpRotate cRotate;
            cRotate.m_bPlaneBackground = bPlaneBackground;
            for (int p = 0; p < 4; ++p)
            {
                EXPECT_EQ(128, cRotate.m_anPlaneBackground[p]);
                cRotate.m_anPlaneBackground[p] = static_cast<unsigned char>(10 + p);
            }
            ClImage cOut;
            StTurn c{ClVector(4, -3), 0.9, true, false, 99};
            ASSERT_EQ(0, Turn(cRotate, cIn, cOut, c));
            EXPECT_EQ(99, cRotate.m_nBackgroundColor);
            EXPECT_EQ(&cIn, cRotate.m_pInImage);
            EXPECT_EQ(&cOut, cRotate.m_pOutImage);
            EXPECT_TRUE(SamePixels(cBefore, cIn));
            EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
            EXPECT_EQ(19685, cOut.m_nXRes);
            ASSERT_EQ(nPlanes, cOut.m_nPlanes);
            ClVector cPivotOut;
            for (int p = 0; p < nPlanes; ++p)
            {
                ClImage cPlane;
                ClImage cExpected;
                ClImage cActual;
                cIn.GetPlane(p, cPlane);
                c.nBackground = static_cast<unsigned char>(bPlaneBackground ? 10 + p : 99);
                TurnByDefinition(cPlane, c, cExpected, cPivotOut);
                cOut.GetPlane(p, cActual);
                EXPECT_TRUE(SamePixels(cExpected, cActual)) << "plane " << p << " of " << nPlanes;
            }
            EXPECT_EQ(cPivotOut.m_dX, cRotate.m_cCenterOut.m_dX);
            EXPECT_EQ(cPivotOut.m_dY, cRotate.m_cCenterOut.m_dY);
        }
    }
}

TEST(IpRotate, EveryTypeSizeAndContentIsTurnedPlaneByPlane)
{
    const std::pair<ClImage::EContent, int> aContents[] = {
        {ClImage::eUnknown, 0}, {ClImage::eRGB, 3}, {ClImage::eRGBA, 4}, {ClImage::eGrayscale, 1}, {ClImage::eHSV, 3}};
    int n = 0;
    ForEachRandomImage(
        4,
        [&](ClImage& cIn, auto)
        {
            const auto [eContent, nOfContent] = aContents[++n % 5];
            if (cIn.m_nPlanes == 1)
            {
                return;
            }
            cIn.m_eContent = eContent;
            const int nPlanes = nOfContent == 0 ? cIn.m_nPlanes : nOfContent;
            const StTurn c{ClVector(2, 1.5), 0.3 * n, n % 2 == 0, n % 3 == 0, 0};
            ClImage cOut;
            ClIpRotate cRotate;
            ASSERT_EQ(0, Turn(cRotate, cIn, cOut, c));
            ASSERT_EQ(nPlanes, cOut.m_nPlanes);
            EXPECT_EQ((cIn.m_eDataType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, cOut.m_eDataType);
            for (int p = 0; p < nPlanes; ++p)
            {
                ClImage cPlane, cBytes, cExpected, cActual;
                cIn.GetPlane(std::min(p, cIn.m_nPlanes - 1), cPlane);
                cBytes.NewWithType(cOut.m_eDataType, cIn.m_nWidth, cIn.m_nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
                for (int y = 0; y < cIn.m_nHeight; ++y)
                {
                    for (int x = 0; x < cIn.m_nWidth; ++x)
                    {
                        // wider samples are read as the first bytes of their row; what the input has not is black
                        const unsigned char nByte = p < cIn.m_nPlanes ? SampleAddress(cPlane, 0, y)[x] : 0;
                        SetSample(cBytes, x, y, 0, nByte);
                    }
                }
                ClVector cPivotOut;
                TurnByDefinition(cBytes, c, cExpected, cPivotOut);
                cOut.GetPlane(p, cActual);
                ASSERT_TRUE(SamePixels(cExpected, cActual)) << "plane " << p;
                EXPECT_EQ(cIn.m_nXRes, cOut.m_nXRes);
            }
        });
}

TEST(IpRotate, AFailureAmongThePlanesPutsTheSettingsBack)
{
    ClImage cIn;
    cIn.NewWithType(ClImage::eUInt16, 8, 6, 3, 0, 0);
    FillRandom(cIn, 14);
    ClImage cOut;
    ClIpRotate cRotate;
    cRotate.m_bPlaneBackground = true; // these decide, not the common background
    std::fill_n(cRotate.m_anPlaneBackground, 4, static_cast<unsigned char>(0));
    cRotate.m_nBackgroundColor = 128;
    EXPECT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), 0.7, true, false));
    cRotate.m_anPlaneBackground[1] = 7;
    cRotate.m_nBackgroundColor = 0;
    EXPECT_RAISES_CODE(cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), 0.7, true, false), FPC_ERROR_INTERNAL);
    EXPECT_EQ(0, cRotate.m_nBackgroundColor);
    EXPECT_EQ(&cIn, cRotate.m_pInImage);
    EXPECT_EQ(&cOut, cRotate.m_pOutImage);
}

TEST(IpRotate, MissingImagesAreReturned)
{
    ClIpRotate cRotate;
    ClImage cImage(4, 4, 1, 0, 0);
    cRotate.m_cCenter = ClVector(3, 5);
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRotate.Apply());
    EXPECT_EQ(3.0, cRotate.m_cCenterOut.m_dX);
    EXPECT_EQ(5.0, cRotate.m_cCenterOut.m_dY);
    cRotate.m_pInImage = &cImage;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRotate.Apply());
    cRotate.m_pInImage = nullptr;
    cRotate.m_pOutImage = &cImage;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cRotate.Apply());
}

TEST(IpRotate, AnImageWithoutPixelsHasNoSource)
{
    ClImage cEmpty(10, 0, 1, 0, 0);
    ClImage cOut;
    ClIpRotate cRotate;
    ASSERT_EQ(0, cRotate.ApplyParam(cEmpty, cOut, ClVector(0, 0), 0.3, true, false));
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        for (int x = 0; x < cOut.m_nWidth; ++x)
        {
            EXPECT_EQ(128, SampleAt<unsigned char>(cOut, x, y));
        }
    }
}

TEST(IpRotate, SettingsAsAText)
{
    ClIpRotate cRotate;
    char szText[32];
    cRotate.m_dRotation = 0.12345;
    cRotate.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("0.123rad Resize", szText);
    cRotate.m_bInterpolate = true;
    cRotate.ParameterString(szText, sizeof szText);
    EXPECT_STREQ("0.123rad Interpolate", szText);
    cRotate.m_bInterpolate = false;
    cRotate.m_bResizeOutImage = false;
    cRotate.ParameterString(szText, 10);
    EXPECT_STREQ("0.123rad ", szText);
    EXPECT_RAISES(cRotate.ParameterString(szText, 9), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nString-Length exceeded available size");
}

TEST(IpRotate, PublishesItsParametersWithTheirDefaults)
{
    ClIpRotate cRotate;
    cRotate.m_cCenter = ClVector(1, 2);
    cRotate.m_dRotation = 0.5;
    cRotate.m_bResizeOutImage = false;
    cRotate.m_nBackgroundColor = 255;
    ClParameterContainer cTree;
    cRotate.QueryParameters(cTree);
    const std::pair<const char*, const char*> aDefaults[] = {{"pInImage", "NULL"},     {"pOutImage", "NULL"},
                                                             {"Rotation", "0.0"},      {"ResizeOutImage", "True"},
                                                             {"Interpolate", "False"}, {"BackgroundColor", "128"}};
    unsigned long nIndex = 0;
    ASSERT_EQ(6u, cTree.m_aChildren.Entries());
    for (const auto& [szName, szDefault] : aDefaults)
    {
        EXPECT_STREQ(szName, cTree.m_aChildren[nIndex]->GetName());
        EXPECT_EQ(szDefault, cTree.m_aChildren[nIndex++]->GetDefaultValue());
    }
    EXPECT_EQ("0.5", cTree.Find("Rotation")->GetValue());
    EXPECT_EQ("False", cTree.Find("ResizeOutImage")->GetValue());
    EXPECT_EQ("255", cTree.Find("BackgroundColor")->GetValue());
    cTree.Find("Interpolate")->SetValue("true");
    EXPECT_TRUE(cRotate.m_bInterpolate);
    cTree.SetToDefault();
    EXPECT_EQ(128, cRotate.m_nBackgroundColor);
    EXPECT_EQ(2.0, cRotate.m_cCenter.m_dY); // no parameter
}

TEST(IpRotate, MakesNewObjectsOfItsClass)
{
    ClIpRotate cRotate;
    EXPECT_STREQ("ClIpRotate", cRotate.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cRotate.Create());
    EXPECT_TRUE(typeid(*pNew) == typeid(ClIpRotate));
}
