#include "RDImageProcessing/Ip2to1Base.hpp"

#include "RDImageProcessing/Ip1to1Base.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace
{
constexpr StEnumName aEqualNames[] = {{1, "true"}, {0, "false"}};

constexpr long nTableSide = 256;
constexpr long nTableSize = nTableSide * nTableSide;

/// Whether samples of the overlap are combined; otherwise it shows the inputs.
bool PlanesCombine(long nPlanes1, long nPlanes2)
{
    return nPlanes1 == nPlanes2 || (nPlanes1 == 3 && nPlanes2 == 1);
}

/// Samples from one row of an image to the next.
long RowSamples(const ClImage& cImage)
{
    return cImage.Stride() / ClImage::SampleSize(cImage.m_eDataType);
}

/// Errors: ClExBadAlloc for rows longer than the row formula can tell, which no block of pixels has.
void CheckRows(const ClImage& cImage)
{
    constexpr long nMost = std::numeric_limits<int>::max() - 3;
    const long nSize = ClImage::SampleSize(cImage.m_eDataType);
    if (cImage.m_nWidth > 0 && cImage.m_nPlanes > 0 && nSize > 0 && cImage.m_nPlanes > nMost / nSize / cImage.m_nWidth)
    {
        ThrowBadAlloc();
    }
}

/// A side of the canvas for two sides, the second of them nOffset after the first.
long CanvasSide(long nSide1, long nSide2, long nOffset)
{
    return nOffset >= 0 ? std::max(nSide1, nOffset + nSide2) : std::max(nSide2, nSide1 - nOffset);
}

// Out of line, as it serves 64 pairs of input types each.
template <class T> [[gnu::noinline]] void FillCanvas(ClImage& cOut, double dColor)
{
    const T tColor = CastSample<T>(dColor);
    const long nSamples = static_cast<long>(std::max(cOut.m_nWidth, 0)) * std::max(cOut.m_nPlanes, 0);
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        std::fill_n(Row<T>(cOut, y), nSamples, tColor);
    }
}

/// Lays an image on the canvas. One plane goes to all of three; other planes that differ are left out.
template <class T, class TOut> void LayOnCanvas(const ClImage& cIn, ClImage& cOut, int nColumn, int nRow)
{
    const bool bOneToOne = cIn.m_nPlanes == cOut.m_nPlanes;
    if (cIn.m_nWidth <= 0 || cIn.m_nPlanes <= 0 || !(bOneToOne || (cIn.m_nPlanes == 1 && cOut.m_nPlanes == 3)))
    {
        return;
    }
    const long nSamples = static_cast<long>(cIn.m_nWidth) * cIn.m_nPlanes;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const T* pIn = Row<T>(cIn, y);
        TOut* pOut = Row<TOut>(cOut, nRow + y) + static_cast<long>(nColumn) * cOut.m_nPlanes;
        if (bOneToOne)
        {
            for (long x = 0; x < nSamples; ++x)
            {
                pOut[x] = CastSample<TOut>(pIn[x]);
            }
            continue;
        }
        for (long x = 0; x < nSamples; ++x)
        {
            std::fill_n(pOut + 3 * x, 3, CastSample<TOut>(pIn[x]));
        }
    }
}

/// An operator's result for two samples of its images. Out of line: every sample pays for a virtual call anyway, and
/// 512 loops stay small.
struct StValue
{
    template <class TOut> [[gnu::noinline]] TOut Get(double dValue1, double dValue2) const
    {
        return CastSample<TOut>(cOwner.GetValue(cIn1, cIn2, cOut, dValue1, dValue2));
    }

    ClIp2to1Base& cOwner;
    ClImage& cIn1;
    ClImage& cIn2;
    ClImage& cOut;
};

/// fn(value, place in the range) for the values of an image's range in steps of 1; the places are below nPlaces. Ends
/// with them, whatever the range, also where it lies so far out that a step of 1 is lost.
template <class Fn> void ForEachValue(const ClImage& cImage, long nPlaces, Fn&& fn)
{
    const double dPlaces = static_cast<double>(nPlaces);
    double dLast = std::numeric_limits<double>::quiet_NaN();
    for (double d = cImage.m_dBlack; d <= cImage.m_dWhite && d - cImage.m_dBlack < dPlaces && d != dLast; d += 1.0)
    {
        fn(d, static_cast<long>(d - cImage.m_dBlack));
        dLast = d;
    }
}
} // namespace

