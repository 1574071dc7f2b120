#include "RDImageProcessing/IpConnectedComponent2.hpp"

#include "RDImageProcessing/FillTools.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>
#include <cmath>

namespace
{
using ClComponent = ClIpConnectedComponent2::ClComponent;

constexpr char szModule[] = "RDImageProcessing/IpConnectedComponent2";
constexpr unsigned char nOptional = 4; // mark of a pointer that may stay null, beside the access bits

/// fn(component, column, row) for every object pixel, row by row.
template <class Fn> void ForEachObjectPixel(const ClImage& cLabels, ClComponent* pComponents, Fn&& fn)
{
    if (cLabels.Data() == nullptr)
    {
        return;
    }
    for (int y = 0; y < cLabels.m_nHeight; ++y)
    {
        const int* pLabel = Row<int>(cLabels, y);
        for (int x = 0; x < cLabels.m_nWidth; ++x)
        {
            if (pLabel[x] > 0)
            {
                fn(pComponents[pLabel[x] - 1], x, y);
            }
        }
    }
}

void AddPixel(ClComponent& cComponent, double dX, double dY)
{
    cComponent.m_cCenter.m_dX += dX;
    cComponent.m_cCenter.m_dY += dY;
    cComponent.m_dArea += 1.0;
    if (cComponent.m_dArea > 1.0)
    {
        cComponent.m_cMin.m_dX = std::min(cComponent.m_cMin.m_dX, dX);
        cComponent.m_cMin.m_dY = std::min(cComponent.m_cMin.m_dY, dY);
        cComponent.m_cMax.m_dX = std::max(cComponent.m_cMax.m_dX, dX);
        cComponent.m_cMax.m_dY = std::max(cComponent.m_cMax.m_dY, dY);
    }
    else
    {
        cComponent.m_cMin = ClVector(dX, dY);
        cComponent.m_cMax = ClVector(dX, dY);
    }
    if (cComponent.m_cFirstPixel.m_dX < 0.0 || cComponent.m_cFirstPixel.m_dY < 0.0)
    {
        cComponent.m_cFirstPixel = ClVector(dX, dY);
    }
}

void AddMoments(ClComponent& cComponent, double dX, double dY)
{
    const double dDistX = dX - cComponent.m_cCenter.m_dX;
    const double dDistY = dY - cComponent.m_cCenter.m_dY;
    cComponent.m_dMomentXY += dDistX * dDistY;
    cComponent.m_dMomentYY += dDistY * dDistY;
    cComponent.m_dMomentXX += dDistX * dDistX;
}

double Eccentricity(const ClComponent& cComponent)
{
    if (!(cComponent.m_dArea > 1.0))
    {
        return 0.0;
    }
    const double dDifference = cComponent.m_dMomentXX - cComponent.m_dMomentYY;
    const double dSum = cComponent.m_dMomentXX + cComponent.m_dMomentYY;
    const double dMixed = cComponent.m_dMomentXY;
    return (dDifference * dDifference + 4.0 * (dMixed * dMixed)) / (dSum * dSum);
}

/// Spread of the object across an axis of angle dAngle, for comparing the two axes. The mixed term is meant to carry a
/// factor of 1, not the 2 of the moment of inertia.
double SpreadAcross(const ClComponent& cComponent, double dAngle)
{
    const double dCos = std::cos(dAngle);
    const double dSin = std::sin(dAngle);
    return dCos * dCos * cComponent.m_dMomentYY - dCos * dSin * cComponent.m_dMomentXY +
           dSin * dSin * cComponent.m_dMomentXX;
}

double Orientation(const ClComponent& cComponent)
{
    constexpr double dQuarterTurn = 1.5707963267948966;
    // The divisor may be 0: an infinite quotient gives a diagonal, 0 / 0 no orientation.
    const double dAngle =
        0.5 * std::atan(2.0 * cComponent.m_dMomentXY / (cComponent.m_dMomentXX - cComponent.m_dMomentYY));
    const double dOther = dAngle + dQuarterTurn;
    return SpreadAcross(cComponent, dOther) < SpreadAcross(cComponent, dAngle) ? dOther : dAngle;
}

void Measure(const ClImage& cLabels, ClIpConnectedComponent2::ComponentsArray_t& aComponents)
{
    ClComponent* const pFirst = aComponents.m_pData;
    ClComponent* const pEnd = pFirst + aComponents.Entries();
    ForEachObjectPixel(cLabels, pFirst, [](ClComponent& cComponent, int x, int y) { AddPixel(cComponent, x, y); });
    for (ClComponent* p = pFirst; p != pEnd; ++p)
    {
        p->m_cCenter.m_dX /= p->m_dArea;
        p->m_cCenter.m_dY /= p->m_dArea;
    }
    ForEachObjectPixel(cLabels, pFirst, [](ClComponent& cComponent, int x, int y) { AddMoments(cComponent, x, y); });
    for (ClComponent* p = pFirst; p != pEnd; ++p)
    {
        p->m_dEccentricity = Eccentricity(*p);
        p->m_dOrientation = Orientation(*p);
    }
}

void MeasureGrey(const ClImage& cLabels, const ClImage& cGrey, ClIpConnectedComponent2::ComponentsArray_t& aComponents)
{
    if (!HasBytePerColumn(cGrey))
    {
        return;
    }
    ForEachObjectPixel(cLabels, aComponents.m_pData,
                       [&](ClComponent& cComponent, int x, int y)
                       { cComponent.m_dMeanGrey += Row<unsigned char>(cGrey, y)[x]; });
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        aComponents[i].m_dMeanGrey /= aComponents[i].m_dArea;
    }
}

