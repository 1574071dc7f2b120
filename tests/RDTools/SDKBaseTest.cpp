#include "RDTools/SDKBase.hpp"

#include "TestTools.hpp"

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace
{
/// A library whose version text and failures a test chooses.
class ClTestLibrary : public TpSDKBase<ClTestLibrary>
{
public:
    void OnInitialize() override
    {
        if (m_nFailInitialize != 0)
        {
            throw ClExVelmarin(m_nFailInitialize, "SDKBaseTest", __LINE__);
        }
    }
    void OnUninitialize() override
    {
        if (m_nFailUninitialize != 0)
        {
            throw ClExVelmarin(m_nFailUninitialize, "SDKBaseTest", __LINE__);
        }
    }

    static const char* m_szLongVersion;
    static long m_nFailInitialize;
    static long m_nFailUninitialize;
};

constexpr char szGoodVersion[] = "SDK: Test Version: 12.3 Owner of it";

const char* ClTestLibrary::m_szLongVersion = szGoodVersion;
long ClTestLibrary::m_nFailInitialize = 0;
long ClTestLibrary::m_nFailUninitialize = 0;

class SDKBase : public testing::Test
{
protected:
    ~SDKBase() override
    {
        ClTestLibrary::m_szLongVersion = szGoodVersion;
        ClTestLibrary::m_nFailInitialize = 0;
        ClTestLibrary::m_nFailUninitialize = 0;
        while (ClTestLibrary::Uninitialize() == FPC_SUCCESS)
        {
        }
        EXPECT_EQ(nullptr, ClTestLibrary::m_pInstance);
    }
};
} // namespace

TEST_F(SDKBase, CountsInitializations)
{
    EXPECT_EQ(0, ClTestLibrary::Initialize(nullptr));
    EXPECT_EQ(0, ClTestLibrary::Initialize("any text"));
    EXPECT_EQ(2u, ClTestLibrary::m_nReferenceCount);
    EXPECT_EQ(0, ClTestLibrary::Uninitialize());
    EXPECT_NE(nullptr, ClTestLibrary::m_pInstance);
    EXPECT_EQ(0, ClTestLibrary::Uninitialize());
    EXPECT_EQ(nullptr, ClTestLibrary::m_pInstance);
    EXPECT_EQ(-2, ClTestLibrary::Uninitialize());
    EXPECT_EQ(-2, ClTestLibrary::Uninitialize());
    EXPECT_EQ(0u, ClTestLibrary::m_nReferenceCount);
}

TEST_F(SDKBase, FailureOfTheObjectIsTheResult)
{
    ClTestLibrary::m_nFailInitialize = -35;
    EXPECT_EQ(-35, ClTestLibrary::Initialize(nullptr));
    EXPECT_EQ(0u, ClTestLibrary::m_nReferenceCount);
    ClTestLibrary::m_nFailInitialize = 0;
    EXPECT_EQ(0, ClTestLibrary::Initialize(nullptr));
    ClTestLibrary::m_nFailUninitialize = -101;
    EXPECT_EQ(-101, ClTestLibrary::Uninitialize());
    ClTestLibrary::m_nFailUninitialize = 0;
    EXPECT_EQ(0, ClTestLibrary::Initialize(nullptr)); // the object that stayed goes with this reference
    EXPECT_EQ(0, ClTestLibrary::Uninitialize());
}

TEST_F(SDKBase, AnUnreadableVersionFailsAndLeavesOneReference)
{
    ClTestLibrary::m_szLongVersion = "SDK: Test Version: 12.3";
    EXPECT_EQ(-101, ClTestLibrary::Initialize(nullptr));
    EXPECT_EQ(1u, ClTestLibrary::m_nReferenceCount);
    EXPECT_NE(nullptr, ClTestLibrary::m_pInstance);
}

TEST_F(SDKBase, VersionIsTheWordBehindTheSignature)
{
    const ClGuardedBytes cBuffer(5);
    unsigned long nSize = 5;
    ClTestLibrary::GetVersion(reinterpret_cast<char*>(cBuffer.Data()), &nSize);
    EXPECT_EQ(5u, nSize);
    EXPECT_EQ(0, std::memcmp("12.3", cBuffer.Data(), 5)); // the terminator in place of the blank
}

TEST_F(SDKBase, VersionFollowsTheSizeProtocol)
{
    unsigned long nSize = 0;
    EXPECT_RAISES(ClTestLibrary::GetVersion(nullptr, &nSize), ClExVelmarin, -21,
                  "The size of the finger template is not valid.");
    EXPECT_EQ(5u, nSize);
    EXPECT_NO_THROW(ClTestLibrary::GetVersion(nullptr, &nSize));
    char szBuffer[] = "zzzz";
    nSize = 4;
    EXPECT_RAISES(ClTestLibrary::GetVersion(szBuffer, &nSize), ClExVelmarin, -21,
                  "The size of the finger template is not valid.");
    EXPECT_STREQ("zzzz", szBuffer);
    EXPECT_RAISES(ClTestLibrary::GetVersion(szBuffer, nullptr), ClExVelmarin, -24,
                  "Pointer to template-size is not valid.");
}

TEST_F(SDKBase, VersionNeedsSignatureAndBlank)
{
    for (const char* szBad : {"", "SDK: Test 12.3 Owner", "SDK: Test Version:12.3 Owner", "SDK: Test Version: 12.3"})
    {
        ClTestLibrary::m_szLongVersion = szBad;
        unsigned long nSize = 100;
        EXPECT_RAISES(ClTestLibrary::GetVersion(nullptr, &nSize), ClException, -101,
                      "Internal error.\nszVersion signature not found.");
        EXPECT_EQ(100u, nSize);
    }
}

TEST_F(SDKBase, CountsRightFromManyThreads)
{
    std::atomic<int> nFailures{0};
    std::vector<std::thread> aThreads;
    for (int i = 0; i < 4; ++i)
    {
        aThreads.emplace_back(
            [&nFailures]
            {
                for (int n = 0; n < 300; ++n)
                {
                    nFailures += ClTestLibrary::Initialize(nullptr) != 0;
                    nFailures += ClTestLibrary::Uninitialize() != 0;
                }
            });
    }
    for (std::thread& cThread : aThreads)
    {
        cThread.join();
    }
    EXPECT_EQ(0, nFailures);
    EXPECT_EQ(0u, ClTestLibrary::m_nReferenceCount);
}
