// What the exported functions answer when their allocations fail.

#include "AllocationFailures.hpp"
#include "KormelinSegmentation.hpp"
#include "ReadOnlySegment.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
using Bytes_t = std::vector<unsigned char>;

template <class T> void Append(Bytes_t& aSeen, T value)
{
    const auto* p = reinterpret_cast<const unsigned char*>(&value);
    aSeen.insert(aSeen.end(), p, p + sizeof value);
}

/// An initialised library with a handle of each kind, and room for what calls give.
struct StWorld
{
    StWorld()
    {
        EXPECT_EQ(0, KSInitialize(nullptr));
        EXPECT_EQ(0, KSCreateSegmentationHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSCreateSegmentHandle(&m_hSegment));
    }
    StWorld(const StWorld&) = delete;
    StWorld& operator=(const StWorld&) = delete;
    ~StWorld()
    {
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegment));
        EXPECT_EQ(0, KSUninitialize());
    }

    /// The input is found at another place when it is called again.
    long Segment(const ClMovingInput& cInput, long nMode)
    {
        const long nResult = KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", nMode);
        return nResult != 0 ? nResult : SegmentReadOnly(m_hSegmentation, cInput.Place(m_nSegmented++));
    }

    void* m_hSegmentation = nullptr;
    void* m_hSegment = nullptr;
    long m_nValue = -77;
    double m_dValue = -7.5;
    char m_szText[64] = "as it was";
    unsigned long m_nSize = 0;
    ClGuardedVector m_aBitmap;
    long m_nSegmented = 0; ///< calls with an input
};

