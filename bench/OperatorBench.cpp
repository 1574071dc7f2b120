// Single image operators at the sizes at which a run uses them: 320 by 300 is a hand at the working resolution, 500 by
// 600 the cut-out of a finger, 1600 by 1500 a whole slap at 500 pixels per inch. Where OpenCV is installed, its nearest
// function runs beside them on one thread, under the operator's name with /opencv behind it. An item is a pixel.

#include "BenchPictures.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include <benchmark/benchmark.h>

#ifdef KORMELIN_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <cstring>
#include <string>

namespace
{
/// fn(grey, objects) again and again.
template <class Fn> void Repeat(benchmark::State& cState, Fn&& fn)
{
    const int nWidth = static_cast<int>(cState.range(0));
    ClImage& cGrey = GreyOf(nWidth);
    ClImage& cObjects = ObjectsOf(nWidth);
    for (auto _ : cState)
    {
        fn(cGrey, cObjects);
        benchmark::ClobberMemory();
    }
    cState.SetItemsProcessed(cState.iterations() * cGrey.m_nWidth * cGrey.m_nHeight);
}

void Copy(benchmark::State& cState)
{
    ClImage cOut;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cOut = cGrey; });
}

void Labels(benchmark::State& cState)
{
    ClImage cOut;
    ClIpLabeling cLabeling;
    cLabeling.m_pOutImage = &cOut;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               cLabeling.m_pInImage = &cObjects;
               cLabeling.Apply();
           });
}

template <bool bLabelImage> void Components(benchmark::State& cState)
{
    ClImage cLabels;
    ClIpConnectedComponent2 cMeasure;
    ClIpConnectedComponent2::ComponentsArray_t aComponents;
    cMeasure.m_pComponents = &aComponents;
    cMeasure.m_pOutImage = bLabelImage ? &cLabels : nullptr;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               aComponents.Clear();
               cMeasure.pInImage = &cObjects;
               cMeasure.Apply();
           });
}

/// Labels to 8 bits, as the detection cuts objects apart by them.
void Convert(benchmark::State& cState)
{
    ClImage cLabels, cOut;
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &ObjectsOf(static_cast<int>(cState.range(0)));
    cLabeling.m_pOutImage = &cLabels;
    cLabeling.Apply();
    Repeat(cState, [&](ClImage&, ClImage&) { ClIpConvertDataType().ApplyParam(cLabels, cOut, ClImage::eUInt8); });
}

void FloodFillLabeling(benchmark::State& cState)
{
    ClImage cOut;
    ClIpFloodFillLabeling cLabeling;
    cLabeling.m_pOutImage = &cOut;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               cLabeling.m_pInImage = &cObjects;
               cLabeling.Apply();
           });
}

void FloodFillGround(benchmark::State& cState)
{
    ClImage cOut;
    ClIpFloodFill cFill;
    cFill.m_pOutImage = &cOut;
    cFill.m_nFillColor = 1;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               cFill.m_pInImage = &cObjects;
               cFill.Apply();
           });
}

void CountFill(benchmark::State& cState)
{
    ClImage cOut;
    ClIpFloodFill cFill;
    cFill.m_pOutImage = &cOut;
    cFill.m_nCountThresh = 100;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               cFill.m_pInImage = &cObjects;
               cFill.Apply();
           });
}

void Histogram(benchmark::State& cState)
{
    ClHistogram cHistogram;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cHistogram.Create(cGrey); });
}

void Gamma(benchmark::State& cState)
{
    ClImage cOut;
    ClIpGammaCorrection cGamma;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cGamma.ApplyParam(cGrey, cOut, 0, 255, 0.8); });
}

void Threshold(benchmark::State& cState)
{
    ClImage cOut;
    ClIpBinarizeGlobal cBinarize;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cBinarize.ApplyParam(cGrey, cOut, 200.0); });
}

template <ClIpBinarizeAutoThreshold::eProcessingMode eMode> void AutoThreshold(benchmark::State& cState)
{
    ClImage cOut;
    ClIpBinarizeAutoThreshold cBinarize;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cBinarize.ApplyParam(cGrey, cOut, eMode); });
}

/// With the shares of the detection.
void Stretch(benchmark::State& cState)
{
    ClImage cOut;
    ClIpStretchRangeGlobalNoiseRemoving cStretch;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cStretch.ApplyParam(cGrey, cOut, 0.02, 0.07); });
}

void Grey(benchmark::State& cState)
{
    ClImage& cColour = ColourOf(static_cast<int>(cState.range(0)));
    ClImage cOut;
    Repeat(cState, [&](ClImage&, ClImage&) { ClIpRgbToGrey().ApplyParam(cColour, cOut, ClIpRgbToGrey::Luminance); });
}

/// Half of the picture's sides, from its middle.
void Cut(benchmark::State& cState)
{
    ClIpCut cCut;
    Repeat(cState,
           [&](ClImage& cGrey, ClImage&)
           {
               const int nWidth = cGrey.m_nWidth / 2;
               const int nHeight = cGrey.m_nHeight / 2;
               ClImage cOut;
               cCut.ApplyParam(cGrey, nWidth / 2, nHeight / 2, nWidth, nHeight, cOut);
           });
}

void CutBiggestComponent(benchmark::State& cState)
{
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    Repeat(cState, [&](ClImage&, ClImage& cObjects) { cCut.ApplyParam(cObjects, cOut); });
}

