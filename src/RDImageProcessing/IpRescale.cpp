#include "RDImageProcessing/IpRescale.hpp"

#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace
{
constexpr int nFractionBits = 12;
constexpr int nOne = 1 << nFractionBits;
constexpr int nFraction = nOne - 1;

/// The new size of a side; it is rounded up.
int ScaledSize(int nSize, int nNewPels, int nPels)
{
    return CastSample<int>(static_cast<double>(nSize) * nNewPels / nPels + 0.9999);
}

int ScaledPels(int nNewSize, int nPels, int nSize)
{
    return CastSample<int>(static_cast<std::int64_t>(nNewSize) * nPels / nSize);
}

/// Source samples per output sample with 12 fractional bits, by the resolutions; 0 if they do not tell.
std::int64_t RatioOfPels(int nPels, int nActPels)
{
    return nPels > 0 && nActPels > 0 ? (static_cast<std::int64_t>(nPels) << nFractionBits) / nActPels : 0;
}

std::int64_t RatioOfSizes(int nSize, int nActSize)
{
    return (static_cast<std::int64_t>(nSize) << nFractionBits) / nActSize;
}

/// Means of the spans of nRatio source samples each. Source sample j covers (j - 1) << 12 to j << 12.
void IntegrateRow(const unsigned char* pIn, int nIn, unsigned char* pOut, int nOut, std::int64_t nRatio)
{
    std::int64_t nEnd = nRatio - nOne;
    std::int64_t nSum = 0;
    int k = 0;
    int j = 0;
    for (; j < nIn && k < nOut; ++j)
    {
        const std::int64_t nPlace = static_cast<std::int64_t>(j) << nFractionBits;
        if (nEnd >= nPlace)
        {
            nSum += static_cast<std::int64_t>(pIn[j]) << nFractionBits;
            continue;
        }
        // The sample straddles the end of the span: it is shared between two output pixels.
        pOut[k++] = static_cast<unsigned char>((nSum + (nEnd - nPlace + nOne) * pIn[j]) / nRatio);
        nSum = (nPlace - nEnd) * pIn[j];
        nEnd += nRatio;
    }
    if (k < nOut)
    {
        // The source ends within this pixel: the mean over the part that was there. Should the resolutions have
        // promised less than the size, the rest repeats it.
        const std::int64_t nPart = nRatio + (static_cast<std::int64_t>(j - 1) << nFractionBits) - nEnd;
        std::memset(pOut + k, static_cast<int>(nSum / nPart) & 255, static_cast<std::size_t>(nOut - k));
    }
}

/// One axis of an enlargement: where the interior of the output begins and ends, and its steps through the source.
struct StAxis
{
    StAxis(int nIn, int nOut)
        : m_nStep((static_cast<std::int64_t>(nIn) << nFractionBits) / nOut),
          m_nFirst(CastSample<int>(static_cast<double>(nOut) / nIn * 0.5 + 0.5)), m_nLast(nOut - 1 - m_nFirst),
          m_nStart(CastSample<std::int64_t>(static_cast<double>(m_nStep) *
                                            (m_nFirst + static_cast<double>(nOut) / nIn * -0.5 + 0.5))),
          m_nIn(nIn)
    {
    }

    /// Source position of an interior output place, 12 fractional bits.
    std::int64_t Place(int n) const { return m_nStart + (n - m_nFirst) * m_nStep; }
    bool IsInterior(int n) const { return n >= m_nFirst && n <= m_nLast; }
    int Index(int n) const { return static_cast<int>(Place(n) >> nFractionBits); }
    int NextIndex(int n) const { return std::min(Index(n) + 1, m_nIn - 1); }
    int Weight(int n) const { return static_cast<int>(Place(n) & nFraction); }

    std::int64_t m_nStep;
    int m_nFirst; ///< the first output place with two source samples to its sides
    int m_nLast;  ///< the last one
    std::int64_t m_nStart;
    int m_nIn;
};

unsigned char Mix(int nFirst, int nSecond, int nWeight)
{
    return static_cast<unsigned char>(((nOne - nWeight) * nFirst + nWeight * nSecond) >> nFractionBits);
}

/// Source columns and weights of the interior columns, worked out once for all rows.
struct StColumns
{
    StColumns(const StAxis& cAxis, int nOut) : m_anIndex(Count(nOut)), m_anNext(Count(nOut)), m_anWeight(Count(nOut))
    {
        for (int x = std::max(cAxis.m_nFirst, 0); x <= std::min(cAxis.m_nLast, nOut - 1); ++x)
        {
            m_anIndex[Count(x)] = cAxis.Index(x);
            m_anNext[Count(x)] = cAxis.NextIndex(x);
            m_anWeight[Count(x)] = cAxis.Weight(x);
        }
    }

    static unsigned long Count(int n) { return static_cast<unsigned long>(n); }

    TpArrayStatic<int> m_anIndex;
    TpArrayStatic<int> m_anNext;
    TpArrayStatic<int> m_anWeight;
};

/// A row between two source rows: every term of the four is shifted by itself.
void InteriorRow(const unsigned char* pLow, const unsigned char* pHigh, int wy, const StAxis& cX, const StColumns& c,
                 unsigned char* pOut, int nOut)
{
    const int vy = nOne - wy;
    const int nLastIn = cX.m_nIn - 1;
    for (int x = 0; x < nOut; ++x)
    {
        if (!cX.IsInterior(x))
        {
            const int nEdge = x < cX.m_nFirst ? 0 : nLastIn;
            pOut[x] = Mix(pLow[nEdge], pHigh[nEdge], wy);
            continue;
        }
        const unsigned long n = StColumns::Count(x);
        const int i = c.m_anIndex[n];
        const int j = c.m_anNext[n];
        const int wx = c.m_anWeight[n];
        const int vx = nOne - wx;
        const auto term = [](int nFirst, int nSecond, int nSample)
        { return ((nFirst * nSecond >> nFractionBits) * nSample) >> nFractionBits; };
        pOut[x] = static_cast<unsigned char>(term(vy, vx, pLow[i]) + term(vy, wx, pLow[j]) + term(wy, vx, pHigh[i]) +
                                             term(wy, wx, pHigh[j]));
    }
}

/// A row beyond the first or last source row.
void MarginRow(const unsigned char* pIn, const StAxis& cX, const StColumns& c, unsigned char* pOut, int nOut)
{
    for (int x = 0; x < nOut; ++x)
    {
        const unsigned long n = StColumns::Count(x);
        pOut[x] = cX.IsInterior(x) ? Mix(pIn[c.m_anIndex[n]], pIn[c.m_anNext[n]], c.m_anWeight[n])
                                   : pIn[x < cX.m_nFirst ? 0 : cX.m_nIn - 1];
    }
}
} // namespace

