#include "RDImageProcessing/IpJoinPlanes.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <limits>

namespace
{
/// Planes of an image of this content, or a negative error.
int PlanesOfContent(ClImage::EContent eContent, int nPlanesIfUnknown)
{
    switch (eContent)
    {
    case ClImage::eUnknown:
        return nPlanesIfUnknown <= ClIpJoinPlanes::nMaxPlanes ? std::max(nPlanesIfUnknown, 0)
                                                              : static_cast<int>(FPC_ERROR_PARAM_OUT_OF_RANGE);
    case ClImage::eGrayscale: return 1;
    case ClImage::eRGB:
    case ClImage::eHSV:
    case ClImage::eCIELUV: return 3;
    case ClImage::eRGBA: return 4;
    default: // eXYZ and eCIELab are refused on purpose, though they have names
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
}

/// What a plane has of the output's samples: rows from row 0, samples from the first of each row.
struct StPart
{
    int nWidth;
    int nHeight;
};

StPart PartOf(const ClImage& cPlane, const ClImage& cOut)
{
    const int nSize = ClImage::SampleSize(cOut.m_eDataType);
    const bool bPixels = cPlane.Data() != nullptr && cOut.Data() != nullptr;
    if (!bPixels || cPlane.m_eDataType != cOut.m_eDataType || nSize == 0) return {0, 0};
    return {std::min({cPlane.SamplesPerRow(), cPlane.Stride() / nSize, cOut.m_nWidth}),
            std::min(cPlane.m_nHeight, cOut.m_nHeight)};
}

/// Whether a plane has all samples of the output. One that an operator has failed to make has none.
bool IsWhole(const ClImage* pPlane, const ClImage& cOut)
{
    if (pPlane == nullptr) return false;
    const StPart cPart = PartOf(*pPlane, cOut);
    return cPart.nWidth == cOut.m_nWidth && cPart.nHeight == cOut.m_nHeight;
}

template <class T> void InterleavePlane(const ClImage& cPlane, int nPlane, ClImage& cOut)
{
    const auto [nWidth, nHeight] = PartOf(cPlane, cOut);
    const std::ptrdiff_t nStep = cOut.m_nPlanes;
    for (int y = 0; y < nHeight; ++y)
    {
        const T* pIn = Row<T>(cPlane, y);
        T* pOut = Row<T>(cOut, y) + nPlane;
        for (int x = 0; x < nWidth; ++x)
        {
            pOut[x * nStep] = pIn[x];
        }
    }
}

template <class T> void FillPlane(T tValue, int nPlane, ClImage& cOut)
{
    if (cOut.m_nWidth < 1 || cOut.Data() == nullptr) return;
    const std::ptrdiff_t nStep = cOut.m_nPlanes;
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        T* pOut = Row<T>(cOut, y) + nPlane;
        for (int x = 0; x < cOut.m_nWidth; ++x)
        {
            pOut[x * nStep] = tValue;
        }
    }
}
} // namespace

ClIpJoinPlanes::ClIpJoinPlanes()
{
    std::fill(std::begin(m_adFillcolors), std::end(m_adFillcolors), std::numeric_limits<double>::quiet_NaN());
}

long ClIpJoinPlanes::ApplyParam(ClImage& cOut, ClImage* pPlane0, ClImage* pPlane1, ClImage* pPlane2, ClImage* pPlane3)
{
    m_pOutImage = &cOut;
    m_apInPlane[0] = pPlane0;
    m_apInPlane[1] = pPlane1;
    m_apInPlane[2] = pPlane2;
    m_apInPlane[3] = pPlane3;
    return Apply();
}

void ClIpJoinPlanes::SetParametersToDefault()
{
    std::fill(std::begin(m_apInPlane), std::end(m_apInPlane), nullptr);
    std::fill(std::begin(m_adFillcolors), std::end(m_adFillcolors), std::numeric_limits<double>::quiet_NaN());
    m_pOutImage = nullptr;
    m_eOutContent = ClImage::eUnknown;
    m_bFillEmptyPlanes = 1;
}

