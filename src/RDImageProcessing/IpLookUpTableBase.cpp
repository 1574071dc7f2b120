#include "RDImageProcessing/IpLookUpTableBase.hpp"

#include "RDImageProcessing/Ip1to1Base.hpp"
#include "RDImageProcessing/PlaneByPlane.hpp"

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpLookUpTableBase";
} // namespace

long ClIpLookUpTableBase::ApplyParam(ClImage& cIn, ClImage& cOut)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    return Apply();
}

long ClIpLookUpTableBase::ApplyParam(ClImage& cImage)
{
    return ApplyParam(cImage, cImage);
}

void ClIpLookUpTableBase::SetParametersToDefault() {}

void ClIpLookUpTableBase::CalculateLuT() {}

void ClIpLookUpTableBase::CheckInput() const
{
    if (m_pInImage == nullptr)
    {
        throw ClException("m_pInImage is not set.", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
}

long ClIpLookUpTableBase::Initialize()
{
    CalculateLuT();
    return FPC_SUCCESS;
}

long ClIpLookUpTableBase::Process()
{
    CheckInput();
    if (m_pOutImage == nullptr)
    {
        throw ClException("m_pOutImage is not set.", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
    if (ClImage::SampleSize(m_pInImage->m_eDataType) != 1)
    {
        return FPC_ERROR_FORMAT_NOTSUPPORTED;
    }
    if (m_pInImage->Data() == nullptr && m_pInImage->m_nWidth > 0 && m_pInImage->m_nHeight > 0)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_pInImage->m_nPlanes > 1)
    {
        return ProcessMultiPlane();
    }
    if (m_pOutImage != m_pInImage)
    {
        m_pOutImage->New(*m_pInImage);
    }
    MapThroughTable(*m_pInImage, *m_pOutImage, m_aLuT);
    m_bLuTValid = true;
    return FPC_SUCCESS;
}

long ClIpLookUpTableBase::ProcessMultiPlane()
{
    return ProcessPlaneByPlane(*this, m_pInImage, m_pOutImage, ClIpSplitPlanes::nMaxPlanes, [this](int) { Process(); });
}
