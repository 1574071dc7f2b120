#pragma once

namespace SegmentTool
{
/// The whole program. Returns its exit code; passes no exception on.
int RunProgram(int nArguments, const char* const* aszArguments);
} // namespace SegmentTool
