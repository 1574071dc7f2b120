// Sequences of the sixteen functions with handles that are right, of the other kind, null, or destroyed and null again.
// Every code and every result is compared with a model of the handles; the fingers of a picture are those that it had
// the first time, whatever happened to a handle since.

#include "Promise.hpp"
#include "PropertySteps.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace
{
constexpr int nHandles = 4;
constexpr long nMostFingerRuns = 2; // in a sequence that has any: they are what costs

struct StEntry
{
    long m_nX;
    long m_nY; ///< with the origin below
    long m_nWidth;
    long m_nHeight;
    std::uint64_t m_nBitmap; ///< digest
};

/// What a picture gives.
struct StOutcome
{
    long m_nCode;
    long m_nCount; ///< -1: stays
    std::vector<StEntry> m_acEntry;
};

struct StSlot
{
    void* m_hHandle = nullptr;
    StHandleModel m_cModel;
    std::vector<StEntry> m_acEntry; ///< of a segmentation
    long m_nPictureHeight = 0;
    bool m_bFilled = false; ///< of a segment
    std::uint64_t m_nBitmap = 0;
};

void Compare(long nCode, long nExpected, const char* szCall)
{
    if (nCode != nExpected) std::fprintf(stderr, "%s: %ld instead of %ld\n", szCall, nCode, nExpected);
    Promise(nCode == nExpected, "the code of a call");
}

long CheckKind(const StSlot& c, StHandleModel::EKind eWanted)
{
    if (c.m_cModel.m_eKind == StHandleModel::eNone) return FPC_ERROR_NO_HANDLE;
    return c.m_cModel.m_eKind == eWanted ? FPC_SUCCESS : FPC_ERROR_INVALID_HANDLE;
}

std::uint64_t DigestOfBitmap(void* hSegment)
{
    unsigned long nSize = 0;
    Compare(KSGetBitmap(hSegment, nullptr, &nSize), FPC_ERROR_TEMPLATE_SIZE, "the size of a bitmap");
    const std::unique_ptr<unsigned char[]> pBitmap(new unsigned char[nSize]);
    Compare(KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(pBitmap.get()), &nSize), FPC_SUCCESS,
            "a bitmap");
    ClDigest cDigest;
    cDigest.AddBytes(pBitmap.get(), nSize);
    return cDigest.Sum();
}

long Number(void* hHandle, const char* szName)
{
    long nValue = 0;
    Compare(KSGetPropertyLongA(hHandle, szName, &nValue), FPC_SUCCESS, szName);
    return nValue;
}

/// What stands in a handle after a run that went well; its origin is below.
StOutcome Outcome(void* hRun)
{
    StOutcome c{FPC_SUCCESS, Number(hRun, "Count"), {}};
    Promise(c.m_nCount >= 0 && c.m_nCount <= 2, "at most two segments");
    void* hSegment = nullptr;
    Compare(KSInitialize(nullptr), FPC_SUCCESS, "KSInitialize"); // the sequence may have left the library
    Compare(KSCreateSegmentHandle(&hSegment), FPC_SUCCESS, "a segment handle");
    for (int i = 0; i < c.m_nCount; ++i)
    {
        Compare(KSGetSegment(hRun, i, hSegment), FPC_SUCCESS, "a segment");
        c.m_acEntry.push_back({Number(hSegment, "x"), Number(hSegment, "y"), Number(hSegment, "Width"),
                               Number(hSegment, "Height"), DigestOfBitmap(hSegment)});
    }
    Compare(KSDestroyHandle(&hSegment), FPC_SUCCESS, "a handle is destroyed");
    Compare(KSUninitialize(), FPC_SUCCESS, "KSUninitialize");
    return c;
}

/// A picture by a few numbers: bars on white.
struct StPicture
{
    int m_nSide;
    int m_nBits;
    int m_nRes;
    int m_nLeft;
    int m_nWide;
    int m_nBars;

    auto Key(long nMode) const { return std::make_tuple(m_nSide, m_nRes, m_nLeft, m_nWide, m_nBars, nMode); }

    std::vector<unsigned char> Block() const
    {
        const int nRow = (m_nSide * m_nBits / 8 + 3) & ~3, nTable = m_nBits == 8 ? 1024 : 0;
        std::vector<unsigned char> anBlock(static_cast<std::size_t>(40 + nTable + nRow * m_nSide), 255);
        const tagBITMAPINFOHEADER cHeader = {40,     m_nSide, m_nSide, 1, static_cast<unsigned short>(m_nBits), 0, 0,
                                             m_nRes, m_nRes,  0,       0};
        std::memcpy(anBlock.data(), &cHeader, sizeof cHeader);
        for (int y = m_nSide / 8; y < m_nSide; ++y)
            for (int i = 0; i < m_nBars; ++i)
                for (int x = m_nLeft + i * (m_nWide + 15); x < m_nLeft + i * (m_nWide + 15) + m_nWide && x < m_nSide;
                     ++x)
                    anBlock[static_cast<std::size_t>(40 + nTable + nRow * y + x)] =
                        static_cast<unsigned char>(40 + (x + y) % 3);
        return anBlock;
    }
};