/// All that a segment handle shows; that it holds no picture is a result, too.
void AppendSegment(Bytes_t& aSeen, void* hSegment)
{
    for (const char* szName : {"x", "y", "Width", "Height", "FingerPosition"})
    {
        long nValue = -1;
        EXPECT_EQ(0, KSGetPropertyLongA(hSegment, szName, &nValue)) << szName;
        Append(aSeen, nValue);
    }
    unsigned long nSize = ULONG_MAX;
    const long nCode = KSGetBitmap(hSegment, nullptr, &nSize);
    EXPECT_TRUE(nCode == 0 || nCode == FPC_ERROR_EMPTY_HANDLE) << nCode;
    Append(aSeen, nCode);
    if (nCode == 0)
    {
        ClGuardedVector aBitmap(nSize);
        EXPECT_EQ(0, KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
        aSeen.insert(aSeen.end(), aBitmap.begin(), aBitmap.end());
    }
}

/// All that a segmentation handle shows.
void AppendSegmentation(Bytes_t& aSeen, void* hSegmentation)
{
    for (const char* szName : {"Count", "CoordinateOrigin", "SegmentationMode"})
    {
        long nValue = -1;
        EXPECT_EQ(0, KSGetPropertyLongA(hSegmentation, szName, &nValue)) << szName;
        Append(aSeen, nValue);
    }
    for (const int nIndex : {0, 1})
    {
        void* hSegment = nullptr;
        EXPECT_EQ(0, KSCreateSegmentHandle(&hSegment));
        const long nCode = KSGetSegment(hSegmentation, nIndex, hSegment);
        EXPECT_TRUE(nCode == 0 || nCode == FPC_ERROR_PARAM_OUT_OF_RANGE) << nCode;
        Append(aSeen, nCode);
        AppendSegment(aSeen, hSegment);
        EXPECT_EQ(0, KSDestroyHandle(&hSegment));
    }
}

enum EKept
{
    eNothing,
    eSegmentationHandle,
    eBothHandles
};

/// A call on handles: what comes before it, the call itself, and what of the handles it leaves alone if it fails.
struct StCall
{
    const char* m_szName;
    std::function<void(StWorld&)> m_fnPrepare;
    std::function<long(StWorld&)> m_fnCall;
    EKept m_eKept;
};

class ClHandleCase
{
public:
    explicit ClHandleCase(const StCall& cCall) : m_cCall(cCall)
    {
        m_cCall.m_fnPrepare(m_cWorld);
        m_aBefore = Handles();
        if (m_cCall.m_eKept == eBothHandles)
        {
            NewHandles(); // looking at the handles has built their properties
        }
    }
    long Call() { return m_cCall.m_fnCall(m_cWorld); }
    Bytes_t See()
    {
        Bytes_t aSeen;
        AppendSegmentation(aSeen, m_cWorld.m_hSegmentation);
        AppendSegment(aSeen, m_cWorld.m_hSegment);
        Append(aSeen, m_cWorld.m_nValue);
        Append(aSeen, m_cWorld.m_dValue);
        aSeen.insert(aSeen.end(), std::begin(m_cWorld.m_szText), std::end(m_cWorld.m_szText));
        Append(aSeen, m_cWorld.m_nSize);
        aSeen.insert(aSeen.end(), m_cWorld.m_aBitmap.begin(), m_cWorld.m_aBitmap.end());
        return aSeen;
    }
    bool Kept() { return Handles() == m_aBefore; }

private:
    /// Of those handles that the call leaves alone.
    Bytes_t Handles()
    {
        Bytes_t aSeen;
        if (m_cCall.m_eKept != eNothing)
        {
            AppendSegmentation(aSeen, m_cWorld.m_hSegmentation);
        }
        if (m_cCall.m_eKept == eBothHandles)
        {
            AppendSegment(aSeen, m_cWorld.m_hSegment);
        }
        return aSeen;
    }

    void NewHandles()
    {
        EXPECT_EQ(0, KSDestroyHandle(&m_cWorld.m_hSegmentation));
        EXPECT_EQ(0, KSDestroyHandle(&m_cWorld.m_hSegment));
        EXPECT_EQ(0, KSCreateSegmentationHandle(&m_cWorld.m_hSegmentation));
        EXPECT_EQ(0, KSCreateSegmentHandle(&m_cWorld.m_hSegment));
        m_cCall.m_fnPrepare(m_cWorld);
    }

    const StCall& m_cCall;
    StWorld m_cWorld;
    Bytes_t m_aBefore;
};

long FailEveryAllocationOf(const StCall& cCall)
{
    SCOPED_TRACE(cCall.m_szName);
    return FailEveryAllocation(EUnderFailure::eReturns, [&] { return ClHandleCase(cCall); });
}

const ClMovingInput& OneObject()
{
    static const ClMovingInput cInput = []
    {
        ClGuardedVector aBlock = PackedBitmap(40, 50, 8);
        std::memset(aBlock.data() + 1064, 255, aBlock.size() - 1064);
        for (std::size_t y = 11; y <= 30; ++y)
        {
            std::memset(aBlock.data() + 1064 + 40 * y + 6, static_cast<int>(y), 10);
        }
        return ClMovingInput(aBlock);
    }();
    return cInput;
}

const ClMovingInput& TwoFingers()
{
    static const ClMovingInput cInput(ClSlapPicture(SlapScenes::TwoFingers(3937)).Block());
    return cInput;
}

void Nothing(StWorld&) {}

void RunBefore(StWorld& c)
{
    EXPECT_EQ(0, c.Segment(OneObject(), 1));
    EXPECT_EQ(0, KSGetSegment(c.m_hSegmentation, 0, c.m_hSegment));
}

std::vector<StCall> PropertyCalls()
{
    const auto get = [](const char* szName)
    {
        return [=](StWorld& c)
        {
            c.m_nSize = sizeof c.m_szText;
            return KSGetPropertyA(c.m_hSegmentation, szName, c.m_szText, &c.m_nSize);
        };
    };
    const auto set = [](const char* szName, const char* szValue)
    { return [=](StWorld& c) { return KSSetPropertyA(c.m_hSegmentation, szName, szValue); }; };
    static const std::string sRefused(255, 'a');
    static const std::string sLong(3000, 'b');
    return {
        {"text of the version", Nothing, get("Version"), eBothHandles},
        {"text of a number", Nothing, get("SegmentationMode"), eBothHandles},
        {"text of a number by a handle that was used", RunBefore, get("Count"), eBothHandles},
        {"text of an unknown name", Nothing, get("Colour"), eBothHandles},
        {"text of a name of 255 characters", Nothing, get(sRefused.c_str()), eBothHandles},
        {"text of a longer name", Nothing, get(sLong.c_str()), eBothHandles},
        {"text of a null name", Nothing, get(nullptr), eBothHandles},
        {"text set", Nothing, set("SegmentationMode", "1"), eBothHandles},
        {"text set that is no number", Nothing, set("SegmentationMode", sLong.c_str()), eBothHandles},
        {"text set to null", Nothing, set("SegmentationMode", nullptr), eBothHandles},
        {"text set out of range", Nothing, set("CoordinateOrigin", "7"), eBothHandles},
        {"text set of what is read only", Nothing, set("Count", "7"), eBothHandles},
        {"number", Nothing,
         [](StWorld& c) { return KSGetPropertyLongA(c.m_hSegmentation, "CoordinateOrigin", &c.m_nValue); },
         eBothHandles},
        {"number of a segment", RunBefore,
         [](StWorld& c) { return KSGetPropertyLongA(c.m_hSegment, "Height", &c.m_nValue); }, eBothHandles},
        {"number of a text", Nothing,
         [](StWorld& c) { return KSGetPropertyLongA(c.m_hSegment, "Version", &c.m_nValue); }, eBothHandles},
        {"number set", Nothing, [](StWorld& c) { return KSSetPropertyLongA(c.m_hSegmentation, "CoordinateOrigin", 1); },
         eBothHandles},
        {"number set out of range", Nothing,
         [](StWorld& c) { return KSSetPropertyLongA(c.m_hSegmentation, "SegmentationMode", 2); }, eBothHandles},
        {"number set of what is read only", Nothing,
         [](StWorld& c) { return KSSetPropertyLongA(c.m_hSegment, "x", 2); }, eBothHandles},
        {"fraction of a whole number", Nothing,
         [](StWorld& c) { return KSGetPropertyDoubleA(c.m_hSegmentation, "Count", &c.m_dValue); }, eBothHandles},
        {"fraction set of a whole number", Nothing,
         [](StWorld& c) { return KSSetPropertyDoubleA(c.m_hSegmentation, "SegmentationMode", 1e300); }, eBothHandles},
        {"property of no handle", Nothing, [](StWorld& c) { return KSGetPropertyLongA(nullptr, "x", &c.m_nValue); },
         eBothHandles},
        {"property of something else", Nothing,
         [](StWorld& c) { return KSGetPropertyLongA(c.m_szText, "x", &c.m_nValue); }, eBothHandles},
    };
}

std::vector<StCall> SegmentCalls()
{
    static const ClMovingInput cColour(PackedBitmap(40, 50, 24));
    static const ClMovingInput cTwoColours(PackedBitmap(40, 50, 1));
    static const ClGuardedVector aSmall = PackedBitmap(20, 20, 8);
    static const ClMovingInput cSmall(aSmall);
    static const ClMovingInput cCut(ClGuardedVector(aSmall.begin(), aSmall.end() - 1));
    const auto segment = [](const ClMovingInput& cInput, long nMode)
    { return [&cInput, nMode](StWorld& c) { return c.Segment(cInput, nMode); }; };
    const auto getSegment = [](int nIndex)
    { return [nIndex](StWorld& c) { return KSGetSegment(c.m_hSegmentation, nIndex, c.m_hSegment); }; };
    const auto getBitmap = [](unsigned long nSize)
    {
        return [nSize](StWorld& c)
        {
            c.m_nSize = nSize;
            c.m_aBitmap.resize(20000);
            return KSGetBitmap(c.m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(c.m_aBitmap.data()), &c.m_nSize);
        };
    };
    const auto room = [](StWorld& c)
    {
        RunBefore(c);
        c.m_aBitmap.resize(20000);
    };
    return {
        {"three planes", RunBefore, segment(cColour, 1), eNothing},
        {"depth of one bit", RunBefore, segment(cTwoColours, 0), eNothing},
        {"too small for fingers", RunBefore, segment(cSmall, 0), eNothing},
        {"no bitmap", RunBefore, [](StWorld& c) { return KSSegmentBitmap(c.m_hSegmentation, nullptr, 7); },
         eBothHandles},
        {"block that is cut off", RunBefore, segment(cCut, 1), eNothing},
        {"segment to an empty handle", [](StWorld& c) { EXPECT_EQ(0, c.Segment(OneObject(), 1)); }, getSegment(0),
         eSegmentationHandle},
        {"segment to a handle that was used", RunBefore, getSegment(0), eSegmentationHandle},
        {"segment that is not there", RunBefore, getSegment(1), eBothHandles},
        {"segment to no handle", RunBefore, [](StWorld& c) { return KSGetSegment(c.m_hSegmentation, 0, nullptr); },
         eBothHandles},
        {"bitmap", room, getBitmap(20000), eBothHandles},
        {"bitmap for too small a block", room, getBitmap(1000), eBothHandles},
        {"bitmap of an empty handle", [](StWorld& c) { c.m_aBitmap.resize(20000); }, getBitmap(1000), eBothHandles},
        {"version", Nothing,
         [](StWorld& c)
         {
             c.m_nSize = sizeof c.m_szText;
             return KSGetVersionA(c.m_szText, &c.m_nSize);
         },
         eBothHandles},
        {"version for too small a text", Nothing,
         [](StWorld& c)
         {
             c.m_nSize = 3;
             return KSGetVersionA(c.m_szText, &c.m_nSize);
         },
         eBothHandles},
        {"description of an error", Nothing,
         [](StWorld& c)
         {
             std::strncpy(c.m_szText, KSGetErrorDescriptionA(-42), sizeof c.m_szText - 1);
             return 0L;
         },
         eBothHandles},
    };
}

/// Switches the log on, and lets its lines go nowhere, until it ends.
class ClLogToNowhere
{
public:
    ClLogToNowhere() : m_nOutput(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        const int nNowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        EXPECT_LE(0, dup2(nNowhere, STDOUT_FILENO));
        close(nNowhere);
        ClKormelinSegmentation::m_oFallbackLogger.m_bEnabled = true;
    }
    ClLogToNowhere(const ClLogToNowhere&) = delete;
    ClLogToNowhere& operator=(const ClLogToNowhere&) = delete;
    ~ClLogToNowhere()
    {
        ClKormelinSegmentation::m_oFallbackLogger.m_bEnabled = false;
        std::fflush(stdout);
        dup2(m_nOutput, STDOUT_FILENO);
        close(m_nOutput);
    }

private:
    int m_nOutput;
};

class OutOfMemory : public testing::Test
{
protected:
    void TearDown() override { RecordProperty("AllocationFailures", std::to_string(m_nFailures)); }

    void FailEveryAllocationOf(const std::vector<StCall>& aCalls)
    {
        for (const StCall& cCall : aCalls)
        {
            m_nFailures += ::FailEveryAllocationOf(cCall);
        }
    }

    long m_nFailures = 0; ///< calls of this test that met one
};
} // namespace

