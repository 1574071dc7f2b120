#pragma once

// The exported functions on blocks at guard pages, in both modes.

#include "ReadOnlySegment.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

/// A segmentation handle of one mode and a segment handle.
class ClModeHandle
{
public:
    static constexpr long nFingers = 0; ///< values of "SegmentationMode"
    static constexpr long nBiggestObject = 1;

    explicit ClModeHandle(long nMode)
    {
        EXPECT_EQ(FPC_SUCCESS, KSInitialize(nullptr));
        EXPECT_EQ(FPC_SUCCESS, KSCreateSegmentationHandle(&m_hSegmentation));
        EXPECT_EQ(FPC_SUCCESS, KSCreateSegmentHandle(&m_hSegment));
        EXPECT_EQ(FPC_SUCCESS, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", nMode));
    }
    ClModeHandle(const ClModeHandle&) = delete;
    ClModeHandle& operator=(const ClModeHandle&) = delete;
    ~ClModeHandle()
    {
        EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&m_hSegment));
        EXPECT_EQ(FPC_SUCCESS, KSDestroyHandle(&m_hSegmentation));
        EXPECT_EQ(FPC_SUCCESS, KSUninitialize());
    }

    /// The code of a run on a block of which nSize bytes are told of.
    long Segment(const ClReadOnlyBytes& cInput, unsigned long nSize)
    {
        return SegmentReadOnly(m_hSegmentation, cInput, nSize);
    }
    long Segment(const ClReadOnlyBytes& cInput) { return Segment(cInput, cInput.Size()); }
    /// The same on a copy that is gone afterwards.
    template <class Bytes_t> long SegmentCopy(const Bytes_t& aBytes, EGuard eGuard = EGuard::eBehind)
    {
        return Segment(ClReadOnlyBytes(aBytes, eGuard));
    }
    /// The same on no block, or on one that is no memory.
    long SegmentAddress(const unsigned char* pBytes, unsigned long nSize)
    {
        return KSSegmentBitmap(m_hSegmentation, reinterpret_cast<const tagBITMAPINFOHEADER*>(pBytes), nSize);
    }

    long Count() { return Property(m_hSegmentation, "Count"); }
    /// The code of KSGetSegment.
    long Fill(int nIndex) { return KSGetSegment(m_hSegmentation, nIndex, m_hSegment); }
    /// "x", "y", "Width" and "Height" of the segment filled last.
    std::vector<long> Rectangle()
    {
        return {Property(m_hSegment, "x"), Property(m_hSegment, "y"), Property(m_hSegment, "Width"),
                Property(m_hSegment, "Height")};
    }
    /// The bitmap of the segment filled last.
    ClGuardedVector Bitmap()
    {
        unsigned long nSize = 0;
        EXPECT_EQ(FPC_ERROR_TEMPLATE_SIZE, KSGetBitmap(m_hSegment, nullptr, &nSize));
        ClGuardedVector aBytes(nSize);
        EXPECT_EQ(FPC_SUCCESS, KSGetBitmap(m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBytes.data()), &nSize));
        return aBytes;
    }

    /// All segments, in order.
    using Segments_t = std::vector<std::pair<std::vector<long>, ClGuardedVector>>;
    Segments_t Segments()
    {
        Segments_t aSegments;
        for (int i = 0; Fill(i) == FPC_SUCCESS; ++i)
        {
            aSegments.emplace_back(Rectangle(), Bitmap());
        }
        return aSegments;
    }

private:
    static long Property(void* handle, const char* szName)
    {
        long nValue = -77;
        EXPECT_EQ(FPC_SUCCESS, KSGetPropertyLongA(handle, szName, &nValue));
        return nValue;
    }

    void* m_hSegmentation = nullptr;
    void* m_hSegment = nullptr;
};
