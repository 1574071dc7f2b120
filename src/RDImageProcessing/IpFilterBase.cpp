#include "RDImageProcessing/IpFilterBase.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <cstring>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpFilterBase";
constexpr StEnumName aModeNames[] = {{ClIpFilterBase::eModeX, "Mode X"},
                                     {ClIpFilterBase::eModeY, "Mode Y"},
                                     {ClIpFilterBase::eModeXY, "Mode XY"},
                                     {ClIpFilterBase::eModeDirected, "MODE_DIRECTED"},
                                     {ClIpFilterBase::eModeDirectedOrtho, "MODE_DIRECTED_ORTHO"}};

void MakeZero(const ClImage& cModel, ClImage& cOut)
{
    cOut.New(cModel);
    if (cOut.Data() != nullptr)
    {
        std::memset(cOut.Data(), 0, static_cast<std::size_t>(cOut.Stride()) * static_cast<std::size_t>(cOut.m_nHeight));
    }
}
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
    pMode->AddValues(aModeNames);
    cContainer.AddPointer("pInDxImage", &m_pInDxImage);
    cContainer.AddPointer("pInDyImage", &m_pInDyImage);
}

void ClIpFilterBase::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Output Image", ClParameterInterface::eOut);
    cInterface.AddParameter(&m_nFilterWidth, "nFilterWidth", "in: Filter Width", ClParameterInterface::eIn);
    // The mode goes by this name and text: descriptions that were kept have them.
    auto* pMode =
        cInterface.AddChoice(&m_nMode, "eFilterWidth", "in: Filter Width", ClParameterInterface::eIn, aModeNames);
    pMode->m_eType = ClParameterInterface::eEnum;
    cInterface.AddParameter(&m_pInDxImage, "InDxImage", "in: Dx Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pInDyImage, "InDyImage", "in: Dy Image", ClParameterInterface::eIn);
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
    // A pass that reduces the width does so for the planes that follow, so their order is told by the results.
    const auto process = [this](int)
    {
        if (Process() == FPC_ERROR_INTERNAL)
        {
            MakeZero(*m_pInImage, *m_pOutImage); // the run goes on: no sample may be what the memory happened to hold
        }
    };
    ProcessPlaneByPlane(*this, m_pInImage, m_pOutImage, 3, process, true);
    m_pOutImage->m_nAttribute = m_pInImage->m_nAttribute;
}

long ClIpFilterBase::DoProcess()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
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
