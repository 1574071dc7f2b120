#include "OperatorFuzzSetups.hpp"

#include "OperatorFuzzImages.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
template <class Operator> Operator& Install(StBench& c)
{
    auto pOperator = std::make_unique<Operator>();
    Operator& cOperator = *pOperator;
    c.m_pOperator = std::move(pOperator);
    return cOperator;
}

/// Seldom one of the images, or both, are missing.
template <class Operator> void LeaveOut(Operator& cOperator, ClByteSource& cBytes)
{
    const unsigned nWhich = cBytes.Byte();
    if (nWhich == 0xfd || nWhich == 0xfe) cOperator.m_pInImage = nullptr;
    if (nWhich >= 0xfe) cOperator.m_pOutImage = nullptr;
}

/// With the members m_pInImage and m_pOutImage, and an output that may be the input.
template <class Operator> Operator& InstallInPlace(StBench& c)
{
    Operator& cOperator = Install<Operator>(c);
    cOperator.m_pInImage = &c.In();
    c.m_bMayBeInput = true;
    MakeFormer(c.m_acOut[0], c.m_cBytes);
    cOperator.m_pOutImage = c.Out();
    LeaveOut(cOperator, c.m_cBytes);
    return cOperator;
}

/// The same, but with another image as the output at all times.
template <class Operator> Operator& InstallApart(StBench& c)
{
    Operator& cOperator = Install<Operator>(c);
    cOperator.m_pInImage = &c.In();
    MakeFormer(c.m_acOut[0], c.m_cBytes);
    c.m_bOutputIsInput = c.m_cBytes.Byte() == 0xff;
    cOperator.m_pOutImage = c.m_bOutputIsInput ? &c.In() : &c.m_acOut[0];
    LeaveOut(cOperator, c.m_cBytes);
    return cOperator;
}

// ---- Operators

void SetUpAutoThreshold(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpBinarizeAutoThreshold>(c);
    cOperator.m_eProcessingMode = Choice<ClIpBinarizeAutoThreshold::eProcessingMode>(9, c.m_cBytes);
    MakeByte(c.In(), c.m_cBytes);
    ClImage& cIn = c.In();
    // Relaxation goes over all pixels up to a hundred times.
    c.m_fnIsModest = [&cIn, &cOperator]
    {
        return cOperator.m_eProcessingMode != ClIpBinarizeAutoThreshold::ModeRelaxation ||
               cIn.m_nWidth * cIn.m_nHeight <= 200;
    };
    c.m_fnIsDetermined = [&cIn, &cOperator]
    {
        return cIn.m_dBlack == 0.0 && cIn.m_dWhite == 255.0 &&
               cOperator.m_eProcessingMode <= ClIpBinarizeAutoThreshold::ModeOtsu;
    };
    c.m_fnResults = [&cOperator](ClDigest& cDigest)
    {
        Promise(cOperator.m_nThreshold >= -1 && cOperator.m_nThreshold <= 256, "a threshold of bytes");
        cDigest.Add(static_cast<std::uint64_t>(cOperator.m_nThreshold));
    };
}

void SetUpBinarizeGlobal(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpBinarizeGlobal>(c);
    MakeTyped(c.In(), c.m_cBytes);
    if (c.m_cBytes.OneIn(2)) cOperator.m_dThreshold = Real(c.m_cBytes);
    if (c.m_cBytes.OneIn(4)) cOperator.m_dBlack = Real(c.m_cBytes);
    if (c.m_cBytes.OneIn(4)) cOperator.m_dWhite = Real(c.m_cBytes);
}