long ClIpRescale::ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode)
{
    const bool bSize = m_nNewWidth != 0 && m_nNewHeight != 0;
    const bool bPels = m_nNewPelsX != 0 && m_nNewPelsY != 0;
    if (!bSize && !bPels)
    {
        return FPC_ERROR_INTERNAL;
    }
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_eMode = eMode;
    return Apply();
}

long ClIpRescale::ApplyParamSize(ClImage& cIn, ClImage& cOut, int nWidth, int nHeight, eProcessingMode eMode)
{
    if (eMode == ModeWholeNumbered)
    {
        return FPC_ERROR_INTERNAL; // whole factors come from resolutions
    }
    m_nNewPelsX = 0;
    m_nNewPelsY = 0;
    m_nNewWidth = nWidth;
    m_nNewHeight = nHeight;
    return ApplyParam(cIn, cOut, eMode);
}

long ClIpRescale::ApplyParamPels(ClImage& cIn, ClImage& cOut, int nPelsX, int nPelsY, eProcessingMode eMode)
{
    if (cIn.m_nXRes == 0 || cIn.m_nYRes == 0)
    {
        return FPC_ERROR_BITMAP_PELS;
    }
    m_nNewWidth = 0;
    m_nNewHeight = 0;
    m_nNewPelsX = nPelsX;
    m_nNewPelsY = nPelsY;
    return ApplyParam(cIn, cOut, eMode);
}

void ClIpRescale::SetParametersToDefault()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    m_nNewWidth = 0;
    m_nNewHeight = 0;
    m_nNewPelsX = 0;
    m_nNewPelsY = 0;
    m_eMode = ModeBiLinear;
    m_dConvParameter1 = -0.75;
}

void ClIpRescale::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    cContainer.AddNumeric("NewHeight", &m_nNewHeight);
    cContainer.AddNumeric("NewWidth", &m_nNewWidth);
    cContainer.AddNumeric("NewPelsX", &m_nNewPelsX);
    cContainer.AddNumeric("NewPelsY", &m_nNewPelsY);
    auto* pMode = cContainer.AddParam<TpParameterEnumPointer<eProcessingMode, ClParameter>>("eMode", &m_eMode);
    pMode->AddValue(ModeWholeNumbered, "ModeWholeNumbered");
    pMode->AddValue(ModeNearestNeighbour, "ModeNearestNeighbour");
    pMode->AddValue(ModeBiLinear, "ModeBiLinear");
    pMode->AddValue(ModeBiCubic, "ModeBiCubic");
    pMode->AddValue(ModeBiLinearFantMar, "ModeBiLinearFantMar");
    cContainer.AddNumeric("dConvParameter1", &m_dConvParameter1);
}

ClProcessorBase* ClIpRescale::Create()
{
    return NewProcessor<ClIpRescale>();
}