void ClIpJoinPlanes::PublishParameters(ClParameterContainer& cContainer)
{
    char szName[32];
    for (int i = 0; i < nMaxPlanes; ++i)
    {
        std::snprintf(szName, sizeof szName, "pInPlane[%d]", i);
        cContainer.AddPointer(szName, &m_apInPlane[i]);
    }
    for (int i = 0; i < nMaxPlanes; ++i)
    {
        std::snprintf(szName, sizeof szName, "dInFillcolors[%d]", i);
        cContainer.AddNumeric(szName, &m_adFillcolors[i]);
    }
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    auto* pContent =
        cContainer.AddParam<TpParameterEnumPointer<ClImage::EContent, ClParameter>>("eOutContent", &m_eOutContent);
    pContent->AddValue(ClImage::eUnknown, "eUnknown");
    pContent->AddValue(ClImage::eGrayscale, "eGrayscale");
    pContent->AddValue(ClImage::eRGB, "eRGB");
    pContent->AddValue(ClImage::eRGBA, "eRGBA");
    pContent->AddValue(ClImage::eHSV, "eHSV");
    pContent->AddValue(ClImage::eXYZ, "eXYZ");
    pContent->AddValue(ClImage::eCIELab, "eCIELab");
    pContent->AddValue(ClImage::eCIELUV, "eCIELUV");
    auto* pFill =
        cContainer.AddParam<TpParameterEnumPointer<int, ClParameter>>("bFillEmptyPlanes", &m_bFillEmptyPlanes);
    pFill->AddValue(0, "False");
    pFill->AddValue(1, "True");
}

void ClIpJoinPlanes::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Joined Image", ClParameterInterface::eOut);
}

ClProcessorBase* ClIpJoinPlanes::Create()
{
    return NewProcessor<ClIpJoinPlanes>();
}

const char* ClIpJoinPlanes::Name() const
{
    return "ClIpJoinPlanes";
}

long ClIpJoinPlanes::Process()
{
    const int nPlanes = PlanesOfContent(m_eOutContent, m_nOutPlanes);
    if (nPlanes <= 0)
    {
        return nPlanes;
    }
    ClImage** const pEnd = m_apInPlane + nPlanes;
    ClImage** const pFirst = std::find_if(m_apInPlane, pEnd, [](ClImage* p) { return p != nullptr; });
    if (m_pOutImage == nullptr || pFirst == pEnd)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (std::find(pFirst, pEnd, m_pOutImage) == pEnd)
    {
        return Join(*m_pOutImage, **pFirst, nPlanes);
    }
    ClImage cTemporary; // the output is read as a plane, too
    cTemporary.m_nAttribute = m_pOutImage->m_nAttribute;
    const long nResult = Join(cTemporary, **pFirst, nPlanes);
    m_pOutImage->Swap(cTemporary);
    return nResult;
}

long ClIpJoinPlanes::Join(ClImage& cOut, const ClImage& cModel, int nPlanes) const
{
    cOut.NewWithType(cModel.m_eDataType, cModel.m_nWidth, cModel.m_nHeight, nPlanes, cModel.m_nXRes, cModel.m_nYRes);
    if (m_eOutContent != ClImage::eUnknown)
    {
        cOut.m_eContent = m_eOutContent;
    }
    return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  using T = typename decltype(cTag)::Type;
                                  for (int i = 0; i < nPlanes; ++i)
                                  {
                                      if (m_bFillEmptyPlanes != 0 && !IsWhole(m_apInPlane[i], cOut))
                                      {
                                          FillPlane(CastSample<T>(m_adFillcolors[i]), i, cOut);
                                      }
                                      if (m_apInPlane[i] != nullptr)
                                      {
                                          InterleavePlane<T>(*m_apInPlane[i], i, cOut);
                                      }
                                  }
                                  return long(FPC_SUCCESS);
                              });
}
