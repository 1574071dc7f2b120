// A block of bytes as a bitmap, with its size, through both modes and on to every segment and its bitmap.

#include "ByteSource.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <cstring>
#include <memory>
#include <vector>

namespace
{
/// Whatever a segment handle was filled with can be had, and a bitmap never writes behind the size that it asked for.
void ReadSegment(void* hSegment)
{
    long nValue = 0;
    for (const char* szName : {"x", "y", "Width", "Height", "FingerPosition"})
        Promise(KSGetPropertyLongA(hSegment, szName, &nValue) == FPC_SUCCESS, "a property of a segment");
    unsigned long nSize = 0;
    Promise(KSGetBitmap(hSegment, nullptr, &nSize) == FPC_ERROR_TEMPLATE_SIZE && nSize > 40, "the size of a bitmap");
    const std::unique_ptr<unsigned char[]> pBitmap(new unsigned char[nSize]); // exactly: the sanitizer guards its end
    Promise(KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(pBitmap.get()), &nSize) == FPC_SUCCESS,
            "the bitmap of a segment");
}

void Run(void* hRun, const unsigned char* pBlock, std::size_t nSize)
{
    const long nResult = KSSegmentBitmap(hRun, reinterpret_cast<const tagBITMAPINFOHEADER*>(pBlock), nSize);
    Promise(nResult <= FPC_SUCCESS && nResult > -1000, "a code of the catalogue");
    if (nResult != FPC_SUCCESS) return;
    long nCount = 0;
    Promise(KSGetPropertyLongA(hRun, "Count", &nCount) == FPC_SUCCESS && nCount >= 0 && nCount <= 2, "at most two");
    void* hSegment = nullptr;
    Promise(KSCreateSegmentHandle(&hSegment) == FPC_SUCCESS, "a segment handle");
    for (int i = 0; i < nCount; ++i)
        if (KSGetSegment(hRun, i, hSegment) == FPC_SUCCESS) ReadSegment(hSegment);
    Promise(KSGetSegment(hRun, static_cast<int>(nCount), hSegment) == FPC_ERROR_PARAM_OUT_OF_RANGE, "no more segments");
    KSDestroyHandle(&hSegment);
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    if (nSize == 0) return 0; // the size 0 means that the caller vouches for the header
    // A block of its own, exactly as large, at every alignment.
    const std::size_t nOffset = pData[nSize - 1] % 4;
    const std::unique_ptr<unsigned char[]> pBlock(new unsigned char[nSize + nOffset]);
    std::memcpy(pBlock.get() + nOffset, pData, nSize);

    Promise(KSInitialize(nullptr) == FPC_SUCCESS, "initialisation");
    void* hRun = nullptr;
    Promise(KSCreateSegmentationHandle(&hRun) == FPC_SUCCESS, "a segmentation handle");
    for (const long nMode : {0L, 1L, 0L})
    {
        KSSetPropertyLongA(hRun, "SegmentationMode", nMode);
        KSSetPropertyLongA(hRun, "CoordinateOrigin", nMode);
        Run(hRun, pBlock.get() + nOffset, nSize);
    }
    Promise(std::memcmp(pBlock.get() + nOffset, pData, nSize) == 0, "the input is never written to");
    Promise(KSDestroyHandle(&hRun) == FPC_SUCCESS && hRun == nullptr, "a handle is destroyed");
    KSUninitialize();
    return 0;
}
