#include "SlapRun.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <fstream>
#include <stdexcept>

namespace
{
void Demand(long nExpected, long nCode, const char* szFunction)
{
    if (nCode == nExpected) return;
    throw std::runtime_error(std::string(szFunction) + " returned " + std::to_string(nCode) + ": " +
                             KSGetErrorDescriptionA(nCode));
}

long LongProperty(void* hHandle, const char* szName)
{
    long nValue = 0;
    Demand(FPC_SUCCESS, KSGetPropertyLongA(hHandle, szName, &nValue), szName);
    return nValue;
}

ClSlapRunResult::ClSegment CopySegment(void* hSegment)
{
    ClSlapRunResult::ClSegment cSegment;
    cSegment.m_nX = LongProperty(hSegment, "x");
    cSegment.m_nY = LongProperty(hSegment, "y");
    cSegment.m_nWidth = LongProperty(hSegment, "Width");
    cSegment.m_nHeight = LongProperty(hSegment, "Height");

    unsigned long nSize = 0;
    Demand(FPC_ERROR_TEMPLATE_SIZE, KSGetBitmap(hSegment, nullptr, &nSize), "KSGetBitmap without a buffer");
    cSegment.m_aBlock.resize(nSize);
    auto* pBitmap = reinterpret_cast<tagBITMAPINFOHEADER*>(cSegment.m_aBlock.data());
    Demand(FPC_SUCCESS, KSGetBitmap(hSegment, pBitmap, &nSize), "KSGetBitmap");
    return cSegment;
}
} // namespace

bool operator==(const ClSlapRunResult& cLeft, const ClSlapRunResult& cRight)
{
    if (cLeft.m_nCode != cRight.m_nCode || cLeft.m_nCount != cRight.m_nCount) return false;
    if (cLeft.m_aSegments.size() != cRight.m_aSegments.size()) return false;
    for (std::size_t i = 0; i < cLeft.m_aSegments.size(); ++i)
    {
        const ClSlapRunResult::ClSegment& cOne = cLeft.m_aSegments[i];
        const ClSlapRunResult::ClSegment& cOther = cRight.m_aSegments[i];
        if (cOne.m_nX != cOther.m_nX || cOne.m_nY != cOther.m_nY || cOne.m_nWidth != cOther.m_nWidth ||
            cOne.m_nHeight != cOther.m_nHeight || cOne.m_aBlock != cOther.m_aBlock)
        {
            return false;
        }
    }
    return true;
}

ClSlapRunner::ClSlapRunner(long nMode, long nCoordinateOrigin)
{
    try
    {
        Demand(FPC_SUCCESS, KSInitialize(nullptr), "KSInitialize");
        m_bInitialized = true;
        Demand(FPC_SUCCESS, KSCreateSegmentationHandle(&m_hSegmentation), "KSCreateSegmentationHandle");
        Demand(FPC_SUCCESS, KSCreateSegmentHandle(&m_hSegment), "KSCreateSegmentHandle");
        Demand(FPC_SUCCESS, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", nMode), "SegmentationMode");
        Demand(FPC_SUCCESS, KSSetPropertyLongA(m_hSegmentation, "CoordinateOrigin", nCoordinateOrigin),
               "CoordinateOrigin");
    }
    catch (...)
    {
        Destroy();
        throw;
    }
}

ClSlapRunner::~ClSlapRunner()
{
    Destroy();
}

void ClSlapRunner::Destroy()
{
    if (m_hSegment != nullptr) KSDestroyHandle(&m_hSegment);
    if (m_hSegmentation != nullptr) KSDestroyHandle(&m_hSegmentation);
    if (m_bInitialized) KSUninitialize();
    m_bInitialized = false;
}

ClSlapRunResult ClSlapRunner::Run(const void* pBlock, std::size_t nSize)
{
    ClSlapRunResult cResult;
    cResult.m_nCode = KSSegmentBitmap(m_hSegmentation, static_cast<const tagBITMAPINFOHEADER*>(pBlock), nSize);
    cResult.m_nCount = LongProperty(m_hSegmentation, "Count");
    if (cResult.m_nCode != FPC_SUCCESS) return cResult;
    for (int i = 0; i < cResult.m_nCount; ++i)
    {
        Demand(FPC_SUCCESS, KSGetSegment(m_hSegmentation, i, m_hSegment), "KSGetSegment");
        cResult.m_aSegments.push_back(CopySegment(m_hSegment));
    }
    return cResult;
}

std::vector<std::uint8_t> ReadWholeFile(const std::string& sPath)
{
    std::ifstream cFile(sPath, std::ios::binary);
    std::vector<std::uint8_t> aBytes;
    if (cFile.seekg(0, std::ios::end))
    {
        // The whole size at once: a vector that grows would have held up to three times as much.
        const std::streamoff nSize = cFile.tellg();
        aBytes.resize(nSize > 0 ? static_cast<std::size_t>(nSize) : 0);
        cFile.seekg(0);
        cFile.read(reinterpret_cast<char*>(aBytes.data()), static_cast<std::streamsize>(aBytes.size()));
    }
    if (!cFile) throw std::runtime_error(sPath + ": cannot be read");
    return aBytes;
}
