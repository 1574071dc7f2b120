#pragma once

#include "Result.hpp"
#include "ResultFile.hpp"

#include <cstdint>
#include <string>

namespace SegmentTool
{
/// A page that holds everything itself: a card for each picture with its thumbnail, the frames and the outcome, to be
/// sorted and filtered by a few lines of script. It needs no network, and its own policy forbids it any.
/// The parts are lines: a card is one, from "<article " to its line end.
std::string ReportHead();
std::string ReportCard(const ClResult& cResult, const std::string& sThumbnailUri); ///< empty URI: no picture
std::string ReportFoot(const ClTally& cTally);

/// Writes the page as the run goes, in the memory of one card, into a file beside the final one, FILE.part, which gets
/// the final name at the end.
/// Errors: ClRunError, exit code 4, with the reason of the file system.
class ClReport
{
public:
    /// Begins the page. With nKept above 0 it goes on behind the first nKept cards of FILE.part, or of FILE if that is
    /// not there. Errors moreover: exit code 2 if there are not so many.
    void Open(const std::string& sPath, std::uint64_t nKept);
    void Add(const std::string& sCard);
    void Finish(const ClTally& cTally);
    /// The run ends early. What there is stays for a run that goes on, or goes.
    void Abandon(bool bKeep);

    bool IsOpen() const { return m_bOpen; }

private:
    void KeepCards(std::uint64_t nKept);

    ClResultFile m_cFile;
    std::string m_sPath;
    std::string m_sPart;
    bool m_bOpen = false;
};
} // namespace SegmentTool
