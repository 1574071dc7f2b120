#pragma once

// Random pictures of black objects, and their objects by definition.

#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <utility>
#include <vector>

using Pixel = std::pair<int, int>; ///< column, row

/// A one-plane 8-bit image of 0 and 255; nBlackPercent of the pixels are 0. Padding is 0, too, so that code which takes
/// it for pixels is seen.
inline void FillBinary(ClImage& cImage, int nWidth, int nHeight, int nBlackPercent, unsigned int nSeed)
{
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 3937, 3937);
    std::memset(cImage.Data(), 0, static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(nHeight));
    ClTestRandom cRandom(nSeed);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            SetSample<unsigned char>(cImage, x, y, 0, cRandom.Below(100) < nBlackPercent ? 0 : 255);
        }
    }
}

/// A picture whose pixel (x, y) is 0 where isBlack(x, y) holds and 255 elsewhere; padding is 0.
template <class Fn> void FillPattern(ClImage& cImage, int nWidth, int nHeight, Fn&& isBlack)
{
    FillBinary(cImage, nWidth, nHeight, 0, 1);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            SetSample<unsigned char>(cImage, x, y, 0, isBlack(x, y) ? 0 : 255);
        }
    }
}

struct ClBinaryPattern
{
    const char* szName;
    bool (*pIsBlack)(int x, int y);
};
constexpr ClBinaryPattern aBinaryPatterns[] = {
    {"vertical stripes of 1", [](int x, int) { return x % 2 == 0; }},
    {"vertical stripes of 5", [](int x, int) { return x % 10 >= 5; }},
    {"horizontal stripes", [](int, int y) { return y % 2 == 0; }},
    {"checkerboard of 1", [](int x, int y) { return (x + y) % 2 == 0; }},
    {"checkerboard of 3", [](int x, int y) { return (x / 3 + y / 3) % 2 == 0; }},
    {"checkerboard of 64", [](int x, int y) { return (x / 64 + y / 2) % 2 == 0; }},
    {"comb", [](int x, int y) { return y == 0 || x % 3 == 0; }},
    {"comb from above", [](int x, int y) { return y > 5 || x % 3 == 0; }},
    {"snake", [](int x, int y) { return y % 2 == 0 || x == (y % 4 == 1 ? 0 : 4); }},
    {"blobs", [](int x, int y) { return (x % 23 - 11) * (x % 23 - 11) + (y % 9 - 4) * (y % 9 - 4) * 4 < 90; }},
    {"holes", [](int x, int y) { return (x % 23 - 11) * (x % 23 - 11) + (y % 9 - 4) * (y % 9 - 4) * 4 >= 90; }},
};

/// fn(image) for pictures of many sizes and densities, and for every pattern at each width from 1 to 70 and some more.
template <class Fn> void ForEachBinaryPicture(Fn&& fn)
{
    unsigned int nSeed = 1;
    ClImage cImage;
    for (const ClTestSize& cSize : aTestSizes)
    {
        for (const int nPercent : {0, 20, 50, 60, 70, 90, 100})
        {
            FillBinary(cImage, cSize.nWidth, cSize.nHeight, nPercent, nSeed++);
            SCOPED_TRACE(std::to_string(cSize.nWidth) + " by " + std::to_string(cSize.nHeight) + ", " +
                         std::to_string(nPercent) + " percent black");
            fn(cImage);
        }
    }
    for (int nWidth = 1; nWidth <= 73; ++nWidth)
    {
        const int nWide = nWidth <= 70 ? nWidth : 57 * (nWidth - 69) + nWidth; // up to 305
        SCOPED_TRACE(std::to_string(nWide) + " columns");
        for (const ClBinaryPattern& cPattern : aBinaryPatterns)
        {
            SCOPED_TRACE(cPattern.szName);
            FillPattern(cImage, nWide, 1 + nWidth % 14, cPattern.pIsBlack);
            fn(cImage);
        }
        FillBinary(cImage, nWide, 1 + nWidth % 8, 10 + nWidth, nSeed++);
        fn(cImage);
    }
}

/// The four-connected pixels of the same 8-bit value around a pixel, in no order.
inline std::vector<Pixel> RegionOf(const ClImage& cImage, int nX, int nY)
{
    const unsigned char nValue = SampleAt<unsigned char>(cImage, nX, nY);
    std::vector<bool> abSeen(static_cast<std::size_t>(cImage.m_nWidth) * static_cast<std::size_t>(cImage.m_nHeight));
    std::vector<Pixel> aRegion;
    const auto visit = [&](int x, int y)
    {
        if (x < 0 || x >= cImage.m_nWidth || y < 0 || y >= cImage.m_nHeight)
        {
            return;
        }
        const std::size_t nIndex =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(cImage.m_nWidth) + static_cast<std::size_t>(x);
        if (!abSeen[nIndex] && SampleAt<unsigned char>(cImage, x, y) == nValue)
        {
            abSeen[nIndex] = true;
            aRegion.emplace_back(x, y);
        }
    };
    visit(nX, nY);
    for (std::size_t i = 0; i < aRegion.size(); ++i)
    {
        const auto [x, y] = aRegion[i];
        visit(x - 1, y);
        visit(x + 1, y);
        visit(x, y - 1);
        visit(x, y + 1);
    }
    return aRegion;
}

/// The label image by definition: regions of 0 numbered by their first pixels. Returns the number of labels.
inline int LabelByDefinition(const ClImage& cIn, ClImage& cLabels)
{
    cLabels.NewWithType(ClImage::eSInt32, cIn.m_nWidth, cIn.m_nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
    std::memset(cLabels.Data(), 0,
                static_cast<std::size_t>(cLabels.Stride()) * static_cast<std::size_t>(cLabels.m_nHeight));
    int nLabels = 0;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            if (SampleAt<unsigned char>(cIn, x, y) == 0 && SampleAt<int>(cLabels, x, y) == 0)
            {
                ++nLabels;
                for (const auto& [nX, nY] : RegionOf(cIn, x, y))
                {
                    SetSample(cLabels, nX, nY, 0, nLabels);
                }
            }
        }
    }
    return nLabels;
}
