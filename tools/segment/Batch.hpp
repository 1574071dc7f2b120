#pragma once

#include "InputList.hpp"
#include "Work.hpp"

#include <functional>

namespace SegmentTool
{
/// What a batch does with its pictures.
struct ClBatchSteps
{
    std::function<bool(ClInput&)> m_Next;         ///< the next picture of the list; in any thread, one at a time
    std::function<ClWork(const ClInput&)> m_Work; ///< in many threads at a time
    std::function<void(ClWork&)> m_Commit;        ///< in the calling thread, in the order of the list
};

/// Runs the steps on nJobs threads until the list ends or the run is to stop (ClStop). Pictures are handed out only so
/// far ahead of the one that is to be committed next that a fixed number of them, four for each thread, is in memory.
/// When the run is to stop, the pictures in work are finished, but not committed.
/// Errors: the first exception of a step, after all pictures in front of it are committed; no thread is left then.
void RunBatch(int nJobs, const ClBatchSteps& cSteps);
} // namespace SegmentTool
