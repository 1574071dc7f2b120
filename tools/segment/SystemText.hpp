#pragma once

#include <string>

namespace SegmentTool
{
/// What an error number of the system means, in English on every machine; for any thread.
std::string SystemText(int nError);
} // namespace SegmentTool
