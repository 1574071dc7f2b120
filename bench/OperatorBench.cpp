// Single image operators at the sizes at which a run uses them: 320 by 300 is a hand at the working resolution, 500 by
// 600 the cut-out of a finger, 1600 by 1500 a whole slap at 500 pixels per inch. Where OpenCV is installed, its nearest
// function runs beside them on one thread, under the operator's name with /opencv behind it. An item is a pixel.

#include "SlapPicture.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpLabeling.hpp"

#include <benchmark/benchmark.h>

#ifdef KORMELIN_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace
{
constexpr int n500Ppi = 19685; // pels per metre
constexpr int n100Ppi = 3937;

/// A part of a drawn hand: grey as it comes, and as its objects, black on white.
struct ClBenchImages
{
    ClImage m_cGrey;
    ClImage m_cObjects;
};

void DrawHand(int nPels, int nX, int nY, int nWidth, int nHeight, ClImage& cGrey)
{
    ClSlapScene cHand = SlapScenes::FourFingers(SlapScenes::eRightHand, nPels);
    cHand.m_nHeight = 76240; // micrometres: 1500 rows at 500 pixels per inch
    const ClSlapPicture cPicture(cHand);
    cGrey.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, nPels, nPels);
    for (int y = 0; y < nHeight; ++y)
    {
        const auto nFirst = static_cast<std::ptrdiff_t>(nY + y) * cPicture.m_nWidth + nX;
        std::copy_n(cPicture.m_aPixels.begin() + nFirst, nWidth, Row<unsigned char>(cGrey, y));
    }
}

/// Objects as the detection and the refinement have them: of the smoothed picture.
std::unique_ptr<ClBenchImages> MakeImages(int nWidth)
{
    auto pImages = std::make_unique<ClBenchImages>();
    int nSmoothing = 20; // pixels, as in the refinement
    switch (nWidth)
    {
    case 320:
        DrawHand(n100Ppi, 0, 0, 320, 300, pImages->m_cGrey);
        nSmoothing = 5;
        break;
    case 500: DrawHand(n500Ppi, 400, 700, 500, 600, pImages->m_cGrey); break;
    default: DrawHand(n500Ppi, 0, 0, 1600, 1500, pImages->m_cGrey); break;
    }
    ClImage cSmooth;
    ClIpFilterMid().ApplyParam(pImages->m_cGrey, cSmooth, nSmoothing);
    ClIpBinarizeAutoThreshold().ApplyParam(cSmooth, pImages->m_cObjects, ClIpBinarizeAutoThreshold::ModeFuzzyEntropy);
    return pImages;
}

/// The pictures of a width, made when a benchmark first asks for them.
ClBenchImages& ImagesOf(const benchmark::State& cState)
{
    static std::map<long, std::unique_ptr<ClBenchImages>> aMade;
    std::unique_ptr<ClBenchImages>& pImages = aMade[cState.range(0)];
    if (pImages == nullptr) pImages = MakeImages(static_cast<int>(cState.range(0)));
    return *pImages;
}

/// fn(images) again and again.
template <class Fn> void Repeat(benchmark::State& cState, Fn&& fn)
{
    ClBenchImages& cImages = ImagesOf(cState);
    for (auto _ : cState)
    {
        fn(cImages);
        benchmark::ClobberMemory();
    }
    const std::int64_t nPixels = std::int64_t{cImages.m_cGrey.m_nWidth} * cImages.m_cGrey.m_nHeight;
    cState.SetItemsProcessed(cState.iterations() * nPixels);
}

void Copy(benchmark::State& cState)
{
    ClImage cOut;
    Repeat(cState, [&](ClBenchImages& c) { cOut = c.m_cGrey; });
}

