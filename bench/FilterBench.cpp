// The filters, the reduction, the rotation, the distance and the searches for a threshold, at the sizes at which a run
// uses them: 320 by 300 is a hand at the working resolution, 500 by 600 the cut-out of a finger, 1600 by 1500 a whole
// slap at 500 pixels per inch. Where OpenCV is installed, its nearest function runs beside them on one thread, under
// the operator's name with /opencv behind it. An item is a pixel of the input.

#include "BenchPictures.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRotate.hpp"

#include <benchmark/benchmark.h>

#ifdef KORMELIN_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{
using Pixels_t = void (*)(ClImage& cIn, ClImage& cOut, int nArgument);

/// A run again and again.
void Repeat(benchmark::State& cState, int nWidth, int nArgument, Pixels_t pRun)
{
    ClImage& cIn = GreyOf(nWidth);
    ClImage cOut;
    for (auto _ : cState)
    {
        pRun(cIn, cOut, nArgument);
        benchmark::ClobberMemory();
    }
    cState.SetItemsProcessed(cState.iterations() * cIn.m_nWidth * cIn.m_nHeight);
}

void Box(ClImage& cIn, ClImage& cOut, int nFilterWidth)
{
    ClIpFilterMid().ApplyParam(cIn, cOut, nFilterWidth);
}

void Rotating(ClImage& cIn, ClImage& cOut, int nMode)
{
    ClIpFilterMidRotating().ApplyParam(cIn, cOut, 9, static_cast<ClIpFilterMidRotating::EVarianceMode>(nMode));
}

/// The whole factor stands for the resolution, as it does for a slap of 500 or 1000 pixels per inch.
void Reduce(ClImage& cIn, ClImage& cOut, int nFactor)
{
    ClImage cScanned;
    cScanned.Attach(cIn);
    cScanned.m_nXRes = cScanned.m_nYRes = n100Ppi * nFactor;
    ClIpRescale().ApplyParamPels(cScanned, cOut, n100Ppi, n100Ppi, ClIpRescale::ModeBiLinear);
}

constexpr double dLean = 0.35; // radians

void Turn(ClImage& cIn, ClImage& cOut, int nInterpolate)
{
    ClIpRotate().ApplyParam(cIn, cOut, ClVector(cIn.m_nWidth / 2, cIn.m_nHeight / 2), dLean, false, nInterpolate != 0);
}

void Delta(ClImage& cIn, ClImage& cOut, int)
{
    static std::map<int, std::unique_ptr<ClImage>> aSmooth;
    std::unique_ptr<ClImage>& pSmooth = aSmooth[cIn.m_nWidth];
    if (pSmooth == nullptr)
    {
        pSmooth = std::make_unique<ClImage>();
        ClIpFilterMid().ApplyParam(cIn, *pSmooth, 5);
    }
    ClIpDelta().ApplyParam(*pSmooth, cIn, cOut, 255);
}

/// A picture of few pixels with all grey values, so that the search counts and not the histogram.
ClImage& AllGreys()
{
    static ClImage cImage(64, 64, 1, n100Ppi, n100Ppi);
    for (int i = 0; i < 64 * 64; ++i) cImage.Data()[i] = static_cast<unsigned char>(i % 256 + i / 256 * (i % 3));
    return cImage;
}

void Search(benchmark::State& cState, int nType)
{
    ClImage& cIn = AllGreys();
    ClIpBinarizeAutoThreshold cThreshold;
    for (auto _ : cState) benchmark::DoNotOptimize(cThreshold.thr_fuz(&cIn, nType));
}

/// The search as it is defined: every membership and its logarithms for every threshold.
double PlainFuzziness(const std::vector<double>& adCount, int nMean0, int nMean1, int t, int nType)
{
    double dSum = 0.0;
    for (int g = 0; g < (nType == 1 ? 255 : 256); ++g)
    {
        const double x = 1.0 / (std::abs(g - (g <= t ? nMean0 : nMean1)) * 0.00392156862745098 + 1.0);
        if (nType != 1)
            dSum += x * (1.0 - x) * (x * (1.0 - x));
        else if (x < 1.0)
            dSum += (-x * std::log(x) - (1.0 - x) * std::log(1.0 - x)) * adCount[static_cast<std::size_t>(g)];
    }
    return nType == 1 ? dSum : std::sqrt(dSum);
}

void PlainSearch(benchmark::State& cState, int nType)
{
    const ClImage& cIn = AllGreys();
    for (auto _ : cState)
    {
        std::vector<double> adCount(256);
        for (int i = 0; i < 64 * 64; ++i) ++adCount[cIn.Data()[i]];
        double dCount = 0, dSum = 0, dAll = 0, dBest = 1e300;
        for (std::size_t g = 0; g < 256; ++g) dAll += adCount[g] * static_cast<double>(g);
        for (int t = 0; t < 255; ++t)
        {
            dCount += adCount[static_cast<std::size_t>(t)];
            dSum += t * adCount[static_cast<std::size_t>(t)];
            const int nMean0 = static_cast<int>(dSum / dCount + 0.5);
            const int nMean1 = static_cast<int>((dAll - dSum) / (64 * 64 - dCount) + 0.5);
            dBest = std::min(dBest, PlainFuzziness(adCount, nMean0, nMean1, t, nType));
        }
        benchmark::DoNotOptimize(dBest);
    }
}