TEST_F(OutOfMemory, InitializeGivesItsReferenceBack)
{
    struct StCase
    {
        long Call()
        {
            const long nResult = KSInitialize(nullptr);
            m_nReferences += nResult == 0 ? 1 : 0;
            return nResult;
        }
        long See()
        {
            void* hHandle = nullptr;
            EXPECT_EQ(m_nReferences > 0 ? 0 : -2, KSCreateSegmentHandle(&hHandle));
            EXPECT_EQ(m_nReferences > 0 ? 0 : -42, KSDestroyHandle(&hHandle));
            return m_nReferences;
        }
        bool Kept() { return m_nReferences == 0; }
        ~StCase()
        {
            for (; m_nReferences > 0; --m_nReferences)
            {
                EXPECT_EQ(0, KSUninitialize());
            }
            EXPECT_EQ(-2, KSUninitialize());
        }
        long m_nReferences = 0;
    };
    m_nFailures = FailEveryAllocation(EUnderFailure::eReturns, [] { return StCase(); });
    EXPECT_LT(0, m_nFailures);
}

TEST_F(OutOfMemory, UninitializeTooOftenChangesNothing)
{
    struct StCase
    {
        long Call() { return KSUninitialize(); }
        long See() { return 0; }
        bool Kept()
        {
            void* hHandle = nullptr;
            return KSCreateSegmentHandle(&hHandle) == -2;
        }
    };
    m_nFailures = FailEveryAllocation(EUnderFailure::eReturns, [] { return StCase(); });
    EXPECT_EQ(ClFailingHeap::KnowsMalloc(), m_nFailures > 0); // the room of an exception comes from malloc
}

