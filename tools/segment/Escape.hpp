#pragma once

#include <string>
#include <string_view>

/// File names hold any bytes. Each place where one is written has its own rules.
namespace SegmentTool
{
/// For a terminal: control characters as \xNN, everything else as it is.
std::string EscapeText(std::string_view sText);
/// A field of a CSV file (RFC 4180): in quotation marks if it holds one, a comma or a line end; other bytes as they
/// are.
std::string CsvField(std::string_view sText);
/// For HTML, in text and in attributes in double quotation marks: valid UTF-8 without control characters.
std::string EscapeHtml(std::string_view sText);
/// The text with every byte that is no part of valid UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view sText);
} // namespace SegmentTool
