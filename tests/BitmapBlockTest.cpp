// Blocks of every depth, every small width and every length, at guard pages: which code each is answered, by the plain
// rule of the layout of a bitmap, and what is cut out of those that are pictures.

#include "SegmentationModes.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace
{
constexpr long g_anModes[] = {ClModeHandle::nFingers, ClModeHandle::nBiggestObject};
constexpr int g_anDepths[] = {1, 4, 8, 16, 24, 32};

/// What the layout of a bitmap of nDepth bits makes of nSize bytes of it, none of them known to be missing for 0: the
/// code, or 0 where the picture itself decides.
long CodeOfLayout(int nWidth, int nHeight, int nDepth, int nCompression, std::size_t nSize)
{
    const std::size_t nTable = nDepth <= 8 ? std::size_t(4) << nDepth : nCompression == 3 ? 12 : 0;
    const auto nBits = static_cast<std::size_t>(nDepth) * static_cast<std::size_t>(nWidth);
    const std::size_t nPixels = (nBits + 31) / 32 * 4 * static_cast<std::size_t>(nHeight);
    if (nSize < 40)
    {
        return -21;
    }
    // Ending with the header or with the table is taken for not knowing the rest.
    const bool bEndsWithPart = nSize == 40 || nSize == 40 + nTable;
    if (!bEndsWithPart && nSize < 40 + nTable + nPixels)
    {
        return -21;
    }
    if (nCompression != 0 || nDepth == 24 || nDepth == 32)
    {
        return -11;
    }
    if (nDepth != 8)
    {
        return -12;
    }
    return nSize < 40 + nTable + nPixels ? -21 : 0;
}

void ExpectCodes(ClModeHandle& cHandle, long nExpected, const unsigned char* pBytes, std::size_t nSize)
{
    for (const EGuard eGuard : {EGuard::eBehind, EGuard::eBefore, EGuard::eOdd})
    {
        const ClReadOnlyBytes cBytes(pBytes, nSize, eGuard);
        ASSERT_EQ(nExpected, cHandle.Segment(cBytes, nSize)) << nSize << " bytes";
    }
}

TEST(BitmapBlock, CutOffAtAnyByteHasTheCodeOfWhatIsMissing)
{
    constexpr int nWidth = 21;
    constexpr int nHeight = 13;
    ClModeHandle acHandles[] = {ClModeHandle(g_anModes[0]), ClModeHandle(g_anModes[1])};
    for (const int nDepth : g_anDepths)
    {
        for (const int nCompression : {0, 1, 3})
        {
            SCOPED_TRACE(std::to_string(nDepth) + " bits, compression " + std::to_string(nCompression));
            const ClGuardedVector aBlock = PackedBitmap(nWidth, nHeight, nDepth, nCompression);
            const ClGuardedVector aFile = WithFileHeader(aBlock);
            const std::size_t nPixels =
                aBlock.size() - static_cast<std::size_t>((nDepth * nWidth + 31) / 32 * 4 * nHeight);
            for (std::size_t nSize = 1; nSize < aBlock.size(); nSize += nSize < nPixels + 8 ? 1 : 29)
            {
                const long nCode = CodeOfLayout(nWidth, nHeight, nDepth, nCompression, nSize);
                for (ClModeHandle& cHandle : acHandles)
                {
                    ASSERT_NO_FATAL_FAILURE(ExpectCodes(cHandle, nCode, aBlock.data(), nSize));
                    ASSERT_NO_FATAL_FAILURE(ExpectCodes(cHandle, nCode, aFile.data(), 14 + nSize));
                }
            }
            for (std::size_t nSize = 1; nSize <= 14; ++nSize)
            {
                ASSERT_NO_FATAL_FAILURE(ExpectCodes(acHandles[0], -10, aFile.data(), nSize));
            }
            if (nDepth != 8 || nCompression != 0)
            {
                const long nCode = CodeOfLayout(nWidth, nHeight, nDepth, nCompression, aBlock.size());
                ASSERT_NO_FATAL_FAILURE(ExpectCodes(acHandles[1], nCode, aBlock.data(), aBlock.size()));
                ASSERT_NO_FATAL_FAILURE(ExpectCodes(acHandles[1], nCode, aFile.data(), aFile.size()));
            }
        }
    }
}

/// The whole picture is one object: its cut is a column and a row smaller.
void ExpectBiggestObject(ClModeHandle& cHandle, const ClGuardedVector& aBlock, int nWidth, int nHeight)
{
    ASSERT_EQ(1, cHandle.Count());
    ASSERT_EQ(FPC_SUCCESS, cHandle.Fill(0));
    ASSERT_EQ((std::vector<long>{0, 0, nWidth - 1, nHeight - 1}), cHandle.Rectangle());
    const ClGuardedVector aBitmap = cHandle.Bitmap();
    const auto nInStride = static_cast<std::size_t>((nWidth + 3) / 4 * 4);
    const auto nOutStride = static_cast<std::size_t>((nWidth + 2) / 4 * 4);
    ASSERT_EQ(1064 + nOutStride * static_cast<std::size_t>(nHeight - 1), aBitmap.size());
    for (std::size_t y = 0; y + 1 < static_cast<std::size_t>(nHeight); ++y)
    {
        ASSERT_EQ(0, std::memcmp(aBlock.data() + 1064 + y * nInStride, aBitmap.data() + 1064 + y * nOutStride,
                                 static_cast<std::size_t>(nWidth - 1)));
    }
}

TEST(BitmapBlock, EveryWidthOfEveryDepthIsReadToItsLastByteAndNoFurther)
{
    ClModeHandle cFingers(ClModeHandle::nFingers);
    ClModeHandle cBiggest(ClModeHandle::nBiggestObject);
    for (int nWidth = 1; nWidth <= 40; ++nWidth)
    {
        for (const int nHeight : {1, 2, 7})
        {
            SCOPED_TRACE(std::to_string(nWidth) + " by " + std::to_string(nHeight));
            for (const int nDepth : g_anDepths)
            {
                ClGuardedVector aBlock = PackedBitmap(nWidth, nHeight, nDepth, 0, 0, static_cast<unsigned int>(nWidth));
                // Not white, and below, where there is more than one pixel, not uniform.
                const std::ptrdiff_t nPixels = (nDepth * nWidth + 31) / 32 * 4 * nHeight;
                std::for_each(aBlock.end() - nPixels, aBlock.end(),
                              [](unsigned char& n) { n = static_cast<unsigned char>(n % 200); });
                long nInFingers = CodeOfLayout(nWidth, nHeight, nDepth, 0, aBlock.size());
                long nInBiggest = nInFingers;
                if (nInFingers == 0)
                {
                    aBlock[1064] = 201; // differs from all others
                    nInFingers = nWidth * nHeight == 1 ? -15 : -14;
                    nInBiggest = nWidth == 1 || nHeight == 1 ? -35 : 0;
                }
                for (const ClGuardedVector& aBytes : {aBlock, WithFileHeader(aBlock)})
                {
                    ASSERT_NO_FATAL_FAILURE(ExpectCodes(cFingers, nInFingers, aBytes.data(), aBytes.size()));
                    ASSERT_NO_FATAL_FAILURE(ExpectCodes(cBiggest, nInBiggest, aBytes.data(), aBytes.size()));
                    if (nInBiggest == 0)
                    {
                        ASSERT_NO_FATAL_FAILURE(ExpectBiggestObject(cBiggest, aBlock, nWidth, nHeight));
                    }
                    // Without a size no byte behind the pixels is touched, either.
                    const ClReadOnlyBytes cUnknown(aBytes);
                    ASSERT_EQ(nInFingers, cFingers.Segment(cUnknown, 0));
                    ASSERT_EQ(nInBiggest, cBiggest.Segment(cUnknown, 0));
                }
            }
        }
    }
}

TEST(BitmapBlock, RowsFromTheTopDownAreRefusedWhateverTheSize)
{
    for (const int nDepth : g_anDepths)
    {
        for (const int nHeight : {-1, -13, INT_MIN})
        {
            ClGuardedVector aBlock = PackedBitmap(21, 13, nDepth);
            PutLong(aBlock.data(), 8, static_cast<std::uint32_t>(nHeight));
            const ClReadOnlyBytes cBytes(aBlock);
            for (const long nMode : g_anModes)
            {
                ClModeHandle cHandle(nMode);
                EXPECT_EQ(-21, cHandle.Segment(cBytes)) << nDepth;
                const long nUnknown = nDepth == 24 || nDepth == 32      ? -11
                                      : nDepth != 8                     ? -12
                                      : nMode == ClModeHandle::nFingers ? -15
                                                                        : -101;
                EXPECT_EQ(nUnknown, cHandle.Segment(cBytes, 0)) << nDepth << " bits, height " << nHeight;
            }
        }
    }
}
} // namespace