// A release must not fail: nobody could do anything about it.
TEST_F(OutOfMemory, ReleasingNeedsNoMemory)
{
    for (const bool bLog : {false, true})
    {
        std::unique_ptr<ClLogToNowhere> pLog;
        if (bLog)
        {
            pLog = std::make_unique<ClLogToNowhere>();
        }
        StWorld c;
        RunBefore(c); // the first line of a log makes room for all
        EXPECT_EQ(0, c.Segment(TwoFingers(), 0));
        long anResult[3];
        long nFailed = 0;
        {
            const ClFailingHeap cHeap(0, ClFailingHeap::eAllFromThere);
            anResult[0] = KSDestroyHandle(&c.m_hSegmentation);
            anResult[1] = KSDestroyHandle(&c.m_hSegment);
            anResult[2] = KSUninitialize();
            nFailed = cHeap.Failed();
        }
        for (const long nResult : anResult)
        {
            EXPECT_EQ(0, nResult);
        }
        EXPECT_EQ(0, nFailed);
        EXPECT_EQ(0, KSInitialize(nullptr));
        EXPECT_EQ(0, KSCreateSegmentationHandle(&c.m_hSegmentation));
        EXPECT_EQ(0, KSCreateSegmentHandle(&c.m_hSegment));
    }
}