/// What the first picture of its kind gave: every later one must give the same.
using Memory_t = std::map<decltype(StPicture().Key(0)), StOutcome>;
Memory_t& Memory()
{
    static Memory_t mapMemory;
    return mapMemory;
}

/// The state of one sequence.
class ClCalls
{
public:
    explicit ClCalls(ClByteSource& cBytes) : m_cBytes(cBytes), m_nFingerRuns(cBytes.OneIn(8) ? nMostFingerRuns : 0) {}
    ClCalls(const ClCalls&) = delete;
    ClCalls& operator=(const ClCalls&) = delete;
    ~ClCalls()
    {
        for (StSlot& c : m_acSlot)
            if (c.m_hHandle != nullptr) Compare(KSDestroyHandle(&c.m_hHandle), FPC_SUCCESS, "KSDestroyHandle");
        while (m_nReferences-- > 0) Compare(KSUninitialize(), FPC_SUCCESS, "KSUninitialize");
        Compare(KSUninitialize(), FPC_ERROR_NOT_INITIALIZED, "KSUninitialize without a reference");
    }

    void Step()
    {
        const unsigned nCall = m_cBytes.Byte();
        switch (nCall % 16)
        {
        case 0:
            Compare(KSInitialize(nCall < 128 ? nullptr : "parameter"), FPC_SUCCESS, "KSInitialize");
            ++m_nReferences;
            break;
        case 1:
            Compare(KSUninitialize(), m_nReferences > 0 ? FPC_SUCCESS : FPC_ERROR_NOT_INITIALIZED, "KSUninitialize");
            if (m_nReferences > 0) --m_nReferences;
            break;
        case 2: Version(); break;
        case 3: Promise(*KSGetErrorDescriptionA(m_cBytes.Number()) != '\0', "every number has a text"); break;
        case 4: Destroy(); break;
        case 5:
        case 6:
        case 7: Create(); break;
        case 8:
        case 9: Segment(); break;
        case 10:
        case 11: GetSegment(); break;
        case 12:
        case 13: GetBitmap(); break;
        default:
        {
            StSlot& c = Slot();
            PropertyStep(c.m_hHandle, c.m_cModel, m_cBytes);
            break;
        }
        }
    }

private:
    StSlot& Slot() { return m_acSlot[m_cBytes.Byte() % nHandles]; }

    void Version()
    {
        static const std::string sVersion = "1.1.1407.3";
        const unsigned long nGiven = m_cBytes.Byte() % 16;
        unsigned long nSize = nGiven;
        const std::unique_ptr<char[]> pVersion(new char[nGiven]);
        const unsigned nHow = m_cBytes.Byte();
        const bool bSize = nHow % 8 != 0;
        const long nCode = KSGetVersionA(nHow / 8 % 4 != 0 ? pVersion.get() : nullptr, bSize ? &nSize : nullptr);
        const bool bFits = nGiven > sVersion.size();
        Compare(nCode,
                !bSize  ? FPC_ERROR_TEMPLATE_SIZE_PTR
                : bFits ? FPC_SUCCESS
                        : FPC_ERROR_TEMPLATE_SIZE,
                "KSGetVersionA");
        Promise(nSize == (bSize ? sVersion.size() + 1 : nGiven), "the size of the version");
        if (nCode == FPC_SUCCESS && nHow / 8 % 4 != 0) Promise(pVersion.get() == sVersion, "the version");
    }

    void Destroy()
    {
        if (m_cBytes.OneIn(16)) Compare(KSDestroyHandle(nullptr), FPC_ERROR_INVALID_PARAMETER, "KSDestroyHandle");
        StSlot& c = Slot();
        const long nExpected = c.m_hHandle == nullptr ? FPC_ERROR_NO_HANDLE : FPC_SUCCESS;
        Compare(KSDestroyHandle(&c.m_hHandle), nExpected, "KSDestroyHandle");
        Promise(c.m_hHandle == nullptr, "a destroyed handle is null");
        c = StSlot();
    }

