#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"

#include "RDImageProcessing/GreyPictures.hpp"
#include "RDImageProcessing/SampleAccess.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace
{
using Auto = ClIpBinarizeAutoThreshold;

double Membership(int g, int u0, int u1, int t)
{
    return 1 / (std::abs(g - (g <= t ? u0 : u1)) * 0.00392156862745098 + 1);
}

double ShannonByDefinition(const std::vector<long>& h, int u0, int u1, int t)
{
    double dSum = 0;
    for (int g = 0; g <= 254; ++g)
    {
        const double x = Membership(g, u0, u1, t);
        if (x > 0 && x < 1)
        {
            dSum +=
                (-x * std::log(x) - (1 - x) * std::log(1 - x)) * static_cast<double>(h[static_cast<std::size_t>(g)]);
        }
    }
    return dSum;
}

double YagerByDefinition(int u0, int u1, int t)
{
    double dSum = 0;
    for (int g = 0; g <= 255; ++g)
    {
        const double x = Membership(g, u0, u1, t);
        const double dTerm = x * (1 - x);
        dSum += dTerm * dTerm;
    }
    return std::sqrt(dSum);
}

int FuzzyThresholdByDefinition(const ClImage& cImage, bool bShannon)
{
    const std::vector<long> h = HistogramOf(cImage);
    const auto count = [&h](int nFrom, int nTo)
    {
        double d = 0;
        for (int i = nFrom; i <= nTo; ++i)
        {
            d += static_cast<double>(h[static_cast<std::size_t>(i)]);
        }
        return d;
    };
    const auto weight = [&h](int nFrom, int nTo)
    {
        double d = 0;
        for (int i = nFrom; i <= nTo; ++i)
        {
            d += i * static_cast<double>(h[static_cast<std::size_t>(i)]);
        }
        return d;
    };
    std::vector<double> E(256, -1.0);
    double dMost = 0;
    int nBest = -1;
    for (int t = 1; t <= 254; ++t)
    {
        if (count(t, t) == 0 || count(0, t) == 0 || count(t + 1, 255) == 0)
        {
            continue;
        }
        const int u0 = static_cast<int>(weight(0, t) / count(0, t) + 0.5);
        const int u1 = static_cast<int>(weight(t + 1, 255) / count(t + 1, 255) + 0.5);
        const double dMeasure = bShannon ? ShannonByDefinition(h, u0, u1, t) : YagerByDefinition(u0, u1, t);
        const auto n = static_cast<std::size_t>(t);
        E[n] = dMeasure * (1.0 / (cImage.m_nWidth * cImage.m_nHeight));
        dMost = E[n] > dMost ? E[n] : dMost;
        nBest = nBest == -1 || E[n] < E[static_cast<std::size_t>(nBest)] ? t : nBest;
    }
    if (nBest == -1)
    {
        return 255;
    }
    const double dLeast = E[static_cast<std::size_t>(nBest)];
    const double w = (dMost - dLeast) * 0.05 + dLeast;
    int nResult = 255;
    double dMin = 1000000;
    for (int t = 1; t <= 254; ++t)
    {
        if (t >= static_cast<int>(nBest - w) && t <= static_cast<int>(nBest + w) && count(t - 1, t + 1) < dMin)
        {
            dMin = count(t - 1, t + 1);
            nResult = t;
        }
    }
    return nResult;
}

/// A picture of two hills, the kind of histogram that a finger on a bright background has.
void FillHills(ClImage& cImage, int nWidth, int nHeight, int nDark, int nBright, unsigned int nSeed)
{
    ClTestRandom cRandom(nSeed);
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const int nNoise = cRandom.Below(30) + cRandom.Below(30) + cRandom.Below(30) - 45;
            const int nGrey = (cRandom.Below(3) == 0 ? nDark : nBright) + nNoise;
            Row<unsigned char>(cImage, y)[x] = static_cast<unsigned char>(std::min(std::max(nGrey, 0), 255));
        }
    }
}

void ExpectFuzzyThresholds(ClImage& cIn)
{
    for (const bool bShannon : {true, false})
    {
        ClImage cOut, cExpected;
        Auto cBinarize;
        const int nExpected = FuzzyThresholdByDefinition(cIn, bShannon);
        ASSERT_EQ(FPC_SUCCESS,
                  cBinarize.ApplyParam(cIn, cOut, bShannon ? Auto::ModeFuzzyEntropy : Auto::ModeFuzzyYager));
        EXPECT_EQ(nExpected, cBinarize.m_nThreshold) << (bShannon ? "entropy" : "Yager");
        BinarizeByDefinition(cIn, nExpected, cExpected);
        EXPECT_TRUE(SamePixels(cExpected, cOut));
    }
}
} // namespace