ClOverlapRows::ClOverlapRows(const ClImage& cIn1, const ClImage& cIn2, ClImage& cOut, const StOverlap& c)
    : m_pIn1(cIn1.Data()), m_pIn2(cIn2.Data()), m_pOut(cOut.Data()), m_nSize2(ClImage::SampleSize(cIn2.m_eDataType))
{
    const long nSize1 = ClImage::SampleSize(cIn1.m_eDataType);
    const long nSizeOut = ClImage::SampleSize(cOut.m_eDataType);
    m_nBytes1 = c.nIn1Row * nSize1;
    m_nBytes2 = c.nIn2Row * m_nSize2;
    m_nBytesOut = c.nOutRow * nSizeOut;
    if (c.nWidth <= 0 || c.nHeight <= 0 || c.nPlanes1 <= 0 || !PlanesCombine(c.nPlanes1, c.nPlanes2))
    {
        return;
    }
    m_nHeight = c.nHeight;
    m_nCount = c.nWidth * c.nPlanes1;
    m_pIn1 += c.nIn1Offset * nSize1;
    m_pIn2 += c.nIn2Offset * m_nSize2;
    m_pOut += c.nOutOffset * nSizeOut;
    if (c.nPlanes1 != c.nPlanes2)
    {
        m_anSpread.New(static_cast<unsigned long>(m_nCount * m_nSize2));
    }
}

const void* ClOverlapRows::In2(long y)
{
    const unsigned char* pIn = m_pIn2 + y * m_nBytes2;
    if (m_anSpread.Entries() == 0)
    {
        return pIn;
    }
    unsigned char* pOut = m_anSpread.m_pData;
    for (long x = 0; x < m_nCount; ++x)
    {
        std::memcpy(pOut + x * m_nSize2, pIn + x / 3 * m_nSize2, static_cast<std::size_t>(m_nSize2));
    }
    return pOut;
}

long ClIp2to1Base::ApplyParam(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, unsigned char nOutImageType)
{
    m_pInImage1 = &cIn1;
    m_pInImage2 = &cIn2;
    m_pOutImage = &cOut;
    m_nOutImageType = nOutImageType;
    return Apply();
}

void ClIp2to1Base::SetParametersToDefault()
{
    m_nOutImageType = nTypeOfInput1;
    m_bSizeMustBeEqual = true;
    m_dFillColor = 0.0;
    m_nOffsetX = 0;
    m_nOffsetY = 0;
}

void ClIp2to1Base::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage1", &m_pInImage1);
    cContainer.AddPointer("pInImage2", &m_pInImage2);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    PublishOutImageType(cContainer, &m_nOutImageType);
    auto* pEqual =
        cContainer.AddParam<TpParameterEnumPointer<bool, ClParameter>>("SizeMustBeEqual", &m_bSizeMustBeEqual);
    pEqual->AddValues(aEqualNames);
    cContainer.AddNumeric("FillColor", &m_dFillColor);
    cContainer.AddNumeric("OffsetX", &m_nOffsetX);
    cContainer.AddNumeric("OffsetY", &m_nOffsetY);
}

