#pragma once

#include "RDTools/FpImage.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

/// FNV-1a with 64 bits over whatever is added, in the order of adding (G. Fowler, L. C. Noll, K.-P. Vo).
class ClBitHash
{
public:
    void Add(const void* pBytes, std::size_t nBytes)
    {
        const auto* p = static_cast<const unsigned char*>(pBytes);
        for (std::size_t i = 0; i < nBytes; ++i) m_nHash = (m_nHash ^ p[i]) * 1099511628211u;
    }
    void Add(std::initializer_list<long> anValue)
    {
        for (const std::int64_t n : anValue) Add(&n, sizeof n);
    }
    /// Every bit, but one value for all that are not a number: which of two such operands a sum keeps is the
    /// compiler's choice.
    template <class T> void AddNumber(T value)
    {
        if (std::isnan(value)) value = std::numeric_limits<T>::quiet_NaN();
        Add(&value, sizeof value);
    }
    /// Description and samples of all planes, without padding.
    void AddImage(const ClImage& cImage);

    std::string Text() const;

private:
    template <class T> void AddNumbers(const ClImage& cImage);

    std::uint64_t m_nHash = 14695981039346656037u;
};
