#include "TestTools.hpp"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace
{
template <class T> T RandomSample(ClTestRandom& cRandom)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return static_cast<T>(cRandom.Unit() * 2000.0 - 1000.0);
    }
    else
    {
        return static_cast<T>(cRandom.Next() >> (32 - 8 * sizeof(T)));
    }
}

template <class T> testing::AssertionResult SameSamples(const ClImage& cExpected, const ClImage& cActual)
{
    constexpr int nMostNamed = 5;
    int nDifferences = 0;
    testing::AssertionResult cResult = testing::AssertionFailure();
    for (int y = 0; y < cExpected.m_nHeight; ++y)
    {
        const T* pExpected = Row<T>(cExpected, y);
        const T* pActual = Row<T>(cActual, y);
        for (int i = 0; i < cExpected.m_nWidth * cExpected.m_nPlanes; ++i)
        {
            if (std::memcmp(pExpected + i, pActual + i, sizeof(T)) != 0 && nDifferences++ < nMostNamed)
            {
                cResult << "\n  x " << i / cExpected.m_nPlanes << ", y " << y << ", plane " << i % cExpected.m_nPlanes
                        << ": expected " << +pExpected[i] << ", got " << +pActual[i];
            }
        }
    }
    if (nDifferences == 0)
    {
        return testing::AssertionSuccess();
    }
    return cResult << "\n  " << nDifferences << " samples of " << cExpected.m_nWidth << " by " << cExpected.m_nHeight
                   << " by " << cExpected.m_nPlanes << " differ";
}
} // namespace

void FillRandom8(ClImage& cImage, int nWidth, int nHeight, unsigned int nSeed)
{
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
    FillRandom(cImage, nSeed);
}

void FillRandom(ClImage& cImage, unsigned int nSeed)
{
    ClTestRandom cRandom(nSeed);
    DispatchSampleType(cImage.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           const int nSamples = cImage.m_nWidth * cImage.m_nPlanes;
                           for (int y = 0; y < cImage.m_nHeight; ++y)
                           {
                               T* pRow = Row<T>(cImage, y);
                               for (int x = 0; x < nSamples; ++x)
                               {
                                   pRow[x] = RandomSample<T>(cRandom);
                               }
                               unsigned char* pEnd = reinterpret_cast<unsigned char*>(pRow) + cImage.Stride();
                               for (auto* p = reinterpret_cast<unsigned char*>(pRow + nSamples); p < pEnd; ++p)
                               {
                                   *p = RandomSample<unsigned char>(cRandom);
                               }
                           }
                           return 0L;
                       });
}

testing::AssertionResult SamePixels(const ClImage& cExpected, const ClImage& cActual)
{
    if (cExpected.m_eDataType != cActual.m_eDataType || cExpected.m_nWidth != cActual.m_nWidth ||
        cExpected.m_nHeight != cActual.m_nHeight || cExpected.m_nPlanes != cActual.m_nPlanes)
    {
        return testing::AssertionFailure()
               << "expected type " << +cExpected.m_eDataType << ", " << cExpected.m_nWidth << " by "
               << cExpected.m_nHeight << " by " << cExpected.m_nPlanes << ", got type " << +cActual.m_eDataType << ", "
               << cActual.m_nWidth << " by " << cActual.m_nHeight << " by " << cActual.m_nPlanes;
    }
    if (cExpected.m_nWidth * cExpected.m_nHeight * cExpected.m_nPlanes == 0)
    {
        return testing::AssertionSuccess();
    }
    if (cExpected.Data() == nullptr || cActual.Data() == nullptr)
    {
        return testing::AssertionFailure()
               << (cActual.Data() == nullptr ? "the result" : "the expected image") << " has no pixels";
    }
    testing::AssertionResult cResult = testing::AssertionFailure() << "the sample type is none of the eight";
    DispatchSampleType(cExpected.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           cResult = SameSamples<typename decltype(cTag)::Type>(cExpected, cActual);
                           return 0L;
                       });
    return cResult;
}

