#include "RDTools/IgnoreFailure.hpp"

#include "RDTools/Exception.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(IgnoreFailure, RunsWhatItIsGivenToItsEndOrItsFailure)
{
    int nSteps = 0;
    IgnoreFailure([&] { nSteps = 1; });
    EXPECT_EQ(1, nSteps);
    IgnoreFailure(
        [&]
        {
            nSteps = 2;
            ThrowBadAlloc();
            nSteps = 3;
        });
    EXPECT_EQ(2, nSteps);
    IgnoreFailure([] { throw std::runtime_error("of another making"); });
    IgnoreFailure([] { throw 7; });
}
