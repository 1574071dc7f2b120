#pragma once

#include "RDTools/Parameter.hpp"
#include "RDTools/SampleCast.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <cmath>
#include <limits>
#include <type_traits>

/// All numbers alike, whatever their type.
class ClParameterNumericInterface
{
public:
    virtual ~ClParameterNumericInterface();

    virtual double GetNumber() const = 0;
    /// Limits of the type, then the range: clamped, refused or only advisory, by the parameter's flags. An integer
    /// truncates toward zero. Errors: ClExRange -35, the variable keeps its value.
    virtual void SetNumber(double dValue) = 0;
    virtual long GetNumberLong() const = 0; ///< truncated toward zero
    virtual void SetNumberLong(long nValue) = 0;
    virtual double GetLowerBoundary() const = 0;
    virtual void SetLowerBoundary(double dLower) = 0;
    virtual double GetUpperBoundary() const = 0;
    virtual void SetUpperBoundary(double dUpper) = 0;
    virtual double GetDefault() const = 0;
    virtual void SetDefault(double dDefault) = 0; ///< only the limits of the type are checked: ClExRange -35
    virtual int GetPrecision() const;
    virtual void SetPrecision(int nPrecision);
    virtual bool IsFloat() const = 0;
    virtual bool IsInteger() const = 0;
    virtual bool IsValueInRange() const = 0;
    virtual bool IsValueInRange(double dValue) const = 0;
    virtual bool HasRange() const = 0;

    double GetScale() const { return m_dScale; }
    void SetScale(double dScale) { m_dScale = dScale; }
    const char* GetFormat() const { return m_aFormat.m_pData; }
    void SetFormat(const char* szFormat); ///< stores a copy; null empties it
    double GetNumberScaled() const { return GetNumber() * m_dScale; }
    void SetNumberSecaled(double dValue) { SetNumber(dValue / m_dScale); } // the family's name of it

    double m_dScale = 1.0;         ///< factor between the stored number and the scaled one
    int m_nPrecision = 0;          ///< digits for a format that contains a star
    TpArrayStatic<char> m_aFormat; ///< printf format with its terminator

protected:
    ClParameterNumericInterface() = default;
};

namespace Vlm
{
/// The printf format of a number's text.
template <class T> struct ClNumericFormat;
template <> struct ClNumericFormat<double>
{
    static constexpr const char* Format = "%f";
};
template <> struct ClNumericFormat<long>
{
    static constexpr const char* Format = "%ld";
};
template <> struct ClNumericFormat<int>
{
    static constexpr const char* Format = "%d";
};
template <> struct ClNumericFormat<unsigned char>
{
    static constexpr const char* Format = "%u";
};
} // namespace Vlm

/// The value of a number's text. Errors: ClException -44 for a null text and for text that is left over.
double NumberFromText(const char* szValue, const char* szName);
/// The same truncated to an integer, so that "1.9" gives 1 and "1e3" gives 1000; an infinite value is refused, too.
long IntegerFromText(const char* szValue, const char* szName);
/// Whether the text holds the letter X or x; the digits behind its last one then count in base 16.
bool HexFromText(const char* szValue, const char* szName, long& nValue);
/// "1.500000" becomes "1.5", "2.000000" becomes "2.0"; digits of an exponent are left alone.
void StripTrailingZeros(char* szText);
[[noreturn]] void ThrowOutOfRange(const char* szName);
[[noreturn]] void ThrowFormatFailed();

/// A number with an optional range (none while both bounds are equal), a printf format and a scale.
template <class T, class Base>
class TpParameterNumeric : public TpParameter<T, Base>, public ClParameterNumericInterface
{
public:
    TpParameterNumeric()
    {
        this->SetFormat(Vlm::ClNumericFormat<T>::Format);
        m_nPrecision = m_bFloat ? 6 : 0;
    }

    ClParameterBase* Clone() override { return this->CloneAs(this); }

    void CopyTo(ClParameterBase* pDest) override
    {
        TpParameter<T, Base>::CopyTo(pDest);
        TpParameterNumeric* pCopy = dynamic_cast<TpParameterNumeric*>(pDest);
        pCopy->m_Lower = m_Lower;
        pCopy->m_Upper = m_Upper;
        pCopy->m_dScale = m_dScale;
        pCopy->m_nPrecision = m_nPrecision;
        pCopy->SetFormat(GetFormat());
    }

    ClParameterNumericInterface* GetNumericInterface() override { return this; }
    bool IsNumeric() const override { return true; }
    bool IsInteger() const override { return !m_bFloat; }
    bool IsFloat() const override { return m_bFloat; }
    virtual bool IsSigned() const { return m_bSigned; }

