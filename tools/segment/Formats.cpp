#include "Formats.hpp"

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace SegmentTool
{
namespace
{
bool BeginsWith(const Bytes_t& aFile, std::string_view sMark)
{
    return aFile.size() >= sMark.size() && std::memcmp(aFile.data(), sMark.data(), sMark.size()) == 0;
}

using namespace std::string_view_literals;

struct ClMark
{
    std::string_view m_sBytes;
    EFormat m_eFormat;
};

constexpr ClMark aMarks[] = {
    {"BM"sv, EFormat::eBmp},
    {"\x89PNG\r\n\x1a\n"sv, EFormat::ePng},
    {"\xff\xd8\xff"sv, EFormat::eJpeg},
    {"II*\0"sv, EFormat::eTiff},
    {"MM\0*"sv, EFormat::eTiff},
    {"II+\0"sv, EFormat::eTiff}, // with 64-bit offsets
    {"MM\0+"sv, EFormat::eTiff},
    {"\0\0\0\x0cjP  \r\n\x87\n"sv, EFormat::eJp2},
    {"\xff\x4f\xff\x51"sv, EFormat::eJp2},
};

constexpr EFormat aeAll[] = {EFormat::eBmp,  EFormat::ePng, EFormat::eJpeg,
                             EFormat::eTiff, EFormat::eJp2, EFormat::ePnm};
} // namespace

EFormat FormatOf(const Bytes_t& aFile)
{
    for (const ClMark& cMark : aMarks)
    {
        if (BeginsWith(aFile, cMark.m_sBytes)) return cMark.m_eFormat;
    }
    if (aFile.size() >= 3 && aFile[0] == 'P' && aFile[1] >= '1' && aFile[1] <= '6' &&
        std::strchr(" \t\r\n#", aFile[2]) != nullptr && aFile[2] != 0)
    {
        return EFormat::ePnm;
    }
    return EFormat::eUnknown;
}

const char* FormatName(EFormat eFormat)
{
    switch (eFormat)
    {
    case EFormat::eBmp: return "BMP";
    case EFormat::ePng: return "PNG";
    case EFormat::eJpeg: return "JPEG";
    case EFormat::eTiff: return "TIFF";
    case EFormat::eJp2: return "JPEG 2000";
    case EFormat::ePnm: return "PNM";
    case EFormat::eUnknown: break;
    }
    return "unknown";
}

bool CanRead(EFormat eFormat)
{
    constexpr EFormat aeReadable[] = {
        EFormat::eBmp,
        EFormat::ePnm,
#if HAVE_PNG
        EFormat::ePng,
#endif
#if HAVE_JPEG
        EFormat::eJpeg,
#endif
#if HAVE_TIFF
        EFormat::eTiff,
#endif
#if HAVE_OPENJPEG
        EFormat::eJp2,
#endif
    };
    return std::find(std::begin(aeReadable), std::end(aeReadable), eFormat) != std::end(aeReadable);
}

std::string ReadableFormats()
{
    std::string sNames;
    for (const EFormat eFormat : aeAll)
    {
        if (CanRead(eFormat)) sNames += (sNames.empty() ? "" : ", ") + std::string(FormatName(eFormat));
    }
    return sNames;
}

void ReadPicture(EFormat eFormat, const Bytes_t& aFile, ClPicture& cPicture)
{
    switch (eFormat)
    {
    case EFormat::eBmp: return ReadBmp(aFile, cPicture);
    case EFormat::ePnm: return ReadPnm(aFile, cPicture);
#if HAVE_PNG
    case EFormat::ePng: return ReadPng(aFile, cPicture);
#endif
#if HAVE_JPEG
    case EFormat::eJpeg: return ReadJpeg(aFile, cPicture);
#endif
#if HAVE_TIFF
    case EFormat::eTiff: return ReadTiff(aFile, cPicture);
#endif
#if HAVE_OPENJPEG
    case EFormat::eJp2: return ReadJp2(aFile, cPicture);
#endif
    default: break;
    }
    throw ClPictureError(FPC_ERROR_UNKNOWN_CODEC,
                         eFormat == EFormat::eUnknown
                             ? "the file is none of the formats that can be read (" + ReadableFormats() +
                                   "); --decoder CMD reads others"
                             : std::string("this program was built without ") + FormatName(eFormat));
}
} // namespace SegmentTool
