// Whole runs through the exported functions: KSSegmentBitmap in both modes, on drawn slaps and, where KORMELIN_SLAPS
// names their folder, on real ones. An item is a pixel of the input, so that M/s are megapixels per second.

#include "BenchPictures.hpp"
#include "SlapPicture.hpp"
#include "SlapRun.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{
constexpr int n1000Ppi = 39370;                         // pels per metre
constexpr double dLean = 0.35;                          // radians
constexpr long nRefused = FPC_ERROR_PARAM_OUT_OF_RANGE; // of more than two fingers, after a whole run

/// A BMP file in memory with the result that each run on it must have. The fingers are known of drawn pictures only.
struct ClBenchPicture
{
    std::vector<std::uint8_t> m_aFile;
    long m_nCode = FPC_SUCCESS; // in mode 0
    long m_nCount = 0;          // in mode 0
    std::vector<ClSlapRect> m_aFingers;

    std::int64_t Pixels() const
    {
        tagBITMAPINFOHEADER cHeader;
        std::memcpy(&cHeader, m_aFile.data() + 14, sizeof cHeader); // behind the file header
        return std::int64_t{cHeader.biWidth} * cHeader.biHeight;
    }
};

// Half a millimetre: the faint rim of a drawn finger may be lost.
constexpr long nTolerance = 10;

bool Holds(const ClSlapRunResult::ClSegment& cSegment, const ClSlapRect& cFinger)
{
    return cSegment.m_nX <= cFinger.left + nTolerance && cSegment.m_nY <= cFinger.bottom + nTolerance &&
           cSegment.m_nX + cSegment.m_nWidth >= cFinger.right - nTolerance &&
           cSegment.m_nY + cSegment.m_nHeight >= cFinger.top - nTolerance;
}

bool IsRight(const ClBenchPicture& cPicture, long nMode, const ClSlapRunResult& cResult)
{
    if (nMode == 1) return cResult.m_nCode == FPC_SUCCESS && cResult.m_nCount == 1;
    if (cResult.m_nCode != cPicture.m_nCode || cResult.m_nCount != cPicture.m_nCount) return false;
    if (cPicture.m_nCode != FPC_SUCCESS) return true;
    for (std::size_t i = 0; i < cPicture.m_aFingers.size(); ++i)
        if (!Holds(cResult.m_aSegments.at(i), cPicture.m_aFingers[i])) return false;
    return true;
}

using Picture_t = std::function<ClBenchPicture()>;

// Made when the first benchmark asks for it, for all that use it.
Picture_t Once(Picture_t pMake)
{
    return [pMake = std::move(pMake), pMade = std::make_shared<std::optional<ClBenchPicture>>()]
    {
        if (!pMade->has_value()) *pMade = pMake();
        return **pMade;
    };
}

/// A handle that cuts one picture again and again, without copying the results out.
class ClBenchHandle
{
public:
    ClBenchHandle(const ClBenchPicture& cPicture, long nMode)
        : m_aFile(cPicture.m_aFile), m_nExpected(nMode == 1 ? 0 : cPicture.m_nCode)
    {
        KSInitialize(nullptr);
        KSCreateSegmentationHandle(&m_hSegmentation);
        KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", nMode);
    }
    ~ClBenchHandle()
    {
        KSDestroyHandle(&m_hSegmentation);
        KSUninitialize();
    }
    ClBenchHandle(const ClBenchHandle&) = delete;
    ClBenchHandle& operator=(const ClBenchHandle&) = delete;

    bool Run()
    {
        const auto* pBitmap = static_cast<const tagBITMAPINFOHEADER*>(static_cast<const void*>(m_aFile.data()));
        return KSSegmentBitmap(m_hSegmentation, pBitmap, m_aFile.size()) == m_nExpected;
    }

private:
    const std::vector<std::uint8_t> m_aFile;
    const long m_nExpected;
    void* m_hSegmentation = nullptr;
};

void CheckedSegment(benchmark::State& cState, const ClBenchPicture& cPicture, long nMode)
{
    if (!IsRight(cPicture, nMode, ClSlapRunner(nMode).Run(cPicture.m_aFile)))
    {
        cState.SkipWithError("wrong result");
        return;
    }
    ClBenchHandle cHandle(cPicture, nMode);
    for (auto _ : cState)
    {
        if (!cHandle.Run())
        {
            cState.SkipWithError("wrong code");
            break;
        }
    }
    cState.SetItemsProcessed(cState.iterations() * cPicture.Pixels());
}