    double GetDefault() const override { return static_cast<double>(this->m_Default); }
    void SetDefault(double dDefault) override { this->m_Default = WithinLimits(dDefault); }
    double GetNumber() const override { return static_cast<double>(this->ReadValue()); }
    void SetNumber(double dValue) override { Store(WithinLimits(dValue)); }
    long GetNumberLong() const override { return ToInteger<long>(this->ReadValue()); }
    void SetNumberLong(long nValue) override { Store(WithinLimits(nValue)); }
    double GetLowerBoundary() const override { return static_cast<double>(m_Lower); }
    void SetLowerBoundary(double dLower) override { m_Lower = ToInteger<T>(dLower); }
    double GetUpperBoundary() const override { return static_cast<double>(m_Upper); }
    void SetUpperBoundary(double dUpper) override { m_Upper = ToInteger<T>(dUpper); }
    bool IsValueInRange() const override { return IsValueInRangeT(this->ReadValue()); }
    bool IsValueInRange(double dValue) const override
    {
        return !HasRange() || (LiesWithinLimits(dValue) && IsValueInRangeT(ToInteger<T>(dValue)));
    }
    virtual bool IsValueInRangeT(T value) const { return !HasRange() || (m_Lower <= value && value <= m_Upper); }
    bool HasRange() const override { return m_Lower != m_Upper; }

    bool IsDefault() const override
    {
        const T value = this->ReadValue();
        if constexpr (std::is_floating_point_v<T>)
        {
            if (std::isnan(value) || std::isnan(this->m_Default))
            {
                return std::isnan(value) && std::isnan(this->m_Default);
            }
            return !(std::fabs(value - this->m_Default) > std::numeric_limits<T>::epsilon());
        }
        else
        {
            return value == this->m_Default;
        }
    }

    using Base::GetDefaultValue;
    using Base::GetValue;

    void SetValue(const char* szValue) override
    {
        long nValue = 0;
        if (HexFromText(szValue, this->m_szName, nValue))
        {
            SetNumberLong(nValue);
        }
        else if constexpr (std::is_floating_point_v<T>)
        {
            SetNumber(NumberFromText(szValue, this->m_szName));
        }
        else
        {
            SetNumberLong(IntegerFromText(szValue, this->m_szName));
        }
    }

    bool GetValue(char* szBuffer, unsigned long& nSize) override { return Format(this->ReadValue(), szBuffer, nSize); }
    bool GetDefaultValue(char* szBuffer, unsigned long& nSize) override
    {
        return Format(this->m_Default, szBuffer, nSize);
    }

    T m_Lower = T();
    T m_Upper = T();
    bool m_bFloat = std::is_floating_point_v<T>;
    bool m_bSigned = std::is_signed_v<T>;

private:
    using Limits = std::numeric_limits<T>;

    template <class TOut, class TIn> static TOut ToInteger(TIn value)
    {
        if constexpr (std::is_same_v<TOut, long> && std::is_floating_point_v<TIn>)
        {
            if (value >= 9223372036854775808.0) // the upper limit of long as a double, one past its largest value
            {
                return std::numeric_limits<long>::max();
            }
        }
        return CastSample<TOut>(value);
    }

    /// Not a number lies in no limits, and every long in those of a floating-point type.
    template <class V> static bool LiesWithinLimits(V value)
    {
        if constexpr (std::is_floating_point_v<V> || std::is_integral_v<T>)
        {
            return value >= static_cast<V>(Limits::lowest()) && value <= static_cast<V>(Limits::max());
        }
        else
        {
            return true;
        }
    }

    /// The value as a T, or ClExRange.
    template <class V> T WithinLimits(V value) const
    {
        if (!LiesWithinLimits(value))
        {
            ThrowOutOfRange(this->m_szName);
        }
        return ToInteger<T>(value);
    }

    void Store(T value)
    {
        if (HasRange())
        {
            if ((this->m_nFlags & ClParameter::eClamp) != 0)
            {
                value = value < m_Lower ? m_Lower : value;
                value = value > m_Upper ? m_Upper : value;
            }
            if ((this->m_nFlags & ClParameter::eRefuse) != 0 && !IsValueInRangeT(value))
            {
                ThrowOutOfRange(this->m_szName);
            }
        }
        this->WriteValue(value);
    }

    int Print(T value, char* szBuffer, unsigned long nSize) const;
    bool Format(T value, char* szBuffer, unsigned long& nSize) const;
};

extern template class TpParameterNumeric<double, ClParameter>;
extern template class TpParameterNumeric<long, ClParameter>;
extern template class TpParameterNumeric<int, ClParameter>;
extern template class TpParameterNumeric<unsigned char, ClParameter>;