TEST(IpBinarizeAutoThreshold, HasItsNameAndDefaults)
{
    Auto cBinarize;
    EXPECT_STREQ("ClIpBinarizeAutoThreshold", cBinarize.Name());
    const std::unique_ptr<ClProcessorBase> pCopy(cBinarize.Create());
    EXPECT_NE(nullptr, dynamic_cast<Auto*>(pCopy.get()));
    EXPECT_EQ(Auto::ModeFuzzyEntropy, cBinarize.m_eProcessingMode);
    cBinarize.m_eProcessingMode = Auto::ModePun;
    cBinarize.m_nThreshold = 17;
    cBinarize.SetParametersToDefault();
    EXPECT_EQ(Auto::ModeFuzzyEntropy, cBinarize.m_eProcessingMode);
    EXPECT_EQ(17, cBinarize.m_nThreshold);
}

TEST(IpBinarizeAutoThreshold, PublishesItsModesWithTheirQuirk)
{
    Auto cBinarize;
    cBinarize.m_eProcessingMode = Auto::ModePun;
    ClParameterContainer cTree;
    cBinarize.QueryParameters(cTree);
    ASSERT_EQ(3u, cTree.m_aChildren.Entries());
    EXPECT_STREQ("pInImage", cTree.m_aChildren[0]->GetName());
    EXPECT_STREQ("pOutImage", cTree.m_aChildren[1]->GetName());
    EXPECT_STREQ("ProcessingMode", cTree.m_aChildren[2]->GetName());
    EXPECT_EQ("ModePun", cTree.m_aChildren[2]->GetValue());
    EXPECT_EQ("ModeFuzzyEntropy", cTree.m_aChildren[2]->GetDefaultValue());
    const std::pair<const char*, int> aModes[] = {
        {"ModeFuzzyEntropy", 0}, {"ModeFuzzyYager", 1}, {"ModeMovingAverages", 2}, {"ModeJohannsen", 3},
        {"ModeKapur", 4},        {"ModePun", 5},        {"ModeMinimumError", 4},   {"ModeRelaxation", 7}};
    ClParameter* pMode = cTree.m_aChildren[2];
    ASSERT_EQ(std::size(aModes), pMode->GetEnumInterface()->GetValueNameCount());
    for (unsigned long i = 0; i < std::size(aModes); ++i)
    {
        char szName[40];
        pMode->GetEnumInterface()->GetValueName(i, szName, sizeof szName);
        EXPECT_STREQ(aModes[i].first, szName);
        pMode->SetValue(aModes[i].first);
        EXPECT_EQ(aModes[i].second, cBinarize.m_eProcessingMode);
    }
    EXPECT_RAISES_CODE(pMode->GetEnumInterface()->SetValue(6), FPC_ERROR_PARAM_OUT_OF_RANGE);
    EXPECT_RAISES_CODE(pMode->GetEnumInterface()->SetValue(8), FPC_ERROR_PARAM_OUT_OF_RANGE);
}

TEST(IpBinarizeAutoThreshold, AParameterOfItsNameMayNotBeThere)
{
    Auto cBinarize;
    ClParameterContainer cTree;
    long nOther = 0;
    cTree.AddNumeric("ProcessingMode", &nOther);
    EXPECT_RAISES_CODE(cBinarize.PublishParameters(cTree), FPC_ERROR_PARAM_VALUE_DUPLICATE);
}

TEST(IpBinarizeAutoThreshold, MinimumErrorByNameRunsKapur)
{
    ClTestRandom cRandom(5);
    ClImage cIn, cOut;
    FillCounts(cIn, RandomCounts(cRandom, 60));
    Auto cKapur, cError, cByName;
    ASSERT_EQ(FPC_SUCCESS, cKapur.ApplyParam(cIn, cOut, Auto::ModeKapur));
    ASSERT_EQ(FPC_SUCCESS, cError.ApplyParam(cIn, cOut, Auto::ModeMinimumError));
    ASSERT_NE(cKapur.m_nThreshold, cError.m_nThreshold); // or the picture does not tell them apart
    ClParameterContainer cTree;
    cByName.QueryParameters(cTree);
    cTree.Find("ProcessingMode")->SetValue("ModeMinimumError");
    ASSERT_EQ(FPC_SUCCESS, cByName.ApplyParam(cIn, cOut));
    EXPECT_EQ(cKapur.m_nThreshold, cByName.m_nThreshold);
}

