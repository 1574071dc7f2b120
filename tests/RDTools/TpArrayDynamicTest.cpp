#include "RDTools/TpArrayDynamic.hpp"

#include "FailingHeap.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/Vector.hpp"
#include "TestTools.hpp"

#include <climits>
#include <string>
#include <vector>

namespace
{
constexpr unsigned long nNotFound = static_cast<unsigned long>(-1);

TEST(TpArrayDynamic, GrowsByItsStepEachTimeItIsFull)
{
    TpArrayDynamic<int, 10> aValues;
    EXPECT_EQ(0u, aValues.Entries());
    for (int i = 0; i < 35; ++i)
    {
        EXPECT_EQ(static_cast<unsigned long>(i), aValues.Add(i * i));
        EXPECT_EQ(static_cast<unsigned long>(i) + 1, aValues.Entries());
        EXPECT_EQ(static_cast<unsigned long>(i) / 10 * 10 + 10, aValues.m_nEntries) << "the capacity";
    }
    for (int i = 0; i < 35; ++i)
    {
        EXPECT_EQ(i * i, aValues[static_cast<unsigned long>(i)]);
    }
}

TEST(TpArrayDynamic, AddAfterNewEnlarges)
{
    TpArrayDynamic<int, 10> aValues;
    aValues.New(3);
    EXPECT_EQ(3u, aValues.Entries());
    EXPECT_EQ(3u, aValues.Add(7));
    EXPECT_EQ(13u, aValues.m_nEntries);
    aValues.New(2);
    EXPECT_EQ(2u, aValues.Entries());
    EXPECT_EQ(2u, aValues.m_nEntries);
    aValues.New(0);
    EXPECT_EQ(0u, aValues.Entries());
    EXPECT_EQ(nullptr, aValues.m_pData);
}

TEST(TpArrayDynamic, ClearKeepsStorageAndElements)
{
    TpArrayDynamic<std::string, 2> aTexts;
    aTexts.Add("one");
    aTexts.Add("two");
    const std::string* pStorage = aTexts.m_pData;
    aTexts.Clear();
    EXPECT_EQ(0u, aTexts.Entries());
    EXPECT_EQ("one", aTexts.m_pData[0]) << "constructed until it is overwritten";
    const std::string sNew = "new";
    {
        const ClFailingHeap cHeap(0);
        EXPECT_EQ(0u, aTexts.Add(sNew));
    }
    EXPECT_EQ(pStorage, aTexts.m_pData);
    EXPECT_EQ("new", aTexts[0]);
    EXPECT_EQ("two", aTexts.m_pData[1]);
    EXPECT_EQ(2u, aTexts.m_nEntries);
}

TEST(TpArrayDynamic, ShowsItsUsedElementsToStaticCode)
{
    TpArrayDynamic<int, 10> aValues;
    aValues.Add(4);
    aValues.Add(5);
    TpArrayStatic<int>& aStatic = aValues;
    EXPECT_EQ(2u, aStatic.Entries());
    EXPECT_EQ(1u, aStatic.Find(5, 0));
    aValues.m_pData[5] = 77; // within the capacity, but not used
    EXPECT_EQ(nNotFound, aStatic.Find(77, 0));
    EXPECT_EQ(nNotFound, aStatic.Find(5, 2));
    aStatic.Clear();
    EXPECT_EQ(0u, aValues.Entries());
    EXPECT_NE(nullptr, aValues.m_pData);
    aStatic.New(6);
    EXPECT_EQ(6u, aValues.m_nUsed);
}

TEST(TpArrayDynamic, EnlargeAddsCapacityAndKeepsTheUsedElements)
{
    TpArrayDynamic<int, 1> aValues;
    aValues.Enlarge(0);
    EXPECT_EQ(nullptr, aValues.m_pData);
    aValues.Enlarge(2);
    EXPECT_EQ(0u, aValues.Entries());
    aValues.Add(8);
    aValues.Enlarge(3);
    EXPECT_EQ(5u, aValues.m_nEntries);
    EXPECT_EQ(1u, aValues.Entries());
    EXPECT_EQ(8, aValues[0]);
}

/// Counts assignments, which is how elements move.
struct ClAssigned
{
    ClAssigned& operator=(const ClAssigned&)
    {
        ++s_nAssignments;
        return *this;
    }
    static int s_nAssignments;
};
int ClAssigned::s_nAssignments = 0;

TEST(TpArrayDynamic, OnlyUsedElementsAreCopied)
{
    TpArrayDynamic<ClAssigned, 4> aObjects;
    const ClAssigned cObject{};
    ClAssigned::s_nAssignments = 0;
    aObjects.Add(cObject);
    aObjects.Add(cObject);
    EXPECT_EQ(2, ClAssigned::s_nAssignments);
    aObjects.Enlarge(10);
    EXPECT_EQ(4, ClAssigned::s_nAssignments);
}

TEST(TpArrayDynamic, AnElementOfTheArrayItselfCanBeAppended)
{
    TpArrayDynamic<std::string, 1> aTexts;
    aTexts.Add("a text that is too long to stand within the object itself");
    for (unsigned long i = 1; i < 6; ++i)
    {
        aTexts.Add(aTexts[i - 1]);
        EXPECT_EQ("a text that is too long to stand within the object itself", aTexts[i]);
    }
}

TEST(TpArrayDynamic, RemoveAtClosesTheGap)
{
    TpArrayDynamic<int, 10> aValues;
    for (int i = 0; i < 4; ++i)
    {
        aValues.Add(i);
    }
    aValues.RemoveAt(1);
    ASSERT_EQ(3u, aValues.Entries());
    EXPECT_EQ(0, aValues[0]);
    EXPECT_EQ(2, aValues[1]);
    EXPECT_EQ(3, aValues[2]);
    aValues.RemoveAt(2);
    aValues.RemoveAt(0);
    ASSERT_EQ(1u, aValues.Entries());
    EXPECT_EQ(2, aValues[0]);
    aValues.RemoveAt(0);
    EXPECT_EQ(0u, aValues.Entries());
    aValues.RemoveAt(0);
    EXPECT_EQ(0u, aValues.Entries()) << "there is nothing to remove";
    EXPECT_EQ(10u, aValues.m_nEntries);
}

TEST(TpArrayDynamic, ImagesAreCopiedDeeply)
{
    TpArrayDynamic<ClImage, 1> aImages;
    ClImage cImage;
    FillRandom8(cImage, 5, 3, 1);
    aImages.Add(cImage);
    aImages.Add(cImage);
    EXPECT_TRUE(SamePixels(cImage, aImages[0]));
    EXPECT_TRUE(SamePixels(cImage, aImages[1]));
    EXPECT_NE(cImage.Data(), aImages[0].Data());
    EXPECT_NE(aImages[1].Data(), aImages[0].Data());
}

TEST(TpArrayDynamic, ExhaustedHeapLeavesTheArrayAsItWas)
{
    TpArrayDynamic<int, 2> aValues;
    aValues.Add(3);
    aValues.Add(4);
    const int* pStorage = aValues.m_pData;
    const char szMessage[] = "Memory allocation failed or given mem-block too small.\nMemory allocation failed";
    {
        const ClFailingHeap cHeap(0);
        EXPECT_RAISES(aValues.Add(5), ClExBadAlloc, -102, szMessage);
        EXPECT_RAISES(aValues.Enlarge(1), ClExBadAlloc, -102, szMessage);
    }
    EXPECT_RAISES(aValues.Enlarge(LONG_MAX), ClExBadAlloc, -102, szMessage);
    EXPECT_RAISES(aValues.Enlarge(ULONG_MAX), ClExBadAlloc, -102, szMessage);
    EXPECT_EQ(pStorage, aValues.m_pData);
    EXPECT_EQ(2u, aValues.Entries());
    EXPECT_EQ(2u, aValues.m_nEntries);
    EXPECT_EQ(4, aValues[1]);
    EXPECT_EQ(2u, aValues.Add(5));

    // A copy of an element that fails half-way: the new storage is released, the old one stands.
    TpArrayDynamic<ClImage, 1> aImages;
    ClImage cImage;
    FillRandom8(cImage, 5, 3, 1);
    aImages.Add(cImage);
    ClImage cEmpty;
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { aImages.Enlarge(1); }));
    EXPECT_TRUE(SamePixels(cImage, aImages[0]));
}

