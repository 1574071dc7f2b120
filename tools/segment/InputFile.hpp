#pragma once

#include "Picture.hpp"

#include <cstdint>
#include <string>

namespace SegmentTool
{
/// How pictures are read.
struct ClReading
{
    double m_dPpi = 0.0;            ///< pixels per inch in place of what the files tell; 0: as they tell
    std::string m_sDecoder;         ///< command of the user's for other formats; empty: none
    double m_dDecoderSeconds = 0.0; ///< its time limit
};

/// A file is read into memory whole, so that no format's library can hang on it; larger ones are refused.
constexpr std::uint64_t nMostFileBytes = 2ull * nMostSide * nMostSide * 3ull + (1u << 20);

/// The bytes of a regular file. Errors: ClPictureError -200, -203 with the file system's reason; a folder, a device or
/// a pipe is none. std::bad_alloc.
Bytes_t ReadWholeFile(const std::string& sPath);

/// Reads a picture and sets its resolution; pnFingerprint, if given, receives ContentFingerprint of the file. Errors:
/// ClPictureError, ClExBadAlloc.
void ReadInput(const std::string& sPath, const ClReading& cReading, ClPicture& cPicture, std::uint64_t* pnFingerprint);

/// A number that tells files apart by their content: FNV-1a (G. Fowler, L. C. Noll, K.-P. Vo) over words of eight
/// bytes, little-endian, the last one filled up with zeroes, and the length.
std::uint64_t ContentFingerprint(const Bytes_t& aFile);
} // namespace SegmentTool
