#include "RDImageProcessing/IpDelta.hpp"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <typeinfo>

namespace
{
/// From this overlap on the table of all pairs pays for itself, where GetValue tells what stands in it.
constexpr long nMostDirectPixels = 90000;

/// The working type of a sample type: signed and of the next size.
template <class T> struct TpCalc
{
    using Type =
        std::conditional_t<std::is_floating_point_v<T>, double,
                           std::conditional_t<sizeof(T) == 1, short, std::conditional_t<sizeof(T) == 2, int, long>>>;
};

/// |a - b| without overflow: what the working type cannot hold wraps around, and its lowest value stays.
template <class TCalc> TCalc Distance(TCalc a, TCalc b)
{
    if constexpr (std::is_floating_point_v<TCalc>)
    {
        return std::fabs(a - b);
    }
    else
    {
        using TWrap = std::make_unsigned_t<TCalc>;
        const auto nDifference = static_cast<TCalc>(static_cast<TWrap>(static_cast<TWrap>(a) - static_cast<TWrap>(b)));
        return nDifference < 0 ? static_cast<TCalc>(static_cast<TWrap>(0u - static_cast<TWrap>(nDifference)))
                               : nDifference;
    }
}

/// A type in which values of both types compare as the numbers they are.
template <class TCalc, class TOut> struct TpCompare
{
    static constexpr bool bInt = sizeof(TCalc) <= sizeof(int) && !std::is_same_v<TOut, unsigned int>;
    using Type = std::conditional_t<std::is_floating_point_v<TCalc> || std::is_floating_point_v<TOut>, double,
                                    std::conditional_t<bInt, int, long>>;
};

template <class TCompare, class TCalc, class TOut> TOut Clamp(TCalc tValue, TOut tLow, TOut tHigh)
{
    const auto tCompare = static_cast<TCompare>(tValue);
    const auto tCompareLow = static_cast<TCompare>(tLow);
    const auto tCompareHigh = static_cast<TCompare>(tHigh);
    if constexpr (std::is_integral_v<TCompare>)
    {
        return static_cast<TOut>(std::min(std::max(tCompare, tCompareLow), tCompareHigh));
    }
    else
    {
        return tCompare < tCompareLow ? tLow : tCompare > tCompareHigh ? tHigh : CastSample<TOut>(tValue);
    }
}
} // namespace

ClProcessorBase* ClIpDelta::Create()
{
    return NewProcessor<ClIpDelta>();
}

const char* ClIpDelta::Name() const
{
    return "ClIpDelta";
}

double ClIpDelta::GetValue(ClImage&, ClImage&, ClImage& cOut, double dValue1, double dValue2)
{
    const double dLow = std::min(cOut.m_dBlack, cOut.m_dWhite);
    const double dHigh = std::max(cOut.m_dBlack, cOut.m_dWhite);
    const double dDistance = std::fabs(dValue1 - dValue2);
    return dDistance < dLow ? dLow : dDistance > dHigh ? dHigh : dDistance;
}

long ClIpDelta::DoProcess(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, long nWidth, long nHeight, long nPlanes1,
                          long nPlanes2, long nIn1Offset, long nIn1Row, long nIn2Offset, long nIn2Row, long nOutOffset,
                          long nOutRow)
{
    const StOverlap c{nWidth,  nHeight,    nPlanes1, nPlanes2,   nIn1Offset,
                      nIn1Row, nIn2Offset, nIn2Row,  nOutOffset, nOutRow};
    return DispatchSampleType(cIn1.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  using T1 = typename decltype(cTag)::Type;
                                  return DispatchDefault<typename TpCalc<T1>::Type, T1>(cIn1, cIn2, cOut, c);
                              });
}

/// Whether the table would hold the distances of all pairs of bytes: no derived class has another operator, the inputs'
/// values are told from 0 on, and the output's bounds are numbers of its type.
bool ClIpDelta::HasPlainTable(const ClImage& cIn1, const ClImage& cIn2, const ClImage& cOut) const
{
    const auto hasRange = [](const ClImage& cImage)
    {
        ClImage cType;
        cType.BlackWhiteFromType(cImage.m_eDataType);
        return cImage.m_dBlack == cType.m_dBlack && cImage.m_dWhite == cType.m_dWhite;
    };
    return typeid(*this) == typeid(ClIpDelta) && hasRange(cIn1) && hasRange(cIn2) && hasRange(cOut);
}

template <class TCalc, class T1>
long ClIpDelta::DispatchDefault(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    if (std::is_same_v<T1, unsigned char> && cIn2.m_eDataType == ClImage::eUInt8 && m_nOverlapWidth > 0 &&
        m_nOverlapHeight > nMostDirectPixels / m_nOverlapWidth && !HasPlainTable(cIn1, cIn2, cOut))
    {
        return DispatchLUT<unsigned char, unsigned char>(cIn1, cIn2, cOut, c);
    }
    return DispatchSampleType(
        cIn2.m_eDataType, FPC_ERROR_INTERNAL,
        [&](auto cTag) { return DispatchDefault2<TCalc, T1, typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template <class TCalc, class T1, class T2>
long ClIpDelta::DispatchDefault2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return Default<TCalc, T1, T2, typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template <class TCalc, class T1, class T2, class TOut>
long ClIpDelta::Default(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    using TCompare = typename TpCompare<TCalc, TOut>::Type;
    const TOut tBlack = CastSample<TOut>(cOut.m_dBlack);
    const TOut tWhite = CastSample<TOut>(cOut.m_dWhite);
    const TOut tLow = std::min(tBlack, tWhite);
    const TOut tHigh = std::max(tBlack, tWhite);
    if constexpr (std::is_same_v<T1, unsigned char> && std::is_same_v<T2, unsigned char> &&
                  std::is_same_v<TOut, unsigned char>)
    {
        // In bytes throughout, of which vectors hold the most.
        CombineOverlap<T1, T2, TOut>(ClOverlapRows(cIn1, cIn2, cOut, c),
                                     [=](T1 t1, T2 t2)
                                     {
                                         const auto tDistance = static_cast<TOut>(std::max(t1, t2) - std::min(t1, t2));
                                         return std::min(std::max(tDistance, tLow), tHigh);
                                     });
        return FPC_SUCCESS;
    }
    CombineOverlap<T1, T2, TOut>(
        ClOverlapRows(cIn1, cIn2, cOut, c), [=](T1 t1, T2 t2)
        { return Clamp<TCompare>(Distance(CastSample<TCalc>(t1), CastSample<TCalc>(t2)), tLow, tHigh); });
    return FPC_SUCCESS;
}
