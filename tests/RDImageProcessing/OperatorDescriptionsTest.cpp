// Every operator of the folder and how it describes itself to a tool that wires processors together, in one table that
// was written by hand.

#include "MemoryStream.hpp"
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
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace
{
using Interface = ClParameterInterface;
using Names_t = std::vector<std::pair<std::string, long>>;

/// One line of a description.
struct StLine
{
    enum ERange
    {
        eNone,
        eAround, ///< two thirds to four thirds of the present value, within the type
        eGiven
    };

    std::string szName;
    std::string szText;
    std::string szDirection;
    std::string szType;
    void* pMember;
    double dDefault;
    ERange eRange;
    double dLower;
    double dUpper;
    Names_t aNames;
    std::string szValue; ///< as text

    bool IsNumber() const { return szType == "eByte" || szType == "eLong" || szType == "eDouble"; }
};

using Lines_t = std::vector<StLine>;

StLine In(const char* szName, const char* szText, ClImage** ppMember)
{
    return {szName, szText, "eIn", "eImage", ppMember, 0.0, StLine::eNone, 0.0, 0.0, {}, "Image"};
}

StLine Out(const char* szName, const char* szText, ClImage** ppMember)
{
    StLine cLine = In(szName, szText, ppMember);
    cLine.szDirection = "eOut";
    return cLine;
}

/// A number without a range of its own.
StLine Byte(const char* szName, const char* szText, unsigned char* pMember, int nDefault)
{
    return {szName,
            szText,
            "eIn",
            "eByte",
            pMember,
            double(nDefault),
            StLine::eAround,
            0.0,
            255.0,
            {},
            std::to_string(nDefault)};
}

template <class T> StLine Long(const char* szName, const char* szText, T* pMember, int nDefault)
{
    static_assert(std::is_same_v<T, int> || std::is_same_v<T, long>);
    return {szName,
            szText,
            "eIn",
            "eLong",
            pMember,
            double(nDefault),
            StLine::eAround,
            -1e18,
            1e18,
            {},
            std::to_string(nDefault)};
}

StLine Double(const char* szName, const char* szText, double* pMember, double dDefault, const char* szDefault)
{
    return {szName, szText, "eIn", "eDouble", pMember, dDefault, StLine::eAround, -1e300, 1e300, {}, szDefault};
}

StLine Within(StLine cLine, double dLower, double dUpper)
{
    cLine.eRange = StLine::eGiven;
    cLine.dLower = dLower;
    cLine.dUpper = dUpper;
    return cLine;
}

StLine Named(StLine cLine, const Names_t& aNames)
{
    cLine.aNames = aNames;
    return cLine;
}

StLine Choice(const char* szName, const char* szText, const char* szType, void* pMember, long nDefault,
              const Names_t& aNames)
{
    StLine cLine = {szName, szText, "eIn", szType, pMember, double(nDefault), StLine::eNone, 0.0, 0.0, aNames, ""};
    for (const auto& [szChoice, nValue] : aNames)
    {
        cLine.szValue = nValue == nDefault ? szChoice : cLine.szValue;
    }
    return cLine;
}

StLine OutImageType(unsigned char* pMember)
{
    return Named(Within(Byte("OutImageType", "In: OutImage Datatype", pMember, 255), 0.0, 255.0),
                 {{"unsigned char", 1},
                  {"signed char", 129},
                  {"unsigned short", 2},
                  {"signed short", 130},
                  {"unsigned int", 4},
                  {"signed int", 132},
                  {"float", 196},
                  {"double", 200},
                  {"default", 255}});
}

/// One operator.
struct StDescription
{
    std::string szName;
    std::function<std::unique_ptr<ClProcessorBase>()> fnMake;
    std::function<Lines_t(ClProcessorBase&)> fnLines;
};

template <class Operator, class Fn> StDescription Of(const char* szName, Fn fnLines)
{
    return {szName, [] { return std::make_unique<Operator>(); },
            [fnLines](ClProcessorBase& c) { return fnLines(dynamic_cast<Operator&>(c)); }};
}

Lines_t OneToOne(NewIpBase::ClIp1to1Base& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage), Out("OutImage", "Out: Output Image", &c.m_pOutImage)};
}

