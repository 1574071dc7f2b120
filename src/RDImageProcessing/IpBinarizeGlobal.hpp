#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Replaces every sample by one of two values: black below the threshold, white from it on.
/// Input   any sample type; the planes are treated alike.
/// Output  everything but the samples as in the input. May be the input itself.
/// Values  The threshold of integer samples is rounded up, so with 3.2 a 3 is black and a 4 white. Not given (NaN), it
///         is the middle of the output's range, and black and white are the ends of that range; given black and white
///         are truncated to the sample type.
/// Errors  -35 if the threshold lies outside of the input's range, or black or white outside of the output's; those of
///         the frame; ClExBadAlloc.
class ClIpBinarizeGlobal : public NewIpBase::ClIp1to1Base
{
public:
    ClIpBinarizeGlobal();

    using NewIpBase::ClIp1to1Base::ApplyParam;
    /// Black and white stay as they are set.
    long ApplyParam(ClImage& cIn, ClImage& cOut, double dThreshold);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using NewIpBase::ClIp1to1Base::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    /// Whether a run would find its values in range; if not, what the frame answers, which looks at the type only.
    bool CanApply() override;
    /// Errors: a text that does not fit ClException -101.
    void ParameterString(char* szBuffer, unsigned long nSize) override;
    long DoProcess(ClImage& cIn, ClImage& cOut) override;
    double GetValue(ClImage& cIn, ClImage& cOut, double dValue) override;
    /// Whether black and white, where given, lie in the range of the output; false without an output.
    virtual bool CheckBlackWhite();
    /// Whether the threshold, if given, lies in the range of the input; false without an input.
    virtual bool CheckThreshold();

    double m_dThreshold;          ///< sample value, NaN if not given
    double m_dBlack;              ///< sample value, NaN if not given
    double m_dWhite;              ///< sample value, NaN if not given
    double m_dActThreshold = 0.0; ///< in force during a run
    double m_dActBlack = 0.0;     ///< in force during a run
    double m_dActWhite = 0.0;     ///< in force during a run
};
