#include "Escape.hpp"

#include <cstdio>

namespace SegmentTool
{
namespace
{
bool IsControl(unsigned char c)
{
    return c < 0x20 || c == 0x7f;
}

bool Continues(std::string_view s, std::size_t i, unsigned char nLowest = 0x80, unsigned char nHighest = 0xbf)
{
    return i < s.size() && static_cast<unsigned char>(s[i]) >= nLowest && static_cast<unsigned char>(s[i]) <= nHighest;
}

// Bytes of the character at s[i]; 0 if it is none. After the table of well-formed sequences in the Unicode standard.
std::size_t CharacterBytes(std::string_view s, std::size_t i)
{
    const auto c = static_cast<unsigned char>(s[i]);
    if (c < 0x80) return 1;
    if (c >= 0xc2 && c <= 0xdf) return Continues(s, i + 1) ? 2 : 0;
    if (c >= 0xe0 && c <= 0xef)
    {
        const bool bSecond = Continues(s, i + 1, c == 0xe0 ? 0xa0 : 0x80, c == 0xed ? 0x9f : 0xbf);
        return bSecond && Continues(s, i + 2) ? 3 : 0;
    }
    if (c >= 0xf0 && c <= 0xf4)
    {
        const bool bSecond = Continues(s, i + 1, c == 0xf0 ? 0x90 : 0x80, c == 0xf4 ? 0x8f : 0xbf);
        return bSecond && Continues(s, i + 2) && Continues(s, i + 3) ? 4 : 0;
    }
    return 0;
}
} // namespace

std::string EscapeText(std::string_view sText)
{
    std::string sOut;
    for (const char c : sText)
    {
        if (!IsControl(static_cast<unsigned char>(c)))
        {
            sOut += c;
            continue;
        }
        char szCode[8];
        std::snprintf(szCode, sizeof szCode, "\\x%02x", static_cast<unsigned char>(c));
        sOut += szCode;
    }
    return sOut;
}

std::string CsvField(std::string_view sText)
{
    if (sText.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(sText);
    std::string sOut = "\"";
    for (const char c : sText)
    {
        if (c == '"') sOut += '"';
        sOut += c;
    }
    return sOut + '"';
}

std::string EscapeHtml(std::string_view sText)
{
    std::string sOut;
    for (const char c : ValidUtf8(sText))
    {
        switch (c)
        {
        case '&': sOut += "&amp;"; break;
        case '<': sOut += "&lt;"; break;
        case '>': sOut += "&gt;"; break;
        case '"': sOut += "&quot;"; break;
        case '\'': sOut += "&#39;"; break;
        default:
            if (IsControl(static_cast<unsigned char>(c)))
                sOut += "\xef\xbf\xbd";
            else
                sOut += c;
        }
    }
    return sOut;
}

std::string ValidUtf8(std::string_view sText)
{
    std::string sOut;
    for (std::size_t i = 0; i < sText.size();)
    {
        const std::size_t nBytes = CharacterBytes(sText, i);
        if (nBytes == 0)
            sOut += "\xef\xbf\xbd";
        else
            sOut += sText.substr(i, nBytes);
        i += nBytes == 0 ? 1 : nBytes;
    }
    return sOut;
}
} // namespace SegmentTool