Lines_t Nothing(ClProcessorBase&)
{
    return {};
}

Lines_t BinarizeGlobal(ClIpBinarizeGlobal& c)
{
    Lines_t aLines = OneToOne(c);
    aLines.push_back(Double("Black", "In: Pixelvalue of Black", &c.m_dBlack, NAN, "nan"));
    aLines.push_back(Double("White", "In: Pixelvalue of White", &c.m_dWhite, NAN, "nan"));
    aLines.push_back(Double("Threshold", "In: Binarization Threshold", &c.m_dThreshold, NAN, "nan"));
    return aLines;
}

Lines_t ConvertDataType(ClIpConvertDataType& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage), Out("OutImage", "Out: Output Image", &c.m_pOutImage),
            OutImageType(&c.m_eOutImageType)};
}

Lines_t Cut(ClIpCut& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage),
            Out("OutImage", "Out: Clipping", &c.m_pOutImage),
            Long("DestHeight", "In: Cut Height", &c.m_nDestHeight, 0),
            Long("DestWidth", "In: Cut Width", &c.m_nDestWidth, 0),
            Long("X0", "In: Start X", &c.m_nX0, 0),
            Long("Y0", "In: Start Y", &c.m_nY0, 0)};
}

Lines_t Delta(ClIpDelta& c)
{
    return {
        In("InImage1", "In1: Original Image", &c.m_pInImage1),
        In("InImage2", "In2: 2nd Original Image", &c.m_pInImage2),
        Out("OutImage", "Out: Output Image", &c.m_pOutImage),
        OutImageType(&c.m_nOutImageType),
        Choice("SizeMustBeEqual", "Bool: Size must be equal", "eBool", &c.m_bSizeMustBeEqual, 1,
               {{"true", 1}, {"false", 0}}),
        Within(Double("FillColor", "Double: Fillcolor for Offset-Images", &c.m_dFillColor, 0.0, "0.00000"), 0.0, 255.0),
        Within(Long("OffsetX", "Long: Offset of Image2 to Image1 in x-direction", &c.m_nOffsetX, 0), -2147483648.0,
               2147483647.0),
        Within(Long("OffsetY", "Long: Offset of Image2 to Image1 in y-direction", &c.m_nOffsetY, 0), -2147483648.0,
               2147483647.0)};
}

Lines_t Filter(ClIpFilterBase& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage),
            Out("OutImage", "Out: Output Image", &c.m_pOutImage),
            Long("nFilterWidth", "in: Filter Width", &c.m_nFilterWidth, static_cast<int>(c.m_nFilterWidth)),
            Choice("eFilterWidth", "in: Filter Width", "eEnum", &c.m_nMode, 3,
                   {{"Mode X", 1}, {"Mode Y", 2}, {"Mode XY", 3}, {"MODE_DIRECTED", 8}, {"MODE_DIRECTED_ORTHO", 16}}),
            In("InDxImage", "in: Dx Image", &c.m_pInDxImage),
            In("InDyImage", "in: Dy Image", &c.m_pInDyImage)};
}

Lines_t FloodFill(ClIpFloodFill& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage),
            Out("OutImage", "Out: Output Image", &c.m_pOutImage),
            Within(Long("CountThresh", "Nothing", &c.m_nCountThresh, 0), 0.0, 253.0),
            Byte("FillColor", "In Fill Color", &c.m_nFillColor, 0),
            Long("StartX", "In Start Coordinate X", &c.m_nStartX, 0),
            Long("StartY", "In Start Coordinate Y", &c.m_nStartY, 0)};
}

Lines_t JoinPlanes(ClIpJoinPlanes& c)
{
    return {Out("OutImage", "Out: Joined Image", &c.m_pOutImage)};
}

