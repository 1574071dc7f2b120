#include "OperatorFuzzImages.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace
{
constexpr unsigned char g_aeTypes[] = {ClImage::eUInt8,  ClImage::eSInt8,  ClImage::eUInt16,  ClImage::eSInt16,
                                       ClImage::eUInt32, ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64};

/// Noise, two values, a ramp, the bytes of the input over and over, one value.
void FillBytes(unsigned char* pBytes, std::size_t nBytes, ClByteSource& cBytes)
{
    const unsigned nKind = cBytes.Byte();
    std::uint32_t nState = static_cast<std::uint32_t>(cBytes.Bits(2));
    const auto next = [&nState] { return (nState = nState * 1664525u + 1013904223u) >> 24; };
    const unsigned nShare = nKind & 0xf0u;
    switch (nKind % 8)
    {
    case 0:
    case 1: std::generate_n(pBytes, nBytes, [&] { return static_cast<unsigned char>(next()); }); break;
    case 2:
    case 3:
        std::generate_n(pBytes, nBytes, [&] { return static_cast<unsigned char>(next() < nShare ? 0 : 255); });
        break;
    case 4:
    {
        unsigned char anPattern[13];
        for (unsigned char& nByte : anPattern) nByte = cBytes.Byte();
        for (std::size_t i = 0; i < nBytes; ++i) pBytes[i] = anPattern[i / (1 + nShare / 16) % sizeof anPattern];
        break;
    }
    case 5: std::memset(pBytes, static_cast<int>(nState & 255), nBytes); break;
    case 6: std::generate_n(pBytes, nBytes, [&] { return cBytes.IsEmpty() ? 255 : cBytes.Byte(); }); break;
    default:
        for (std::size_t i = 0; i < nBytes; ++i)
            pBytes[i] = static_cast<unsigned char>(i * (nShare + 16) / 64 + (next() & 7));
        break;
    }
}

void FillPixels(ClImage& cImage, ClByteSource& cBytes)
{
    if (cImage.Data() == nullptr || cImage.m_nHeight < 1) return;
    const auto nBytes = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(cImage.m_nHeight);
    FillBytes(cImage.Data(), nBytes, cBytes);
    // Bytes at random are hardly ever a number of a size that images have.
    if (!ClImage::IsFloatType(cImage.m_eDataType) || cBytes.OneIn(4)) return;
    DispatchSampleType(cImage.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           T* const pSample = Row<T>(cImage, 0);
                           for (std::size_t i = 0; i < nBytes / sizeof(T); ++i)
                               pSample[i] = static_cast<T>(cImage.Data()[i * sizeof(T)]);
                           return 0L;
                       });
}

/// Small sides as a rule; the wide ones pass over the steps of the kernels, the odd ones have no area.
void Size(int& nWidth, int& nHeight, ClByteSource& cBytes)
{
    const unsigned nClass = cBytes.Byte();
    const int n1 = cBytes.Byte(), n2 = cBytes.Byte();
    nWidth = 1 + n1 % 24;
    nHeight = 1 + n2 % 16;
    if (nClass % 8 == 6) nWidth = 1 + n1 % 100;
    if (nClass % 8 == 7) nWidth = 1 + n1 + n2 % 60;
    if (nClass == 0x55) nWidth = 0;
    if (nClass == 0x65) nHeight = 0;
    if (nClass == 0x75) nWidth = 310, nHeight = 300; // above the size from which differences take a table
}
} // namespace

unsigned char AnyType(unsigned nNumber)
{
    return g_aeTypes[nNumber % 8];
}

double Real(ClByteSource& cBytes)
{
    switch (cBytes.Byte() % 8)
    {
    case 0: return std::numeric_limits<double>::quiet_NaN();
    case 1: return cBytes.OneIn(2) ? HUGE_VAL : -HUGE_VAL;
    case 2: return static_cast<double>(cBytes.Number());
    case 3: return cBytes.Byte() / 100.0;
    case 4: return -1.0 * cBytes.Byte();
    default: return cBytes.Byte();
    }
}

long Mostly(int nLow, int nHigh, ClByteSource& cBytes)
{
    return cBytes.OneIn(8) ? cBytes.Number() : cBytes.Between(nLow, nHigh);
}

int MostlyInt(int nLow, int nHigh, ClByteSource& cBytes)
{
    return static_cast<int>(std::clamp<long>(Mostly(nLow, nHigh, cBytes), INT32_MIN, INT32_MAX));
}

void Make(ClImage& cImage, unsigned char eType, int nPlanes, ClByteSource& cBytes)
{
    int nWidth, nHeight;
    Size(nWidth, nHeight, cBytes);
    if (static_cast<long>(nWidth) * nHeight * nPlanes > 100000) nWidth = 40;
    const int nRes = cBytes.OneIn(4) ? cBytes.Between(-1, 60000) : 3937;
    cImage.NewWithType(eType, nWidth, nHeight, nPlanes, nRes, cBytes.OneIn(8) ? cBytes.Between(-1, 9000) : nRes);
    FillPixels(cImage, cBytes);
    if (!cBytes.OneIn(16)) return;
    cImage.m_dBlack = Real(cBytes);
    cImage.m_dWhite = Real(cBytes);
    cImage.m_eContent = Choice<ClImage::EContent>(8, cBytes);
}

void MakeAny(ClImage& cImage, ClByteSource& cBytes)
{
    const unsigned nKind = cBytes.Byte();
    if (nKind % 16 == 15) return; // empty
    const auto eType = nKind % 4 != 0 ? static_cast<unsigned char>(ClImage::eUInt8) : g_aeTypes[nKind / 4 % 8];
    Make(cImage, eType, nKind % 4 == 1 ? cBytes.Between(0, 5) : 1, cBytes);
}

void MakeTyped(ClImage& cImage, ClByteSource& cBytes)
{
    const unsigned nKind = cBytes.Byte();
    if (nKind % 32 == 31) return;
    Make(cImage, g_aeTypes[nKind % 8], nKind / 8 % 2 == 0 ? 1 : cBytes.Between(0, 5), cBytes);
}

void MakeByte(ClImage& cImage, ClByteSource& cBytes)
{
    if (cBytes.OneIn(16))
        MakeAny(cImage, cBytes);
    else
        Make(cImage, ClImage::eUInt8, 1, cBytes);
}

void MakeLike(ClImage& cImage, const ClImage& cModel, unsigned char eType, ClByteSource& cBytes)
{
    if (cBytes.OneIn(16))
    {
        MakeAny(cImage, cBytes);
        return;
    }
    cImage.NewWithType(eType, cModel.m_nWidth, cModel.m_nHeight, 1, cModel.m_nXRes, cModel.m_nYRes);
    FillPixels(cImage, cBytes);
}

void MakeFormer(ClImage& cImage, ClByteSource& cBytes)
{
    if (cBytes.OneIn(4)) MakeTyped(cImage, cBytes);
}
