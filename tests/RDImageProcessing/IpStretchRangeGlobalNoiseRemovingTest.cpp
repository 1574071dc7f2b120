#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

namespace
{
/// The value below which the share of an image's plane lies, and the one above which, found by sorting.
std::pair<int, int> RangeBySorting(const ClImage& cImage, int nPlane, double dDark, double dBright)
{
    std::vector<int> anSorted;
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            anSorted.push_back(SampleAt<unsigned char>(cImage, x, y, nPlane));
        }
    }
    std::sort(anSorted.begin(), anSorted.end());
    const auto nCount = static_cast<double>(anSorted.size());
    return {anSorted[static_cast<std::size_t>(nCount * dDark)],
            *(anSorted.rbegin() + static_cast<long>(nCount * dBright))};
}

/// The same table from the class that is told its range.
void ExpectStretched(const ClImage& cIn, int nFrom, int nTo, const ClImage& cOut)
{
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nOldRangeFrom = static_cast<unsigned char>(nFrom);
    cStretch.m_nOldRangeTo = static_cast<unsigned char>(nTo);
    cStretch.Initialize();
    ClImage cExpected;
    cExpected = cIn;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth * cIn.m_nPlanes; ++x)
        {
            unsigned char& nSample = *(SampleAddress(cExpected, 0, y) + x);
            nSample = cStretch.m_aLuT[nSample];
        }
    }
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpStretchRangeGlobalNoiseRemoving, StretchesWhatRemainsWithoutTheNoise)
{
    for (const ClTestSize& cSize : {ClTestSize{16, 9}, ClTestSize{31, 6}, ClTestSize{67, 53}})
    {
        for (const auto& [dDark, dBright] :
             {std::pair(0.0, 0.0), std::pair(0.02, 0.07), std::pair(0.3, 0.1), std::pair(0.0, 0.5)})
        {
            ClImage cIn, cOut;
            FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 8);
            ClIpStretchRangeGlobalNoiseRemoving cStretch;
            ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, dDark, dBright));
            const auto [nFrom, nTo] = RangeBySorting(cIn, 0, dDark, dBright);
            EXPECT_EQ(nFrom, cStretch.m_nActRangeFrom);
            EXPECT_EQ(nTo, cStretch.m_nActRangeTo);
            ExpectStretched(cIn, nFrom, nTo, cOut);
        }
    }
}

TEST(IpStretchRangeGlobalNoiseRemoving, MergesTheRangesOfAllPlanes)
{
    for (const int nPlanes : {2, 3, 4})
    {
        ClImage cIn(31, 17, nPlanes, 0, 0), cOut;
        ClTestRandom cRandom(3);
        for (int i = 0; i < 31 * 17 * nPlanes; ++i)
        {
            SetSample(cIn, i / nPlanes % 31, i / nPlanes / 31, i % nPlanes,
                      static_cast<unsigned char>(30 * (i % nPlanes) + cRandom.Below(100)));
        }
        int nFrom = 255, nTo = 0;
        for (int n = 0; n < nPlanes; ++n)
        {
            const auto [nPlaneFrom, nPlaneTo] = RangeBySorting(cIn, n, 0.1, 0.2);
            nFrom = std::min(nFrom, nPlaneFrom);
            nTo = std::max(nTo, nPlaneTo);
        }
        ClIpStretchRangeGlobalNoiseRemoving cStretch;
        ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, 0.1, 0.2));
        EXPECT_EQ(nFrom, cStretch.m_nActRangeFrom);
        EXPECT_EQ(nTo, cStretch.m_nActRangeTo);
        ExpectStretched(cIn, nFrom, nTo, cOut);
        EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
    }
}

TEST(IpStretchRangeGlobalNoiseRemoving, StartAboveTheEndTakesTheEnd)
{
    ClImage cIn(10, 1, 1, 0, 0), cOut;
    for (int x = 0; x < 10; ++x)
    {
        SetSample(cIn, x, 0, 0, static_cast<unsigned char>(20 * x));
    }
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, 0.8, 0.8)); // 160 and 20
    EXPECT_EQ(20, cStretch.m_nActRangeFrom);
    EXPECT_EQ(20, cStretch.m_nActRangeTo);
    EXPECT_EQ(20, SampleAt<unsigned char>(cOut, 1, 0)) << "the table is the identity on that value";
}

