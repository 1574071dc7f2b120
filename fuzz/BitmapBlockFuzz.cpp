// A block of bytes as a bitmap, with its size, through both modes and on to every segment and its bitmap. What the
// header and the size say, and what the second mode finds, is worked out anew and compared; fingers lie inside the
// picture. Where the last byte says so the bytes behind the header draw the picture, of the size that the header
// states.

#include "BitmapRules.hpp"
#include "Picture.hpp"
#include "Promise.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
constexpr std::size_t nMostDrawn = 100000; // bytes of a picture that is drawn

struct StSegment
{
    long m_nX;
    long m_nY;
    long m_nWidth;
    long m_nHeight;
    std::vector<unsigned char> m_anBitmap;
};

long Property(void* hHandle, const char* szName)
{
    long nValue = -1;
    Promise(KSGetPropertyLongA(hHandle, szName, &nValue) == FPC_SUCCESS, "a property");
    return nValue;
}

/// The bitmap of a filled segment: it asks for its size, never writes behind it, and its header tells the truth.
std::vector<unsigned char> BitmapOf(void* hSegment, const StBitmapFate& cFate)
{
    unsigned long nSize = 0;
    Promise(KSGetBitmap(hSegment, nullptr, &nSize) == FPC_ERROR_TEMPLATE_SIZE && nSize > 40 + 1024, "a bitmap's size");
    const std::unique_ptr<unsigned char[]> pBitmap(new unsigned char[nSize]); // exactly: the sanitizer guards its end
    auto* const pHeader = reinterpret_cast<tagBITMAPINFOHEADER*>(pBitmap.get());
    unsigned long nShort = nSize - 1;
    Promise(KSGetBitmap(hSegment, pHeader, &nShort) == FPC_ERROR_TEMPLATE_SIZE && nShort == nSize, "a short buffer");
    Promise(KSGetBitmap(hSegment, pHeader, &nSize) == FPC_SUCCESS && nShort == nSize, "the bitmap of a segment");
    Promise(pHeader->biSize == 40 && pHeader->biPlanes == 1 && pHeader->biBitCount == 8 && pHeader->biCompression == 0,
            "8-bit bitmaps");
    Promise(pHeader->biWidth > 0 && pHeader->biHeight > 0, "a bitmap has pixels");
    const auto nRow = (static_cast<unsigned long>(pHeader->biWidth) + 3) & ~3ul;
    Promise(nSize == 40 + 1024 + nRow * static_cast<unsigned long>(pHeader->biHeight), "the size follows the header");
    Promise(pHeader->biXPelsPerMeter == cFate.m_nXRes && pHeader->biYPelsPerMeter == cFate.m_nYRes,
            "the resolution of the input");
    return {pBitmap.get(), pBitmap.get() + nSize};
}

/// A segment by both origins. Where the resolutions differ or the hand leans a finger may come to lie above the
/// picture, and is refused; its bitmap is there all the same.
StSegment SegmentAt(void* hRun, int nIndex, void* hSegment, const StBitmapFate& cFate)
{
    Promise(KSSetPropertyLongA(hRun, "CoordinateOrigin", 1) == FPC_SUCCESS, "the origin");
    const long nCode = KSGetSegment(hRun, nIndex, hSegment);
    if (nCode == FPC_ERROR_PARAM_OUT_OF_RANGE && Property(hRun, "SegmentationMode") == 0)
        return {0, 0, 0, 0, BitmapOf(hSegment, cFate)};
    Promise(nCode == FPC_SUCCESS, "a segment with its origin above");
    const long nAbove = Property(hSegment, "y");
    Promise(KSSetPropertyLongA(hRun, "CoordinateOrigin", 0) == FPC_SUCCESS, "the origin");
    Promise(KSGetSegment(hRun, nIndex, hSegment) == FPC_SUCCESS, "a segment with its origin below");
    StSegment c{Property(hSegment, "x"), Property(hSegment, "y"), Property(hSegment, "Width"),
                Property(hSegment, "Height"), BitmapOf(hSegment, cFate)};
    Promise(Property(hSegment, "FingerPosition") == 0, "no position");
    Promise(nAbove + c.m_nHeight + c.m_nY == cFate.m_nHeight, "both origins name one place");
    Promise(c.m_nX >= 0 && c.m_nX + c.m_nWidth <= cFate.m_nWidth, "a segment lies between the picture's sides");
    Promise(c.m_nY >= 0 && c.m_nY + c.m_nHeight <= cFate.m_nHeight, "a segment lies between bottom and top");
    return c;
}

