#include "FourPrintTestTools.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using Component = ClIpConnectedComponent2::ClComponent;

Component At(double dX, double dY, double dArea = 3000.0, double dEccentricity = 0.5)
{
    Component c;
    c.m_cCenter = ClVector(dX, dY);
    c.m_dArea = dArea;
    c.m_dEccentricity = dEccentricity;
    return c;
}

/// Runs the rules on hand-made components.
struct ClRun
{
    explicit ClRun(const std::vector<Component>& acComponent)
    {
        for (const Component& c : acComponent)
        {
            m_aComponents.Add(c);
        }
        m_nResult = m_c.ApplyRulesToGetRightFingerSegments(m_aComponents, m_cImage, m_aSelected);
    }

    std::vector<int> Marks() const
    {
        return std::vector<int>(m_aSelected.m_pData, m_aSelected.m_pData + m_aSelected.Entries());
    }

    std::vector<double> ComponentAreas() const
    {
        std::vector<double> adArea;
        for (unsigned long i = 0; i < m_aComponents.Entries(); ++i)
        {
            adArea.push_back(m_aComponents[i].m_dArea);
        }
        return adArea;
    }

    ClIpFourPrintSegmentation m_c;
    ClIpFourPrintSegmentation::Components_t m_aComponents;
    ClIpFourPrintSegmentation::Marks_t m_aSelected;
    ClImage m_cImage;
    long m_nResult;
};

using Marks = std::vector<int>;
using Areas = std::vector<double>;
} // namespace

TEST(IpFourPrintRules, NoComponentsGiveNoCandidateAndNoFinger)
{
    const ClRun cRun({});
    EXPECT_EQ(0, cRun.m_nResult);
    EXPECT_EQ(0, cRun.m_c.m_nFingers);
    EXPECT_EQ(0u, cRun.m_c.m_aCenters.Entries());
    EXPECT_EQ(Marks{}, cRun.Marks());
}

