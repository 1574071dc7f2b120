// usage: thread-calls first | exit
// An application on eight threads, for tests that start it again and again. "first": all threads make their first calls
// at once, each with handles of its own and all functions; prints the sum of what they saw, ends with 1 if one of them
// saw something else. "exit": the threads go on segmenting while the process ends.

#include "ReadOnlySegment.hpp"
#include "SlapPicture.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr int nThreads = 8;

/// FNV-1a, 64 bits.
class ClSum
{
public:
    void Add(const void* pBytes, std::size_t nBytes)
    {
        const auto* p = static_cast<const unsigned char*>(pBytes);
        for (std::size_t i = 0; i < nBytes; ++i)
        {
            m_nSum = (m_nSum ^ p[i]) * 1099511628211u;
        }
    }
    void Add(long nValue) { Add(&nValue, sizeof nValue); }
    void Add(const char* szText) { Add(szText, std::strlen(szText)); }
    std::uint64_t Sum() const { return m_nSum; }

private:
    std::uint64_t m_nSum = 14695981039346656037u;
};

/// Waits until all threads are here.
void MeetAll(std::atomic<int>& nMissing)
{
    --nMissing;
    while (nMissing > 0)
    {
        std::this_thread::yield();
    }
}

void AddSegment(ClSum& cSum, void* hSegmentation, int nIndex)
{
    void* hSegment = nullptr;
    cSum.Add(KSCreateSegmentHandle(&hSegment));
    cSum.Add(KSGetSegment(hSegmentation, nIndex, hSegment));
    for (const char* szName : {"x", "y", "Width", "Height", "FingerPosition", "No such name"})
    {
        long nValue = -1;
        cSum.Add(KSGetPropertyLongA(hSegment, szName, &nValue));
        cSum.Add(nValue);
    }
    unsigned long nSize = ULONG_MAX;
    cSum.Add(KSGetBitmap(hSegment, nullptr, &nSize));
    ClGuardedVector aBitmap(nSize == ULONG_MAX ? 0 : nSize);
    cSum.Add(KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
    cSum.Add(aBitmap.data(), aBitmap.size());
    cSum.Add(KSDestroyHandle(&hSegment));
}

/// One run, and all that it gives.
std::uint64_t Run(const ClReadOnlyBytes& cBlock, const char* szMode)
{
    ClSum cSum;
    void* hSegmentation = nullptr;
    cSum.Add(KSCreateSegmentationHandle(&hSegmentation));
    cSum.Add(KSSetPropertyA(hSegmentation, "SegmentationMode", szMode));
    cSum.Add(SegmentReadOnly(hSegmentation, cBlock));
    double dValue = 0.0;
    cSum.Add(KSGetPropertyDoubleA(hSegmentation, "Count", &dValue));
    cSum.Add(KSSetPropertyDoubleA(hSegmentation, "Count", dValue));
    char szValue[64] = "";
    unsigned long nSize = sizeof szValue;
    cSum.Add(KSGetPropertyA(hSegmentation, "Count", szValue, &nSize));
    cSum.Add(szValue);
    for (const int nIndex : {0, 1})
    {
        AddSegment(cSum, hSegmentation, nIndex);
    }
    cSum.Add(KSDestroyHandle(&hSegmentation));
    return cSum.Sum();
}

/// Every function; odd threads begin with the other mode.
std::uint64_t EveryCall(const ClMovingInput& cInput, bool bOdd)
{
    ClSum cSum;
    for (long nCode = -830; nCode <= 5; ++nCode)
    {
        cSum.Add(KSGetErrorDescriptionA(nCode));
    }
    char szVersion[32] = "";
    unsigned long nSize = sizeof szVersion;
    cSum.Add(KSGetVersionA(szVersion, &nSize));
    cSum.Add(szVersion);
    cSum.Add(KSInitialize(nullptr));
    std::uint64_t anRun[2];
    for (const int i : {0, 1})
    {
        const int nMode = bOdd ? 1 - i : i;
        anRun[nMode] = Run(cInput.Place(i), nMode == 0 ? "0" : "1");
    }
    cSum.Add(anRun, sizeof anRun);
    cSum.Add(KSUninitialize());
    return cSum.Sum();
}

int First(const ClMovingInput& cInput)
{
    std::atomic<int> nMissing{nThreads};
    std::uint64_t anSum[nThreads];
    std::vector<std::thread> aThreads;
    for (int i = 0; i < nThreads; ++i)
    {
        aThreads.emplace_back(
            [&, i]
            {
                MeetAll(nMissing);
                anSum[i] = EveryCall(cInput, i % 2 != 0);
            });
    }
    bool bAlike = true;
    for (int i = 0; i < nThreads; ++i)
    {
        aThreads[static_cast<std::size_t>(i)].join();
        bAlike = bAlike && anSum[i] == anSum[0];
    }
    std::printf("sum %016llx\n", static_cast<unsigned long long>(anSum[0]));
    return bAlike && KSUninitialize() == FPC_ERROR_NOT_INITIALIZED ? 0 : 1;
}

int Exit(const std::vector<std::uint8_t>& aBlock)
{
    static std::atomic<int> nMissing{nThreads + 1};
    static const auto* const pInput = new ClMovingInput(aBlock); // outlives the objects of main
    for (int i = 0; i < nThreads; ++i)
    {
        std::thread(
            [i]
            {
                EveryCall(*pInput, i % 2 != 0);
                for (MeetAll(nMissing);;)
                {
                    EveryCall(*pInput, i % 2 != 0);
                }
            })
            .detach();
    }
    MeetAll(nMissing);
    return 0;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    const std::string sMode = nArguments == 2 ? aszArguments[1] : "";
    if (sMode != "first" && sMode != "exit")
    {
        std::fputs("usage: thread-calls first | exit\n", stderr);
        return 2;
    }
    const std::vector<std::uint8_t> aBlock = ClSlapPicture(SlapScenes::TwoFingers(3937)).Block();
    return sMode == "first" ? First(ClMovingInput(aBlock)) : Exit(aBlock);
}
