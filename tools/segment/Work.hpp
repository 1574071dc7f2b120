#pragma once

#include "InputList.hpp"
#include "Options.hpp"
#include "Picture.hpp"
#include "Result.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace SegmentTool
{
/// A file that is to be written, in memory.
struct ClMadeFile
{
    std::string m_sPath;
    Bytes_t m_aBytes;
};

/// What becomes of one picture before anything is written.
struct ClWork
{
    ClResult m_cResult;
    std::uint64_t m_nFingerprint = 0; ///< of the picture's file, see ContentFingerprint
    std::vector<ClMadeFile> m_aFiles; ///< the pictures of the fingers, and the overlay
    std::string m_sThumbnailUri;      ///< for the report; empty without a picture
};

/// The road of one picture, apart from all others: reading, segmentation, and what comes of it in memory. For any
/// thread; touches nothing but the file that it reads.
/// No exception: whatever goes wrong with a picture is told in its result.
ClWork WorkOn(const ClInput& cInput, const ClOptions& cOptions);

/// Writes the files of a picture, in the calling thread. If one of them would take the place of another picture's, none
/// is written and the result tells so. Errors: ClRunError if writing fails.
void WriteFiles(const ClOptions& cOptions, ClWork& cWork);
} // namespace SegmentTool
