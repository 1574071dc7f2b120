#include "RDTools/ParameterNumeric.hpp"

#include "TestTools.hpp"

#include <cmath>
#include <limits>
#include <memory>
#include <string>

namespace
{
constexpr double dNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double dInfinity = std::numeric_limits<double>::infinity();
constexpr char szOutOfRange[] = "One of the parameters is out of range.\nValue out of range for parameter \"Number\"";

/// A number parameter named "Number" and the variable it is bound to.
template <class T> struct TpNumber
{
    explicit TpNumber(T value = T()) : m_Value(value)
    {
        m_cParameter.SetName("Number");
        m_cParameter.Bind(&m_Value);
    }
    void SetRange(double dLower, double dUpper, int nFlags)
    {
        m_cParameter.SetLowerBoundary(dLower);
        m_cParameter.SetUpperBoundary(dUpper);
        m_cParameter.m_nFlags = static_cast<unsigned char>(nFlags);
    }
    std::string Text() { return static_cast<ClParameter&>(m_cParameter).GetValue(); }
    T From(const char* szValue)
    {
        m_cParameter.SetValue(szValue);
        return m_Value;
    }

    T m_Value;
    TpParameterNumeric<T, ClParameter> m_cParameter;
};

constexpr int nPlain = 3;
constexpr int nClamped = 3 | 32;
constexpr int nRefusing = 3 | 64;

std::string NotSet(const char* szText)
{
    return std::string("One(or more) parameter(s) is(are) invalid.\nFailed to set parameter \"Number\" to value \"") +
           szText + "\"";
}
} // namespace

TEST(ParameterNumeric, EachTypeHasItsFormatAndPrecision)
{
    const TpNumber<double> cDouble;
    const TpNumber<long> cLong;
    const TpNumber<int> cInt;
    const TpNumber<unsigned char> cByte;
    EXPECT_STREQ("%f", cDouble.m_cParameter.GetFormat());
    EXPECT_STREQ("%ld", cLong.m_cParameter.GetFormat());
    EXPECT_STREQ("%d", cInt.m_cParameter.GetFormat());
    EXPECT_STREQ("%u", cByte.m_cParameter.GetFormat());
    EXPECT_STREQ("%f", Vlm::ClNumericFormat<double>::Format);
    EXPECT_EQ(6, cDouble.m_cParameter.GetPrecision());
    EXPECT_EQ(0, cLong.m_cParameter.GetPrecision());
    EXPECT_EQ(0, cInt.m_cParameter.GetPrecision());
    EXPECT_EQ(0, cByte.m_cParameter.GetPrecision());
    EXPECT_TRUE(cDouble.m_cParameter.IsFloat() && cDouble.m_cParameter.IsSigned());
    EXPECT_FALSE(cDouble.m_cParameter.IsInteger());
    EXPECT_TRUE(cInt.m_cParameter.IsInteger() && cInt.m_cParameter.IsSigned());
    EXPECT_FALSE(cInt.m_cParameter.IsFloat());
    EXPECT_TRUE(cByte.m_cParameter.IsInteger());
    EXPECT_FALSE(cByte.m_cParameter.IsSigned());
    EXPECT_EQ(1.0, cInt.m_cParameter.GetScale());
}

TEST(ParameterNumeric, EqualBoundsAreNoRange)
{
    TpNumber<int> cNumber;
    EXPECT_FALSE(cNumber.m_cParameter.HasRange());
    for (const int nValue : {-2147483647 - 1, -1, 0, 1, 2147483647})
    {
        cNumber.m_cParameter.m_nFlags = nRefusing;
        cNumber.m_cParameter.SetNumberLong(nValue);
        EXPECT_EQ(nValue, cNumber.m_Value);
        EXPECT_TRUE(cNumber.m_cParameter.IsValueInRange());
    }
    cNumber.SetRange(7, 7, nClamped | nRefusing);
    EXPECT_FALSE(cNumber.m_cParameter.HasRange());
    cNumber.m_cParameter.SetNumber(9);
    EXPECT_EQ(9, cNumber.m_Value);
    EXPECT_TRUE(cNumber.m_cParameter.IsValueInRange(1e300));
}

