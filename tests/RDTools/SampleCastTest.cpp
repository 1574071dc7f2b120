#include "RDTools/SampleCast.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace
{
TEST(SampleCast, FractionsTruncateTowardZero)
{
    EXPECT_EQ(3, CastSample<int>(3.999));
    EXPECT_EQ(-3, CastSample<int>(-3.999));
    EXPECT_EQ(0, CastSample<unsigned char>(-0.5));
    EXPECT_EQ(2, CastSample<unsigned char>(2.5f));
}

TEST(SampleCast, LargeNumbersKeepTheirLowBits)
{
    EXPECT_EQ(44, CastSample<unsigned char>(300.7));
    EXPECT_EQ(255, CastSample<unsigned char>(-1.0));
    EXPECT_EQ(-56, CastSample<signed char>(200.0));
    EXPECT_EQ(0x1234, CastSample<unsigned short>(static_cast<double>(0x561234)));
    EXPECT_EQ(0xffffffffu, CastSample<unsigned int>(-1.0));
    EXPECT_EQ(INT_MIN, CastSample<int>(2147483648.0));
    EXPECT_EQ(5, CastSample<int>(4294967301.0));
    EXPECT_EQ(-1, CastSample<long>(-1.9));
}

TEST(SampleCast, WhatDoesNotFitIsTheSmallestInteger)
{
    const double dLimit = 9223372036854775808.0;
    for (const double dValue : {dLimit, -2 * dLimit, 1e300, -1e300, HUGE_VAL, -HUGE_VAL, std::nan("")})
    {
        EXPECT_EQ(0, CastSample<unsigned char>(dValue)) << dValue;
        EXPECT_EQ(0, CastSample<int>(dValue)) << dValue;
        EXPECT_EQ(LONG_MIN, CastSample<long>(dValue)) << dValue;
    }
    EXPECT_EQ(LONG_MIN, CastSample<long>(-dLimit));
    EXPECT_EQ(9223372036854774784, CastSample<long>(std::nextafter(dLimit, 0.0)));
    EXPECT_EQ(0, CastSample<short>(std::numeric_limits<float>::infinity()));
}

TEST(SampleCast, IntegersAndFloatingPointPassAsTheyAre)
{
    EXPECT_EQ(-1, CastSample<signed char>(255u));
    EXPECT_EQ(1, CastSample<unsigned char>(257));
    EXPECT_EQ(0.1f, CastSample<float>(0.1));
    EXPECT_EQ(-7.0, CastSample<double>(-7));
}

TEST(SampleCast, WrappingArithmeticIsModuloTwoToThe32)
{
    EXPECT_EQ(INT_MIN, WrapAdd(INT_MAX, 1));
    EXPECT_EQ(INT_MAX, WrapAdd(INT_MIN, -1));
    EXPECT_EQ(INT_MAX, WrapSubtract(INT_MIN, 1));
    EXPECT_EQ(INT_MIN, WrapSubtract(INT_MAX, -1));
    EXPECT_EQ(0, WrapMultiply(65536, 65536));
    EXPECT_EQ(-2, WrapMultiply(INT_MAX, 2));
    EXPECT_EQ(INT_MIN, WrapMultiply(INT_MIN, -1));
    EXPECT_EQ(-42, WrapMultiply(6, -7));
}
} // namespace
