#include "RDTools/WildCard.hpp"

#include "FailingHeap.hpp"
#include "TestTools.hpp"

#include <string>

using FileSystem::ClWildCard;

namespace
{
/// The meaning of a pattern by recursion: slow, and sharing nothing with the walk under test.
bool MatchByDefinition(const char* szPattern, const char* szName)
{
    switch (*szPattern)
    {
    case '\0': return *szName == '\0';
    case '*':
        return MatchByDefinition(szPattern + 1, szName) ||
               (*szName != '\0' && MatchByDefinition(szPattern, szName + 1));
    case '?': return *szName != '\0' && *szName != '.' && MatchByDefinition(szPattern + 1, szName + 1);
    default: return *szName == *szPattern && MatchByDefinition(szPattern + 1, szName + 1);
    }
}

std::string RandomText(ClTestRandom& cRandom, const char* szLetters, int nLetters, int nMaxLength)
{
    std::string sText(static_cast<std::size_t>(cRandom.Below(nMaxLength + 1)), '\0');
    for (char& c : sText)
    {
        c = szLetters[cRandom.Below(nLetters)];
    }
    return sText;
}
} // namespace

TEST(WildCard, StarStandsForAnyCharactersAndCaseCounts)
{
    const ClWildCard cBmp("*.bmp");
    EXPECT_TRUE(cBmp.Match("a.bmp"));
    EXPECT_TRUE(cBmp.Match(".bmp"));
    EXPECT_TRUE(cBmp.Match("a.bmp.bmp"));
    EXPECT_TRUE(cBmp.Match(".b.bmp"));
    EXPECT_FALSE(cBmp.Match("a.BMP"));
    EXPECT_FALSE(cBmp.Match("a.bmp2"));
    EXPECT_FALSE(cBmp.Match("bmp"));
}

TEST(WildCard, QuestionMarkStandsForOneCharacterThatIsNoPoint)
{
    const ClWildCard cOne("a?c");
    EXPECT_TRUE(cOne.Match("abc"));
    EXPECT_TRUE(cOne.Match("a?c"));
    EXPECT_FALSE(cOne.Match("a.c"));
    EXPECT_FALSE(cOne.Match("ac"));
    EXPECT_FALSE(cOne.Match("abbc"));
    EXPECT_FALSE(ClWildCard("?").Match(""));
    EXPECT_TRUE(ClWildCard("*?").Match("..a"));
    EXPECT_FALSE(ClWildCard("*?").Match("a."));
}

TEST(WildCard, StarAtTheEndTakesEveryRest)
{
    EXPECT_TRUE(ClWildCard("a*").Match("a"));
    EXPECT_TRUE(ClWildCard("a*").Match("a.b"));
    EXPECT_FALSE(ClWildCard("a*").Match("ba"));
    EXPECT_TRUE(ClWildCard("*").Match(""));
    EXPECT_TRUE(ClWildCard("*").Match("."));
    EXPECT_TRUE(ClWildCard("**").Match("abc"));
}

TEST(WildCard, ASegmentBehindAStarIsTriedAgainUntilTheNameEnds)
{
    EXPECT_TRUE(ClWildCard("a*c").Match("abcabc"));
    EXPECT_TRUE(ClWildCard("*ab*ab").Match("aababab"));
    EXPECT_FALSE(ClWildCard("a*c").Match("abcab"));
    EXPECT_FALSE(ClWildCard("*ab*ab").Match("xab"));
}

TEST(WildCard, WithoutWildcardsTheWholeNameMustBeTheSame)
{
    EXPECT_TRUE(ClWildCard("a.bmp").Match("a.bmp"));
    EXPECT_FALSE(ClWildCard("a.bmp").Match("a.bm"));
    EXPECT_FALSE(ClWildCard("a.bm").Match("a.bmp"));
    EXPECT_TRUE(ClWildCard("").Match(""));
    EXPECT_FALSE(ClWildCard("").Match("a"));
    EXPECT_FALSE(ClWildCard("a").Match("*"));
}

TEST(WildCard, APatternOfItsOwnLeavesTheOneKept)
{
    char szPattern[] = "a*";
    const ClWildCard cKept(szPattern);
    szPattern[0] = 'b'; // a copy is kept
    EXPECT_TRUE(cKept.Match("*.bmp", "x.bmp"));
    EXPECT_FALSE(cKept.Match("*.bmp", "abc"));
    EXPECT_TRUE(cKept.Match("abc"));
}

TEST(WildCard, RandomPatternsMeanWhatTheDefinitionSays)
{
    ClTestRandom cRandom(11);
    int nMatches = 0;
    for (int i = 0; i < 20000; ++i)
    {
        const std::string sPattern = RandomText(cRandom, "ab.?**", 6, 8);
        const std::string sName = RandomText(cRandom, "ab.", 3, 8);
        const bool bExpected = MatchByDefinition(sPattern.c_str(), sName.c_str());
        ASSERT_EQ(bExpected, ClWildCard(sPattern.c_str()).Match(sName.c_str())) << sPattern << " " << sName;
        nMatches += bExpected;
    }
    EXPECT_GT(nMatches, 2000);
    EXPECT_LT(nMatches, 18000);
}

TEST(WildCard, ManyStarsOnALongNameCostNoMoreThanTheProductOfTheLengths)
{
    std::string sPattern;
    for (int i = 0; i < 500; ++i)
    {
        sPattern += "*a";
    }
    const std::string sName(5000, 'a');
    EXPECT_TRUE(ClWildCard(sPattern.c_str()).Match(sName.c_str()));
    EXPECT_FALSE(ClWildCard((sPattern + "b").c_str()).Match(sName.c_str()));
}

TEST(WildCard, NullIsRefused)
{
    EXPECT_RAISES(ClWildCard(nullptr), ClExVelmarin, -44, "One(or more) parameter(s) is(are) invalid.");
    const ClWildCard cAny("*");
    EXPECT_RAISES_CODE(cAny.Match(nullptr), -44);
    EXPECT_RAISES_CODE(cAny.Match(nullptr, "a"), -44);
    EXPECT_RAISES_CODE(cAny.Match("a", nullptr), -44);
}

TEST(WildCard, AnExhaustedHeapComesOutAsBadAlloc)
{
    const std::string sLong(100, 'a');
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([&] { EXPECT_TRUE(ClWildCard(sLong.c_str()).Match(sLong.c_str())); }), 1);
}