void ClIp2to1Base::QueryParameters(ClParameterInterface& cInterface)
{
    constexpr auto eIn = ClParameterInterface::eIn;
    constexpr double dLowest = std::numeric_limits<int>::lowest();
    constexpr double dHighest = std::numeric_limits<int>::max();
    cInterface.AddParameter(&m_pInImage1, "InImage1", "In1: Original Image", eIn);
    cInterface.AddParameter(&m_pInImage2, "InImage2", "In2: 2nd Original Image", eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Output Image", ClParameterInterface::eOut);
    DescribeOutImageType(cInterface, &m_nOutImageType);
    cInterface.AddChoice(&m_bSizeMustBeEqual, "SizeMustBeEqual", "Bool: Size must be equal", eIn, aEqualNames);
    cInterface.AddParameter(&m_dFillColor, "FillColor", "Double: Fillcolor for Offset-Images", eIn, 0.0, 255.0);
    cInterface.AddParameter(&m_nOffsetX, "OffsetX", "Long: Offset of Image2 to Image1 in x-direction", eIn, dLowest,
                            dHighest);
    cInterface.AddParameter(&m_nOffsetY, "OffsetY", "Long: Offset of Image2 to Image1 in y-direction", eIn, dLowest,
                            dHighest);
}

bool ClIp2to1Base::CanApply()
{
    return m_pInImage1 != nullptr && m_pInImage2 != nullptr && m_pOutImage != nullptr &&
           m_pInImage1->Data() != nullptr && m_pInImage2->Data() != nullptr;
}

long ClIp2to1Base::Initialize()
{
    if (!CanApply())
    {
        return FPC_ERROR_PARAM_IS_MISSING;
    }
    const bool bDiffer = m_pInImage1->m_nWidth != m_pInImage2->m_nWidth ||
                         m_pInImage1->m_nHeight != m_pInImage2->m_nHeight || m_nOffsetX != 0 || m_nOffsetY != 0;
    return m_bSizeMustBeEqual && bDiffer ? FPC_ERROR_PARAM_INVALID : FPC_SUCCESS;
}

double ClIp2to1Base::GetValue(ClImage&, ClImage&, ClImage&, double, double)
{
    return 0.0;
}

long ClIp2to1Base::Process()
{
    ClImage& cIn1 = *m_pInImage1;
    ClImage& cIn2 = *m_pInImage2;
    CheckRows(cIn1);
    CheckRows(cIn2);
    ClImage cTemporary;
    const bool bOntoInput = m_pOutImage == m_pInImage1 || m_pOutImage == m_pInImage2;
    ClImage& cTarget = bOntoInput ? cTemporary : *m_pOutImage;
    unsigned char nType = m_nOutImageType;
    if (nType == nTypeOfInput1)
    {
        nType = cIn1.m_eDataType;
    }
    cTarget.NewWithType(cIn1, nType);
    const long nFailure =
        DispatchSampleType(cIn1.m_eDataType, FPC_ERROR_INTERNAL,
                           [&](auto cTag) { return Dispatch1<typename decltype(cTag)::Type>(cIn1, cIn2, cTarget); });
    if (nFailure != FPC_SUCCESS)
    {
        return nFailure;
    }
    const long nResult =
        DoProcess(cIn1, cIn2, cTarget, m_nOverlapWidth, m_nOverlapHeight, cIn1.m_nPlanes, cIn2.m_nPlanes, m_nIn1Offset,
                  RowSamples(cIn1), m_nIn2Offset, RowSamples(cIn2), m_nOutOffset, RowSamples(cTarget));
    m_pOutImage->Swap(cTarget);
    return nResult;
}

template <class T1> long ClIp2to1Base::Dispatch1(ClImage& cIn1, ClImage& cIn2, ClImage& cOut)
{
    return DispatchSampleType(cIn2.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return Dispatch2<T1, typename decltype(cTag)::Type>(cIn1, cIn2, cOut); });
}

template <class T1, class T2> long ClIp2to1Base::Dispatch2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut)
{
    return DispatchSampleType(
        cOut.m_eDataType, FPC_ERROR_INTERNAL,
        [&](auto cTag) { return ProcessOverlayPreparations<T1, T2, typename decltype(cTag)::Type>(cIn1, cIn2, cOut); });
}

template <class T1, class T2, class TOut>
long ClIp2to1Base::ProcessOverlayPreparations(ClImage& cIn1, ClImage& cIn2, ClImage& cOut)
{
    if (MakeCanvas(cIn1, cIn2, cOut))
    {
        FillCanvas<TOut>(cOut, m_dFillColor);
        LayOnCanvas<T1, TOut>(cIn1, cOut, -std::min(m_nOffsetX, 0), -std::min(m_nOffsetY, 0));
        LayOnCanvas<T2, TOut>(cIn2, cOut, std::max(m_nOffsetX, 0), std::max(m_nOffsetY, 0));
    }
    LocateOverlap(cIn1, cIn2, cOut);
    return FPC_SUCCESS;
}

