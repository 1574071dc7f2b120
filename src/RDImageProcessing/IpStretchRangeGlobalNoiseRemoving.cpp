#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <algorithm>

ClIpStretchRangeGlobalNoiseRemoving::ClIpStretchRangeGlobalNoiseRemoving() = default;

long ClIpStretchRangeGlobalNoiseRemoving::ApplyParam(ClImage& cIn, ClImage& cOut, double dDarkNoisePart,
                                                     double dBrightNoisePart)
{
    m_dDarkNoisePart = dDarkNoisePart;
    m_dBrightNoisePart = dBrightNoisePart;
    return ClIpStretchRangeGlobal::ApplyParam(cIn, cOut);
}

void ClIpStretchRangeGlobalNoiseRemoving::SetParametersToDefault()
{
    ClIpStretchRangeGlobal::SetParametersToDefault();
    m_dDarkNoisePart = 0.0;
    m_dBrightNoisePart = 0.0;
}

void ClIpStretchRangeGlobalNoiseRemoving::PublishParameters(ClParameterContainer& cContainer)
{
    ClIpStretchRangeGlobal::PublishParameters(cContainer);
    const auto addShare = [&cContainer](const char* szName, double* pdShare)
    {
        auto* pShare = cContainer.AddNumeric(szName, pdShare);
        pShare->SetLowerBoundary(1.0); // the reversed pair is the mark of "no range"
        pShare->SetUpperBoundary(-1.0);
    };
    addShare("DarkNoisePart", &m_dDarkNoisePart);
    addShare("BrightNoisePart", &m_dBrightNoisePart);
}

void ClIpStretchRangeGlobalNoiseRemoving::QueryParameters(ClParameterInterface& cInterface)
{
    DescribeStretch(cInterface, "Out: Stretched Image");
    cInterface.AddParameter(&m_dDarkNoisePart, "DarkNoisePart", "In: Noise Level For Dark Pixels",
                            ClParameterInterface::eIn);
    cInterface.AddParameter(&m_dBrightNoisePart, "BrightNoisePart", "In: Noise Level For Bright Pixels",
                            ClParameterInterface::eIn);
}

ClProcessorBase* ClIpStretchRangeGlobalNoiseRemoving::Create()
{
    return NewProcessor<ClIpStretchRangeGlobalNoiseRemoving>();
}

const char* ClIpStretchRangeGlobalNoiseRemoving::Name() const
{
    return "ClIpStretchRangeGlobalNoiseRemoving";
}

long ClIpStretchRangeGlobalNoiseRemoving::Initialize()
{
    CheckInput();
    if (m_ppOutImage != nullptr)
    {
        m_pOutImage = *m_ppOutImage;
    }
    if (m_pOutImage == nullptr)
    {
        m_pOutImage = m_pInImage;
    }
    if (m_pOutImage != m_pInImage)
    {
        m_pOutImage->New(*m_pInImage);
    }
    m_nActRangeFrom = 255;
    m_nActRangeTo = 0;
    ForEachPlane(*m_pInImage,
                 [this](const ClImage& cPlane)
                 {
                     ClHistogram cHistogram;
                     cHistogram.Create(cPlane);
                     unsigned char nFrom = 0;
                     unsigned char nTo = 0;
                     cHistogram.GetNoiseFreeRange(m_dDarkNoisePart, m_dBrightNoisePart, nFrom, nTo);
                     m_nActRangeFrom = std::min(m_nActRangeFrom, nFrom);
                     m_nActRangeTo = std::max(m_nActRangeTo, nTo);
                 });
    m_nActRangeFrom = std::min(m_nActRangeFrom, m_nActRangeTo);
    CalculateLuT();
    return FPC_SUCCESS;
}
