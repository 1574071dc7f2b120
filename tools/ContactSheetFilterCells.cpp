// The cells of the operators that look at a pixel's neighbours: filters, resizing, turning.

#include "ContactSheetCells.hpp"

#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDTools/Exception.hpp"

#include <utility>

namespace
{
using FilterMode = StSheetMode<ClIpFilterBase::EMode>;
constexpr FilterMode cModeX SHEET_MODE(ClIpFilterBase, eModeX);
constexpr FilterMode cModeY SHEET_MODE(ClIpFilterBase, eModeY);
constexpr FilterMode cModeXY SHEET_MODE(ClIpFilterBase, eModeXY);
constexpr FilterMode cModeDirected SHEET_MODE(ClIpFilterBase, eModeDirected);
constexpr FilterMode cModeDirectedOrtho SHEET_MODE(ClIpFilterBase, eModeDirectedOrtho);

void AddMid(ClSheetCells& cCells, const FilterMode& cMode, const std::string& sInput, ClImage& cIn, long nWidth,
            long nExpectedCode = 0)
{
    ClSheetInputs& c = cCells.m_cInputs;
    cCells.Add<ClIpFilterMid>(
        cMode.m_szName, sInput + ", width " + std::to_string(nWidth),
        [&](ClIpFilterMid& cOperator, ClSheetRun& cRun)
        {
            cOperator.m_pInDxImage = &c.m_cDirectionX;
            cOperator.m_pInDyImage = &c.m_cDirectionY;
            return cOperator.ClIpFilterBase::ApplyParam(cIn, cRun.m_cOut, nWidth, cMode.m_eMode);
        },
        nExpectedCode);
}

/// The passes on signed bytes have kernels of their own, which the frame's dispatch does not reach.
void AddMidSigned(ClSheetCells& cCells, const FilterMode& cMode, long (ClIpFilterMid::*pProcess)(), long nWidth)
{
    ClSheetInputs& c = cCells.m_cInputs;
    cCells.Add<ClIpFilterMid>(cMode.m_szName, "signed kernel, width " + std::to_string(nWidth),
                              [&](ClIpFilterMid& cOperator, ClSheetRun& cRun)
                              {
                                  cOperator.m_pInImage = &c.m_cSigned;
                                  cOperator.m_pOutImage = &cRun.m_cOut;
                                  cOperator.m_nFilterWidth = nWidth;
                                  return (cOperator.*pProcess)();
                              });
}

void AddMidCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    for (const FilterMode* pMode : {&cModeX, &cModeY, &cModeXY, &cModeDirected, &cModeDirectedOrtho})
    {
        AddMid(cCells, *pMode, "dots", c.m_cDots, 9);
        AddMid(cCells, *pMode, "ridges", c.m_cRidges, 9);
    }
    for (const long nWidth : {1L, 3L, 4L, 5L, 25L})
    {
        AddMid(cCells, cModeXY, "ridges", c.m_cRidges, nWidth);
    }
    AddMid(cCells, cModeXY, "colour", c.m_cColour, 15);
    AddMid(cCells, cModeX, "signed", c.m_cSigned, 9);
    AddMid(cCells, cModeY, "signed", c.m_cSigned, 9);
    AddMid(cCells, cModeXY, "signed", c.m_cSigned, 9);
    AddMid(cCells, cModeDirected, "signed", c.m_cSigned, 9, FPC_ERROR_FORMAT_NOTSUPPORTED);
    AddMidSigned(cCells, cModeX, &ClIpFilterMid::ProcessSignedX, 9);
    AddMidSigned(cCells, cModeY, &ClIpFilterMid::ProcessSignedY, 9);
    AddMidSigned(cCells, cModeXY, &ClIpFilterMid::ProcessSignedXY, 9);
    AddMidSigned(cCells, cModeXY, &ClIpFilterMid::ProcessSignedXY, 3);
    for (const auto& [szType, eType] : {std::pair("u16", ClImage::eUInt16), std::pair("f64", ClImage::eDouble64)})
    {
        ClImage cOther;
        ClIpConvertDataType().ApplyParam(c.m_cRidges, cOther, eType);
        AddMid(cCells, cModeXY, std::string("ridges as ") + szType, cOther, 9);
    }
    cCells.Add<ClIpFilterMid>(cModeXY.m_szName, "ridges, width 5, the remainder",
                              [&](ClIpFilterMid& cOperator, ClSheetRun& cRun)
                              {
                                  ClImage cMean;
                                  cOperator.SetRemainder(&cRun.m_cOut);
                                  return cOperator.ApplyParam(c.m_cRidges, cMean, 5);
                              });
}

