#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

/// The conversions of samples, the same bits on every machine: floating point to integer truncates toward zero and
/// keeps the low bits of the 64-bit result (300.7 becomes 44 in a byte); what does not fit 64 bits, and not a number,
/// gives the low bits of the smallest 64-bit integer, as the processor's own conversion does. Integers keep their low
/// bits. Nothing saturates.
template <class TOut, class TIn> inline TOut CastSample(TIn value)
{
    if constexpr (std::is_floating_point_v<TIn> && std::is_integral_v<TOut>)
    {
        constexpr double dLimit = 9223372036854775808.0; // 2 to the power of 63
        const double dValue = static_cast<double>(value);
        const std::int64_t nValue = dValue >= -dLimit && dValue < dLimit ? static_cast<std::int64_t>(dValue)
                                                                         : std::numeric_limits<std::int64_t>::min();
        return static_cast<TOut>(nValue);
    }
    else
    {
        return static_cast<TOut>(value);
    }
}

/// Sum, difference and product of 32-bit integers that wrap, as the two's complement machine does.
inline int WrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

inline int WrapSubtract(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

inline int WrapMultiply(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) * static_cast<unsigned int>(b));
}
