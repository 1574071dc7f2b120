#include "RDImageProcessing/IpBinarizeGlobal.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double dNotGiven = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned long nTableSize = 256;

double ValueOr(double dValue, double dDefault)
{
    return std::isnan(dValue) ? dDefault : dValue;
}

/// Whether a value that is given lies between the two, whichever of them is larger.
bool InRange(double dValue, double dEnd1, double dEnd2)
{
    return std::isnan(dValue) || (std::min(dEnd1, dEnd2) <= dValue && dValue <= std::max(dEnd1, dEnd2));
}

/// The smallest sample that is not below the threshold.
template <class T> T SampleThreshold(double dThreshold)
{
    if constexpr (std::is_floating_point_v<T>)
    {
        return static_cast<T>(dThreshold);
    }
    else
    {
        constexpr T tLowest = std::numeric_limits<T>::min();
        constexpr T tHighest = std::numeric_limits<T>::max();
        const double dCeiling = std::ceil(dThreshold);
        if (dCeiling <= tLowest)
        {
            return tLowest;
        }
        return dCeiling >= tHighest ? tHighest : CastSample<T>(dCeiling);
    }
}

template <class T> void ThresholdRows(const ClImage& cIn, ClImage& cOut, T tThreshold, T tBlack, T tWhite)
{
    const int nSamples = cIn.SamplesPerRow();
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const T* pIn = Row<T>(cIn, y);
        T* pOut = Row<T>(cOut, y);
        for (int x = 0; x < nSamples; ++x)
        {
            pOut[x] = pIn[x] < tThreshold ? tBlack : tWhite;
        }
    }
}

/// Through a table, without looking anything up where it holds one value first and then another one.
void MapThroughSteps(const ClImage& cIn, ClImage& cOut, const unsigned char* pTable)
{
    const unsigned char* const pEnd = pTable + nTableSize;
    const unsigned char nFirst = pTable[0];
    const unsigned char nLast = pEnd[-1];
    const unsigned char* const pStep = std::find_if(pTable, pEnd, [=](unsigned char n) { return n != nFirst; });
    if (std::any_of(pStep, pEnd, [=](unsigned char n) { return n != nLast; }))
    {
        MapThroughTable(cIn, cOut, pTable);
        return;
    }
    const unsigned char nLastOfFirst = static_cast<unsigned char>(pStep - pTable - 1);
    ForEachRowPair<unsigned char, unsigned char>(
        cIn, cOut,
        [=](const unsigned char* pIn, unsigned char* pOut, std::ptrdiff_t nSamples)
        { ByteMaps().pStep(pIn, pOut, nSamples, nLastOfFirst, nFirst, nLast); });
}
} // namespace

ClIpBinarizeGlobal::ClIpBinarizeGlobal() : m_dThreshold(dNotGiven), m_dBlack(dNotGiven), m_dWhite(dNotGiven)
{
    EnableAllDataTypes();
    m_bInPlace = true;
    m_bUseLUT = true;
}

long ClIpBinarizeGlobal::ApplyParam(ClImage& cIn, ClImage& cOut, double dThreshold)
{
    m_dThreshold = dThreshold;
    return ApplyParam(cIn, cOut);
}

void ClIpBinarizeGlobal::SetParametersToDefault()
{
    NewIpBase::ClIp1to1Base::SetParametersToDefault();
    m_dThreshold = dNotGiven;
    m_dBlack = dNotGiven;
    m_dWhite = dNotGiven;
}

void ClIpBinarizeGlobal::PublishParameters(ClParameterContainer& cContainer)
{
    NewIpBase::ClIp1to1Base::PublishParameters(cContainer);
    cContainer.AddNumeric("Black", &m_dBlack);
    cContainer.AddNumeric("White", &m_dWhite);
    cContainer.AddNumeric("Threshold", &m_dThreshold);
}

void ClIpBinarizeGlobal::QueryParameters(ClParameterInterface& cInterface)
{
    NewIpBase::ClIp1to1Base::QueryParameters(cInterface);
    cInterface.AddParameter(&m_dBlack, "Black", "In: Pixelvalue of Black", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_dWhite, "White", "In: Pixelvalue of White", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_dThreshold, "Threshold", "In: Binarization Threshold", ClParameterInterface::eIn);
}

ClProcessorBase* ClIpBinarizeGlobal::Create()
{
    return NewProcessor<ClIpBinarizeGlobal>();
}

const char* ClIpBinarizeGlobal::Name() const
{
    return "ClIpBinarizeGlobal";
}

bool ClIpBinarizeGlobal::CanApply()
{
    return (m_pInImage != nullptr && CheckBlackWhite() && CheckThreshold()) || NewIpBase::ClIpProcessorBase::CanApply();
}

void ClIpBinarizeGlobal::ParameterString(char* szBuffer, unsigned long nSize)
{
    const bool bFloat = m_pInImage != nullptr && ClImage::IsFloatType(m_pInImage->m_eDataType);
    const int nPrecision = bFloat ? 4 : 0;
    FormatSettings(szBuffer, nSize, "Thr%.*f [%.*f;%.*f]", nPrecision, m_dThreshold, nPrecision, m_dBlack, nPrecision,
                   m_dWhite);
}

double ClIpBinarizeGlobal::GetValue(ClImage&, ClImage&, double dValue)
{
    return dValue >= m_dActThreshold ? m_dActWhite : m_dActBlack;
}

bool ClIpBinarizeGlobal::CheckBlackWhite()
{
    return m_pOutImage != nullptr && InRange(m_dBlack, m_pOutImage->m_dBlack, m_pOutImage->m_dWhite) &&
           InRange(m_dWhite, m_pOutImage->m_dBlack, m_pOutImage->m_dWhite);
}

bool ClIpBinarizeGlobal::CheckThreshold()
{
    return m_pInImage != nullptr && InRange(m_dThreshold, m_pInImage->m_dBlack, m_pInImage->m_dWhite);
}

long ClIpBinarizeGlobal::DoProcess(ClImage& cIn, ClImage& cOut)
{
    m_dActBlack = ValueOr(m_dBlack, cOut.m_dBlack);
    m_dActWhite = ValueOr(m_dWhite, cOut.m_dWhite);
    m_dActThreshold = ValueOr(m_dThreshold, 0.5 * (cOut.m_dWhite + cOut.m_dBlack));
    if (!CheckBlackWhite() || !CheckThreshold())
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (cIn.m_eDataType == ClImage::eUInt8)
    {
        // Through GetValue, so that a derived class may replace it.
        TpArrayStatic<unsigned char> aTable(nTableSize);
        for (unsigned long i = 0; i < nTableSize; ++i)
        {
            aTable[i] = CastSample<unsigned char>(GetValue(cIn, cOut, static_cast<double>(i)));
        }
        MapThroughSteps(cIn, cOut, aTable.m_pData);
        return FPC_SUCCESS;
    }
    return DispatchSampleType(cIn.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  using T = typename decltype(cTag)::Type;
                                  ThresholdRows(cIn, cOut, SampleThreshold<T>(m_dActThreshold),
                                                CastSample<T>(m_dActBlack), CastSample<T>(m_dActWhite));
                                  return long(FPC_SUCCESS);
                              });
}
