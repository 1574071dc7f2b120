// The cells of the operators that look at pixels one by one: grey values, planes, sample types, rectangles, two images.

#include "ContactSheetCells.hpp"

#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobal.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "RDTools/Exception.hpp"

#include <algorithm>
#include <cstdio>

namespace
{
/// A number without needless digits.
std::string Text(double dValue)
{
    char szText[32];
    std::snprintf(szText, sizeof(szText), "%g", dValue);
    return szText;
}

void AddGamma(ClSheetCells& cCells, unsigned char nBlack, unsigned char nWhite, double dGamma, long nExpectedCode = 0)
{
    ClImage& cHand = cCells.m_cInputs.m_cHand;
    cCells.Add<ClIpGammaCorrection>(
        "", "hand, " + Text(dGamma) + " from " + Text(nBlack) + " to " + Text(nWhite),
        [&](ClIpGammaCorrection& cOperator, ClSheetRun& cRun)
        { return cOperator.ApplyParam(cHand, cRun.m_cOut, nBlack, nWhite, dGamma); },
        nExpectedCode);
}

void AddStretch(ClSheetCells& cCells, const char* szInput, ClImage& cIn, int nOldFrom, int nOldTo, int nNewFrom,
                int nNewTo)
{
    std::string sArguments = szInput;
    if (nOldFrom <= nOldTo) sArguments += ", " + Text(nOldFrom) + ".." + Text(nOldTo);
    sArguments += " to " + Text(nNewFrom) + ".." + Text(nNewTo);
    cCells.Add<ClIpStretchRangeGlobal>("", sArguments,
                                       [&](ClIpStretchRangeGlobal& cOperator, ClSheetRun& cRun)
                                       {
                                           cOperator.m_nOldRangeFrom = static_cast<unsigned char>(nOldFrom);
                                           cOperator.m_nOldRangeTo = static_cast<unsigned char>(nOldTo);
                                           cOperator.m_nNewRangeFrom = static_cast<unsigned char>(nNewFrom);
                                           cOperator.m_nNewRangeTo = static_cast<unsigned char>(nNewTo);
                                           return cOperator.ApplyParam(cIn, cRun.m_cOut);
                                       });
}

void AddNoiseRemoving(ClSheetCells& cCells, const char* szInput, ClImage& cIn, double dDark, double dBright)
{
    cCells.Add<ClIpStretchRangeGlobalNoiseRemoving>(
        "", std::string(szInput) + ", less " + Text(dDark) + " and " + Text(dBright),
        [&](ClIpStretchRangeGlobalNoiseRemoving& cOperator, ClSheetRun& cRun)
        { return cOperator.ApplyParam(cIn, cRun.m_cOut, dDark, dBright); });
}
} // namespace

void AddGreyValueCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    for (const double dGamma : {0.4, 0.8, 1.0, 2.5})
    {
        AddGamma(cCells, 0, 255, dGamma);
    }
    AddGamma(cCells, 100, 220, 1.0);
    AddGamma(cCells, 100, 99, 1.0, FPC_ERROR_PARAM_INVALID);
    AddGamma(cCells, 0, 255, 6.0, FPC_ERROR_PARAM_OUT_OF_RANGE);
    AddStretch(cCells, "dull", c.m_cDull, 255, 0, 0, 255);
    AddStretch(cCells, "dull", c.m_cDull, 120, 140, 0, 255);
    AddStretch(cCells, "hand", c.m_cHand, 255, 0, 100, 150);
    AddStretch(cCells, "colour", c.m_cColour, 100, 200, 0, 255);
    AddNoiseRemoving(cCells, "dull", c.m_cDull, 0.0, 0.0);
    AddNoiseRemoving(cCells, "hand", c.m_cHand, 0.02, 0.07);
    AddNoiseRemoving(cCells, "hand", c.m_cHand, 0.2, 0.6);
    AddNoiseRemoving(cCells, "colour", c.m_cColour, 0.2, 0.2);
}

