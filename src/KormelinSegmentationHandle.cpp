#include "KormelinSegmentationHandle.hpp"

#include "KormelinSegmentHandle.hpp"
#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDTools/SampleCast.hpp"

namespace
{
[[noreturn]] void Throw(long nNumber, long nLine)
{
    throw ClExVelmarin(nNumber, "KormelinSegmentationHandle", nLine);
}
} // namespace

const char ClKormelinSegmentationHandle::m_szSignature[8] = "KS";

void ClKormelinSegmentationHandle::SegmentBitmap(const tagBITMAPINFOHEADER* pBitmap, unsigned long nSize)
{
    if (pBitmap == nullptr)
    {
        Throw(FPC_ERROR_BITMAP_PTR, __LINE__);
    }
    auto* pDIB = reinterpret_cast<unsigned char*>(const_cast<tagBITMAPINFOHEADER*>(pBitmap)); // is only read
    ClBitmap cBitmap;
    cBitmap.Attach(pDIB, nSize);
    m_cImage.Attach(cBitmap);
    if (m_cImage.m_nPlanes != 1) // 0 of a compressed bitmap
    {
        Throw(FPC_ERROR_BITMAP_PLANE, __LINE__);
    }
    if (!ClBitmap::HoldsPixels(pDIB, nSize)) // the bitmap may end with its colour table, an image may not
    {
        Throw(FPC_ERROR_TEMPLATE_SIZE, __LINE__);
    }
    m_aRectangles.Clear();
    m_aImages.Clear();
    if (m_nSegmentationMode != 0)
    {
        CutBiggestComponent();
    }
    else
    {
        CutFingers();
    }
}

void ClKormelinSegmentationHandle::CutBiggestComponent()
{
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    if (const long nError = cCut.ApplyParam(m_cImage, cOut))
    {
        Throw(nError, __LINE__);
    }
    m_nCount = 1;
    tagRECT cRectangle;
    cRectangle.left = static_cast<int>(cCut.m_nCutX0);
    cRectangle.bottom = static_cast<int>(cCut.m_nCutY0);
    cRectangle.right = static_cast<int>(cCut.m_nCutX0 + cCut.m_nCutWidth);
    cRectangle.top = static_cast<int>(cCut.m_nCutY0 + cCut.m_nCutHeight);
    AddSegment(cRectangle, cOut);
}

void ClKormelinSegmentationHandle::CutFingers()
{
    ClIpFourPrintSegmentation cProcessor;
    cProcessor.m_pInImage = &m_cImage;
    cProcessor.m_pOutImage = nullptr;
    if (const long nError = cProcessor.Apply())
    {
        Throw(nError, __LINE__);
    }
    m_nCount = cProcessor.m_nFingers; // stays, if it is too large: the application can read how many there are
    if (m_nCount > static_cast<int>(nMaxSegments))
    {
        Throw(FPC_ERROR_PARAM_OUT_OF_RANGE, __LINE__);
    }
    for (unsigned long i = 0; static_cast<long>(i) < m_nCount; ++i)
    {
        AddSegment(cProcessor.m_aRects[i], cProcessor.m_aImages[i]);
    }
}

void ClKormelinSegmentationHandle::AddSegment(const tagRECT& cRectangle, const ClImage& cImage)
{
    const unsigned long nIndex = m_aImages.Add(cImage); // first: without memory for it there must be no rectangle
    m_aImages[nIndex].FillAligment(0);                  // no operator writes the padding, but it leaves the library
    m_aRectangles.Add(cRectangle);
}

void ClKormelinSegmentationHandle::GetSegment(ClKormelinSegmentationHandle* pSelf, int nIndex,
                                              ClKormelinSegmentHandle* pSegment)
{
    if (pSegment == nullptr || pSelf == nullptr)
    {
        Throw(FPC_ERROR_NO_HANDLE, __LINE__);
    }
    const auto nSegment = static_cast<unsigned int>(nIndex); // a negative index becomes a large one
    if (nSegment >= nMaxSegments || nSegment >= m_aRectangles.Entries())
    {
        Throw(FPC_ERROR_PARAM_OUT_OF_RANGE, __LINE__);
    }
    const tagRECT& cRectangle = m_aRectangles[nSegment];
    ClBitmap cBitmap;
    cBitmap.Attach(m_aImages[nSegment]);
    pSegment->SetBitmap(cBitmap);
    const int nY = m_nCoordinateOrigin == 1 ? WrapSubtract(m_cImage.m_nHeight, cRectangle.top) : cRectangle.bottom;
    pSegment->SetRectangle(cRectangle.left, nY, cRectangle.right - cRectangle.left, cRectangle.top - cRectangle.bottom);
}

void ClKormelinSegmentationHandle::OnQueryPropertys(ClParameterContainer& cProperties)
{
    cProperties.AddNumeric("Count", &m_nCount)->m_nFlags = ClParameter::eReadable;
    const std::pair<const char*, long*> aSwitches[] = {{"CoordinateOrigin", &m_nCoordinateOrigin},
                                                       {"SegmentationMode", &m_nSegmentationMode}};
    for (const auto& [szName, pnField] : aSwitches)
    {
        auto* pSwitch = cProperties.AddNumeric(szName, pnField);
        pSwitch->m_Lower = 0;
        pSwitch->m_Upper = 1;
        pSwitch->m_nFlags = ClParameter::eWritable | ClParameter::eReadable | ClParameter::eRefuse;
    }
}
