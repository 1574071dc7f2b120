// Every operator of the folder and what it tells of its parameters, in one table that was written by hand.

#include "OperatorFacts.hpp"
#include "OperatorModules.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFill.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobal.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include <set>

namespace
{
// Access marks of a parameter: 1 may be written from outside, 2 may be read; 4 marks an image that may be missing.
constexpr int nWriteOnly = 1;
constexpr int nReadOnly = 2;
constexpr int nOptional = 4;

const Names_t aTypeNames = {{"unsigned char", 1},  {"signed char", 129}, {"unsigned short", 2},
                            {"signed short", 130}, {"unsigned int", 4},  {"signed int", 132},
                            {"float", 196},        {"double", 200},      {"default", 255}};
const Names_t aSwitchNames = {{"False", 0}, {"True", 1}};

/// The images of an operator of the frame with one input, and the members that follow.
template <class Operator> Facts_t OneToOne(Operator& c, const Facts_t& aOwn = {})
{
    Facts_t aFacts = {KeptImage("pInImage", &c.m_pInImage, nWriteOnly),
                      KeptImage("pOutImage", &c.m_pOutImage, nReadOnly)};
    aFacts.insert(aFacts.end(), aOwn.begin(), aOwn.end());
    const bool bInPlace = c.m_bInPlace;
    aFacts.push_back(Setting(&c.m_bInPlace, !bInPlace));
    aFacts.push_back(Setting(&c.m_bUseLUT, false));
    return aFacts;
}

Facts_t OfFilter(ClIpFilterBase& c, const char* szWidth)
{
    return {Image("pInImage", &c.m_pInImage),
            Image("pOutImage", &c.m_pOutImage),
            Number("nFilterWidth", &c.m_nFilterWidth, szWidth),
            Choice("nMode", &c.m_nMode, "Mode XY",
                   {{"Mode X", 1}, {"Mode Y", 2}, {"Mode XY", 3}, {"MODE_DIRECTED", 8}, {"MODE_DIRECTED_ORTHO", 16}}),
            Image("pInDxImage", &c.m_pInDxImage),
            Image("pInDyImage", &c.m_pInDyImage)};
}

Facts_t OfFloodFill(ClIpFloodFill& c)
{
    static ClIpFloodFill::StBoundingBox cBox;
    return {Image("pInImage", &c.m_pInImage),
            Image("pOutImage", &c.m_pOutImage),
            Number("CountThresh", &c.m_nCountThresh, "0"),
            Number("FillColor", &c.m_nFillColor, "0"),
            Number("StartX", &c.m_nStartX, "0"),
            Number("StartY", &c.m_nStartY, "0"),
            Setting(&c.m_pBoundingBox, &cBox)};
}

Facts_t OfStretch(ClIpStretchRangeGlobal& c)
{
    return {KeptImage("pInImage", &c.m_pInImage),
            KeptImage("pOutImage", &c.m_pOutImage),
            Number("NewRangeFrom", &c.m_nNewRangeFrom, "0"),
            Number("NewRangeTo", &c.m_nNewRangeTo, "255"),
            Number("OldRangeFrom", &c.m_nOldRangeFrom, "255"),
            Number("OldRangeTo", &c.m_nOldRangeTo, "0"),
            Setting(&c.m_bLuTValid, true),
            Setting(&c.m_aLuT[255], static_cast<unsigned char>(9))};
}

template <class T> Facts_t Behind(Facts_t aFacts, const T& aMore)
{
    aFacts.insert(aFacts.end(), aMore.begin(), aMore.end());
    return aFacts;
}

StOperatorFacts BinarizeAutoThreshold()
{
    using Op = ClIpBinarizeAutoThreshold;
    return FactsOf<Op>("ClIpBinarizeAutoThreshold", false,
                       [](Op& c)
                       {
                           return OneToOne(c, {Choice("ProcessingMode", &c.m_eProcessingMode, "ModeFuzzyEntropy",
                                                      {{"ModeFuzzyEntropy", 0},
                                                       {"ModeFuzzyYager", 1},
                                                       {"ModeMovingAverages", 2},
                                                       {"ModeJohannsen", 3},
                                                       {"ModeKapur", 4},
                                                       {"ModePun", 5},
                                                       {"ModeMinimumError", 4}, // meant: by name this is Kapur's method
                                                       {"ModeRelaxation", 7}}),
                                               Setting(&c.m_nThreshold, 99)});
                       });
}

StOperatorFacts BinarizeGlobal()
{
    using Op = ClIpBinarizeGlobal;
    return FactsOf<Op>("ClIpBinarizeGlobal", false,
                       [](Op& c)
                       {
                           return OneToOne(c, {Number("Black", &c.m_dBlack, "nan"), Number("White", &c.m_dWhite, "nan"),
                                               Number("Threshold", &c.m_dThreshold, "nan"),
                                               Setting(&c.m_dActThreshold, 5.0), Setting(&c.m_dActBlack, 6.0),
                                               Setting(&c.m_dActWhite, 7.0)});
                       })
        .SaysAboutItself("Thrnan [nan;nan]", "Thr15 [13;14]");
}

StOperatorFacts ConnectedComponent2()
{
    using Op = ClIpConnectedComponent2;
    return FactsOf<Op>("ClIpConnectedComponent2", false,
                       [](Op& c) -> Facts_t
                       {
                           static Op::ComponentsArray_t aComponents;
                           return {KeptImage("pInImage", &c.pInImage, nWriteOnly),
                                   KeptImage("m_pInImageGrey", &c.m_pInImageGrey, nWriteOnly + nOptional),
                                   KeptImage("m_pOutImage", &c.m_pOutImage, nReadOnly + nOptional),
                                   Setting(&c.m_pComponents, &aComponents)};
                       });
}

StOperatorFacts ConvertDataType()
{
    using Op = ClIpConvertDataType;
    return FactsOf<Op>("ClIpConvertDataType", true,
                       [](Op& c) -> Facts_t
                       {
                           return {Image("pInImage", &c.m_pInImage, nWriteOnly),
                                   Image("pOutImage", &c.m_pOutImage, nReadOnly),
                                   Choice("OutImageType", &c.m_eOutImageType, "default", aTypeNames, nWriteOnly),
                                   Setting(&c.m_bInPlace, true), Setting(&c.m_bUseLUT, false)};
                       });
}

StOperatorFacts Cut()
{
    using Op = ClIpCut;
    return FactsOf<Op>("ClIpCut", false,
                       [](Op& c)
                       {
                           return OneToOne(c, {Number("nDestHeight", &c.m_nDestHeight, "0"),
                                               Number("nDestWidth", &c.m_nDestWidth, "0"), Number("nX0", &c.m_nX0, "0"),
                                               Number("nY0", &c.m_nY0, "0")});
                       });
}

StOperatorFacts CutBiggestComponent()
{
    using Op = ClIpCutBiggestComponent;
    return FactsOf<Op>("ClIpCutBiggestComponent", false,
                       [](Op& c)
                       {
                           return OneToOne(c, {Setting(&c.m_nCutX0, 1L), Setting(&c.m_nCutY0, 2L),
                                               Setting(&c.m_nCutWidth, 3L), Setting(&c.m_nCutHeight, 4L)});
                       });
}

StOperatorFacts Delta()
{
    using Op = ClIpDelta;
    return FactsOf<Op>("ClIpDelta", false,
                       [](Op& c) -> Facts_t
                       {
                           return {
                               KeptImage("pInImage1", &c.m_pInImage1),
                               KeptImage("pInImage2", &c.m_pInImage2),
                               KeptImage("pOutImage", &c.m_pOutImage),
                               Choice("OutImageType", &c.m_nOutImageType, "default", aTypeNames),
                               Choice("SizeMustBeEqual", &c.m_bSizeMustBeEqual, "true", {{"true", 1}, {"false", 0}}),
                               Number("FillColor", &c.m_dFillColor, "0.0"),
                               Number("OffsetX", &c.m_nOffsetX, "0"),
                               Number("OffsetY", &c.m_nOffsetY, "0"),
                               Setting(&c.m_nOverlapWidth, 1L),
                               Setting(&c.m_nOverlapHeight, 2L),
                               Setting(&c.m_nOutOffset, 3L),
                               Setting(&c.m_nIn1Offset, 4L),
                               Setting(&c.m_nIn2Offset, 5L),
                               Setting(&c.m_bUseLUT, true)};
                       });
}

StOperatorFacts FilterMid()
{
    return FactsOf<ClIpFilterMid>("ClIpFilterMid", true, [](ClIpFilterMid& c) { return OfFilter(c, "3"); })
        .SaysAboutItself("W[3] M[XY] S[Unknown]", "W[13] M[DirectedOrtho] S[Unsigned]");
}

StOperatorFacts FilterMidRotating()
{
    using Op = ClIpFilterMidRotating;
    StOperatorFacts cFacts =
        FactsOf<Op>("ClIpFilterMidRotating", false,
                    [](Op& c)
                    {
                        return Behind(OfFilter(c, "5"),
                                      Facts_t{Choice("eVarMode", &c.m_eVarMode, "ModeLocalMaskDeviation",
                                                     {{"ModeLocalMinDistanceToAverage", 0},
                                                      {"ModeLocalMaskDeviation", 1},
                                                      {"ModeLocalMaskDeviationFixPoint", 2},
                                                      {"ModeLocalMaskDeviationFloat", 3}})});
                    })
            .SaysAboutItself("W[5] M[XY] S[Unknown]", "W[13] M[DirectedOrtho] S[Unsigned]");
    cFacts.szContainer = "ClIpFilterMidRotating";
    cFacts.szDescription = "ClIpFilterMidRotating::m_eVarMode";
    return cFacts;
}

StOperatorFacts GammaCorrection()
{
    using Op = ClIpGammaCorrection;
    return FactsOf<Op>("ClIpGammaCorrection", false,
                       [](Op& c)
                       {
                           return OneToOne(c, {Number("Black", &c.m_nBlack, "0"), Number("White", &c.m_nWhite, "255"),
                                               Number("Gamma", &c.m_dGamma, "1.0")});
                       });
}

StOperatorFacts JoinPlanes()
{
    using Op = ClIpJoinPlanes;
    return FactsOf<Op>("ClIpJoinPlanes", true,
                       [](Op& c) -> Facts_t
                       {
                           return {Image("pInPlane[0]", &c.m_apInPlane[0]),
                                   Image("pInPlane[1]", &c.m_apInPlane[1]),
                                   Image("pInPlane[2]", &c.m_apInPlane[2]),
                                   Image("pInPlane[3]", &c.m_apInPlane[3]),
                                   Number("dInFillcolors[0]", &c.m_adFillcolors[0], "nan"),
                                   Number("dInFillcolors[1]", &c.m_adFillcolors[1], "nan"),
                                   Number("dInFillcolors[2]", &c.m_adFillcolors[2], "nan"),
                                   Number("dInFillcolors[3]", &c.m_adFillcolors[3], "nan"),
                                   Image("pOutImage", &c.m_pOutImage),
                                   Choice("eOutContent", &c.m_eOutContent, "eUnknown",
                                          {{"eUnknown", 0},
                                           {"eGrayscale", 1},
                                           {"eRGB", 2},
                                           {"eRGBA", 3},
                                           {"eHSV", 4},
                                           {"eXYZ", 5},
                                           {"eCIELab", 6},
                                           {"eCIELUV", 7}}),
                                   Choice("bFillEmptyPlanes", &c.m_bFillEmptyPlanes, "True", aSwitchNames),
                                   Setting(&c.m_nOutPlanes, 3)};
                       });
}

StOperatorFacts Labeling()
{
    using Op = ClIpLabeling;
    return FactsOf<Op>("ClIpLabeling", true,
                       [](Op& c) -> Facts_t {
                           return {Setting(&c.m_pInImage, AnyImage(0)), Setting(&c.m_pOutImage, AnyImage(1)),
                                   Setting(&c.m_nLabels, 7)};
                       });
}

StOperatorFacts Rescale()
{
    using Op = ClIpRescale;
    return FactsOf<Op>("ClIpRescale", true,
                       [](Op& c) -> Facts_t
                       {
                           return {Image("pInImage", &c.m_pInImage),
                                   Image("pOutImage", &c.m_pOutImage),
                                   Number("NewHeight", &c.m_nNewHeight, "0"),
                                   Number("NewWidth", &c.m_nNewWidth, "0"),
                                   Number("NewPelsX", &c.m_nNewPelsX, "0"),
                                   Number("NewPelsY", &c.m_nNewPelsY, "0"),
                                   Choice("eMode", &c.m_eMode, "ModeBiLinear",
                                          {{"ModeWholeNumbered", 0},
                                           {"ModeNearestNeighbour", 1},
                                           {"ModeBiLinear", 2},
                                           {"ModeBiCubic", 3},
                                           {"ModeBiLinearFantMar", 4}}),
                                   Number("dConvParameter1", &c.m_dConvParameter1, "-0.75"),
                                   Setting(&c.m_nActWidth, 1),
                                   Setting(&c.m_nActHeight, 2),
                                   Setting(&c.m_nActPelsX, 3),
                                   Setting(&c.m_nActPelsY, 4)};
                       })
        .SaysAboutItself("X0 Y0 BiLinear", "W14 H13 BiLinearFantMar");
}

StOperatorFacts RgbToGrey()
{
    using Op = ClIpRgbToGrey;
    return FactsOf<Op>("ClIpRgbToGrey", false, [](Op& c) { return OneToOne(c, {Setting(&c.m_eMode, Op::Lightness)}); })
        .SaysAboutItself("ClIpRgbToGrey [Luminance]", "ClIpRgbToGrey [Lightness]");
}

StOperatorFacts Rotate()
{
    using Op = ClIpRotate;
    return FactsOf<Op>("ClIpRotate", true,
                       [](Op& c) -> Facts_t
                       {
                           return {Image("pInImage", &c.m_pInImage),
                                   Image("pOutImage", &c.m_pOutImage),
                                   Number("Rotation", &c.m_dRotation, "0.0"),
                                   Choice("ResizeOutImage", &c.m_bResizeOutImage, "True", aSwitchNames),
                                   Choice("Interpolate", &c.m_bInterpolate, "False", aSwitchNames),
                                   Number("BackgroundColor", &c.m_nBackgroundColor, "128"),
                                   Setting(&c.m_cCenter.m_dX, 1.0),
                                   Setting(&c.m_cCenter.m_dY, 2.0),
                                   Setting(&c.m_bPlaneBackground, true),
                                   Setting(&c.m_anPlaneBackground[0], static_cast<unsigned char>(9)),
                                   Setting(&c.m_anPlaneBackground[3], static_cast<unsigned char>(9)),
                                   Setting(&c.m_cCenterOut.m_dX, 3.0)};
                       })
        .SaysAboutItself("0.000rad Resize", "13.000rad Interpolate");
}

StOperatorFacts SplitPlanes()
{
    using Op = ClIpSplitPlanes;
    return FactsOf<Op>("ClIpSplitPlanes", true,
                       [](Op& c) -> Facts_t
                       {
                           return {Image("pInImage", &c.m_pInImage), Image("pOutPlane[0]", &c.m_apOutPlane[0]),
                                   Image("pOutPlane[1]", &c.m_apOutPlane[1]), Image("pOutPlane[2]", &c.m_apOutPlane[2]),
                                   Image("pOutPlane[3]", &c.m_apOutPlane[3])};
                       });
}

StOperatorFacts StretchRangeGlobalNoiseRemoving()
{
    using Op = ClIpStretchRangeGlobalNoiseRemoving;
    return FactsOf<Op>("ClIpStretchRangeGlobalNoiseRemoving", true,
                       [](Op& c)
                       {
                           static ClImage* pImage = nullptr;
                           Facts_t aFacts = OfStretch(c);
                           const Facts_t aShares = {
                               WithRange(Number("DarkNoisePart", &c.m_dDarkNoisePart, "0.0"), 1.0, -1.0),
                               WithRange(Number("BrightNoisePart", &c.m_dBrightNoisePart, "0.0"), 1.0, -1.0),
                               Setting(&c.m_ppOutImage, &pImage)};
                           return Behind(aFacts, aShares);
                       });
}

std::vector<StOperatorFacts> AllOperators()
{
    return {BinarizeAutoThreshold(),
            BinarizeGlobal(),
            ConnectedComponent2(),
            ConvertDataType(),
            Cut(),
            CutBiggestComponent(),
            Delta(),
            FilterMid(),
            FilterMidRotating(),
            FactsOf<ClIpFloodFill>("ClIpFloodFill", true, OfFloodFill),
            FactsOf<ClIpFloodFillLabeling>("ClIpFloodFillLabeling", true, OfFloodFill),
            GammaCorrection(),
            JoinPlanes(),
            Labeling(),
            Rescale(),
            RgbToGrey(),
            Rotate(),
            SplitPlanes(),
            FactsOf<ClIpStretchRangeGlobal>("ClIpStretchRangeGlobal", true, OfStretch),
            StretchRangeGlobalNoiseRemoving()};
}

class OperatorParameters : public testing::TestWithParam<StOperatorFacts>
{
};
} // namespace