TEST(ParameterNumeric, ARangeAdvisesUnlessAFlagSaysMore)
{
    TpNumber<int> cNumber(12);
    cNumber.SetRange(10, 20, nPlain);
    EXPECT_TRUE(cNumber.m_cParameter.HasRange());
    cNumber.m_cParameter.SetNumber(25);
    EXPECT_EQ(25, cNumber.m_Value);
    EXPECT_FALSE(cNumber.m_cParameter.IsValueInRange());

    cNumber.SetRange(10, 20, nClamped);
    cNumber.m_cParameter.SetNumber(25);
    EXPECT_EQ(20, cNumber.m_Value);
    cNumber.m_cParameter.SetNumber(-25);
    EXPECT_EQ(10, cNumber.m_Value);

    cNumber.SetRange(10, 20, nRefusing);
    cNumber.m_cParameter.SetNumber(10);
    EXPECT_EQ(10, cNumber.m_Value);
    cNumber.m_cParameter.SetNumber(20);
    EXPECT_EQ(20, cNumber.m_Value);
    for (const double dValue : {9.0, 21.0, 25.0})
    {
        EXPECT_RAISES(cNumber.m_cParameter.SetNumber(dValue), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE, szOutOfRange);
        EXPECT_EQ(20, cNumber.m_Value);
    }

    cNumber.SetRange(10, 20, nClamped | nRefusing);
    cNumber.m_Value = 15;
    cNumber.m_cParameter.SetNumber(25);
    EXPECT_EQ(20, cNumber.m_Value);
}

TEST(ParameterNumeric, LongAndTextEndInTheSameChecks)
{
    TpNumber<int> cNumber(12);
    cNumber.SetRange(10, 20, nClamped);
    cNumber.m_cParameter.SetNumberLong(25);
    EXPECT_EQ(20, cNumber.m_Value);
    EXPECT_EQ(10, cNumber.From("9"));
    EXPECT_EQ(20, cNumber.From("0xff"));
    cNumber.SetRange(10, 20, nRefusing);
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumberLong(25), -35);
    EXPECT_RAISES_CODE(cNumber.From("25"), -35);
    EXPECT_RAISES_CODE(cNumber.From("0xff"), -35);
    EXPECT_EQ(20, cNumber.m_Value);
}

TEST(ParameterNumeric, ClampingWithCrossedBoundsEndsAtTheUpperOne)
{
    TpNumber<double> cNumber;
    cNumber.SetRange(5.0, -5.0, nClamped);
    cNumber.m_cParameter.SetNumber(0.0); // the greater of value and lower bound, then the smaller of that and the upper
    EXPECT_EQ(-5.0, cNumber.m_Value);
}

TEST(ParameterNumeric, IntegersTruncateTowardZeroWithinTheLimitsOfTheType)
{
    TpNumber<int> cInt;
    cInt.m_cParameter.SetNumber(1.9);
    EXPECT_EQ(1, cInt.m_Value);
    cInt.m_cParameter.SetNumber(-1.9);
    EXPECT_EQ(-1, cInt.m_Value);
    cInt.m_cParameter.SetNumber(2147483647.0);
    EXPECT_EQ(2147483647, cInt.m_Value);
    cInt.m_cParameter.SetNumber(-2147483648.0);
    EXPECT_EQ(-2147483647 - 1, cInt.m_Value);
    cInt.m_Value = 4;
    for (const double dValue : {2147483648.0, -2147483649.0, dNaN, dInfinity, -dInfinity})
    {
        EXPECT_RAISES(cInt.m_cParameter.SetNumber(dValue), ClExRange, -35, szOutOfRange);
    }
    EXPECT_RAISES_CODE(cInt.m_cParameter.SetNumberLong(2147483648L), -35);
    EXPECT_RAISES_CODE(cInt.m_cParameter.SetNumberLong(-2147483649L), -35);
    EXPECT_EQ(4, cInt.m_Value);

    TpNumber<unsigned char> cByte(4);
    EXPECT_RAISES_CODE(cByte.m_cParameter.SetNumber(-1.0), -35);
    EXPECT_RAISES_CODE(cByte.m_cParameter.SetNumber(256.0), -35);
    EXPECT_RAISES_CODE(cByte.m_cParameter.SetNumberLong(-1), -35);
    EXPECT_RAISES_CODE(cByte.m_cParameter.SetNumberLong(256), -35);
    EXPECT_EQ(4, cByte.m_Value);
    cByte.m_cParameter.SetNumber(255.0);
    EXPECT_EQ(255, cByte.m_Value);
}

