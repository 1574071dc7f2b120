#pragma once

#include "Options.hpp"
#include "Picture.hpp"
#include "Result.hpp"

#include <cstdint>
#include <functional>
#include <string>

/// Files of pictures that the program writes. Each carries the fingerprint of the file that it was made from, so that
/// no run overwrites what another picture of the same name gave: in a PNG file the text "Source" in front of the
/// pixels, in a BMP file behind the last byte that its header counts.
namespace SegmentTool
{
/// Size and resolution, and the rows from the top: grey, or blue, green and red.
struct ClImageRows
{
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nChannels = 1; ///< 1 or 3
    int m_nXPels = 0;    ///< per metre
    int m_nYPels = 0;
    std::function<void(int nRow, unsigned char* pRow)> m_Row; ///< fills m_nWidth * m_nChannels bytes
};

/// The rows of a one-plane image, which outlives them.
ClImageRows RowsOf(const ClImage& cImage);
/// The picture with a frame around each finger, each in a colour of its own; both outlive the rows. A frame lies inside
/// its rectangle, as thick as can be seen when the whole picture is on a screen, and ends where the picture does.
ClImageRows RowsWithFrames(ClPicture& cPicture, const std::vector<ClFinger>& aFingers);

/// The bytes of a file. Errors: ClExBadAlloc, std::bad_alloc; ClPictureError -231 for PNG.
Bytes_t EncodeImage(EImageFormat eFormat, const ClImageRows& cRows, std::uint64_t nFingerprint);
Bytes_t EncodePng(const ClImageRows& cRows, std::uint64_t nFingerprint);
Bytes_t EncodeBmp(const ClImageRows& cRows, std::uint64_t nFingerprint);
/// Grey rows only, for pages: with losses, without resolution and fingerprint. Errors: ClPictureError -221.
Bytes_t EncodeJpeg(const ClImageRows& cRows);

/// "png" or "bmp".
const char* EndingOf(EImageFormat eFormat);

/// Whether the file carries that fingerprint. False for every other file, for none, and for what cannot be read.
bool HasFingerprint(const std::string& sPath, std::uint64_t nFingerprint);
} // namespace SegmentTool
