#pragma once

#include "KormelinSegmentation.hpp"
#include "ReadOnlySegment.hpp"
#include "TestTools.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

using Block = ClGuardedVector;

inline const tagBITMAPINFOHEADER* Header(const Block& aBlock)
{
    return reinterpret_cast<const tagBITMAPINFOHEADER*>(aBlock.data());
}

/// The code of a run on a copy that is gone afterwards, the same at a guard page and at an odd address.
inline long Segment(void* hSegmentation, const Block& aBlock)
{
    const long nCode = SegmentReadOnly(hSegmentation, ClReadOnlyBytes(aBlock, EGuard::eOdd));
    EXPECT_EQ(nCode, SegmentReadOnly(hSegmentation, ClReadOnlyBytes(aBlock)));
    return nCode;
}

/// A white picture of 40 by 50 pixels with a dark rectangle: left 6, bottom 11, width 9, height 19.
inline Block OneObject()
{
    Block aBlock = PackedBitmap(40, 50, 8);
    std::memset(aBlock.data() + 1064, 255, aBlock.size() - 1064);
    for (std::size_t y = 11; y <= 30; ++y)
    {
        std::memset(aBlock.data() + 1064 + 40 * y + 6, static_cast<int>(y), 10);
    }
    return aBlock;
}

/// An initialised library with a handle of each kind.
class VelmarinKormelinSegmentation : public testing::Test
{
protected:
    VelmarinKormelinSegmentation()
    {
        EXPECT_EQ(0, KSInitialize(nullptr));
        EXPECT_EQ(0, KSCreateSegmentationHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSCreateSegmentHandle(&m_hSegment));
    }
    ~VelmarinKormelinSegmentation() override
    {
        for (void** phHandle : {&m_hSegmentation, &m_hSegment})
        {
            const long nExpected = *phHandle != nullptr ? 0 : -42;
            EXPECT_EQ(nExpected, KSDestroyHandle(phHandle));
        }
        while (KSUninitialize() == FPC_SUCCESS)
        {
        }
    }

    void SetLong(const char* szName, long nValue) { EXPECT_EQ(0, KSSetPropertyLongA(m_hSegmentation, szName, nValue)); }
    static long Long(void* handle, const char* szName)
    {
        long nValue = -77;
        EXPECT_EQ(0, KSGetPropertyLongA(handle, szName, &nValue)) << szName;
        return nValue;
    }

    void* m_hSegmentation = nullptr;
    void* m_hSegment = nullptr;
};

/// What a call writes while the log is on, without the time: "[Level] - message" lines.
template <class Call> std::string Logged(int nLevel, Call&& call)
{
    auto& cSwitch = ClKormelinSegmentation::m_oFallbackLogger;
    auto& cConsole = TpLogging<TpLoggingConsole<ClLoggingNone>>::m_oFallbackLogger;
    const bool bEnabled = cSwitch.m_bEnabled;
    const int nLevelBefore = cConsole.m_nLevel;
    cSwitch.m_bEnabled = true;
    cConsole.m_nLevel = nLevel;
    testing::internal::CaptureStdout();
    call();
    std::string sLeft = testing::internal::GetCapturedStdout();
    cSwitch.m_bEnabled = bEnabled;
    cConsole.m_nLevel = nLevelBefore;
    std::string sLines;
    for (std::size_t nEnd; (nEnd = sLeft.find('\n')) != std::string::npos; sLeft.erase(0, nEnd + 1))
    {
        const std::size_t nBegin = sLeft.find('[');
        sLines += sLeft.substr(nBegin, nEnd + 1 - nBegin);
    }
    return sLines + sLeft;
}
