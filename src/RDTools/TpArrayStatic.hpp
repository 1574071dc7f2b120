#pragma once

#include "RDTools/Exception.hpp"

/// Array-new that reports an exhausted heap, and a size that no heap can hold, as ClExBadAlloc.
template <class T> T* NewArray(unsigned long nEntries)
{
    return ConvertBadAlloc([nEntries] { return new T[nEntries]; });
}

/// A heap array of nEntries default-constructed elements; plain element types are not initialised. Indices are not
/// checked: callers stay within Entries(). Not copyable.
template <class T> class TpArrayStatic
{
public:
    TpArrayStatic() = default;
    explicit TpArrayStatic(unsigned long nEntries) { Allocate(nEntries); }
    TpArrayStatic(const TpArrayStatic&) = delete;
    TpArrayStatic& operator=(const TpArrayStatic&) = delete;
    virtual ~TpArrayStatic() { delete[] m_pData; }

    virtual unsigned long Entries() const { return m_nEntries; }

    /// Discards the old contents and allocates nEntries elements: not a resize. Without memory: ClExBadAlloc, the old
    /// contents are gone and the old count stands until the array is next used.
    virtual void New(unsigned long nEntries) { Allocate(nEntries); }

    /// Releases the storage.
    virtual void Clear() { Allocate(0); }

    T& operator[](unsigned long nIndex) { return m_pData[nIndex]; }
    const T& operator[](unsigned long nIndex) const { return m_pData[nIndex]; }

    /// Index of the first element equal to value from nStart upward, or -1 converted to unsigned long.
    unsigned long Find(const T& value, unsigned long nStart) const
    {
        const unsigned long nEntries = m_pData != nullptr ? Entries() : 0;
        for (unsigned long i = nStart; i < nEntries; ++i)
        {
            if (m_pData[i] == value)
            {
                return i;
            }
        }
        return static_cast<unsigned long>(-1);
    }

    unsigned long m_nEntries = 0; ///< elements allocated; the capacity of a growing array
    T* m_pData = nullptr;         ///< null exactly when no storage is held

protected:
    void Allocate(unsigned long nEntries)
    {
        delete[] m_pData;
        m_pData = nullptr;
        if (nEntries != 0)
        {
            m_pData = NewArray<T>(nEntries);
        }
        m_nEntries = nEntries;
    }
};
