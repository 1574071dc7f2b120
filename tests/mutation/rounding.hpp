#pragma once

#include <cmath>
#include <type_traits>

// What a mutant calls where the source truncates. Of operands that do not truncate nothing changes.

template <class Value> constexpr auto MutantRound(Value value)
{
    if constexpr (std::is_floating_point_v<Value>)
    {
        return std::round(value);
    }
    else
    {
        return value;
    }
}

/// Halves away from zero.
template <class A, class B> constexpr auto MutantQuotient(A a, B b)
{
    if constexpr (std::is_integral_v<A> && std::is_integral_v<B>)
    {
        using Result = decltype(a / b);
        const auto dividend = static_cast<Result>(a);
        const auto divisor = static_cast<Result>(b);
        const Result quotient = dividend / divisor;
        const Result rest = dividend % divisor;
        const Result size = rest < 0 ? -rest : rest;
        const Result whole = divisor < 0 ? -divisor : divisor;
        const Result step = (dividend < 0) == (divisor < 0) ? 1 : -1;
        return size >= whole - size && size != 0 ? quotient + step : quotient;
    }
    else
    {
        return a / b;
    }
}

/// Halves upwards.
template <class A, class B> constexpr auto MutantShift(A a, B b)
{
    if constexpr (std::is_integral_v<A> && std::is_integral_v<B>)
    {
        return b > 0 ? (a >> b) + ((a >> (b - 1)) & 1) : a >> b;
    }
    else
    {
        return a >> b;
    }
}
