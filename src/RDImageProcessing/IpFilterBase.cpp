#include "RDImageProcessing/IpFilterBase.hpp"

#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpFilterBase";
} // namespace

long ClIpFilterBase::ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth, long nMode)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_nFilterWidth = nWidth;
    m_nMode = nMode;
    return Apply();
}

void ClIpFilterBase::SetParametersToDefault()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    m_nFilterWidth = 3;
    m_nMode = eModeXY;
    m_pInDxImage = nullptr;
    m_pInDyImage = nullptr;
}

void ClIpFilterBase::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    cContainer.AddNumeric("nFilterWidth", &m_nFilterWidth);
    auto* pMode = cContainer.AddParam<TpParameterEnumPointer<long, ClParameter>>("nMode", &m_nMode);
    pMode->AddValue(eModeX, "Mode X");
    pMode->AddValue(eModeY, "Mode Y");
    pMode->AddValue(eModeXY, "Mode XY");
    pMode->AddValue(eModeDirected, "MODE_DIRECTED");
    pMode->AddValue(eModeDirectedOrtho, "MODE_DIRECTED_ORTHO");
    cContainer.AddPointer("pInDxImage", &m_pInDxImage);
    cContainer.AddPointer("pInDyImage", &m_pInDyImage);
}

void ClIpFilterBase::ParameterString(char* szBuffer, unsigned long nSize)
{
    const char* szSign = "Unknown";
    if (m_pInImage != nullptr)
    {
        szSign = ClImage::IsSignedType(m_pInImage->m_eDataType) ? "Signed" : "Unsigned";
    }
    FormatSettings(szBuffer, nSize, "W[%ld] M[%s%s%s%s] S[%s]", m_nFilterWidth, (m_nMode & eModeX) != 0 ? "X" : "",
                   (m_nMode & eModeY) != 0 ? "Y" : "", (m_nMode & eModeDirected) != 0 ? "Directed" : "",
                   (m_nMode & eModeDirectedOrtho) != 0 ? "DirectedOrtho" : "", szSign);
}

long ClIpFilterBase::Process()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    if (m_nFilterWidth <= 1)
    {
        *m_pOutImage = *m_pInImage;
        return FPC_SUCCESS;
    }
    if (m_pInImage->m_nPlanes >= 2)
    {
        ProcessMultiPlane();
        return FPC_SUCCESS;
    }
    if (m_pInImage == m_pOutImage)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    return DoProcess();
}

void ClIpFilterBase::ProcessMultiPlane()
{
    constexpr int nPlanesRun = 3;
    ClImage acPlanes[nPlanesRun];
    ClIpSplitPlanes cSplit;
    cSplit.Timer(IsTimerEnabled());
    cSplit.ApplyParam(*m_pInImage, &acPlanes[0], &acPlanes[1], &acPlanes[2], nullptr);
    const int nPlanes = std::min(m_pInImage->m_nPlanes, nPlanesRun);
    {
        const ClImagesKept cKept(*this);
        for (int i = nPlanes - 1; i >= 0; --i)
        {
            ClImage cResult;
            m_pInImage = &acPlanes[i];
            m_pOutImage = &cResult;
            Process();
            acPlanes[i].Swap(cResult);
        }
    }
    ClIpJoinPlanes cJoin;
    cJoin.Timer(IsTimerEnabled());
    cJoin.m_eOutContent = m_pInImage->m_eContent;
    cJoin.m_nOutPlanes = m_pInImage->m_nPlanes; // for an image of unknown content
    m_pOutImage->m_nAttribute = m_pInImage->m_nAttribute;
    cJoin.ApplyParam(*m_pOutImage, &acPlanes[0], &acPlanes[1], nPlanes > 2 ? &acPlanes[2] : nullptr, nullptr);
}

long ClIpFilterBase::DoProcess()
{
    if (m_pInImage == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    const bool bSigned = ClImage::IsSignedType(m_pInImage->m_eDataType);
    switch (m_nMode)
    {
    case eModeX: return bSigned ? ProcessSignedX() : ProcessX();
    case eModeY: return bSigned ? ProcessSignedY() : ProcessY();
    case eModeXY: return bSigned ? ProcessSignedXY() : ProcessXY();
    case eModeDirected: return bSigned ? ProcessSignedDirected(false) : ProcessDirected(false);
    case eModeDirectedOrtho: return bSigned ? ProcessSignedDirected(true) : ProcessDirected(true);
    default: throw ClExVelmarin(FPC_ERROR_PARAM_OUT_OF_RANGE, szModule, __LINE__);
    }
}

long ClIpFilterBase::ProcessX()
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}

long ClIpFilterBase::ProcessY()
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}

long ClIpFilterBase::ProcessXY()
{
    return InTwoPasses([this] { return ProcessX(); }, [this] { return ProcessY(); });
}

long ClIpFilterBase::ProcessSignedX()
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}

long ClIpFilterBase::ProcessSignedY()
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}

long ClIpFilterBase::ProcessSignedXY()
{
    return InTwoPasses([this] { return ProcessSignedX(); }, [this] { return ProcessSignedY(); });
}

long ClIpFilterBase::ProcessDirected(bool)
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}

long ClIpFilterBase::ProcessSignedDirected(bool)
{
    return FPC_ERROR_FORMAT_NOTSUPPORTED;
}
