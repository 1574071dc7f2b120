#include "RDImageProcessing/IpStretchRangeGlobal.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

namespace
{
/// The table entry from the definition, in 64 bits and with a floor instead of a shift.
int Stretched(int nValue, int nActFrom, int nActTo, int nNewFrom, int nNewTo)
{
    const double dFactor = std::trunc((nNewTo + 0.9 - nNewFrom) * 4096.0 / (nActTo - nActFrom));
    const std::int64_t nAbove = (std::int64_t(nValue) - nActFrom) * static_cast<std::int64_t>(dFactor);
    const auto nResult = nNewFrom + static_cast<int>(std::floor(static_cast<double>(nAbove) / 4096.0));
    return nResult < nNewFrom ? nNewFrom : std::min(nResult, nNewTo);
}

void ExpectTable(const ClIpStretchRangeGlobal& cStretch, int nActFrom, int nActTo)
{
    EXPECT_EQ(nActFrom, cStretch.m_nActRangeFrom);
    EXPECT_EQ(nActTo, cStretch.m_nActRangeTo);
    for (int v = 0; v < 256; ++v)
    {
        ASSERT_EQ(Stretched(v, nActFrom, nActTo, cStretch.m_nNewRangeFrom, cStretch.m_nNewRangeTo), cStretch.m_aLuT[v])
            << v << " from " << nActFrom << " " << nActTo << " to " << +cStretch.m_nNewRangeFrom << " "
            << +cStretch.m_nNewRangeTo;
    }
}

TEST(IpStretchRangeGlobal, StretchesAGivenRangeOverTheWholeScale)
{
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nOldRangeFrom = 10;
    cStretch.m_nOldRangeTo = 200;
    ClImage cIn(256, 1, 1, 0, 0), cOut;
    for (int x = 0; x < 256; ++x)
    {
        SetSample(cIn, x, 0, 0, static_cast<unsigned char>(x));
    }
    ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut));
    for (int x = 0; x <= 10; ++x)
    {
        EXPECT_EQ(0, SampleAt<unsigned char>(cOut, x, 0)) << x;
    }
    EXPECT_EQ(1, SampleAt<unsigned char>(cOut, 11, 0));
    EXPECT_EQ(254, SampleAt<unsigned char>(cOut, 199, 0));
    for (int x = 200; x < 256; ++x)
    {
        EXPECT_EQ(255, SampleAt<unsigned char>(cOut, x, 0)) << x;
    }
    ExpectTable(cStretch, 10, 200);
    EXPECT_TRUE(cStretch.m_bLuTValid);
}

TEST(IpStretchRangeGlobal, TableFollowsItsDefinitionForAllRanges)
{
    ClIpStretchRangeGlobal cStretch;
    ClTestRandom cRandom(4);
    for (int i = 0; i < 3000; ++i)
    {
        int nFrom = cRandom.Below(256), nTo = cRandom.Below(256);
        if (nFrom == nTo)
        {
            continue;
        }
        cStretch.m_nOldRangeFrom = static_cast<unsigned char>(std::min(nFrom, nTo));
        cStretch.m_nOldRangeTo = static_cast<unsigned char>(std::max(nFrom, nTo));
        cStretch.m_nNewRangeFrom = static_cast<unsigned char>(cRandom.Below(256));
        cStretch.m_nNewRangeTo = static_cast<unsigned char>(cRandom.Below(256)); // may lie below the start
        ASSERT_EQ(0, cStretch.Initialize());
        ExpectTable(cStretch, std::min(nFrom, nTo), std::max(nFrom, nTo));
        if (testing::Test::HasFatalFailure())
        {
            return;
        }
    }
}

TEST(IpStretchRangeGlobal, TakesTheOccupiedRangeOfAllPlanesByDefault)
{
    for (const int nPlanes : {1, 2, 3, 4})
    {
        ClImage cIn(13, 7, nPlanes, 0, 0), cOut, cExpected;
        ClTestRandom cRandom(6);
        int nFirst = 255, nLast = 0;
        for (int i = 0; i < 13 * 7 * nPlanes; ++i)
        {
            const int nValue = 40 + 30 * (i % nPlanes) + cRandom.Below(50);
            SetSample(cIn, i / nPlanes % 13, i / nPlanes / 13, i % nPlanes, static_cast<unsigned char>(nValue));
            nFirst = std::min(nFirst, nValue);
            nLast = std::max(nLast, nValue);
        }
        ClIpStretchRangeGlobal cStretch;
        ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut));
        ExpectTable(cStretch, nFirst, nLast);
        cExpected.New(cIn);
        for (int i = 0; i < 13 * 7 * nPlanes; ++i)
        {
            const int x = i / nPlanes % 13, y = i / nPlanes / 13, n = i % nPlanes;
            SetSample(
                cExpected, x, y, n,
                static_cast<unsigned char>(Stretched(SampleAt<unsigned char>(cIn, x, y, n), nFirst, nLast, 0, 255)));
        }
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpStretchRangeGlobal, FlatImageStaysAsItIs)
{
    ClImage cImage(3, 3, 1, 0, 0);
    for (const int nValue : {0, 77, 255})
    {
        std::fill_n(cImage.Data(), 12, static_cast<unsigned char>(nValue));
        ClIpStretchRangeGlobal cStretch;
        ASSERT_EQ(0, static_cast<ClIpLookUpTableBase&>(cStretch).ApplyParam(cImage));
        EXPECT_EQ(nValue, cImage.Data()[10]);
    }
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nOldRangeFrom = cStretch.m_nOldRangeTo = 9;
    EXPECT_EQ(0, cStretch.Initialize());
    EXPECT_EQ(9, cStretch.m_aLuT[9]);
}