Lines_t Rescale(ClIpRescale& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage),
            Out("OutImage", "Out: Rescaled Image", &c.m_pOutImage),
            Long("NewHeight", "In: New Image Height", &c.m_nNewHeight, 0),
            Long("NewWidth", "In: New Image Width", &c.m_nNewWidth, 0),
            Long("NewPelsX", "In: New Horizontal Resolution In Pels", &c.m_nNewPelsX, 0),
            Long("NewPelsY", "In: New Vertical Resolution In Pels", &c.m_nNewPelsY, 0),
            Choice("Mode", "In: Interpolation Mode", "eEnum", &c.m_eMode, 2,
                   {{"ModeWholeNumbered", 0},
                    {"ModeNearestNeighbour", 1},
                    {"ModeBiLinear", 2},
                    {"ModeBiCubic", 3},
                    {"ModeBiLinearFantMar", 4}})};
}

Lines_t RgbToGrey(ClIpRgbToGrey& c)
{
    return {Choice("Mode", "In: Color Conversion Method", "eEnum", &c.m_eMode, 1,
                   {{"MaxRgb", 0}, {"Luminance", 1}, {"Lightness", 2}}),
            In("InImage", "In: Original Color Image", &c.m_pInImage),
            Out("OutImage", "Out: Grey Image", &c.m_pOutImage)};
}

Lines_t Rotate(ClIpRotate& c)
{
    const Names_t aSwitch = {{"False", 0}, {"True", 1}};
    return {
        In("InImage", "In: Original Image", &c.m_pInImage),
        Out("OutImage", "Out: Rotated Imaged", &c.m_pOutImage),
        Double("Rotation", "In: Rotation Angle (rad)", &c.m_dRotation, 0.0, "0.00000"),
        Choice("ResizeOutImage", "In: Resize Out Image True/False", "eBool", &c.m_bResizeOutImage, 1, aSwitch),
        Choice("Interpolate", "In: Interpolate True/False", "eBool", &c.m_bInterpolate, 0, aSwitch),
        Within(Byte("BackgroundColor", "In: Background Color For New Areas After Rotation", &c.m_nBackgroundColor, 128),
               0.0, 255.0)};
}

Lines_t SplitPlanes(ClIpSplitPlanes& c)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage)};
}

Lines_t StretchTo(ClIpStretchRangeGlobal& c, const char* szOutImage)
{
    return {In("InImage", "In: Original Image", &c.m_pInImage),
            Out("OutImage", szOutImage, &c.m_pOutImage),
            Byte("NewRangeFrom", "In: Stretch Range Start", &c.m_nNewRangeFrom, 0),
            Byte("NewRangeTo", "In: Stretch Range End", &c.m_nNewRangeTo, 255),
            Byte("OldRangeFrom", "In: Input Range Start", &c.m_nOldRangeFrom, 255),
            Byte("OldRangeTo", "In: Input Range End", &c.m_nOldRangeTo, 0)};
}

Lines_t Stretch(ClIpStretchRangeGlobal& c)
{
    return StretchTo(c, "Out: Stretched Imaged");
}

Lines_t StretchNoiseRemoving(ClIpStretchRangeGlobalNoiseRemoving& c)
{
    Lines_t aLines = StretchTo(c, "Out: Stretched Image");
    aLines.push_back(Double("DarkNoisePart", "In: Noise Level For Dark Pixels", &c.m_dDarkNoisePart, 0.0, "0.00000"));
    aLines.push_back(
        Double("BrightNoisePart", "In: Noise Level For Bright Pixels", &c.m_dBrightNoisePart, 0.0, "0.00000"));
    return aLines;
}