TEST(IpBinarizeAutoThreshold, AcceptsOnePlaneOfBytesOnly)
{
    Auto cBinarize;
    ClImage cIn, cOut;
    EXPECT_FALSE(cBinarize.CanApply());
    FillRandom8(cIn, 9, 9, 1);
    cBinarize.m_pInImage = &cIn;
    EXPECT_TRUE(cBinarize.CanApply());
    for (const unsigned char eType : {ClImage::eSInt8, ClImage::eUInt16, ClImage::eSInt16, ClImage::eUInt32,
                                      ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64})
    {
        cIn.NewWithType(eType, 9, 9, 1, 0, 0);
        EXPECT_FALSE(cBinarize.CanApply());
        EXPECT_RAISES_CODE(cBinarize.ApplyParam(cIn, cOut, Auto::ModeFuzzyYager), FPC_ERROR_FORMAT_NOTSUPPORTED);
        EXPECT_EQ(FPC_ERROR_INTERNAL, cBinarize.DoProcess(cIn, cOut));
    }
    cIn.NewWithType(ClImage::eUInt8, 9, 9, 3, 0, 0);
    EXPECT_FALSE(cBinarize.CanApply());
    EXPECT_EQ(FPC_ERROR_BITMAP_PLANE, cBinarize.ApplyParam(cIn, cOut, Auto::ModeFuzzyYager));
    EXPECT_EQ(FPC_ERROR_BITMAP_PLANE, cBinarize.DoProcess(cIn, cOut));
}

TEST(IpBinarizeAutoThreshold, InPlaceGivesTheSame)
{
    for (int nMode = 0; nMode <= 8; ++nMode)
    {
        ClImage cImage, cOut;
        FillHills(cImage, 40, 30, 60, 180, 7);
        Auto cBinarize;
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cImage, cOut, static_cast<Auto::eProcessingMode>(nMode)));
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cImage, cImage, static_cast<Auto::eProcessingMode>(nMode)));
        EXPECT_TRUE(SamePixels(cOut, cImage)) << nMode;
    }
}

TEST(IpBinarizeAutoThreshold, TheStepItselfRefusesToWorkInPlace)
{
    ClImage cImage;
    FillRandom8(cImage, 9, 9, 1);
    Auto cBinarize;
    const std::string sMessage = std::string(ClException(FPC_ERROR_PARAM_INVALID, false, "", 0).What()) +
                                 "\nResize image with im self is senseless.";
    EXPECT_RAISES(cBinarize.DoProcess(cImage, cImage), ClException, FPC_ERROR_PARAM_INVALID, sMessage.c_str());
}

TEST(IpBinarizeAutoThreshold, DescribesTheOutputLikeTheInput)
{
    for (int nMode = 0; nMode <= 9; ++nMode)
    {
        ClImage cIn, cOut;
        cIn.NewWithType(ClImage::eUInt8, 20, 15, 1, 3937, 3938);
        FillRandom(cIn, 4);
        cIn.m_eContent = ClImage::eUnknown;
        cIn.m_nAttribute = 5;
        ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, static_cast<Auto::eProcessingMode>(nMode)));
        EXPECT_TRUE(SameDescription(cIn, cOut)) << nMode;
    }
}

TEST(IpBinarizeAutoThreshold, AnUnknownModeFindsNothing)
{
    for (const int nMode : {-1, 9, 100})
    {
        ClImage cIn, cOut;
        FillRandom8(cIn, 9, 8, 1);
        Auto cBinarize;
        cBinarize.m_nThreshold = 7;
        EXPECT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, static_cast<Auto::eProcessingMode>(nMode)));
        EXPECT_EQ(-1, cBinarize.m_nThreshold);
        EXPECT_EQ(9, cOut.m_nWidth);
        EXPECT_EQ(8, cOut.m_nHeight);
    }
}

