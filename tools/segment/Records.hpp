#pragma once

#include "Result.hpp"

#include <memory>
#include <string>

namespace SegmentTool
{
enum class ERecords
{
    eText,
    eJson,
    eCsv
};

constexpr int nSchemaVersion = 1; ///< of the JSON objects and of the columns

/// Writes results as text, one picture at a time.
class ClRecordWriter
{
public:
    virtual ~ClRecordWriter() = default;
    virtual std::string Header() const { return {}; } ///< in front of the first record
    virtual std::string Record(const ClResult& cResult) const = 0;

    static std::unique_ptr<ClRecordWriter> Create(ERecords eRecords);
};

/// For people: a line for the picture and an indented one for each finger; y counts downward from the upper edge.
class ClTextRecords : public ClRecordWriter
{
public:
    std::string Record(const ClResult& cResult) const override;
};

/// One object a line, as docs/kormelin-segment.schema.json describes it, the members always in the same order. Bytes of
/// names that are no UTF-8 become U+FFFD.
class ClJsonRecords : public ClRecordWriter
{
public:
    std::string Record(const ClResult& cResult) const override;
};

/// After RFC 4180: a header, lines that end with CR LF; a row for each finger, and one with empty columns for a picture
/// without. The columns "finger" and "fingers" count from 1 and tell how many rows the picture has.
class ClCsvRecords : public ClRecordWriter
{
public:
    std::string Header() const override;
    std::string Record(const ClResult& cResult) const override;

    /// Columns that reading back needs.
    enum EColumn
    {
        eIndex,
        eInput,
        eOutcome,
        eFinger = 11,
        eFingers = 12,
        eColumns = 24
    };
};
} // namespace SegmentTool
