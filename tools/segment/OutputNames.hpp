#pragma once

#include "Options.hpp"
#include "Result.hpp"

#include <string>

namespace SegmentTool
{
/// The folder where the pictures of an input go: that of the options, or with --tree the input's own folder below it,
/// without a root and without steps upwards.
std::string FolderOfFingers(const ClOptions& cOptions, const std::string& sInput);

/// Names the files of a result's fingers, m_sFile of each, and of its overlay: INPUT_CODE.png in that folder, INPUT
/// being the input's name without its ending and CODE the finger position. Where several fingers of a picture are
/// undecided, they are counted from the left: INPUT_0-1.png, INPUT_0-2.png. The overlay is INPUT_overlay.png.
void NameFiles(const ClOptions& cOptions, ClResult& cResult);
} // namespace SegmentTool