TEST_F(OutOfMemory, CreateLeavesNull)
{
    class ClCase
    {
    public:
        ClCase(long (*pfnCreate)(void**), bool bInitialize) : m_pfnCreate(pfnCreate), m_bInitialize(bInitialize)
        {
            EXPECT_EQ(0, m_bInitialize ? KSInitialize(nullptr) : 0);
        }
        ~ClCase()
        {
            EXPECT_EQ(m_hHandle == Start() ? -43 : 0, m_hHandle == nullptr ? 0 : KSDestroyHandle(&m_hHandle));
            EXPECT_EQ(0, m_bInitialize ? KSUninitialize() : 0);
        }
        long Call()
        {
            m_hHandle = Start();
            return m_pfnCreate(&m_hHandle);
        }
        long See()
        {
            unsigned long nSize = 64;
            char szVersion[64];
            return m_bInitialize && m_hHandle != nullptr ? KSGetPropertyA(m_hHandle, "Version", szVersion, &nSize) : -1;
        }
        bool Kept() { return m_hHandle == (m_bInitialize ? nullptr : Start()); }

    private:
        void* Start() { return m_aStart; }

        long (*m_pfnCreate)(void**);
        bool m_bInitialize;
        char m_aStart[64] = {}; // an address of the caller, and no handle
        void* m_hHandle = Start();
    };
    for (const auto pfnCreate : {KSCreateSegmentationHandle, KSCreateSegmentHandle})
    {
        for (const bool bInitialized : {true, false})
        {
            m_nFailures +=
                FailEveryAllocation(EUnderFailure::eReturns, [&] { return ClCase(pfnCreate, bInitialized); });
        }
    }
    EXPECT_LT(ClFailingHeap::KnowsMalloc() ? 20 : 10, m_nFailures);
}

