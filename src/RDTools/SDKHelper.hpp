#pragma once

/// Services of the exported interface.
class SDKHelper
{
public:
    /// The size protocol of text results. pnSize: in: bytes of pTarget; out: nSource, the bytes needed, whatever
    /// happens afterwards. Copies nSource bytes, or none if pTarget is null. Errors: ClExVelmarin -24 if pnSize is
    /// null, -21 if *pnSize was too small; nothing is copied.
    template <class T>
    static void GetData(unsigned char* pTarget, unsigned long* pnSize, const T* pSource, unsigned long nSource);
};

extern template void SDKHelper::GetData<char>(unsigned char*, unsigned long*, const char*, unsigned long);
