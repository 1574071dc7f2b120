#pragma once

// Samples by their place, slowly and without the row pointers of the library: for expected values.

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <initializer_list>
#include <string>

/// Address of sample nPlane of pixel (nX, nY).
inline unsigned char* SampleAddress(const ClImage& cImage, int nX, int nY, int nPlane = 0)
{
    const long nSize = cImage.m_eDataType & 31;
    const long nStride = (cImage.m_nPlanes * cImage.m_nWidth * nSize + 3) / 4 * 4;
    return cImage.m_pData.get() + nY * nStride + (long(nX) * cImage.m_nPlanes + nPlane) * nSize;
}

template <class T> T SampleAt(const ClImage& cImage, int nX, int nY, int nPlane = 0)
{
    T value;
    std::memcpy(&value, SampleAddress(cImage, nX, nY, nPlane), sizeof value);
    return value;
}

template <class T> void SetSample(ClImage& cImage, int nX, int nY, int nPlane, T value)
{
    std::memcpy(SampleAddress(cImage, nX, nY, nPlane), &value, sizeof value);
}

constexpr unsigned char aEveryType[] = {ClImage::eUInt8,  ClImage::eUInt16, ClImage::eUInt32,  ClImage::eSInt8,
                                        ClImage::eSInt16, ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64};

struct ClTestSize
{
    int nWidth;
    int nHeight;
};
constexpr ClTestSize aTestSizes[] = {{1, 1}, {1, 7}, {2, 3}, {3, 1}, {5, 4}, {16, 9}, {31, 6}, {67, 53}};

/// fn(image of random samples, tag of its sample type) for every type, size and one to nMaxPlanes planes. The images
/// have a resolution and an attribute of their own.
template <class Fn> void ForEachRandomImage(int nMaxPlanes, Fn&& fn)
{
    unsigned int nSeed = 1;
    for (const unsigned char eType : aEveryType)
    {
        for (const ClTestSize& cSize : aTestSizes)
        {
            for (int nPlanes = 1; nPlanes <= nMaxPlanes; ++nPlanes)
            {
                ClImage cImage;
                cImage.NewWithType(eType, cSize.nWidth, cSize.nHeight, nPlanes, 19685, 3937);
                cImage.m_nAttribute = 7;
                FillRandom(cImage, nSeed++);
                SCOPED_TRACE("type " + std::to_string(eType) + ", " + std::to_string(cSize.nWidth) + " by " +
                             std::to_string(cSize.nHeight) + " by " + std::to_string(nPlanes));
                DispatchSampleType(eType, 0,
                                   [&](auto cTag)
                                   {
                                       fn(cImage, cTag);
                                       return 0L;
                                   });
            }
        }
    }
}

/// A one-plane 8-bit image from rows of text: '#' is 0, '.' is 255, a digit n is n. Row 0 is the first text.
inline void PaintText(ClImage& cImage, std::initializer_list<const char*> aRows)
{
    const int nWidth = static_cast<int>(std::strlen(*aRows.begin()));
    cImage.NewWithType(ClImage::eUInt8, nWidth, static_cast<int>(aRows.size()), 1, 3937, 3937);
    int y = 0;
    for (const char* szRow : aRows)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const char c = szRow[x];
            SetSample(cImage, x, y, 0, static_cast<unsigned char>(c == '#' ? 0 : c == '.' ? 255 : c - '0'));
        }
        ++y;
    }
}

/// Counts the runs of all processors that are made while it lives and that have their timer on.
class ClRunCounter : public ClProfileTimer
{
public:
    ClRunCounter() { g_pProfileTimer = this; }
    ~ClRunCounter() override { g_pProfileTimer = nullptr; }
    void TimerStart(const char*, ...) override { ++m_nRuns; }

    int m_nRuns = 0;
};
