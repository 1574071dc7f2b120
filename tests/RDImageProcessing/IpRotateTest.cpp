#include "RDImageProcessing/IpRotate.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace
{
constexpr double dQuarterTurn = 1.57; // as callers have it

/// A run's settings.
struct StTurn
{
    ClVector cPivot;
    double dAngle;
    bool bResize;
    bool bInterpolate;
    unsigned char nBackground;
};

long TruncatedFixed(double dValue)
{
    return static_cast<long>(std::trunc(dValue * 4096.0));
}

/// A point turned about the pivot.
ClVector Turned(const StTurn& c, double dX, double dY)
{
    const double dCos = std::cos(c.dAngle);
    const double dSin = std::sin(c.dAngle);
    return ClVector(dCos * (dX - c.cPivot.m_dX) - dSin * (dY - c.cPivot.m_dY) + c.cPivot.m_dX,
                    dCos * (dY - c.cPivot.m_dY) + dSin * (dX - c.cPivot.m_dX) + c.cPivot.m_dY);
}

/// The smallest and the largest coordinates of the turned corners.
struct StBounds
{
    StBounds(const StTurn& c, const ClImage& cIn)
    {
        for (const double dX : {0.0, cIn.m_nWidth - 1.0})
        {
            for (const double dY : {0.0, cIn.m_nHeight - 1.0})
            {
                const ClVector v = Turned(c, dX, dY);
                dMinX = std::min(dMinX, v.m_dX);
                dMaxX = std::max(dMaxX, v.m_dX);
                dMinY = std::min(dMinY, v.m_dY);
                dMaxY = std::max(dMaxY, v.m_dY);
            }
        }
    }
    double dMinX = std::numeric_limits<double>::infinity();
    double dMaxX = -dMinX;
    double dMinY = dMinX;
    double dMaxY = -dMinX;
};

int SampleTurnedTo(const ClImage& cIn, long nX, long nY, bool bInterpolate)
{
    const int x = static_cast<int>(nX / 4096);
    const int y = static_cast<int>(nY / 4096);
    if (!bInterpolate)
    {
        return SampleAt<unsigned char>(cIn, x, y);
    }
    const long wx = nX % 4096;
    const long wy = nY % 4096;
    const long nSum = (4096 - wx) * (4096 - wy) * SampleAt<unsigned char>(cIn, x, y) +
                      wx * (4096 - wy) * SampleAt<unsigned char>(cIn, x + 1, y) +
                      wx * wy * SampleAt<unsigned char>(cIn, x + 1, y + 1) +
                      (4096 - wx) * wy * SampleAt<unsigned char>(cIn, x, y + 1);
    return static_cast<int>(nSum / (4096 * 4096));
}

/// Pixel by pixel, with a test of the four limits each.
void TurnByDefinition(const ClImage& cIn, const StTurn& c, ClImage& cOut, ClVector& cPivotOut)
{
    int nWidth = cIn.m_nWidth;
    int nHeight = cIn.m_nHeight;
    double dShiftX = 0.0;
    double dShiftY = 0.0;
    cPivotOut = c.cPivot;
    if (c.bResize)
    {
        const StBounds cBounds(c, cIn);
        nWidth = static_cast<int>(cBounds.dMaxX + 1.0 - cBounds.dMinX);
        nHeight = static_cast<int>(cBounds.dMaxY + 1.0 - cBounds.dMinY);
        dShiftX = std::trunc(-cBounds.dMinX);
        dShiftY = std::trunc(-cBounds.dMinY);
        cPivotOut = ClVector(nWidth / 2, nHeight / 2);
    }
    cOut.NewWithType((cIn.m_eDataType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, nWidth, nHeight, 1, cIn.m_nXRes,
                     cIn.m_nYRes);
    const auto nCos = static_cast<double>(TruncatedFixed(std::cos(c.dAngle)));
    const auto nSinMinus = static_cast<double>(TruncatedFixed(std::sin(-c.dAngle)));
    const auto nSin = static_cast<double>(TruncatedFixed(std::sin(c.dAngle)));
    for (int y = 0; y < nHeight; ++y)
    {
        const double dX = -c.cPivot.m_dX - dShiftX;
        const double dY = y - c.cPivot.m_dY - dShiftY;
        const long nStartX =
            static_cast<long>(dX * nCos) + static_cast<long>(dY * nSin) + TruncatedFixed(c.cPivot.m_dX);
        const long nStartY =
            static_cast<long>(dX * nSinMinus) + static_cast<long>(dY * nCos) + TruncatedFixed(c.cPivot.m_dY);
        for (int x = 0; x < nWidth; ++x)
        {
            const long nX = nStartX + x * static_cast<long>(nCos);
            const long nY = nStartY + x * static_cast<long>(nSinMinus);
            const bool bSource =
                nX >= 0 && nX < (cIn.m_nWidth - 1) * 4096L && nY >= 0 && nY < (cIn.m_nHeight - 1) * 4096L;
            const int nValue = bSource ? SampleTurnedTo(cIn, nX, nY, c.bInterpolate) : c.nBackground;
            SetSample(cOut, x, y, 0, static_cast<unsigned char>(nValue));
        }
    }
}

long Turn(ClIpRotate& cRotate, ClImage& cIn, ClImage& cOut, const StTurn& c)
{
    cRotate.m_nBackgroundColor = c.nBackground;
    return cRotate.ApplyParam(cIn, cOut, c.cPivot, c.dAngle, c.bResize, c.bInterpolate);
}

void ExpectAsDefined(ClImage& cIn, const StTurn& c)
{
    ClImage cExpected;
    ClVector cPivotOut;
    TurnByDefinition(cIn, c, cExpected, cPivotOut);
    ClIpRotate cRotate;
    ClImage cOut;
    ASSERT_EQ(0, Turn(cRotate, cIn, cOut, c));
    ASSERT_TRUE(SamePixels(cExpected, cOut))
        << cIn.m_nWidth << " by " << cIn.m_nHeight << ", angle " << c.dAngle << ", pivot " << c.cPivot.m_dX << " "
        << c.cPivot.m_dY << (c.bResize ? ", resized" : "") << (c.bInterpolate ? ", interpolated" : "");
    EXPECT_TRUE(SameDescription(cExpected, cOut));
    EXPECT_EQ(cPivotOut.m_dX, cRotate.m_cCenterOut.m_dX);
    EXPECT_EQ(cPivotOut.m_dY, cRotate.m_cCenterOut.m_dY);
}

/// Black discs on white, some 40 pixels across, none of them near the edge.
void DrawDiscs(ClImage& cImage, int nWidth, int nHeight)
{
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 3937, 3937);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const int nX = x % 80 - 40;
            const int nY = y % 60 - 30;
            const bool bInside = nX * nX + nY * nY < 18 * 18 && x < nWidth / 80 * 80 && y < nHeight / 60 * 60;
            SetSample(cImage, x, y, 0, static_cast<unsigned char>(bInside ? 0 : 255));
        }
    }
}