std::vector<StSegment> SegmentsOf(void* hRun, const StBitmapFate& cFate)
{
    const long nCount = Property(hRun, "Count");
    Promise(nCount >= 0 && nCount <= 2, "at most two segments");
    void* hSegment = nullptr;
    Promise(KSCreateSegmentHandle(&hSegment) == FPC_SUCCESS, "a segment handle");
    std::vector<StSegment> acSegment;
    for (int i = 0; i < nCount; ++i) acSegment.push_back(SegmentAt(hRun, i, hSegment, cFate));
    for (const int nIndex : {static_cast<int>(nCount), -1})
        Promise(KSGetSegment(hRun, nIndex, hSegment) == FPC_ERROR_PARAM_OUT_OF_RANGE, "no other segments");
    Promise(KSDestroyHandle(&hSegment) == FPC_SUCCESS, "a handle is destroyed");
    return acSegment;
}

/// The one segment is a largest object without its last column and row, as it stands in the picture.
void PromiseBiggest(const std::vector<StSegment>& acSegment, const std::vector<StObject>& acObject, long nArea,
                    const StBitmapFate& cFate)
{
    Promise(acSegment.size() == 1, "one segment");
    const StSegment& c = acSegment[0];
    const bool bThere = std::any_of(acObject.begin(), acObject.end(),
                                    [&](const StObject& cObject)
                                    {
                                        return cObject.m_nArea == nArea && cObject.m_nMinX == c.m_nX &&
                                               cObject.m_nMinY == c.m_nY && cObject.m_nMaxX == c.m_nX + c.m_nWidth &&
                                               cObject.m_nMaxY == c.m_nY + c.m_nHeight;
                                    });
    Promise(bThere, "the segment is the largest object");
    const auto nRow = static_cast<std::size_t>((c.m_nWidth + 3) & ~3L);
    Promise(c.m_anBitmap.size() == 1064 + nRow * static_cast<std::size_t>(c.m_nHeight), "its bitmap has its size");
    for (long y = 0; y < c.m_nHeight; ++y)
        Promise(std::memcmp(c.m_anBitmap.data() + 1064 + nRow * static_cast<std::size_t>(y),
                            cFate.m_pPixels + (c.m_nY + y) * cFate.m_nStride + c.m_nX,
                            static_cast<std::size_t>(c.m_nWidth)) == 0,
                "its bitmap is cut out of the picture");
}

void RunBiggest(void* hRun, const unsigned char* pBlock, std::size_t nSize, const StBitmapFate& cFate)
{
    Promise(KSSetPropertyLongA(hRun, "SegmentationMode", 1) == FPC_SUCCESS, "the second mode");
    const long nCode = KSSegmentBitmap(hRun, reinterpret_cast<const tagBITMAPINFOHEADER*>(pBlock), nSize);
    PromiseCode(nCode);
    if (cFate.m_nCode != FPC_SUCCESS)
    {
        Promise(nCode == cFate.m_nCode, "the header's own code in the second mode");
        return;
    }
    const auto acObject = ObjectsOf(cFate);
    if (acObject.empty())
    {
        const bool bArea = cFate.m_nWidth > 0 && cFate.m_nHeight > 0;
        Promise(bArea ? nCode == FPC_ERROR_PARAM_INVALID : nCode != FPC_SUCCESS, "no object");
        return;
    }
    const auto smaller = [](const StObject& a, const StObject& b) { return a.m_nArea < b.m_nArea; };
    const long nArea = std::max_element(acObject.begin(), acObject.end(), smaller)->m_nArea;
    const auto isLine = [nArea](const StObject& c)
    { return c.m_nArea == nArea && (c.m_nMinX == c.m_nMaxX || c.m_nMinY == c.m_nMaxY); };
    if (nCode == FPC_ERROR_PARAM_OUT_OF_RANGE)
    {
        Promise(std::any_of(acObject.begin(), acObject.end(), isLine), "only a line has no inside");
        return;
    }
    Promise(nCode == FPC_SUCCESS, "an object is found");
    PromiseBiggest(SegmentsOf(hRun, cFate), acObject, nArea, cFate);
}

/// Whether the picture at the working resolution is smaller than the widest filter.
bool IsReducedBelowFilters(const StBitmapFate& c)
{
    constexpr double dPels = 3937.0, dWidest = 9.0;
    const auto reduced = [](long nSide, long nRes)
    { return static_cast<double>(nSide) * dPels / static_cast<double>(nRes); };
    return reduced(c.m_nWidth, c.m_nXRes) < dWidest || reduced(c.m_nHeight, c.m_nYRes) < dWidest;
}

