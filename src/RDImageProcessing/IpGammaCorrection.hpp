#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// A gamma curve between a black and a white value: a gamma below 1 darkens the middle tones.
/// Input   eUInt8, one plane, with pixels. Output the same geometry; may be the input, which then keeps its block.
/// Values  ((v - black) / (white - black)) to the power of 1 / gamma, scaled to 255 and rounded.
/// Errors  ClException, in this order: -701 without input or output, -14 without rows or columns, -11 for several
///         planes, -44 for black above white, -35 for a gamma below 0 or above 5, -33 for another sample type;
///         ClExBadAlloc.
class ClIpGammaCorrection : public NewIpBase::ClIp1to1Base
{
public:
    ClIpGammaCorrection();

    using NewIpBase::ClIp1to1Base::ApplyParam;
    long ApplyParam(ClImage& cImage, double dGamma); ///< in place
    long ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char nBlack, unsigned char nWhite, double dGamma);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using NewIpBase::ClIp1to1Base::QueryParameters;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Process() override;
    void CheckInOutImageTypes() override;

    unsigned char m_nBlack = 0;
    unsigned char m_nWhite = 255;
    double m_dGamma = 1.0;
};