#ifdef KORMELIN_BENCH_OPENCV
cv::Mat MatOf(ClImage& cImage)
{
    return cv::Mat(cImage.m_nHeight, cImage.m_nWidth, CV_8UC1, cImage.Data(),
                   static_cast<std::size_t>(cImage.Stride()));
}

using Mats_t = void (*)(const cv::Mat& cIn, cv::Mat& cOut, int nArgument);

void RepeatOpenCv(benchmark::State& cState, int nWidth, int nArgument, Mats_t pRun)
{
    cv::setNumThreads(1);
    const cv::Mat cIn = MatOf(GreyOf(nWidth));
    cv::Mat cOut;
    for (auto _ : cState)
    {
        pRun(cIn, cOut, nArgument);
        benchmark::ClobberMemory();
    }
    cState.SetItemsProcessed(cState.iterations() * cIn.cols * cIn.rows);
}

void OpenCvBox(const cv::Mat& cIn, cv::Mat& cOut, int nFilterWidth)
{
    cv::blur(cIn, cOut, cv::Size(nFilterWidth, nFilterWidth));
}

void OpenCvReduce(const cv::Mat& cIn, cv::Mat& cOut, int nFactor)
{
    cv::resize(cIn, cOut, cv::Size(cIn.cols / nFactor, cIn.rows / nFactor), 0, 0, cv::INTER_AREA);
}

void OpenCvTurn(const cv::Mat& cIn, cv::Mat& cOut, int nInterpolate)
{
    const cv::Point2f cMiddle(static_cast<float>(cIn.cols / 2), static_cast<float>(cIn.rows / 2));
    const cv::Mat cTurn = cv::getRotationMatrix2D(cMiddle, dLean * 180 / 3.14159265358979, 1.0);
    cv::warpAffine(cIn, cOut, cTurn, cIn.size(), nInterpolate != 0 ? cv::INTER_LINEAR : cv::INTER_NEAREST,
                   cv::BORDER_CONSTANT, 128);
}

void OpenCvDelta(const cv::Mat& cIn, cv::Mat& cOut, int)
{
    static std::map<int, cv::Mat> aSmooth;
    cv::Mat& cSmooth = aSmooth[cIn.cols];
    if (cSmooth.empty()) cv::blur(cIn, cSmooth, cv::Size(5, 5));
    cv::absdiff(cIn, cSmooth, cOut);
}
#endif

struct StSize
{
    int nWidth;
    const char* szName;
};
constexpr StSize cHand{320, "320x300"};
constexpr StSize cFinger{500, "500x600"};
constexpr StSize cSlap{1600, "1600x1500"};

void Register(const std::string& sName, StSize cSize, int nArgument, Pixels_t pRun)
{
    const std::string sFull = "Filter/" + sName + "/" + cSize.szName;
    benchmark::RegisterBenchmark(sFull.c_str(), Repeat, cSize.nWidth, nArgument, pRun)->Unit(benchmark::kMicrosecond);
}

#ifdef KORMELIN_BENCH_OPENCV
void Register(const std::string& sName, StSize cSize, int nArgument, Pixels_t pRun, Mats_t pOther)
{
    Register(sName, cSize, nArgument, pRun);
    const std::string sFull = "Filter/" + sName + "/" + cSize.szName + "/opencv";
    benchmark::RegisterBenchmark(sFull.c_str(), RepeatOpenCv, cSize.nWidth, nArgument, pOther)
        ->Unit(benchmark::kMicrosecond);
}
#define WITH_OPENCV(pOther) , pOther
#else
#define WITH_OPENCV(pOther)
#endif

bool RegisterAll()
{
    for (const StSize cSize : {cHand, cFinger})
    {
        for (const int nFilterWidth : {3, 5, 21})
            Register("Box" + std::to_string(nFilterWidth), cSize, nFilterWidth, Box WITH_OPENCV(OpenCvBox));
        Register("Delta", cSize, 0, Delta WITH_OPENCV(OpenCvDelta));
    }
    const char* const aszMode[] = {"MinDistance", "Deviation", "FixPoint", "Float"};
    for (int nMode = 0; nMode < 4; ++nMode) Register("Rotating9" + std::string(aszMode[nMode]), cHand, nMode, Rotating);
    for (const int nFactor : {5, 10})
        Register("Reduce" + std::to_string(nFactor), cSlap, nFactor, Reduce WITH_OPENCV(OpenCvReduce));
    Register("TurnNearest", cSlap, 0, Turn WITH_OPENCV(OpenCvTurn));
    Register("TurnBilinear", cSlap, 1, Turn WITH_OPENCV(OpenCvTurn));
    for (const auto& [nType, szName] : {std::pair(1, "Entropy"), std::pair(2, "Yager")})
    {
        const std::string sName = std::string("Filter/Search") + szName;
        benchmark::RegisterBenchmark(sName.c_str(), Search, nType)->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((sName + "/plain").c_str(), PlainSearch, nType)->Unit(benchmark::kMicrosecond);
    }
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
