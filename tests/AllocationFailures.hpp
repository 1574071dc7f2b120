#pragma once

#include "FailingHeap.hpp"

#include <gtest/gtest.h>

#include <string>

/// What a run under failing allocations may come to.
enum class EUnderFailure
{
    eRaises, ///< ClExBadAlloc, number -102
    eReturns ///< the number -102; nothing is raised
};

/// Lets the first allocation of a call fail, then the second, the third..., once alone and once with all behind it,
/// until the call needs no more. make() gives what the call needs, new each time, as an object with
///     long Call()   the call; returns its number
///     See()         all that can be seen afterwards, comparable; may read everything even after a failure
///     bool Kept()   whether what a failed call must leave alone is as before
/// Every failure must be told as eUnderFailure says, or make no difference at all. After it the same object does the
/// call again, with memory, to the same result as one that never failed; and no block is left when the object goes.
/// Returns the number of calls that met a failure.
template <class Make> long FailEveryAllocation(EUnderFailure eUnderFailure, Make&& make)
{
    long nNumber = 0;
    const auto undisturbed = [&]
    {
        auto cCase = make();
        nNumber = cCase.Call();
        return cCase.See();
    };
    undisturbed(); // what is made only once in a process stays, and is no leak
    const auto expected = undisturbed();
    long nDisturbed = 0;
    for (const auto eFailing : {ClFailingHeap::eAllFromThere, ClFailingHeap::eOnlyThat})
    {
        bool bReached = true;
        for (long nPassing = 0; bReached && !testing::Test::HasFailure(); ++nPassing)
        {
            SCOPED_TRACE("allocation " + std::to_string(nPassing) +
                         (eFailing == ClFailingHeap::eOnlyThat ? " alone" : " and all behind it"));
            const long nLive = ClFailingHeap::LiveBlocks();
            {
                auto cCase = make();
                long nResult = 0;
                bool bRaised = false;
                {
                    const ClFailingHeap cHeap(nPassing, eFailing);
                    try
                    {
                        nResult = cCase.Call();
                    }
                    catch (const ClExBadAlloc& cFailure)
                    {
                        nResult = cFailure.Number();
                        bRaised = true;
                    }
                    bReached = cHeap.Failed() != 0;
                }
                const bool bTold = nResult == FPC_ERROR_OUT_OF_MEMORY && bReached;
                EXPECT_TRUE(bTold || nResult == nNumber) << nResult;
                EXPECT_EQ(bTold && eUnderFailure == EUnderFailure::eRaises, bRaised);
                if (bTold)
                {
                    EXPECT_TRUE(cCase.Kept());
                    cCase.See();
                    EXPECT_EQ(nNumber, cCase.Call()) << "with memory again";
                }
                EXPECT_TRUE(expected == cCase.See());
                nDisturbed += bReached ? 1 : 0;
            }
            EXPECT_EQ(nLive, ClFailingHeap::LiveBlocks());
        }
    }
    return nDisturbed;
}
