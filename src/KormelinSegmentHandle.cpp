#include "KormelinSegmentHandle.hpp"

#include "RDTools/BitmapLayout.hpp"

namespace
{
[[noreturn]] void Throw(long nNumber, long nLine)
{
    throw ClExVelmarin(nNumber, "KormelinSegmentHandle", nLine);
}
} // namespace

const char ClKormelinSegmentHandle::m_szSignature[8] = "SEGMENT";

void ClKormelinSegmentHandle::SetRectangle(int nX, int nY, int nWidth, int nHeight)
{
    if (nX < 0 || nY < 0 || nWidth < 0 || nHeight < 0)
    {
        Throw(FPC_ERROR_PARAM_OUT_OF_RANGE, __LINE__);
    }
    m_nX = nX;
    m_nY = nY;
    m_nWidth = nWidth;
    m_nHeight = nHeight;
}

void ClKormelinSegmentHandle::SetBitmap(ClBitmap& cBitmap)
{
    m_cBitmap = cBitmap;
}

void ClKormelinSegmentHandle::GetBitmap(tagBITMAPINFOHEADER* pBitmap, unsigned long* pnSize)
{
    if (pnSize == nullptr)
    {
        Throw(FPC_ERROR_PARAM_IS_MISSING, __LINE__);
    }
    const tagBITMAPINFOHEADER* pHeader = m_cBitmap.m_pBIH.get();
    if (pHeader == nullptr)
    {
        Throw(FPC_ERROR_EMPTY_HANDLE, __LINE__);
    }
    const unsigned long nCallers = *pnSize;
    *pnSize = pHeader->biSize + ClBitmapLayout::TableBytes(*pHeader) + ClBitmapLayout::PixelBytes(*pHeader);
    if (nCallers < *pnSize)
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE, __LINE__);
    }
    if (pBitmap != nullptr)
    {
        m_cBitmap.CopyTo(reinterpret_cast<unsigned char*>(pBitmap));
    }
}

void ClKormelinSegmentHandle::OnQueryPropertys(ClParameterContainer& cProperties)
{
    const std::pair<const char*, int*> aFields[] = {{"x", &m_nX},
                                                    {"y", &m_nY},
                                                    {"Height", &m_nHeight},
                                                    {"Width", &m_nWidth},
                                                    {"FingerPosition", &m_nFingerPosition}};
    for (const auto& [szName, pnField] : aFields)
    {
        cProperties.AddNumeric(szName, pnField)->m_nFlags = ClParameter::eReadable;
    }
}
