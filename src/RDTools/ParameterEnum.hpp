#pragma once

#include "RDTools/Parameter.hpp"
#include "RDTools/TpArrayDynamic.hpp"

#include <strings.h>
#include <type_traits>
#include <utility>

/// All enumerations alike, whatever their type.
class ClParameterEnumInterface
{
public:
    virtual ~ClParameterEnumInterface();

    virtual unsigned long GetValueNameCount() = 0;
    /// Length of name nIndex (not checked), which is copied if it fits; a buffer that is too small gets an empty text.
    virtual unsigned long GetValueName(unsigned long nIndex, char* szBuffer, unsigned long nSize) = 0;
    virtual long GetValue() = 0;
    /// Errors: ClExRange -35 if the table has entries and none of this value.
    virtual void SetValue(long nValue) = 0;

    bool m_bPointer = false; ///< the value is a pointer, and the name table at most a help

protected:
    ClParameterEnumInterface() = default;
};

/// Opaque blocks of bytes. No parameter of this system is one.
class ClParameterBlobInterface
{
public:
    virtual ~ClParameterBlobInterface();

    virtual bool GetBlob(void* pValue, unsigned long& nSize) = 0;
    virtual void SetBlob(const void* pValue, unsigned long nSize) = 0;
    virtual unsigned long GetBlobSize() const = 0;
    virtual void ClearBlob() = 0;

protected:
    ClParameterBlobInterface() = default;
};

[[noreturn]] void ThrowDuplicateName();
[[noreturn]] void ThrowNoSuchText(const char* szValue, const char* szName);
[[noreturn]] void ThrowNoSuchValue(long nValue, const char* szName);
[[noreturn]] void ThrowValueHasNoName(const char* szName, const char* szValue);
/// Text of a value that has no name: "%d" for integers, "%p" for pointers, "NULL" for a null pointer.
void PrintEnumValue(long nValue, bool bPointer, char (&szText)[32]);
unsigned long CopyValueName(const char* szName, char* szBuffer, unsigned long nSize);

/// One row of a table of names that stands in the code.
struct StEnumName
{
    long nValue;
    const char* szName;
};

/// A value chosen from a table of names: an enumeration, a boolean with named values, or a pointer. Names are compared
/// without regard to case.
template <class T, class Base>
class TpParameterEnumPointer : public TpParameter<T, Base>, public ClParameterEnumInterface
{
public:
    /// One row of the table.
    class ClMapEntry
    {
    public:
        ClMapEntry() = default;
        ClMapEntry(const ClMapEntry&) = delete;
        virtual ~ClMapEntry() { delete[] m_szName; }
        ClMapEntry& operator=(const ClMapEntry& cOther)
        {
            if (this != &cOther)
            {
                ClParameterBase::SetString(&m_szName, cOther.m_szName);
                m_Value = cOther.m_Value;
            }
            return *this;
        }

        T m_Value = T();
        char* m_szName = nullptr; ///< owned
    };

    ClParameterBase* Clone() override { return this->CloneAs(this); }

    void CopyTo(ClParameterBase* pDest) override
    {
        TpParameter<T, Base>::CopyTo(pDest);
        TpParameterEnumPointer* pCopy = dynamic_cast<TpParameterEnumPointer*>(pDest);
        pCopy->m_bPointer = m_bPointer;
        pCopy->m_aMap.Clear();
        for (unsigned long i = 0; i < m_aMap.Entries(); ++i)
        {
            pCopy->m_aMap.Add(m_aMap[i]);
        }
    }

    ClParameterEnumInterface* GetEnumInterface() override { return this; }
    bool IsEnum() const override { return m_aMap.Entries() != 0; }
    bool IsPointer() const override { return m_bPointer; }

    /// Errors: ClExVelmarin -46 if the name is in the table.
    virtual void AddValue(T value, const char* szName)
    {
        if (IndexOf(szName) < m_aMap.Entries())
        {
            ThrowDuplicateName();
        }
        ClMapEntry cEntry;
        cEntry.m_Value = value;
        ClParameterBase::SetString(&cEntry.m_szName, szName == nullptr ? "" : szName);
        m_aMap.Add(cEntry);
    }

    /// A whole table in its order. Errors: as above, the rows before stay.
    template <unsigned long nCount> void AddValues(const StEnumName (&aNames)[nCount])
    {
        for (const StEnumName& cName : aNames)
        {
            AddValue(FromLong(cName.nValue), cName.szName);
        }
    }

