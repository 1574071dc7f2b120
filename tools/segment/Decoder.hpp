#pragma once

#include "Picture.hpp"

#include <string>

namespace SegmentTool
{
/// Runs a command of the user's, which decodes a file: `sh -c COMMAND`, with the file's name as "$1" and never as a
/// part of the command. What it writes to standard output comes back. The command has nothing on its standard input and
/// a process group of its own, which is killed after dSeconds, when the run is to stop (ClStop), when it writes more
/// than any picture has, and when it is done. Errors: ClPictureError with the end of what it wrote to standard error:
/// -207 for a command that fails or writes nothing, -203 for one that takes too long; -105 if it cannot be started.
/// std::bad_alloc.
Bytes_t Decode(const std::string& sCommand, const std::string& sFile, double dSeconds);
} // namespace SegmentTool