void AddComponents(ClDigest& cDigest, const ClIpConnectedComponent2::ComponentsArray_t& aComponents)
{
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        const auto& c = aComponents[i];
        for (const ClVector& v : {c.m_cCenter, c.m_cMin, c.m_cMax, c.m_cFirstPixel})
        {
            cDigest.Add(v.m_dX);
            cDigest.Add(v.m_dY);
        }
        for (const double dValue : {c.m_dArea, c.m_dEccentricity, c.m_dMeanGrey, c.m_dMomentXY, c.m_dMomentYY,
                                    c.m_dMomentXX, std::isnan(c.m_dOrientation) ? 9.0 : c.m_dOrientation})
            cDigest.Add(dValue);
        cDigest.Add(static_cast<std::uint64_t>(c.m_nLabel));
    }
}

void SetUpConnectedComponent(StBench& c)
{
    auto& cOperator = Install<ClIpConnectedComponent2>(c);
    MakeByte(c.In(), c.m_cBytes);
    if (c.m_cBytes.Byte() != 0xff) cOperator.pInImage = &c.In();
    if (c.m_cBytes.Byte() != 0xff) cOperator.m_pComponents = &c.m_aComponents;
    if (c.m_cBytes.OneIn(2))
    {
        MakeLike(c.In(1), c.In(), ClImage::eUInt8, c.m_cBytes);
        cOperator.m_pInImageGrey = &c.In(1);
    }
    if (c.m_cBytes.OneIn(2)) cOperator.m_pOutImage = &c.m_acOut[0];
    cOperator.m_bMomentsOnDemand = c.m_cBytes.OneIn(2);
    c.m_fnResults = [&c, &cOperator](ClDigest& cDigest)
    {
        for (unsigned long i = 0; i < c.m_aComponents.Entries(); ++i)
        {
            if (cOperator.m_bMomentsOnDemand && i % 3 != 2) cOperator.MeasureMoments(i);
            const auto& cComponent = c.m_aComponents[i];
            const double dBox = (cComponent.m_cMax.m_dX - cComponent.m_cMin.m_dX + 1.0) *
                                (cComponent.m_cMax.m_dY - cComponent.m_cMin.m_dY + 1.0);
            Promise(cComponent.m_dArea >= 1.0 && cComponent.m_dArea <= dBox, "an object fills its box at most");
            Promise(cComponent.m_nLabel == static_cast<int>(i) + 1, "objects in the order of their labels");
        }
        AddComponents(cDigest, c.m_aComponents);
    };
}

void SetUpConvertDataType(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpConvertDataType>(c);
    MakeTyped(c.In(), c.m_cBytes);
    const unsigned nType = c.m_cBytes.Byte();
    cOperator.m_eOutImageType = nType % 16 == 15 ? c.m_cBytes.Byte() : nType % 16 == 14 ? 255 : AnyType(nType);
}

void SetUpCut(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpCut>(c);
    MakeTyped(c.In(), c.m_cBytes);
    cOperator.m_nX0 = Mostly(0, std::max(0, c.In().m_nWidth / 2), c.m_cBytes);
    cOperator.m_nY0 = Mostly(0, std::max(0, c.In().m_nHeight / 2), c.m_cBytes);
    cOperator.m_nDestWidth = Mostly(1, 1 + std::max(0, c.In().m_nWidth / 2), c.m_cBytes);
    cOperator.m_nDestHeight = Mostly(1, 1 + std::max(0, c.In().m_nHeight / 2), c.m_cBytes);
}

void SetUpCutBiggest(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpCutBiggestComponent>(c);
    if (c.m_cBytes.OneIn(4))
        MakeTyped(c.In(), c.m_cBytes);
    else
        MakeByte(c.In(), c.m_cBytes);
    c.m_fnResults = [&cOperator](ClDigest& cDigest)
    {
        for (const long n : {cOperator.m_nCutX0, cOperator.m_nCutY0, cOperator.m_nCutWidth, cOperator.m_nCutHeight})
            cDigest.Add(static_cast<std::uint64_t>(n));
    };
}

