#include "Resume.hpp"

#include "Escape.hpp"
#include "SystemText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <vector>

namespace SegmentTool
{
namespace
{
constexpr std::size_t nLongestRecord = 16u << 20; // what is longer is no line of results

/// Records out of a file of results: lines, or rows of fields.
class ClRecordReader
{
public:
    explicit ClRecordReader(const std::string& sPath) : m_sPath(sPath), m_pFile(std::fopen(sPath.c_str(), "rbe"), Close)
    {
        if (m_pFile == nullptr && errno != ENOENT)
        {
            throw ClRunError(eExitInternal, "cannot read " + EscapeText(sPath) + ": " + SystemText(errno));
        }
    }

    /// Takes exactly this text. False if the file ends within it; anything else is refused.
    bool Take(const std::string& sText)
    {
        for (const char cExpected : sText)
        {
            const int c = Next();
            if (c == EOF) return false;
            if (static_cast<char>(c) != cExpected) NoResults();
        }
        return true;
    }

    /// The next line without its end. False at the end, and for a line without one, which is in sLine then.
    bool NextLine(std::string& sLine)
    {
        sLine.clear();
        for (int c = Next(); c != EOF; c = Next())
        {
            if (c == '\n') return true;
            Put(sLine, c);
        }
        return false;
    }

    /// The fields of the next row (RFC 4180). False at the end, and for a row without one.
    bool NextRow(std::vector<std::string>& aFields)
    {
        aFields.assign(1, "");
        bool bQuoted = false;
        for (int c = Next(); c != EOF; c = Next())
        {
            const bool bQuote = c == '"';
            const bool bText = bQuoted ? !bQuote : !bQuote && c != ',' && c != '\r' && c != '\n';
            // A doubled one inside quotation marks is one of the text.
            if (bText || (bQuote && !bQuoted && m_nBefore == '"')) Put(aFields.back(), c);
            if (bQuote) bQuoted = !bQuoted;
            if (c == ',' && !bQuoted) aFields.emplace_back();
            if (c == '\n' && !bQuoted && m_nBefore == '\r') return true;
            m_nBefore = c;
        }
        return false;
    }

    std::uint64_t Bytes() const { return m_nBytes; } ///< read so far

    [[noreturn]] void NoResults() const
    {
        throw ClRunError(eExitUsage, EscapeText(m_sPath) +
                                         " holds no results of this format that a run could be resumed "
                                         "behind");
    }

private:
    static void Close(std::FILE* pFile)
    {
        if (pFile != nullptr) std::fclose(pFile);
    }

    int Next()
    {
        if (m_pFile == nullptr) return EOF;
        const int c = std::getc(m_pFile.get());
        if (c != EOF) ++m_nBytes;
        if (c == EOF && std::ferror(m_pFile.get()) != 0)
        {
            throw ClRunError(eExitInternal, "cannot read " + EscapeText(m_sPath) + ": " + SystemText(errno));
        }
        return c;
    }

    void Put(std::string& sTo, int c) const
    {
        if (sTo.size() >= nLongestRecord) NoResults();
        sTo += static_cast<char>(c);
    }

    std::string m_sPath;
    std::unique_ptr<std::FILE, void (*)(std::FILE*)> m_pFile;
    std::uint64_t m_nBytes = 0;
    int m_nBefore = 0;
};

std::uint64_t NumberOf(const ClRecordReader& cReader, const std::string& sText)
{
    if (sText.empty() || sText.size() > 18 || sText.find_first_not_of("0123456789") != std::string::npos)
    {
        cReader.NoResults();
    }
    return std::stoull(sText);
}

void AddOutcome(const ClRecordReader& cReader, const std::string& sOutcome, ClDone& cDone)
{
    EOutcome eOutcome = EOutcome::eFailed;
    if (!OutcomeFromName(sOutcome, eOutcome)) cReader.NoResults();
    cDone.m_cTally.Add(eOutcome);
    ++cDone.m_nPictures;
    cDone.m_nBytes = cReader.Bytes();
}

using OnPicture_t = std::function<void(std::uint64_t, const std::string&)>;

void ReadJson(ClRecordReader& cReader, const OnPicture_t& onPicture, ClDone& cDone)
{
    std::string sLine;
    while (cReader.NextLine(sLine))
    {
        const nlohmann::json cRecord = nlohmann::json::parse(sLine, nullptr, false);
        if (!cRecord.is_object() || cRecord.value("schema_version", nlohmann::json()) != nSchemaVersion ||
            !cRecord.contains("index") || !cRecord["index"].is_number_unsigned() || !cRecord.contains("input") ||
            !cRecord["input"].is_string() || !cRecord.contains("outcome") || !cRecord["outcome"].is_string())
        {
            cReader.NoResults();
        }
        AddOutcome(cReader, cRecord["outcome"].get<std::string>(), cDone);
        onPicture(cRecord["index"].get<std::uint64_t>(), cRecord["input"].get<std::string>());
    }
    // What is cut off must at least begin as a result does: nothing else may be lost.
    const std::string sBegin = ClJsonRecords().Record(ClResult()).substr(0, 20);
    const std::size_t nCompared = std::min(sBegin.size(), sLine.size());
    if (sLine.compare(0, nCompared, sBegin, 0, nCompared) != 0) cReader.NoResults();
}

void ReadCsv(ClRecordReader& cReader, const OnPicture_t& onPicture, ClDone& cDone)
{
    std::vector<std::string> aFields;
    if (!cReader.Take(ClCsvRecords().Header())) return;
    cDone.m_nBytes = cReader.Bytes();
    while (cReader.NextRow(aFields))
    {
        if (aFields.size() != ClCsvRecords::eColumns) cReader.NoResults();
        const std::string& sFinger = aFields[ClCsvRecords::eFinger];
        // The last row of a picture is that of its last finger.
        const std::uint64_t nFingers = NumberOf(cReader, aFields[ClCsvRecords::eFingers]);
        if (nFingers != 0 && NumberOf(cReader, sFinger) != nFingers) continue;
        AddOutcome(cReader, aFields[ClCsvRecords::eOutcome], cDone);
        onPicture(NumberOf(cReader, aFields[ClCsvRecords::eIndex]), aFields[ClCsvRecords::eInput]);
    }
}
} // namespace

ClDone ReadResults(const std::string& sPath, ERecords eRecords, const OnPicture_t& onPicture)
{
    ClDone cDone;
    ClRecordReader cReader(sPath);
    switch (eRecords)
    {
    case ERecords::eJson: ReadJson(cReader, onPicture, cDone); break;
    case ERecords::eCsv: ReadCsv(cReader, onPicture, cDone); break;
    case ERecords::eText: cReader.NoResults();
    }
    return cDone;
}

std::string InputAsWritten(ERecords eRecords, const std::string& sInput)
{
    if (eRecords != ERecords::eJson) return sInput;
    const std::string sText = nlohmann::json(sInput).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return nlohmann::json::parse(sText).get<std::string>();
}
} // namespace SegmentTool