bool Near(double d1, double d2)
{
    return std::fabs(d1 - d2) < ClVector::m_cdEpsilon;
}

bool Near(const ClVector& c1, const ClVector& c2)
{
    return Near(c1.m_dX, c2.m_dX) && Near(c1.m_dY, c2.m_dY);
}
} // namespace

bool ClIpConnectedComponent2::ClComponent::operator==(const ClComponent& cOther) const
{
    return Near(m_cCenter, cOther.m_cCenter) && Near(m_cFirstPixel, cOther.m_cFirstPixel) &&
           m_dArea == cOther.m_dArea && m_dEccentricity == cOther.m_dEccentricity && Near(m_cMin, cOther.m_cMin) &&
           Near(m_cMax, cOther.m_cMax) && m_dMeanGrey == cOther.m_dMeanGrey && m_nLabel == cOther.m_nLabel;
}

void ClIpConnectedComponent2::SetParametersToDefault() {}

void ClIpConnectedComponent2::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &pInImage)->m_nFlags = ClParameter::eWritable;
    cContainer.AddPointer("m_pInImageGrey", &m_pInImageGrey)->m_nFlags = ClParameter::eWritable | nOptional;
    cContainer.AddPointer("m_pOutImage", &m_pOutImage)->m_nFlags = ClParameter::eReadable | nOptional;
}

ClProcessorBase* ClIpConnectedComponent2::Create()
{
    return NewProcessor<ClIpConnectedComponent2>();
}

const char* ClIpConnectedComponent2::Name() const
{
    return "ClIpConnectedComponent2";
}

bool ClIpConnectedComponent2::GreyHasSameSize() const
{
    return m_pInImageGrey == nullptr ||
           (m_pInImageGrey->m_nWidth == pInImage->m_nWidth && m_pInImageGrey->m_nHeight == pInImage->m_nHeight);
}

bool ClIpConnectedComponent2::CanApply()
{
    return pInImage != nullptr && m_pComponents != nullptr && GreyHasSameSize();
}

long ClIpConnectedComponent2::Process()
{
    if (pInImage == nullptr)
    {
        throw ClException("Objectimage is missing", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
    if (m_pComponents == nullptr)
    {
        throw ClException("Output object array is missing", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
    if (!GreyHasSameSize())
    {
        throw ClException("the given grayimage has not the same size as the object image", FPC_ERROR_PARAM_INVALID,
                          true, szModule, __LINE__);
    }
    ClImage cLocalLabels;
    ClIpLabeling cLabeling;
    cLabeling.Timer(IsTimerEnabled());
    cLabeling.m_pInImage = pInImage;
    cLabeling.m_pOutImage = m_pOutImage != nullptr ? m_pOutImage : &cLocalLabels;
    cLabeling.Apply();

    PrepareEntries(static_cast<unsigned long>(cLabeling.m_nLabels));
    Measure(*cLabeling.m_pOutImage, *m_pComponents);
    if (m_pInImageGrey != nullptr)
    {
        MeasureGrey(*cLabeling.m_pOutImage, *m_pInImageGrey, *m_pComponents);
    }
    return FPC_SUCCESS;
}

void ClIpConnectedComponent2::PrepareEntries(unsigned long nLabels)
{
    ComponentsArray_t& aComponents = *m_pComponents;
    if (aComponents.m_nEntries < nLabels)
    {
        aComponents.Enlarge(nLabels - aComponents.m_nEntries);
    }
    for (unsigned long i = aComponents.m_nUsed; i < nLabels; ++i)
    {
        aComponents[i] = ClComponent(); // storage of a cleared array holds old entries
    }
    aComponents.m_nUsed = nLabels;
    for (unsigned long i = 0; i < nLabels; ++i)
    {
        aComponents[i].m_cCenter = ClVector();
        aComponents[i].m_dArea = 0.0;
        aComponents[i].m_nLabel = static_cast<int>(i + 1);
    }
}