namespace
{
void AddToGrey(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    using ToGrey = ClIpRgbToGrey;
    const StSheetMode<ToGrey::eProcessingMode> aModes[] = {SHEET_MODE(ToGrey, MaxRgb), SHEET_MODE(ToGrey, Luminance),
                                                           SHEET_MODE(ToGrey, Lightness)};
    for (const auto& cMode : aModes)
    {
        cCells.Add<ToGrey>(cMode.m_szName, "colour",
                           [&](ToGrey& cOperator, ClSheetRun& cRun)
                           { return cOperator.ApplyParam(c.m_cColour, cRun.m_cOut, cMode.m_eMode); });
    }
    cCells.Add<ToGrey>(
        "Luminance", "hand, a single plane",
        [&](ToGrey& cOperator, ClSheetRun& cRun)
        { return cOperator.ApplyParam(c.m_cHand, cRun.m_cOut, ToGrey::Luminance); },
        FPC_ERROR_BITMAP_PLANE);
}

void AddSplit(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    for (int nPlane = 0; nPlane < 3; ++nPlane)
    {
        cCells.Add<ClIpSplitPlanes>("", "colour, plane " + std::to_string(nPlane),
                                    [&](ClIpSplitPlanes& cOperator, ClSheetRun& cRun)
                                    {
                                        ClImage* apPlanes[4] = {};
                                        apPlanes[nPlane] = &cRun.m_cOut;
                                        return cOperator.ApplyParam(c.m_cColour, apPlanes[0], apPlanes[1], apPlanes[2],
                                                                    apPlanes[3]);
                                    });
    }
}

/// The planes of the colour picture in reverse order; of the third and fourth nMissing are not given, but filled.
void AddJoin(ClSheetCells& cCells, const StSheetMode<ClImage::EContent>& cContent, int nMissing, long nExpectedCode)
{
    ClSheetInputs& c = cCells.m_cInputs;
    cCells.Add<ClIpJoinPlanes>(
        cContent.m_szName, nMissing == 0 ? "colour's planes, red first" : "two planes, filled up with 200",
        [&](ClIpJoinPlanes& cOperator, ClSheetRun& cRun)
        {
            ClImage acPlanes[3];
            ClIpSplitPlanes().ApplyParam(c.m_cColour, &acPlanes[2], &acPlanes[1], &acPlanes[0], nullptr);
            std::fill_n(cOperator.m_adFillcolors, ClIpJoinPlanes::nMaxPlanes, 200.0);
            cOperator.m_eOutContent = cContent.m_eMode;
            cOperator.m_nOutPlanes = 2;
            return cOperator.ApplyParam(cRun.m_cOut, &acPlanes[0], &acPlanes[1], nMissing == 0 ? &acPlanes[2] : nullptr,
                                        nullptr);
        },
        nExpectedCode);
}

void AddJoinCells(ClSheetCells& cCells)
{
    const StSheetMode<ClImage::EContent> aContents[] = {SHEET_MODE(ClImage, eUnknown), SHEET_MODE(ClImage, eGrayscale),
                                                        SHEET_MODE(ClImage, eRGB),     SHEET_MODE(ClImage, eRGBA),
                                                        SHEET_MODE(ClImage, eHSV),     SHEET_MODE(ClImage, eXYZ),
                                                        SHEET_MODE(ClImage, eCIELab),  SHEET_MODE(ClImage, eCIELUV)};
    for (const auto& cContent : aContents)
    {
        const bool bRefused = cContent.m_eMode == ClImage::eXYZ || cContent.m_eMode == ClImage::eCIELab;
        AddJoin(cCells, cContent, 0, bRefused ? FPC_ERROR_PARAM_OUT_OF_RANGE : FPC_SUCCESS);
    }
    AddJoin(cCells, aContents[2], 1, 0);
}

void AddConvert(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
#define SHEET_TYPE(eType, T) SHEET_MODE(ClImage, eType),
    const StSheetMode<ClImage::EDataType> aTypes[] = {RD_SAMPLE_TYPES(SHEET_TYPE)};
#undef SHEET_TYPE
    for (const auto& cType : aTypes)
    {
        cCells.Add<ClIpConvertDataType>(cType.m_szName, "hand",
                                        [&](ClIpConvertDataType& cOperator, ClSheetRun& cRun)
                                        { return cOperator.ApplyParam(c.m_cHand, cRun.m_cOut, cType.m_eMode); });
    }
    cCells.Add<ClIpConvertDataType>("eUInt8", "signed",
                                    [&](ClIpConvertDataType& cOperator, ClSheetRun& cRun)
                                    { return cOperator.ApplyParam(c.m_cSigned, cRun.m_cOut, ClImage::eUInt8); });
    cCells.Add<ClIpConvertDataType>("eFloat32", "colour",
                                    [&](ClIpConvertDataType& cOperator, ClSheetRun& cRun)
                                    { return cOperator.ApplyParam(c.m_cColour, cRun.m_cOut, ClImage::eFloat32); });
}

void AddCut(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    cCells.Add<ClIpCut>("", "hand from (20, 80), 60x70",
                        [&](ClIpCut& cOperator, ClSheetRun& cRun)
                        { return cOperator.ApplyParam(c.m_cHand, 20, 80, 60, 70, cRun.m_cOut); });
    cCells.Add<ClIpCut>("", "colour less a border of 40",
                        [&](ClIpCut& cOperator, ClSheetRun& cRun)
                        { return cOperator.ApplyParam(c.m_cColour, 40, cRun.m_cOut); });
    cCells.Add<ClIpCut>(
        "", "hand from (20, 80), 200x70",
        [&](ClIpCut& cOperator, ClSheetRun& cRun)
        { return cOperator.ApplyParam(c.m_cHand, 20, 80, 200, 70, cRun.m_cOut); },
        FPC_ERROR_PARAM_OUT_OF_RANGE);
}
} // namespace

