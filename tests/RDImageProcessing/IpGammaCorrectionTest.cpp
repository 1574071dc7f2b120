#include "RDImageProcessing/IpGammaCorrection.hpp"

#include "FailingHeap.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace
{
/// The curve from its definition, branch by branch.
int Curve(int nValue, int nBlack, int nWhite, double dGamma)
{
    double x = 0.0;
    if (nValue > nBlack)
    {
        x = (nValue - nBlack) * 255.0 / (nWhite - nBlack);
    }
    x = std::min(x, 255.0);
    const double y = std::min(std::pow(x * 0.00392156862745098, 1.0 / dGamma), 1.0);
    return static_cast<int>(y * 255.0 + 0.5);
}

ClImage& Ramp(ClImage& cImage)
{
    cImage.NewWithType(ClImage::eUInt8, 256, 1, 1, 100, 200);
    for (int x = 0; x < 256; ++x)
    {
        SetSample(cImage, x, 0, 0, static_cast<unsigned char>(x));
    }
    return cImage;
}

TEST(IpGammaCorrection, FollowsItsCurve)
{
    ClImage cIn, cOut;
    Ramp(cIn);
    for (const double dGamma : {0.1, 0.45, 0.8, 1.0, 1.3, 2.2, 5.0})
    {
        for (const auto& [nBlack, nWhite] :
             {std::pair(0, 255), std::pair(10, 200), std::pair(254, 255), std::pair(0, 1)})
        {
            ClIpGammaCorrection cGamma;
            ASSERT_EQ(0, cGamma.ApplyParam(cIn, cOut, static_cast<unsigned char>(nBlack),
                                           static_cast<unsigned char>(nWhite), dGamma));
            for (int x = 0; x < 256; ++x)
            {
                ASSERT_EQ(Curve(x, nBlack, nWhite, dGamma), SampleAt<unsigned char>(cOut, x, 0))
                    << x << " " << nBlack << " " << nWhite << " " << dGamma;
            }
        }
    }
}

TEST(IpGammaCorrection, GammaOfOneIsTheIdentityAndBelowOneDarkens)
{
    ClImage cImage, cRamp;
    Ramp(cRamp);
    Ramp(cImage);
    ASSERT_EQ(0, ClIpGammaCorrection().ApplyParam(cImage, 1.0));
    EXPECT_TRUE(SamePixels(cRamp, cImage));
    ASSERT_EQ(0, ClIpGammaCorrection().ApplyParam(cImage, 0.8));
    EXPECT_EQ(0, SampleAt<unsigned char>(cImage, 0, 0));
    EXPECT_EQ(107, SampleAt<unsigned char>(cImage, 127, 0)) << "127 / 255 to the power of 1.25, times 255: 106.7";
    EXPECT_EQ(255, SampleAt<unsigned char>(cImage, 255, 0));
}

TEST(IpGammaCorrection, MapsEveryPixelOfImagesOfAllSizes)
{
    for (const ClTestSize& cSize : aTestSizes)
    {
        ClImage cIn, cOut, cExpected;
        FillRandom8(cIn, cSize.nWidth, cSize.nHeight, 4);
        cIn.m_nXRes = 19685;
        cIn.m_nAttribute = 3;
        cExpected.New(cIn);
        for (int y = 0; y < cSize.nHeight; ++y)
        {
            for (int x = 0; x < cSize.nWidth; ++x)
            {
                SetSample(cExpected, x, y, 0,
                          static_cast<unsigned char>(Curve(SampleAt<unsigned char>(cIn, x, y), 3, 250, 0.8)));
            }
        }
        ASSERT_EQ(0, ClIpGammaCorrection().ApplyParam(cIn, cOut, 3, 250, 0.8));
        EXPECT_TRUE(SamePixels(cExpected, cOut));
        EXPECT_TRUE(SameDescription(cIn, cOut));
        const unsigned char* pBuffer = cIn.Data();
        ClIpGammaCorrection cGamma;
        cGamma.m_nBlack = 3;
        cGamma.m_nWhite = 250;
        ASSERT_EQ(0, cGamma.ApplyParam(cIn, 0.8));
        EXPECT_TRUE(SamePixels(cExpected, cIn));
        EXPECT_EQ(pBuffer, cIn.Data()) << "in place keeps the buffer";
    }
}

TEST(IpGammaCorrection, ChecksInOrder)
{
    ClIpGammaCorrection cGamma;
    ClImage cIn(3, 3, 3, 0, 0), cOut;
    const auto expect = [&](long nCode, const char* szText)
    {
        EXPECT_RAISES(cGamma.Apply(), ClException, nCode, szText);
        EXPECT_FALSE(cGamma.CanApply());
    };
    const char szMissing[] = "The pointer is bad or invalid.\nInput or output image not assigned.";
    expect(-701, szMissing);
    cGamma.m_pInImage = &cIn;
    expect(-701, szMissing);
    cGamma.m_pInImage = nullptr;
    cGamma.m_pOutImage = &cOut;
    expect(-701, szMissing);
    cGamma.m_pInImage = &cIn;
    cGamma.m_nBlack = 9;
    cGamma.m_nWhite = 8;
    cGamma.m_dGamma = -0.1;
    const char szSize[] = "The image is too small or too big.\nInput image must have positive height and width.";
    cIn.NewWithType(ClImage::eUInt16, 0, 3, 3, 0, 0);
    expect(-14, szSize);
    cIn.NewWithType(ClImage::eUInt16, 3, 0, 3, 0, 0);
    expect(-14, szSize);
    cIn.NewWithType(ClImage::eUInt16, 3, 3, 3, 0, 0);
    expect(-11, "Number of image planes is invalid. (see documentation).\nProcessor can handle 1-plane images only.");
    cIn.NewWithType(ClImage::eUInt16, 3, 3, 1, 0, 0);
    expect(-44, "One(or more) parameter(s) is(are) invalid.\nBlack value is larger than white value");
    cGamma.m_nBlack = 8;
    const char szRange[] = "One of the parameters is out of range.\nParameter m_dGamma out of range.";
    expect(-35, szRange);
    cGamma.m_dGamma = 5.000001;
    expect(-35, szRange);
    cGamma.m_dGamma = 5.0;
    expect(-33, "The required format is not supported.\nInput pixel type \"uint16\" not supported by processor.");
    cIn.NewWithType(ClImage::eUInt8, 3, 3, 1, 0, 0);
    EXPECT_TRUE(cGamma.CanApply());
    EXPECT_EQ(0, cGamma.Apply());
}

TEST(IpGammaCorrection, LimitsOfItsParametersGiveATable)
{
    ClImage cIn, cOut;
    Ramp(cIn);
    ASSERT_EQ(0, ClIpGammaCorrection().ApplyParam(cIn, cOut, 100, 100, 1.0)); // an empty range: a threshold
    EXPECT_EQ(255, SampleAt<unsigned char>(cOut, 101, 0));
    EXPECT_EQ(255, SampleAt<unsigned char>(cOut, 255, 0));
    ASSERT_EQ(0, ClIpGammaCorrection().ApplyParam(cIn, cOut, 0, 255, 0.0)); // an infinite power
    EXPECT_EQ(0, SampleAt<unsigned char>(cOut, 1, 0));
    EXPECT_EQ(0, SampleAt<unsigned char>(cOut, 254, 0));
    ClIpGammaCorrection cGamma;
    EXPECT_EQ(
        0, cGamma.ApplyParam(cIn, cOut, 0, 255, std::numeric_limits<double>::quiet_NaN())); // neither below nor above
}

TEST(IpGammaCorrection, ExhaustedHeapIsBadAlloc)
{
    ClImage cImage;
    Ramp(cImage);
    ClIpGammaCorrection cGamma;
    EXPECT_LT(0, ExpectBadAllocAtEveryAllocation([&] { cGamma.ApplyParam(cImage, 1.0); }));
}

TEST(IpGammaCorrection, PublishesItsValuesBehindTheImages)
{
    ClIpGammaCorrection cGamma;
    cGamma.m_nBlack = 1;
    cGamma.m_nWhite = 2;
    cGamma.m_dGamma = 3.0;
    ClParameterContainer cContainer;
    cGamma.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutImage", "Black", "White", "Gamma"};
    const double adDefaults[] = {0, 0, 0, 255, 1};
    ASSERT_EQ(5u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 5; ++i)
    {
        ClParameter* pParameter = cContainer.m_aChildren[i];
        EXPECT_STREQ(aszNames[i], pParameter->GetName());
        EXPECT_EQ(i == 0 ? 1 : i == 1 ? 2 : 3, pParameter->m_nFlags);
        if (i >= 2)
        {
            EXPECT_EQ(static_cast<double>(i - 1), pParameter->GetNumericInterface()->GetNumber());
            EXPECT_EQ(adDefaults[i], pParameter->GetNumericInterface()->GetDefault());
        }
    }
    cGamma.SetParametersToDefault();
    EXPECT_EQ(0, cGamma.m_nBlack);
    EXPECT_EQ(255, cGamma.m_nWhite);
    EXPECT_EQ(1.0, cGamma.m_dGamma);
    EXPECT_STREQ("ClIpGammaCorrection", cGamma.Name());
    const std::unique_ptr<ClProcessorBase> pNew(cGamma.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpGammaCorrection*>(pNew.get()));
}

TEST(IpGammaCorrection, RefusesAnImageWhosePixelsAreMissing)
{
    ClImage cImage;
    cImage.Attach(nullptr, ClImage::eUInt8, 5, 4, 1, 0, 0);
    EXPECT_RAISES(ClIpGammaCorrection().ApplyParam(cImage, 0.8), ClException, -701,
                  "The pointer is bad or invalid.\nm_pInImage->Data() is not set");
}
} // namespace
