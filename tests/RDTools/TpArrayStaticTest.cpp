#include "RDTools/TpArrayStatic.hpp"

#include "FailingHeap.hpp"
#include "TestTools.hpp"

#include <climits>
#include <vector>

namespace
{
constexpr unsigned long nNotFound = static_cast<unsigned long>(-1);

/// Notes the order in which objects come and go.
struct ClNoting
{
    ClNoting() : m_nNumber(s_nMade++) {}
    ~ClNoting() { s_anGone.push_back(m_nNumber); }

    int m_nNumber;
    static int s_nMade;
    static std::vector<int> s_anGone;
};
int ClNoting::s_nMade = 0;
std::vector<int> ClNoting::s_anGone;

TEST(TpArrayStatic, IsEmptyAtFirst)
{
    const TpArrayStatic<int> aValues;
    EXPECT_EQ(0u, aValues.Entries());
    EXPECT_EQ(nullptr, aValues.m_pData);
    EXPECT_EQ(nNotFound, aValues.Find(0, 0));
}

TEST(TpArrayStatic, NewAllocatesExactlyTheEntries)
{
    TpArrayStatic<int> aValues(5);
    EXPECT_EQ(5u, aValues.Entries());
    aValues[4] = 7;
    EXPECT_EQ(7, aValues.m_pData[4]);
    const TpArrayStatic<int>& aConstant = aValues;
    EXPECT_EQ(7, aConstant[4]);
    aValues.New(9);
    EXPECT_EQ(9u, aValues.Entries());
    EXPECT_EQ(9u, aValues.m_nEntries);
}

TEST(TpArrayStatic, NewOfZeroAndClearReleaseEverything)
{
    for (const bool bClear : {false, true})
    {
        TpArrayStatic<int> aValues(5);
        bClear ? aValues.Clear() : aValues.New(0);
        EXPECT_EQ(0u, aValues.Entries());
        EXPECT_EQ(nullptr, aValues.m_pData);
        bClear ? aValues.Clear() : aValues.New(0);
        EXPECT_EQ(nullptr, aValues.m_pData);
    }
}

TEST(TpArrayStatic, NewDestroysTheOldElementsFromTheLastOnBeforeItMakesNewOnes)
{
    ClNoting::s_nMade = 0;
    ClNoting::s_anGone.clear();
    {
        TpArrayStatic<ClNoting> aObjects(3);
        aObjects.New(2);
        EXPECT_EQ((std::vector<int>{2, 1, 0}), ClNoting::s_anGone);
        EXPECT_EQ(5, ClNoting::s_nMade);
    }
    EXPECT_EQ((std::vector<int>{2, 1, 0, 4, 3}), ClNoting::s_anGone);
}

TEST(TpArrayStatic, FindSearchesFromAnIndexUpward)
{
    TpArrayStatic<int> aValues(5);
    for (unsigned long i = 0; i < 5; ++i)
    {
        aValues[i] = static_cast<int>(i % 3); // 0 1 2 0 1
    }
    EXPECT_EQ(1u, aValues.Find(1, 0));
    EXPECT_EQ(1u, aValues.Find(1, 1));
    EXPECT_EQ(4u, aValues.Find(1, 2));
    EXPECT_EQ(nNotFound, aValues.Find(2, 3));
    EXPECT_EQ(nNotFound, aValues.Find(7, 0));
    EXPECT_EQ(nNotFound, aValues.Find(1, 5));
    EXPECT_EQ(nNotFound, aValues.Find(1, nNotFound));
}

TEST(TpArrayStatic, ExhaustedHeapIsBadAllocAndTheOldContentsAreGone)
{
    TpArrayStatic<int> aValues(3);
    const char szMessage[] = "Memory allocation failed or given mem-block too small.\nMemory allocation failed";
    {
        const ClFailingHeap cHeap(0);
        EXPECT_RAISES(aValues.New(4), ClExBadAlloc, -102, szMessage);
    }
    EXPECT_EQ(nullptr, aValues.m_pData);
    EXPECT_EQ(3u, aValues.m_nEntries) << "the old count stands until the next use";
    EXPECT_EQ(nNotFound, aValues.Find(0, 0)) << "nothing is read behind that count";
    aValues.New(2);
    EXPECT_EQ(2u, aValues.Entries());
    EXPECT_RAISES(aValues.New(ULONG_MAX), ClExBadAlloc, -102, szMessage); // no heap can hold so much
    EXPECT_RAISES(TpArrayStatic<double>(ULONG_MAX / 4), ClExBadAlloc, -102, szMessage);
}

TEST(TpArrayStatic, TakesAllPlainTypes)
{
    EXPECT_EQ(2u, TpArrayStatic<bool>(2).Entries());
    EXPECT_EQ(2u, TpArrayStatic<char>(2).Entries());
    EXPECT_EQ(2u, TpArrayStatic<double>(2).Entries());
    static_assert(std::has_virtual_destructor_v<TpArrayStatic<int>>);
    static_assert(!std::is_copy_constructible_v<TpArrayStatic<int>>);
}
} // namespace
