#pragma once

#include "Result.hpp"

#include <chrono>
#include <cstdint>
#include <string>

namespace SegmentTool
{
/// Where a run stands.
struct ClStanding
{
    std::uint64_t m_nDone = 0;    ///< pictures, those of an earlier run included
    std::uint64_t m_nEarlier = 0; ///< of those, the earlier run's
    std::uint64_t m_nTotal = 0;   ///< 0: not known
    std::uint64_t m_nNotSegmented = 0;
    double m_dSeconds = 0.0; ///< of this run
};

/// A line of nWidth columns at most: a bar, pictures, rate, time left.
std::string ProgressLine(const ClStanding& cStanding, int nWidth);
/// Seconds as 0:07, 12:34 or 1:02:03.
std::string ClockText(double dSeconds);

/// Messages on standard error and, if that is a terminal and the run is not quiet, a line of progress below them.
/// Debian has no library for such lines in C++.
class ClMessages
{
public:
    explicit ClMessages(bool bQuiet);
    ClMessages(const ClMessages&) = delete;
    ~ClMessages();

    bool ShowsProgress() const { return m_bProgress; }
    void Start(std::uint64_t nTotal, const ClTally& cEarlier); ///< nTotal 0: not known
    void Step(const ClTally& cTally);                          ///< a picture is done
    void Tell(const std::string& sText);                       ///< nothing if quiet
    void End();                                                ///< takes the line away

private:
    using Clock_t = std::chrono::steady_clock;

    void Draw();
    void Clear();

    bool m_bQuiet;
    bool m_bProgress;
    bool m_bDrawn = false;
    bool m_bStarted = false;
    ClStanding m_cStanding;
    Clock_t::time_point m_cBegin;
    Clock_t::time_point m_cLast;
};

/// Writes a message of the program to standard error, whatever was asked for.
void TellAlways(const std::string& sText);
} // namespace SegmentTool