void Segment(benchmark::State& cState, const Picture_t& picture, long nMode)
{
    try
    {
        CheckedSegment(cState, picture(), nMode);
    }
    catch (const std::exception& e)
    {
        cState.SkipWithError(e.what());
    }
}

/// In an iteration each of so many threads makes nRunsOfThread runs on a handle of its own.
void Threads(benchmark::State& cState, const Picture_t& picture)
{
    constexpr int nRunsOfThread = 20;
    const ClBenchPicture cPicture = picture();
    std::deque<ClBenchHandle> aHandles;
    for (long i = 0; i < cState.range(0); ++i) aHandles.emplace_back(cPicture, 0);
    std::atomic<bool> bRight{true};
    for (auto _ : cState)
    {
        std::vector<std::thread> aThreads;
        for (ClBenchHandle& cHandle : aHandles)
        {
            aThreads.emplace_back(
                [&]
                {
                    for (int i = 0; i < nRunsOfThread; ++i)
                        if (!cHandle.Run()) bRight = false;
                });
        }
        for (std::thread& cThread : aThreads) cThread.join();
    }
    if (!bRight) cState.SkipWithError("wrong code");
    cState.SetItemsProcessed(cState.iterations() * cState.range(0) * nRunsOfThread * cPicture.Pixels());
}

// The floor: what merely moving the pixels of a four-finger slap costs.
void Memcpy(benchmark::State& cState)
{
    const std::vector<std::uint8_t> aFrom(1600 * 1500, 200);
    std::vector<std::uint8_t> aTo(aFrom.size());
    for (auto _ : cState)
    {
        std::memcpy(aTo.data(), aFrom.data(), aFrom.size());
        benchmark::DoNotOptimize(aTo.data());
        benchmark::ClobberMemory();
    }
    if (aTo != aFrom) cState.SkipWithError("wrong copy");
    cState.SetItemsProcessed(cState.iterations() * static_cast<std::int64_t>(aFrom.size()));
}

ClBenchPicture Drawn(const ClSlapScene& cScene, long nCode)
{
    const ClSlapPicture cPicture(cScene);
    return {cPicture.BmpFile(), nCode, static_cast<long>(cPicture.m_aFingers.size()), cPicture.m_aFingers};
}

void RegisterBothModes(const std::string& sName, Picture_t pMake)
{
    const Picture_t picture = Once(std::move(pMake));
    for (const long nMode : {0L, 1L})
    {
        benchmark::RegisterBenchmark(("Segment/" + sName + "/mode:" + std::to_string(nMode)).c_str(),
                                     [=](benchmark::State& cState) { Segment(cState, picture, nMode); })
            ->Unit(benchmark::kMillisecond);
    }
}

bool RegisterAll()
{
    benchmark::RegisterBenchmark("Memcpy/1600x1500", Memcpy)->Unit(benchmark::kMillisecond);
    const auto drawn = [](const std::string& sName, ClSlapScene (*pScene)(), long nCode)
    { RegisterBothModes(sName, [=] { return Drawn(pScene(), nCode); }); };
    drawn(
        "two-fingers", [] { return SlapScenes::TwoFingers(n500Ppi); }, FPC_SUCCESS);
    drawn(
        "two-fingers-1000ppi", [] { return SlapScenes::TwoFingers(n1000Ppi); }, FPC_SUCCESS);
    drawn(
        "four-fingers-1600x1500", [] { return FourFingerScene(n500Ppi); }, nRefused);
    drawn(
        "four-fingers-3200x3000-1000ppi", [] { return FourFingerScene(n1000Ppi); }, nRefused);
    drawn(
        "leaning-hand", [] { return SlapScenes::LeaningHand(dLean, n500Ppi); }, nRefused);
    benchmark::RegisterBenchmark("Threads/four-fingers-1600x1500", [](benchmark::State& cState)
                                 { Threads(cState, [] { return Drawn(FourFingerScene(n500Ppi), nRefused); }); })
        ->Arg(1)
        ->Arg(2)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    if (const char* szFolder = std::getenv("KORMELIN_SLAPS"))
    {
        const auto real = [&](const std::string& sName, long nCode, long nCount)
        {
            const std::string sPath = szFolder + ("/" + sName + ".bmp");
            RegisterBothModes(sName, [=] { return ClBenchPicture{ReadWholeFile(sPath), nCode, nCount, {}}; });
        };
        real("nist-left-four-2-pair-left", FPC_SUCCESS, 2);
        real("nist-left-four-2", nRefused, 4);
        real("nist-right-four-1", nRefused, 3); // leaning
    }
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
