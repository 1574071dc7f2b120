#include "RDImageProcessing/IpRescale.hpp"

#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDImageProcessing/SpanMean.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{
constexpr int nFractionBits = 12;
constexpr int nOne = 1 << nFractionBits;
constexpr int nFraction = nOne - 1;
constexpr StEnumName aModeNames[] = {{ClIpRescale::ModeWholeNumbered, "ModeWholeNumbered"},
                                     {ClIpRescale::ModeNearestNeighbour, "ModeNearestNeighbour"},
                                     {ClIpRescale::ModeBiLinear, "ModeBiLinear"},
                                     {ClIpRescale::ModeBiCubic, "ModeBiCubic"},
                                     {ClIpRescale::ModeBiLinearFantMar, "ModeBiLinearFantMar"}};

/// The new size of a side; it is rounded up.
int ScaledSize(int nSize, int nNewPels, int nPels)
{
    return CastSample<int>(static_cast<double>(nSize) * nNewPels / nPels + 0.9999);
}

int ScaledPels(int nNewSize, int nPels, int nSize)
{
    return CastSample<int>(static_cast<std::int64_t>(nNewSize) * nPels / nSize);
}

/// Source samples per output sample with 12 fractional bits, by the resolutions; 0 if they do not tell. In 32 bits:
/// resolutions beyond 524287 pels per metre wrap.
std::int64_t RatioOfPels(int nPels, int nActPels)
{
    return nActPels != 0 ? static_cast<std::int64_t>(WrapMultiply(nPels, nOne)) / nActPels : 0;
}

std::int64_t RatioOfSizes(int nSize, int nActSize)
{
    return (static_cast<std::int64_t>(nSize) << nFractionBits) / nActSize;
}

/// Means down the columns of nRows rows, which rowOf(j) gives one by one.
template <class RowOf> void MeanRows(std::int64_t nSpan, int nRows, ClImage& cOut, RowOf&& rowOf)
{
    ClColumnSpanMean cMean(nSpan, cOut.m_nWidth);
    int k = 0;
    for (int j = 0; j < nRows && k < cOut.m_nHeight; ++j)
    {
        k += cMean.Add(rowOf(j), Row<unsigned char>(cOut, k)) ? 1 : 0;
    }
    if (k < cOut.m_nHeight && cMean.Finish(Row<unsigned char>(cOut, k)))
    {
        ++k;
    }
    // The resolutions may promise less than the size: the last row stands for what is missing.
    for (; k < cOut.m_nHeight; ++k)
    {
        std::memcpy(Row<unsigned char>(cOut, k), Row<unsigned char>(cOut, k - 1),
                    static_cast<std::size_t>(cOut.m_nWidth));
    }
}

/// Whole factor from one resolution to another: above 0 to repeat samples, below 0 to take means of them.
int WholeFactor(int nPels, int nNewPels)
{
    const bool bGrows = nNewPels >= nPels;
    const int nLarge = bGrows ? nNewPels : nPels;
    const int nSmall = bGrows ? nPels : nNewPels;
    const int nFactor = nLarge / nSmall + (nLarge % nSmall > nSmall / 2 ? 1 : 0);
    return bGrows ? nFactor : -nFactor;
}

/// nSize * nFactor, which no image holds if it does not fit.
int GrownSize(int nSize, int nFactor)
{
    const std::int64_t nGrown = static_cast<std::int64_t>(nSize) * nFactor;
    if (nGrown > std::numeric_limits<int>::max())
    {
        ThrowBadAlloc();
    }
    return static_cast<int>(nGrown);
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
    pMode->AddValues(aModeNames);
    cContainer.AddNumeric("dConvParameter1", &m_dConvParameter1);
}

void ClIpRescale::QueryParameters(ClParameterInterface& cInterface)
{
    constexpr auto eIn = ClParameterInterface::eIn;
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Rescaled Image", ClParameterInterface::eOut);
    cInterface.AddParameter(&m_nNewHeight, "NewHeight", "In: New Image Height", eIn);
    cInterface.AddParameter(&m_nNewWidth, "NewWidth", "In: New Image Width", eIn);
    cInterface.AddParameter(&m_nNewPelsX, "NewPelsX", "In: New Horizontal Resolution In Pels", eIn);
    cInterface.AddParameter(&m_nNewPelsY, "NewPelsY", "In: New Vertical Resolution In Pels", eIn);
    cInterface.AddChoice(&m_eMode, "Mode", "In: Interpolation Mode", eIn, aModeNames);
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
    if (cIn.Data() == nullptr || cIn.Stride() < cIn.m_nWidth) // rows of no plane, or that 32 bits cannot tell
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_nActWidth < 1 || m_nActHeight < 1)
    {
        return FPC_ERROR_PARAM_OUT_OF_RANGE;
    }
    const bool bPlanes = cIn.m_nPlanes > 1;
    if (bPlanes && cIn.m_eContent == ClImage::eUnknown)
    {
        return FPC_ERROR_INTERNAL;
    }
    switch (m_eMode)
    {
    case ModeWholeNumbered:
        if (cIn.m_nXRes <= 0 || cIn.m_nYRes <= 0 || m_nActPelsX <= 0 || m_nActPelsY <= 0)
        {
            return FPC_ERROR_INTERNAL; // no resolutions, no factors
        }
        break;
    case ModeNearestNeighbour:
    case ModeBiLinear:
    case ModeBiCubic:
    case ModeBiLinearFantMar: break;
    default: return FPC_SUCCESS; // no mode at all does nothing
    }
    if (bPlanes)
    {
        ProcessMultiPlane();
        return FPC_SUCCESS;
    }
    ProcessOnePlane();
    return FPC_SUCCESS;
}