void SetUpDelta(StBench& c)
{
    auto& cOperator = Install<ClIpDelta>(c);
    MakeTyped(c.In(), c.m_cBytes);
    if (c.m_cBytes.OneIn(2))
        MakeTyped(c.In(1), c.m_cBytes);
    else
        MakeLike(c.In(1), c.In(), AnyType(c.m_cBytes.Byte()), c.m_cBytes);
    c.m_bMayBeInput = true;
    MakeFormer(c.m_acOut[0], c.m_cBytes);
    cOperator.m_pInImage1 = &c.In();
    cOperator.m_pInImage2 = c.m_cBytes.OneIn(16) ? &c.In() : &c.In(1);
    if (cOperator.m_pInImage2 == &c.In()) c.m_bMayBeInput = false;
    cOperator.m_pOutImage = c.m_bMayBeInput ? c.Out() : &c.m_acOut[0];
    const unsigned nType = c.m_cBytes.Byte();
    cOperator.m_nOutImageType = nType % 16 == 15 ? c.m_cBytes.Byte() : nType % 4 == 3 ? 255 : AnyType(nType / 4);
    cOperator.m_bSizeMustBeEqual = c.m_cBytes.OneIn(4);
    cOperator.m_bUseLUT = c.m_cBytes.OneIn(16);
    if (c.m_cBytes.OneIn(2)) cOperator.m_dFillColor = Real(c.m_cBytes);
    if (c.m_cBytes.OneIn(2)) cOperator.m_nOffsetX = MostlyInt(-30, 30, c.m_cBytes);
    if (c.m_cBytes.OneIn(2)) cOperator.m_nOffsetY = MostlyInt(-30, 30, c.m_cBytes);
}

/// Width, direction and, for the modes that follow directions, the directions of a filter.
void SetUpFilter(StBench& c, ClIpFilterBase& cFilter)
{
    constexpr long anModes[] = {ClIpFilterBase::eModeXY, ClIpFilterBase::eModeX, ClIpFilterBase::eModeY,
                                ClIpFilterBase::eModeDirected, ClIpFilterBase::eModeDirectedOrtho};
    const unsigned nMode = c.m_cBytes.Byte();
    cFilter.m_nMode = nMode >= 0xf8 ? c.m_cBytes.Number() : anModes[nMode % 8 % std::size(anModes)];
    if (cFilter.m_nMode < ClIpFilterBase::eModeDirected || c.m_cBytes.OneIn(32)) return;
    MakeLike(c.In(1), c.In(), ClImage::eSInt8, c.m_cBytes);
    MakeLike(c.In(2), c.In(), ClImage::eSInt8, c.m_cBytes);
    cFilter.m_pInDxImage = &c.In(1);
    cFilter.m_pInDyImage = &c.In(2);
}

void SetUpFilterMid(StBench& c)
{
    auto& cOperator = InstallApart<ClIpFilterMid>(c);
    if (c.m_cBytes.OneIn(2))
        MakeTyped(c.In(), c.m_cBytes);
    else
        MakeByte(c.In(), c.m_cBytes);
    SetUpFilter(c, cOperator);
    cOperator.m_nFilterWidth = Mostly(0, 25, c.m_cBytes);
    if (c.m_cBytes.OneIn(4)) cOperator.SetRemainder(&c.m_acOut[1]);
    c.m_fnResults = [&cOperator](ClDigest& cDigest)
    { cDigest.Add(static_cast<std::uint64_t>(cOperator.m_nFilterWidth)); };
}

void SetUpFilterMidRotating(StBench& c)
{
    auto& cOperator = InstallApart<ClIpFilterMidRotating>(c);
    if (c.m_cBytes.OneIn(4))
        MakeAny(c.In(), c.m_cBytes);
    else
        Make(c.In(), c.m_cBytes.OneIn(3) ? ClImage::eSInt8 : ClImage::eUInt8, 1, c.m_cBytes);
    if (c.m_cBytes.OneIn(16)) SetUpFilter(c, cOperator);
    const unsigned nWidth = c.m_cBytes.Byte();
    cOperator.m_nFilterWidth = nWidth % 4 == 0   ? 9
                               : nWidth % 4 == 1 ? Mostly(0, 40, c.m_cBytes)
                                                 : 1 + nWidth / 4 % 8 * 2;
    cOperator.m_eVarMode = Choice<ClIpFilterMidRotating::EVarianceMode>(4, c.m_cBytes);
}