/// Whether the pixel and all its neighbours up to two pixels away are black.
bool IsDeepInside(const ClImage& cImage, int nX, int nY)
{
    for (int y = std::max(nY - 2, 0); y <= std::min(nY + 2, cImage.m_nHeight - 1); ++y)
    {
        for (int x = std::max(nX - 2, 0); x <= std::min(nX + 2, cImage.m_nWidth - 1); ++x)
        {
            if (SampleAt<unsigned char>(cImage, x, y) != 0)
            {
                return false;
            }
        }
    }
    return true;
}

long CountBlack(const ClImage& cImage)
{
    long nCount = 0;
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            nCount += SampleAt<unsigned char>(cImage, x, y) == 0 ? 1 : 0;
        }
    }
    return nCount;
}
} // namespace

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

TEST(IpRotate, RotationByZeroCopiesWhateverElseIsAskedFor)
{
    for (const unsigned char eType : aEveryType)
    {
        ClImage cIn;
        cIn.NewWithType(eType, 5, 3, 2, 19685, 3937);
        FillRandom(cIn, 5);
        cIn.m_nAttribute = 8;
        ClImage cOut;
        ClIpRotate cRotate;
        ASSERT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(1.5, -2), 0.0, true, true));
        EXPECT_TRUE(SamePixels(cIn, cOut));
        EXPECT_TRUE(SameDescription(cIn, cOut));
        EXPECT_NE(cIn.Data(), cOut.Data());
        EXPECT_EQ(1.5, cRotate.m_cCenterOut.m_dX);
        EXPECT_EQ(-2.0, cRotate.m_cCenterOut.m_dY);
    }
}

TEST(IpRotate, AQuarterTurnWithResizingExchangesTheSides)
{
    ClImage cIn;
    FillRandom8(cIn, 300, 200, 6);
    ClImage cOut;
    ClIpRotate cRotate;
    ASSERT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), dQuarterTurn, true, false));
    EXPECT_EQ(200, cOut.m_nWidth);
    EXPECT_EQ(300, cOut.m_nHeight);
    EXPECT_EQ(100.0, cRotate.m_cCenterOut.m_dX);
    EXPECT_EQ(150.0, cRotate.m_cCenterOut.m_dY);
}

TEST(IpRotate, WithoutResizingTheCornersAreBackgroundAndThePivotStays)
{
    ClImage cIn;
    FillRandom8(cIn, 41, 41, 7);
    for (int y = 0; y < 41; ++y)
    {
        for (int x = 0; x < 41; ++x)
        {
            SetSample(cIn, x, y, 0, static_cast<unsigned char>(x == 20 && y == 20 ? 5 : 100));
        }
    }
    ClImage cOut;
    ClIpRotate cRotate;
    ASSERT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(20, 20), 0.785, false, false));
    EXPECT_EQ(41, cOut.m_nWidth);
    EXPECT_EQ(41, cOut.m_nHeight);
    EXPECT_EQ(5, SampleAt<unsigned char>(cOut, 20, 20));
    EXPECT_EQ(20.0, cRotate.m_cCenterOut.m_dX);
    for (const int y : {0, 40})
    {
        for (const int x : {0, 40})
        {
            EXPECT_EQ(128, SampleAt<unsigned char>(cOut, x, y)); // the default background
        }
    }
}