std::vector<StDescription> AllDescriptions()
{
    return {Of<ClIpBinarizeAutoThreshold>("ClIpBinarizeAutoThreshold", OneToOne),
            Of<ClIpBinarizeGlobal>("ClIpBinarizeGlobal", BinarizeGlobal),
            Of<ClIpConnectedComponent2>("ClIpConnectedComponent2", Nothing),
            Of<ClIpConvertDataType>("ClIpConvertDataType", ConvertDataType),
            Of<ClIpCut>("ClIpCut", Cut),
            Of<ClIpCutBiggestComponent>("ClIpCutBiggestComponent", OneToOne),
            Of<ClIpDelta>("ClIpDelta", Delta),
            Of<ClIpFilterMid>("ClIpFilterMid", Filter),
            Of<ClIpFilterMidRotating>("ClIpFilterMidRotating", Filter),
            Of<ClIpFloodFill>("ClIpFloodFill", FloodFill),
            Of<ClIpFloodFillLabeling>("ClIpFloodFillLabeling", FloodFill),
            Of<ClIpGammaCorrection>("ClIpGammaCorrection", OneToOne),
            Of<ClIpJoinPlanes>("ClIpJoinPlanes", JoinPlanes),
            Of<ClIpLabeling>("ClIpLabeling", Nothing),
            Of<ClIpRescale>("ClIpRescale", Rescale),
            Of<ClIpRgbToGrey>("ClIpRgbToGrey", RgbToGrey),
            Of<ClIpRotate>("ClIpRotate", Rotate),
            Of<ClIpSplitPlanes>("ClIpSplitPlanes", SplitPlanes),
            Of<ClIpStretchRangeGlobal>("ClIpStretchRangeGlobal", Stretch),
            Of<ClIpStretchRangeGlobalNoiseRemoving>("ClIpStretchRangeGlobalNoiseRemoving", StretchNoiseRemoving)};
}

/// The names of a list with their values.
Names_t NamesOf(const Interface::ClParameter& c)
{
    Names_t aNames;
    for (const char* sz = c.GetEnumList(); sz != nullptr && *sz != '\0'; sz += std::string(sz).size() + 1)
    {
        const std::size_t nIndex = aNames.size();
        aNames.emplace_back(sz, c.m_pnEnumValues == nullptr ? static_cast<long>(nIndex) : c.m_pnEnumValues[nIndex]);
    }
    return aNames;
}

void CheckRange(const StLine& cLine, double dValue, const Interface::ClParameter& c)
{
    double dLower = cLine.dLower;
    double dUpper = cLine.dUpper;
    if (cLine.eRange == StLine::eAround)
    {
        dLower = std::max(dLower, dValue * 2.0 / 3.0);
        dUpper = std::min(dUpper, dValue * 4.0 / 3.0);
    }
    const bool bRange = cLine.eRange != StLine::eNone && dValue == dValue && (dValue != 0.0 || dLower != dUpper);
    EXPECT_EQ(bRange, c.RangeDefined());
    EXPECT_EQ(bRange ? 0 : 1, c.m_bNoRange);
    if (bRange)
    {
        EXPECT_NEAR(dLower, c.m_dLower, 1e-9);
        EXPECT_NEAR(dUpper, c.m_dUpper, 1e-9);
    }
}

class OperatorDescriptions : public testing::TestWithParam<StDescription>
{
};

void PrintTo(const StDescription& cDescription, std::ostream* pOut)
{
    *pOut << cDescription.szName;
}
} // namespace

TEST_P(OperatorDescriptions, HaveTheirLinesInOrder)
{
    const std::unique_ptr<ClProcessorBase> pProcessor = GetParam().fnMake();
    ASSERT_EQ(GetParam().szName, pProcessor->Name());
    const Lines_t aLines = GetParam().fnLines(*pProcessor);
    Interface cInterface;
    pProcessor->QueryParameters(cInterface);
    ASSERT_EQ(static_cast<long>(aLines.size()), cInterface.Count());
    const Interface::ClParameter* p = cInterface.FirstParam();
    for (const StLine& cLine : aLines)
    {
        SCOPED_TRACE(cLine.szName);
        EXPECT_EQ(cLine.szName, p->GetName());
        EXPECT_EQ(cLine.szText, p->GetDescription());
        EXPECT_EQ(cLine.szDirection, p->szDir());
        EXPECT_EQ(cLine.szType, p->szType());
        EXPECT_EQ(cLine.pMember, p->m_pValue);
        EXPECT_EQ(cLine.aNames, NamesOf(*p));
        EXPECT_EQ(cLine.szValue, p->szValue());
        if (std::isnan(cLine.dDefault))
        {
            EXPECT_TRUE(std::isnan(p->m_dDefault));
        }
        else
        {
            EXPECT_EQ(cLine.dDefault, p->m_dDefault);
        }
        CheckRange(cLine, cLine.dDefault, *p);
        EXPECT_FALSE(p->m_bFlag1);
        EXPECT_FALSE(p->m_bIndirect);
        p = p->m_pNext;
    }
}