void SetUpFill(StBench& c, ClIpFloodFill& cOperator)
{
    if (c.m_cBytes.OneIn(8))
        MakeTyped(c.In(), c.m_cBytes);
    else
        Make(c.In(), ClImage::eUInt8, 1, c.m_cBytes);
    cOperator.m_pInImage = c.m_cBytes.Byte() == 0xff ? nullptr : &c.In();
    c.m_bMayBeInput = true;
    cOperator.m_pOutImage = c.m_bInPlace ? nullptr : &c.m_acOut[0];
    if (c.m_cBytes.OneIn(4)) cOperator.m_pBoundingBox = &c.m_cBox;
    if (c.m_cBytes.OneIn(2)) cOperator.m_nCountThresh = Mostly(0, 300, c.m_cBytes);
    cOperator.m_nFillColor = c.m_cBytes.Byte();
    cOperator.m_nStartX = Mostly(-1, std::max(0, c.In().m_nWidth), c.m_cBytes);
    cOperator.m_nStartY = Mostly(-1, std::max(0, c.In().m_nHeight), c.m_cBytes);
}

void AddBox(ClDigest& cDigest, const ClIpFloodFill::StBoundingBox& cBox)
{
    for (const long n : {cBox.nMinX, cBox.nMinY, cBox.nMaxX, cBox.nMaxY, cBox.nCount})
        cDigest.Add(static_cast<std::uint64_t>(n));
}

void SetUpFloodFill(StBench& c)
{
    SetUpFill(c, Install<ClIpFloodFill>(c));
    c.m_fnResults = [&c](ClDigest& cDigest) { AddBox(cDigest, c.m_cBox); };
}

void SetUpFloodFillLabeling(StBench& c)
{
    auto& cOperator = Install<ClIpFloodFillLabeling>(c);
    SetUpFill(c, cOperator);
    c.m_fnResults = [&cOperator](ClDigest& cDigest)
    {
        for (unsigned long i = 0; i < cOperator.m_aObjects.Entries(); ++i) AddBox(cDigest, cOperator.m_aObjects[i]);
    };
}

void SetUpGamma(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpGammaCorrection>(c);
    MakeByte(c.In(), c.m_cBytes);
    if (c.m_cBytes.OneIn(4)) cOperator.m_nBlack = c.m_cBytes.Byte();
    if (c.m_cBytes.OneIn(4)) cOperator.m_nWhite = c.m_cBytes.Byte();
    cOperator.m_dGamma = c.m_cBytes.OneIn(4) ? Real(c.m_cBytes) : c.m_cBytes.Byte() / 50.0;
}

void SetUpJoinPlanes(StBench& c)
{
    auto& cOperator = Install<ClIpJoinPlanes>(c);
    MakeTyped(c.In(), c.m_cBytes);
    cOperator.m_apInPlane[0] = &c.In();
    for (int i = 1; i < 4; ++i)
    {
        if (c.m_cBytes.OneIn(3)) continue;
        MakeLike(c.In(i), c.In(), c.In().m_eDataType, c.m_cBytes);
        cOperator.m_apInPlane[i] = &c.In(i);
    }
    for (double& dFill : cOperator.m_adFillcolors)
        if (c.m_cBytes.OneIn(3)) dFill = Real(c.m_cBytes);
    c.m_bMayBeInput = true;
    MakeFormer(c.m_acOut[0], c.m_cBytes);
    cOperator.m_pOutImage = c.Out();
    cOperator.m_eOutContent = Choice<ClImage::EContent>(8, c.m_cBytes);
    cOperator.m_nOutPlanes = MostlyInt(0, 5, c.m_cBytes);
    cOperator.m_bFillEmptyPlanes = c.m_cBytes.OneIn(8) ? 0 : 1;
    c.m_fnIsDetermined = [&cOperator]
    {
        return cOperator.m_bFillEmptyPlanes != 0 &&
               (cOperator.m_nOutPlanes > 0 || cOperator.m_eOutContent != ClImage::eUnknown);
    };
}

