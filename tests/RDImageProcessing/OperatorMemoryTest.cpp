// What becomes of every operator's run when its allocations fail.

#include "MixOperator.hpp"
#include "OperatorFailures.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace
{
void MakePicture(ClImage& cImage, unsigned char eType, int nPlanes)
{
    cImage.NewWithType(eType, 23, 17, nPlanes, 19685, 19685);
    FillRandom(cImage, 5);
}

/// Black spots on white, one of them large.
void MakeSpots(ClImage& cImage)
{
    cImage.NewWithType(ClImage::eUInt8, 23, 17, 1, 19685, 19685);
    std::fill_n(cImage.Data(), cImage.Stride() * 17, static_cast<unsigned char>(255));
    for (int y = 1; y < 17; ++y)
    {
        for (int x = 0; x < 23; ++x)
        {
            if ((x < 9 && y < 9) || (x + y) % 3 == 0)
            {
                SetSample<unsigned char>(cImage, x, y, 0, 0);
            }
        }
    }
}
} // namespace

TEST_F(OperatorMemory, PointOperatorsOfEveryType)
{
    for (const unsigned char eType : aEveryType)
    {
        SCOPED_TRACE(int(eType));
        ClImage cIn;
        MakePicture(cIn, eType, 3);
        ExpectFailuresPass<ClIpBinarizeGlobal>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                               { return cOperator.ApplyParam(cFrom, cTo); });
        ExpectFailuresPass<ClIpConvertDataType>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                                { return cOperator.ApplyParam(cFrom, cTo, ClImage::eSInt32); });
        ExpectFailuresPass<ClIpRgbToGrey>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                          { return cOperator.ApplyParam(cFrom, cTo, ClIpRgbToGrey::Lightness); });
        ExpectFailuresPass<ClIpCut>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                    { return cOperator.ApplyParam(cFrom, 2, 3, 11, 9, cTo); });
    }
}

TEST_F(OperatorMemory, OperatorsWithATable)
{
    for (const int nPlanes : {1, 4})
    {
        SCOPED_TRACE(nPlanes);
        ClImage cIn;
        MakePicture(cIn, ClImage::eUInt8, nPlanes);
        ExpectFailuresPass<ClIpStretchRangeGlobalNoiseRemoving>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                                                { return cOperator.ApplyParam(cFrom, cTo, 0.1, 0.2); });
    }
    ClImage cGrey;
    MakePicture(cGrey, ClImage::eUInt8, 1);
    ExpectFailuresPass<ClIpGammaCorrection>(cGrey, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                            { return cOperator.ApplyParam(cFrom, cTo, 3, 250, 0.8); });
}

TEST_F(OperatorMemory, TwoInputsWithAndWithoutATable)
{
    ClImage cOther;
    cOther.NewWithType(ClImage::eUInt8, 20, 19, 1, 0, 0);
    FillRandom(cOther, 6);
    for (const int nPlanes : {1, 3})
    {
        ClImage cIn;
        MakePicture(cIn, ClImage::eUInt8, nPlanes);
        const auto run = [&](ClIp2to1Base& cOperator, ClImage& cFrom, ClImage& cTo)
        {
            cOperator.m_bSizeMustBeEqual = false;
            cOperator.m_bUseLUT = true;
            cOperator.m_nOffsetX = -2;
            return cOperator.ApplyParam(cFrom, cOther, cTo, ClImage::eUInt16);
        };
        ExpectFailuresPass<ClMix>(cIn, run);
        ExpectFailuresPass<ClIpDelta>(cIn, run); // too small for a table
    }
    ClImage cLarge, cLargeOther;
    FillRandom8(cLarge, 301, 300, 7);
    FillRandom8(cLargeOther, 301, 300, 8);
    for (const double dWhite : {255.0, 254.0}) // with a range of its own it takes a table
    {
        cLarge.m_dWhite = dWhite;
        ExpectFailuresPass<ClIpDelta>(cLarge, [&](ClIpDelta& cOperator, ClImage& cFrom, ClImage& cTo)
                                      { return cOperator.ApplyParam(cFrom, cLargeOther, cTo, 255); });
    }
}

TEST_F(OperatorMemory, RescalingInEveryMode)
{
    for (const int nPlanes : {1, 3})
    {
        for (int nMode = ClIpRescale::ModeWholeNumbered; nMode <= ClIpRescale::ModeBiLinearFantMar; ++nMode)
        {
            for (const auto& [nPelsX, nPelsY] :
                 {std::pair(7000, 9000), std::pair(7000, 40000), std::pair(40000, 7000), std::pair(40000, 30000)})
            {
                SCOPED_TRACE("mode " + std::to_string(nMode) + ", " + std::to_string(nPlanes) + " planes, " +
                             std::to_string(nPelsX) + " by " + std::to_string(nPelsY));
                ClImage cIn;
                MakePicture(cIn, ClImage::eUInt8, nPlanes);
                ExpectFailuresPass<ClIpRescale>(
                    cIn,
                    [&, nX = nPelsX, nY = nPelsY](ClIpRescale& cOperator, ClImage& cFrom, ClImage& cTo) {
                        return cOperator.ApplyParamPels(cFrom, cTo, nX, nY,
                                                        static_cast<ClIpRescale::eProcessingMode>(nMode));
                    });
            }
        }
    }
}

