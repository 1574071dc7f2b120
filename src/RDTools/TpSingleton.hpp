#pragma once

#include "RDTools/Exception.hpp"

#include <atomic>
#include <pthread.h>

/// Holds a mutex for the time of a block.
class ClMutexLock
{
public:
    explicit ClMutexLock(pthread_mutex_t& oMutex) : m_oMutex(oMutex) { pthread_mutex_lock(&m_oMutex); }
    ClMutexLock(const ClMutexLock&) = delete;
    ClMutexLock& operator=(const ClMutexLock&) = delete;
    ~ClMutexLock() { pthread_mutex_unlock(&m_oMutex); }

private:
    pthread_mutex_t& m_oMutex;
};

/// One shared, counted object of class Class, which has the operations OnInitialize() and OnUninitialize(): made by the
/// first New(), deleted by the PrivateDelete() that matches it.
template <class Class> class TpSingleton
{
public:
    virtual ~TpSingleton() = default;

    /// Adds a reference; returns the object. Errors: a ClException of making it or of OnInitialize(), the reference is
    /// given back.
    static Class* New()
    {
        const ClMutexLock cLock(m_oReferenceMutex);
        ++m_nReferenceCount;
        if (m_pInstance == nullptr)
        {
            try
            {
                m_pInstance = ConvertBadAlloc([] { return new Class; });
                m_pInstance->OnInitialize();
            }
            catch (const ClException& cFailure)
            {
                PrivateDelete();
                throw ClException(cFailure);
            }
        }
        return m_pInstance;
    }

    /// Gives one reference back. The caller holds m_oReferenceMutex. Errors: none left, ClException -2; a ClException
    /// of OnUninitialize(), the object stays.
    static void PrivateDelete()
    {
        if (m_nReferenceCount == 0)
        {
            throw ClException("No Singleton Instance exist multiple delete.", FPC_ERROR_NOT_INITIALIZED, true,
                              "RDTools/TpSingleton.hpp", __LINE__);
        }
        if (--m_nReferenceCount == 0 && m_pInstance != nullptr)
        {
            m_pInstance->OnUninitialize();
            delete m_pInstance;
            m_pInstance = nullptr;
        }
    }

    static pthread_mutex_t m_oReferenceMutex;            ///< guards the two below; not recursive
    static std::atomic<unsigned long> m_nReferenceCount; ///< atomic because it is also read without the mutex
    static Class* m_pInstance;                           ///< null unless there are references
};

// Constants at load time, so that other libraries may call from their own static constructors.
template <class Class> pthread_mutex_t TpSingleton<Class>::m_oReferenceMutex = PTHREAD_MUTEX_INITIALIZER;
template <class Class> std::atomic<unsigned long> TpSingleton<Class>::m_nReferenceCount = {0};
template <class Class> Class* TpSingleton<Class>::m_pInstance = nullptr;
