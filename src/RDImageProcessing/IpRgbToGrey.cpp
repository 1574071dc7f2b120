#include "RDImageProcessing/IpRgbToGrey.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace
{
constexpr StEnumName aModeNames[] = {{ClIpRgbToGrey::MaxRgb, "MaxRgb"},
                                     {ClIpRgbToGrey::Luminance, "Luminance"},
                                     {ClIpRgbToGrey::Lightness, "Lightness"}};

// Rec. 709 primaries, in the order of a bitmap's samples.
constexpr double dWeightBlue = 0.072169;
constexpr double dWeightGreen = 0.71516;
constexpr double dWeightRed = 0.212671;

/// out = fn of the first three samples, for every pixel.
template <class T, class Fn> void MapPixels(const ClImage& cIn, ClImage& cOut, Fn&& fn)
{
    const std::ptrdiff_t nStep = cIn.m_nPlanes;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const T* pIn = Row<T>(cIn, y);
        T* pOut = Row<T>(cOut, y);
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            pOut[x] = fn(pIn[0], pIn[1], pIn[2]);
            pIn += nStep;
        }
    }
}

template <class T> double WeightedSum(T c0, T c1, T c2)
{
    return c0 * dWeightBlue + c1 * dWeightGreen + c2 * dWeightRed;
}

/// The weights as numbers of nShift fractional bits. Their sums stay inside Acc for all samples of the type.
template <class T, class Acc, int nShift> void LuminanceInt(const ClImage& cIn, ClImage& cOut)
{
    static_assert(nShift == 16 || nShift == 32);
    constexpr Acc nBlue = static_cast<Acc>(nShift == 16 ? 4729ul : 309963494ul);
    constexpr Acc nGreen = static_cast<Acc>(nShift == 16 ? 46868ul : 3071588811ul);
    constexpr Acc nRed = static_cast<Acc>(nShift == 16 ? 13937ul : 913414989ul);
    MapPixels<T>(cIn, cOut,
                 [](T c0, T c1, T c2)
                 {
                     return static_cast<T>(
                         (static_cast<Acc>(c0) * nBlue + static_cast<Acc>(c1) * nGreen + static_cast<Acc>(c2) * nRed) >>
                         nShift);
                 });
}

template <class T> void LuminanceOf(const ClImage& cIn, ClImage& cOut)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        MapPixels<T>(cIn, cOut, [](T c0, T c1, T c2) { return static_cast<T>(WeightedSum(c0, c1, c2)); });
    }
    else if constexpr (sizeof(T) < 4)
    {
        LuminanceInt<T, std::conditional_t<std::is_signed_v<T>, int, unsigned int>, 16>(cIn, cOut);
    }
    else
    {
        LuminanceInt<T, std::conditional_t<std::is_signed_v<T>, long, unsigned long>, 32>(cIn, cOut);
    }
}

template <class T> void LightnessOf(const ClImage& cIn, ClImage& cOut)
{
    const double dInBlack = cIn.m_dBlack;
    const double dInSpan = cIn.m_dWhite - cIn.m_dBlack;
    const double dOutBlack = cOut.m_dBlack;
    const double dOutSpan = cOut.m_dWhite - cOut.m_dBlack;
    MapPixels<T>(cIn, cOut,
                 [=](T c0, T c1, T c2)
                 {
                     const double dY = (WeightedSum(c0, c1, c2) - dInBlack) / dInSpan;
                     const double dL = dY > 0.008856 ? 116.0 * std::pow(dY, 0.3333333333333333) - 16.0 : 903.3 * dY;
                     const double dOut = dL * dOutSpan * 0.01 + dOutBlack;
                     return CastSample<T>(dOut < dOutBlack ? dOutBlack : dOut);
                 });
}
} // namespace

ClIpRgbToGrey::ClIpRgbToGrey()
{
    EnableAllDataTypes();
    m_bInPlace = true;
}

long ClIpRgbToGrey::ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode)
{
    m_eMode = eMode;
    return ApplyParam(cIn, cOut);
}

void ClIpRgbToGrey::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddChoice(&m_eMode, "Mode", "In: Color Conversion Method", ClParameterInterface::eIn, aModeNames);
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Color Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Grey Image", ClParameterInterface::eOut);
}

ClProcessorBase* ClIpRgbToGrey::Create()
{
    return NewProcessor<ClIpRgbToGrey>();
}

const char* ClIpRgbToGrey::Name() const
{
    return "ClIpRgbToGrey";
}

bool ClIpRgbToGrey::CanApply()
{
    return m_pOutImage != nullptr;
}

void ClIpRgbToGrey::ParameterString(char* szBuffer, unsigned long nSize)
{
    const char* szMode = "Unsupported";
    for (const StEnumName& cName : aModeNames)
    {
        szMode = cName.nValue == m_eMode ? cName.szName : szMode;
    }
    FormatSettings(szBuffer, nSize, "ClIpRgbToGrey [%s]", szMode);
}

long ClIpRgbToGrey::DoProcess(ClImage& cIn, ClImage& cOut)
{
    if (cIn.m_nPlanes < 3)
    {
        return FPC_ERROR_BITMAP_PLANE; // the last pixel has no third sample to read
    }
    if (&cIn != &cOut)
    {
        return FoldPlanes(cIn, cOut);
    }
    ClImage cTemporary;
    cTemporary.m_nAttribute = cIn.m_nAttribute;
    const long nResult = FoldPlanes(cIn, cTemporary);
    cOut.Swap(cTemporary);
    return nResult;
}

long ClIpRgbToGrey::FoldPlanes(const ClImage& cIn, ClImage& cOut) const
{
    cOut.NewWithType(cIn.m_eDataType, cIn.m_nWidth, cIn.m_nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
    return DispatchSampleType(cIn.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  using T = typename decltype(cTag)::Type;
                                  switch (m_eMode)
                                  {
                                  case MaxRgb:
                                      MapPixels<T>(cIn, cOut, [](T c0, T c1, T c2) { return std::max({c0, c1, c2}); });
                                      break;
                                  case Luminance: LuminanceOf<T>(cIn, cOut); break;
                                  case Lightness: LightnessOf<T>(cIn, cOut); break;
                                  default:
                                      throw ClException("Unsupported conversions mode", FPC_ERROR_PARAM_OUT_OF_RANGE,
                                                        true, "RDImageProcessing/IpRgbToGrey", __LINE__);
                                  }
                                  return long(FPC_SUCCESS);
                              });
}