    virtual void RemoveValue(const char* szName) { RemoveEntry(IndexOf(szName)); }
    virtual void RemoveValue(T value) { RemoveEntry(IndexOfValue(value)); }

    unsigned long GetValueNameCount() override { return m_aMap.Entries(); }
    unsigned long GetValueName(unsigned long nIndex, char* szBuffer, unsigned long nSize) override
    {
        return CopyValueName(m_aMap[nIndex].m_szName, szBuffer, nSize);
    }

    long GetValue() override { return ToLong(this->ReadValue()); }
    void SetValue(long nValue) override
    {
        const T value = FromLong(nValue);
        if (m_aMap.Entries() != 0 && ToLong(value) != nValue) // no T at all, so none of the table
        {
            ThrowNoSuchValue(nValue, this->m_szName);
        }
        SetTypedValue(value);
    }
    /// The same for the enumeration's own type.
    template <class U, class = std::enable_if_t<std::is_same_v<U, T> && !std::is_same_v<U, long>>>
    void SetValue(U value)
    {
        SetTypedValue(value);
    }

    /// Errors: ClExRange -35 for a text that is not in the table, numbers included.
    void SetValue(const char* szValue) override
    {
        const unsigned long nIndex = IndexOf(szValue);
        if (nIndex >= m_aMap.Entries())
        {
            ThrowNoSuchText(szValue, this->m_szName);
        }
        this->WriteValue(m_aMap[nIndex].m_Value);
    }

    using Base::GetDefaultValue;
    bool GetValue(char* szBuffer, unsigned long& nSize) override
    {
        return GetValueT2String(this->ReadValue(), szBuffer, nSize);
    }
    bool GetDefaultValue(char* szBuffer, unsigned long& nSize) override
    {
        return GetValueT2String(this->m_Default, szBuffer, nSize);
    }

    /// Errors: ClExRange -35 for a value that is missing in a table with entries.
    bool GetValueT2String(T value, char* szBuffer, unsigned long& nSize)
    {
        const unsigned long nIndex = IndexOfValue(value);
        if (nIndex < m_aMap.Entries())
        {
            return GiveText(m_aMap[nIndex].m_szName, szBuffer, nSize);
        }
        char szText[32];
        PrintEnumValue(ToLong(value), std::is_pointer_v<T>, szText);
        if (m_aMap.Entries() != 0)
        {
            ThrowValueHasNoName(this->m_szName, szText);
        }
        return GiveText(szText, szBuffer, nSize);
    }

    TpArrayDynamic<ClMapEntry, 10> m_aMap;

private:
    static long ToLong(T value)
    {
        if constexpr (std::is_pointer_v<T>)
        {
            return reinterpret_cast<long>(value);
        }
        else
        {
            return static_cast<long>(value);
        }
    }

    static T FromLong(long nValue)
    {
        if constexpr (std::is_pointer_v<T>)
        {
            return reinterpret_cast<T>(nValue); // NOLINT(performance-no-int-to-ptr): a pointer travels as a number
        }
        else
        {
            return static_cast<T>(nValue);
        }
    }

    void SetTypedValue(T value)
    {
        if (m_aMap.Entries() != 0 && IndexOfValue(value) >= m_aMap.Entries())
        {
            ThrowNoSuchValue(ToLong(value), this->m_szName);
        }
        this->WriteValue(value);
    }

    /// Index of the first entry of this name or value; the entry count if there is none.
    unsigned long IndexOf(const char* szName) const
    {
        unsigned long i = szName == nullptr ? m_aMap.Entries() : 0; // no name is no entry's name
        while (i < m_aMap.Entries() && strcasecmp(m_aMap[i].m_szName, szName) != 0)
        {
            ++i;
        }
        return i;
    }

    unsigned long IndexOfValue(T value) const
    {
        unsigned long i = 0;
        while (i < m_aMap.Entries() && m_aMap[i].m_Value != value)
        {
            ++i;
        }
        return i;
    }

    /// The entries behind it move down by exchange: copies of their names could fail half-way.
    void RemoveEntry(unsigned long nIndex)
    {
        if (nIndex >= m_aMap.Entries())
        {
            return;
        }
        for (; nIndex + 1 < m_aMap.Entries(); ++nIndex)
        {
            std::swap(m_aMap[nIndex].m_Value, m_aMap[nIndex + 1].m_Value);
            std::swap(m_aMap[nIndex].m_szName, m_aMap[nIndex + 1].m_szName);
        }
        m_aMap.RemoveAt(nIndex);
    }
};
