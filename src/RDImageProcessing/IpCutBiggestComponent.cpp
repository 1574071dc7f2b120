#include "RDImageProcessing/IpCutBiggestComponent.hpp"

#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDTools/Exception.hpp"

#include <algorithm>

namespace
{
using ClComponent = ClIpConnectedComponent2::ClComponent;
using BiggestFirst = ClIpConnectedComponent2::TpSortDescending<&ClComponent::Area, ClIpConnectedComponent2::ClSortNone>;

constexpr double dPureWhite = 255.0; // the sample value that is no object
} // namespace

ClIpCutBiggestComponent::ClIpCutBiggestComponent()
{
    EnableAllDataTypes();
    m_bInPlace = true;
}

ClProcessorBase* ClIpCutBiggestComponent::Create()
{
    return NewProcessor<ClIpCutBiggestComponent>();
}

const char* ClIpCutBiggestComponent::Name() const
{
    return "ClIpCutBiggestComponent";
}

long ClIpCutBiggestComponent::DoProcess(ClImage& cIn, ClImage& cOut)
{
    long nResult;
    {
        // The output's block, which the frame has made with the size of the input, serves for the binary image. A block
        // of its own is needed only where the two images are one.
        ClImage cTemporary;
        nResult = FindBiggest(cIn, cOut.Data() != cIn.Data() ? cOut : cTemporary);
    }
    if (nResult != FPC_SUCCESS)
    {
        return nResult;
    }
    return ClIpCut().ApplyParam(cIn, m_nCutX0, m_nCutY0, m_nCutWidth, m_nCutHeight, cOut);
}

long ClIpCutBiggestComponent::FindBiggest(ClImage& cIn, ClImage& cBinary)
{
    if (const long nFailure = ClIpBinarizeGlobal().ApplyParam(cIn, cBinary, dPureWhite))
    {
        return nFailure;
    }
    ClIpConnectedComponent2::ComponentsArray_t aComponents;
    ClIpConnectedComponent2 cMeasure;
    cMeasure.pInImage = &cBinary;
    cMeasure.m_pComponents = &aComponents;
    cMeasure.m_bMomentsOnDemand = true; // area and extent are enough
    cMeasure.Apply();
    if (aComponents.Entries() == 0)
    {
        return FPC_ERROR_PARAM_INVALID;
    }
    // Up to 16 entries std::sort is a plain insertion sort, which keeps equal entries in their order.
    std::sort(aComponents.m_pData, aComponents.m_pData + aComponents.Entries(), BiggestFirst());
    const ClComponent& cBiggest = aComponents[0];
    m_nCutX0 = static_cast<long>(cBiggest.m_cMin.m_dX);
    m_nCutY0 = static_cast<long>(cBiggest.m_cMin.m_dY);
    m_nCutWidth = static_cast<long>(cBiggest.m_cMax.m_dX - cBiggest.m_cMin.m_dX);
    m_nCutHeight = static_cast<long>(cBiggest.m_cMax.m_dY - cBiggest.m_cMin.m_dY);
    return FPC_SUCCESS;
}
