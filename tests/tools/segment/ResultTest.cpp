#include "Result.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;

TEST(Tally, TheGravestOutcomeGivesTheExitCode)
{
    ClTally cTally;
    EXPECT_EQ(eExitDone, cTally.Exit()) << "an empty list";
    cTally.Add(EOutcome::eSegmented);
    EXPECT_EQ(eExitDone, cTally.Exit());
    cTally.Add(EOutcome::eNoFinger);
    EXPECT_EQ(1, cTally.Exit());
    cTally.Add(EOutcome::eNotWritten);
    EXPECT_EQ(3, cTally.Exit());
    cTally.Add(EOutcome::eFailed);
    EXPECT_EQ(4, cTally.Exit());
}

TEST(Tally, EachOutcomeAloneHasItsExitCode)
{
    const std::pair<EOutcome, int> aCases[] = {{EOutcome::eSegmented, 0},  {EOutcome::eTooFew, 1},
                                               {EOutcome::eNoFinger, 1},   {EOutcome::eUnreadable, 3},
                                               {EOutcome::eNotWritten, 3}, {EOutcome::eFailed, 4}};
    for (const auto& [eOutcome, nExit] : aCases)
    {
        ClTally cTally;
        cTally.Add(eOutcome);
        EXPECT_EQ(nExit, cTally.Exit()) << OutcomeName(eOutcome);
    }
}

TEST(Tally, SummaryNamesWhatThereIs)
{
    ClTally cTally;
    EXPECT_EQ("0 pictures", cTally.Summary());
    cTally.Add(EOutcome::eSegmented);
    EXPECT_EQ("1 picture: 1 segmented", cTally.Summary());
    cTally.Add(EOutcome::eUnreadable);
    cTally.Add(EOutcome::eUnreadable);
    EXPECT_EQ("3 pictures: 1 segmented, 2 unreadable", cTally.Summary());
}

TEST(Outcome, NamesLeadBack)
{
    for (int i = 0; i < nOutcomes; ++i)
    {
        EOutcome eBack = EOutcome::eFailed;
        ASSERT_TRUE(OutcomeFromName(OutcomeName(static_cast<EOutcome>(i)), eBack));
        EXPECT_EQ(i, static_cast<int>(eBack));
    }
    EOutcome eBack = EOutcome::eTooFew;
    EXPECT_FALSE(OutcomeFromName("fine", eBack));
}
