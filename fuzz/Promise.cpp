#include "Promise.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

void FailPromise(const char* szWhat)
{
    std::fprintf(stderr, "broken promise: %s\n", szWhat);
    std::abort();
}

void PromiseCode(long nCode)
{
    if (nCode == FPC_SUCCESS) return;
    const bool bKnown = nCode < 0 && std::strcmp(KSGetErrorDescriptionA(nCode), KSGetErrorDescriptionA(1)) != 0;
    if (!bKnown) std::fprintf(stderr, "code %ld\n", nCode);
    Promise(bKnown, "a code of the catalogue");
}

void ClDigest::Add(double dValue)
{
    std::uint64_t nBits;
    std::memcpy(&nBits, &dValue, sizeof nBits);
    Add(nBits);
}

void ClDigest::AddBytes(const void* pBytes, std::size_t nBytes)
{
    const auto* p = static_cast<const unsigned char*>(pBytes);
    for (; nBytes >= 8; p += 8, nBytes -= 8)
    {
        std::uint64_t nWord;
        std::memcpy(&nWord, p, sizeof nWord);
        Add(nWord);
    }
    std::uint64_t nLast = nBytes;
    for (; nBytes > 0; --nBytes) nLast = nLast << 8 | *p++;
    Add(nLast);
}

void ClDigest::Add(const ClImage& cImage)
{
    for (const int nField : {cImage.m_nWidth, cImage.m_nHeight, cImage.m_nPlanes, cImage.m_nXRes, cImage.m_nYRes,
                             static_cast<int>(cImage.m_eDataType), static_cast<int>(cImage.m_eContent)})
        Add(static_cast<std::uint64_t>(nField));
    Add(cImage.m_dBlack);
    Add(cImage.m_dWhite);
    Add(std::uint64_t{cImage.Data() != nullptr});
    const int nSize = ClImage::SampleSize(cImage.m_eDataType);
    if (cImage.Data() == nullptr || cImage.SamplesPerRow() < 1 || nSize == 0) return;
    const auto nBytes = static_cast<std::size_t>(cImage.SamplesPerRow()) * static_cast<std::size_t>(nSize);
    for (int y = 0; y < cImage.m_nHeight; ++y) AddBytes(Row<unsigned char>(cImage, y), nBytes);
}