    void Create()
    {
        const bool bSegment = m_cBytes.Byte() % 2 != 0;
        const auto create = [bSegment](void** ph)
        { return bSegment ? KSCreateSegmentHandle(ph) : KSCreateSegmentationHandle(ph); };
        if (m_cBytes.OneIn(16))
            Compare(create(nullptr), m_nReferences > 0 ? FPC_ERROR_BAD_POINTER : FPC_ERROR_NOT_INITIALIZED,
                    "a handle to nowhere");
        StSlot& c = Slot();
        if (c.m_hHandle != nullptr) return;
        Compare(create(&c.m_hHandle), m_nReferences > 0 ? FPC_SUCCESS : FPC_ERROR_NOT_INITIALIZED, "a new handle");
        Promise((c.m_hHandle != nullptr) == (m_nReferences > 0), "a handle comes with success");
        if (c.m_hHandle != nullptr)
            c.m_cModel.m_eKind = bSegment ? StHandleModel::eSegment : StHandleModel::eSegmentation;
    }

    StPicture Picture()
    {
        const unsigned nKind = m_cBytes.Byte();
        StPicture c{24, 8, 3937, m_cBytes.Between(0, 15), m_cBytes.Between(0, 7), 1};
        if (nKind % 16 == 1) c.m_nBits = 24;
        if (nKind % 16 == 2) c.m_nRes = 3899;
        if (nKind % 16 == 3) c.m_nBits = 16;
        if (nKind % 16 == 4 && m_nFingerRuns-- > 0)
            c = {160 + 16 * (m_cBytes.Byte() % 4),
                 8,
                 3937,
                 4 * m_cBytes.Between(0, 15),
                 6 * m_cBytes.Between(0, 8),
                 m_cBytes.Between(1, 5)};
        return c;
    }

    /// What a picture of whole size must answer, if that is known before it has run once.
    static const StOutcome* Known(const StPicture& c, long nMode)
    {
        static const StOutcome cDepth{FPC_ERROR_BITMAP_BITCOUNT, -1, {}}, cPlanes{FPC_ERROR_BITMAP_PLANE, -1, {}},
            cPels{FPC_ERROR_BITMAP_PELS, -1, {}}, cBlank{FPC_ERROR_BITMAP_NO_FINGER, -1, {}},
            cSmall{FPC_ERROR_BITMAP_DIMENSION, -1, {}}, cNothing{FPC_ERROR_PARAM_INVALID, -1, {}},
            cLine{FPC_ERROR_PARAM_OUT_OF_RANGE, -1, {}};
        const bool bBlank = c.m_nWide == 0;
        if (c.m_nBits == 16) return &cDepth;
        if (c.m_nBits == 24) return &cPlanes;
        if (nMode == 1) return bBlank ? &cNothing : c.m_nWide == 1 ? &cLine : nullptr;
        if (c.m_nRes < 3900) return &cPels;
        if (bBlank) return &cBlank;
        return c.m_nSide < 160 ? &cSmall : nullptr;
    }

    void Segment()
    {
        StSlot& c = Slot();
        const StPicture cPicture = Picture();
        const unsigned nHow = m_cBytes.Byte();
        const auto anBlock = cPicture.Block();
        const auto* pHeader = nHow % 16 == 0 ? nullptr : reinterpret_cast<const tagBITMAPINFOHEADER*>(anBlock.data());
        const bool bShort = nHow % 16 == 1; // the size that is stated is too small
        const long nCode = KSSegmentBitmap(c.m_hHandle, pHeader, anBlock.size() - (bShort ? 1 : 0));
        if (const long nWrong = CheckKind(c, StHandleModel::eSegmentation))
            Compare(nCode, nWrong, "KSSegmentBitmap without a segmentation");
        else if (pHeader == nullptr)
            Compare(nCode, FPC_ERROR_BITMAP_PTR, "KSSegmentBitmap without a bitmap");
        else if (bShort)
            Compare(nCode, FPC_ERROR_TEMPLATE_SIZE, "KSSegmentBitmap with a short bitmap");
        else
            TakeOver(c, cPicture, nCode);
    }

    /// A run with a whole picture.
    void TakeOver(StSlot& c, const StPicture& cPicture, long nCode)
    {
        const long nMode = c.m_cModel.m_nMode;
        const StOutcome* pOutcome = Known(cPicture, nMode);
        c.m_nPictureHeight = cPicture.m_nBits == 16 ? 0 : cPicture.m_nSide;
        if (pOutcome == nullptr)
        {
            const auto [itOutcome, bNew] = Memory().try_emplace(cPicture.Key(nMode), StOutcome{nCode, -1, {}});
            if (bNew && nCode == FPC_SUCCESS)
            {
                Compare(KSSetPropertyLongA(c.m_hHandle, "CoordinateOrigin", 0), FPC_SUCCESS, "the origin");
                itOutcome->second = Outcome(c.m_hHandle);
                Compare(KSSetPropertyLongA(c.m_hHandle, "CoordinateOrigin", c.m_cModel.m_nOrigin), FPC_SUCCESS,
                        "the origin");
            }
            else if (bNew && nCode == FPC_ERROR_PARAM_OUT_OF_RANGE && nMode == 0)
            {
                itOutcome->second.m_nCount = Number(c.m_hHandle, "Count");
                Promise(itOutcome->second.m_nCount == 3 || itOutcome->second.m_nCount == 4, "too many fingers");
            }
            pOutcome = &itOutcome->second;
        }
        Compare(nCode, pOutcome->m_nCode, "KSSegmentBitmap");
        if (cPicture.m_nBits != 8) return; // what was found before stays
        c.m_acEntry = pOutcome->m_acEntry;
        if (pOutcome->m_nCount >= 0) c.m_cModel.m_nCount = pOutcome->m_nCount;
    }