const char* ClIpRescale::Name() const
{
    return "ClIpRescale";
}

void ClIpRescale::ParameterString(char* szBuffer, unsigned long nSize)
{
    static constexpr const char* aszMode[] = {"WholeNumbered", "NearestNeighbour", "BiLinear", "BiCubic",
                                              "BiLinearFantMar"};
    const bool bKnown = m_eMode >= ModeWholeNumbered && m_eMode <= ModeBiLinearFantMar;
    const char* szMode = bKnown ? aszMode[m_eMode] : "InvalidMode";
    if (m_nNewWidth != 0)
    {
        FormatSettings(szBuffer, nSize, "W%d H%d %s", m_nNewWidth, m_nNewHeight, szMode);
    }
    else
    {
        FormatSettings(szBuffer, nSize, "X%d Y%d %s", m_nNewPelsX, m_nNewPelsY, szMode);
    }
}

long ClIpRescale::Initialize()
{
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    const ClImage& cIn = *m_pInImage;
    m_nActWidth = m_nNewWidth;
    m_nActHeight = m_nNewHeight;
    m_nActPelsX = m_nNewPelsX;
    m_nActPelsY = m_nNewPelsY;
    if (cIn.m_nXRes > 0 && cIn.m_nYRes > 0 && m_nNewPelsX > 0 && m_nNewPelsY > 0)
    {
        const bool bEqual = m_nNewPelsX == cIn.m_nXRes && m_nNewPelsY == cIn.m_nYRes;
        m_nActWidth = bEqual ? cIn.m_nWidth : ScaledSize(cIn.m_nWidth, m_nNewPelsX, cIn.m_nXRes);
        m_nActHeight = bEqual ? cIn.m_nHeight : ScaledSize(cIn.m_nHeight, m_nNewPelsY, cIn.m_nYRes);
        return FPC_SUCCESS;
    }
    if (m_nNewWidth < 1 || m_nNewHeight < 1)
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (cIn.m_nWidth < 1 || cIn.m_nHeight < 1)
    {
        return FPC_ERROR_BITMAP_PTR; // no pixel to scale
    }
    const bool bEqual = m_nNewWidth == cIn.m_nWidth && m_nNewHeight == cIn.m_nHeight;
    m_nActPelsX = bEqual ? cIn.m_nXRes : ScaledPels(m_nNewWidth, cIn.m_nXRes, cIn.m_nWidth);
    m_nActPelsY = bEqual ? cIn.m_nYRes : ScaledPels(m_nNewHeight, cIn.m_nYRes, cIn.m_nHeight);
    return FPC_SUCCESS;
}

long ClIpRescale::Process()
{
    const ClImage& cIn = *m_pInImage;
    if ((cIn.m_nXRes <= 0 || cIn.m_nYRes <= 0) && (cIn.m_nWidth <= 0 || cIn.m_nHeight <= 0))
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (m_nActWidth == cIn.m_nWidth && m_nActHeight == cIn.m_nHeight)
    {
        *m_pOutImage = cIn;
        return FPC_SUCCESS;
    }
    if (cIn.Data() == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_nActWidth < 1 || m_nActHeight < 1)
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    if (cIn.m_nPlanes > 1)
    {
        if (cIn.m_eContent == ClImage::eUnknown)
        {
            return FPC_ERROR_INTERNAL;
        }
        ProcessMultiPlane();
        return FPC_SUCCESS;
    }
    return ProcessOnePlane();
}

long ClIpRescale::ProcessOnePlane()
{
    switch (m_eMode)
    {
    case ModeBiLinear: break;
    case ModeWholeNumbered:
    case ModeNearestNeighbour:
    case ModeBiCubic:
    case ModeBiLinearFantMar: return FPC_ERROR_UNSUPPORTED_FEATURE;
    default: return FPC_SUCCESS;
    }
    if (m_pOutImage != m_pInImage)
    {
        BiLinear();
        return FPC_SUCCESS;
    }
    ClImage cResult;
    ClHeldImages cHeld(m_pInImage, m_pOutImage);
    m_pOutImage = &cResult;
    BiLinear();
    cHeld.m_pOut->Swap(cResult);
    return FPC_SUCCESS;
}

/// Runs a pass on the result of the pass before.
template <class Pass> void ClIpRescale::OnResult(Pass&& pass)
{
    ClImage cSource;
    cSource.Swap(*m_pOutImage);
    const ClHeldImages cHeld(m_pInImage, m_pOutImage);
    m_pInImage = &cSource;
    pass();
}