TEST(TpArrayDynamic, WhatANewWithoutMemoryLeavesCanBeUsed)
{
    const auto afterFailure = [](auto&& use)
    {
        TpArrayDynamic<int, 3> aValues;
        aValues.Add(1);
        aValues.Add(2);
        {
            const ClFailingHeap cHeap(0);
            EXPECT_RAISES_CODE(aValues.New(9), FPC_ERROR_OUT_OF_MEMORY);
        }
        EXPECT_EQ(2u, aValues.Entries()) << "the old count stands until the next use";
        use(aValues);
    };
    afterFailure(
        [](auto& aValues)
        {
            EXPECT_EQ(0u, aValues.Add(7));
            EXPECT_EQ(1u, aValues.Entries());
            EXPECT_EQ(7, aValues[0]);
        });
    afterFailure(
        [](auto& aValues)
        {
            aValues.Clear();
            EXPECT_EQ(0u, aValues.Add(7));
            EXPECT_EQ(1u, aValues.Add(8));
            EXPECT_EQ(7, aValues[0]);
        });
    afterFailure(
        [](auto& aValues)
        {
            aValues.Enlarge(4);
            EXPECT_EQ(0u, aValues.Entries());
            EXPECT_EQ(7u, aValues.m_nEntries);
        });
    afterFailure([](auto& aValues) { aValues.RemoveAt(0); });
    afterFailure([](auto& aValues) { EXPECT_EQ(nNotFound, aValues.Find(1, 0)); });
}
} // namespace
