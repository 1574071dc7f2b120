#include "ContactSheetCells.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpStretchRangeGlobal.hpp"
#include "RDTools/Exception.hpp"

#include <utility>

void ClSheetCells::AddPicture(const std::string& sOperator, const std::string& sArguments, const std::string& sResult,
                              ClSheetPicture cPicture)
{
    ClSheetCell cCell;
    cCell.m_sOperator = sOperator;
    cCell.m_sArguments = sArguments;
    cCell.m_sResult = sResult;
    cCell.m_cPicture = std::move(cPicture);
    m_aCells.push_back(std::move(cCell));
}

void ClSheetCells::Record(const char* szOperator, const std::string& sMode, const std::string& sArguments,
                          long nExpectedCode, const std::function<long(ClSheetRun&)>& fnRun)
{
    ClSheetRun cRun;
    ClSheetCell cCell;
    cCell.m_sOperator = szOperator;
    cCell.m_sMode = sMode;
    cCell.m_sArguments = sArguments;
    cCell.m_nExpectedCode = nExpectedCode;
    try
    {
        cCell.m_nCode = fnRun(cRun);
    }
    catch (const ClException& e)
    {
        cCell.m_nCode = e.Number();
    }
    if (cCell.m_nCode != FPC_SUCCESS)
    {
        cCell.m_sResult = "code " + std::to_string(cCell.m_nCode);
        cCell.m_sResult += cCell.IsAsExpected() ? ", as expected" : ", NOT EXPECTED";
    }
    else
    {
        cCell.m_sResult = DescribeImage(cRun.m_cOut) + cRun.m_sFound;
        cCell.m_cPicture = cRun.m_bLabels ? ShowLabels(cRun.m_cOut, cRun.m_nBackground) : ShowImage(cRun.m_cOut);
        for (const ClSheetBox& cBox : cRun.m_aBoxes) DrawBox(cCell.m_cPicture, cBox);
    }
    m_aCells.push_back(std::move(cCell));
}

namespace
{
void AddInputs(ClSheetCells& cCells)
{
    const ClSheetInputs& c = cCells.m_cInputs;
    const std::pair<const char*, const ClImage*> aInputs[] = {
        {"hand", &c.m_cHand},           {"ridges", &c.m_cRidges}, {"small", &c.m_cSmall},
        {"dots", &c.m_cDots},           {"colour", &c.m_cColour}, {"binary hand", &c.m_cBinaryHand},
        {"stretched", &c.m_cStretched}, {"signed", &c.m_cSigned}, {"binary ridges", &c.m_cBinaryRidges},
        {"dull", &c.m_cDull},           {"dx", &c.m_cDirectionX}, {"dy", &c.m_cDirectionY}};
    for (const auto& [szName, pImage] : aInputs)
    {
        cCells.AddPicture("input", szName, DescribeImage(*pImage), ShowImage(*pImage));
    }
}

void AddHistogramCell(ClSheetCells& cCells, const char* szInput, const ClImage& cImage, int nLowPass)
{
    ClHistogram cHistogram;
    cHistogram.Create(cImage);
    cHistogram.LowPass(nLowPass);
    const int nThreshold = cHistogram.TwoMeansClustering();
    std::string sArguments = szInput;
    sArguments += nLowPass > 1 ? ", LowPass " + std::to_string(nLowPass) : "";
    cCells.AddPicture("ClHistogram", sArguments + ", two means red",
                      "greys " + std::to_string(cHistogram.FirstValue()) + ".." +
                          std::to_string(cHistogram.LastValue()) + " parted at " + std::to_string(nThreshold),
                      ShowHistogram(cHistogram, nThreshold));
}

void AddBinarizeGlobal(ClSheetCells& cCells, const std::string& sArguments, ClImage& cIn, double dThreshold,
                       double dBlack, double dWhite, long nExpectedCode)
{
    cCells.Add<ClIpBinarizeGlobal>(
        "", sArguments,
        [&](ClIpBinarizeGlobal& cOperator, ClSheetRun& cRun)
        {
            if (dBlack != dWhite)
            {
                cOperator.m_dBlack = dBlack;
                cOperator.m_dWhite = dWhite;
            }
            return cOperator.ApplyParam(cIn, cRun.m_cOut, dThreshold);
        },
        nExpectedCode);
}

using Auto = ClIpBinarizeAutoThreshold;

void AddAutoThreshold(ClSheetCells& cCells, const StSheetMode<Auto::eProcessingMode>& cMode, const char* szInput,
                      ClImage& cIn)
{
    cCells.Add<Auto>(cMode.m_szName, szInput,
                     [&](Auto& cOperator, ClSheetRun& cRun)
                     {
                         const long nCode = cOperator.ApplyParam(cIn, cRun.m_cOut, cMode.m_eMode);
                         cRun.m_sFound = " at " + std::to_string(cOperator.m_nThreshold);
                         return nCode;
                     });
}
} // namespace

void AddThresholdCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    const StSheetMode<Auto::eProcessingMode> aModes[] = {
        SHEET_MODE(Auto, ModeFuzzyEntropy), SHEET_MODE(Auto, ModeFuzzyYager), SHEET_MODE(Auto, ModeMovingAverages),
        SHEET_MODE(Auto, ModeJohannsen),    SHEET_MODE(Auto, ModeKapur),      SHEET_MODE(Auto, ModePun),
        SHEET_MODE(Auto, ModeMinimumError), SHEET_MODE(Auto, ModeRelaxation), SHEET_MODE(Auto, ModeOtsu)};
    for (const auto& [szInput, pIn] :
         {std::pair("hand", &c.m_cHand), std::pair("ridges", &c.m_cRidges), std::pair("stretched", &c.m_cStretched)})
    {
        for (const auto& cMode : aModes) AddAutoThreshold(cCells, cMode, szInput, *pIn);
    }
    // Pun's method finds no threshold but among grey values that all occur, from 0 on.
    ClImage cFromZero;
    ClIpStretchRangeGlobal cStretch;
    cStretch.m_nNewRangeTo = 50;
    cStretch.ApplyParam(c.m_cDull, cFromZero);
    AddAutoThreshold(cCells, aModes[5], "dull to 0..50", cFromZero);
    AddHistogramCell(cCells, "hand", c.m_cHand, 1);
    AddHistogramCell(cCells, "ridges", c.m_cRidges, 1);
    AddHistogramCell(cCells, "ridges", c.m_cRidges, 15);
    const double dNotGiven = ClIpBinarizeGlobal().m_dThreshold;
    AddBinarizeGlobal(cCells, "hand, middle of the range", c.m_cHand, dNotGiven, 0, 0, 0);
    AddBinarizeGlobal(cCells, "hand at 100", c.m_cHand, 100, 0, 0, 0);
    AddBinarizeGlobal(cCells, "hand at 200", c.m_cHand, 200, 0, 0, 0);
    AddBinarizeGlobal(cCells, "hand at 150, to 60 and 190", c.m_cHand, 150, 60, 190, 0);
    AddBinarizeGlobal(cCells, "colour at 150", c.m_cColour, 150, 0, 0, 0);
    AddBinarizeGlobal(cCells, "signed, middle of the range", c.m_cSigned, dNotGiven, 0, 0, 0);
    AddBinarizeGlobal(cCells, "hand at 300", c.m_cHand, 300, 0, 0, FPC_ERROR_PARAM_OUT_OF_RANGE);
}

