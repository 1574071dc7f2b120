#pragma once

#include "RDTools/RDLogging.hpp"
#include "RDTools/SDKHelper.hpp"
#include "RDTools/TpSingleton.hpp"

#include <cstring>

/// The library as a whole: its one object with the count of initialisations, its logger and its version. Class gives
/// the text m_szLongVersion, in which " Version: " and a word, the version, are followed by a blank.
template <class Class, class Logging = ClSystemLogging> class TpSDKBase : public TpSingleton<Class>, public Logging
{
public:
    virtual void OnInitialize() = 0;   ///< by the first reference
    virtual void OnUninitialize() = 0; ///< by the last one

    /// Adds a reference; szParameter is not used. Returns 0 or the number of the failure. If the version cannot be read
    /// the reference stays nevertheless.
    static long Initialize([[maybe_unused]] const char* szParameter)
    {
        try
        {
            TpSingleton<Class>::New();
            CheckVersionRecord();
        }
        catch (const ClException& cFailure)
        {
            return cFailure.Number();
        }
        return FPC_SUCCESS;
    }

    /// Gives a reference back. Returns 0, or -2 if there is none, or the number of another failure.
    static long Uninitialize()
    {
        const ClMutexLock cLock(TpSingleton<Class>::m_oReferenceMutex);
        try
        {
            TpSingleton<Class>::PrivateDelete();
        }
        catch (const ClException& cFailure)
        {
            return cFailure.Number();
        }
        return FPC_SUCCESS;
    }

    /// The version by the size protocol of SDKHelper::GetData. Works at any time.
    /// Errors: ClException -101 if m_szLongVersion holds no version; those of GetData.
    static void GetVersion(char* pszVersion, unsigned long* pnSize)
    {
        static constexpr char szSignature[] = " Version: ";
        const char* szVersion = std::strstr(Class::m_szLongVersion, szSignature);
        const char* szEnd = nullptr;
        if (szVersion != nullptr)
        {
            szVersion += sizeof szSignature - 1;
            szEnd = std::strchr(szVersion, ' ');
        }
        if (szEnd == nullptr)
        {
            throw ClException("szVersion signature not found.", FPC_ERROR_INTERNAL, true, "RDTools/SDKBase.hpp",
                              __LINE__);
        }
        const unsigned long nSize = static_cast<unsigned long>(szEnd - szVersion) + 1; // the blank makes room for the 0
        SDKHelper::GetData<char>(reinterpret_cast<unsigned char*>(pszVersion), pnSize, szVersion, nSize);
        if (pszVersion != nullptr)
        {
            pszVersion[nSize - 1] = '\0';
        }
    }

private:
    static void CheckVersionRecord()
    {
        unsigned long nSize = 0;
        try
        {
            GetVersion(nullptr, &nSize);
        }
        catch (const ClException& cFailure)
        {
            if (cFailure.Number() != FPC_ERROR_TEMPLATE_SIZE) // the size is too small on purpose
            {
                throw;
            }
        }
    }
};
