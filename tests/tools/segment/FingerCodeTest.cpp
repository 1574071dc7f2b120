#include "FingerCode.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;

namespace
{
std::vector<int> Codes(EHand eHand, bool b0, bool b1, bool b2, bool b3, int nFingers)
{
    const bool abSlots[4] = {b0, b1, b2, b3};
    return PositionCodes(eHand, abSlots, nFingers);
}
} // namespace

TEST(FingerCode, FourOfARightHandRunFromIndexToLittle)
{
    EXPECT_EQ((std::vector<int>{2, 3, 4, 5}), Codes(EHand::eRight, true, true, true, true, 4));
}

TEST(FingerCode, FourOfALeftHandRunFromLittleToIndex)
{
    EXPECT_EQ((std::vector<int>{10, 9, 8, 7}), Codes(EHand::eLeft, true, true, true, true, 4));
}

TEST(FingerCode, ThreeTakeThePlacesThatAreFilled)
{
    EXPECT_EQ((std::vector<int>{2, 3, 4}), Codes(EHand::eRight, true, true, true, false, 3));
    EXPECT_EQ((std::vector<int>{3, 4, 5}), Codes(EHand::eRight, false, true, true, true, 3));
    EXPECT_EQ((std::vector<int>{10, 9, 8}), Codes(EHand::eLeft, true, true, true, false, 3));
    EXPECT_EQ((std::vector<int>{10, 8, 7}), Codes(EHand::eLeft, true, false, true, true, 3));
}

TEST(FingerCode, TheLeftThumbLiesLeft)
{
    EXPECT_EQ((std::vector<int>{6, 1}), Codes(EHand::eThumbs, true, true, false, false, 2));
    EXPECT_EQ((std::vector<int>{1}), Codes(EHand::eThumbs, false, true, false, false, 1));
}

TEST(FingerCode, WithoutAHandOrWithAnotherNumberOfPlacesNothingIsDecided)
{
    EXPECT_EQ((std::vector<int>{0, 0}), Codes(EHand::eUndecided, true, true, false, false, 2));
    EXPECT_EQ((std::vector<int>{0, 0}), Codes(EHand::eThumbs, true, false, false, false, 2));
    EXPECT_EQ((std::vector<int>{0, 0, 0}), Codes(EHand::eRight, true, true, true, true, 3));
    EXPECT_TRUE(Codes(EHand::eThumbs, false, false, false, false, 0).empty());
}

TEST(FingerCode, NumbersOfTheProcessorNameHands)
{
    EXPECT_EQ(EHand::eUndecided, HandFromNumber(0));
    EXPECT_EQ(EHand::eRight, HandFromNumber(1));
    EXPECT_EQ(EHand::eLeft, HandFromNumber(2));
    EXPECT_EQ(EHand::eThumbs, HandFromNumber(3));
    EXPECT_EQ(EHand::eUndecided, HandFromNumber(4));
}

TEST(FingerCode, EachHasAName)
{
    EXPECT_STREQ("right thumb", PositionName(1));
    EXPECT_STREQ("right index", PositionName(2));
    EXPECT_STREQ("right little", PositionName(5));
    EXPECT_STREQ("left thumb", PositionName(6));
    EXPECT_STREQ("left index", PositionName(7));
    EXPECT_STREQ("left little", PositionName(10));
    EXPECT_STREQ("undecided", PositionName(0));
    EXPECT_STREQ("undecided", PositionName(11));
    EXPECT_STREQ("undecided", PositionName(-1));
}
