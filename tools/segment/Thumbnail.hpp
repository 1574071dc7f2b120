#pragma once

#include "Picture.hpp"

#include <string>

namespace SegmentTool
{
/// The longer side of a thumbnail, in pixels; a smaller picture keeps its size.
constexpr int nThumbnailSide = 320;

/// A small form of the picture as a data URI, so that a page holds it itself: JPEG if this program was built with it,
/// else PNG or BMP. Errors: ClPictureError with the number of the operator or of the format; ClExBadAlloc,
/// std::bad_alloc.
std::string ThumbnailUri(ClPicture& cPicture);

/// RFC 4648, with padding.
std::string Base64(const Bytes_t& aBytes);
} // namespace SegmentTool
