#include "Records.hpp"

#include "Escape.hpp"
#include "FingerCode.hpp"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>

namespace SegmentTool
{
namespace
{
using Json_t = nlohmann::ordered_json;

const char* ModeName(const ClResult& cResult)
{
    return cResult.m_bBiggest ? "biggest" : "fingers";
}

Json_t Rectangle(const ClFinger& cFinger, int nY)
{
    return {{"x", cFinger.m_nX}, {"y", nY}, {"width", cFinger.m_nWidth}, {"height", cFinger.m_nHeight}};
}

Json_t FileOrNull(const std::string& sFile)
{
    return sFile.empty() ? Json_t(nullptr) : Json_t(sFile);
}

std::string TextOfFinger(const ClFinger& cFinger)
{
    char szLine[200];
    std::snprintf(szLine, sizeof szLine, "  %2d %-12s  x %5d  y %5d  width %4d  height %4d  cut-out %3d x %3d",
                  cFinger.m_nPosition, PositionName(cFinger.m_nPosition), cFinger.m_nX, cFinger.m_nSeenY,
                  cFinger.m_nWidth, cFinger.m_nHeight, cFinger.m_nCutWidth, cFinger.m_nCutHeight);
    std::string sLine = szLine;
    if (!cFinger.m_sFile.empty()) sLine += "  " + EscapeText(cFinger.m_sFile);
    return sLine + '\n';
}
} // namespace

std::unique_ptr<ClRecordWriter> ClRecordWriter::Create(ERecords eRecords)
{
    switch (eRecords)
    {
    case ERecords::eJson: return std::make_unique<ClJsonRecords>();
    case ERecords::eCsv: return std::make_unique<ClCsvRecords>();
    case ERecords::eText: break;
    }
    return std::make_unique<ClTextRecords>();
}

std::string ClTextRecords::Record(const ClResult& cResult) const
{
    std::string sText = EscapeText(cResult.m_sInput) + ": ";
    if (cResult.m_eOutcome != EOutcome::eSegmented)
    {
        sText += OutcomeName(cResult.m_eOutcome);
        if (cResult.m_nCode != 0) sText += " (error " + std::to_string(cResult.m_nCode) + ')';
        sText += ": " + EscapeText(cResult.m_sMessage) + '\n';
    }
    else if (cResult.m_bBiggest)
    {
        sText += "biggest object\n";
    }
    else
    {
        const std::size_t nFingers = cResult.m_aFingers.size();
        const char* szHand = cResult.m_eHand == EHand::eThumbs      ? "two thumbs"
                             : cResult.m_eHand == EHand::eUndecided ? "hand undecided"
                             : cResult.m_eHand == EHand::eRight     ? "right hand"
                                                                    : "left hand";
        sText += std::string(szHand) + ", " + std::to_string(nFingers) + (nFingers == 1 ? " finger\n" : " fingers\n");
    }
    for (const ClFinger& cFinger : cResult.m_aFingers) sText += TextOfFinger(cFinger);
    if (!cResult.m_sOverlay.empty()) sText += "  overlay " + EscapeText(cResult.m_sOverlay) + '\n';
    return sText;
}

std::string ClJsonRecords::Record(const ClResult& cResult) const
{
    Json_t cPicture = nullptr;
    if (cResult.m_nWidth > 0)
    {
        cPicture = {{"width", cResult.m_nWidth},
                    {"height", cResult.m_nHeight},
                    {"pels_per_metre", {{"x", cResult.m_nXPels}, {"y", cResult.m_nYPels}}}};
    }
    Json_t aFingers = Json_t::array();
    for (const ClFinger& cFinger : cResult.m_aFingers)
    {
        aFingers.push_back({{"position", cFinger.m_nPosition},
                            {"name", PositionName(cFinger.m_nPosition)},
                            {"stored", Rectangle(cFinger, cFinger.m_nStoredY)},
                            {"seen", Rectangle(cFinger, cFinger.m_nSeenY)},
                            {"cutout", {{"width", cFinger.m_nCutWidth}, {"height", cFinger.m_nCutHeight}}},
                            {"file", FileOrNull(cFinger.m_sFile)}});
    }
    const Json_t cRecord = {{"schema_version", nSchemaVersion},
                            {"index", cResult.m_nIndex},
                            {"input", cResult.m_sInput},
                            {"outcome", OutcomeName(cResult.m_eOutcome)},
                            {"code", cResult.m_nCode},
                            {"message", cResult.m_sMessage},
                            {"mode", ModeName(cResult)},
                            {"picture", cPicture},
                            {"hand", HandName(cResult.m_eHand)},
                            {"fingers", aFingers},
                            {"overlay", FileOrNull(cResult.m_sOverlay)}};
    return cRecord.dump(-1, ' ', false, Json_t::error_handler_t::replace) + '\n';
}

std::string ClCsvRecords::Header() const
{
    return "index,input,outcome,code,message,mode,width,height,x_pels_per_metre,y_pels_per_metre,hand,"
           "finger,fingers,position,name,x,stored_y,seen_y,finger_width,finger_height,cutout_width,cutout_height,"
           "file,overlay\r\n";
}

std::string ClCsvRecords::Record(const ClResult& cResult) const
{
    const bool bPicture = cResult.m_nWidth > 0;
    const auto Number = [](auto n) { return std::to_string(n); };
    const auto OfPicture = [bPicture](int n) { return bPicture ? std::to_string(n) : std::string(); };
    std::string sPicture;
    for (const std::string& sField :
         {Number(cResult.m_nIndex), cResult.m_sInput, std::string(OutcomeName(cResult.m_eOutcome)),
          Number(cResult.m_nCode), cResult.m_sMessage, std::string(ModeName(cResult)), OfPicture(cResult.m_nWidth),
          OfPicture(cResult.m_nHeight), OfPicture(cResult.m_nXPels), OfPicture(cResult.m_nYPels),
          std::string(HandName(cResult.m_eHand))})
    {
        sPicture += CsvField(sField) + ',';
    }
    const std::size_t nFingers = cResult.m_aFingers.size();
    if (nFingers == 0) return sPicture + ",0,,,,,,,,,,," + CsvField(cResult.m_sOverlay) + "\r\n";
    std::string sRows;
    for (std::size_t i = 0; i < nFingers; ++i)
    {
        const ClFinger& cFinger = cResult.m_aFingers[i];
        sRows += sPicture + Number(i + 1) + ',' + Number(nFingers) + ',' + Number(cFinger.m_nPosition) + ',' +
                 PositionName(cFinger.m_nPosition);
        for (const int n : {cFinger.m_nX, cFinger.m_nStoredY, cFinger.m_nSeenY, cFinger.m_nWidth, cFinger.m_nHeight,
                            cFinger.m_nCutWidth, cFinger.m_nCutHeight})
        {
            sRows += ',' + Number(n);
        }
        sRows += ',' + CsvField(cFinger.m_sFile) + ',' + CsvField(cResult.m_sOverlay) + "\r\n";
    }
    return sRows;
}
} // namespace SegmentTool
