#include "FailingHeap.hpp"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace
{
/// Without it the compiler may leave out an allocation that is released at once.
template <class T> T* Seen(T* p)
{
    T* volatile pSeen = p;
    return pSeen;
}

bool NewFails()
{
    const std::unique_ptr<int> p(Seen(new (std::nothrow) int));
    return p == nullptr;
}

struct alignas(128) StAligned
{
    char m_acBytes[128];
};
} // namespace

TEST(FailingHeap, LetsAllBehindTheLimitFail)
{
    const ClFailingHeap cHeap(1);
    const bool abFails[] = {NewFails(), NewFails(), NewFails()};
    EXPECT_FALSE(abFails[0]);
    EXPECT_TRUE(abFails[1]);
    EXPECT_TRUE(abFails[2]);
    EXPECT_EQ(2, cHeap.Failed());
}

TEST(FailingHeap, LetsOneAloneFail)
{
    const ClFailingHeap cHeap(1, ClFailingHeap::eOnlyThat);
    const bool abFails[] = {NewFails(), NewFails(), NewFails()};
    EXPECT_FALSE(abFails[0]);
    EXPECT_TRUE(abFails[1]);
    EXPECT_FALSE(abFails[2]);
    EXPECT_EQ(1, cHeap.Failed());
}

TEST(FailingHeap, KnowsEveryOperatorNew)
{
    long nFailed = 0;
    int nRaised = 0;
    {
        const ClFailingHeap cHeap(0);
        const auto raises = [&nRaised](auto&& fn)
        {
            try
            {
                fn();
            }
            catch (const std::bad_alloc&)
            {
                ++nRaised;
            }
        };
        raises([] { delete Seen(new int); });
        raises([] { delete[] Seen(new int[3]); });
        raises([] { delete Seen(new StAligned); });
        raises([] { delete[] Seen(new StAligned[3]); });
        delete Seen(new (std::nothrow) StAligned);
        delete[] Seen(new (std::nothrow) StAligned[3]);
        delete[] Seen(new (std::nothrow) int[3]);
        nFailed = cHeap.Failed();
    }
    EXPECT_EQ(4, nRaised);
    EXPECT_EQ(7, nFailed);
}

TEST(FailingHeap, GivesAlignedBlocksThatCount)
{
    const long nLive = ClFailingHeap::LiveBlocks();
    {
        const std::unique_ptr<StAligned[]> pArray(new StAligned[2]);
        const std::unique_ptr<StAligned> pOne(new StAligned);
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pArray.get()) % 128);
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pOne.get()) % 128);
        EXPECT_EQ(nLive + 2, ClFailingHeap::LiveBlocks());
    }
    EXPECT_EQ(nLive, ClFailingHeap::LiveBlocks());
}

TEST(FailingHeap, KnowsMallocWhereNoSanitizerHasIt)
{
    if (!ClFailingHeap::KnowsMalloc())
    {
        GTEST_SKIP() << "malloc is a sanitizer's";
    }
    const long nLive = ClFailingHeap::LiveBlocks();
    void* p = Seen(std::malloc(3));
    EXPECT_EQ(nLive + 1, ClFailingHeap::LiveBlocks());
    p = std::realloc(p, 30);
    EXPECT_EQ(nLive + 1, ClFailingHeap::LiveBlocks());
    std::free(p);
    EXPECT_EQ(nLive, ClFailingHeap::LiveBlocks());
    void* apBlock[3];
    {
        const ClFailingHeap cHeap(0, ClFailingHeap::eAllFromThere);
        apBlock[0] = Seen(std::malloc(3));
        apBlock[1] = Seen(std::calloc(3, 3));
        apBlock[2] = Seen(std::realloc(nullptr, 3));
    }
    for (void* pBlock : apBlock)
    {
        EXPECT_EQ(nullptr, pBlock);
        std::free(pBlock);
    }
}