TEST_F(OutOfMemory, DestroyingWhatIsNoHandleLeavesIt)
{
    static char aNoHandle[64] = {};
    FailEveryAllocationOf({{"null variable", Nothing,
                            [](StWorld&)
                            {
                                void* hNone = nullptr;
                                return KSDestroyHandle(&hNone);
                            },
                            eBothHandles},
                           {"null reference", Nothing, [](StWorld&) { return KSDestroyHandle(nullptr); }, eBothHandles},
                           {"something else", Nothing,
                            [](StWorld&)
                            {
                                void* hNone = aNoHandle;
                                const long nResult = KSDestroyHandle(&hNone);
                                EXPECT_EQ(aNoHandle, hNone);
                                return nResult;
                            },
                            eBothHandles}});
}

TEST_F(OutOfMemory, PropertiesStayAndAnswerTheNextCall)
{
    FailEveryAllocationOf(PropertyCalls());
    EXPECT_LT(500, m_nFailures);
}

TEST_F(OutOfMemory, CallsAboutSegmentsCanBeRepeated)
{
    FailEveryAllocationOf(SegmentCalls());
    EXPECT_LT(100, m_nFailures);
}

TEST_F(OutOfMemory, TheSameWithTheLogOn)
{
    const ClLogToNowhere cLog;
    FailEveryAllocationOf(PropertyCalls());
    FailEveryAllocationOf(SegmentCalls());
    EXPECT_LT(600, m_nFailures);
}

TEST_F(OutOfMemory, CuttingTheBiggestObjectCanBeRepeated)
{
    for (const ClMovingInput* pInput : {&OneObject(), &TwoFingers()})
    {
        const auto run = [pInput](StWorld& c) { return c.Segment(*pInput, 1); };
        FailEveryAllocationOf(
            {{"first run", Nothing, run, eNothing},
             {"after fingers", [](StWorld& c) { EXPECT_EQ(0, c.Segment(TwoFingers(), 0)); }, run, eNothing}});
    }
    EXPECT_LT(150, m_nFailures);
}

TEST_F(OutOfMemory, CuttingFingersCanBeRepeated)
{
    unsigned long nScene = 0;
    for (const SlapScenes::ClNamedScene& cScene : SlapScenes::All())
    {
        if (!ClFailingHeap::KnowsMalloc() && nScene++ % 4 != 0)
        {
            continue; // the sanitizers take ten times as long
        }
        const ClMovingInput cInput(ClSlapPicture(cScene.m_pMake(3937)).Block());
        FailEveryAllocationOf(
            {{cScene.m_szName, RunBefore, [&](StWorld& c) { return c.Segment(cInput, 0); }, eNothing}});
    }
    EXPECT_LE(ClFailingHeap::KnowsMalloc() ? 5000 : 1000, m_nFailures);
}

// Reduced to the working resolution on the way.
TEST_F(OutOfMemory, CuttingFingersOfALargerPictureCanBeRepeated)
{
    const ClMovingInput cInput(ClSlapPicture(SlapScenes::LeaningPair(0.4, 5000)).Block());
    FailEveryAllocationOf({{"first run", Nothing, [&](StWorld& c) { return c.Segment(cInput, 0); }, eNothing}});
    EXPECT_LT(300, m_nFailures);
}
