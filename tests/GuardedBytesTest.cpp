#include "GuardedBytes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include <unistd.h>

namespace
{
bool OnPageBoundary(const unsigned char* p)
{
    return reinterpret_cast<std::uintptr_t>(p) % static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE)) == 0;
}

TEST(GuardedBytes, StandExactlyAtTheGuardPageWithWhatTheyWereGiven)
{
    const auto nPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::vector<unsigned char> aBytes(2 * nPage + 1, 77);
    for (const std::size_t nSize :
         {std::size_t(0), std::size_t(1), std::size_t(5), nPage - 1, nPage, nPage + 1, 2 * nPage + 1})
    {
        ClGuardedBytes cBehind(aBytes.data(), nSize);
        const ClReadOnlyBytes cBefore(aBytes.data(), nSize, EGuard::eBefore);
        const ClReadOnlyBytes cOdd(aBytes.data(), nSize, EGuard::eOdd);
        EXPECT_TRUE(OnPageBoundary(cBehind.Data() + nSize)) << nSize;
        EXPECT_TRUE(OnPageBoundary(cBefore.Data())) << nSize;
        EXPECT_EQ(1u, reinterpret_cast<std::uintptr_t>(cOdd.Data()) % 2) << nSize;
        EXPECT_TRUE(OnPageBoundary(cOdd.Data() + nSize + (nSize % 2 == 0 ? 1 : 0))) << nSize;
        for (const ClGuardedBytes* p : std::initializer_list<const ClGuardedBytes*>{&cBehind, &cBefore, &cOdd})
        {
            EXPECT_EQ(nSize, p->Size());
            EXPECT_TRUE(std::equal(p->Data(), p->Data() + nSize, aBytes.data())) << nSize;
        }
        std::memset(cBehind.Data(), 1, nSize);
        cBehind.ForbidWriting();
        EXPECT_EQ(static_cast<std::ptrdiff_t>(nSize), std::count(cBehind.Data(), cBehind.Data() + nSize, 1));
    }
}

TEST(GuardedBytes, MovingInputIsAtAnotherPlaceInEverySecondCall)
{
    const std::vector<unsigned char> aBytes = {1, 2, 3, 4};
    const ClMovingInput cInput(aBytes);
    for (const long nCall : {0L, 1L, 2L, 3L})
    {
        const ClReadOnlyBytes& cBytes = cInput.Place(nCall);
        EXPECT_EQ(nCall % 2 == 0, OnPageBoundary(cBytes.Data() + 4)) << nCall;
        EXPECT_EQ(nCall % 2 == 0 ? 0u : 1u, reinterpret_cast<std::uintptr_t>(cBytes.Data()) % 2) << nCall;
        EXPECT_TRUE(std::equal(aBytes.begin(), aBytes.end(), cBytes.Data())) << nCall;
    }
}

TEST(GuardedBytes, VectorEndsAtTheGuardPageAndTurnsIntoAnOrdinaryOne)
{
    const ClGuardedVector aBytes(13, 7);
    EXPECT_TRUE(OnPageBoundary(aBytes.data() + 13));
    const ClGuardedVector aCopy = aBytes;
    EXPECT_NE(aBytes.data(), aCopy.data());
    EXPECT_EQ(aBytes, aCopy);
    const std::vector<unsigned char> aOrdinary = aCopy;
    EXPECT_EQ(std::vector<unsigned char>(13, 7), aOrdinary);
    EXPECT_EQ(aBytes, ClGuardedVector(aOrdinary));
}

class GuardedBytesDeathTest : public testing::Test
{
protected:
    GuardedBytesDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    static void Read(const unsigned char* p)
    {
        [[maybe_unused]] const unsigned char n = *const_cast<const volatile unsigned char*>(p);
    }
};

TEST_F(GuardedBytesDeathTest, CannotBeReadBehindTheirEnd)
{
    const ClGuardedBytes cBytes("abcde", 5);
    EXPECT_EQ('e', cBytes.Data()[4]);
    EXPECT_DEATH(Read(cBytes.Data() + 5), "");
    const ClGuardedVector aBytes(5);
    EXPECT_DEATH(Read(aBytes.data() + 5), "");
}

TEST_F(GuardedBytesDeathTest, CannotBeReadBeforeTheirBeginning)
{
    const ClGuardedBytes cBytes("abcde", 5, EGuard::eBefore);
    EXPECT_EQ('a', cBytes.Data()[0]);
    EXPECT_DEATH(Read(cBytes.Data() - 1), "");
}

TEST_F(GuardedBytesDeathTest, CannotBeWrittenOnceThatIsForbidden)
{
    for (const EGuard eGuard : {EGuard::eBehind, EGuard::eBefore, EGuard::eOdd})
    {
        const ClReadOnlyBytes cBytes("abcdef", 6, eGuard);
        EXPECT_EQ('a', cBytes.Data()[0]);
        EXPECT_DEATH(*const_cast<volatile unsigned char*>(cBytes.Data()) = 1, "");
        EXPECT_DEATH(*const_cast<volatile unsigned char*>(cBytes.Data() + 5) = 1, "");
    }
}
} // namespace