std::uint64_t RunFingers(void* hRun, const unsigned char* pBlock, std::size_t nSize, const StBitmapFate& cFate)
{
    Promise(KSSetPropertyLongA(hRun, "SegmentationMode", 0) == FPC_SUCCESS, "the first mode");
    const long nCode = KSSegmentBitmap(hRun, reinterpret_cast<const tagBITMAPINFOHEADER*>(pBlock), nSize);
    const long nExpected = cFate.m_nCode != FPC_SUCCESS ? cFate.m_nCode : CheckOfFingers(cFate);
    if (nExpected != FPC_SUCCESS)
        Promise(nCode == nExpected, "the code of the first check that fails");
    else
        Promise(nCode == FPC_SUCCESS || nCode == FPC_ERROR_PARAM_OUT_OF_RANGE || nCode == FPC_ERROR_OUT_OF_MEMORY ||
                    (nCode == FPC_ERROR_BITMAP_DIMENSION && IsReducedBelowFilters(cFate)),
                "fingers, or too many of them");
    ClDigest cDigest;
    cDigest.Add(static_cast<std::uint64_t>(nCode));
    if (nCode != FPC_SUCCESS) return cDigest.Sum();
    for (const StSegment& c : SegmentsOf(hRun, cFate))
    {
        for (const long nValue : {c.m_nX, c.m_nY, c.m_nWidth, c.m_nHeight})
            cDigest.Add(static_cast<std::uint64_t>(nValue));
        cDigest.AddBytes(c.m_anBitmap.data(), c.m_anBitmap.size());
    }
    return cDigest.Sum();
}

/// The bytes as they are, or the header of an 8-bit picture with the picture that the rest of the bytes draws.
std::vector<unsigned char> BlockOf(const std::uint8_t* pData, std::size_t nSize)
{
    const std::size_t nFile = nSize >= 2 && pData[0] == 'B' && pData[1] == 'M' ? 14 : 0;
    if (pData[nSize - 1] / 4 % 4 != 3 || nSize <= nFile + 40) return {pData, pData + nSize};
    tagBITMAPINFOHEADER c;
    std::memcpy(&c, pData + nFile, sizeof c);
    const std::size_t nTable = c.biClrUsed == 0 ? 1024 : 4 * (c.biClrUsed % 300);
    if (c.biBitCount != 8 || c.biWidth < 1 || c.biHeight < 1) return {pData, pData + nSize};
    const auto nRow = (static_cast<std::size_t>(c.biWidth) + 3) & ~std::size_t{3};
    if (nRow > nMostDrawn / static_cast<std::size_t>(c.biHeight)) return {pData, pData + nSize};
    std::vector<unsigned char> anBlock(nFile + 40 + nTable + nRow * static_cast<std::size_t>(c.biHeight), 0);
    std::memcpy(anBlock.data(), pData, nFile + 40);
    ClByteSource cBytes(pData + nFile + 40, nSize - nFile - 40);
    DrawPicture({anBlock.data() + nFile + 40 + nTable, c.biWidth, c.biHeight, static_cast<std::ptrdiff_t>(nRow)},
                cBytes);
    if (cBytes.OneIn(16)) anBlock.resize(anBlock.size() - 1);
    return anBlock;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    if (nSize == 0) return 0; // the size 0 means that the caller vouches for the header
    const auto anBlock = BlockOf(pData, nSize);
    // A block of its own, exactly as large, at every alignment.
    const std::size_t nOffset = pData[nSize - 1] % 4;
    const std::unique_ptr<unsigned char[]> pBlock(new unsigned char[anBlock.size() + nOffset]);
    unsigned char* const pBitmap = pBlock.get() + nOffset;
    std::memcpy(pBitmap, anBlock.data(), anBlock.size());
    const StBitmapFate cFate = FateOf(pBitmap, anBlock.size());

    Promise(KSInitialize(nullptr) == FPC_SUCCESS, "initialisation");
    void* hRun = nullptr;
    Promise(KSCreateSegmentationHandle(&hRun) == FPC_SUCCESS, "a segmentation handle");
    FillNewMemory(0x00);
    const std::uint64_t nFirst = RunFingers(hRun, pBitmap, anBlock.size(), cFate);
    RunBiggest(hRun, pBitmap, anBlock.size(), cFate);
    FillNewMemory(0xff);
    Promise(RunFingers(hRun, pBitmap, anBlock.size(), cFate) == nFirst, "the same block gives the same result");
    FillNewMemory(0x00);
    Promise(std::memcmp(pBitmap, anBlock.data(), anBlock.size()) == 0, "the input is never written to");
    Promise(KSDestroyHandle(&hRun) == FPC_SUCCESS && hRun == nullptr, "a handle is destroyed");
    Promise(KSUninitialize() == FPC_SUCCESS, "the library is left");
    return 0;
}
