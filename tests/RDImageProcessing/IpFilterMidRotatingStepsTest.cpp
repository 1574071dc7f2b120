// The steps of the filter: measuring masks and searching the most uniform one.

#include "RDImageProcessing/IpFilterMidRotating.hpp"

#include "RDImageProcessing/RotatingFilterDefinitions.hpp"
#include "RDTools/Exception.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

using namespace RotatingFilterDefinitions;

TEST(IpFilterMidRotatingSteps, TheSearchFollowsItsRulesAmongEqualDeviations)
{
    for (const auto& [nColumns, nRows] : {Size(7, 7), Size(7, 20), Size(30, 7), Size(25, 21)})
    {
        for (int m = 1; m <= 7; ++m)
        {
            for (const int nLevels : {1, 2, 3, 5, 200})
            {
                ClImage cDev, cAvg, cOut, cExpected;
                FillLevels(cDev, nColumns, nRows, nLevels, static_cast<unsigned int>(m * 1000 + nLevels));
                FillRandom8(cAvg, nColumns, nRows, 3);
                cOut.New(cDev);
                ClIpFilterMidRotating().FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, m, cOut);
                const ClField cDevField = FieldOf<unsigned char>(cDev);
                const ClField cAvgField = FieldOf<unsigned char>(cAvg);
                ImageOf<unsigned char>(ClSearchByRules(cDevField, cAvgField, m / 2).Run(), 1.0, cExpected);
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << "rules, " << m << ' ' << nLevels;
                ImageOf<unsigned char>(SearchByDefinition(cDevField, cAvgField, m / 2), 1.0, cExpected);
                EXPECT_TRUE(SamePixels(cExpected, cOut)) << "definition, " << m << ' ' << nLevels;
            }
        }
    }
}

TEST(IpFilterMidRotatingSteps, TheSearchFindsUniqueMinima)
{
    for (const int m : {1, 3, 5, 6, 9})
    {
        ClImage cDev, cAvg, cOut, cExpected;
        constexpr int nColumns = 29, nRows = 27;
        FillRandom8(cOut, nColumns, nRows, 5);
        cDev.NewWithType(ClImage::eUInt32, nColumns, nRows, 1, 0, 0);
        cAvg.NewWithType(ClImage::eUInt32, nColumns, nRows, 1, 0, 0);
        ClTestRandom cRandom(static_cast<unsigned int>(m));
        for (int y = 0; y < nRows; ++y)
        {
            for (int x = 0; x < nColumns; ++x)
            {
                // The low bits tell the position, so that no two are equal.
                Row<unsigned int>(cDev, y)[x] = (cRandom.Next() & 0xFFF00000u) + static_cast<unsigned int>(y * 32 + x);
                Row<unsigned int>(cAvg, y)[x] = cRandom.Next() >> 16;
            }
        }
        ClIpFilterMidRotating().FindMinimum<unsigned int, unsigned char, ClConvertFixPoint>(cDev, cAvg, m, cOut);
        ImageOf<unsigned char>(SearchUnique(FieldOf<unsigned int>(cDev), FieldOf<unsigned int>(cAvg), m / 2), 256.0,
                               cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut)) << m;
    }
}

TEST(IpFilterMidRotatingSteps, TheSearchTakesImagesSmallerThanItsReach)
{
    for (const auto& [nColumns, nRows] : {Size(1, 1), Size(2, 5), Size(5, 2), Size(3, 3)})
    {
        ClImage cDev, cAvg, cOut, cExpected;
        FillRandom8(cDev, nColumns, nRows, 1);
        FillRandom8(cAvg, nColumns, nRows, 2);
        cOut.New(cDev);
        ClIpFilterMidRotating().FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, 9, cOut);
        ImageOf<unsigned char>(SearchUnique(FieldOf<unsigned char>(cDev), FieldOf<unsigned char>(cAvg), 4), 1.0,
                               cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}

TEST(IpFilterMidRotatingSteps, MaskDeviationsAreMeanDistancesToTheMean)
{
    for (const auto& [nColumns, nRows] : {Size(3, 3), Size(5, 2), Size(11, 9), Size(40, 23)})
    {
        for (const int m : {1, 2, 3, 4, 5, 6, 9, 15, 16, 17})
        {
            ClImage cAvg, cIn, cDev;
            FillRandom8(cIn, nColumns, nRows, 6);
            FillRandom8(cAvg, nColumns, nRows, 7); // any numbers do for the mean
            ClIpFilterMidRotating().CalculateDeviationByte(cAvg, cIn, m, cDev);
            ASSERT_TRUE(SameDescription(cAvg, cDev));
            const ClField cField = FieldOf<unsigned char>(cIn);
            for (int y = 0; y < nRows; ++y)
            {
                for (int x = 0; x < nColumns; ++x)
                {
                    int nSum = 0;
                    const int nCount = ForMask(cField, x, y, m,
                                               [&, a = int(Row<unsigned char>(cAvg, y)[x])](int i, int j)
                                               { nSum += std::abs(a - int(Row<unsigned char>(cIn, j)[i])); });
                    ASSERT_EQ((nSum / nCount) & 255, Row<unsigned char>(cDev, y)[x]) << m << ' ' << x << ' ' << y;
                }
            }
        }
    }
}

TEST(IpFilterMidRotatingSteps, LocalDeviationRefusesItsOwnImage)
{
    ClImage cImage;
    FillRandom8(cImage, 9, 9, 1);
    const std::string sMessage = std::string(ClException(FPC_ERROR_INVALID_PARAMETER, false, "", 0).What()) +
                                 "\nResize image with im self is senseless.";
    EXPECT_RAISES((ClIpFilterMidRotating().LocalDeviation<unsigned char, unsigned char, float, ClConvertFloat>(
                      cImage, 3, cImage)),
                  ClException, FPC_ERROR_INVALID_PARAMETER, sMessage.c_str());
}

TEST(IpFilterMidRotatingSteps, RefuseMasksBelowOne)
{
    ClImage cBytes, cOther, cMean;
    FillRandom8(cBytes, 9, 8, 1);
    FillRandom8(cOther, 9, 8, 2);
    cMean.NewWithType(ClImage::eFloat32, 9, 8, 1, 0, 0);
    FillRandom(cMean, 3);
    ClIpFilterMidRotating cFilter;
    for (const int nMask : {0, -1, -2, -1000})
    {
        EXPECT_RAISES_CODE(cFilter.CalculateDeviationByte(cOther, cBytes, nMask, cMean), FPC_ERROR_PARAM_OUT_OF_RANGE);
        EXPECT_RAISES_CODE((cFilter.CalculateAverage<unsigned char, float, ClConvertFloat>(cBytes, nMask, cMean)),
                           FPC_ERROR_PARAM_OUT_OF_RANGE);
        EXPECT_RAISES_CODE(
            (cFilter.CalculateDeviation<unsigned char, float, ClConvertFloat>(cBytes, cMean, nMask, cMean)),
            FPC_ERROR_PARAM_OUT_OF_RANGE);
        EXPECT_RAISES_CODE(
            (cFilter.FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cBytes, cBytes, nMask, cOther)),
            FPC_ERROR_PARAM_OUT_OF_RANGE);
    }
}