TEST(ParameterNumeric, LongsTakeEveryLongAndTheDoublesThatFit)
{
    constexpr long nMax = std::numeric_limits<long>::max();
    constexpr long nMin = std::numeric_limits<long>::min();
    TpNumber<long> cNumber;
    for (const long nValue : {nMin, -1L, nMax})
    {
        cNumber.m_cParameter.SetNumberLong(nValue);
        EXPECT_EQ(nValue, cNumber.m_Value);
        EXPECT_EQ(nValue, cNumber.m_cParameter.GetNumberLong());
    }
    cNumber.m_cParameter.SetNumber(9.223372036854776e18); // the limit as a double, one more than the largest long
    EXPECT_EQ(nMax, cNumber.m_Value);
    cNumber.m_cParameter.SetNumber(-9.223372036854776e18);
    EXPECT_EQ(nMin, cNumber.m_Value);
    EXPECT_EQ(nMax, cNumber.From("1e30")) << "a text beyond the type is its limit";
    EXPECT_EQ(nMin, cNumber.From("-1e30"));
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumber(9.3e18), -35);
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumber(dNaN), -35);
}

TEST(ParameterNumeric, DoublesTakeEveryFiniteNumber)
{
    TpNumber<double> cNumber(1.5);
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumber(dNaN), -35);
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumber(dInfinity), -35);
    EXPECT_RAISES_CODE(cNumber.m_cParameter.SetNumber(-dInfinity), -35);
    EXPECT_EQ(1.5, cNumber.m_Value);
    for (const double dValue : {1.7976931348623157e308, -1.7976931348623157e308, 5e-324})
    {
        cNumber.m_cParameter.SetNumber(dValue);
        EXPECT_EQ(dValue, cNumber.m_Value);
        EXPECT_EQ(dValue, cNumber.m_cParameter.GetNumber());
    }
    cNumber.m_cParameter.SetNumberLong(-3);
    EXPECT_EQ(-3.0, cNumber.m_Value);
    cNumber.m_Value = -2.75;
    EXPECT_EQ(-2, cNumber.m_cParameter.GetNumberLong());
}

TEST(ParameterNumeric, DefaultIsCheckedAgainstTheTypeOnly)
{
    TpNumber<int> cNumber(12);
    cNumber.SetRange(10, 20, nClamped | nRefusing);
    cNumber.m_cParameter.SetDefault(25.9);
    EXPECT_EQ(25.0, cNumber.m_cParameter.GetDefault());
    EXPECT_EQ(12, cNumber.m_Value);
    EXPECT_RAISES(cNumber.m_cParameter.SetDefault(3e9), ClExRange, -35, szOutOfRange);
    EXPECT_EQ(25, cNumber.m_cParameter.m_Default);
}

TEST(ParameterNumeric, RangeQuestions)
{
    TpNumber<int> cNumber(15);
    cNumber.SetRange(10, 20, nPlain);
    EXPECT_EQ(10.0, cNumber.m_cParameter.GetLowerBoundary());
    EXPECT_EQ(20.0, cNumber.m_cParameter.GetUpperBoundary());
    EXPECT_TRUE(cNumber.m_cParameter.IsValueInRange());
    EXPECT_TRUE(cNumber.m_cParameter.IsValueInRange(10.0));
    EXPECT_TRUE(cNumber.m_cParameter.IsValueInRange(20.0));
    EXPECT_FALSE(cNumber.m_cParameter.IsValueInRange(9.0));
    EXPECT_FALSE(cNumber.m_cParameter.IsValueInRange(21.0));
    EXPECT_TRUE(cNumber.m_cParameter.IsValueInRangeT(20));
    EXPECT_FALSE(cNumber.m_cParameter.IsValueInRangeT(21));

    TpNumber<unsigned char> cByte;
    cByte.SetRange(0, 255, nPlain);
    EXPECT_FALSE(cByte.m_cParameter.IsValueInRange(300.0)); // not 44, its low byte
    EXPECT_FALSE(cByte.m_cParameter.IsValueInRange(dNaN));
    EXPECT_TRUE(cByte.m_cParameter.IsValueInRange(255.0));
}

