#pragma once

// Runs of operators whose allocations fail one after the other.

#include "AllocationFailures.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <string>
#include <vector>

/// A run of a new operator on a copy of an image, to another image or in place. run(operator, from, to) returns the
/// operator's result and leaves in "to" what there is to see.
template <class Operator, class Run> class ClOperatorCase
{
public:
    ClOperatorCase(const ClImage& cIn, const Run& run, bool bInPlace) : m_cIn(cIn), m_run(run), m_bInPlace(bInPlace)
    {
        m_cWork = m_cIn;
    }
    long Call() { return m_run(m_cOperator, m_cWork, Target()); }
    std::vector<unsigned char> See()
    {
        const ClImage& cTarget = Target();
        std::vector<unsigned char> aSeen = {cTarget.m_eDataType, static_cast<unsigned char>(cTarget.m_nPlanes)};
        const auto nBytes = cTarget.SamplesPerRow() * ClImage::SampleSize(cTarget.m_eDataType);
        for (int y = 0; y < cTarget.m_nHeight && cTarget.Data() != nullptr; ++y)
        {
            const auto* pRow = Row<unsigned char>(cTarget, y);
            aSeen.insert(aSeen.end(), pRow, pRow + nBytes);
        }
        return aSeen;
    }
    /// Where the result goes to another image the input stays, pixel for pixel; in place it may be lost.
    bool Kept()
    {
        const bool bKept = SamePixels(m_cIn, m_cWork) && SameDescription(m_cIn, m_cWork);
        m_cWork = m_cIn;
        return bKept || m_bInPlace;
    }

private:
    ClImage& Target() { return m_bInPlace ? m_cWork : m_cOut; }

    const ClImage& m_cIn;
    const Run& m_run;
    const bool m_bInPlace;
    Operator m_cOperator;
    ClImage m_cWork;
    ClImage m_cOut;
};

class OperatorMemory : public testing::Test
{
protected:
    void TearDown() override { RecordProperty("AllocationFailures", std::to_string(m_nFailures)); }

    template <class Operator, class Run> void ExpectFailuresPassToAnother(const ClImage& cIn, const Run& run)
    {
        ExpectFailuresPass<Operator>(cIn, run, false);
    }

    /// To another image and in place; both must give the same.
    template <class Operator, class Run> void ExpectFailuresPass(const ClImage& cIn, const Run& run)
    {
        ExpectFailuresPass<Operator>(cIn, run, false);
        ExpectFailuresPass<Operator>(cIn, run, true);
        ClOperatorCase<Operator, Run> cAnother(cIn, run, false);
        ClOperatorCase<Operator, Run> cInPlace(cIn, run, true);
        EXPECT_EQ(cAnother.Call(), cInPlace.Call());
        EXPECT_TRUE(cAnother.See() == cInPlace.See());
    }

    long m_nFailures = 0; ///< calls of this test that met one

private:
    template <class Operator, class Run> void ExpectFailuresPass(const ClImage& cIn, const Run& run, bool bInPlace)
    {
        SCOPED_TRACE(bInPlace ? "in place" : "to another image");
        const long nFailures = FailEveryAllocation(EUnderFailure::eRaises,
                                                   [&] { return ClOperatorCase<Operator, Run>(cIn, run, bInPlace); });
        EXPECT_TRUE(bInPlace || nFailures > 0) << "nothing was allocated";
        m_nFailures += nFailures;
    }
};
