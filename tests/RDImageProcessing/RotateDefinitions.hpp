#pragma once

#include "RDImageProcessing/IpRotate.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

/// The rotation by definition, pixel by pixel.
namespace RotateDefinitions
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

inline long TruncatedFixed(double dValue)
{
    return static_cast<long>(std::trunc(dValue * 4096.0));
}

/// A point turned about the pivot.
inline ClVector Turned(const StTurn& c, double dX, double dY)
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

inline int SampleTurnedTo(const ClImage& cIn, long nX, long nY, bool bInterpolate)
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
inline void TurnByDefinition(const ClImage& cIn, const StTurn& c, ClImage& cOut, ClVector& cPivotOut)
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

inline long Turn(ClIpRotate& cRotate, ClImage& cIn, ClImage& cOut, const StTurn& c)
{
    cRotate.m_nBackgroundColor = c.nBackground;
    return cRotate.ApplyParam(cIn, cOut, c.cPivot, c.dAngle, c.bResize, c.bInterpolate);
}

inline void ExpectAsDefined(ClImage& cIn, const StTurn& c)
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
} // namespace RotateDefinitions
