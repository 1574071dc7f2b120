#pragma once

// KRX records made byte by byte, independent of the code that reads and writes them.

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace KrxRecords
{
using Bytes = std::vector<unsigned char>;

inline constexpr char szNoStart[] = "Internal error.\nKRX Magic is missing";
inline constexpr char szVersion[] = "Internal error.\nWrong KRX version";
inline constexpr char szNoEnd[] = "Internal error.\nKRX end Magic is missing";
inline constexpr char szArea[] = "Internal error.\nImage area must be positive";
inline constexpr char szShort[] = "Unexpected end of file.\nUnexpected end of stream";
inline constexpr char szMemory[] = "Memory allocation failed or given mem-block too small.\nMemory allocation failed";

inline constexpr std::size_t nHeaderBytes = 53;
inline constexpr std::uint32_t nMagic = 1263687680;

#define ONE_TYPE(eCode, T) ClImage::eCode,
inline constexpr unsigned char aTypes[] = {RD_SAMPLE_TYPES(ONE_TYPE)};
#undef ONE_TYPE

/// A record put together field by field.
struct ClRecord
{
    std::uint32_t m_nMagic = nMagic;
    std::uint32_t m_nVersion = 1;
    unsigned char m_eType = 1;
    int m_nWidth = 5;
    int m_nHeight = 2;
    int m_nPlanes = 1;
    int m_nXRes = 3937;
    int m_nYRes = 19685;
    int m_eContent = 1;
    double m_dWhite = 255;
    double m_dBlack = 0;
    int m_nAttribute = 77;
    Bytes m_aSamples = Bytes(16, 0x11); // as they stand in the file
    std::uint32_t m_nEndMagic = nMagic;
    bool m_bBigEndian = true;

    Bytes Made() const
    {
        Bytes aBytes;
        Put(aBytes, m_nMagic);
        Put(aBytes, m_nVersion);
        Put(aBytes, m_eType);
        Put(aBytes, m_nWidth);
        Put(aBytes, m_nHeight);
        Put(aBytes, m_nPlanes);
        Put(aBytes, m_nXRes);
        Put(aBytes, m_nYRes);
        Put(aBytes, m_eContent);
        Put(aBytes, m_dWhite);
        Put(aBytes, m_dBlack);
        if (m_nVersion != 0)
        {
            Put(aBytes, m_nAttribute);
        }
        aBytes.insert(aBytes.end(), m_aSamples.begin(), m_aSamples.end());
        Put(aBytes, m_nEndMagic);
        return aBytes;
    }

private:
    template <class T> void Put(Bytes& aBytes, T value) const
    {
        unsigned char aValue[sizeof(T)];
        std::memcpy(aValue, &value, sizeof(T));
        for (std::size_t i = 0; i < sizeof(T); ++i)
        {
            aBytes.push_back(aValue[m_bBigEndian ? sizeof(T) - 1 - i : i]);
        }
    }
};

/// The record of an image by the definition of the format.
inline ClRecord RecordOf(const ClImage& cImage, bool bBigEndian)
{
    ClRecord cRecord;
    cRecord.m_eType = cImage.m_eDataType;
    cRecord.m_nWidth = cImage.m_nWidth;
    cRecord.m_nHeight = cImage.m_nHeight;
    cRecord.m_nPlanes = cImage.m_nPlanes;
    cRecord.m_nXRes = cImage.m_nXRes;
    cRecord.m_nYRes = cImage.m_nYRes;
    cRecord.m_eContent = cImage.m_eContent;
    cRecord.m_dWhite = cImage.m_dWhite;
    cRecord.m_dBlack = cImage.m_dBlack;
    cRecord.m_nAttribute = cImage.m_nAttribute;
    cRecord.m_bBigEndian = bBigEndian;
    const std::size_t nSample = cImage.m_eDataType & 31u;
    const std::size_t nBytes = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(cImage.m_nHeight);
    cRecord.m_aSamples.assign(cImage.Data(), cImage.Data() + nBytes);
    for (std::size_t i = 0; bBigEndian && i < nBytes; ++i)
    {
        cRecord.m_aSamples[i] = cImage.Data()[i / nSample * nSample + nSample - 1 - i % nSample];
    }
    return cRecord;
}

/// An image that differs from what NewWithType alone makes in every field.
inline void MakeImage(ClImage& cImage, unsigned char eType, int nWidth, int nHeight, int nPlanes, unsigned int nSeed)
{
    cImage.NewWithType(eType, nWidth, nHeight, nPlanes, 3937 + nWidth, 19685 + nHeight);
    FillRandom(cImage, nSeed);
    cImage.m_dBlack = -3.25;
    cImage.m_dWhite = 1e300;
    cImage.m_eContent = ClImage::eHSV;
    cImage.m_nAttribute = -123456789;
}

inline testing::AssertionResult SameBlock(const ClImage& cExpected, const ClImage& cActual)
{
    const int nBytes = cExpected.Stride() * cExpected.m_nHeight;
    const bool bSame = cActual.Data() != nullptr &&
                       std::memcmp(cExpected.Data(), cActual.Data(), static_cast<std::size_t>(nBytes)) == 0;
    return bSame ? testing::AssertionSuccess() : testing::AssertionFailure() << "the rows or their padding differ";
}

/// Reads every byte of the block, for a sanitizer to see.
inline unsigned int SumOfBlock(const ClImage& cImage)
{
    unsigned int nSum = 0;
    const long nBytes = static_cast<long>(cImage.Stride()) * cImage.m_nHeight;
    for (long i = 0; cImage.Data() != nullptr && i < nBytes; ++i)
    {
        nSum += cImage.Data()[i];
    }
    return nSum;
}
} // namespace KrxRecords
