#include "RDImageProcessing/IpConnectedComponent2.hpp"

#include "RDImageProcessing/FillTools.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace
{
using ClComponent = ClIpConnectedComponent2::ClComponent;

constexpr char szModule[] = "RDImageProcessing/IpConnectedComponent2";
constexpr unsigned char nOptional = 4; // mark of a pointer that may stay null, beside the access bits

/// Below this sums of whole numbers are exact in a double, in whatever order they are taken.
constexpr double dExact = 9007199254740992.0; // 2^53

/// The pixels of a run, all at once, to the sums of places, the area and the extent.
void AddPixels(ClComponent& cComponent, std::int64_t nFirst, std::int64_t nEnd, int nY)
{
    const double dX = static_cast<double>(nFirst);
    const double dLastX = static_cast<double>(nEnd - 1);
    const double dY = nY;
    const std::int64_t nPixels = nEnd - nFirst;
    const std::int64_t nSumX = (nFirst + nEnd - 1) * nPixels / 2;
    const bool bFirst = cComponent.m_dArea == 0.0;
    cComponent.m_cCenter.m_dX += static_cast<double>(nSumX);
    cComponent.m_cCenter.m_dY += static_cast<double>(nPixels * nY);
    cComponent.m_dArea += static_cast<double>(nPixels);
    if (bFirst)
    {
        cComponent.m_cMin = ClVector(dX, dY);
        cComponent.m_cMax = ClVector(dLastX, dY);
        if (cComponent.m_cFirstPixel.m_dX < 0.0 || cComponent.m_cFirstPixel.m_dY < 0.0)
        {
            cComponent.m_cFirstPixel = ClVector(dX, dY);
        }
        return;
    }
    cComponent.m_cMin.m_dX = std::min(cComponent.m_cMin.m_dX, dX);
    cComponent.m_cMax.m_dX = std::max(cComponent.m_cMax.m_dX, dLastX);
    cComponent.m_cMax.m_dY = dY;
}

void AddRun(ClComponent& cComponent, const ClObjectRuns::StRun& cRun, int nY)
{
    const double dMost = static_cast<double>(cRun.nEnd - cRun.nFirst) * std::max(cRun.nEnd, nY);
    if (std::max(cComponent.m_cCenter.m_dX, cComponent.m_cCenter.m_dY) + dMost < dExact)
    {
        AddPixels(cComponent, cRun.nFirst, cRun.nEnd, nY);
        return;
    }
    for (std::int64_t x = cRun.nFirst; x < cRun.nEnd; ++x) // every single addition may round
    {
        AddPixels(cComponent, x, x + 1, nY);
    }
}

/// The distances from the centre are no whole numbers: these sums round at each pixel.
void AddMoments(ClComponent& cComponent, const ClObjectRuns::StRun& cRun, int nY)
{
    const double dCenterX = cComponent.m_cCenter.m_dX;
    const double dDistY = nY - cComponent.m_cCenter.m_dY;
    const double dSquareY = dDistY * dDistY;
    double dMomentXY = cComponent.m_dMomentXY;
    double dMomentYY = cComponent.m_dMomentYY;
    double dMomentXX = cComponent.m_dMomentXX;
    for (int x = cRun.nFirst; x < cRun.nEnd; ++x)
    {
        const double dDistX = x - dCenterX;
        dMomentXY += dDistX * dDistY;
        dMomentYY += dSquareY;
        dMomentXX += dDistX * dDistX;
    }
    cComponent.m_dMomentXY = dMomentXY;
    cComponent.m_dMomentYY = dMomentYY;
    cComponent.m_dMomentXX = dMomentXX;
}

void AddGrey(ClComponent& cComponent, const ClObjectRuns::StRun& cRun, const unsigned char* pGrey)
{
    double& dSum = cComponent.m_dMeanGrey;
    constexpr double dMostOfRun = 255.0 * std::numeric_limits<int>::max();
    if (dSum >= 0.0 && dSum + dMostOfRun < dExact && std::floor(dSum) == dSum)
    {
        dSum += static_cast<double>(std::accumulate(pGrey + cRun.nFirst, pGrey + cRun.nEnd, std::int64_t(0)));
        return;
    }
    // An array in use goes on from a mean.
    dSum = std::accumulate(pGrey + cRun.nFirst, pGrey + cRun.nEnd, dSum);
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

void MeasurePlaces(const ClObjectRuns& cRuns, ClIpConnectedComponent2::ComponentsArray_t& aComponents)
{
    ClComponent* const pFirst = aComponents.m_pData;
    cRuns.ForEach([&](const ClObjectRuns::StRun& cRun, int y) { AddRun(pFirst[cRun.nLabel - 1], cRun, y); });
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        aComponents[i].m_cCenter.m_dX /= aComponents[i].m_dArea;
        aComponents[i].m_cCenter.m_dY /= aComponents[i].m_dArea;
    }
}

void MeasureAxes(ClComponent& cComponent)
{
    cComponent.m_dEccentricity = Eccentricity(cComponent);
    cComponent.m_dOrientation = Orientation(cComponent);
}

void MeasureGrey(const ClObjectRuns& cRuns, const ClImage& cGrey,
                 ClIpConnectedComponent2::ComponentsArray_t& aComponents)
{
    if (!HasBytePerColumn(cGrey))
    {
        return;
    }
    ClComponent* const pFirst = aComponents.m_pData;
    cRuns.ForEach([&](const ClObjectRuns::StRun& cRun, int y)
                  { AddGrey(pFirst[cRun.nLabel - 1], cRun, Row<unsigned char>(cGrey, y)); });
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
    m_cRuns.Clear();
    ClIpLabeling cLabeling;
    cLabeling.Timer(IsTimerEnabled());
    cLabeling.m_pInImage = pInImage;
    cLabeling.m_pOutImage = m_pOutImage;
    cLabeling.m_pRuns = &m_cRuns;
    cLabeling.Apply();

    PrepareEntries(static_cast<unsigned long>(cLabeling.m_nLabels));
    MeasurePlaces(m_cRuns, *m_pComponents);
    if (!m_bMomentsOnDemand)
    {
        ClComponent* const pFirst = m_pComponents->m_pData;
        m_cRuns.ForEach([&](const ClObjectRuns::StRun& cRun, int y) { AddMoments(pFirst[cRun.nLabel - 1], cRun, y); });
        std::for_each(pFirst, pFirst + m_pComponents->Entries(), MeasureAxes);
    }
    if (m_pInImageGrey != nullptr)
    {
        MeasureGrey(m_cRuns, *m_pInImageGrey, *m_pComponents);
    }
    return FPC_SUCCESS;
}

void ClIpConnectedComponent2::MeasureMoments(unsigned long nEntry)
{
    ClComponent& cComponent = (*m_pComponents)[nEntry];
    m_cRuns.ForEach(static_cast<int>(cComponent.m_cMin.m_dY), static_cast<int>(cComponent.m_cMax.m_dY) + 1,
                    [&](const ClObjectRuns::StRun& cRun, int y)
                    {
                        if (cRun.nLabel == cComponent.m_nLabel)
                        {
                            AddMoments(cComponent, cRun, y);
                        }
                    });
    MeasureAxes(cComponent);
}

void ClIpConnectedComponent2::PrepareEntries(unsigned long nLabels)
{
    ComponentsArray_t& aComponents = *m_pComponents;
    if (aComponents.m_pData == nullptr) // a count alone may be left of a failure
    {
        aComponents.New(nLabels);
    }
    else if (aComponents.m_nEntries < nLabels)
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
