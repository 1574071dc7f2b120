#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Draws values from the bytes of one input; behind their end everything is 0.
class ClByteSource
{
public:
    ClByteSource(const std::uint8_t* pData, std::size_t nSize) : m_pData(pData), m_nLeft(nSize) {}

    bool IsEmpty() const { return m_nLeft == 0; }

    std::uint8_t Byte()
    {
        if (m_nLeft == 0) return 0;
        --m_nLeft;
        return *m_pData++;
    }

    std::uint64_t Bits(int nBytes)
    {
        std::uint64_t nBits = 0;
        for (int i = 0; i < nBytes; ++i) nBits = nBits << 8 | Byte();
        return nBits;
    }

    /// From nLow to nHigh, both included.
    int Between(int nLow, int nHigh)
    {
        const auto nRange = static_cast<std::uint64_t>(std::int64_t{nHigh} - nLow + 1);
        return static_cast<int>(nLow + static_cast<std::int64_t>(Bits(nRange > 256 ? 4 : 1) % nRange));
    }

    /// True once in n times.
    bool OneIn(unsigned n) { return Byte() % n == 0; }

    /// Small numbers as often as all bits: 0, near 0, near the ends of the types, anything.
    std::int64_t Number()
    {
        switch (Byte() % 6)
        {
        case 0: return 0;
        case 1: return static_cast<std::int8_t>(Byte());
        case 2: return Between(0, 300);
        case 3: return INT32_MAX - std::int64_t{Byte() % 3} + 1;
        case 4: return INT32_MIN + std::int64_t{Byte() % 3} - 1;
        default: return static_cast<std::int64_t>(Bits(8));
        }
    }

    std::string Text(std::size_t nMost)
    {
        const std::size_t nLength = static_cast<std::size_t>(Bits(2)) % (nMost + 1);
        std::string sText;
        while (sText.size() < nLength && !IsEmpty()) sText += static_cast<char>(Byte());
        return sText;
    }

    std::vector<std::uint8_t> Rest()
    {
        std::vector<std::uint8_t> aRest(m_pData, m_pData + m_nLeft);
        m_nLeft = 0;
        return aRest;
    }

private:
    const std::uint8_t* m_pData;
    std::size_t m_nLeft;
};

/// One input. Every target defines it; the fuzzer or Replay.cpp calls it. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);
