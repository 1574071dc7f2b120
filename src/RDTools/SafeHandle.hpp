#pragma once

#include "RDTools/Exception.hpp"

#include <memory>

/// What a handle of the application points at: the object between two stamps, which tell whether the pointer is a
/// handle, and of which kind. There is no list of live handles.
struct ClHandleRecord
{
    static constexpr int nSignatureSize = 8; ///< bytes of a stamp, terminator included
    using Signature_t = char[nSignatureSize];

    /// The object of a handle. The stamps are read byte by byte, up to the first that differs: any readable address
    /// will do. Errors: ClExVelmarin -43 if a stamp differs or the object is null.
    static void* Object(const void* pHandle, const char* szFirst, const char* szSecond);
    /// Whether both stamps are szSignature.
    static bool IsStamped(const void* pHandle, const char* szSignature);

    Signature_t m_szFirst;
    void* m_pObject;
    Signature_t m_szSecond;
};

/// Runs the check of a handle. What it raises passes on; anything that is no std::exception, such as a fault that the
/// platform turned into an exception, becomes ClExVelmarin -43.
template <class Check> decltype(auto) GuardHandleCheck(Check&& check)
{
    try
    {
        return check();
    }
    catch (const std::exception&)
    {
        throw;
    }
    catch (...)
    {
        throw ClExVelmarin(FPC_ERROR_INVALID_HANDLE, "RDTools/SafeHandle.hpp", __LINE__);
    }
}

/// Handles of one kind: Class is the object's class, the two stamps are usually the same text.
template <class Class, const ClHandleRecord::Signature_t* pFirst, const ClHandleRecord::Signature_t* pSecond>
class TpSafeHandle
{
public:
    /// Makes an object and its record. Returns 0, or -102 without memory for the record.
    /// Errors: ClExVelmarin -44 if phHandle is null; those of the object's constructor, ClExBadAlloc among them.
    static long CreateHandle(void** phHandle)
    {
        if (phHandle == nullptr)
        {
            throw ClExVelmarin(FPC_ERROR_INVALID_PARAMETER, szModule, __LINE__);
        }
        std::unique_ptr<ClHandleRecord> pRecord(new (std::nothrow) ClHandleRecord);
        Class* pObject = pRecord == nullptr ? nullptr : ConvertBadAlloc([] { return new (std::nothrow) Class; });
        if (pObject == nullptr)
        {
            return FPC_ERROR_OUT_OF_MEMORY;
        }
        std::copy(*pFirst, *pFirst + ClHandleRecord::nSignatureSize, pRecord->m_szFirst);
        pRecord->m_pObject = pObject;
        std::copy(*pSecond, *pSecond + ClHandleRecord::nSignatureSize, pRecord->m_szSecond);
        *phHandle = pRecord.release();
        return FPC_SUCCESS;
    }

    /// Gives the object of a handle. Errors: ClExVelmarin -42 for null, *ppObject is untouched; -43 for anything but a
    /// handle of this kind, *ppObject is null.
    static void CheckHandle(const void* pHandle, Class** ppObject)
    {
        GuardHandleCheck(
            [&]
            {
                ThrowIfNull(pHandle);
                *ppObject = nullptr;
                *ppObject = static_cast<Class*>(ClHandleRecord::Object(pHandle, *pFirst, *pSecond));
            });
    }

    /// Deletes object and record, without wiping the stamps. Errors: those of CheckHandle.
    static void DeleteHandle(void* pHandle)
    {
        ThrowIfNull(pHandle);
        Class* pObject = nullptr;
        CheckHandle(pHandle, &pObject);
        delete pObject;
        delete static_cast<ClHandleRecord*>(pHandle);
    }

    /// The same for the caller's variable, which becomes null. Returns 0, or the number of the failure, *phHandle
    /// stays.
    static long DeleteHandle(void** phHandle)
    {
        try
        {
            DeleteHandle(*phHandle);
        }
        catch (const ClException& cFailure)
        {
            return cFailure.Number();
        }
        *phHandle = nullptr;
        return FPC_SUCCESS;
    }

private:
    static constexpr const char* szModule = "RDTools/SafeHandle.hpp";

    static void ThrowIfNull(const void* pHandle)
    {
        if (pHandle == nullptr)
        {
            throw ClExVelmarin(FPC_ERROR_NO_HANDLE, szModule, __LINE__);
        }
    }
};
