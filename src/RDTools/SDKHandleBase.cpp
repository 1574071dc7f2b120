#include "RDTools/SDKHandleBase.hpp"

#include "RDTools/SampleCast.hpp"

#include <string>

namespace
{
constexpr char szModule[] = "RDTools/SDKHandleBase";

[[noreturn]] void Throw(long nNumber, long nLine)
{
    throw ClExVelmarin(nNumber, szModule, nLine);
}

void CheckWritable(const ClParameter& cProperty)
{
    if ((cProperty.m_nFlags & ClParameter::eWritable) == 0)
    {
        Throw(FPC_ERROR_PARAM_IS_READONLY, __LINE__);
    }
}

/// The floating-point number of a name.
ClParameterNumericInterface& FindFloat(ClParameter& cProperty)
{
    ClParameterNumericInterface* pNumber = cProperty.GetNumericInterface();
    if (pNumber == nullptr || !pNumber->IsFloat())
    {
        Throw(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
    return *pNumber;
}

ClParameterBlobInterface& FindBlob(ClParameter& cProperty)
{
    ClParameterBlobInterface* pBlob = cProperty.GetBlobnterface();
    if (pBlob == nullptr)
    {
        Throw(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
    return *pBlob;
}

/// Calls number or enumeration with the interface of an integer property, whichever it has.
template <class OnNumber, class OnEnumeration>
void WithInteger(ClParameter& cProperty, OnNumber&& number, OnEnumeration&& enumeration)
{
    ClParameterNumericInterface* pNumber = cProperty.GetNumericInterface();
    ClParameterEnumInterface* pEnumeration = cProperty.GetEnumInterface();
    if (pNumber != nullptr && pNumber->IsInteger())
    {
        number(*pNumber);
    }
    else if (pNumber == nullptr && pEnumeration != nullptr)
    {
        enumeration(*pEnumeration);
    }
    else
    {
        Throw(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
}

/// The bounds of a number, converted to the caller's type.
template <class T> void GetRange(ClParameter& cProperty, bool bFloat, T* pMin, T* pMax)
{
    ClParameterNumericInterface* pNumber = cProperty.GetNumericInterface();
    if (pNumber == nullptr || !pNumber->HasRange())
    {
        Throw(FPC_ERROR_UNSUPPORTED_FEATURE, __LINE__);
    }
    if (pNumber->IsFloat() != bFloat)
    {
        Throw(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
    if (pMin == nullptr && pMax == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_PTR_NULL, __LINE__);
    }
    if (pMin != nullptr)
    {
        *pMin = CastSample<T>(pNumber->GetLowerBoundary());
    }
    if (pMax != nullptr)
    {
        *pMax = CastSample<T>(pNumber->GetUpperBoundary());
    }
}
} // namespace

namespace SDKHandleProperties
{
ClParameter* FindProperty(ClParameterContainer& cProperties, const char* szName)
{
    if (szName == nullptr)
    {
        Throw(FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
    ClParameter* pProperty = cProperties.Find(szName);
    if (pProperty == nullptr)
    {
        Throw(FPC_ERROR_UNKNOWN_PARAMETER, __LINE__);
    }
    return pProperty;
}

void GetText(ClParameterContainer& cProperties, const char* szName, char* pszValue, unsigned long* pnSize)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    if (pnSize == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE_PTR, __LINE__);
    }
    if (!pProperty->GetValue(pszValue, *pnSize))
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE, __LINE__);
    }
}

void SetText(ClParameterContainer& cProperties, const char* szName, const char* szValue)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    CheckWritable(*pProperty);
    pProperty->SetValue(szValue);
}

void GetLong(ClParameterContainer& cProperties, const char* szName, long* pnValue)
{
    WithInteger(
        *FindProperty(cProperties, szName),
        [pnValue](const ClParameterNumericInterface& cNumber) { *pnValue = cNumber.GetNumberLong(); },
        [pnValue](ClParameterEnumInterface& cEnumeration) { *pnValue = cEnumeration.GetValue(); });
}

void SetLong(ClParameterContainer& cProperties, const char* szName, long nValue)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    WithInteger(
        *pProperty,
        [&](ClParameterNumericInterface& cNumber)
        {
            CheckWritable(*pProperty);
            cNumber.SetNumberLong(nValue);
        },
        [&](ClParameterEnumInterface& cEnumeration)
        {
            CheckWritable(*pProperty);
            cEnumeration.SetValue(nValue);
        });
}

void GetDouble(ClParameterContainer& cProperties, const char* szName, double* pdValue)
{
    *pdValue = FindFloat(*FindProperty(cProperties, szName)).GetNumber();
}

void SetDouble(ClParameterContainer& cProperties, const char* szName, double dValue)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    ClParameterNumericInterface& cNumber = FindFloat(*pProperty);
    CheckWritable(*pProperty);
    cNumber.SetNumber(dValue);
}

void GetBlob(ClParameterContainer& cProperties, const char* szName, void* pValue, unsigned long* pnSize)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    if (pnSize == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE_PTR, __LINE__);
    }
    if (!FindBlob(*pProperty).GetBlob(pValue, *pnSize))
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE, __LINE__);
    }
}

