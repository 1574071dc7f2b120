#pragma once

namespace SegmentTool
{
/// Signals that end a run in order: SIGINT, SIGTERM and SIGHUP. The first one only asks for the end; a second one ends
/// the process at once. A closed pipe and a file at its limit are made errors of writing instead of signals. One for
/// the process.
class ClStop
{
public:
    /// From here on the signals ask instead of killing.
    static void Install();
    /// The signal that has come, or 0. For any thread.
    static int Signal();
    /// Asks for the end without a signal, so that nothing is waited for any more.
    static void Ask();
    /// Whether the run is to stop. For any thread.
    static bool IsAsked();
    /// Becomes readable when it is, for poll(); -1 before Install.
    static int Descriptor();
    /// Forgets all that, for tests.
    static void Reset();
};
} // namespace SegmentTool