void ClIpRescale::ProcessOnePlane()
{
    ClImage cResult; // if the output is the input
    const ClHeldImages cHeld(m_pInImage, m_pOutImage);
    m_pOutImage = cHeld.m_pOut == cHeld.m_pIn ? &cResult : cHeld.m_pOut;
    switch (m_eMode)
    {
    case ModeWholeNumbered: ProcessWholeNumbered(); break;
    case ModeNearestNeighbour: ProcessNearestNeighbour(); break;
    case ModeBiCubic: ProcessBiCubic(); break;
    case ModeBiLinearFantMar: ProcessBiLinearFant(); break;
    default: BiLinear(); break;
    }
    cHeld.m_pOut->Swap(*m_pOutImage);
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
    if (bShrinksX && bShrinksY)
    {
        ShrinkBoth();
        return;
    }
    if (bShrinksX)
    {
        ProcessXBiLinearIntegrating();
    }
    else if (bShrinksY)
    {
        ProcessYBiLinearIntegrating();
    }
    else
    {
        ProcessBiLinear();
        return;
    }
    OnResult([this] { ProcessBiLinear(); });
}

void ClIpRescale::MakeOutput(int nWidth, int nHeight, int nPelsX, int nPelsY)
{
    m_pOutImage->NewWithType(ClImage::IsSignedType(m_pInImage->m_eDataType) ? ClImage::eSInt8 : ClImage::eUInt8, nWidth,
                             nHeight, m_pInImage->m_nPlanes, nPelsX, nPelsY);
}

/// By the resolutions, whatever the size in force; by the sizes only if the resolutions do not shrink.
std::int64_t ClIpRescale::SpanX() const
{
    const std::int64_t nSpan = RatioOfPels(m_pInImage->m_nXRes, m_nActPelsX);
    return nSpan >= nOne ? nSpan : RatioOfSizes(m_pInImage->m_nWidth, m_nActWidth);
}

/// Other than along the rows, the larger of the two ratios.
std::int64_t ClIpRescale::SpanY() const
{
    return std::max(RatioOfPels(m_pInImage->m_nYRes, m_nActPelsY), RatioOfSizes(m_pInImage->m_nHeight, m_nActHeight));
}

void ClIpRescale::ProcessXBiLinearIntegrating()
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(m_nActWidth, cIn.m_nHeight, m_nActPelsX, cIn.m_nYRes);
    const ClSpanMean cMean(SpanX());
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        cMean.Reduce(Row<unsigned char>(cIn, y), cIn.m_nWidth, Row<unsigned char>(*m_pOutImage, y), m_nActWidth);
    }
}

void ClIpRescale::ProcessYBiLinearIntegrating()
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(cIn.m_nWidth, m_nActHeight, cIn.m_nXRes, m_nActPelsY);
    MeanRows(SpanY(), cIn.m_nHeight, *m_pOutImage, [&cIn](int y) { return Row<unsigned char>(cIn, y); });
}

/// The X pass, then the Y pass, row by row and without a picture between them.
void ClIpRescale::ShrinkBoth()
{
    const ClImage& cIn = *m_pInImage;
    const ClSpanMean cMean(SpanX());
    TpArrayStatic<unsigned char> aRow(static_cast<unsigned long>(m_nActWidth));
    MakeOutput(m_nActWidth, m_nActHeight, m_nActPelsX, m_nActPelsY);
    MeanRows(SpanY(), cIn.m_nHeight, *m_pOutImage,
             [&](int y)
             {
                 cMean.Reduce(Row<unsigned char>(cIn, y), cIn.m_nWidth, aRow.m_pData, m_nActWidth);
                 return aRow.m_pData;
             });
}