TEST_P(OperatorParameters, StandInOrderWithTheirDefaults)
{
    CheckPublishing(GetParam());
}

TEST_P(OperatorParameters, AreToldWithoutChangingASetting)
{
    CheckAskingChangesNothing(GetParam());
}

TEST_P(OperatorParameters, GoToTheirDefaultsAndNothingElseDoes)
{
    CheckSettingToDefault(GetParam());
}

TEST_P(OperatorParameters, AreAtTheirDefaultsInACreatedObject)
{
    CheckCreation(GetParam());
}

TEST_P(OperatorParameters, AreCopiedButForPointers)
{
    CheckCopying(GetParam());
}

TEST_P(OperatorParameters, AreToldAsText)
{
    CheckSettingsTexts(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Every, OperatorParameters, testing::ValuesIn(AllOperators()),
                         [](const testing::TestParamInfo<StOperatorFacts>& cInfo) { return cInfo.param.szName; });

TEST(OperatorParametersTable, NamesEveryOperatorOfTheFolder)
{
    std::set<std::string> aKnown;
    for (const StOperatorFacts& cOperator : AllOperators())
    {
        EXPECT_TRUE(aKnown.insert(cOperator.szName).second) << cOperator.szName << " stands twice";
    }
    EXPECT_EQ(OperatorsOfTheFolder(KORMELIN_SOURCE_FOLDER), aKnown);
}