TEST(ParameterNumeric, TextOfIntegers)
{
    TpNumber<int> cInt;
    EXPECT_EQ(1, cInt.From("1.9"));
    EXPECT_EQ(-1, cInt.From("-1.9"));
    EXPECT_EQ(1000, cInt.From("1e3"));
    EXPECT_EQ(-12, cInt.From("  -12"));
    for (const char* szBad : {"1.5abc", "12 ", "a", "inf", "-inf", "nan", "1e999"})
    {
        EXPECT_RAISES(cInt.From(szBad), ClException, FPC_ERROR_INVALID_PARAMETER, NotSet(szBad).c_str());
    }
    EXPECT_RAISES_CODE(cInt.From("3e9"), -35);
    EXPECT_RAISES_CODE(cInt.From("1e30"), -35);
    EXPECT_EQ(-12, cInt.m_Value);

    TpNumber<long> cLong;
    EXPECT_EQ(3000000000L, cLong.From("3e9"));
    TpNumber<unsigned char> cByte(7);
    EXPECT_EQ(255, cByte.From("255"));
    EXPECT_RAISES(cByte.From("300"), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE, szOutOfRange);
    EXPECT_RAISES_CODE(cByte.From("-1"), -35);
    EXPECT_EQ(255, cByte.m_Value);
}

TEST(ParameterNumeric, TextOfDoubles)
{
    TpNumber<double> cNumber;
    EXPECT_EQ(1.5, cNumber.From("1.5"));
    EXPECT_EQ(-2e-3, cNumber.From("-2e-3"));
    EXPECT_RAISES(cNumber.From("1.5abc"), ClException, FPC_ERROR_INVALID_PARAMETER, NotSet("1.5abc").c_str());
    EXPECT_RAISES_CODE(cNumber.From("inf"), -35); // a number, but out of the limits
    EXPECT_RAISES_CODE(cNumber.From("nan"), -35);
    EXPECT_EQ(-2e-3, cNumber.m_Value);
}

TEST(ParameterNumeric, DigitsBehindAnXAreHexadecimal)
{
    TpNumber<int> cInt;
    EXPECT_EQ(31, cInt.From("0x1F"));
    EXPECT_EQ(31, cInt.From("x1F"));
    EXPECT_EQ(31, cInt.From("X1f"));
    EXPECT_EQ(31, cInt.From("abcx1F"));
    EXPECT_EQ(16, cInt.From("x1FX10"));
    EXPECT_EQ(17, cInt.From("X1Fx11"));
    EXPECT_RAISES(cInt.From("0x1G"), ClException, -44, NotSet("0x1G").c_str());
    EXPECT_EQ(17, cInt.m_Value);
    TpNumber<double> cDouble;
    EXPECT_EQ(16.0, cDouble.From("0x10"));
    TpNumber<unsigned char> cByte;
    EXPECT_RAISES_CODE(cByte.From("0x100"), -35);
}

TEST(ParameterNumeric, NullTextIsRefused)
{
    TpNumber<int> cInt(3);
    EXPECT_RAISES(cInt.From(nullptr), ClException, FPC_ERROR_INVALID_PARAMETER,
                  "One(or more) parameter(s) is(are) invalid.\nvalue string is NULL pointer!");
    EXPECT_EQ(3, cInt.m_Value);
}