TEST(IpFourPrintRules, AnAreaBelow200IsNoise)
{
    const ClRun cRun({At(100, 500, 199.9), At(300, 500, 200.0), At(500, 500, 10.0)});
    EXPECT_EQ(Areas{200.0}, cRun.ComponentAreas());
    EXPECT_EQ(1, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, AnEccentricityAbove095IsALine)
{
    const ClRun cRun({At(100, 500, 1000, 0.95), At(300, 500, 2000, 0.9500001)});
    EXPECT_EQ(Areas{1000.0}, cRun.ComponentAreas());
}

TEST(IpFourPrintRules, CentresNearerThan44PixelsAreOneObject)
{
    EXPECT_EQ(Areas{3000.0}, ClRun({At(100, 500, 2000), At(143.9, 500, 3000)}).ComponentAreas());
    EXPECT_EQ((Areas{2000.0, 3000.0}), ClRun({At(100, 500, 2000), At(144.0, 500, 3000)}).ComponentAreas());
    // 27 across and 36 up are 45 apart, 26 and 35 are 43.6.
    EXPECT_EQ((Areas{2000.0, 3000.0}), ClRun({At(100, 500, 2000), At(127, 536, 3000)}).ComponentAreas());
    EXPECT_EQ(Areas{3000.0}, ClRun({At(100, 500, 2000), At(126, 535, 3000)}).ComponentAreas());
}

TEST(IpFourPrintRules, OfTwoNearComponentsTheSmallerGoes)
{
    EXPECT_EQ(Areas{3000.0}, ClRun({At(100, 500, 3000), At(110, 500, 2000)}).ComponentAreas());
    EXPECT_EQ(Areas{3000.0}, ClRun({At(100, 500, 2000), At(110, 500, 3000)}).ComponentAreas());
}

TEST(IpFourPrintRules, OnEqualAreasTheOuterEntryOfTheScanGoes)
{
    const ClRun cRun({At(100, 500), At(110, 500)});
    ASSERT_EQ(1u, cRun.m_aComponents.Entries());
    EXPECT_EQ(110.0, cRun.m_aComponents[0].m_cCenter.m_dX);
}

TEST(IpFourPrintRules, AChainOfFragmentsIsResolvedInTheOrderOfTheScan)
{
    // The first beats the second and then no longer sees the third, 80 pixels away.
    EXPECT_EQ((Areas{3000.0, 2500.0}),
              ClRun({At(100, 500, 3000), At(140, 500, 2000), At(180, 500, 2500)}).ComponentAreas());
    // Here the middle one takes both.
    EXPECT_EQ(Areas{3000.0}, ClRun({At(100, 500, 2000), At(140, 500, 3000), At(180, 500, 2500)}).ComponentAreas());
    // After a removal the scan stays at its index: the entry that moves there is judged from the start.
    EXPECT_EQ((Areas{1000.0, 4000.0}), ClRun({At(100, 500, 1000), At(500, 500, 4000), At(500, 510, 900),
                                              At(101, 501, 900), At(505, 500, 3000), At(498, 499, 1000)})
                                           .ComponentAreas());
}

TEST(IpFourPrintRules, CrowdsOfFragmentsAreResolvedInTheOrderOfTheScan)
{
    ClTestRandom cRandom(5);
    for (const int nSide : {100, 300, 1000, 2000})
    {
        std::vector<Component> acComponent;
        for (int i = 0; i < 400; ++i)
        {
            acComponent.push_back(
                At(cRandom.Below(4 * nSide) / 4.0, cRandom.Below(4 * nSide) / 4.0, 200 + cRandom.Below(300)));
        }
        const ClRun cRun(acComponent);
        for (std::size_t i = 0; i < acComponent.size();)
        {
            const auto near = [&](const Component& c)
            {
                const double dX = c.m_cCenter.m_dX - acComponent[i].m_cCenter.m_dX;
                const double dY = c.m_cCenter.m_dY - acComponent[i].m_cCenter.m_dY;
                return &c != &acComponent[i] && static_cast<int>(std::sqrt(dX * dX + dY * dY)) < 44;
            };
            const auto cNear = std::find_if(acComponent.begin(), acComponent.end(), near);
            if (cNear == acComponent.end())
            {
                ++i;
                continue;
            }
            acComponent.erase(
                acComponent[i].m_dArea > cNear->m_dArea ? cNear : acComponent.begin() + static_cast<std::ptrdiff_t>(i));
        }
        ASSERT_EQ(acComponent.size(), cRun.m_aComponents.Entries()) << nSide;
        for (std::size_t i = 0; i < acComponent.size(); ++i)
        {
            EXPECT_TRUE(acComponent[i] == cRun.m_aComponents[i]) << nSide;
        }
    }
}

TEST(IpFourPrintRules, WhatGoesLeavesCopiesOfTheLastBehindTheOthers)
{
    ClTestRandom cRandom(17);
    for (int i = 0; i < 200; ++i)
    {
        ClIpFourPrintSegmentation::Components_t aExpected;
        std::vector<Component> acComponent;
        for (int n = 1 + i % 40; n > 0; --n)
        {
            acComponent.push_back(At(cRandom.Below(300), cRandom.Below(300), 150 + cRandom.Below(300),
                                     cRandom.Below(5) == 0 ? 0.97 : 0.5));
            aExpected.Add(acComponent.back());
        }
        for (unsigned long k = 0; k < aExpected.Entries();)
        {
            aExpected[k].m_dArea < 200.0 ? aExpected.RemoveAt(k) : void(++k);
        }
        for (unsigned long k = 0; k < aExpected.Entries();)
        {
            aExpected[k].m_dEccentricity > 0.95 ? aExpected.RemoveAt(k) : void(++k);
        }
        for (unsigned long k = 0; k < aExpected.Entries();)
        {
            unsigned long j = 0;
            for (; j < aExpected.Entries(); ++j)
            {
                const double dX = aExpected[k].m_cCenter.m_dX - aExpected[j].m_cCenter.m_dX;
                const double dY = aExpected[k].m_cCenter.m_dY - aExpected[j].m_cCenter.m_dY;
                if (j != k && static_cast<int>(std::sqrt(dX * dX + dY * dY)) < 44)
                {
                    break;
                }
            }
            if (j == aExpected.Entries())
            {
                ++k;
                continue;
            }
            aExpected.RemoveAt(aExpected[k].m_dArea > aExpected[j].m_dArea ? j : k);
        }
        ClRun cRun(acComponent);
        ASSERT_EQ(aExpected.Entries(), cRun.m_aComponents.Entries()) << i;
        for (unsigned long k = 0; k < acComponent.size(); ++k)
        {
            EXPECT_TRUE(aExpected[k] == cRun.m_aComponents[k]) << i << ", " << k;
        }
    }
}

TEST(IpFourPrintRules, ACentreThatIsNoNumberStandsInNoColumn)
{
    const double dNaN = std::nan("");
    ClRun cRun({At(100, 700), At(105, 640), At(110, 580)});
    cRun.m_c.m_aCenters.Clear();
    cRun.m_c.m_aCenters.Add(ClVector(dNaN, 700));
    cRun.m_c.m_aCenters.Add(ClVector(100, dNaN));
    cRun.m_c.ApplyRulesToGetRightFingerSegments(cRun.m_aComponents, cRun.m_cImage, cRun.m_aSelected);
    EXPECT_EQ((Marks{1, 1, 1, 0, 0}), cRun.Marks());
}

TEST(IpFourPrintRules, InCrowdsTheTopOfEachColumnStays)
{
    ClTestRandom cRandom(7);
    for (const int nColumns : {30, 200, 2000})
    {
        // Every 44 pixels upwards, so that none is near another; equal heights and equal columns included.
        std::vector<Component> acComponent;
        for (int i = 0; i < 100; ++i)
        {
            acComponent.push_back(At(cRandom.Below(nColumns), 1000 + 44 * (i * 37 % 100 / 2), 3000));
        }
        const ClRun cRun(acComponent);
        const auto& aCenters = cRun.m_c.m_aCenters;
        double dSecond = 0.0; // palm is what stands more than 260 below the second-highest
        double dTop = 0.0;
        for (unsigned long i = 0; i < aCenters.Entries(); ++i)
        {
            dSecond = std::max(dSecond, std::min(dTop, aCenters[i].m_dY));
            dTop = std::max(dTop, aCenters[i].m_dY);
        }
        int nStay = 0;
        for (unsigned long i = 0; i < aCenters.Entries(); ++i)
        {
            bool bStays = aCenters[i].m_dY >= dSecond - 260;
            for (unsigned long j = 0; j < aCenters.Entries(); ++j)
            {
                bStays = bStays &&
                         !(std::abs(aCenters[i].m_dX - aCenters[j].m_dX) < 25 && aCenters[i].m_dY < aCenters[j].m_dY);
            }
            EXPECT_EQ(bStays ? 1 : 0, cRun.Marks()[i]) << nColumns << ", " << i;
            nStay += bStays ? 1 : 0;
        }
        EXPECT_EQ(nStay, cRun.m_c.m_nFingers);
    }
}

TEST(IpFourPrintRules, CandidatesCarryCentreAreaAndEccentricity)
{
    const ClRun cRun({At(100.5, 500.25, 3000, 0.25), At(200, 480, 2500, 0.75)});
    ASSERT_EQ(2u, cRun.m_c.m_aCenters.Entries());
    ASSERT_EQ(2u, cRun.m_c.m_aShapes.Entries());
    EXPECT_EQ(100.5, cRun.m_c.m_aCenters[0].m_dX);
    EXPECT_EQ(500.25, cRun.m_c.m_aCenters[0].m_dY);
    EXPECT_EQ(2500.0, cRun.m_c.m_aShapes[1].m_dX);
    EXPECT_EQ(0.75, cRun.m_c.m_aShapes[1].m_dY);
    EXPECT_EQ((Marks{1, 1}), cRun.Marks());
}

TEST(IpFourPrintRules, TwoCandidatesAreJudgedByNoHeight)
{
    const ClRun cRun({At(100, 900), At(300, 100)});
    EXPECT_EQ((Marks{1, 1}), cRun.Marks());
    EXPECT_EQ(2, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ACandidateFarAboveTheRestGoesAndThePalmRuleFollowsTheSecond)
{
    // 900 is 151 above 749; the limit of the palm rule is then 749 - 260 = 489.
    const ClRun cRun({At(100, 749), At(300, 900), At(500, 600), At(700, 489), At(900, 488.9)});
    EXPECT_EQ(4u, cRun.m_c.m_aCenters.Entries());
    EXPECT_EQ(4u, cRun.m_c.m_aShapes.Entries());
    EXPECT_EQ((Marks{1, 1, 1, 0}), cRun.Marks());
    EXPECT_EQ(3, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ACandidate150RowsAboveTheRestStays)
{
    const ClRun cRun({At(100, 749), At(300, 899.9), At(500, 600)});
    EXPECT_EQ((Marks{1, 1, 1}), cRun.Marks());
}

TEST(IpFourPrintRules, AStrayCandidateLeavesTheComponentsAsTheyAre)
{
    const ClRun cRun({At(100, 900, 1000), At(300, 700, 2000), At(500, 700, 3000)});
    EXPECT_EQ((Areas{1000.0, 2000.0, 3000.0}), cRun.ComponentAreas());
    // Mark 0 now speaks of the second component but stands at the place of the first.
    EXPECT_EQ((Marks{1, 1}), cRun.Marks());
    EXPECT_EQ(300.0, cRun.m_c.m_aCenters[0].m_dX);
}

TEST(IpFourPrintRules, AHeightEqualToTheTopLiftsTheSecondToIt)
{
    const ClRun cRun({At(100, 900.7), At(300, 900.2), At(500, 639.9), At(700, 640)});
    EXPECT_EQ((Marks{1, 1, 0, 1}), cRun.Marks()); // limit 900 - 260
}

TEST(IpFourPrintRules, OnlyTheCandidateNearestTheTipsStaysInAColumn)
{
    EXPECT_EQ((Marks{1, 0}), ClRun({At(100, 500), At(124.9, 400)}).Marks());
    EXPECT_EQ((Marks{1, 1}), ClRun({At(100, 500), At(125.0, 400)}).Marks());
    EXPECT_EQ((Marks{0, 1}), ClRun({At(124.9, 400), At(100, 500)}).Marks());
}

TEST(IpFourPrintRules, ASilencedCandidateStillSilencesOthers)
{
    // The lowest lies within 25 of the middle one only, which the first has silenced.
    const ClRun cRun({At(100, 600), At(120, 500), At(140, 400)});
    EXPECT_EQ((Marks{1, 0, 0}), cRun.Marks());
    EXPECT_EQ(1, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, AThumbBelowFourFingersGoes)
{
    // Limit of the palm rule: 805 - 260 = 545; mean height (800 + 810 + 790 + 805 + 600) / 5 = 761.
    const ClRun cRun({At(100, 800), At(200, 810), At(300, 790), At(400, 805), At(500, 600)});
    EXPECT_EQ((Marks{1, 1, 1, 1, 0}), cRun.Marks());
    EXPECT_EQ(4, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ALoneCandidateAboveFourGoes)
{
    const ClRun cRun({At(100, 700), At(200, 710), At(300, 840), At(400, 690), At(500, 705)});
    EXPECT_EQ((Marks{1, 1, 0, 1, 1}), cRun.Marks());
}

TEST(IpFourPrintRules, FiveCandidatesOfOneHeightAllStay)
{
    const ClRun cRun({At(100, 700), At(200, 700), At(300, 700), At(400, 700), At(500, 700)});
    EXPECT_EQ((Marks{1, 1, 1, 1, 1}), cRun.Marks());
    EXPECT_EQ(5, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, SixCandidatesThreeHighAndThreeLowStaySix)
{
    const ClRun cRun({At(100, 700), At(200, 701), At(300, 702), At(400, 600), At(500, 601), At(600, 602)});
    EXPECT_EQ(6, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ALoneCandidateAgainstFiveStays)
{
    // Only one against four, with nobody on the mean, is told as a stray one or a thumb.
    const ClRun cAbove({At(100, 600), At(200, 601), At(300, 740), At(400, 602), At(500, 603), At(600, 604)});
    EXPECT_EQ(6, cAbove.m_c.m_nFingers);
    const ClRun cBelow({At(100, 700), At(200, 701), At(300, 560), At(400, 702), At(500, 703), At(600, 704)});
    EXPECT_EQ(6, cBelow.m_c.m_nFingers);
    // The mean of 700, 700, 700, 740 and 660 is 700: one above, one below, three on it.
    const ClRun cLevel({At(100, 700), At(200, 700), At(300, 700), At(400, 740), At(500, 660)});
    EXPECT_EQ(5, cLevel.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ACandidateMoreThan2000BelowTheMeanAreaIsExtra)
{
    // Mean (5000 + 5000 + 5000 + 5000 + 2498) / 5 = 4499; 2498 is 2001 below it.
    const ClRun cGoes(
        {At(100, 700, 5000), At(200, 700, 5000), At(300, 700, 2498), At(400, 700, 5000), At(500, 700, 5000)});
    EXPECT_EQ((Marks{1, 1, 0, 1, 1}), cGoes.Marks());
    // Mean (20000 + 2500) / 5 = 4500; exactly 2000 below it stays.
    const ClRun cStays(
        {At(100, 700, 5000), At(200, 700, 5000), At(300, 700, 2500), At(400, 700, 5000), At(500, 700, 5000)});
    EXPECT_EQ((Marks{1, 1, 1, 1, 1}), cStays.Marks());
}

TEST(IpFourPrintRules, OfTwoEquallySmallExtrasTheFirstGoes)
{
    const ClRun cRun({At(100, 700, 6000), At(200, 700, 1000), At(300, 700, 6000), At(400, 700, 1000),
                      At(500, 700, 6000), At(600, 700, 6000)});
    EXPECT_EQ((Marks{1, 0, 1, 1, 1, 1}), cRun.Marks());
    EXPECT_EQ(5, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, FourCandidatesNeedNoFurtherRule)
{
    const ClRun cRun({At(100, 700, 9000), At(200, 700, 9000), At(300, 700, 300), At(400, 500, 9000)});
    EXPECT_EQ(4, cRun.m_c.m_nFingers);
}

TEST(IpFourPrintRules, ASecondRunAppendsBehindTheOldCandidates)
{
    ClRun cRun({At(100, 700)});
    cRun.m_c.ApplyRulesToGetRightFingerSegments(cRun.m_aComponents, cRun.m_cImage, cRun.m_aSelected);
    EXPECT_EQ(2u, cRun.m_c.m_aCenters.Entries());
    EXPECT_EQ((Marks{1, 1}), cRun.Marks());
    EXPECT_EQ(2, cRun.m_c.m_nFingers);
}