void SetUpLabeling(StBench& c)
{
    auto& cOperator = InstallApart<ClIpLabeling>(c);
    MakeByte(c.In(), c.m_cBytes);
    if (c.m_cBytes.OneIn(4))
    {
        cOperator.m_pRuns = &c.m_cRuns;
        if (c.m_cBytes.OneIn(2)) cOperator.m_pOutImage = nullptr;
    }
    const long nX = Mostly(0, 20, c.m_cBytes), nY = Mostly(0, 12, c.m_cBytes);
    c.m_fnResults = [&c, &cOperator, nX, nY](ClDigest& cDigest)
    {
        cDigest.Add(static_cast<std::uint64_t>(cOperator.m_nLabels));
        c.m_cRuns.ForEach([&cDigest](const ClObjectRuns::StRun& cRun, int) { cDigest.AddBytes(&cRun, sizeof cRun); });
        if (c.m_acOut[0].Data() == nullptr || c.m_acOut[0].m_eDataType != ClImage::eSInt32) return;
        if (cOperator.m_pOutImage == nullptr) return;
        // The plain way of labelling one object leaves an image alone that is labelled already.
        ClDigest cBefore, cAfter;
        cBefore.Add(c.m_acOut[0]);
        const bool bInside = nX >= 0 && nX < c.In().m_nWidth && nY >= 0 && nY < c.In().m_nHeight;
        const int nLabel = bInside ? Row<int>(c.m_acOut[0], static_cast<int>(nY))[nX] : 1;
        if (nLabel != 0) cOperator.FloodFill(nX, nY, nLabel);
        cAfter.Add(c.m_acOut[0]);
        Promise(cBefore.Sum() == cAfter.Sum(), "both ways of labelling agree");
    };
}

/// Sides that would multiply to many pixels are not what this target is after.
bool IsModest(const ClImage& cIn, const ClIpRescale& c)
{
    constexpr double dMost = 20000.0;
    const auto side = [](int nOld, int nNew, int nPels, int nRes)
    {
        const double dFromPels = nRes > 0 ? 1.0 * nOld * nPels / nRes : 0.0;
        return std::max({1.0 * nOld, 1.0 * nNew, dFromPels, 1.0});
    };
    return side(cIn.m_nWidth, c.m_nNewWidth, c.m_nNewPelsX, cIn.m_nXRes) *
               side(cIn.m_nHeight, c.m_nNewHeight, c.m_nNewPelsY, cIn.m_nYRes) <=
           dMost;
}

void SetUpRescale(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpRescale>(c);
    MakeAny(c.In(), c.m_cBytes);
    const unsigned nHow = c.m_cBytes.Byte();
    if (nHow % 4 != 0) cOperator.m_nNewWidth = MostlyInt(0, 120, c.m_cBytes);
    if (nHow % 4 != 1) cOperator.m_nNewHeight = MostlyInt(0, 60, c.m_cBytes);
    if (nHow % 4 == 0) cOperator.m_nNewPelsX = MostlyInt(0, 12000, c.m_cBytes);
    if (nHow % 4 <= 1) cOperator.m_nNewPelsY = MostlyInt(0, 12000, c.m_cBytes);
    cOperator.m_eMode = Choice<ClIpRescale::eProcessingMode>(5, c.m_cBytes);
    if (c.m_cBytes.OneIn(4)) cOperator.m_dConvParameter1 = Real(c.m_cBytes);
    c.m_fnIsModest = [&c, &cOperator] { return IsModest(c.In(), cOperator); };
    c.m_fnIsDetermined = [&cOperator] { return cOperator.m_eMode <= ClIpRescale::ModeBiLinearFantMar; };
    c.m_fnResults = [&cOperator](ClDigest& cDigest)
    {
        for (const int n :
             {cOperator.m_nActWidth, cOperator.m_nActHeight, cOperator.m_nActPelsX, cOperator.m_nActPelsY})
            cDigest.Add(static_cast<std::uint64_t>(n));
    };
}