TEST(ParameterNumeric, FailureOfANamelessParameterHasAnEmptyName)
{
    int nValue = 0;
    TpParameterNumeric<int, ClParameter> cParameter;
    cParameter.Bind(&nValue);
    EXPECT_RAISES(cParameter.SetNumber(3e9), ClExRange, -35,
                  "One of the parameters is out of range.\nValue out of range for parameter \"\"");
    EXPECT_RAISES(cParameter.SetValue("a"), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nFailed to set parameter \"\" to value \"a\"");
}

TEST(ParameterNumeric, ValueAsText)
{
    TpNumber<double> cDouble(0.1);
    EXPECT_EQ("0.1", cDouble.Text());
    cDouble.m_Value = 2.0;
    EXPECT_EQ("2.0", cDouble.Text());
    cDouble.m_Value = 1.5;
    EXPECT_EQ("1.5", cDouble.Text());
    cDouble.m_Value = -100.25;
    EXPECT_EQ("-100.25", cDouble.Text());
    cDouble.m_Value = 1e-9;
    EXPECT_EQ("0.0", cDouble.Text());
    EXPECT_EQ("0.1", static_cast<ClParameter&>(cDouble.m_cParameter).GetDefaultValue());

    TpNumber<int> cInt(-100);
    EXPECT_EQ("-100", cInt.Text());
    TpNumber<long> cLong(-9000000000L);
    EXPECT_EQ("-9000000000", cLong.Text());
    TpNumber<unsigned char> cByte(200);
    EXPECT_EQ("200", cByte.Text());
}

TEST(ParameterNumeric, TextSizeCountsTheZerosThatAreStripped)
{
    TpNumber<double> cNumber(0.5); // "0.500000"
    char szBuffer[16] = "#";
    unsigned long nSize = 8;
    EXPECT_FALSE(cNumber.m_cParameter.GetValue(szBuffer, nSize));
    EXPECT_EQ(9u, nSize);
    EXPECT_STREQ("#", szBuffer);
    EXPECT_TRUE(cNumber.m_cParameter.GetValue(szBuffer, nSize));
    EXPECT_EQ(9u, nSize);
    EXPECT_STREQ("0.5", szBuffer);
    EXPECT_TRUE(cNumber.m_cParameter.GetValue(nullptr, nSize));
    nSize = 1;
    EXPECT_FALSE(cNumber.m_cParameter.GetValue(nullptr, nSize));
    EXPECT_EQ(9u, nSize);
}

TEST(ParameterNumeric, AFormatMayTakeThePrecision)
{
    TpNumber<double> cNumber(1.0);
    cNumber.m_cParameter.SetFormat("%.*e");
    cNumber.m_cParameter.SetPrecision(2);
    EXPECT_EQ("1.00e+00", cNumber.Text()); // zeros of an exponent are no trailing zeros
    cNumber.m_cParameter.SetFormat("%.*f");
    cNumber.m_cParameter.SetPrecision(4);
    cNumber.m_Value = 2.71828;
    EXPECT_EQ("2.7183", cNumber.Text());

    TpNumber<int> cInt(7);
    cInt.m_cParameter.SetFormat("%.*f"); // with a star the number is formatted as a double
    cInt.m_cParameter.SetPrecision(2);
    EXPECT_EQ("7.0", cInt.Text());
    EXPECT_EQ("7.0", static_cast<ClParameter&>(cInt.m_cParameter).GetDefaultValue());
}

TEST(ParameterNumeric, FormatsAreCopiesAndMayBeEmpty)
{
    TpNumber<int> cInt(7);
    char szFormat[] = "<%d>";
    cInt.m_cParameter.SetFormat(szFormat);
    szFormat[0] = '#';
    EXPECT_EQ("<7>", cInt.Text());
    cInt.m_cParameter.SetFormat(cInt.m_cParameter.GetFormat() + 1); // part of its own text
    EXPECT_EQ("7>", cInt.Text());
    cInt.m_cParameter.SetFormat(nullptr);
    EXPECT_EQ(nullptr, cInt.m_cParameter.GetFormat());
    EXPECT_EQ("", cInt.Text());
}

TEST(ParameterNumeric, AFormatThatCannotBePrintedIsTold)
{
    TpNumber<int> cInt(7);
    cInt.m_cParameter.SetFormat("%2147483648d"); // wider than a text can be
    EXPECT_RAISES(cInt.Text(), ClException, FPC_ERROR_INTERNAL,
                  "Internal error.\nValue too large for defined data type");
}

