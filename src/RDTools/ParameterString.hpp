#pragma once

#include "RDTools/Parameter.hpp"

#include <cstring>

/// A text in a character buffer of the caller, which the binding reaches; m_nCapacity bytes, terminator included.
template <class T, class Base, int N> class TpParameterString;

template <class Base> class TpParameterString<char*, Base, 0> : public TpParameter<char*, Base>
{
public:
    ClParameterBase* Clone() override { return this->CloneAs(this); }

    void CopyTo(ClParameterBase* pDest) override
    {
        TpParameter<char*, Base>::CopyTo(pDest);
        dynamic_cast<TpParameterString*>(pDest)->m_nCapacity = m_nCapacity;
    }

    bool IsString() const override { return true; }

    /// Errors: a null text -701, a text that does not fit -21; the buffer keeps what it held.
    void SetValue(const char* szValue) override
    {
        CheckPointer(szValue);
        const std::size_t nSize = std::strlen(szValue) + 1;
        if (nSize > m_nCapacity)
        {
            throw ClException("String memory ar too small", FPC_ERROR_TEMPLATE_SIZE, true, szModule, __LINE__);
        }
        std::memmove(this->ReadValue(), szValue, nSize);
    }

    using Base::GetDefaultValue;
    using Base::GetValue;

    /// The text convention of ClParameter, but a null buffer of sufficient size is an error, -701.
    bool GetValue(char* szBuffer, unsigned long& nSize) override
    {
        const char* szText = this->ReadValue();
        if (szBuffer == nullptr && nSize > std::strlen(szText))
        {
            CheckPointer(szBuffer);
        }
        return GiveText(szText, szBuffer, nSize);
    }

    bool GetDefaultValue(char* szBuffer, unsigned long& nSize) override
    {
        return GiveText(this->m_Default == nullptr ? "" : this->m_Default, szBuffer, nSize);
    }

    unsigned long m_nCapacity = 0;

private:
    static constexpr const char* szModule = "RDTools/Parameter.hpp";

    static void CheckPointer(const char* szText)
    {
        if (szText == nullptr)
        {
            throw ClException("Point is Null", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
        }
    }
};