TEST_P(OperatorDescriptions, ReachTheMembersOfTheOperator)
{
    const std::unique_ptr<ClProcessorBase> pProcessor = GetParam().fnMake();
    Interface cBefore;
    pProcessor->QueryParameters(cBefore);
    ClImage cImage;
    for (Interface::ClParameter* p = cBefore.FirstParam(); p != nullptr; p = p->m_pNext)
    {
        p->SetValue(9.5);
        if (p->m_eType == Interface::eImage)
        {
            p->SetValue(cImage);
        }
    }
    Interface cAfter;
    pProcessor->QueryParameters(cAfter);
    const Interface::ClParameter* p = cAfter.FirstParam();
    for (const StLine& cLine : GetParam().fnLines(*pProcessor))
    {
        SCOPED_TRACE(cLine.szName);
        ASSERT_NE(nullptr, p);
        if (cLine.IsNumber())
        {
            const double dSet = cLine.szType == "eDouble" ? 9.5 : 9.0;
            EXPECT_EQ(dSet, p->m_dDefault);
            CheckRange(cLine, dSet, *p);
            EXPECT_STREQ(cLine.szType == "eDouble" ? "9.50000" : "9", p->szValue());
        }
        if (p->m_eType == Interface::eImage)
        {
            EXPECT_EQ(&cImage, p->GetImage());
        }
        p = p->m_pNext;
    }
}

TEST_P(OperatorDescriptions, CarryTheNumbersFromOneObjectToAnotherByAStream)
{
    const std::unique_ptr<ClProcessorBase> pFrom = GetParam().fnMake();
    const std::unique_ptr<ClProcessorBase> pTo = GetParam().fnMake();
    Interface cFrom;
    Interface cTo;
    pFrom->QueryParameters(cFrom);
    pTo->QueryParameters(cTo);
    for (Interface::ClParameter* p = cFrom.FirstParam(); p != nullptr; p = p->m_pNext)
    {
        p->SetValue(11.0);
    }
    ClMemoryStream cStream;
    cFrom.WriteToStream(cStream);
    cStream.Rewind();
    cTo.ReadFromStream(cStream);
    EXPECT_EQ(cStream.m_aBytes.size(), cStream.m_nPos);
    const Interface::ClParameter* p = cTo.FirstParam();
    for (const StLine& cLine : GetParam().fnLines(*pTo))
    {
        if (cLine.IsNumber())
        {
            EXPECT_STREQ(cLine.szType == "eDouble" ? "11.00000" : "11", p->szValue()) << cLine.szName;
        }
        else
        {
            EXPECT_EQ(cLine.szValue, p->szValue()) << cLine.szName;
        }
        p = p->m_pNext;
    }
}

TEST_P(OperatorDescriptions, LeaveTheTreeOfParametersWithinReach)
{
    const std::unique_ptr<ClProcessorBase> pProcessor = GetParam().fnMake();
    ClParameterContainer cTree;
    ClParameterProvider& cProvider = *pProcessor;
    cProvider.QueryParameters(cTree);
    ClParameterContainer cSame;
    pProcessor->QueryParameters(cSame);
    EXPECT_EQ(cTree.m_aChildren.Entries(), cSame.m_aChildren.Entries());
    Interface cInterface;
    cProvider.QueryParameters(cInterface);
    EXPECT_EQ(static_cast<long>(GetParam().fnLines(*pProcessor).size()), cInterface.Count());
}

INSTANTIATE_TEST_SUITE_P(Every, OperatorDescriptions, testing::ValuesIn(AllDescriptions()),
                         [](const testing::TestParamInfo<StDescription>& cInfo) { return cInfo.param.szName; });

TEST(OperatorDescriptionsTable, NamesEveryOperatorOfTheFolder)
{
    std::set<std::string> aKnown;
    for (const StDescription& cDescription : AllDescriptions())
    {
        EXPECT_TRUE(aKnown.insert(cDescription.szName).second) << cDescription.szName << " stands twice";
    }
    EXPECT_EQ(OperatorsOfTheFolder(KORMELIN_SOURCE_FOLDER), aKnown);
}
