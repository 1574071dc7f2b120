#pragma once

#include "ByteSource.hpp"
#include "Promise.hpp"

#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpFloodFill.hpp"
#include "RDImageProcessing/ObjectRuns.hpp"
#include "RDTools/ProcessorBase.hpp"

#include <functional>
#include <memory>

/// An operator with its images and settings, as the bytes say, ready for one run.
struct StBench
{
    StBench(const ClByteSource& cBytes, bool bInPlace) : m_cBytes(cBytes), m_bInPlace(bInPlace) {}

    ClByteSource m_cBytes;
    bool m_bInPlace; ///< the output is the input, where the operator allows that
    std::unique_ptr<ClProcessorBase> m_pOperator;
    ClImage m_acIn[4];
    ClImage m_acOut[4];
    ClIpConnectedComponent2::ComponentsArray_t m_aComponents;
    ClIpFloodFill::StBoundingBox m_cBox = {};
    ClObjectRuns m_cRuns;
    bool m_bMayBeInput = false;    ///< the operator allows that the output is the input
    bool m_bOutputIsInput = false; ///< the output is the input though the operator does not allow it
    std::function<bool()> m_fnIsDetermined = [] { return true; }; ///< the documentation says what the output holds
    std::function<bool()> m_fnIsModest = [] { return true; };     ///< the run does not take long
    /// What the run has left beside the images; also runs what only makes sense after it.
    std::function<void(ClDigest&)> m_fnResults = [](ClDigest&) {};

    ClImage& In(int nImage = 0) { return m_acIn[nImage]; }
    ClImage* Out() { return m_bInPlace ? &m_acIn[0] : &m_acOut[0]; } ///< of an operator that may work in place
};

/// How many operators there are.
unsigned OperatorCount();
/// Makes the operator and its images.
void SetUpOperator(unsigned nOperator, StBench& c);
