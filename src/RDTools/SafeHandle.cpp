#include "RDTools/SafeHandle.hpp"

#include <cstddef>
#include <cstring>

namespace
{
bool HasStamp(const void* pHandle, std::size_t nOffset, const char* szSignature)
{
    const char* szStamp = static_cast<const char*>(pHandle) + nOffset;
    return std::strncmp(szStamp, szSignature, ClHandleRecord::nSignatureSize) == 0;
}

bool HasStamps(const void* pHandle, const char* szFirst, const char* szSecond)
{
    return HasStamp(pHandle, offsetof(ClHandleRecord, m_szFirst), szFirst) &&
           HasStamp(pHandle, offsetof(ClHandleRecord, m_szSecond), szSecond);
}
} // namespace

void* ClHandleRecord::Object(const void* pHandle, const char* szFirst, const char* szSecond)
{
    void* pObject = nullptr;
    if (HasStamps(pHandle, szFirst, szSecond))
    {
        // Copied, because an address that only looks like a handle may be odd.
        std::memcpy(&pObject, static_cast<const char*>(pHandle) + offsetof(ClHandleRecord, m_pObject), sizeof pObject);
    }
    if (pObject == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_INVALID_HANDLE, "RDTools/SafeHandle", __LINE__);
    }
    return pObject;
}

bool ClHandleRecord::IsStamped(const void* pHandle, const char* szSignature)
{
    return HasStamps(pHandle, szSignature, szSignature);
}
