#include "Result.hpp"

#include <numeric>

namespace SegmentTool
{
namespace
{
constexpr const char* aszOutcomes[nOutcomes] = {"segmented",  "too_few",     "no_finger",
                                                "unreadable", "not_written", "failed"};
constexpr const char* aszInWords[nOutcomes] = {"segmented",  "with too few fingers", "without a finger",
                                               "unreadable", "not written",          "failed"};
} // namespace

std::uint64_t ClTally::Total() const
{
    return std::accumulate(m_anCount.begin(), m_anCount.end(), std::uint64_t{0});
}

EExit ClTally::Exit() const
{
    if (Of(EOutcome::eFailed) != 0) return eExitInternal;
    if (Of(EOutcome::eUnreadable) != 0 || Of(EOutcome::eNotWritten) != 0) return eExitUnreadable;
    if (Of(EOutcome::eNoFinger) != 0 || Of(EOutcome::eTooFew) != 0) return eExitFewFingers;
    return eExitDone;
}

std::string ClTally::Summary() const
{
    std::string sText = std::to_string(Total()) + (Total() == 1 ? " picture" : " pictures");
    const char* szSeparator = ": ";
    for (std::size_t i = 0; i < m_anCount.size(); ++i)
    {
        if (m_anCount[i] == 0) continue;
        sText += szSeparator + std::to_string(m_anCount[i]) + ' ' + aszInWords[i];
        szSeparator = ", ";
    }
    return sText;
}

const char* OutcomeName(EOutcome eOutcome)
{
    return aszOutcomes[static_cast<std::size_t>(eOutcome)];
}

bool OutcomeFromName(const std::string& sName, EOutcome& eOutcome)
{
    for (int i = 0; i < nOutcomes; ++i)
    {
        if (sName != aszOutcomes[i]) continue;
        eOutcome = static_cast<EOutcome>(i);
        return true;
    }
    return false;
}

const char* HandName(EHand eHand)
{
    switch (eHand)
    {
    case EHand::eRight: return "right";
    case EHand::eLeft: return "left";
    case EHand::eThumbs: return "thumbs";
    case EHand::eUndecided: break;
    }
    return "undecided";
}
} // namespace SegmentTool
