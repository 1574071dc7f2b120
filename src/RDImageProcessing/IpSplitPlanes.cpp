#include "RDImageProcessing/IpSplitPlanes.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <algorithm>
#include <cstdio>
#include <iterator>

long ClIpSplitPlanes::ApplyParam(ClImage& cIn, ClImage* pPlane0, ClImage* pPlane1, ClImage* pPlane2, ClImage* pPlane3)
{
    m_pInImage = &cIn;
    m_apOutPlane[0] = pPlane0;
    m_apOutPlane[1] = pPlane1;
    m_apOutPlane[2] = pPlane2;
    m_apOutPlane[3] = pPlane3;
    return Apply();
}

void ClIpSplitPlanes::SetParametersToDefault()
{
    m_pInImage = nullptr;
    std::fill(std::begin(m_apOutPlane), std::end(m_apOutPlane), nullptr);
}

void ClIpSplitPlanes::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    for (int i = 0; i < nMaxPlanes; ++i)
    {
        char szName[32];
        std::snprintf(szName, sizeof szName, "pOutPlane[%d]", i);
        cContainer.AddPointer(szName, &m_apOutPlane[i]);
    }
}

void ClIpSplitPlanes::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
}

ClProcessorBase* ClIpSplitPlanes::Create()
{
    return NewProcessor<ClIpSplitPlanes>();
}

const char* ClIpSplitPlanes::Name() const
{
    return "ClIpSplitPlanes";
}

long ClIpSplitPlanes::Process()
{
    if (m_pInImage == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_pInImage->m_nPlanes > nMaxPlanes)
    {
        throw ClException("Image has more than 4 planes.", FPC_ERROR_PARAM_OUT_OF_RANGE, true,
                          "RDImageProcessing/IpSplitPlanes", __LINE__);
    }
    ClImage cForInput; // an output that is the input waits here until all planes are read
    ClImage* pReplaced = nullptr;
    for (int i = 0; i < m_pInImage->m_nPlanes; ++i)
    {
        ClImage* pPlane = m_apOutPlane[i];
        if (pPlane == m_pInImage)
        {
            pReplaced = pPlane;
            pPlane = &cForInput;
            cForInput.m_nAttribute = m_pInImage->m_nAttribute; // an image keeps it when it is made anew
        }
        if (pPlane != nullptr)
        {
            m_pInImage->GetPlane(i, *pPlane);
        }
    }
    if (pReplaced != nullptr)
    {
        pReplaced->Swap(cForInput);
    }
    return FPC_SUCCESS;
}