TEST(IpBinarizeAutoThreshold, TheMeasuresOfFuzzinessAreTheSumsInOrder)
{
    ClImage cImage;
    FillRandom8(cImage, 50, 50, 8);
    const std::vector<long> h = HistogramOf(cImage);
    const std::vector<double> adHistogram(h.begin(), h.end());
    ClTestRandom cRandom(6);
    for (int i = 0; i < 500; ++i)
    {
        const int t = cRandom.Below(256);
        const int u0 = cRandom.Below(256);
        const int u1 = cRandom.Below(256);
        const int g = cRandom.Below(256);
        EXPECT_EQ(Membership(g, u0, u1, t), Auto::Ux(g, u0, u1, t));
        EXPECT_EQ(ShannonByDefinition(h, u0, u1, t), Auto::fuzzy(adHistogram.data(), u0, u1, t, 1));
        EXPECT_EQ(YagerByDefinition(u0, u1, t), Auto::fuzzy(adHistogram.data(), u0, u1, t, 2));
        EXPECT_EQ(YagerByDefinition(u0, u1, t), Auto::Yager(u0, u1, t));
    }
}

TEST(IpBinarizeAutoThreshold, ManyThresholdsAreSummedUpToTheSameBits)
{
    ClTestRandom cRandom(11);
    for (int nCount = 1; nCount <= 256; nCount += nCount < 20 ? 1 : 59)
    {
        std::vector<double> adHistogram(256);
        std::vector<Auto::StThreshold> acThreshold;
        for (int i = 0; i < nCount; ++i)
        {
            acThreshold.push_back({cRandom.Below(256), cRandom.Below(256), cRandom.Below(256)});
        }
        for (double& dCount : adHistogram)
        {
            dCount = cRandom.Below(3) * cRandom.Below(5000);
        }
        std::sort(acThreshold.begin(), acThreshold.end(),
                  [](const auto& a, const auto& b) { return a.m_nThreshold < b.m_nThreshold; });
        for (const int nType : {1, 2})
        {
            std::vector<double> adFuzziness(acThreshold.size());
            Auto::fuzzy(adHistogram.data(), acThreshold.data(), nCount, nType, adFuzziness.data());
            for (std::size_t i = 0; i < acThreshold.size(); ++i)
            {
                const Auto::StThreshold& c = acThreshold[i];
                ASSERT_EQ(Auto::fuzzy(adHistogram.data(), c.m_nMean0, c.m_nMean1, c.m_nThreshold, nType),
                          adFuzziness[i])
                    << nType << ", " << i << " of " << nCount;
            }
        }
    }
}

TEST(IpBinarizeAutoThreshold, WhiteHasNoPartInTheEntropy)
{
    double adHistogram[256] = {};
    adHistogram[255] = 1000;
    EXPECT_EQ(0.0, Auto::fuzzy(adHistogram, 0, 100, 50, 1));
    adHistogram[254] = 1;
    EXPECT_LT(0.0, Auto::fuzzy(adHistogram, 0, 100, 50, 1));
}

TEST(IpBinarizeAutoThreshold, FuzzyThresholdsOfHills)
{
    for (unsigned int nSeed = 0; nSeed < 12; ++nSeed)
    {
        ClImage cIn;
        FillHills(cIn, 67, 41, 20 + static_cast<int>(nSeed) * 7, 255 - static_cast<int>(nSeed) * 9, nSeed);
        ExpectFuzzyThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThreshold, FuzzyThresholdsOfAnyHistogram)
{
    ClTestRandom cRandom(9);
    for (int i = 0; i < 40; ++i)
    {
        ClImage cIn;
        FillCounts(cIn, RandomCounts(cRandom, 2 + i * 3));
        ExpectFuzzyThresholds(cIn);
    }
    for (const Counts_t& aCounts :
         {Counts_t{{0, 1}, {255, 1}}, Counts_t{{1, 1}, {255, 1}}, Counts_t{{254, 1}, {255, 1}},
          Counts_t{{0, 1}, {1, 1}}, Counts_t{{0, 3}, {1, 1}, {2, 3}}})
    {
        ClImage cIn;
        FillCounts(cIn, aCounts);
        ExpectFuzzyThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThreshold, FuzzyMethodsFindNoThresholdInOneValue)
{
    for (const auto eMode : {Auto::ModeFuzzyEntropy, Auto::ModeFuzzyYager})
    {
        for (const int nGrey : {0, 1, 77, 254, 255})
        {
            ClImage cIn, cOut, cExpected;
            FillCounts(cIn, {{nGrey, 20}});
            Auto cBinarize;
            ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, eMode));
            EXPECT_EQ(255, cBinarize.m_nThreshold);
            BinarizeByDefinition(cIn, 255, cExpected);
            EXPECT_TRUE(SamePixels(cExpected, cOut)) << nGrey;
        }
    }
}

