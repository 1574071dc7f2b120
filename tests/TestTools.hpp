#pragma once

// Helpers shared by the tests of all folders.

#include "GuardedBytes.hpp"
#include "RDTools/FpImage.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

/// The same numbers on every machine, for test data: a linear congruential generator with its high bits as output
/// (constants of D. E. Knuth's MMIX).
class ClTestRandom
{
public:
    explicit ClTestRandom(std::uint64_t nSeed) : m_nState(nSeed * 0x9E3779B97F4A7C15u + 1) {}
    std::uint32_t Next() ///< all 32 bits are random
    {
        m_nState = m_nState * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::uint32_t>(m_nState >> 32);
    }
    int Below(int nLimit) ///< 0 to nLimit - 1; nLimit from 1 to 65536
    {
        return static_cast<int>((Next() >> 16) * static_cast<std::uint32_t>(nLimit) >> 16);
    }
    double Unit() { return Next() / 4294967296.0; } ///< 0 up to, but not including, 1

private:
    std::uint64_t m_nState;
};

/// Makes a one-plane 8-bit image with random samples; the padding is random, too, so that code which reads it is seen.
void FillRandom8(ClImage& cImage, int nWidth, int nHeight, unsigned int nSeed);

/// Fills the samples of an image that exists, of any type and planes, with random values over the whole range of the
/// integer types, and from -1000 to 1000 with fractions for floating point. Padding is random bytes.
void FillRandom(ClImage& cImage, unsigned int nSeed);

/// Whether both images have the same type, size and planes and, bit for bit, the same samples; padding does not count.
/// The failure names the first pixels that differ.
testing::AssertionResult SamePixels(const ClImage& cExpected, const ClImage& cActual);

/// Whether two images are described alike: type, content, geometry, resolution, range and attribute.
testing::AssertionResult SameDescription(const ClImage& cExpected, const ClImage& cActual);

/// A packed device-independent bitmap: header, table, rows on 4-byte boundaries, with random pixels and padding. The
/// table has nClrUsed entries, or, for 0, as many as the header then means: a grey ramp up to 8 bits, the masks 63488,
/// 2016 and 31 for compression 3. Resolution 19685 pels per metre (500 per inch) both ways.
ClGuardedVector PackedBitmap(int nWidth, int nHeight, int nBitCount, int nCompression = 0, unsigned int nClrUsed = 0,
                             unsigned int nSeed = 1);

/// The same behind a file header of 14 bytes, as it stands in a file.
ClGuardedVector WithFileHeader(const ClGuardedVector& aPacked);

/// Writes a 32 or 16-bit value into a packed block, little-endian.
void PutLong(unsigned char* pBlock, std::size_t nOffset, std::uint32_t nValue);
void PutShort(unsigned char* pBlock, std::size_t nOffset, std::uint16_t nValue);

/// Runs statement, which must raise Exception with catalogue number code and, as its What(), exactly text.
#define EXPECT_RAISES(statement, Exception, code, text)                                                                \
    try                                                                                                                \
    {                                                                                                                  \
        statement;                                                                                                     \
        ADD_FAILURE() << #statement " raises nothing";                                                                 \
    }                                                                                                                  \
    catch (const Exception& cRaised)                                                                                   \
    {                                                                                                                  \
        EXPECT_EQ(long(code), cRaised.Number()) << #statement;                                                         \
        EXPECT_STREQ(text, cRaised.What()) << #statement;                                                              \
    }                                                                                                                  \
    static_assert(true)

/// The same where only the number is of interest.
#define EXPECT_RAISES_CODE(statement, code)                                                                            \
    try                                                                                                                \
    {                                                                                                                  \
        statement;                                                                                                     \
        ADD_FAILURE() << #statement " raises nothing";                                                                 \
    }                                                                                                                  \
    catch (const ClException& cRaised)                                                                                 \
    {                                                                                                                  \
        EXPECT_EQ(long(code), cRaised.Number()) << #statement;                                                         \
    }                                                                                                                  \
    static_assert(true)