void AddRotating(ClSheetCells& cCells, const StSheetMode<ClIpFilterMidRotating::EVarianceMode>& cMode,
                 const char* szInput, ClImage& cIn, long nWidth, long nExpectedCode = 0)
{
    cCells.Add<ClIpFilterMidRotating>(
        cMode.m_szName, std::string(szInput) + ", width " + std::to_string(nWidth),
        [&](ClIpFilterMidRotating& cOperator, ClSheetRun& cRun)
        {
            const long nCode = cOperator.ApplyParam(cIn, cRun.m_cOut, nWidth, cMode.m_eMode);
            // The filter says unsigned also of the signed bytes that it makes of signed ones.
            cRun.m_cOut.m_eDataType = cIn.m_eDataType;
            return nCode;
        },
        nExpectedCode);
}

void AddRotatingCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    using Rotating = ClIpFilterMidRotating;
    const StSheetMode<Rotating::EVarianceMode> aModes[] = {
        SHEET_MODE(Rotating, ModeLocalMinDistanceToAverage), SHEET_MODE(Rotating, ModeLocalMaskDeviation),
        SHEET_MODE(Rotating, ModeLocalMaskDeviationFixPoint), SHEET_MODE(Rotating, ModeLocalMaskDeviationFloat)};
    for (const auto& cMode : aModes)
    {
        const bool bSignedToo = cMode.m_eMode >= Rotating::ModeLocalMaskDeviationFixPoint;
        AddRotating(cCells, cMode, "hand", c.m_cHand, 9);
        AddRotating(cCells, cMode, "ridges", c.m_cRidges, 9);
        AddRotating(cCells, cMode, "signed", c.m_cSigned, 9, bSignedToo ? 0 : FPC_ERROR_PARAM_OUT_OF_RANGE);
    }
    for (const long nWidth : {1L, 5L, 7L, 29L})
    {
        AddRotating(cCells, aModes[1], "ridges", c.m_cRidges, nWidth);
    }
    AddRotating(cCells, aModes[1], "ridges", c.m_cRidges, 3, FPC_ERROR_PARAM_OUT_OF_RANGE);
    AddRotating(cCells, aModes[2], "ridges", c.m_cRidges, 31, FPC_ERROR_PARAM_OUT_OF_RANGE);
    AddRotating(cCells, aModes[1], "colour", c.m_cColour, 9);
}
} // namespace

void AddFilterCells(ClSheetCells& cCells)
{
    AddMidCells(cCells);
    AddRotatingCells(cCells);
}

namespace
{
using RescaleMode = StSheetMode<ClIpRescale::eProcessingMode>;

void AddSize(ClSheetCells& cCells, const RescaleMode& cMode, const std::string& sInput, ClImage& cIn, int nWidth,
             int nHeight, double dParameter = -0.75)
{
    cCells.Add<ClIpRescale>(cMode.m_szName,
                            sInput + " to " + std::to_string(nWidth) + "x" + std::to_string(nHeight) +
                                (dParameter > 0 ? ", fast" : ""),
                            [&](ClIpRescale& cOperator, ClSheetRun& cRun)
                            {
                                cOperator.m_dConvParameter1 = dParameter;
                                return cOperator.ApplyParamSize(cIn, cRun.m_cOut, nWidth, nHeight, cMode.m_eMode);
                            });
}

void AddPels(ClSheetCells& cCells, const RescaleMode& cMode, const char* szInput, ClImage& cIn, int nPels)
{
    cCells.Add<ClIpRescale>(cMode.m_szName,
                            szInput + (", " + std::to_string(cIn.m_nXRes)) + " to " + std::to_string(nPels) + " pels",
                            [&](ClIpRescale& cOperator, ClSheetRun& cRun)
                            { return cOperator.ApplyParamPels(cIn, cRun.m_cOut, nPels, nPels, cMode.m_eMode); });
}
} // namespace

void AddRescaleCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    const RescaleMode cWhole SHEET_MODE(ClIpRescale, ModeWholeNumbered);
    const RescaleMode aModes[] = {SHEET_MODE(ClIpRescale, ModeNearestNeighbour), SHEET_MODE(ClIpRescale, ModeBiLinear),
                                  SHEET_MODE(ClIpRescale, ModeBiCubic), SHEET_MODE(ClIpRescale, ModeBiLinearFantMar)};
    const RescaleMode& cCubic = aModes[2];
    for (const RescaleMode& cMode : aModes)
    {
        AddSize(cCells, cMode, "small", c.m_cSmall, 200, 200);
        AddSize(cCells, cMode, "ridges", c.m_cRidges, 70, 70);
        AddSize(cCells, cMode, "small", c.m_cSmall, 200, 40);
        AddSize(cCells, cMode, "small", c.m_cSmall, 40, 200);
        AddPels(cCells, cMode, "ridges", c.m_cRidges, 11811);
    }
    AddSize(cCells, cCubic, "small", c.m_cSmall, 200, 200, 0.75);
    AddSize(cCells, cCubic, "ridges", c.m_cRidges, 70, 70, 0.75);
    AddPels(cCells, cWhole, "small", c.m_cSmall, 3 * c.m_cSmall.m_nXRes);
    AddPels(cCells, cWhole, "ridges", c.m_cRidges, c.m_cRidges.m_nXRes / 3);
    AddPels(cCells, cWhole, "ridges", c.m_cRidges, c.m_cRidges.m_nXRes * 2 / 3);
    for (const RescaleMode& cMode : aModes)
    {
        AddSize(cCells, cMode, "colour", c.m_cColour, 200, 100);
    }
    AddPels(cCells, cWhole, "colour", c.m_cColour, c.m_cColour.m_nXRes / 2);
    cCells.Add<ClIpRescale>(
        cWhole.m_szName, "hand to 80x80, no pels",
        [&](ClIpRescale& cOperator, ClSheetRun& cRun)
        { return cOperator.ApplyParamSize(c.m_cHand, cRun.m_cOut, 80, 80, ClIpRescale::ModeWholeNumbered); },
        FPC_ERROR_INTERNAL);
}

namespace
{
void AddTurn(ClSheetCells& cCells, const std::string& sInput, ClImage& cIn, int nDegrees, bool bResize,
             bool bInterpolate, unsigned char nBackground)
{
    const std::string sResize = bResize ? ", resize" : "";
    const std::string sInterpolate = bInterpolate ? ", interpolate" : "";
    cCells.Add<ClIpRotate>("", sInput + " " + std::to_string(nDegrees) + " deg" + sResize + sInterpolate,
                           [&](ClIpRotate& cOperator, ClSheetRun& cRun)
                           {
                               cOperator.m_nBackgroundColor = nBackground;
                               for (int i = 0; i < ClIpRotate::nMaxPlanes; ++i)
                               {
                                   cOperator.m_anPlaneBackground[i] = static_cast<unsigned char>(80 * i);
                               }
                               cOperator.m_bPlaneBackground = cIn.m_nPlanes > 1;
                               const ClVector cMiddle((cIn.m_nWidth - 1) / 2.0, (cIn.m_nHeight - 1) / 2.0);
                               return cOperator.ApplyParam(cIn, cRun.m_cOut, cMiddle,
                                                           nDegrees * 3.141592653589793 / 180, bResize, bInterpolate);
                           });
}
} // namespace

void AddRotateCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    for (const bool bInterpolate : {false, true})
    {
        for (const bool bResize : {false, true})
        {
            AddTurn(cCells, "ridges", c.m_cRidges, 20, bResize, bInterpolate, 128);
            AddTurn(cCells, "ridges", c.m_cRidges, -70, bResize, bInterpolate, 255);
            AddTurn(cCells, "hand", c.m_cHand, 90, bResize, bInterpolate, 255);
        }
    }
    AddTurn(cCells, "hand", c.m_cHand, 180, true, false, 0);
    AddTurn(cCells, "signed", c.m_cSigned, 20, false, true, 0);
    AddTurn(cCells, "colour", c.m_cColour, 30, false, true, 0);
}
