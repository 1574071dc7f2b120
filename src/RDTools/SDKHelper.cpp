#include "RDTools/SDKHelper.hpp"

#include "RDTools/Exception.hpp"

#include <cstring>

template <class T>
void SDKHelper::GetData(unsigned char* pTarget, unsigned long* pnSize, const T* pSource, unsigned long nSource)
{
    if (pnSize == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_TEMPLATE_SIZE_PTR, "RDTools/SDKHelper", __LINE__);
    }
    const unsigned long nTarget = *pnSize;
    *pnSize = nSource;
    if (nTarget < nSource)
    {
        throw ClExVelmarin(FPC_ERROR_TEMPLATE_SIZE, "RDTools/SDKHelper", __LINE__);
    }
    if (pTarget != nullptr)
    {
        std::memcpy(pTarget, pSource, nSource);
    }
}

template void SDKHelper::GetData<char>(unsigned char*, unsigned long*, const char*, unsigned long);
