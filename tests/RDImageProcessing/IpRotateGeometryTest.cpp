// Where ClIpRotate puts a picture and its points.

#include "RDImageProcessing/IpRotate.hpp"

#include "RotateDefinitions.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

using namespace RotateDefinitions;

namespace
{
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