void ClIpRescale::ProcessNearestNeighbour()
{
    const ClImage& cIn = *m_pInImage;
    ClImage& cOut = *m_pOutImage;
    const unsigned char* const pOldBlock = cOut.Data();
    MakeOutput(m_nActWidth, m_nActHeight, m_nActPelsX, m_nActPelsY);
    const bool bNewBlock = cOut.Data() != pOldBlock;
    const bool bPels = m_nActPelsX > 0 && m_nActPelsY > 0;
    const auto step = [bPels](int nPels, int nActPels, int nSize, int nActSize)
    {
        const std::int64_t nStep = bPels ? RatioOfPels(nPels, nActPels) : -1;
        return nStep >= 0 ? nStep : RatioOfSizes(nSize, nActSize);
    };
    const std::int64_t nStepX = step(cIn.m_nXRes, m_nActPelsX, cIn.m_nWidth, m_nActWidth);
    const std::int64_t nStepY = step(cIn.m_nYRes, m_nActPelsY, cIn.m_nHeight, m_nActHeight);
    const std::int64_t nLastX = cIn.m_nWidth - 1;
    for (int y = 0; y < m_nActHeight; ++y)
    {
        unsigned char* pOut = Row<unsigned char>(cOut, y);
        const std::int64_t nSourceY = (y * nStepY) >> nFractionBits;
        if (nSourceY >= cIn.m_nHeight)
        {
            std::memset(pOut, 0, bNewBlock ? static_cast<std::size_t>(m_nActWidth) : 0);
            continue;
        }
        const unsigned char* pIn = Row<unsigned char>(cIn, static_cast<int>(nSourceY));
        for (int x = 0; x < m_nActWidth; ++x)
        {
            pOut[x] = pIn[std::min((x * nStepX) >> nFractionBits, nLastX)];
        }
    }
}

void ClIpRescale::ProcessWholeNumbered()
{
    const int nX = WholeFactor(m_pInImage->m_nXRes, m_nActPelsX);
    const int nY = WholeFactor(m_pInImage->m_nYRes, m_nActPelsY);
    nX > 0 ? ProcessXWholeNumberedResize(nX) : ProcessXWholeNumberedSubsample(-nX);
    OnResult([this, nY] { nY > 0 ? ProcessYWholeNumberedResize(nY) : ProcessYWholeNumberedSubsample(-nY); });
}

void ClIpRescale::ProcessXWholeNumberedResize(int nFactor)
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(GrownSize(cIn.m_nWidth, nFactor), cIn.m_nHeight, WrapMultiply(cIn.m_nXRes, nFactor), cIn.m_nYRes);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const unsigned char* pIn = Row<unsigned char>(cIn, y);
        unsigned char* pOut = Row<unsigned char>(*m_pOutImage, y);
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            pOut = std::fill_n(pOut, nFactor, pIn[x]);
        }
    }
}

void ClIpRescale::ProcessYWholeNumberedResize(int nFactor)
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(cIn.m_nWidth, GrownSize(cIn.m_nHeight, nFactor), cIn.m_nXRes, WrapMultiply(cIn.m_nYRes, nFactor));
    for (int y = 0; y < m_pOutImage->m_nHeight; ++y)
    {
        std::memcpy(Row<unsigned char>(*m_pOutImage, y), Row<unsigned char>(cIn, y / nFactor),
                    static_cast<std::size_t>(cIn.m_nWidth));
    }
}

void ClIpRescale::ProcessXWholeNumberedSubsample(int nFactor)
{
    const ClImage& cIn = *m_pInImage;
    const int nWidth = std::max(cIn.m_nWidth / nFactor, 1);
    MakeOutput(nWidth, cIn.m_nHeight, cIn.m_nXRes / nFactor, cIn.m_nYRes);
    const ClSpanMean cMean(nFactor * ClSpanMean::nOne);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        cMean.Reduce(Row<unsigned char>(cIn, y), cIn.m_nWidth, Row<unsigned char>(*m_pOutImage, y), nWidth);
    }
}

void ClIpRescale::ProcessYWholeNumberedSubsample(int nFactor)
{
    const ClImage& cIn = *m_pInImage;
    MakeOutput(cIn.m_nWidth, std::max(cIn.m_nHeight / nFactor, 1), cIn.m_nXRes, cIn.m_nYRes / nFactor);
    MeanRows(nFactor * ClSpanMean::nOne, cIn.m_nHeight, *m_pOutImage,
             [&cIn](int y) { return Row<unsigned char>(cIn, y); });
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
    const int nAttribute = m_pInImage->m_nAttribute; // the output may be the input
    ProcessPlaneByPlane(*this, m_pInImage, m_pOutImage, nMaxPlanes, [this](int) { Process(); });
    m_pOutImage->m_nAttribute = nAttribute;
}