void AddPlaneAndTypeCells(ClSheetCells& cCells)
{
    AddToGrey(cCells);
    AddSplit(cCells);
    AddJoinCells(cCells);
    AddConvert(cCells);
    AddCut(cCells);
}

namespace
{
void AddDelta(ClSheetCells& cCells, const char* szArguments, ClImage& cIn1, ClImage& cIn2, int nOffset,
              unsigned char nType, long nExpectedCode = 0)
{
    cCells.Add<ClIpDelta>(
        "", szArguments,
        [&](ClIpDelta& cOperator, ClSheetRun& cRun)
        {
            cOperator.m_bSizeMustBeEqual = nOffset == 0 || nExpectedCode != 0;
            cOperator.m_nOffsetX = cOperator.m_nOffsetY = nOffset;
            cOperator.m_dFillColor = 128;
            return cOperator.ApplyParam(cIn1, cIn2, cRun.m_cOut, nType);
        },
        nExpectedCode);
}
} // namespace

void AddTwoImageCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    constexpr unsigned char eSame = ClIp2to1Base::nTypeOfInput1;
    ClImage cSmooth;
    ClIpFilterMid().ApplyParam(c.m_cRidges, cSmooth, 9);
    AddDelta(cCells, "hand and itself", c.m_cHand, c.m_cHand, 0, eSame);
    AddDelta(cCells, "ridges and their mean", c.m_cRidges, cSmooth, 0, eSame);
    AddDelta(cCells, "ridges and their mean, to s16", c.m_cRidges, cSmooth, 0, ClImage::eSInt16);
    AddDelta(cCells, "dots and ridges", c.m_cDots, c.m_cRidges, 0, eSame);
    AddDelta(cCells, "ridges and signed", c.m_cRidges, c.m_cSigned, 0, eSame);
    AddDelta(cCells, "colour and hand", c.m_cColour, c.m_cHand, 0, eSame);
    AddDelta(cCells, "ridges and dots 40 right and up", c.m_cRidges, c.m_cDots, 40, eSame);
    AddDelta(cCells, "ridges and small 30 right and up", c.m_cRidges, c.m_cSmall, 30, eSame);
    AddDelta(cCells, "ridges and small, sizes equal", c.m_cRidges, c.m_cSmall, 1, eSame, FPC_ERROR_PARAM_INVALID);
}
