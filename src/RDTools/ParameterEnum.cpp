#include "RDTools/ParameterEnum.hpp"

#include <cstdio>
#include <cstring>

namespace
{
constexpr char szModule[] = "RDTools/Parameter.hpp";

std::string Quoted(const char* szText)
{
    return std::string("\"") + (szText == nullptr ? "" : szText) + "\"";
}

template <class Compose> [[noreturn]] void ThrowRange(Compose&& compose)
{
    const std::string sText = ConvertBadAlloc(compose);
    throw ClExRange(sText.c_str(), FPC_ERROR_PARAM_OUT_OF_RANGE, true, szModule, __LINE__);
}
} // namespace

ClParameterEnumInterface::~ClParameterEnumInterface() = default;
ClParameterBlobInterface::~ClParameterBlobInterface() = default;

void ThrowDuplicateName()
{
    throw ClExVelmarin(FPC_ERROR_PARAM_VALUE_DUPLICATE, szModule, __LINE__);
}

void ThrowNoSuchText(const char* szValue, const char* szName)
{
    ThrowRange([&] { return "Value " + Quoted(szValue) + " out of range for parameter " + Quoted(szName); });
}

void ThrowNoSuchValue(long nValue, const char* szName)
{
    ThrowRange(
        [&] {
            return "Value " + Quoted(std::to_string(nValue).c_str()) + " out of range for parameter " + Quoted(szName);
        });
}

void ThrowValueHasNoName(const char* szName, const char* szValue)
{
    ThrowRange([&] { return "Parameter " + Quoted(szName) + " out of range using value " + Quoted(szValue); });
}

void PrintEnumValue(long nValue, bool bPointer, char (&szText)[32])
{
    if (!bPointer)
    {
        std::snprintf(szText, sizeof szText, "%d", static_cast<int>(nValue));
    }
    else if (nValue == 0)
    {
        std::snprintf(szText, sizeof szText, "NULL");
    }
    else
    {
        std::snprintf(szText, sizeof szText, "%p",
                      reinterpret_cast<void*>(nValue)); // NOLINT(performance-no-int-to-ptr)
    }
}

unsigned long CopyValueName(const char* szName, char* szBuffer, unsigned long nSize)
{
    const unsigned long nLength = std::strlen(szName);
    if (szBuffer != nullptr && nSize > nLength)
    {
        std::memcpy(szBuffer, szName, nLength + 1);
    }
    else if (szBuffer != nullptr && nSize != 0)
    {
        szBuffer[0] = '\0';
    }
    return nLength;
}
