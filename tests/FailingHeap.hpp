#pragma once

#include "RDTools/Exception.hpp"

#include <gtest/gtest.h>

#include <cstddef>

/// While it lives, allocations of this thread fail. Test programs that use it check moreover that array-new meets
/// array-delete, because with operators of their own the address sanitizer no longer can.
class ClFailingHeap
{
public:
    enum EFailing
    {
        eAllFromThere,
        eOnlyThat
    };

    /// Every operator new after nPassing more of them.
    explicit ClFailingHeap(long nPassing);
    /// The allocation after nPassing more of them, whichever way it is asked for: by any operator new and, where no
    /// sanitizer has them as its own, by malloc, calloc and realloc, those inside the C library among them.
    ClFailingHeap(long nPassing, EFailing eFailing);
    ClFailingHeap(const ClFailingHeap&) = delete;
    ClFailingHeap& operator=(const ClFailingHeap&) = delete;
    ~ClFailingHeap();

    long Failed() const; ///< allocations that failed so far

    /// Blocks allocated less blocks released on this thread since it began, of the ways above.
    static long LiveBlocks();

    static bool KnowsMalloc(); ///< whether malloc, calloc and realloc are among the ways
};

/// While it lives, operator new of this thread fails for more than nMost bytes at once, and the greatest request is
/// kept.
class ClLimitedHeap
{
public:
    explicit ClLimitedHeap(std::size_t nMost);
    ClLimitedHeap(const ClLimitedHeap&) = delete;
    ClLimitedHeap& operator=(const ClLimitedHeap&) = delete;
    ~ClLimitedHeap();

    static std::size_t Greatest(); ///< bytes asked for at once, whether they were given or not
};

/// Runs fn again and again, letting its first, second, third... operator new fail, until it needs no more of them. Each
/// failure must come out as ClExBadAlloc -102. Returns the number of allocations that failed.
template <class Fn> long ExpectBadAllocAtEveryAllocation(Fn&& fn)
{
    for (long nPassing = 0; nPassing < 1000; ++nPassing)
    {
        const char* szEscaped = nullptr;
        long nNumber = FPC_ERROR_OUT_OF_MEMORY;
        bool bRaised = true;
        {
            const ClFailingHeap cHeap(nPassing);
            try
            {
                fn();
                bRaised = false;
            }
            catch (const ClExBadAlloc& cRaised)
            {
                nNumber = cRaised.Number();
            }
            catch (const ClException&)
            {
                szEscaped = "another ClException";
            }
            catch (const std::exception&)
            {
                szEscaped = "an exception of the standard library";
            }
        }
        EXPECT_EQ(nullptr, szEscaped) << "at allocation " << nPassing;
        EXPECT_EQ(FPC_ERROR_OUT_OF_MEMORY, nNumber) << "at allocation " << nPassing;
        if (!bRaised)
        {
            return nPassing;
        }
    }
    ADD_FAILURE() << "it never passed";
    return 0;
}