void SetBlob(ClParameterContainer& cProperties, const char* szName, const void* pValue, unsigned long nSize)
{
    FindBlob(*FindProperty(cProperties, szName)).SetBlob(pValue, nSize);
}

void GetType(ClParameterContainer& cProperties, const char* szName, enumType_t* peType)
{
    ClParameter* pProperty = FindProperty(cProperties, szName);
    if (peType == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_PTR_NULL, __LINE__);
    }
    const ClParameterNumericInterface* pNumber = pProperty->GetNumericInterface();
    const bool bInteger = pNumber != nullptr && pNumber->IsInteger();
    const bool bFloat = pNumber != nullptr && pNumber->IsFloat();
    *peType = bInteger ? eTypeInteger : bFloat ? eTypeFloat : eTypeOther;
}

void GetAccess(ClParameterContainer& cProperties, const char* szName, enumAccess_t* peAccess)
{
    const ClParameter* pProperty = FindProperty(cProperties, szName);
    if (peAccess == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_PTR_NULL, __LINE__);
    }
    *peAccess = static_cast<enumAccess_t>(pProperty->m_nFlags & (eAccessWrite | eAccessRead));
}

void GetRangeDouble(ClParameterContainer& cProperties, const char* szName, double* pdMin, double* pdMax)
{
    GetRange(*FindProperty(cProperties, szName), true, pdMin, pdMax);
}

void GetRangeLong(ClParameterContainer& cProperties, const char* szName, long* pnMin, long* pnMax)
{
    GetRange(*FindProperty(cProperties, szName), false, pnMin, pnMax);
}

void GiveName(const ClParameter& cProperty, char* pszName, unsigned long* pnSize)
{
    const std::string sName = cProperty.GetPathName();
    SDKHelper::GetData<char>(reinterpret_cast<unsigned char*>(pszName), pnSize, sName.c_str(), sName.size() + 1);
}

void GiveEnd(char* pszText, unsigned long* pnSize)
{
    if (pnSize == nullptr)
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE_PTR, __LINE__);
    }
    if (pszText != nullptr && *pnSize != 0)
    {
        pszText[0] = '\0';
    }
    *pnSize = 0;
}

ClParameterEnumInterface* FindEnumeration(ClParameterContainer& cProperties, const char* szName)
{
    ClParameter* pProperty = cProperties.Find(szName);
    if (pProperty == nullptr)
    {
        Throw(FPC_ERROR_UNKNOWN_PARAMETER, __LINE__);
    }
    ClParameterEnumInterface* pEnumeration = pProperty->GetEnumInterface();
    if (pEnumeration == nullptr || pEnumeration->GetValueNameCount() == 0)
    {
        Throw(FPC_ERROR_UNSUPPORTED_FEATURE, __LINE__);
    }
    return pEnumeration;
}

void GiveNextValue(ClParameterEnumInterface* pEnumeration, unsigned long& nIndex, char* pszValue, unsigned long* pnSize)
{
    if (pEnumeration == nullptr)
    {
        ThrowNotBegun();
    }
    if (nIndex >= pEnumeration->GetValueNameCount())
    {
        GiveEnd(pszValue, pnSize);
        return;
    }
    const unsigned long nSize = pEnumeration->GetValueName(nIndex, nullptr, 0) + 1;
    TpArrayStatic<char> aName(nSize);
    pEnumeration->GetValueName(nIndex, aName.m_pData, nSize);
    SDKHelper::GetData<char>(reinterpret_cast<unsigned char*>(pszValue), pnSize, aName.m_pData, nSize);
    ++nIndex;
}

void ThrowNotBegun()
{
    throw ClException("The Enumeration is not initialized.", FPC_ERROR_INVALID_STATE, true, szModule, __LINE__);
}

void ThrowNullReference(long nNumber)
{
    throw ClException("handle reference is NULL pointer", nNumber, true, szModule, __LINE__);
}
} // namespace SDKHandleProperties