void SetUpRgbToGrey(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpRgbToGrey>(c);
    Make(c.In(), AnyType(c.m_cBytes.Byte()), c.m_cBytes.OneIn(8) ? c.m_cBytes.Between(0, 5) : 3, c.m_cBytes);
    cOperator.m_eMode = Choice<ClIpRgbToGrey::eProcessingMode>(3, c.m_cBytes);
}

void SetUpRotate(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpRotate>(c);
    MakeAny(c.In(), c.m_cBytes);
    cOperator.m_dRotation = c.m_cBytes.OneIn(8) ? Real(c.m_cBytes) : c.m_cBytes.Between(-400, 400) / 100.0;
    if (c.m_cBytes.OneIn(2)) cOperator.m_cCenter = ClVector(Real(c.m_cBytes), Real(c.m_cBytes));
    cOperator.m_bResizeOutImage = c.m_cBytes.OneIn(2);
    cOperator.m_bInterpolate = c.m_cBytes.OneIn(2);
    cOperator.m_nBackgroundColor = c.m_cBytes.OneIn(2) ? 0 : c.m_cBytes.Byte();
    cOperator.m_bPlaneBackground = c.m_cBytes.OneIn(4);
    for (unsigned char& nByte : cOperator.m_anPlaneBackground) nByte = c.m_cBytes.Byte();
}

void SetUpSplitPlanes(StBench& c)
{
    auto& cOperator = Install<ClIpSplitPlanes>(c);
    Make(c.In(), AnyType(c.m_cBytes.Byte()), c.m_cBytes.Between(0, 5), c.m_cBytes);
    cOperator.m_pInImage = &c.In();
    for (int i = 0; i < 4; ++i)
        if (!c.m_cBytes.OneIn(5)) cOperator.m_apOutPlane[i] = &c.m_acOut[i];
}

void SetRanges(ClIpStretchRangeGlobal& cOperator, ClByteSource& cBytes)
{
    for (unsigned char* p :
         {&cOperator.m_nOldRangeFrom, &cOperator.m_nOldRangeTo, &cOperator.m_nNewRangeFrom, &cOperator.m_nNewRangeTo})
        if (cBytes.OneIn(3)) *p = cBytes.Byte();
}

void SetUpStretch(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpStretchRangeGlobal>(c);
    MakeAny(c.In(), c.m_cBytes);
    SetRanges(cOperator, c.m_cBytes);
}

void SetUpStretchNoiseRemoving(StBench& c)
{
    auto& cOperator = InstallInPlace<ClIpStretchRangeGlobalNoiseRemoving>(c);
    cOperator.m_pOutImage = c.Out(); // always: without an output it works in place
    MakeAny(c.In(), c.m_cBytes);
    SetRanges(cOperator, c.m_cBytes);
    cOperator.m_dDarkNoisePart = c.m_cBytes.OneIn(8) ? Real(c.m_cBytes) : c.m_cBytes.Byte() / 255.0;
    cOperator.m_dBrightNoisePart = c.m_cBytes.OneIn(8) ? Real(c.m_cBytes) : c.m_cBytes.Byte() / 255.0;
}