TEST(IpFilterMidRotatingSteps, RefuseImagesThatDoNotFit)
{
    ClImage cBytes, cSmall, cMean, cSmallMean, cNull, cOut;
    FillRandom8(cBytes, 9, 8, 1);
    FillRandom8(cSmall, 9, 7, 2);
    cMean.NewWithType(ClImage::eFloat32, 9, 8, 1, 0, 0);
    cSmallMean.NewWithType(ClImage::eFloat32, 8, 8, 1, 0, 0);
    cNull.Attach(nullptr, ClImage::eUInt8, 9, 8, 1, 0, 0);
    ClIpFilterMidRotating cFilter;
    const auto average = [&](const ClImage& cIn, ClImage& cTo)
    { cFilter.CalculateAverage<unsigned char, float, ClConvertFloat>(cIn, 3, cTo); };
    const auto deviation = [&](const ClImage& cIn, const ClImage& cAvg, ClImage& cTo)
    { cFilter.CalculateDeviation<unsigned char, float, ClConvertFloat>(cIn, cAvg, 3, cTo); };
    const auto search = [&](const ClImage& cDev, const ClImage& cAvg, ClImage& cTo)
    { cFilter.FindMinimum<unsigned char, unsigned char, ClConvertFloat>(cDev, cAvg, 3, cTo); };
    EXPECT_RAISES_CODE(cFilter.CalculateDeviationByte(cSmall, cBytes, 3, cOut), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(cFilter.CalculateDeviationByte(cNull, cBytes, 3, cOut), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(cFilter.CalculateDeviationByte(cBytes, cNull, 3, cOut), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(cFilter.CalculateDeviationByte(cMean, cBytes, 3, cOut), FPC_ERROR_FORMAT_NOTSUPPORTED);
    EXPECT_RAISES_CODE(average(cBytes, cSmallMean), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(average(cBytes, cSmall), FPC_ERROR_FORMAT_NOTSUPPORTED);
    EXPECT_RAISES_CODE(average(cNull, cMean), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(deviation(cBytes, cSmallMean, cMean), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(deviation(cBytes, cMean, cSmallMean), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(search(cBytes, cSmall, cSmall), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(search(cBytes, cBytes, cSmall), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE(search(cMean, cBytes, cBytes), FPC_ERROR_FORMAT_NOTSUPPORTED);
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpFilterMidRotatingSteps, MeansRefuseAMaskLargerThanTheImage)
{
    ClImage cBytes, cMean;
    FillRandom8(cBytes, 9, 4, 1);
    cMean.NewWithType(ClImage::eFloat32, 9, 4, 1, 0, 0);
    ClIpFilterMidRotating cFilter;
    EXPECT_RAISES_CODE((cFilter.CalculateAverage<unsigned char, float, ClConvertFloat>(cBytes, 5, cMean)),
                       FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_RAISES_CODE((cFilter.CalculateAverage<unsigned char, float, ClConvertFloat>(cBytes, 4, cMean)),
                       FPC_ERROR_BITMAP_DIMENSION); // 5 pixels wide
    cFilter.CalculateAverage<unsigned char, float, ClConvertFloat>(cBytes, 3, cMean);
}

TEST(IpFilterMidRotatingSteps, TheMaskMayBeAsLargeAsTheImage)
{
    for (const int nSide : {3, 5, 9})
    {
        ClImage cBytes, cMean;
        FillRandom8(cBytes, nSide, nSide, 1);
        cMean.NewWithType(ClImage::eFloat32, nSide, nSide, 1, 0, 0);
        ClIpFilterMidRotating().CalculateAverage<unsigned char, float, ClConvertFloat>(cBytes, nSide, cMean);
        int nSum = 0;
        for (int i = 0; i < nSide * nSide; ++i)
        {
            nSum += SampleAt<unsigned char>(cBytes, i % nSide, i / nSide);
        }
        EXPECT_EQ(static_cast<float>(nSum) / static_cast<float>(nSide * nSide),
                  SampleAt<float>(cMean, nSide / 2, nSide / 2));
    }
}
