#include "RDTools/SDKHelper.hpp"

#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <string>

namespace
{
constexpr char szSource[] = "abcd"; // five bytes with the terminator

void Give(unsigned char* pTarget, unsigned long* pnSize)
{
    SDKHelper::GetData<char>(pTarget, pnSize, szSource, sizeof szSource);
}
} // namespace

TEST(SDKHelper, CopiesExactlyTheBytesOfTheSource)
{
    const ClGuardedBytes cTarget(sizeof szSource);
    unsigned long nSize = sizeof szSource;
    Give(cTarget.Data(), &nSize);
    EXPECT_EQ(5u, nSize);
    EXPECT_EQ(0, std::memcmp(szSource, cTarget.Data(), sizeof szSource));
}

TEST(SDKHelper, LeavesTheRestOfALargeBufferAlone)
{
    unsigned char anTarget[8];
    std::memset(anTarget, 0x5A, sizeof anTarget);
    unsigned long nSize = sizeof anTarget;
    Give(anTarget, &nSize);
    EXPECT_EQ(5u, nSize);
    EXPECT_EQ(0, std::memcmp("abcd\0\x5A\x5A\x5A", anTarget, sizeof anTarget));
}

TEST(SDKHelper, RefusesASizeOneByteTooSmallButTellsTheNeededOne)
{
    unsigned char anTarget[4];
    std::memset(anTarget, 0x5A, sizeof anTarget);
    unsigned long nSize = sizeof anTarget;
    EXPECT_RAISES(Give(anTarget, &nSize), ClExVelmarin, -21, "The size of the finger template is not valid.");
    EXPECT_EQ(5u, nSize);
    EXPECT_EQ(0, std::memcmp("ZZZZ", anTarget, sizeof anTarget));
}

TEST(SDKHelper, NullBufferMeasures)
{
    unsigned long nSize = 0;
    EXPECT_RAISES(Give(nullptr, &nSize), ClExVelmarin, -21, "The size of the finger template is not valid.");
    EXPECT_EQ(5u, nSize);
    EXPECT_NO_THROW(Give(nullptr, &nSize));
    EXPECT_EQ(5u, nSize);
}

TEST(SDKHelper, RefusesANullSize)
{
    unsigned char anTarget[8] = {};
    EXPECT_RAISES(Give(anTarget, nullptr), ClExVelmarin, -24, "Pointer to template-size is not valid.");
    EXPECT_EQ(0, anTarget[0]);
}