/// The histogram with all its statistics, as an operator without an output.
class ClLookAtHistogram : public ClProcessorBase
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClLookAtHistogram>(); }
    const char* Name() const override { return "LookAtHistogram"; }
    long Process() override
    {
        ClHistogram cHistogram;
        cHistogram.Create(*m_pInImage, m_anEdge[0], m_anEdge[1], m_anEdge[2], m_anEdge[3]);
        const auto add = [this](auto value) { m_cDigest.Add(static_cast<double>(value)); };
        for (const unsigned int nCount : cHistogram.m_anBins) add(nCount);
        unsigned char nLow, nHigh;
        cHistogram.GetNoiseFreeRange(m_adShare[0], m_adShare[1], nLow, nHigh);
        add(nLow), add(nHigh), add(cHistogram.GetAverage(m_adShare[0], m_adShare[1]));
        add(cHistogram.GetGreyMid()), add(cHistogram.GetColorCount()), add(cHistogram.GetUniformity());
        add(cHistogram.GetAverageDeviation()), add(cHistogram.GetStdDeviation());
        add(cHistogram.Climb(m_nBin)), add(cHistogram.Descend(m_nBin)), add(cHistogram.IsUnimodal());
        double dDark = 0.0, dBright = 0.0;
        add(cHistogram.TwoMeansClustering(dDark, dBright)), add(dDark), add(dBright);
        cHistogram.LowPass(m_anEdge[4]);
        double adSlope[ClHistogram::nBins];
        cHistogram.CalcFirstDerivation(m_anEdge[4], adSlope);
        for (const double dSlope : adSlope) add(dSlope);
        add(cHistogram.GetDarkestAvrg(m_nBin)), add(cHistogram.GetBrightestAvrg(m_nBin));
        add(cHistogram.GetCentreOfMass(m_nBin, m_nBin2)), add(cHistogram.GetMid(m_nBin, m_nBin2));
        add(cHistogram.GetLocalMin(m_nBin, m_nBin2)), add(cHistogram.GetLocalMax(m_nBin, m_nBin2));
        return FPC_SUCCESS;
    }

    ClImage* m_pInImage = nullptr;
    int m_anEdge[5] = {};
    double m_adShare[2] = {};
    unsigned char m_nBin = 0;
    unsigned char m_nBin2 = 0;
    ClDigest m_cDigest;
};

void SetUpHistogram(StBench& c)
{
    auto& cOperator = Install<ClLookAtHistogram>(c);
    Make(c.In(), c.m_cBytes.OneIn(3) ? ClImage::eSInt8 : ClImage::eUInt8, c.m_cBytes.OneIn(4) ? 3 : 1, c.m_cBytes);
    cOperator.m_pInImage = &c.In();
    for (int& nEdge : cOperator.m_anEdge) nEdge = MostlyInt(-2, 40, c.m_cBytes);
    for (double& dShare : cOperator.m_adShare)
        dShare = c.m_cBytes.OneIn(8) ? Real(c.m_cBytes) : c.m_cBytes.Byte() / 255.0;
    cOperator.m_nBin = c.m_cBytes.Byte();
    cOperator.m_nBin2 = c.m_cBytes.Byte();
    c.m_fnResults = [&cOperator](ClDigest& cDigest) { cDigest.Add(cOperator.m_cDigest.Sum()); };
}

using SetUp_t = void (*)(StBench&);
constexpr SetUp_t g_aSetUps[] = {
    SetUpAutoThreshold,
    SetUpBinarizeGlobal,
    SetUpConnectedComponent,
    SetUpConvertDataType,
    SetUpCut,
    SetUpCutBiggest,
    SetUpDelta,
    SetUpFilterMid,
    SetUpFilterMidRotating,
    SetUpFloodFill,
    SetUpFloodFillLabeling,
    SetUpGamma,
    SetUpJoinPlanes,
    SetUpLabeling,
    SetUpRescale,
    SetUpRgbToGrey,
    SetUpRotate,
    SetUpSplitPlanes,
    SetUpStretch,
    SetUpStretchNoiseRemoving,
    SetUpHistogram,
};
} // namespace

unsigned OperatorCount()
{
    return static_cast<unsigned>(std::size(g_aSetUps));
}

void SetUpOperator(unsigned nOperator, StBench& c)
{
    g_aSetUps[nOperator](c);
}
