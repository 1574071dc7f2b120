#pragma once

// Two images on one canvas, pixel by pixel from the definition, for expected values. Samples are numbers of 64 bits and
// more, which hold every value of the eight types.

#include "SampleAccess.hpp"

#include <algorithm>
#include <cstdlib>
#include <type_traits>

inline long double NumberAt(const ClImage& cImage, int nX, int nY, int nPlane)
{
    long double dNumber = 0;
    DispatchSampleType(cImage.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           dNumber = SampleAt<typename decltype(cTag)::Type>(cImage, nX, nY, nPlane);
                           return 0L;
                       });
    return dNumber;
}

__extension__ typedef __int128 ClWide;

/// The low nBits of a number without its fraction, as a signed number. For numbers below 2 to the power of 100.
inline long WrappedByDefinition(long double dNumber, int nBits)
{
    const ClWide nRange = static_cast<ClWide>(1) << nBits;
    ClWide nRest = static_cast<ClWide>(dNumber) % nRange;
    if (nRest < -(nRange / 2))
    {
        nRest += nRange;
    }
    if (nRest >= nRange / 2)
    {
        nRest -= nRange;
    }
    return static_cast<long>(nRest);
}

/// Integers lose the fraction and keep the low bits.
inline void SetNumber(ClImage& cImage, int nX, int nY, int nPlane, long double dNumber)
{
    DispatchSampleType(cImage.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           if constexpr (std::is_floating_point_v<T>)
                           {
                               SetSample(cImage, nX, nY, nPlane, static_cast<T>(dNumber));
                           }
                           else
                           {
                               SetSample(cImage, nX, nY, nPlane, static_cast<T>(WrappedByDefinition(dNumber, 64)));
                           }
                           return 0L;
                       });
}

struct ClTestShift
{
    int nX;
    int nY;
};

/// Lays cIn with its corner at (nX, nY). One plane goes to all of three.
inline void LayByDefinition(const ClImage& cIn, int nX, int nY, ClImage& cOut)
{
    const bool bSpread = cIn.m_nPlanes == 1 && cOut.m_nPlanes == 3;
    if (cIn.m_nPlanes != cOut.m_nPlanes && !bSpread)
    {
        return;
    }
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            for (int i = 0; i < cOut.m_nPlanes; ++i)
            {
                SetNumber(cOut, nX + x, nY + y, i, NumberAt(cIn, x, y, bSpread ? 0 : i));
            }
        }
    }
}

/// The canvas of two images, with combine(a, b) where they overlap.
template <class Combine>
void CanvasByDefinition(const ClImage& cIn1, const ClImage& cIn2, ClTestShift cShift, double dFill,
                        unsigned char nOutType, ClImage& cOut, Combine&& combine)
{
    const int ax = std::abs(cShift.nX);
    const int ay = std::abs(cShift.nY);
    const int nWidth =
        cShift.nX < 0 ? std::max(cIn2.m_nWidth, ax + cIn1.m_nWidth) : std::max(cIn1.m_nWidth, ax + cIn2.m_nWidth);
    const int nHeight =
        cShift.nY < 0 ? std::max(cIn2.m_nHeight, ay + cIn1.m_nHeight) : std::max(cIn1.m_nHeight, ay + cIn2.m_nHeight);
    cOut.NewWithType(nOutType, nWidth, nHeight, cIn1.m_nPlanes, cIn1.m_nXRes, cIn1.m_nYRes);
    cOut.m_nAttribute = cIn1.m_nAttribute;
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            for (int i = 0; i < cOut.m_nPlanes; ++i)
            {
                SetNumber(cOut, x, y, i, dFill);
            }
        }
    }
    const int x1 = cShift.nX < 0 ? ax : 0;
    const int y1 = cShift.nY < 0 ? ay : 0;
    const int x2 = cShift.nX > 0 ? ax : 0;
    const int y2 = cShift.nY > 0 ? ay : 0;
    LayByDefinition(cIn1, x1, y1, cOut);
    LayByDefinition(cIn2, x2, y2, cOut);
    if (cIn1.m_nPlanes != cIn2.m_nPlanes && !(cIn1.m_nPlanes == 3 && cIn2.m_nPlanes == 1))
    {
        return;
    }
    for (int y = ay; y < std::min(cIn1.m_nHeight, cIn2.m_nHeight); ++y)
    {
        for (int x = ax; x < std::min(cIn1.m_nWidth, cIn2.m_nWidth); ++x)
        {
            for (int i = 0; i < cOut.m_nPlanes; ++i)
            {
                const long double a = NumberAt(cIn1, x - x1, y - y1, i);
                const long double b = NumberAt(cIn2, x - x2, y - y2, cIn2.m_nPlanes == 1 ? 0 : i);
                SetNumber(cOut, x, y, i, combine(a, b));
            }
        }
    }
}

inline void MakeRandom(ClImage& cImage, unsigned char nType, int nWidth, int nHeight, int nPlanes, unsigned int nSeed)
{
    cImage.NewWithType(nType, nWidth, nHeight, nPlanes, 19685, 3937);
    cImage.m_nAttribute = 7;
    FillRandom(cImage, nSeed);
}

/// fn(type of input 1, type of input 2, type of the output) for all 512.
template <class Fn> void ForEachTypeTriple(Fn&& fn)
{
    for (const unsigned char nType1 : aEveryType)
    {
        for (const unsigned char nType2 : aEveryType)
        {
            for (const unsigned char nOutType : aEveryType)
            {
                SCOPED_TRACE("types " + std::to_string(nType1) + ", " + std::to_string(nType2) + " to " +
                             std::to_string(nOutType));
                fn(nType1, nType2, nOutType);
            }
        }
    }
}
