#include "RDTools/TpSingleton.hpp"

#include "TestTools.hpp"

#include <thread>
#include <vector>

namespace
{
/// Counts its life and fails where it is told to.
class ClCounted : public TpSingleton<ClCounted>
{
public:
    ClCounted() { ++m_nAlive; }
    ~ClCounted() override { --m_nAlive; }

    void OnInitialize()
    {
        ++m_nInitialized;
        if (m_nFailInitialize != 0)
        {
            throw ClExRange("no", m_nFailInitialize, true, "TpSingletonTest", __LINE__);
        }
    }
    void OnUninitialize()
    {
        ++m_nUninitialized;
        if (m_nFailUninitialize != 0)
        {
            throw ClExVelmarin(m_nFailUninitialize, "TpSingletonTest", __LINE__);
        }
    }

    static void Release()
    {
        const ClMutexLock cLock(m_oReferenceMutex);
        PrivateDelete();
    }

    static int m_nAlive;
    static int m_nInitialized;
    static int m_nUninitialized;
    static long m_nFailInitialize;
    static long m_nFailUninitialize;
};

int ClCounted::m_nAlive = 0;
int ClCounted::m_nInitialized = 0;
int ClCounted::m_nUninitialized = 0;
long ClCounted::m_nFailInitialize = 0;
long ClCounted::m_nFailUninitialize = 0;

class TpSingletonOfCounted : public testing::Test
{
protected:
    TpSingletonOfCounted()
    {
        ClCounted::m_nInitialized = 0;
        ClCounted::m_nUninitialized = 0;
        ClCounted::m_nFailInitialize = 0;
        ClCounted::m_nFailUninitialize = 0;
    }
};

/// Raises what is no ClException.
class ClStranger : public TpSingleton<ClStranger>
{
public:
    ClStranger() { throw std::bad_alloc(); }
    void OnInitialize() {}
    void OnUninitialize() { ADD_FAILURE() << "there is no object"; }
};
} // namespace

TEST_F(TpSingletonOfCounted, BeginsWithoutAnObject)
{
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
    EXPECT_EQ(nullptr, ClCounted::m_pInstance);
}

TEST_F(TpSingletonOfCounted, SharesOneObjectUntilTheLastReferenceIsGivenBack)
{
    ClCounted* pFirst = ClCounted::New();
    ClCounted* pSecond = ClCounted::New();
    EXPECT_EQ(pFirst, pSecond);
    EXPECT_EQ(ClCounted::m_pInstance, pFirst);
    EXPECT_EQ(2u, ClCounted::m_nReferenceCount);
    EXPECT_EQ(1, ClCounted::m_nInitialized);
    ClCounted::Release();
    EXPECT_EQ(1, ClCounted::m_nAlive);
    EXPECT_EQ(0, ClCounted::m_nUninitialized);
    ClCounted::Release();
    EXPECT_EQ(0, ClCounted::m_nAlive);
    EXPECT_EQ(1, ClCounted::m_nUninitialized);
    EXPECT_EQ(nullptr, ClCounted::m_pInstance);
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
}

TEST_F(TpSingletonOfCounted, RefusesOneReleaseTooMany)
{
    ClCounted::New();
    ClCounted::Release();
    EXPECT_RAISES(ClCounted::Release(), ClException, -2,
                  "Prior initialization is necessary.\nNo Singleton Instance exist multiple delete.");
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
    ClCounted::New(); // the mutex was unlocked, the count is right
    EXPECT_EQ(1u, ClCounted::m_nReferenceCount);
    ClCounted::Release();
}

TEST_F(TpSingletonOfCounted, FailedInitializationGivesTheReferenceBack)
{
    ClCounted::m_nFailInitialize = -35;
    try
    {
        ClCounted::New();
        FAIL() << "raises nothing";
    }
    catch (const ClException& cFailure)
    {
        EXPECT_EQ(typeid(ClException), typeid(cFailure)); // a copy, no longer the class that was raised
        EXPECT_EQ(-35, cFailure.Number());
        EXPECT_STREQ("One of the parameters is out of range.\nno", cFailure.What());
    }
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
    EXPECT_EQ(nullptr, ClCounted::m_pInstance);
    EXPECT_EQ(0, ClCounted::m_nAlive);
    EXPECT_EQ(1, ClCounted::m_nUninitialized);
    ClCounted::m_nFailInitialize = 0;
    EXPECT_NE(nullptr, ClCounted::New());
    ClCounted::Release();
}

TEST_F(TpSingletonOfCounted, FailedUninitializationKeepsTheObject)
{
    ClCounted* pObject = ClCounted::New();
    ClCounted::m_nFailUninitialize = -101;
    EXPECT_RAISES(ClCounted::Release(), ClExVelmarin, -101, "Internal error.");
    EXPECT_EQ(pObject, ClCounted::m_pInstance);
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
    ClCounted::m_nFailUninitialize = 0;
    EXPECT_EQ(pObject, ClCounted::New()); // not made again
    EXPECT_EQ(1, ClCounted::m_nInitialized);
    ClCounted::Release();
    EXPECT_EQ(0, ClCounted::m_nAlive);
}

TEST(TpSingleton, WithoutMemoryForTheObjectThereIsNoReference)
{
    EXPECT_RAISES(ClStranger::New(), ClException, -102,
                  "Memory allocation failed or given mem-block too small.\nMemory allocation failed");
    EXPECT_EQ(0u, ClStranger::m_nReferenceCount);
}

TEST_F(TpSingletonOfCounted, CountsRightFromManyThreads)
{
    std::vector<std::thread> aThreads;
    for (int i = 0; i < 4; ++i)
    {
        aThreads.emplace_back(
            []
            {
                for (int n = 0; n < 500; ++n)
                {
                    ClCounted::New();
                    ClCounted::Release();
                }
            });
    }
    for (std::thread& cThread : aThreads)
    {
        cThread.join();
    }
    EXPECT_EQ(0u, ClCounted::m_nReferenceCount);
    EXPECT_EQ(0, ClCounted::m_nAlive);
    EXPECT_EQ(ClCounted::m_nInitialized, ClCounted::m_nUninitialized);
}