TEST(IpStretchRangeGlobal, NeedsAnInput)
{
    ClIpStretchRangeGlobal cStretch;
    EXPECT_RAISES(cStretch.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nm_pInImage is not set.");
    cStretch.m_nOldRangeFrom = 0;
    cStretch.m_nOldRangeTo = 9;
    EXPECT_RAISES_CODE(cStretch.Apply(), -37);
}

TEST(IpStretchRangeGlobal, AnImageWithoutPixelsHasNoOccupiedRange)
{
    ClImage cNoRows(5, 0, 1, 0, 0), cEmpty, cOut;
    EXPECT_RAISES(ClIpStretchRangeGlobal().ApplyParam(cNoRows, cOut), ClException, -101,
                  "Internal error.\ninvalid Range in ClHistogram::Create.");
    EXPECT_RAISES(ClIpStretchRangeGlobal().ApplyParam(cEmpty, cOut), ClException, -101,
                  "Internal error.\nColor-image not supported in ClHistogram::Create.");
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nOldRangeFrom = 0;
    cStretch.m_nOldRangeTo = 9;
    EXPECT_EQ(0, cStretch.ApplyParam(cNoRows, cOut)); // with a range of its own there is nothing to map
    EXPECT_EQ(5, cOut.m_nWidth);
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpStretchRangeGlobal, SignedSamplesAreCountedFromTheSmallestAndMappedAsBytes)
{
    for (int nPlanes = 1; nPlanes <= 4; ++nPlanes)
    {
        ClImage cIn, cOut, cExpected;
        cIn.NewWithType(ClImage::eSInt8, 13, 7, nPlanes, 0, 0);
        ClTestRandom cRandom(9);
        int nFirst = 127, nLast = -128;
        for (int i = 0; i < 13 * 7 * nPlanes; ++i)
        {
            const int nValue = cRandom.Below(120) - 70;
            SetSample(cIn, i / nPlanes % 13, i / nPlanes / 13, i % nPlanes, static_cast<signed char>(nValue));
            nFirst = std::min(nFirst, nValue);
            nLast = std::max(nLast, nValue);
        }
        ClIpStretchRangeGlobal cStretch;
        ASSERT_EQ(0, cStretch.ApplyParam(cIn, cOut));
        ExpectTable(cStretch, nFirst + 128, nLast + 128);
        cExpected.New(cIn);
        for (int i = 0; i < 13 * 7 * nPlanes; ++i)
        {
            const int x = i / nPlanes % 13, y = i / nPlanes / 13, n = i % nPlanes;
            const int nByte = SampleAt<unsigned char>(cIn, x, y, n);
            SetSample(cExpected, x, y, n,
                      static_cast<unsigned char>(Stretched(nByte, nFirst + 128, nLast + 128, 0, 255)));
        }
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpStretchRangeGlobal, PublishesTheNewRangeBeforeTheOldOne)
{
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nOldRangeFrom = 1;
    cStretch.m_nOldRangeTo = 2;
    cStretch.m_nNewRangeFrom = 3;
    cStretch.m_nNewRangeTo = 4;
    ClParameterContainer cContainer;
    cStretch.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutImage", "NewRangeFrom", "NewRangeTo", "OldRangeFrom", "OldRangeTo"};
    const double adValues[] = {0, 0, 3, 4, 1, 2};
    const double adDefaults[] = {0, 0, 0, 255, 255, 0};
    ASSERT_EQ(6u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 6; ++i)
    {
        ClParameter* pParameter = cContainer.m_aChildren[i];
        EXPECT_STREQ(aszNames[i], pParameter->GetName());
        if (i >= 2)
        {
            ASSERT_NE(nullptr, pParameter->GetNumericInterface());
            EXPECT_EQ(adValues[i], pParameter->GetNumericInterface()->GetNumber()) << aszNames[i];
            EXPECT_EQ(adDefaults[i], pParameter->GetNumericInterface()->GetDefault()) << aszNames[i];
        }
    }
}

TEST(IpStretchRangeGlobal, ResetForgetsImagesAndRanges)
{
    ClIpStretchRangeGlobal cStretch;
    ClImage cImage;
    cStretch.m_pInImage = cStretch.m_pOutImage = &cImage;
    cStretch.m_nOldRangeFrom = cStretch.m_nOldRangeTo = cStretch.m_nNewRangeFrom = cStretch.m_nNewRangeTo = 9;
    cStretch.Reset();
    EXPECT_EQ(nullptr, cStretch.m_pInImage);
    EXPECT_EQ(nullptr, cStretch.m_pOutImage);
    EXPECT_EQ(255, cStretch.m_nOldRangeFrom);
    EXPECT_EQ(0, cStretch.m_nOldRangeTo);
    EXPECT_EQ(0, cStretch.m_nNewRangeFrom);
    EXPECT_EQ(255, cStretch.m_nNewRangeTo);
    EXPECT_STREQ("ClIpStretchRangeGlobal", cStretch.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cStretch.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpStretchRangeGlobal*>(pNew.get()));
}
} // namespace
