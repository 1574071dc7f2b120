// Sequences of the sixteen functions with handles that are right, of the other kind, null, or destroyed and null again,
// and with properties of any name and value.

#include "ByteSource.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <cstring>
#include <iterator>
#include <memory>
#include <string>

namespace
{
constexpr int nHandles = 4;

/// The state of one sequence: handles of both kinds, some of them null.
struct ClCalls
{
    ClByteSource& m_cBytes;
    void* m_ahHandles[nHandles] = {};
    long m_nReferences = 0;

    explicit ClCalls(ClByteSource& cBytes) : m_cBytes(cBytes) {}
    ~ClCalls()
    {
        for (void*& hHandle : m_ahHandles)
            if (hHandle != nullptr) Promise(KSDestroyHandle(&hHandle) == FPC_SUCCESS, "a handle is destroyed");
        while (m_nReferences-- > 0) Promise(KSUninitialize() == FPC_SUCCESS, "a reference is taken back");
        Promise(KSUninitialize() == FPC_ERROR_NOT_INITIALIZED, "no reference is left");
    }

    void*& Handle() { return m_ahHandles[m_cBytes.Byte() % nHandles]; }

    std::string Name()
    {
        static const char* const aszNames[] = {"Version", "Count",  "CoordinateOrigin", "SegmentationMode", "x",
                                               "y",       "Width",  "Height",           "FingerPosition",   "",
                                               ".",       ".Count", "Count.x"};
        const unsigned nName = m_cBytes.Byte();
        if (nName % 4 == 0) return m_cBytes.Text(400);
        return aszNames[nName % std::size(aszNames)];
    }

    void Create()
    {
        void*& hHandle = Handle();
        if (hHandle != nullptr) return;
        const bool bSegment = m_cBytes.Byte() % 2 != 0;
        const long nResult = bSegment ? KSCreateSegmentHandle(&hHandle) : KSCreateSegmentationHandle(&hHandle);
        Promise(nResult == (m_nReferences > 0 ? FPC_SUCCESS : FPC_ERROR_NOT_INITIALIZED), "handles need the library");
        Promise((hHandle != nullptr) == (nResult == FPC_SUCCESS), "a handle comes with success");
    }

    void Property()
    {
        void* const hHandle = Handle();
        const std::string sName = Name();
        const char* const szName = m_cBytes.Byte() % 16 == 0 ? nullptr : sName.c_str();
        long nValue = 0;
        double dValue = 0.0;
        unsigned long nSize = m_cBytes.Byte() % 40;
        const std::unique_ptr<char[]> pText(new char[nSize + 1]);
        switch (m_cBytes.Byte() % 6)
        {
        case 0: KSGetPropertyA(hHandle, szName, m_cBytes.Byte() % 8 == 0 ? nullptr : pText.get(), &nSize); break;
        case 1: KSSetPropertyA(hHandle, szName, m_cBytes.Byte() % 8 == 0 ? nullptr : m_cBytes.Text(60).c_str()); break;
        case 2: KSGetPropertyLongA(hHandle, szName, &nValue); break;
        case 3: KSSetPropertyLongA(hHandle, szName, m_cBytes.Number()); break;
        case 4: KSGetPropertyDoubleA(hHandle, szName, &dValue); break;
        default: KSSetPropertyDoubleA(hHandle, szName, static_cast<double>(m_cBytes.Number()) / 3.0); break;
        }
    }

    /// A small picture at the working resolution, white with a dark bar.
    void Segment()
    {
        constexpr int nSide = 160, nPixels = 40 + 4 * 256;
        const std::unique_ptr<unsigned char[]> pBlock(new unsigned char[nPixels + nSide * nSide]);
        std::memset(pBlock.get(), 255, nPixels + nSide * nSide);
        const tagBITMAPINFOHEADER cHeader = {40, nSide, nSide, 1, 8, 0, 0, 3937, 3937, 0, 0};
        std::memcpy(pBlock.get(), &cHeader, sizeof cHeader);
        const int nLeft = m_cBytes.Between(0, 120), nWide = m_cBytes.Between(0, 40);
        for (int y = 0; y < nSide; ++y)
            std::memset(pBlock.get() + nPixels + nSide * y + nLeft, 40, static_cast<std::size_t>(nWide));
        const auto* pHeader = reinterpret_cast<const tagBITMAPINFOHEADER*>(pBlock.get());
        KSSegmentBitmap(Handle(), m_cBytes.Byte() % 16 == 0 ? nullptr : pHeader, nPixels + nSide * nSide);
    }

    void Bitmap()
    {
        void* const hHandle = Handle();
        unsigned long nSize = 0;
        if (KSGetBitmap(hHandle, nullptr, &nSize) != FPC_ERROR_TEMPLATE_SIZE) return;
        if (m_cBytes.Byte() % 2 != 0) nSize -= m_cBytes.Byte() % 4;
        const std::unique_ptr<unsigned char[]> pBitmap(new unsigned char[nSize]);
        KSGetBitmap(hHandle, reinterpret_cast<tagBITMAPINFOHEADER*>(pBitmap.get()), &nSize);
    }

    void Step()
    {
        unsigned long nSize = m_cBytes.Byte();
        char szVersion[256];
        switch (m_cBytes.Byte() % 11)
        {
        case 0:
            Promise(KSInitialize(nullptr) == FPC_SUCCESS, "initialisation");
            ++m_nReferences;
            break;
        case 1:
            if (KSUninitialize() == FPC_SUCCESS) --m_nReferences;
            Promise(m_nReferences >= 0, "as many references as calls");
            break;
        case 2: KSGetVersionA(nSize % 2 != 0 ? szVersion : nullptr, &nSize); break;
        case 3: Promise(*KSGetErrorDescriptionA(m_cBytes.Number()) != '\0', "every number has a text"); break;
        case 4: KSDestroyHandle(&Handle()); break;
        case 5:
        case 6: Create(); break;
        case 7: Segment(); break;
        case 8: KSGetSegment(Handle(), static_cast<int>(m_cBytes.Number()), Handle()); break;
        case 9: Bitmap(); break;
        default: Property(); break;
        }
    }
};
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    ClCalls cCalls(cBytes);
    for (int i = 0; i < 60 && !cBytes.IsEmpty(); ++i) cCalls.Step();
    return 0;
}