void ClIpRescale::BiLinear()
{
    const bool bShrinksX = m_nActWidth < m_pInImage->m_nWidth;
    const bool bShrinksY = m_nActHeight < m_pInImage->m_nHeight;
    if (!bShrinksX && !bShrinksY)
    {
        ProcessBiLinear();
        return;
    }
    if (bShrinksX)
    {
        ProcessXBiLinearIntegrating();
    }
    else
    {
        ProcessYBiLinearIntegrating();
    }
    if (bShrinksX && bShrinksY)
    {
        OnResult([this] { ProcessYBiLinearIntegrating(); });
    }
    else
    {
        OnResult([this] { ProcessBiLinear(); });
    }
}

void ClIpRescale::MakeOutput(int nWidth, int nHeight, int nPelsX, int nPelsY)
{
    m_pOutImage->NewWithType(ClImage::IsSignedType(m_pInImage->m_eDataType) ? ClImage::eSInt8 : ClImage::eUInt8, nWidth,
                             nHeight, m_pInImage->m_nPlanes, nPelsX, nPelsY);
}

void ClIpRescale::ProcessXBiLinearIntegrating()
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(m_nActWidth, cIn.m_nHeight, m_nActPelsX, cIn.m_nYRes);
    std::int64_t nRatio = RatioOfPels(cIn.m_nXRes, m_nActPelsX);
    nRatio = nRatio > 0 ? nRatio : RatioOfSizes(cIn.m_nWidth, m_nActWidth);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        IntegrateRow(Row<unsigned char>(cIn, y), cIn.m_nWidth, Row<unsigned char>(*m_pOutImage, y), m_nActWidth,
                     nRatio);
    }
}

void ClIpRescale::ProcessYBiLinearIntegrating()
{
    const ClImage& cIn = *m_pInImage;
    ClImage& cOut = *m_pOutImage;
    MakeOutput(cIn.m_nWidth, m_nActHeight, cIn.m_nXRes, m_nActPelsY);
    const std::int64_t nRatio =
        std::max(RatioOfPels(cIn.m_nYRes, m_nActPelsY), RatioOfSizes(cIn.m_nHeight, m_nActHeight));
    const int nWidth = cIn.m_nWidth;
    TpArrayStatic<std::int64_t> anSum(static_cast<unsigned long>(nWidth));
    std::int64_t* const pSum = anSum.m_pData;
    std::fill_n(pSum, nWidth, 0);
    std::int64_t nEnd = nRatio - nOne;
    int k = 0;
    int j = 0;
    for (; j < cIn.m_nHeight && k < m_nActHeight; ++j)
    {
        const unsigned char* pIn = Row<unsigned char>(cIn, j);
        const std::int64_t nPlace = static_cast<std::int64_t>(j) << nFractionBits;
        if (nEnd >= nPlace)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                pSum[x] += static_cast<std::int64_t>(pIn[x]) << nFractionBits;
            }
            continue;
        }
        unsigned char* pOut = Row<unsigned char>(cOut, k++);
        for (int x = 0; x < nWidth; ++x)
        {
            pOut[x] = static_cast<unsigned char>((pSum[x] + (nEnd - nPlace + nOne) * pIn[x]) / nRatio);
            pSum[x] = (nPlace - nEnd) * pIn[x];
        }
        nEnd += nRatio;
    }
    // As at the end of a row of the X pass.
    const std::int64_t nPart = nRatio + (static_cast<std::int64_t>(j - 1) << nFractionBits) - nEnd;
    for (; k < m_nActHeight; ++k)
    {
        unsigned char* pOut = Row<unsigned char>(cOut, k);
        for (int x = 0; x < nWidth; ++x)
        {
            pOut[x] = static_cast<unsigned char>(pSum[x] / nPart);
        }
    }
}

void ClIpRescale::ProcessBiLinear()
{
    const ClImage& cIn = *m_pInImage;
    ClImage& cOut = *m_pOutImage;
    MakeOutput(m_nActWidth, m_nActHeight, m_nActPelsX, m_nActPelsY);
    const StAxis cX(cIn.m_nWidth, m_nActWidth);
    const StAxis cY(cIn.m_nHeight, m_nActHeight);
    const StColumns cColumns(cX, m_nActWidth);
    for (int y = 0; y < m_nActHeight; ++y)
    {
        unsigned char* pOut = Row<unsigned char>(cOut, y);
        if (cY.IsInterior(y))
        {
            InteriorRow(Row<unsigned char>(cIn, cY.Index(y)), Row<unsigned char>(cIn, cY.NextIndex(y)), cY.Weight(y),
                        cX, cColumns, pOut, m_nActWidth);
        }
        else
        {
            MarginRow(Row<unsigned char>(cIn, y < cY.m_nFirst ? 0 : cIn.m_nHeight - 1), cX, cColumns, pOut,
                      m_nActWidth);
        }
    }
}

void ClIpRescale::ProcessMultiPlane()
{
    ProcessPlaneByPlane(*this, m_pInImage, m_pOutImage, nMaxPlanes, [this](int) { Process(); });
}
