#include "RDImageProcessing/IpGammaCorrection.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/SampleCast.hpp"

#include <cmath>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpGammaCorrection";
constexpr int nTableSize = 256;
constexpr double dMaxGamma = 5.0;

[[noreturn]] void Throw(const char* szText, long nCode, long nLine)
{
    throw ClException(szText, nCode, true, szModule, nLine);
}

/// Not a number stays.
double Limited(double dValue, double dTo)
{
    return dValue < 0.0 ? 0.0 : (dValue > dTo ? dTo : dValue);
}
} // namespace

ClIpGammaCorrection::ClIpGammaCorrection()
{
    EnableDataType(ClImage::eUInt8);
}

long ClIpGammaCorrection::ApplyParam(ClImage& cImage, double dGamma)
{
    m_dGamma = dGamma;
    return ApplyParam(cImage);
}

long ClIpGammaCorrection::ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char nBlack, unsigned char nWhite,
                                     double dGamma)
{
    m_nBlack = nBlack;
    m_nWhite = nWhite;
    m_dGamma = dGamma;
    return ApplyParam(cIn, cOut);
}

void ClIpGammaCorrection::SetParametersToDefault()
{
    m_nBlack = 0;
    m_nWhite = 255;
    m_dGamma = 1.0;
}

void ClIpGammaCorrection::PublishParameters(ClParameterContainer& cContainer)
{
    NewIpBase::ClIp1to1Base::PublishParameters(cContainer);
    cContainer.AddNumeric("Black", &m_nBlack);
    cContainer.AddNumeric("White", &m_nWhite);
    cContainer.AddNumeric("Gamma", &m_dGamma);
}

ClProcessorBase* ClIpGammaCorrection::Create()
{
    return NewProcessor<ClIpGammaCorrection>();
}

const char* ClIpGammaCorrection::Name() const
{
    return "ClIpGammaCorrection";
}

void ClIpGammaCorrection::CheckInOutImageTypes()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        Throw("Input or output image not assigned.", FPC_ERROR_BAD_POINTER, __LINE__);
    }
    if (m_pInImage->m_nWidth < 1 || m_pInImage->m_nHeight < 1)
    {
        Throw("Input image must have positive height and width.", FPC_ERROR_BITMAP_DIMENSION, __LINE__);
    }
    if (m_pInImage->m_nPlanes != 1)
    {
        Throw("Processor can handle 1-plane images only.", FPC_ERROR_BITMAP_PLANE, __LINE__);
    }
    if (m_nBlack > m_nWhite)
    {
        Throw("Black value is larger than white value", FPC_ERROR_INVALID_PARAMETER, __LINE__);
    }
    if (m_dGamma < 0.0 || m_dGamma > dMaxGamma)
    {
        Throw("Parameter m_dGamma out of range.", FPC_ERROR_PARAM_OUT_OF_RANGE, __LINE__);
    }
    CheckTypeAllowed(m_pInImage);
}

long ClIpGammaCorrection::Process()
{
    if (m_pInImage->Data() == nullptr)
    {
        Throw("m_pInImage->Data() is not set", FPC_ERROR_BAD_POINTER, __LINE__);
    }
    if (m_pOutImage != m_pInImage)
    {
        m_pOutImage->New(*m_pInImage);
    }
    TpArrayStatic<unsigned char> anTable(nTableSize);
    const double dLength = m_nWhite - m_nBlack;
    for (int v = 0; v < nTableSize; ++v)
    {
        const int nAbove = v > m_nBlack ? v - m_nBlack : 0;
        const double dShare = Limited(nAbove * 255.0 / dLength, 255.0) * 0.00392156862745098;
        const double dCurve = Limited(std::pow(dShare, 1.0 / m_dGamma), 1.0);
        anTable[static_cast<unsigned long>(v)] = CastSample<unsigned char>(dCurve * 255.0 + 0.5);
    }
    MapThroughTable(*m_pInImage, *m_pOutImage, anTable.m_pData);
    return FPC_SUCCESS;
}
