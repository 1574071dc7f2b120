#pragma once

// Runs of operators whose allocations fail one after the other.

#include "AllocationFailures.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <string>
#include <type_traits>
#include <vector>

/// All that can be seen of an image: its description, and its samples without the padding.
inline std::vector<unsigned char> Seen(const ClImage& cImage)
{
    std::vector<unsigned char> aSeen = {cImage.m_eDataType, static_cast<unsigned char>(cImage.m_eContent)};
    const auto append = [&](auto value)
    {
        const auto* p = reinterpret_cast<const unsigned char*>(&value);
        aSeen.insert(aSeen.end(), p, p + sizeof value);
    };
    for (const int n :
         {cImage.m_nWidth, cImage.m_nHeight, cImage.m_nXRes, cImage.m_nYRes, cImage.m_nPlanes, cImage.m_nAttribute})
    {
        append(n);
    }
    append(cImage.m_dBlack);
    append(cImage.m_dWhite);
    const auto nBytes = cImage.SamplesPerRow() * ClImage::SampleSize(cImage.m_eDataType);
    for (int y = 0; y < cImage.m_nHeight && cImage.Data() != nullptr; ++y)
    {
        const auto* pRow = Row<unsigned char>(cImage, y);
        aSeen.insert(aSeen.end(), pRow, pRow + nBytes);
    }
    return aSeen;
}

using OperatorName_t = std::string (*)();

/// One for each operator of which the program lets a run fail, known before the first test begins.
inline std::vector<OperatorName_t>& OperatorsThatFail()
{
    static std::vector<OperatorName_t> aNames;
    return aNames;
}

/// Enters an operator above where it is used, whether that is ever run or not.
template <class Operator> struct TpOperatorThatFails
{
    static const bool m_bEntered;
};
template <class Operator>
const bool TpOperatorThatFails<Operator>::m_bEntered =
    (OperatorsThatFail().push_back([] { return std::string(Operator().Name()); }), true);

/// A run of a new operator on a copy of an image, to another image or in place. run(operator, from, to) returns the
/// operator's result and leaves in "to" what there is to see; one that makes further images takes room for two of them
/// as its fourth argument.
template <class Operator, class Run> class ClOperatorCase
{
public:
    ClOperatorCase(const ClImage& cIn, const Run& run, bool bInPlace) : m_cIn(cIn), m_run(run), m_bInPlace(bInPlace)
    {
        m_cWork = m_cIn;
    }
    long Call()
    {
        if constexpr (std::is_invocable_v<const Run&, Operator&, ClImage&, ClImage&, ClImage(&)[2]>)
        {
            return m_run(m_cOperator, m_cWork, Target(), m_acFurther);
        }
        else
        {
            return m_run(m_cOperator, m_cWork, Target());
        }
    }
    std::vector<unsigned char> See()
    {
        std::vector<unsigned char> aSeen = Seen(Target());
        for (const ClImage& cFurther : m_acFurther)
        {
            const std::vector<unsigned char> aMore = Seen(cFurther);
            aSeen.insert(aSeen.end(), aMore.begin(), aMore.end());
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
    ClImage m_acFurther[2];
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
        EXPECT_TRUE(TpOperatorThatFails<Operator>::m_bEntered);
        const long nFailures = FailEveryAllocation(EUnderFailure::eRaises,
                                                   [&] { return ClOperatorCase<Operator, Run>(cIn, run, bInPlace); });
        EXPECT_TRUE(bInPlace || nFailures > 0) << "nothing was allocated";
        m_nFailures += nFailures;
    }
};
