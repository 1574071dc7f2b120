#include "RDTools/Vector.hpp"

#include "TestTools.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace
{
constexpr double dInfinity = std::numeric_limits<double>::infinity();

TEST(Vector, IsAtTheOriginAtFirst)
{
    const ClVector cVector;
    EXPECT_EQ(0.0, cVector.m_dX);
    EXPECT_EQ(0.0, cVector.m_dY);
    static_assert(std::has_virtual_destructor_v<ClVector>);
}

TEST(Vector, EpsilonHasItsBytes)
{
    static constexpr unsigned char aBytes[] = {0x48, 0xaf, 0xbc, 0x9a, 0xf2, 0xd7, 0x7a, 0x3e};
    const double dEpsilon = ClVector::m_cdEpsilon;
    EXPECT_EQ(0, std::memcmp(aBytes, &dEpsilon, sizeof dEpsilon));
}

TEST(Vector, LinesMeetAtAPointOnBoth)
{
    double dS = 9, dT = 9;
    const ClVector cPoint =
        ClVector::IntersectionINF(ClVector(0, 0), ClVector(1, 0), ClVector(0, 5), ClVector(0, 1), dS, dT);
    EXPECT_EQ(0.0, dS);
    EXPECT_EQ(-5.0, dT);
    EXPECT_EQ(0.0, cPoint.m_dX);
    EXPECT_EQ(0.0, cPoint.m_dY);
}

TEST(Vector, RandomLinesMeetWhereBothParametersSay)
{
    ClTestRandom cRandom(1);
    const auto random = [&cRandom] { return ClVector(cRandom.Unit() * 20 - 10, cRandom.Unit() * 20 - 10); };
    for (int i = 0; i < 1000; ++i)
    {
        ClVector p1 = random(), d1 = random(), p2 = random(), d2 = random();
        const double dDet = d1.m_dX * d2.m_dY - d1.m_dY * d2.m_dX;
        if (std::fabs(dDet) < 0.5)
        {
            continue;
        }
        double dS, dT, dS2, dT2;
        const ClVector cPoint = ClVector::IntersectionINF(p1, d1, p2, d2, dS, dT);
        EXPECT_NEAR(cPoint.m_dX, p1.m_dX + dS * d1.m_dX, 1e-9);
        EXPECT_NEAR(cPoint.m_dY, p1.m_dY + dS * d1.m_dY, 1e-9);
        EXPECT_EQ(cPoint.m_dX, p2.m_dX + dT * d2.m_dX) << "the second line gives the point";
        EXPECT_EQ(cPoint.m_dY, p2.m_dY + dT * d2.m_dY);
        for (const ClVector& cSame :
             {ClVector::Intersection(p1, d1, p2, d2, dS2, dT2), ClVector::CrossPoint(p1, d1, p2, d2, dS2, dT2)})
        {
            EXPECT_EQ(cPoint.m_dX, cSame.m_dX);
            EXPECT_EQ(cPoint.m_dY, cSame.m_dY);
            EXPECT_EQ(dS, dS2);
            EXPECT_EQ(dT, dT2);
        }
    }
}

void ExpectParallel(ClVector d1, ClVector d2)
{
    ClVector p1(1, 2), p2(3, 4);
    double dS = 9, dT = 9;
    ClVector cPoint = ClVector::IntersectionINF(p1, d1, p2, d2, dS, dT);
    for (const double dResult : {dS, dT, cPoint.m_dX, cPoint.m_dY})
    {
        EXPECT_EQ(dInfinity, dResult);
    }
    for (const bool bCrossPoint : {false, true})
    {
        dS = dT = 9;
        cPoint =
            bCrossPoint ? ClVector::CrossPoint(p1, d1, p2, d2, dS, dT) : ClVector::Intersection(p1, d1, p2, d2, dS, dT);
        for (const double dResult : {dS, dT, cPoint.m_dX, cPoint.m_dY})
        {
            EXPECT_EQ(0.0, dResult);
        }
    }
}

TEST(Vector, ParallelLinesMeetAtInfinityOrAtTheOrigin)
{
    ExpectParallel(ClVector(1, 2), ClVector(2, 4));
    ExpectParallel(ClVector(1, 2), ClVector(-1, -2));
    ExpectParallel(ClVector(0, 0), ClVector(1, 0));
    ExpectParallel(ClVector(std::nan(""), 1), ClVector(1, 0));
}

TEST(Vector, LinesAreParallelUpToTheEpsilonItself)
{
    ExpectParallel(ClVector(1, 0), ClVector(0, 1e-07));
    ExpectParallel(ClVector(1, 0), ClVector(0, -1e-07));
    double dS, dT;
    const double dAbove = std::nextafter(1e-07, 1.0);
    const ClVector cPoint =
        ClVector::IntersectionINF(ClVector(0, 0), ClVector(1, 0), ClVector(3, dAbove), ClVector(0, dAbove), dS, dT);
    EXPECT_EQ(3.0, cPoint.m_dX);
    EXPECT_EQ(0.0, cPoint.m_dY);
    EXPECT_EQ(-1.0, dT);
}
} // namespace
