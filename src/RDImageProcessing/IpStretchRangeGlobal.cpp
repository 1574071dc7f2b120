#include "RDImageProcessing/IpStretchRangeGlobal.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>

ClIpStretchRangeGlobal::ClIpStretchRangeGlobal()
{
    SetRangesToDefault();
}

void ClIpStretchRangeGlobal::SetRangesToDefault()
{
    m_nOldRangeFrom = 255;
    m_nOldRangeTo = 0;
    m_nNewRangeFrom = 0;
    m_nNewRangeTo = 255;
}

long ClIpStretchRangeGlobal::ApplyParam(ClImage& cIn, ClImage& cOut)
{
    return ClIpLookUpTableBase::ApplyParam(cIn, cOut);
}

void ClIpStretchRangeGlobal::Reset()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    SetParametersToDefault();
}

void ClIpStretchRangeGlobal::SetParametersToDefault()
{
    SetRangesToDefault();
}

void ClIpStretchRangeGlobal::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    cContainer.AddNumeric("NewRangeFrom", &m_nNewRangeFrom);
    cContainer.AddNumeric("NewRangeTo", &m_nNewRangeTo);
    cContainer.AddNumeric("OldRangeFrom", &m_nOldRangeFrom);
    cContainer.AddNumeric("OldRangeTo", &m_nOldRangeTo);
}

void ClIpStretchRangeGlobal::QueryParameters(ClParameterInterface& cInterface)
{
    DescribeStretch(cInterface, "Out: Stretched Imaged");
}

void ClIpStretchRangeGlobal::DescribeStretch(ClParameterInterface& cInterface, const char* szOutImage)
{
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", szOutImage, ClParameterInterface::eOut);
    cInterface.AddParameter(&m_nNewRangeFrom, "NewRangeFrom", "In: Stretch Range Start", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nNewRangeTo, "NewRangeTo", "In: Stretch Range End", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nOldRangeFrom, "OldRangeFrom", "In: Input Range Start", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nOldRangeTo, "OldRangeTo", "In: Input Range End", ClParameterInterface::eIn);
}

ClProcessorBase* ClIpStretchRangeGlobal::Create()
{
    return NewProcessor<ClIpStretchRangeGlobal>();
}

const char* ClIpStretchRangeGlobal::Name() const
{
    return "ClIpStretchRangeGlobal";
}

long ClIpStretchRangeGlobal::Initialize()
{
    m_nActRangeFrom = m_nOldRangeFrom;
    m_nActRangeTo = m_nOldRangeTo;
    if (m_nOldRangeTo < m_nOldRangeFrom)
    {
        CheckInput();
        int nFirst = 255;
        int nLast = 0;
        ForEachPlane(*m_pInImage,
                     [&](const ClImage& cPlane)
                     {
                         ClHistogram cHistogram;
                         cHistogram.Create(cPlane);
                         nFirst = std::min(nFirst, cHistogram.FirstValue());
                         nLast = std::max(nLast, cHistogram.LastValue());
                     });
        m_nActRangeFrom = static_cast<unsigned char>(nFirst);
        m_nActRangeTo = static_cast<unsigned char>(nLast);
    }
    CalculateLuT();
    return FPC_SUCCESS;
}

void ClIpStretchRangeGlobal::CalculateLuT()
{
    const int nOldLength = m_nActRangeTo - m_nActRangeFrom;
    if (nOldLength == 0)
    {
        for (int v = 0; v < nTableSize; ++v)
        {
            m_aLuT[v] = static_cast<unsigned char>(v);
        }
        m_bLuTValid = true;
        return;
    }
    const int nFactor = CastSample<int>((m_nNewRangeTo + 0.9 - m_nNewRangeFrom) * 4096.0 / nOldLength);
    int nScaled = -m_nActRangeFrom * nFactor;
    for (int v = 0; v < nTableSize; ++v, nScaled += nFactor)
    {
        const int nValue = m_nNewRangeFrom + (nScaled >> 12);
        m_aLuT[v] = nValue < m_nNewRangeFrom
                        ? m_nNewRangeFrom
                        : static_cast<unsigned char>(std::min(nValue, static_cast<int>(m_nNewRangeTo)));
    }
    m_bLuTValid = true;
}
