#include "KormelinSegmentation.hpp"

#include "TestTools.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <string>

TEST(KormelinSegmentation, VersionIsTheSameEverywhere)
{
    const std::string sNumbers = std::to_string(ClKormelinSegmentation::m_nMainVersionNumber) + "." +
                                 std::to_string(ClKormelinSegmentation::m_nInterfaceVersionNumber) + "." +
                                 std::to_string(ClKormelinSegmentation::m_nRelease) + "." +
                                 std::to_string(ClKormelinSegmentation::m_nBugfixVersionNumber);
    EXPECT_EQ("1.1.1407.3", sNumbers);
    EXPECT_EQ(sNumbers, ClKormelinSegmentation::m_szVersion);
    EXPECT_EQ(KS_VERSION_MAIN, ClKormelinSegmentation::m_nMainVersionNumber);
    EXPECT_EQ(KS_VERSION_INTERFACE, ClKormelinSegmentation::m_nInterfaceVersionNumber);
    EXPECT_EQ(KS_VERSION_RELEASE, ClKormelinSegmentation::m_nRelease);
    EXPECT_EQ(KS_VERSION_BUGFIX, ClKormelinSegmentation::m_nBugfixVersionNumber);
}

TEST(KormelinSegmentation, LongVersionIsProductVersionAndOwner)
{
    const std::string sLong = ClKormelinSegmentation::m_szLongVersion;
    const std::string sBegin = "SDK: VelmarinKormelinSegmentation Version: 1.1.1407.3 ";
    EXPECT_EQ(0u, sLong.rfind(sBegin, 0));
    EXPECT_GT(sLong.size(), sBegin.size());
    EXPECT_EQ(sLong.find(" Version: "), sLong.rfind(" Version: ")); // the owner's line must not hold it again
}

TEST(KormelinSegmentation, GivesTheVersionOfTheLongVersion)
{
    char szVersion[11];
    unsigned long nSize = sizeof szVersion;
    ClKormelinSegmentation::GetVersion(szVersion, &nSize);
    EXPECT_EQ(11u, nSize);
    EXPECT_STREQ("1.1.1407.3", szVersion);
}

TEST(KormelinSegmentation, IsOneObjectWhileItIsInitialised)
{
    EXPECT_EQ(nullptr, ClKormelinSegmentation::m_pInstance);
    EXPECT_EQ(0, ClKormelinSegmentation::Initialize(nullptr));
    EXPECT_EQ(1u, ClKormelinSegmentation::m_nReferenceCount);
    EXPECT_NE(nullptr, ClKormelinSegmentation::m_pInstance);
    EXPECT_NO_THROW(ClKormelinSegmentation::m_pInstance->OnInitialize());
    EXPECT_NO_THROW(ClKormelinSegmentation::m_pInstance->OnUninitialize());
    EXPECT_EQ(0, ClKormelinSegmentation::Uninitialize());
    EXPECT_EQ(nullptr, ClKormelinSegmentation::m_pInstance);
    EXPECT_EQ(-2, ClKormelinSegmentation::Uninitialize());
}