#ifdef KORMELIN_BENCH_OPENCV
cv::Mat MatOf(ClImage& cImage)
{
    return cv::Mat(cImage.m_nHeight, cImage.m_nWidth, CV_8UC1, cImage.Data(),
                   static_cast<std::size_t>(cImage.Stride()));
}

/// OpenCV's objects are the samples that are not 0.
cv::Mat InvertedObjects(const benchmark::State& cState)
{
    return 255 - MatOf(ObjectsOf(static_cast<int>(cState.range(0))));
}

void OpenCvComponents(benchmark::State& cState)
{
    cv::setNumThreads(1);
    const cv::Mat cObjects = InvertedObjects(cState);
    cv::Mat cLabels, cStats, cCentroids;
    Repeat(cState,
           [&](ClImage&, ClImage&) { cv::connectedComponentsWithStats(cObjects, cLabels, cStats, cCentroids, 4); });
}

void OpenCvLabels(benchmark::State& cState)
{
    cv::setNumThreads(1);
    const cv::Mat cObjects = InvertedObjects(cState);
    cv::Mat cLabels;
    Repeat(cState, [&](ClImage&, ClImage&) { cv::connectedComponents(cObjects, cLabels, 4); });
}

/// Clamps, where the operator keeps the low bits.
void OpenCvConvert(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cLabels, cOut;
    cv::connectedComponents(InvertedObjects(cState), cLabels, 4);
    Repeat(cState, [&](ClImage&, ClImage&) { cLabels.convertTo(cOut, CV_8U); });
}

void OpenCvFloodFill(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cOut;
    Repeat(cState,
           [&](ClImage&, ClImage& cObjects)
           {
               MatOf(cObjects).copyTo(cOut);
               cv::floodFill(cOut, cv::Point(0, 0), cv::Scalar(1), nullptr, cv::Scalar(), cv::Scalar(), 4);
           });
}

void OpenCvHistogram(benchmark::State& cState)
{
    cv::setNumThreads(1);
    const int nChannel = 0, nBins = 256;
    const float afRange[] = {0, 256};
    const float* pRange = afRange;
    cv::Mat cCounts;
    Repeat(cState,
           [&](ClImage& cGrey, ClImage&)
           {
               const cv::Mat cIn = MatOf(cGrey);
               cv::calcHist(&cIn, 1, &nChannel, cv::Mat(), cCounts, 1, &nBins, &pRange);
           });
}

void OpenCvTable(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cTable(1, 256, CV_8UC1), cOut;
    for (int i = 0; i < 256; ++i) cTable.at<unsigned char>(i) = static_cast<unsigned char>(i * i / 255);
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cv::LUT(MatOf(cGrey), cTable, cOut); });
}

void OpenCvThreshold(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cOut;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { cv::threshold(MatOf(cGrey), cOut, 199, 255, cv::THRESH_BINARY); });
}

void OpenCvCopy(benchmark::State& cState)
{
    cv::Mat cOut;
    Repeat(cState, [&](ClImage& cGrey, ClImage&) { MatOf(cGrey).copyTo(cOut); });
}

void OpenCvGrey(benchmark::State& cState)
{
    cv::setNumThreads(1);
    ClImage& cColour = ColourOf(static_cast<int>(cState.range(0)));
    const cv::Mat cIn(cColour.m_nHeight, cColour.m_nWidth, CV_8UC3, cColour.Data(),
                      static_cast<std::size_t>(cColour.Stride()));
    cv::Mat cOut;
    Repeat(cState, [&](ClImage&, ClImage&) { cv::cvtColor(cIn, cOut, cv::COLOR_BGR2GRAY); });
}
#endif

using Bench_t = void (*)(benchmark::State&);

void Register(const std::string& sName, Bench_t pBench, std::initializer_list<long> anWidth)
{
    for (const long nWidth : anWidth)
        benchmark::RegisterBenchmark(sName.c_str(), pBench)->Arg(nWidth)->Unit(benchmark::kMicrosecond);
}

bool RegisterAll()
{
    const auto small = [](const char* szName, Bench_t pBench) { Register(szName, pBench, {320, 500}); };
    const auto all = [](const char* szName, Bench_t pBench) { Register(szName, pBench, {320, 500, 1600}); };
    all("Copy", Copy);
    small("Labels", Labels);
    all("Components", Components<false>);
    small("ComponentsAndLabels", Components<true>);
    small("Convert", Convert);
    small("FloodFillLabeling", FloodFillLabeling);
    small("FloodFill", FloodFillGround);
    small("CountFill", CountFill);
    small("Histogram", Histogram);
    small("Table", Gamma);
    all("Threshold", Threshold);
    Register("AutoThresholdYager", AutoThreshold<ClIpBinarizeAutoThreshold::ModeFuzzyYager>, {320});
    Register("AutoThresholdEntropy", AutoThreshold<ClIpBinarizeAutoThreshold::ModeFuzzyEntropy>, {500});
    Register("Stretch", Stretch, {320});
    Register("Grey", Grey, {1600});
    all("Cut", Cut);
    Register("CutBiggestComponent", CutBiggestComponent, {1600});
#ifdef KORMELIN_BENCH_OPENCV
    all("Copy/opencv", OpenCvCopy);
    Register("Grey/opencv", OpenCvGrey, {1600});
    small("Labels/opencv", OpenCvLabels);
    all("Components/opencv", OpenCvComponents);
    small("Convert/opencv", OpenCvConvert);
    small("FloodFill/opencv", OpenCvFloodFill);
    small("Histogram/opencv", OpenCvHistogram);
    small("Table/opencv", OpenCvTable);
    all("Threshold/opencv", OpenCvThreshold);
#endif
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
