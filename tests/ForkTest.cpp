// A process that goes on with the library after fork, with handles from before and with new ones.

#include "GuardedSlapRunner.hpp"
#include "LibraryFixture.hpp"
#include "SlapPicture.hpp"

#include <climits>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
const std::vector<unsigned char>& Picture()
{
    static const std::vector<unsigned char> aBlock = ClSlapPicture(SlapScenes::TwoFingers(3937)).Block();
    return aBlock;
}

/// Runs fnChild in a child process; whether it returned true there.
bool HoldsInAChild(const std::function<bool()>& fnChild)
{
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        _exit(fnChild() ? 0 : 1);
    }
    int nStatus = -1;
    return nChild > 0 && waitpid(nChild, &nStatus, 0) == nChild && WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
}

/// Runs on the same blocks in parent and child.
bool Segments(void* hSegmentation)
{
    static const ClMovingInput cInput(Picture());
    return SegmentReadOnly(hSegmentation, cInput.Place(0)) == 0 && SegmentReadOnly(hSegmentation, cInput.Place(1)) == 0;
}

/// The bitmap of a segment; empty if a call fails.
Block BitmapOf(void* hSegmentation, int nIndex, void* hSegment)
{
    unsigned long nSize = ULONG_MAX;
    if (KSGetSegment(hSegmentation, nIndex, hSegment) != 0 || KSGetBitmap(hSegment, nullptr, &nSize) != 0)
    {
        return {};
    }
    Block aBitmap(nSize);
    return KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize) == 0 ? aBitmap
                                                                                                      : Block();
}

/// Its handles have been used.
class Fork : public VelmarinKormelinSegmentation
{
protected:
    Fork()
    {
        EXPECT_TRUE(Segments(m_hSegmentation));
        m_aExpected[0] = BitmapOf(m_hSegmentation, 0, m_hSegment);
        m_aExpected[1] = BitmapOf(m_hSegmentation, 1, m_hSegment);
        EXPECT_FALSE(m_aExpected[0].empty());
    }
    ~Fork() override
    {
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegmentation));
        EXPECT_EQ(0, KSDestroyHandle(&m_hSegment));
        EXPECT_EQ(0, KSUninitialize());
    }

    bool GivesTheBits(void* hSegmentation, void* hSegment) const
    {
        return BitmapOf(hSegmentation, 0, hSegment) == m_aExpected[0] &&
               BitmapOf(hSegmentation, 1, hSegment) == m_aExpected[1];
    }

    /// All of it with new handles, to the last release.
    bool NewHandlesGiveTheBits() const
    {
        void* ahHandle[2] = {};
        return KSInitialize(nullptr) == 0 && KSCreateSegmentationHandle(&ahHandle[0]) == 0 &&
               KSCreateSegmentHandle(&ahHandle[1]) == 0 && Segments(ahHandle[0]) &&
               GivesTheBits(ahHandle[0], ahHandle[1]) && KSDestroyHandle(&ahHandle[0]) == 0 &&
               KSDestroyHandle(&ahHandle[1]) == 0 && KSUninitialize() == 0;
    }

    Block m_aExpected[2];
};
} // namespace

TEST_F(Fork, ResultsFromBeforeStayInTheChild)
{
    EXPECT_TRUE(HoldsInAChild([this] { return GivesTheBits(m_hSegmentation, m_hSegment); }));
}

TEST_F(Fork, HandlesFromBeforeRunInTheChild)
{
    EXPECT_TRUE(HoldsInAChild(
        [this]
        {
            long nCount = 0;
            return Segments(m_hSegmentation) && KSGetPropertyLongA(m_hSegmentation, "Count", &nCount) == 0 &&
                   nCount == 2 && GivesTheBits(m_hSegmentation, m_hSegment) && Segments(m_hSegmentation);
        }));
}

TEST_F(Fork, HandlesMadeInTheChildGiveTheSameBits)
{
    EXPECT_TRUE(HoldsInAChild([this] { return NewHandlesGiveTheBits(); }));
}

TEST_F(Fork, TheChildHasReferencesOfItsOwn)
{
    EXPECT_TRUE(HoldsInAChild(
        [this]
        {
            void* hSegment = nullptr;
            return KSUninitialize() == 0 && KSUninitialize() == -2 && KSCreateSegmentHandle(&hSegment) == -2 &&
                   GivesTheBits(m_hSegmentation, m_hSegment) && KSDestroyHandle(&m_hSegmentation) == 0 &&
                   KSDestroyHandle(&m_hSegment) == 0 && NewHandlesGiveTheBits();
        }));
    // The parent's stand as they were.
    EXPECT_TRUE(GivesTheBits(m_hSegmentation, m_hSegment));
    EXPECT_TRUE(NewHandlesGiveTheBits());
}

TEST_F(Fork, SoDoesTheChildOfAChildAndTheParentAfterwards)
{
    EXPECT_TRUE(HoldsInAChild(
        [this]
        {
            return Segments(m_hSegmentation) &&
                   HoldsInAChild([this] { return Segments(m_hSegmentation) && NewHandlesGiveTheBits(); }) &&
                   GivesTheBits(m_hSegmentation, m_hSegment);
        }));
    EXPECT_TRUE(Segments(m_hSegmentation));
    EXPECT_TRUE(GivesTheBits(m_hSegmentation, m_hSegment));
}

// The first call of the library is made in the child alone.
TEST(ForkBeforeTheFirstCall, ChildrenGiveTheSameBits)
{
    const auto work = []
    {
        const ClSlapRunResult cFirst = ClGuardedSlapRunner(0).Run(Picture());
        return cFirst.m_nCount == 2 && cFirst == ClGuardedSlapRunner(0).Run(Picture());
    };
    EXPECT_TRUE(HoldsInAChild(work));
    EXPECT_TRUE(HoldsInAChild(work));
    EXPECT_TRUE(work());
}