TEST(IpRotate, ResizingLosesNothingAndTransformTellsWhereEverythingIs)
{
    ClImage cIn;
    DrawDiscs(cIn, 251, 194);
    const long nArea = CountBlack(cIn);
    ASSERT_GT(nArea, 8000);
    for (const double dAngle : {0.2, -0.3, 1.1, -1.3, dQuarterTurn, 2.4, -2.9, 3.5})
    {
        for (const bool bInterpolate : {false, true})
        {
            ClImage cOut;
            ClIpRotate cRotate;
            ASSERT_EQ(0, Turn(cRotate, cIn, cOut, {ClVector(0, 0), dAngle, true, bInterpolate, 255}));
            if (!bInterpolate)
            {
                EXPECT_NEAR(double(nArea), double(CountBlack(cOut)), 0.03 * double(nArea)) << "angle " << dAngle;
            }
            ClIpRotate cPoints; // turns no image, as the callers that map boxes have it
            cPoints.m_dRotation = dAngle;
            double dMinX = 0.0; // the corner at the origin stays there
            double dMinY = 0.0;
            for (const ClVector& c : {ClVector(0, 193), ClVector(250, 193), ClVector(250, 0)})
            {
                dMinX = std::min(dMinX, cPoints.Transform(c).m_dX);
                dMinY = std::min(dMinY, cPoints.Transform(c).m_dY);
            }
            const int nShiftX = std::abs(static_cast<int>(dMinX));
            const int nShiftY = std::abs(static_cast<int>(dMinY));
            for (int y = 0; y < cIn.m_nHeight; ++y)
            {
                for (int x = 0; x < cIn.m_nWidth; ++x)
                {
                    if (!IsDeepInside(cIn, x, y))
                    {
                        continue;
                    }
                    const ClVector v = cPoints.Transform(ClVector(x, y));
                    const int nX = static_cast<int>(std::lround(v.m_dX + nShiftX));
                    const int nY = static_cast<int>(std::lround(v.m_dY + nShiftY));
                    ASSERT_TRUE(nX >= 0 && nX < cOut.m_nWidth && nY >= 0 && nY < cOut.m_nHeight);
                    ASSERT_EQ(0, SampleAt<unsigned char>(cOut, nX, nY)) << x << " " << y << " angle " << dAngle;
                }
            }
        }
    }
}

TEST(IpRotate, TransformTurnsAboutThePivotAndMovesToItsPlaceInTheOutput)
{
    ClIpRotate cRotate;
    cRotate.m_cCenter = ClVector(10, 20);
    cRotate.m_cCenterOut = ClVector(100, 200);
    cRotate.m_dRotation = std::acos(-1.0) / 2;
    const ClVector v = cRotate.Transform(ClVector(13, 20)); // three to the right of the pivot: now three above it
    EXPECT_NEAR(100.0, v.m_dX, 1e-12);
    EXPECT_NEAR(203.0, v.m_dY, 1e-12);
    const ClVector w = cRotate.Transform(ClVector(10, 24));
    EXPECT_NEAR(96.0, w.m_dX, 1e-12);
    EXPECT_NEAR(200.0, w.m_dY, 1e-12);
}

TEST(IpRotate, TransformInverseUndoesTransform)
{
    ClTestRandom cRandom(8);
    for (int i = 0; i < 200; ++i)
    {
        ClIpRotate cRotate;
        cRotate.m_cCenter = ClVector(cRandom.Unit() * 900 - 300, cRandom.Unit() * 900 - 300);
        cRotate.m_cCenterOut = ClVector(cRandom.Below(1000), cRandom.Below(1000));
        cRotate.m_dRotation = cRandom.Unit() * 14 - 7;
        const ClVector cPoint(cRandom.Unit() * 2000 - 500, cRandom.Unit() * 2000 - 500);
        const ClVector cBack = cRotate.TransformInverse(cRotate.Transform(cPoint));
        EXPECT_NEAR(cPoint.m_dX, cBack.m_dX, 1e-9);
        EXPECT_NEAR(cPoint.m_dY, cBack.m_dY, 1e-9);
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

TEST(IpRotate, PivotsAndAnglesOutOfAllBoundsGiveBackgroundWithoutHarm)
{
    ClImage cIn;
    FillRandom8(cIn, 9, 7, 15);
    const double dInfinity = std::numeric_limits<double>::infinity();
    for (const double dPivot : {1e9, -1e15, 1e300, -dInfinity, dInfinity, std::nan("")})
    {
        ClImage cOut;
        ClIpRotate cRotate;
        ASSERT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(dPivot, 0), 0.7, false, true));
        EXPECT_EQ(9, cOut.m_nWidth);
    }
    for (const double dAngle : {std::nan(""), dInfinity, 1e300})
    {
        ClImage cOut;
        ClIpRotate cRotate;
        EXPECT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), dAngle, false, false));
        EXPECT_EQ(0, cRotate.ApplyParam(cIn, cOut, ClVector(0, 0), dAngle, true, true));
    }
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
