#include "RDTools/ParameterNumeric.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr char szModule[] = "RDTools/Parameter.hpp";

const char* Named(const char* szName)
{
    return szName == nullptr ? "" : szName;
}

[[noreturn]] void ThrowNotSet(const char* szName, const char* szValue)
{
    const std::string sText = ConvertBadAlloc(
        [&] { return std::string("Failed to set parameter \"") + Named(szName) + "\" to value \"" + szValue + "\""; });
    throw ClException(sText.c_str(), FPC_ERROR_INVALID_PARAMETER, true, szModule, __LINE__);
}

void CheckText(const char* szValue)
{
    if (szValue == nullptr)
    {
        throw ClException("value string is NULL pointer!", FPC_ERROR_INVALID_PARAMETER, true, szModule, __LINE__);
    }
}
} // namespace

ClParameterNumericInterface::~ClParameterNumericInterface() = default;

int ClParameterNumericInterface::GetPrecision() const
{
    return m_nPrecision;
}

void ClParameterNumericInterface::SetPrecision(int nPrecision)
{
    m_nPrecision = nPrecision;
}

void ClParameterNumericInterface::SetFormat(const char* szFormat)
{
    if (szFormat == nullptr)
    {
        m_aFormat.Clear();
        return;
    }
    const std::size_t nSize = std::strlen(szFormat) + 1;
    TpArrayStatic<char> aCopy(nSize); // first, as szFormat may be the text that is replaced
    std::memcpy(aCopy.m_pData, szFormat, nSize);
    std::swap(m_aFormat.m_pData, aCopy.m_pData);
    std::swap(m_aFormat.m_nEntries, aCopy.m_nEntries);
}

void ThrowOutOfRange(const char* szName)
{
    const std::string sText =
        ConvertBadAlloc([&] { return std::string("Value out of range for parameter \"") + Named(szName) + "\""; });
    throw ClExRange(sText.c_str(), FPC_ERROR_PARAM_OUT_OF_RANGE, true, szModule, __LINE__);
}

void ThrowFormatFailed()
{
    throw ClException(std::strerror(errno), FPC_ERROR_INTERNAL, true, szModule, __LINE__);
}

double NumberFromText(const char* szValue, const char* szName)
{
    CheckText(szValue);
    char* szEnd = nullptr;
    const double dValue = std::strtod(szValue, &szEnd);
    if (*szEnd != '\0')
    {
        ThrowNotSet(szName, szValue);
    }
    return dValue;
}

long IntegerFromText(const char* szValue, const char* szName)
{
    const double dValue = NumberFromText(szValue, szName);
    if (!std::isfinite(dValue))
    {
        ThrowNotSet(szName, szValue);
    }
    constexpr double dLimit = 9223372036854775808.0; // 2 to the power of 63
    if (dValue >= dLimit)
    {
        return std::numeric_limits<long>::max();
    }
    return dValue < -dLimit ? std::numeric_limits<long>::min() : static_cast<long>(dValue);
}

bool HexFromText(const char* szValue, const char* szName, long& nValue)
{
    CheckText(szValue);
    const char* szMark = nullptr;
    for (const char* pChar = szValue; *pChar != '\0'; ++pChar)
    {
        szMark = *pChar == 'x' || *pChar == 'X' ? pChar : szMark;
    }
    if (szMark == nullptr)
    {
        return false;
    }
    char* szEnd = nullptr;
    nValue = std::strtol(szMark + 1, &szEnd, 16);
    if (*szEnd != '\0')
    {
        ThrowNotSet(szName, szValue);
    }
    return true;
}

void StripTrailingZeros(char* szText)
{
    char* const pEnd = szText + std::strlen(szText);
    char* pDigits = pEnd;
    while (pDigits != szText && pDigits[-1] >= '0' && pDigits[-1] <= '9')
    {
        --pDigits;
    }
    // The digits stand behind a point, or behind a comma where the points group thousands.
    const bool bFraction = pDigits != szText && (pDigits[-1] == '.' || pDigits[-1] == ',');
    if (!bFraction || std::strchr(szText, '.') == nullptr)
    {
        return;
    }
    for (char* pLast = pEnd - 1; *pLast == '0' && pLast > pDigits; --pLast)
    {
        *pLast = '\0';
    }
}

template <class T, class Base>
int TpParameterNumeric<T, Base>::Print(T value, char* szBuffer, unsigned long nSize) const
{
    const char* szFormat = GetFormat() == nullptr ? "" : GetFormat();
    if (std::strchr(szFormat, '*') != nullptr)
    {
        // A starred format is made for a double, whatever the type of the variable.
        return std::snprintf(szBuffer, nSize, szFormat, m_nPrecision, static_cast<double>(value));
    }
    return std::snprintf(szBuffer, nSize, szFormat, value);
}

template <class T, class Base>
bool TpParameterNumeric<T, Base>::Format(T value, char* szBuffer, unsigned long& nSize) const
{
    const int nLength = Print(value, nullptr, 0);
    if (nLength < 0)
    {
        ThrowFormatFailed();
    }
    const unsigned long nNeeded = static_cast<unsigned long>(nLength) + 1;
    const bool bFits = nSize >= nNeeded;
    nSize = nNeeded;
    if (bFits && szBuffer != nullptr)
    {
        Print(value, szBuffer, nNeeded);
        StripTrailingZeros(szBuffer);
    }
    return bFits;
}

template class TpParameterNumeric<double, ClParameter>;
template class TpParameterNumeric<long, ClParameter>;
template class TpParameterNumeric<int, ClParameter>;
template class TpParameterNumeric<unsigned char, ClParameter>;
