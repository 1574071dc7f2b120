#include "Batch.hpp"

#include "Stop.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

using namespace SegmentTool;

namespace
{
struct ClThreadBatch : testing::Test
{
    ~ClThreadBatch() override { ClStop::Reset(); }

    // Pictures 1 to nCount; each goes through work in some thread.
    void Run(int nJobs, std::uint64_t nCount)
    {
        std::uint64_t nNext = 0;
        const ClBatchSteps cSteps = {[&](ClInput& cInput)
                                     {
                                         EXPECT_FALSE(m_bListing.exchange(true)) << "one at a time";
                                         cInput.m_nIndex = ++nNext;
                                         m_Next(nNext);
                                         m_bListing = false;
                                         return nNext <= nCount;
                                     },
                                     [&](const ClInput& cInput)
                                     {
                                         ++m_nInWork;
                                         m_Work(cInput.m_nIndex);
                                         ClWork cWork;
                                         cWork.m_cResult.m_nIndex = cInput.m_nIndex;
                                         --m_nInWork;
                                         return cWork;
                                     },
                                     [&](ClWork& cWork)
                                     {
                                         EXPECT_EQ(m_cCaller, std::this_thread::get_id());
                                         m_Commit(cWork.m_cResult.m_nIndex);
                                         m_anCommitted.push_back(cWork.m_cResult.m_nIndex);
                                     }};
        RunBatch(nJobs, cSteps);
        EXPECT_EQ(0, m_nInWork) << "no thread is left";
    }

    std::vector<std::uint64_t> UpTo(std::uint64_t nLast) const
    {
        std::vector<std::uint64_t> an;
        for (std::uint64_t n = 1; n <= nLast; ++n) an.push_back(n);
        return an;
    }

    std::thread::id m_cCaller = std::this_thread::get_id();
    std::atomic<bool> m_bListing{false};
    std::atomic<int> m_nInWork{0};
    std::function<void(std::uint64_t)> m_Next = [](std::uint64_t) {};
    std::function<void(std::uint64_t)> m_Work = [](std::uint64_t) {};
    std::function<void(std::uint64_t)> m_Commit = [](std::uint64_t) {};
    std::vector<std::uint64_t> m_anCommitted;
};
} // namespace

TEST_F(ClThreadBatch, CommitsInTheOrderOfTheListWhateverTheThreads)
{
    m_Work = [](std::uint64_t n) { std::this_thread::sleep_for(std::chrono::microseconds(n * 7919 % 300)); };
    for (const int nJobs : {1, 2, 5})
    {
        m_anCommitted.clear();
        Run(nJobs, 200);
        EXPECT_EQ(UpTo(200), m_anCommitted) << nJobs;
    }
    EXPECT_FALSE(ClStop::IsAsked()) << "an end that nobody asked for";
}

TEST_F(ClThreadBatch, AnEmptyListAndAShortOneEnd)
{
    Run(3, 0);
    EXPECT_TRUE(m_anCommitted.empty());
    Run(8, 1);
    EXPECT_EQ(UpTo(1), m_anCommitted);
}

TEST_F(ClThreadBatch, HandsOutOnlySoFarAheadOfASlowPicture)
{
    std::atomic<std::uint64_t> nFarthest{0};
    std::atomic<bool> bFirstDone{false};
    m_Work = [&](std::uint64_t n)
    {
        if (n == 1) // until the others have got as far as they can
        {
            for (int i = 0; i < 2000 && nFarthest < 8; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_EQ(8u, nFarthest.load()) << "four for each thread";
            bFirstDone = true;
        }
    };
    m_Next = [&](std::uint64_t n)
    {
        nFarthest = n;
        EXPECT_TRUE(n <= 8u || bFirstDone) << n;
    };
    Run(2, 100);
    EXPECT_EQ(UpTo(100), m_anCommitted);
}

TEST_F(ClThreadBatch, AFaultOfTheListEndsTheRunBehindWhatCameBefore)
{
    m_Next = [](std::uint64_t n)
    {
        if (n == 30) throw std::runtime_error("the list");
    };
    EXPECT_THROW(Run(3, 100), std::runtime_error);
    EXPECT_EQ(UpTo(29), m_anCommitted);
}

TEST_F(ClThreadBatch, AFaultOfTheWorkEndsTheRunBehindWhatCameBefore)
{
    m_Work = [&](std::uint64_t n)
    {
        if (n == 30)
        {
            --m_nInWork;
            throw std::runtime_error("the work");
        }
    };
    EXPECT_THROW(Run(3, 100), std::runtime_error);
    EXPECT_EQ(UpTo(29), m_anCommitted);
}

TEST_F(ClThreadBatch, AFaultOfTheCommitEndsTheRun)
{
    m_Commit = [](std::uint64_t n)
    {
        if (n == 30) throw std::runtime_error("the disk");
    };
    EXPECT_THROW(Run(3, 1000000), std::runtime_error);
    EXPECT_EQ(UpTo(29), m_anCommitted);
    EXPECT_TRUE(ClStop::IsAsked()) << "decoders are not waited for";
}

TEST_F(ClThreadBatch, EndsInOrderWhenItIsToStop)
{
    m_Commit = [](std::uint64_t n)
    {
        if (n == 30) ClStop::Ask();
    };
    Run(3, 1000000);
    EXPECT_EQ(UpTo(30), m_anCommitted);
}
