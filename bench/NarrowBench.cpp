// The filters with the vectors that every x86-64 has, where a run takes wider ones if the processor has them. An item
// is a pixel of the input.

#include "BenchPictures.hpp"

#include "RDImageProcessing/BoxMean.hpp"
#include "RDImageProcessing/UniformMasks.hpp"

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

namespace
{
void NarrowBox(const ClImage& cIn, ClImage& cOut, int nFilterWidth)
{
    cOut.New(cIn);
    FastBoxMeans(cIn, nFilterWidth, cOut, false);
}

/// The steps of the default mode.
void NarrowRotating(const ClImage& cIn, ClImage& cOut, int)
{
    ClImage cAvg, cDev;
    NarrowBox(cIn, cAvg, nFastMask);
    cDev.New(cIn);
    FastMaskDeviations(cAvg, cIn, cDev, false);
    cOut.New(cIn);
    FastMaskSearch(cDev, cAvg, cOut, false);
}

using Filter_t = void (*)(const ClImage& cIn, ClImage& cOut, int nFilterWidth);

void Repeat(benchmark::State& cState, int nWidth, int nFilterWidth, Filter_t pFilter)
{
    const ClImage& cIn = GreyOf(nWidth);
    ClImage cOut;
    for (auto _ : cState)
    {
        pFilter(cIn, cOut, nFilterWidth);
        benchmark::ClobberMemory();
    }
    cState.SetItemsProcessed(cState.iterations() * cIn.m_nWidth * cIn.m_nHeight);
}

bool RegisterAll()
{
    const auto add = [](const std::string& sName, int nWidth, int nFilterWidth, Filter_t pFilter)
    {
        const std::string sFull = "Narrow/" + sName + (nWidth == 320 ? "/320x300" : "/500x600");
        benchmark::RegisterBenchmark(sFull.c_str(), Repeat, nWidth, nFilterWidth, pFilter)
            ->Unit(benchmark::kMicrosecond);
    };
    for (const int nWidth : {320, 500})
    {
        for (const int nFilterWidth : {5, 21})
            add("Box" + std::to_string(nFilterWidth), nWidth, nFilterWidth, NarrowBox);
    }
    add("Rotating9Deviation", 320, 0, NarrowRotating);
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
