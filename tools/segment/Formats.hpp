#pragma once

#include "Picture.hpp"

#include <string>

/// The formats of pictures, told by how a file begins, whatever its name is.
namespace SegmentTool
{
enum class EFormat
{
    eUnknown,
    eBmp,
    ePng,
    eJpeg,
    eTiff,
    eJp2, ///< JPEG 2000, in its file format or as a bare codestream
    ePnm
};

EFormat FormatOf(const Bytes_t& aFile);
const char* FormatName(EFormat eFormat);
/// Whether this program was built with what reads that format.
bool CanRead(EFormat eFormat);
/// "BMP, PNG, ...": what it was built with.
std::string ReadableFormats();

/// Reads a picture with its resolution. Colours become grey by ClIpRgbToGrey, a colour table of greys and samples of
/// another depth than 8 bits become the nearest of 256 greys, transparency shows white.
/// Errors: ClPictureError with a number of the format, for files that are damaged, too large or of a kind that is not
/// supported; ClExBadAlloc. Each in a module of its own.
void ReadPicture(EFormat eFormat, const Bytes_t& aFile, ClPicture& cPicture);
void ReadBmp(const Bytes_t& aFile, ClPicture& cPicture);
void ReadPng(const Bytes_t& aFile, ClPicture& cPicture);
void ReadJpeg(const Bytes_t& aFile, ClPicture& cPicture);
void ReadTiff(const Bytes_t& aFile, ClPicture& cPicture);
void ReadJp2(const Bytes_t& aFile, ClPicture& cPicture);
/// P1 to P6, as Netpbm writes them; such a file tells no resolution. The work of a module of this program, because
/// Netpbm's library keeps where to go on an error in one variable of the process, which threads would share.
void ReadPnm(const Bytes_t& aFile, ClPicture& cPicture);
} // namespace SegmentTool
