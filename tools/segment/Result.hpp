#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

/// What became of a picture, and how a run of many ends: plain records without behaviour of their own.
namespace SegmentTool
{
/// Exit codes of the program.
enum EExit : int
{
    eExitDone = 0,       ///< every picture segmented
    eExitFewFingers = 1, ///< finished; some picture shows no finger, or fewer than asked for
    eExitUsage = 2,
    eExitUnreadable = 3, ///< finished; some picture cannot be read, or its fingers not be written
    eExitInternal = 4,   ///< memory, results that cannot be written, or a fault of the program
    eExitSignal = 128    ///< and its number, if a signal ended the run: 130, 143
};

/// In the order of the exit codes they lead to.
enum class EOutcome
{
    eSegmented,
    eTooFew,     ///< fewer fingers than asked for
    eNoFinger,   ///< none
    eUnreadable, ///< no picture, a damaged one, or one that the processor refuses
    eNotWritten, ///< segmented, but a file of another picture stands where a finger should go
    eFailed      ///< memory, or a fault of the program
};
constexpr int nOutcomes = 6;

enum class EHand
{
    eUndecided,
    eRight,
    eLeft,
    eThumbs
};

/// A finger. Rectangles are pixels of the picture: the columns from m_nX, m_nWidth of them; the rows are counted upward
/// from the lower edge as they are stored (m_nStoredY, the rectangle's lower edge), or downward from the upper edge as
/// a viewer shows them (m_nSeenY, its upper edge).
struct ClFinger
{
    int m_nPosition = 0; ///< friction ridge code, see FingerCode.hpp
    int m_nX = 0;
    int m_nStoredY = 0;
    int m_nSeenY = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nCutWidth = 0; ///< pixels of the finger's own picture, which is limited to 500 by 500
    int m_nCutHeight = 0;
    std::string m_sFile; ///< where that was written; empty if it was not asked for
};

struct ClResult
{
    std::uint64_t m_nIndex = 0; ///< place in the whole list, from 1
    std::string m_sInput;       ///< name as given or found, any bytes
    EOutcome m_eOutcome = EOutcome::eFailed;
    long m_nCode = 0;       ///< of the error catalogue; 0 if nothing failed
    std::string m_sMessage; ///< what is wrong and what to do; empty if nothing is
    bool m_bBiggest = false;
    int m_nWidth = 0; ///< of the picture; 0 if it could not be read
    int m_nHeight = 0;
    int m_nXPels = 0; ///< per metre
    int m_nYPels = 0;
    EHand m_eHand = EHand::eUndecided;
    std::vector<ClFinger> m_aFingers; ///< from left to right
    std::string m_sOverlay;           ///< file of the picture with the frames
};

/// How many pictures came to which outcome.
struct ClTally
{
    std::array<std::uint64_t, nOutcomes> m_anCount{};

    void Add(EOutcome eOutcome) { ++m_anCount[static_cast<std::size_t>(eOutcome)]; }
    std::uint64_t Of(EOutcome eOutcome) const { return m_anCount[static_cast<std::size_t>(eOutcome)]; }
    std::uint64_t Total() const;
    EExit Exit() const; ///< the gravest of the outcomes tells
    std::string Summary() const;
};

/// Names of the outcomes as they stand in results: "segmented", "too_few", "no_finger", "unreadable", "not_written",
/// "failed".
const char* OutcomeName(EOutcome eOutcome);
bool OutcomeFromName(const std::string& sName, EOutcome& eOutcome);
/// "undecided", "right", "left", "thumbs".
const char* HandName(EHand eHand);

/// Why a picture has no result: a number of the error catalogue and a text for people.
class ClPictureError : public std::runtime_error
{
public:
    ClPictureError(long nCode, const std::string& sText) : std::runtime_error(sText), m_nCode(nCode) {}
    long m_nCode;
};

/// Why the whole run ends.
class ClRunError : public std::runtime_error
{
public:
    ClRunError(int nExit, const std::string& sText) : std::runtime_error(sText), m_nExit(nExit) {}
    int m_nExit; ///< as EExit tells
};
} // namespace SegmentTool