TEST(ParameterNumeric, ScaleServesTheScaledNumberOnly)
{
    TpNumber<double> cNumber(2.5);
    cNumber.m_cParameter.SetScale(4.0);
    EXPECT_EQ(4.0, cNumber.m_cParameter.GetScale());
    EXPECT_EQ(10.0, cNumber.m_cParameter.GetNumberScaled());
    EXPECT_EQ("2.5", cNumber.Text());
    cNumber.m_cParameter.SetNumberSecaled(6.0);
    EXPECT_EQ(1.5, cNumber.m_Value);
}

TEST(ParameterNumeric, TrailingZerosAreStrippedToOneDigit)
{
    const auto stripped = [](std::string sText)
    {
        StripTrailingZeros(sText.data());
        return std::string(sText.c_str());
    };
    EXPECT_EQ("1.5", stripped("1.500000"));
    EXPECT_EQ("2.0", stripped("2.000000"));
    EXPECT_EQ("2.0", stripped("2.0"));
    EXPECT_EQ("100", stripped("100"));
    EXPECT_EQ("10.01", stripped("10.0100"));
    EXPECT_EQ("1.", stripped("1."));
    EXPECT_EQ("1.00e+00", stripped("1.00e+00"));
    EXPECT_EQ("1.50 mm", stripped("1.50 mm"));
    EXPECT_EQ("1.234,5", stripped("1.234,500"));
    EXPECT_EQ("1.234,0", stripped("1.234,000"));
    EXPECT_EQ("1,500", stripped("1,500"));
    EXPECT_EQ("", stripped(""));
}

TEST(ParameterNumeric, DefaultsOfDoublesAreComparedWithinAnEpsilon)
{
    TpNumber<double> cNumber(1.0);
    EXPECT_TRUE(cNumber.m_cParameter.IsDefault());
    cNumber.m_Value = 1.0 + 2.220446049250313e-16;
    EXPECT_TRUE(cNumber.m_cParameter.IsDefault());
    cNumber.m_Value = 1.0 + 2 * 2.220446049250313e-16;
    EXPECT_FALSE(cNumber.m_cParameter.IsDefault());
    cNumber.m_Value = dNaN;
    EXPECT_FALSE(cNumber.m_cParameter.IsDefault());
    cNumber.m_cParameter.m_Default = dNaN;
    EXPECT_TRUE(cNumber.m_cParameter.IsDefault());
    cNumber.m_Value = 1.0;
    EXPECT_FALSE(cNumber.m_cParameter.IsDefault());

    TpNumber<int> cInt(3);
    EXPECT_TRUE(cInt.m_cParameter.IsDefault());
    cInt.m_Value = 4;
    EXPECT_FALSE(cInt.m_cParameter.IsDefault());
}

TEST(ParameterNumeric, CloneKeepsRangeFormatScaleAndPrecision)
{
    TpNumber<int> cNumber(15);
    cNumber.SetRange(10, 20, nRefusing);
    cNumber.m_cParameter.SetFormat("%03d");
    cNumber.m_cParameter.SetScale(0.5);
    cNumber.m_cParameter.SetPrecision(9);
    const std::unique_ptr<ClParameterBase> pClone(cNumber.m_cParameter.Clone());
    ClParameterNumericInterface* pNumeric = pClone->GetNumericInterface();
    ASSERT_NE(nullptr, pNumeric);
    EXPECT_EQ(10.0, pNumeric->GetLowerBoundary());
    EXPECT_EQ(20.0, pNumeric->GetUpperBoundary());
    EXPECT_EQ(0.5, pNumeric->GetScale());
    EXPECT_EQ(9, pNumeric->GetPrecision());
    EXPECT_EQ("015", pClone->GetParameterInterface()->GetValue());
    EXPECT_RAISES_CODE(pNumeric->SetNumber(21), -35);
    pNumeric->SetNumber(11);
    EXPECT_EQ(11, cNumber.m_Value);
}