    void GetSegment()
    {
        StSlot &cFrom = Slot(), &cTo = Slot();
        const int nIndex = m_cBytes.OneIn(4) ? static_cast<int>(m_cBytes.Bits(4)) : m_cBytes.Byte() % 3;
        const long nCode = KSGetSegment(cFrom.m_hHandle, nIndex, cTo.m_hHandle);
        const long nFrom = CheckKind(cFrom, StHandleModel::eSegmentation);
        const long nTo = CheckKind(cTo, StHandleModel::eSegment);
        if (nFrom != FPC_SUCCESS || nTo != FPC_SUCCESS)
        {
            Compare(nCode, nFrom != FPC_SUCCESS ? nFrom : nTo, "KSGetSegment with a wrong handle");
            return;
        }
        if (nIndex < 0 || nIndex > 1 || static_cast<std::size_t>(nIndex) >= cFrom.m_acEntry.size())
        {
            Compare(nCode, FPC_ERROR_PARAM_OUT_OF_RANGE, "KSGetSegment behind the last");
            return;
        }
        const StEntry& cEntry = cFrom.m_acEntry[static_cast<std::size_t>(nIndex)];
        cTo.m_bFilled = true;
        cTo.m_nBitmap = cEntry.m_nBitmap;
        // The height is that of the picture looked at last, which may not be the one of the segments.
        const long nAbove = cFrom.m_nPictureHeight - cEntry.m_nY - cEntry.m_nHeight;
        const long nY = cFrom.m_cModel.m_nOrigin == 1 ? nAbove : cEntry.m_nY;
        Compare(nCode, nY < 0 ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_SUCCESS, "KSGetSegment");
        if (nY < 0) return;
        cTo.m_cModel.m_nX = cEntry.m_nX;
        cTo.m_cModel.m_nY = nY;
        cTo.m_cModel.m_nWidth = cEntry.m_nWidth;
        cTo.m_cModel.m_nHeight = cEntry.m_nHeight;
    }

    void GetBitmap()
    {
        StSlot& c = Slot();
        const unsigned nHow = m_cBytes.Byte();
        const long nWrong = CheckKind(c, StHandleModel::eSegment);
        unsigned long nSize = 0;
        const long nCode = KSGetBitmap(c.m_hHandle, nullptr, nHow % 16 == 0 ? nullptr : &nSize);
        const long nOfSegment = nHow % 16 == 0 ? FPC_ERROR_PARAM_IS_MISSING
                                : !c.m_bFilled ? FPC_ERROR_EMPTY_HANDLE
                                               : FPC_ERROR_TEMPLATE_SIZE;
        Compare(nCode, nWrong != FPC_SUCCESS ? nWrong : nOfSegment, "KSGetBitmap");
        if (nCode != FPC_ERROR_TEMPLATE_SIZE) return;
        Compare(KSGetBitmap(c.m_hHandle, nullptr, &nSize), FPC_SUCCESS, "KSGetBitmap that measures");
        unsigned long nShort = nSize - 1 - nHow / 16;
        const std::unique_ptr<unsigned char[]> pShort(new unsigned char[nShort]);
        Compare(KSGetBitmap(c.m_hHandle, reinterpret_cast<tagBITMAPINFOHEADER*>(pShort.get()), &nShort),
                FPC_ERROR_TEMPLATE_SIZE, "KSGetBitmap with a short buffer");
        Promise(nShort == nSize && DigestOfBitmap(c.m_hHandle) == c.m_nBitmap,
                "the bitmap that the segment was filled with");
    }

    ClByteSource& m_cBytes;
    StSlot m_acSlot[nHandles];
    long m_nReferences = 0;
    long m_nFingerRuns; ///< that are left
};
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    ClCalls cCalls(cBytes);
    for (int i = 0; i < 60 && !cBytes.IsEmpty(); ++i) cCalls.Step();
    return 0;
}