namespace
{
void AddLabelling(ClSheetCells& cCells, const char* szInput, ClImage& cBinary)
{
    cCells.Add<ClIpLabeling>("", szInput,
                             [&](ClIpLabeling& cOperator, ClSheetRun& cRun)
                             {
                                 cRun.m_bLabels = true;
                                 cOperator.m_pInImage = &cBinary;
                                 cOperator.m_pOutImage = &cRun.m_cOut;
                                 return cOperator.Apply();
                             });
    cCells.Add<ClIpConnectedComponent2>("", std::string(szInput) + ", boxes",
                                        [&](ClIpConnectedComponent2& cOperator, ClSheetRun& cRun)
                                        {
                                            ClIpConnectedComponent2::ComponentsArray_t aComponents;
                                            cRun.m_bLabels = true;
                                            cOperator.pInImage = &cBinary;
                                            cOperator.m_pOutImage = &cRun.m_cOut;
                                            cOperator.m_pComponents = &aComponents;
                                            const long nCode = cOperator.Apply();
                                            for (unsigned long i = 0; i < aComponents.Entries(); ++i)
                                            {
                                                const ClVector& cMin = aComponents[i].m_cMin;
                                                const ClVector& cMax = aComponents[i].m_cMax;
                                                cRun.m_aBoxes.push_back(
                                                    {static_cast<long>(cMin.m_dX), static_cast<long>(cMin.m_dY),
                                                     static_cast<long>(cMax.m_dX), static_cast<long>(cMax.m_dY)});
                                            }
                                            return nCode;
                                        });
    cCells.Add<ClIpFloodFillLabeling>("", std::string(szInput) + ", boxes",
                                      [&](ClIpFloodFillLabeling& cOperator, ClSheetRun& cRun)
                                      {
                                          cRun.m_bLabels = true;
                                          cRun.m_nBackground = 255;
                                          cOperator.m_pInImage = &cBinary;
                                          cOperator.m_pOutImage = &cRun.m_cOut;
                                          const long nCode = cOperator.Apply();
                                          for (unsigned long i = 0; i < cOperator.m_aObjects.Entries(); ++i)
                                          {
                                              const auto& cBox = cOperator.m_aObjects[i];
                                              cRun.m_aBoxes.push_back({cBox.nMinX, cBox.nMinY, cBox.nMaxX, cBox.nMaxY});
                                          }
                                          return nCode;
                                      });
}

/// Fills from a pixel of the picture; nCountThresh and bBox choose the kind of fill.
void AddFill(ClSheetCells& cCells, const std::string& sArguments, ClImage& cIn, long nX, long nY, long nCountThresh,
             bool bBox)
{
    cCells.Add<ClIpFloodFill>("", sArguments,
                              [&](ClIpFloodFill& cOperator, ClSheetRun& cRun)
                              {
                                  ClIpFloodFill::StBoundingBox cBox{};
                                  cOperator.m_pInImage = &cIn;
                                  cOperator.m_pOutImage = &cRun.m_cOut;
                                  cOperator.m_pBoundingBox = bBox ? &cBox : nullptr;
                                  cOperator.m_nCountThresh = nCountThresh;
                                  cRun.m_bLabels = nCountThresh != 0;
                                  cOperator.m_nFillColor = 160;
                                  cOperator.m_nStartX = nX;
                                  cOperator.m_nStartY = nY;
                                  const long nCode = cOperator.Apply();
                                  if (bBox)
                                  {
                                      cRun.m_sFound = " n " + std::to_string(cBox.nCount);
                                      cRun.m_aBoxes.push_back({cBox.nMinX, cBox.nMinY, cBox.nMaxX, cBox.nMaxY});
                                  }
                                  return nCode;
                              });
}
} // namespace

void AddObjectCells(ClSheetCells& cCells)
{
    ClSheetInputs& c = cCells.m_cInputs;
    AddLabelling(cCells, "binary hand", c.m_cBinaryHand);
    AddLabelling(cCells, "binary ridges", c.m_cBinaryRidges);
    AddFill(cCells, "binary hand from (0, 0)", c.m_cBinaryHand, 0, 0, 0, false);
    AddFill(cCells, "binary hand from (52, 90)", c.m_cBinaryHand, 52, 90, 0, false);
    AddFill(cCells, "binary hand from (52, 90), box", c.m_cBinaryHand, 52, 90, 0, true);
    ClImage cIslands; // bits of ridges, white on black
    ClIpBinarizeGlobal cWhiteBelow;
    cWhiteBelow.m_dBlack = 255;
    cWhiteBelow.m_dWhite = 0;
    cWhiteBelow.ApplyParam(c.m_cHand, cIslands, 135.0);
    AddFill(cCells, "hand below 135, colour by size", cIslands, 0, 0, 254, false);
    cCells.Add<ClIpCutBiggestComponent>("", "hand",
                                        [&](ClIpCutBiggestComponent& cOperator, ClSheetRun& cRun)
                                        { return cOperator.ApplyParam(c.m_cHand, cRun.m_cOut); });
    cCells.Add<ClIpCutBiggestComponent>("", "binary hand",
                                        [&](ClIpCutBiggestComponent& cOperator, ClSheetRun& cRun)
                                        { return cOperator.ApplyParam(c.m_cBinaryHand, cRun.m_cOut); });
}

std::vector<ClSheetCell> MakeSheetCells()
{
    ClSheetCells cCells;
    AddInputs(cCells);
    AddThresholdCells(cCells);
    AddObjectCells(cCells);
    AddFilterCells(cCells);
    AddRescaleCells(cCells);
    AddRotateCells(cCells);
    AddGreyValueCells(cCells);
    AddPlaneAndTypeCells(cCells);
    AddTwoImageCells(cCells);
    return std::move(cCells.m_aCells);
}