TEST(IpStretchRangeGlobalNoiseRemoving, SharesOfOneOrMoreCutNothing)
{
    ClImage cIn, cOut;
    FillRandom8(cIn, 9, 9, 3);
    std::for_each(cIn.Data(), cIn.Data() + 12 * 9, [](unsigned char& n) { n = static_cast<unsigned char>(n / 4 + 9); });
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, 1.0, 1.5));
    EXPECT_EQ(0, cStretch.m_nActRangeFrom);
    EXPECT_EQ(255, cStretch.m_nActRangeTo);
    constexpr double dNaN = std::numeric_limits<double>::quiet_NaN();
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, dNaN, dNaN)); // not below one, either
    EXPECT_EQ(0, cStretch.m_nActRangeFrom);
    EXPECT_EQ(255, cStretch.m_nActRangeTo);
}

TEST(IpStretchRangeGlobalNoiseRemoving, OutputComesFromThePointerIfThereIsOne)
{
    ClImage cIn, cOut, cOther, cExpected;
    FillRandom8(cIn, 9, 9, 3);
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cExpected, 0.1, 0.1));
    ClImage* pOther = &cOther;
    cStretch.m_ppOutImage = &pOther;
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, 0.1, 0.1));
    EXPECT_EQ(&cOther, cStretch.m_pOutImage);
    EXPECT_TRUE(SamePixels(cExpected, cOther));
    EXPECT_EQ(nullptr, cOut.Data());

    pOther = nullptr; // then the input takes the result
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut, 0.1, 0.1));
    EXPECT_EQ(&cIn, cStretch.m_pOutImage);
    EXPECT_TRUE(SamePixels(cExpected, cIn));
}

TEST(IpStretchRangeGlobalNoiseRemoving, WithoutAnOutputTheInputIsStretchedInItsBuffer)
{
    ClImage cImage, cExpected;
    FillRandom8(cImage, 9, 9, 3);
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    ASSERT_EQ(0, cStretch.ApplyParam(cImage, cExpected, 0.1, 0.1));
    const unsigned char* pBuffer = cImage.Data();
    cStretch.m_pOutImage = nullptr;
    ASSERT_EQ(0, cStretch.Apply());
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_EQ(pBuffer, cImage.Data());
    ClIpStretchRangeGlobalNoiseRemoving cNew;
    EXPECT_RAISES_CODE(cNew.Apply(), -37);
}

TEST(IpStretchRangeGlobalNoiseRemoving, PublishesItsSharesBehindTheRanges)
{
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    EXPECT_EQ(nullptr, cStretch.m_ppOutImage);
    cStretch.m_dDarkNoisePart = 0.02;
    cStretch.m_dBrightNoisePart = 0.07;
    ClParameterContainer cContainer;
    cStretch.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage",     "pOutImage",  "NewRangeFrom",  "NewRangeTo",
                              "OldRangeFrom", "OldRangeTo", "DarkNoisePart", "BrightNoisePart"};
    ASSERT_EQ(8u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 8; ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
    }
    for (unsigned long i = 6; i < 8; ++i)
    {
        const ClParameterNumericInterface* pShare = cContainer.m_aChildren[i]->GetNumericInterface();
        EXPECT_EQ(i == 6 ? 0.02 : 0.07, pShare->GetNumber());
        EXPECT_EQ(0.0, pShare->GetDefault());
        EXPECT_EQ(1.0, pShare->GetLowerBoundary());
        EXPECT_EQ(-1.0, pShare->GetUpperBoundary());
    }
    cContainer.FindLocal("DarkNoisePart")->SetValue("0.5");
    EXPECT_EQ(0.5, cStretch.m_dDarkNoisePart);
    EXPECT_STREQ("ClIpStretchRangeGlobalNoiseRemoving", cStretch.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cStretch.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpStretchRangeGlobalNoiseRemoving*>(pNew.get()));
}
} // namespace
