// Properties of both kinds of handle, of any name, with any value, text and buffer size: every answer is compared with
// a model of the properties.

#include "Promise.hpp"
#include "PropertySteps.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <cstring>

namespace
{
constexpr int nSide = 8, nPixels = 40 + 4 * 256;

/// A picture with one object, which leaves a count and a rectangle that are not 0.
void FillHandles(void* hRun, StHandleModel& cRun, void* hSegment, StHandleModel& cSegment, ClByteSource& cBytes)
{
    unsigned char anBlock[nPixels + nSide * nSide];
    std::memset(anBlock, 255, sizeof anBlock);
    const tagBITMAPINFOHEADER cHeader = {40, nSide, nSide, 1, 8, 0, 0, 3937, 3937, 0, 0};
    std::memcpy(anBlock, &cHeader, sizeof cHeader);
    const int nX = cBytes.Between(0, 5), nY = cBytes.Between(0, 5);
    for (int y = nY; y < nSide; ++y) std::memset(anBlock + nPixels + nSide * y + nX, 0, 3);
    Promise(KSSetPropertyLongA(hRun, "SegmentationMode", 1) == FPC_SUCCESS, "the second mode");
    Promise(KSSegmentBitmap(hRun, reinterpret_cast<const tagBITMAPINFOHEADER*>(anBlock), sizeof anBlock) == FPC_SUCCESS,
            "one object");
    Promise(KSGetSegment(hRun, 0, hSegment) == FPC_SUCCESS, "one segment");
    cRun.m_nMode = 1;
    cRun.m_nCount = 1;
    cSegment.m_nX = nX;
    cSegment.m_nY = nY;
    cSegment.m_nWidth = 2;
    cSegment.m_nHeight = nSide - 1 - nY;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    Promise(KSInitialize(nullptr) == FPC_SUCCESS, "initialisation");
    void *hRun = nullptr, *hSegment = nullptr;
    Promise(KSCreateSegmentationHandle(&hRun) == FPC_SUCCESS, "a segmentation handle");
    Promise(KSCreateSegmentHandle(&hSegment) == FPC_SUCCESS, "a segment handle");
    StHandleModel cRun, cSegment;
    cRun.m_eKind = StHandleModel::eSegmentation;
    cSegment.m_eKind = StHandleModel::eSegment;
    if (cBytes.OneIn(2)) FillHandles(hRun, cRun, hSegment, cSegment, cBytes);
    for (int i = 0; i < 40 && !cBytes.IsEmpty(); ++i)
    {
        const unsigned nWhich = cBytes.Byte();
        void* const hHandle = nWhich % 2 == 0 ? hRun : hSegment;
        StHandleModel& cModel = nWhich % 2 == 0 ? cRun : cSegment;
        if (nWhich / 2 % 4 == 3)
            InnerPropertyStep(hHandle, cModel, cBytes);
        else
            PropertyStep(hHandle, cModel, cBytes);
    }
    Promise(KSDestroyHandle(&hRun) == FPC_SUCCESS && KSDestroyHandle(&hSegment) == FPC_SUCCESS,
            "handles are destroyed");
    Promise(KSUninitialize() == FPC_SUCCESS, "the library is left");
    return 0;
}
