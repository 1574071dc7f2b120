#pragma once

#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include <string>
#include <vector>

/// What happened to one finger while it was refined alone in its cut-out.
struct StRefinementNotes
{
    int nRounds = 0;            ///< 1 more than the repetitions
    int nThreshold = 0;         ///< of the last round
    bool bNoPart = false;       ///< nothing lies where the finger is expected
    bool bTooDark = false;      ///< runs off two edges, and the threshold is too low for another round
    bool bRoundAtEdges = false; ///< runs off two edges, but is nearly round
    bool bPadClipped = false;   ///< the room around the part reaches beyond the cut-out
    unsigned long nObjects = 0; ///< that were numbered in the trimmed image
    bool bTooManyObjects = false;
    bool bFirstRowWhite = false;
    bool bKeptAtEdge = false; ///< not cut below the neck, as the cut-out starts at the lower edge of the input
    int nNeckRow = 0;         ///< of the narrowest place, 0 if none was looked for
    bool bNeckCut = false;
    bool bNarrowed = false;
};

/// A whole run, written down plainly and slowly, step by step: the stages of the detection and the rules on boxes are
/// the processor's own, which have tests of their own; the road through them, the refinement of each finger, the
/// labelling that it uses and the last limits are independent. m_c ends as a run leaves it.
class ClReferenceRun
{
public:
    explicit ClReferenceRun(ClImage& cInput);

    /// Where a run differs in a member, or an empty text.
    std::string Differences(const ClIpFourPrintSegmentation& cRun) const;

    ClIpFourPrintSegmentation m_c;
    ClImage m_cBinary;
    long m_nResult = 0;
    std::vector<StRefinementNotes> m_aNotes; ///< of each finger that was cut out, from left to right

private:
    long Detect(ClImage& cGrey);
    void Cut(ClImage& cGrey);
    void Refine(unsigned long i, bool bAtImageEdge);
    bool RefineRound(unsigned long i, bool bAtImageEdge, int& nRetryThreshold);
    void Trim(unsigned long i, bool bAtImageEdge, int nThreshold);
    void Narrow(unsigned long i, int nThreshold);
    void Finish();

    double m_dAngle = 0.0;
    bool m_bFarFromEdge = false;
    TpArrayStatic<bool> m_aLeftOfCenter;
};
