// What the exported functions answer when their allocations fail.

#include "FailingHeap.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <climits>
#include <cstring>
#include <functional>
#include <vector>

namespace
{
using Block = std::vector<unsigned char>;

/// Calls with a heap that is empty at once, then with one that grants one allocation, then two, and so on, until the
/// call succeeds. Before that it answers -102 each time, and right afterwards, with memory again, 0. fnReset makes the
/// call allocate anew. Late allocations are sampled: the n-th is followed by the one n / nSampling later.
void ExhaustHeap(const std::function<long()>& fnCall, long nSampling, const std::function<void()>& fnReset)
{
    long nResult = -1;
    for (long n = 0; nResult != 0 && !testing::Test::HasFailure(); n += 1 + n / nSampling)
    {
        {
            const ClFailingHeap cHeap(n);
            nResult = fnCall();
        }
        EXPECT_TRUE(nResult == -102 || (nResult == 0 && n > 0)) << nResult << " after " << n << " allocations";
        if (nResult != 0)
        {
            EXPECT_EQ(0, fnCall()) << "after " << n << " allocations";
        }
        fnReset();
    }
}

constexpr long nAll = LONG_MAX;

/// An initialised library with a handle of each kind.
class OutOfMemory : public testing::Test
{
protected:
    OutOfMemory()
    {
        EXPECT_EQ(0, KSInitialize(nullptr));
        EXPECT_EQ(0, KSCreateSegmentationHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSCreateSegmentHandle(&m_hSegment));
    }
    ~OutOfMemory() override
    {
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegment));
        EXPECT_EQ(0, KSUninitialize());
    }

    long Segment(const Block& aBlock)
    {
        return KSSegmentBitmap(m_hSegmentation, reinterpret_cast<const tagBITMAPINFOHEADER*>(aBlock.data()),
                               aBlock.size());
    }

    /// A new segmentation handle, so that nothing is allocated yet.
    void Renew()
    {
        KSDestroyHandle(&m_hSegmentation);
        EXPECT_EQ(0, KSCreateSegmentationHandle(&m_hSegmentation));
    }

    Block BitmapOf(int nIndex)
    {
        EXPECT_EQ(0, KSGetSegment(m_hSegmentation, nIndex, m_hSegment));
        unsigned long nSize = ULONG_MAX;
        EXPECT_EQ(0, KSGetBitmap(m_hSegment, nullptr, &nSize));
        Block aBitmap(nSize);
        EXPECT_EQ(0, KSGetBitmap(m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
        return aBitmap;
    }

    void* m_hSegmentation = nullptr;
    void* m_hSegment = nullptr;
};

Block OneObject()
{
    Block aBlock = PackedBitmap(40, 50, 8);
    std::memset(aBlock.data() + 1064, 255, aBlock.size() - 1064);
    for (std::size_t y = 11; y <= 30; ++y)
    {
        std::memset(aBlock.data() + 1064 + 40 * y + 6, static_cast<int>(y), 10);
    }
    return aBlock;
}
} // namespace

TEST(OutOfMemoryOfLibrary, InitializeGivesItsReferenceBack)
{
    ExhaustHeap([] { return KSInitialize(nullptr); }, nAll,
                []
                {
                    EXPECT_EQ(0, KSUninitialize());
                    EXPECT_EQ(-2, KSUninitialize());
                });
}

TEST_F(OutOfMemory, CreateLeavesNull)
{
    for (const auto pfnCreate : {KSCreateSegmentationHandle, KSCreateSegmentHandle})
    {
        void* hHandle = nullptr;
        ExhaustHeap(
            [&]
            {
                hHandle = &hHandle;
                const long nResult = pfnCreate(&hHandle);
                EXPECT_EQ(nResult != 0, hHandle == nullptr);
                return nResult;
            },
            nAll, [&hHandle] { EXPECT_EQ(0, KSDestroyHandle(&hHandle)); });
    }
}

TEST_F(OutOfMemory, PropertiesAreBuiltByTheNextCall)
{
    ExhaustHeap(
        [&]
        {
            long nValue = -77;
            const long nResult = KSGetPropertyLongA(m_hSegmentation, "SegmentationMode", &nValue);
            EXPECT_EQ(nResult == 0 ? 0 : -77, nValue);
            return nResult;
        },
        nAll, [&] { Renew(); });
}

TEST_F(OutOfMemory, CuttingTheBiggestObjectCanBeRepeated)
{
    const Block aBlock = OneObject();
    EXPECT_EQ(0, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", 1));
    EXPECT_EQ(0, Segment(aBlock));
    const Block aExpected = BitmapOf(0);
    ExhaustHeap([&] { return Segment(aBlock); }, nAll,
                [&]
                {
                    EXPECT_EQ(aExpected, BitmapOf(0));
                    Renew();
                    EXPECT_EQ(0, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", 1));
                });
}

TEST_F(OutOfMemory, CuttingFingersCanBeRepeated)
{
    const Block aBlock = ClSlapPicture(SlapScenes::TwoFingers(3937)).Block();
    EXPECT_EQ(0, Segment(aBlock));
    const Block aExpected = BitmapOf(1);
    ExhaustHeap([&] { return Segment(aBlock); }, 6, [&] { EXPECT_EQ(aExpected, BitmapOf(1)); });
}

TEST_F(OutOfMemory, GettingASegmentCanBeRepeated)
{
    EXPECT_EQ(0, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", 1));
    EXPECT_EQ(0, Segment(OneObject()));
    const Block aExpected = BitmapOf(0);
    ExhaustHeap([&] { return KSGetSegment(m_hSegmentation, 0, m_hSegment); }, nAll,
                [&] { EXPECT_EQ(aExpected, BitmapOf(0)); });
    unsigned long nSize = ULONG_MAX;
    Block aBitmap(aExpected.size());
    ExhaustHeap([&] { return KSGetBitmap(m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize); },
                nAll, [&] { EXPECT_EQ(aExpected, aBitmap); });
}