TEST_F(OperatorMemory, Rotating)
{
    for (const int nPlanes : {1, 4})
    {
        ClImage cIn;
        MakePicture(cIn, ClImage::eUInt8, nPlanes);
        ExpectFailuresPass<ClIpRotate>(cIn,
                                       [](ClIpRotate& cOperator, ClImage& cFrom, ClImage& cTo)
                                       {
                                           cOperator.m_bPlaneBackground = true;
                                           return cOperator.ApplyParam(cFrom, cTo, ClVector(3, 4), 0.7, true, true);
                                       });
    }
}

TEST_F(OperatorMemory, FailuresPutThePointersAndTheBackgroundBack)
{
    ClImage cIn, cOut;
    MakePicture(cIn, ClImage::eUInt8, 4);
    ClIpRotate cRotate;
    cRotate.m_bPlaneBackground = true;
    cRotate.m_nBackgroundColor = 77; // the planes take 128
    ClIpRescale cRescale;
    const auto failsAfter = [](long nPassing, auto&& run)
    {
        try
        {
            const ClFailingHeap cHeap(nPassing);
            run();
            return false;
        }
        catch (const ClExBadAlloc&)
        {
            return true;
        }
    };
    long n = 0;
    for (; n < 300 && failsAfter(n, [&] { cRotate.ApplyParam(cIn, cOut, ClVector(3, 4), 0.7, true, false); }); ++n)
    {
        EXPECT_EQ(&cIn, cRotate.m_pInImage) << n;
        EXPECT_EQ(&cOut, cRotate.m_pOutImage) << n;
        EXPECT_EQ(77, cRotate.m_nBackgroundColor) << n;
    }
    EXPECT_LT(12, n);
    n = 0;
    for (;
         n < 300 && failsAfter(n, [&] { cRescale.ApplyParamPels(cIn, cOut, 7000, 40000, ClIpRescale::ModeBiLinear); });
         ++n)
    {
        EXPECT_EQ(&cIn, cRescale.m_pInImage) << n;
        EXPECT_EQ(&cOut, cRescale.m_pOutImage) << n;
    }
    EXPECT_LT(12, n);
}

TEST_F(OperatorMemory, LabellingAndMeasuring)
{
    ClImage cIn;
    MakeSpots(cIn);
    const auto toOther = [](ClImage& cFrom, ClImage& cTo, ClImage& cOwn) -> ClImage&
    { return &cFrom == &cTo ? cOwn : cTo; };
    ExpectFailuresPass<ClIpConnectedComponent2>(cIn,
                                                [&](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                                {
                                                    ClImage cLabels;
                                                    ClIpConnectedComponent2::ComponentsArray_t aComponents;
                                                    cOperator.pInImage = &cFrom;
                                                    cOperator.m_pOutImage = &toOther(cFrom, cTo, cLabels);
                                                    cOperator.m_pComponents = &aComponents;
                                                    const long nResult = cOperator.Apply();
                                                    EXPECT_LT(10u, aComponents.Entries());
                                                    cTo = *cOperator.m_pOutImage;
                                                    return nResult;
                                                });
    ExpectFailuresPass<ClIpCutBiggestComponent>(cIn, [](auto& cOperator, ClImage& cFrom, ClImage& cTo)
                                                { return cOperator.ApplyParam(cFrom, cTo); });
}

TEST_F(OperatorMemory, Filling)
{
    ClImage cIn;
    MakeSpots(cIn);
    for (const long nThresh : {0L, 100L})
    {
        ExpectFailuresPass<ClIpFloodFill>(cIn,
                                          [=](ClIpFloodFill& cOperator, ClImage& cFrom, ClImage& cTo)
                                          {
                                              cOperator.m_pInImage = &cFrom;
                                              cOperator.m_pOutImage = &cTo;
                                              cOperator.m_nCountThresh = nThresh;
                                              cOperator.m_nFillColor = 9;
                                              cOperator.m_nStartY = 3;
                                              return cOperator.Apply();
                                          });
    }
    ExpectFailuresPass<ClIpFloodFillLabeling>(cIn,
                                              [](ClIpFloodFillLabeling& cOperator, ClImage& cFrom, ClImage& cTo)
                                              {
                                                  cOperator.m_pInImage = &cFrom;
                                                  cOperator.m_pOutImage = &cTo;
                                                  const long nResult = cOperator.Apply();
                                                  EXPECT_LT(10u, cOperator.m_aObjects.Entries());
                                                  return nResult;
                                              });
}

TEST_F(OperatorMemory, SplittingAndJoining)
{
    ClImage cIn;
    MakePicture(cIn, ClImage::eUInt16, 4);
    ExpectFailuresPass<ClIpSplitPlanes>(cIn,
                                        [](ClIpSplitPlanes& cOperator, ClImage& cFrom, ClImage& cTo, ClImage(&cMore)[2])
                                        { return cOperator.ApplyParam(cFrom, &cMore[0], &cTo, &cMore[1], nullptr); });
    ClImage cPlane;
    MakePicture(cPlane, ClImage::eUInt16, 1);
    ExpectFailuresPass<ClIpJoinPlanes>(cPlane,
                                       [](ClIpJoinPlanes& cOperator, ClImage& cFrom, ClImage& cTo)
                                       {
                                           cOperator.m_eOutContent = ClImage::eRGB;
                                           return cOperator.ApplyParam(cTo, &cFrom, &cFrom, nullptr, nullptr);
                                       });
}