testing::AssertionResult SameDescription(const ClImage& cExpected, const ClImage& cActual)
{
    testing::AssertionResult cResult = testing::AssertionFailure();
    bool bSame = true;
    const auto compare = [&](const char* szField, double dExpected, double dActual)
    {
        const bool bBothNaN = dExpected != dExpected && dActual != dActual;
        if (dExpected != dActual && !bBothNaN)
        {
            bSame = false;
            cResult << "\n  " << szField << ": expected " << dExpected << ", got " << dActual;
        }
    };
    compare("m_eDataType", cExpected.m_eDataType, cActual.m_eDataType);
    compare("m_eContent", cExpected.m_eContent, cActual.m_eContent);
    compare("m_nWidth", cExpected.m_nWidth, cActual.m_nWidth);
    compare("m_nHeight", cExpected.m_nHeight, cActual.m_nHeight);
    compare("m_nXRes", cExpected.m_nXRes, cActual.m_nXRes);
    compare("m_nYRes", cExpected.m_nYRes, cActual.m_nYRes);
    compare("m_nPlanes", cExpected.m_nPlanes, cActual.m_nPlanes);
    compare("m_dBlack", cExpected.m_dBlack, cActual.m_dBlack);
    compare("m_dWhite", cExpected.m_dWhite, cActual.m_dWhite);
    compare("m_nAttribute", cExpected.m_nAttribute, cActual.m_nAttribute);
    return bSame ? testing::AssertionSuccess() : cResult;
}

void PutLong(unsigned char* pBlock, std::size_t nOffset, std::uint32_t nValue)
{
    for (std::size_t i = 0; i < 4; ++i)
    {
        pBlock[nOffset + i] = static_cast<unsigned char>(nValue >> (8 * i));
    }
}

void PutShort(unsigned char* pBlock, std::size_t nOffset, std::uint16_t nValue)
{
    pBlock[nOffset] = static_cast<unsigned char>(nValue);
    pBlock[nOffset + 1] = static_cast<unsigned char>(nValue >> 8);
}

ClGuardedVector PackedBitmap(int nWidth, int nHeight, int nBitCount, int nCompression, unsigned int nClrUsed,
                             unsigned int nSeed)
{
    const std::size_t nEntries = nClrUsed != 0       ? nClrUsed
                                 : nBitCount <= 8    ? std::size_t(1) << nBitCount
                                 : nCompression == 3 ? 3
                                                     : 0;
    const std::size_t nRow = (static_cast<std::size_t>(nBitCount) * static_cast<std::size_t>(nWidth) + 31) / 32 * 4;
    const std::size_t nPixels = nRow * static_cast<std::size_t>(nHeight);
    ClGuardedVector aBlock(40 + 4 * nEntries + nPixels);
    unsigned char* p = aBlock.data();
    PutLong(p, 0, 40);
    PutLong(p, 4, static_cast<std::uint32_t>(nWidth));
    PutLong(p, 8, static_cast<std::uint32_t>(nHeight));
    PutShort(p, 12, 1);
    PutShort(p, 14, static_cast<std::uint16_t>(nBitCount));
    PutLong(p, 16, static_cast<std::uint32_t>(nCompression));
    PutLong(p, 20, static_cast<std::uint32_t>(nPixels));
    PutLong(p, 24, 19685);
    PutLong(p, 28, 19685);
    PutLong(p, 32, nClrUsed);
    static constexpr std::uint32_t aMasks[] = {63488, 2016, 31};
    for (std::size_t i = 0; i < nEntries; ++i)
    {
        const std::size_t nGrey = nEntries > 1 ? i * 255 / (nEntries - 1) : 0;
        const bool bMask = nBitCount > 8 && nCompression == 3 && i < 3;
        PutLong(p, 40 + 4 * i, bMask ? aMasks[i] : static_cast<std::uint32_t>(nGrey * 0x010101));
    }
    ClTestRandom cRandom(nSeed);
    for (std::size_t i = 40 + 4 * nEntries; i < aBlock.size(); ++i)
    {
        p[i] = static_cast<unsigned char>(cRandom.Below(256));
    }
    return aBlock;
}

ClGuardedVector WithFileHeader(const ClGuardedVector& aPacked)
{
    ClGuardedVector aFile(14 + aPacked.size());
    aFile[0] = 'B';
    aFile[1] = 'M';
    PutLong(aFile.data(), 2, static_cast<std::uint32_t>(14 + aPacked.size()));
    PutLong(aFile.data(), 10, 14 + 40);
    std::copy(aPacked.begin(), aPacked.end(), aFile.begin() + 14);
    return aFile;
}