TEST(IpBinarizeAutoThreshold, FuzzyMethodsGiveUpWhereAMillionPixelsStand)
{
    // Only 100 qualifies. Both values are the means of their classes, so the entropy is 0 and reaches no other grey
    // value, while Yager's measure, which does not look at the counts, reaches down to 99.
    for (const int nDark : {999998, 1000000})
    {
        ClImage cIn, cOut;
        FillCounts(cIn, {{100, nDark}, {101, 1}});
        Auto cBinarize;
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeFuzzyEntropy));
        EXPECT_EQ(nDark < 1000000 ? 100 : 255, cBinarize.m_nThreshold);
        ASSERT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeFuzzyYager));
        EXPECT_EQ(nDark < 1000000 ? 99 : 255, cBinarize.m_nThreshold);
    }
}

TEST(IpBinarizeAutoThreshold, FuzzyThresholdsOfEverySize)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        ClImage cIn;
        FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 15);
        ExpectFuzzyThresholds(cIn);
        FillHills(cIn, cSize.nWidth, cSize.nHeight, 70, 190, 16);
        ExpectFuzzyThresholds(cIn);
    }
}

TEST(IpBinarizeAutoThreshold, RaisesWithoutImagesOrPixels)
{
    const std::string sDescription = std::string(ClException(FPC_ERROR_BAD_POINTER, false, "", 0).What()) + '\n';
    Auto cBinarize;
    EXPECT_RAISES(cBinarize.Apply(), ClException, FPC_ERROR_BAD_POINTER,
                  (sDescription + "Input image not assigned").c_str());
    ClImage cIn, cOut;
    EXPECT_RAISES_CODE(cBinarize.ApplyParam(cIn, cOut), FPC_ERROR_FORMAT_NOTSUPPORTED); // an empty image has no type
    for (int nMode = 0; nMode <= 9; ++nMode)
    {
        cBinarize.m_eProcessingMode = static_cast<Auto::eProcessingMode>(nMode);
        for (const auto& [nWidth, nHeight] : {std::pair(0, 0), std::pair(9, 0), std::pair(0, 9)})
        {
            cIn.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
            EXPECT_RAISES(cBinarize.ApplyParam(cIn, cOut), ClException, FPC_ERROR_BAD_POINTER,
                          (sDescription + "m_pInImage->Data() is not set").c_str());
        }
        FillRandom8(cIn, 9, 9, 1);
        cBinarize.m_pOutImage = nullptr;
        EXPECT_RAISES(cBinarize.Apply(), ClException, FPC_ERROR_BAD_POINTER,
                      (sDescription + "m_pOutImage is not set").c_str());
    }
}

TEST(IpBinarizeAutoThreshold, BlackAndWhiteAreThoseOfTheInput)
{
    ClImage cIn, cOut;
    FillCounts(cIn, {{10, 7}, {20, 3}});
    cIn.m_dBlack = 5;
    cIn.m_dWhite = 40;
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeOtsu)); // the threshold is 16
    for (int x = 0; x < 10; ++x)
    {
        EXPECT_EQ(x < 7 ? 5 : 40, cOut.Data()[x]) << x;
    }
    EXPECT_TRUE(SameDescription(cIn, cOut));
    ASSERT_EQ(FPC_SUCCESS, Auto().ApplyParam(cIn, cOut, Auto::ModeRelaxation));
    for (int x = 0; x < 10; ++x)
    {
        EXPECT_EQ(x < 7 ? 0 : 255, cOut.Data()[x]) << x;
    }
}

TEST(IpBinarizeAutoThreshold, ARangeWithoutTheThresholdIsNoFailure)
{
    for (const double dWhite : {40.0, std::numeric_limits<double>::quiet_NaN()})
    {
        ClImage cIn, cOut;
        FillCounts(cIn, {{10, 7}});
        cIn.m_dWhite = dWhite;
        Auto cBinarize;
        EXPECT_EQ(FPC_SUCCESS, cBinarize.ApplyParam(cIn, cOut, Auto::ModeFuzzyYager));
        EXPECT_EQ(255, cBinarize.m_nThreshold);
        EXPECT_EQ(7, cOut.m_nWidth);
    }
}