void Labels(benchmark::State& cState)
{
    ClImage cOut;
    ClIpLabeling cLabeling;
    cLabeling.m_pOutImage = &cOut;
    Repeat(cState,
           [&](ClBenchImages& c)
           {
               cLabeling.m_pInImage = &c.m_cObjects;
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
           [&](ClBenchImages& c)
           {
               aComponents.Clear();
               cMeasure.pInImage = &c.m_cObjects;
               cMeasure.Apply();
           });
}

void FloodFillLabeling(benchmark::State& cState)
{
    ClImage cOut;
    ClIpFloodFillLabeling cLabeling;
    cLabeling.m_pOutImage = &cOut;
    Repeat(cState,
           [&](ClBenchImages& c)
           {
               cLabeling.m_pInImage = &c.m_cObjects;
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
           [&](ClBenchImages& c)
           {
               cFill.m_pInImage = &c.m_cObjects;
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
           [&](ClBenchImages& c)
           {
               cFill.m_pInImage = &c.m_cObjects;
               cFill.Apply();
           });
}

void Histogram(benchmark::State& cState)
{
    ClHistogram cHistogram;
    Repeat(cState, [&](ClBenchImages& c) { cHistogram.Create(c.m_cGrey); });
}

void Gamma(benchmark::State& cState)
{
    ClImage cOut;
    ClIpGammaCorrection cGamma;
    Repeat(cState, [&](ClBenchImages& c) { cGamma.ApplyParam(c.m_cGrey, cOut, 0, 255, 0.8); });
}

void Threshold(benchmark::State& cState)
{
    ClImage cOut;
    ClIpBinarizeGlobal cBinarize;
    Repeat(cState, [&](ClBenchImages& c) { cBinarize.ApplyParam(c.m_cGrey, cOut, 200.0); });
}

/// Half of the picture's sides, from its middle.
void Cut(benchmark::State& cState)
{
    ClIpCut cCut;
    Repeat(cState,
           [&](ClBenchImages& c)
           {
               const int nWidth = c.m_cGrey.m_nWidth / 2;
               const int nHeight = c.m_cGrey.m_nHeight / 2;
               ClImage cOut;
               cCut.ApplyParam(c.m_cGrey, nWidth / 2, nHeight / 2, nWidth, nHeight, cOut);
           });
}

void CutBiggestComponent(benchmark::State& cState)
{
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    Repeat(cState, [&](ClBenchImages& c) { cCut.ApplyParam(c.m_cObjects, cOut); });
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
    return 255 - MatOf(ImagesOf(cState).m_cObjects);
}

void OpenCvComponents(benchmark::State& cState)
{
    cv::setNumThreads(1);
    const cv::Mat cObjects = InvertedObjects(cState);
    cv::Mat cLabels, cStats, cCentroids;
    Repeat(cState, [&](ClBenchImages&) { cv::connectedComponentsWithStats(cObjects, cLabels, cStats, cCentroids, 4); });
}

void OpenCvLabels(benchmark::State& cState)
{
    cv::setNumThreads(1);
    const cv::Mat cObjects = InvertedObjects(cState);
    cv::Mat cLabels;
    Repeat(cState, [&](ClBenchImages&) { cv::connectedComponents(cObjects, cLabels, 4); });
}

void OpenCvFloodFill(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cOut;
    Repeat(cState,
           [&](ClBenchImages& c)
           {
               MatOf(c.m_cObjects).copyTo(cOut);
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
           [&](ClBenchImages& c)
           {
               const cv::Mat cGrey = MatOf(c.m_cGrey);
               cv::calcHist(&cGrey, 1, &nChannel, cv::Mat(), cCounts, 1, &nBins, &pRange);
           });
}

void OpenCvTable(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cTable(1, 256, CV_8UC1), cOut;
    for (int i = 0; i < 256; ++i) cTable.at<unsigned char>(i) = static_cast<unsigned char>(i * i / 255);
    Repeat(cState, [&](ClBenchImages& c) { cv::LUT(MatOf(c.m_cGrey), cTable, cOut); });
}

void OpenCvThreshold(benchmark::State& cState)
{
    cv::setNumThreads(1);
    cv::Mat cOut;
    Repeat(cState, [&](ClBenchImages& c) { cv::threshold(MatOf(c.m_cGrey), cOut, 199, 255, cv::THRESH_BINARY); });
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
    small("FloodFillLabeling", FloodFillLabeling);
    small("FloodFill", FloodFillGround);
    small("CountFill", CountFill);
    small("Histogram", Histogram);
    small("Table", Gamma);
    all("Threshold", Threshold);
    all("Cut", Cut);
    Register("CutBiggestComponent", CutBiggestComponent, {1600});
#ifdef KORMELIN_BENCH_OPENCV
    small("Labels/opencv", OpenCvLabels);
    all("Components/opencv", OpenCvComponents);
    small("FloodFill/opencv", OpenCvFloodFill);
    small("Histogram/opencv", OpenCvHistogram);
    small("Table/opencv", OpenCvTable);
    all("Threshold/opencv", OpenCvThreshold);
#endif
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