/// Makes the canvas, whose type cOut has already. Returns whether it is to be filled with the inputs: not if the
/// overlap covers it all.
bool ClIp2to1Base::MakeCanvas(const ClImage& cIn1, const ClImage& cIn2, ClImage& cOut)
{
    const long nWidth = CanvasSide(cIn1.m_nWidth, cIn2.m_nWidth, m_nOffsetX);
    const long nHeight = CanvasSide(cIn1.m_nHeight, cIn2.m_nHeight, m_nOffsetY);
    m_nOverlapWidth = std::min(cIn1.m_nWidth, cIn2.m_nWidth) - std::labs(m_nOffsetX);
    m_nOverlapHeight = std::min(cIn1.m_nHeight, cIn2.m_nHeight) - std::labs(m_nOffsetY);
    constexpr int nMostSide = std::numeric_limits<int>::max();
    if (nWidth > nMostSide || nHeight > nMostSide)
    {
        cOut.Initialize();
        ThrowBadAlloc();
    }
    cOut.NewWithType(cOut.m_eDataType, static_cast<int>(nWidth), static_cast<int>(nHeight), cIn1.m_nPlanes,
                     cIn1.m_nXRes, cIn1.m_nYRes);
    const bool bSameSize = cIn1.m_nWidth == cIn2.m_nWidth && cIn1.m_nHeight == cIn2.m_nHeight;
    return !(bSameSize && m_nOffsetX == 0 && m_nOffsetY == 0 && PlanesCombine(cIn1.m_nPlanes, cIn2.m_nPlanes));
}

void ClIp2to1Base::LocateOverlap(const ClImage& cIn1, const ClImage& cIn2, const ClImage& cOut)
{
    const auto place = [](const ClImage& cImage, long nColumn, long nRow)
    { return nColumn * cImage.m_nPlanes + nRow * RowSamples(cImage); };
    const long nX = m_nOffsetX;
    const long nY = m_nOffsetY;
    m_nOutOffset = place(cOut, std::labs(nX), std::labs(nY));
    m_nIn1Offset = place(cIn1, std::max(nX, 0L), std::max(nY, 0L));
    m_nIn2Offset = place(cIn2, std::max(-nX, 0L), std::max(-nY, 0L));
}

long ClIp2to1Base::DoProcess(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, long nWidth, long nHeight, long nPlanes1,
                             long nPlanes2, long nIn1Offset, long nIn1Row, long nIn2Offset, long nIn2Row,
                             long nOutOffset, long nOutRow)
{
    const StOverlap c{nWidth,  nHeight,    nPlanes1, nPlanes2,   nIn1Offset,
                      nIn1Row, nIn2Offset, nIn2Row,  nOutOffset, nOutRow};
    return DispatchSampleType(cIn1.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return DispatchDefault<typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template <class T1> long ClIp2to1Base::DispatchDefault(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    if (std::is_same_v<T1, unsigned char> && cIn2.m_eDataType == ClImage::eUInt8 && m_bUseLUT)
    {
        return DispatchLUT<unsigned char, unsigned char>(cIn1, cIn2, cOut, c);
    }
    return DispatchSampleType(cIn2.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return DispatchDefault2<T1, typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template <class T1, class T2>
long ClIp2to1Base::DispatchDefault2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return Default<T1, T2, typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template <class T1, class T2, class TOut>
long ClIp2to1Base::Default(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    const StValue cValue{*this, cIn1, cIn2, cOut};
    CombineOverlap<T1, T2, TOut>(ClOverlapRows(cIn1, cIn2, cOut, c), [&cValue](T1 t1, T2 t2)
                                 { return cValue.Get<TOut>(static_cast<double>(t1), static_cast<double>(t2)); });
    return FPC_SUCCESS;
}

template <class T1, class T2>
long ClIp2to1Base::DispatchLUT(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              { return ProcessLUT<T1, T2, typename decltype(cTag)::Type>(cIn1, cIn2, cOut, c); });
}

template long ClIp2to1Base::DispatchLUT<unsigned char, unsigned char>(ClImage&, ClImage&, ClImage&, const StOverlap&);

template <class T1, class T2, class TOut>
long ClIp2to1Base::ProcessLUT(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c)
{
    TpArrayStatic<TOut> aTable(nTableSize);
    TOut* const pTable = aTable.m_pData;
    std::fill_n(pTable, nTableSize, TOut());
    const StValue cValue{*this, cIn1, cIn2, cOut};
    const auto row = [&](double dValue1, long nPlace1)
    {
        const long nRow = nPlace1 * nTableSide;
        ForEachValue(cIn2, nTableSize - nRow,
                     [&](double dValue2, long nPlace2)
                     { pTable[nRow + nPlace2] = cValue.Get<TOut>(dValue1, dValue2); });
    };
    ForEachValue(cIn1, nTableSide, row);
    CombineOverlap<T1, T2, TOut>(ClOverlapRows(cIn1, cIn2, cOut, c),
                                 [pTable](T1 t1, T2 t2) { return pTable[t1 * nTableSide + t2]; });
    return FPC_SUCCESS;
}
