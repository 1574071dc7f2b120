// Whole runs through the exported functions: KSSegmentBitmap in both modes, on drawn slaps and, where KORMELIN_SLAPS
// names their folder, on real ones. An item is a pixel of the input, so that M/s are megapixels per second.

#include "SlapPicture.hpp"
#include "SlapRun.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{
constexpr int n500Ppi = 19685; // pels per metre

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

void CheckedSegment(benchmark::State& cState, const ClBenchPicture& cPicture, long nMode)
{
    const std::vector<std::uint8_t>& aFile = cPicture.m_aFile;
    if (!IsRight(cPicture, nMode, ClSlapRunner(nMode).Run(aFile)))
    {
        cState.SkipWithError("wrong result");
        return;
    }
    void* hSegmentation = nullptr;
    KSInitialize(nullptr);
    KSCreateSegmentationHandle(&hSegmentation);
    KSSetPropertyLongA(hSegmentation, "SegmentationMode", nMode);
    const auto* pBitmap = static_cast<const tagBITMAPINFOHEADER*>(static_cast<const void*>(aFile.data()));
    const long nExpected = nMode == 1 ? 0 : cPicture.m_nCode;
    for (auto _ : cState)
    {
        if (KSSegmentBitmap(hSegmentation, pBitmap, aFile.size()) != nExpected)
        {
            cState.SkipWithError("wrong code");
            break;
        }
    }
    KSDestroyHandle(&hSegmentation);
    KSUninitialize();
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

// 1600 by 1500 pixels, the usual size of a slap of four fingers.
ClSlapScene BigHand()
{
    ClSlapScene cHand = SlapScenes::FourFingers(SlapScenes::eRightHand, n500Ppi);
    cHand.m_nHeight = 76240; // micrometres: 1500 rows
    return cHand;
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
    RegisterBothModes("two-fingers", [] { return Drawn(SlapScenes::TwoFingers(n500Ppi), FPC_SUCCESS); });
    RegisterBothModes("four-fingers-1600x1500", [] { return Drawn(BigHand(), FPC_ERROR_PARAM_OUT_OF_RANGE); });
    if (const char* szFolder = std::getenv("KORMELIN_SLAPS"))
    {
        const std::string sPath = std::string(szFolder) + "/nist-left-four-2";
        RegisterBothModes("nist-left-four-2-pair-left",
                          [=] {
                              return ClBenchPicture{ReadWholeFile(sPath + "-pair-left.bmp"), FPC_SUCCESS, 2, {}};
                          });
        RegisterBothModes("nist-left-four-2",
                          [=] {
                              return ClBenchPicture{ReadWholeFile(sPath + ".bmp"), FPC_ERROR_PARAM_OUT_OF_RANGE, 4, {}};
                          });
    }
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
