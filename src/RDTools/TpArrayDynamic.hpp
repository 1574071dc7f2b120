#pragma once

#include "RDTools/TpArrayStatic.hpp"

/// A growing array. N is the number of elements added to the capacity each time the array is full: growth is additive.
/// Entries() counts the used elements, never the capacity. Taken as a TpArrayStatic it shows its used elements only.
template <class T, unsigned long N> class TpArrayDynamic : public TpArrayStatic<T>
{
public:
    unsigned long Entries() const override { return m_nUsed; }

    /// As in the base; all new elements count as used.
    void New(unsigned long nEntries) override
    {
        this->Allocate(nEntries);
        m_nUsed = nEntries;
    }

    /// Forgets the elements but keeps the storage, so that the list refills without allocating: the old elements stay
    /// constructed, with what they own, until they are overwritten.
    void Clear() override { m_nUsed = 0; }

    /// Adds nAdd to the capacity; the used elements are copied by assignment. Without memory: ClExBadAlloc, unchanged.
    void Enlarge(unsigned long nAdd)
    {
        const unsigned long nCapacity = this->m_nEntries + nAdd;
        if (nCapacity < nAdd)
        {
            ThrowBadAlloc();
        }
        if (nCapacity == 0)
        {
            return;
        }
        T* pData = NewArray<T>(nCapacity);
        if (this->m_pData == nullptr) // a New without memory has left its old count
        {
            m_nUsed = 0;
        }
        try
        {
            for (unsigned long i = 0; i < m_nUsed; ++i)
            {
                pData[i] = this->m_pData[i];
            }
        }
        catch (...)
        {
            delete[] pData;
            throw;
        }
        delete[] this->m_pData;
        this->m_pData = pData;
        this->m_nEntries = nCapacity;
    }

    /// Appends by assignment and returns the index written. The value may be an element of this array.
    unsigned long Add(const T& value)
    {
        if (m_nUsed < this->m_nEntries && this->m_pData != nullptr)
        {
            this->m_pData[m_nUsed] = value;
            return m_nUsed++;
        }
        return AddEnlarging(value);
    }

    /// Removes the entry by shifting the later entries down one place, by assignment; the storage stays. No
    /// effect for an index beyond the end.
    void RemoveAt(unsigned long nIndex)
    {
        if (nIndex >= m_nUsed || this->m_pData == nullptr)
        {
            return;
        }
        --m_nUsed;
        for (unsigned long i = nIndex; i < m_nUsed; ++i)
        {
            this->m_pData[i] = this->m_pData[i + 1];
        }
    }

    unsigned long m_nUsed = 0; ///< elements in use, at most the capacity

private:
    unsigned long AddEnlarging(const T& value)
    {
        const bool bOwnElement =
            this->m_pData != nullptr && &value >= this->m_pData && &value < this->m_pData + m_nUsed;
        const unsigned long nOwnIndex = bOwnElement ? static_cast<unsigned long>(&value - this->m_pData) : 0;
        Enlarge(N);
        this->m_pData[m_nUsed] = bOwnElement ? this->m_pData[nOwnIndex] : value;
        return m_nUsed++;
    }
};
